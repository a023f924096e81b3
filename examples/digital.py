"""Digital lines: identify a box, read and write its lines in both forms, log them to CSV.

    python3 examples/digital.py            starts the simulator of a Tarn-Dio-Lite by itself
    python3 examples/digital.py HOST PORT  uses a device
"""

from __future__ import annotations

import asyncio
import csv
import tempfile
import time
from pathlib import Path

from _simulated import device  # first: it finds a build

import pyzvr

SAMPLES = 200


def identify(box: pyzvr.TarnDioLite) -> None:
    print("Driver:   ", " ".join(box.Sys_getDriverInfo()))
    print("Serial:   ", box.Sys_getSerialNumber())
    print("Clock:    ", box.Sys_getRTC())
    print("Address:  ", *box.Net_getIPAddrAndSubmask(), box.Net_getMACAddr())


def read_and_write(box: pyzvr.TarnDioLite) -> None:
    """Output port 0 is wired to input port 2 in the simulator."""
    pyzvr.check(box.DO_openPort(0))
    pyzvr.check(box.DI_openPort(2))
    for word in (0b00000000, 0b10100101, 0b11111111):
        box.DO_writePort(0, word)
        print(f"Wrote {word:08b} to port 0, read", box.DI_readPort(2), "from port 2")
    print("Toggled:  ", box.DO_togglePins(0, [0, 7]))
    try:
        box.DI_readPins(2, [8])
    except pyzvr.PinsNotExistError as failure:
        print("Refused:  ", failure)


async def read_and_write_async(box: pyzvr.TarnDioLite) -> None:
    """The same on one event loop, several requests at once."""
    await asyncio.gather(box.DO_openPort_async(1), box.DI_openPort_async(3))
    await box.DO_writePort_async(1, 0b01010101)
    levels, clock = await asyncio.gather(box.DI_readPort_async(3), box.Sys_getRTC_async())
    print("Awaited:  ", levels, clock)


def log(box: pyzvr.TarnDioLite, path: Path) -> None:
    """A counter on port 0, read back from port 2 and logged."""
    begin = time.perf_counter()
    with path.open("w", newline="") as file:
        writer = csv.writer(file)
        writer.writerow(["seconds", *(f"pin {pin}" for pin in range(8))])
        for count in range(SAMPLES):
            box.DO_writePort(0, count % 256)
            writer.writerow([f"{time.perf_counter() - begin:.6f}", *box.DI_readPort(2)])
    rate = SAMPLES / (time.perf_counter() - begin)
    print(f"Logged {SAMPLES} rows to {path} at {rate:.0f} rows a second")


def main() -> None:
    with device("TarnDioLite") as place, pyzvr.TarnDioLite() as box:
        box.connect(*place)
        identify(box)
        read_and_write(box)
        asyncio.run(read_and_write_async(box))
        log(box, Path(tempfile.gettempdir()) / "pyzvr-digital.csv")


if __name__ == "__main__":
    main()
