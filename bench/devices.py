"""What the measurements stand on: programs of the build, and devices of the library that are ready to stream."""

from __future__ import annotations

import json
import os
import subprocess
from pathlib import Path

import zvrkit.sim

import pyzvr

BIN = Path(zvrkit.sim.program()).parent


class Feeder:
    """Streams what is ready before it is asked for; with `rate` 0 as fast as it is taken."""

    def __init__(self, frame_rows: int, rate: int) -> None:
        command = [str(BIN / "stream_feeder"), str(frame_rows), str(rate)]
        self.process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        said = json.loads(self.process.stdout.readline())
        self.address = said["host"], said["command_port"]

    def __enter__(self) -> Feeder:
        return self

    def __exit__(self, *_: object) -> None:
        self.process.stdin.close()
        self.process.wait()


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
