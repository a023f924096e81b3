"""Measures the library beside what a user would pick instead, all in one run.

Round trips: one request for the serial number and its reply, by a bare blocking socket, by asyncio streams, by a C++
client with one thread, and by the library in both forms, all against one simulator. Each batch of one contender runs
between batches of the others, in a new order every round, so that what the machine does meanwhile hits all alike. Only
ratios within a run count. Once with everything pinned to one core, once unpinned.
"""

from __future__ import annotations

import argparse
import asyncio
import contextlib
import functools
import io
import json
import os
import random
import socket
import statistics
import subprocess
import sys
import threading
import time
import warnings
from collections.abc import Callable

import buses
import callers
import growth
import many
import motion
import streams
import zvrkit.sim
from devices import BIN

import pyzvr

REQUEST = bytes([2, 0, 1, pyzvr.GET_SERIAL_NUMBER, 13, 10])
REPLY_LENGTH = 14
PARTS = ["pinned", "unpinned", "computing", "callers", "growth", "many", "streams", "buses", "motion", "usb", "splitter"]
now = time.perf_counter_ns


class BareSocket:
    name = "blocking Python socket"

    def __init__(self, address: tuple[str, int]) -> None:
        self.socket = socket.create_connection(address)
        self.socket.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)

    def batch(self, count: int) -> list[int]:
        times = []
        for _ in range(count):
            begin = now()
            self.socket.sendall(REQUEST)
            received = self.socket.recv(100)
            while len(received) < REPLY_LENGTH:
                received += self.socket.recv(100)
            times.append(now() - begin)
        return times

    def close(self) -> None:
        self.socket.close()


class Streams:
    name = "asyncio streams"
    new_loop = staticmethod(asyncio.new_event_loop)

    def __init__(self, address: tuple[str, int]) -> None:
        self.loop = self.new_loop()
        self.reader, self.writer = self.loop.run_until_complete(asyncio.open_connection(*address))

    async def run(self, count: int) -> list[int]:
        times = []
        for _ in range(count):
            begin = now()
            self.writer.write(REQUEST)
            await self.reader.readexactly(REPLY_LENGTH)
            times.append(now() - begin)
        return times

    def batch(self, count: int) -> list[int]:
        return self.loop.run_until_complete(self.run(count))

    def close(self) -> None:
        self.writer.close()
        self.loop.run_until_complete(self.writer.wait_closed())
        self.loop.close()


class NativeClient:
    name = "C++ client, one thread"

    def __init__(self, address: tuple[str, int]) -> None:
        command = [str(BIN / "roundtrip_client"), address[0], str(address[1])]
        self.process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)

    def batch(self, count: int) -> list[int]:
        self.process.stdin.write(f"run {count}\n")
        self.process.stdin.flush()
        return [int(text) for text in self.process.stdout.readline().split()]

    def close(self) -> None:
        self.process.stdin.close()
        self.process.wait()


class Blocking:
    name = "pyzvr, blocking"

    def __init__(self, address: tuple[str, int]) -> None:
        self.box = pyzvr.TarnDio()
        self.box.connect(*address, verbose=False)

    def batch(self, count: int) -> list[int]:
        times = []
        read = self.box.Sys_getSerialNumber
        for _ in range(count):
            begin = now()
            read()
            times.append(now() - begin)
        return times

    def close(self) -> None:
        self.box.close(verbose=False)


class Awaited(Blocking):
    name = "pyzvr, awaited"
    new_loop = staticmethod(asyncio.new_event_loop)

    def __init__(self, address: tuple[str, int]) -> None:
        super().__init__(address)
        self.loop = self.new_loop()

    async def run(self, count: int) -> list[int]:
        times = []
        read = self.box.Sys_getSerialNumber_async
        for _ in range(count):
            begin = now()
            await read()
            times.append(now() - begin)
        return times

    def batch(self, count: int) -> list[int]:
        return self.loop.run_until_complete(self.run(count))

    def close(self) -> None:
        super().close()
        self.loop.close()


try:
    import uvloop
except ImportError:  # it has no package for every system
    UVLOOP = []
else:

    class UvloopStreams(Streams):
        name = "uvloop streams"
        new_loop = staticmethod(uvloop.new_event_loop)

    class UvloopAwaited(Awaited):
        name = "pyzvr, awaited, uvloop"
        new_loop = staticmethod(uvloop.new_event_loop)

    UVLOOP = [UvloopStreams, UvloopAwaited]


def measure(kinds: list[type], address: tuple[str, int], rounds: int, count: int) -> dict[str, list[int]]:
    contenders = [kind(address) for kind in kinds]
    times: dict[str, list[int]] = {contender.name: [] for contender in contenders}
    for contender in contenders:
        contender.batch(count)
    for _ in range(rounds):
        for contender in random.sample(contenders, len(contenders)):
            times[contender.name] += contender.batch(count)
    for contender in contenders:
        contender.close()
    return times


def report(title: str, times: dict[str, list[int]]) -> dict[str, float]:
    medians = {name: statistics.median(values) / 1000 for name, values in times.items()}
    print(f"\n{title}\n{'':26}{'median us':>12}{'p99 us':>12}{'of socket':>12}")
    for name, values in times.items():
        tail = statistics.quantiles(values, n=100)[98] / 1000
        print(f"{name:26}{medians[name]:12.1f}{tail:12.1f}{medians[name] / medians[BareSocket.name]:12.2f}")
    return medians


def goal(text: str, value: float, limit: float) -> None:
    print(f"  {text}: {value:.2f} (goal: at most {limit:g}) {'reached' if value <= limit else 'MISSED'}")


def round_trips(rounds: int, count: int, pinned: bool) -> None:
    if pinned:
        os.sched_setaffinity(0, {min(os.sched_getaffinity(0))})
    with zvrkit.sim.device("TarnDio") as simulator:
        kinds = [BareSocket, Streams, NativeClient, Blocking, Awaited, *UVLOOP]
        times = measure(kinds, simulator.address, rounds, count)
    medians = report("Round trips, " + ("everything on one core" if pinned else "unpinned"), times)
    print()
    goal("blocking / Python socket", medians[Blocking.name] / medians[BareSocket.name], 1.05)
    goal("awaited / asyncio streams", medians[Awaited.name] / medians[Streams.name], 0.46)
    for kind in (Blocking, Awaited):
        tail = statistics.quantiles(times[kind.name], n=100)[98] / 1000
        goal(f"p99 / median, {kind.name}", tail / medians[kind.name], 3)


def beside_a_computing_thread(rounds: int) -> None:
    """A device that takes 300 us, while another Python thread of the process computes, and another process, too."""
    stop = threading.Event()

    def compute() -> None:
        while not stop.is_set():
            sum(range(1000))

    thread = threading.Thread(target=compute)
    results = {}
    usual = sys.getswitchinterval()
    with zvrkit.sim.device("TarnDio", "--delay", "0.0003") as simulator:
        thread.start()
        for place, others, interval in (("", 0, usual), (", the other core busy", 1, usual),
                                        (", threads taking turns every 0.5 ms", 0, 0.0005)):
            busy = [subprocess.Popen([sys.executable, "-c", "while True: pass"]) for _ in range(others)]
            sys.setswitchinterval(interval)
            times = measure([BareSocket, Blocking], simulator.address, rounds, 20)
            sys.setswitchinterval(usual)
            for each in busy:
                each.kill()
                each.wait()
            title = f"Round trips with a device of 300 us beside a computing Python thread{place}"
            report(title, times)
            means = {name: statistics.fmean(values) for name, values in times.items()}
            results[f"blocking / Python socket, mean time{place}"] = means[Blocking.name] / means[BareSocket.name]
        stop.set()
        thread.join()
    print()
    for text, value in results.items():
        goal(text, value, 0.8)


def many_callers() -> None:
    with zvrkit.sim.device("Ratchet", "--delay", "0.0003") as simulator:
        for text, value, limit in callers.report(simulator.address):
            goal(text, value, limit)


def growing() -> None:
    with zvrkit.sim.device("TarnDio") as simulator, contextlib.redirect_stderr(io.StringIO()):
        growth.report(simulator.address)


def many_devices() -> None:
    with zvrkit.sim.device("TarnDio") as simulator:
        for text, value, limit in many.report(simulator.address):
            goal(text, value, limit)


def quietly(report: Callable[..., list[tuple[str, float, float]]], *arguments: object) -> None:
    with contextlib.redirect_stdout(io.StringIO()) as said:  # devices tell when they are opened and closed
        goals = report(*arguments)
    told = ("Opened handle", "Closed handle", "Disconnected from")
    print("\n".join(line for line in said.getvalue().splitlines() if not line.startswith(told)))
    for each in goals:
        goal(*each)


def usb() -> None:
    """Round trips over the emulated device; runs beside it."""
    if "UMOCKDEV_DIR" not in os.environ:
        subprocess.run([BIN / "zvr-sim-usb", "SableDio", "--", sys.executable, __file__, "usb"], check=True)
        return
    warnings.simplefilter("ignore")
    with contextlib.redirect_stdout(io.StringIO()):
        box = pyzvr.SableDio()
        box.connect()
    times = []
    for _ in range(1000):
        begin = now()
        box.Sys_getSerialNumber()
        times.append(now() - begin)
    box.close(verbose=False)
    median = statistics.median(times) / 1e6
    print(f"\nUSB round trips over the emulated device: median {median:.2f} ms, p99 "
          f"{statistics.quantiles(times, n=100)[98] / 1e6:.2f} ms\n")
    goal("ms at the median", median, 3)


def splitter() -> None:
    command = [str(BIN / "splitter_bench"), "--benchmark_format=json"]
    results = json.loads(subprocess.run(command, capture_output=True, text=True, check=True).stdout)["benchmarks"]
    print(f"\nSplitter\n{'':34}{'GB/s':>10}{'ns/byte':>10}")
    for result in results:
        rate = result["bytes_per_second"]
        print(f"{result['name']:34}{rate / 1e9:10.2f}{1e9 / rate:10.3f}")


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("part", nargs="?", choices=PARTS)
    parser.add_argument("--rounds", type=int, default=30, help="batches of each contender")
    parser.add_argument("--count", type=int, default=500, help="round trips of a batch")
    arguments = parser.parse_args()
    if arguments.part in ("pinned", "unpinned"):
        round_trips(arguments.rounds, arguments.count, arguments.part == "pinned")
    elif arguments.part == "computing":
        beside_a_computing_thread(arguments.rounds)
    elif arguments.part == "streams":
        quietly(streams.report, functools.partial(zvrkit.sim.device, "TarnAnalog"), arguments.rounds // 4)
    elif arguments.part == "buses":
        quietly(buses.report, arguments.rounds // 10)
    elif arguments.part == "motion":
        os.sched_setaffinity(0, {min(os.sched_getaffinity(0))})
        quietly(motion.report, functools.partial(zvrkit.sim.device, "Ratchet"), measure, arguments.rounds)
    elif arguments.part:
        {"callers": many_callers, "growth": growing, "many": many_devices, "usb": usb, "splitter": splitter}[arguments.part]()
    else:
        # Each part in a process of its own: pinning is for good.
        for part in PARTS:
            subprocess.run([sys.executable, __file__, part, *sys.argv[1:]], check=True)


if __name__ == "__main__":
    main()
