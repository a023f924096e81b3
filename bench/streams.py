"""Acquisition: how fast a stream is taken, what it costs, and whether many at once lose anything.

All contenders take the same runs of eight 16-bit channels from one simulator, which sends as fast as the socket takes,
in frames of the size that a device at 20 kHz sends; in turns, in a new order every round. Each gives volts, rounded to
4 decimals: in memory (the C++ client, the library's queue and its blocks, NumPy) or as lists (the library, plain Python).
"""

from __future__ import annotations

import array
import gc
import json
import random
import socket
import statistics
import struct
import subprocess
import threading
import time
from collections.abc import Callable

import numpy
import zvrkit.sim
from devices import BIN, opened, resident

import pyzvr

RATIO = 10 / 32768
CHANNELS = 8
HEAD, TAIL = 6, 2  # bytes of a frame before and behind its samples: start, length, command, port, chip select; trailer
Run = Callable[[tuple[str, int], int], tuple[float, float]]


def timed(action: Callable[[], None]) -> tuple[float, float]:
    """Seconds and processor seconds."""
    gc.collect()
    begin, spent = time.perf_counter(), time.process_time()
    action()
    return time.perf_counter() - begin, time.process_time() - spent


# What a user would write without the library.


def request(command: int, *data: int) -> bytes:
    return bytes([2, 0, 1 + len(data), command, *data, 13, 10])


def plain_frames(address: tuple[str, int], rows: int, take: Callable[[bytes], int]) -> tuple[float, float]:
    """Hands the samples of each frame to `take`, which tells how many rows they were."""
    link = socket.create_connection(address)
    link.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
    for each in (request(pyzvr.SET_AI_MODE, 0, 1), request(pyzvr.SET_AI_NUM_SAMPLES, 0, *rows.to_bytes(4, "big")),
                 request(pyzvr.OPEN_AI_STREAMING, 0)):
        link.sendall(each)
        link.recv(100)

    def work() -> None:
        link.sendall(request(pyzvr.START_AI_STREAMING, 0))
        pending, taken = b"", 0
        while taken < rows:
            pending += link.recv(1 << 16)
            begin = 0
            while len(pending) - begin >= 3:
                end = begin + 5 + int.from_bytes(pending[begin + 1:begin + 3], "big")
                if end > len(pending):
                    break
                taken += take(pending[begin + HEAD:end - TAIL])
                begin = end
            pending = pending[begin:]

    result = timed(work)
    link.close()
    return result


def with_numpy(address: tuple[str, int], rows: int) -> tuple[float, float]:
    blocks = []

    def take(samples: bytes) -> int:
        codes = numpy.frombuffer(samples, ">i2").reshape(-1, CHANNELS)
        blocks.append(numpy.round(codes * RATIO, 4))
        return len(codes)

    return plain_frames(address, rows, take)


def with_plain_python(address: tuple[str, int], rows: int) -> tuple[float, float]:
    result: list[list[float]] = []

    def take(samples: bytes) -> int:
        some = [[round(code * RATIO, 4) for code in codes] for codes in struct.iter_unpack(f">{CHANNELS}h", samples)]
        result.extend(some)
        return len(some)

    return plain_frames(address, rows, take)


def native(address: tuple[str, int], rows: int) -> tuple[float, float]:
    said = subprocess.run([BIN / "ingest_client", address[0], str(address[1]), str(rows)], capture_output=True, text=True, check=True)
    told = json.loads(said.stdout)
    return told["seconds"], told["cpu"]


# The library.


def with_library(take: Callable[[pyzvr.TarnAnalog, int], None]) -> Run:
    def run(address: tuple[str, int], rows: int) -> tuple[float, float]:
        box = opened(address, 1, rows)

        def work() -> None:
            box.AI_startStreaming(0)
            take(box, rows)

        result = timed(work)
        box.close(verbose=False)
        return result

    return run


def into_queue(box: pyzvr.TarnAnalog, rows: int) -> None:
    while box.AI_getBacklog(0) < rows:
        time.sleep(0.001)


def as_blocks(box: pyzvr.TarnAnalog, rows: int) -> None:
    blocks = []
    while rows > 0:
        blocks.append(numpy.asarray(box.AI_readStreamingBlock(0, min(rows, 20000), 1)))
        rows -= len(blocks[-1])


def as_lists(box: pyzvr.TarnAnalog, rows: int) -> None:
    result: list[list[float]] = []
    while len(result) < rows:
        result += box.AI_readStreaming(0, min(rows - len(result), 20000), 1)


CONTENDERS: dict[str, tuple[Run, int]] = {  # with rows of a run
    "C++ client": (native, 400_000),
    "pyzvr, into the queue": (with_library(into_queue), 400_000),
    "pyzvr, blocks": (with_library(as_blocks), 400_000),
    "NumPy client": (with_numpy, 400_000),
    "pyzvr, lists": (with_library(as_lists), 200_000),
    "plain Python client": (with_plain_python, 40_000),
}


def ingest(address: tuple[str, int], rounds: int) -> list[tuple[str, float, float]]:
    times: dict[str, list[tuple[float, float]]] = {name: [] for name in CONTENDERS}
    for _ in range(rounds):
        for name in random.sample(list(CONTENDERS), len(CONTENDERS)):
            run, rows = CONTENDERS[name]
            seconds, spent = run(address, rows)
            millions = rows * CHANNELS / 1e6
            times[name].append((millions / seconds, spent / millions))
    rate = {name: statistics.median(each for each, _ in seen) for name, seen in times.items()}
    cost = {name: statistics.median(each for _, each in seen) for name, seen in times.items()}
    print(f"\nTaking a stream as fast as it comes\n{'':26}{'Msamples/s':>12}{'CPU ms/Msample':>16}{'of C++ rate':>12}")
    for name in CONTENDERS:
        print(f"{name:26}{rate[name]:12.1f}{1000 * cost[name]:16.2f}{rate[name] / rate['C++ client']:12.2f}")
    print()
    return [("C++ client's rate / that into the queue", rate["C++ client"] / rate["pyzvr, into the queue"], 1 / 0.6),
            ("NumPy client's rate / that of blocks", rate["NumPy client"] / rate["pyzvr, blocks"], 1 / 2),
            ("plain Python's rate / that of lists", rate["plain Python client"] / rate["pyzvr, lists"], 1 / 10)]


def memory(address: tuple[str, int]) -> list[tuple[str, float, float]]:
    """Bytes that a queued row takes."""
    box = opened(address, 1, 1_000_000)
    before = resident()
    box.AI_startStreaming(0)
    into_queue(box, 1_000_000)
    held = (resident() - before) / 1_000_000
    box.close(verbose=False)
    return [(f"bytes of a queued row of {CHANNELS} samples", held, 8 * CHANNELS + 16)]


def cost_of(addresses: list[tuple[str, int]], seconds: float) -> tuple[float, int]:
    """Part of a core that streams of 20 kHz take while they are read into memory, and rows that are missing."""
    boxes = [opened(address, 2, 0) for address in addresses]
    rows = [0] * len(boxes)
    wanted = int(20000 * seconds)

    def follow(number: int) -> None:
        room = array.array("d", bytes(8 * CHANNELS * 1000))
        boxes[number].AI_startStreaming(0)
        while rows[number] < wanted:
            rows[number] += boxes[number].AI_readStreamingInto(0, room, 1)

    threads = [threading.Thread(target=follow, args=[number]) for number in range(len(boxes))]

    def work() -> None:
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()

    elapsed, spent = timed(work)
    lost = sum(box._AI_getCounter(0)[4] + box.AI_getDroppedRows(0) for box in boxes)
    for box in boxes:
        box.AI_closeStreaming(0)
        box.close(verbose=False)
    return spent / elapsed, lost


def report(start: Callable[..., zvrkit.sim.Place], rounds: int) -> list[tuple[str, float, float]]:
    """Gives what is to be reached: text, value and limit. `start` makes a simulator of TarnAnalog."""
    with start("--fast", "--frame-rows", "86") as simulator:
        goals = ingest(simulator.address, rounds) + memory(simulator.address)
    simulators = [start() for _ in range(16)]
    addresses = [each.address for each in simulators]
    one, lost_of_one = cost_of(addresses[:1], 5)
    all_, lost_of_all = cost_of(addresses, 5)
    for each in simulators:
        each.close()
    print(f"20 kHz x {CHANNELS}: one stream takes {100 * one:.1f} % of a core, 16 together {100 * all_:.1f} %\n")
    return [*goals, ("% of a core for one stream", 100 * one, 5), ("rows lost", lost_of_one + lost_of_all, 0)]
