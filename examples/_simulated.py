"""Where the examples find their device: the command line names it, or else a simulator is started for them."""

from __future__ import annotations

import contextlib
import json
import os
import shutil
import subprocess
import sys
from collections.abc import Iterator
from typing import Any


def program(name: str) -> str:
    """Path of one of the simulator's programs."""
    built = os.path.join(os.path.dirname(os.environ.get("ZVR_SIM", "")), name)
    found = built if os.path.exists(built) else shutil.which(name)
    if found is None:
        sys.exit(f"{name} is not found: build it with `make build`, or name zvr-sim in ZVR_SIM")
    return found


@contextlib.contextmanager
def device(model: str, *options: str, anew: bool = False) -> Iterator[tuple[Any, ...]]:
    """What `connect` takes to reach the device: the arguments of the command line, or, and always if `anew`, a
    simulator's address."""
    if len(sys.argv) > 1 and not anew:
        yield tuple(int(word) if word.isdigit() else word for word in sys.argv[1:])
        return
    process = subprocess.Popen(
        [program("zvr-sim"), model, "--stdin-stop", *options], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True
    )
    assert process.stdout is not None
    try:
        place = json.loads(process.stdout.readline())
        print("Simulator:", place)
        yield tuple(place[key] for key in ("serial_port", "host", "data_port", "command_port") if key in place)
    finally:
        process.communicate()  # it ends when its standard input closes


def run_beside_usb(model: str, *options: str) -> None:
    """Starts the program once more with a simulated device on USB, unless it has one or is told of a real one."""
    if len(sys.argv) == 1 and "UMOCKDEV_DIR" not in os.environ:
        os.execv(program("zvr-sim-usb"), ["zvr-sim-usb", model, *options, "--", sys.executable, *sys.orig_argv[1:]])
