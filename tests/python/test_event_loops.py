"""Event loops: no wake-up is lost, and what goes wrong in the middle harms nobody else."""

import asyncio
import gc
import itertools
import queue
import random
import sys
import threading
import time

import pytest
from loops import KEYS, descriptors, run
from simulators import connected

import pyzvr

# Requests of the simulated box that are answered whatever their data, each under a key of its own.
COMMANDS = [pyzvr.GET_DATE_TIME, pyzvr.GET_DIO_CURRENT, pyzvr.GET_DIO_STATE, pyzvr.GET_DRIVER_INFO,
            pyzvr.GET_EEPROM_DEVICE, pyzvr.GET_GATEWAY, pyzvr.GET_IP, pyzvr.GET_MAC, pyzvr.GET_PIN_MODE_OF_SLOT,
            pyzvr.GET_SERIAL_NUMBER, pyzvr.GET_THREADS, pyzvr.READ_DI]


@pytest.fixture
def quick_switches():
    before = sys.getswitchinterval()
    sys.setswitchinterval(1e-6)
    yield
    sys.setswitchinterval(before)


class Answering(threading.Thread):
    """A device behind a client of Python: files each request's data as its reply, on a thread of its own."""

    def __init__(self, box):
        super().__init__(daemon=True)
        self.put = box._putToDataPool
        self.requests = queue.SimpleQueue()
        box.client_cmd = self
        self.start()

    def sendPacket(self, frame):
        self.requests.put((frame[3], bytes(frame[4:-2])))

    def run(self):
        while request := self.requests.get():
            self.put(*request)

    def end(self):
        self.requests.put(None)
        self.join()
        self.put = None


# A lost wake-up shows as a request that is sent once more after a second.


class Counted(pyzvr.TarnDio):
    sendings = 0

    def _echoPacket_async(self, *args, **named):
        self.sendings += 1
        return super()._echoPacket_async(*args, **named)


@pytest.mark.parametrize("interval", [None, 1e-6])
@pytest.mark.parametrize("tasks", [1, 3, 12, 64])
def test_no_wake_up_is_lost_however_many_tasks_wait(monkeypatch, tasks, interval):
    monkeypatch.setitem(pyzvr.LABEL_DICT, "Counted", "Tarn-Dio")
    monkeypatch.setattr(pyzvr, "TarnDio", Counted)
    requests = 3000 // tasks

    async def main(box):
        turns = {command: asyncio.Lock() for command in COMMANDS}  # two requests with one key may lose a reply

        async def one(command):
            for _ in range(requests):
                async with turns[command]:
                    assert await box._echoPacketWithRetry_async(command, [0])

        await asyncio.gather(*(one(command) for command in itertools.islice(itertools.cycle(COMMANDS), tasks)))

    before = sys.getswitchinterval()
    sys.setswitchinterval(interval or before)
    try:
        with connected("TarnDio") as box:
            asyncio.run(main(box))
            assert box.sendings == requests * tasks
    finally:
        sys.setswitchinterval(before)


def test_loops_of_several_threads_share_an_object(bench, quick_switches):
    class Asked(asyncio.SelectorEventLoop):
        def is_closed(self):  # lets other threads run in the middle of whatever asks
            time.sleep(0)
            return super().is_closed()

    device = Answering(bench)
    right = []

    async def main(command):
        return [await bench._echoPacketWithRetry_async(command, [command, i]) for i in range(3)]

    def work(command):
        for _ in range(40):
            replies = run(Asked(), main(command))
            right.append(replies == [bytes([command, i]) for i in range(3)])

    threads = [threading.Thread(target=work, args=(command,)) for command in KEYS[:8]]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    device.end()
    assert right == [True] * 320


class Futures(asyncio.SelectorEventLoop):
    """Its futures are those of Python, so that a test can meddle with them."""

    def __init__(self):
        super().__init__()
        self.on_result = lambda future: None

    def create_future(self):
        loop = self

        class Future(asyncio.futures._PyFuture):
            def set_result(self, result):
                loop.on_result(self)
                super().set_result(result)

        return Future(loop=self)


def suspended(loop, box, commands):
    """Steps that wait on a loop without a task around them."""
    asyncio._set_running_loop(loop)
    try:
        steps = {command: box._getReplyFromPool_async(command) for command in commands}
        return steps, {command: step.send(None) for command, step in steps.items()}
    finally:
        asyncio._set_running_loop(None)


def outcome(step):
    """What steps return whose wait is over."""
    try:
        while True:
            step.send(None)
    except StopIteration as stop:
        return stop.value


@pytest.mark.parametrize("event", ["arrival", "limit"])
def test_waits_that_are_dropped_while_others_are_delivered(bench, event):
    """The first future that is resolved drops every second wait, the rest goes on."""
    loop = Futures()
    steps, futures = suspended(loop, bench, KEYS[:30]) if event == "arrival" else ({}, {})
    delivered = []

    def drop(future):
        delivered.append(future)
        if len(delivered) == 1:
            for command in list(steps)[1::2]:
                steps.pop(command).close()
            gc.collect()

    async def limited():
        tasks = [asyncio.create_task(bench._echoPacket_async(command, [], 0.05)) for command in KEYS[:30]]
        await asyncio.sleep(0)
        steps.update({command: task.get_coro() for command, task in zip(KEYS[:30], tasks)})
        for task in tasks[1::2]:
            loop.call_later(0.05, task.cancel)
        return await asyncio.gather(*tasks, return_exceptions=True)

    if event == "arrival":
        loop.on_result = drop
        for command in KEYS[:30]:
            bench._putToDataPool(command, b"x")
        loop.call_soon(loop.stop)
        loop.run_forever()
        assert all(futures[command].done() for command in KEYS[:30:2])
        assert [outcome(step) for step in steps.values()] == [b"x"] * 15
    else:
        loop.on_result = lambda _: time.sleep(0)
        results = loop.run_until_complete(limited())
        assert results[0::2] == [None] * 15
        assert all(result is None or isinstance(result, asyncio.CancelledError) for result in results)
    loop.close()


def test_waits_that_other_threads_drop_while_they_are_delivered(bench, quick_switches):
    for _ in range(100):
        loop = Futures()
        loop.on_result = lambda _: time.sleep(0)
        steps, _ = suspended(loop, bench, KEYS[:20])
        dropping = threading.Thread(target=steps.clear)
        loop.call_soon(dropping.start)
        for command in KEYS[:20]:
            bench._putToDataPool(command, b"x")
        loop.call_soon(loop.stop)
        loop.run_forever()
        dropping.join()
        loop.close()
        for command in KEYS[:20]:
            assert bench._getReplyFromPool(command, 1) == b"x"


def test_a_future_is_resolved_on_its_own_loop_only(bench, quick_switches):
    """Whichever thread brings the reply."""
    device = Answering(bench)
    resolved = []

    async def main(commands):
        for command in commands:
            await bench._echoPacket_async(command, [])

    def work(commands):
        loop = Futures()
        loop.on_result = lambda future: resolved.append(asyncio.get_running_loop() is future.get_loop())
        run(loop, main(commands))

    threads = [threading.Thread(target=work, args=(KEYS[i::4],)) for i in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    device.end()
    assert resolved
    assert all(resolved)


# What may go wrong in the middle.


def test_a_stopped_loop_goes_on_where_it_was(bench, make_loop):
    loop = make_loop()
    task = loop.create_task(bench._getReplyFromPool_async(122))
    limited = loop.create_task(bench._echoPacket_async(123, [], 0.02))
    for _ in range(3):
        loop.call_soon(loop.stop)
        loop.run_forever()
    bench._putToDataPool(122, b"x")
    assert run(loop, asyncio.wait_for(asyncio.gather(task, limited), 5)) == [b"x", None]


def test_a_reply_in_time_counts_even_if_the_loop_was_busy(bench, make_loop):
    async def main():
        threading.Timer(0.02, bench._putToDataPool, (122, b"x")).start()
        asyncio.get_running_loop().call_later(0.01, time.sleep, 0.1)
        return await bench._echoPacket_async(122, [], 0.05)

    assert run(make_loop(), main()) == b"x"


class Broken(Exception):
    pass


def test_a_future_that_refuses_its_result_does_not_stop_the_others(bench):
    loop = Futures()
    reported = []
    loop.set_exception_handler(lambda _, context: reported.append(context["exception"]))

    def refuse(future):
        if future is futures[KEYS[0]]:
            raise Broken

    loop.on_result = refuse
    steps, futures = suspended(loop, bench, KEYS[:5])
    for command in KEYS[:5]:
        bench._putToDataPool(command, b"x")
    loop.call_soon(loop.stop)
    loop.run_forever()
    loop.close()
    assert [future.done() for future in futures.values()] == [False] + [True] * 4
    assert [type(each) for each in reported] == [Broken]


@pytest.mark.parametrize("name", ["create_future", "add_reader", "call_later"])
def test_what_the_loop_raises_reaches_the_caller_and_leaves_the_object_usable(bench, name):
    def broken(*_):
        raise Broken

    async def main():
        setattr(asyncio.get_running_loop(), name, broken)
        with pytest.raises(Broken):
            await bench._echoPacket_async(122, [], 1)
        delattr(asyncio.get_running_loop(), name)
        asyncio.get_running_loop().call_later(0.01, bench._putToDataPool, 122, b"x")
        return await bench._echoPacket_async(122, [], 1)

    before = descriptors()
    assert asyncio.run(main()) == b"x"
    assert descriptors() == before


def test_a_loop_that_cannot_say_whether_it_is_closed_harms_no_other(bench, monkeypatch):
    unraisable = []
    monkeypatch.setattr(sys, "unraisablehook", lambda what: unraisable.append(what.exc_type))
    loop = asyncio.new_event_loop()
    loop.run_until_complete(bench._echoPacket_async(122, [], 0.001))

    def broken():
        raise Broken

    loop.is_closed = broken
    bench.client_cmd.replies[122] = b"SN000001"
    assert asyncio.run(bench._echoPacket_async(123, [], 0.01)) is None
    assert asyncio.run(bench.Sys_getSerialNumber_async()) == "SN000001"
    del loop.is_closed
    loop.close()
    assert set(unraisable) == {Broken}


def test_cancelling_at_any_moment_loses_nothing_for_the_others(bench, make_loop):
    device = Answering(bench)
    chance = random.Random(5)

    async def main():
        keys = itertools.cycle(KEYS)
        for _ in range(60):
            tasks = [asyncio.create_task(bench._echoPacket_async(next(keys), [1], 0.9)) for _ in range(20)]
            for _ in range(chance.randrange(4)):
                await asyncio.sleep(0)
            for task in tasks[::2]:
                task.cancel()
                if chance.random() < 0.3:
                    await asyncio.sleep(0)
            results = await asyncio.gather(*tasks, return_exceptions=True)
            assert results[1::2] == [b"\x01"] * 10

    run(make_loop(), main())
    device.end()
