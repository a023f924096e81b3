"""The inertial unit of a Wi-Fi box that sways: its attitude as the filter in the box estimates it.

    python3 examples/attitude.py                    starts a simulator
    python3 examples/attitude.py HOST DATA COMMAND  uses a device, by address and the ports of data and commands
"""

from __future__ import annotations

import asyncio

from _simulated import device  # first: it finds a build

import pyzvr

PORT, EVERYTHING = 0, 6
READINGS = 20


def bar(degrees: float) -> str:
    """A needle from -30 to 30 degrees."""
    return f"|{'|':>{round(degrees + 30) // 2 + 1}}".ljust(32) + "|"


async def watch(box: pyzvr.HeronImu) -> None:
    print("   roll   pitch     yaw    rate about x     pull along z")
    for _ in range(READINGS):
        values = await box.AHRS_getEstimate_async(PORT, EVERYTHING)
        roll, pitch, yaw, rate, *_, pull = values
        print(f"{roll:7.2f} {pitch:7.2f} {yaw:7.2f} {rate:15.3f} {pull:16.3f}  {bar(roll)}")
        await asyncio.sleep(0.05)
    acceleration = await box.AHRS_getAcceleration_rad_async(PORT)
    print("Acceleration:", *acceleration, "is", round(sum(value * value for value in acceleration) ** 0.5, 3), "in all")


async def use(box: pyzvr.HeronImu) -> None:
    pyzvr.check(await box.AHRS_open_async(PORT))
    await box.AHRS_start_async(PORT)
    await watch(box)
    await box.AHRS_stop_async(PORT)
    await box.AHRS_close_async(PORT)


def main() -> None:
    with device("HeronImu", "--pace", "8") as place, pyzvr.HeronImu() as box:
        box.connect(*place)
        asyncio.run(use(box))


if __name__ == "__main__":
    main()
