"""What a failure tells beside its text: the host's own classes, causes, notes; and what closing adds to it."""

import asyncio
import contextlib
import copy
import fcntl
import inspect
import os
import pickle
import socket
import sys
import types

import pytest
from fake_client import fake_device
from peer import Peer
from simulators import connected

import pyzvr

CLASSES = [value for value in vars(pyzvr).values()
           if isinstance(value, type) and issubclass(value, (pyzvr.Error, pyzvr.ZVRWarning))]
SECOND_BASES = {
    pyzvr.ReceivePacketTimeoutError: TimeoutError,
    pyzvr.NetworkConnectionError: ConnectionError,
    pyzvr.NetworkConnectionLostError: ConnectionError,
    pyzvr.UARTConnectionError: ConnectionError,
    pyzvr.USBConnectionError: ConnectionError,
    pyzvr.InputTypeNotCorrectError: TypeError,
    pyzvr.InputTypeNotConsistentError: TypeError,
    pyzvr.InputDataNotInRangeError: ValueError,
    pyzvr.DIPortNotAvaliableError: ValueError,
    pyzvr.MotionAxisError: ValueError,
    pyzvr.IniFileNotFoundError: FileNotFoundError,
}
noted = pytest.mark.skipif(sys.version_info < (3, 11), reason="exceptions have no notes")


def notes_of(caught):
    return getattr(caught.value, "__notes__", [])


def test_a_failure_is_also_one_of_the_host():
    for failure, host in SECOND_BASES.items():
        assert failure.__bases__ == (failure.__mro__[1], host)
        with pytest.raises(host):
            raise failure(silent=True)
    for failure in (pyzvr.FirmwareDIOError, pyzvr.AIQueueOverflowWarning):
        assert not issubclass(failure, (OSError, TypeError, ValueError))


@pytest.mark.parametrize("given", [(), ("mine",), ("mine", 2), (5, "five"), (5, "five", "file", 1, "other")])
def test_the_host_s_class_leaves_a_failure_as_it_is(given):
    for failure in CLASSES:
        if failure in (pyzvr.Error, pyzvr.ZVRWarning):
            continue
        made = failure(*given, silent=True)
        message = given[0] if given else failure.msg
        kind = "Warning" if isinstance(made, pyzvr.ZVRWarning) else "Error"
        assert str(made) == f"{kind} {failure.code}: {message}"
        assert made.args == given
        assert repr(made) == f"{failure.__name__}{given!r}" if len(given) != 1 else f"{failure.__name__}({given[0]!r})"
        if isinstance(made, OSError):
            assert (made.errno, made.strerror, made.filename) == (None, None, None)
        if isinstance(made, pyzvr.Error):
            made.where = "kept"
            for same in (pickle.loads(pickle.dumps(made)), copy.copy(made)):
                assert (type(same), same.args, same.code, same.where) == (failure, given, failure.code, "kept")
                assert str(same) == str(made)
        assert list(inspect.signature(failure).parameters) == ["msg", "args", "kwargs"]


def test_classes_derived_from_failures_keep_their_own_arguments():

    class Mine(pyzvr.NetworkConnectionError):

        def __init__(self, place, *, port=7):
            super().__init__(f"no way to {place}")
            self.port = port

    made = Mine("there", port=8)
    assert (str(made), made.args, made.port) == ("Error -8002: no way to there", ("there", ), 8)
    assert str(Mine.__new__(Mine, 1)) != ""  # without its constructor


def free_port():
    with socket.create_server(("127.0.0.1", 0)) as taken:
        return taken.getsockname()[1]


def test_a_refused_connection_tells_why():
    with pyzvr.TarnDio() as box, pytest.raises(pyzvr.NetworkConnectionError) as caught:
        box.connect("127.0.0.1", free_port())
    assert isinstance(caught.value.__cause__, ConnectionRefusedError)
    assert str(caught.value) == f"Error -8002: {pyzvr.NetworkConnectionError.msg}"


def test_a_name_that_nobody_has_tells_so():
    with pytest.raises(pyzvr.NetworkConnectionError) as caught:
        pyzvr.TCPClient().connect("no such host.invalid", 7)
    assert isinstance(caught.value.__cause__, socket.gaierror)
    assert caught.value.__cause__.errno in (socket.EAI_NONAME, socket.EAI_AGAIN, socket.EAI_FAIL)


def test_a_taken_port_tells_so():
    with contextlib.closing(socket.socket(socket.AF_INET, socket.SOCK_DGRAM)) as taken:
        taken.bind(("127.0.0.1", 0))
        with pytest.raises(pyzvr.NetworkConnectionError) as caught:
            pyzvr.UDPClient().bind("127.0.0.1", taken.getsockname()[1])
    assert isinstance(caught.value.__cause__, OSError)
    assert caught.value.__cause__.errno == 98


def test_a_serial_line_tells_what_is_wrong_with_it():
    client = pyzvr.UARTClient()
    far, near = os.openpty()
    fcntl.flock(near, fcntl.LOCK_EX)
    for place, cause, number in (("/dev/no such line", FileNotFoundError, 2), (os.devnull, OSError, 25),
                                 (os.ttyname(near), OSError, 16)):
        with pytest.raises(pyzvr.UARTConnectionError) as caught:
            client.connect(place, 9600)
        assert isinstance(caught.value.__cause__, cause), place
        assert caught.value.__cause__.errno == number
    os.close(far)
    os.close(near)


class Answers:
    """What a peer answers to a request, by its command; the rest is silence."""

    def __init__(self, **replies):
        self.replies = {getattr(pyzvr, name): reply for name, reply in replies.items()}

    def __call__(self, connection, data):
        if reply := self.replies.get(data[3]):
            connection.sendall(reply)


def frame(command, data):
    return bytes(pyzvr.TarnDio()._preparePacket(command, data))


@contextlib.contextmanager
def answered_by(**replies):
    peer = Peer(Answers(**replies))
    with pyzvr.TarnDio() as box:
        box.connect("127.0.0.1", peer.port, verbose=False)
        yield box, f"127.0.0.1:{peer.port}"
    peer.close()


def timed_out(call, box):
    """Asks for the serial number, which never comes."""
    if call.__name__ == "blocking":
        with pytest.raises(TimeoutError) as caught:
            box.Sys_getSerialNumber(timeout=0.5)
        assert str(caught.value) == "Error -8004: Receive packet timeout."
        return notes_of(caught)
    with pytest.raises(asyncio.TimeoutError) as caught:
        asyncio.run(box._echoPacketWithRetry_async(pyzvr.GET_SERIAL_NUMBER, [], 2, 2))
    return notes_of(caught)


@noted
def test_a_time_out_tells_what_was_sent_where_and_what_came(call):
    times = "3 times" if call.__name__ == "blocking" else "2 times"
    with answered_by() as (box, place):
        assert timed_out(call, box) == [f"GET_SERIAL_NUMBER was sent {times} to {place}; nothing came meanwhile"]
    other = frame(pyzvr.GET_DEV_ALIAS, b"bench")
    with answered_by(GET_SERIAL_NUMBER=other) as (box, place):
        (note, ) = timed_out(call, box)
    came = note.removeprefix(f"GET_SERIAL_NUMBER was sent {times} to {place}; ")
    number, _, rest = came.partition(" ")
    assert rest == "bytes of other frames came meanwhile"
    assert int(number) in range(len(other), 3 * len(other) + 1, len(other))


@noted
def test_a_time_out_on_another_model_says_so(call):
    for name, told in (("Tarn-Analog", True), ("Tarn-DIO", False), ("Workshop", False)):
        info = frame(pyzvr.GET_DRIVER_INFO, f"{name}_1.0_x".encode())
        with answered_by(GET_DRIVER_INFO=info) as (box, _):
            assert call(box, "Sys_getDriverInfo") == [name, "1.0", "x"]
            notes = timed_out(call, box)
        assert notes[1:] == (["the device calls itself Tarn-Analog: is TarnDio the right class?"] if told else [])


REFUSED = [  # model, operation, arguments, error, what its notes tell
    ("TarnDio", "DI_readPort", ("0", ), TypeError, ("port", "'0'", "int is wanted")),
    ("TarnDio", "DI_readPort", (99, ), ValueError, ("port=99", "accepted here: ")),
    ("TarnDio", "DI_readPins", (0, [0, 77]), ValueError, ("[0, 77]", "accepted here: ")),
    ("TarnAnalog", "AI_setSamplingRate", (0, "fast"), TypeError, ("rate", "'fast'", "int or float is wanted")),
    ("SableCan", "CAN_write", (1, 5, [1], 3, False), TypeError, ("'remote'", "int came, bool is wanted")),
    ("Ratchet", "Motion_cfgAxisMove", (0, 0, 0, 1.5, 1, 1, 1), TypeError, ("'target_posi'", "1.5", "int is wanted")),
    ("TarnDio", "Sys_setRTC", (2024, 1, 1, "noon", 0, 0), TypeError, ("'hour'", "'noon'", "int is wanted")),
]


@noted
@pytest.mark.parametrize("number", range(len(REFUSED)))
def test_a_refused_argument_is_told_with_its_value_and_what_is_accepted(call, number):
    model, operation, arguments, error, told = REFUSED[number]
    with fake_device(model) as box, pytest.raises(error) as caught:
        call(box, operation, *arguments)
    assert isinstance(caught.value, (pyzvr.Error, pyzvr.ZVRWarning))
    notes = "\n".join(notes_of(caught))
    for text in told:
        assert text in notes, notes


def test_without_notes_a_refusal_is_the_same(monkeypatch):
    """As on hosts before Python 3.11."""
    monkeypatch.setattr(pyzvr.Error, "add_note", property(lambda self: self.no_such_method), raising=False)
    with fake_device("TarnDio") as box, pytest.raises(pyzvr.InputTypeNotCorrectError) as caught:
        box.DI_readPort("0")
    assert notes_of(caught) == []


# Operations that take whatever comes: a row is written as text, and a read of frames has no use for its port.
UNCHECKED = {"Logger_openFile", "Logger_writeHeader", "Logger_writeList", "Logger_writeValue", "Logger_write2DList",
             "CAN_read"}


def operations():
    """The public operations of all models that need arguments, each once: a model that has it, and their names."""
    found = {}
    for model in pyzvr.LABEL_DICT:
        kind = getattr(pyzvr, model)
        for name in dir(kind):
            if "_" not in name or name.startswith("_") or name.endswith("_async") or not callable(getattr(kind, name)):
                continue
            parameters = list(inspect.signature(getattr(kind, name)).parameters.values())[1:]
            if needed := [each.name for each in parameters if each.default is inspect.Parameter.empty]:
                found.setdefault(name, (model, needed))
    return found


@noted
def test_a_hostile_first_argument_is_refused_by_name(call):
    """Whatever is refused is refused by an error that says which argument it is, and before the device is asked."""
    unlike = {}
    table = operations()
    assert len(table) > 150
    for name, (model, arguments) in table.items():
        with fake_device(model) as box:
            if name in UNCHECKED or (call.__name__ == "awaited" and not hasattr(box, name + "_async")):
                continue
            try:
                call(box, name, object(), *[0] * (len(arguments) - 1))
            except pyzvr.APINotSupportError:
                pass
            except (TypeError, ValueError) as error:
                told = "\n".join([str(error), *getattr(error, "__notes__", [])])
                if not any(each in told for each in [*arguments, "index"]):
                    unlike[name] = f"{arguments} are not in {told!r}"
            except Exception as error:
                unlike[name] = repr(error)
            else:
                unlike[name] = "accepted"
            assert box.client_cmd.sent == [], name
    assert unlike == {}


def test_check_lets_through_what_is_no_negative_code():
    for result in (0, 5, True, 2**80, "text", None, 1.5, -1.5, [-7000], (-7000, ), b"x"):
        assert pyzvr.check(result) is result
    for failure in CLASSES:
        if not hasattr(failure, "code") or failure.code > 0 or failure is pyzvr.PAWLPortNotAvaliable:
            continue
        with pytest.raises(failure) as caught:
            pyzvr.check(failure.code)
        assert (type(caught.value), caught.value.code) == (failure, failure.code)
    for code in (-1, -(2**40), -(2**80)):
        with pytest.raises(pyzvr.Error) as caught:
            pyzvr.check(code)
        assert (type(caught.value), caught.value.code) == (pyzvr.Error, code)


def test_check_raises_what_a_device_refuses(call):
    with fake_device("TarnAnalog", SET_AI_NUM_SAMPLES=[0, 50]) as box, pytest.raises(pyzvr.FirmwareDIOError):
        pyzvr.check(call(box, "AI_setNumSamples", 0, 10))


class MineError(Exception):
    """What the block raises."""


async def leave_async(box, failure):
    async with box:
        if failure is not None:
            raise failure


def leave(box, failure):
    with box:
        if failure is not None:
            raise failure


@pytest.fixture(params=["with", "async with"])
def leaving(request):
    return leave if request.param == "with" else lambda box, failure: asyncio.run(leave_async(box, failure))


def failing_box():
    """A product whose first closing fails."""
    box = pyzvr.TarnDio()
    box.close = types.MethodType(fail_to_close, box)
    return box


def fail_to_close(box):
    del box.close
    box.close(verbose=False)
    raise pyzvr.NetworkConnectionLostError("gone")


def test_the_block_s_exception_is_the_one_that_is_told(leaving):
    mine = MineError("mine")
    with pytest.raises(MineError) as caught:
        leaving(failing_box(), mine)
    assert caught.value is mine
    if sys.version_info >= (3, 11):
        assert notes_of(caught) == ["closing failed too: NetworkConnectionLostError: Error -8003: gone"]
    with pytest.raises(pyzvr.NetworkConnectionLostError):
        leaving(failing_box(), None)
    box = pyzvr.TarnDio()
    with pytest.raises(KeyboardInterrupt):
        leaving(box, KeyboardInterrupt())
    assert box.killed


def test_a_product_shows_model_place_number_and_state():
    box = pyzvr.TarnDio()
    assert repr(box) == "<TarnDio, not connected>"
    box.close(verbose=False)
    assert repr(box) == "<TarnDio, closed>"
    assert repr(pyzvr.TarnDio.__new__(pyzvr.TarnDio)) == "<TarnDio, not constructed>"
    with connected("TarnDio") as box:
        place = ":".join(map(str, box.client_cmd.socket.getpeername()))
        assert repr(box) == f"<TarnDio at {place}, connected>"
        number = box.Sys_getSerialNumber()
        assert repr(box) == f"<TarnDio at {place}, serial number {number}, connected>"
        box.disconnect(verbose=False)
        assert repr(box) == f"<TarnDio at {place}, serial number {number}, not connected>"


def test_models_take_verbose_by_keyword(capsys):
    for model in pyzvr.LABEL_DICT.keys() - {"DataLogger"}:
        getattr(pyzvr, model)(verbose=False).close(verbose=False)
    assert capsys.readouterr().out == ""
