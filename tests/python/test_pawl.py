"""The stepper drive."""

import asyncio
import struct
from typing import NamedTuple

import pytest
from cases import Exchange, operation_of
from motion_products import WRONG, registers, sent_by
from simulators import connected

import pyzvr

pytestmark = pytest.mark.filterwarnings("ignore:Warning -9")

I32, U32 = pyzvr.convertI32To4U8, pyzvr.convertU32To4U8
FIND = [0, *U32(1), *U32(2), *U32(3), 4, 5, *I32(-6)]
DRIVE = [
    Exchange(
        "Motion_startVelocticyMove", (0, 1, -1, 2, 3), command="START_V_MOVE",
        sent=[0, *U32(1), *U32(2), *U32(3), 255], reply=b"\0\0", result=0,
    ),
    Exchange(
        "Motion_startPositionMove", (0, -9, 1, 2, 3, 7), command="START_P_MOVE",
        sent=[0, *I32(-9), *U32(1), *U32(2), *U32(3), 7], reply=b"\0\x37", result=-7020,
    ),
    Exchange(
        "Motion_startScanMove", (0, -9, 9, 1, 2), command="START_SCAN_MOVE",
        sent=[0, *I32(-9), *I32(9), *U32(1), *U32(2)], reply=b"\0\0", result=0,
    ),
    Exchange(
        "Motion_startFindLimit", (0, 257, 1, 2, 3, -4, "true"), command="START_FIND_END",
        sent=[0, 1, *U32(1), *U32(2), *U32(3), *I32(-4), 1], reply=b"\0\0", result=0,
    ),
    Exchange(
        "Motion_startFindHome", (0, 1, 2, 3, 4, 5, -6, "true"), command="START_FIND_HOME", sent=[*FIND, 1],
        reply=b"\0\0", result=0,
    ),
    Exchange(
        "Motion_startFindHome", (0, 1, 2, 3, 260, 261, -6, True), command="START_FIND_HOME", sent=[*FIND, 0],
        reply=b"\0\0", result=0,
    ),
    Exchange(
        "Motion_startFindZPolarity", (0, 1, 2, 3, 4, 5, -6, "True"), command="START_FIND_Z", sent=[*FIND, 0],
        reply=b"\0\x36", result=-7019,
    ),
    Exchange(
        "Motion_getProcessState", (0,), command="GET_PROC_STATE", sent=[0], reply=b"\0\5rest", result=(5, b"rest"),
    ),
    Exchange("Motion_stopProcess", (0,), command="STOP_PROC", sent=[0], reply=b"\0\x37", result=-7020),
    Exchange("Motion_resetFactory", (0,), command="RESET_FACTORY", sent=[0], reply=b"\0\0", result=0),
    Exchange("Motion_enableServoOn", (0,), command=pyzvr.SET_AND_WRITE_DO, sent=[2, 0, 1, 0, 0], reply=b"", result=0),
    Exchange(
        "Motion_enableServoOff", (0,), command=pyzvr.SET_AND_WRITE_DO, sent=[2, 0, 1, 0, 1], reply=b"", result=0,
    ),
    Exchange(
        "_Motion_writeDO", (3, 4, 1), command=pyzvr.SET_AND_WRITE_DO, sent=[3, 0, 16, 0, 16], reply=b"", result=0,
    ),
    Exchange("_Motion_readDI", (3,), command=pyzvr.READ_AND_GET_DI, sent=[3, 0, 7], reply=b"abc", result=b"abc"),
    Exchange(
        "Motion_getLimitStatus", (0,), command=pyzvr.READ_AND_GET_DI, sent=[1, 0, 7], reply=b"\1\xff\x05more",
        result=[1, 0, 1],
    ),
    Exchange(
        "_Motion_read", (1, 0x21), command="READ_REG", sent=[1, 0x21], reply=b"\1\0\0\1\2\3\4", result=b"\1\2\3\4",
    ),
    Exchange(
        "_Motion_write", (1, 0x21, 5), command="WRITE_REG", sent=[1, 0x21, 0, 0, 0, 0, 5], reply=b"\1\0\0\0\0\0\x36",
        result=54,
    ),
    Exchange(
        "_Motion_clearFault", (0,), command="WRITE_REG", sent=[0, 1, 0, 0, 0, 0, 31], reply=b"\0\0\0\0\0\0\0",
        result=0,
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
    reads: dict = {}  # values of registers
    sent: list = []  # numbers of registers that are read, and pairs of number and value that are written
    result: object = 9  # the status that a write gives


REGISTERS = [
    RegisterCase("_Motion_setGlobalConfig", (7,), sent=[("00", 7)]),
    RegisterCase("_Motion_getGlobalConfig", (), reads={0: 258}, sent=["00"], result=b"\0\0\1\2"),
    RegisterCase("_Motion_setGlobalStatus", (7,), sent=[("01", 7)]),
    RegisterCase("_Motion_getGlobalStatus", (), reads={1: 3}, sent=["01"], result=b"\0\0\0\3"),
    RegisterCase("_Motion_setRampMode", (3,), sent=[("20", 3)]),
    RegisterCase("_Motion_resetPosition", (5,), sent=[("21", 5)]),
    RegisterCase("_Motion_readCurrentPosition", (), reads={33: 1}, sent=["21"], result=b"\0\0\0\1"),
    RegisterCase("_Motion_readCurrentVelocity", (), reads={34: 1}, sent=["22"], result=b"\0\0\0\1"),
    RegisterCase("_Motion_setLimitSwitch", (1,), sent=[("34", 1)]),
    RegisterCase("_Motion_getLimitSwitch", (), reads={52: 1}, sent=["34"], result=b"\0\0\0\1"),
    RegisterCase("_Motion_setEncoderPosition", (1,), sent=[("39", 1)]),
    RegisterCase("_Motion_readEncoderPosition", (), reads={57: 1}, sent=["39"], result=b"\0\0\0\1"),
    RegisterCase("_Motion_setEncoderDirection", (1,), sent=[("3A", 1)]),
    RegisterCase("_Motion_readEncoderDirection", (), reads={58: 1}, sent=["3A"], result=b"\0\0\0\1"),
    RegisterCase(
        "_Motion_setRamp", (),
        sent=[("23", 0), ("2B", 500), ("24", 100000), ("2F", 100000), ("26", 100000), ("2A", 100000), ("30",
            100000), ("28", 100000)],
    ),
    RegisterCase("_Motion_getServeoOnStatus", (), result=0),
    RegisterCase("Motion_open", (), result=0),
    RegisterCase("Motion_close", (), result=0),
    RegisterCase("Motion_readCurrentVelocity", (), reads={34: 4294967295}, sent=["22"], result=4294967295),
    RegisterCase("Motion_readEncoderPosition", (), reads={33: 7, 57: 8}, sent=["39", "21"], result=[8, 7]),
    RegisterCase("Motion_getAlarmStatus", (), reads={1: 0xFFFFEFF9}, sent=["01"], result=0),
    RegisterCase("Motion_getAlarmStatus", (), reads={1: 0x1000}, sent=["01"], result=1),
    RegisterCase("Motion_getAlarmStatus", (), reads={1: 4}, sent=["01"], result=1),
    RegisterCase("Motion_getAlarmStatus", (), reads={1: 2}, sent=["01"], result=1),
    RegisterCase("Motion_rstEncoderPosi", (6,), sent=[("20", 3), ("21", 6), ("39", 6)]),
    RegisterCase("Motion_rstEncoderPosi", (), sent=[("20", 3), ("21", 0), ("39", 0)]),
    RegisterCase("Motion_cfgEncoder", (0, 6), sent=[("21", 6), ("39", 6), ("3A", 1)]),
    RegisterCase("Motion_cfgAxisDirection", (1,), reads={0: 8, 52: 3}, sent=["00", ("00", 24), "34", ("34", 19)]),
    RegisterCase("Motion_cfgAxisDirection", (7,), reads={0: 24, 52: 19}, sent=["00", ("00", 8), "34", ("34", 3)]),
    RegisterCase("Motion_cfgLimit", (1, 0, 0), reads={52: 0xFFFFFFF0}, sent=["34", ("34", 0xFFFD)]),
    RegisterCase("Motion_cfgLimit", (0, 1, 1), reads={52: 0x12345F}, sent=["34", ("34", 0x3452)]),
]


@pytest.mark.parametrize("case", REGISTERS, ids=operation_of)
def test_registers_of_the_drive(pawl, call, case):
    registers(pawl, case.reads, status=9)
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
    assert [
        pawl.axis.motion_dict[key]
        for key in ("Forward Enable", "Reverse Enable", "Forward Polarity", "Reverse Polarity")
    ] == [0, 1, 0, 0]


def test_what_fails_on_the_drive(pawl, call):
    registers(pawl)
    with pytest.raises(OverflowError):
        call(pawl, "Motion_cfgEncoder", 0, 1, 5)
    assert sent_by(pawl) == [("21", 5), ("39", 5)]
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
