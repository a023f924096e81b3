"""The main job: connect, identify, read on demand, stream, log to CSV, and see what came.

    python3 examples/demo.py                    acquires from four simulated devices in turn
    python3 examples/demo.py HeronAnalog        from a simulated device of this model
    python3 examples/demo.py HeronFast ADDRESS  from a device; behind ADDRESS its ports, if they are unusual
"""

from __future__ import annotations

import contextlib
import importlib
import math
import sys
import tempfile
import time
import warnings
from collections.abc import Iterator
from pathlib import Path
from typing import Any, NamedTuple

from _simulated import arguments  # first: it finds a build

import pyzvr
import zvrkit.sim


class Setup(NamedTuple):
    about: str
    rate: float  # Hz
    seconds: float
    port: int = 0  # on the chassis the slot
    chip_selects: tuple[int, ...] = ()


SETUPS = {
    "TarnAnalog": Setup("16 bits over Ethernet", 20000, 3),
    "TarnAnalog24": Setup("24 bits", 10000, 1),
    "HeronFast": Setup("Wi-Fi, streaming over its data connection", 20000, 1),
    "Lattice": Setup("a slot of the chassis with three chip selects", 4000, 1, port=1, chip_selects=(0, 1, 2)),
    "LatticeLite": Setup("the same", 4000, 1, port=1, chip_selects=(0, 1, 2)),
    "HeronAnalog": Setup("Wi-Fi", 10000, 1),
    "HeronImu": Setup("Wi-Fi", 10000, 1),
    "HeronMixed": Setup("Wi-Fi", 10000, 1),
    "SableAnalog": Setup("eight channels over USB", 500, 1),
    "SableMixed": Setup("eight channels over USB", 500, 1),
}
SHOWN = ("TarnAnalog", "TarnAnalog24", "HeronFast", "Lattice")


def prepare(box: Any, setup: Setup) -> None:
    """Everything up to a stream that may be started."""
    box.AI_open(setup.port)
    if setup.chip_selects:
        box.AI_enableCS(setup.port, list(setup.chip_selects))
    print("On demand:", *(f"{volts:.3f}" for volts in box.AI_readOnDemand(setup.port)[:8]), "V")
    box.AI_setMode(setup.port, 2)  # continuous
    box.AI_setSamplingRate(setup.port, setup.rate)
    # This one operation counts the slots of the chassis from 0.
    _, rate, _ = box.AI_openStreaming(setup.port - 1 if setup.chip_selects else setup.port)
    assert rate == setup.rate


def acquire(box: Any, setup: Setup, path: Path) -> list[pyzvr.SampleBlock]:
    """Streams for a while, with a line of progress; the file is written by a thread of the library."""
    wanted, blocks, rows = int(setup.rate * setup.seconds), [], 0
    box.Logger_openFile(str(path), clear_old=True, verbose=False)
    box.AI_startStreaming(setup.port)
    begin = time.perf_counter()
    while rows < wanted:
        block = box.AI_readStreamingBlock(setup.port, min(wanted - rows, int(setup.rate / 20)), 1)
        if rows == 0:
            box.Logger_writeHeader([f"channel {number} (V)" for number in range(block.shape[1])])
        box.Logger_write2DList(block)
        blocks.append(block)
        rows += len(block)
        elapsed = time.perf_counter() - begin
        print(f"\rStreaming: {rows:7d} rows of {block.shape[1]} channels, {rows / elapsed:6.0f} Hz, "
              f"{box.AI_getBacklog(setup.port):5d} waiting, {box.AI_getDroppedRows(setup.port)} dropped ", end="", flush=True)
    print()
    box.AI_closeStreaming(setup.port)
    box.Logger_flush()
    box.AI_close(setup.port)
    return blocks


def describe(columns: list[tuple[float, ...]]) -> None:
    print(f"{'channel':>9}{'mean':>10}{'rms':>10}{'least':>10}{'most':>10}  V")
    for number, values in enumerate(columns):
        mean, rms = math.fsum(values) / len(values), math.sqrt(math.fsum(value * value for value in values) / len(values))
        print(f"{number:9}{mean:10.4f}{rms:10.4f}{min(values):10.4f}{max(values):10.4f}")


def plot(columns: list[tuple[float, ...]], rate: float, path: Path) -> None:
    """The first tenth of a second, where matplotlib is installed."""
    try:
        figure = importlib.import_module("matplotlib.figure").Figure(figsize=(10, 5))
    except ImportError:
        return
    axes = figure.subplots()
    count = int(rate / 10)
    for number, values in enumerate(columns[:8]):
        axes.plot([row / rate for row in range(count)], values[:count], label=f"channel {number}")
    axes.set(xlabel="s", ylabel="V")
    axes.legend(loc="right")
    figure.savefig(path)
    print("Plotted to", path)


@contextlib.contextmanager
def connected(model: str) -> Iterator[Any]:
    address: tuple[Any, ...] = tuple(int(word) if word.isdigit() else word for word in arguments()[1:])
    with contextlib.ExitStack() as stack:
        if not address and not model.startswith("Sable"):
            address = stack.enter_context(zvrkit.sim.device(model)).address
        box = stack.enter_context(getattr(pyzvr, model)())
        box.connect(*address)
        yield box


def main() -> None:
    models = arguments()[:1] or SHOWN
    if models[0] not in SETUPS:
        sys.exit(f"demo.py: {models[0]} is none of the models that stream: {', '.join(SETUPS)}")
    if models[0].startswith("Sable"):
        if len(arguments()) == 1:
            zvrkit.sim.restart_beside_usb(models[0])
        # Where no libusb lies beside the package, the system's own is used, with a warning.
        warnings.simplefilter("ignore", UserWarning)
    for model in models:
        setup = SETUPS[model]
        path = Path(tempfile.gettempdir()) / f"pyzvr-{model}.csv"
        print(f"\n{model}: {setup.about}")
        with connected(model) as box:
            print("Driver:   ", " ".join(box.Sys_getDriverInfo()), "serial", box.Sys_getSerialNumber())
            prepare(box, setup)
            blocks = acquire(box, setup, path)
        rows = [row for block in blocks for row in block.tolist()]
        columns = list(zip(*rows))
        describe(columns)
        print(f"Logged {len(rows)} rows to {path}")
        plot(columns, setup.rate, path.with_suffix(".png"))


if __name__ == "__main__":
    main()
