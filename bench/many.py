"""Many devices in one process: what an idle one costs, and whether a loop or threads lose anything.

Each device is beside one of a plain socket with a reading thread, the least that a program without the library would
have, so that memory and processor time have something to be compared with.
"""

from __future__ import annotations

import asyncio
import json
import socket
import subprocess
import sys
import threading
import time

from devices import resident

import pyzvr

DEVICES = 64


def idle_share(seconds: float) -> float:
    """Part of one core that the process takes while nothing happens."""
    begin = time.process_time()
    time.sleep(seconds)
    return (time.process_time() - begin) / seconds


def plain_devices(address: tuple[str, int]) -> list[socket.socket]:
    sockets = [socket.create_connection(address) for _ in range(DEVICES)]
    for each in sockets:
        threading.Thread(target=each.recv, args=(1536,), daemon=True).start()
    return sockets


def library_devices(address: tuple[str, int]) -> list[pyzvr.TarnDio]:
    boxes = [pyzvr.TarnDio() for _ in range(DEVICES)]
    for box in boxes:
        box.connect(*address, verbose=False)
    return boxes


def measure_idle(kind: str, address: tuple[str, int]) -> None:
    before = resident()
    devices = {"plain": plain_devices, "pyzvr": library_devices}[kind](address)
    held = (resident() - before) / DEVICES
    print(json.dumps({"memory": held, "idle": idle_share(3), "count": len(devices)}))


async def poll(boxes: list[pyzvr.TarnDio], count: int) -> int:
    async def one(box: pyzvr.TarnDio) -> int:
        return sum([await box.Sys_getSerialNumber_async() == "SIM00001" for _ in range(count)])

    return sum(await asyncio.gather(*map(one, boxes)))


def poll_from_threads(boxes: list[pyzvr.TarnDio], count: int) -> int:
    right: list[int] = []

    def one(box: pyzvr.TarnDio) -> None:
        right.append(sum([box.Sys_getSerialNumber() == "SIM00001" for _ in range(count)]))

    threads = [threading.Thread(target=one, args=[box]) for box in boxes]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    return sum(right)


def measure_polling(address: tuple[str, int], count: int = 100) -> None:
    boxes = library_devices(address)
    results = {}
    for name, run in (("loop", lambda: asyncio.run(poll(boxes, count))), ("threads", lambda: poll_from_threads(boxes, count))):
        begin = time.perf_counter()
        right = run()
        results[name] = {"right": right, "rate": right / (time.perf_counter() - begin)}
    print(json.dumps(results))
    for box in boxes:
        box.close(verbose=False)


def report(address: tuple[str, int]) -> list[tuple[str, float, float]]:
    """Each measurement in a process of its own; gives what is to be reached: text, value and limit."""

    def child(what: str) -> dict:
        command = [sys.executable, __file__, what, address[0], str(address[1])]
        lines = subprocess.run(command, capture_output=True, text=True, check=True).stdout.splitlines()
        return json.loads(next(line for line in lines if line.startswith("{")))

    plain, library, polling = child("plain"), child("pyzvr"), child("polling")
    print(f"\n{DEVICES} devices in one process\n{'':34}{'kB each':>10}{'idle, % of a core':>20}")
    for name, seen in (("plain socket and Python thread", plain), ("pyzvr", library)):
        print(f"{name:34}{seen['memory'] / 1024:10.0f}{100 * seen['idle']:20.2f}")
    for name, seen in polling.items():
        print(f"polled from {DEVICES if name == 'threads' else 'one'} {name}: {seen['right']} of {DEVICES * 100} right, "
              f"{seen['rate']:.0f} a second")
    print()
    lost = sum(DEVICES * 100 - seen["right"] for seen in polling.values())
    return [("MB of memory for an idle device", library["memory"] / 2**20, 1),
            ("% of a core for all while idle", 100 * library["idle"], 0.5), ("requests lost", lost, 0)]


if __name__ == "__main__":
    place = sys.argv[2], int(sys.argv[3])
    if sys.argv[1] == "polling":
        measure_polling(place)
    else:
        measure_idle(sys.argv[1], place)
