"""The life of a connection: before it, its loss, and the next one."""

import asyncio
import gc
import queue
import socket
import sys
import threading
import time
import weakref

import pytest
import zvrkit.sim
from crowd import crowded
from forms import awaited, blocking
from links import ENDS, box, peer
from loops import KEYS
from peer import Peer, finish
from queue_support import until

import pyzvr

__all__ = ["box", "crowded", "peer"]


# Without a connection.


@pytest.mark.parametrize(("model", "error"), [
    ("TarnDio", pyzvr.NetworkConnectionLostError),
    ("HeronAnalog", pyzvr.NetworkConnectionLostError),
    ("SableDio", pyzvr.USBConnectionError),
    ("Drone", pyzvr.UARTConnectionError),
])
@pytest.mark.parametrize("form", [blocking, awaited])
def test_a_request_without_a_connection_says_so(model, error, form):
    product = getattr(pyzvr, model)()
    request, arguments = "_echoPacketWithRetry", [KEYS[0], [1]]
    if model == "Drone":
        form = blocking  # it has no other
    with pytest.raises(error, match="connect"):
        form(product, request, *arguments)
    product.close(verbose=False)
    with pytest.raises(error, match="closed|connect"):
        form(product, request, *arguments)
    assert not product.isConnected()


def test_disconnected_is_not_connected(box, peer):
    assert box.isConnected()
    box.disconnect(verbose=False)
    assert not box.isConnected()
    with pytest.raises(pyzvr.NetworkConnectionLostError, match="connect"):
        box.Sys_getSerialNumber()
    box.connect("127.0.0.1", peer.port, verbose=False)
    assert box.isConnected() and box.Sys_getSerialNumber() == "SN000001"


# The next one.


@pytest.mark.parametrize("end", ENDS)
def test_reconnect_gives_the_same_handle_a_fresh_link(box, peer, end):
    peer.connection().sendall(b"\x02\x00\x09half a frame")
    for _ in range(20):
        assert box.Sys_getSerialNumber(timeout=5) == "SN000001"
        box._putToDataPool(KEYS[0], b"stale")
        box.reconnect(verbose=False)
        assert KEYS[0] not in box.data_pool_echo
        connection = peer.connection()
        end(connection)
        with pytest.raises((pyzvr.NetworkConnectionLostError, OSError)):
            for _ in range(3):
                box.Sys_getSerialNumber(timeout=1)
        asyncio.run(box.reconnect_async(verbose=False))
        assert box.isConnected()
        peer.connection()


def test_reconnect_refuses_without_a_place_and_fails_as_connect_does():
    product = pyzvr.TarnDio()
    with pytest.raises(pyzvr.NetworkConnectionLostError, match="connect"):
        product.reconnect()
    closing = Peer()
    product.connect("127.0.0.1", closing.port, verbose=False)
    finish(closing.connection())
    closing.close()
    with pytest.raises(pyzvr.NetworkConnectionError):
        product.reconnect()
    assert not product.isConnected()
    product.close(verbose=False)
    with pytest.raises(pyzvr.NetworkConnectionLostError, match="closed"):
        product.reconnect()


# Who is told.


def test_callbacks_are_called_once_on_a_thread_or_a_loop(box, peer):
    calls = []
    done = threading.Event()

    async def main():
        on_loop = asyncio.get_running_loop().create_future()
        box.onConnectionLost(on_loop.set_result, asyncio.get_running_loop())
        box.onConnectionLost(lambda reason: (calls.append((reason, threading.current_thread())), done.set()))
        finish(peer.connection())
        return await asyncio.wait_for(on_loop, 5)

    reason = asyncio.run(main())
    assert done.wait(5)
    assert isinstance(reason, pyzvr.NetworkConnectionLostError)
    assert calls[0][1] is not threading.main_thread()
    done.clear()
    box.onConnectionLost(lambda _: done.set())  # registered behind the loss: called at once
    assert done.wait(5)
    box.reconnect(verbose=False)
    finish(peer.connection())
    with pytest.raises(pyzvr.NetworkConnectionLostError):
        box.Sys_getSerialNumber()
    assert len(calls) == 1


def test_the_loss_of_a_second_link_is_none_of_the_next_connection():
    """A Wi-Fi box loses both links; the second loss is told late, when the box is connected again."""
    entered, again = threading.Semaphore(0), threading.Event()

    class Late(pyzvr.HeronAnalog):
        @property
        def _loss_callbacks(self):
            if threading.current_thread() is not threading.main_thread():
                entered.release()
                assert again.wait(10)
            return self.asked

        @_loss_callbacks.setter
        def _loss_callbacks(self, callbacks):
            self.asked = callbacks

    with zvrkit.sim.device("HeronAnalog") as place, Late() as box:
        box.connect(*place.address, verbose=False)
        before, after = queue.Queue(), queue.Queue()
        box.onConnectionLost(before.put)
        held = sys.getrefcount(box)
        for asked, told in ((after, before), (None, after)):
            again.clear()
            place.cut()
            assert all(entered.acquire(timeout=10) for _ in range(2))
            box.reconnect(verbose=False)
            if asked:
                box.onConnectionLost(asked.put)
            again.set()
            assert isinstance(told.get(timeout=10), pyzvr.NetworkConnectionLostError)
            until(lambda: sys.getrefcount(box) <= held)  # both have told
            assert before.empty() and after.empty()


@pytest.mark.parametrize("form", [blocking, awaited])
def test_each_loss_is_told_also_to_who_connects_again_at_once(form):
    """Who meets the end of a link in the thread's place may have the next one before the thread has looked."""
    peer = Peer(lambda connection, data: finish(connection))
    told = queue.Queue()
    for _ in range(50):  # the thread has not seen the first link yet
        with pyzvr.TarnDio() as box:
            box.connect("127.0.0.1", peer.port, verbose=False)
            box.onConnectionLost(told.put)
            with pytest.raises(pyzvr.NetworkConnectionLostError):
                form(box, "_echoPacketWithRetry", KEYS[0], [1])
            assert isinstance(told.get(timeout=10), pyzvr.NetworkConnectionLostError)
    with pyzvr.TarnDio() as box:
        box.connect("127.0.0.1", peer.port, verbose=False)
        for _ in range(300):
            box.onConnectionLost(told.put)
            with pytest.raises(pyzvr.NetworkConnectionLostError):
                form(box, "_echoPacketWithRetry", KEYS[0], [1])
            box.reconnect(verbose=False)
            assert isinstance(told.get(timeout=10), pyzvr.NetworkConnectionLostError)
        assert told.empty()
    peer.close()


def test_a_socket_that_has_been_replaced_loses_nothing(box, peer):
    told = queue.Queue()
    box.onConnectionLost(told.put)
    replaced, first = box.client_cmd.socket, peer.connection()
    with pyzvr.TarnDio() as other:
        other.connect("127.0.0.1", peer.port, verbose=False)
        box.client_cmd.socket = other.client_cmd.socket
        second = peer.connection()
        finish(first)
        assert replaced.recv(10) == b""
        assert box.Sys_getSerialNumber() == "SN000001" and told.empty()
        finish(second)
        assert isinstance(told.get(timeout=10), pyzvr.NetworkConnectionLostError)


def test_closing_is_no_loss_and_a_callback_keeps_nothing_alive(peer):
    calls = []

    class Listener:
        def __call__(self, reason):
            calls.append(reason)

    listener = Listener()
    gone = weakref.ref(listener)
    for end in ("disconnect", "close"):
        product = pyzvr.TarnDio()
        product.connect("127.0.0.1", peer.port, verbose=False)
        product.onConnectionLost(listener)
        getattr(product, end)(verbose=False)
        time.sleep(0.05)
        product.close(verbose=False)
    del product, listener
    gc.collect()
    assert calls == [] and gone() is None


def test_callbacks_go_with_the_handle_and_with_its_closing(peer):
    class Listener:
        def __call__(self, reason):
            raise AssertionError("nothing is lost here")

    product, listener = pyzvr.TarnDio(), Listener()
    product.connect("127.0.0.1", peer.port, verbose=False)
    product.onConnectionLost(listener)
    product.onConnectionLost(product.close)  # refers back to the handle
    gone, closed = weakref.ref(product), weakref.ref(listener)
    del product, listener
    gc.collect()
    assert gone() is None and closed() is None
    with pyzvr.TarnDio() as product:
        product.onConnectionLost(Listener())
        listener = weakref.ref(product._loss_callbacks[0][0])
        product.close(verbose=False)
        assert listener() is None


@pytest.mark.parametrize("bad", [None, 5, "x"])
def test_what_cannot_be_called_is_refused(box, bad):
    with pytest.raises(TypeError, match="callback"):
        box.onConnectionLost(bad)


# An event loop is never stopped.


class SlowToClose(pyzvr.TarnDio):

    def close(self, verbose=True):
        time.sleep(0.3)
        super().close(verbose)


def test_connecting_disconnecting_and_closing_leave_the_loop_running(peer, crowded):
    async def main():
        ticks = 0

        async def tick():
            nonlocal ticks
            while True:
                await asyncio.sleep(0.005)
                ticks += 1

        ticking = asyncio.create_task(tick())
        product = pyzvr.TarnDio()
        await product.connect_async("127.0.0.1", peer.port, verbose=False)
        assert await product.Sys_getSerialNumber_async() == "SN000001"
        await product.disconnect_async(verbose=False)
        with socket.socket() as nobody:  # bound, and not listening
            nobody.bind(("127.0.0.1", 0))
            with pytest.raises(pyzvr.NetworkConnectionError):
                await product.connect_async("127.0.0.1", nobody.getsockname()[1], verbose=False)
        before = ticks
        with pytest.raises(asyncio.TimeoutError):
            await asyncio.wait_for(product.connect_async(*crowded.address, verbose=False), 0.3)
        assert ticks - before > 10
        await product.close_async(verbose=False)
        async with SlowToClose():
            before = ticks
        assert ticks - before > 10
        ticking.cancel()

    asyncio.run(main())


# Equal requests take turns.


class Doubling:
    """Answers each request with its count, many of them twice."""

    def __init__(self):
        self.count = 0

    def __call__(self, connection, data):
        answers = b""
        for _ in range(data.count(b"\r\n")):
            self.count += 1
            answers += bytes([2, 0, 2, KEYS[0], self.count % 256, 13, 10]) * (2 if self.count % 3 == 0 else 1)
        connection.sendall(answers)


@pytest.mark.parametrize("form", ["threads", "tasks"])
def test_equal_requests_take_turns_and_stale_replies_are_dropped(form):
    peer = Peer(Doubling())
    with pyzvr.TarnDio() as product:
        product.connect("127.0.0.1", peer.port, verbose=False)
        assert product.serialize is False
        product._echoPacketWithRetry(KEYS[0], [1])  # it counts from the next request on
        product.serialize = True
        got = []

        def ask():
            for _ in range(20):
                got.append(product._echoPacketWithRetry(KEYS[0], [1])[0])

        async def ask_awaited():
            for _ in range(20):
                got.append((await product._echoPacketWithRetry_async(KEYS[0], [1]))[0])

        if form == "threads":
            threads = [threading.Thread(target=ask) for _ in range(10)]
            for thread in threads:
                thread.start()
            for thread in threads:
                thread.join()
        else:
            async def main():
                await asyncio.gather(*(ask_awaited() for _ in range(10)))
            asyncio.run(main())
        assert len(got) == 200
        # None is the answer to another one, but for a double that is filed while the next request is sent.
        assert len(set(got)) >= 195
    peer.close()


def test_a_client_that_is_let_go_of_is_gone(box):
    assert box.Sys_getSerialNumber() == "SN000001"
    gone = weakref.ref(box.client_cmd)
    box.client_cmd = None
    gc.collect()
    assert gone() is None
