"""Fixtures for all tests; tests of the simulator also take its processes from here."""

import pytest
from fake_buses import bus_box
from fake_client import BenchDio
from fake_services import services_box
from forms import awaited, blocking
from links import box, client, peer
from logger_support import logger
from loops import make_loop
from motion_products import chassis, pawl, ratchet
from simulators import address_of, can_make_networks, connected, running_simulator, simulator_program

import pyzvr

__all__ = [
    "bus_box",
    "services_box",
    "box",
    "chassis",
    "client",
    "logger",
    "make_loop",
    "pawl",
    "peer",
    "ratchet",
    "address_of",
    "can_make_networks",
    "connected",
    "running_simulator",
    "simulator_program",
]


@pytest.fixture(params=[blocking, awaited])
def call(request):
    """Runs an operation in one form; each test with it runs in both."""
    return request.param


@pytest.fixture
def bench(monkeypatch):
    monkeypatch.setitem(pyzvr.LABEL_DICT, "BenchDio", "Bench-Dio")
    product = BenchDio()
    yield product
    product.close(verbose=False)
