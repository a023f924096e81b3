"""Many callers on one connection, each with a request of its own, to a device that answers after 300 us."""

from __future__ import annotations

import asyncio
import threading
import time
from collections.abc import Callable

import pyzvr

READS = [name for name in dir(pyzvr.Ratchet)
         if name.startswith("_Motion_get") and not name.endswith("_async") and "Helical" not in name]
# Each has a key of its own: sixteen registers of four axes.
REQUESTS = [(name, axis) for name in READS[:16] for axis in range(4)]
COUNTS = [1, 4, 16, 64]


def threads(box: pyzvr.Ratchet, requests: list[tuple[str, int]], seconds: float) -> int:
    """Requests that are answered while a thread for each of these repeats its own."""
    done: list[int] = []
    end = time.perf_counter() + seconds

    def run(name: str, axis: int) -> None:
        read, count = getattr(box, name), 0
        while time.perf_counter() < end:
            read(0, axis)
            count += 1
        done.append(count)

    workers = [threading.Thread(target=run, args=request) for request in requests]
    for worker in workers:
        worker.start()
    for worker in workers:
        worker.join()
    return sum(done)


def tasks(box: pyzvr.Ratchet, requests: list[tuple[str, int]], seconds: float) -> int:
    """The same with a task for each on one loop."""

    async def run(name: str, axis: int) -> int:
        read, count = getattr(box, f"{name}_async"), 0
        end = time.perf_counter() + seconds
        while time.perf_counter() < end:
            await read(0, axis)
            count += 1
        return count

    async def all_of_them() -> int:
        return sum(await asyncio.gather(*(run(*request) for request in requests)))

    return asyncio.run(all_of_them())


def beside(*calls: tuple[Callable[..., int], slice]) -> Callable[..., int]:
    """Several of these at once, each with its part of the requests, each in a thread."""

    def run(box: pyzvr.Ratchet, requests: list[tuple[str, int]], seconds: float) -> int:
        done: list[int] = []
        workers = [threading.Thread(target=lambda c=call, p=part: done.append(c(box, requests[p], seconds)))
                   for call, part in calls]
        for worker in workers:
            worker.start()
        for worker in workers:
            worker.join()
        return sum(done)

    return run


MIXES = {
    "threads": threads,
    "tasks": tasks,
    "threads and tasks": beside((threads, slice(0, None, 2)), (tasks, slice(1, None, 2))),
    "two loops": beside((tasks, slice(0, None, 2)), (tasks, slice(1, None, 2))),
}


def report(address: tuple[str, int], seconds: float = 1.0) -> list[tuple[str, float, float]]:
    box = pyzvr.Ratchet()
    box.connect(*address, verbose=False)
    rates = {name: [run(box, REQUESTS[:count], seconds) / seconds for count in COUNTS] for name, run in MIXES.items()}
    box.close(verbose=False)
    print(f"\nRequests a second on one connection, device of 300 us\n{'callers':22}" + "".join(f"{count:>10}" for count in COUNTS))
    for name, row in rates.items():
        print(f"{name:22}" + "".join(f"{rate:10.0f}" for rate in row))
    print()
    one = rates["threads"][0]
    return [(f"one thread / {count} callers, {name}", one / rates[name][COUNTS.index(count)], 1 / 3)
            for name, count in (("threads", 16), ("tasks", 64), ("threads and tasks", 16), ("two loops", 16))]
