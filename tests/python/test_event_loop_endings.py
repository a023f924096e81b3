"""What a loop leaves behind when it ends under waiting requests, and an object on a loop that goes on."""

import asyncio
import contextvars
import gc
import os
import threading
import time
import weakref

import pytest
from fake_client import BenchDio
from loops import KEYS, descriptors, run
from peer import Peer

import pyzvr


def settles(condition):
    """Whether something comes true that other threads bring about."""
    end = time.monotonic() + 5
    while not condition():
        if time.monotonic() > end:
            return False
        time.sleep(0.001)
    return True


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
