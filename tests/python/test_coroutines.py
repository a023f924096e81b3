"""The awaitable form as asyncio sees it."""

import asyncio
import collections.abc
import gc
import inspect
import threading
import warnings
import weakref

import pytest

import pyzvr


@pytest.fixture
def answering(bench):
    bench.client_cmd.replies = {pyzvr.GET_SERIAL_NUMBER: b"SN000001", pyzvr.GET_PIN_MODE_OF_SLOT: b"\x00\x02\x11",
                                pyzvr.SET_DIO_CURRENT: b"\x00\x00"}
    return bench


def test_it_is_a_coroutine_of_its_own_name(answering):
    coroutine = answering.DI_openPins_async(0, [0])
    assert asyncio.iscoroutine(coroutine)
    assert isinstance(coroutine, collections.abc.Coroutine)
    assert inspect.isawaitable(coroutine)
    assert (coroutine.__name__, coroutine.__qualname__) == ("DI_openPins_async", "DIOModule_async.DI_openPins_async")
    assert coroutine.cr_running is False
    assert coroutine.cr_await is None
    assert "DI_openPins_async" in repr(coroutine)
    assert asyncio.run(coroutine) == 0
    with pytest.raises(RuntimeError, match="cannot reuse already awaited coroutine"):
        asyncio.run(coroutine)


def test_tasks_gather_and_debug_mode(answering):
    async def main():
        task = asyncio.create_task(answering.Sys_getSerialNumber_async(), name="serial")
        assert "Sys_getSerialNumber_async" in repr(task)
        task.get_stack()
        return await asyncio.gather(task, answering.DI_openPins_async(0, [1]))

    assert asyncio.run(main(), debug=True) == ["SN000001", 0]


def test_one_that_is_never_awaited_warns_and_a_closed_one_does_not(answering):
    with pytest.warns(RuntimeWarning,
                      match="coroutine 'SystemModule_async.Sys_getSerialNumber_async' was never awaited"):
        answering.Sys_getSerialNumber_async()
        gc.collect()
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        answering.Sys_getSerialNumber_async().close()
        gc.collect()
    assert answering.client_cmd.sent == []


SUSPENDED = ["_getReplyFromPool_async", "_echoPacket_async", "_echoPacketWithRetry_async", "DI_openPins_async"]


@pytest.mark.parametrize("name", SUSPENDED)
def test_cancellation_reaches_every_suspension_point_and_leaves_the_object_usable(bench, name):
    arguments = {"DI_openPins_async": (0, [0]), "_getReplyFromPool_async": (122,)}.get(name, (122, []))

    async def main():
        task = asyncio.create_task(getattr(bench, name)(*arguments))
        await asyncio.sleep(0.02)
        task.cancel()
        with pytest.raises(asyncio.CancelledError):
            await task
        with pytest.raises(asyncio.TimeoutError):
            await asyncio.wait_for(getattr(bench, name)(*arguments), 0.02)
        bench.client_cmd.replies[122] = b"SN000001"
        assert await bench.Sys_getSerialNumber_async() == "SN000001"

    asyncio.run(main())


def test_cancelling_before_the_first_step_sends_nothing(bench):
    async def main():
        task = asyncio.create_task(bench.Sys_getSerialNumber_async())
        task.cancel()
        with pytest.raises(asyncio.CancelledError):
            await task

    asyncio.run(main())
    assert bench.client_cmd.sent == []


def test_close_and_throw_end_a_suspended_one(bench):
    loop = asyncio.new_event_loop()
    asyncio._set_running_loop(loop)
    try:
        first = bench._getReplyFromPool_async(122)
        assert asyncio.isfuture(first.send(None))
        assert first.cr_await is not None
        first.close()
        with pytest.raises(RuntimeError):
            first.send(None)
        second = bench._echoPacketWithRetry_async(122, [])
        second.send(None)
        with pytest.raises(KeyError, match="thrown"):
            second.throw(KeyError("thrown"))
        third = bench._getReplyFromPool_async(122)
        with pytest.raises(ZeroDivisionError):
            third.throw(ZeroDivisionError)
    finally:
        asyncio._set_running_loop(None)
        loop.close()


def test_bad_arguments_fail_at_the_await_and_wrong_calls_at_once(answering):
    coroutine = answering.DI_openPins_async(9, [0])
    with pytest.raises(pyzvr.DIPortNotAvaliableError):
        asyncio.run(coroutine)
    with pytest.raises(TypeError, match="timeout"):
        answering.Sys_getSerialNumber_async(timeout=3)
    assert answering.client_cmd.sent == []


def test_python_coroutines_and_ours_nest_both_ways(answering):
    class Mixed(type(answering)):
        async def Sys_getPinModeInPort_async(self, port):
            await asyncio.sleep(0)
            modes = await super().Sys_getPinModeInPort_async(port)
            return ["DI"] * len(modes)

    product = Mixed()
    product.client_cmd.replies = answering.client_cmd.replies
    assert asyncio.run(product.DI_openPins_async(0, [0, 1])) == 0


def test_a_loop_without_readers_is_woken_too(bench):
    class Plain(asyncio.SelectorEventLoop):
        def add_reader(self, *_):
            raise NotImplementedError

    loop = Plain()
    # The loop's own self-pipe uses the selector's internal way.
    try:
        threading.Timer(0.05, bench._putToDataPool, (122, b"SN000001")).start()
        assert loop.run_until_complete(bench.Sys_getSerialNumber_async()) == "SN000001"
    finally:
        loop.close()


def test_many_loops_one_after_the_other_and_at_once(bench):
    bench.client_cmd.replies[122] = b"SN000001"
    for _ in range(20):
        assert asyncio.run(bench.Sys_getSerialNumber_async()) == "SN000001"
    results = []

    def work(command):
        async def main():
            threading.Timer(0.05, bench._putToDataPool, (command, bytes([command]))).start()
            return await bench._getReplyFromPool_async(command)

        results.append(asyncio.run(main()) == bytes([command]))

    threads = [threading.Thread(target=work, args=(command,)) for command in range(50, 58)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert results == [True] * 8


def test_an_object_that_waits_in_no_task_is_freed(bench):
    async def main():
        product = type(bench)()
        gone = weakref.ref(product)
        with pytest.raises(asyncio.TimeoutError):
            await asyncio.wait_for(product._getReplyFromPool_async(122), 0.01)
        del product
        gc.collect()
        return gone()

    assert asyncio.run(main()) is None
