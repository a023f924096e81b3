"""A body of a thread that is replaced, on the object, a subclass or the class, is the one that runs."""

import contextlib
import queue
import socket
import types
from typing import NamedTuple
from unittest import mock

import pytest
from replacement import (
    PATIENCE,
    SERIAL,
    bytes_pass,
    factory_of,
    frames_pass,
    on_opened,
    on_peers,
    rows_pass,
    serial,
    target_of,
    where_and_when,
)
from queue_support import until

import pyzvr


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


def rows_written(log):
    written = queue.Queue()
    with mock.patch.object(log, "writer_csv", mock.Mock(writerows=written.put)):
        log.Logger_writeValue(1)
        assert written.get(timeout=PATIENCE) == [[1]]


BODIES = {
    "_recvCMDThread": Body("TarnDio", on_peers, ("recv_cmd_thread",), lambda box: [()], request, answered),
    "_recvDataThread": Body(
        "HeronAnalog", on_peers, ("recv_data_thread",), lambda box: [()], frame_on_data_side, data_comes
    ),
    "_recvUDPThread": Body("DeviceFinder", on_finder, ("recv_udp_thread",), lambda box: [()], datagram, hears),
    "_AIStreamThread": Body(
        "TarnAnalog",
        on_opened,
        ("ai_stream_thread",),
        lambda box: [(box.ai_data_queue_list, box.ai_signal_queue_list)],
        lambda box: box.ai_data_queue_list[0].put(None),
        rows_pass,
    ),
    "_UARTStreamThread": Body(
        "SableDio",
        on_opened,
        ("uart_p1_stream_thread", "uart_p2_stream_thread"),
        lambda box: [
            (box.uart_p1_lock, box.uart_p1_data_queue, box.uart_p1_signal_queue),
            (box.uart_p2_lock, box.uart_p2_data_queue, box.uart_p2_signal_queue),
        ],
        put(("uart_p1_data_queue", "uart_p2_data_queue"), None),
        bytes_pass,
    ),
    "_CANStreamThread": Body(
        "SableCan",
        on_opened,
        ("can_stream_thread",),
        lambda box: [(box.can_data_queue,)],
        put(("can_data_queue",), None),
        frames_pass,
    ),
    "_saveStreamingDataThread": Body(
        "DataLogger",
        on_logger,
        ("save_data_thread",),
        lambda box: [(box.save_data_queue,)],
        put(("save_data_queue",), None),
        rows_written,
    ),
}


def body_patched(where, factory, box, name, called):
    def replacement(*arguments):
        called.put(tuple(each for each in arguments if not isinstance(each, factory)))

    return mock.patch.object(target_of(where, factory, box, name), name, replacement)


def same_calls(called, expected):
    """Each thread has called once, with objects that are the fields of the object."""
    made = [called.get(timeout=PATIENCE) for _ in expected]
    for arguments in expected:
        assert any(
            len(arguments) == len(each) and all(ours is own or ours == own for ours, own in zip(each, arguments))
            for each in made)


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
                assert all(getattr(box, field).is_alive() for field in body.threads)
                assert called.empty()
            for _ in range(3):
                body.works(box)
            assert called.empty()
    for field in body.threads:
        getattr(box, field).join(PATIENCE)
        assert not getattr(box, field).is_alive()
