"""Three boxes at once in one event loop: a stream, temperatures, and a door that is watched."""

import asyncio

import pyzvr
import zvrkit.sim


async def stream(box: pyzvr.TarnAnalog) -> None:
    """Tells the highest voltage of channel 0 in each of four blocks."""
    await box.AI_open_async(0)
    await box.AI_setMode_async(0, 2)
    await box.AI_setSamplingRate_async(0, 2000)
    async with box.AI_stream(0, 500) as blocks:
        async for block in blocks:
            print("volts:  ", max(row[0] for row in block))
            if block.first_row + len(block) == 2000:
                break


async def temperatures(box: pyzvr.TarnThermo) -> None:
    """Tells the temperature of two sensors, three times."""
    await box.Thermal_open_async(1)
    for _ in range(3):
        values = [await box.Thermal_readSensor_async(1, channel) for channel in (0, 1)]
        print("degrees:", *(round(value) for value in values))
        await asyncio.sleep(0.2)


async def door(box: pyzvr.TarnDio) -> None:
    """Waits until input 3 of port 1 is high."""
    while await box.DI_readPins_async(1, [3]) != [1]:
        await asyncio.sleep(0.01)
    print("door:    open")


async def main() -> None:
    simulate = zvrkit.sim.device
    with simulate("TarnAnalog") as one, simulate("TarnThermo") as two, simulate("TarnDio") as three:
        async with pyzvr.TarnAnalog() as analog, pyzvr.TarnThermo() as thermo, pyzvr.TarnDio() as dio:
            await analog.connect_async(*one.address)
            await thermo.connect_async(*two.address)
            await dio.connect_async(*three.address)
            # Somebody opens the door.
            asyncio.get_running_loop().call_later(0.5, three.level, 1, 3, True)
            await asyncio.gather(stream(analog), temperatures(thermo), door(dio))
    print("all are done")


asyncio.run(main())
