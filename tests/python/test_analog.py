"""Analog inputs and outputs behind a fake client: what is checked and sent, and what becomes of replies."""

import struct

import pytest
from cases import Exchange, operation_of
from fake_analog import OK, fake_device, samples, volts
from forms import awaited, blocking

import pyzvr

F32, U32 = pyzvr.convertF32To4U8, pyzvr.convertU32To4U8
AI_REFUSED, AO_REFUSED = b"\0\x34", b"\0\x35"
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


@pytest.mark.parametrize("model, operation, arguments, error",
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
def test_bad_arguments_fail_by_name_before_anything_is_sent(call, model, operation, arguments, error):
    with fake_device(model) as box:
        with pytest.raises(error):
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
        assert box._AO_getPinMapPort(0) == [1, 2, 3]
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


def test_the_highest_rate_of_an_output_has_two_names():
    with fake_device("TarnOut") as box:
        assert box.ao_max_rate == box.ao_rate == 15000
        box.ao_max_rate = 100
        with pytest.raises(pyzvr.AORateNotVaildError):
            box.AO_setSamplingRate(0, 101)
        assert box.ao_rate == 100
        del box.ao_max_rate
        assert not hasattr(box, "ao_rate")
        assert not hasattr(box, "ao_max_rate")
