"""Acquisition: how fast a stream is taken, what it costs, and whether many at once lose anything.

All contenders take runs of eight 16-bit channels from one feeder, which sends frames that it has made before, and
costs next to nothing itself; in turns, in a new order every round. Flat out, frames have 600 rows; paced, the 100 rows
of 5 ms at 20 kHz, which are taken one frame at a time. Each gives volts, rounded to 4 decimals: as doubles (the C++
client into memory that is there, the library in blocks, NumPy in arrays) or as rows that are lists. "Kept" means that
all of a run stays until its end, so that there is always new memory; else every piece is dropped before the next.
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
from devices import BIN, Feeder, opened, resident

import pyzvr

RATIO = 10 / 32768
CHANNELS = 8
FRAME_ROWS = 600
PACED_ROWS, PACED_RATE = 100, 20000
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


def with_numpy(hand_over: Callable[[numpy.ndarray, list], object]) -> Run:
    def run(address: tuple[str, int], rows: int) -> tuple[float, float]:
        kept: list[numpy.ndarray] = []

        def take(samples: bytes) -> int:
            codes = numpy.frombuffer(samples, ">i2").reshape(-1, CHANNELS)
            hand_over(numpy.round(codes * RATIO, 4), kept)
            return len(codes)

        return plain_frames(address, rows, take)

    return run


def with_plain_python(address: tuple[str, int], rows: int) -> tuple[float, float]:
    def take(samples: bytes) -> int:
        return len([[round(code * RATIO, 4) for code in codes] for codes in struct.iter_unpack(f">{CHANNELS}h", samples)])

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


def reading(name: str, count: int, keeps: bool = False) -> Run:
    def take(box: pyzvr.TarnAnalog, rows: int) -> None:
        kept = []
        read = getattr(box, name)
        while rows > 0:
            some = read(0, min(rows, count), 1)
            rows -= len(some)
            if keeps:
                kept.append(some)

    return with_library(take)


CPP, NUMPY, NUMPY_LISTS, PLAIN = "C++ client", "NumPy client", "NumPy client, lists", "plain Python client, lists"
QUEUE, BLOCKS, LISTS = "pyzvr, into the queue", "pyzvr, blocks of a frame", "pyzvr, lists"
CONTENDERS: dict[str, tuple[Run, int]] = {  # with rows of a run
    CPP: (native, 900_000),
    QUEUE: (with_library(into_queue), 900_000),
    BLOCKS: (reading("AI_readStreamingBlock", FRAME_ROWS), 900_000),
    "pyzvr, blocks of 20,000": (reading("AI_readStreamingBlock", 20000), 900_000),
    "pyzvr, the same, kept": (reading("AI_readStreamingBlock", 20000, keeps=True), 900_000),
    NUMPY: (with_numpy(lambda values, kept: None), 900_000),
    "NumPy client, kept": (with_numpy(lambda values, kept: kept.append(values)), 900_000),
    LISTS: (reading("AI_readStreaming", FRAME_ROWS), 300_000),
    "pyzvr, lists, kept": (reading("AI_readStreaming", FRAME_ROWS, keeps=True), 300_000),
    NUMPY_LISTS: (with_numpy(lambda values, kept: values.tolist()), 150_000),
    PLAIN: (with_plain_python, 30_000),
}


def ingest(address: tuple[str, int], rounds: int) -> list[tuple[str, float, float]]:
    times: dict[str, list[tuple[float, float]]] = {name: [] for name in CONTENDERS}
    for _ in range(rounds):
        for name in random.sample(list(CONTENDERS), len(CONTENDERS)):
            run, rows = CONTENDERS[name]
            rows -= rows % FRAME_ROWS
            seconds, spent = run(address, rows)
            millions = rows * CHANNELS / 1e6
            times[name].append((millions / seconds, spent / millions))
    rate = {name: statistics.median(each for each, _ in seen) for name, seen in times.items()}
    cost = {name: statistics.median(each for _, each in seen) for name, seen in times.items()}
    print(f"\nTaking a stream as fast as it comes\n{'':26}{'Msamples/s':>12}{'CPU ms/Msample':>16}{'of C++ rate':>12}")
    for name in CONTENDERS:
        print(f"{name:26}{rate[name]:12.1f}{1000 * cost[name]:16.2f}{rate[name] / rate[CPP]:12.2f}")
    print()
    return [("C++ client's rate / that of blocks", rate[CPP] / rate[BLOCKS], 1 / 0.8),
            ("NumPy's rate of rows as lists / that of lists", rate[NUMPY_LISTS] / rate[LISTS], 1 / 7),
            ("plain Python's rate / that of lists", rate[PLAIN] / rate[LISTS], 1 / 80)]


def paced(address: tuple[str, int], rounds: int, rows: int) -> list[tuple[str, float, float]]:
    """Parts of a core that a stream of 160,000 samples a second takes, taken frame by frame."""
    runs = {CPP: native, BLOCKS: reading("AI_readStreamingBlock", PACED_ROWS),
            LISTS: reading("AI_readStreaming", PACED_ROWS), NUMPY: with_numpy(lambda values, kept: None)}
    parts: dict[str, list[float]] = {name: [] for name in runs}
    for _ in range(rounds):
        for name in random.sample(list(runs), len(runs)):
            seconds, spent = runs[name](address, rows)
            parts[name].append(100 * spent / seconds)
    percent = {name: statistics.median(seen) for name, seen in parts.items()}
    print(f"A stream of 160 kS/s, frame by frame\n{'':26}{'% of a core':>12}")
    for name, value in percent.items():
        print(f"{name:26}{value:12.2f}")
    print()
    return [("% of a core for blocks at 160 kS/s", percent[BLOCKS], 1.5),
            ("% of a core for lists at 160 kS/s", percent[LISTS], 3)]


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
    with Feeder(FRAME_ROWS, 0) as feeder:
        goals = ingest(feeder.address, rounds)
    with Feeder(PACED_ROWS, PACED_RATE) as feeder:
        goals += paced(feeder.address, max(rounds, 5), 2 * PACED_RATE)
    with start("--fast", "--frame-rows", "86") as simulator:
        goals += memory(simulator.address)
    simulators = [start() for _ in range(16)]
    addresses = [each.address for each in simulators]
    one, lost_of_one = cost_of(addresses[:1], 5)
    all_, lost_of_all = cost_of(addresses, 5)
    for each in simulators:
        each.close()
    print(f"20 kHz x {CHANNELS}: one stream takes {100 * one:.1f} % of a core, 16 together {100 * all_:.1f} %\n")
    return [*goals, ("% of a core for one stream", 100 * one, 5), ("rows lost", lost_of_one + lost_of_all, 0)]
