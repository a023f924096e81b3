"""Analog inputs and outputs at a fake client: what is checked, sent and made of replies and frames."""

import asyncio
import contextlib
import os
import struct
import threading
from unittest import mock

import pytest
from cases import Exchange, operation_of
from fake_client import FakeClient
from forms import awaited, blocking

import pyzvr

F32, U32 = pyzvr.convertF32To4U8, pyzvr.convertU32To4U8
OK = b"\0\0"
AI_REFUSED, AO_REFUSED = b"\0\x34", b"\0\x35"
RATIO = 10 / 32768


def volts(code):
    return round(code * RATIO, 4)


@contextlib.contextmanager
def fake_device(model):
    with getattr(pyzvr, model)() as product:
        product.client_cmd = FakeClient(product)
        yield product


def samples(*codes):
    return struct.pack(f">{len(codes)}h", *codes)


ON_DEMAND = b"\0\0" + samples(0, 1, -1, 32767, -32768, 3, 4, 5)
VALUES = [volts(code) for code in (0, 1, -1, 32767, -32768, 3, 4, 5)]
CURRENT = bytes([0, 0]) + bytes.fromhex("000000800000ffffff" + "400000" * 5)
WIRE = [
    Exchange("AI_open", (0,), model="SableAnalog", command="OPEN_AI", sent=[0], reply=OK, result=0),
    Exchange("AI_close", (0,), model="SableAnalog", command="CLOSE_AI", sent=[0], reply=AI_REFUSED, result=-7017),
    Exchange("AI_open", (7,), model="TarnCurrent", command="OPEN_AI", sent=[0], reply=OK, result=0),
    Exchange("AI_close", (1,), model="TarnCurrentVolt", command="CLOSE_AI", sent=[0], reply=OK, result=0),
    Exchange("AI_setMode", (0, 2), model="TarnAnalog", command="SET_AI_MODE", sent=[0, 2], reply=OK, result=0),
    Exchange("AI_setMode", (5, 1), model="TarnCurrent", command="SET_AI_MODE", sent=[0, 1], reply=OK, result=0),
    Exchange(
        "AI_setMode", (4, 1), model="Lattice", command="SET_AI_MODE", sent=[3, 1], reply=AI_REFUSED, result=-7017,
    ),
    Exchange(
        "AI_setNumSamples", (0, 70000), model="TarnAnalog", command="SET_AI_NUM_SAMPLES", sent=[0, 0, 1, 17, 112],
        reply=OK, result=0,
    ),
    Exchange(
        "AI_setNumSamples", (1, 5), model="Lattice", command="SET_AI_NUM_SAMPLES", sent=[0, 0, 0, 0, 5], reply=OK,
        result=0,
    ),
    Exchange(
        "AI_setSamplingRate", (0, 20000), model="TarnAnalog", command="SET_AI_SAMPLING_RATE", sent=[0, *F32(20000)],
        reply=OK, result=0,
    ),
    Exchange(
        "AI_setSamplingRate", (9, 1e9), model="TarnCurrentVolt", command="SET_AI_SAMPLING_RATE", sent=[0, *F32(1e9)],
        reply=OK, result=0,
    ),
    Exchange(
        "AI_setSamplingRate", (2, 12000.0), model="Lattice", command="SET_AI_SAMPLING_RATE", sent=[1, *F32(12000)],
        reply=OK, result=0,
    ),
    Exchange(
        "AI_enableChannel", (0, 3), model="SableAnalog", command="SET_AI_ENABLED_CS", sent=[0, 3], reply=OK, result=0,
    ),
    Exchange(
        "AI_enableChannel", (0, 8), model="HeronMixed", command="SET_AI_ENABLED_CS", sent=[0, 8], reply=AI_REFUSED,
        result=-7017,
    ),
    Exchange(
        "AI_enableCS", (4, [0, 2]), model="Lattice", command="SET_AI_ENABLED_CS", sent=[3, 5], reply=OK, result=0,
    ),
    Exchange(
        "AI_setTriggerMode", (0, 1), model="TarnAnalog", command="AI_SET_TRIG_MODE", sent=[0, 2], reply=OK, result=0,
    ),
    Exchange(
        "AI_setTriggerMode", (1, 0), model="Lattice", command="AI_SET_TRIG_MODE", sent=[0, 1], reply=OK, result=0,
    ),
    Exchange(
        "AI_setTriggerMode", (0, 6), model="SableAnalog", command="AI_SET_TRIG_MODE", sent=[0, 7], reply=OK, result=0,
    ),
    Exchange(
        "AI_setTriggerMode", (0, 5), model="SableMixed", command="AI_SET_TRIG_MODE", sent=[0, 6], reply=OK, result=0,
    ),
    Exchange(
        "AI_readOnDemand", (0,), model="TarnAnalog", command="READ_AI_ON_DEMAND", sent=[0, 0], reply=ON_DEMAND,
        result=VALUES,
    ),
    Exchange(
        "AI_readOnDemand", (0,), model="HeronFast", command="READ_AI_ON_DEMAND_VARIABLE", sent=[0],
        reply=ON_DEMAND + b"more", result=VALUES,
    ),
    Exchange(
        "AI_readOnDemand", (0,), model="TarnAnalog24", command="READAI24BIT", sent=[0, 0],
        reply=b"\0\0" + b"\xff\xff\xff" + b"\0\0\2" * 7,
        result=[-1.3904889343373708e-6] + [2.7809778686747416e-6] * 7,
    ),
    Exchange(
        "AI_readOnDemand", (0,), model="TarnCurrent", command="READAI24BIT", sent=[0, 255], reply=CURRENT,
        result=[-25.0, 0.0, 25.0] + [-12.5] * 5,
    ),
    Exchange(
        "AI_readOnDemand", (1,), model="TarnCurrentVolt", command="READAI24BIT", sent=[1, 255],
        reply=b"\1" + CURRENT[1:], result=[-50.0, 0.0, 50.0] + [-25.0] * 5,
    ),
    Exchange(
        "_AI_getDataRTC", (0,), model="TarnAnalog", command="AI_GET_DATA", sent=[0, 0], reply=ON_DEMAND,
        result=VALUES,
    ),
    Exchange(
        "_AI_getCounter", (2,), model="Lattice", command="GET_AI_COUNTERS", sent=[1],
        reply=struct.pack(">9I", *range(9)), result=list(range(9)),
    ),
    Exchange(
        "_AI_readBufferStatus", (0,), model="TarnAnalog", command="CHECK_BUFFER_STATUS", sent=[0],
        reply=struct.pack(">4I", 1, 2, 3, 2**32 - 1), result=[1, 2, 3, 2**32 - 1],
    ),
    Exchange("_AI_clearBufferStatus", (0,), model="TarnAnalog", command="CLEAR_DATA", sent=[0], reply=OK, result=0),
    Exchange(
        "AI_openStreaming", (0,), model="TarnAnalog", command="OPEN_AI_STREAMING", sent=[0],
        reply=b"\0\0" + bytes(U32(70000)) + bytes(F32(20000)) + b"\2", result=[70000, 20000.0, 2],
    ),
    Exchange(
        "AI_openStreaming", (9,), model="HeronImu", command="OPEN_AI_STREAMING", sent=[0],
        reply=b"\0\0" + bytes(8) + b"\1", result=[0, 0.0, 1],
    ),
    Exchange("AI_closeStreaming", (4,), model="Lattice", command="CLOSE_AI_STREAMING", sent=[3], reply=OK, result=0),
    Exchange("AO_close", (0,), model="SableMixed", command="CLOSE_AO", sent=[0], reply=AO_REFUSED, result=-7018),
    Exchange("AO_open", (0,), model="HeronOut", command="OPEN_AO", sent=[0], reply=OK, result=0),
    Exchange(
        "AO_writeOneChannel", (0, 7, 10), model="TarnOut", command="WRITE_AO_BY_CHANNEL", sent=[0, 7, *F32(10)],
        reply=OK, result=0,
    ),
    Exchange(
        "AO_writeOneChannel", (4, 0, -0.1), model="Lattice", command="WRITE_AO_BY_CHANNEL", sent=[3, 0, *F32(-0.1)],
        reply=AO_REFUSED, result=-7018,
    ),
    Exchange(
        "AO_openStreaming", (0,), model="TarnOut", command="OPEN_AO_STREAMING", sent=[0],
        reply=b"\0\1" + bytes(F32(15000)), result=[1, 15000.0],
    ),
    Exchange("AO_closeStreaming", (0,), model="TarnOut", command="CLOSE_AO_STREAMING", sent=[0], reply=OK, result=0),
    Exchange("_AO_stopStreaming", (0,), model="TarnOut", command="STOP_AO_STREAMING", sent=[0], reply=OK, result=0),
    Exchange(
        "AO_getValues", (0,), model="SableMixed", command="GET_AO_VALUES", sent=[0],
        reply=b"\0\0" + struct.pack(">8f", *range(8)), result=[float(i) for i in range(8)],
    ),
    Exchange(
        "AO_setEnableChannels", (0, [0, 2]), model="TarnOut", command="SET_AO_ENABLED_CHANNELS", sent=[0, 0, 5],
        reply=OK, result=0,
    ),
    Exchange("AO_setForm", (0, 1, 3), model="TarnOut", command="SET_AO_FORM", sent=[0, 0, 1, 3], reply=OK, result=0),
    Exchange(
        "AO_setFormParam", (0, 1, 2, 0.5, 10), model="TarnOut", command="SET_AO_FORM_PARAM",
        sent=[0, 0, 1, *F32(2), *F32(0.5), *F32(10), *F32(0), *F32(0.5)], reply=OK, result=0,
    ),
    Exchange("AO_setMode", (0, 2), model="TarnOut", command="SET_AO_MODE", sent=[0, 2], reply=OK, result=0),
    Exchange(
        "AO_setNumSamples", (0, 300), model="TarnOut", command="SET_AO_NUM_SAMPLES", sent=[0, 0, 0, 1, 44], reply=OK,
        result=0,
    ),
    Exchange(
        "AO_setSamplingRate", (0, 15000), model="TarnOut", command="SET_AO_SAMPLING_RATE", sent=[0, *F32(15000)],
        reply=OK, result=0,
    ),
    Exchange("_AO_setSpan", (0, 4), model="TarnOut", command="SET_AO_SPAN", sent=[0, 4], reply=OK, result=0),
    Exchange("_AO_getMode", (0,), model="TarnOut", command="GET_AO_MODE", sent=[0], reply=b"\0\2", result=2),
    Exchange("_AO_getState", (0,), model="TarnOut", command="GET_AO_STATE", sent=[0], reply=b"\0\1", result=1),
    Exchange(
        "_AO_getCounters", (0,), model="TarnOut", command="GET_AO_COUNTERS", sent=[0],
        reply=b"\0" + struct.pack(">2I", 5, 6), result=[5, 6],
    ),
    Exchange(
        "_AO_initialBuffer", (0,), model="TarnOut", command="INIT_AO_BUFFER", sent=[0],
        reply=b"\0" + bytes(U32(4096)) + b"\x0f", result=[4096, 15],
    ),
    Exchange(
        "_AO_pushToBuffer", (0, 2, [1, 2, 3]), model="TarnOut", command="SET_AO_PUSH_TO_BUFFER",
        sent=[0, 0, 2, *F32(1), *F32(2)], reply=OK, result=0,
    ),
]


@pytest.mark.parametrize("case", WIRE, ids=operation_of)
def test_exchanges(case):
    for call in (blocking, awaited):
        with fake_device(case.model) as box:
            box.client_cmd.replies = {getattr(pyzvr, case.command): case.reply}
            assert call(box, case.operation, *case.arguments) == case.result
            assert box.client_cmd.sent == [(getattr(pyzvr, case.command), bytes(case.sent))]


@pytest.mark.parametrize("model, operation, arguments, failure",
                         [("TarnAnalog", "AI_setMode", (0, 3), pyzvr.AIModeNotAvaliableError),
                          ("TarnAnalog", "AI_setMode", (1, 0), pyzvr.AIPortNotAvaliableError),
                          ("TarnAnalog", "AI_setMode", ("0", 0), pyzvr.InputTypeNotCorrectError),
                          ("TarnAnalog", "AI_setNumSamples", (1, 1.5), pyzvr.InputTypeNotCorrectError),
                          ("TarnAnalog", "AI_setNumSamples", (0, -1), OverflowError),
                          ("TarnAnalog", "AI_setSamplingRate", (0, 20000.5), pyzvr.AIRateNotVaildError),
                          ("TarnAnalog", "AI_setSamplingRate", (0, "1"), pyzvr.InputTypeNotCorrectError),
                          ("TarnAnalog24", "AI_setSamplingRate", (0, 10001), pyzvr.AIRateNotVaildError),
                          ("HeronFast", "AI_setSamplingRate", (0, 20001), pyzvr.AIRateNotVaildError),
                          ("HeronImu", "AI_setSamplingRate", (0, 10001), pyzvr.AIRateNotVaildError),
                          ("SableAnalog", "AI_setSamplingRate", (0, 2000.5), pyzvr.AIRateNotVaildError),
                          ("Lattice", "AI_setSamplingRate", (1, 12001), pyzvr.AIRateNotVaildError),
                          ("Lattice", "AI_setSamplingRate", (3, 1), pyzvr.AIPortNotAvaliableError),
                          ("Lattice", "AI_setMode", ("1", 0), TypeError),
                          ("TarnAnalog", "AI_enableChannel", (0, 1), pyzvr.APINotSupportError),
                          ("SableAnalog", "AI_enableChannel", (0, 9), pyzvr.AIChannelNotAvaliableError),
                          ("TarnAnalog", "AI_enableCS", (0, [0]), pyzvr.APINotSupportError),
                          ("Lattice", "AI_enableCS", (1, [3]), pyzvr.AICSNotAvaliableError),
                          ("Lattice", "AI_enableCS", (1, ["0"]), pyzvr.InputTypeNotCorrectError),
                          ("TarnAnalog", "AI_setTriggerMode", (0, 6), pyzvr.APINotSupportError),
                          ("SableAnalog", "AI_setTriggerMode", (0, 7), pyzvr.AITriggerModeNotAvaliableError),
                          ("SableAnalog", "AI_open", (1,), pyzvr.AIPortNotAvaliableError),
                          ("TarnCurrent", "AI_readOnDemand", (1,), pyzvr.AIPortNotAvaliableError),
                          ("TarnOut", "AO_writeOneChannel", (0, 8, 0), pyzvr.AOChannelNotAvaliableError),
                          ("TarnOut", "AO_writeOneChannel", (0, 0, 10.1), pyzvr.InputDataNotInRangeError),
                          ("SableMixed", "AO_writeOneChannel", (0, 0, -0.1), pyzvr.InputDataNotInRangeError),
                          ("TarnOut", "AO_writeOneChannel", (0, 0, "1"), pyzvr.InputTypeNotCorrectError),
                          ("TarnOut", "AO_writeAllChannels", (0, (1,)), pyzvr.InputTypeNotCorrectError),
                          ("TarnOut", "AO_setForm", (0, 0, 0), pyzvr.AOFormNotAvaliableError),
                          ("TarnOut", "AO_setMode", (0, 3), pyzvr.AOModeNotVaildError),
                          ("TarnOut", "AO_setMode", (2, 0), pyzvr.AOPortNotAvaliableError),
                          ("TarnOut", "_AO_setSpan", (0, 5), pyzvr.AOSpanNotVaildError),
                          ("TarnOut", "AO_setSamplingRate", (0, 15001), pyzvr.AORateNotVaildError),
                          ("TarnOut", "AO_setFormParam", (0, 0, 1, 1, "x"), pyzvr.InputTypeNotCorrectError),
                          ("TarnOut", "AO_setEnableChannels", (0, [8]), pyzvr.AOChannelNotAvaliableError),
                          ("TarnOut", "_AO_pushToBuffer", (0, 14, [0] * 14), pyzvr.InputDataNotInRangeError),
                          ("TarnOut", "_AO_pushToBuffer", (0, 3, [0]), pyzvr.InputDataNotInRangeError),
                          ("Lattice", "AO_writeAllChannels", (3, [0]), pyzvr.AOPortNotAvaliableError)])
def test_bad_arguments_fail_by_name_before_anything_is_sent(call, model, operation, arguments, failure):
    with fake_device(model) as box:
        with pytest.raises(failure):
            call(box, operation, *arguments)
        assert box.client_cmd.sent == []


def test_rate_limits_follow_channels_and_chip_selects(call):
    with fake_device("SableMixed") as box:
        box.client_cmd.replies = {pyzvr.SET_AI_ENABLED_CS: OK, pyzvr.SET_AI_SAMPLING_RATE: OK}
        for channels, limit in enumerate([16000, 8000, 6300, 4000, 3200, 2600, 2200, 2000], 1):
            call(box, "AI_enableChannel", 0, channels)
            assert call(box, "AI_setSamplingRate", 0, limit) == 0
            with pytest.raises(pyzvr.AIRateNotVaildError):
                call(box, "AI_setSamplingRate", 0, limit + 0.5)
    with fake_device("LatticeLite") as box:
        box.client_cmd.replies = {pyzvr.SET_AI_ENABLED_CS: AI_REFUSED, pyzvr.SET_AI_SAMPLING_RATE: OK}
        for chip_selects, limit in (([1], 12000), ([0, 2], 6000), ([0, 1, 2], 4000)):
            assert call(box, "AI_enableCS", 2, chip_selects) == -7017
            assert box.chip_select_p1 == chip_selects
            assert call(box, "AI_setSamplingRate", 2, limit) == 0
            with pytest.raises(pyzvr.AIRateNotVaildError):
                call(box, "AI_setSamplingRate", 2, limit + 1)


def test_several_chip_selects_are_read_one_by_one(call):
    with fake_device("Lattice") as box:
        box.client_cmd.replies = {pyzvr.SET_AI_ENABLED_CS: OK,
                                  pyzvr.READ_AI_ON_DEMAND: lambda data: b"\0\0" + samples(*[data[1]] * 8)}
        call(box, "AI_enableCS", 1, [2, 0])
        assert call(box, "AI_readOnDemand", 1) == [volts(2)] * 8 + [0.0] * 8
        assert [data for command, data in box.client_cmd.sent
                if command == pyzvr.READ_AI_ON_DEMAND] == [b"\0\2", b"\0\0"]


def test_outputs_that_need_their_lines_and_all_channels_at_once(call):
    with fake_device("SableMixed") as box:
        box.client_cmd.replies = {pyzvr.GET_PIN_MODE_OF_SLOT: b"\0\x08\x11\x11\x11\x11", pyzvr.OPEN_AO: OK}
        assert call(box, "AO_open", 0) == 0
        assert box.AO_getPort() == [0]
        assert box._AO_getPinMapPort(0) == [0]
        box.client_cmd.replies[pyzvr.GET_PIN_MODE_OF_SLOT] = b"\0\x08\x11\x31\x11\x11"
        with pytest.raises(pyzvr.AOPortNotAvaliableError):
            call(box, "AO_open", 0)
    with fake_device("TarnOut") as box:
        box.client_cmd.replies = {pyzvr.WRITE_AO_SYNCHRONIZED: OK}
        assert call(box, "AO_open", 99) == call(box, "AO_close", 99) == 0
        assert box.client_cmd.sent == []
        assert call(box, "AO_writeAllChannels", 0, [1, 2, 3]) == 0
        sent = struct.unpack(">8f", box.client_cmd.sent[0][1][1:])
        assert sent[:3] == (1, 2, 3)
        assert len(sent) == 8
        assert call(box, "AO_startStreaming", 0) == 0
        assert box.client_cmd.sent[-1] == (pyzvr.START_AO_STREAMING, b"\0")


def frames(box, *rows, key=None):
    box.data_pool_strm[key or (box.ai_strm_cmd, 0, 0)].put(b"".join(samples(*row) for row in rows))


def row(first, columns=8):
    return range(first, first + columns)


def test_opening_gates_the_reader_thread(call):
    with fake_device("TarnAnalog") as box:
        thread = box.ai_stream_thread
        frames(box, row(0))
        assert thread.is_alive()
        assert thread.name == "_AIStreamThread"
        assert call(box, "AI_readStreaming", 0, 1,
                                                                               0.01) == []
        assert call(box, "AI_open", 0) == 0
        assert box.ai_open_flag
        assert not box.ai_lock.locked()
        assert call(box, "AI_readStreaming", 0, 1, 5) == [[volts(code) for code in row(0)]]
        box.ai_lock.acquire()
        assert call(box, "AI_open", 0) == 0
        assert box.ai_lock.locked()  # it was open already
        assert call(box, "AI_close", 0) == 0
        assert not box.ai_open_flag
        assert box.ai_data_queue_list[0].qsize() == 1
        assert call(box, "AI_close", 0) == 0
        assert box.ai_data_queue_list[0].qsize() == 1
        assert box.client_cmd.sent == []
    thread.join(5)
    assert not thread.is_alive()
    assert box.ai_killed


def test_rows_in_every_form(call):
    with fake_device("TarnAnalog") as box:
        call(box, "AI_open", 0)
        frames(box, *[row(10 * i) for i in range(100)])
        frames(box, *[row(10 * i) for i in range(100, 1000)])
        box.ai_signal_queue_list[0].get(timeout=5)
        expected = [[volts(code) for code in row(10 * i)] for i in range(1, 1000)]
        assert call(box, "AI_readStreaming", 0, 3, 5) == expected[:3]
        block = call(box, "AI_readStreamingBlock", 0, 500, 5)
        view = memoryview(block)
        assert (block.shape, len(block), view.format, view.c_contiguous, view.shape) == ((500, 8), 500, "d", True, (500,
                                                                                                                    8))
        assert block.tolist() == expected[3:503]
        buffer = bytearray(8 * 8 * 400 + 24)
        assert call(box, "AI_readStreamingInto", 0, memoryview(buffer).cast("d"), 5) == 400
        assert struct.unpack("8d", buffer[:64]) == tuple(expected[503])
        assert buffer[-24:] == bytes(24)
        assert box.AI_getBacklog(0) == 96
        assert call(box, "AI_readStreaming", 0, 1000, 0.01) == expected[903:]
        assert call(box, "AI_readStreamingBlock", 0, 10, 0.001).shape == (0, 8)
        assert call(box, "AI_readStreaming", 0,
                                                                                         9) == []
        with pytest.raises(TypeError):
            call(box, "AI_readStreamingInto", 0, bytearray(64))
        with pytest.raises(BufferError):
            call(box, "AI_readStreamingInto", 0, memoryview(bytes(64)).cast("d"))


def test_every_code_is_rounded_as_the_host_rounds():
    with fake_device("TarnAnalog") as box:
        box.AI_open(0)
        codes = range(-32768, 32768)
        frames(box, *[codes[i:i + 8] for i in range(0, 65536, 8)])
        got = [value for values in box.AI_readStreaming(0, 8192, 5) for value in values]
        assert got == [round(code * RATIO, 4) for code in codes]
        box.ai_ratio = 0.1
        frames(box, row(1))
        assert box.AI_readStreaming(0, 1, 5) == [[round(code * 0.1, 4) for code in row(1)]]
        assert box.ai_ratio == 0.1


def test_24_bits_keep_their_sign_and_are_not_rounded(call):
    with fake_device("TarnAnalog24") as box:
        call(box, "AI_open", 0)
        codes = [0, 1, -1, 2**23 - 1, -2**23, 1234567, -1234567, 42]
        box.data_pool_strm[(pyzvr.AI_START_STREAMING_24BIT, 0,
                            0)].put(b"".join(c.to_bytes(3, "big", signed=True) for c in codes))
        assert call(box, "AI_readStreaming", 0, 1, 5) == [[code * 1.3904889343373708e-6 for code in codes]]


def test_chip_selects_are_joined_row_by_row(call):
    with fake_device("Lattice") as box:
        box.client_cmd.replies = {pyzvr.SET_AI_ENABLED_CS: OK}
        call(box, "AI_open", 4)
        call(box, "AI_enableCS", 4, [0, 1])
        assert len(box.ai_data_queue_list) == len(box.ai_signal_queue_list) == 9
        assert [box._AI_changePortToIndex(port, cs) for port in (0, 1, 3) for cs in (0, 1, 2)] == list(range(9))
        frames(box, *[row(i) for i in range(10)], key=(pyzvr.START_AI_STREAMING, 3, 0))
        frames(box, *[row(-i) for i in range(4)], key=(pyzvr.START_AI_STREAMING, 3, 1))
        joined = [[volts(c) for c in (*row(i), *row(-i))] for i in range(4)]
        assert call(box, "AI_readStreamingBlock", 4, 2, 5).tolist() == joined[:2]
        assert call(box, "AI_readStreaming", 4, 8, 0.05) == joined[2:]
        assert box.AI_getBacklog(4) == 0
        box.ai_signal_queue_list[7].put([1.5] * 8)  # a row of values beside those of the device
        assert call(box, "AI_readStreaming", 4, 1, 5) == [[volts(c) for c in row(4)] + [1.5] * 8]
        with pytest.raises(pyzvr.AIPortNotAvaliableError):
            call(box, "AI_readStreaming", 3, 1)
        with pytest.raises(NameError):
            box._AI_changePortToIndex(2, 0)


def test_rows_change_their_width_with_the_number_of_channels():
    with fake_device("SableAnalog") as box:
        box.client_cmd.replies = {pyzvr.OPEN_AI: OK, pyzvr.SET_AI_ENABLED_CS: OK}
        box.AI_open(0)
        frames(box, row(0))
        assert len(box.AI_readStreaming(0, 1, 5)) == 1
        frames(box, row(0))
        while box.ai_signal_queue_list[0].qsize() < 1:
            pass  # the thread is at it
        box.AI_enableChannel(0, 3)
        frames(box, row(0, 3), row(3, 3))
        while box.ai_signal_queue_list[0].qsize() < 3:
            pass
        assert box.AI_readStreamingBlock(0, 9, 0.01).shape == (1, 8)
        assert [len(values) for values in box.AI_readStreaming(0, 9, 0.01)] == [3, 3]


def test_own_steps_and_queues_of_a_subclass_are_used():
    class Traced(pyzvr.TarnAnalog):
        taken = 0

        def _getStreamingFromPool(self, queue_, num_samples, delay):
            self.taken += 1
            return super()._getStreamingFromPool(queue_, num_samples, delay)

    with Traced() as box:
        box.AI_open(0)
        frames(box, row(0), row(1))
        assert box.AI_readStreaming(0, 2, 5) == [[volts(c) for c in row(i)] for i in (0, 1)]
        assert box.taken == 2


def test_broken_frame_ends_the_reader_with_a_report_and_nothing_else(monkeypatch):
    reported = threading.Event()
    reports = []
    monkeypatch.setattr(threading, "excepthook", lambda args: (reports.append(args), reported.set()))
    with fake_device("TarnAnalog") as box, fake_device("TarnAnalog") as other:
        box.AI_open(0)
        other.AI_open(0)
        frames(box, row(0))
        box.data_pool_strm[(box.ai_strm_cmd, 0, 0)].put(b"\0" * 17)
        assert reported.wait(5)
        assert reports[0].exc_type is ValueError
        assert reports[0].thread.name == "_AIStreamThread"
        box.ai_stream_thread.join(5)
        assert not box.ai_stream_thread.is_alive()
        assert len(box.AI_readStreaming(0, 5, 0.01)) == 1
        frames(other, row(0))
        assert len(other.AI_readStreaming(0, 1, 5)) == 1


def test_full_queue_drops_the_newest_rows_and_warns():
    with fake_device("TarnAnalog") as box:
        box.AI_open(0)
        chunk = samples(*row(0)) * 50000
        with pytest.warns(UserWarning, match="Occurrence AI queue overflow"):
            for _ in range(21):
                box.data_pool_strm[(box.ai_strm_cmd, 0, 0)].put(chunk)
            while box.ai_data_queue_list[0].qsize() or box.AI_getDroppedRows(0) == 0:
                pass
            box._AI_free()
            box.ai_stream_thread.join(5)
        assert (box.AI_getBacklog(0), box.AI_getDroppedRows(0)) == (1000000,
                                                                    50000)
        assert box.ai_signal_queue_list[0].full()


def test_reading_in_a_loop_never_holds_up_the_loop():
    async def tick(stop):
        count = 0
        while not stop.is_set():
            await asyncio.sleep(0.001)
            count += 1
        return count

    async def main(box):
        stop = asyncio.Event()
        ticking = asyncio.create_task(tick(stop))
        assert await box.AI_readStreaming_async(0, 5, 0.2) == []
        stop.set()
        return await ticking

    with fake_device("TarnAnalog") as box:
        box.AI_open(0)
        assert asyncio.run(main(box)) > 5


def test_the_highest_rate_of_an_output_has_two_names():
    with fake_device("TarnOut") as box:
        assert box.ao_max_rate == box.ao_rate == 15000
        box.ao_max_rate = 100
        with pytest.raises(pyzvr.AORateNotVaildError):
            box.AO_setSamplingRate(0, 101)
        assert box.ao_rate == 100


def resident():
    with open("/proc/self/statm") as file:
        return int(file.read().split()[1]) * os.sysconf("SC_PAGESIZE")


def test_ratios_of_the_past_take_no_memory(call):
    with fake_device("TarnAnalog") as box:
        box.client_cmd.replies = {pyzvr.READ_AI_ON_DEMAND: b"\0\0" + samples(*[1000] * 8)}
        for ratio in range(100):
            if ratio == 8:
                before = resident()
            box.ai_ratio = 0.001 + ratio / 1e6
            assert call(box, "AI_readOnDemand", 0) == [round(1000 * box.ai_ratio, 4)] * 8
            box.ai_signal_queue_list[0].put([float(ratio)] * 8)
        assert resident() - before < 16 << 20  # each table has half of that
        box.ai_ratio = float("nan")
        assert str(call(box, "AI_readOnDemand", 0)[0]) == "nan"
        box.ai_ratio = 0.001
        assert call(box, "AI_readOnDemand", 0) == [1.0] * 8
        for field, value, text in (("ai_num_channels", "8", "ai_num_channels"), ("ai_ratio", None, "ai_ratio")):
            with mock.patch.object(box, field, value), pytest.raises(TypeError, match=text):
                call(box, "AI_readOnDemand", 0)
