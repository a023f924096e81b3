"""Values to bytes and back, masks and checks, against the host's own packing."""

import array
import itertools
import math
import struct
import sys
from unittest import mock

import pytest
from hypothesis import given
from hypothesis import strategies as st

import pyzvr

KINDS = {"U16": ("2", ">H"), "U32": ("4", ">I"), "U64": ("8", ">Q"), "I16": ("2", ">h"), "I32": ("4", ">i"),
         "I64": ("8", ">q"), "F32": ("4", ">f"), "F64": ("8", ">d")}


def pair(kind):
    width, form = KINDS[kind]
    return getattr(pyzvr, f"convert{kind}To{width}U8"), getattr(pyzvr, f"convert{width}U8To{kind}"), form


@pytest.mark.parametrize("kind", KINDS)
@given(data=st.data())
def test_numbers_pack_like_the_host_and_come_back(kind, data):
    to_bytes, from_bytes, form = pair(kind)
    size = 8 * struct.calcsize(form)
    if kind[0] == "F":
        value = data.draw(st.floats(width=size, allow_nan=False))
    else:
        low = -(1 << (size - 1)) if kind[0] == "I" else 0
        value = data.draw(st.integers(low, low + (1 << size) - 1))
    packed = to_bytes(value)
    assert packed == list(struct.pack(form, value))
    assert from_bytes(packed) == from_bytes(bytes(packed)) == value


@pytest.mark.parametrize("kind", KINDS)
def test_numbers_that_do_not_fit_and_wrong_lengths_fail(kind):
    to_bytes, from_bytes, form = pair(kind)
    with pytest.raises(struct.error):
        from_bytes([0] * (struct.calcsize(form) + 1))
    with pytest.raises(TypeError):
        to_bytes("1")
    if kind != "F64":
        with pytest.raises(OverflowError):
            to_bytes(1e300 if kind == "F32" else 1 << 64)
    if kind[0] == "U":
        with pytest.raises(OverflowError):
            to_bytes(-1)
    if kind[0] != "F":
        assert to_bytes(2.9) == to_bytes(2)
    with pytest.raises(ValueError):
        from_bytes([256] + [0] * (struct.calcsize(form) - 1))


@given(st.integers(0, 1 << 40), st.integers(0, 45), st.integers(-1, 2))
def test_bits(number, index, value):
    assert pyzvr.readBit(number, index) == number >> index & 1
    assert pyzvr.fillBit(number, index) == number | 1 << index
    assert pyzvr.clearBit(number, index) == number & ~(1 << index)
    expected = pyzvr.fillBit if value == 1 else pyzvr.clearBit
    assert pyzvr.writeBit(number, index, value) == expected(number, index)


@given(st.sets(st.integers(0, 63)), st.integers(0, 70))
def test_masks_and_lists_are_inverse(indices, width):
    mask = pyzvr.convertIndexListToInt(sorted(indices))
    assert pyzvr.convertIntToIndexList(mask) == sorted(indices)
    assert pyzvr.convertIntToBinaryList(mask, width) == [mask >> i & 1 for i in range(width)]


def test_masks_of_pairs_clip_values_and_stop_at_the_shorter_list():
    assert pyzvr.convertIndexAndBinaryListsToInt([0, 3, 5], [7, -1, 1]) == 0b100001
    assert pyzvr.convertIndexAndBinaryListsToInt([0, 3], [1]) == 1
    assert pyzvr.coerce([-1, 0, 2]) == [0, 0, 1]
    assert pyzvr.coerce([-1, 0.5, 200], 0, 100) == [0, 0.5, 100]
    assert pyzvr.adjustDataList([1, 2, 3]) == [1, 2, 3, 0, 0, 0, 0, 0]
    assert pyzvr.adjustDataList(list(range(10))) == list(range(8))
    assert pyzvr.adjustDataList([1], list_length=2, padding_num=9) == [1, 9]
    assert pyzvr.changeToLatticePort(1) == 0


def test_text_and_addresses():
    assert pyzvr.convertU8ListToStr([65, 66, 0, 67]) == "AB"
    assert pyzvr.convertU8ListToStr("Grün".encode()) == "Grün"
    with pytest.raises(UnicodeDecodeError):
        pyzvr.convertU8ListToStr([65, 0, 255])
    assert pyzvr.convertStrToU8List("Aœ") == [65, 339]
    assert pyzvr.convertIPAddrTo4U8("192.168.1.110") == [192, 168, 1, 110]
    with pytest.raises(OSError):
        pyzvr.convertIPAddrTo4U8("nowhere")
    with pytest.raises(OSError):
        pyzvr.convertIPAddrTo4U8("192.168.1.256")
    assert pyzvr.convertMACAddrTo6U8("0a:B:c0:1:2:ff") == [10, 11, 192, 1, 2, 255]
    with pytest.raises(ValueError):
        pyzvr.convertMACAddrTo6U8("0g:00")


def test_checks_raise_the_named_errors():
    with pytest.raises(pyzvr.InputTypeNotCorrectError):
        pyzvr.checkInputType("1", int)
    pyzvr.checkInputType(True, int)
    pyzvr.checkInputType([], (int, list))
    pyzvr.checkInputType([], {int, list})
    assert pyzvr.checkInputTypeConsistent([1], [2]) is True
    with pytest.raises(pyzvr.InputTypeNotConsistentError):
        pyzvr.checkInputTypeConsistent(1, 1.0)
    pyzvr.checkEachItemInRange([0, 255])
    with pytest.raises(pyzvr.InputDataNotInRangeError) as error:
        pyzvr.checkEachItemInRange([0, 11], 0, 10, "port")
    assert error.value.msg == "port"
    assert error.value.code == pyzvr.errInputDataNotInRange
    modes = ["Idle", "DI", "UART"]
    assert pyzvr.checkFuncPinMap((0, 1), modes, ["DI"]) is True
    assert pyzvr.checkPinMap([(0, 0), (0, 2)], modes, ["Idle", "DI"]) is False
    assert pyzvr.checkPinMap([], modes, []) is True


@given(st.floats(allow_nan=False))
def test_angles_are_the_hosts_to_the_last_bit(value):
    assert pyzvr.convertDegToRad(value) == math.radians(value)
    assert pyzvr.convertRadToDeg(value) == math.degrees(value)


HUGE = (2**16, 2**31, 2**63, 2**64, 10**400)


@pytest.mark.parametrize("length", [*HUGE[1:], 1_000_001])
def test_lengths_that_nobody_means_are_refused_at_once(length):
    for call in (lambda: pyzvr.adjustDataList(b"", length), lambda: pyzvr.adjustDataList([1], list_length=length),
                 lambda: pyzvr.convertIntToBinaryList(5, length)):
        with pytest.raises(OverflowError, match="list_length|width"):
            call()


@pytest.mark.parametrize("index", HUGE)
def test_positions_that_nobody_means_are_refused_at_once(index):
    for call in (lambda: pyzvr.clearBit(1, index), lambda: pyzvr.fillBit(1, index), lambda: pyzvr.writeBit(1, index, 1),
                 lambda: pyzvr.writeBit(1, index, 0), lambda: pyzvr.convertIndexListToInt([0, index]),
                 lambda: pyzvr.convertIndexAndBinaryListsToInt([index], [1])):
        with pytest.raises(OverflowError, match="index"):
            call()
    assert pyzvr.readBit(5, index) == 0
    assert pyzvr.readBit(-1, index) == 1  # the sign goes on for ever


def test_the_longest_that_can_be_meant():
    assert pyzvr.fillBit(0, 65535) == 1 << 65535
    assert pyzvr.clearBit(1 << 65535, 65535) == 0
    bits = pyzvr.convertIntToBinaryList((1 << 1_000_000) - 2, 1_000_000)  # not a step of Python for each bit
    assert len(bits) == 1_000_000
    assert bits[:2] == [0, 1]
    assert sum(bits) == 999_999
    assert pyzvr.convertIntToIndexList(1 << 300_000 | 1) == [0, 300_000]
    assert len(pyzvr.adjustDataList([], 1_000_000, None)) == 1_000_000
    assert pyzvr.adjustDataList(itertools.count(), 3) == [0, 1, 2]  # takes no more than it needs
    assert pyzvr.convertIntToBinaryList(-2, 4) == [0, 1, 1, 1]


# What is no number, no list or no text is told by the name of its argument, and what came.
WRONG_TYPES = [(lambda: pyzvr.clearBit("x", 2**63), "number: .*str"),
               (lambda: pyzvr.fillBit(None, 2**63), "number: .*NoneType"),
               (lambda: pyzvr.readBit(1, "x"), "index: .*str"), (lambda: pyzvr.writeBit(1.5, 0, 1), "number: .*float"),
               (lambda: pyzvr.changeToLatticePort("1"), "slot: .*str"),
               (lambda: pyzvr.convertIntToBinaryList(5, "4"), "width: .*str"),
               (lambda: pyzvr.convertIntToBinaryList("5", 4), "value_int: .*str"),
               (lambda: pyzvr.convertIntToIndexList(1.0), "value_int: .*float"),
               (lambda: pyzvr.convertIndexListToInt(5), "index_list: .*int"),
               (lambda: pyzvr.convertIndexListToInt(["1"]), "index_list: .*str"),
               (lambda: pyzvr.convertIndexAndBinaryListsToInt([0], 1), "binary_list: .*int"),
               (lambda: pyzvr.coerce(5), "list_: .*int"), (lambda: pyzvr.adjustDataList(5), "data_list: .*int"),
               (lambda: pyzvr.adjustDataList([], 8.0), "list_length: .*float"),
               (lambda: pyzvr.convertU16To2U8("1"), "value: .*str"),
               (lambda: pyzvr.convertF32To4U8(None), "value: .*NoneType"),
               (lambda: pyzvr.convertI32To4U8(1j), "value: .*complex"),
               (lambda: pyzvr.convert2U8ToU16("ab"), "int_list: .*str"),
               (lambda: pyzvr.convert2U8ToU16(7), "int_list: .*int"),
               (lambda: pyzvr.convert2U8ToU16([1, 2.0]), "int_list: item 1 .*float"),
               (lambda: pyzvr.convertU8ListToStr(None), "int_list: .*NoneType"),
               (lambda: pyzvr.convertStrToU8List(5), "str_: .*int"),
               (lambda: pyzvr.convertStrToU8List(["ab"]), "str_: .*str"),
               (lambda: pyzvr.convertIPAddrTo4U8(5), "value: .*int"),
               (lambda: pyzvr.convertMACAddrTo6U8(None), "str_: .*NoneType"),
               (lambda: pyzvr.convertDegToRad("1"), "degrees: .*str"),
               (lambda: pyzvr.convertRadToDeg([]), "radians: .*list"),
               (lambda: pyzvr.checkEachItemInRange(5), "int_list: .*int"),
               (lambda: pyzvr.checkFuncPinMap(5, [], []), "cell: .*int"),
               (lambda: pyzvr.checkPinMap(5, [], []), "cell_list: .*int"),
               (lambda: pyzvr.checkFirmwareError("0"), "error_code: .*str"),
               (lambda: pyzvr.checkFirmwareError(0.0), "error_code: .*float"), ]


@pytest.mark.parametrize("call, text", WRONG_TYPES)
def test_wrong_types_are_told_by_name(call, text):
    with pytest.raises(TypeError, match=text):
        call()


def test_negative_positions_and_lengths_are_value_errors():
    for call in (lambda: pyzvr.clearBit(1, -1), lambda: pyzvr.fillBit(1, -1), lambda: pyzvr.readBit(1, -1),
                 lambda: pyzvr.adjustDataList([], -1), lambda: pyzvr.convertIntToBinaryList(1, -1),
                 lambda: pyzvr.convertIndexListToInt([-1]), lambda: pyzvr.convertIntToIndexList(-1)):
        with pytest.raises(ValueError, match=": .*negative"):
            call()


class Whole:
    """An integer of another library: no plain one, but it stands for one."""

    def __init__(self, value):
        self.value = value

    def __index__(self):
        return self.value


def test_numbers_are_read_one_by_one_whatever_their_memory_looks_like():
    assert pyzvr.convert2U8ToU16(array.array("q", [32, 21])) == 8213  # 16 bytes of memory
    assert pyzvr.convert2U8ToU16(memoryview(array.array("H", [32, 21]))) == 8213
    assert pyzvr.convert2U8ToU16(memoryview(b"\x20\x15")) == pyzvr.convert2U8ToU16(bytearray(b"\x20\x15")) == 8213
    assert pyzvr.convert2U8ToU16(iter([Whole(32), True])) == 8193
    assert pyzvr.convertU8ListToStr(array.array("I", [65, 66])) == "AB"
    assert pyzvr.convertU16To2U8(Whole(8213)) == [32, 21]
    assert pyzvr.fillBit(Whole(1), Whole(1)) == 3
    for value in (256, -1, 10**30):
        with pytest.raises(ValueError, match="int_list: item 1 "):
            pyzvr.convert2U8ToU16([0, value])


def test_numpys_integers_are_integers():
    numpy = pytest.importorskip("numpy")
    assert pyzvr.convert2U8ToU16(numpy.array([32, 21])) == 8213
    assert pyzvr.convertIntToBinaryList(numpy.uint8(5), numpy.int64(4)) == [1, 0, 1, 0]
    assert pyzvr.clearBit(numpy.uint8(255), 0) == 254
    assert pyzvr.fillBit(numpy.int8(0), 100) == 1 << 100
    with pytest.raises(pyzvr.InputTypeNotCorrectError) as error:
        pyzvr.checkInputType(numpy.int64(1), int)
    assert "int64 came, int is wanted" in error.value.__notes__[0]


@pytest.mark.skipif(sys.version_info < (3, 11), reason="errors have no notes")
def test_a_refused_type_is_told_in_a_note_and_the_message_stays():
    for value, wanted, text in (
        (Whole(1), int, "Whole came, int is wanted; int(value) makes a plain integer of it"),
        ("1", (int, float), "str came, int or float is wanted"),
        (1, {list}, "int came, list is wanted"),
    ):
        with pytest.raises(pyzvr.InputTypeNotCorrectError) as error:
            pyzvr.checkInputType(value, wanted)
        assert error.value.__notes__[0].startswith(text)
        assert error.value.msg == pyzvr.InputTypeNotCorrectError.msg
        assert error.value.code == -8008


def test_a_pin_check_in_place_of_the_librarys_is_asked_for_each_cell():
    with mock.patch.object(pyzvr, "checkFuncPinMap", side_effect=[True, 0]) as double:
        assert pyzvr.checkPinMap([(0, 0), (0, 1), (0, 2)], "map", "allowed") is False
    assert double.mock_calls == [mock.call((0, 0), "map", "allowed"), mock.call((0, 1), "map", "allowed")]
