"""Motion: what the operations cost beside the bare exchanges that they are made of, and four axes from one loop."""

from __future__ import annotations

import asyncio
import contextlib
import functools
import io
import statistics
import time
from collections.abc import Callable
from typing import Any

import pyzvr

BARE = "bare exchange"
WRITE = [0, pyzvr.MOTION_E3_WR3, 1, 0, 0, 0, 24]
# A move with two rates: five values, and two registers read and written.
MOVE = (0, 0, 1, 5000, 4000, 30000, 20000)
CALLS = [
    (BARE, 1, "_echoPacketWithRetry", (pyzvr.MOTION, WRITE)),
    ("register write", 1, "_Motion_writeWR3", (0, 0, 24)),
    ("move configured", 9, "Motion_cfgAxisMove", MOVE),
]
now = time.perf_counter_ns


class Call:
    """One operation of a controller, again and again."""

    def __init__(self, name: str, operation: str, arguments: tuple[Any, ...], awaited: bool, address: tuple[str, int]):
        self.name = f"{name}, awaited" if awaited else name
        self.mover = pyzvr.Ratchet()
        self.mover.connect(*address, verbose=False)
        self.loop = asyncio.new_event_loop() if awaited else None
        self.call: Callable[..., Any] = getattr(self.mover, operation + ("_async" if awaited else ""))
        self.arguments = arguments

    def batch(self, count: int) -> list[int]:
        if self.loop is not None:
            return self.loop.run_until_complete(self.run(count))
        times = []
        for _ in range(count):
            begin = now()
            self.call(*self.arguments)
            times.append(now() - begin)
        return times

    async def run(self, count: int) -> list[int]:
        times = []
        for _ in range(count):
            begin = now()
            await self.call(*self.arguments)
            times.append(now() - begin)
        return times

    def close(self) -> None:
        self.mover.close(verbose=False)
        if self.loop is not None:
            self.loop.close()


def compare(times: dict[str, list[int]]) -> list[tuple[str, float, float]]:
    """Prints medians in units of one bare exchange of the same form; gives what is to be reached."""
    goals = []
    print(f"\nMotion\n{'':26}{'median us':>12}{'of exchange':>13}{'exchanges':>11}")
    for ending in ("", ", awaited"):
        unit = statistics.median(times[BARE + ending])
        for name, exchanges, _, _ in CALLS:
            cost = statistics.median(times[name + ending])
            print(f"{name + ending:26}{cost / 1000:12.1f}{cost / unit:13.2f}{exchanges:11}")
            if name != BARE:
                goals.append((f"{name}{ending} / its exchanges", cost / unit / exchanges, 1.15))
    return goals


async def four_axes(mover: pyzvr.Ratchet, rounds: int) -> int:
    """Configures all axes at once and reads them back; gives how many axes did not get their own."""

    async def one(axis: int, number: int) -> bool:
        speed, rate = 1000 * axis + number, 10000 * axis + number + 1
        await mover.Motion_cfgAxisMove_async(0, axis, 1, number, speed, rate, rate)
        seen = await mover._Motion_getDriveSpeed_async(0, axis), await mover._Motion_getAcceleration_async(0, axis)
        return seen != (speed, rate)

    wrong = 0
    for number in range(1, rounds + 1):
        wrong += sum(await asyncio.gather(*(one(axis, number) for axis in range(4))))
    return wrong


def together(address: tuple[str, int], rounds: int = 200) -> tuple[str, float, float]:
    with contextlib.redirect_stdout(io.StringIO()), pyzvr.Ratchet() as mover:
        mover.connect(*address)
        begin = time.perf_counter()
        wrong = asyncio.run(four_axes(mover, rounds))
        rate = 4 * rounds / (time.perf_counter() - begin)
    print(f"four axes from one loop: {4 * rounds - wrong} of {4 * rounds} right, {rate:.0f} a second\n")
    return "axes with replies of others", wrong, 0


def report(
    simulator: Callable[[], Any], measure: Callable[..., dict[str, list[int]]], rounds: int
) -> list[tuple[str, float, float]]:
    kinds = [functools.partial(Call, name, operation, arguments, awaited)
             for awaited in (False, True) for name, _, operation, arguments in CALLS]
    with simulator() as device:
        with contextlib.redirect_stdout(io.StringIO()):
            times = measure(kinds, device.address, rounds, 50)
        return [*compare(times), together(device.address)]
