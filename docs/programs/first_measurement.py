"""Reads eight channels of a box once, then a moment of the first one as a picture of text."""

import pyzvr
import zvrkit.sim

with zvrkit.sim.device("TarnAnalog") as place, pyzvr.TarnAnalog() as box:
    box.connect(*place.address)
    box.AI_open(0)
    print(len(box.AI_readOnDemand(0)), "channels")

    box.AI_setMode(0, 1)  # a number of samples, then stop
    box.AI_setNumSamples(0, 16)
    box.AI_setSamplingRate(0, 160)
    for block in box.AI_stream(0, 16):
        for row in block:
            print(f"{row[0]:7.3f} V |" + " " * round(20 + 4 * row[0]) + "*")
