"""Where the examples find the library, beside a build, and their device: the command line names it, or else a simulator
is started for them."""

from __future__ import annotations

import contextlib
import importlib.util
import sys
from collections.abc import Iterator
from pathlib import Path
from typing import Any

if importlib.util.find_spec("pyzvr") is None:
    sys.path.insert(1, str(Path(__file__).resolve().parent.parent / "build"))

import zvrkit.sim  # noqa: E402


@contextlib.contextmanager
def device(model: str, *options: str) -> Iterator[tuple[Any, ...]]:
    """What `connect` takes to reach the device: the arguments of the command line, or a simulator's address."""
    if len(sys.argv) > 1:
        yield tuple(int(word) if word.isdigit() else word for word in sys.argv[1:])
        return
    with zvrkit.sim.device(model, *options) as place:
        print("Simulator:", *place.address)
        yield place.address


def run_beside_usb(*devices: str) -> None:
    """Starts the program once more beside simulated devices on USB, unless it is told of a real one."""
    if len(sys.argv) == 1:
        zvrkit.sim.restart_beside_usb(*devices)
