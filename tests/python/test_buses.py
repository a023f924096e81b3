"""Serial buses at a fake client, and over emulated USB with chips and nodes on the buses."""

import array
import copy
import gc
import pickle
import struct
import threading
import warnings
import weakref
from unittest import mock

import pytest
from cases import Exchange, operation_of
from fake_client import FakeClient
from forms import awaited, blocking
from hypothesis import given
from hypothesis import strategies as st

import pyzvr

U32 = pyzvr.convertU32To4U8
OK = b"\1\0"
SPI_REFUSED, UART_REFUSED, CAN_REFUSED = b"\1\x16", b"\1\x17", b"\1\x39"
IDLE = bytes([0, 8, 0x11, 0x11, 0x11, 0x11])  # port, number of pins, two modes a byte


@pytest.fixture
def box():
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")  # libusb is not where a user would have it
        product = pyzvr.SableCan()
    product.client_cmd = FakeClient(product)
    yield product
    product.close(verbose=False)


FRAME = [36, 96, 0, 0, 1, 2, 3, 0, 0, 0, 0, 0]
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
def test_exchanges(box, case):
    code = getattr(pyzvr, case.command)
    box.client_cmd.replies = {code: case.reply}
    for call in (blocking, awaited):
        assert call(box, case.operation, *case.arguments) == case.result
    assert box.client_cmd.sent == [(code, bytes(case.sent))] * 2
    if case.result == 0:  # and a refusal is a code
        box.client_cmd.replies = {code: UART_REFUSED}
        assert [call(box, case.operation, *case.arguments)
                for call in (blocking, awaited)] == [pyzvr.FirmwareUARTError(silent=True).code] * 2


@pytest.mark.parametrize("operation, arguments, failure",
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
def test_bad_arguments_fail_by_name_before_anything_is_sent(box, call, operation, arguments, failure):
    with pytest.raises(failure if isinstance(failure, type) else getattr(pyzvr, failure)):
        call(box, operation, *arguments)
    assert box.client_cmd.sent == []


def test_mode_is_polarity_then_phase_even_after_a_refusal(box, call):
    for mode, (polarity, phase) in enumerate([(0, 0), (0, 1), (1, 0), (1, 1)]):
        box.client_cmd.sent.clear()
        box.client_cmd.replies = {pyzvr.SET_SPI_CPOL: OK, pyzvr.SET_SPI_CPHA: OK}
        assert call(box, "SPI_setMode", 2, mode) == 0
        assert box.client_cmd.sent == [(pyzvr.SET_SPI_CPOL, bytes([2, polarity])),
                                       (pyzvr.SET_SPI_CPHA, bytes([2, phase]))]
    box.client_cmd.replies = {pyzvr.SET_SPI_CPOL: SPI_REFUSED, pyzvr.SET_SPI_CPHA: OK}
    assert call(box, "SPI_setMode", 2, 1) < 0 and len(box.client_cmd.sent) == 4


@pytest.mark.parametrize("bus, port, command, lines", [("I2C", 1, "OPEN_I2C", [0]), ("SPI", 2, "OPEN_SPI", [1]),
                                                       ("UART", 2, "OPEN_UART", [0]), ("CAN", 1, "OPEN_CAN", [2])])
def test_opening_looks_at_the_lines_first(box, call, bus, port, command, lines):
    entries = box.CAN_getPort() and getattr(
        box, {"I2C": "I2C_dict", "SPI": "SPI_dict", "UART": "uart_dict", "CAN": "can_dict"}[bus])[port]
    assert getattr(box, f"_{bus}_getPinMapPort")(port) == lines and {digital for digital, _ in entries} == set(lines)
    modes = bytearray(IDLE)
    box.client_cmd.replies = {pyzvr.GET_PIN_MODE_OF_SLOT: lambda data: bytes(modes), getattr(pyzvr, command): OK}
    box.uart_open_flag = True  # nothing is started by this
    assert call(box, f"{bus}_open", port) == 0
    assert [code for code, _ in box.client_cmd.sent] == [pyzvr.GET_PIN_MODE_OF_SLOT, getattr(pyzvr, command)]
    modes[2 + entries[-1][1] // 2] = 0x88  # pulse outputs
    with pytest.raises(getattr(pyzvr, f"{bus}PortNotAvaliableError")):
        call(box, f"{bus}_open", port)
    assert len(box.client_cmd.sent) == 3


def push(box, key, data):
    box.data_pool_strm[key].put(bytes(data))


def test_uart_bytes_pass_the_gate_and_are_read_in_both_shapes(box, call):
    box.client_cmd.replies = {
        pyzvr.GET_PIN_MODE_OF_SLOT: IDLE, pyzvr.OPEN_UART: OK, pyzvr.STOP_UART_READING: OK, pyzvr.CLOSE_UART: OK
    }
    push(box, (pyzvr.START_UART_READING, 1), b"early")
    assert box.uart_p1_lock.locked() and box.UART_read(1, 5, 0.01) == []
    assert call(box, "UART_open", 1) == 0 and box.client_cmd.sent[-1] == (pyzvr.START_UART_READING, b"\1")
    assert call(box, "UART_open", 2) == 0 and box.client_cmd.sent[-1] == (pyzvr.OPEN_UART, b"\2")  # reading is on
    push(box, (pyzvr.START_UART_READING, 2), bytes(range(256)))
    assert box.UART_read(1, 3, 5) == ["e", "a", "r"] and call(box, "UART_readBytes", 1, 9) == b"ly"
    assert box.UART_read(2, 256, 5) == [chr(code) for code in range(256)] and call(box, "UART_read", 2, 1) == []
    box.uart_p2_signal_queue.put(7)
    assert box.uart_p2_signal_queue.get() == 7 and box.uart_p2_signal_queue.empty()
    with pytest.raises(AttributeError):
        box.UART_close(1)
    assert box.client_cmd.sent[-1] == (pyzvr.OPEN_UART, b"\2")
    assert awaited(box, "UART_close",
                   1) == 0 and not box.uart_open_flag and box.uart_p1_lock.locked() and box.uart_p2_lock.locked()
    push(box, (pyzvr.START_UART_READING, 1), b"late")
    assert box.UART_read(1, 4, 0.05) == []
    threads = [box.uart_p1_stream_thread, box.uart_p2_stream_thread]
    assert [thread.name for thread in threads] == ["_UARTStreamThread"] * 2
    box._UART_free()
    for thread in threads:
        thread.join(5)
        assert not thread.is_alive() and box.uart_killed


def test_awaited_read_never_waits(box):
    box.client_cmd.replies = {pyzvr.GET_PIN_MODE_OF_SLOT: IDLE, pyzvr.OPEN_UART: OK}
    box.UART_open(1)
    assert awaited(box, "UART_read", 1, 5, 1000) == [] == awaited(box, "CAN_read", 1, 5, 1000)


@given(identifier=st.integers(0, 2**29 - 1), extended=st.booleans(), remote=st.booleans(), data=st.binary(max_size=12))
def test_frame_survives_the_wire(identifier, extended, remote, data):
    identifier = identifier if extended else identifier % 2048
    frame = pyzvr.CANFrame(identifier, extended, remote, data)
    word = identifier << 21 if not extended else (identifier >> 18) << 21 | 1 << 19 | identifier & 0x3FFFF
    assert frame.id_in_list == U32(word | remote << 20) and frame.data == [*data, *bytes(8)][:8]
    assert frame.frame_in_list == frame.id_in_list + frame.data
    again = pyzvr.CANFrame.fromU8List(frame.frame_in_list)
    assert again == frame and hash(again) == hash(frame) and {frame: 1}[again] == 1
    assert again != pyzvr.CANFrame(identifier, extended, not remote, data) and again != frame.frame_in_list


def test_frame_as_text_and_bad_ones():
    assert str(pyzvr.CANFrame(291)) == repr(
        pyzvr.CANFrame(291)) == "CANFrame(id=291, extended_id=False, remote=False, data=[0, 0, 0, 0, 0, 0, 0, 0])"
    assert "extended_id=1, remote=0" in str(pyzvr.CANFrame(1, 1, 0)) and pyzvr.CANFrame(1, 1) == pyzvr.CANFrame(1, True)
    class Named(pyzvr.CANFrame):
        name = "x"

    assert Named(5, data=[1]) == pyzvr.CANFrame(5, data=[1]) and Named(id_=5).name == "x"
    frame = pyzvr.CANFrame.fromU8List([36, 96, 0, 0])
    assert frame == pyzvr.CANFrame(291) and frame.regularizeData([1]) == [1, 0, 0, 0, 0, 0, 0, 0]
    frame.id, frame.extended_id, frame.data = 2**28, True, [5]
    frame.setID()
    assert pyzvr.CANFrame.fromU8List(frame.frame_in_list) == pyzvr.CANFrame(2**28, True, False, [5])
    for arguments, failure in (((2048,), OverflowError), ((-1,), OverflowError), (("1",), TypeError),
                               ((1.0,), TypeError), ((1, 0, 0, 5), TypeError), ((), TypeError)):
        with pytest.raises(failure):
            pyzvr.CANFrame(*arguments)


def received(box, frames):
    """Frames as the stream makes them."""
    for frame in frames:
        push(box, pyzvr.START_CAN, frame.frame_in_list)
    box.can_lock.release()
    while box.can_frame_queue.qsize() < len(frames):
        pass  # the thread is at it
    return [box.can_frame_queue.get() for _ in frames]


@pytest.fixture(params=["made", "streamed"])
def frame(request, box):
    made = pyzvr.CANFrame(2**28 + 5, True, False, [1, 2, 3])
    return made if request.param == "made" else received(box, [made])[0]


def test_a_frame_has_lists_of_its_own(frame):
    assert frame.data is frame.data and frame.id_in_list is frame.id_in_list and frame.frame_in_list is frame.frame_in_list
    wire = frame.frame_in_list.copy()
    frame.data[0] = 9
    assert frame.data == [9, 2, 3, 0, 0, 0, 0, 0] and frame.frame_in_list == wire and frame != pyzvr.CANFrame(
        2**28 + 5, True, False, [1, 2, 3])
    frame.setID()
    assert frame.frame_in_list == wire[:4] + frame.data and frame == pyzvr.CANFrame.fromU8List(frame.frame_in_list)
    frame.id_in_list.append(7)
    frame.frame_in_list[:] = range(12)
    assert len(frame.id_in_list) == 5 and bytes(frame.frame_in_list) == bytes(range(12))
    assert (frame.id, frame.extended_id, frame.remote) == (2**28 + 5, True, False)


def test_fields_of_a_frame_are_plain(frame):
    frame.note, frame.id, frame.remote = "x", "none", [1]
    assert (frame.note, frame.id, frame.remote, frame.__dict__) == ("x", "none", [1], {"note": "x"})
    with pytest.raises(TypeError, match="id_"):
        frame.setID()
    del frame.id, frame.note
    for name in ("id", "note"):
        with pytest.raises(AttributeError, match=name):
            getattr(frame, name)
        with pytest.raises(AttributeError):
            delattr(frame, name)
    with mock.patch.object(frame, "data", [300] * 3), mock.patch.object(frame, "setID") as double:
        assert frame.data == [300] * 3 and frame.setID() is double.return_value
    assert frame.data == [1, 2, 3, 0, 0, 0, 0, 0] and "setID" not in vars(frame)
    empty = pyzvr.CANFrame.__new__(pyzvr.CANFrame)
    for use in (lambda: empty.data, lambda: str(empty), lambda: empty.setID(), lambda: hash(empty),
                lambda: empty == frame):
        with pytest.raises(AttributeError):
            use()


def test_frames_are_copied_and_pickled(frame):
    frame.note = ["x"]
    for protocol in range(pickle.HIGHEST_PROTOCOL + 1):
        again = pickle.loads(pickle.dumps(frame, protocol))
        assert again == frame and type(again) is pyzvr.CANFrame and vars(again) == {
            "note": ["x"]
        } and again.frame_in_list == frame.frame_in_list
    shallow, deep = copy.copy(frame), copy.deepcopy(frame)
    assert shallow == deep == frame and shallow.data is frame.data and deep.data is not frame.data and deep.note is not frame.note
    assert {frame: 1}[deep] == 1 and weakref.ref(frame)() is frame


class Tagged(pyzvr.CANFrame):
    """A frame whose steps are its own."""

    def __init__(self, *args, **kwargs):
        self.calls = []
        super().__init__(*args, **kwargs)

    def regularizeData(self, data):
        self.calls.append(list(data))
        return super().regularizeData(data)[:4]

    def setID(self):
        self.calls.append("setID")
        super().setID()


def test_a_frame_is_made_through_its_own_steps():
    tagged = Tagged(291, data=[1, 2, 3])
    assert tagged.calls == [[1, 2, 3], "setID"] and tagged.frame_in_list == [36, 96, 0, 0, 1, 2, 3, 0]
    again = Tagged.fromU8List(FRAME)
    assert type(again) is Tagged and again.calls == [[1, 2, 3, 0, 0, 0, 0, 0], "setID"] and again == tagged
    assert pickle.loads(pickle.dumps(again)).calls == again.calls
    with mock.patch.object(pyzvr.CANFrame, "regularizeData", return_value=[7]):
        assert pyzvr.CANFrame(5).data == [7]


def test_frames_of_few_bytes_and_of_bits_that_say_nothing(box):
    assert pyzvr.CANFrame.fromU8List([36, 96]) == pyzvr.CANFrame(291) == pyzvr.CANFrame.fromU8List(b"\x24\x60\xff\xff")
    assert pyzvr.CANFrame.fromU8List(array.array("i", FRAME)) == pyzvr.CANFrame(291, data=[1, 2, 3])
    loose = [36, 0b01100111, 255, 255, 1]
    for made in (pyzvr.CANFrame.fromU8List(loose), received(box, [mock.Mock(frame_in_list=loose + [0] * 7)])[0]):
        assert made.id_in_list == [36, 96, 0, 0] and made.frame_in_list == [36, 96, 0, 0, 1, *bytes(7)]
        assert made == pyzvr.CANFrame(291, data=[1])
    assert pyzvr.CANFrame.fromU8List([0, 0b1100, 0, 1]).id_in_list == [0, 0b1000, 0, 1]
    for values, failure in (([36], IndexError), ([], IndexError), ([0, 8], struct.error), ([300, 96], ValueError),
                            ("ab", TypeError), (5, TypeError), ([0, None], TypeError)):
        with pytest.raises(failure):
            pyzvr.CANFrame.fromU8List(values)


def test_values_that_are_no_bytes_fail_where_bytes_are_made(box):
    frame = pyzvr.CANFrame(1, data=[256, -1, "x"])
    assert frame.data[:3] == frame.frame_in_list[4:7] == [256, -1, "x"] and "[256, -1, 'x'," in str(frame)
    with pytest.raises(ValueError, match="4 is 256"):
        box._preparePacket(pyzvr.WRITE_CAN, frame.frame_in_list)
    assert pyzvr.CANFrame(1, data=[256]) != pyzvr.CANFrame(1, data=[0])


def test_frames_in_a_cycle_are_collected(box):
    gone = []
    for each in received(box, [pyzvr.CANFrame(number) for number in range(6)]):
        weakref.finalize(each, gone.append, each.id)
        if each.id < 2:
            each.data.append(each)
        elif each.id < 4:
            each.me = each
        else:
            vars(each)["me"] = each
    del each
    gc.collect()
    assert sorted(gone) == list(range(6))


def test_frame_becomes_a_message_of_the_common_package_and_back():
    can = pytest.importorskip("can")
    for frame in (pyzvr.CANFrame(291, data=[1, 2, 3]), pyzvr.CANFrame(2**28, True, False,
                                                                      range(8)), pyzvr.CANFrame(7, False, True)):
        message = frame.toMessage()
        assert isinstance(message, can.Message) and message.arbitration_id == frame.id and message.dlc == 8
        assert pyzvr.CANFrame.fromMessage(message) == frame
    with pytest.raises(ValueError):
        pyzvr.CANFrame.fromMessage(can.Message(is_error_frame=True))


def test_can_records_become_frames_in_order(box, call):
    box.client_cmd.replies = {
        pyzvr.GET_PIN_MODE_OF_SLOT: IDLE, pyzvr.OPEN_CAN: OK, pyzvr.STOP_CAN: OK, pyzvr.CLOSE_CAN: OK
    }
    frames = [pyzvr.CANFrame(number, number % 2, False, [number % 256]) for number in range(600)]
    push(box, pyzvr.START_CAN, [byte for frame in frames[:250] for byte in frame.frame_in_list])
    assert call(box, "CAN_open", 1) == 0 and box.can_open_flag
    push(box, pyzvr.START_CAN, [byte for frame in frames[250:] for byte in frame.frame_in_list])
    assert box.CAN_read(1, 500, 5) == frames[:500]
    while box.can_frame_queue.qsize() < 100:
        pass  # the thread is at it
    assert call(box, "CAN_read", 1, 1) == [frames[500]] and call(box, "CAN_read", 1, 1000, 0.01) == frames[501:]
    box.can_frame_queue.put(frames[3])
    assert box.can_frame_queue.get() == frames[3]
    assert call(box, "CAN_close", 1) == 0 and box.can_lock.locked() and not box.can_open_flag
    box.client_cmd.replies[pyzvr.STOP_CAN] = CAN_REFUSED
    assert call(box, "CAN_close", 1) == -7028 and box.client_cmd.sent[-1][0] == pyzvr.STOP_CAN


def test_start_is_never_answered(box):
    with pytest.raises(pyzvr.ReceivePacketTimeoutError):
        box.CAN_start(1, 0.05)
    assert {command for command, _ in box.client_cmd.sent} == {pyzvr.START_CAN}
    assert awaited(box, "CAN_start", 1) == 0
    assert pyzvr.CANBased._checkCANTXIndex(2) is None
    with pytest.raises(pyzvr.CANTXPriorityNotVaildError):
        box._checkCANTXPriority(4)


def test_broken_record_ends_the_can_reader_only(box, monkeypatch):
    failures = []
    monkeypatch.setattr(threading, "excepthook", lambda args: failures.append((args.exc_type, args.thread.name)))
    box.client_cmd.replies = {pyzvr.GET_PIN_MODE_OF_SLOT: IDLE, pyzvr.OPEN_CAN: OK, pyzvr.OPEN_UART: OK}
    box.CAN_open(1), box.UART_open(1)
    push(box, pyzvr.START_CAN, FRAME)
    push(box, pyzvr.START_CAN, FRAME[:11])
    box.can_stream_thread.join(5)
    assert failures == [(ValueError, "_CANStreamThread")] and box.CAN_read(
        1, 5, 0.01) == [pyzvr.CANFrame(291, data=[1, 2, 3])]
    push(box, (pyzvr.START_UART_READING, 1), b"on")
    assert box.UART_read(1, 2, 5) == ["o", "n"]


def test_full_queues_drop_the_newest_and_warn(box, capsys):
    box.client_cmd.replies = {pyzvr.GET_PIN_MODE_OF_SLOT: IDLE, pyzvr.OPEN_CAN: OK, pyzvr.OPEN_UART: OK}
    with warnings.catch_warnings(record=True) as caught:
        warnings.simplefilter("always")
        box.UART_open(1), box.CAN_open(1)
        for _ in range(101):
            push(box, (pyzvr.START_UART_READING, 1), bytes(10000))
            push(box, pyzvr.START_CAN, FRAME * 10000)
        wanted = {"Occurrence UART queue overflow.", "Occurrence CAN queue overflow."}
        while not all(any(text in str(each.message) for each in caught) for text in wanted):
            pass  # the threads are at it
        while box.uart_p1_signal_queue.dropped < 10000 or box.can_frame_queue.dropped < 10000:
            pass
        assert box.uart_p1_signal_queue.full() and box.can_frame_queue.qsize() == 1_000_000
    # No line of Python has made the warning: its thread is told instead.
    printed = capsys.readouterr().out
    assert {
        "  On thread '_UARTStreamThread', which runs no Python", "  On thread '_CANStreamThread', which runs no Python"
    } <= set(printed.split("\n"))
    assert "File " not in printed and "traceback" not in {each.filename
                                                          for each in caught} and {each.lineno
                                                                                   for each in caught} <= {0, 1}
    assert len(box.UART_readBytes(1, 1_000_000)) == 1_000_000 and box.uart_p1_signal_queue.empty()




def test_steps_of_the_buses_are_called_as_they_are_written(box, call):
    def doubled(name, reply):
        return mock.patch.object(box, name + ("_async" if call is awaited else ""), return_value=reply)

    limit = {} if call is awaited else {"timeout": 2}
    with doubled("_checkSPIPinState", None) as check, doubled("_echoPacketWithRetry", OK):
        assert call(box, "SPI_open", 2, **limit) == 0
    assert check.mock_calls == [mock.call(2, allow_state=["Idle", "DI", "DO"], **limit)]
    with doubled("_getStreamingFromPool", [7]) as take:
        assert call(box, "CAN_read", 1, 5, 0.25) == [7]
    assert take.mock_calls == [mock.call(box.can_frame_queue, 5, delay=0.25)]
    # The device judges the port of a service operation.
    for name, command in (("_SPI_setCPOL", "SET_SPI_CPOL"), ("_SPI_setCPHA", "SET_SPI_CPHA")):
        box.client_cmd.sent, box.client_cmd.replies = [], {getattr(pyzvr, command): OK}
        assert call(box, name, 9, 1) == 0 and box.client_cmd.sent == [(getattr(pyzvr, command), b"\x09\x01")]


@pytest.mark.parametrize("bus, port", [("I2C", 1), ("SPI", 2), ("UART", 2), ("CAN", 1)])
def test_lines_are_asked_for_through_the_object(box, call, bus, port):
    check = f"_check{bus}PinState" + ("_" if bus == "CAN" and call is blocking else "")
    box.client_cmd.replies = {pyzvr.GET_PIN_MODE_OF_SLOT: IDLE}
    with mock.patch.object(box, f"_{bus}_getPinMapPort",
                           return_value=[5, 6]) as ports, mock.patch.object(pyzvr, "checkFuncPinMap") as cells:
        call(box, check, port, ["Idle"])
    assert ports.mock_calls == [mock.call(port)] and cells.mock_calls == []  # no line of the port is on 5 or 6
    assert box.client_cmd.sent == [(pyzvr.GET_PIN_MODE_OF_SLOT, b"\5"), (pyzvr.GET_PIN_MODE_OF_SLOT, b"\6")]
    with mock.patch.object(pyzvr, "checkFuncPinMap",
                           return_value=False) as cells, pytest.raises(getattr(pyzvr, f"{bus}PortNotAvaliableError")):
        call(box, check, port, ["Idle"])
    assert cells.mock_calls == [mock.call(mock.ANY, ["Idle"] * 8, ["Idle"])]


def test_checks_in_place_of_the_librarys_own_are_used(box, call):
    box.client_cmd.replies = {
        pyzvr.WRITE_I2C: OK, pyzvr.WRITE_CAN: CAN_REFUSED, pyzvr.SET_CAN_SPEED: CAN_REFUSED, pyzvr.STOP_CAN: CAN_REFUSED
    }
    with mock.patch.object(pyzvr, "checkInputType") as types:
        assert call(box, "I2C_write", 1, 8, (1, 2)) == 0
    assert types.mock_calls == [mock.call(1, int), mock.call(8, int), mock.call((1, 2), list)]
    with mock.patch.object(pyzvr, "checkInputType") as types, mock.patch.object(pyzvr, "checkEachItemInRange") as ranges, \
            mock.patch.object(pyzvr, "checkFirmwareError", side_effect=[None, pyzvr.Error(77, "mine"), KeyError("x")]) as status:
        assert call(box, "CAN_write", 1, 5, [1]) == 57
        assert call(box, "CAN_setSpeed", 1, 1) == 77
        with pytest.raises(AttributeError, match="code"):
            call(box, "CAN_stop", 1)
    assert mock.call(False, bool) in types.mock_calls and ranges.mock_calls[0].args[:3] == ([1], 0, 255)
    assert status.mock_calls[0] == mock.call(57)
    assert call(box, "CAN_write", 1, 5, [1]) == pyzvr.errFirmwareCAN  # and the library's own again
    with pytest.raises(pyzvr.InputTypeNotCorrectError):
        call(box, "I2C_write", 1, 8, (1, 2))
