"""What the measurements stand on: programs of the build, and devices of the library that are ready to stream."""

from __future__ import annotations

import os
from pathlib import Path

import zvrkit.sim

import pyzvr

BIN = Path(zvrkit.sim.program()).parent


def opened(address: tuple[str, int], mode: int, rows: int) -> pyzvr.TarnAnalog:
    """Ready for a run at 20 kHz; `rows` counts in mode 1 only."""
    box = pyzvr.TarnAnalog()
    box.connect(*address, verbose=False)
    box.AI_open(0)
    box.AI_setMode(0, mode)
    box.AI_setSamplingRate(0, 20000)
    box.AI_setNumSamples(0, rows)
    box.AI_openStreaming(0)
    return box


def resident() -> int:
    """Bytes of memory that the process has."""
    with open("/proc/self/statm") as file:
        return int(file.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")
