"""What grows with what: devices in one process, the size of a frame, and concurrent callers (bench/callers.py)."""

from __future__ import annotations

import json
import socket
import statistics
import subprocess
import sys
import threading
import time

from devices import resident

import pyzvr

DEVICES = [1, 8, 64, 512]
SIZES = [1, 100, 1500, 9606]
RATE = 100
now = time.perf_counter_ns


def echo() -> tuple[str, int]:
    """A device that answers each frame with the same frame."""
    listener = socket.create_server(("127.0.0.1", 0), backlog=1024)

    def serve(connection: socket.socket) -> None:
        connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        while data := connection.recv(65536):
            connection.sendall(data)

    def accept() -> None:
        while True:
            threading.Thread(target=serve, args=(listener.accept()[0],), daemon=True).start()

    threading.Thread(target=accept, daemon=True).start()
    return listener.getsockname()


def measure_devices(count: int, address: tuple[str, int], seconds: float = 3.0) -> None:
    """Memory of each, and processor time: idle, and with requests from one thread, a hundred a second of each."""
    before = resident()
    boxes = [pyzvr.TarnDio() for _ in range(count)]
    for box in boxes:
        box.connect(*address, verbose=False)
        box.Sys_getSerialNumber()
    held = (resident() - before) / count
    time.sleep(0.2)
    begin = time.process_time()
    time.sleep(seconds)
    idle = (time.process_time() - begin) / seconds
    done, begin, start = 0, time.process_time(), time.perf_counter()
    while (elapsed := time.perf_counter() - start) < seconds:
        for box in boxes:
            box.Sys_getSerialNumber()
        done += count
        time.sleep(max(0.0, done / count / RATE - (time.perf_counter() - start)))
    spent = time.process_time() - begin
    print(json.dumps({"memory": held, "idle": idle, "busy": spent / elapsed, "rate": done / elapsed / count,
                      "each": spent / done}))


def measure_sizes(address: tuple[str, int], rounds: int = 2000) -> list[tuple[int, float, float]]:
    """Medians in microseconds of a trip that brings its own data back, by the library and by a bare socket."""
    box = pyzvr.TarnDio()
    box.connect(*address, verbose=False)
    bare = socket.create_connection(address)
    bare.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
    rows = []
    for size in SIZES:
        data = [7] * (size - 1)
        frame = bytes(box._preparePacket(pyzvr.GET_DATE_TIME, data))
        times: tuple[list[int], list[int]] = ([], [])
        for _ in range(rounds):
            begin = now()
            box._echoPacket(pyzvr.GET_DATE_TIME, data, 5)
            between = now()
            bare.sendall(frame)
            got = 0
            while got < len(frame):
                got += len(bare.recv(65536))
            times[0].append(between - begin)
            times[1].append(now() - between)
        rows.append((size, statistics.median(times[0]) / 1000, statistics.median(times[1]) / 1000))
    box.close(verbose=False)
    return rows


def report(address: tuple[str, int]) -> None:
    print(f"\nDevices in one process, idle and at {RATE} requests a second each\n"
          f"{'devices':>10}{'kB each':>10}{'idle, % of a core':>20}{'busy, % of a core':>20}{'us each':>10}{'reached':>10}")
    for count in DEVICES:
        command = [sys.executable, __file__, str(count), address[0], str(address[1])]
        lines = subprocess.run(command, capture_output=True, text=True, check=True).stdout.splitlines()
        seen = json.loads(next(line for line in lines if line.startswith("{")))
        print(f"{count:10}{seen['memory'] / 1024:10.0f}{100 * seen['idle']:20.2f}{100 * seen['busy']:20.1f}"
              f"{1e6 * seen['each']:10.1f}{seen['rate']:10.0f}")
    print(f"\nFrames of a size, there and back, in us\n{'bytes':>10}{'pyzvr':>10}{'socket':>10}{'ratio':>10}")
    for size, ours, bare in measure_sizes(echo()):
        print(f"{size:10}{ours:10.1f}{bare:10.1f}{ours / bare:10.2f}")


if __name__ == "__main__":
    measure_devices(int(sys.argv[1]), (sys.argv[2], int(sys.argv[3])))
