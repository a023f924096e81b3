"""The end of a connection under whoever waits for something of it."""

import asyncio
import contextlib
import queue
import socket
import threading
import time

import pytest
import zvrkit.sim
from forms import awaited, blocking
from links import ENDS, silent, waiting_box
from loops import KEYS
from peer import finish, reset
from queue_support import until

import pyzvr

__all__ = ["silent", "waiting_box"]


@pytest.mark.parametrize("end", ENDS)
@pytest.mark.parametrize("form", [blocking, awaited])
def test_a_request_hears_of_the_end_at_once_and_so_do_those_behind_it(waiting_box, silent, form, end):
    connection = silent.connection()
    threading.Timer(0.1, end, [connection]).start()
    begin = time.monotonic()
    with pytest.raises(pyzvr.NetworkConnectionLostError):
        form(waiting_box, "_echoPacketWithRetry", KEYS[0], [1])
    assert time.monotonic() - begin < 2  # the limit is 5 seconds
    assert not waiting_box.isConnected()
    with pytest.raises(pyzvr.NetworkConnectionLostError):
        form(waiting_box, "_echoPacketWithRetry", KEYS[0], [1])


@pytest.mark.parametrize(("end", "cause"), [(finish, type(None)), (reset, ConnectionResetError)])
@pytest.mark.parametrize("form", [blocking, awaited])
def test_the_systems_reason_of_a_loss_is_the_cause_of_its_error(waiting_box, silent, form, end, cause):
    told = queue.Queue()
    waiting_box.onConnectionLost(told.put)
    connection = silent.connection()
    threading.Timer(0.05, end, [connection]).start()
    for _ in range(2):  # the one that meets it, and one behind it
        with pytest.raises(pyzvr.NetworkConnectionLostError) as lost:
            form(waiting_box, "_echoPacketWithRetry", KEYS[0], [1])
        assert type(lost.value.__cause__) is cause
    waiting_box.onConnectionLost(told.put)
    assert [type(told.get(timeout=5).__cause__) for _ in range(2)] == [cause] * 2


def test_a_description_tells_of_a_loss_as_the_box_does(box, peer):
    told = queue.Queue()
    box.onConnectionLost(lambda _: told.put((repr(box), box.isConnected())))
    assert repr(box).endswith(", connected>")
    finish(peer.connection())
    text, connected = told.get(timeout=5)
    assert text.endswith(", not connected>") and not connected
    assert repr(box).endswith(", not connected>")
    box.reconnect(verbose=False)
    assert repr(box).endswith(", connected>")


def test_a_description_tells_of_a_second_link_that_is_missing(peer):
    with pyzvr.HeronAnalog() as box, socket.socket() as nobody:
        nobody.bind(("127.0.0.1", 0))
        with pytest.raises(pyzvr.NetworkConnectionError):
            box.connect("127.0.0.1", nobody.getsockname()[1], peer.port, verbose=False)
        assert repr(box).endswith(", not connected>") and not box.isConnected()


def test_all_who_wait_hear_of_the_end(waiting_box, silent):
    connection = silent.connection()
    heard = []

    def wait(key):
        try:
            waiting_box._getReplyFromPool(key, 20)
        except pyzvr.NetworkConnectionLostError:
            heard.append(key)

    async def tasks():
        waits = [waiting_box._getReplyFromPool_async(key) for key in KEYS[10:20]]
        for error in await asyncio.gather(*waits, return_exceptions=True):
            assert isinstance(error, pyzvr.NetworkConnectionLostError)
            heard.append(None)

    threads = [threading.Thread(target=wait, args=(key,)) for key in KEYS[:10]]
    threads += [threading.Thread(target=asyncio.run, args=(tasks(),)) for _ in range(2)]
    for thread in threads:
        thread.start()
    time.sleep(0.05)
    finish(connection)
    for thread in threads:
        thread.join(10)
    assert len(heard) == 30


@pytest.mark.parametrize("end", ["disconnect", "close"])
@pytest.mark.parametrize("form", [blocking, awaited])
def test_who_waits_for_a_reply_is_told_of_disconnect_and_close(waiting_box, silent, form, end):
    waiting_box.serialize = True  # the second one waits for its turn
    told = queue.Queue()

    def ask():
        try:
            form(waiting_box, "_echoPacketWithRetry", KEYS[0], [1], *([30] if form is blocking else [30, 30]))
        except Exception as error:
            told.put(error)

    for _ in range(2):
        threading.Thread(target=ask, daemon=True).start()
    silent.connection().recv(100)
    begin = time.monotonic()
    getattr(waiting_box, end)(verbose=False)
    for _ in range(2):
        error = told.get(timeout=10)
        assert isinstance(error, pyzvr.NetworkConnectionLostError)
        assert "The handle is closed." in str(error) or "There is no connection." in str(error)
    assert time.monotonic() - begin < 10


@pytest.mark.parametrize("end", ["disconnect", "close", "loss"])
@pytest.mark.parametrize("read", ["AI_readStreaming", "AI_readStreamingBlock", "_getStreamingFromPool"])
@pytest.mark.parametrize("form", [blocking, awaited])
def test_a_read_of_a_stream_that_has_nothing_to_come_is_told_at_once(form, read, end):
    box = pyzvr.TarnAnalog()
    arguments = [box.data_pool_strm[5] if read.startswith("_") else 0, 10, 30]
    assert len(form(box, read, *arguments[:2], 0.001)) == 0  # there has been no connection
    with zvrkit.sim.device("TarnAnalog") as place:
        box.connect(*place.address, verbose=False)
        if end == "loss":
            place.cut()
            until(lambda: not box.isConnected())
        else:
            getattr(box, end)(verbose=False)
        with pytest.raises(pyzvr.NetworkConnectionLostError):
            form(box, read, *arguments)
    with contextlib.suppress(pyzvr.NetworkConnectionLostError):
        box.close(verbose=False)


@pytest.mark.parametrize("form", [blocking, awaited])
def test_leaving_a_block_does_not_tell_of_a_loss_again(silent, form):
    async def enter(box):
        async with box:
            lose(box)

    def lose(box):
        box.connect("127.0.0.1", silent.port, verbose=False)
        reset(silent.connection())
        with pytest.raises(pyzvr.NetworkConnectionLostError):
            box._echoPacketWithRetry(KEYS[0], [1], 5)

    box = pyzvr.TarnDio()
    if form is awaited:
        asyncio.run(enter(box))
    else:
        with box:
            lose(box)
    assert box.killed


def test_what_had_arrived_before_the_end_is_read(waiting_box, silent):
    frame = bytes([2, 0, 2, KEYS[0], 7, 13, 10])
    for _ in range(50):
        connection = silent.connection()
        threading.Thread(target=lambda c=connection: (c.sendall(frame), finish(c))).start()
        assert waiting_box._getReplyFromPool(KEYS[0], 5) == b"\x07"
        waiting_box.reconnect(verbose=False)


@pytest.mark.parametrize("end", ["disconnect", "close"])
@pytest.mark.parametrize("queue_of", [lambda box: box.data_pool_strm[(pyzvr.START_AI_STREAMING, 0, 0)],
                                      lambda box: box.ai_signal_queue_list[0]], ids=["frames", "rows"])
def test_the_end_wakes_who_waits_in_a_queue(peer, queue_of, end):
    product = pyzvr.TarnAnalog()
    product.connect("127.0.0.1", peer.port, verbose=False)
    fifo = queue_of(product)
    outcomes, begun = queue.Queue(), threading.Barrier(3)

    def wait(timeout):
        begun.wait()
        try:
            outcomes.put(fifo.get(timeout=timeout))
        except queue.Empty:
            outcomes.put("empty")

    for timeout in (None, 30):
        threading.Thread(target=wait, args=(timeout,), daemon=True).start()
    begun.wait()
    time.sleep(0.05)
    getattr(product, end)(verbose=False)
    # Closing leaves a marker for the thread, which who wakes late may take.
    assert {outcomes.get(timeout=5) for _ in range(2)} <= {"empty", None}
    fifo.put([1.0] * 8)
    assert [1.0] * 8 in [fifo.get() for _ in range(fifo.qsize())]
    product.close(verbose=False)
