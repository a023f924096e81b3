"""The request engine: frames, sends, waits and pools, with a fake client."""

import asyncio
import queue
import struct
import threading
import time
from unittest import mock

import pytest

import pyzvr

ECHO = pyzvr.GET_SERIAL_NUMBER


@pytest.fixture
def silent(bench):
    """The fake client answers nothing by itself."""
    bench.client_cmd.replies.clear()
    return bench


def file_later(product, seconds, command, data):
    timer = threading.Timer(seconds, product._putToDataPool, (command, data))
    timer.start()
    return timer


def test_frames(bench):
    assert bench._preparePacket(122) == [2, 0, 1, 122, 13, 10]
    data = [1]
    assert bench._preparePacket(pyzvr.GET_SLOT_MODE, data) == [2, 0, 3, 8, 6, 1, 13, 10]
    assert data == [1]
    with pytest.raises(ValueError):
        bench._preparePacket(122, [256])
    with pytest.raises(OverflowError):
        bench._preparePacket(122, bytes(0xFFFF))
    with pytest.raises(TypeError):
        bench._preparePacket(122, 5)


def test_a_reply_is_taken_once_and_a_stale_one_answers_at_once(silent):
    silent._putToDataPool(ECHO, b"one")
    silent._putToDataPool(ECHO, b"two")
    assert silent._getReplyFromPool(ECHO, 1) == b"two"
    with pytest.raises(pyzvr.ReceivePacketTimeoutError):
        silent._getReplyFromPool(ECHO, 0.01)
    for timeout in (0, -1):
        silent._putToDataPool(ECHO, b"three")
        with pytest.raises(pyzvr.ReceivePacketTimeoutError):
            silent._getReplyFromPool(ECHO, timeout)
    assert asyncio.run(silent._getReplyFromPool_async(ECHO)) == b"three"


def test_an_unanswered_request_goes_out_three_times(silent):
    begin = time.perf_counter()
    with pytest.raises(pyzvr.ReceivePacketTimeoutError):
        silent._echoPacketWithRetry(ECHO, [], 0.1)
    assert time.perf_counter() - begin >= 0.1
    assert silent.client_cmd.sent == [(ECHO, b"")] * 3


@pytest.mark.parametrize("timeout, sends", [(0, 0), (0.005, 1), (0.01, 1), (0.02, 2), (0.03, 3)])
def test_a_timeout_shorter_than_the_tries_ends_them(silent, timeout, sends):
    with pytest.raises(pyzvr.ReceivePacketTimeoutError):
        silent._echoPacketWithRetry(ECHO, [], timeout)
    assert len(silent.client_cmd.sent) == sends


def test_a_late_reply_is_waited_for_without_another_send(silent):
    timer = file_later(silent, 0.1, ECHO, b"late")
    assert silent._echoPacketWithRetry(ECHO, [], 5) == b"late"
    timer.join()
    assert len(silent.client_cmd.sent) == 3


def test_awaited_sends_are_a_second_apart_and_their_limit_gives_none_or_fails(silent):
    async def main():
        begin = time.perf_counter()
        assert await silent._echoPacket_async(ECHO, [], 0.05) is None
        with pytest.raises(asyncio.TimeoutError):
            await silent._echoPacketWithRetry_async(ECHO, [], num_retries=1, timeout=1.1)
        assert time.perf_counter() - begin >= 1.15
        assert len(silent.client_cmd.sent) == 2
        begin = time.perf_counter()
        with pytest.raises(asyncio.TimeoutError):
            await silent._echoPacketWithRetry_async(ECHO, [], num_retries=0, timeout=0)
        assert time.perf_counter() - begin < 1

    asyncio.run(main())


def test_an_awaited_late_reply_wakes_the_loop_and_lets_other_tasks_run(silent):
    async def main():
        turns = 0

        async def spin():
            nonlocal turns
            while True:
                turns += 1
                await asyncio.sleep(0)

        spinner = asyncio.create_task(spin())
        timer = file_later(silent, 0.1, ECHO, b"late")
        assert await silent._echoPacketWithRetry_async(ECHO, []) == b"late"
        timer.join()
        spinner.cancel()
        assert turns > 10
        assert len(silent.client_cmd.sent) == 1

    asyncio.run(main())


def test_motion_replies_are_kept_apart_and_a_late_one_is_lost(silent):
    request, other = [0, 5, 1, 9, 9, 9, 9], [0, 5, 2, 9, 9, 9, 9]
    silent._putToDataPool(pyzvr.MOTION, bytes(other))
    with pytest.raises(pyzvr.ReceivePacketTimeoutError):
        silent._echoPacket(pyzvr.MOTION, request, 0.02)
    assert silent._echoPacket(pyzvr.MOTION, other, 0.02) == bytes(other)
    silent._putToDataPool(pyzvr.MOTION, bytes(request))
    assert list(silent.data_pool_echo) == [struct.unpack(">i", bytes([1, 0, 5, 208]))[0]]
    silent.data_pool_echo.clear()
    # The last wait looks under the plain code, where no motion reply is ever filed.
    timer = file_later(silent, 0.05, pyzvr.MOTION, bytes(request))
    with pytest.raises(pyzvr.ReceivePacketTimeoutError):
        silent._echoPacketWithRetry(pyzvr.MOTION, request, 0.2)
    timer.join()
    with pytest.raises(IndexError):
        silent._echoPacket(pyzvr.MOTION, [1], 0.1)


def test_steps_can_be_overridden_in_python(silent):
    class Traced(type(silent)):
        def _echoPacket(self, cmd, data_out, timeout):
            self.tries = getattr(self, "tries", 0) + 1
            if self.tries < 3:
                raise pyzvr.ReceivePacketTimeoutError
            return b"SN000001"

        async def _getReplyFromPool_async(self, cmd):
            await asyncio.sleep(0.01)
            return b"ASYNC"

        def _preparePacket(self, cmd, data_out=()):
            self.prepared = (cmd, list(data_out))
            return super()._preparePacket(cmd, data_out)

    pyzvr.LABEL_DICT["Traced"] = "Traced"
    try:
        product = Traced()
        assert product.Sys_getSerialNumber() == "SN000001"
        assert product.tries == 3
        assert asyncio.run(product.Sys_getSerialNumber_async()) == "ASYNC"
        assert product.prepared == (122, [])
        Traced._echoPacket = lambda *_: 1 / 0
        with pytest.raises(ZeroDivisionError):
            product.Sys_getSerialNumber()
    finally:
        del pyzvr.LABEL_DICT["Traced"]


def test_a_failing_send_passes_up_in_both_forms(bench, call):
    def fail(_):
        raise ConnectionResetError("gone")

    bench.client_cmd.sendPacket = fail
    with pytest.raises(ConnectionResetError):
        call(bench, "Sys_getSerialNumber")


def test_a_reply_that_is_too_short_fails_in_its_call_only(bench, call):
    bench.client_cmd.replies = {pyzvr.GET_DATE_TIME: b"\x01", pyzvr.READ_AND_GET_DI: b"\x00",
                                pyzvr.SET_DIO_CURRENT: b"\x00", pyzvr.GET_SERIAL_NUMBER: b"SN000001"}
    with pytest.raises(IndexError):
        call(bench, "Sys_getRTC")
    with pytest.raises(IndexError) as error:
        call(bench, "DI_readPort", 0)
    assert isinstance(error.value, struct.error)
    assert str(error.value) == "3 bytes or more are wanted, 1 came"
    with pytest.raises(IndexError):
        call(bench, "_setDIOCurrent", 0, 1, 1, 1, 1)
    assert call(bench, "Sys_getSerialNumber") == "SN000001"


WRONG_TYPES = [("DIO", "_setDIOCurrent", (0, "1", 1, 1, 1), "mask: .*str"),
               ("DIO", "_setDIOCurrent", (None, 1, 1, 1, 1), "port: .*NoneType"),
               ("System", "Sys_startRTCAlarm", (0, 1, 2, 3, 4.5), "second: .*float"),
               ("System", "Sys_setDeviceAlias", (5,), "alias: .*int"),
               ("System", "_setEEPROMPage", (0, 7), "int_list: .*int"),
               ("System", "_Sys_setSlotMode", (1, "1"), "mode: .*str"), ]


@pytest.mark.parametrize("module, operation, arguments, text", WRONG_TYPES)
def test_wrong_types_are_told_by_name_before_a_send(bench, call, module, operation, arguments, text):
    assert hasattr(getattr(pyzvr, module + "Module"), operation)
    with pytest.raises(TypeError, match=text):
        call(bench, operation, *arguments)
    assert bench.client_cmd.sent == []


def test_numbers_that_do_not_fit_are_told_by_name(bench, call):
    for arguments in ((0, 65536, 1, 1, 1), (0, -1, 1, 1, 1), (0, 10**30, 1, 1, 1)):
        with pytest.raises(OverflowError, match="mask: .* 16 bits"):
            call(bench, "_setDIOCurrent", *arguments)


def test_modes_of_pins_are_kept_before_they_are_named(bench, call):
    bench.client_cmd.replies = {pyzvr.GET_PIN_MODE_OF_SLOT: b"\0\4\x21\xa3"}
    with pytest.raises(KeyError, match="10"):
        call(bench, "Sys_getPinModeInPort", 0)
    assert (bench.num_of_pins, bench.pin_mode_list) == (4, [1, 2, 3, 10])


def test_a_mask_is_made_after_the_modes_are_read(bench, call):
    bench.client_cmd.replies = {pyzvr.GET_PIN_MODE_OF_SLOT: b"\0\x08\x11\x11\x11\x11", pyzvr.SET_DIO_CURRENT: b"\0\0"}
    for operation, pins in (("DI_openPins", [0, 2]), ("DO_openPins", [0, 2])):
        bench.client_cmd.sent.clear()
        with mock.patch.object(bench, "_getPinIndexInInt", side_effect=lambda _: len(bench.client_cmd.sent)):
            assert call(bench, operation, 0, pins) == 0
        # One request was out when it was made.
        assert [data[:3] for _, data in bench.client_cmd.sent] == [b"\0", b"\0\0\1"]


def test_a_clock_counts_as_the_name_says(bench, call, monkeypatch):
    bench.client_cmd.replies = {pyzvr.GET_DATE_TIME: bytes([24, 1, 2, 3, 4, 5])}
    assert call(bench, "Sys_getRTC") == "1924-01-02, 03:04:05"
    monkeypatch.setitem(pyzvr.LABEL_DICT, "BenchDio", "Bench-Wifi-Dio")
    assert call(bench, "Sys_getRTC") == bench.rtc_time == "2024-01-02, 03:04:05"
    monkeypatch.delitem(pyzvr.LABEL_DICT, "BenchDio")  # no name says nothing
    assert call(bench, "Sys_getRTC") == "1924-01-02, 03:04:05"
    monkeypatch.setitem(pyzvr.LABEL_DICT, "BenchDio", "Bench-Dio")  # close() tells it


@pytest.mark.parametrize("timeout, error", [("1", TypeError), (None, TypeError), (float("nan"), ValueError)])
def test_a_timeout_that_is_no_time_fails_before_a_send(bench, timeout, error):
    with pytest.raises(error):
        bench.Sys_getSerialNumber(timeout=timeout)
    assert bench.client_cmd.sent == []


STREAMS = [
    (pyzvr.START_AI_STREAMING, b"\x01\x02abc", (pyzvr.START_AI_STREAMING, 1, 2), b"abc"),
    (pyzvr.AI_START_STREAMING_24BIT, b"\x01\x02abc", (pyzvr.AI_START_STREAMING_24BIT, 0, 0), b"abc"),
    (pyzvr.START_AI_STREAMING_VARIABLE, b"\x01\x02abc", (pyzvr.START_AI_STREAMING_VARIABLE, 0, 0), b"abc"),
    (pyzvr.START_CAN, b"\x01\x02abc", pyzvr.START_CAN, b"abc"),
    (pyzvr.AHRS_START, b"\x01abc", pyzvr.AHRS_START, b"abc"),
    (pyzvr.START_UART_READING, b"\x02\x02abc", (pyzvr.START_UART_READING, 2), b"abc"),
    (pyzvr.START_AO_STREAMING, b"\x01abc", pyzvr.START_AO_STREAMING, b"\x01abc"),
]


@pytest.mark.parametrize("command, data, key, stored", STREAMS)
def test_stream_frames_wait_under_their_key(bench, command, data, key, stored):
    assert bench._checkCommandType(command, data) == "streaming"
    fifo = bench.data_pool_strm[key]
    bench._putToDataPool(command, data)
    assert fifo is not None
    assert fifo.qsize() == 1
    assert fifo.get_nowait() == stored
    assert key in bench.data_pool_strm
    assert list(bench.data_pool_strm) == [key]


def test_frames_too_short_for_their_class_fail(bench):
    for command in (pyzvr.START_AI_STREAMING, pyzvr.START_UART_READING, pyzvr.GET_DEVICE_INFO, pyzvr.MOTION):
        with pytest.raises(IndexError):
            bench._putToDataPool(command, b"")


def test_broadcasts_are_deduplicated_and_other_directions_ignored(bench, monkeypatch, call):
    class Broadcaster:
        sent = 0

        def sendBcstPacket(self, packet):
            self.sent += 1
            for data in (b"\x01one", b"\x01two", b"\x00not"):
                bench._putToDataPool(pyzvr.GET_DEVICE_INFO, data)

    assert bench._checkCommandType(pyzvr.GET_DEVICE_INFO, b"\x00") == "ignore"
    bench.client_udp = Broadcaster()
    bench.data_pool_bcst[pyzvr.GET_DEVICE_INFO].add(b"old")
    begin = time.perf_counter()
    records = call(bench, "_broadcastPacket", pyzvr.GET_DEVICE_INFO, [0])
    assert time.perf_counter() - begin >= pyzvr.PACKET_TIMEOUT
    assert bench.client_udp.sent == pyzvr.NUM_BCST_RETRIES
    assert records == {b"one", b"two"}
    assert len(records) == 2
    assert b"one" in records
    bench._putToDataPool(pyzvr.GET_DEVICE_INFO, b"\x01three")
    assert len(records) == 3
    assert len(bench.data_pool_bcst[pyzvr.GET_DEVICE_INFO]) == 3


def test_the_streaming_read_has_the_shapes_of_its_contract(bench, call):
    items = queue.Queue()
    assert call(bench, "_getStreamingFromPool", items, -1, 0) == []
    items.put([1, 2])
    assert call(bench, "_getStreamingFromPool", items, 0, 0) == []
    assert call(bench, "_getStreamingFromPool", items, -1, 0) == [1, 2]
    for item in ([1], [2], [3]):
        items.put(item)
    assert call(bench, "_getStreamingFromPool", items, 2, 0) == [[1], [2]]
    fifo = pyzvr.Fifo()
    fifo.put(b"frame")
    assert call(bench, "_getStreamingFromPool", fifo, 5, 0.001) == [b"frame"]


def test_only_the_blocking_streaming_read_waits_and_only_for_what_is_missing(bench):
    fifo = pyzvr.Fifo()
    timer = threading.Timer(0.05, fifo.put, (b"late",))
    timer.start()
    assert bench._getStreamingFromPool(fifo, 1, 30) == [b"late"]
    timer.join()
    assert asyncio.run(bench._getStreamingFromPool_async(fifo, 1, 30)) == []


def test_fifo_is_the_queue_of_the_host():
    fifo = pyzvr.Fifo(2)
    fifo.put(None)
    fifo.put_nowait(b"x")
    assert fifo.full()
    assert fifo.maxsize == 2
    with pytest.raises(queue.Full):
        fifo.put(b"y", timeout=0.01)
    assert fifo.get() is None
    assert fifo.get(timeout=1) == b"x"
    assert fifo.empty()
    with pytest.raises(queue.Empty):
        fifo.get_nowait()
    item = [1, object()]
    fifo.put(item)
    assert fifo.get() is item


def test_many_threads_with_different_commands_do_not_mix_replies(bench):
    bench.client_cmd.replies = {command: (lambda data, c=command: bytes([c]) + data) for command in range(50, 58)}
    wrong = []

    def work(command):
        try:
            for i in range(200):
                data = [i % 256, command]
                assert bench._echoPacketWithRetry(command, data) == bytes([command, *data])
        except Exception as error:
            wrong.append((command, error))

    threads = [threading.Thread(target=work, args=(command,)) for command in range(50, 58)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert wrong == []


def test_gathered_requests_do_not_mix_replies(bench):
    bench.client_cmd.replies = {command: (lambda data, c=command: bytes([c]) + data) for command in range(50, 58)}

    async def main():
        return await asyncio.gather(*(bench._echoPacketWithRetry_async(command, [command])
                                      for command in range(50, 58)))

    assert asyncio.run(main()) == [bytes([command, command]) for command in range(50, 58)]
