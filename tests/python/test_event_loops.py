"""Awaited requests and the loops they wait on: nothing lost, nothing kept, whatever happens to either of them."""

import asyncio
import contextvars
import gc
import itertools
import os
import queue
import random
import sys
import threading
import time
import weakref

import pytest
from conftest import BenchDio, connected
from peer import Peer

import pyzvr

# Requests of the simulated box that are answered whatever their data, each under a key of its own.
COMMANDS = [pyzvr.GET_DATE_TIME, pyzvr.GET_DIO_CURRENT, pyzvr.GET_DIO_STATE, pyzvr.GET_DRIVER_INFO,
            pyzvr.GET_EEPROM_DEVICE, pyzvr.GET_GATEWAY, pyzvr.GET_IP, pyzvr.GET_MAC, pyzvr.GET_PIN_MODE_OF_SLOT,
            pyzvr.GET_SERIAL_NUMBER, pyzvr.GET_THREADS, pyzvr.READ_DI]

# Codes whose replies wait under the code itself.
KEYS = [code for code in range(50, 250)
        if code not in (pyzvr.MOTION, *pyzvr.STREAMING_CMD_LIST, *pyzvr.BROADCAST_CMD_LIST)]


class WithoutReaders(asyncio.SelectorEventLoop):
    """As other systems' loops are. Its own pipe uses an internal way."""

    def add_reader(self, *_):
        raise NotImplementedError


LOOPS = [asyncio.SelectorEventLoop, WithoutReaders]


@pytest.fixture(params=LOOPS)
def make_loop(request):
    return request.param


@pytest.fixture
def quick_switches():
    before = sys.getswitchinterval()
    sys.setswitchinterval(1e-6)
    yield
    sys.setswitchinterval(before)


def run(loop, main):
    """What asyncio.run does, on a loop of the test's own."""
    try:
        return loop.run_until_complete(main)
    finally:
        loop.close()


def descriptors():
    return len(os.listdir("/proc/self/fd"))


def settles(condition):
    """Whether something comes true that other threads bring about."""
    end = time.monotonic() + 5
    while not condition():
        if time.monotonic() > end:
            return False
        time.sleep(0.001)
    return True


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
    assert resolved and all(resolved)


# What a loop leaves behind.


class Silent(pyzvr.TarnDio):
    """Is connected to a peer that never answers."""


@pytest.fixture
def silent(monkeypatch):
    monkeypatch.setitem(pyzvr.LABEL_DICT, "Silent", "Tarn-Dio")
    peer = Peer()
    yield peer
    peer.close()


@pytest.mark.parametrize("kept", ["nothing", "task", "arguments", "loop"])
@pytest.mark.parametrize("how", ["closed", "dropped"])
@pytest.mark.filterwarnings("ignore:unclosed event loop:ResourceWarning")
def test_a_loop_that_ends_under_waiting_requests_takes_all_with_it(silent, make_loop, how, kept):
    def leave_waiting():
        box = Silent()
        box.connect("127.0.0.1", silent.port, verbose=False)
        silent.connection().close()
        loop = make_loop()
        loop.set_exception_handler(lambda *_: None)  # each of the tasks is reported as pending
        tasks = [loop.create_task(box.Sys_getSerialNumber_async()), loop.create_task(box._getReplyFromPool_async(1))]
        if kept == "task":
            box.tasks = tasks
        if kept == "arguments":
            cyclic = []
            tasks.append(loop.create_task(box._echoPacket_async(122, cyclic)))
            cyclic.append(tasks)
            tasks.append(loop.create_task(box.DI_openPins_async(0, [tasks])))
        if kept == "loop":
            box.loop = loop
        loop.call_later(0.01, loop.stop)
        loop.run_forever()
        if how == "closed":
            loop.close()
        return weakref.ref(box), weakref.ref(loop)

    leave_waiting()  # the first connection makes descriptors that stay
    gc.collect()
    before = descriptors()
    gone = [reference for _ in range(5) for reference in leave_waiting()]
    gc.collect()
    assert settles(lambda: descriptors() == before)
    assert [reference() for reference in gone] == [None] * 10


def test_a_closed_loop_lets_go_of_its_descriptor_at_once(bench, make_loop):
    async def main():
        with pytest.raises(asyncio.TimeoutError):
            await asyncio.wait_for(bench._getReplyFromPool_async(122), 0.001)

    before = descriptors()
    for _ in range(50):
        run(make_loop(), main())
        assert descriptors() == before


def test_a_loop_that_waits_keeps_what_waits(bench, make_loop):
    """The collector must not take a task that nobody but its loop will go on with, as with the host's own waits."""
    results = []

    async def one(command):
        results.append(await bench._getReplyFromPool_async(command))

    async def main():
        for command in KEYS[:10]:
            asyncio.create_task(one(command))
        await asyncio.sleep(0)
        gc.collect()
        for command in KEYS[:10]:
            bench._putToDataPool(command, b"x")
        await asyncio.sleep(0.05)

    run(make_loop(), main())
    assert results == [b"x"] * 10


def test_a_dropped_object_leaves_nothing_on_a_loop_that_goes_on(make_loop):
    async def use(box):
        with pytest.raises(asyncio.TimeoutError):
            await asyncio.wait_for(box._getReplyFromPool_async(122), 0.001)

    async def main():
        before = descriptors()
        for _ in range(3):
            boxes = [pyzvr.TarnDio() for _ in range(4)]
            gone = [weakref.ref(box) for box in boxes]
            await asyncio.gather(*(use(box) for box in boxes))
            boxes.pop()
            dropping = threading.Thread(target=boxes.clear)
            dropping.start()
            await asyncio.get_running_loop().run_in_executor(None, dropping.join)
            await asyncio.sleep(0)
            await asyncio.sleep(0)
            assert [reference() for reference in gone] == [None] * 4
        await asyncio.get_running_loop().shutdown_default_executor()
        assert descriptors() == before

    run(make_loop(), main())


def test_an_object_dropped_on_another_thread_whose_loop_closes_before_it_hears_of_it():
    async def use(box):
        with pytest.raises(asyncio.TimeoutError):
            await asyncio.wait_for(box._getReplyFromPool_async(122), 0.001)

    async def main():
        box = [pyzvr.TarnDio()]
        await use(box[0])
        dropping = threading.Thread(target=box.clear)
        dropping.start()
        dropping.join()
        asyncio.get_running_loop().stop()

    before = descriptors()
    for _ in range(10):
        loop = asyncio.new_event_loop()
        task = loop.create_task(main())
        loop.run_forever()
        loop.close()
        assert task.done()
    assert descriptors() == before


def test_the_context_of_a_task_is_not_kept(bench):
    held = contextvars.ContextVar("held")

    class Thing:
        pass

    async def first():
        thing = Thing()
        held.set(thing)
        await bench._echoPacket_async(122, [], 0.005)
        return weakref.ref(thing)

    async def main():
        gone = await asyncio.create_task(first())
        await asyncio.sleep(0)  # the loop still holds what it has just run
        gc.collect()
        assert gone() is None

    asyncio.run(main())


@pytest.mark.skipif(not hasattr(os, "fork"), reason="needs a process to share its loop with")
@pytest.mark.filterwarnings("ignore:This process .* is multi-threaded:DeprecationWarning")
def test_a_forked_process_does_not_end_the_watch_of_its_parent():
    box = BenchDio()
    loop = asyncio.new_event_loop()
    loop.run_until_complete(box._echoPacket_async(122, [], 0.001))
    child = os.fork()
    if child == 0:
        del box
        gc.collect()
        os._exit(0)
    assert os.waitpid(child, 0)[1] == 0
    threading.Timer(0.02, box._putToDataPool, (122, b"x")).start()
    assert run(loop, box._echoPacket_async(122, [], 0.9)) == b"x"


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
