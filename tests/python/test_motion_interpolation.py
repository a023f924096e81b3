"""Lines, arcs and helices of the motion controller."""

import copy
from typing import NamedTuple

import pytest
from cases import operation_of
from motion_products import OUTPUT, frames_of, take_frames

import pyzvr

pytestmark = pytest.mark.filterwarnings("ignore:Warning -9")


def outputs(*masks):
    return ", ".join(OUTPUT.format(mask) for mask in masks)


class Interpolation(NamedTuple):
    """One operation that prepares a move of several axes."""

    operation: str
    arguments: tuple  # after the port
    frames: str  # what is sent: code, mask of axes, value
    record: str  # which of the records changes
    changes: dict


INTERPOLATIONS = [
    Interpolation(
        "Motion_cfg2AxisLinearInterpo", (2, 100, 0, 50, 300, 10000, 20000),
        frames=outputs(1, 4) + ", 2A 0 69, 04 1 110, 05 1 300, 02 1 10000, 03 1 20000, 06 1 50, 06 4 100, 6D 0 0",
        record="linear",
        changes={"main_axis": 0, "main_dest": 50, "second_axis": 2, "second_dest": 100, "speed": 300,
            "acceleration": 10000, "deceleration": 20000, "mode": 2},
    ),
    Interpolation(
        "Motion_cfg3AxisLinearInterpo", (3, -1, 2, -2, 1, -3),
        frames=outputs(2, 4, 8) + ", 2A 0 142, 04 2 347, 05 2 10000, 02 2 100000, 03 2 100000, 06 2 -3, 06 4 -2, "
        "06 8 -1, 6D 0 0",
        record="linear",
        changes={"main_axis": 1, "main_dest": -3, "second_axis": 2, "second_dest": -2, "third_axis": 3,
            "third_dest": -1, "speed": 10000, "acceleration": 100000, "deceleration": 100000, "mode": 3},
    ),
    Interpolation(
        "Motion_cfg4AxisLinearInterpo", (0, 1, 3, 2, 1, 3, 2, 4, 5, 4, 4),
        frames=outputs(1, 2, 4, 8) + ", 2A 0 15, 04 1 2, 05 1 5, 02 1 4, 03 1 4, 06 1 1, 06 2 3, 06 4 4, 06 8 2, "
        "6D 0 0",
        record="linear",
        changes={"main_axis": 0, "main_dest": 1, "second_axis": 1, "second_dest": 3, "third_axis": 2,
            "third_dest": 4, "fourth_axis": 3, "fourth_dest": 2, "speed": 5, "acceleration": 4, "deceleration": 4,
            "mode": 4},
    ),
    Interpolation(
        "Motion_cfgCircularInterpo", (2, 0, 10.9, -20, 0, 40, 1, 500, 6, 7),
        frames=outputs(4, 1) + ", 2A 0 85, 04 1 500, 05 1 500, 02 1 6, 03 1 7, 08 4 10, 06 4 0, 08 1 -20, 06 1 40",
        record="circular",
        changes={"main_axis": 0, "center_point_x": 10.9, "center_point_y": -20, "finish_point_x": 0,
            "finish_point_y": 40, "direction": 1, "speed": 500, "acceleration": 6, "deceleration": 7},
    ),
    Interpolation(
        "Motion_cfgCircularInterpo", (1, 1, 1, 2, 3, 4, 0),
        frames=outputs(2, 2) + ", 2A 0 66, 04 2 10000, 05 2 10000, 02 2 100000, 03 2 100000, 08 2 1, 06 2 3, "
        "08 2 2, 06 2 4",
        record="circular",
        changes={"main_axis": 1, "center_point_x": 1, "center_point_y": 2, "finish_point_x": 3,
            "finish_point_y": 4, "direction": 0, "speed": 10000, "acceleration": 100000, "deceleration": 100000},
    ),
    Interpolation(
        "_Motion_writeHelicalInterpolation", (1, 2, 3, 4, 0, 5, 1, 6, 7, 8, 1),
        frames=outputs(1, 2, 8) + ", 2A 0 331, 04 1 8, 05 1 8, 1A 0 7, 06 1 1, 08 1 3, 06 2 2, 08 2 4, 06 8 6",
        record="helical",
        changes={"finish_point_axis1": 1, "finish_point_axis2": 2, "center_point_axis1": 3,
            "center_point_axis2": 4, "enable_axis3": 0, "pitch_axis3": 5, "enable_axis4": 1, "pitch_axis4": 6,
            "rotation_number": 7, "circular_speed": 8, "circular_direction": 1},
    ),
]


@pytest.mark.parametrize("case", INTERPOLATIONS, ids=operation_of)
def test_interpolations(ratchet, call, case):
    records = [ratchet.linear_interpo, ratchet.circular_interpo, ratchet.helical_interpo]
    expected = copy.deepcopy(records)
    vars(expected[["linear", "circular", "helical"].index(case.record)]).update(case.changes)
    assert call(ratchet, case.operation, 0, *case.arguments) == 0
    assert frames_of(ratchet) == case.frames
    assert repr(records) == repr(expected)


def test_starts_of_interpolations(ratchet, call):
    for mode, frame in [(2, "61 0 0"), (3, "62 0 0"), (4, "63 0 0"), (5, "")]:
        ratchet.linear_interpo.mode = mode
        ratchet.chip.values[frame[:2]] = 54
        assert call(ratchet, "Motion_startLinearInterpo", 0) == (-7019 if frame else 0)
        assert frames_of(ratchet) == frame
    for direction, frame in [(0, "64 0 0"), (1, "65 0 0")]:
        ratchet.circular_interpo.direction = direction
        assert call(ratchet, "Motion_startCircularInterpo", 0) == 0
        assert frames_of(ratchet) == frame


HELIX = outputs(1, 2, 4) + ", 2A 0 327, 04 1 900, 05 1 900, 1A 0 2, 06 1 30, 08 1 10, 06 2 40, 08 2 20, 06 4 50"


@pytest.mark.parametrize("direction, calculation, move", [(0, "6B 0 0", "69 0 0"), (1, "6C 0 0", "6A 0 0")])
def test_a_helix_waits_for_its_calculation(ratchet, call, direction, calculation, move):
    states = iter([1, 15, 14])
    answer = ratchet.chip
    ratchet.client_cmd.replies[pyzvr.MOTION] = lambda data: (
        data[:3] + bytes([0, 0, 0, next(states)]) if data[1] == pyzvr.MOTION_E8_RR0 else answer(data))
    answer.values = {"3B": 123456, calculation[:2]: 54}
    arguments = (0, 10, 20, 30, 40, 1, 50, 0, 60, 2, 900, direction, 60000)
    assert call(ratchet, "Motion_cfgHelicalInterpo", *arguments) == 0
    assert frames_of(ratchet) == f"{HELIX}, {calculation}, E8 0 0, E8 0 0, E8 0 0, 3B 0 0"
    assert ratchet.helical_interpo.calculation_result == 123456
    assert call(ratchet, "Motion_startHelicalInterpo", 0) == 0
    assert frames_of(ratchet) == f"{HELIX}, 1B 0 123456, {move}"


def test_a_calculation_that_takes_too_long_is_no_error(ratchet, call):
    ratchet.chip.values = {"E8": 1, "3B": 5}
    assert call(ratchet, "Motion_cfgHelicalInterpo", 0, 1, 2, 3, 4, 0, 0, 0, 0, 1, 9, 0, 0) == 0
    assert take_frames(ratchet)[1][-2:] == ["6B 0 0", "E8 0 0"]
    assert ratchet.helical_interpo.calculation_result == 0
