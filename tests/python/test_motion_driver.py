"""The chip of the motion controller: its commands one by one, numbers and statuses."""

import re
import struct
from pathlib import Path

import pytest
from motion_products import AXIS_1, AXIS_2, AXIS_3, REFUSED, frames_of, on

import pyzvr

pytestmark = pytest.mark.filterwarnings("ignore:Warning -9")

GOLDEN = (Path(__file__).parents[1] / "golden" / "motion.txt").read_text().splitlines()


@pytest.mark.parametrize("line", [line for line in GOLDEN if line[0] != "#"])
def test_driver_commands(ratchet, call, line):
    request, data, result = line.split(" | ")
    operation, *arguments = request.split()
    ratchet.client_cmd.replies[pyzvr.MOTION] = lambda data: data[:3] + b"\x89\xab\xcd\xef"
    assert call(ratchet, operation, *map(int, arguments)) == int(result)
    assert ratchet.client_cmd.sent == [(pyzvr.MOTION, bytes.fromhex(data))]


def test_constants_say_their_number():
    codes = {name: value for name, value in vars(pyzvr).items() if re.match("MOTION_[0-9A-F]{2}_", name)}
    registers = {name: value for name, value in vars(pyzvr).items() if re.match("PA[WL]{2}_[0-9A-F]{2}_", name)}
    assert (len(codes), len(registers)) == (199, 68)
    assert pyzvr.PALW_2E_V2 == 46
    assert pyzvr.MOTION_63_LHK4 == 99
    assert all(value == int(name.split("_")[1], 16) for name, value in (codes | registers).items())


def test_statuses_numbers_and_axes_of_the_driver(ratchet, call):
    for status, result in [(0, 0), (REFUSED, -7019), (14, -7028)]:
        ratchet.chip.values[pyzvr.MOTION_00_JK] = status
        assert call(ratchet, "_Motion_setAccelerationJerk", 0, 3, 1) == result
    assert call(ratchet, "_Motion_setAcceleration", 0, 7, 12.9) == 0
    assert frames_of(ratchet) == 3 * on(AXIS_3, MOTION_00_JK=1) + on(1 << 7, MOTION_02_AC=12)
    for arguments, error in [((0, 8, 1), ValueError), ((256, 0, 1), ValueError), ((0, 0, -1), OverflowError),
                               ((0, 0, "1"), TypeError), ((0, "0", 1), TypeError)]:
        with pytest.raises(error):
            call(ratchet, "_Motion_setAcceleration", *arguments)
    ratchet.client_cmd.replies[pyzvr.MOTION] = lambda data: data[:5]
    assert ratchet.client_cmd.sent == []
    with pytest.raises(IndexError):
        call(ratchet, "_Motion_NOP", 0, 0)
    with pytest.raises(struct.error):
        call(ratchet, "_Motion_getWR2", 0, 0)


def test_a_release_needs_a_check_that_nobody_has(ratchet, call):
    with pytest.raises(AttributeError, match="_checkMotionAxis"):
        call(ratchet, "_Motion_releaseDrivingStart", 0, 6)
    assert frames_of(ratchet) == []
    ratchet._checkMotionAxis = lambda mask: None
    assert call(ratchet, "_Motion_releaseDrivingStart", 0, 6) == 0
    assert frames_of(ratchet) == on(AXIS_1 | AXIS_2, MOTION_78_DFREE=0)
