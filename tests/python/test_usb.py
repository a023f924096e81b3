"""USB devices through the real libusb, beside emulated ones; and the device class on clients of a test's own."""

import json
import os
import sys
import threading
from pathlib import Path

import pytest
import zvrkit.sim
from simulators import simulator_program

import pyzvr

LAB = str(Path(__file__).with_name("labs") / "usb_lab.py")
PRODUCT = "Sable-Dio"


def seen_in(scenario, *devices):
    if not os.path.exists(simulator_program("zvr-sim-usb")):
        pytest.skip("zvr-sim-usb is not built: it needs libumockdev")
    with zvrkit.sim.usb(*devices) as bus:
        control = bus.process.stdin.fileno()
        run = bus.run([sys.executable, LAB, scenario, str(control)], stdin=bus.process.stdout, pass_fds=[control],
                      capture_output=True, text=True, timeout=60)
    assert run.returncode == 0, run.stderr
    return json.loads(run.stdout)


def test_finding_devices_and_taking_one_from_the_kernel():
    report = seen_in("finding", "SableDio:AAA", "SableCan:BBB", "--kernel-driver")
    assert report["seen"].pop("default") in (["AAA", "AAA"], ["BBB", "BBB"])  # the library's order
    assert report == {
        "found": [["AAA", "Sable-Dio"], ["BBB", "Sable-Can"]],
        "seen": {"AAA": ["AAA", "AAA"], "BBB": ["BBB", "BBB"]},
        "fields": ["AAA", "Sable-Dio", "AAA", 1, 0, 129, 1],
        "opened": ["SableCan", "BBB"], "alias": True, "wrong": ["USBConnectionError", True, None], "detached": True}


def test_bytes_of_a_read_that_has_timed_out_are_kept():
    assert seen_in("lateness", "SableDio") == {"serials": ["SIM00001"] * 30}


def test_a_silent_device_costs_next_to_nothing_and_callers_read_at_once():
    report = seen_in("idling", "SableDio")
    assert report.pop("share") >= 0
    assert report == {"costly": False, "quiet": ["USBTimeoutError"], "serials": ["SIM00001"], "own": [], "spun": False,
                      "again": "SIM00001", "ended": True}


def test_a_forked_child_leaves_the_device_to_its_parent():
    assert seen_in("forking", "SableDio") == [[0, "SIM00001"]] * 4


def test_streams_arrive_whole_in_pieces_of_64_bytes():
    assert seen_in("streaming", "SableAnalog", "--wave", "*:count") == {
        "8": [[0, 0, 0, 0], [2000, 2], True, 0, 0], "3": [[0, 0, 0, 0], [6300, 2], True, 0, 0]}


def test_transfers_have_at_least_64_bytes():
    report = seen_in("transfers", "SableDio")
    frames = [bytes.fromhex(each) for each in report["out"][:3]]
    bodies = [bytes([pyzvr.GET_THREADS]) + b"A" * length for length in (0, 58, 59)]
    expected = [b"\2" + len(body).to_bytes(2, "big") + body + b"\r\n" for body in bodies]
    assert frames == [frame.ljust(64, b"\0") for frame in expected]
    assert [len(each) for each in frames] == [64, 64, 65]
    assert report["quiet"] == ["USBTimeoutError", False, 110]
    assert report["replies"] == 3
    assert report["busy"] is None or report["busy"][0] in ("USBError", "ReceivePacketTimeoutError")


def test_requests_in_both_forms_lose_nothing_and_devices_are_let_go():
    assert seen_in("traffic", "SableDio") == {
        "names": [PRODUCT], "count": 100, "serials": ["SIM00001"], "page": list(range(50)), "grown": 0,
        "again": "SIM00001"}


def test_pulses_are_counted_in_simulated_time():
    report = seen_in("pulses", "SableDio")
    assert report["refused"] == pyzvr.errFirmwarePulse
    assert report["ready"] == [0] * 9
    assert report["set"] == [2**48 - 1, -3, 1]
    assert report["counted"] == [0, 0, 200000.0, 100.0]
    assert report["still"] == [True, True]
    assert report["stopped"] == [0, 0]
    assert report["closed"] == [0, 0, 0]


def test_unplugging_is_reported_a_few_times_and_survived():
    report = seen_in("unplugging", "SableDio")
    assert report["request"][0] in ("ReceivePacketTimeoutError", "NetworkConnectionLostError", "USBError")
    assert report["reported"]
    assert report["kinds"] == ["USBError"]
    assert report["few"]
    assert not report["busy"]
    assert report["awaited"][0] in ("TimeoutError", "NetworkConnectionLostError", "USBError")
    assert report["gone"] == ["USBConnectionError", True, None]
    assert report["listed"] == []
    assert report["back"] == "BACK"


class Failing:
    """A client whose reads fail as told."""

    def __init__(self, *errors):
        self.errors = list(errors)
        self.done = threading.Event()

    def recvAndSplitPacket(self, length):
        if self.errors:
            raise self.errors.pop(0)
        self.done.set()
        return []


@pytest.fixture
def reports(monkeypatch):
    lines = []
    monkeypatch.setattr(pyzvr, "printGenericError", lambda error: lines.append(f"{type(error).__name__}:{error}"))
    return lines


def test_failed_reads_are_printed_and_timeouts_are_not(reports):
    with pyzvr.SableDio() as box:
        client = box.client_cmd = Failing(pyzvr.USBTimeoutError(110, "late"), ValueError("odd"),
                                          pyzvr.USBTimeoutError())
        box.recv_cmd_lock.release()
        assert client.done.wait(5)
        box.recv_cmd_lock.acquire()
        assert reports == ["ValueError:odd"]


def test_missing_client_is_reported_unless_the_handle_is_closed(monkeypatch):
    reported = threading.Event()
    errors = []
    monkeypatch.setattr(pyzvr, "printGenericError", lambda error: (errors.append(error), reported.set()))
    box = pyzvr.SableDio()
    box.recv_cmd_lock.release()
    assert reported.wait(5)
    assert isinstance(errors[0], AttributeError)
    box.close()
    box.recv_cmd_thread.join(5)
    count = len(errors)
    assert not box.recv_cmd_thread.is_alive()
    assert count < 3
    with pytest.raises(pyzvr.USBConnectionError, match="The handle is closed"):
        box.connect()


def test_no_device_and_the_warning_about_the_library(capsys):
    with pytest.warns(UserWarning, match="Warning 519000: External library"):
        assert pyzvr.getLibUSB1() is None
    with pyzvr.SableDio() as box, pytest.warns(UserWarning), pytest.raises(pyzvr.USBConnectionError):
        box.connect()
    assert box.serial_num is None
    assert not box.connect_status_cmd
    assert "test_usb.py" in capsys.readouterr().out
