"""Who waits for a reply reads the link: many callers at once, and whatever meets them while they read."""

import asyncio
import collections
import itertools
import os
import re
import shutil
import subprocess
import sys
import threading
import time

import pytest
from links import box
from loops import KEYS, descriptors
from peer import Peer, finish

import pyzvr

__all__ = ["box"]

UNSOLICITED = pyzvr.START_CAN  # its frames wait in one queue, in the order in which they were filed


def frame(command, data=b""):
    return bytes([2]) + (len(data) + 1).to_bytes(2, "big") + bytes([command]) + data + b"\r\n"


def unsolicited(first, count):
    # Two bytes are not part of what is filed.
    return b"".join(frame(UNSOLICITED, bytes(2) + number.to_bytes(4, "big")) for number in range(first, first + count))


class Device:
    """Answers each request with its own data, as often as told behind frames that nobody asked for."""

    def __init__(self, every=7, delay=0.0):
        self.every, self.delay = every, delay
        self.requests, self.sent = 0, 0
        self.rests = collections.defaultdict(bytes)

    def __call__(self, connection, data):
        data = self.rests.pop(connection, b"") + data
        answers = b""
        while len(data) >= 3 and len(data) >= (length := int.from_bytes(data[1:3], "big") + 5):
            self.requests += 1
            if self.requests % self.every == 0:
                answers += unsolicited(self.sent, 3)
                self.sent += 3
            answers, data = answers + data[:length], data[length:]
        self.rests[connection] = data
        if self.delay:
            time.sleep(self.delay)
        connection.sendall(answers)


@pytest.fixture
def device():
    return Device()


@pytest.fixture
def peer(device):
    peer = Peer(device)
    yield peer
    peer.close()


def filed(box, count):
    """Waits until as many unsolicited frames are filed, and gives their numbers."""
    queue = box.data_pool_strm[UNSOLICITED]
    return [int.from_bytes(queue.get(timeout=10), "big") for _ in range(count)]


# Sent once each: a reply to a request that was sent twice would be taken for that to the next one.


def from_threads(box, keys, times):
    wrong = []

    def run(key):
        for i in range(times):
            data = [key, *i.to_bytes(2, "big")]
            if box._echoPacket(key, data, timeout=20) != bytes(data):
                wrong.append((key, i))

    threads = [threading.Thread(target=run, args=(key,)) for key in keys]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert wrong == []


def from_tasks(box, keys, times):
    async def run(key):
        for i in range(times):
            data = [key, *i.to_bytes(2, "big")]
            assert await box._echoPacket_async(key, data, timeout=20) == bytes(data)

    async def main():
        await asyncio.gather(*map(run, keys))

    asyncio.run(main())


def together(*parts):
    errors = []

    def guarded(part):
        try:
            part()
        except BaseException as error:
            errors.append(error)

    threads = [threading.Thread(target=guarded, args=(part,)) for part in parts]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert errors == []


@pytest.mark.parametrize("callers", [
    pytest.param([(from_threads, 16)], id="sixteen threads"),
    pytest.param([(from_tasks, 64)], id="64 tasks on a loop"),
    pytest.param([(from_threads, 8), (from_tasks, 24)], id="threads and tasks"),
    pytest.param([(from_tasks, 12), (from_tasks, 12)], id="two loops"),
    pytest.param([(from_tasks, 6), (from_threads, 6), (from_tasks, 6)], id="two loops and threads"),
])
def test_each_caller_gets_its_own_replies_and_unsolicited_frames_stay_in_order(box, device, callers):
    keys = iter(KEYS)
    parts = []
    for call, count in callers:
        mine = list(itertools.islice(keys, count))
        parts.append(lambda call=call, mine=mine: call(box, mine, 3000 // len(mine) // len(callers)))
    together(*parts)
    assert filed(box, device.sent) == list(range(device.sent))
    assert list(box.data_pool_echo) == []


@pytest.mark.parametrize("form", ["blocking", "awaited", "nobody waits"])
def test_a_burst_of_unsolicited_frames_is_filed_at_once_and_in_order(box, peer, form):
    connection = peer.connection()
    ask = box._echoPacket
    first = 0
    for _ in range(30):
        if form == "blocking":
            ask(KEYS[0], [1], 5)
        if form == "awaited":
            asyncio.run(box._echoPacket_async(KEYS[0], [1]))
        # The device's own, sent with every seventh reply, are no part of this.
        filed(box, box.data_pool_strm[UNSOLICITED].qsize())
        connection.sendall(unsolicited(first, 100))
        assert filed(box, 100) == list(range(first, first + 100))
        first += 100


def test_a_stream_that_runs_beside_requests_loses_nothing(box, peer):
    connection = peer.connection()
    rounds = 3000

    def stream():
        for number in range(0, rounds * 10, 10):
            connection.sendall(unsolicited(10**6 + number, 10))

    together(stream, lambda: from_threads(box, KEYS[:2], 800), lambda: from_tasks(box, KEYS[2:4], 800))
    streamed = []
    while len(streamed) < rounds * 10:
        streamed += [number for number in filed(box, 1) if number >= 10**6]
    assert streamed == list(range(10**6, 10**6 + rounds * 10))


# A loop that has the link to itself and does not come to read.


@pytest.mark.parametrize("how", ["blocked", "stopped", "closed"])
def test_the_thread_reads_on_where_a_loop_does_not(box, peer, how):
    connection = peer.connection()
    loop = asyncio.new_event_loop()
    late = KEYS[5]
    waiting = loop.create_task(box._getReplyFromPool_async(late))
    loop.run_until_complete(asyncio.sleep(0.05))

    async def busy():
        connection.sendall(unsolicited(0, 100))
        return filed(box, 100)  # and the loop does not run meanwhile

    if how == "blocked":
        assert loop.run_until_complete(busy()) == list(range(100))
    else:
        if how == "closed":
            waiting.cancel()
            loop.run_until_complete(asyncio.gather(waiting, return_exceptions=True))
            loop.close()
        connection.sendall(unsolicited(0, 100))
        assert filed(box, 100) == list(range(100))
    assert box._echoPacket(KEYS[6], [3], timeout=5) == b"\x03"
    if how != "closed":
        connection.sendall(frame(late, b"x"))
        assert loop.run_until_complete(waiting) == b"x"
        loop.close()


def test_cancellations_at_any_moment_leave_the_link_to_the_others(box):
    async def main():
        async def one(key, pause):
            with_limit = asyncio.wait_for(box._echoPacket_async(key, [1]), pause)
            try:
                assert await with_limit == b"\x01"
            except asyncio.TimeoutError:
                return 1
            return 0

        for i in range(400):
            await asyncio.gather(*(one(key, (i * 7 + key * 13) % 97 * 1e-5) for key in KEYS[:4]))
            assert await box._echoPacket_async(KEYS[9], [i % 200]) == bytes([i % 200])

    asyncio.run(main())


# Steps, fields and gates that change under callers.


def test_what_is_replaced_while_others_read_is_called(box):
    stop = threading.Event()
    seen = []
    plain = type(box)._putToDataPool

    def replace():
        def put(command, data):
            seen.append(command)
            plain(box, command, data)

        while not stop.is_set():
            box._putToDataPool = put
            before = len(seen)
            while len(seen) == before and not stop.is_set():
                time.sleep(0.0005)
            del box._putToDataPool
            time.sleep(0.001)

    thread = threading.Thread(target=replace)
    thread.start()
    try:
        together(lambda: from_threads(box, KEYS[:3], 400), lambda: from_tasks(box, KEYS[3:6], 400))
    finally:
        stop.set()
        thread.join()
    assert len(seen) > 5


def test_a_gate_that_is_shut_stops_those_who_read_too(box, peer):
    connection = peer.connection()
    assert box._echoPacket(KEYS[0], [1], timeout=5) == b"\x01"
    box.recv_cmd_lock.acquire()
    connection.sendall(frame(KEYS[1], b"a"))
    while KEYS[1] not in box.data_pool_echo:  # the thread was past its gate already, for one read
        time.sleep(0.001)
    connection.sendall(frame(KEYS[2], b"b"))
    with pytest.raises(pyzvr.ReceivePacketTimeoutError):
        box._getReplyFromPool(KEYS[2], 0.2)
    waiting = threading.Timer(0.05, box.recv_cmd_lock.release)
    waiting.start()
    assert box._getReplyFromPool(KEYS[2], 5) == b"b"
    waiting.join()


def test_the_peer_goes_away_under_a_caller_that_reads_and_a_new_one_comes(box, peer):
    for number in range(20):
        finish(peer.connection())
        with pytest.raises(pyzvr.NetworkConnectionLostError):
            box._echoPacket(KEYS[0], [1], timeout=0.03)
        box.client_cmd = client = pyzvr.TCPClient()
        client.connect("127.0.0.1", peer.port)
        assert box._echoPacket(KEYS[0], [number], timeout=2) == bytes([number])


# What it costs.


def switches():
    """How often the threads of this process have slept and been woken."""
    total = 0
    for task in os.listdir("/proc/self/task"):
        with open(f"/proc/self/task/{task}/status") as status:
            total += int(re.search(r"voluntary_ctxt_switches:\s+(\d+)", status.read())[1])
    return total


def test_silent_devices_and_closed_peers_wake_nobody(peer):
    boxes = [pyzvr.TarnDio() for _ in range(16)]
    for each in boxes:
        each.connect("127.0.0.1", peer.port, verbose=False)
        assert each._echoPacket(KEYS[0], [1], 5) == b"\x01"
    time.sleep(0.1)  # past the moments for which threads leave the link to callers
    before = switches()
    time.sleep(0.5)
    assert switches() - before < 16
    for each in boxes:
        each.close(verbose=False)


def test_a_link_and_a_loop_share_one_descriptor(box):
    async def main():
        tasks = [asyncio.create_task(box._getReplyFromPool_async(key)) for key in KEYS[:8]]
        before = descriptors()
        await asyncio.sleep(0.02)
        opened = descriptors() - before
        for task in tasks:
            task.cancel()
        await asyncio.gather(*tasks, return_exceptions=True)
        return opened

    box._echoPacket(KEYS[0], [1], timeout=5)
    asyncio.run(box._echoPacket_async(KEYS[0], [1]))  # what the process has once is there now
    assert asyncio.run(main()) == 1


TRIPS = """
import sys, pyzvr
box = pyzvr.TarnDio()
box.connect("127.0.0.1", int(sys.argv[1]), verbose=False)
read = box.Sys_getSerialNumber
for _ in range(int(sys.argv[2])):
    read()
box.close(verbose=False)
"""


def system_calls(port, trips, path):
    command = ["strace", "-f", "-c", "-o", path, sys.executable, "-c", TRIPS, str(port), str(trips)]
    if subprocess.run(command, capture_output=True).returncode != 0:
        pytest.skip("no process may be traced here")
    counts = {words[-1]: int(words[3]) for line in path.read_text().splitlines()
              if len(words := line.split()) in (5, 6) and words[3].isdigit()}
    return sum(count for name, count in counts.items() if name != "total")


@pytest.mark.skipif(not shutil.which("strace"), reason="strace is not installed")
def test_a_blocking_trip_takes_four_system_calls_at_most(peer, tmp_path):
    few, many = (system_calls(peer.port, trips, tmp_path / "calls") for trips in (100, 2100))
    assert (many - few) / 2000 <= 4.5  # traced, a trip is slow: the receive thread wakes up now and then
