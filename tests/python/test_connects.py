"""A connect that is not wanted any more ends at once, and one that waits is in nobody's way."""

import asyncio
import contextvars
import os
import queue
import threading
import time

import pytest
from crowd import Crowded, crowded
from forms import awaited, blocking
from links import link_works, peer
from own_process import run_apart
from peer import Peer, answer_serial
from queue_support import until

import pyzvr

__all__ = ["crowded", "peer"]

ENDED = {"disconnect": "disconnected meanwhile", "close": "closed", "connect": "Another connect"}
FORMS = pytest.mark.parametrize("form", [blocking, awaited])


@pytest.fixture
def product():
    product = pyzvr.TarnDio()
    yield product
    product.close(verbose=False)


def outcome_of(form, product, name, *arguments):
    """Makes the call on a thread; gives the queue of its outcome."""
    outcome = queue.Queue()

    def call():
        try:
            outcome.put(form(product, name, *arguments, verbose=False))
        except Exception as error:
            outcome.put(error)

    threading.Thread(target=call, daemon=True).start()
    return outcome


def waiting_connect(form, product, *address):
    return outcome_of(form, product, "connect", *address)


@pytest.mark.parametrize("end", ENDED)
@pytest.mark.parametrize("waits", [blocking, awaited])
@FORMS
def test_a_connect_that_waits_is_ended_by_what_comes_later(product, crowded, peer, waits, form, end):
    outcome = waiting_connect(waits, product, *crowded.address)
    until(crowded.waiting)
    form(product, end, *(["127.0.0.1", peer.port] if end == "connect" else []), verbose=False)
    with pytest.raises(pyzvr.NetworkConnectionLostError, match=ENDED[end]):
        raise outcome.get(timeout=3)  # by itself it would end after 5 seconds
    assert crowded.admit_all_that_wait() == 0
    assert product.isConnected() == (end == "connect")
    if end == "connect":
        assert link_works(product) and str(peer.port) in repr(product)


@pytest.mark.parametrize("end", ENDED)
@FORMS
def test_a_reconnect_that_waits_is_ended_too(product, peer, form, end):
    crowded = Crowded()
    product.connect(*crowded.address, verbose=False)
    crowded.listener.accept()[0].close()
    crowded.fill()
    outcome = outcome_of(form, product, "reconnect")
    until(crowded.waiting)
    form(product, end, *(["127.0.0.1", peer.port] if end == "connect" else []), verbose=False)
    with pytest.raises(pyzvr.NetworkConnectionLostError, match=ENDED[end]):
        raise outcome.get(timeout=3)
    assert crowded.admit_all_that_wait() == 0
    assert product.isConnected() == (end == "connect")
    crowded.close()


def test_a_cancelled_connect_never_takes_the_handle_over(product, crowded, peer):
    async def main():
        with pytest.raises(asyncio.TimeoutError):
            await asyncio.wait_for(product.connect_async(*crowded.address, verbose=False), 0.1)
        await product.connect_async("127.0.0.1", peer.port, verbose=False)
        assert crowded.admit_all_that_wait() == 0
        assert await product.Sys_getSerialNumber_async() == "SN000001"

    asyncio.run(main())


def test_a_cancelled_connect_does_not_open_a_closed_handle(crowded):
    async def main():
        with pytest.raises(asyncio.TimeoutError):
            async with pyzvr.TarnDio() as product:
                await asyncio.wait_for(product.connect_async(*crowded.address, verbose=False), 0.1)
        assert crowded.admit_all_that_wait() == 0
        assert not product.isConnected()

    asyncio.run(main())


def test_a_connect_that_is_cancelled_when_it_is_made_is_undone(product, peer):
    async def main():
        connecting = asyncio.create_task(product.connect_async("127.0.0.1", peer.port, verbose=False))
        await asyncio.sleep(0)
        until(product.isConnected)  # the loop stands still, and has not heard of it
        connecting.cancel()
        with pytest.raises(asyncio.CancelledError):
            await connecting

    asyncio.run(main())
    assert not product.isConnected()
    assert peer.connection().recv(1) == b""
    product.connect("127.0.0.1", peer.port, verbose=False)
    assert link_works(product)


def test_calls_count_in_the_order_in_which_they_were_made(product, crowded, peer):
    async def main():
        for _ in range(20):
            calls = [product.connect_async(*crowded.address, verbose=False),
                     product.connect_async(*crowded.address, verbose=False),
                     product.disconnect_async(verbose=False)]
            outcomes = await asyncio.gather(*calls, return_exceptions=True)
            assert [type(each) for each in outcomes] == [pyzvr.NetworkConnectionLostError] * 2 + [type(None)]
            calls = [product.connect_async(*crowded.address, verbose=False),
                     product.connect_async("127.0.0.1", peer.port, verbose=False)]
            _, connected = await asyncio.gather(*calls, return_exceptions=True)
            assert connected is None
            assert await product.Sys_getSerialNumber_async() == "SN000001"
            await product.disconnect_async(verbose=False)

    asyncio.run(main())


# Two links.


@pytest.fixture
def wifi():
    product = pyzvr.HeronAnalog()
    yield product
    product.close(verbose=False)


@pytest.mark.parametrize("end", ["disconnect", "close"])
@FORMS
def test_a_second_link_that_waits_is_ended_with_the_first(wifi, crowded, peer, form, end):
    host, data_port = crowded.address
    outcome = waiting_connect(form, wifi, host, data_port, peer.port)
    until(crowded.waiting)
    form(wifi, end, verbose=False)
    with pytest.raises(pyzvr.NetworkConnectionLostError, match=ENDED[end]):
        raise outcome.get(timeout=3)
    assert peer.connection().recv(1) == b""
    assert crowded.admit_all_that_wait() == 0 and not wifi.isConnected()


def test_a_first_link_that_waits_is_ended(wifi, crowded, peer):
    outcome = waiting_connect(blocking, wifi, "127.0.0.1", peer.port, crowded.address[1])
    until(crowded.waiting)
    wifi.disconnect(verbose=False)
    with pytest.raises(pyzvr.NetworkConnectionLostError, match="disconnected meanwhile"):
        raise outcome.get(timeout=3)
    assert crowded.admit_all_that_wait() == 0


def test_a_cancelled_connect_keeps_no_first_link(wifi, crowded, peer):
    other = Peer(answer_serial)
    host, data_port = crowded.address

    async def main():
        connecting = asyncio.create_task(wifi.connect_async(host, data_port, peer.port, verbose=False))
        while not crowded.waiting():
            await asyncio.sleep(0.001)
        connecting.cancel()
        with pytest.raises(asyncio.CancelledError):
            await connecting
        await wifi.connect_async("127.0.0.1", other.port, other.port, verbose=False)
        assert await wifi.Sys_getSerialNumber_async() == "SN000001"

    asyncio.run(main())
    assert peer.connection().recv(1) == b"" and peer.received.empty()
    assert wifi.isConnected() and crowded.admit_all_that_wait() == 0
    other.close()


# What is connected at the moment of the end.


class Late:
    """Makes a client's `connect` return late, when its link is there."""

    def __init__(self, kind):
        self.made, self.goes_on, self.disconnected = (threading.Event() for _ in range(3))
        late = self

        class Client(kind):

            def connect(self, *place):
                result = super().connect(*place)
                late.made.set()
                assert late.goes_on.wait(10)
                return result

            def disconnect(self):
                late.disconnected.set()
                return super().disconnect()

        self.client = Client()


class Foreign:
    """A client that is not the library's."""

    def connect(self, *_):
        return True

    def disconnect(self):
        return None

    def recvAndSplitPacket(self, _):
        time.sleep(0.01)
        return []


@pytest.mark.parametrize("end", ["disconnect", "close"])
@pytest.mark.parametrize("kind", [pyzvr.TCPClient, Foreign])
def test_a_link_that_is_made_as_the_handle_ends_is_let_go_of(product, peer, kind, end):
    late = Late(kind)
    product.client_cmd = late.client
    outcome = waiting_connect(blocking, product, "127.0.0.1", peer.port)
    assert late.made.wait(5)
    getattr(product, end)(verbose=False)
    late.goes_on.set()
    with pytest.raises(pyzvr.NetworkConnectionLostError, match=ENDED[end]):
        raise outcome.get(timeout=5)
    assert not product.isConnected()
    if kind is Foreign:
        assert late.disconnected.is_set()
    else:
        assert peer.connection().recv(1) == b""


def test_a_line_that_is_opened_as_the_handle_ends_is_free():
    device, line = os.openpty()
    drone, late = pyzvr.Drone(), Late(pyzvr.UARTClient)
    drone.client_cmd = late.client
    outcome = waiting_connect(blocking, drone, os.ttyname(line), 115200)
    assert late.made.wait(5)
    drone.close(verbose=False)
    late.goes_on.set()
    with pytest.raises(pyzvr.UARTConnectionError, match="closed"):
        raise outcome.get(timeout=5)
    with pyzvr.Drone() as other:
        other.connect(os.ttyname(line), 115200, verbose=False)
    os.close(device)
    os.close(line)


# Others have their turn.


def test_connects_that_wait_hold_nobody_up(crowded, peer):
    async def main():
        waiting = [asyncio.create_task(pyzvr.TarnDio(verbose=False).connect_async(*crowded.address, verbose=False))
                   for _ in range(40)]
        async with pyzvr.TarnDio(verbose=False) as product:
            await product.connect_async("127.0.0.1", peer.port, verbose=False)
            assert await product.Sys_getSerialNumber_async() == "SN000001"
            await asyncio.to_thread(lambda: None)
            await product.disconnect_async(verbose=False)
        assert not any(each.done() for each in waiting)
        for each in waiting:
            each.cancel()
        await asyncio.gather(*waiting, return_exceptions=True)

    begin = time.monotonic()
    asyncio.run(main())
    assert time.monotonic() - begin < 4  # a connect that waits ends after 5 seconds


INTERRUPTED = """
import asyncio, os, signal, threading
import pyzvr
from crowd import Crowded
from queue_support import until

crowded = Crowded()
crowded.fill()

def interrupt():
    until(crowded.waiting)
    os.kill(os.getpid(), signal.SIGINT)

async def main():
    async with pyzvr.TarnDio(verbose=False) as product:
        await product.connect_async(*crowded.address, verbose=False)

threading.Thread(target=interrupt).start()
try:
    asyncio.run(main())
except KeyboardInterrupt:
    print("interrupted")
"""


def test_an_interrupt_ends_a_program_whose_connect_waits():
    begin = time.monotonic()
    run = run_apart(INTERRUPTED)
    assert (run.stdout, run.stderr, run.returncode) == ("Closed handle (Tarn-Dio)\ninterrupted\n", "", 0)
    assert time.monotonic() - begin < 4


def test_an_awaited_call_has_the_context_of_its_caller(peer):
    place = contextvars.ContextVar("place")

    class Elsewhere(pyzvr.TarnDio):

        def connect(self, *_, **__):
            super().connect(*place.get(), verbose=False)

    async def main():
        place.set(("127.0.0.1", peer.port))
        async with Elsewhere() as product:
            await product.connect_async()
            assert await product.Sys_getSerialNumber_async() == "SN000001"

    asyncio.run(main())
