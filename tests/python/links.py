"""A product and a client on a peer."""

import contextlib

import pytest
from peer import Peer, answer_serial

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


def link_works(box):
    return box.Sys_getSerialNumber(timeout=2) == "SN000001"
