"""Lines, arcs and helices of the motion controller."""

import copy
from typing import NamedTuple

import pytest
from cases import operation_of
from motion_products import AXIS_0, AXIS_1, AXIS_2, AXIS_3, FOUR_AXES, HELICAL, NO_AXIS, SWAPPED, THREE_AXES
from motion_products import REFUSED, TWO_AXES, Frame, frames_of, on, outputs

import pyzvr

pytestmark = pytest.mark.filterwarnings("ignore:Warning -9")


class Interpolation(NamedTuple):
    """One operation that prepares a move of several axes."""

    operation: str
    arguments: tuple  # after the port
    frames: list  # what is sent
    record: str  # which of the records changes
    changes: dict


def line(arguments, targets, kind, SV=347, DV=10000, AC=100000, DC=100000):
    """A case that prepares a line to these places of axes, the first of which leads. The kind is for MOTION_2A_IPM."""
    masks = [1 << axis for axis in targets]
    frames = outputs(*masks) + on(NO_AXIS, MOTION_2A_IPM=kind | sum(masks))
    frames += on(masks[0], MOTION_04_SV=SV, MOTION_05_DV=DV, MOTION_02_AC=AC, MOTION_03_DC=DC)
    changes = {"speed": DV, "acceleration": AC, "deceleration": DC, "mode": len(targets)}
    for name, (axis, TP) in zip(("main", "second", "third", "fourth"), targets.items()):
        frames += on(1 << axis, MOTION_06_TP=TP)
        changes |= {name + "_axis": axis, name + "_dest": TP}
    operation = f"Motion_cfg{len(targets)}AxisLinearInterpo"
    return Interpolation(operation, arguments, frames + on(NO_AXIS, MOTION_6D_DECEN=0), "linear", changes)


def helix(lifted, DV, HLN, CP, TP):
    """Frames that prepare a helix of two axes along another: two coordinates of its centre, three of its end."""
    frames = outputs(AXIS_0, AXIS_1, lifted) + on(NO_AXIS, MOTION_2A_IPM=HELICAL | TWO_AXES | AXIS_0 | AXIS_1 | lifted)
    frames += on(AXIS_0, MOTION_04_SV=DV, MOTION_05_DV=DV) + on(NO_AXIS, MOTION_1A_HLN=HLN)
    frames += on(AXIS_0, MOTION_06_TP=TP[0], MOTION_08_CP=CP[0]) + on(AXIS_1, MOTION_06_TP=TP[1], MOTION_08_CP=CP[1])
    return frames + on(lifted, MOTION_06_TP=TP[2])


INTERPOLATIONS = [
    line((2, 100, 0, 50, 300, 10000, 20000), {0: 50, 2: 100}, TWO_AXES, SV=110, DV=300, AC=10000, DC=20000),
    line((3, -1, 2, -2, 1, -3), {1: -3, 2: -2, 3: -1}, THREE_AXES),
    line((0, 1, 3, 2, 1, 3, 2, 4, 5, 4, 4), {0: 1, 1: 3, 2: 4, 3: 2}, FOUR_AXES, SV=2, DV=5, AC=4, DC=4),
    Interpolation(
        "Motion_cfgCircularInterpo",
        (2, 0, 10.9, -20, 0, 40, 1, 500, 6, 7),
        outputs(AXIS_2, AXIS_0)
        + on(NO_AXIS, MOTION_2A_IPM=TWO_AXES | SWAPPED | AXIS_0 | AXIS_2)
        + on(AXIS_0, MOTION_04_SV=500, MOTION_05_DV=500, MOTION_02_AC=6, MOTION_03_DC=7)
        + on(AXIS_2, MOTION_08_CP=10, MOTION_06_TP=0)
        + on(AXIS_0, MOTION_08_CP=-20, MOTION_06_TP=40),
        record="circular",
        changes={"main_axis": 0, "center_point_x": 10.9, "center_point_y": -20, "finish_point_x": 0}
        | {"finish_point_y": 40, "direction": 1, "speed": 500, "acceleration": 6, "deceleration": 7},
    ),
    Interpolation(
        "Motion_cfgCircularInterpo",
        (1, 1, 1, 2, 3, 4, 0),
        outputs(AXIS_1, AXIS_1)
        + on(NO_AXIS, MOTION_2A_IPM=TWO_AXES | AXIS_1)
        + on(AXIS_1, MOTION_04_SV=10000, MOTION_05_DV=10000, MOTION_02_AC=100000, MOTION_03_DC=100000)
        + on(AXIS_1, MOTION_08_CP=1, MOTION_06_TP=3)
        + on(AXIS_1, MOTION_08_CP=2, MOTION_06_TP=4),
        record="circular",
        changes={"main_axis": 1, "center_point_x": 1, "center_point_y": 2, "finish_point_x": 3, "finish_point_y": 4}
        | {"direction": 0, "speed": 10000, "acceleration": 100000, "deceleration": 100000},
    ),
    Interpolation(
        "_Motion_writeHelicalInterpolation",
        (1, 2, 3, 4, 0, 5, 1, 6, 7, 8, 1),
        helix(AXIS_3, DV=8, HLN=7, CP=(3, 4), TP=(1, 2, 6)),
        record="helical",
        changes={"finish_point_axis1": 1, "finish_point_axis2": 2, "center_point_axis1": 3, "center_point_axis2": 4}
        | {"enable_axis3": 0, "pitch_axis3": 5, "enable_axis4": 1, "pitch_axis4": 6}
        | {"rotation_number": 7, "circular_speed": 8, "circular_direction": 1},
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
    for mode, code in [(2, pyzvr.MOTION_61_LHK2), (3, pyzvr.MOTION_62_LHK3), (4, pyzvr.MOTION_63_LHK4), (5, None)]:
        ratchet.linear_interpo.mode = mode
        ratchet.chip.values[code] = REFUSED
        assert call(ratchet, "Motion_startLinearInterpo", 0) == (pyzvr.errFirmwareMotion if code else 0)
        assert frames_of(ratchet) == ([Frame(code, NO_AXIS)] if code else [])
    for direction, code in [(0, pyzvr.MOTION_64_CHKCW), (1, pyzvr.MOTION_65_CHKCCW)]:
        ratchet.circular_interpo.direction = direction
        assert call(ratchet, "Motion_startCircularInterpo", 0) == 0
        assert frames_of(ratchet) == [Frame(code, NO_AXIS)]


@pytest.mark.parametrize(
    "direction, calculation, move",
    [(0, pyzvr.MOTION_6B_HLPCW, pyzvr.MOTION_69_HLCW), (1, pyzvr.MOTION_6C_HLPCCW, pyzvr.MOTION_6A_HLCCW)],
)
def test_a_helix_waits_for_its_calculation(ratchet, call, direction, calculation, move):
    prepared = helix(AXIS_2, DV=900, HLN=2, CP=(10, 20), TP=(30, 40, 50))
    asked = 3 * on(NO_AXIS, MOTION_E8_RR0=0) + on(NO_AXIS, MOTION_3B_HLV=0)
    states = iter([1, 15, 14])
    answer = ratchet.chip
    ratchet.client_cmd.replies[pyzvr.MOTION] = lambda data: (
        data[:3] + bytes([0, 0, 0, next(states)]) if data[1] == pyzvr.MOTION_E8_RR0 else answer(data)
    )
    answer.values = {pyzvr.MOTION_3B_HLV: 123456, calculation: REFUSED}
    arguments = (0, 10, 20, 30, 40, 1, 50, 0, 60, 2, 900, direction, 60000)
    assert call(ratchet, "Motion_cfgHelicalInterpo", *arguments) == 0
    assert frames_of(ratchet) == prepared + [Frame(calculation, NO_AXIS)] + asked
    assert ratchet.helical_interpo.calculation_result == 123456
    assert call(ratchet, "Motion_startHelicalInterpo", 0) == 0
    assert frames_of(ratchet) == prepared + on(NO_AXIS, MOTION_1B_HLV=123456) + [Frame(move, NO_AXIS)]


def test_a_calculation_that_takes_too_long_is_no_error(ratchet, call):
    ratchet.chip.values = {pyzvr.MOTION_E8_RR0: 1, pyzvr.MOTION_3B_HLV: 5}
    assert call(ratchet, "Motion_cfgHelicalInterpo", 0, 1, 2, 3, 4, 0, 0, 0, 0, 1, 9, 0, 0) == 0
    assert frames_of(ratchet)[-2:] == on(NO_AXIS, MOTION_6B_HLPCW=0, MOTION_E8_RR0=0)
    assert ratchet.helical_interpo.calculation_result == 0
