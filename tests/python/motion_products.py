"""Products with axes behind a fake client, and what was sent to them, by the names of motion codes and registers."""

import enum
import re
from typing import NamedTuple

import pytest
from fake_client import FakeClient

import pyzvr

CODES = {value: name for name, value in vars(pyzvr).items() if re.match("MOTION_[0-9A-F]{2}_", name)}
REGISTERS = {value: name for name, value in vars(pyzvr).items() if re.match("PA[WL]{2}_[0-9A-F]{2}_", name)}
WRONG = pyzvr.InputTypeNotCorrectError
NO_AXIS, AXIS_0, AXIS_1, AXIS_2, AXIS_3, ALL_AXES = 0, 1, 2, 4, 8, 15  # masks of axes, which count from 0
REFUSED, DRIVE_REFUSED = 54, 55  # statuses of the firmware
ALL = 0xFFFF  # bits of a register
# Bits of the write registers from the lowest on, by the command that sets each alone.
WR2 = enum.IntFlag("WR2", "SP0L SP0E SP1L SP1E SP2L SP2E INPL INPE ALML ALME HLML HLME HLMM SLME SLMO SLMM")
WR3 = enum.IntFlag("WR3", "MANLD DSNDE SACC DPMD0 DPMD1 DPL DIRL DPINV PIMD0 PIMD1 PIL PIINV LMINV AVTRI TMMD")
ON_WR = {WR2: (pyzvr.MOTION_3E_WR2, pyzvr.MOTION_E2_WR2), WR3: (pyzvr.MOTION_3F_WR3, pyzvr.MOTION_E3_WR3)}
HOME, FORWARD_LIMIT, REVERSE_LIMIT = 1 << 1, 1 << 7, 1 << 8  # bits of MOTION_EB_RR3
# Bits of MOTION_2A_IPM, beside the mask of axes.
SWAPPED, FOUR_AXES, TWO_AXES, THREE_AXES, HELICAL = 1 << 4, 0, 1 << 6, 1 << 7, 1 << 8


class Frame(NamedTuple):
    """A sub-command, the mask of axes that it is for, and its value."""

    code: int
    axes: int
    value: int = 0

    def __repr__(self):
        return f"on({self.axes:#06b}, {CODES.get(self.code, self.code)}={self.value})"


def on(axes, **values):
    """Frames for a mask of axes: the names of sub-commands with their values."""
    return [Frame(getattr(pyzvr, name), axes, int(value)) for name, value in values.items()]


def rewrites(axes, register, *values):
    """Frames that read a register, WR2 or WR3, and write a value into it, for each of the values."""
    read, write = ON_WR[register]
    return [frame for value in values for frame in (Frame(read, axes), Frame(write, axes, int(value)))]


def outputs(*axes):
    """Frames that set pulse output and direction of each axis, with the default settings."""
    return [frame for mask in axes for frame in rewrites(mask, WR3, WR3.DPMD0 | WR3.DPMD1)]


class Chip:
    """Answers each sub-frame: with the value that a test gives to its code, else with 0. A value is a status too."""

    def __init__(self):
        self.values = {}

    def __call__(self, data):
        value = self.values.get(data[1], 0)
        return data[:3] + value.to_bytes(4, "big", signed=value < 0)


def handle(model):
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
    """What was sent since the last time: connectors, and frames."""
    sent, product.client_cmd.sent = product.client_cmd.sent, []
    assert all(command == pyzvr.MOTION and len(data) == 7 for command, data in sent)
    frames = [Frame(data[1], data[2], int.from_bytes(data[3:], "big", signed=True)) for _, data in sent]
    return [data[0] for _, data in sent], frames


def frames_of(product):
    return take_frames(product)[1]


def connectors_of(product):
    return take_frames(product)[0]


class Access(NamedTuple):
    """A read of a register of the drive, or a write of a value into it."""

    register: int
    written: int | None = None

    def __repr__(self):
        name = REGISTERS.get(self.register, self.register)
        return f"reads({name})" if self.written is None else f"writes({name}={self.written})"


def reads(*numbers):
    return [Access(number) for number in numbers]


def writes(**values):
    return [Access(getattr(pyzvr, name), value) for name, value in values.items()]


def rewritten(**values):
    """Each register is read before its value is written."""
    return [
        access for name, value in values.items() for access in reads(getattr(pyzvr, name)) + writes(**{name: value})
    ]


def registers(pawl, values=None, status=0, chip=0):
    """Lets reads of registers give these values, and writes this status."""
    values = values or {}
    pawl.client_cmd.replies[pyzvr.MOTION_READ_REG] = lambda data: (
        bytes([data[0], 0, chip]) + values.get(data[1], 0).to_bytes(4, "big")
    )
    pawl.client_cmd.replies[pyzvr.MOTION_WRITE_REG] = lambda data: data[:6] + bytes([status])


def sent_by(pawl):
    """Registers that were read and written since the last time."""
    sent, pawl.client_cmd.sent = pawl.client_cmd.sent, []
    assert all(data[0] == 0 and (command == pyzvr.MOTION_READ_REG or data[2] == 0) for command, data in sent)
    return [
        Access(data[1], int.from_bytes(data[3:], "big") if command == pyzvr.MOTION_WRITE_REG else None)
        for command, data in sent
    ]
