"""Products to replace something on, and calls that are recorded."""

import asyncio
import contextlib
import types
from unittest import mock

import pytest
from fake_client import FakeClient
from forms import blocking
from peer import Peer, answer_serial
from queue_support import FRAMES, IDLE, RECORDS, ROW, SAMPLES

import pyzvr

SERIAL = "SN000001"
PATIENCE = 10


@contextlib.contextmanager
def on_peers(factory, connect=True):
    """A network product on peers; `connect` tells when."""
    peers = [Peer(), Peer(answer_serial)] if issubclass(factory, pyzvr.WifiDevice) else [Peer(answer_serial)]
    with factory() as box:
        box.link = types.SimpleNamespace(
            connect=lambda: box.connect("127.0.0.1", *(peer.port for peer in peers), verbose=False), peers=peers)
        if connect:
            box.link.connect()
        yield box
    for peer in peers:
        peer.close()


REPLIES = {
    pyzvr.GET_PIN_MODE_OF_SLOT: IDLE, pyzvr.GET_SERIAL_NUMBER: b"SN000001",
    pyzvr.GET_DATE_TIME: bytes([24, 1, 2, 3, 4,
                                5]), **dict.fromkeys((pyzvr.OPEN_UART, pyzvr.OPEN_CAN, pyzvr.OPEN_AI), b"\1\0")
}


@contextlib.contextmanager
def on_fake_client(factory, connect=True):
    with factory() as box:
        box.link = types.SimpleNamespace(
            connect=lambda: setattr(box, "client_cmd", FakeClient(box)) or box.client_cmd.replies.update(REPLIES))
        if connect:
            box.link.connect()
        yield box


def serial(box, form=blocking):
    return form(box, "Sys_getSerialNumber")


REQUEST = list(b"\2\0\1\x7a\r\n")
WHERE_AND_WHEN = [
    ("instance", "made"),
    ("instance", "connected"),
    *((where, when) for where in ("subclass", "product", "owner") for when in ("before", "made", "connected")),
]
where_and_when = pytest.mark.parametrize("where, when", WHERE_AND_WHEN, ids=["-".join(each) for each in WHERE_AND_WHEN])


def factory_of(model):
    return type(model, (getattr(pyzvr, model),), {})


def owner_of(class_, name):
    return next(each for each in class_.__mro__ if name in vars(each))


def target_of(where, factory, box, name):
    product = factory.__mro__[1]
    return {"instance": box, "subclass": factory, "product": product, "owner": owner_of(product, name)}[where]


@contextlib.contextmanager
def on_opened(factory, connect=True):
    """A product behind a fake client, its streamed function open when it is connected."""
    with on_fake_client(factory) as box:
        function = {"SableDio": ("UART_open", 1), "SableCan": ("CAN_open", 1),
                    "TarnAnalog": ("AI_open", 0)}[factory.__name__]
        box.link = types.SimpleNamespace(connect=lambda: blocking(box, *function))
        if connect:
            box.link.connect()
        yield box


def bytes_pass(box):
    for port, (source, target) in enumerate(
        [(box.uart_p1_data_queue, box.uart_p1_signal_queue), (box.uart_p2_data_queue, box.uart_p2_signal_queue)]
    ):
        source.put(bytes([65 + port]))
        assert target.get(timeout=PATIENCE) == 65 + port


def frames_pass(box):
    box.can_data_queue.put(RECORDS)
    assert [box.can_frame_queue.get(timeout=PATIENCE) for _ in FRAMES] == FRAMES


def rows_pass(box):
    box.ai_data_queue_list[0].put(SAMPLES)
    assert box.ai_signal_queue_list[0].get(timeout=PATIENCE) == ROW


def slept(box):
    async def main():
        try:
            return await asyncio.wait_for(box._broadcastPacket_async(252, [0]), 0.05)
        except asyncio.TimeoutError:
            return "still asleep"

    box.client_udp = mock.Mock()
    return asyncio.run(main())
