"""The failure vocabulary: classes, codes, texts, and what the warnings print."""

import threading
import warnings

import pytest

import pyzvr

FAILURES = [value for value in vars(pyzvr).values()
            if isinstance(value, type) and issubclass(value, (pyzvr.Error, pyzvr.ZVRWarning))
            and value not in (pyzvr.Error, pyzvr.ZVRWarning)]


def test_there_are_115_classes_with_their_roots_and_constants():
    assert len(FAILURES) == 115
    codes = {failure(silent=True).code for failure in FAILURES}
    constants = {value for name, value in vars(pyzvr).items() if name.startswith(("err", "warn"))}
    assert constants == codes
    motion = [failure for failure in FAILURES if -9113 <= failure(silent=True).code <= -9100]
    assert len(motion) == 14 and all(issubclass(failure, pyzvr.ZVRWarning) for failure in motion)
    assert pyzvr.PAWLPortNotAvaliable().code == pyzvr.errCANPort == -8900


def test_an_error_keeps_its_code_and_takes_a_message():
    timeout = pyzvr.ReceivePacketTimeoutError()
    assert str(timeout) == "Error -8004: Receive packet timeout."
    assert (timeout.code, timeout.msg) == (pyzvr.errPacketTimeout, "Receive packet timeout.")
    other = pyzvr.FirmwareZVRIndexError("mine", 1, two=2)
    assert (other.code, other.msg) == (-7003, "mine")
    assert str(pyzvr.Error(5, "five", "more", x=1)) == "Error 5: five"

    class Mine(pyzvr.DIPortNotAvaliableError):
        pass

    assert Mine(msg="x").code == -8100


@pytest.mark.parametrize("status, failure", [
    (10, "FirmwareEnableError"), (13, "FirmwareZVRIndexError"), (21, "FirmwareI2CError"), (50, "FirmwareDIOError"),
    (80, "FirmwareParserError"), (14, "FirmwareOtherError"), (255, "FirmwareOtherError")])
def test_firmware_status(status, failure):
    with pytest.raises(getattr(pyzvr, failure)):
        pyzvr.checkFirmwareError(status)
    assert pyzvr.checkFirmwareError(0) is None


def test_a_warning_reports_itself_when_it_is_made(capsys):
    def here():
        return pyzvr.AIQueueOverflowWarning()

    with pytest.warns(UserWarning, match="^Warning 520000: Occurrence AI queue overflow.$") as caught:
        here()
    assert caught[0].category is UserWarning
    printed = capsys.readouterr().out
    assert "in here" in printed and printed.count(__file__) >= 1
    assert str(pyzvr.AIQueueOverflowWarning("x", silent=True)) == "Warning 520000: x"


def test_a_silent_warning_reports_nothing(capsys):
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        pyzvr.AIQueueOverflowWarning(silent=True)
    assert capsys.readouterr().out == ""


def test_a_motion_failure_is_no_error_and_reports_on_any_thread(capsys):
    caught = []

    def work():
        try:
            raise pyzvr.MotionAxisError(silent=True)
        except pyzvr.Error:
            caught.append("error")
        except pyzvr.ZVRWarning:
            caught.append("warning")

    thread = threading.Thread(target=work)
    thread.start()
    thread.join()
    assert caught == ["warning"]


def test_print_generic_error(capsys):
    pyzvr.printGenericError(pyzvr.USBConnectionError("gone"))
    assert capsys.readouterr().out == "USBConnectionError:Error -8001: gone\n"
