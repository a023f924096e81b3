"""The flight controller: what each operation sends and makes of a reply, and a simulated one in flight."""

import math
import os
import struct
import time

import pytest
from cases import Exchange, operation_of
from fake_client import fake_device
from simulators import connected, running_simulator

import pyzvr

F32 = pyzvr.convertF32To4U8
OK, REFUSED = b"\0\0", b"\0\x36"
BATTERY = b"\0" + struct.pack(">3f", 15.5, 2, 87.5) + b"more"
PATH = b"\0" + struct.pack(">6f", math.pi, -math.pi / 2, 0, 1, 2, -3)


def radians(*angles):
    return [byte for angle in angles for byte in F32(math.radians(angle))]


def metres(*lengths):
    return [byte for length in lengths for byte in F32(length)]


WIRE = [
    Exchange(
        "Drone_getFirmwareVersion", (), command="DRONE_GET_FIRMWARE_VERSION", sent=[], reply=b"\x003.2\0x",
        result="3.2",
    ),
    Exchange("Drone_getSerialNumber", (), command="DRONE_GET_SERIAL_NUMBER", sent=[], reply=b"\0SN1", result="SN1"),
    Exchange("Drone_readBattery", (), command="DRONE_READ_BATTERY", sent=[], reply=BATTERY, result=[15.5, 2.0, 87.5]),
    Exchange("Drone_getFlightMode", (), command="DRONE_READ_FLIGHT_MODE", sent=[], reply=b"\0\1", result=1),
    Exchange("_Drone_setFlightMode", (1,), command="DRONE_SET_FLIGHT_MODE", sent=[1], reply=REFUSED, result=-7019),
    Exchange("Drone_setAttitudeMode", (), command="DRONE_SET_FLIGHT_MODE", sent=[0], reply=OK, result=0),
    Exchange("Drone_setPositionMode", (), command="DRONE_SET_FLIGHT_MODE", sent=[1], reply=OK, result=0),
    Exchange("Drone_setAltitudeSensorMode", (1,), command="DRONE_SET_BAROMETER_MODE", sent=[1], reply=OK, result=0),
    Exchange("Drone_stopMovement", (), command="DRONE_STOP_MOVING", sent=[0], reply=REFUSED, result=-7019),
    Exchange("Drone_getActiveStatus", (), command="DRONE_GET_ACTIVE_STATUS", sent=[], reply=b"\0\1", result=1),
    Exchange("_Drone_setActiveStatus", (7,), command="DRONE_SET_ACTIVE_STATUS", sent=[7], reply=OK, result=0),
    Exchange("Drone_activate", (), command="DRONE_SET_ACTIVE_STATUS", sent=[1], reply=REFUSED, result=-7019),
    Exchange("Drone_deactivate", (), command="DRONE_SET_ACTIVE_STATUS", sent=[0], reply=OK, result=0),
    Exchange("Drone_getTakeOffStatus", (), command="DRONE_GET_TAKEOFF_STATUS", sent=[], reply=b"\0\2", result=2),
    Exchange("_Drone_setTakeoffStatus", (0,), command="DRONE_SET_TAKEOFF_STATUS", sent=[0], reply=OK, result=0),
    Exchange("Drone_startTakeOff", (), command="DRONE_SET_TAKEOFF_STATUS", sent=[1], reply=OK, result=0),
    Exchange("Drone_abortTakeOff", (), command="DRONE_SET_TAKEOFF_STATUS", sent=[0], reply=OK, result=0),
    Exchange("Drone_getLandingStatus", (), command="DRONE_GET_LANDING_STATUS", sent=[], reply=b"\0\xff", result=255),
    Exchange("_Drone_setLandingStatus", (1,), command="DRONE_SET_LANDING_STATUS", sent=[1], reply=OK, result=0),
    Exchange("Drone_startLanding", (), command="DRONE_SET_LANDING_STATUS", sent=[1], reply=OK, result=0),
    Exchange("Drone_abortLanding", (), command="DRONE_SET_LANDING_STATUS", sent=[0], reply=REFUSED, result=-7019),
    Exchange(
        "Drone_readInposition", (), command="DRONE_READ_INPOSITION", sent=[], reply=b"\0\1\0\1", result=b"\1\0\1",
    ),
    Exchange(
        "Drone_readTaskControlMode", (), command="DRONE_READ_TASK_CONTROL_MODE", sent=[], reply=b"\0\3", result=3,
    ),
    Exchange("_Drone_readStatus", (), command="DRONE_READ_STATUS", sent=[], reply=b"\0\4\5", result=4),
    Exchange(
        "Drone_moveVehicleRelX", (1, 0.5), command="DRONE_MOVE_RELATIVE_X_VEHICLE", sent=metres(1, 0.5), reply=OK,
        result=0,
    ),
    Exchange(
        "Drone_moveVehicleRelY", (-1, 0.5), command="DRONE_MOVE_RELATIVE_Y_VEHICLE", sent=metres(-1, 0.5),
        reply=REFUSED, result=-7019,
    ),
    Exchange(
        "Drone_moveVehicleRelXY", (1, 2, 3), command="DRONE_MOVE_RELATIVE_XY_VEHICLE", sent=metres(1, 2, 3), reply=OK,
        result=0,
    ),
    Exchange(
        "Drone_moveVehicleAbsRoll", (30, 10), command="DRONE_MOVE_ABSOLUTE_ROLL_VEHICLE", sent=radians(30, 10),
        reply=OK, result=0,
    ),
    Exchange(
        "Drone_moveVehicleAbsPitch", (-15.5, 1), command="DRONE_MOVE_ABSOLUTE_PITCH_VEHICLE", sent=radians(-15.5, 1),
        reply=OK, result=0,
    ),
    Exchange(
        "Drone_moveNedRelYaw", (90, 45), command="DRONE_MOVE_RELATIVE_YAW_NED", sent=radians(90, 45), reply=OK,
        result=0,
    ),
    Exchange("Drone_moveNedRelX", (1, 2), command="DRONE_READ_MOVE_NED_REL_X", sent=metres(1, 2), reply=OK, result=0),
    Exchange("Drone_moveNedRelY", (1, 2), command="DRONE_MOVE_RELATIVE_Y_NED", sent=metres(1, 2), reply=OK, result=0),
    Exchange("Drone_moveNedRelZ", (1, 2), command="DRONE_MOVE_RELATIVE_Z_NED", sent=metres(1, 2), reply=OK, result=0),
    Exchange(
        "Drone_moveNedRelXY", (1, 2, 3), command="DRONE_MOVE_RELATIVE_XY_NED", sent=metres(1, 2, 3), reply=REFUSED,
        result=-7019,
    ),
    Exchange(
        "Drone_moveNedAbsYaw", (-180, 1), command="DRONE_MOVE_ABSOLUTE_YAW_NED", sent=radians(-180, 1), reply=OK,
        result=0,
    ),
    Exchange("Drone_moveNedAbsX", (1, 2), command="DRONE_MOVE_ABSOLUTE_X_NED", sent=metres(1, 2), reply=OK, result=0),
    Exchange("Drone_moveNedAbsY", (1, 2), command="DRONE_MOVE_ABSOLUTE_Y_NED", sent=metres(1, 2), reply=OK, result=0),
    Exchange("Drone_moveNedAbsZ", (2, 1), command="DRONE_MOVE_ABSOLUTE_Z_NED", sent=metres(2, 1), reply=OK, result=0),
    Exchange(
        "Drone_moveNedAbsXY", (1, 2, 3), command="DRONE_MOVE_ABSOLUTE_XY_NED", sent=metres(1, 2, 3), reply=OK,
        result=0,
    ),
    Exchange(
        "Drone_readTrajectory", (), command="DRONE_READ_TRAJECTORY", sent=[], reply=PATH,
        result=pytest.approx([180, -90, 0, 1, 2, -3], abs=1e-5),
    ),
    Exchange(
        "Drone_readTrajectoryStatus", (), command="DRONE_READ_TRAJECTORY_DONE", sent=[], reply=b"\0\1\2",
        result=b"\1\2",
    ),
]


@pytest.mark.parametrize("case", WIRE, ids=operation_of)
def test_exchanges(case):
    with fake_device("Drone", **{case.command: case.reply}) as drone:
        assert getattr(drone, case.operation)(*case.arguments, timeout=2) == case.result
        assert drone.client_cmd.sent == [(getattr(pyzvr, case.command), bytes([0, *case.sent]))]
        assert not hasattr(drone, case.operation + "_async")


@pytest.mark.parametrize("operation, arguments, error",
                         [("Drone_setAltitudeSensorMode", (2,), pyzvr.InputDataNotInRangeError),
                          ("Drone_setAltitudeSensorMode", ("1",), pyzvr.InputTypeNotCorrectError),
                          ("_Drone_setFlightMode", (2,), pyzvr.FlightModeNotAvaliableError),
                          ("_Drone_setFlightMode", (1.0,), pyzvr.InputTypeNotCorrectError),
                          ("_Drone_setActiveStatus", (256,), ValueError), ("Drone_moveNedAbsX", ("1", 2), TypeError),
                          ("Drone_moveNedRelYaw", (None, 2), TypeError),
                          ("Drone_moveNedRelXY", (1e39, 1, 1), OverflowError)])
def test_bad_arguments_fail_before_anything_is_sent(operation, arguments, error):
    with fake_device("Drone") as drone:
        with pytest.raises(error):
            getattr(drone, operation)(*arguments)
        assert drone.client_cmd.sent == []


def test_limits_are_fields_that_the_checks_read():
    with pyzvr.Drone() as drone:
        assert issubclass(pyzvr.Drone, pyzvr.UARTDevice)
        assert issubclass(pyzvr.DroneModule, pyzvr.DroneBased)
        assert [
            drone.target_roll, drone.target_pitch, drone.target_yaw, drone.target_x, drone.target_y, drone.target_z
        ] == list(range(6))
        assert (drone.yaw_inposition_max_angle, drone.roll_pitch_inposition_min_angle,
                drone.x_inposition_position) == (10, -5, 0.4)
        for target in (drone.target_roll, drone.target_pitch, drone.target_yaw):
            drone._checkAngle(target, 15), drone._checkAngle(target, -15)
            for angle in (15.1, -15.1):
                with pytest.raises(pyzvr.AngleNotAvaliableError):
                    drone._checkAngle(target, angle)
        drone._checkAngle(drone.target_x, 1000)
        drone._checkHeightWithNED(-8), drone._checkHeightWithNED(0)
        for height in (-8.1, 0.1):
            with pytest.raises(pyzvr.HeightNotAvaliableError):
                drone._checkHeightWithNED(height)
        drone.z_min_position_NED, drone.roll_max_angle = -20, 45
        drone._checkHeightWithNED(-8.1), drone._checkAngle(drone.target_yaw, 45)


def test_state_is_read_as_a_whole_or_not_at_all():
    state = b"\0" + struct.pack(">18f", *[math.pi / 2**i
                                          for i in range(3)], 1, 2, 3, *[math.pi] * 3, 4, 5, 6, *[0.0] * 3, 7, 8, 9)
    with fake_device("Drone", DRONE_READ_NED_STATE_RPYXYZ=state) as drone:
        assert drone.current_posi_list == drone.current_velo_list == drone.current_acce_list == []
        position = drone.Drone_getPositionWithNED()
        assert position == pytest.approx([180, 90, 45, 1, 2, 3], abs=1e-5)
        assert position == drone.current_posi_list
        assert drone.Drone_getVelocityWithNED() == drone.Drone_getAccelerationWithNED() == drone.current_velo_list
        assert drone.current_velo_list == pytest.approx([180, 180, 180, 4, 5, 6], abs=1e-5)
        assert drone.current_acce_list == [0, 0, 0, 7, 8, 9]
        assert drone._Drone_getPositionVelociyAcceleration() == 0
        assert drone.client_cmd.sent == [(pyzvr.DRONE_READ_NED_STATE_RPYXYZ, b"\0")] * 4
        for short in (state[:-1], state[:48], state[:1], b""):
            drone.current_posi_list = [1]
            drone.client_cmd.replies[pyzvr.DRONE_READ_NED_STATE_RPYXYZ] = short
            with pytest.raises(IndexError):
                drone.Drone_getVelocityWithNED()
            assert drone.current_posi_list == drone.current_velo_list == drone.current_acce_list == []
        assert position[3:] == [1, 2, 3]  # what was read before stays with who has it
        # The lists are emptied before the drone is asked, also when it does not answer or nothing can be sent.
        lists = lambda: (drone.current_posi_list, drone.current_velo_list, drone.current_acce_list)  # noqa: E731
        seen = []
        drone.client_cmd.replies = {pyzvr.DRONE_READ_NED_STATE_RPYXYZ: lambda data: seen.append(lists()) or state}
        drone.current_posi_list = kept = [1]
        drone._Drone_getPositionVelociyAcceleration()
        assert seen == [([], [], [])]
        assert kept == [1]
        assert all(len(each) == 6 for each in lists())
        drone.client_cmd.replies = {}
        with pytest.raises(pyzvr.ReceivePacketTimeoutError):
            drone.Drone_getPositionWithNED(timeout=0.03)
        assert lists() == ([], [], [])


def test_a_part_of_a_reply_is_of_its_type():
    with fake_device("Drone") as drone:
        for reply in (b"\0\1\2", [0, 1, 2], (0, 1, 2)):
            drone._echoPacketWithRetry = lambda *_, **__: reply
            assert drone.Drone_readInposition() == drone.Drone_readTrajectoryStatus() == reply[1:]
            assert drone.Drone_getFlightMode() == 1


def test_other_short_replies_fail():
    with fake_device("Drone",
                     DRONE_READ_FLIGHT_MODE=b"\0",
                     DRONE_READ_BATTERY=BATTERY[:12],
                     DRONE_STOP_MOVING=b"\0",
                     DRONE_READ_TRAJECTORY=PATH[:24]) as drone:
        for operation, error in (("Drone_getFlightMode", IndexError), ("Drone_readBattery", IndexError),
                                   ("Drone_stopMovement", IndexError), ("Drone_readTrajectory", IndexError)):
            with pytest.raises(error):
                getattr(drone, operation)()


def await_task(drone, *tasks):
    """Until the drone has one of these to do: 0 on the ground, 1 taking off, 2 hovering, 3 moving, 4 landing."""
    limit = time.monotonic() + 20
    while drone.Drone_readTaskControlMode() not in tasks:
        assert time.monotonic() < limit


NOT_NOW, IMPOSSIBLE = pyzvr.errFirmwareEnable, pyzvr.errFirmwareMotion


def test_a_flight():
    with connected("Drone", "--pace", "200") as drone:
        assert drone.Drone_startTakeOff() == drone.Drone_moveNedRelX(
            1, 1) == drone.Drone_stopMovement() == drone.Drone_startLanding() == NOT_NOW
        assert drone.Drone_activate() == 0
        assert drone.Drone_getActiveStatus() == drone._Drone_readStatus() == 1
        assert drone.Drone_abortTakeOff() == NOT_NOW
        assert drone.Drone_getTakeOffStatus() == 0
        assert drone.Drone_getFlightMode() == 1
        assert drone.Drone_startTakeOff() == 0
        assert drone.Drone_deactivate() == NOT_NOW
        await_task(drone, 2)
        assert drone.Drone_getTakeOffStatus() == 2
        assert drone.Drone_getPositionWithNED() == [0, 0, 0, 0, 0, -1.5]
        assert drone.Drone_readInposition() == b"\1" * 6
        assert drone.Drone_readTrajectoryStatus() == b"\1"
        assert drone.Drone_moveNedAbsZ(2, 1) == drone.Drone_moveNedRelZ(-7, 1) == drone.Drone_moveNedRelX(
            1, 0) == drone.Drone_moveNedRelX(float("nan"), 1) == IMPOSSIBLE
        assert drone.Drone_moveVehicleAbsRoll(5, 10) == NOT_NOW
        for move, arguments, place in (
            ("NedAbsXY", (3, 4, 5), [0, 3, 4, -1.5]),
            ("NedRelXY", (-1, -1, 5), [0, 2, 3, -1.5]),
            ("NedRelX", (1, 5), [0, 3, 3, -1.5]),
            ("NedRelY", (1, 5), [0, 3, 4, -1.5]),
            ("NedRelZ", (-1, 5), [0, 3, 4, -2.5]),
            ("NedAbsYaw", (90, 180), [90, 3, 4, -2.5]),
            ("VehicleRelX", (2, 5), [90, 3, 6, -2.5]),
            ("VehicleRelY", (2, 5), [90, 1, 6, -2.5]),
            ("VehicleRelXY", (1, -1, 5), [90, 2, 7, -2.5]),
            ("NedRelYaw", (-90, 180), [0, 2, 7, -2.5]),
            ("NedAbsX", (0, 5), [0, 0, 7, -2.5]),
            ("NedAbsY", (0, 5), [0, 0, 0, -2.5]),
        ):
            assert getattr(drone, "Drone_move" + move)(*arguments) == 0
            assert drone.Drone_readTrajectory()[2:] == pytest.approx(place, abs=1e-4)
            await_task(drone, 2)
            assert drone.Drone_getPositionWithNED()[2:] == pytest.approx(place, abs=1e-4)
            assert drone.Drone_getVelocityWithNED()[2:] == [0] * 4
        assert drone.Drone_setAttitudeMode() == 0
        assert drone.Drone_moveVehicleAbsPitch(-10, 90) == 0
        assert drone.Drone_moveNedRelX(1, 1) == NOT_NOW
        assert drone.Drone_moveVehicleAbsRoll(60, 90) == IMPOSSIBLE
        while drone.Drone_getPositionWithNED()[3] < 3:  # it goes where it leans to
            assert drone.current_velo_list[3] >= 0
        assert drone.Drone_setPositionMode() == drone.Drone_stopMovement() == 0
        await_task(drone, 2)
        assert drone.Drone_getVelocityWithNED() == [0] * 6
        assert drone.Drone_readBattery()[2] < 100
        assert drone.Drone_startLanding() == 0
        assert drone.Drone_startLanding() == NOT_NOW
        await_task(drone, 0)
        assert drone.Drone_getPositionWithNED()[5] == 0
        assert drone.Drone_getLandingStatus() == 2
        assert drone.Drone_deactivate() == 0
        assert drone._Drone_setActiveStatus(2) == IMPOSSIBLE
        assert drone.Drone_setAltitudeSensorMode(0) == 0


def test_reconnecting_after_the_line_has_gone(tmp_path):
    port = str(tmp_path / "drone")
    with pyzvr.Drone() as drone:
        for number in ("FIRST", "SECOND"):
            with running_simulator("Drone", "--link", port, "--serial", number):
                drone.connect(port, verbose=False)
                assert drone.Drone_getSerialNumber() == number
                assert drone.Drone_getPositionWithNED() == [0] * 6
            assert not os.path.exists(port)
            with pytest.raises(pyzvr.NetworkConnectionLostError):
                drone.Drone_getPositionWithNED(timeout=5)
            assert drone.current_posi_list == []
            with pytest.raises(pyzvr.UARTConnectionError):
                drone.disconnect(verbose=False), drone.connect(port)


def test_replies_that_are_cut_short_on_the_line():
    with connected("Drone", "--truncate", "1", "--fault-command", "DRONE_READ_NED_STATE_RPYXYZ") as drone:
        with pytest.raises(pyzvr.ReceivePacketTimeoutError):
            drone.Drone_getPositionWithNED(timeout=0.1)
        assert drone.current_posi_list == []
        assert drone.Drone_getSerialNumber() == "SIM00001"
