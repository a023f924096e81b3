"""Variable resistors: a sweep of one, and all at once.

    python3 examples/resistors.py            starts a simulator
    python3 examples/resistors.py HOST PORT  uses a device
"""

from __future__ import annotations

from _simulated import device  # first: it finds a build

import pyzvr

PORT, SUPPLY, FIXED = 0, 5.0, 4700


def sweep(box: pyzvr.TarnPot, channel: int) -> None:
    """The resistor below a fixed one, as a divider."""
    print("  ohms   volts")
    for ohms in (100, 220, 470, 1000, 2200, 4700, 10000, 22000, 47000):
        pyzvr.check(box.DPOT_writeByChannel(PORT, channel, ohms))
        kept = box.DPOT_readByChannel(PORT, channel)
        print(f"{kept:6d} {SUPPLY * kept / (kept + FIXED):7.3f}")


def main() -> None:
    with device("TarnPot") as place, pyzvr.TarnPot() as box:
        box.connect(*place)
        pyzvr.check(box.DPOT_open(PORT))
        sweep(box, 0)
        pyzvr.check(box.DPOT_writeAllChannel(PORT, [1000, 2000, 3000, 4000]))
        print("All:", [box.DPOT_readByChannel(PORT, channel) for channel in range(4)])
        print("Beyond its range:", box.DPOT_writeByChannel(PORT, 0, 1e6))
        box.DPOT_close(PORT)


if __name__ == "__main__":
    main()
