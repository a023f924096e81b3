"""pyzvr.open: a handle of the right class from what a user knows of the device."""

import os

import pytest
import zvrkit.sim
from fake_client import fake_device
from peer import Peer
from simulators import connected

import pyzvr


@pytest.mark.parametrize("model", ["TarnDio", "HeronAnalog", "Pawl", "Lattice"])
def test_an_address_gives_a_handle_of_the_device_s_class(model):
    with zvrkit.sim.device(model) as place:
        host, *ports = place.address
        wifi = {"data_port": ports[0]} if len(ports) == 2 else {}
        with pyzvr.open(f"{host}:{ports[-1]}", verbose=False, **wifi) as box:
            assert type(box) is getattr(pyzvr, model)
            assert box.isConnected() and box.Sys_getSerialNumber() == place.said["serial"]
            assert not wifi or box.AI_open(0) == 0
        with pyzvr.open("localhost" if host == "127.0.0.1" else host, port=ports[-1], verbose=False, **wifi) as box:
            assert type(box) is getattr(pyzvr, model)


def test_a_line_is_a_drone():
    with zvrkit.sim.device("Drone") as place, pyzvr.open(*place.address, verbose=False) as drone:
        assert type(drone) is pyzvr.Drone and drone.isConnected()
    with pytest.raises(pyzvr.UARTConnectionError) as caught:
        pyzvr.open("/dev/no such line", verbose=False)
    assert isinstance(caught.value.__cause__, FileNotFoundError)


def test_what_tells_nothing_and_what_is_unknown_is_refused():
    strange = bytes(fake_packet(pyzvr.GET_DRIVER_INFO, b"Teapot_1.0"))
    peer = Peer(lambda connection, data: connection.sendall(strange))
    with pytest.raises(pyzvr.NetworkConnectionError, match="'Teapot'"):
        pyzvr.open(f"127.0.0.1:{peer.port}", verbose=False)
    peer.close()
    with pytest.raises(ConnectionError):
        pyzvr.open(f"127.0.0.1:{peer.port}", verbose=False)
    for where, error in (("", ValueError), (5, TypeError), (None, TypeError), (b"COM4", TypeError)):
        with pytest.raises(error, match="where"):
            pyzvr.open(where)
    with pytest.raises(ValueError, match="port"):
        pyzvr.open("127.0.0.1:7", port=8)


def fake_packet(command, data):
    with fake_device("TarnDio") as box:
        return box._preparePacket(command, data)


def test_nothing_of_the_question_is_left(capsys):
    """The handle that asks is closed, also where the device is not reached."""
    before = len(os.listdir("/proc/self/fd"))
    with connected("TarnDio") as box:
        place = "{}:{}".format(*box.client_cmd.socket.getpeername())
        for _ in range(20):
            with pyzvr.open(place, verbose=False):
                pass
    with pytest.raises(pyzvr.NetworkConnectionError):
        pyzvr.open(place, verbose=False)
    assert len(os.listdir("/proc/self/fd")) == before
    assert "Connected" not in capsys.readouterr().out
