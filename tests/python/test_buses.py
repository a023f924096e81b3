"""Serial buses behind a fake client: what is checked and sent, and how streams are read."""

import threading
import warnings
from unittest import mock

import pytest
from cases import Exchange, operation_of
from fake_buses import FRAME, U32, push
from forms import awaited, blocking
from queue_support import until

import pyzvr

OK = b"\1\0"
SPI_REFUSED, UART_REFUSED, CAN_REFUSED = b"\1\x16", b"\1\x17", b"\1\x39"
IDLE = bytes([0, 8, 0x11, 0x11, 0x11, 0x11])  # port, number of pins, two modes a byte
WIRE = [
    Exchange(
        "I2C_read", (1, 0x50, 3), command="READ_I2C", sent=[1, 0x50, 3], reply=b"\1\0\3abc", result=[97, 98, 99],
    ),
    Exchange("I2C_read", (1, 0x50, 0), command="READ_I2C", sent=[1, 0x50, 0], reply=b"\1\0\0", result=[]),
    Exchange("I2C_read", (2, 1, 9), command="READ_I2C", sent=[2, 1, 9], reply=b"\2\x15", result=[]),
    Exchange("I2C_write", (1, 0x50, [1, 255]), command="WRITE_I2C", sent=[1, 0x50, 2, 1, 255], reply=OK, result=0),
    Exchange("I2C_write", (1, 8, []), command="WRITE_I2C", sent=[1, 8, 0], reply=OK, result=0),
    Exchange("I2C_close", (1,), command="CLOSE_I2C", sent=[1], reply=OK, result=0),
    Exchange("I2C_reset", (2,), command="RESET_I2C", sent=[2], reply=OK, result=0),
    Exchange("I2C_setClockRate", (1, 3), command="SET_I2C_FREQUENCY", sent=[1, 0, 51, 225, 64], reply=OK, result=0),
    Exchange("I2C_setClockRate", (1, 0), command="SET_I2C_FREQUENCY", sent=[1, *U32(100000)], reply=OK, result=0),
    Exchange("I2C_setAddressSize", (1, 1), command="SET_I2C_ADDR_SIZE", sent=[1, 1], reply=OK, result=0),
    Exchange("SPI_read", (2, 4), command="READ_SPI", sent=[2, 4], reply=b"\2\0abcd", result=[97, 98, 99, 100]),
    Exchange("SPI_write", (2, []), command="WRITE_SPI", sent=[2, 0], reply=OK, result=0),
    Exchange("SPI_write", (2, [9, 8]), command="WRITE_SPI", sent=[2, 2, 9, 8], reply=OK, result=0),
    Exchange(
        "SPI_readAndWrite", (2, [1, 2]), command="READ_AND_WRITE_SPI", sent=[2, 2, 1, 2], reply=b"\2\0\3\4",
        result=[3, 4],
    ),
    Exchange("SPI_close", (2,), command="CLOSE_SPI", sent=[2], reply=OK, result=0),
    Exchange("SPI_reset", (2,), command="RESET_SPI", sent=[2], reply=OK, result=0),
    Exchange("SPI_setDataSize", (2, 1), command="SET_SPI_DATA_SIZE", sent=[2, 1], reply=OK, result=0),
    Exchange("SPI_setFirstBit", (2, 0), command="SET_SPI_FIRST_BIT", sent=[2, 0], reply=OK, result=0),
    Exchange("SPI_setPrescaler", (2, 256), command="SET_SPI_PRESCALER", sent=[2, 1, 0], reply=OK, result=0),
    Exchange("_SPI_setCPOL", (2, 1), command="SET_SPI_CPOL", sent=[2, 1], reply=OK, result=0),
    Exchange("_SPI_setCPHA", (2, 0), command="SET_SPI_CPHA", sent=[2, 0], reply=OK, result=0),
    Exchange("UART_write", (1, "Hi\xff"), command="WRITE_UART", sent=[1, 3, 72, 105, 255], reply=OK, result=0),
    Exchange("UART_write", (2, ["A", "B"]), command="WRITE_UART", sent=[2, 2, 65, 66], reply=OK, result=0),
    Exchange("UART_write", (1, ""), command="WRITE_UART", sent=[1, 0], reply=OK, result=0),
    Exchange("UART_write", (1, "x" * 50), command="WRITE_UART", sent=[1, 50, *b"x" * 50], reply=OK, result=0),
    Exchange("_UART_stopReading", (1,), command="STOP_UART_READING", sent=[1], reply=OK, result=0),
    Exchange("UART_reset", (1,), command="RESET_UART", sent=[1], reply=OK, result=0),
    Exchange(
        "UART_setBaudRate", (1, 400000), command="SET_UART_BAUD_RATE", sent=[1, *U32(400000)], reply=OK, result=0,
    ),
    Exchange("UART_setBaudRate", (1, 0), command="SET_UART_BAUD_RATE", sent=[1, 0, 0, 0, 0], reply=OK, result=0),
    Exchange("UART_setDataBit", (1, 1), command="SET_UART_DATA_SIZE", sent=[1, 1], reply=OK, result=0),
    Exchange("UART_setParity", (1, 3), command="SET_UART_PARITY", sent=[1, 3], reply=OK, result=0),
    Exchange("UART_setNumStopBit", (2, 3), command="SET_UART_NUM_STOP_BITS", sent=[2, 3], reply=OK, result=0),
    Exchange("CAN_write", (1, 291, [1, 2, 3]), command="WRITE_CAN", sent=[1, 0, *FRAME], reply=OK, result=0),
    Exchange(
        "CAN_write", (1, 5, [1, 2], True), command="WRITE_CAN", sent=[1, 0, 0, 0xB0, 0, 0, *bytes(8)], reply=OK,
        result=0,
    ),
    Exchange(
        "CAN_write", (1, 5, [1], False, True), command="WRITE_CAN", sent=[1, 0, 0, 8, 0, 5, 1, *bytes(7)], reply=OK,
        result=0,
    ),
    Exchange("CAN_stop", (1,), command="STOP_CAN", sent=[1], reply=OK, result=0),
    Exchange("CAN_setSpeed", (1, 3), command="SET_CAN_SPEED", sent=[1, 3], reply=OK, result=0),
    Exchange("_CAN_setEnableInterrupt", (1, True), command="SET_CAN_ENABLED_ITR", sent=[1, 1], reply=OK, result=0),
    Exchange("_CAN_setTXPriority", (1, 2, 3), command="SET_CAN_TX_PRIORITY", sent=[1, 2, 3], reply=OK, result=0),
    Exchange("_CAN_setRXRollover", (1, False), command="SET_CAN_RX_ROLLOVER", sent=[1, 0], reply=OK, result=0),
    Exchange("CAN_setRXFilteringOn", (1, 1), command="SET_CAN_RX_FILTERING_ON", sent=[1, 1], reply=OK, result=0),
    Exchange(
        "CAN_setRXFilterOrMask", (1, 6, 0x7FF, False, False), command="SET_CAN_RX_FILTER_OR_MASK",
        sent=[1, 6, 0xFF, 0xE0, *bytes(10)], reply=OK, result=0,
    ),
    Exchange("_CAN_getInterrupts", (1,), command="GET_CAN_INTERRUPTS", sent=[1], reply=b"\1\2\3\4", result=[2, 3, 4]),
    Exchange("_CAN_getErrors", (1,), command="GET_CAN_ERRORS", sent=[1], reply=b"\1\x80\7", result=[128, 7]),
    Exchange(
        "_CAN_getCounters", (1,), command="GET_CAN_COUNTERS", sent=[1],
        reply=b"\1" + b"".join(bytes(U32(n)) for n in (1, 2, 3, 4, 5, 2**32 - 1)), result=[1, 2, 3, 4, 5, 2**32 - 1],
    ),
]


@pytest.mark.parametrize("case", WIRE, ids=operation_of)
def test_exchanges(bus_box, case):
    code = getattr(pyzvr, case.command)
    bus_box.client_cmd.replies = {code: case.reply}
    for call in (blocking, awaited):
        assert call(bus_box, case.operation, *case.arguments) == case.result
    assert bus_box.client_cmd.sent == [(code, bytes(case.sent))] * 2
    if case.result == 0:  # and a refusal is a code
        bus_box.client_cmd.replies = {code: UART_REFUSED}
        assert [call(bus_box, case.operation, *case.arguments)
                for call in (blocking, awaited)] == [pyzvr.FirmwareUARTError(silent=True).code] * 2


@pytest.mark.parametrize("operation, arguments, error",
                         [("I2C_setClockRate", (1, 4), "I2CClockNotSupportError"),
                          ("I2C_setClockRate", (3, 1), "I2CPortNotAvaliableError"),
                          ("I2C_read", ("1", 1, 1), "InputTypeNotCorrectError"),
                          ("I2C_read", (1, 1, 2.0), "InputTypeNotCorrectError"),
                          ("I2C_write", (1, 1, (1, 2)), "InputTypeNotCorrectError"),
                          ("I2C_setAddressSize", (1, 2), "I2CAddressSizeNotVaildError"),
                          ("SPI_open", (1,), "SPIPortNotAvaliableError"),
                          ("SPI_setPrescaler", (2, 3), "SPIPrescalerNotVaildError"),
                          ("SPI_setMode", (2, 4), "SPIModeNotVaildError"),
                          ("SPI_setDataSize", (2, 2), "SPIDataSizeNotVaildError"),
                          ("SPI_setFirstBit", (2, -1), "SPIFirstBitNotVaildError"),
                          ("SPI_write", (2, "ab"), "InputTypeNotCorrectError"),
                          ("UART_write", (1, "x" * 51), "UARTExceedMaxLengthError"),
                          ("UART_write", (1, [65, 66]), TypeError),
                          ("UART_write", (1, b"ab"), "InputTypeNotCorrectError"),
                          ("UART_write", (1, "\u20ac"), ValueError),
                          ("UART_setBaudRate", (1, 400001), "UARTBaudRateNotSupportError"),
                          ("UART_setDataBit", (1, 2), "UARTDataBitNotSupportError"),
                          ("UART_setParity", (1, 4), "UARTParityNotSupportError"),
                          ("UART_setNumStopBit", (1, 4), "UARTStopBitNotSupportError"),
                          ("UART_read", (3, 4), "UARTPortNotAvaliableError"),
                          ("UART_read", (1, "4"), "InputTypeNotCorrectError"),
                          ("UART_close", (3,), "UARTPortNotAvaliableError"),
                          ("CAN_open", (2,), "CANPortNotAvaliableError"),
                          ("CAN_write", (1, 5, [0] * 9), "CANDataLengthNotVaildError"),
                          ("CAN_write", (1, 5, [256]), "InputDataNotInRangeError"),
                          ("CAN_write", (1, 5, (1,)), "InputTypeNotCorrectError"),
                          ("CAN_write", (1, 5, [1], 1), "InputTypeNotCorrectError"),
                          ("CAN_write", (1, 2048, []), OverflowError),
                          ("CAN_setSpeed", (1, 4), "CANSpeedNotVaildError"),
                          ("_CAN_setTXPriority", (1, 3, 0), "CANTXNotVaildError"),
                          ("_CAN_setTXPriority", (1, 0, 4), "CANTXPriorityNotVaildError"), ])
def test_bad_arguments_fail_by_name_before_anything_is_sent(bus_box, call, operation, arguments, error):
    with pytest.raises(error if isinstance(error, type) else getattr(pyzvr, error)):
        call(bus_box, operation, *arguments)
    assert bus_box.client_cmd.sent == []


def test_mode_is_polarity_then_phase_even_after_a_refusal(bus_box, call):
    for mode, (polarity, phase) in enumerate([(0, 0), (0, 1), (1, 0), (1, 1)]):
        bus_box.client_cmd.sent.clear()
        bus_box.client_cmd.replies = {pyzvr.SET_SPI_CPOL: OK, pyzvr.SET_SPI_CPHA: OK}
        assert call(bus_box, "SPI_setMode", 2, mode) == 0
        assert bus_box.client_cmd.sent == [(pyzvr.SET_SPI_CPOL, bytes([2, polarity])),
                                       (pyzvr.SET_SPI_CPHA, bytes([2, phase]))]
    bus_box.client_cmd.replies = {pyzvr.SET_SPI_CPOL: SPI_REFUSED, pyzvr.SET_SPI_CPHA: OK}
    assert call(bus_box, "SPI_setMode", 2, 1) < 0
    assert len(bus_box.client_cmd.sent) == 4


@pytest.mark.parametrize(
    "bus, port, command, lines",
    [
        ("I2C", 1, "OPEN_I2C", [0]),
        ("SPI", 2, "OPEN_SPI", [1]),
        ("UART", 2, "OPEN_UART", [0]),
        ("CAN", 1, "OPEN_CAN", [2]),
    ],
)
def test_opening_looks_at_the_lines_first(bus_box, call, bus, port, command, lines):
    entries = bus_box.CAN_getPort() and getattr(
        bus_box, {"I2C": "I2C_dict", "SPI": "SPI_dict", "UART": "uart_dict", "CAN": "can_dict"}[bus])[port]
    assert getattr(bus_box, f"_{bus}_getPinMapPort")(port) == lines
    assert {digital for digital, _ in entries} == set(lines)
    modes = bytearray(IDLE)
    bus_box.client_cmd.replies = {pyzvr.GET_PIN_MODE_OF_SLOT: lambda data: bytes(modes), getattr(pyzvr, command): OK}
    bus_box.uart_open_flag = True  # nothing is started by this
    assert call(bus_box, f"{bus}_open", port) == 0
    assert [code for code, _ in bus_box.client_cmd.sent] == [pyzvr.GET_PIN_MODE_OF_SLOT, getattr(pyzvr, command)]
    modes[2 + entries[-1][1] // 2] = 0x88  # pulse outputs
    with pytest.raises(getattr(pyzvr, f"{bus}PortNotAvaliableError")):
        call(bus_box, f"{bus}_open", port)
    assert len(bus_box.client_cmd.sent) == 3


def test_uart_bytes_pass_the_gate_and_are_read_in_both_shapes(bus_box, call):
    bus_box.client_cmd.replies = {
        pyzvr.GET_PIN_MODE_OF_SLOT: IDLE, pyzvr.OPEN_UART: OK, pyzvr.STOP_UART_READING: OK, pyzvr.CLOSE_UART: OK
    }
    push(bus_box, (pyzvr.START_UART_READING, 1), b"early")
    assert bus_box.uart_p1_lock.locked()
    assert bus_box.UART_read(1, 5, 0.01) == []
    assert call(bus_box, "UART_open", 1) == 0
    assert bus_box.client_cmd.sent[-1] == (pyzvr.START_UART_READING, b"\1")
    assert call(bus_box, "UART_open", 2) == 0
    assert bus_box.client_cmd.sent[-1] == (pyzvr.OPEN_UART, b"\2")  # reading is on
    push(bus_box, (pyzvr.START_UART_READING, 2), bytes(range(256)))
    assert bus_box.UART_read(1, 3, 5) == ["e", "a", "r"]
    assert call(bus_box, "UART_readBytes", 1, 9) == b"ly"
    assert bus_box.UART_read(2, 256, 5) == [chr(code) for code in range(256)]
    assert call(bus_box, "UART_read", 2, 1) == []
    bus_box.uart_p2_signal_queue.put(7)
    assert bus_box.uart_p2_signal_queue.get() == 7
    assert bus_box.uart_p2_signal_queue.empty()
    with pytest.raises(AttributeError):
        bus_box.UART_close(1)
    assert bus_box.client_cmd.sent[-1] == (pyzvr.OPEN_UART, b"\2")
    assert awaited(bus_box, "UART_close", 1) == 0
    assert not bus_box.uart_open_flag
    assert bus_box.uart_p1_lock.locked()
    assert bus_box.uart_p2_lock.locked()
    push(bus_box, (pyzvr.START_UART_READING, 1), b"late")
    assert bus_box.UART_read(1, 4, 0.05) == []
    threads = [bus_box.uart_p1_stream_thread, bus_box.uart_p2_stream_thread]
    assert [thread.name for thread in threads] == ["_UARTStreamThread"] * 2
    bus_box._UART_free()
    for thread in threads:
        thread.join(5)
        assert not thread.is_alive()
        assert bus_box.uart_killed


def test_awaited_read_never_waits(bus_box):
    bus_box.client_cmd.replies = {pyzvr.GET_PIN_MODE_OF_SLOT: IDLE, pyzvr.OPEN_UART: OK}
    bus_box.UART_open(1)
    assert awaited(bus_box, "UART_read", 1, 5, 1000) == [] == awaited(bus_box, "CAN_read", 1, 5, 1000)


def test_can_records_become_frames_in_order(bus_box, call):
    bus_box.client_cmd.replies = {
        pyzvr.GET_PIN_MODE_OF_SLOT: IDLE, pyzvr.OPEN_CAN: OK, pyzvr.STOP_CAN: OK, pyzvr.CLOSE_CAN: OK
    }
    frames = [pyzvr.CANFrame(number, number % 2, False, [number % 256]) for number in range(600)]
    push(bus_box, pyzvr.START_CAN, [byte for frame in frames[:250] for byte in frame.frame_in_list])
    assert call(bus_box, "CAN_open", 1) == 0
    assert bus_box.can_open_flag
    push(bus_box, pyzvr.START_CAN, [byte for frame in frames[250:] for byte in frame.frame_in_list])
    assert bus_box.CAN_read(1, 500, 5) == frames[:500]
    while bus_box.can_frame_queue.qsize() < 100:
        pass  # the thread is at it
    assert call(bus_box, "CAN_read", 1, 1) == [frames[500]]
    assert call(bus_box, "CAN_read", 1, 1000, 0.01) == frames[501:]
    bus_box.can_frame_queue.put(frames[3])
    assert bus_box.can_frame_queue.get() == frames[3]
    assert call(bus_box, "CAN_close", 1) == 0
    assert bus_box.can_lock.locked()
    assert not bus_box.can_open_flag
    bus_box.client_cmd.replies[pyzvr.STOP_CAN] = CAN_REFUSED
    assert call(bus_box, "CAN_close", 1) == -7028
    assert bus_box.client_cmd.sent[-1][0] == pyzvr.STOP_CAN


def test_start_is_never_answered(bus_box):
    with pytest.raises(pyzvr.ReceivePacketTimeoutError):
        bus_box.CAN_start(1, 0.05)
    assert {command for command, _ in bus_box.client_cmd.sent} == {pyzvr.START_CAN}
    assert awaited(bus_box, "CAN_start", 1) == 0
    assert pyzvr.CANBased._checkCANTXIndex(2) is None
    with pytest.raises(pyzvr.CANTXPriorityNotVaildError):
        bus_box._checkCANTXPriority(4)


def test_broken_record_ends_the_can_reader_only(bus_box, monkeypatch):
    errors = []
    monkeypatch.setattr(threading, "excepthook", lambda args: errors.append((args.exc_type, args.thread.name)))
    bus_box.client_cmd.replies = {pyzvr.GET_PIN_MODE_OF_SLOT: IDLE, pyzvr.OPEN_CAN: OK, pyzvr.OPEN_UART: OK}
    bus_box.CAN_open(1), bus_box.UART_open(1)
    push(bus_box, pyzvr.START_CAN, FRAME)
    push(bus_box, pyzvr.START_CAN, FRAME[:11])
    bus_box.can_stream_thread.join(5)
    assert errors == [(ValueError, "_CANStreamThread")]
    assert bus_box.CAN_read(1, 5, 0.01) == [pyzvr.CANFrame(291, data=[1, 2, 3])]
    push(bus_box, (pyzvr.START_UART_READING, 1), b"on")
    assert bus_box.UART_read(1, 2, 5) == ["o", "n"]


def test_full_queues_drop_the_newest_and_warn(bus_box, capsys):
    bus_box.client_cmd.replies = {pyzvr.GET_PIN_MODE_OF_SLOT: IDLE, pyzvr.OPEN_CAN: OK, pyzvr.OPEN_UART: OK}
    with warnings.catch_warnings(record=True) as caught:
        warnings.simplefilter("always")
        bus_box.UART_open(1), bus_box.CAN_open(1)
        for _ in range(101):
            push(bus_box, (pyzvr.START_UART_READING, 1), bytes(10000))
            push(bus_box, pyzvr.START_CAN, FRAME * 10000)
        for text in ("Occurrence UART queue overflow.", "Occurrence CAN queue overflow."):
            until(lambda text=text: sum(text in str(each.message) for each in caught) == 1000)  # a second's most
        assert bus_box.uart_p1_signal_queue.dropped == bus_box.can_frame_queue.dropped == 10000
        assert bus_box.uart_p1_signal_queue.full()
        assert bus_box.can_frame_queue.qsize() == 1_000_000
    # No line of Python has made the warning: its thread is told instead.
    printed = capsys.readouterr().out
    assert {
        "  On thread '_UARTStreamThread', which runs no Python", "  On thread '_CANStreamThread', which runs no Python"
    } <= set(printed.split("\n"))
    assert "File " not in printed
    assert "traceback" not in {each.filename for each in caught}
    assert {each.lineno for each in caught} <= {0, 1}
    assert len(bus_box.UART_readBytes(1, 1_000_000)) == 1_000_000
    assert bus_box.uart_p1_signal_queue.empty()


def test_steps_of_the_buses_are_called_as_they_are_written(bus_box, call):
    def doubled(name, reply):
        return mock.patch.object(bus_box, name + ("_async" if call is awaited else ""), return_value=reply)

    limit = {} if call is awaited else {"timeout": 2}
    with doubled("_checkSPIPinState", None) as check, doubled("_echoPacketWithRetry", OK):
        assert call(bus_box, "SPI_open", 2, **limit) == 0
    assert check.mock_calls == [mock.call(2, allow_state=["Idle", "DI", "DO"], **limit)]
    with doubled("_getStreamingFromPool", [7]) as take:
        assert call(bus_box, "CAN_read", 1, 5, 0.25) == [7]
    assert take.mock_calls == [mock.call(bus_box.can_frame_queue, 5, delay=0.25)]
    # The device judges the port of a service operation.
    for name, command in (("_SPI_setCPOL", "SET_SPI_CPOL"), ("_SPI_setCPHA", "SET_SPI_CPHA")):
        bus_box.client_cmd.sent, bus_box.client_cmd.replies = [], {getattr(pyzvr, command): OK}
        assert call(bus_box, name, 9, 1) == 0
        assert bus_box.client_cmd.sent == [(getattr(pyzvr, command), b"\x09\x01")]


@pytest.mark.parametrize("bus, port", [("I2C", 1), ("SPI", 2), ("UART", 2), ("CAN", 1)])
def test_lines_are_asked_for_through_the_object(bus_box, call, bus, port):
    check = f"_check{bus}PinState" + ("_" if bus == "CAN" and call is blocking else "")
    bus_box.client_cmd.replies = {pyzvr.GET_PIN_MODE_OF_SLOT: IDLE}
    with mock.patch.object(bus_box, f"_{bus}_getPinMapPort",
                           return_value=[5, 6]) as ports, mock.patch.object(pyzvr, "checkFuncPinMap") as cells:
        call(bus_box, check, port, ["Idle"])
    assert ports.mock_calls == [mock.call(port)]
    assert cells.mock_calls == []  # no line of the port is on 5 or 6
    assert bus_box.client_cmd.sent == [(pyzvr.GET_PIN_MODE_OF_SLOT, b"\5"), (pyzvr.GET_PIN_MODE_OF_SLOT, b"\6")]
    with mock.patch.object(pyzvr, "checkFuncPinMap",
                           return_value=False) as cells, pytest.raises(getattr(pyzvr, f"{bus}PortNotAvaliableError")):
        call(bus_box, check, port, ["Idle"])
    assert cells.mock_calls == [mock.call(mock.ANY, ["Idle"] * 8, ["Idle"])]


def test_checks_in_place_of_the_librarys_own_are_used(bus_box, call):
    bus_box.client_cmd.replies = {
        pyzvr.WRITE_I2C: OK, pyzvr.WRITE_CAN: CAN_REFUSED, pyzvr.SET_CAN_SPEED: CAN_REFUSED, pyzvr.STOP_CAN: CAN_REFUSED
    }
    with mock.patch.object(pyzvr, "checkInputType") as types:
        assert call(bus_box, "I2C_write", 1, 8, (1, 2)) == 0
    assert types.mock_calls == [mock.call(1, int), mock.call(8, int), mock.call((1, 2), list)]
    with mock.patch.object(pyzvr, "checkInputType") as types, mock.patch.object(pyzvr, "checkEachItemInRange") as ranges, \
            mock.patch.object(pyzvr, "checkFirmwareError", side_effect=[None, pyzvr.Error(77, "mine"), KeyError("x")]) as status:
        assert call(bus_box, "CAN_write", 1, 5, [1]) == 57
        assert call(bus_box, "CAN_setSpeed", 1, 1) == 77
        with pytest.raises(AttributeError, match="code"):
            call(bus_box, "CAN_stop", 1)
    assert mock.call(False, bool) in types.mock_calls
    assert ranges.mock_calls[0].args[:3] == ([1], 0, 255)
    assert status.mock_calls[0] == mock.call(57)
    assert call(bus_box, "CAN_write", 1, 5, [1]) == pyzvr.errFirmwareCAN  # and the library's own again
    with pytest.raises(pyzvr.InputTypeNotCorrectError):
        call(bus_box, "I2C_write", 1, 8, (1, 2))
