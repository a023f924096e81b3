"""The stepper drive."""

import asyncio
import struct

import pytest
from motion_products import WRONG, registers, sent_by
from simulators import connected

import pyzvr

pytestmark = pytest.mark.filterwarnings("ignore:Warning -9")

I32, U32 = pyzvr.convertI32To4U8, pyzvr.convertU32To4U8
FIND = [0, *U32(1), *U32(2), *U32(3), 4, 5, *I32(-6)]
DRIVE = [
    ("Motion_startVelocticyMove", (0, 1, -1, 2, 3), "START_V_MOVE", [0, *U32(1), *U32(2), *U32(3), 255], b"\0\0", 0),
    ("Motion_startPositionMove", (0, -9, 1, 2, 3, 7), "START_P_MOVE", [0, *I32(-9), *U32(1), *U32(2), *U32(3), 7],
     b"\0\x37", -7020),
    ("Motion_startScanMove", (0, -9, 9, 1, 2), "START_SCAN_MOVE", [0, *I32(-9), *I32(9), *U32(1), *U32(2)], b"\0\0", 0),
    ("Motion_startFindLimit", (0, 257, 1, 2, 3, -4, "true"), "START_FIND_END",
     [0, 1, *U32(1), *U32(2), *U32(3), *I32(-4), 1], b"\0\0", 0),
    ("Motion_startFindHome", (0, 1, 2, 3, 4, 5, -6, "true"), "START_FIND_HOME", [*FIND, 1], b"\0\0", 0),
    ("Motion_startFindHome", (0, 1, 2, 3, 260, 261, -6, True), "START_FIND_HOME", [*FIND, 0], b"\0\0", 0),
    ("Motion_startFindZPolarity", (0, 1, 2, 3, 4, 5, -6, "True"), "START_FIND_Z", [*FIND, 0], b"\0\x36", -7019),
    ("Motion_getProcessState", (0,), "GET_PROC_STATE", [0], b"\0\5rest", (5, b"rest")),
    ("Motion_stopProcess", (0,), "STOP_PROC", [0], b"\0\x37", -7020),
    ("Motion_resetFactory", (0,), "RESET_FACTORY", [0], b"\0\0", 0),
    ("Motion_enableServoOn", (0,), pyzvr.SET_AND_WRITE_DO, [2, 0, 1, 0, 0], b"", 0),
    ("Motion_enableServoOff", (0,), pyzvr.SET_AND_WRITE_DO, [2, 0, 1, 0, 1], b"", 0),
    ("_Motion_writeDO", (3, 4, 1), pyzvr.SET_AND_WRITE_DO, [3, 0, 16, 0, 16], b"", 0),
    ("_Motion_readDI", (3,), pyzvr.READ_AND_GET_DI, [3, 0, 7], b"abc", b"abc"),
    ("Motion_getLimitStatus", (0,), pyzvr.READ_AND_GET_DI, [1, 0, 7], b"\1\xff\x05more", [1, 0, 1]),
    ("_Motion_read", (1, 0x21), "READ_REG", [1, 0x21], b"\1\0\0\1\2\3\4", b"\1\2\3\4"),
    ("_Motion_write", (1, 0x21, 5), "WRITE_REG", [1, 0x21, 0, 0, 0, 0, 5], b"\1\0\0\0\0\0\x36", 54),
    ("_Motion_clearFault", (0,), "WRITE_REG", [0, 1, 0, 0, 0, 0, 31], b"\0\0\0\0\0\0\0", 0),
]


@pytest.mark.parametrize("operation, arguments, command, sent, reply, result", DRIVE)
def test_drive(pawl, call, operation, arguments, command, sent, reply, result):
    code = getattr(pyzvr, "MOTION_" + command) if isinstance(command, str) else command
    pawl.client_cmd.replies = {code: reply}
    assert call(pawl, operation, *arguments) == result
    assert pawl.client_cmd.sent == [(code, bytes(sent))]


REGISTERS = [
    ("_Motion_setGlobalConfig", (7,), {}, [("00", 7)], 9),
    ("_Motion_getGlobalConfig", (), {0: 258}, ["00"], b"\0\0\1\2"),
    ("_Motion_setGlobalStatus", (7,), {}, [("01", 7)], 9), ("_Motion_getGlobalStatus", (), {1: 3}, ["01"], b"\0\0\0\3"),
    ("_Motion_setRampMode", (3,), {}, [("20", 3)], 9), ("_Motion_resetPosition", (5,), {}, [("21", 5)], 9),
    ("_Motion_readCurrentPosition", (), {33: 1}, ["21"], b"\0\0\0\1"),
    ("_Motion_readCurrentVelocity", (), {34: 1}, ["22"], b"\0\0\0\1"),
    ("_Motion_setLimitSwitch", (1,), {}, [("34", 1)], 9), ("_Motion_getLimitSwitch", (), {52: 1}, ["34"], b"\0\0\0\1"),
    ("_Motion_setEncoderPosition", (1,), {}, [("39", 1)], 9),
    ("_Motion_readEncoderPosition", (), {57: 1}, ["39"], b"\0\0\0\1"),
    ("_Motion_setEncoderDirection", (1,), {}, [("3A", 1)], 9),
    ("_Motion_readEncoderDirection", (), {58: 1}, ["3A"], b"\0\0\0\1"),
    ("_Motion_setRamp", (), {}, [("23", 0), ("2B", 500), ("24", 100000), ("2F", 100000), ("26", 100000), ("2A", 100000),
                                 ("30", 100000), ("28", 100000)], 9),
    ("_Motion_getServeoOnStatus", (), {}, [], 0), ("Motion_open", (), {}, [], 0), ("Motion_close", (), {}, [], 0),
    ("Motion_readCurrentVelocity", (), {34: 4294967295}, ["22"], 4294967295),
    ("Motion_readEncoderPosition", (), {33: 7, 57: 8}, ["39", "21"], [8, 7]),
    ("Motion_getAlarmStatus", (), {1: 0xFFFFEFF9}, ["01"], 0), ("Motion_getAlarmStatus", (), {1: 0x1000}, ["01"], 1),
    ("Motion_getAlarmStatus", (), {1: 4}, ["01"], 1), ("Motion_getAlarmStatus", (), {1: 2}, ["01"], 1),
    ("Motion_rstEncoderPosi", (6,), {}, [("20", 3), ("21", 6), ("39", 6)], 9),
    ("Motion_rstEncoderPosi", (), {}, [("20", 3), ("21", 0), ("39", 0)], 9),
    ("Motion_cfgEncoder", (0, 6), {}, [("21", 6), ("39", 6), ("3A", 1)], 9),
    ("Motion_cfgAxisDirection", (1,), {0: 8, 52: 3}, ["00", ("00", 24), "34", ("34", 19)], 9),
    ("Motion_cfgAxisDirection", (7,), {0: 24, 52: 19}, ["00", ("00", 8), "34", ("34", 3)], 9),
    ("Motion_cfgLimit", (1, 0, 0), {52: 0xFFFFFFF0}, ["34", ("34", 0xFFFD)], 9),
    ("Motion_cfgLimit", (0, 1, 1), {52: 0x12345F}, ["34", ("34", 0x3452)], 9),
]


@pytest.mark.parametrize("operation, arguments, values, sent, result", REGISTERS)
def test_registers_of_the_drive(pawl, call, operation, arguments, values, sent, result):
    registers(pawl, values, status=9)
    assert call(pawl, operation, 0, *arguments) == result
    assert sent_by(pawl) == sent


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
    assert [pawl.axis.motion_dict[key] for key in ("Forward Enable", "Reverse Enable", "Forward Polarity",
                                                  "Reverse Polarity")] == [0, 1, 0, 0]


def test_what_fails_on_the_drive(pawl, call):
    registers(pawl)
    with pytest.raises(OverflowError):
        call(pawl, "Motion_cfgEncoder", 0, 1, 5)
    assert sent_by(pawl) == [("21", 5), ("39", 5)]
    for operation, arguments, failure in [
            ("Motion_open", (1,), pyzvr.PAWLPortNotAvaliable), ("Motion_resetFactory", ("0",), WRONG),
            ("_Motion_getServeoOnStatus", (2,), pyzvr.PAWLPortNotAvaliable),
            ("Motion_startVelocticyMove", (0, 1.0, 0, 1, 1), WRONG),
            ("Motion_startVelocticyMove", (0, -1, 0, 1, 1), OverflowError),
            ("Motion_startPositionMove", (0, 1, 1, 1, "1", 0), WRONG),
            ("Motion_startPositionMove", (0, 1, 1, 1, 1, 256), ValueError),
            ("Motion_startScanMove", (0, 0, 0, 1, 1.0), WRONG), ("_Motion_write", (0, 0, -1), OverflowError)]:
        with pytest.raises(failure):
            call(pawl, operation, *arguments)
        assert pawl.client_cmd.sent == []
    # Each parameter is cut one byte too short.
    pawl.client_cmd.replies[pyzvr.MOTION_GET_PARAM] = b"\0\0\x58" + bytes(88)
    with pytest.raises(struct.error):
        call(pawl, "Motion_getParameters", 0)
    assert [data for _, data in pawl.client_cmd.sent] == [b"\0"] and pawl.TMC5240_default_dict["x00_GCONF"][0] == 8


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
    assert "velocity=1000000000000, " in repr(axis) and pyzvr.MotionAxis().motion_dict is not axis.motion_dict
    assert repr(pyzvr.MotionCircularInterpolation()).startswith("MotionCircularInterpolation(main_axis=0, second_")
    texts = pyzvr.MotionInifile()
    assert set(axis.motion_dict) - set(texts.ini_out_dict) == {"Approach Velocity Percent", "Offset Position"}
    assert all(texts.ini_in_dict[key][text] == number
               for key, row in texts.ini_out_dict.items() for number, text in row.items())
    with pyzvr.Pawl() as pawl:
        assert isinstance(pawl, pyzvr.MotionAxis) and repr(pawl).startswith("<pyzvr.Pawl object")
