"""The stepper drive."""

import asyncio
import struct
from typing import NamedTuple

import pytest
from cases import Exchange, operation_of
from motion_products import DRIVE_REFUSED, REFUSED, WRONG, reads, registers, rewritten, sent_by, writes
from simulators import connected

import pyzvr

pytestmark = pytest.mark.filterwarnings("ignore:Warning -9")

I32, U32 = pyzvr.convertI32To4U8, pyzvr.convertU32To4U8
PLACE = pyzvr.PAWL_21_XACTUAL
RESULTS = {0: 0, REFUSED: pyzvr.errFirmwareMotion, DRIVE_REFUSED: pyzvr.errFirmwareDrive}
FIND = [*U32(1), *U32(2), *U32(3), 4, 5, *I32(-6)]


def started(operation, command, arguments, *sent, status=0):
    """A case on port 0: what goes to the drive after the port, and the status that it replies."""
    return Exchange(operation, (0, *arguments), command, [0, *sent], bytes([0, status]), RESULTS[status])


DRIVE = [
    started("Motion_startVelocticyMove", "START_V_MOVE", (1, -1, 2, 3), *U32(1), *U32(2), *U32(3), 255),
    started(
        "Motion_startPositionMove",
        "START_P_MOVE",
        (-9, 1, 2, 3, 7),
        *(*I32(-9), *U32(1), *U32(2), *U32(3), 7),
        status=DRIVE_REFUSED,
    ),
    started("Motion_startScanMove", "START_SCAN_MOVE", (-9, 9, 1, 2), *I32(-9), *I32(9), *U32(1), *U32(2)),
    started(
        "Motion_startFindLimit",
        "START_FIND_END",
        (257, 1, 2, 3, -4, "true"),
        *(1, *U32(1), *U32(2), *U32(3), *I32(-4), 1),
    ),
    started("Motion_startFindHome", "START_FIND_HOME", (1, 2, 3, 4, 5, -6, "true"), *FIND, 1),
    started("Motion_startFindHome", "START_FIND_HOME", (1, 2, 3, 260, 261, -6, True), *FIND, 0),
    started("Motion_startFindZPolarity", "START_FIND_Z", (1, 2, 3, 4, 5, -6, "True"), *FIND, 0, status=REFUSED),
    Exchange("Motion_getProcessState", (0,), "GET_PROC_STATE", sent=[0], reply=b"\0\5rest", result=(5, b"rest")),
    started("Motion_stopProcess", "STOP_PROC", (), status=DRIVE_REFUSED),
    started("Motion_resetFactory", "RESET_FACTORY", ()),
    Exchange("Motion_enableServoOn", (0,), pyzvr.SET_AND_WRITE_DO, sent=[2, 0, 1, 0, 0], reply=b"", result=0),
    Exchange("Motion_enableServoOff", (0,), pyzvr.SET_AND_WRITE_DO, sent=[2, 0, 1, 0, 1], reply=b"", result=0),
    Exchange("_Motion_writeDO", (3, 4, 1), pyzvr.SET_AND_WRITE_DO, sent=[3, 0, 16, 0, 16], reply=b"", result=0),
    Exchange("_Motion_readDI", (3,), pyzvr.READ_AND_GET_DI, sent=[3, 0, 7], reply=b"abc", result=b"abc"),
    Exchange(
        "Motion_getLimitStatus", (0,), pyzvr.READ_AND_GET_DI, sent=[1, 0, 7], reply=b"\1\xff\5more", result=[1, 0, 1]
    ),
    Exchange("_Motion_read", (1, PLACE), "READ_REG", sent=[1, PLACE], reply=b"\1\0\0rest", result=b"rest"),
    Exchange(
        "_Motion_write", (1, PLACE, 5), "WRITE_REG", [1, PLACE, 0, *U32(5)], bytes([1, 0, 0, 0, 0, 0, REFUSED]), REFUSED
    ),
]


@pytest.mark.parametrize("case", DRIVE, ids=operation_of)
def test_drive(pawl, call, case):
    code = getattr(pyzvr, "MOTION_" + case.command) if isinstance(case.command, str) else case.command
    pawl.client_cmd.replies = {code: case.reply}
    assert call(pawl, case.operation, *case.arguments) == case.result
    assert pawl.client_cmd.sent == [(code, bytes(case.sent))]


class RegisterCase(NamedTuple):
    """One operation on registers of the drive."""

    operation: str
    arguments: tuple  # after the port
    sent: list = []
    held: dict = {}  # values of registers
    result: object = 9  # the status that a write gives


def reading(operation, result, **held):
    """A case that reads registers, which hold these values."""
    values = {getattr(pyzvr, name): value for name, value in held.items()}
    return RegisterCase(operation, (), reads(*values), values, result)


def rewriting(operation, arguments, **values):
    """A case that reads and writes one register after the other: what it holds, and what is written."""
    held = {getattr(pyzvr, name): before for name, (before, _) in values.items()}
    return RegisterCase(operation, arguments, rewritten(**{name: after for name, (_, after) in values.items()}), held)


REGISTERS = [
    RegisterCase("_Motion_setGlobalConfig", (7,), writes(PAWL_00_GCONF=7)),
    reading("_Motion_getGlobalConfig", b"\0\0\1\2", PAWL_00_GCONF=258),
    RegisterCase("_Motion_clearFault", (), writes(PAWL_01_GSTAT=31)),
    RegisterCase("_Motion_setGlobalStatus", (7,), writes(PAWL_01_GSTAT=7)),
    reading("_Motion_getGlobalStatus", b"\0\0\0\3", PAWL_01_GSTAT=3),
    RegisterCase("_Motion_setRampMode", (3,), writes(PAWL_20_RAMPMODE=3)),
    RegisterCase("_Motion_resetPosition", (5,), writes(PAWL_21_XACTUAL=5)),
    reading("_Motion_readCurrentPosition", b"\0\0\0\1", PAWL_21_XACTUAL=1),
    reading("_Motion_readCurrentVelocity", b"\0\0\0\1", PAWL_22_VACTUAL=1),
    RegisterCase("_Motion_setLimitSwitch", (1,), writes(PAWL_34_SWMODE=1)),
    reading("_Motion_getLimitSwitch", b"\0\0\0\1", PAWL_34_SWMODE=1),
    RegisterCase("_Motion_setEncoderPosition", (1,), writes(PAWL_39_XENC=1)),
    reading("_Motion_readEncoderPosition", b"\0\0\0\1", PAWL_39_XENC=1),
    RegisterCase("_Motion_setEncoderDirection", (1,), writes(PAWL_3A_ENC_CONST=1)),
    reading("_Motion_readEncoderDirection", b"\0\0\0\1", PAWL_3A_ENC_CONST=1),
    RegisterCase(
        "_Motion_setRamp",
        (),
        writes(PAWL_23_VSTART=0, PAWL_2B_VSTOP=500, PAWL_24_A1=100000, PAWL_2F_A2=100000)
        + writes(PAWL_26_AMAX=100000, PAWL_2A_D1=100000, PAWL_30_D2=100000, PAWL_28_DMAX=100000),
    ),
    RegisterCase("_Motion_getServeoOnStatus", (), result=0),
    RegisterCase("Motion_open", (), result=0),
    RegisterCase("Motion_close", (), result=0),
    reading("Motion_readCurrentVelocity", 4294967295, PAWL_22_VACTUAL=4294967295),
    reading("Motion_readEncoderPosition", [8, 7], PAWL_39_XENC=8, PAWL_21_XACTUAL=7),
    reading("Motion_getAlarmStatus", 0, PAWL_01_GSTAT=0xFFFFEFF9),
    reading("Motion_getAlarmStatus", 1, PAWL_01_GSTAT=0x1000),
    reading("Motion_getAlarmStatus", 1, PAWL_01_GSTAT=4),
    reading("Motion_getAlarmStatus", 1, PAWL_01_GSTAT=2),
    RegisterCase("Motion_rstEncoderPosi", (6,), writes(PAWL_20_RAMPMODE=3, PAWL_21_XACTUAL=6, PAWL_39_XENC=6)),
    RegisterCase("Motion_rstEncoderPosi", (), writes(PAWL_20_RAMPMODE=3, PAWL_21_XACTUAL=0, PAWL_39_XENC=0)),
    RegisterCase("Motion_cfgEncoder", (0, 6), writes(PAWL_21_XACTUAL=6, PAWL_39_XENC=6, PAWL_3A_ENC_CONST=1)),
    rewriting("Motion_cfgAxisDirection", (1,), PAWL_00_GCONF=(8, 24), PAWL_34_SWMODE=(3, 19)),
    rewriting("Motion_cfgAxisDirection", (7,), PAWL_00_GCONF=(24, 8), PAWL_34_SWMODE=(19, 3)),
    rewriting("Motion_cfgLimit", (1, 0, 0), PAWL_34_SWMODE=(0xFFFFFFF0, 0xFFFD)),
    rewriting("Motion_cfgLimit", (0, 1, 1), PAWL_34_SWMODE=(0x12345F, 0x3452)),
]


@pytest.mark.parametrize("case", REGISTERS, ids=operation_of)
def test_registers_of_the_drive(pawl, call, case):
    registers(pawl, case.held, status=9)
    assert call(pawl, case.operation, 0, *case.arguments) == case.result
    assert sent_by(pawl) == case.sent


def test_what_the_drive_remembers(pawl, call):
    assert (pawl.axis.acceleration, len(pawl.TMC5240_default_dict)) == (100000, 22)
    assert pawl.TMC5240_default_dict["x68_MSLUT8"] == [4294934614, pyzvr.PAWL_68_MSLUTSEL]
    assert pawl.TMC5240_main_dict["A2_x2F"] == [100000, pyzvr.PAWL_2F_A2]
    with pytest.raises(AttributeError):
        call(pawl, "_Motion_getInpositionStatus", 0)
    registers(pawl, chip=0b10100100)
    call(pawl, "_Motion_getGlobalConfig", 0)
    assert call(pawl, "_Motion_getInpositionStatus", 0) == pawl.status_bit2_sg2 == pawl.status_bit7_stopr == 1
    assert (pawl.status_bit0_resetflag, pawl.status_bit3_standstill, pawl.status_bit6_stopl) == (0, 0, 0)
    call(pawl, "Motion_cfgLimit", 0, 0, 1, 0)
    limits = ("Forward Enable", "Reverse Enable", "Forward Polarity", "Reverse Polarity")
    assert [pawl.axis.motion_dict[key] for key in limits] == [0, 1, 0, 0]


def test_what_fails_on_the_drive(pawl, call):
    registers(pawl)
    with pytest.raises(OverflowError):
        call(pawl, "Motion_cfgEncoder", 0, 1, 5)
    assert sent_by(pawl) == writes(PAWL_21_XACTUAL=5, PAWL_39_XENC=5)
    for operation, arguments, error in [
            ("Motion_open", (1,), pyzvr.PAWLPortNotAvaliable), ("Motion_resetFactory", ("0",), WRONG),
            ("_Motion_getServeoOnStatus", (2,), pyzvr.PAWLPortNotAvaliable),
            ("Motion_startVelocticyMove", (0, 1.0, 0, 1, 1), WRONG),
            ("Motion_startVelocticyMove", (0, -1, 0, 1, 1), OverflowError),
            ("Motion_startPositionMove", (0, 1, 1, 1, "1", 0), WRONG),
            ("Motion_startPositionMove", (0, 1, 1, 1, 1, 256), ValueError),
            ("Motion_startScanMove", (0, 0, 0, 1, 1.0), WRONG), ("_Motion_write", (0, 0, -1), OverflowError)]:
        with pytest.raises(error):
            call(pawl, operation, *arguments)
        assert pawl.client_cmd.sent == []
    # Each parameter is cut one byte too short.
    pawl.client_cmd.replies[pyzvr.MOTION_GET_PARAM] = b"\0\0\x58" + bytes(88)
    with pytest.raises(struct.error):
        call(pawl, "Motion_getParameters", 0)
    assert [data for _, data in pawl.client_cmd.sent] == [b"\0"]
    assert pawl.TMC5240_default_dict["x00_GCONF"][0] == 8


def test_a_simulated_scan_that_begins_where_it_turns():
    async def scan(pawl):
        assert await pawl.Motion_startScanMove_async(0, 0, 500, 20000, 400000) == 0
        for reached in (lambda place: place > 400, lambda place: place < 100):
            while not reached((await pawl.Motion_readEncoderPosition_async(0))[1]):
                pass
        assert await pawl.Motion_stopProcess_async(0) == 0

    with connected("Pawl") as pawl:
        assert pawl.Motion_enableServoOn(0) == 0
        asyncio.run(asyncio.wait_for(scan(pawl), 20))


def test_records_are_plain_objects():
    axis = pyzvr.MotionAxis(deceleration=5)
    assert (axis.acceleration, axis.deceleration, axis.jerk) == (100000, 5, 1)
    axis.velocity = 10**12
    assert "velocity=1000000000000, " in repr(axis)
    assert pyzvr.MotionAxis().motion_dict is not axis.motion_dict
    assert repr(pyzvr.MotionCircularInterpolation()).startswith("MotionCircularInterpolation(main_axis=0, second_")
    texts = pyzvr.MotionInifile()
    assert set(axis.motion_dict) - set(texts.ini_out_dict) == {"Approach Velocity Percent", "Offset Position"}
    assert all(texts.ini_in_dict[key][text] == number
               for key, row in texts.ini_out_dict.items() for number, text in row.items())
    with pyzvr.Pawl() as pawl:
        assert isinstance(pawl, pyzvr.MotionAxis)
        assert repr(pawl) == "<Pawl, not connected>"
