"""Lays out what Sphinx makes the site of: the pages of docs/, the generated reference and the figures, in one tree.

    site_tree.py FOLDER     usually build/docs/tree; its folder docs/ is what Sphinx reads

Everything else of the repository is beside it as links, so that a page's path to an example is the same in both. Files
are written only when they have changed, so that Sphinx reads no more than it must.
"""

import os
import subprocess
import sys
import tempfile
from pathlib import Path

from reference import everything

ROOT = Path(__file__).resolve().parent.parent
LEFT_OUT = {"build", "dist", "docs", ".git"}


def link(place, target):
    if place.is_symlink() and Path(os.readlink(place)) == target:
        return
    place.unlink(missing_ok=True)
    place.parent.mkdir(parents=True, exist_ok=True)
    place.symlink_to(target)


def write(place, text):
    if place.is_symlink():
        raise FileExistsError(f"{place.name} is generated, and docs/ has a file of that name")
    if not place.exists() or place.read_text() != text:
        place.parent.mkdir(parents=True, exist_ok=True)
        place.write_text(text)


def pages_of_the_tree():
    """Files of docs/ by their path in it."""
    docs = ROOT / "docs"
    return {
        path.relative_to(docs): path for path in docs.rglob("*") if path.is_file() and "__pycache__" not in path.parts
    }


def draw_figures(folder):
    folder.mkdir(parents=True, exist_ok=True)
    newest = max(path.stat().st_mtime for path in (ROOT / "docs/figures").glob("*.py"))
    drawn = [path for path in folder.glob("*.svg") if not path.is_symlink()]  # links lead to those drawn by hand
    if not drawn or min(path.stat().st_mtime for path in drawn) < newest:
        with tempfile.TemporaryDirectory(dir=folder.parent) as made:  # all of them, or none
            command = [sys.executable, str(ROOT / "docs/figures/figures.py"), made]
            subprocess.run(command, check=True, stdout=subprocess.DEVNULL)
            for path in Path(made).iterdir():
                path.replace(folder / path.name)


def main():
    tree = Path(sys.argv[1]).resolve()
    docs = tree / "docs"
    for entry in ROOT.iterdir():
        if entry.name not in LEFT_OUT:
            link(tree / entry.name, entry)
    (docs / "figures/models").mkdir(parents=True, exist_ok=True)
    texts = {Path("reference") / name: text for name, text in everything.pages(docs / "figures/models").items()}
    pages = pages_of_the_tree()
    wanted = {docs / name for name in [*pages, *texts]}
    for name, path in pages.items():
        link(docs / name, path)
    for name, text in texts.items():
        write(docs / name, text)
    draw_figures(docs / "figures")
    for path in docs.rglob("*"):
        if path.is_dir() and not path.is_symlink():
            continue
        if path not in wanted and docs / "figures" not in path.parents:
            path.unlink()


if __name__ == "__main__":
    main()
