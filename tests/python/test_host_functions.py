"""Functions of the host, and variants of operations, can be replaced for as long as a test lasts."""

import asyncio
import contextlib
import inspect
import io
import sys
import warnings
from unittest import mock

import pytest
from own_process import run_apart
from replacement import on_fake_client, slept

import pyzvr


def finder_of_files(box):
    return box.Motion_openCfgFile("missing.ini")


def name_of_error(action, *arguments):
    try:
        return action(*arguments)
    except Exception as error:
        return type(error).__name__


def opened_handle(box):
    with contextlib.redirect_stdout(io.StringIO()) as printed:
        pyzvr.Device.close(pyzvr.TarnDio())
    return "Opened handle (Tarn-Dio)" in printed.getvalue()


def warned_text(box):
    with warnings.catch_warnings(record=True) as caught, contextlib.redirect_stdout(io.StringIO()):
        warnings.simplefilter("always")
        pyzvr.CANQueueOverflowWarning()
    return [str(each.message) for each in caught]


def writer_of(box):
    log = pyzvr.DataLogger()
    log.Logger_openFile("/dev/null", verbose=False)
    kind = type(log.writer_csv).__name__
    log.writer_csv = mock.Mock()
    log._Logger_close(False)
    return kind


def handle_of(box):
    log = pyzvr.DataLogger()
    log.Logger_openFile("/dev/null", verbose=False)
    kind = type(log.f_handle).__name__
    log._Logger_close(False)
    return kind


async def no_sleep(seconds, result=None):
    return result


HOST = {  # by name: a substitute, what the action gives with it, the action, what it gives by itself
    "os.path.isfile": (lambda name: True, 0, finder_of_files, "IniFileNotFoundError"),
    "builtins.print": (lambda *words, **named: None, False, opened_handle, True),
    "warnings.warn": (lambda *arguments, **named: None, [], warned_text, ["Warning 520002: Occurrence CAN queue overflow."]),
    "asyncio.sleep": (no_sleep, set(), slept, "still asleep"),
    "csv.writer": (lambda *arguments, **named: mock.Mock(), "Mock", writer_of, "writer"),
    "builtins.open": (lambda *arguments, **named: mock.MagicMock(), "MagicMock", handle_of, "TextIOWrapper"),
    "socket.inet_aton": (lambda text: b"\1\2\3\4", [1, 2, 3, 4], lambda box: list(pyzvr.convertIPAddrTo4U8("9.8.7.6")), [9, 8, 7, 6]),
    "pyzvr.checkInputType": (lambda *arguments: 1 / 0, "ZeroDivisionError", lambda box: box.Sys_setRTC(24, 1, 1, 0, 0, 0), 0),
    "pyzvr.checkFirmwareError": (lambda status: None, 21, lambda box: box.Sys_setDeviceAlias("x"), -7005),
    "pyzvr.LABEL_DICT": ({"Lattice": "Another"}, "Another", lambda box: box._getDeviceName(), "Lattice"),
    "pyzvr.STREAMING_CMD_LIST": ([5], "echo", lambda box: box._checkCommandType(pyzvr.START_CAN, b"\1"), "streaming"),
    "pyzvr.BROADCAST_CMD_LIST": ([5], "echo", lambda box: box._checkCommandType(pyzvr.GET_DEVICE_INFO, b"\1"), "broadcast"),
}


@pytest.mark.parametrize("name", HOST)
def test_a_function_of_the_host_is_the_one_of_now(name):
    code = f"import test_host_functions as t, warnings; warnings.simplefilter('ignore'); t.look_up({name!r})"
    run = run_apart(code)
    assert run.returncode == 0, run.stderr


def look_up(name):
    """In a process of its own, whose first use is that of the double."""
    double, replaced, action, own = HOST[name]
    with on_fake_client(pyzvr.Lattice) as box:
        box.client_cmd.replies.update(
            {pyzvr.SET_DEV_ALIAS & 255: b"\x15", pyzvr.SET_DEV_ALIAS: b"\x15", pyzvr.SET_DATE_TIME: b"\0"})
        for _ in range(3):
            with mock.patch(name, double):
                seen = name_of_error(action, box)
                assert seen == replaced, seen
            seen = name_of_error(action, box)
            assert seen == own, seen
        box.client_udp = None


def awaitables():
    for name, class_ in vars(pyzvr).items():
        if inspect.isclass(class_):
            yield from ((class_, member) for member in vars(class_) if member.endswith("_async"))


def test_awaitable_forms_are_coroutine_functions():
    found = list(awaitables())
    assert len(found) > 300
    wrong = [
        f"{class_.__name__}.{name}" for class_, name in found if not asyncio.iscoroutinefunction(getattr(class_, name))
    ]
    assert wrong == []
    with pyzvr.TarnDio() as box:
        assert asyncio.iscoroutinefunction(box.Sys_getSerialNumber_async)
        assert not asyncio.iscoroutinefunction(box.Sys_getSerialNumber)
        if sys.version_info >= (3, 12):
            assert inspect.iscoroutinefunction(box.Sys_getSerialNumber_async)


@pytest.mark.parametrize("where", ["instance", "class"])
def test_awaitable_forms_are_replaced_by_awaitable_doubles(where):
    with pyzvr.TarnDio() as box:
        with mock.patch.object(box if where == "instance" else pyzvr.TarnDio,
                               "Sys_getSerialNumber_async",
                               return_value="double") as double:
            assert isinstance(double, mock.AsyncMock)
            assert asyncio.run(box.Sys_getSerialNumber_async()) == "double"
            double.assert_awaited_once()
        with mock.patch.object(box, "Sys_getSerialNumber", return_value="double") as double:
            assert not isinstance(double, mock.AsyncMock)
            assert box.Sys_getSerialNumber() == "double"
        with mock.patch.object(pyzvr.SystemModule_async, "Sys_getSerialNumber_async", autospec=True) as double:
            double.return_value = "double"
            assert asyncio.run(box.Sys_getSerialNumber_async()) == "double"
