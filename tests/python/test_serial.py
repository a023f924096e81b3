"""Devices on a serial line, over pseudo-terminals."""

import contextlib
import fcntl
import os
import struct
import threading
import time
import tty

import pytest
from simulators import address_of, running_simulator

import pyzvr

SERIAL_REPLY = bytes([2, 0, 12, 0x28, 0x00, 0]) + b"SN000001\0" + b"\r\n"


class Line:
    """A pseudo-terminal whose far end answers every request with a serial number."""

    def __init__(self):
        self.far, self.near = os.openpty()
        tty.setraw(self.near)
        self.port = os.ttyname(self.near)
        self.answering = threading.Event()
        self.answering.set()
        threading.Thread(target=self._serve, daemon=True).start()

    def _serve(self):
        with contextlib.suppress(OSError):
            while data := os.read(self.far, 4096):
                if self.answering.is_set():
                    os.write(self.far, SERIAL_REPLY * data.count(b"\r\n"))

    def hang_up(self):
        os.close(self.near)
        os.close(self.far)


@pytest.fixture
def line():
    line = Line()
    yield line
    with contextlib.suppress(OSError):
        line.hang_up()


def test_connection_messages_and_speed(line, capsys):
    drone = pyzvr.Drone()
    assert drone.port is None
    assert drone.baudrate is None
    assert drone.client_cmd.socket == 0
    drone.connect(line.port)
    drone.connect("elsewhere")
    assert (drone.port, drone.baudrate, drone.client_cmd.read_timeout) == (line.port, 91600, 0.05)
    speeds = struct.unpack("4I20B2I", fcntl.ioctl(line.near, 0x802C542A, bytes(44)))[-2:]  # TCGETS2
    assert speeds == (91600, 91600)
    assert drone.Drone_getSerialNumber() == "SN000001"
    drone.disconnect()
    drone.disconnect()
    drone.connect(line.port, 115200, verbose=False)
    assert drone.baudrate == 115200
    assert drone.Drone_getSerialNumber() == "SN000001"
    drone.close()
    drone.close()
    assert capsys.readouterr().out.splitlines() == [
        "Opened handle (Drone)", f"Connected to Drone ({line.port})", f"Disconnected from Drone ({line.port})",
        f"Disconnected from Drone ({line.port})", "Closed handle (Drone)"]
    assert drone.client_cmd is None
    assert drone.killed
    drone.recv_cmd_thread.join(5)
    assert not drone.recv_cmd_thread.is_alive()


@pytest.mark.parametrize("port", ["COM4", "/dev/ttyUSB99", "", os.devnull, __file__])
def test_what_is_no_serial_port(port):
    with pyzvr.Drone() as drone:
        with pytest.raises(pyzvr.UARTConnectionError, match="Failed to connect to drone. Please check COM port."):
            drone.connect(port)
        assert not drone.connect_status_cmd
        assert drone.recv_cmd_lock.locked()


def test_busy_port_and_impossible_speed(line):
    with pyzvr.Drone() as first, pyzvr.Drone() as second:
        first.connect(line.port, 115200)
        with pytest.raises(pyzvr.UARTConnectionError):
            second.connect(line.port, 115200)
        first.disconnect()
        with pytest.raises(pyzvr.UARTConnectionError):
            second.connect(line.port, -5)
        second.connect(line.port, 115200)
        assert second.Drone_getSerialNumber() == "SN000001"


def test_line_that_goes_silent_or_hangs_up(line):
    with pyzvr.Drone() as drone:
        drone.connect(line.port)
        line.answering.clear()
        begin = time.monotonic()
        with pytest.raises(pyzvr.ReceivePacketTimeoutError):
            drone.Drone_getSerialNumber(timeout=0.2)
        assert time.monotonic() - begin < 5
        line.hang_up()
        with pytest.raises(pyzvr.NetworkConnectionLostError):
            drone.Drone_getSerialNumber(timeout=5)
        drone.disconnect()
        again = Line()
        drone.connect(again.port)
        assert drone.Drone_getSerialNumber() == "SN000001"
        drone.disconnect()
        again.hang_up()


def test_reads_of_the_client_itself(line):
    client = pyzvr.UARTClient()
    with pytest.raises(OSError):
        client.recvPacket(64)
    assert client.connect(line.port, 9600) is True
    assert client.recvPacket(64) == b""
    client.sendPacket([2, 0, 2, 40, 0, 13, 10])
    frames = []
    while not frames:
        frames = client.recvAndSplitPacket(4)
    assert frames == [(0x2800, b"\0SN000001\0")]
    assert client.disconnect() is True
    assert client.socket == 0


def test_read_timeout_and_an_object_in_place_of_the_line(line):
    client = pyzvr.UARTClient()
    client.read_timeout = 0.5
    client.connect(line.port, 9600)
    answer = threading.Timer(0.1, os.write, (line.far, b"late"))
    answer.start()
    assert client.recvPacket(64) == b"late"
    client.read_timeout = 0.001
    assert client.read_timeout == 0.001
    assert client.recvPacket(64) == b""
    held = client.socket
    client.disconnect()
    assert held.fileno() == -1
    with pytest.raises(OSError):
        held.recv(1)

    class Port:
        written, closed = b"", 0

        def write(self, data):
            self.written += data

        def read(self, length):
            taken, self.written = self.written[:length], self.written[length:]
            return taken

        def close(self):
            self.closed += 1

    client.socket = port = Port()
    client.sendPacket(SERIAL_REPLY)
    assert client.recvAndSplitPacket(64) == [(0x2800, b"\0SN000001\0")]
    assert client.disconnect() is True
    assert client.socket == 0
    assert port.closed == 1


def test_disconnect_ends_a_long_read_of_another_thread(line):
    client = pyzvr.UARTClient()
    client.read_timeout = 60
    client.connect(line.port, 9600)
    for _ in range(5):
        reading = threading.Thread(target=read_quietly, args=(client,))
        reading.start()
        client.disconnect()
        reading.join(5)
        assert not reading.is_alive()
        client.connect(line.port, 9600)
    client.disconnect()


def read_quietly(client):
    with contextlib.suppress(OSError):
        client.recvPacket(64)


def test_a_forked_child_leaves_the_line_to_its_parent(line):
    with pyzvr.Drone() as drone:
        drone.connect(line.port)
        child = os.fork()
        if child == 0:
            told = []
            for action, error in ((drone.Drone_getSerialNumber, pyzvr.Error),
                                    (lambda: drone.client_cmd.recvPacket(1), pyzvr.UARTConnectionError)):
                try:
                    action()
                except error as refusal:
                    told.append("os.fork()" in str(refusal))
            drone.close()
            os._exit(told != [True, True])
        assert os.waitpid(child, 0)[1] == 0
        assert drone.Drone_getSerialNumber() == "SN000001"


@pytest.mark.parametrize("faults", [(), ("--split", "3"), ("--duplicate", "0.5"), ("--flood", "40")])
def test_simulated_drone_with_faults_on_its_line(faults):
    with running_simulator("Drone", *faults) as simulator, pyzvr.Drone() as drone:
        for _ in range(3):
            drone.connect(*address_of(simulator))
            assert [drone.Drone_getSerialNumber() for _ in range(20)] == ["SIM00001"] * 20
            drone.disconnect()
