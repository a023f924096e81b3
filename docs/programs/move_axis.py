"""Takes an axis home, moves it, and follows it on the way."""

import asyncio
import time

import pyzvr
import zvrkit.sim

AXIS = 0


async def home(ratchet: pyzvr.Ratchet) -> None:
    await ratchet.Motion_cfgAxis_async(0, AXIS, 0, 0, 0, 1)
    await ratchet.Motion_cfgLimit_async(0, AXIS, 1, 1, 1)
    await ratchet.Motion_cfgHome_async(0, AXIS, 1, 1)
    await ratchet.Motion_cfgFindRef_async(0, AXIS, 0, 1, 20000, 200000, 20, 1)
    await ratchet.Motion_findRef_async(0, AXIS)
    while not await ratchet.Motion_getMoveStatus_async(0, AXIS):
        await asyncio.sleep(0.01)


async def move(ratchet: pyzvr.Ratchet, target: int) -> None:
    """Tells when the axis has come another 500 pulses."""
    await ratchet.Motion_cfgAxisMove_async(0, AXIS, 0, target, 10000, 40000, 40000)
    await ratchet.Motion_startSingleAxisMove_async(0, AXIS)
    begin, mark = time.monotonic(), 500
    while mark <= target:
        position = await ratchet.Motion_getLogicalPosi_async(0, AXIS)
        while mark <= min(position, target):
            print(f"{time.monotonic() - begin:5.2f} s {mark:5d} pulses " + "#" * (mark // 100))
            mark += 500
        await asyncio.sleep(0.005)


async def main() -> None:
    with zvrkit.sim.device("Ratchet", "--axis", "*:-3000") as place:
        async with pyzvr.Ratchet() as ratchet:
            await ratchet.connect_async(*place.address)
            await ratchet.Motion_open_async(0)
            await home(ratchet)
            print("home at", await ratchet.Motion_getLogicalPosi_async(0, AXIS))
            await move(ratchet, 5000)


asyncio.run(main())
