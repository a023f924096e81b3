"""Motion: what goes to the chip and in which order, what the host remembers, and what a file keeps."""

import asyncio
import configparser
import contextlib
import copy
import os
import re
import resource
import shutil
import struct
import tempfile
import threading
from pathlib import Path
from unittest import mock

import pytest
from conftest import Double, awaited, connected
from peer import Peer

import pyzvr

GOLDEN = (Path(__file__).parents[1] / "golden" / "motion.txt").read_text().splitlines()
pytestmark = pytest.mark.filterwarnings("ignore:Warning -9")


class Chip:
    """Answers each sub-frame: with the value that a test gives to its code, else with 0. A value is a status too."""

    def __init__(self):
        self.values = {}

    def __call__(self, data):
        value = self.values.get(f"{data[1]:02X}", 0)
        return data[:3] + value.to_bytes(4, "big", signed=value < 0)


def handle(model, monkeypatch=None):
    product = getattr(pyzvr, model)()
    product.client_cmd = Double(product)
    product.chip = product.client_cmd.replies[pyzvr.MOTION] = Chip()
    return product


@pytest.fixture
def ratchet():
    with handle("Ratchet") as product:
        yield product


@pytest.fixture(params=["Lattice", "LatticeLite"])
def chassis(request):
    with handle(request.param) as product:
        yield product


@pytest.fixture
def pawl():
    with pyzvr.Pawl() as product:
        product.client_cmd = Double(product)
        yield product


def take_frames(product):
    """What was sent since the last time: connectors, and per frame the code, the axis byte and the data."""
    sent, product.client_cmd.sent = product.client_cmd.sent, []
    assert all(command == pyzvr.MOTION and len(data) == 7 for command, data in sent)
    return [data[0] for _, data in sent], [
        f"{data[1]:02X} {data[2]} {int.from_bytes(data[3:], 'big', signed=True)}" for _, data in sent]


def frames_of(product):
    return ", ".join(take_frames(product)[1])


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
    assert (len(codes), len(registers)) == (199, 68) and pyzvr.PALW_2E_V2 == 46 and pyzvr.MOTION_63_LHK4 == 99
    assert all(value == int(name.split("_")[1], 16) for name, value in (codes | registers).items())


def test_statuses_numbers_and_axes_of_the_driver(ratchet, call):
    for status, result in [(0, 0), (54, -7019), (14, -7028)]:
        ratchet.chip.values["00"] = status
        assert call(ratchet, "_Motion_setAccelerationJerk", 0, 3, 1) == result
    assert call(ratchet, "_Motion_setAcceleration", 0, 7, 12.9) == 0
    assert frames_of(ratchet) == "00 8 1, 00 8 1, 00 8 1, 02 128 12"
    for arguments, failure in [((0, 8, 1), ValueError), ((256, 0, 1), ValueError), ((0, 0, -1), OverflowError),
                               ((0, 0, "1"), TypeError), ((0, "0", 1), TypeError)]:
        with pytest.raises(failure):
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
    assert frames_of(ratchet) == ""
    ratchet._checkMotionAxis = lambda mask: None
    assert call(ratchet, "_Motion_releaseDrivingStart", 0, 6) == 0 and frames_of(ratchet) == "78 6 0"


OUTPUT = "3F {0} 0, E3 {0} 24"  # pulse output and direction of an axis, with the default settings
# operation, arguments after the port, values of reads, frames, result, record, settings of axis 1
CONFIGURATION = [
    ("Motion_open", (), {"21": 54}, "21 15 21765", -7019, {}, {}),
    ("Motion_close", (), {}, "", 0, {}, {}),
    ("Motion_cfgAlarm", (1, 1, 0), {"3E": 65535}, "3E 2 0, E2 2 65535, 3E 2 0, E2 2 65279", 0, {},
     {"Alarm Enable": 1, "Alarm Polarity": 0}),
    ("Motion_cfgHome", (1, 1, 1), {}, "3E 2 0, E2 2 8, 3E 2 0, E2 2 4", 0, {}, {"Home Enable": 1, "Home Polarity": 1}),
    ("Motion_cfgInposi", (1, 0, 1), {"3E": 65535}, "3E 2 0, E2 2 65407, 3E 2 0, E2 2 65535", 0, {},
     {"Inposition Enable": 0, "Inposition Polarity": 1}),
    ("Motion_cfgLimit", (1, 1, 0, 1), {"3E": 4096}, "3E 2 0, E2 2 2048, 3E 2 0, E2 2 5120", 0, {},
     {"Forward Enable": 1, "Reverse Enable": 0, "Forward Polarity": 1, "Reverse Polarity": 1}),
    ("Motion_cfgLimit", (1, 0, 0, 0), {"3E": 65535}, "3E 2 0, E2 2 59391, 3E 2 0, E2 2 64511", 0, {},
     {"Forward Enable": 0, "Reverse Enable": 0, "Forward Polarity": 0, "Reverse Polarity": 0}),
    # Statuses of several commands merge to the greatest; a refusal is negative.
    ("Motion_cfgAxis", (1, 0, 1, 1, 0), {"3F": 65535, "E3": 54}, "3F 2 0, E3 2 65368, 3F 2 0, E3 2 65535", 0, {},
     {"Stepper Output": 0, "Inverse Motion Direction": 1, "Inverse Encoder Direction": 1, "Servo On Polarity": 0}),
    ("Motion_cfgAxis", (1, 1, 1, 0, 1), {"3F": 65535}, "3F 2 0, E3 2 65408, 3F 2 0, E3 2 63487", 0, {},
     {"Stepper Output": 1, "Inverse Motion Direction": 1, "Inverse Encoder Direction": 0, "Servo On Polarity": 1}),
    ("Motion_cfgEncoder", (1, 0), {"E2": 54}, "3E 2 0, E2 2 16", -7019, {}, {"Encoder Z Polarity": 0}),
    ("Motion_cfgEncoder", (1, 1), {"3E": 65535}, "3E 2 0, E2 2 65519", 0, {}, {"Encoder Z Polarity": 1}),
    ("_Motion_setInstantLimitStop", (1, 1), {}, "3E 2 0, E2 2 4096", 0, {"stop": 1}, {}),
    ("Motion_cfgJerkAndAccelMode", (1, 7, 2), {}, "", None, {"jerk": 7, "acceleration_mode": 2}, {}),
    ("Motion_rstEncoderPosi", (1,), {}, "09 2 0, 0A 2 0", 0, {"encoder_position": 0}, {}),
    ("Motion_rstEncoderPosi", (1, -5), {}, "09 2 -5, 0A 2 -5", 0, {"encoder_position": -5}, {}),
    ("Motion_enableServoOn", (1,), {"30": -9}, "1C 2 257, 30 2 0, 09 2 -9", 0, {}, {}),
    ("Motion_enableServoOff", (1,), {"30": 9}, "1C 2 256, 30 2 0, 09 2 9", 0, {}, {}),
    ("Motion_cfgCapture", (1, 0, 1), {"29": 54}, "29 2 106", -7019, {"capture_type": 0, "capture_mode": 1}, {}),
    ("Motion_cfgCapture", (1, 1, 1), {}, "29 2 107", 0, {"capture_type": 1, "capture_mode": 1}, {}),
    ("Motion_cfgCapture", (1, 0, 0), {}, "29 2 90", 0, {"capture_type": 0, "capture_mode": 0}, {}),
    ("Motion_cfgCapture", (1, 1, 0), {}, "29 2 91", 0, {"capture_type": 1, "capture_mode": 0}, {}),
    ("Motion_enableCapture", (1, 1), {}, "88 2 0", 0, {}, {}),
    ("Motion_enableCapture", (1, 0), {}, "98 2 0", 0, {}, {}),
    ("Motion_enableBreakPoint", (1, 1), {}, "81 2 0", 0, {}, {}),
    ("Motion_enableBreakPoint", (1, 0), {}, "91 2 0", 0, {}, {}),
    ("Motion_cfgBreakPoint", (1, 0, 0, 100, 2, 3, 4), {"42": 0, "40": 15},
     "17 2 131075, 16 2 4, 42 2 0, 22 2 3072, 40 2 0, 20 2 8, 10 2 100, 26 2 369", 0,
     {"breakpoint_mode": 0, "breakpoint_polarity": 0, "breakpoint_start_position": 100, "breakpoint_pulse_width": 2,
      "breakpoint_pulse_period": 3, "breakpoint_pulse_number": 4}, {}),
    ("Motion_cfgBreakPoint", (1, 1, 1, 100, 2, 3, 4), {"42": 65535, "40": 16, "30": -150},
     "17 2 131075, 16 2 4, 42 2 0, 22 2 64511, 40 2 0, 20 2 24, 30 2 0, 10 2 -50, 26 2 369", 0,
     {"breakpoint_mode": 1, "breakpoint_start_position": 100, "breakpoint_pulse_width": 2, "breakpoint_pulse_period": 3,
      "breakpoint_pulse_number": 4}, {}),
    ("_Motion_sendAllConfiguration", (1,), {},
     OUTPUT.format(2) + ", 3E 2 0, E2 2 16, 3E 2 0, E2 2 0, 3E 2 0, E2 2 2048, 3E 2 0, E2 2 0, 3E 2 0, E2 2 0, "
     "3E 2 0, E2 2 0, 3E 2 0, E2 2 1024, 3E 2 0, E2 2 0, 3E 2 0, E2 2 0", 0, {}, {}),
    # Moves
    ("Motion_cfgAxisMove", (1, 1, -500, -400, 10000, 10000), {},
     "06 2 -500, 05 2 400, 04 2 347, 02 2 10000, 03 2 10000, 3E 2 0, E2 2 4096", 0,
     {"operation_mode": 1, "target_position": -500, "velocity": -400, "acceleration": 10000, "deceleration": 10000,
      "stop": 1}, {}),
    ("Motion_cfgAxisMove", (1, 0), {"3F": 7, "06": 54},
     "06 2 0, 05 2 10000, 04 2 347, 02 2 100000, 03 2 100000, 3E 2 0, E2 2 4096", 0, {"stop": 1}, {}),
    ("_Motion_writeAcceleration", (1, 10, 20), {"3F": 5}, "02 2 10, 03 2 20, 3F 2 0, E3 2 2", 0,
     {"acceleration": 10, "deceleration": 20}, {}),
    ("Motion_overrideAxisPosi", (1, -3), {"06": 54}, "06 2 -3", -7019, {"target_position": -3}, {}),
    ("Motion_overrideAxisAccel", (1, 9, 9), {}, "02 2 9, 03 2 9", 0, {"acceleration": 9, "deceleration": 9}, {}),
    ("Motion_stop", (1, 0), {}, "56 2 0", 0, {"stop_decl": 0}, {}),
    ("Motion_stop", (1, 1), {"57": 54}, "57 2 0", -7019, {"stop_decl": 1}, {}),
    ("Motion_findRef", (1,), {"5A": 54}, "5A 2 0", -7019, {}, {}),
    ("Motion_cfgFindRef", (1, 0, 0, 2000, 10000, 25, 1, 30), {},
     OUTPUT.format(2) + ", 06 2 0, 05 2 2000, 04 2 347, 02 2 10000, 03 2 10000, 23 2 32789, 3E 2 0, E2 2 4096, "
     "24 2 6, 14 2 500, 06 2 -30", 0,
     {"search_velocity": 2000, "search_accerleration": 10000, "velocity": 2000, "acceleration": 10000,
      "deceleration": 10000, "stop": 1},
     {"Offset Position": 30, "Approach Velocity Percent": 25, "Initial Search Direction": 0,
      "Final Approach Direction": 0, "Enable Reset Position": 1}),
    ("Motion_cfgFindRef", (1, 1, 1, 10, 4, 0.0), {},
     OUTPUT.format(2) + ", 06 2 0, 05 2 10, 04 2 347, 02 2 4, 03 2 4, 23 2 12, 3E 2 0, E2 2 4096, 24 2 0, 14 2 1, "
     "06 2 0", 0, {"search_type": 1, "search_velocity": 10, "search_accerleration": 4, "velocity": 10,
                   "acceleration": 4, "deceleration": 4, "stop": 1}, {"Offset Position": 0, "Approach Velocity Percent": 0.0}),
    ("_Motion_setAutoHome1", (1, 0, 1, 1, 5, 0), {}, "23 2 55, 3E 2 0, E2 2 4096", 0, {"stop": 1},
     {"Offset Position": 0, "Approach Velocity Percent": 5}),
    ("_Motion_setAutoHome1", (1, 2, 1, 0, 0, -1), {}, "23 2 32875, 3E 2 0, E2 2 4096", 0, {"stop": 1},
     {"Offset Position": -1, "Approach Velocity Percent": 0, "Final Approach Direction": 0}),
    ("Motion_getMoveStatus", (1,), {"E8": 13}, "E8 0 0", 1, {}, {}),
    ("Motion_getMoveStatus", (1,), {"E8": 2}, "E8 0 0", 0, {}, {}),
    ("Motion_checkRef", (3,), {"E8": 8}, "E8 0 0", 0, {}, {}),
    ("Motion_getHomeStatus", (1,), {"EB": 2}, "EB 2 0", 1, {}, {}),
    ("Motion_getLimitStatus", (1,), {"EB": 256}, "EB 2 0", [0, 1], {}, {}),
    ("Motion_readCapturePoint", (1,), {"37": -7}, "37 2 0", -7, {}, {}),
    ("Motion_getLogicalPosi", (1,), {"30": -7}, "30 2 0", -7, {}, {}),
    ("Motion_getEncoderPosi", (1,), {"31": -7}, "31 2 0", -7, {}, {}),
]


@pytest.mark.parametrize("operation, arguments, values, frames, result, record, settings", CONFIGURATION)
def test_axis_operations(ratchet, call, operation, arguments, values, frames, result, record, settings):
    ratchet.chip.values = values
    expected = copy.deepcopy([ratchet.axis_1, ratchet.axis_2, ratchet.axis_3, ratchet.axis_4])
    vars(expected[1]).update(record)
    expected[1].motion_dict.update(settings)
    assert call(ratchet, operation, 0, *arguments) == result
    assert frames_of(ratchet) == frames
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
    assert call(ratchet, "Motion_getHomeStatus", 0, 0) == 0 and call(ratchet, "Motion_getLimitStatus", 0, 0) == [0, 1]


@pytest.mark.parametrize("mode, velocity, frame", [(0, 1, "54"), (1, 1, "50"), (2, 0, "52"), (2, -1, "53"), (0, None, "54"), (1, "fast", "50")])
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


def outputs(*masks):
    return ", ".join(OUTPUT.format(mask) for mask in masks)


# operation, arguments after the port, frames, record, its changes
INTERPOLATIONS = [
    ("Motion_cfg2AxisLinearInterpo", (2, 100, 0, 50, 300, 10000, 20000),
     outputs(1, 4) + ", 2A 0 69, 04 1 110, 05 1 300, 02 1 10000, 03 1 20000, 06 1 50, 06 4 100, 6D 0 0", "linear",
     {"main_axis": 0, "main_dest": 50, "second_axis": 2, "second_dest": 100, "speed": 300, "acceleration": 10000,
      "deceleration": 20000, "mode": 2}),
    ("Motion_cfg3AxisLinearInterpo", (3, -1, 2, -2, 1, -3),
     outputs(2, 4, 8) + ", 2A 0 142, 04 2 347, 05 2 10000, 02 2 100000, 03 2 100000, 06 2 -3, 06 4 -2, 06 8 -1, 6D 0 0",
     "linear", {"main_axis": 1, "main_dest": -3, "second_axis": 2, "second_dest": -2, "third_axis": 3, "third_dest": -1,
                "speed": 10000, "acceleration": 100000, "deceleration": 100000, "mode": 3}),
    ("Motion_cfg4AxisLinearInterpo", (0, 1, 3, 2, 1, 3, 2, 4, 5, 4, 4),
     outputs(1, 2, 4, 8) + ", 2A 0 15, 04 1 2, 05 1 5, 02 1 4, 03 1 4, 06 1 1, 06 2 3, 06 4 4, 06 8 2, 6D 0 0",
     "linear", {"main_axis": 0, "main_dest": 1, "second_axis": 1, "second_dest": 3, "third_axis": 2, "third_dest": 4,
      "fourth_axis": 3, "fourth_dest": 2, "speed": 5, "acceleration": 4, "deceleration": 4, "mode": 4}),
    ("Motion_cfgCircularInterpo", (2, 0, 10.9, -20, 0, 40, 1, 500, 6, 7),
     outputs(4, 1) + ", 2A 0 85, 04 1 500, 05 1 500, 02 1 6, 03 1 7, 08 4 10, 06 4 0, 08 1 -20, 06 1 40", "circular",
     {"main_axis": 0, "center_point_x": 10.9, "center_point_y": -20, "finish_point_x": 0, "finish_point_y": 40,
      "direction": 1, "speed": 500, "acceleration": 6, "deceleration": 7}),
    ("Motion_cfgCircularInterpo", (1, 1, 1, 2, 3, 4, 0),
     outputs(2, 2) + ", 2A 0 66, 04 2 10000, 05 2 10000, 02 2 100000, 03 2 100000, 08 2 1, 06 2 3, 08 2 2, 06 2 4",
     "circular", {"main_axis": 1, "center_point_x": 1, "center_point_y": 2, "finish_point_x": 3, "finish_point_y": 4,
                  "direction": 0, "speed": 10000, "acceleration": 100000, "deceleration": 100000}),
    ("_Motion_writeHelicalInterpolation", (1, 2, 3, 4, 0, 5, 1, 6, 7, 8, 1),
     outputs(1, 2, 8) + ", 2A 0 331, 04 1 8, 05 1 8, 1A 0 7, 06 1 1, 08 1 3, 06 2 2, 08 2 4, 06 8 6", "helical",
     {"finish_point_axis1": 1, "finish_point_axis2": 2, "center_point_axis1": 3, "center_point_axis2": 4,
      "enable_axis3": 0, "pitch_axis3": 5, "enable_axis4": 1, "pitch_axis4": 6, "rotation_number": 7,
      "circular_speed": 8, "circular_direction": 1}),
]


@pytest.mark.parametrize("operation, arguments, frames, record, changes", INTERPOLATIONS)
def test_interpolations(ratchet, call, operation, arguments, frames, record, changes):
    records = [ratchet.linear_interpo, ratchet.circular_interpo, ratchet.helical_interpo]
    expected = copy.deepcopy(records)
    vars(expected[["linear", "circular", "helical"].index(record)]).update(changes)
    assert call(ratchet, operation, 0, *arguments) == 0
    assert frames_of(ratchet) == frames and repr(records) == repr(expected)


def test_starts_of_interpolations(ratchet, call):
    for mode, frame in [(2, "61 0 0"), (3, "62 0 0"), (4, "63 0 0"), (5, "")]:
        ratchet.linear_interpo.mode = mode
        ratchet.chip.values[frame[:2]] = 54
        assert call(ratchet, "Motion_startLinearInterpo", 0) == (-7019 if frame else 0) and frames_of(ratchet) == frame
    for direction, frame in [(0, "64 0 0"), (1, "65 0 0")]:
        ratchet.circular_interpo.direction = direction
        assert call(ratchet, "Motion_startCircularInterpo", 0) == 0 and frames_of(ratchet) == frame


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


def test_a_calculation_that_takes_too_long_is_no_failure(ratchet, call):
    ratchet.chip.values = {"E8": 1, "3B": 5}
    assert call(ratchet, "Motion_cfgHelicalInterpo", 0, 1, 2, 3, 4, 0, 0, 0, 0, 1, 9, 0, 0) == 0
    assert take_frames(ratchet)[1][-2:] == ["6B 0 0", "E8 0 0"] and ratchet.helical_interpo.calculation_result == 0


WRONG = pyzvr.InputTypeNotCorrectError
# operation, arguments that are right, and per place of an argument what is wrong there
REFUSALS = [
    ("Motion_open", (0,), [(5, pyzvr.MotionPortNotAvaliable)]), ("Motion_close", (0,), [("0", WRONG)]),
    ("Motion_cfgHome", (0, 0, 1, 1), [(-1, pyzvr.MotionPortNotAvaliable), (0.0, WRONG), (2, pyzvr.MotionEnableError),
                                      (2, pyzvr.MotionPolarityError)]),
    ("Motion_cfgAxis", (0, 0, 0, 0, 0, 0), [
        None, None, (2, pyzvr.MotionStepperOutputError), (2, pyzvr.MotionDirectionError),
        (-1, pyzvr.MotionDirectionError),
        ("1", WRONG)]),
    ("Motion_cfgLimit", (0, 0, 1, 1, 1), [None, None, (2, pyzvr.MotionEnableError), (None, WRONG),
                                          (2, pyzvr.MotionPolarityError)]),
    ("Motion_cfgJerkAndAccelMode", (0, 0, 1, 0), [
        None, ("0", WRONG), (1.5, WRONG), (3, pyzvr.MotionAccelerationModeError)]),
    ("Motion_rstEncoderPosi", (0, 0, 0), [None, None, (0.5, WRONG)]),
    ("Motion_enableServoOn", (0, 0), [(7, pyzvr.MotionPortNotAvaliable), (None, WRONG)]),
    ("_Motion_enableServoOn", (0, 0, 1), [None, None, (2, pyzvr.MotionEnableError)]),
    ("Motion_cfgCapture", (0, 0, 0, 0), [
        None, None, (2, pyzvr.MotionCaptureTypeError), (2, pyzvr.MotionCaptureModeError)]),
    ("Motion_cfgBreakPoint", (0, 0, 0, 0, 0, 0, 0, 0), [
        None, None, (2, pyzvr.MotionBreakPointModeError), (2, pyzvr.MotionPolarityError)] + [(0.0, WRONG)] * 4),
    ("Motion_cfgAxisMove", (0, 0, 0, 0, 0, 0, 0), [
        None, None, (3, pyzvr.MotionOperationModeError)] + [(0.0, WRONG)] * 4),
    ("Motion_stop", (0, 0, 0), [None, None, (2, pyzvr.MotionStopModeError)]),
    ("Motion_cfg2AxisLinearInterpo", (0, 0, 1, 1, 1), [None, ("", WRONG), (0.0, WRONG), ("", WRONG), (0.0, WRONG)]),
    ("Motion_cfgCircularInterpo", (0, 0, 1, 0, 0, 0, 0, 0, 0), [
        None, (0.0, WRONG), (0.0, WRONG)] + [("", WRONG)] * 4 + [(2, pyzvr.MotionDirectionError), (0.0, WRONG)]),
    ("Motion_cfgHelicalInterpo", (0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0), [None] + [("", WRONG)] * 4 + [
        (2, pyzvr.MotionEnableError), ("", WRONG), (2, pyzvr.MotionEnableError), ("", WRONG), ("", WRONG), (0.0, WRONG),
        (2, pyzvr.MotionDirectionError), ("", WRONG)]),
    ("Motion_cfgFindRef", (0, 0, 0, 0, 0, 0, 0, 0, 0), [
        None, None, (3, pyzvr.MotionSearchTypeError), (2, pyzvr.MotionSearchTypeError), (0.0, WRONG), (0.0, WRONG),
        ("", WRONG), (2, pyzvr.MotionEnableError), (0.0, WRONG)]),
    ("Motion_getLogicalPosi", (0, 0), [None, ("", WRONG)]),
]


@pytest.mark.parametrize("operation, right, wrong", REFUSALS, ids=lambda value: value if isinstance(value, str) else "")
def test_bad_arguments_fail_by_name_before_anything_is_sent(ratchet, call, operation, right, wrong):
    records = lambda: repr([*vars(ratchet).values()])  # noqa: E731
    before = records()
    for place, (value, failure) in ((place, each) for place, each in enumerate(wrong) if each):
        with pytest.raises(failure) as raised:
            call(ratchet, operation, *right[:place], value, *right[place + 1:])
        assert raised.type is failure and ratchet.client_cmd.sent == [] and records() == before


def test_an_axis_that_there_is_not_is_told_but_not_refused(ratchet, call):
    assert ratchet._checkMCX514Axis(4) is ratchet._checkMCX514Axis(-1, True) is pyzvr.MotionAxisError
    assert ratchet._checkMCX514Axis(3) is True and ratchet._checkMCX514Axis(9, False) is True
    assert call(ratchet, "Motion_stop", 0, 7, 1) == 0 and frames_of(ratchet) == "57 128 0"
    assert ratchet.axis_4.stop_decl == 1 and ratchet._getAxisHandle(7) is ratchet.axis_4


# A position of a bit is not negative: what has to be sent before a bit is asked for is sent, and no more.
@pytest.mark.parametrize("operation, arguments, frames", [
    ("Motion_stop", (-1, 0), "56 0 0"), ("Motion_findRef", (-2,), "5A 0 0"), ("Motion_getLogicalPosi", (-1,), "30 0 0"),
    ("Motion_getMoveStatus", (-1,), "E8 0 0"), ("Motion_startMultiAxisMove", ([0, -1],), "3F 1 0, E3 1 24, 06 1 0, 05 1 10000, 04 1 347, 02 1 100000, "
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
        assert (record.main_axis, record.main_dest, record.second_axis, record.mode, record.speed) == (-1, 6, 1, 2, 10000)


@pytest.mark.parametrize("ending", ["", "_async"])
def test_the_controller_is_made_by_the_constructor_of_its_driver(ending):
    module, driver = getattr(pyzvr, "MCX514Module" + ending), getattr(pyzvr, "MCX514Driver" + ending)
    other = getattr(pyzvr, "MCX514Driver" + ("" if ending else "_async"))
    with mock.patch.object(driver, "__init__", autospec=True, return_value=None) as constructor, mock.patch.object(other, "__init__", return_value=None) as unused:
        made = module({0: [0]})
    assert constructor.mock_calls == [mock.call(made)] and unused.mock_calls == [] and vars(made) == {"motion_dict": {0: [0]}}
    assert module({0: [0]}).axis_4.velocity == 10000


def test_registers_come_back_as_the_reply_was(pawl, call):
    async def given(reply):
        return reply

    for reply in (bytes(range(7)), list(range(7)), bytearray(range(7))):
        pawl._echoPacketWithRetry, pawl._echoPacketWithRetry_async = lambda *_, **__: reply, lambda *_: given(reply)
        assert call(pawl, "_Motion_read", 0, 1) == reply[3:] and type(call(pawl, "_Motion_read", 0, 1)) is type(reply)
        assert call(pawl, "_Motion_readDI", 0) is reply and call(pawl, "Motion_getProcessState", 0) == (1, reply[2:])
        assert call(pawl, "Motion_readCurrentVelocity", 0) == 0x03040506 and pawl.status_bit1_driver_err == 1


def connectors_of(product):
    return take_frames(product)[0]


def test_slots_of_the_chassis_count_from_1(chassis, call):
    for slot, connector in [(1, 0), (2, 1), (4, 3)]:
        call(chassis, "Motion_cfgHome", slot, 0, 1, 1)
        call(chassis, "Motion_getLogicalPosi", slot, 0)
        call(chassis, "Motion_getEncoderPosi", slot, 0)
        assert set(connectors_of(chassis)) == {connector}
    for slot in (0, 3, 5):
        with pytest.raises(pyzvr.MotionPortNotAvaliable):
            call(chassis, "Motion_getMoveStatus", slot, 0)
    assert chassis.client_cmd.sent == [] and pyzvr.HANDLE_PROPERTIES["Lattice"]["Motion"] == 1


def test_some_steps_map_a_slot_twice(chassis, call):
    twice = [2] if call is awaited else [3]
    call(chassis, "Motion_cfgBreakPoint", 4, 0, 1, 0, 0, 0, 0, 0)
    assert connectors_of(chassis) == [3] * 6 + [2] + [3] * 2
    call(chassis, "Motion_enableServoOn", 4, 0)
    assert connectors_of(chassis) == [3, 2] + twice
    call(chassis, "Motion_setLogicalPosi", 3, 0, 1)
    assert connectors_of(chassis) == twice
    with pytest.raises(ValueError):
        call(chassis, "Motion_enableServoOn", 1, 0)
    assert connectors_of(chassis) == [0]


def test_four_axes_from_one_loop_over_a_socket_that_answers_out_of_order():
    """Replies to all requests that wait are sent in turned order, some in pieces: each must reach its own axis."""
    waiting, lock = [], threading.Lock()

    def answer(connection, data):
        with lock:
            for frame in re.findall(rb"\x02\x00\x08\xd0(.{7})\r\n", data, re.DOTALL):
                axis = frame[2]
                value = 1000 * axis + frame[1] if frame[1] in (pyzvr.MOTION_30_LP, pyzvr.MOTION_31_RP) else 0
                waiting.append(b"\x02\x00\x08\xd0" + frame[:3] + value.to_bytes(4, "big") + b"\r\n")
            if len(waiting) >= 4:
                stream = b"".join(reversed(waiting))
                waiting.clear()
                connection.sendall(stream[:21])
                connection.sendall(stream[21:])

    async def axis(ratchet, number):
        configured = await ratchet.Motion_cfgAxisMove_async(0, number, 1, 100 * number, 1000, 5000, 5000)
        logical = await ratchet.Motion_getLogicalPosi_async(0, number)
        return configured, [logical, await ratchet.Motion_getEncoderPosi_async(0, number)]

    async def all_axes(ratchet):
        return await asyncio.gather(*(axis(ratchet, number) for number in range(4)))

    peer = Peer(answer)
    with pyzvr.Ratchet() as ratchet:
        ratchet.connect("127.0.0.1", peer.port, verbose=False)
        results = asyncio.run(all_axes(ratchet))
    peer.close()
    assert results == [(0, [1000 * mask + 48, 1000 * mask + 49]) for mask in (1, 2, 4, 8)]


# Files

@pytest.fixture
def ini(tmp_path):
    path = tmp_path / "axes.ini"
    path.touch()
    return path


def use(product, call, path):
    assert call(product, "Motion_openCfgFile", str(path)) == 0


def test_settings_go_through_a_file(ratchet, call, ini):
    use(ratchet, call, ini)
    ratchet.axis_2.motion_dict.update({"Home Enable": 1, "Offset Position": -7, "Approach Velocity Percent": 35})
    ratchet.axis_4.motion_dict["Stepper Output"] = 1
    assert call(ratchet, "Motion_saveCfgFile") == 0 and ratchet.client_cmd.sent == []
    lines = ini.read_text().splitlines()
    assert [line for line in lines if line.startswith("[")] == [f"[Axis_{number}]" for number in (1, 2, 3, 4)]
    assert len(lines) == 4 * 24 and lines[1] == "stepper output = Step/Dir(One Pulse)" and lines[23] == ""
    assert {"approach velocity percent = 20.0", "initial search direction = Reverse", "home polarity = Active Low",
            "forward enable = TRUE"} < set(lines[:24])
    saved = copy.deepcopy([axis.motion_dict for axis in axes_of(ratchet)])
    ratchet.Motion_saveCfgFile()
    assert ini.read_text().splitlines() == lines
    with handle("Ratchet") as other:
        use(other, call, ini)
        assert call(other, "Motion_loadCfgFile") == 0
        assert [axis.motion_dict for axis in axes_of(other)] == saved
        connectors, frames = take_frames(other)
        assert set(connectors) == {0} and len(frames) == 4 * 20
        assert frames[:2] == ["3F 1 0", "E3 1 24"] and frames[61] == "E3 8 0" and "E2 2 8" in frames


def axes_of(product):
    return [product.axis_1, product.axis_2, product.axis_3, product.axis_4]


def test_loading_on_the_chassis_reaches_the_first_connector(chassis, call, ini):
    use(chassis, call, ini)
    chassis.Motion_saveCfgFile()
    assert call(chassis, "Motion_loadCfgFile") == 0
    assert connectors_of(chassis) == [0] * 80


def test_a_file_edited_by_hand(ratchet, call, ini):
    use(ratchet, call, ini)
    ratchet.Motion_saveCfgFile()
    text = ini.read_text()

    def load(old, new):
        ini.write_text(text.replace(old, new, 1))
        use(ratchet, call, ini)
        return call(ratchet, "Motion_loadCfgFile")

    assert load("home enable = FALSE", 'HOME Enable: "TRUE"') == 0 and ratchet.axis_1.motion_dict["Home Enable"] == 1
    assert load("percent = 20.0", "percent = 35") == 0
    assert repr(ratchet.axis_1.motion_dict["Approach Velocity Percent"]) == "35.0"
    ratchet.client_cmd.sent.clear()
    for old, new, failure in [
            ("offset position = 2000", "offset position = 2000.5", ValueError),
            ("home enable = FALSE", "home enable = false", KeyError),
            ("home enable = FALSE\n", "", configparser.NoOptionError),
            ("[Axis_3]", "[Axis_5]", configparser.NoSectionError),
            ("[Axis_1]", "", configparser.MissingSectionHeaderError),
            ("[Axis_1]", "[Axis_1]\n???", configparser.ParsingError)]:
        ratchet.axis_1.motion_dict.update({"Stepper Output": 1, "Forward Enable": 0})
        with pytest.raises(failure):
            load(old, new)
        # What stands before the fault is stored.
        reached = failure not in (configparser.MissingSectionHeaderError, configparser.ParsingError)
        assert ratchet.axis_1.motion_dict["Stepper Output"] == (0 if reached else 1)
        assert ratchet.client_cmd.sent == []


def test_files_that_are_not_there(ratchet, call, ini, tmp_path):
    for operation in ("Motion_saveCfgFile", "Motion_loadCfgFile"):
        with pytest.raises(AttributeError):
            call(ratchet, operation)
    (tmp_path / "axes.txt").touch()
    for name, failure in [("none.ini", pyzvr.IniFileNotFoundError), ("none.txt", pyzvr.IniFileNotFoundError),
                          ("axes.txt", pyzvr.IniFileExtensionNameError)]:
        with pytest.raises(failure):
            call(ratchet, "Motion_openCfgFile", str(tmp_path / name))
    use(ratchet, call, ini)
    ini.unlink()
    with pytest.raises(configparser.NoSectionError):
        call(ratchet, "Motion_loadCfgFile")
    assert call(ratchet, "Motion_saveCfgFile") == 0 and ini.exists() and ratchet.client_cmd.sent == []


@contextlib.contextmanager
def small_files(size):
    limits = resource.getrlimit(resource.RLIMIT_FSIZE)
    resource.setrlimit(resource.RLIMIT_FSIZE, (size, limits[1]))
    try:
        yield
    finally:
        resource.setrlimit(resource.RLIMIT_FSIZE, limits)


def test_a_save_writes_into_the_file_itself(ratchet, call, ini):
    use(ratchet, call, ini)
    second = ini.with_name("second.ini")
    os.link(ini, second)
    ini.chmod(0o640)
    before = ini.stat()
    assert call(ratchet, "Motion_saveCfgFile") == 0 and second.read_text() == ini.read_text() != ""
    text = ini.read_text()
    for key, value, failure in (("Home Enable", 2, KeyError), ("Offset Position", "%", ValueError)):  # has no text; is no value to the parser
        with mock.patch.dict(ratchet.axis_3.motion_dict, {key: value}), pytest.raises(failure):
            call(ratchet, "Motion_saveCfgFile")
        assert ini.read_text() == text
    with small_files(1000), pytest.raises(OSError):
        call(ratchet, "Motion_saveCfgFile")
    assert call(ratchet, "Motion_saveCfgFile") == 0 and second.read_text() == ini.read_text() == text
    after = ini.stat()
    assert (after.st_ino, after.st_nlink, after.st_mode, after.st_uid) == (before.st_ino, 2, before.st_mode, before.st_uid)
    assert set(ini.parent.iterdir()) == {ini, second}


def test_the_hosts_functions_are_used_as_they_are_now(ratchet, call, ini):
    with mock.patch("os.path.isfile", return_value=True):
        assert call(ratchet, "Motion_openCfgFile", "missing.ini") == 0
    with mock.patch("builtins.open", mock.mock_open()) as opened:
        call(ratchet, "Motion_saveCfgFile")
    assert opened.mock_calls[0] == mock.call("missing.ini", "w") and opened.mock_calls[-1] == mock.call().close()
    assert "".join(each.args[0] for each in opened().write.mock_calls).startswith("[Axis_1]\nstepper output")
    with pytest.raises(pyzvr.IniFileNotFoundError):
        call(ratchet, "Motion_openCfgFile", "missing.ini")
    assert call(ratchet, "Motion_openCfgFile", ini) == 0 and call(ratchet, "Motion_saveCfgFile") == 0 and ini.read_text()
    for wrong in (5, None, b"axes.ini"):
        with pytest.raises(TypeError, match="filename: .*(int|NoneType|bytes)"):
            call(ratchet, "Motion_openCfgFile", wrong)


def test_saving_where_the_folder_takes_no_new_file(ratchet):
    folder = Path(tempfile.mkdtemp())
    ini = folder / "axes.ini"
    link = folder / "link.ini"
    ini.touch(0o666)
    link.symlink_to(ini)
    ini.chmod(0o666)
    ratchet.Motion_openCfgFile(str(link))
    ratchet.Motion_saveCfgFile()
    assert link.is_symlink() and (before := ini.read_text())
    ratchet.axis_1.motion_dict["Home Enable"] = 1
    folder.chmod(0o555)
    user = os.geteuid()
    try:
        if user == 0:
            os.seteuid(65534)
        assert ratchet.Motion_saveCfgFile() == 0
    finally:
        os.seteuid(user)
        folder.chmod(0o755)
    assert ini.read_text() == before.replace("home enable = FALSE", "home enable = TRUE", 1)
    shutil.rmtree(folder)


def test_the_drive_keeps_one_axis(pawl, call, ini):
    registers(pawl)
    use(pawl, call, ini)
    pawl.axis.motion_dict.update({"Reverse Enable": 0, "Inverse Motion Direction": 1})
    assert call(pawl, "Motion_saveCfgFile") == 0
    assert (ini.read_text().count("["), len(ini.read_text().splitlines())) == (1, 24)
    pawl.axis.motion_dict.update({"Reverse Enable": 1, "Inverse Motion Direction": 0})
    assert call(pawl, "Motion_loadCfgFile") == 0
    assert (pawl.axis.motion_dict["Reverse Enable"], pawl.axis.motion_dict["Inverse Motion Direction"]) == (0, 1)
    assert sent_by(pawl) == [("3A", 0), "00", ("00", 16), "34", ("34", 16), "34", ("34", 1)]


def test_a_simulated_axis_takes_its_settings_and_moves(ini):
    async def move(ratchet):
        assert await ratchet.Motion_open_async(0) == await ratchet.Motion_openCfgFile_async(str(ini)) == 0
        assert await ratchet.Motion_saveCfgFile_async() == await ratchet.Motion_loadCfgFile_async() == 0
        assert await ratchet.Motion_cfgAxisMove_async(0, 2, 1, -300, 20000, 400000, 200000) == 0
        words = await ratchet._Motion_getWR2_async(0, 2), await ratchet._Motion_getWR3_async(0, 2)
        assert await ratchet.Motion_startSingleAxisMove_async(0, 2) == 0
        while not await ratchet.Motion_getMoveStatus_async(0, 2):
            pass
        return words, [await ratchet.Motion_getLogicalPosi_async(0, axis) for axis in range(4)]

    with connected("Ratchet") as ratchet:
        assert asyncio.run(move(ratchet)) == ((0b1110000010000, 0b11010), [0, 0, -300, 0])
        with pytest.raises(pyzvr.MotionPortNotAvaliable):
            ratchet.Motion_open(1)


# The stepper drive

def registers(pawl, values=None, status=0, chip=0):
    """Lets reads of registers give these values, and writes this status."""
    values = values or {}
    pawl.client_cmd.replies[pyzvr.MOTION_READ_REG] = lambda data: (
        bytes([data[0], 0, chip]) + values.get(data[1], 0).to_bytes(4, "big"))
    pawl.client_cmd.replies[pyzvr.MOTION_WRITE_REG] = lambda data: data[:6] + bytes([status])


def sent_by(pawl):
    """Registers that were read, and pairs of those that were written."""
    sent, pawl.client_cmd.sent = pawl.client_cmd.sent, []
    assert all(data[0] == 0 and (command == pyzvr.MOTION_READ_REG or data[2] == 0) for command, data in sent)
    names = [(f"{data[1]:02X}", int.from_bytes(data[3:], "big")) for _, data in sent]
    return [name if command == pyzvr.MOTION_WRITE_REG else name[0] for (command, _), name in zip(sent, names)]


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
