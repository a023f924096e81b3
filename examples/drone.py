"""The flight controller on a serial line.

    python3 examples/drone.py             starts a simulator on a pseudo-terminal
    python3 examples/drone.py PORT SPEED  uses a device, "/dev/ttyUSB0" or "COM4"
"""

from __future__ import annotations

import pyzvr
from _simulated import device


def main() -> None:
    with device("Drone") as place, pyzvr.Drone() as drone:
        drone.connect(*place)
        print("Firmware", drone.Drone_getFirmwareVersion(), "serial number", drone.Drone_getSerialNumber())
        try:
            pyzvr.UARTClient().connect("COM99", 9600)
        except pyzvr.UARTConnectionError as failure:
            print("Refused:", failure)


if __name__ == "__main__":
    main()
