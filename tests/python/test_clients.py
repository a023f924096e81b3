"""Clients as the Python objects they are: shared by threads, failing, patched, subclassed, forked, interrupted."""

import asyncio
import contextlib
import gc
import os
import socket
import subprocess
import sys
import threading
import time
import weakref
from unittest import mock

import pytest
from conftest import can_make_networks
from peer import SERIAL_REPLY, Peer, answer_serial, finish

import pyzvr

REQUEST = [2, 0, 1, 122, 13, 10]


@pytest.fixture
def peer():
    peer = Peer(answer_serial)
    yield peer
    peer.close()


@pytest.fixture
def box(peer):
    product = pyzvr.TarnDio()
    product.connect("127.0.0.1", peer.port, verbose=False)
    yield product
    with contextlib.suppress(pyzvr.NetworkConnectionLostError, AttributeError):
        product.close()


@pytest.fixture
def client(peer):
    client = pyzvr.TCPClient()
    client.connect("127.0.0.1", peer.port)
    yield client
    with contextlib.suppress(pyzvr.NetworkConnectionLostError):
        client.disconnect()


def echo_frames(count, size=40):
    return b"".join(bytes([2, 0, size + 1, 0x7A]) + bytes([number % 251]) * size + b"\r\n" for number in range(count))


# Many threads on one client


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
    failures = []

    def meddle(action):
        try:
            while not stop.is_set():
                with contextlib.suppress(TimeoutError):
                    action()
        except Exception as failure:
            failures.append(failure)

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
        assert failures == [] and box.recv_cmd_thread.is_alive()
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


# One failed read is one turn lost


def link_works(box):
    return box.Sys_getSerialNumber(timeout=2) == "SN000001"


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
            for noise in (b"", b"\x02\x00\x01\xfc\r\n", b"\x02\x00\x01\x81\r\n", b"\x02\x00\x02\xb7\x00\r\n", b"\r\n" * 100):
                sender.sendto(noise, target)
            deadline = time.monotonic() + 10
            while not (records := list(finder.data_pool_bcst[pyzvr.GET_DEVICE_INFO])) and time.monotonic() < deadline:
                sender.sendto(reply, target)
                time.sleep(0.01)
        assert bytes(records[0]) == b"ABCDEFGHIJ" and finder.recv_udp_thread.is_alive()


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


# Clients as Python objects


def test_clients_take_attributes_and_patches(box):
    client = box.client_cmd
    client.note = ["anything"]
    assert client.note == ["anything"] and "note" in vars(client)
    sent = []
    with mock.patch.object(client, "sendPacket", sent.append):
        with pytest.raises(pyzvr.ReceivePacketTimeoutError):
            box.Sys_getSerialNumber(timeout=0.05)
        assert [bytes(packet) for packet in sent[:1]] == [bytes(REQUEST)]
    assert link_works(box)
    client.sendPacket = sent.append
    del client.sendPacket
    assert link_works(box)
    gone = weakref.ref(pyzvr.TCPClient())
    gc.collect()
    assert gone() is None
    other = pyzvr.TCPClient()
    other.cycle = other
    gone = weakref.ref(other)
    del other
    gc.collect()
    assert gone() is None


@pytest.mark.parametrize("step", ["recvPacket", "recvAndSplitPacket", "_splitPacket"])
@pytest.mark.parametrize("place", ["instance", "subclass", "class"])
def test_a_step_replaced_while_the_thread_reads_is_the_one_that_it_calls(box, peer, step, place):
    class Sub(pyzvr.TCPClient):
        pass

    if place == "subclass":
        box.client_cmd = Sub()
        box.client_cmd.connect("127.0.0.1", peer.port)
    assert link_works(box)
    where = {"instance": box.client_cmd, "subclass": Sub, "class": pyzvr.TCPClient}[place]
    original, called = getattr(pyzvr.TCPClient, step), []

    def replaced(*arguments):
        called.append(arguments)
        return original(*(arguments if place != "instance" else (box.client_cmd, *arguments)))

    for _ in range(20):
        with mock.patch.object(where, step, replaced):
            called.clear()
            # A read that has begun is ended as it began.
            assert link_works(box) and (called or link_works(box)) and called
        # The thread may be inside the last call of the replacement.
        assert all(link_works(box) for _ in range(3))
        called.clear()
        assert link_works(box) and not called


@pytest.mark.parametrize("field, value", [("stream", b"\x02\x00"), ("last_index", 3), ("socket", object())])
def test_fields_of_clients_can_be_patched_and_deleted(client, field, value):
    before = getattr(client, field)
    with mock.patch.object(client, field, value):
        assert getattr(client, field) is value or getattr(client, field) == value
    assert getattr(client, field) == before
    delattr(client, field)
    with pytest.raises(AttributeError):
        getattr(client, field)
    with pytest.raises(AttributeError):
        delattr(client, field)
    setattr(client, field, before)
    assert getattr(client, field) == before


class FakeSocket:
    """A socket in plain Python, answering each frame."""

    def __init__(self):
        self.calls, self.answers, self.arrived = [], b"", threading.Condition()

    def send(self, data):
        assert isinstance(data, bytes)
        with self.arrived:
            self.answers += SERIAL_REPLY
            self.arrived.notify_all()
        return len(data)

    def recv(self, length):
        with self.arrived:
            if not self.arrived.wait_for(lambda: self.answers, 0.05):
                raise TimeoutError
            taken, self.answers = self.answers[:length], self.answers[length:]
            return taken

    def settimeout(self, seconds):
        self.calls.append(("settimeout", seconds))

    def shutdown(self, how):
        self.calls.append(("shutdown", how))

    def close(self):
        self.calls.append(("close",))


def test_an_object_in_place_of_the_socket_serves_the_whole_link(box, call):
    client, ours, fake = box.client_cmd, box.client_cmd.socket, FakeSocket()
    client.socket = fake
    assert client.socket is fake
    for _ in range(20):
        assert call(box, "Sys_getSerialNumber") == "SN000001"
    client.setTimeout(5)
    client.setTimeout(None)
    client.socket = ours
    assert client.socket is ours and link_works(box)
    client.socket = fake
    assert link_works(box)
    box.recv_cmd_lock.acquire()
    time.sleep(0.3)  # the thread leaves its last read after 0.05 s
    fake.answers = b""  # of a request that was repeated
    client.stream = b""
    client.sendPacket(REQUEST)
    assert client.recvPacket(4) == SERIAL_REPLY[:4] and client.recvAndSplitPacket(100) == []
    client.disconnect()
    assert client.socket == 0
    assert fake.calls == [("settimeout", 5), ("settimeout", None), ("shutdown", socket.SHUT_RDWR), ("close",)]
    with pytest.raises(OSError):
        client.sendPacket(REQUEST)


def test_a_socket_of_the_host_in_place_of_ours(peer):
    with pyzvr.TarnDio() as box:
        box.client_cmd.socket = socket.create_connection(("127.0.0.1", peer.port))
        box.recv_cmd_lock.release()
        assert link_works(box)
        box.client_cmd.disconnect()
        box.client_cmd.connect("127.0.0.1", peer.port)
        assert isinstance(box.client_cmd.socket, pyzvr.Socket) and link_works(box)


def test_failures_of_an_object_in_place_of_the_socket():
    client = pyzvr.NetworkClient()
    client.socket = fake = mock.Mock()
    fake.send.side_effect = BrokenPipeError(32, "gone")
    fake.recv.return_value = b""
    fake.shutdown.side_effect = OSError(107, "not connected")
    with pytest.raises(BrokenPipeError):
        client.sendPacket([1])
    assert client.recvPacket(7) == b"" and client.recvAndSplitPacket(7) == [] and fake.recv.call_args == mock.call(7)
    with pytest.raises(pyzvr.NetworkConnectionLostError):
        client.disconnect()
    assert client.socket is fake
    fake.send.side_effect = ZeroDivisionError
    with pytest.raises(ZeroDivisionError):
        client.sendPacket([1])
    client.socket = None
    with pytest.raises(AttributeError):
        client.sendPacket([1])


def test_a_device_held_by_its_socket_is_collected():
    box = pyzvr.TarnDio()
    box.client_cmd.socket = fake = FakeSocket()
    fake.box = box
    gone, thread = weakref.ref(box), box.recv_cmd_thread
    del box, fake
    gc.collect()
    assert gone() is None
    thread.join(5)
    assert not thread.is_alive()


def test_clients_written_in_python(peer):
    class OwnSocket(pyzvr.NetworkClient):
        def connect(self, ip_addr, port):
            self.own = socket.create_connection((ip_addr, port))
            return True

        def disconnect(self):
            self.own.shutdown(socket.SHUT_RDWR)
            self.own.close()

        def sendPacket(self, int_list):
            self.own.send(bytes(int_list))

        def recvPacket(self, length):
            return self.own.recv(length)

    class OwnSplitter(pyzvr.TCPClient):
        split = 0

        def _splitPacket(self):
            self.split += 1
            return super()._splitPacket()

    class FromNothing(pyzvr.Client):
        def __init__(self):
            super().__init__()
            self.pending = b""

        def connect(self, ip_addr, port):
            return True

        def disconnect(self):
            pass

        def sendPacket(self, int_list):
            self.pending += SERIAL_REPLY

        def recvPacket(self, length):
            taken, self.pending = self.pending[:length], self.pending[length:]
            return taken

    for kind in (OwnSocket, OwnSplitter, FromNothing):
        with pyzvr.TarnDio() as box:
            box.client_cmd = kind()
            box.connect("127.0.0.1", peer.port, verbose=False)
            assert all(link_works(box) for _ in range(5)), kind
            assert asyncio.run(box.Sys_getSerialNumber_async()) == "SN000001"
            assert kind is not OwnSplitter or box.client_cmd.split >= 6
    bare = pyzvr.Client()
    bare.stream = SERIAL_REPLY + b"rest"
    assert bare._splitPacket() == [(122, b"SN000001")] and (bare.stream, bare.last_index) == (b"rest", 0)
    for action in (lambda: bare.recvPacket(1), lambda: bare.sendPacket([1]), lambda: bare.recvAndSplitPacket(5)):
        with pytest.raises(OSError):
            action()
    assert pyzvr.NetworkClient().socket == 0


def test_methods_of_the_socket(peer, client):
    ours = client.socket
    assert ours is client.socket and (ours.family, ours.type) == (socket.AF_INET, socket.SOCK_STREAM)
    assert ours.gettimeout() is None and ours.timeout is None
    ours.settimeout(0.01)
    assert ours.gettimeout() == 0.01
    with pytest.raises(TimeoutError):
        ours.recv(10)
    ours.settimeout(0)
    with pytest.raises(BlockingIOError):
        ours.recv(10)
    ours.settimeout(5)
    assert ours.send(bytes(REQUEST)) == 6 and ours.recv(4) + ours.recv(100) == SERIAL_REPLY
    ours.sendall(bytes(REQUEST) * 2)
    received = b""
    while len(received) < 2 * len(SERIAL_REPLY):
        received += ours.recv(2**40)
    assert received == SERIAL_REPLY * 2 and ours.recv(0) == b""
    assert ours.getsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY) == 1
    ours.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 0)
    assert ours.getsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 4) == bytes(4)
    assert ours.getpeername() == ("127.0.0.1", peer.port) and ours.getsockname()[0] == "127.0.0.1"
    ours.shutdown(socket.SHUT_RDWR)
    assert ours.recv(10) == b""
    ours.close()
    ours.close()
    assert ours.fileno() == -1
    for action in (lambda: ours.recv(1), lambda: ours.send(b"x"), ours.getpeername, lambda: ours.shutdown(2)):
        with pytest.raises(OSError):
            action()
    for wrong, failure in ((lambda: ours.settimeout(-1), ValueError), (lambda: ours.settimeout("x"), TypeError),
                           (lambda: ours.recv(-1), ValueError), (lambda: ours.recv(None), TypeError)):
        with pytest.raises(failure):
            wrong()


def test_disconnect_closes_the_socket_whoever_holds_it_and_waits_for_nobody(box, peer):
    held, connection = box.client_cmd.socket, peer.connection()
    descriptor = held.fileno()
    assert os.stat(f"/proc/self/fd/{descriptor}")
    begin = time.thread_time()
    box.disconnect(verbose=False)
    assert time.thread_time() - begin < 0.05  # it used to spin for 75 ms
    assert held.fileno() == -1 and connection.recv(10) == b""
    line = pyzvr.UARTClient()
    assert (line.client, line.socket, line.read_timeout) == (0, 0, 0.05)


@pytest.mark.parametrize("kind", ["Client", "NetworkClient", "TCPClient", "UDPClient", "UARTClient", "USBClient", "Socket",
                                  "USBDeviceIdentity", "USBLibrary"])
def test_none_and_unmade_objects_are_refused(kind):
    kind = getattr(pyzvr, kind)
    for name in dir(kind):
        member = getattr(kind, name)
        if type(member) is type(pyzvr.checkFirmwareError):
            for self in (None, 5, kind.__new__(kind)):
                with pytest.raises((TypeError, IndexError, OSError, ValueError)):
                    member(self, *[[]] * (str(member.__text_signature__).count(",")))
        elif isinstance(member, property):
            for self in (None, kind.__new__(kind)):
                try:
                    member.fget(self)
                except (TypeError, AttributeError):
                    pass
                for step, arguments in ((member.fset, (5,)), (member.fdel, ())):
                    try:
                        step and step(self, *arguments)
                    except (TypeError, AttributeError):
                        pass


@pytest.mark.parametrize("action, name", [
    (lambda client: client.connect(None, 7), "ip_addr"), (lambda client: client.connect("127.0.0.1", "7"), "port"),
    (lambda client: client.connect("127.0.0.1", 7.5), "port"), (lambda client: client.setTimeout("x"), "timeout"),
    (lambda client: client.recvPacket("1"), "length"), (lambda client: client.recvAndSplitPacket(None), "length"),
    (lambda client: pyzvr.UDPClient().bind(5, 6667), "ip_addr"), (lambda client: pyzvr.UDPClient().bind("", None), "port"),
    (lambda client: pyzvr.UARTClient().connect(None, 9600), "port"),
    (lambda client: pyzvr.UARTClient().connect("COM4", "9600"), "baudrate"),
    (lambda client: setattr(client, "last_index", "x"), "last_index"),
    (lambda client: setattr(pyzvr.UARTClient(), "read_timeout", "x"), "read_timeout"),
    (lambda client: pyzvr.USBClient(5), "serial_num")])
def test_wrong_types_are_named(client, action, name):
    with pytest.raises(TypeError, match=name):
        action(client)
    client.sendPacket(REQUEST)
    assert client.recvAndSplitPacket(100) == [(122, b"SN000001")]
    assert client.recvPacket(0) == b"" and client.recvAndSplitPacket(0) == []


# Forks


FORK = """
import os, sys, gc, time, pyzvr
port = int(sys.argv[1])
box = pyzvr.TarnDio()
box.connect("127.0.0.1", port, verbose=False)
held = box.client_cmd.socket
assert box.Sys_getSerialNumber() == "SN000001"

def refused(action):
    try:
        action()
    except pyzvr.NetworkConnectionLostError as failure:
        return "os.fork()" in str(failure) and "parent" in str(failure)

def child(end):
    assert not box.recv_cmd_thread.is_alive()
    assert refused(box.Sys_getSerialNumber), "request"
    assert refused(lambda: box.client_cmd.recvPacket(1)) and refused(lambda: box.client_cmd.stream)
    assert refused(lambda: held.send(b"x")) and held.fileno() == -1
    box.recv_cmd_thread.join()
    other = pyzvr.TarnDio()
    other.connect("127.0.0.1", port, verbose=False)
    assert other.Sys_getSerialNumber() == "SN000001"
    other.close()
    end()

def drop():
    global box, held
    del box, held
    gc.collect()

ends = {"exit": sys.exit, "_exit": lambda: os._exit(0), "close": lambda: box.close(), "drop": drop,
        "disconnect": lambda: refused(box.disconnect), "again": lambda: refused(lambda: box.client_cmd.connect("127.0.0.1", port))}
for round in range(4):
    begin = time.monotonic()
    pid = os.fork()
    if pid == 0:
        child(ends[sys.argv[2]])
        sys.exit(0)
    status = os.waitpid(pid, 0)[1]
    assert status == 0, status
    assert time.monotonic() - begin < 1.5, "the child waited for threads that it does not have"
    assert box.Sys_getSerialNumber() == "SN000001"
print("the parent works")
"""


@pytest.mark.parametrize("end", ["exit", "_exit", "close", "drop", "disconnect", "again"])
def test_a_forked_child_leaves_the_connection_to_its_parent(peer, end):
    run = subprocess.run([sys.executable, "-W", "ignore", "-c", FORK, str(peer.port), end], capture_output=True, text=True,
                         timeout=60)
    assert run.returncode == 0 and "the parent works" in run.stdout, run.stdout + run.stderr


def test_a_forked_child_keeps_no_port_of_its_parent():
    code = """
import os, pyzvr
finder = pyzvr.DeviceFinder()
finder.client_udp.bind("127.0.0.1", 0)
port = finder.client_udp.socket.getsockname()[1]
(begun, begins), (ends, end) = os.pipe(), os.pipe()
if os.fork() == 0:
    os.close(end)
    os.write(begins, b"x")
    os.read(ends, 1)  # lives on
    os._exit(0)
os.read(begun, 1)
finder.client_udp.disconnect()
finder.client_udp.bind("127.0.0.1", port)
print("bound again")
"""
    run = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, timeout=60)
    assert "bound again" in run.stdout, run.stderr


# Names


# A name server of its own that never answers: a search for a name takes many seconds.
NAMES = """
import os, pyzvr, signal, socket, subprocess, sys, threading, time
signal.signal(signal.SIGINT, signal.default_int_handler)
subprocess.run(["ip", "link", "set", "lo", "up"], check=True)
for path, text in (("/etc/resolv.conf", "nameserver 127.0.0.1\\noptions timeout:30 attempts:3\\n"),
                   ("/etc/nsswitch.conf", "hosts: dns\\n")):
    own = "/tmp/" + os.path.basename(path) + str(os.getpid())
    open(own, "w").write(text)
    subprocess.run(["mount", "--bind", own, os.path.realpath(path)], check=True)
    os.unlink(own)
server = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
server.bind(("127.0.0.1", 53))
box = pyzvr.TarnDio()
if sys.argv[1] == "interrupt":
    def interrupt():
        server.recv(1000)  # the search has begun
        time.sleep(0.3)
        global sent
        sent = time.monotonic()
        os.kill(os.getpid(), signal.SIGINT)
    threading.Thread(target=interrupt).start()
    try:
        box.connect("device.invalid")
    except KeyboardInterrupt:
        print(time.monotonic() - sent < 1)
elif sys.argv[1] == "limit":
    begin = time.monotonic()
    try:
        box.connect("device.invalid")
    except pyzvr.NetworkConnectionError:
        print(4.5 < time.monotonic() - begin < 7)
else:
    begin = time.monotonic()
    for _ in range(3):
        try:
            pyzvr.UDPClient().sendBcstPacket([1, 2, 3])
        except OSError:
            pass
    server.settimeout(5)
    print(time.monotonic() - begin < 2 and len(server.recv(1000)) > 0)
"""


@pytest.mark.parametrize("what", ["interrupt", "limit", "broadcast"])
def test_a_search_for_a_name_that_gets_no_answer(what):
    if not can_make_networks():
        pytest.skip("network namespaces are not allowed here")
    begin = time.monotonic()
    run = subprocess.run(["unshare", "--net", "--mount", sys.executable, "-c", NAMES, what], capture_output=True, text=True,
                         timeout=60)
    assert run.stdout.split()[-1:] == ["True"], run.stdout + run.stderr
    assert run.returncode == 0 and time.monotonic() - begin < 20
