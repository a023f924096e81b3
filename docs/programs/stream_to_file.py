"""Streams for two seconds into a CSV file."""

import pyzvr
import zvrkit.sim

RATE, SECONDS = 10000, 2

with zvrkit.sim.device("TarnAnalog") as place, pyzvr.TarnAnalog() as box:
    box.connect(*place.address)
    box.AI_open(0)
    box.AI_setMode(0, 2)  # continuous
    box.AI_setSamplingRate(0, RATE)

    box.Logger_openFile("run.csv", clear_old=True)
    box.Logger_writeHeader([f"channel {number} (V)" for number in range(8)])
    for block in box.AI_stream(0, RATE // 2):
        box.Logger_write2DList(block)
        rows = block.first_row + len(block)
        print(f"{rows:6d} rows, {box.AI_getDroppedRows(0)} dropped")
        if rows >= RATE * SECONDS:
            break
    box.Logger_flush()  # returns when all of it is in the file
