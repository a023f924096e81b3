"""What the library tells through the host's logging, and that it is silent unless somebody listens."""

import contextlib
import logging
import subprocess
import sys
import threading
from unittest import mock

import pytest
import zvrkit.sim
from fake_client import fake_device
from peer import Peer, answer_serial
from simulators import connected

import pyzvr


@pytest.fixture
def lines(caplog):
    """What the library's loggers tell, as it is told: level and text."""
    caplog.set_level(logging.INFO, "pyzvr.wire")
    caplog.set_level(logging.DEBUG, "pyzvr")
    return lambda: [(each.levelname, each.getMessage()) for each in caplog.records]


def test_the_life_of_a_connection_is_told(lines):
    with zvrkit.sim.device("TarnDio") as place, pyzvr.TarnDio() as box:
        box.connect(*place.address, verbose=False)
        where = "{}:{}".format(*place.address)
        box.disconnect(verbose=False)
        box.connect(*place.address, verbose=False)
        lost = threading.Event()
        box.onConnectionLost(lambda _: lost.set())
        place.cut()
        assert lost.wait(5)
    assert lines() == [("INFO", f"TarnDio at {where}: connected"), ("INFO", f"TarnDio at {where}: disconnected"),
                       ("INFO", f"TarnDio at {where}: connected"),
                       ("WARNING", f"TarnDio at {where}: lost: Error -8003: Network DAQ connection lost."),
                       *closing_of(where)]
    with pyzvr.TarnDio() as box, pytest.raises(pyzvr.NetworkConnectionError):
        box.connect(*place.address, verbose=False)
    level, text = lines()[-2]
    assert level == "WARNING"
    assert text.startswith(f"TarnDio at {where}: not connected: Error -8002: ")
    assert text.endswith("Connection refused)")


def closing_of(where):
    return [("INFO", f"TarnDio at {where}: disconnected"), ("DEBUG", f"TarnDio at {where}: closed")]


def test_what_is_sent_again_and_what_is_refused(lines, call):
    with connected("TarnDio", "--drop", "1") as box:
        with pytest.raises((pyzvr.ReceivePacketTimeoutError, TimeoutError)):
            call(box, "_echoPacketWithRetry", pyzvr.GET_SERIAL_NUMBER, [], *([0.2] if call.__name__ == "blocking" else [2, 2]))
        where = "{}:{}".format(*box.client_cmd.socket.getpeername())
    again = [text for level, text in lines() if level == "WARNING"]
    assert again[0] == f"TarnDio at {where}: no reply yet, GET_SERIAL_NUMBER is sent again (2)"
    with fake_device("TarnAnalog", SET_AI_NUM_SAMPLES=[0, 50], SET_AI_MODE=[0, 50]) as box:
        call(box, "AI_setNumSamples", 0, 10)
        call(box, "AI_setMode", 0, 1)
    assert [text for level, text in lines() if "refused" in text] == [
        f"TarnAnalog: {command} is refused: Error -7015: {pyzvr.FirmwareDIOError.msg}"
        for command in ("SET_AI_NUM_SAMPLES", "SET_AI_MODE")]


@pytest.mark.parametrize("raised", [KeyboardInterrupt, ValueError])
def test_interrupts_go_through_and_errors_of_logging_do_not(raised, call, monkeypatch):
    reported = []
    monkeypatch.setattr(sys, "unraisablehook", lambda told: reported.append(told.exc_type))
    with connected("TarnDio") as box, fake_device("TarnAnalog", SET_AI_NUM_SAMPLES=[0, 50]) as refusing:
        steps = [lambda: call(refusing, "AI_setNumSamples", 0, 10), lambda: box.disconnect(), lambda: box.reconnect()]
        for step in steps:
            with mock.patch.object(logging.getLogger("pyzvr"), "isEnabledFor", side_effect=raised("now")):
                with pytest.raises(raised) if raised is KeyboardInterrupt else contextlib.nullcontext():
                    step()
    assert (KeyboardInterrupt in reported, ValueError in reported) == (False, raised is ValueError)


def test_warnings_and_the_end_of_a_thread(lines, monkeypatch, capsys):
    with pytest.warns(UserWarning):
        pyzvr.AIQueueOverflowWarning()
    assert lines()[-1] == ("WARNING", f"Warning {pyzvr.AIQueueOverflowWarning.code}: {pyzvr.AIQueueOverflowWarning.msg}")
    ended = threading.Event()
    monkeypatch.setattr(threading, "excepthook", lambda _: ended.set())
    with connected("TarnDio") as box:
        def refuse(command, data):
            raise RuntimeError("no room")

        box._putToDataPool = refuse
        box.client_cmd.sendPacket(box._preparePacket(pyzvr.GET_SERIAL_NUMBER, []))
        assert ended.wait(5)
    assert ("ERROR", "thread _recvCMDThread has ended: <class 'RuntimeError'>: no room") in lines()


def test_frames_are_told_by_name_and_in_hex(caplog, call):
    with connected("TarnDio") as box:
        caplog.set_level(logging.DEBUG, "pyzvr.wire")
        number = call(box, "Sys_getSerialNumber")
        caplog.set_level(logging.INFO, "pyzvr.wire")
        call(box, "Sys_getSerialNumber")
        call(box, "Sys_getSerialNumber")
        where = "{}:{}".format(*box.client_cmd.socket.getpeername())
    sent = bytes(box._preparePacket(pyzvr.GET_SERIAL_NUMBER, [])).hex(" ")
    came = bytes(box._preparePacket(pyzvr.GET_SERIAL_NUMBER, number.encode())).hex(" ")
    assert [each.getMessage() for each in caplog.records if each.name == "pyzvr.wire"] == [
        f"{where} > GET_SERIAL_NUMBER: {sent}", f"{where} < GET_SERIAL_NUMBER: {came}"]


def test_every_way_of_asking_for_frames_is_followed_at_once(call):
    """The library keeps an answer of logging only as long as logging itself does."""
    wire, told = logging.getLogger("pyzvr.wire"), []
    handler = mock.Mock(level=0, handle=told.append)
    never, always = mock.Mock(return_value=False), mock.Mock(return_value=True)
    with connected("TarnDio") as box:
        def frames():
            told.clear()
            call(box, "Sys_getSerialNumber")
            return len(told)

        wire.addHandler(handler)
        try:
            assert frames() == 0
            wire.setLevel(logging.DEBUG)
            assert frames() == frames() == 2
            for switch in [mock.patch.object(wire, "disabled", True),
                           mock.patch.object(wire, "isEnabledFor", never),
                           mock.patch.object(logging.Logger, "isEnabledFor", never),
                           mock.patch.object(logging.Logger, "disabled", property(lambda _: True), create=True)]:
                with switch:
                    assert frames() == 0
                assert frames() == 2
            logging.disable(logging.DEBUG)
            assert frames() == 0
            logging.disable(logging.NOTSET)
            assert frames() == 2
            wire.setLevel(logging.NOTSET)
            assert frames() == 0
            with mock.patch.object(logging.getLogger("pyzvr"), "level", logging.DEBUG):
                wire.manager._clear_cache()
                assert frames() == 2
            wire.manager._clear_cache()
            with mock.patch.object(logging.Logger, "isEnabledFor", always):
                assert frames() == 2
            assert frames() == 0
        finally:
            wire.removeHandler(handler)
            wire.setLevel(logging.NOTSET)


def test_every_frame_of_a_busy_link_is_told(caplog):
    """Whoever reads: several callers, the receive thread, and with a step replaced."""
    caplog.set_level(logging.DEBUG, "pyzvr.wire")
    with connected("TarnDio") as box:
        calls = [lambda: box.Sys_getSerialNumber(), lambda: box.Sys_getRTC(), lambda: box.Sys_getDriverInfo()]
        threads = [threading.Thread(target=lambda each=each: [each() for _ in range(50)]) for each in calls]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        box._putToDataPool = box._putToDataPool
        box.Sys_getSerialNumber()
    texts = [each.getMessage().split(": ")[0] for each in caplog.records if each.name == "pyzvr.wire"]
    for name, count in (("GET_SERIAL_NUMBER", 51), ("GET_DATE_TIME", 50), ("GET_DRIVER_INFO", 50)):
        for direction in "><":
            assert sum(text.endswith(f"{direction} {name}") for text in texts) == count, name


def test_what_logging_raises_hurts_nobody(capsys, monkeypatch):
    class Broken(logging.Handler):
        def handle(self, record):
            raise ValueError("no paper")

    reports = []
    monkeypatch.setattr(sys, "unraisablehook", reports.append)
    logger = logging.getLogger("pyzvr")
    logger.addHandler(broken := Broken())
    level = logger.level
    logger.setLevel(logging.DEBUG)
    try:
        peer = Peer(answer_serial)
        with pyzvr.TarnDio() as box:
            box.connect("127.0.0.1", peer.port, verbose=False)
            assert box.Sys_getSerialNumber() == "SN000001"
        peer.close()
    finally:
        logger.removeHandler(broken)
        logger.setLevel(level)
    assert reports and all(isinstance(each.exc_value, ValueError) for each in reports)


def test_a_program_that_sets_up_no_logging_sees_nothing():
    program = ("import pyzvr, socket\n"
               "with socket.create_server(('127.0.0.1', 0)) as taken: port = taken.getsockname()[1]\n"
               "box = pyzvr.TarnDio(verbose=False)\n"
               "try: box.connect('127.0.0.1', port)\n"
               "except ConnectionError: print('refused')\n")
    run = subprocess.run([sys.executable, "-c", program], capture_output=True, text=True, timeout=30)
    assert (run.stdout, run.stderr) == ("refused\n", "")
