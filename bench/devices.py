"""What the measurements stand on: simulated devices, and devices of the library that are ready to stream."""

from __future__ import annotations

import json
import os
import subprocess
from pathlib import Path

import pyzvr

ROOT = Path(__file__).resolve().parent.parent
BIN = Path(os.environ.get("ZVR_SIM", ROOT / "build/default/bin/zvr-sim")).parent


class Served:
    """A program that says where it listens and ends with its standard input."""

    def __init__(self, *command: str) -> None:
        self.process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        said = json.loads(self.process.stdout.readline())
        self.address = said["host"], said["command_port"]

    def __enter__(self) -> Served:
        return self

    def __exit__(self, *_: object) -> None:
        self.process.stdin.close()
        self.process.wait()


class Simulator(Served):
    def __init__(self, *options: str, model: str = "TarnDio") -> None:
        super().__init__(str(BIN / "zvr-sim"), model, "--port", "0", "--stdin-stop", *options)


class Feeder(Served):
    """Streams what is ready before it is asked for; with `rate` 0 as fast as it is taken."""

    def __init__(self, frame_rows: int, rate: int) -> None:
        super().__init__(str(BIN / "stream_feeder"), str(frame_rows), str(rate))


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
