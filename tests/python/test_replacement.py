"""Every step, field, pool and function that Python people replace: by instance, subclass and class, before and after construction."""

import asyncio
import collections
import contextlib
import inspect
import io
import json
import queue
import socket
import subprocess
import sys
import threading
import types
import warnings
from typing import NamedTuple
from unittest import mock

import pytest
from conftest import Double, awaited, blocking
from peer import Peer, answer_serial
from test_queues import FRAMES, IDLE, RECORDS, ROW, SAMPLES, until

import pyzvr

SERIAL = "SN000001"
PATIENCE = 10


# What a test acts on: a product that is connected, or has a client that is a test double.


@contextlib.contextmanager
def on_peers(factory, connect=True):
    """A network product on peers; `connect` tells when."""
    peers = [Peer(), Peer(answer_serial)] if issubclass(factory, pyzvr.WifiDevice) else [Peer(answer_serial)]
    with factory() as box:
        box.link = types.SimpleNamespace(connect=lambda: box.connect("127.0.0.1", *(peer.port for peer in peers), verbose=False), peers=peers)
        if connect:
            box.link.connect()
        yield box
    for peer in peers:
        peer.close()


REPLIES = {pyzvr.GET_PIN_MODE_OF_SLOT: IDLE, pyzvr.GET_SERIAL_NUMBER: b"SN000001", pyzvr.GET_DATE_TIME: bytes([24, 1, 2, 3, 4, 5]),
           **dict.fromkeys((pyzvr.OPEN_UART, pyzvr.OPEN_CAN, pyzvr.OPEN_AI), b"\1\0")}


@contextlib.contextmanager
def on_double(factory, connect=True):
    with factory() as box:
        box.link = types.SimpleNamespace(connect=lambda: setattr(box, "client_cmd", Double(box)) or box.client_cmd.replies.update(REPLIES))
        if connect:
            box.link.connect()
        yield box


class Calls:
    """What a replacement was called with; stands for it on an instance and on a class alike."""

    def __init__(self, box_of, result=None, through=None):
        self.made, self.result, self.through, self.box_of = queue.Queue(), result, through, box_of

    def note(self, arguments, named):
        box = self.box_of()
        own = arguments and arguments[0] is box
        arguments = arguments[1:] if own else arguments
        self.made.put((arguments, named))
        return self.through(box, *arguments, **named) if self.through else self.result

    def function(self, awaitable):
        def plain(*arguments, **named):
            return self.note(arguments, named)

        async def coroutine(*arguments, **named):
            result = self.note(arguments, named)
            return await result if inspect.isawaitable(result) else result

        return coroutine if awaitable else plain


# Steps of operations.


class Step(NamedTuple):
    name: str
    model: str
    link: object
    use: object  # what makes the library take the step
    expected: tuple  # arguments, and named ones, of a call that must be among those made
    result: object = None  # of the replacement; by default it goes through to the library's own
    seen: object = None  # what the use gives then
    own: object = None  # what it gives by itself


def serial(box, form=blocking):
    return form(box, "Sys_getSerialNumber")


def awaited_serial(box):
    return serial(box, awaited)


def by_row(read):
    """A read of one row of an analog input, which is there."""
    def use(box):
        box.ai_signal_queue_list[0].put(ROW)
        return read(box)

    return use


def bytes_there(read):
    def use(box):
        box.uart_p1_signal_queue.put(66)
        return read(box)

    return use


REQUEST = list(b"\2\0\1\x7a\r\n")
THROUGH = object()
STEPS = [
    Step("_putToDataPool", "TarnDio", on_peers, serial, ((122, b"SN000001"), {}), THROUGH, SERIAL, SERIAL),
    Step("_checkCommandType", "TarnDio", on_peers, serial, ((122, b"SN000001"), {}), "echo", SERIAL, SERIAL),
    Step("_preparePacket", "TarnDio", on_peers, serial, ((122, []), {}), list(REQUEST), SERIAL, SERIAL),
    Step("_preparePacket", "TarnDio", on_peers, awaited_serial, ((122, []), {}), list(REQUEST), SERIAL, SERIAL),
    Step("_echoPacketWithRetry", "TarnDio", on_peers, lambda box: box.Sys_getSerialNumber(1.5), ((122, []), {"timeout": 1.5}), b"OTHER678", "OTHER678", SERIAL),
    Step("_echoPacketWithRetry_async", "TarnDio", on_peers, awaited_serial, ((122, []), {}), b"OTHER678", "OTHER678", SERIAL),
    Step("_echoPacket", "TarnDio", on_peers, serial, ((122, [], 0.01), {}), b"OTHER678", "OTHER678", SERIAL),
    Step("_echoPacket_async", "TarnDio", on_peers, awaited_serial, ((122, []), {"timeout": pyzvr.RETRY_TIMEOUT}), b"OTHER678", "OTHER678", SERIAL),
    Step("_getReplyFromPool", "TarnDio", on_peers, serial, ((122, 0.01), {}), b"OTHER678", "OTHER678", SERIAL),
    Step("_getReplyFromPool_async", "TarnDio", on_peers, awaited_serial, ((122,), {}), b"OTHER678", "OTHER678", SERIAL),
    Step("_sendPacketWithoutReply", "TarnAnalog", on_double, lambda box: box.AI_startStreaming(0), ((pyzvr.START_AI_STREAMING, [0]), {}), None, 0, 0),
    Step("_sendPacketWithoutReply_async", "TarnAnalog", on_double, lambda box: awaited(box, "AI_startStreaming", 0), ((pyzvr.START_AI_STREAMING, [0]), {}), None, 0, 0),
    Step("_getStreamingFromPool", "SableDio", on_double, bytes_there(lambda box: box.UART_read(1, 1, 0.5)), None, [65], ["A"], ["B"]),
    Step("_getStreamingFromPool_async", "SableDio", on_double, bytes_there(lambda box: awaited(box, "UART_read", 1, 1, 0.5)), None, [65], ["A"], ["B"]),
    Step("_getStreamingFromPool", "TarnAnalog", on_double, by_row(lambda box: box.AI_readStreaming(0, 1, 0.5)), None, [5.0], [[5.0]], [ROW]),
    Step("_getStreamingFromPool_async", "TarnAnalog", on_double, by_row(lambda box: awaited(box, "AI_readStreaming", 0, 1, 0.5)), None, [5.0], [[5.0]], [ROW]),
    Step("_AI_changePortToIndex", "Lattice", on_double, by_row(lambda box: box.AI_readStreaming(1, 1, 0.5)), ((0, 0), {}), 0, [ROW], [ROW]),
    Step("_AI_changePortToIndex", "Lattice", on_double, by_row(lambda box: awaited(box, "AI_readStreaming", 1, 1, 0.5)), ((0, 0), {}), 0, [ROW], [ROW]),
    Step("_getDeviceName", "TarnDio", on_double, lambda box: box.Sys_getRTC(), ((), {}), "Any-Wifi", "2024-01-02, 03:04:05", "1924-01-02, 03:04:05"),
    Step("_getDeviceName", "TarnDio", on_double, lambda box: awaited(box, "Sys_getRTC"), ((), {}), "Any-Wifi", "2024-01-02, 03:04:05", "1924-01-02, 03:04:05"),
]
WHERE_AND_WHEN = [("instance", "made"), ("instance", "connected"), *((where, when) for where in ("subclass", "product", "owner") for when in ("before", "made", "connected"))]
where_and_when = pytest.mark.parametrize("where, when", WHERE_AND_WHEN, ids=["-".join(each) for each in WHERE_AND_WHEN])


def factory_of(model):
    return type(model, (getattr(pyzvr, model),), {})


def owner_of(class_, name):
    return next(each for each in class_.__mro__ if name in vars(each))


def target_of(where, factory, box, name):
    product = factory.__mro__[1]
    return {"instance": box, "subclass": factory, "product": product, "owner": owner_of(product, name)}[where]


def arguments_of(calls):
    made = []
    while not calls.made.empty():
        arguments, named = calls.made.get()
        made.append((tuple(list(each) if isinstance(each, (list, tuple, bytearray)) else each for each in arguments), named))
    return made


@where_and_when
@pytest.mark.parametrize("step", STEPS, ids=[f"{step.name}-{number}" for number, step in enumerate(STEPS)])
def test_a_step_of_an_operation_is_the_one_the_object_has(step, where, when):
    factory, known = factory_of(step.model), []
    through = getattr(owner_of(factory, step.name), step.name) if step.result is THROUGH else None
    calls = Calls(lambda: known[0] if known else None, step.result, through)
    with contextlib.ExitStack() as stack:
        patch = stack.enter_context(contextlib.ExitStack())
        replace = lambda box: patch.enter_context(mock.patch.object(  # noqa: E731
            target_of(where, factory, box, step.name), step.name, calls.function(step.name.endswith("_async"))))
        if when == "before":
            replace(None)
        box = stack.enter_context(step.link(factory, connect=when == "connected"))
        known.append(box)
        if when == "connected":
            assert step.use(box) == step.own
        elif when == "made":
            replace(box)
        if not known[0].__dict__.get("connect_status_cmd"):
            box.link.connect()
        if when == "connected":
            replace(box)
        arguments_of(calls)  # construction and connection may have had a need of it
        for _ in range(3):
            assert step.use(box) == step.seen
            made = arguments_of(calls)
            assert made and (step.expected is None or step.expected in made)
        patch.close()
        for _ in range(3):
            assert step.use(box) == step.own
        assert arguments_of(calls) == []


# Methods of the client.

CLIENT_STEPS = {
    "sendPacket": ((REQUEST,), {}), "recvAndSplitPacket": ((pyzvr.TCP_PKT_LENGTH_MAX,), {}), "recvPacket": ((pyzvr.TCP_PKT_LENGTH_MAX,), {}), "_splitPacket": ((), {}),
}


@pytest.mark.parametrize("where, when", [("instance", "made"), ("instance", "connected"), ("subclass", "before"), ("subclass", "made"), ("subclass", "connected"),
                                         ("owner", "before"), ("owner", "made"), ("owner", "connected")])
@pytest.mark.parametrize("name", CLIENT_STEPS)
def test_a_method_of_the_client_is_the_one_it_has(call, name, where, when):
    owner = owner_of(pyzvr.TCPClient, name)
    through = getattr(pyzvr.TCPClient, name)
    known = []
    calls = Calls(lambda: known[0] if known else None, through=through)
    factory = type("OwnClient", (pyzvr.TCPClient,), {})

    def target():
        return {"instance": known and known[0], "subclass": factory, "owner": owner}[where]

    with contextlib.ExitStack() as patch, on_peers(pyzvr.TarnDio, connect=False) as box:
        if when == "before":
            patch.enter_context(mock.patch.object(target(), name, calls.function(False)))
        if where == "subclass" or when == "before":
            box.client_cmd = factory()
        known.append(box.client_cmd)
        if when == "made":
            patch.enter_context(mock.patch.object(target(), name, calls.function(False)))
        box.link.connect()
        if when == "connected":
            assert serial(box, call) == SERIAL
            patch.enter_context(mock.patch.object(target(), name, calls.function(False)))
        for _ in range(3):  # one read may have been under way
            assert serial(box, call) == SERIAL
        assert CLIENT_STEPS[name] in arguments_of(calls)
        patch.close()
        for _ in range(3):
            assert serial(box, call) == SERIAL
        arguments_of(calls)  # so may another
        assert serial(box, call) == SERIAL and arguments_of(calls) == [] and isinstance(box.client_cmd.stream, bytes)


def test_a_client_can_be_replaced_while_it_is_read(call):
    peers = [Peer(answer_serial), Peer(answer_serial)]
    with pyzvr.TarnDio() as box:
        box.connect("127.0.0.1", peers[0].port, verbose=False)
        for _ in range(5):
            assert serial(box, call) == SERIAL
            other, before = pyzvr.TCPClient(), box.client_cmd
            other.connect("127.0.0.1", peers[1].port)
            with mock.patch.object(box, "client_cmd", other):
                assert serial(box, call) == SERIAL
            assert box.client_cmd is before and serial(box, call) == SERIAL
            other.disconnect()
    for peer in peers:
        peer.close()


# The bodies of the threads.


class Body(NamedTuple):
    model: str
    link: object
    threads: tuple
    expected: object  # arguments of each thread's call
    nudge: object  # what makes the thread take a turn
    works: object  # whether the library's own body is at work


@contextlib.contextmanager
def on_finder(factory, connect=True):
    """A finder that listens on a port of its own."""
    with factory() as box:
        def listen():
            box.client_udp.bind("127.0.0.1", 0)
            box.port = box.client_udp.socket.getsockname()[1]
            box.connect_status_udp = True
            box.recv_udp_lock.release()

        box.link = types.SimpleNamespace(connect=listen)
        if connect:
            listen()
        yield box


@contextlib.contextmanager
def on_logger(factory, connect=True):
    log = factory()
    log.link = types.SimpleNamespace(connect=lambda: log.Logger_openFile("/dev/null", verbose=False))
    if connect:
        log.link.connect()
    yield log
    log._Logger_close(False)


@contextlib.contextmanager
def on_opened(factory, connect=True):
    """A product at a test double, its streamed function open when it is connected."""
    with on_double(factory) as box:
        function = {"SableDio": ("UART_open", 1), "SableCan": ("CAN_open", 1), "TarnAnalog": ("AI_open", 0)}[factory.__name__]
        box.link = types.SimpleNamespace(connect=lambda: blocking(box, *function))
        if connect:
            box.link.connect()
        yield box


def datagram(box):
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as sender:
        sender.sendto(bytes(box._preparePacket(pyzvr.GET_DEVICE_INFO, b"\1record")), ("127.0.0.1", box.port))


def hears(box):
    box.data_pool_bcst[pyzvr.GET_DEVICE_INFO].clear()
    datagram(box)
    until(lambda: b"record" in box.data_pool_bcst[pyzvr.GET_DEVICE_INFO])


def frame_on_data_side(box):
    if not box.__dict__.get("data_side"):
        box.data_side = box.link.peers[0].connection()
    box.data_side.sendall(bytes(box._preparePacket(pyzvr.START_AI_STREAMING, b"\0\7rows")))


def data_comes(box):
    frame_on_data_side(box)
    assert box.data_pool_strm[(pyzvr.START_AI_STREAMING, 0, 7)].get(timeout=PATIENCE) == b"rows"


def request(box):
    with contextlib.suppress(pyzvr.ReceivePacketTimeoutError):
        box.Sys_getSerialNumber(0.05)


def answered(box):
    until(lambda: serial(box) == SERIAL)


def put(field, item):
    def act(box):
        for name in field:
            getattr(box, name).put(item)

    return act


def bytes_pass(box):
    for port, (source, target) in enumerate([(box.uart_p1_data_queue, box.uart_p1_signal_queue), (box.uart_p2_data_queue, box.uart_p2_signal_queue)]):
        source.put(bytes([65 + port]))
        assert target.get(timeout=PATIENCE) == 65 + port


def frames_pass(box):
    box.can_data_queue.put(RECORDS)
    assert [box.can_frame_queue.get(timeout=PATIENCE) for _ in FRAMES] == FRAMES


def rows_pass(box):
    box.ai_data_queue_list[0].put(SAMPLES)
    assert box.ai_signal_queue_list[0].get(timeout=PATIENCE) == ROW


def rows_written(log):
    written = queue.Queue()
    with mock.patch.object(log, "writer_csv", mock.Mock(writerows=written.put)):
        log.Logger_writeValue(1)
        assert written.get(timeout=PATIENCE) == [[1]]


BODIES = {
    "_recvCMDThread": Body("TarnDio", on_peers, ("recv_cmd_thread",), lambda box: [()], request, answered),
    "_recvDataThread": Body("HeronAnalog", on_peers, ("recv_data_thread",), lambda box: [()], frame_on_data_side, data_comes),
    "_recvUDPThread": Body("DeviceFinder", on_finder, ("recv_udp_thread",), lambda box: [()], datagram, hears),
    "_AIStreamThread": Body("TarnAnalog", on_opened, ("ai_stream_thread",), lambda box: [(box.ai_data_queue_list, box.ai_signal_queue_list)],
                            lambda box: box.ai_data_queue_list[0].put(None), rows_pass),
    "_UARTStreamThread": Body("SableDio", on_opened, ("uart_p1_stream_thread", "uart_p2_stream_thread"),
                              lambda box: [(box.uart_p1_lock, box.uart_p1_data_queue, box.uart_p1_signal_queue), (box.uart_p2_lock, box.uart_p2_data_queue, box.uart_p2_signal_queue)],
                              put(("uart_p1_data_queue", "uart_p2_data_queue"), None), bytes_pass),
    "_CANStreamThread": Body("SableCan", on_opened, ("can_stream_thread",), lambda box: [(box.can_data_queue,)], put(("can_data_queue",), None), frames_pass),
    "_saveStreamingDataThread": Body("DataLogger", on_logger, ("save_data_thread",), lambda box: [(box.save_data_queue,)], put(("save_data_queue",), None), rows_written),
}


def body_patched(where, factory, box, name, called):
    def replacement(*arguments):
        called.put(tuple(each for each in arguments if not isinstance(each, factory)))

    return mock.patch.object(target_of(where, factory, box, name), name, replacement)


def same_calls(called, expected):
    """Each thread has called once, with objects that are the fields of the object."""
    made = [called.get(timeout=PATIENCE) for _ in expected]
    for arguments in expected:
        assert any(len(arguments) == len(each) and all(ours is own or ours == own for ours, own in zip(each, arguments)) for each in made)


@where_and_when
@pytest.mark.parametrize("name", BODIES)
def test_the_body_of_a_thread_is_the_one_the_object_has(name, where, when):
    body, called = BODIES[name], queue.Queue()
    factory = factory_of(body.model)
    if when == "before":
        with body_patched(where, factory, None, name, called), body.link(factory) as box:
            same_calls(called, body.expected(box))
            for field in body.threads:
                getattr(box, field).join(PATIENCE)
                assert not getattr(box, field).is_alive()
            assert called.empty()
        return
    with body.link(factory, connect=when == "connected") as box:
        if when == "connected":
            body.works(box)
        for _ in range(2):
            with body_patched(where, factory, box, name, called):
                if when == "made" and not box.__dict__.get("begun"):
                    box.begun = True
                    box.link.connect()
                body.nudge(box)
                same_calls(called, body.expected(box))
                body.nudge(box)
                assert all(getattr(box, field).is_alive() for field in body.threads) and called.empty()
            for _ in range(3):
                body.works(box)
            assert called.empty()
    for field in body.threads:
        getattr(box, field).join(PATIENCE)
        assert not getattr(box, field).is_alive()


# Fields.

FIELD_MODELS = ["Device", "TarnDio", "HeronMixed", "SableCan", "SableMixed", "Drone", "Lattice", "Pawl", "DeviceFinder", "TarnAnalog24", "DataLogger"]
OWN = {"killed", "data_pool_echo", "data_pool_strm", "data_pool_bcst", "ai_num_channels", "ai_ratio", "ai_killed", "uart_killed", "can_killed"}


def fields_of(box):
    named = {name for name in OWN if hasattr(box, name)}
    return sorted(named | {name for name in vars(box) if not name.startswith("__") and name != "_runtime"})


def wrongs_of(model):
    """What is wrong with the fields of a model; in a process of its own, since threads read them."""
    wrongs = []

    def check(name, what, right):
        if not right:
            wrongs.append(f"{name}: {what}")

    stranger = object()
    box = getattr(pyzvr, model)()
    for name in fields_of(box):
        before = getattr(box, name)
        for value in (before, True, False, None, 7, stranger, {}, queue.Queue(), threading.Lock()):
            if name == "killed" and value is not False:
                continue  # true by itself or by any other value it ends the threads: below
            try:
                with mock.patch.object(box, name, value):
                    check(name, f"patched with {value!r:.30}", getattr(box, name) is value or getattr(box, name) == value)
                check(name, f"restored after {value!r:.30}", getattr(box, name) is before or getattr(box, name) == before)
                setattr(box, name, value)
                check(name, f"set to {value!r:.30}", getattr(box, name) is value or getattr(box, name) == value)
                setattr(box, name, before)
            except Exception as failure:
                check(name, f"{value!r:.30} raises {failure!r}", False)
    for name in [name for name in fields_of(box) if name != "killed"] + ["killed"]:
        try:
            before = getattr(box, name)
            delattr(box, name)
            try:
                getattr(box, name)
                check(name, "is still there after del", name in ("killed", "ai_killed"))  # a class may have one too
            except AttributeError:
                pass
            setattr(box, name, before)
            check(name, "set again after del", getattr(box, name) is before or getattr(box, name) == before)
        except Exception as failure:
            check(name, f"del raises {failure!r}", False)
    for name in fields_of(box):  # and nothing of it may crash what comes then
        with contextlib.suppress(Exception):
            delattr(box, name)
    for action in ("Sys_getSerialNumber", "AI_readStreaming", "UART_read", "CAN_read", "connect", "_AI_free", "_CAN_free", "_UART_free", "disconnect", "close"):
        with contextlib.suppress(Exception):
            getattr(box, action)(*{"AI_readStreaming": (0, 1), "UART_read": (1, 1), "CAN_read": (1, 1)}.get(action, ()))
    return wrongs


@pytest.mark.parametrize("model", FIELD_MODELS)
def test_fields_are_plain(model):
    code = f"import sys, json, warnings; warnings.simplefilter('ignore'); import test_replacement as t; wrongs = t.wrongs_of({model!r}); print(json.dumps(wrongs))"
    run = subprocess.run([sys.executable, "-X", "faulthandler", "-c", code], capture_output=True, text=True, timeout=60, cwd=__file__.rpartition("/")[0])
    assert run.returncode == 0, run.stderr
    assert json.loads(run.stdout.splitlines()[-1]) == []


def test_killed_can_be_patched_and_the_threads_see_it():
    with on_peers(pyzvr.TarnDio) as box:
        assert serial(box) == SERIAL
        with mock.patch.object(box, "killed", False):
            assert box.killed is False and serial(box) == SERIAL
        assert box.killed is False and serial(box) == SERIAL
        with mock.patch.object(box, "killed", True):
            assert box.killed is True
            box.close()  # does nothing to an object that is closed
            assert box.client_cmd is not None
        assert box.killed is False
    assert box.killed is True


@pytest.mark.parametrize("field, threads", [("uart_killed", ("uart_p1_stream_thread", "uart_p2_stream_thread")), ("can_killed", ("can_stream_thread",))])
def test_feeders_end_when_their_flag_is_set_by_hand(field, threads):
    with on_opened(factory_of({"uart_killed": "SableDio", "can_killed": "SableCan"}[field])) as box:
        setattr(box, field, True)
        for name in ("uart_p1_data_queue", "uart_p2_data_queue", "can_data_queue"):
            if hasattr(box, name):
                getattr(box, name).put(None)
        for name in threads:
            getattr(box, name).join(PATIENCE)
            assert not getattr(box, name).is_alive()


def test_channels_and_ratio_of_a_stream_are_those_of_now():
    with on_opened(factory_of("TarnAnalog")) as box:
        rows_pass(box)
        with mock.patch.object(box, "ai_num_channels", 2), mock.patch.object(box, "ai_ratio", 2.0):
            box.ai_data_queue_list[0].put(SAMPLES)
            assert [box.ai_signal_queue_list[0].get(timeout=PATIENCE) for _ in range(4)] == [[0.0, 2.0], [-2.0, 65534.0], [-65536.0, 0.0], [0.0, 0.0]]
        rows_pass(box)


def test_a_second_constructor_sets_the_plain_fields():
    with on_double(pyzvr.TarnAnalog) as box:
        queues, threads = box.ai_signal_queue_list, box.ai_stream_thread
        box.ai_max_rate = box.ai_dict = box.ai_num_channels = box.ai_ratio = None
        pyzvr.AIModule.__init__(box, {0: [1]}, 5, 0.5, 3)
        assert (box.ai_dict, box.ai_max_rate, box.ai_ratio, box.ai_num_channels) == ({0: [1]}, 5, 0.5, 3)
        assert box.ai_signal_queue_list is queues and box.ai_stream_thread is threads


# Objects that bring pools and clients of their own.


class Answering:
    """A client that puts the reply where its object keeps such."""

    def __init__(self, box, replies=REPLIES):
        self.box, self.replies, self.sent = box, replies, []

    def sendPacket(self, int_list):
        self.sent.append(bytes(int_list))
        if int_list[3] in self.replies:
            self.box.data_pool_echo[int_list[3]] = self.replies[int_list[3]]


class Asked(dict):
    """A map that remembers how it was asked."""

    def __init__(self):
        self.asked = []

    def __contains__(self, key):
        self.asked.append(key)
        return super().__contains__(key)


@pytest.mark.parametrize("make", [dict, Asked, collections.OrderedDict])
def test_an_operation_needs_pools_and_a_client_and_no_device(call, make):
    class Bare(pyzvr.SystemModule, pyzvr.SystemModule_async):
        def __init__(self):
            self.data_pool_echo, self.client_cmd = make(), Answering(self)

    box = Bare()
    assert serial(box, call) == SERIAL and box.client_cmd.sent == [bytes(REQUEST)] and box.data_pool_echo == {}
    if make is Asked:
        assert pyzvr.GET_SERIAL_NUMBER in box.data_pool_echo.asked
    box.client_cmd.replies = {}
    late = threading.Timer(0.05, box.data_pool_echo.__setitem__, (pyzvr.GET_SERIAL_NUMBER, b"LATE5678"))
    late.start()
    assert serial(box, call) == "LATE5678"
    late.join()
    box.data_pool_echo[7] = b"seven"
    assert box._getReplyFromPool(7, 1) == b"seven"
    box.data_pool_echo[7] = b"again"
    assert asyncio.run(box._getReplyFromPool_async(7)) == b"again"
    with pytest.raises(pyzvr.ReceivePacketTimeoutError):
        box._getReplyFromPool(7, 0.01)
    with pytest.raises(asyncio.TimeoutError):
        asyncio.run(asyncio.wait_for(box._getReplyFromPool_async(7), 0.02))
    del box.data_pool_echo
    with pytest.raises(AttributeError):
        box._getReplyFromPool(7, 0.01)


def test_a_bus_needs_no_device():
    class Bare(pyzvr.SystemModule, pyzvr.CANModule):
        def __init__(self):
            self.data_pool_echo, self.data_pool_strm, self.client_cmd = {}, collections.defaultdict(queue.Queue), Answering(self)
            pyzvr.CANModule.__init__(self, {1: [(0, 0)]})

    box = Bare()
    assert box.can_data_queue is box.data_pool_strm[pyzvr.START_CAN] and isinstance(box.can_data_queue, queue.Queue)
    assert box.CAN_open(1) == 0
    frames_pass(box)
    box._CAN_free()
    box.can_stream_thread.join(PATIENCE)
    assert not box.can_stream_thread.is_alive()


def test_a_serial_port_needs_no_device():
    class Bare(pyzvr.SystemModule, pyzvr.UARTModule):
        def __init__(self):
            self.data_pool_echo, self.data_pool_strm, self.client_cmd = {}, collections.defaultdict(queue.Queue), Answering(self)
            pyzvr.UARTModule.__init__(self, {1: [(0, 0)], 2: [(0, 1)]})

    box = Bare()
    assert box.uart_p2_data_queue is box.data_pool_strm[(pyzvr.START_UART_READING, 2)]
    assert box.UART_open(1) == 0
    bytes_pass(box)
    box._UART_free()
    for thread in (box.uart_p1_stream_thread, box.uart_p2_stream_thread):
        thread.join(PATIENCE)
        assert not thread.is_alive()


def test_an_analog_input_needs_no_device():
    class Bare(pyzvr.AIModule, pyzvr.AIModule_async):
        def __init__(self):
            self.data_pool_echo, self.data_pool_strm, self.client_cmd = {}, collections.defaultdict(queue.Queue), Answering(self)
            pyzvr.AIModule.__init__(self, {0: [0]}, 1000, 10 / 32768, 8)

    box = Bare()
    box.ai_lock.release()
    rows_pass(box)
    box.ai_data_queue_list[0].put(SAMPLES * 3)
    assert box.AI_readStreaming(0, 2, PATIENCE) == [ROW] * 2 and awaited(box, "AI_readStreaming", 0, 1, PATIENCE) == [ROW]
    box._AI_free()
    box.ai_stream_thread.join(PATIENCE)
    assert not box.ai_stream_thread.is_alive()


def test_a_broadcast_needs_no_device():
    class Bare(pyzvr.BroadcastModule_async):
        def __init__(self):
            self.data_pool_bcst, self.client_udp, self.sent = collections.defaultdict(set), self, []

        def sendBcstPacket(self, packet):
            self.sent.append(bytes(packet))
            self.data_pool_bcst[252].add(b"record")

    async def at_once(seconds):
        slept.append(seconds)

    box, slept = Bare(), []
    box.data_pool_bcst[252].add(b"old")
    with mock.patch("asyncio.sleep", at_once):
        assert asyncio.run(box._broadcastPacket_async(252, [0])) is box.data_pool_bcst[252]
    assert box.data_pool_bcst == {252: {b"record"}} and len(box.sent) == pyzvr.NUM_BCST_RETRIES and slept == [pyzvr.PACKET_TIMEOUT]


def test_a_device_takes_pools_of_the_host_s_kind(call):
    with on_peers(pyzvr.TarnDio) as box:
        own = box.data_pool_echo
        for pool in ({}, Asked(), own, {}):
            box.data_pool_echo = pool
            for _ in range(3):
                assert box.data_pool_echo is pool and serial(box, call) == SERIAL
        streams, sets = collections.defaultdict(queue.Queue), collections.defaultdict(set)
        with mock.patch.object(box, "data_pool_strm", streams), mock.patch.object(box, "data_pool_bcst", sets):
            connection = box.link.peers[0].connection()
            for command in (pyzvr.AHRS_START, pyzvr.GET_DEVICE_INFO):
                connection.sendall(bytes(box._preparePacket(command, b"\1data")))
            assert streams[pyzvr.AHRS_START].get(timeout=PATIENCE) == b"data"
            until(lambda: sets == {pyzvr.GET_DEVICE_INFO: {b"data"}})
        connection.sendall(bytes(box._preparePacket(pyzvr.AHRS_START, b"\1more")))
        assert box.data_pool_strm[pyzvr.AHRS_START].get(timeout=PATIENCE) == b"more" and streams[pyzvr.AHRS_START].empty()


# Functions of the host, which live as long as their test.


def finder_of_files(box):
    return box.Motion_openCfgFile("missing.ini")


def name_of_failure(action, *arguments):
    try:
        return action(*arguments)
    except Exception as failure:
        return type(failure).__name__


def opened_handle(box):
    with contextlib.redirect_stdout(io.StringIO()) as printed:
        pyzvr.Device.close(pyzvr.TarnDio())
    return "Opened handle (Tarn-Dio)" in printed.getvalue()


def warned_text(box):
    with warnings.catch_warnings(record=True) as caught, contextlib.redirect_stdout(io.StringIO()):
        warnings.simplefilter("always")
        pyzvr.CANQueueOverflowWarning()
    return [str(each.message) for each in caught]


def slept(box):
    async def main():
        try:
            return await asyncio.wait_for(box._broadcastPacket_async(252, [0]), 0.05)
        except asyncio.TimeoutError:
            return "still asleep"

    box.client_udp = mock.Mock()
    return asyncio.run(main())


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


HOST = {  # by name: a double, what the action gives with it, the action, what it gives by itself
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
    code = f"import test_replacement as t, warnings; warnings.simplefilter('ignore'); t.look_up({name!r})"
    run = subprocess.run([sys.executable, "-X", "faulthandler", "-c", code], capture_output=True, text=True, timeout=60, cwd=__file__.rpartition("/")[0])
    assert run.returncode == 0, run.stderr


def look_up(name):
    """In a process of its own, whose first use is that of the double."""
    double, replaced, action, own = HOST[name]
    with on_double(pyzvr.Lattice) as box:
        box.client_cmd.replies.update({pyzvr.SET_DEV_ALIAS & 255: b"\x15", pyzvr.SET_DEV_ALIAS: b"\x15", pyzvr.SET_DATE_TIME: b"\0"})
        for _ in range(3):
            with mock.patch(name, double):
                seen = name_of_failure(action, box)
                assert seen == replaced, seen
            seen = name_of_failure(action, box)
            assert seen == own, seen
        box.client_udp = None


def awaitables():
    for name, class_ in vars(pyzvr).items():
        if inspect.isclass(class_):
            yield from ((class_, member) for member in vars(class_) if member.endswith("_async"))


def test_awaitable_forms_are_coroutine_functions():
    found = list(awaitables())
    assert len(found) > 300
    wrong = [f"{class_.__name__}.{name}" for class_, name in found if not asyncio.iscoroutinefunction(getattr(class_, name))]
    assert wrong == []
    with pyzvr.TarnDio() as box:
        assert asyncio.iscoroutinefunction(box.Sys_getSerialNumber_async) and not asyncio.iscoroutinefunction(box.Sys_getSerialNumber)
        if sys.version_info >= (3, 12):
            assert inspect.iscoroutinefunction(box.Sys_getSerialNumber_async)


@pytest.mark.parametrize("where", ["instance", "class"])
def test_awaitable_forms_are_replaced_by_awaitable_doubles(where):
    with pyzvr.TarnDio() as box:
        with mock.patch.object(box if where == "instance" else pyzvr.TarnDio, "Sys_getSerialNumber_async", return_value="double") as double:
            assert isinstance(double, mock.AsyncMock) and asyncio.run(box.Sys_getSerialNumber_async()) == "double"
            double.assert_awaited_once()
        with mock.patch.object(box, "Sys_getSerialNumber", return_value="double") as double:
            assert not isinstance(double, mock.AsyncMock) and box.Sys_getSerialNumber() == "double"
        with mock.patch.object(pyzvr.SystemModule_async, "Sys_getSerialNumber_async", autospec=True) as double:
            double.return_value = "double"
            assert asyncio.run(box.Sys_getSerialNumber_async()) == "double"
