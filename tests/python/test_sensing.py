"""Temperature, attitude, relays and resistors: at a fake client, and as the simulated devices are."""

import asyncio
import json
import math
import struct
import subprocess
import sys
from pathlib import Path

import pytest
from cases import Exchange, operation_of
from fake_client import fake_device
from forms import awaited, blocking
from simulators import connected, simulator_program

import pyzvr

F32 = pyzvr.convertF32To4U8
THERMAL = b"\1\0\x38"  # status 56 at byte 2
PI4 = struct.pack(">f", math.pi / 4)
SIX = struct.pack(">9f", math.pi / 4, -math.pi / 2, 1, 0.00005, 2.5, -3, 0.12345, 9.81, 1e-9)
RADIANS = [round(value, 4) for value in struct.unpack(">9f", SIX)]
DEGREES = [45.0, -90.0, round(math.degrees(1), 4)]


def degrees(value):
    return b"\1\0" + struct.pack(">f", value) + b"more"


WIRE = [
    Exchange("Thermal_open", (1,), model="TarnThermo", command="OPEN_THERMAL", sent=[1], reply=b"\1\x38", result=56),
    Exchange("Thermal_close", (1,), model="TarnThermo", command="CLOSE_THERMAL", sent=[1], reply=b"\1\0", result=0),
    Exchange(
        "Thermal_readSensor", (1, 6), model="TarnThermo", command="READ_THERMAL_COUPLE", sent=[1, 6],
        reply=degrees(23.45678), result=23.457,
    ),
    Exchange(
        "Thermal_readSensor", (2, 1), model="SableRtd", command="READ_THERMAL_COUPLE", sent=[2, 1],
        reply=degrees(0.0625), result=0.062,
    ),
    Exchange(
        "Thermal_getStatus", (1, 0), model="TarnThermo", command="GET_THERMAL_STATUS", sent=[1, 0], reply=b"\1\0\3\4",
        result=b"\3\4",
    ),
    Exchange(
        "Thermal_getStatus", (1, 1), model="SableThermo", command="GET_THERMAL_STATUS", sent=[1, 1, 1], reply=b"\1\1",
        result=b"",
    ),
    Exchange(
        "Thermal_getStatus", (2, 1), model="SableRtd", command="GET_THERMAL_STATUS", sent=[2, 1], reply=b"\2\1\7",
        result=b"\7",
    ),
    Exchange(
        "Thermal_setType", (2, 0, 7), model="SableThermo", command="SET_THERMAL_TYPE", sent=[2, 0, 7], reply=THERMAL,
        result=56,
    ),
    Exchange(
        "Thermal_setType", (1, 0, 1), model="SableRtd", command="SET_THERMAL_TYPE", sent=[1, 0, 1], reply=b"\1\x38\0",
        result=0,
    ),
    Exchange(
        "Thermal_setOverSampling", (1, 3, 4), model="TarnThermo", command="SET_THERMAL_OVER_SAMPLING", sent=[1, 3, 4],
        reply=THERMAL, result=56,
    ),
    Exchange(
        "_Thermal_setNoiseFilter", (1, 0, 1), model="SableRtd", command="SET_THERMAL_NOISE_FILTER", sent=[1, 0, 1],
        reply=b"\1\0\0", result=0,
    ),
    Exchange(
        "_Thermal_readOffset", (1, 0), model="TarnThermo", command="READ_THERMAL_OFFSET", sent=[1, 0],
        reply=degrees(0.5), result=0.5,
    ),
    Exchange(
        "_Thermal_loadOffset", (2, 0), model="SableRtd", command="LOAD_THERMAL_OFFSET", sent=[2, 0],
        reply=degrees(-1.25), result=-1.25,
    ),
    Exchange(
        "_Thermal_writeOffset", (1, 0, 2), model="TarnThermo", command="WRITE_THERMAL_OFFSET", sent=[1, 0, *F32(2)],
        reply=THERMAL, result=56,
    ),
    Exchange(
        "_Thermal_saveOffset", (1, 1, -0.5), model="SableRtd", command="SAVE_THERMAL_OFFSET", sent=[1, 1, *F32(-0.5)],
        reply=b"\1\1\0", result=0,
    ),
    Exchange(
        "_Thermal_readJunction", (1, 5), model="TarnThermo", command="READ_THERMAL_JUNCTION", sent=[1, 5],
        reply=degrees(25.125), result=25.125,
    ),
    Exchange(
        "_Thermal_setJunctionOn", (1, 1, True), model="SableThermo", command="SET_THERMAL_JUNCTION_ON",
        sent=[1, 1, 1], reply=b"\1\1\0", result=0,
    ),
    Exchange(
        "_Thermal_writeJunction", (1, 0, 25), model="TarnThermo", command="WRITE_THERMAL_JUNCTION",
        sent=[1, 0, *F32(25)], reply=THERMAL, result=56,
    ),
    Exchange("AHRS_stop", (0,), model="HeronImu", command="AHRS_STOP", sent=[0], reply=b"\0\x0a", result=-7000),
    Exchange("AHRS_close", (0,), model="HeronOut", command="AHRS_CLOSE", sent=[0], reply=b"\x0a\0", result=0),
    Exchange("AHRS_reset", (0,), model="HeronImu", command="AHRS_RESET", sent=[0], reply=b"\0\0", result=0),
    Exchange(
        "AHRS_getOrientation", (0,), model="HeronImu", command="AHRS_GET_ESTIMATES", sent=[0, 1],
        reply=b"\0\1" + SIX[:12], result=DEGREES,
    ),
    Exchange(
        "AHRS_getOrientation_rad", (0,), model="HeronImu", command="AHRS_GET_ESTIMATES", sent=[0, 1],
        reply=b"\0\1" + SIX[:12] + b"xyz", result=RADIANS[:3],
    ),
    Exchange(
        "AHRS_getAcceleration_rad", (0,), model="HeronOut", command="AHRS_GET_ESTIMATES", sent=[0, 16],
        reply=b"\0\x10" + SIX[:12], result=RADIANS[:3],
    ),
    Exchange(
        "AHRS_getAngularVelocity_rad", (0,), model="HeronImu", command="AHRS_GET_ESTIMATES", sent=[0, 4],
        reply=b"\0\4" + SIX[12:24], result=RADIANS[3:6],
    ),
    Exchange(
        "AHRS_getEstimate", (0, 0), model="HeronImu", command="AHRS_GET_ESTIMATES", sent=[0, 1],
        reply=b"\0\1" + PI4 * 4, result=[45.0] * 4,
    ),
    Exchange(
        "AHRS_getEstimate", (0, 1), model="HeronImu", command="AHRS_GET_ESTIMATES", sent=[0, 16],
        reply=b"\0\x10" + SIX[:12], result=RADIANS[:3],
    ),
    Exchange(
        "AHRS_getEstimate", (0, 2), model="HeronImu", command="AHRS_GET_ESTIMATES", sent=[0, 4],
        reply=b"\0\4" + SIX[:12], result=RADIANS[:3],
    ),
    Exchange(
        "AHRS_getEstimate", (0, 3), model="HeronImu", command="AHRS_GET_ESTIMATES", sent=[0, 17],
        reply=b"\0\x11" + SIX[:24], result=DEGREES + RADIANS[3:6],
    ),
    Exchange(
        "AHRS_getEstimate", (0, 4), model="HeronImu", command="AHRS_GET_ESTIMATES", sent=[0, 5],
        reply=b"\0\5" + SIX[:24], result=DEGREES + RADIANS[3:6],
    ),
    Exchange(
        "AHRS_getEstimate", (0, 5), model="HeronImu", command="AHRS_GET_ESTIMATES", sent=[0, 20],
        reply=b"\0\x14" + SIX[:24], result=RADIANS[:6],
    ),
    Exchange(
        "AHRS_getEstimate", (0, 6), model="HeronImu", command="AHRS_GET_ESTIMATES", sent=[0, 21],
        reply=b"\0\x15" + SIX, result=DEGREES + RADIANS[3:],
    ),
    Exchange(
        "_AHRS_getRawdata", (0,), model="HeronImu", command="AHRS_GET_RAW_DATA", sent=[0, 1], reply=b"\0" + SIX,
        result=RADIANS,
    ),
    Exchange(
        "_AHRS_setSamplingPeriod", (0, 0.5), model="HeronImu", command="AHRS_SET_GNRL",
        sent=[0, *F32(9.81), *F32(0.5), *F32(0.001)], reply=b"\0\x50", result=-7027,
    ),
    Exchange(
        "_AHRS_setGeneral", (0, 9.8, 1, 0), model="HeronImu", command="AHRS_SET_GNRL",
        sent=[0, *F32(9.8), *F32(1), *F32(0)], reply=b"\0\0", result=0,
    ),
]


@pytest.mark.parametrize("case", WIRE, ids=operation_of)
def test_exchanges(case):
    for call in (blocking, awaited):
        with fake_device(case.model, **{case.command: case.reply}) as box:
            assert call(box, case.operation, *case.arguments) == case.result
            assert box.client_cmd.sent == [(getattr(pyzvr, case.command), bytes(case.sent))]


@pytest.mark.parametrize("model, operation, arguments, error",
                         [("TarnThermo", "Thermal_open", (0,), pyzvr.ThermalPortNotAvaliableError),
                          ("TarnThermo", "Thermal_close", ("1",), pyzvr.ThermalPortNotAvaliableError),
                          ("SableRtd", "Thermal_open", (3,), pyzvr.ThermalPortNotAvaliableError),
                          ("TarnThermo", "Thermal_readSensor", (2, 9), pyzvr.ThermalPortNotAvaliableError),
                          ("TarnThermo", "Thermal_readSensor", (1, 7), pyzvr.ThermalChipSelectNotAvaliableError),
                          ("SableThermo", "Thermal_readSensor", (1, 2), pyzvr.ThermalChipSelectNotAvaliableError),
                          ("SableRtd", "Thermal_getStatus", (1, -1), pyzvr.ThermalChipSelectNotAvaliableError),
                          ("TarnThermo", "Thermal_setType", (1, 0, 8), pyzvr.ThermalTypeNotVaildError),
                          ("SableRtd", "Thermal_setType", (1, 0, 2), pyzvr.ThermalTypeNotVaildError),
                          ("TarnThermo", "Thermal_setOverSampling", (1, 0, 5), pyzvr.ThermalModeNotVaildError),
                          ("SableRtd", "_Thermal_setNoiseFilter", (1, 0, 2), pyzvr.ThermalModeNotVaildError),
                          ("SableRtd", "_Thermal_writeOffset", (1, 0, "1"), pyzvr.InputTypeNotCorrectError),
                          ("TarnThermo", "_Thermal_saveOffset", (1, 0, None), pyzvr.InputTypeNotCorrectError),
                          ("TarnThermo", "_Thermal_saveOffset", (1, 0, 1e39), OverflowError),
                          ("TarnThermo", "_Thermal_setJunctionOn", (1, 0, 1), pyzvr.InputTypeNotCorrectError),
                          ("TarnThermo", "_Thermal_writeJunction", (1, 0, "1"), TypeError),
                          ("SableRtd", "Thermal_setOverSampling", (1, 0, 0), AttributeError),
                          ("SableRtd", "_Thermal_readJunction", (1, 0), AttributeError),
                          ("HeronImu", "AHRS_open", (1,), pyzvr.AHRSPortNotAvaliableError),
                          ("HeronImu", "AHRS_start", ("0",), pyzvr.InputTypeNotCorrectError),
                          ("HeronOut", "AHRS_getOrientation", (2,), pyzvr.AHRSPortNotAvaliableError),
                          ("HeronImu", "AHRS_getEstimate", (0, 7), pyzvr.AHRSModeNotAvaliableError),
                          ("HeronImu", "AHRS_getEstimate", (0, -1), pyzvr.AHRSModeNotAvaliableError),
                          ("HeronImu", "AHRS_getEstimate", (0, 1.0), pyzvr.InputTypeNotCorrectError),
                          ("HeronImu", "_AHRS_setSamplingPeriod", (0, "1"), pyzvr.InputTypeNotCorrectError),
                          ("HeronImu", "_AHRS_setGeneral", (0, 9.81, 0.003, None), pyzvr.InputTypeNotCorrectError)])
def test_bad_arguments_fail_by_name_before_anything_is_sent(call, model, operation, arguments, error):
    with fake_device(model) as box:
        with pytest.raises(error):
            call(box, operation, *arguments)
        assert box.client_cmd.sent == []


IDLE = b"\0\x08\x11\x11\x11\x11"


@pytest.mark.parametrize("model", ["SableThermo", "SableRtd"])
def test_sensors_need_lines_that_are_idle_or_digital(call, model):
    with fake_device(model, GET_PIN_MODE_OF_SLOT=IDLE, OPEN_THERMAL=b"\1\0") as box:
        (line, first), (_, second) = box.Thermal_getPinMap()[1]
        assert sorted(box.thermal_dict) == [1, 2]
        assert box._Thermal_getPinMapPort(1) == [line]
        assert first in box.di_dict[line]
        assert second in box.di_dict[line]
        assert box.thermal_dict[1] != box.thermal_dict[2]
        for modes in (b"\x11", b"\x23", b"\x32"):
            box.client_cmd.replies[pyzvr.GET_PIN_MODE_OF_SLOT] = b"\0\x08" + modes * 4
            assert call(box, "Thermal_open", 1) == 0
        assert box.client_cmd.sent[-2:] == [(pyzvr.GET_PIN_MODE_OF_SLOT, bytes([line])), (pyzvr.OPEN_THERMAL, b"\1")]
        box.client_cmd.replies[pyzvr.GET_PIN_MODE_OF_SLOT] = b"\0\x08\x44\x44\x44\x44"
        sent = len(box.client_cmd.sent)
        with pytest.raises(pyzvr.ThermalPortNotAvaliableError):
            call(box, "Thermal_open", 1)
        assert len(box.client_cmd.sent) == sent + 1


def test_opening_the_unit_sends_two_commands_and_hides_a_refusal(call):
    with fake_device("HeronImu", AHRS_OPEN=b"\0\x0a", AHRS_SET_GNRL=b"\0\x50") as box:
        assert call(box, "AHRS_open", 0) == 0
        assert box.client_cmd.sent == [(pyzvr.AHRS_OPEN, b"\0"),
                                       (pyzvr.AHRS_SET_GNRL, bytes([0, *F32(9.81), *F32(0.003), *F32(0.001)]))]
        del box.client_cmd.sent[:]
        assert call(box, "AHRS_start", 0) == 0
        assert box.client_cmd.sent == [(pyzvr.AHRS_START, b"\0\0")]
        assert [box._convertModeToMask(mode) for mode in range(7)] == [1, 16, 4, 17, 5, 20, 21]


def test_service_operations_of_the_unit_leave_the_port_to_the_device(call):
    with fake_device("HeronImu", AHRS_SET_GNRL=b"\7\0", AHRS_VQF_SET_TAU=b"\7\0", AHRS_GET_RAW_DATA=b"\7" + PI4) as box:
        assert call(box, "_AHRS_setSamplingPeriod", 7, 0.5) == call(box, "_AHRS_setGeneral", 7, 9.8, 1, 0) == 0
        assert box._AHRS_VQF_setTau(7, 3, 9.5) == 0
        assert call(box, "_AHRS_getRawdata", 7) == [0.7854]
        assert [data[0] for _, data in box.client_cmd.sent] == [7] * 4


def test_both_forms_of_the_decay_times_have_one_name():
    with fake_device("HeronOut", AHRS_VQF_SET_TAU=b"\0\x0a") as box:
        assert box._AHRS_VQF_setTau(0, 3, 9.5) == -7000
        assert asyncio.run(pyzvr.AHRSModule_async._AHRS_VQF_setTau(box, 0, 3, 9.5)) == -7000
        assert box.client_cmd.sent == [(pyzvr.AHRS_VQF_SET_TAU, bytes([0, *F32(3), *F32(9.5)]))] * 2
        assert not hasattr(box, "_AHRS_VQF_setTau_async")
        with pytest.raises(pyzvr.InputTypeNotCorrectError):
            box._AHRS_VQF_setTau(0, 3, "9")


def test_replies_that_are_too_short_fail(call):
    with fake_device("TarnThermo", OPEN_THERMAL=b"\1", READ_THERMAL_COUPLE=b"\1\0\0\0\0",
                     SET_THERMAL_TYPE=b"\1\0") as box:
        for operation, arguments, error in (
            ("Thermal_open", (1,), IndexError),
            ("Thermal_readSensor", (1, 0), IndexError),
            ("Thermal_setType", (1, 0, 0), IndexError),
        ):
            with pytest.raises(error):
                call(box, operation, *arguments)
    with fake_device("HeronImu", AHRS_GET_ESTIMATES=b"\0") as box:
        assert call(box, "AHRS_getOrientation", 0) == []


def test_thermocouples_keep_their_settings(call):
    with connected("TarnThermo", "--seed", "7") as box:
        assert call(box, "Thermal_readSensor", 1, 0) == 0.0
        assert call(box, "Thermal_setType", 1, 0, 3) == 56
        assert call(box, "Thermal_open", 1) == 0
        for channel in range(7):
            readings = [call(box, "Thermal_readSensor", 1, channel) for _ in range(8)]
            assert all(abs(reading - 20 - 10 * channel) <= 0.2 for reading in readings)
            assert len(set(readings)) > 4
        assert abs(call(box, "_Thermal_readJunction", 1, 3) - 25) <= 0.2
        assert call(box, "Thermal_getStatus", 1, 0) == b"\0"
        assert call(box, "_Thermal_writeOffset", 1, 6, -30.5) == 0
        assert call(box, "_Thermal_readOffset", 1, 6) == -30.5
        assert abs(call(box, "Thermal_readSensor", 1, 6) - 49.5) <= 0.2
        assert call(box, "_Thermal_saveOffset", 1, 6, 1.5) == 0
        assert call(box, "_Thermal_readOffset", 1, 6) == -30.5
        assert call(box, "_Thermal_loadOffset", 1, 6) == 1.5
        assert call(box, "Thermal_setOverSampling", 1, 5, 4) == call(box, "_Thermal_setNoiseFilter", 1, 5, 1) == 0
        assert all(abs(call(box, "Thermal_readSensor", 1, 5) - 70) <= 0.05 for _ in range(8))
        assert call(box, "Thermal_setType", 1, 5, 6) == 0
        assert call(box, "Thermal_readSensor", 1, 5) > 150
        assert call(box, "_Thermal_setJunctionOn", 1, 2, False) == call(box, "_Thermal_writeJunction", 1, 2, 15) == 0
        assert abs(call(box, "Thermal_readSensor", 1, 2) - 30) <= 0.2
        assert call(box, "Sys_reboot") == 0
        assert call(box, "Thermal_setType", 1, 0, 3) == 56
        assert call(box, "Thermal_open", 1) == 0
        assert call(box, "_Thermal_readOffset", 1, 6) == 1.5


THERMAL_OVER_USB = """
import asyncio, json, warnings
import pyzvr
warnings.simplefilter("ignore")
with getattr(pyzvr, MODEL)() as box:
    box.connect(verbose=False)
    seen = [box.Thermal_open(2), asyncio.run(box.Thermal_open_async(1)), box.Thermal_getStatus(1, 0).hex()]
    seen += [round(box.Thermal_readSensor(port, channel), -1) for port in (1, 2) for channel in (0, 1)]
    seen += [box.Thermal_setType(2, 1, 1), box.Thermal_readSensor(2, 1) < 45, box.Thermal_close(2), box.Thermal_readSensor(2, 1)]
print(json.dumps(seen))
"""


@pytest.mark.skipif(not Path(simulator_program("zvr-sim-usb")).exists(), reason="zvr-sim-usb needs libumockdev")
@pytest.mark.parametrize("model", ["SableThermo", "SableRtd"])
def test_sensors_of_a_usb_box(model):
    program = f"MODEL = {model!r}" + THERMAL_OVER_USB
    run = subprocess.run([simulator_program("zvr-sim-usb"), model, "--", sys.executable, "-c", program],
                         capture_output=True, text=True, timeout=60)
    assert run.returncode == 0, run.stderr
    assert json.loads(run.stdout.splitlines()[-1]) == [0, 0, "00", 20, 30, 40, 50, 0, True, 0, 0.0]


def test_the_inertial_unit_follows_its_board(call):
    with connected("HeronImu", "--pace", "1000") as box:
        assert call(box, "AHRS_getEstimate", 0, 6) == [0.0] * 9
        assert call(box, "AHRS_reset", 0) == -7000
        assert call(box, "AHRS_open", 0) == call(box, "_AHRS_setSamplingPeriod", 0, 0.003) == 0
        assert call(box, "_AHRS_setSamplingPeriod", 0, 0) == -7000
        assert box._AHRS_VQF_setTau(0, 1e-6, 1e-6) == 0
        assert call(box, "AHRS_start", 0) == 0
        while call(box, "AHRS_getOrientation", 0) == [0.0] * 3:
            pass  # the filter starts from lying flat
        rolls = []
        for _ in range(40):
            roll, pitch, _, p, q, r, *pull = call(box, "AHRS_getEstimate", 0, 6)
            rolls.append(roll)
            assert abs(roll) <= 20.01
            assert abs(pitch) <= 5.01
            assert max(map(abs, (p, q, r))) < 0.5
            assert math.dist(pull, (0, 0, 0)) == pytest.approx(9.81, abs=1e-3)
            # The pull of gravity tells roll and pitch.
            assert math.degrees(math.atan2(pull[1], pull[2])) == pytest.approx(roll, abs=0.05)
            assert math.degrees(math.asin(-pull[0] / 9.81)) == pytest.approx(pitch, abs=0.05)
        assert max(rolls) - min(rolls) > 1
        acceleration, field = call(box, "_AHRS_getRawdata", 0)[:3], call(box, "_AHRS_getRawdata", 0)[6:]
        assert math.dist(acceleration, (0, 0, 0)) == pytest.approx(9.81, abs=1e-3)
        assert math.dist(field, (0, 0, 0)) == pytest.approx(49.244, abs=1e-2)
        assert call(box, "AHRS_stop", 0) == 0
        assert call(box, "AHRS_getOrientation", 0) == [0.0] * 3
        assert call(box, "AHRS_close", 0) == 0
        assert call(box, "AHRS_stop", 0) == -7000


def test_relays_count_their_switching(call):
    with connected("TarnRelay") as box:
        assert call(box, "Relay_open", 0) == 0
        assert call(box, "Relay_read", 0, -1) == [0] * 6
        for word in (0b000001, 0b100001, 0b100000, 0b100000):
            call(box, "DO_writePort", 0, word)
        call(box, "DO_togglePins", 0, [2])
        assert call(box, "Relay_read", 0, -1) == [2, 0, 1, 0, 0, 1]
        assert call(box, "Relay_read", 0, 2) == [1]
        assert call(box, "Sys_reboot") == 0
        assert call(box, "Relay_read", 0, -1) == [2, 0, 2, 0, 0, 2]


def test_resistors_keep_their_values(call):
    with connected("TarnPot") as box:
        assert call(box, "DPOT_writeAllChannel", 0, [100, 220.4, 470, 1e5]) == 0
        assert [call(box, "DPOT_readByChannel", 0, channel) for channel in range(5)] == [100, 220, 470, 100000, 0]
        assert call(box, "DPOT_writeByChannel", 0, 1, 330) == 0
        assert call(box, "DPOT_writeAllChannel", 0, [1, 2, -1]) == -7014
        assert call(box, "DPOT_writeByChannel", 0, 4, 330) == -7001
        assert call(box, "DPOT_writeByChannel", 0, 0, float("nan")) == -7014
        assert [call(box, "DPOT_readByChannel", 0, channel) for channel in range(4)] == [100, 330, 470, 100000]
