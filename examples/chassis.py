"""The chassis: modes of its slots, and the lines of a slot.

    python3 examples/chassis.py            starts a simulator
    python3 examples/chassis.py HOST PORT  uses a device
"""

from __future__ import annotations

from _simulated import device  # first: it finds a build

import pyzvr


def main() -> None:
    with device("Lattice") as place, pyzvr.Lattice() as chassis:
        chassis.connect(*place)
        pyzvr.check(chassis.Sys_setDOMode(1))
        pyzvr.check(chassis.Sys_setDIMode(2))
        print("Modes:", {slot: chassis.Sys_getMode(slot) for slot in (1, 2, 4)})
        chassis.DO_writePins(0, [0, 2, 11], [1, 1, 1])
        print("Lines:", chassis._getDIOState(0, 65535))
        print("Use:  ", chassis.Sys_getPinModeInPort(0))
        chassis.Sys_setIdleMode(1)
        chassis.Sys_setIdleMode(2)
        try:
            chassis.Sys_setDOMode(3)
        except pyzvr.LatticePortNotAvaliableError as failure:
            print("Refused:", failure)


if __name__ == "__main__":
    main()
