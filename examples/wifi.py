"""A Wi-Fi box: lights, battery, radio and memory card, in the awaitable form.

    python3 examples/wifi.py                  starts a simulator
    python3 examples/wifi.py HOST DATA COMMAND  uses a device, by address and the ports of data and commands
"""

from __future__ import annotations

import asyncio

from _simulated import device  # first: it finds a build

import pyzvr

READ, WRITE = 0, 1


async def blink(box: pyzvr.HeronImu) -> None:
    for light in (box.Wifi_setRedLED_async, box.Wifi_setGreenLED_async, box.Wifi_setBlueLED_async):
        await light(1)
    await box.Wifi_resetLED_async()


async def watch(box: pyzvr.HeronImu) -> None:
    """Several readings at once: each command has replies of its own."""
    battery, signal, warmth, charging = await asyncio.gather(
        box.Wifi_readBattery_async(), box.Wifi_readRSSI_async(), box._Wifi_readThermo_async(),
        box.Wifi_getChargeStatus_async())
    print(f"Battery {battery}, signal {signal} dBm, {warmth:.1f} degrees, {'charging' if charging else 'not charging'}")


async def keep_notes(box: pyzvr.HeronImu) -> None:
    pyzvr.check(await box._SD_open_async())
    print("Card:", await box.SD_getStorage_async())
    pyzvr.check(await box.SD_openFile_async("notes.txt", WRITE))
    await box.SD_writeFile_async("read at " + await box.Sys_getRTC_async())
    await box.SD_closeFile_async()
    await box.SD_openFile_async("notes.txt", READ)
    print("Notes:", "".join(await box.SD_readFile_async(40)))
    await box.SD_closeFile_async()
    await box._SD_close_async()


async def use(box: pyzvr.HeronImu) -> None:
    await blink(box)
    await watch(box)
    await keep_notes(box)


def main() -> None:
    with device("HeronImu") as place, pyzvr.HeronImu() as box:
        box.connect(*place)
        asyncio.run(use(box))


if __name__ == "__main__":
    main()
