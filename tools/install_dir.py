"""Tells where below a prefix this Python looks for packages, for `make install`.

    python3 install_dir.py PREFIX [--advice]
"""

import sys
from pathlib import Path


def folder(prefix):
    """Debian's own Python looks for what an administrator installs under a name of its own."""
    version = f"lib/python{sys.version_info.major}.{sys.version_info.minor}"
    own = f"{version}/dist-packages"
    return own if str(prefix / own) in sys.path else f"{version}/site-packages"


def main():
    prefix = Path(sys.argv[1]).resolve()
    if "--advice" not in sys.argv:
        print(folder(prefix))
    elif (prefix / "pyvenv.cfg").exists():
        print(f"Ready: {prefix}/bin/python, or `. {prefix}/bin/activate`")
    elif str(prefix / folder(prefix)) not in sys.path:
        print(f"Python does not look there by itself: export PYTHONPATH={prefix / folder(prefix)}")


if __name__ == "__main__":
    main()
