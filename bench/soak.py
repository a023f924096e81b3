"""Sixteen streams of 20 kHz for as long as one likes: every row is compared, and the memory watched.

    python3 bench/soak.py [seconds]

Ends with status 1 if a row is missing, wrong or twice, or if memory grows. The devices are simulated; they send a count,
so that no row can take another one's place unseen.
"""

from __future__ import annotations

import array
import contextlib
import io
import os
import sys
import threading
import time

import zvrkit.sim
from devices import opened, resident

import pyzvr

STREAMS = 16
RATE, CHANNELS, RATIO = 20000, 8, 10 / 32768
PERIOD = 65536 // CHANNELS  # rows after which the count begins anew
AT_ONCE = 1000  # rows
# Bytes; a sanitizer holds back what has been freed.
MOST_GROWTH = 8 * 2**20 if "asan" not in os.environ.get("LD_PRELOAD", "") else 2**40


def expected_rows() -> memoryview:
    """One period and the beginning of the next, as the library gives them."""
    codes = ((code + 32768) % 65536 - 32768 for code in range((PERIOD + AT_ONCE) * CHANNELS))
    return memoryview(array.array("d", (round(code * RATIO, 4) for code in codes))).cast("B")


class Follower(threading.Thread):
    """Takes one stream and compares it."""

    def __init__(self, box: pyzvr.TarnAnalog, expected: memoryview, end: float) -> None:
        super().__init__()
        self.box, self.expected, self.end = box, expected, end
        self.rows = 0
        self.wrong = 0

    def run(self) -> None:
        room = memoryview(array.array("d", bytes(8 * CHANNELS * AT_ONCE)))
        seen = room.cast("B")
        self.box.AI_startStreaming(0)
        while time.monotonic() < self.end:
            count = self.box.AI_readStreamingInto(0, room, 1)
            size, begin = count * CHANNELS * 8, self.rows % PERIOD * CHANNELS * 8
            self.wrong += seen[:size] != self.expected[begin:begin + size]
            self.rows += count


def soak(seconds: float) -> bool:
    expected = expected_rows()
    with contextlib.ExitStack() as stack:
        simulators = [stack.enter_context(zvrkit.sim.device("TarnAnalog", "--wave", "*:count")) for _ in range(STREAMS)]
        with contextlib.redirect_stdout(io.StringIO()):
            boxes = [opened(each.address, 2, 0) for each in simulators]
        begin = time.monotonic()
        followers = [Follower(box, expected, begin + seconds) for box in boxes]
        for follower in followers:
            follower.start()
        time.sleep(min(5, seconds / 4))  # until everything has its size
        settled = most = resident()
        while any(follower.is_alive() for follower in followers):
            followers[0].join(1)
            most = max(most, resident())
            print(f"\r{time.monotonic() - begin:6.0f} s  {sum(each.rows for each in followers):12d} rows  "
                  f"{most / 2**20:6.1f} MB", end="", flush=True)
            time.sleep(1)
        lost = sum(box._AI_getCounter(0)[4] + box.AI_getDroppedRows(0) for box in boxes)
        wrong = sum(each.wrong for each in followers)
        least = min(each.rows for each in followers)
        spent = time.process_time() / (time.monotonic() - begin)
        with contextlib.redirect_stdout(io.StringIO()):
            for box in boxes:
                box.close(verbose=False)
    complete = least >= 0.5 * RATE * seconds  # a busy machine may be behind, a stream that has stopped is not
    print(f"\n{STREAMS} streams, least {least} rows of {RATE * seconds:.0f}; frames and rows lost: {lost}; blocks that "
          f"differ: {wrong}; memory from {settled / 2**20:.1f} to {most / 2**20:.1f} MB; {100 * spent:.0f} % of a core")
    return complete and lost == 0 and wrong == 0 and most - settled < MOST_GROWTH


if __name__ == "__main__":
    sys.exit(0 if soak(float(sys.argv[1]) if len(sys.argv) > 1 else 600) else 1)
