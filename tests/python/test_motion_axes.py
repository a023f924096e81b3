"""Operations on the axes of the motion controller: what goes to the chip and in which order, and what the host remembers."""

import contextlib
import copy
from typing import NamedTuple
from unittest import mock

import pytest
from cases import operation_of
from motion_products import OUTPUT, frames_of, take_frames

import pyzvr

pytestmark = pytest.mark.filterwarnings("ignore:Warning -9")


class AxisCase(NamedTuple):
    """One operation on axis 1 of the first port."""

    operation: str
    arguments: tuple  # after the port
    reads: dict = {}  # what the chip answers, by the code of the command
    frames: str = ""  # what is sent: code, mask of axes, value
    result: object = 0
    record: dict = {}  # fields of the axis that change
    settings: dict = {}  # entries of its settings that change


CONFIGURATION = [
    AxisCase("Motion_open", (), reads={"21": 54}, frames="21 15 21765", result=-7019),
    AxisCase("Motion_close", ()),
    AxisCase(
        "Motion_cfgAlarm", (1, 1, 0), reads={"3E": 65535}, frames="3E 2 0, E2 2 65535, 3E 2 0, E2 2 65279",
        settings={"Alarm Enable": 1, "Alarm Polarity": 0},
    ),
    AxisCase(
        "Motion_cfgHome", (1, 1, 1), frames="3E 2 0, E2 2 8, 3E 2 0, E2 2 4",
        settings={"Home Enable": 1, "Home Polarity": 1},
    ),
    AxisCase(
        "Motion_cfgInposi", (1, 0, 1), reads={"3E": 65535}, frames="3E 2 0, E2 2 65407, 3E 2 0, E2 2 65535",
        settings={"Inposition Enable": 0, "Inposition Polarity": 1},
    ),
    AxisCase(
        "Motion_cfgLimit", (1, 1, 0, 1), reads={"3E": 4096}, frames="3E 2 0, E2 2 2048, 3E 2 0, E2 2 5120",
        settings={"Forward Enable": 1, "Reverse Enable": 0, "Forward Polarity": 1, "Reverse Polarity": 1},
    ),
    AxisCase(
        "Motion_cfgLimit", (1, 0, 0, 0), reads={"3E": 65535}, frames="3E 2 0, E2 2 59391, 3E 2 0, E2 2 64511",
        settings={"Forward Enable": 0, "Reverse Enable": 0, "Forward Polarity": 0, "Reverse Polarity": 0},
    ),
    # Statuses of several commands merge to the greatest; a refusal is negative.
    AxisCase(
        "Motion_cfgAxis", (1, 0, 1, 1, 0), reads={"3F": 65535, "E3": 54},
        frames="3F 2 0, E3 2 65368, 3F 2 0, E3 2 65535",
        settings={"Stepper Output": 0, "Inverse Motion Direction": 1, "Inverse Encoder Direction": 1,
            "Servo On Polarity": 0},
    ),
    AxisCase(
        "Motion_cfgAxis", (1, 1, 1, 0, 1), reads={"3F": 65535}, frames="3F 2 0, E3 2 65408, 3F 2 0, E3 2 63487",
        settings={"Stepper Output": 1, "Inverse Motion Direction": 1, "Inverse Encoder Direction": 0,
            "Servo On Polarity": 1},
    ),
    AxisCase(
        "Motion_cfgEncoder", (1, 0), reads={"E2": 54}, frames="3E 2 0, E2 2 16", result=-7019,
        settings={"Encoder Z Polarity": 0},
    ),
    AxisCase(
        "Motion_cfgEncoder", (1, 1), reads={"3E": 65535}, frames="3E 2 0, E2 2 65519",
        settings={"Encoder Z Polarity": 1},
    ),
    AxisCase("_Motion_setInstantLimitStop", (1, 1), frames="3E 2 0, E2 2 4096", record={"stop": 1}),
    AxisCase("Motion_cfgJerkAndAccelMode", (1, 7, 2), result=None, record={"jerk": 7, "acceleration_mode": 2}),
    AxisCase("Motion_rstEncoderPosi", (1,), frames="09 2 0, 0A 2 0", record={"encoder_position": 0}),
    AxisCase("Motion_rstEncoderPosi", (1, -5), frames="09 2 -5, 0A 2 -5", record={"encoder_position": -5}),
    AxisCase("Motion_enableServoOn", (1,), reads={"30": -9}, frames="1C 2 257, 30 2 0, 09 2 -9"),
    AxisCase("Motion_enableServoOff", (1,), reads={"30": 9}, frames="1C 2 256, 30 2 0, 09 2 9"),
    AxisCase(
        "Motion_cfgCapture", (1, 0, 1), reads={"29": 54}, frames="29 2 106", result=-7019,
        record={"capture_type": 0, "capture_mode": 1},
    ),
    AxisCase("Motion_cfgCapture", (1, 1, 1), frames="29 2 107", record={"capture_type": 1, "capture_mode": 1}),
    AxisCase("Motion_cfgCapture", (1, 0, 0), frames="29 2 90", record={"capture_type": 0, "capture_mode": 0}),
    AxisCase("Motion_cfgCapture", (1, 1, 0), frames="29 2 91", record={"capture_type": 1, "capture_mode": 0}),
    AxisCase("Motion_enableCapture", (1, 1), frames="88 2 0"),
    AxisCase("Motion_enableCapture", (1, 0), frames="98 2 0"),
    AxisCase("Motion_enableBreakPoint", (1, 1), frames="81 2 0"),
    AxisCase("Motion_enableBreakPoint", (1, 0), frames="91 2 0"),
    AxisCase(
        "Motion_cfgBreakPoint", (1, 0, 0, 100, 2, 3, 4), reads={"42": 0, "40": 15},
        frames="17 2 131075, 16 2 4, 42 2 0, 22 2 3072, 40 2 0, 20 2 8, 10 2 100, 26 2 369",
        record={"breakpoint_mode": 0, "breakpoint_polarity": 0, "breakpoint_start_position": 100,
            "breakpoint_pulse_width": 2, "breakpoint_pulse_period": 3, "breakpoint_pulse_number": 4},
    ),
    AxisCase(
        "Motion_cfgBreakPoint", (1, 1, 1, 100, 2, 3, 4), reads={"42": 65535, "40": 16, "30": -150},
        frames="17 2 131075, 16 2 4, 42 2 0, 22 2 64511, 40 2 0, 20 2 24, 30 2 0, 10 2 -50, 26 2 369",
        record={"breakpoint_mode": 1, "breakpoint_start_position": 100, "breakpoint_pulse_width": 2,
            "breakpoint_pulse_period": 3, "breakpoint_pulse_number": 4},
    ),
    AxisCase(
        "_Motion_sendAllConfiguration", (1,),
        frames=OUTPUT.format(2) + ", 3E 2 0, E2 2 16, 3E 2 0, E2 2 0, 3E 2 0, E2 2 2048, 3E 2 0, E2 2 0, 3E 2 0, "
        "E2 2 0, " "3E 2 0, E2 2 0, 3E 2 0, E2 2 1024, 3E 2 0, E2 2 0, 3E 2 0, E2 2 0",
    ),
    # Moves
    AxisCase(
        "Motion_cfgAxisMove", (1, 1, -500, -400, 10000, 10000),
        frames="06 2 -500, 05 2 400, 04 2 347, 02 2 10000, 03 2 10000, 3E 2 0, E2 2 4096",
        record={"operation_mode": 1, "target_position": -500, "velocity": -400, "acceleration": 10000,
            "deceleration": 10000, "stop": 1},
    ),
    AxisCase(
        "Motion_cfgAxisMove", (1, 0), reads={"3F": 7, "06": 54},
        frames="06 2 0, 05 2 10000, 04 2 347, 02 2 100000, 03 2 100000, 3E 2 0, E2 2 4096", record={"stop": 1},
    ),
    AxisCase(
        "_Motion_writeAcceleration", (1, 10, 20), reads={"3F": 5}, frames="02 2 10, 03 2 20, 3F 2 0, E3 2 2",
        record={"acceleration": 10, "deceleration": 20},
    ),
    AxisCase(
        "Motion_overrideAxisPosi", (1, -3), reads={"06": 54}, frames="06 2 -3", result=-7019,
        record={"target_position": -3},
    ),
    AxisCase(
        "Motion_overrideAxisAccel", (1, 9, 9), frames="02 2 9, 03 2 9", record={"acceleration": 9, "deceleration": 9},
    ),
    AxisCase("Motion_stop", (1, 0), frames="56 2 0", record={"stop_decl": 0}),
    AxisCase("Motion_stop", (1, 1), reads={"57": 54}, frames="57 2 0", result=-7019, record={"stop_decl": 1}),
    AxisCase("Motion_findRef", (1,), reads={"5A": 54}, frames="5A 2 0", result=-7019),
    AxisCase(
        "Motion_cfgFindRef", (1, 0, 0, 2000, 10000, 25, 1, 30),
        frames=OUTPUT.format(2) + ", 06 2 0, 05 2 2000, 04 2 347, 02 2 10000, 03 2 10000, 23 2 32789, 3E 2 0, "
        "E2 2 4096, " "24 2 6, 14 2 500, 06 2 -30",
        record={"search_velocity": 2000, "search_accerleration": 10000, "velocity": 2000, "acceleration": 10000,
            "deceleration": 10000, "stop": 1},
        settings={"Offset Position": 30, "Approach Velocity Percent": 25, "Initial Search Direction": 0,
            "Final Approach Direction": 0, "Enable Reset Position": 1},
    ),
    AxisCase(
        "Motion_cfgFindRef", (1, 1, 1, 10, 4, 0.0),
        frames=OUTPUT.format(2) + ", 06 2 0, 05 2 10, 04 2 347, 02 2 4, 03 2 4, 23 2 12, 3E 2 0, E2 2 4096, "
        "24 2 0, 14 2 1, " "06 2 0",
        record={"search_type": 1, "search_velocity": 10, "search_accerleration": 4, "velocity": 10,
            "acceleration": 4, "deceleration": 4, "stop": 1},
        settings={"Offset Position": 0, "Approach Velocity Percent": 0.0},
    ),
    AxisCase(
        "_Motion_setAutoHome1", (1, 0, 1, 1, 5, 0), frames="23 2 55, 3E 2 0, E2 2 4096", record={"stop": 1},
        settings={"Offset Position": 0, "Approach Velocity Percent": 5},
    ),
    AxisCase(
        "_Motion_setAutoHome1", (1, 2, 1, 0, 0, -1), frames="23 2 32875, 3E 2 0, E2 2 4096", record={"stop": 1},
        settings={"Offset Position": -1, "Approach Velocity Percent": 0, "Final Approach Direction": 0},
    ),
    AxisCase("Motion_getMoveStatus", (1,), reads={"E8": 13}, frames="E8 0 0", result=1),
    AxisCase("Motion_getMoveStatus", (1,), reads={"E8": 2}, frames="E8 0 0"),
    AxisCase("Motion_checkRef", (3,), reads={"E8": 8}, frames="E8 0 0"),
    AxisCase("Motion_getHomeStatus", (1,), reads={"EB": 2}, frames="EB 2 0", result=1),
    AxisCase("Motion_getLimitStatus", (1,), reads={"EB": 256}, frames="EB 2 0", result=[0, 1]),
    AxisCase("Motion_readCapturePoint", (1,), reads={"37": -7}, frames="37 2 0", result=-7),
    AxisCase("Motion_getLogicalPosi", (1,), reads={"30": -7}, frames="30 2 0", result=-7),
    AxisCase("Motion_getEncoderPosi", (1,), reads={"31": -7}, frames="31 2 0", result=-7),
]


@pytest.mark.parametrize("case", CONFIGURATION, ids=operation_of)
def test_axis_operations(ratchet, call, case):
    ratchet.chip.values = case.reads
    expected = copy.deepcopy([ratchet.axis_1, ratchet.axis_2, ratchet.axis_3, ratchet.axis_4])
    vars(expected[1]).update(case.record)
    expected[1].motion_dict.update(case.settings)
    assert call(ratchet, case.operation, 0, *case.arguments) == case.result
    assert frames_of(ratchet) == case.frames
    assert repr([ratchet.axis_1, ratchet.axis_2, ratchet.axis_3, ratchet.axis_4]) == repr(expected)


def test_shapes_of_acceleration(ratchet, call):
    call(ratchet, "Motion_cfgJerkAndAccelMode", 0, 1, 33, 1)
    assert call(ratchet, "_Motion_writeAcceleration", 0, 1, 10, 10) == 0
    assert frames_of(ratchet) == "02 2 10, 03 2 10, 00 2 33, 01 2 33, 3F 2 0, E3 2 4"


def test_a_servo_that_is_active_low(ratchet, call):
    ratchet.axis_1.motion_dict["Servo On Polarity"] = 0
    call(ratchet, "Motion_enableServoOn", 0, 0)
    call(ratchet, "Motion_enableServoOff", 0, 0)
    assert [frame for frame in take_frames(ratchet)[1] if frame[:2] == "1C"] == ["1C 1 256", "1C 1 257"]


def test_inputs_go_by_the_level_of_the_forward_limit(ratchet, call):
    ratchet.axis_1.motion_dict.update({"Forward Polarity": 0, "Home Polarity": 1})
    ratchet.chip.values = {"EB": 0b010000010}
    assert call(ratchet, "Motion_getHomeStatus", 0, 0) == 0
    assert call(ratchet, "Motion_getLimitStatus", 0, 0) == [0, 1]


@pytest.mark.parametrize(
    "mode, velocity, frame",
    [(0, 1, "54"), (1, 1, "50"), (2, 0, "52"), (2, -1, "53"), (0, None, "54"), (1, "fast", "50")],
)
def test_a_move_starts_by_the_record(ratchet, call, mode, velocity, frame):
    ratchet.axis_3.operation_mode, ratchet.axis_3.velocity = mode, velocity
    ratchet.chip.values[frame] = 54
    assert call(ratchet, "Motion_startSingleAxisMove", 0, 2) == -7019
    assert frames_of(ratchet) == frame + " 4 0"


def test_a_synchronous_start_stops_at_its_release(ratchet, call):
    ratchet.axis_4.target_position, ratchet.axis_4.operation_mode = 70, 1
    each = "3F {0} 0, E3 {0} 24, 06 {0} {1}, 05 {0} 10000, 04 {0} 347, 02 {0} 100000, 03 {0} 100000, 3E {0} 0, " \
           "E2 {0} 4096, 77 {0} 0, {2} {0} 0"
    expected = each.format(8, 70, 50) + ", " + each.format(1, 0, 54)
    with pytest.raises(AttributeError, match="_checkMotionAxis"):
        call(ratchet, "Motion_startMultiAxisMove", 0, [3, 0])
    assert frames_of(ratchet) == expected
    ratchet._checkMotionAxis = lambda mask: None
    assert call(ratchet, "Motion_startMultiAxisMove", 0, [3, 0]) == 0
    assert frames_of(ratchet) == expected + ", 78 9 0"
    with pytest.raises(pyzvr.InputTypeNotCorrectError):
        call(ratchet, "Motion_startMultiAxisMove", 0, [3, "0"])
    assert frames_of(ratchet) == ""


def test_overriding_the_speed_of_a_move(ratchet, call):
    def override(velocity):
        call(ratchet, "Motion_overrideAxisVelocity", 0, 0, velocity)
        return frames_of(ratchet), ratchet.axis_1.velocity, ratchet.axis_1.velocity_move_direction

    assert override(-5) == ("05 1 5", -5, 0)
    ratchet.axis_1.operation_mode = 2
    assert override(-6) == ("05 1 6", -6, 0)
    assert override(7) == ("00 1 0, 27 1 214, 82 1 0, 56 1 0, 05 1 7", 7, 1)
    assert override(8) == ("05 1 8", 8, 1)
    assert override(0) == ("00 1 0, 27 1 230, 82 1 0, 56 1 0, 05 1 0", 0, 0)


def test_an_axis_that_there_is_not_is_told_but_not_refused(ratchet, call):
    assert ratchet._checkMCX514Axis(4) is ratchet._checkMCX514Axis(-1, True) is pyzvr.MotionAxisError
    assert ratchet._checkMCX514Axis(3) is True
    assert ratchet._checkMCX514Axis(9, False) is True
    assert call(ratchet, "Motion_stop", 0, 7, 1) == 0
    assert frames_of(ratchet) == "57 128 0"
    assert ratchet.axis_4.stop_decl == 1
    assert ratchet._getAxisHandle(7) is ratchet.axis_4


# A position of a bit is not negative: what has to be sent before a bit is asked for is sent, and no more.
@pytest.mark.parametrize("operation, arguments, frames",
                         [("Motion_stop", (-1, 0), "56 0 0"), ("Motion_findRef", (-2,), "5A 0 0"),
                          ("Motion_getLogicalPosi", (-1,), "30 0 0"), ("Motion_getMoveStatus", (-1,), "E8 0 0"),
                          ("Motion_startMultiAxisMove",
                           ([0, -1],), "3F 1 0, E3 1 24, 06 1 0, 05 1 10000, 04 1 347, 02 1 100000, "
                           "03 1 100000, 3E 1 0, E2 1 4096, 77 1 0, 54 1 0"),
                          ("Motion_cfg2AxisLinearInterpo", (1, 5, -1, 6), "3F 0 0, E3 0 24, 3F 2 0, E3 2 24"),
                          ("Motion_cfgCircularInterpo", (0, -1, 1, 2, 3, 4, 0), "3F 1 0, E3 1 24, 3F 0 0, E3 0 24")])
def test_a_negative_axis_goes_on_as_far_as_its_steps_lead(ratchet, call, operation, arguments, frames):
    fails = len(frames) > 7 or operation == "Motion_getMoveStatus"
    with pytest.raises(ValueError, match="index: .*negative") if fails else contextlib.nullcontext():
        call(ratchet, operation, 0, *arguments)
    assert frames_of(ratchet) == frames
    if operation == "Motion_cfg2AxisLinearInterpo":
        record = ratchet.linear_interpo
        assert (record.main_axis, record.main_dest, record.second_axis, record.mode, record.speed) == (
            -1,
            6,
            1,
            2,
            10000,
        )


@pytest.mark.parametrize("ending", ["", "_async"])
def test_the_controller_is_made_by_the_constructor_of_its_driver(ending):
    module, driver = getattr(pyzvr, "MCX514Module" + ending), getattr(pyzvr, "MCX514Driver" + ending)
    other = getattr(pyzvr, "MCX514Driver" + ("" if ending else "_async"))
    with mock.patch.object(driver, "__init__", autospec=True, return_value=None) as constructor, mock.patch.object(
        other, "__init__", return_value=None
    ) as unused:
        made = module({0: [0]})
    assert constructor.mock_calls == [mock.call(made)]
    assert unused.mock_calls == []
    assert vars(made) == {"motion_dict": {0: [0]}}
    assert module({0: [0]}).axis_4.velocity == 10000


def test_registers_come_back_as_the_reply_was(pawl, call):
    async def given(reply):
        return reply

    for reply in (bytes(range(7)), list(range(7)), bytearray(range(7))):
        pawl._echoPacketWithRetry, pawl._echoPacketWithRetry_async = lambda *_, **__: reply, lambda *_: given(reply)
        assert call(pawl, "_Motion_read", 0, 1) == reply[3:]
        assert type(call(pawl, "_Motion_read", 0, 1)) is type(reply)
        assert call(pawl, "_Motion_readDI", 0) is reply
        assert call(pawl, "Motion_getProcessState", 0) == (1, reply[2:])
        assert call(pawl, "Motion_readCurrentVelocity", 0) == 0x03040506
        assert pawl.status_bit1_driver_err == 1
