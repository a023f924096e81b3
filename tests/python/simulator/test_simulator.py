"""The models against their simulated counterparts over real TCP, in both forms, faults included."""

import asyncio
import contextlib
import json
import os
import signal
import socket
import subprocess

import pytest
from simulators import connected, running_simulator, simulator_program

import pyzvr

MODELS = ["TarnDio", "TarnDioLite"]

@pytest.fixture(scope="module", params=MODELS)
def product(request):
    with connected(request.param, "--serial", "SN123456", "--alias", "left rack") as product:
        yield product


@pytest.fixture(scope="module")
def lite():
    with connected("TarnDioLite") as product:
        yield product


def test_identity(product, call):
    assert call(product, "Sys_getDriverInfo")[:2] == [product._getDeviceName(), "3.2.6"]
    assert call(product, "_getDriverInfo_dev", 1).startswith(product._getDeviceName())
    assert call(product, "Sys_getSerialNumber") == product.serial_number == "SN123456"
    assert call(product, "Sys_getDeviceAlias") == "left rack"
    assert call(product, "Sys_setDeviceAlias", "x" * 17) == -7027
    assert call(product, "Sys_setDeviceAlias", "right rack") == 0
    assert call(product, "Sys_getDeviceAlias") == "right rack"
    assert call(product, "_setSerialNumber", "SN2") == 0 and call(product, "Sys_getSerialNumber") == "SN2"
    assert call(product, "_getThreads") == product.thread_info != ""
    assert call(product, "Sys_getPythonVersion") == pyzvr.__version__ == "3.2.6"
    assert call(product, "_resetFactory") == 0
    assert (call(product, "Sys_getSerialNumber"), call(product, "Sys_getDeviceAlias")) == ("SN123456", "left rack")
    assert call(product, "Sys_reboot") == 0 and call(product, "_Sys_rebootOnBootloader") == 0


def test_clock_and_alarm(product, call):
    assert call(product, "Sys_setRTC", 2031, 5, 6, 7, 8, 9) == 0
    assert call(product, "Sys_getRTC").startswith("2031-05-06, 07:08:")
    assert call(product, "Sys_setRTC", 31, 5, 6, 7, 8, 9) == 0
    assert call(product, "Sys_getRTC").startswith("1931-05-06")
    assert call(product, "Sys_setRTC", 2031, 2, 30, 7, 8, 9) == -7004
    assert call(product, "Sys_startRTCAlarm", 0, 28, 1, 2, 3) == 0
    assert call(product, "_Sys_getRTCAlarmState") == "on"
    assert call(product, "_Sys_getRTCAlarmConfig").endswith("-28, 01:02:03")
    assert call(product, "Sys_startRTCAlarm", 0, 32, 1, 2, 3) == 20
    assert call(product, "Sys_stopRTCAlarm") == 0 and call(product, "_Sys_getRTCAlarmState") == "off"


def test_eeprom(product, call):
    assert call(product, "_setEEPROMPage", 3, [1, 2, 3]) == 0 and call(product, "_setEEPROMByte", 3, 1, 200) == 0
    assert call(product, "_getEEPROMPage", 3)[:4] == [1, 200, 3, 0]
    assert call(product, "_setEEPROMPage", 200, [1]) == call(product, "_setEEPROMByte", 3, 64, 1) == -7012
    assert call(product, "_getEEPROMDevice", 0)[0] == 0


def test_addresses(product, call):
    assert call(product, "Net_setIPAddrAndSubmask", "10.1.2.3", "255.255.0.0") == 0
    assert call(product, "Sys_getIPAddrAndSubmask") == ["10.1.2.3", "255.255.0.0"]
    assert call(product, "_setGateway", "10.1.0.1") == 0 and call(product, "Net_getGateway") == "10.1.0.1"
    assert call(product, "_setMACAddr", "2:0:0:aa:b:ff") == 0 and call(product, "Net_getMACAddr") == "2:0:0:aa:b:ff"
    assert call(product, "_setMACAddr", "2:0:0") == -7027


def test_lines_of_a_fixed_model_are_wired_back(call):
    with connected("TarnDio") as box:
        for word in (0b101010, 0b010101):
            assert call(box, "DO_writePort", 0, word) == 0
            assert call(box, "DI_readPort", 1) == [word >> i & 1 for i in range(6)] + [0, 0]
        assert call(box, "DO_togglePort", 0) == [0, 1, 0, 1, 0, 1, 0, 0]
        assert call(box, "Sys_getPinModeInPort", 0) == ["DO"] * 6 + ["Disabled"] * 2
        assert call(box, "_setDIOCurrent", 1, 1, 1, 1, 1) == -7015


def test_lines_are_opened_driven_read_and_closed(lite, call):
    assert call(lite, "DIO_loadStartup", 0) == ([0] * 8, [0] * 8, [0] * 8)
    assert call(lite, "DO_openPins", 0, [0, 1, 2]) == 0 and call(lite, "DI_openPort", 2) == 0
    assert call(lite, "Sys_getPinModeInPort", 0) == ["DO"] * 3 + ["Idle"] * 5
    assert call(lite, "DO_writePort", 0, [1, 0, 1, 1]) == 0
    assert call(lite, "DI_readPort", 2) == [1, 0, 1, 0, 0, 0, 0, 0]
    assert call(lite, "DO_writePins", 0, [0, 1], [0, 1]) == 0
    assert call(lite, "DI_readPins", 2, [1, 0, 2]) == [1, 0, 1]
    assert call(lite, "DO_togglePins", 0, 0b101) == [1, 1, 0, 0, 0, 0, 0, 0]
    assert call(lite, "_setDIOState", 0, 7, 4) == 0 and call(lite, "_getDIOState", 0, 65535)[:3] == [0, 0, 1]
    assert call(lite, "DI_readPort", 2)[:3] == [1, 1, 0]
    assert call(lite, "_writeDO", 0) == 0 and call(lite, "DI_readPort", 2)[:3] == [0, 0, 1]
    assert call(lite, "_readDI", 2) == 0
    assert call(lite, "_getDIOCurrent", 0, 7) == ([1, 1, 1] + [0] * 5, [1, 1, 1] + [0] * 5, [0, 0, 1] + [0] * 5)
    with pytest.raises(pyzvr.DIPortNotAvaliableError):
        call(lite, "DI_openPort", 0)
    assert call(lite, "DO_closePins", 0, [0]) == 0 and call(lite, "Sys_getPinModeInPort", 0)[0] == "Idle"
    assert call(lite, "DO_closePort", 0) == 0 and call(lite, "DI_closePort", 2) == 0
    assert call(lite, "DI_readPort", 2) == [0] * 8


def test_the_device_refuses_what_its_lines_cannot_do(lite, call):
    assert call(lite, "_setDIOCurrent", 0, 1 << 9, 1 << 9, 0, 0) == -7001
    assert call(lite, "_setDIOCurrent", 0, 1, 1, 0, 0) == call(lite, "_setDIOCurrent", 9, 1, 1, 0, 0) == -7015
    assert call(lite, "_toggleDIODirection", 0, 1, 0) == 0
    assert call(lite, "_DIO_setPortDO", 1) == 0 and call(lite, "Sys_getPinModeInPort", 1) == ["DO"] * 8
    assert call(lite, "_DIO_setPortIdle", 1) == 0 and call(lite, "Sys_getPinModeInPort", 1) == ["Idle"] * 8
    assert call(lite, "_DIO_setPortDI", 3) == 0 and call(lite, "DI_closePort", 3) == 0
    assert call(lite, "Sys_setDIMode", 1) == 10 and call(lite, "Sys_getMode", 4) == "Idle"


def test_saved_start_up_state_is_taken_at_a_restart(lite, call):
    assert call(lite, "_DIO_saveStartup", 0, 3, 3, 1) == 0
    assert call(lite, "DIO_loadStartup", 0)[2] == [1] + [0] * 7
    assert call(lite, "Sys_reboot") == 0
    assert call(lite, "Sys_getPinModeInPort", 0) == ["DO", "DO"] + ["Idle"] * 6
    assert call(lite, "DI_openPort", 2) == 0 and call(lite, "DI_readPort", 2)[0] == 1
    assert call(lite, "_DIO_saveStartup", 0, 0, 0, 0) == 0 and call(lite, "Sys_reboot") == 0


def test_start_up_states_fit_the_lines(call):
    with connected("TarnDio") as box:
        assert call(box, "_DIO_saveStartup", 1, 1, 1, 0) == -7015
        assert call(box, "_DIO_saveStartup", 0, 0, 0, 5) == 0 and call(box, "Sys_reboot") == 0
        assert call(box, "Sys_getPinModeInPort", 0) == ["DO"] * 6 + ["Disabled"] * 2
        assert call(box, "DI_readPort", 1) == [1, 0, 1, 0, 0, 0, 0, 0]


def test_a_closed_line_has_no_level(call):
    with connected("TarnDioLite") as box:
        assert call(box, "DO_openPins", 0, [0, 1]) == 0 and call(box, "DO_writePort", 0, 3) == 0
        assert call(box, "DO_closePins", 0, [1]) == 0
        assert call(box, "_setAndWriteDO", 0, 1, 1) == [1, 0, 0, 0, 0, 0, 0, 0]


def test_a_client_that_takes_no_replies_is_not_read_from():
    request, size = bytes.fromhex("020002f7000d0a"), 70
    with running_simulator("TarnDio") as simulator:
        with socket.create_connection((simulator["host"], simulator["command_port"])) as client:
            client.settimeout(0.5)
            sent = 0
            with pytest.raises(TimeoutError):
                while sent < 1 << 25:
                    sent += client.send(request * 1000)
            client.settimeout(10)
            whole = sent // len(request)
            received = 0
            while received < whole * size:
                received += len(client.recv(1 << 20))
            assert received == whole * size


FAULTS = [
    ("--split", "1"), ("--flood", "3000"), ("--duplicate", "1"), ("--coalesce", "3"), ("--delay", "0.015"),
    ("--drop", "0.4", "--seed", "7"), ("--truncate", "0.4", "--seed", "7"), ("--corrupt", "0.4", "--seed", "7"),
]


@pytest.mark.parametrize("faults", FAULTS, ids=lambda faults: faults[0])
def test_requests_get_through_faults(faults):
    with connected("TarnDio", *faults, "--fault-command", "GET_SERIAL_NUMBER") as box:
        results = []
        for _ in range(20):
            try:
                results.append(box.Sys_getSerialNumber(timeout=0.5))
            except (pyzvr.ReceivePacketTimeoutError, UnicodeDecodeError):
                results.append(None)
        good = results.count("SIM00001")
        assert good == 20 if faults[0] not in ("--drop", "--truncate", "--corrupt") else good >= 10
        assert box.Sys_getDriverInfo()[0] == "Tarn-Dio"
        if faults[0] in ("--split", "--flood", "--duplicate", "--delay"):
            assert asyncio.run(box.Sys_getSerialNumber_async()) == "SIM00001"


def test_a_device_that_stalls_or_cuts_is_a_timeout_or_a_lost_link(call):
    with connected("TarnDio", "--stall", "2") as box:
        assert [call(box, "Sys_getSerialNumber") for _ in range(2)] == ["SIM00001"] * 2
        with pytest.raises(pyzvr.ReceivePacketTimeoutError):
            box.Sys_getSerialNumber(timeout=0.1)
    with running_simulator("TarnDio", "--cut", "2") as simulator:
        box = pyzvr.TarnDio()
        box.connect(simulator["host"], simulator["command_port"])
        assert [call(box, "Sys_getSerialNumber") for _ in range(2)] == ["SIM00001"] * 2
        with pytest.raises(pyzvr.NetworkConnectionLostError):
            for _ in range(5):
                box.Sys_getSerialNumber(timeout=0.1)
        with contextlib.suppress(pyzvr.NetworkConnectionLostError):  # it has come as a reset, or in order
            box.close()
        assert box.killed


def test_connections_share_the_device_and_survive_each_other():
    with running_simulator("TarnDioLite") as simulator:
        address = simulator["host"], simulator["command_port"]
        with socket.create_connection(address) as vandal:
            vandal.sendall(os.urandom(5000) + b"\x02\x00\x01")
            with pyzvr.TarnDioLite() as one, pyzvr.TarnDioLite() as two:
                one.connect(*address)
                two.connect(*address)
                assert one.DO_openPort(0) == 0 and one.DO_writePort(0, 1) == 0
                assert two.DI_openPort(2) == 0 and two.DI_readPort(2)[0] == 1


def test_the_program_by_itself():
    program = simulator_program()
    listed = subprocess.run([program, "--list"], capture_output=True, text=True).stdout.splitlines()
    rows = json.loads(subprocess.run([program, "--table"], capture_output=True, text=True).stdout)
    assert "TarnDioLite\tTarn-Dio-Lite" in listed and listed == [f"{row['model']}\t{row['name']}" for row in rows]
    assert len({tuple(row) for row in rows}) == 1
    assert "usage: zvr-sim" in subprocess.run([program, "--help"], capture_output=True, text=True).stdout
    for arguments in ([], ["Nothing"], ["TarnDio", "--drop", "2"], ["TarnDio", "--port", "x"], ["TarnDio", "--serial", '"'],
                      ["TarnDio", "--fault-command", "NOTHING"], ["TarnDio", "--nonsense"], ["TarnDio", "--host", "nowhere"]):
        refused = subprocess.run([program, *arguments], capture_output=True, text=True, timeout=10)
        assert refused.returncode == 2 and refused.stderr and not refused.stdout
    process = subprocess.Popen([program, "TarnDio"], stdout=subprocess.PIPE, text=True)
    said = json.loads(process.stdout.readline())
    assert said["model"] == "TarnDio" and said["name"] == "Tarn-Dio" and said["pid"] == process.pid
    taken = subprocess.run([program, "TarnDio", "--port", str(said["command_port"])], capture_output=True, timeout=10)
    assert taken.returncode == 1
    process.send_signal(signal.SIGTERM)
    assert process.wait(10) == 0
    process.stdout.close()
