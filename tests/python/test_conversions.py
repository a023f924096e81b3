"""Values to bytes and back, masks and checks, against the host's own packing."""

import struct

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
    assert pyzvr.convertRadToDeg(pyzvr.convertDegToRad(90.0)) == pytest.approx(90.0)


def test_checks_raise_the_named_failures():
    with pytest.raises(pyzvr.InputTypeNotCorrectError):
        pyzvr.checkInputType("1", int)
    pyzvr.checkInputType(True, int)
    pyzvr.checkInputType([], (int, list))
    pyzvr.checkInputType([], {int, list})
    assert pyzvr.checkInputTypeConsistent([1], [2]) is True
    with pytest.raises(pyzvr.InputTypeNotConsistentError):
        pyzvr.checkInputTypeConsistent(1, 1.0)
    pyzvr.checkEachItemInRange([0, 255])
    with pytest.raises(pyzvr.InputDataNotInRangeError) as failure:
        pyzvr.checkEachItemInRange([0, 11], 0, 10, "port")
    assert failure.value.msg == "port" and failure.value.code == pyzvr.errInputDataNotInRange
    modes = ["Idle", "DI", "UART"]
    assert pyzvr.checkFuncPinMap((0, 1), modes, ["DI"]) is True
    assert pyzvr.checkPinMap([(0, 0), (0, 2)], modes, ["Idle", "DI"]) is False
    assert pyzvr.checkPinMap([], modes, []) is True
