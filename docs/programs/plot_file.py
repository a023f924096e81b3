"""Draws the first 100 ms of run.csv as run.png."""

import csv

import matplotlib

matplotlib.use("Agg")  # into a file, without a window
from matplotlib import pyplot  # noqa: E402

RATE, SHOWN = 10000, 1000

with open("run.csv", newline="") as file:
    header, *rows = csv.reader(file)

times = [1000 * row / RATE for row in range(SHOWN)]
for channel in (0, 1, 2):
    pyplot.plot(times, [float(row[channel]) for row in rows[:SHOWN]], label=header[channel])
pyplot.xlabel("time (ms)")
pyplot.ylabel("voltage (V)")
pyplot.legend(loc="upper right")
pyplot.savefig("run.png")
print(len(rows), "rows read, run.png written")
