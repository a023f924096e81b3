"""A step that is replaced, on the object, a subclass or the class, is the one that runs: operations and clients."""

import contextlib
import inspect
import queue
from typing import NamedTuple
from unittest import mock

import pytest
from forms import awaited
from peer import Peer, answer_serial
from queue_support import ROW
from replacement import REQUEST, SERIAL, factory_of, on_fake_client, on_peers, owner_of, serial, target_of, where_and_when

import pyzvr


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


THROUGH = object()
STEPS = [
    Step("_putToDataPool", "TarnDio", on_peers, serial, ((122, b"SN000001"), {}), THROUGH, SERIAL, SERIAL),
    Step("_checkCommandType", "TarnDio", on_peers, serial, ((122, b"SN000001"), {}), "echo", SERIAL, SERIAL),
    Step("_preparePacket", "TarnDio", on_peers, serial, ((122, []), {}), list(REQUEST), SERIAL, SERIAL),
    Step("_preparePacket", "TarnDio", on_peers, awaited_serial, ((122, []), {}), list(REQUEST), SERIAL, SERIAL),
    Step("_echoPacketWithRetry", "TarnDio", on_peers, lambda box: box.Sys_getSerialNumber(1.5),
         ((122, []), {"timeout": 1.5}), b"OTHER678", "OTHER678", SERIAL),
    Step("_echoPacketWithRetry_async", "TarnDio", on_peers, awaited_serial, ((122, []), {}), b"OTHER678", "OTHER678",
         SERIAL),
    Step("_echoPacket", "TarnDio", on_peers, serial, ((122, [], 0.01), {}), b"OTHER678", "OTHER678", SERIAL),
    Step("_echoPacket_async", "TarnDio", on_peers, awaited_serial, ((122, []), {"timeout": pyzvr.RETRY_TIMEOUT}),
         b"OTHER678", "OTHER678", SERIAL),
    Step("_getReplyFromPool", "TarnDio", on_peers, serial, ((122, 0.01), {}), b"OTHER678", "OTHER678", SERIAL),
    Step("_getReplyFromPool_async", "TarnDio", on_peers, awaited_serial, ((122,), {}), b"OTHER678", "OTHER678",
         SERIAL),
    Step("_sendPacketWithoutReply", "TarnAnalog", on_fake_client, lambda box: box.AI_startStreaming(0),
         ((pyzvr.START_AI_STREAMING, [0]), {}), None, 0, 0),
    Step("_sendPacketWithoutReply_async", "TarnAnalog", on_fake_client,
         lambda box: awaited(box, "AI_startStreaming", 0), ((pyzvr.START_AI_STREAMING, [0]), {}), None, 0, 0),
    Step("_getStreamingFromPool", "SableDio", on_fake_client, bytes_there(lambda box: box.UART_read(1, 1, 0.5)), None,
         [65], ["A"], ["B"]),
    Step("_getStreamingFromPool_async", "SableDio", on_fake_client,
         bytes_there(lambda box: awaited(box, "UART_read", 1, 1, 0.5)), None, [65], ["A"], ["B"]),
    Step("_getStreamingFromPool", "TarnAnalog", on_fake_client, by_row(lambda box: box.AI_readStreaming(0, 1, 0.5)),
         None, [5.0], [[5.0]], [ROW]),
    Step("_getStreamingFromPool_async", "TarnAnalog", on_fake_client,
         by_row(lambda box: awaited(box, "AI_readStreaming", 0, 1, 0.5)), None, [5.0], [[5.0]], [ROW]),
    Step("_AI_changePortToIndex", "Lattice", on_fake_client, by_row(lambda box: box.AI_readStreaming(1, 1, 0.5)),
         ((0, 0), {}), 0, [ROW], [ROW]),
    Step("_AI_changePortToIndex", "Lattice", on_fake_client,
         by_row(lambda box: awaited(box, "AI_readStreaming", 1, 1, 0.5)), ((0, 0), {}), 0, [ROW], [ROW]),
    Step("_getDeviceName", "TarnDio", on_fake_client, lambda box: box.Sys_getRTC(), ((), {}), "Any-Wifi",
         "2024-01-02, 03:04:05", "1924-01-02, 03:04:05"),
    Step("_getDeviceName", "TarnDio", on_fake_client, lambda box: awaited(box, "Sys_getRTC"), ((), {}), "Any-Wifi",
         "2024-01-02, 03:04:05", "1924-01-02, 03:04:05"),
]


def arguments_of(calls):
    made = []
    while not calls.made.empty():
        arguments, named = calls.made.get()
        made.append(
            (tuple(list(each) if isinstance(each, (list, tuple, bytearray)) else each for each in arguments), named))
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
            assert made
            assert step.expected is None or step.expected in made
        patch.close()
        for _ in range(3):
            assert step.use(box) == step.own
        assert arguments_of(calls) == []


# Methods of the client.

CLIENT_STEPS = {
    "sendPacket": ((REQUEST,), {}), "recvAndSplitPacket": ((pyzvr.TCP_PKT_LENGTH_MAX,), {}),
    "recvPacket": ((pyzvr.TCP_PKT_LENGTH_MAX,), {}), "_splitPacket": ((), {}),
}


@pytest.mark.parametrize("where, when", [("instance", "made"), ("instance", "connected"), ("subclass", "before"),
                                         ("subclass", "made"), ("subclass", "connected"), ("owner", "before"),
                                         ("owner", "made"), ("owner", "connected")])
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
        assert serial(box, call) == SERIAL
        assert arguments_of(calls) == []
        assert isinstance(box.client_cmd.stream, bytes)


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
            assert box.client_cmd is before
            assert serial(box, call) == SERIAL
            other.disconnect()
    for peer in peers:
        peer.close()


@pytest.mark.parametrize("name, result", [("_echoPacketWithRetry", b"OTHER678"), ("_preparePacket", REQUEST)])
def test_a_step_set_behind_the_setter_is_followed(name, result):
    """By a class with a setter of its own, or in the object's dictionary where there is none."""
    class Box(pyzvr.TarnDio):
        def __setattr__(self, name, value):
            self.__dict__[name] = value

    for factory in (Box, pyzvr.TarnDio) if name == "_echoPacketWithRetry" else (Box,):
        with on_peers(factory) as box:
            for _ in range(3):
                assert serial(box) == SERIAL
                calls = Calls(lambda: box, result)
                if factory is Box:
                    setattr(box, name, calls.function(False))
                else:
                    box.__dict__[name] = calls.function(False)
                serial(box)
                assert not calls.made.empty()
                del box.__dict__[name]
