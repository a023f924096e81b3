"""Checks that no file of src/ includes one of a layer above its own.

The layers stand here from the innermost to the outermost; the folders of a layer may include each other.
"""

import re
import sys
from pathlib import Path

SRC = Path(__file__).parent.parent / "src"
LAYERS = [
    ["core/wire"],
    ["core/engine"],
    ["transport"],
    ["python"],
    ["models/model.h", "models/table.cpp", "models/traits"],  # what is true of a model
    ["device"],
    ["services", "digital", "buses", "analog", "sensing", "motion", "drone"],
    ["models"],  # the products
    ["module.cpp"],
]


def layer_of(path):
    return next(number for number, folders in enumerate(LAYERS) if any(path.startswith(folder) for folder in folders))


def main():
    wrong = []
    for file in sorted(SRC.rglob("*.[hc]*")):
        path = str(file.relative_to(SRC))
        for included in re.findall(r'#include "([^"]+)"', file.read_text()):
            if layer_of(included) > layer_of(path):
                wrong.append(f"src/{path} includes {included}, which is of a layer above it")
    print("\n".join(wrong) or "layers: fine")
    return bool(wrong)


if __name__ == "__main__":
    sys.exit(main())
