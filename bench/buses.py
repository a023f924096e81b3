"""UART bytes and CAN frames from the packets that the receive thread files to what a program reads.

Beside the library runs the same in plain Python: a thread that puts byte after byte, or frame after frame, into a queue
of the host, and a reader that takes them out. Both begin with packets in a queue, in turns.
"""

from __future__ import annotations

import asyncio
import contextlib
import io
import queue
import statistics
import threading
import time
import warnings
from collections.abc import Callable

import zvrkit.sim
from devices import resident

import pyzvr

BYTES, FRAMES = 400_000, 40_000
PACKET = bytes(range(250))
RECORDS = b"".join(bytes([36, 96, 0, 0, 1, 2, 3, number, 0, 0, 0, 0]) for number in range(20))


class Frame:
    """A CAN frame as one would write it down."""

    def __init__(self, identifier: int, extended: bool, remote: bool, data: list[int]) -> None:
        self.id, self.extended_id, self.remote = identifier, extended, remote
        self.data = [*data, 0, 0, 0, 0, 0, 0, 0, 0][:8]
        word = identifier << 21
        if extended:
            word = (identifier & 0x1FFC0000) << 3 | identifier & 0x3FFFF | 1 << 19
        if remote:
            word |= 1 << 20
        self.id_in_list = list(word.to_bytes(4, "big"))
        self.frame_in_list = self.id_in_list + self.data

    @classmethod
    def from_record(cls, record: bytes) -> Frame:
        word = int.from_bytes(record[:4], "big")
        extended, remote = bool(word >> 19 & 1), bool(word >> 20 & 1)
        identifier = (word & 0xFFE00000) >> 3 | word & 0x3FFFF if extended else word >> 21
        return cls(identifier, extended, remote, list(record[4:12]))


def plainly(packets: list[bytes], items: Callable[[bytes], list[object]], count: int, finish: Callable[[object], object]) -> float:
    data: queue.Queue[bytes] = queue.Queue()
    signals: queue.Queue[object] = queue.Queue(1_000_000)

    def feed() -> None:
        for _ in packets:
            for item in items(data.get()):
                signals.put_nowait(item)

    begin = time.perf_counter()
    feeder = threading.Thread(target=feed)
    feeder.start()
    for packet in packets:
        data.put(packet)
    result: list[object] = []
    while len(result) < count:
        for _ in range(signals.qsize()):
            result.append(finish(signals.get_nowait()))
        time.sleep(0.001)
    feeder.join()
    return count / (time.perf_counter() - begin)


def records_of(packet: bytes) -> list[object]:
    return [Frame.from_record(packet[first:first + 12]) for first in range(0, len(packet), 12)]


class Box(pyzvr.NetworkDevice, pyzvr.SystemModule, pyzvr.UARTModule, pyzvr.CANModule, pyzvr.SystemModule_async, pyzvr.UARTModule_async, pyzvr.CANModule_async):
    """A CAN box over TCP."""

    def __init__(self) -> None:
        pyzvr.NetworkDevice.__init__(self)
        pyzvr.UARTModule.__init__(self, {1: [(0, 0), (0, 1)], 2: [(0, 2), (0, 3)]})
        pyzvr.CANModule.__init__(self, {1: [(2, 6), (2, 7)]})
        for lock in (self.uart_p1_lock, self.can_lock):
            lock.release()


def through_library(box: Box, packets: list[bytes], count: int, read: Callable[[int], list]) -> float:
    fifo = box.uart_p1_data_queue if packets[0] is PACKET else box.can_data_queue
    begin = time.perf_counter()
    for packet in packets:
        fifo.put(packet)
    taken = 0
    while taken < count:
        taken += len(read(min(count - taken, 20000)))
    return count / (time.perf_counter() - begin)


def rates(box: Box, rounds: int) -> dict[str, float]:
    texts, frames = [PACKET] * (BYTES // len(PACKET)), [RECORDS] * (FRAMES // 20)
    contenders: dict[str, Callable[[], float]] = {
        "UART, pyzvr": lambda: through_library(box, texts, BYTES, lambda count: box.UART_read(1, count, 0.01)),
        "UART, pyzvr, as bytes": lambda: through_library(box, texts, BYTES, lambda count: box.UART_readBytes(1, count, 0.01)),
        "UART, plain Python": lambda: plainly(texts, list, BYTES, chr),
        "CAN, pyzvr": lambda: through_library(box, frames, FRAMES, lambda count: box.CAN_read(1, count, 0.01)),
        "CAN, plain Python": lambda: plainly(frames, records_of, FRAMES, lambda frame: frame),
    }
    seen: dict[str, list[float]] = {name: [] for name in contenders}
    for _ in range(rounds):
        for name, run in contenders.items():
            seen[name].append(run())
    return {name: statistics.median(values) for name, values in seen.items()}


def memory(box: Box) -> tuple[float, float]:
    """Bytes of memory of a byte and of a frame that wait."""
    held = []
    for fifo, waiting, packet, per in ((box.uart_p1_data_queue, box.uart_p1_signal_queue, PACKET, 250),
                                       (box.can_data_queue, box.can_frame_queue, RECORDS, 20)):
        before = resident()
        for _ in range(1_000_000 // per):
            fifo.put(packet)
            if fifo.qsize() > 100:
                time.sleep(0.001)
        while waiting.qsize() < 1_000_000:
            time.sleep(0.001)
        held.append((resident() - before) / 1_000_000)
    return held[0], held[1]


def stream_cost(seconds: float = 5) -> tuple[float, int]:
    """Part of a core that 8,000 CAN frames a second take, and how many of them are missing."""
    with zvrkit.sim.device("SableCan", "--tcp", "--peer", "cyclic@can:1:8000:0x123:3") as simulator:
        box = Box()
        box.connect(*simulator.address, verbose=False)
        box.CAN_setSpeed(1, 3)
        box.CAN_open(1)
        asyncio.run(box.CAN_start_async(1))
        box.CAN_read(1, 1, 5)
        begin, spent, frames = time.perf_counter(), time.process_time(), []
        while time.perf_counter() - begin < seconds:
            frames += box.CAN_read(1, 4000, 0.25)
        share = (time.process_time() - spent) / (time.perf_counter() - begin)
        numbers = [int.from_bytes(bytes(frame.data[:4]), "big") for frame in frames]
        lost = numbers[-1] - numbers[0] + 1 - len(numbers)
        print(f"A CAN bus of {len(frames) / seconds:.0f} frames a second takes {100 * share:.1f} % of a core")
        asyncio.run(box.CAN_close_async(1))
        box.close(verbose=False)
    return share, lost


def report(rounds: int) -> list[tuple[str, float, float]]:
    """What is to be reached: text, value and limit."""
    pyzvr.LABEL_DICT["Box"] = "Box"
    warnings.simplefilter("ignore", UserWarning)
    with contextlib.redirect_stdout(io.StringIO()):
        box = Box()
    rate = rates(box, rounds)
    per_byte, per_frame = memory(box)
    share, lost = stream_cost()
    print(f"\nFrom stream packets to what is read\n{'':26}{'a second':>12}")
    for name, value in rate.items():
        print(f"{name:26}{value:12.0f}")
    print()
    return [("plain Python's rate / UART_read", rate["UART, plain Python"] / rate["UART, pyzvr"], 1 / 20),
            ("plain Python's rate / CAN_read", rate["CAN, plain Python"] / rate["CAN, pyzvr"], 1 / 20),
            ("bytes of a queued UART byte", per_byte, 16), ("bytes of a queued CAN frame", per_frame, 64),
            ("% of a core for 8,000 CAN frames a second", 100 * share, 5), ("CAN frames lost", lost, 0)]
