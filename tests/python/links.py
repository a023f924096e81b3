"""A product and a client on a peer."""

import contextlib

import pytest
from peer import Peer, answer_serial, finish, reset

import pyzvr

REQUEST = [2, 0, 1, 122, 13, 10]
ENDS = [pytest.param(finish, id="orderly"), pytest.param(reset, id="reset")]


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


def link_works(box):
    return box.Sys_getSerialNumber(timeout=2) == "SN000001"


@pytest.fixture
def silent():
    """A device that never answers."""
    silent = Peer()
    yield silent
    silent.close()


@pytest.fixture
def waiting_box(silent):
    product = pyzvr.TarnDio()
    product.connect("127.0.0.1", silent.port, verbose=False)
    yield product
    with contextlib.suppress(pyzvr.NetworkConnectionLostError):
        product.close(verbose=False)
