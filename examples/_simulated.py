"""Where the examples find the library, beside a build, and their device: the command line names it, or else a simulator
is started for them."""

from __future__ import annotations

import contextlib
import importlib.util
import io
import sys
import warnings
from collections.abc import Iterator
from pathlib import Path
from typing import Any

if importlib.util.find_spec("pyzvr") is None:
    sys.path.insert(1, str(Path(__file__).resolve().parent.parent / "build"))

import zvrkit.sim  # noqa: E402


def arguments() -> list[str]:
    """The words of the command line behind the program's name."""
    return sys.argv[1:]


@contextlib.contextmanager
def device(model: str, *options: str) -> Iterator[tuple[Any, ...]]:
    """What `connect` takes to reach the device: the arguments of the command line, or a simulator's address."""
    if arguments():
        yield tuple(int(word) if word.isdigit() else word for word in arguments())
        return
    with zvrkit.sim.device(model, *options) as place:
        print("Simulator:", *place.address)
        yield place.address


@contextlib.contextmanager
def without_advice_on_libusb() -> Iterator[None]:
    """Where no libusb lies beside the package, the system's own is used, with a warning and where it came from."""
    with warnings.catch_warnings(), contextlib.redirect_stdout(io.StringIO()):
        warnings.simplefilter("ignore", UserWarning)
        yield


def run_beside_usb(*devices: str) -> None:
    """Starts the program once more beside simulated devices on USB, unless it is told of a real one."""
    if not arguments():
        zvrkit.sim.restart_beside_usb(*devices)
