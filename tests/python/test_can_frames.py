"""Frames of the CAN bus: their bytes, fields, copies and messages."""

import array
import copy
import gc
import pickle
import struct
import weakref
from unittest import mock

import pytest
from fake_buses import FRAME, U32, push
from hypothesis import given, strategies as st

import pyzvr


@given(identifier=st.integers(0, 2**29 - 1), extended=st.booleans(), remote=st.booleans(), data=st.binary(max_size=12))
def test_frame_survives_the_wire(identifier, extended, remote, data):
    identifier = identifier if extended else identifier % 2048
    frame = pyzvr.CANFrame(identifier, extended, remote, data)
    word = identifier << 21 if not extended else (identifier >> 18) << 21 | 1 << 19 | identifier & 0x3FFFF
    assert frame.id_in_list == U32(word | remote << 20)
    assert frame.data == [*data, *bytes(8)][:8]
    assert frame.frame_in_list == frame.id_in_list + frame.data
    again = pyzvr.CANFrame.fromU8List(frame.frame_in_list)
    assert again == frame
    assert hash(again) == hash(frame)
    assert {frame: 1}[again] == 1
    assert again != pyzvr.CANFrame(identifier, extended, not remote, data)
    assert again != frame.frame_in_list


def test_frame_as_text_and_bad_ones():
    assert str(pyzvr.CANFrame(291)) == repr(
        pyzvr.CANFrame(291)) == "CANFrame(id=291, extended_id=False, remote=False, data=[0, 0, 0, 0, 0, 0, 0, 0])"
    assert "extended_id=1, remote=0" in str(pyzvr.CANFrame(1, 1, 0))
    assert pyzvr.CANFrame(1, 1) == pyzvr.CANFrame(1, True)
    class Named(pyzvr.CANFrame):
        name = "x"

    assert Named(5, data=[1]) == pyzvr.CANFrame(5, data=[1])
    assert Named(id_=5).name == "x"
    frame = pyzvr.CANFrame.fromU8List([36, 96, 0, 0])
    assert frame == pyzvr.CANFrame(291)
    assert frame.regularizeData([1]) == [1, 0, 0, 0, 0, 0, 0, 0]
    frame.id, frame.extended_id, frame.data = 2**28, True, [5]
    frame.setID()
    assert pyzvr.CANFrame.fromU8List(frame.frame_in_list) == pyzvr.CANFrame(2**28, True, False, [5])
    for arguments, error in (((2048,), OverflowError), ((-1,), OverflowError), (("1",), TypeError),
                               ((1.0,), TypeError), ((1, 0, 0, 5), TypeError), ((), TypeError)):
        with pytest.raises(error):
            pyzvr.CANFrame(*arguments)


def received(bus_box, frames):
    """Frames as the stream makes them."""
    for frame in frames:
        push(bus_box, pyzvr.START_CAN, frame.frame_in_list)
    bus_box.can_lock.release()
    while bus_box.can_frame_queue.qsize() < len(frames):
        pass  # the thread is at it
    return [bus_box.can_frame_queue.get() for _ in frames]


@pytest.fixture(params=["made", "streamed"])
def frame(request, bus_box):
    made = pyzvr.CANFrame(2**28 + 5, True, False, [1, 2, 3])
    return made if request.param == "made" else received(bus_box, [made])[0]


def test_a_frame_has_lists_of_its_own(frame):
    assert frame.data is frame.data
    assert frame.id_in_list is frame.id_in_list
    assert frame.frame_in_list is frame.frame_in_list
    wire = frame.frame_in_list.copy()
    frame.data[0] = 9
    assert frame.data == [9, 2, 3, 0, 0, 0, 0, 0]
    assert frame.frame_in_list == wire
    assert frame != pyzvr.CANFrame(2**28 + 5, True, False, [1, 2, 3])
    frame.setID()
    assert frame.frame_in_list == wire[:4] + frame.data
    assert frame == pyzvr.CANFrame.fromU8List(frame.frame_in_list)
    frame.id_in_list.append(7)
    frame.frame_in_list[:] = range(12)
    assert len(frame.id_in_list) == 5
    assert bytes(frame.frame_in_list) == bytes(range(12))
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
        assert frame.data == [300] * 3
        assert frame.setID() is double.return_value
    assert frame.data == [1, 2, 3, 0, 0, 0, 0, 0]
    assert "setID" not in vars(frame)
    empty = pyzvr.CANFrame.__new__(pyzvr.CANFrame)
    for use in (lambda: empty.data, lambda: str(empty), lambda: empty.setID(), lambda: hash(empty),
                lambda: empty == frame):
        with pytest.raises(AttributeError):
            use()


def test_frames_are_copied_and_pickled(frame):
    frame.note = ["x"]
    for protocol in range(pickle.HIGHEST_PROTOCOL + 1):
        again = pickle.loads(pickle.dumps(frame, protocol))
        assert again == frame
        assert type(again) is pyzvr.CANFrame
        assert vars(again) == {"note": ["x"]}
        assert again.frame_in_list == frame.frame_in_list
    shallow, deep = copy.copy(frame), copy.deepcopy(frame)
    assert shallow == deep == frame
    assert shallow.data is frame.data
    assert deep.data is not frame.data
    assert deep.note is not frame.note
    assert {frame: 1}[deep] == 1
    assert weakref.ref(frame)() is frame


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
    assert tagged.calls == [[1, 2, 3], "setID"]
    assert tagged.frame_in_list == [36, 96, 0, 0, 1, 2, 3, 0]
    again = Tagged.fromU8List(FRAME)
    assert type(again) is Tagged
    assert again.calls == [[1, 2, 3, 0, 0, 0, 0, 0], "setID"]
    assert again == tagged
    assert pickle.loads(pickle.dumps(again)).calls == again.calls
    with mock.patch.object(pyzvr.CANFrame, "regularizeData", return_value=[7]):
        assert pyzvr.CANFrame(5).data == [7]


def test_frames_of_few_bytes_and_of_bits_that_say_nothing(bus_box):
    assert pyzvr.CANFrame.fromU8List([36, 96]) == pyzvr.CANFrame(291) == pyzvr.CANFrame.fromU8List(b"\x24\x60\xff\xff")
    assert pyzvr.CANFrame.fromU8List(array.array("i", FRAME)) == pyzvr.CANFrame(291, data=[1, 2, 3])
    loose = [36, 0b01100111, 255, 255, 1]
    for made in (pyzvr.CANFrame.fromU8List(loose), received(bus_box, [mock.Mock(frame_in_list=loose + [0] * 7)])[0]):
        assert made.id_in_list == [36, 96, 0, 0]
        assert made.frame_in_list == [36, 96, 0, 0, 1, *bytes(7)]
        assert made == pyzvr.CANFrame(291, data=[1])
    assert pyzvr.CANFrame.fromU8List([0, 0b1100, 0, 1]).id_in_list == [0, 0b1000, 0, 1]
    for values, error in (([36], IndexError), ([], IndexError), ([0, 8], struct.error), ([300, 96], ValueError),
                            ("ab", TypeError), (5, TypeError), ([0, None], TypeError)):
        with pytest.raises(error):
            pyzvr.CANFrame.fromU8List(values)


def test_values_that_are_no_bytes_fail_where_bytes_are_made(bus_box):
    frame = pyzvr.CANFrame(1, data=[256, -1, "x"])
    assert frame.data[:3] == frame.frame_in_list[4:7] == [256, -1, "x"]
    assert "[256, -1, 'x'," in str(frame)
    with pytest.raises(ValueError, match="4 is 256"):
        bus_box._preparePacket(pyzvr.WRITE_CAN, frame.frame_in_list)
    assert pyzvr.CANFrame(1, data=[256]) != pyzvr.CANFrame(1, data=[0])


def test_frames_in_a_cycle_are_collected(bus_box):
    gone = []
    for each in received(bus_box, [pyzvr.CANFrame(number) for number in range(6)]):
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
    for frame in (
        pyzvr.CANFrame(291, data=[1, 2, 3]),
        pyzvr.CANFrame(2**28, True, False, range(8)),
        pyzvr.CANFrame(7, False, True),
    ):
        message = frame.toMessage()
        assert isinstance(message, can.Message)
        assert message.arbitration_id == frame.id
        assert message.dlc == 8
        assert pyzvr.CANFrame.fromMessage(message) == frame
    with pytest.raises(ValueError):
        pyzvr.CANFrame.fromMessage(can.Message(is_error_frame=True))
