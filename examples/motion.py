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

import pyzvr
from _simulated import device

AXES = range(4)
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
    assert await mover.Motion_cfgAxis_async(port, axis, 0, 0, 0, 1) == 0
    assert await mover.Motion_cfgLimit_async(port, axis, 1, 1, 1) == 0
    assert await mover.Motion_cfgHome_async(port, axis, 1, 1) == 0
    assert await mover.Motion_cfgFindRef_async(port, axis, 0, 1, 20000, 200000, 20, 1) == 0
    assert await mover.Motion_findRef_async(port, axis) == 0


async def run(mover: Mover, port: int) -> dict[str, list[Sample]]:
    paths = {}
    assert await mover.Motion_open_async(port) == 0
    await asyncio.gather(*(home(mover, port, axis) for axis in AXES))
    paths["home"] = await travel(mover, port)

    await mover.Motion_cfg4AxisLinearInterpo_async(port, 0, 4000, 1, 3000, 2, 2000, 3, 1000, 8000, 40000, 40000)
    assert await mover.Motion_startLinearInterpo_async(port) == 0
    paths["line"] = await travel(mover, port)

    await mover.Motion_cfgCircularInterpo_async(port, 0, 1, 2000, 0, 0, 0, 0, 12000, 60000, 60000)
    assert await mover.Motion_startCircularInterpo_async(port) == 0
    paths["circle"] = await travel(mover, port)

    await mover.Motion_cfgHelicalInterpo_async(port, 0, 1000, 0, 0, 1, 500, 0, 0, 3, 16000, 1, 2000)
    assert await mover.Motion_startHelicalInterpo_async(port) == 0
    paths["helix"] = await travel(mover, port)
    return paths


def tell(paths: dict[str, list[Sample]]) -> None:
    for name, samples in paths.items():
        print(f"{name:>8}{'seconds':>10}" + "".join(f"{f'axis {axis}':>9}" for axis in AXES))
        for seconds, positions in samples[:: len(samples) // 6 + 1] + samples[-1:]:
            print(f"{seconds:18.3f}" + "".join(f"{position:9}" for position in positions))


def draw(paths: dict[str, list[Sample]], path: Path) -> None:
    """A picture of axes 0 to 2, or tables where matplotlib is not installed."""
    try:
        matplotlib: Any = importlib.import_module("matplotlib")
        matplotlib.use("Agg")
        pyplot: Any = importlib.import_module("matplotlib.pyplot")
    except ImportError:
        tell(paths)
        return
    picture = pyplot.figure()
    room = picture.add_subplot(projection="3d")
    for name, samples in paths.items():
        room.plot(*zip(*(positions[:3] for _, positions in samples)), label=name)
    room.set(xlabel="axis 0", ylabel="axis 1", zlabel="axis 2")
    room.legend()
    picture.savefig(path)
    print("Drawn to", path)


def report(mover: Mover, port: int) -> None:
    paths = asyncio.run(run(mover, port))
    for name, samples in paths.items():
        print(f"{name:>8}: {samples[-1][0]:.2f} s, ends at", samples[-1][1])
    draw(paths, Path(tempfile.gettempdir()) / f"pyzvr-motion-{type(mover).__name__}.png")


def controller() -> None:
    with device("Ratchet", *SWITCHES) as place, pyzvr.Ratchet() as ratchet:
        ratchet.connect(*place)
        report(ratchet, 0)


def chassis() -> None:
    with device("Lattice", *SWITCHES) as place, pyzvr.Lattice() as lattice:
        lattice.connect(*place)
        assert lattice.Sys_setMotionMode(1) == 0
        report(lattice, 1)


def main() -> None:
    controller()
    if len(sys.argv) == 1:
        chassis()


if __name__ == "__main__":
    main()
