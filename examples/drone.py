"""The flight controller on a serial line: a square, flown and told.

    python3 examples/drone.py             starts a simulator on a pseudo-terminal, ten times as fast as the real one
    python3 examples/drone.py PORT SPEED  uses a device, "/dev/ttyUSB0" or "COM4"; mind that it takes off
"""

from __future__ import annotations

import time

from _simulated import device  # first: it finds a build

import pyzvr

SIDE, SPEED, HEIGHT = 3.0, 2.0, -2.0  # metres and metres per second; z is down
NORTH, EAST, DOWN = 3, 4, 5  # places in a state


def identify(drone: pyzvr.Drone) -> None:
    print("Firmware", drone.Drone_getFirmwareVersion(), "serial number", drone.Drone_getSerialNumber())
    volts, amperes, percent = drone.Drone_readBattery()
    print(f"Battery {volts:.1f} V, {amperes:.1f} A, {percent:.0f} %")


def report(drone: pyzvr.Drone) -> None:
    target, state = drone.Drone_readTrajectory(), drone.Drone_getPositionWithNED()
    speed = (drone.current_velo_list[NORTH] ** 2 + drone.current_velo_list[EAST] ** 2) ** 0.5
    print(f"  north {state[NORTH]:5.2f}  east {state[EAST]:5.2f}  up {0 - state[DOWN]:5.2f}  yaw {state[2]:6.1f}  "
          f"{speed:4.2f} m/s, to {target[NORTH]:.1f} {target[EAST]:.1f} {0 - target[DOWN]:.1f}")


def finish(drone: pyzvr.Drone, what: str) -> None:
    """Until the trajectory is done."""
    print(what)
    while not drone.Drone_readTrajectoryStatus()[0]:
        report(drone)
        time.sleep(0.05)
    report(drone)


def fly_square(drone: pyzvr.Drone) -> None:
    pyzvr.check(drone.Drone_setPositionMode())
    drone._checkHeightWithNED(HEIGHT)
    pyzvr.check(drone.Drone_moveNedAbsZ(HEIGHT, 1))
    finish(drone, "Up")
    for north, east, heading in ((SIDE, 0, 0), (0, SIDE, 90), (-SIDE, 0, 180), (0, -SIDE, -90)):
        pyzvr.check(drone.Drone_moveNedAbsYaw(heading, 180))
        pyzvr.check(drone.Drone_moveNedRelXY(north, east, SPEED))
        finish(drone, f"Heading {heading}")


def main() -> None:
    with device("Drone", "--pace", "10") as place, pyzvr.Drone() as drone:
        drone.connect(*place)
        identify(drone)
        print("Taking off while it is not active:", drone.Drone_startTakeOff())
        pyzvr.check(drone.Drone_activate())
        pyzvr.check(drone.Drone_startTakeOff())
        finish(drone, "Taking off")
        try:
            fly_square(drone)
        finally:
            drone.Drone_startLanding()
        finish(drone, "Landing")
        pyzvr.check(drone.Drone_deactivate())


if __name__ == "__main__":
    main()
