"""The failure vocabulary: classes, codes, texts, and what the warnings print."""

import builtins
import inspect
import threading
import traceback
import warnings
from unittest import mock

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
    assert len(motion) == 14
    assert all(issubclass(failure, pyzvr.ZVRWarning) for failure in motion)
    assert pyzvr.PAWLPortNotAvaliable().code == pyzvr.errCANPort == -8900


def test_a_class_tells_its_code_and_its_message():
    for failure in FAILURES:
        made = failure(silent=True)
        assert (failure.code, failure.msg) == (made.code, made.msg)
    assert pyzvr.MotionAxisError.code == pyzvr.errMotionAxis
    assert not hasattr(pyzvr.Error, "code")


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


@pytest.mark.parametrize(
    "status, failure",
    [
        (10, "FirmwareEnableError"),
        (13, "FirmwareZVRIndexError"),
        (21, "FirmwareI2CError"),
        (50, "FirmwareDIOError"),
        (80, "FirmwareParserError"),
        (14, "FirmwareOtherError"),
        (255, "FirmwareOtherError"),
        (256, "FirmwareOtherError"),
        (-21, "FirmwareOtherError"),
        (2**40, "FirmwareOtherError"),
        (2**31 + 21, "FirmwareOtherError"),
        (-(10**40), "FirmwareOtherError"),
    ],
)
def test_firmware_status(status, failure):
    with pytest.raises(getattr(pyzvr, failure)):
        pyzvr.checkFirmwareError(status)
    assert pyzvr.checkFirmwareError(0) is None


class Mine(pyzvr.AIQueueOverflowWarning):
    """A warning with a constructor of its own."""

    def __init__(self, *args):
        super().__init__(*args)


class Own(Mine):
    def __init__(self, text):
        Mine.__init__(self, text)


class Sharing(pyzvr.CANQueueOverflowWarning):
    """Makes another warning in its constructor, which is a line of its own."""

    def __init__(self):
        super().__init__(silent=True)
        self.line = inspect.currentframe().f_lineno + 1
        pyzvr.AIQueueOverflowWarning("inner")


@pytest.mark.parametrize("make, text", [(pyzvr.AIQueueOverflowWarning, "Warning 520000: Occurrence AI queue overflow."),
                                        (Mine, "Warning 520000: Occurrence AI queue overflow."),
                                        (lambda: Own("x"), "Warning 520000: x"),
                                        (lambda: pyzvr.ZVRWarning(7, "root"), "Warning 7: root"),
                                        (Sharing, "Warning 520000: inner")])
def test_a_warning_names_the_line_that_made_it(capsys, make, text):
    def here():
        return make()

    with warnings.catch_warnings(record=True) as caught:
        warnings.simplefilter("always")
        made = here()
    (warning,) = caught
    assert warning.category is UserWarning
    assert str(warning.message) == text
    assert warning.filename == __file__
    lines = {made.line} if make is Sharing else {
        here.__code__.co_firstlineno +
        1, getattr(make, "__code__", here.__code__).co_firstlineno
    }
    assert warning.lineno in lines
    # The stack ends in that line; its constructors are left out.
    frames = capsys.readouterr().out.rstrip().split("\n  File ")
    assert f"{__file__}\", line {warning.lineno}, in " in frames[-1]
    assert "in here" in "".join(frames[-3:])
    assert ("in __init__" in frames[-1]) == (make is Sharing)
    assert "traceback.py" not in "".join(frames[-4:])


def test_what_reports_a_warning_is_looked_up_each_time(capsys):
    stack = traceback.extract_stack()[-1:]
    with mock.patch.object(warnings, "warn") as warn, mock.patch.object(builtins, "print") as printer, \
            mock.patch.object(traceback, "extract_stack", return_value=stack) as extract, \
            mock.patch.object(traceback, "format_list", return_value=["one\n", "two\n"]) as form:
        pyzvr.UARTQueueOverflowWarning("text")
        pyzvr.printGenericError(pyzvr.Error(5, "five"))
    assert warn.mock_calls == [mock.call("Warning 520001: text", UserWarning, 1)]
    assert printer.mock_calls == [mock.call("one\n\ntwo\n"), mock.call("Error:Error 5: five")]
    assert extract.call_count == 1
    assert form.mock_calls == [mock.call(stack)]
    with pytest.warns(UserWarning):
        pyzvr.UARTQueueOverflowWarning()
    assert "in test_what_reports" in capsys.readouterr().out


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
