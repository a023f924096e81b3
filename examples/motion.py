"""Motion: a controller takes four axes home and along a line, a circle and a helix; a chassis does so with the module
in its first slot; a stepper drive runs moves of its own. The travelled paths are drawn, or told where nothing draws.

    python3 examples/motion.py            starts three simulators, one after the other
    python3 examples/motion.py HOST PORT  uses a motion controller
"""

from __future__ import annotations

import asyncio
import importlib
import sys
import tempfile
import time
from pathlib import Path
from typing import Any

from _simulated import device  # first: it finds a build

import pyzvr

AXES = range(4)
COLUMNS = [f"axis {axis}" for axis in AXES]
DRIVE_COLUMNS = ["motor", "encoder"]
RUNNING = 1  # state of a drive that moves
SWITCHES = ("--axis", "*:-3000")  # the simulated home switches are not far
Sample = tuple[float, list[int]]
Mover = pyzvr.Ratchet | pyzvr.Lattice


async def travel(mover: Mover, port: int) -> list[Sample]:
    """Positions of all axes until they stand; one request at a time, as all axes share a status word."""
    samples: list[Sample] = []
    begin = time.perf_counter()
    standing = False
    while not standing:
        standing = all([await mover.Motion_getMoveStatus_async(port, axis) for axis in AXES])
        positions = [await mover.Motion_getLogicalPosi_async(port, axis) for axis in AXES]
        samples.append((time.perf_counter() - begin, positions))
        await asyncio.sleep(0.01)
    return samples


async def home(mover: Mover, port: int, axis: int) -> None:
    """Configures an axis and starts its search; axes do not meet, so all do this at the same time."""
    pyzvr.check(await mover.Motion_cfgAxis_async(port, axis, 0, 0, 0, 1))
    pyzvr.check(await mover.Motion_cfgLimit_async(port, axis, 1, 1, 1))
    pyzvr.check(await mover.Motion_cfgHome_async(port, axis, 1, 1))
    pyzvr.check(await mover.Motion_cfgFindRef_async(port, axis, 0, 1, 20000, 200000, 20, 1))
    pyzvr.check(await mover.Motion_findRef_async(port, axis))


async def run(mover: Mover, port: int) -> dict[str, list[Sample]]:
    paths = {}
    pyzvr.check(await mover.Motion_open_async(port))
    await asyncio.gather(*(home(mover, port, axis) for axis in AXES))
    paths["home"] = await travel(mover, port)

    await mover.Motion_cfg4AxisLinearInterpo_async(port, 0, 4000, 1, 3000, 2, 2000, 3, 1000, 8000, 40000, 40000)
    pyzvr.check(await mover.Motion_startLinearInterpo_async(port))
    paths["line"] = await travel(mover, port)

    await mover.Motion_cfgCircularInterpo_async(port, 0, 1, 2000, 0, 0, 0, 0, 12000, 60000, 60000)
    pyzvr.check(await mover.Motion_startCircularInterpo_async(port))
    paths["circle"] = await travel(mover, port)

    await mover.Motion_cfgHelicalInterpo_async(port, 0, 1000, 0, 0, 1, 500, 0, 0, 3, 16000, 1, 2000)
    pyzvr.check(await mover.Motion_startHelicalInterpo_async(port))
    paths["helix"] = await travel(mover, port)
    return paths


async def follow(pawl: pyzvr.Pawl, seconds: float = 60) -> list[Sample]:
    """Positions of motor and encoder until the drive is done; it is stopped after so many seconds."""
    samples: list[Sample] = []
    begin = time.perf_counter()
    stopped = False
    while (await pawl.Motion_getProcessState_async(0))[0] == RUNNING:
        encoder, motor = await pawl.Motion_readEncoderPosition_async(0)
        samples.append((time.perf_counter() - begin, [signed(motor), signed(encoder)]))
        if samples[-1][0] > seconds and not stopped:
            stopped = await pawl.Motion_stopProcess_async(0) == 0
        await asyncio.sleep(0.01)
    return samples


def signed(position: int) -> int:
    return position - (1 << 32) if position >> 31 else position


async def run_drive(pawl: pyzvr.Pawl) -> dict[str, list[Sample]]:
    paths = {}
    pyzvr.check(await pawl.Motion_cfgLimit_async(0, 1, 1, 1))
    pyzvr.check(await pawl.Motion_enableServoOn_async(0))
    pyzvr.check(await pawl.Motion_startFindHome_async(0, 20000, 4000, 200000, 1, 1, 0, "true"))
    paths["home"] = await follow(pawl)
    pyzvr.check(await pawl.Motion_startVelocticyMove_async(0, 8000, 0, 40000, 40000))
    paths["velocity"] = await follow(pawl, 0.5)
    pyzvr.check(await pawl.Motion_startPositionMove_async(0, -2000, 15000, 60000, 60000, 0))
    paths["position"] = await follow(pawl)
    pyzvr.check(await pawl.Motion_startScanMove_async(0, 1000, -1000, 20000, 100000))
    paths["scan"] = await follow(pawl, 1)
    pyzvr.check(await pawl.Motion_enableServoOff_async(0))
    return paths


def tell(paths: dict[str, list[Sample]]) -> None:
    for name, samples in paths.items():
        columns = COLUMNS if len(samples[0][1]) == len(COLUMNS) else DRIVE_COLUMNS
        print(f"{name:>8}{'seconds':>10}" + "".join(f"{column:>9}" for column in columns))
        for seconds, positions in samples[:: len(samples) // 6 + 1] + samples[-1:]:
            print(f"{seconds:18.3f}" + "".join(f"{position:9}" for position in positions))


def draw(paths: dict[str, list[Sample]], path: Path) -> None:
    """A picture of axes 0 to 2, or of the drive's motor over time; tables where matplotlib is not installed."""
    try:
        matplotlib: Any = importlib.import_module("matplotlib")
        matplotlib.use("Agg")
        pyplot: Any = importlib.import_module("matplotlib.pyplot")
    except ImportError:
        tell(paths)
        return
    picture = pyplot.figure()
    if len(next(iter(paths.values()))[0][1]) == len(AXES):
        room = picture.add_subplot(projection="3d")
        for name, samples in paths.items():
            room.plot(*zip(*(positions[:3] for _, positions in samples)), label=name)
        room.set(xlabel="axis 0", ylabel="axis 1", zlabel="axis 2")
    else:
        room = picture.add_subplot(xlabel="seconds", ylabel="pulses of the motor")
        for name, samples in paths.items():
            room.plot(*zip(*((seconds, positions[0]) for seconds, positions in samples)), label=name)
    room.legend()
    picture.savefig(path)
    print("Drawn to", path)


def report(handle: Mover | pyzvr.Pawl, paths: dict[str, list[Sample]]) -> None:
    for name, samples in paths.items():
        print(f"{name:>8}: {samples[-1][0]:.2f} s, ends at", samples[-1][1])
    draw(paths, Path(tempfile.gettempdir()) / f"pyzvr-motion-{type(handle).__name__}.png")


def controller() -> None:
    with device("Ratchet", *SWITCHES) as place, pyzvr.Ratchet() as ratchet:
        ratchet.connect(*place)
        report(ratchet, asyncio.run(run(ratchet, 0)))


def chassis() -> None:
    with device("Lattice", *SWITCHES) as place, pyzvr.Lattice() as lattice:
        lattice.connect(*place)
        pyzvr.check(lattice.Sys_setMotionMode(1))
        report(lattice, asyncio.run(run(lattice, 1)))


def drive() -> None:
    with device("Pawl", *SWITCHES) as place, pyzvr.Pawl() as pawl:
        pawl.connect(*place)
        report(pawl, asyncio.run(run_drive(pawl)))


def main() -> None:
    controller()
    if len(sys.argv) == 1:
        chassis()
        drive()


if __name__ == "__main__":
    main()
