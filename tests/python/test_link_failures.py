"""A link under many threads, silent, broken or replaced: one failed read is one turn lost."""

import contextlib
import socket
import threading
import time

import pytest
from links import REQUEST, link_works
from peer import Peer, finish

import pyzvr


def echo_frames(count, size=40):
    return b"".join(bytes([2, 0, size + 1, 0x7A]) + bytes([number % 251]) * size + b"\r\n" for number in range(count))


def test_looks_at_the_stream_while_the_receive_thread_runs():
    """A look that is no copy of one moment crashes within a second or two."""
    frames = echo_frames(500)
    stop = threading.Event()

    def flood(connection, _):
        connection.settimeout(0.2)  # so that its sends end with the test
        while not stop.is_set():
            connection.sendall(frames)
            connection.sendall(frames[:1000])

    flooding = Peer(flood)
    errors = []

    def meddle(action):
        try:
            while not stop.is_set():
                with contextlib.suppress(TimeoutError):
                    action()
        except Exception as error:
            errors.append(error)

    with pyzvr.TarnDio() as box:
        box.connect("127.0.0.1", flooding.port, verbose=False)
        client = box.client_cmd
        client.setTimeout(0.5)

        def put_back():
            client.stream = client.stream[:100]
            client.last_index = 0

        actions = [lambda: client.stream, lambda: client.last_index, client._splitPacket, put_back,
                   lambda: client.recvAndSplitPacket(1536)]
        threads = [threading.Thread(target=meddle, args=(action,)) for action in actions]
        client.sendPacket(REQUEST)
        for thread in threads:
            thread.start()
        time.sleep(2)
        stop.set()
        for thread in threads:
            thread.join(10)
        assert errors == []
        assert box.recv_cmd_thread.is_alive()
    flooding.close()


def test_frames_of_readers_beside_the_receive_thread_come_out_whole(box, peer):
    connection = peer.connection()
    found = []
    box.client_cmd.setTimeout(1)

    def read():
        try:
            while True:
                found.extend(box.client_cmd.recvAndSplitPacket(100))
        except TimeoutError:
            pass

    class Counting:
        filed = 0

    threads = [threading.Thread(target=read) for _ in range(2)]
    for thread in threads:
        thread.start()
    connection.sendall(echo_frames(3000))
    for thread in threads:
        thread.join(20)
    assert all(command == 122 and data == data[:1] * 40 for command, data in found)
    assert box.client_cmd.stream == b""


def test_silence_longer_than_the_timeout_is_no_end(box):
    for seconds in (0.05, 0.001, 0):
        box.client_cmd.setTimeout(seconds)
        time.sleep(4 * seconds)
        assert all(link_works(box) for _ in range(20))
    box.client_cmd.setTimeout(None)
    assert link_works(box)


def test_a_client_put_in_place_after_the_peer_closed_is_read_at_once(box, peer):
    for _ in range(5):
        finish(peer.connection())
        time.sleep(0.02)
        other = pyzvr.TCPClient()
        other.connect("127.0.0.1", peer.port)
        box.client_cmd = other
        assert link_works(box)


def test_a_client_replaced_under_the_read_of_the_thread(box, peer):
    for _ in range(50):
        other = pyzvr.TCPClient()
        other.connect("127.0.0.1", peer.port)
        box.client_cmd = other  # the one before is connected and silent
        assert link_works(box)


def test_a_client_reconnected_by_hand(box, peer):
    for _ in range(20):
        box.client_cmd.disconnect()
        box.client_cmd.connect("127.0.0.1", peer.port)
        assert link_works(box)


def test_a_link_that_is_dead_for_long_is_read_again_when_it_changes(box, peer):
    finish(peer.connection())
    time.sleep(1.2)
    box.client_cmd.disconnect()
    box.client_cmd.connect("127.0.0.1", peer.port)
    assert link_works(box)


def test_finder_with_a_timeout_and_silence_hears_on():
    reply = bytes([2, 0, 12, 252, 1]) + b"ABCDEFGHIJ" + b"\r\n"
    with pyzvr.DeviceFinder() as finder:
        finder.client_udp.bind("127.0.0.1", 0)
        finder.recv_udp_lock.release()
        finder.client_udp.setTimeout(0.05)
        time.sleep(0.2)
        target = finder.client_udp.socket.getsockname()
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as sender:
            # What anybody may send: nothing, a frame without data, streamed codes too short for their key.
            for noise in (b"", b"\x02\x00\x01\xfc\r\n", b"\x02\x00\x01\x81\r\n", b"\x02\x00\x02\xb7\x00\r\n",
                          b"\r\n" * 100):
                sender.sendto(noise, target)
            deadline = time.monotonic() + 10
            while not (records := list(finder.data_pool_bcst[pyzvr.GET_DEVICE_INFO])) and time.monotonic() < deadline:
                sender.sendto(reply, target)
                time.sleep(0.01)
        assert bytes(records[0]) == b"ABCDEFGHIJ"
        assert finder.recv_udp_thread.is_alive()


def cpu_of_threads_besides_this_one(seconds):
    before = time.process_time() - time.thread_time()
    time.sleep(seconds)
    return time.process_time() - time.thread_time() - before


@pytest.mark.parametrize("break_link", [
    lambda box, peer: finish(peer.connection()),
    lambda box, peer: box.client_cmd.disconnect(),
    lambda box, peer: box.client_cmd.socket.close(),
    lambda box, peer: setattr(box, "client_cmd", None),
    lambda box, peer: setattr(box.client_cmd, "socket", 0),
    lambda box, peer: box.client_cmd.setTimeout(0.02),
], ids=["peer", "disconnect", "socket", "none", "zero", "timeout"])
def test_no_state_of_a_link_costs_a_core(box, peer, break_link):
    break_link(box, peer)
    assert cpu_of_threads_besides_this_one(1) < 0.25
    assert box.recv_cmd_thread.is_alive()
