"""Products with axes behind a fake client, and what was sent to them."""

import pytest
from fake_client import FakeClient

import pyzvr


class Chip:
    """Answers each sub-frame: with the value that a test gives to its code, else with 0. A value is a status too."""

    def __init__(self):
        self.values = {}

    def __call__(self, data):
        value = self.values.get(f"{data[1]:02X}", 0)
        return data[:3] + value.to_bytes(4, "big", signed=value < 0)


def handle(model, monkeypatch=None):
    product = getattr(pyzvr, model)()
    product.client_cmd = FakeClient(product)
    product.chip = product.client_cmd.replies[pyzvr.MOTION] = Chip()
    return product


@pytest.fixture
def ratchet():
    with handle("Ratchet") as product:
        yield product


@pytest.fixture(params=["Lattice", "LatticeLite"])
def chassis(request):
    with handle(request.param) as product:
        yield product


@pytest.fixture
def pawl():
    with pyzvr.Pawl() as product:
        product.client_cmd = FakeClient(product)
        yield product


def take_frames(product):
    """What was sent since the last time: connectors, and per frame the code, the axis byte and the data."""
    sent, product.client_cmd.sent = product.client_cmd.sent, []
    assert all(command == pyzvr.MOTION and len(data) == 7 for command, data in sent)
    return [data[0] for _, data in sent], [
        f"{data[1]:02X} {data[2]} {int.from_bytes(data[3:], 'big', signed=True)}" for _, data in sent]


def frames_of(product):
    return ", ".join(take_frames(product)[1])


OUTPUT = "3F {0} 0, E3 {0} 24"  # pulse output and direction of an axis, with the default settings
WRONG = pyzvr.InputTypeNotCorrectError


def connectors_of(product):
    return take_frames(product)[0]


def registers(pawl, values=None, status=0, chip=0):
    """Lets reads of registers give these values, and writes this status."""
    values = values or {}
    pawl.client_cmd.replies[pyzvr.MOTION_READ_REG] = lambda data: (
        bytes([data[0], 0, chip]) + values.get(data[1], 0).to_bytes(4, "big"))
    pawl.client_cmd.replies[pyzvr.MOTION_WRITE_REG] = lambda data: data[:6] + bytes([status])


def sent_by(pawl):
    """Registers that were read, and pairs of those that were written."""
    sent, pawl.client_cmd.sent = pawl.client_cmd.sent, []
    assert all(data[0] == 0 and (command == pyzvr.MOTION_READ_REG or data[2] == 0) for command, data in sent)
    names = [(f"{data[1]:02X}", int.from_bytes(data[3:], "big")) for _, data in sent]
    return [name if command == pyzvr.MOTION_WRITE_REG else name[0] for (command, _), name in zip(sent, names)]
