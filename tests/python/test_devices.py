"""Network devices over real sockets: connecting, losing, closing, and what a peer can do to them."""

import asyncio
import contextlib
import gc
import os
import socket
import threading
import time
import weakref

import pytest
from peer import SERIAL_REPLY, Peer, answer_serial, finish, reset

import pyzvr


@pytest.fixture
def box():
    product = pyzvr.TarnDio()
    yield product
    with contextlib.suppress(pyzvr.NetworkConnectionLostError):
        product.close()


@pytest.fixture
def wifi(monkeypatch):
    class TestWifi(pyzvr.WifiDevice, pyzvr.SystemModule, pyzvr.SystemModule_async):
        pass

    monkeypatch.setitem(pyzvr.LABEL_DICT, "TestWifi", "Test-Wifi")
    with TestWifi() as product:
        yield product


def test_messages_and_repeated_calls(peer, capsys):
    product = pyzvr.TarnDio()
    name, place = "Tarn-Dio", "127.0.0.1"
    product.disconnect()
    product.connect(place, peer.port)
    product.connect("unreachable.invalid", 1)
    assert product.ip_addr == place
    assert product.connect_status_cmd is True
    product.close(verbose=False)
    product.close()
    assert capsys.readouterr().out.splitlines() == [
        f"Opened handle ({name})", f"Connected to {name} ({place})", f"Disconnected from {name} ({place})"]
    other = pyzvr.TarnDioLite()
    other.close()
    assert capsys.readouterr().out.splitlines() == ["Opened handle (Tarn-Dio-Lite)", "Closed handle (Tarn-Dio-Lite)"]
    assert product.killed
    assert product.client_cmd is None
    assert not product.recv_cmd_lock.locked()
    product.recv_cmd_thread.join(5)
    assert not product.recv_cmd_thread.is_alive()
    with pytest.raises(pyzvr.NetworkConnectionError):
        product.connect(place, peer.port)


def test_connect_fails_by_name_and_can_be_tried_again(box, peer):
    with socket.socket() as unused:
        unused.bind(("127.0.0.1", 0))
        with pytest.raises(pyzvr.NetworkConnectionError, match="Please check network status and IP address"):
            box.connect("127.0.0.1", unused.getsockname()[1])
    assert box.connect_status_cmd is False
    assert box.recv_cmd_lock.locked()
    assert box.ip_addr is None
    for port, error in ((70000, OverflowError), ("7", Exception)):
        with pytest.raises(error):
            box.connect("127.0.0.1", port)
    box.connect("127.0.0.1", peer.port)
    assert box.Sys_getSerialNumber() == "SN000001"


def test_reconnecting_keeps_the_stream_and_drops_stale_bytes_with_the_next_frame(box, peer):
    box.connect("127.0.0.1", peer.port)
    connection = peer.connection()
    connection.sendall(b"\x02\x00\x09\x7aHALF")
    assert box.Sys_getSerialNumber() == "SN000001"
    connection.sendall(b"\x02\x00\x09\x7aHALF")
    assert box.client_cmd.socket.getpeername() == ("127.0.0.1", peer.port)
    box.disconnect()
    assert box.client_cmd.socket == 0
    assert box.connect_status_cmd is False
    box.connect("127.0.0.1", peer.port)
    assert box.Sys_getSerialNumber() == "SN000001"


def test_garbage_half_frames_and_floods_leave_the_next_good_frame_readable(box, call):
    noise = os.urandom(200_000).replace(b"\x02", b"\x03") + b"\r\n" * 50 + b"\x02\x00\x05" + b"\x02" * 500

    def answer(connection, data):
        connection.sendall(noise)
        for byte in SERIAL_REPLY:
            connection.sendall(bytes([byte]))

    peer = Peer(answer)
    box.connect("127.0.0.1", peer.port)
    assert call(box, "Sys_getSerialNumber") == "SN000001"
    peer.close()


def test_a_frame_that_cannot_be_filed_ends_the_thread_with_a_report(box, peer, monkeypatch):
    reports = []
    monkeypatch.setattr(threading, "excepthook", reports.append)
    box.connect("127.0.0.1", peer.port)
    peer.connection().sendall(bytes(box._preparePacket(pyzvr.START_UART_READING)))
    box.recv_cmd_thread.join(5)
    assert not box.recv_cmd_thread.is_alive()
    assert reports[0].exc_type is IndexError
    assert reports[0].thread.name == "_recvCMDThread"
    with pytest.raises(pyzvr.ReceivePacketTimeoutError):
        box.Sys_getSerialNumber(timeout=0.05)


@pytest.mark.parametrize("end", [finish, reset])
def test_a_peer_that_goes_is_noticed_by_the_next_request_and_costs_nothing(box, peer, end, call):
    box.connect("127.0.0.1", peer.port)
    connection = peer.connection()
    assert box.Sys_getSerialNumber() == "SN000001"
    end(connection)
    for _ in range(2):
        with pytest.raises(pyzvr.NetworkConnectionLostError):
            call(box, "_echoPacketWithRetry", 122, [])
    with pytest.raises(pyzvr.NetworkConnectionLostError):
        box._getReplyFromPool(1, 5)
    before = time.process_time()
    time.sleep(0.5)
    assert time.process_time() - before < 0.25
    assert box.recv_cmd_thread.is_alive()


def test_a_reset_peer_makes_disconnect_fail_and_close_still_ends_everything(peer):
    product = pyzvr.TarnDio()
    product.connect("127.0.0.1", peer.port)
    reset(peer.connection())
    with pytest.raises(pyzvr.NetworkConnectionLostError):
        product.Sys_getSerialNumber(timeout=5)
    for _ in range(2):
        with pytest.raises(pyzvr.NetworkConnectionLostError):
            product.disconnect()
        assert product.connect_status_cmd is True
        assert product.recv_cmd_lock.locked()
    with pytest.raises(pyzvr.NetworkConnectionLostError):
        product.close()
    assert product.killed
    assert product.client_cmd is None
    product.recv_cmd_thread.join(5)
    assert not product.recv_cmd_thread.is_alive()


def test_a_peer_that_reads_nothing_does_not_hang_the_caller(box, call):
    peer = Peer()
    box.connect("127.0.0.1", peer.port)
    big = bytes(60_000)
    with pytest.raises((pyzvr.ReceivePacketTimeoutError, asyncio.TimeoutError, TimeoutError)):
        for _ in range(200):
            if call.__name__ == "blocking":
                box._sendPacketWithoutReply(50, big)
            else:
                asyncio.run(asyncio.wait_for(box._sendPacketWithoutReply_async(50, big), 0.2))
    peer.close()


def test_dropping_an_object_closes_its_socket_and_ends_its_thread(peer):
    product = pyzvr.TarnDio()
    product.connect("127.0.0.1", peer.port)
    connection, thread, gone = peer.connection(), product.recv_cmd_thread, weakref.ref(product)
    del product
    gc.collect()
    assert gone() is None
    thread.join(5)
    assert not thread.is_alive()
    connection.settimeout(5)
    with pytest.raises(OSError):
        while connection.recv(100):
            pass
        raise ConnectionAbortedError


def test_a_client_written_in_python_is_read_through_its_methods(monkeypatch):
    class Client:
        def __init__(self):
            self.packets = []
            self.reads = 0

        def connect(self, ip_addr, port):
            return True

        def disconnect(self):
            pass

        def sendPacket(self, int_list):
            self.packets.append((int_list[3], b"SN000001"))

        def recvAndSplitPacket(self, length):
            self.reads += 1
            assert length == pyzvr.TCP_PKT_LENGTH_MAX
            if self.reads == 1:
                raise ConnectionError("the first read fails")
            packets, self.packets = self.packets, []
            return packets

    product = pyzvr.TarnDio()
    product.client_cmd = client = Client()
    product.connect("anywhere", 1)
    assert product.Sys_getSerialNumber() == "SN000001"
    assert asyncio.run(product.Sys_getSerialNumber_async()) == "SN000001"
    product.close()
    assert client.reads > 1


def test_an_overridden_filing_step_is_called_by_the_receive_thread(peer):
    class Filed(pyzvr.TarnDio):
        def _putToDataPool(self, cmd, data):
            self.filed = (cmd, data)
            super()._putToDataPool(cmd, data)

    with Filed() as product:
        product.connect("127.0.0.1", peer.port)
        assert product.Sys_getSerialNumber() == "SN000001"
        assert product.filed == (122, b"SN000001")


def test_wifi_uses_two_connections(wifi, capsys):
    commands, data = Peer(answer_serial), Peer()
    wifi.connect("127.0.0.1", data.port, commands.port)
    assert capsys.readouterr().out.splitlines() == ["Connected to Test-Wifi (127.0.0.1)"]
    assert wifi.Sys_getSerialNumber() == "SN000001"
    fifo = wifi.data_pool_strm[(pyzvr.START_AI_STREAMING, 0, 1)]
    data.connection().sendall(bytes(wifi._preparePacket(pyzvr.START_AI_STREAMING, b"\x00\x01rows")))
    assert fifo.get(timeout=5) == b"rows"
    # A second connect is ignored by the command side and replaces the data connection.
    wifi.connect("127.0.0.1", data.port, commands.port, verbose=False)
    data.connection().sendall(bytes(wifi._preparePacket(pyzvr.START_AI_STREAMING, b"\x00\x01more")))
    assert fifo.get(timeout=5) == b"more"
    wifi.disconnect()
    assert (wifi.connect_status_cmd, wifi.connect_status_data) == (False, False)
    assert capsys.readouterr().out.splitlines() == ["Disconnected from Test-Wifi (127.0.0.1)"]
    commands.close()
    data.close()


def test_a_failed_data_side_leaves_the_command_side_and_recovers(wifi):
    commands, data = Peer(answer_serial), Peer()
    data.close()
    with pytest.raises(pyzvr.NetworkConnectionError):
        wifi.connect("127.0.0.1", data.port, commands.port)
    assert (wifi.connect_status_cmd, wifi.connect_status_data) == (True, False)
    assert wifi.Sys_getSerialNumber() == "SN000001"
    wifi.disconnect()
    data = Peer()
    wifi.connect("127.0.0.1", data.port, commands.port)
    assert (wifi.connect_status_cmd, wifi.connect_status_data) == (True, True)
    wifi.close()
    for thread in (wifi.recv_cmd_thread, wifi.recv_data_thread):
        thread.join(5)
        assert not thread.is_alive()
    commands.close()
    data.close()


def test_clients_by_themselves(peer):
    client = pyzvr.TCPClient()
    client.setTimeout(1)
    assert client.socket == 0
    with pytest.raises(OSError):
        client.sendPacket([1])
    assert client.connect("localhost", peer.port) is True
    client.setTimeout(0.05)
    with pytest.raises(TimeoutError):
        client.recvPacket(10)
    for values, error in (([256], ValueError), (["1"], TypeError), (5, TypeError)):
        with pytest.raises(error):
            client.sendPacket(values)
    client.setTimeout(None)
    client.sendPacket([2, 0, 1, 122, 13, 10])
    assert client.recvAndSplitPacket(100) == [(122, b"SN000001")]
    client.stream = b"\x02\x00\x00\x0d\x0a" + b"\x02\x00\x03\x20\x15\x01\r\n" + b"rest\r\n"
    assert client._splitPacket() == [(3338, b""), (8213, b"\x01")]
    assert (client.stream, client.last_index) == (b"rest\r\n", 5)
    peer.connection().close()
    client.disconnect()
    with pytest.raises(pyzvr.NetworkConnectionLostError):
        client.disconnect()


def test_a_taken_udp_port_fails_and_is_free_after_disconnect():
    first, second = pyzvr.UDPClient(), pyzvr.UDPClient()
    first.bind("127.0.0.1", 0)
    port = first.socket.getsockname()[1]
    with pytest.raises(pyzvr.NetworkConnectionError):
        second.bind("127.0.0.1", port)
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as sender:
        sender.sendto(SERIAL_REPLY, ("127.0.0.1", port))
    assert first.recvAndSplitPacket(512) == [(122, b"SN000001")]
    first.disconnect()
    second.bind("127.0.0.1", port)
    second.disconnect()


def test_with_and_async_with_close_a_product(peer):
    with pyzvr.TarnDio() as product:
        product.connect("127.0.0.1", peer.port)
    assert product.killed

    async def main():
        async with pyzvr.TarnDio() as product:
            product.connect("127.0.0.1", peer.port)
            assert await product.Sys_getSerialNumber_async() == "SN000001"
        return product.killed

    assert asyncio.run(main()) is True


def test_a_computing_thread_does_not_starve_requests(box, peer):
    box.connect("127.0.0.1", peer.port)
    stop = threading.Event()

    def compute():
        while not stop.is_set():
            sum(range(1000))

    thread = threading.Thread(target=compute)
    thread.start()
    begin = time.perf_counter()
    try:
        for _ in range(20):
            assert box.Sys_getSerialNumber() == "SN000001"
    finally:
        stop.set()
        thread.join()
    assert time.perf_counter() - begin < 20 * 3
