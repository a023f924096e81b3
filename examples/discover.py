"""Lists what is on the network and on USB.

    python3 examples/discover.py
"""

from __future__ import annotations

import asyncio

from _simulated import without_advice_on_libusb  # first: it finds a build

import pyzvr

COLUMNS = ("Address", "Mask", "MAC", "Model", "Serial", "Alias", "Application", "Gateway")


def table(rows: list[list[str]], titles: tuple[str, ...]) -> None:
    widths = [max(map(len, column)) for column in zip(titles, *rows)]
    for row in (titles, *rows):
        print("  ".join(text.ljust(width) for text, width in zip(row, widths)))


def main() -> None:
    with pyzvr.DeviceFinder() as finder:
        finder.connect()
        print("Asking the network; the devices have 5 seconds to answer.")
        try:
            devices = asyncio.run(finder.Bcst_enumerateNetworkDevices_async())
        except OSError as failure:
            print("No network:", failure)
            devices = []
        table(sorted(devices), COLUMNS)
        with without_advice_on_libusb():
            attached = finder.Bcst_enumerateUSBDevices()
        print(f"\n{len(devices)} on the network, {len(attached)} on USB")
        table(sorted(attached), ("Serial", "Product"))


if __name__ == "__main__":
    main()
