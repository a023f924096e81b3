"""Python code in a process of its own, for what an interpreter can try only once, or may die of."""

import subprocess
import sys
from pathlib import Path

HERE = Path(__file__).parent


def run_apart(code, *arguments, folder=HERE, patience=60):
    """Runs it where it can import the modules of the folder; a crash prints the stacks of all threads."""
    return subprocess.run([sys.executable, "-X", "faulthandler", "-c", code, *arguments],
                          capture_output=True,
                          text=True,
                          timeout=patience,
                          cwd=folder)
