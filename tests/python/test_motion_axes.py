"""Operations on the axes of the motion controller: what goes to the chip and in which order, and what the host remembers."""

import contextlib
import copy
from typing import NamedTuple
from unittest import mock

import pytest
from cases import operation_of
from motion_products import ALL, ALL_AXES, AXIS_0, AXIS_1, AXIS_2, AXIS_3, NO_AXIS, REFUSED, REVERSE_LIMIT, WR2, WR3
from motion_products import FORWARD_LIMIT, HOME, Frame, frames_of, on, outputs, rewrites

import pyzvr

pytestmark = pytest.mark.filterwarnings("ignore:Warning -9")

# Words of a SYNC action: its cause, and in the second digit what it does.
COMPARED, DRIVE_ENDS, CAPTURE_RISES, CAPTURE_FALLS = 1, 6, 10, 11
LATCH_LOGICAL, LATCH_REAL, START_FORWARD, START_REVERSE, START_SPLIT = 5 << 4, 6 << 4, 13 << 4, 14 << 4, 23 << 4


class AxisCase(NamedTuple):
    """One operation on axis 1 of the first port."""

    operation: str
    arguments: tuple  # after the port
    frames: list = []  # what is sent
    reads: dict = {}  # what the chip answers, by the code of the command
    result: object = 0
    record: dict = {}  # fields of the axis that change
    settings: dict = {}  # entries of its settings that change


def refused(case):
    """The same case, where the chip refuses the last command."""
    return case._replace(reads=case.reads | {case.frames[-1].code: REFUSED}, result=pyzvr.errFirmwareMotion)


def sets(operation, arguments, register, written, settings, held=0):
    """A case whose frames read a register, which holds the same each time, and write these values into it."""
    frames = rewrites(AXIS_1, register, *written)
    return AxisCase(operation, arguments, frames, {frames[0].code: held}, settings=settings)


def drive(axes, TP, DV=10000, AC=100000, DC=100000):
    """Frames that set up a drive. The initial speed goes by the acceleration that the record had before."""
    return on(axes, MOTION_06_TP=TP, MOTION_05_DV=DV, MOTION_04_SV=347, MOTION_02_AC=AC, MOTION_03_DC=DC)


def stops_at_limits(axes):
    """Frames that let a limit end a drive without deceleration."""
    return rewrites(axes, WR2, WR2.HLMM)


def search(arguments, mode, end, settings):
    """A case that sets up a search: frames with its mode after its drive, frames at the end."""
    _, kind, _, speed, rate, *_ = arguments
    frames = outputs(AXIS_1) + drive(AXIS_1, TP=0, DV=speed, AC=rate, DC=rate) + mode + stops_at_limits(AXIS_1) + end
    record = {"search_type": kind, "search_velocity": speed, "search_accerleration": rate, "velocity": speed}
    record |= {"acceleration": rate, "deceleration": rate, "stop": 1}
    return AxisCase("Motion_cfgFindRef", arguments, frames, record=record, settings=settings)


def search_mode(arguments, H1M, settings):
    frames = on(AXIS_1, MOTION_23_H1M=H1M) + stops_at_limits(AXIS_1)
    return AxisCase("_Motion_setAutoHome1", arguments, frames, record={"stop": 1}, settings=settings)


def limits(*values):
    return dict(zip(("Forward Enable", "Reverse Enable", "Forward Polarity", "Reverse Polarity"), values))


def signals(*values):
    names = ("Stepper Output", "Inverse Motion Direction", "Inverse Encoder Direction", "Servo On Polarity")
    return dict(zip(names, values))


def servo(operation, GPIO, LP):
    frames = on(AXIS_1, MOTION_1C_GPIO=GPIO, MOTION_30_LP=0, MOTION_09_LP=LP)
    return AxisCase(operation, (1,), frames, {pyzvr.MOTION_30_LP: LP})


def capture(kind, mode, word):
    record = {"capture_type": kind, "capture_mode": mode}
    return AxisCase("Motion_cfgCapture", (1, kind, mode), on(AXIS_1, MOTION_29_S3M=word), record=record)


def break_points(**fields):
    """Fields of an axis, where those that all cases have in common are added."""
    fields |= {"start_position": 100, "pulse_width": 2, "pulse_period": 3, "pulse_number": 4}
    return {"breakpoint_" + name: value for name, value in fields.items()}


CONFIGURATION = [
    refused(AxisCase("Motion_open", (), on(ALL_AXES, MOTION_21_P1M=0x5505))),
    AxisCase("Motion_close", ()),
    sets("Motion_cfgAlarm", (1, 1, 0), WR2, [ALL, ALL - WR2.ALML], {"Alarm Enable": 1, "Alarm Polarity": 0}, held=ALL),
    sets("Motion_cfgHome", (1, 1, 1), WR2, [WR2.SP1E, WR2.SP1L], {"Home Enable": 1, "Home Polarity": 1}),
    sets(
        "Motion_cfgInposi",
        (1, 0, 1),
        WR2,
        [ALL - WR2.INPE, ALL],
        {"Inposition Enable": 0, "Inposition Polarity": 1},
        held=ALL,
    ),
    sets("Motion_cfgLimit", (1, 1, 0, 1), WR2, [WR2.HLME, WR2.HLMM | WR2.HLML], limits(1, 0, 1, 1), held=WR2.HLMM),
    sets("Motion_cfgLimit", (1, 0, 0, 0), WR2, [ALL - WR2.HLME - WR2.HLMM, ALL - WR2.HLML], limits(0, 0, 0, 0), ALL),
    # Statuses of several commands merge to the greatest; a refusal is negative.
    sets(
        "Motion_cfgAxis",
        (1, 0, 1, 1, 0),
        WR3,
        [ALL - WR3.MANLD - WR3.DSNDE - WR3.SACC - WR3.DPL - WR3.DPINV, ALL],
        signals(0, 1, 1, 0),
    )._replace(reads={pyzvr.MOTION_3F_WR3: ALL, pyzvr.MOTION_E3_WR3: REFUSED}),
    sets("Motion_cfgAxis", (1, 1, 1, 0, 1), WR3, [0xFF00 | WR3.DPINV, ALL - WR3.PIINV], signals(1, 1, 0, 1), held=ALL),
    refused(sets("Motion_cfgEncoder", (1, 0), WR2, [WR2.SP2L], {"Encoder Z Polarity": 0})),
    sets("Motion_cfgEncoder", (1, 1), WR2, [ALL - WR2.SP2L], {"Encoder Z Polarity": 1}, held=ALL),
    AxisCase("_Motion_setInstantLimitStop", (1, 1), stops_at_limits(AXIS_1), record={"stop": 1}),
    AxisCase("Motion_cfgJerkAndAccelMode", (1, 7, 2), result=None, record={"jerk": 7, "acceleration_mode": 2}),
    AxisCase("Motion_rstEncoderPosi", (1,), on(AXIS_1, MOTION_09_LP=0, MOTION_0A_RP=0), record={"encoder_position": 0}),
    AxisCase(
        "Motion_rstEncoderPosi", (1, -5), on(AXIS_1, MOTION_09_LP=-5, MOTION_0A_RP=-5), record={"encoder_position": -5}
    ),
    servo("Motion_enableServoOn", GPIO=0x101, LP=-9),
    servo("Motion_enableServoOff", GPIO=0x100, LP=9),
    refused(capture(0, 1, LATCH_REAL | CAPTURE_RISES)),
    capture(1, 1, LATCH_REAL | CAPTURE_FALLS),
    capture(0, 0, LATCH_LOGICAL | CAPTURE_RISES),
    capture(1, 0, LATCH_LOGICAL | CAPTURE_FALLS),
    AxisCase("Motion_enableCapture", (1, 1), on(AXIS_1, MOTION_88_SYNC3EN=0)),
    AxisCase("Motion_enableCapture", (1, 0), on(AXIS_1, MOTION_98_SYNC3DIS=0)),
    AxisCase("Motion_enableBreakPoint", (1, 1), on(AXIS_1, MOTION_81_SYNC0EN=0)),
    AxisCase("Motion_enableBreakPoint", (1, 0), on(AXIS_1, MOTION_91_SYNC0DIS=0)),
    AxisCase(
        "Motion_cfgBreakPoint",
        (1, 0, 0, 100, 2, 3, 4),
        on(AXIS_1, MOTION_17_SP1=2 << 16 | 3, MOTION_16_TM=4, MOTION_42_P2M=0, MOTION_22_P2M=0xC00)
        + on(AXIS_1, MOTION_40_MRM=0, MOTION_20_MRM=8, MOTION_10_MR0=100, MOTION_26_S0M=START_SPLIT | COMPARED),
        {pyzvr.MOTION_42_P2M: 0, pyzvr.MOTION_40_MRM: 15},
        record=break_points(mode=0, polarity=0),
    ),
    AxisCase(
        "Motion_cfgBreakPoint",
        (1, 1, 1, 100, 2, 3, 4),
        on(AXIS_1, MOTION_17_SP1=2 << 16 | 3, MOTION_16_TM=4, MOTION_42_P2M=0, MOTION_22_P2M=ALL - 0x400)
        + on(AXIS_1, MOTION_40_MRM=0, MOTION_20_MRM=24, MOTION_30_LP=0, MOTION_10_MR0=-50)
        + on(AXIS_1, MOTION_26_S0M=START_SPLIT | COMPARED),
        {pyzvr.MOTION_42_P2M: ALL, pyzvr.MOTION_40_MRM: 16, pyzvr.MOTION_30_LP: -150},
        record=break_points(mode=1),
    ),
    AxisCase(
        "_Motion_sendAllConfiguration",
        (1,),
        outputs(AXIS_1) + rewrites(AXIS_1, WR2, WR2.SP2L, 0, WR2.HLME, 0, 0, 0, WR2.HLML, 0, 0),
    ),
    # Moves
    AxisCase(
        "Motion_cfgAxisMove",
        (1, 1, -500, -400, 10000, 10000),
        drive(AXIS_1, TP=-500, DV=400, AC=10000, DC=10000) + stops_at_limits(AXIS_1),
        record=dict(
            operation_mode=1, target_position=-500, velocity=-400, acceleration=10000, deceleration=10000, stop=1
        ),
    ),
    AxisCase(
        "Motion_cfgAxisMove",
        (1, 0),
        drive(AXIS_1, TP=0) + stops_at_limits(AXIS_1),
        {pyzvr.MOTION_3F_WR3: 7, pyzvr.MOTION_06_TP: REFUSED},
        record={"stop": 1},
    ),
    AxisCase(
        "_Motion_writeAcceleration",
        (1, 10, 20),
        on(AXIS_1, MOTION_02_AC=10, MOTION_03_DC=20) + rewrites(AXIS_1, WR3, WR3.DSNDE),
        {pyzvr.MOTION_3F_WR3: WR3.MANLD | WR3.SACC},
        record={"acceleration": 10, "deceleration": 20},
    ),
    refused(AxisCase("Motion_overrideAxisPosi", (1, -3), on(AXIS_1, MOTION_06_TP=-3), record={"target_position": -3})),
    AxisCase(
        "Motion_overrideAxisAccel",
        (1, 9, 9),
        on(AXIS_1, MOTION_02_AC=9, MOTION_03_DC=9),
        record={"acceleration": 9, "deceleration": 9},
    ),
    AxisCase("Motion_stop", (1, 0), on(AXIS_1, MOTION_56_DRVSBRK=0), record={"stop_decl": 0}),
    refused(AxisCase("Motion_stop", (1, 1), on(AXIS_1, MOTION_57_DRVFBRK=0), record={"stop_decl": 1})),
    refused(AxisCase("Motion_findRef", (1,), on(AXIS_1, MOTION_5A_HMSRC=0))),
    search(
        (1, 0, 0, 2000, 10000, 25, 1, 30),
        on(AXIS_1, MOTION_23_H1M=1 << 15 | 0b10101),
        on(AXIS_1, MOTION_24_H2M=0b110, MOTION_14_HV=500, MOTION_06_TP=-30),
        {"Offset Position": 30, "Approach Velocity Percent": 25, "Enable Reset Position": 1}
        | {"Initial Search Direction": 0, "Final Approach Direction": 0},
    ),
    search(
        (1, 1, 1, 10, 4, 0.0),
        on(AXIS_1, MOTION_23_H1M=0b1100),
        on(AXIS_1, MOTION_24_H2M=0, MOTION_14_HV=1, MOTION_06_TP=0),
        {"Offset Position": 0, "Approach Velocity Percent": 0.0},
    ),
    search_mode((1, 0, 1, 1, 5, 0), 0b110111, {"Offset Position": 0, "Approach Velocity Percent": 5}),
    search_mode(
        (1, 2, 1, 0, 0, -1),
        1 << 15 | 0b1101011,
        {"Offset Position": -1, "Approach Velocity Percent": 0, "Final Approach Direction": 0},
    ),
    AxisCase("Motion_getMoveStatus", (1,), on(NO_AXIS, MOTION_E8_RR0=0), {pyzvr.MOTION_E8_RR0: ALL_AXES - AXIS_1}, 1),
    AxisCase("Motion_getMoveStatus", (1,), on(NO_AXIS, MOTION_E8_RR0=0), {pyzvr.MOTION_E8_RR0: AXIS_1}),
    AxisCase("Motion_checkRef", (3,), on(NO_AXIS, MOTION_E8_RR0=0), {pyzvr.MOTION_E8_RR0: AXIS_3}),
    AxisCase("Motion_getHomeStatus", (1,), on(AXIS_1, MOTION_EB_RR3=0), {pyzvr.MOTION_EB_RR3: HOME}, 1),
    AxisCase("Motion_getLimitStatus", (1,), on(AXIS_1, MOTION_EB_RR3=0), {pyzvr.MOTION_EB_RR3: REVERSE_LIMIT}, [0, 1]),
    AxisCase("Motion_readCapturePoint", (1,), on(AXIS_1, MOTION_37_MR3=0), {pyzvr.MOTION_37_MR3: -7}, -7),
    AxisCase("Motion_getLogicalPosi", (1,), on(AXIS_1, MOTION_30_LP=0), {pyzvr.MOTION_30_LP: -7}, -7),
    AxisCase("Motion_getEncoderPosi", (1,), on(AXIS_1, MOTION_31_RP=0), {pyzvr.MOTION_31_RP: -7}, -7),
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
    shape = on(AXIS_1, MOTION_02_AC=10, MOTION_03_DC=10, MOTION_00_JK=33, MOTION_01_DJ=33)
    assert frames_of(ratchet) == shape + rewrites(AXIS_1, WR3, WR3.SACC)


def test_a_servo_that_is_active_low(ratchet, call):
    ratchet.axis_1.motion_dict["Servo On Polarity"] = 0
    call(ratchet, "Motion_enableServoOn", 0, 0)
    call(ratchet, "Motion_enableServoOff", 0, 0)
    switched = [frame for frame in frames_of(ratchet) if frame.code == pyzvr.MOTION_1C_GPIO]
    assert switched == on(AXIS_0, MOTION_1C_GPIO=0x100) + on(AXIS_0, MOTION_1C_GPIO=0x101)


def test_inputs_go_by_the_level_of_the_forward_limit(ratchet, call):
    ratchet.axis_1.motion_dict.update({"Forward Polarity": 0, "Home Polarity": 1})
    ratchet.chip.values = {pyzvr.MOTION_EB_RR3: HOME | FORWARD_LIMIT}
    assert call(ratchet, "Motion_getHomeStatus", 0, 0) == 0
    assert call(ratchet, "Motion_getLimitStatus", 0, 0) == [0, 1]


@pytest.mark.parametrize(
    "code, records",
    [
        (pyzvr.MOTION_54_DRVAB, [(0, 1), (0, None)]),
        (pyzvr.MOTION_50_DRVRL, [(1, 1), (1, "fast")]),
        (pyzvr.MOTION_52_DRVVP, [(2, 0)]),
        (pyzvr.MOTION_53_DRVVM, [(2, -1)]),
    ],
)
def test_a_move_starts_by_the_record(ratchet, call, code, records):
    ratchet.chip.values[code] = REFUSED
    for ratchet.axis_3.operation_mode, ratchet.axis_3.velocity in records:
        assert call(ratchet, "Motion_startSingleAxisMove", 0, 2) == pyzvr.errFirmwareMotion
        assert frames_of(ratchet) == [Frame(code, AXIS_2)]


def waiting(axes, TP):
    """Frames that set up an axis and hold its start back."""
    return outputs(axes) + drive(axes, TP) + stops_at_limits(axes) + on(axes, MOTION_77_DHOLD=0)


def test_a_synchronous_start_stops_at_its_release(ratchet, call):
    ratchet.axis_4.target_position, ratchet.axis_4.operation_mode = 70, 1
    expected = waiting(AXIS_3, 70) + on(AXIS_3, MOTION_50_DRVRL=0) + waiting(AXIS_0, 0) + on(AXIS_0, MOTION_54_DRVAB=0)
    with pytest.raises(AttributeError, match="_checkMotionAxis"):
        call(ratchet, "Motion_startMultiAxisMove", 0, [3, 0])
    assert frames_of(ratchet) == expected
    ratchet._checkMotionAxis = lambda mask: None
    assert call(ratchet, "Motion_startMultiAxisMove", 0, [3, 0]) == 0
    assert frames_of(ratchet) == expected + on(AXIS_0 | AXIS_3, MOTION_78_DFREE=0)
    with pytest.raises(pyzvr.InputTypeNotCorrectError):
        call(ratchet, "Motion_startMultiAxisMove", 0, [3, "0"])
    assert frames_of(ratchet) == []


def test_overriding_the_speed_of_a_move(ratchet, call):
    def override(velocity):
        call(ratchet, "Motion_overrideAxisVelocity", 0, 0, velocity)
        return frames_of(ratchet), ratchet.axis_1.velocity, ratchet.axis_1.velocity_move_direction

    def turn(after, speed):
        then = dict(MOTION_82_SYNC1EN=0, MOTION_56_DRVSBRK=0, MOTION_05_DV=speed)
        return on(AXIS_0, MOTION_00_JK=0, MOTION_27_S1M=after | DRIVE_ENDS, **then)

    assert override(-5) == (on(AXIS_0, MOTION_05_DV=5), -5, 0)
    ratchet.axis_1.operation_mode = 2
    assert override(-6) == (on(AXIS_0, MOTION_05_DV=6), -6, 0)
    assert override(7) == (turn(START_FORWARD, 7), 7, 1)
    assert override(8) == (on(AXIS_0, MOTION_05_DV=8), 8, 1)
    assert override(0) == (turn(START_REVERSE, 0), 0, 0)


def test_an_axis_that_there_is_not_is_told_but_not_refused(ratchet, call):
    assert ratchet._checkMCX514Axis(4) is ratchet._checkMCX514Axis(-1, True) is pyzvr.MotionAxisError
    assert ratchet._checkMCX514Axis(3) is True
    assert ratchet._checkMCX514Axis(9, False) is True
    assert call(ratchet, "Motion_stop", 0, 7, 1) == 0
    assert frames_of(ratchet) == on(1 << 7, MOTION_57_DRVFBRK=0)
    assert ratchet.axis_4.stop_decl == 1
    assert ratchet._getAxisHandle(7) is ratchet.axis_4


# A position of a bit is not negative: what has to be sent before a bit is asked for is sent, and no more.
@pytest.mark.parametrize(
    "operation, arguments, frames",
    [
        ("Motion_stop", (-1, 0), on(NO_AXIS, MOTION_56_DRVSBRK=0)),
        ("Motion_findRef", (-2,), on(NO_AXIS, MOTION_5A_HMSRC=0)),
        ("Motion_getLogicalPosi", (-1,), on(NO_AXIS, MOTION_30_LP=0)),
        ("Motion_getMoveStatus", (-1,), on(NO_AXIS, MOTION_E8_RR0=0)),
        ("Motion_startMultiAxisMove", ([0, -1],), waiting(AXIS_0, 0) + on(AXIS_0, MOTION_54_DRVAB=0)),
        ("Motion_cfg2AxisLinearInterpo", (1, 5, -1, 6), outputs(NO_AXIS, AXIS_1)),
        ("Motion_cfgCircularInterpo", (0, -1, 1, 2, 3, 4, 0), outputs(AXIS_0, NO_AXIS)),
    ],
)
def test_a_negative_axis_goes_on_as_far_as_its_steps_lead(ratchet, call, operation, arguments, frames):
    fails = len(frames) > 1 or operation == "Motion_getMoveStatus"
    with pytest.raises(ValueError, match="index: .*negative") if fails else contextlib.nullcontext():
        call(ratchet, operation, 0, *arguments)
    assert frames_of(ratchet) == frames
    if operation == "Motion_cfg2AxisLinearInterpo":
        record = ratchet.linear_interpo
        found = record.main_axis, record.main_dest, record.second_axis, record.mode, record.speed
        assert found == (-1, 6, 1, 2, 10000)


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
        assert call(pawl, "_Motion_read", 0, pyzvr.PAWL_01_GSTAT) == reply[3:]
        assert type(call(pawl, "_Motion_read", 0, pyzvr.PAWL_01_GSTAT)) is type(reply)
        assert call(pawl, "_Motion_readDI", 0) is reply
        assert call(pawl, "Motion_getProcessState", 0) == (1, reply[2:])
        assert call(pawl, "Motion_readCurrentVelocity", 0) == 0x03040506
        assert pawl.status_bit1_driver_err == 1
