"""Seven thermocouples: a table that grows by a scan at a time.

    python3 examples/thermocouples.py            starts a simulator
    python3 examples/thermocouples.py HOST PORT  uses a device
"""

from __future__ import annotations

import time

from _simulated import device  # first: it finds a build

import pyzvr

PORT, CHANNELS = 1, range(7)
SCANS = 6
TYPE_K, MEAN_OF_16 = 3, 4


def prepare(box: pyzvr.TarnThermo) -> None:
    pyzvr.check(box.Thermal_open(PORT))
    for channel in CHANNELS:
        pyzvr.check(box.Thermal_setType(PORT, channel, TYPE_K))
        pyzvr.check(box.Thermal_setOverSampling(PORT, channel, MEAN_OF_16))
    print(f"Cold junction: {box._Thermal_readJunction(PORT, 0):.1f} degrees")


def scan(box: pyzvr.TarnThermo) -> list[float]:
    return [box.Thermal_readSensor(PORT, channel) for channel in CHANNELS]


def main() -> None:
    with device("TarnThermo") as place, pyzvr.TarnThermo() as box:
        box.connect(*place)
        prepare(box)
        print("    s", *(f"{'channel ' + str(channel):>10}" for channel in CHANNELS))
        begin, table = time.monotonic(), []
        for _ in range(SCANS):
            table.append(scan(box))
            print(f"{time.monotonic() - begin:5.2f}", *(f"{degrees:10.3f}" for degrees in table[-1]), flush=True)
            time.sleep(0.1)
        print(" span", *(f"{max(column) - min(column):10.3f}" for column in zip(*table)))
        try:
            box.Thermal_readSensor(PORT, 7)
        except pyzvr.Error as failure:
            print("Refused:", failure)
        box.Thermal_close(PORT)


if __name__ == "__main__":
    main()
