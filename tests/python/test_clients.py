"""Clients and sockets as Python objects: fields, steps and whole objects can be replaced."""

import asyncio
import gc
import os
import socket
import threading
import time
import weakref
from unittest import mock

import pytest
from links import REQUEST, link_works
from peer import SERIAL_REPLY

import pyzvr


def test_clients_take_attributes_and_patches(box):
    client = box.client_cmd
    client.note = ["anything"]
    assert client.note == ["anything"]
    assert "note" in vars(client)
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
        assert link_works(box)
        assert not called


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
    assert client.socket is ours
    assert link_works(box)
    client.socket = fake
    assert link_works(box)
    box.recv_cmd_lock.acquire()
    time.sleep(0.3)  # the thread leaves its last read after 0.05 s
    fake.answers = b""  # of a request that was repeated
    client.stream = b""
    client.sendPacket(REQUEST)
    assert client.recvPacket(4) == SERIAL_REPLY[:4]
    assert client.recvAndSplitPacket(100) == []
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
        assert isinstance(box.client_cmd.socket, pyzvr.Socket)
        assert link_works(box)


def test_errors_of_an_object_in_place_of_the_socket():
    client = pyzvr.NetworkClient()
    client.socket = fake = mock.Mock()
    fake.send.side_effect = BrokenPipeError(32, "gone")
    fake.recv.return_value = b""
    fake.shutdown.side_effect = OSError(107, "not connected")
    with pytest.raises(BrokenPipeError):
        client.sendPacket([1])
    assert client.recvPacket(7) == b""
    assert client.recvAndSplitPacket(7) == []
    assert fake.recv.call_args == mock.call(7)
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
    assert bare._splitPacket() == [(122, b"SN000001")]
    assert (bare.stream, bare.last_index) == (b"rest", 0)
    for action in (lambda: bare.recvPacket(1), lambda: bare.sendPacket([1]), lambda: bare.recvAndSplitPacket(5)):
        with pytest.raises(OSError):
            action()
    assert pyzvr.NetworkClient().socket == 0


def test_methods_of_the_socket(peer, client):
    ours = client.socket
    assert ours is client.socket
    assert (ours.family, ours.type) == (socket.AF_INET, socket.SOCK_STREAM)
    assert ours.gettimeout() is None
    assert ours.timeout is None
    ours.settimeout(0.01)
    assert ours.gettimeout() == 0.01
    with pytest.raises(TimeoutError):
        ours.recv(10)
    ours.settimeout(0)
    with pytest.raises(BlockingIOError):
        ours.recv(10)
    ours.settimeout(5)
    assert ours.send(bytes(REQUEST)) == 6
    assert ours.recv(4) + ours.recv(100) == SERIAL_REPLY
    ours.sendall(bytes(REQUEST) * 2)
    received = b""
    while len(received) < 2 * len(SERIAL_REPLY):
        received += ours.recv(2**40)
    assert received == SERIAL_REPLY * 2
    assert ours.recv(0) == b""
    assert ours.getsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY) == 1
    ours.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 0)
    assert ours.getsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 4) == bytes(4)
    assert ours.getpeername() == ("127.0.0.1", peer.port)
    assert ours.getsockname()[0] == "127.0.0.1"
    ours.shutdown(socket.SHUT_RDWR)
    assert ours.recv(10) == b""
    ours.close()
    ours.close()
    assert ours.fileno() == -1
    for action in (lambda: ours.recv(1), lambda: ours.send(b"x"), ours.getpeername, lambda: ours.shutdown(2)):
        with pytest.raises(OSError):
            action()
    for wrong, error in ((lambda: ours.settimeout(-1), ValueError), (lambda: ours.settimeout("x"), TypeError),
                           (lambda: ours.recv(-1), ValueError), (lambda: ours.recv(None), TypeError)):
        with pytest.raises(error):
            wrong()


def test_disconnect_closes_the_socket_whoever_holds_it_and_waits_for_nobody(box, peer):
    held, connection = box.client_cmd.socket, peer.connection()
    descriptor = held.fileno()
    assert os.stat(f"/proc/self/fd/{descriptor}")
    begin = time.thread_time()
    box.disconnect(verbose=False)
    assert time.thread_time() - begin < 0.05  # it used to spin for 75 ms
    assert held.fileno() == -1
    assert connection.recv(10) == b""
    line = pyzvr.UARTClient()
    assert (line.client, line.socket, line.read_timeout) == (0, 0, 0.05)


@pytest.mark.parametrize("kind", [
    "Client", "NetworkClient", "TCPClient", "UDPClient", "UARTClient", "USBClient", "Socket", "USBDeviceIdentity",
    "USBLibrary"
])
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


@pytest.mark.parametrize("action, name",
                         [(lambda client: client.connect(None, 7), "ip_addr"),
                          (lambda client: client.connect("127.0.0.1", "7"), "port"),
                          (lambda client: client.connect("127.0.0.1", 7.5), "port"),
                          (lambda client: client.setTimeout("x"), "timeout"),
                          (lambda client: client.recvPacket("1"), "length"),
                          (lambda client: client.recvAndSplitPacket(None), "length"),
                          (lambda client: pyzvr.UDPClient().bind(5, 6667), "ip_addr"),
                          (lambda client: pyzvr.UDPClient().bind("", None), "port"),
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
    assert client.recvPacket(0) == b""
    assert client.recvAndSplitPacket(0) == []


@pytest.mark.parametrize("connect", [
    lambda name: pyzvr.TarnDio().connect("127.0.0.1" + name, 1),
    lambda name: asyncio.run(pyzvr.TarnDio().connect_async("127.0.0.1" + name, 1)),
    lambda name: pyzvr.TCPClient().connect("localhost" + name, 1),
    lambda name: pyzvr.UDPClient().bind(name, 0),
    lambda name: pyzvr.UARTClient().connect("/dev/null" + name, 9600),
    lambda name: pyzvr.open("127.0.0.1" + name),
])
@pytest.mark.parametrize("ending", ["\0", "\0.example.org"], ids=["last", "within"])
def test_a_name_is_never_read_up_to_a_null_character_only(connect, ending):
    with pytest.raises(ValueError, match="null character"):
        connect(ending)
