"""Analog outputs: static levels, generated waveforms, and samples of one's own.

    python3 examples/waveforms.py            starts the simulator of a Tarn-Out by itself
    python3 examples/waveforms.py HOST PORT  uses a device
"""

from __future__ import annotations

import asyncio
import math
import time

from _simulated import device  # first: it finds a build

import pyzvr

PORT = 0
SINE, SQUARE, TRIANGLE = 1, 2, 3
ON_DEMAND, SAMPLES, CONTINUOUS = 0, 1, 2


def static(box: pyzvr.TarnOut) -> None:
    box.AO_writeAllChannels(PORT, [float(channel) for channel in range(8)])
    box.AO_writeOneChannel(PORT, 7, -2.5)
    print("Static:   ", box.AO_getValues(PORT))
    try:
        box.AO_writeOneChannel(PORT, 0, 11)
    except pyzvr.Error as failure:
        print("Refused:  ", type(failure).__name__, failure)


def generated(box: pyzvr.TarnOut) -> None:
    """Two channels, each with a form of its own, until they are stopped."""
    box.AO_openStreaming(PORT)
    box.AO_setMode(PORT, CONTINUOUS)
    box.AO_setSamplingRate(PORT, 10000)
    box.AO_setEnableChannels(PORT, [0, 1])
    for channel, form in enumerate((SINE, TRIANGLE)):
        box.AO_setForm(PORT, channel, form)
        box.AO_setFormParam(PORT, channel, amplitude=5, offset=channel, frequency=2)
    box.AO_startStreaming(PORT)
    for _ in range(5):
        print("Generated:", *(f"{volts:7.3f}" for volts in box.AO_getValues(PORT)[:2]), " state", box._AO_getState(PORT))
        time.sleep(0.05)
    box._AO_stopStreaming(PORT)
    box.AO_closeStreaming(PORT)


async def pushed(box: pyzvr.TarnOut) -> None:
    """A step of 260 values on one channel, up to 13 at once; what the buffer does not take is tried again."""
    await box.AO_openStreaming_async(PORT)
    await box.AO_setMode_async(PORT, CONTINUOUS)
    await box.AO_setSamplingRate_async(PORT, 1000)
    await box.AO_setEnableChannels_async(PORT, [0])
    size, _ = await box._AO_initialBuffer_async(PORT)
    values = [4 * math.tanh(number / 40 - 3) for number in range(260)]
    for first in range(0, len(values), 13):
        some = values[first:first + 13]
        while await box._AO_pushToBuffer_async(PORT, len(some), some) != 0:
            await asyncio.sleep(0.01)
        if first == 0:
            await box.AO_startStreaming_async(PORT)
    while (await box._AO_getCounters_async(PORT))[0] < len(values):
        await asyncio.sleep(0.01)
    level = (await box.AO_getValues_async(PORT))[0]
    print(f"Pushed:    {len(values)} values through a buffer of {size}; the last one is {level:.3f} V")
    assert math.isclose(level, values[-1], abs_tol=1e-3)
    await box._AO_stopStreaming_async(PORT)
    await box.AO_closeStreaming_async(PORT)


def main() -> None:
    with device("TarnOut") as place, pyzvr.TarnOut() as box:
        box.connect(*place)
        box.AO_open(PORT)
        static(box)
        generated(box)
        asyncio.run(pushed(box))
        box.AO_close(PORT)


if __name__ == "__main__":
    main()
