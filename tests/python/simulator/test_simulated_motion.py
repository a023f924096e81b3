"""The simulated motion chips and the stepper drive over raw sockets: what goes over the wire, and that axes move."""

import math
import socket
import struct

import pytest
from simulators import running_simulator

import pyzvr

READ_LP, READ_RP, READ_CV, RR0, RR3 = 0x30, 0x31, 0x32, 0xE8, 0xEB
MOTION_REFUSED, DRIVE_REFUSED, NOT_ENABLED, TOO_SHORT = 54, 55, 10, 80


class Wire:
    """A bare connection: one request, one reply."""

    def __init__(self, simulator):
        self.socket = socket.create_connection((simulator["host"], simulator["command_port"]), 10)
        self.received = b""

    def exchange(self, command, *data):
        code = bytes([command]) if command < 256 else struct.pack(">H", command)
        payload = code + b"".join(part if isinstance(part, bytes) else bytes([part]) for part in data)
        self.socket.sendall(b"\x02" + struct.pack(">H", len(payload)) + payload + b"\r\n")
        while len(self.received) < 3 or len(self.received) < 5 + struct.unpack(">H", self.received[1:3])[0]:
            more = self.socket.recv(4096)
            assert more, "the simulator has hung up"
            self.received += more
        length = struct.unpack(">H", self.received[1:3])[0]
        frame, self.received = self.received[: 5 + length], self.received[5 + length :]
        assert frame[:1] == b"\x02" and frame[3 : 3 + len(code)] == code and frame[-2:] == b"\r\n"
        return frame[3 + len(code) : -2]


class Chip(Wire):
    connector = 0

    def run(self, code, mask=0, value=0):
        header = bytes([self.connector, code, mask])
        reply = self.exchange(pyzvr.MOTION, header, struct.pack(">i", value))
        assert len(reply) == 7 and reply[:3] == header
        return struct.unpack(">i", reply[3:])[0]

    def set(self, mask, **values):
        codes = {"accel": 2, "decel": 3, "initial": 4, "speed": 5, "target": 6, "centre": 8}
        assert [self.run(codes[name], mask, value) for name, value in values.items()] == [0] * len(values)

    def settle(self):
        """Waits until nothing drives; the positions that were seen on the way."""
        seen = []
        while self.run(RR0) & 15:
            seen.append(tuple(self.run(READ_LP, 1 << axis) for axis in range(4)))
        return seen


@pytest.fixture
def chip():
    with running_simulator("Ratchet", "--axis", "*:-300:-2000:2000:100") as simulator:
        yield Chip(simulator)


def test_every_code_is_answered_and_no_other(chip):
    for axis in range(4):
        chip.set(1 << axis, target=10 + axis, centre=20, accel=100000, speed=100000)
    assert chip.run(0x2A, 0, 0b1000111) == 0
    answered = 0
    for code in range(256):
        if code in (0x2A, 0xFE) or code < 0x20:
            continue
        reply = chip.run(code, 1)
        answered += reply != MOTION_REFUSED
        chip.run(0x57, 15)
    assert answered + 32 == 199  # with those below 0x20 that there are, the mode word and the reset
    assert [code for code in range(32) if chip.run(code, 1) == MOTION_REFUSED] == [0x1D, 0x1E]
    assert chip.run(0x2A) == chip.run(0xFE) == 0


def test_what_is_not_there_is_refused(chip):
    assert chip.run(0x57, 128) == chip.run(5, 0, 1000) == chip.run(READ_LP) == MOTION_REFUSED
    chip.connector = 1
    assert chip.run(0x1F) == NOT_ENABLED
    for payload in (b"", b"\x00\x05", bytes(6), bytes(8)):
        assert chip.exchange(pyzvr.MOTION, payload) == payload[:3].ljust(3, b"\0") + bytes([0, 0, 0, TOO_SHORT])


def test_values_and_registers_stand_at_their_bytes(chip):
    chip.set(2, speed=0x01020304)
    header = bytes([0, 0x45, 2])
    assert chip.exchange(pyzvr.MOTION, header, bytes(4)) == header + b"\x01\x02\x03\x04"
    assert chip.run(0xE2, 8, 0xABCD) == 0
    header = bytes([0, 0x3E, 8])
    assert chip.exchange(pyzvr.MOTION, header, bytes(4)) == header + b"\0\0\xab\xcd"


def test_a_move_has_the_shape_of_a_trapezoid(chip):
    chip.set(4, accel=20000, decel=20000, initial=0, speed=2000, target=-1200)
    assert chip.run(0x50, 4) == 0 and chip.run(RR0) == 4
    speeds = []
    while chip.run(RR0):
        speeds.append(chip.run(READ_CV, 4))
    peak = speeds.index(max(speeds))
    assert speeds[:peak] == sorted(speeds[:peak]) and speeds.count(2000) > len(speeds) / 4
    assert chip.run(READ_LP, 4) == chip.run(READ_RP, 4) == -1200


def test_held_axes_start_together(chip):
    chip.set(15, accel=50000, decel=50000, initial=0, speed=3000, target=900)
    assert chip.run(0x77, 15) == 0
    for axis in range(4):
        assert chip.run(0x50, 1 << axis) == 0
    assert chip.run(RR0) == 0 and chip.run(0x78, 7) == 0 and chip.run(RR0) == 7
    assert all(now[3] == 0 and now[0] <= now[1] <= now[2] for now in chip.settle())
    assert [chip.run(READ_LP, 1 << axis) for axis in range(4)] == [900, 900, 900, 0]


def test_a_limit_ends_a_drive_and_is_shown(chip):
    chip.set(1, accel=500000, decel=500000, speed=10000)
    assert chip.run(0xE2, 1, 1 << 10 | 1 << 11 | 1 << 12) == 0 and chip.run(0x53, 1) == 0
    chip.settle()
    assert chip.run(READ_LP, 1) == -2000 and chip.run(RR3, 1) & 0x180 == 0x100


@pytest.mark.parametrize("search, end", [(0b110111, -300), (0b1111011, -2000), (0b1100, -100)])
def test_a_search_ends_at_its_switch(chip, search, end):
    chip.set(8, accel=500000, decel=500000, speed=10000, target=50)
    assert chip.run(0x14, 8, 2000) == 0
    for offset in (0, 50):
        assert chip.run(0x23, 8, search | (1 << 15 if offset else 0)) == 0 and chip.run(0x5A, 8) == 0
        chip.settle()
        assert chip.run(READ_LP, 8) == end + offset
        chip.set(8, target=0)
        assert chip.run(0x54, 8) == 0
        chip.settle()
        chip.set(8, target=50)
    assert chip.run(0x24, 8, 6) == 0 and chip.run(0x5A, 8) == 0
    chip.settle()
    assert chip.run(READ_LP, 8) == chip.run(READ_RP, 8) == 0


def test_a_line_and_an_arc(chip):
    chip.set(3, accel=100000, decel=100000, initial=100, speed=4000)
    chip.set(1, target=1500)
    chip.set(2, target=-600)
    assert chip.run(0x2A, 0, 0b1000011) == chip.run(0x6D) == chip.run(0x61) == 0
    # Reads of two axes are two requests, between which they go on.
    seen = [now for now in chip.settle() if now[0] not in (0, 1500)]
    assert len(seen) > 10 and all(now[1] <= round(now[0] * -0.4) + 1 for now in seen)
    assert (chip.run(READ_LP, 1), chip.run(READ_LP, 2)) == (1500, -600)
    for axis in (1, 2):
        assert chip.run(9, axis) == 0
    chip.set(1, centre=-400, target=-400)
    chip.set(2, centre=0, target=400)
    assert chip.run(0x65) == 0
    assert all(abs(math.hypot(now[0] + 400, now[1]) - 400) < 20 for now in chip.settle())
    assert (chip.run(READ_LP, 1), chip.run(READ_LP, 2)) == (-400, 400)


def test_each_slot_in_motion_mode_has_a_chip():
    with running_simulator("Lattice") as simulator:
        chip = Chip(simulator)
        assert chip.run(0x1F) == NOT_ENABLED
        for slot in range(4):
            assert chip.exchange(pyzvr.SET_SLOT_MODE, 2 * slot, 4)[1] == 0
        refused = []
        for chip.connector in range(5):
            refused.append(chip.run(9, 1, 100 + chip.connector))
        assert refused == [0, 0, NOT_ENABLED, 0, NOT_ENABLED]
        for chip.connector in (0, 1, 3):
            assert chip.run(READ_LP, 1) == 100 + chip.connector
        assert chip.exchange(pyzvr.SET_SLOT_MODE, 6, 0)[1] == 0 and chip.run(READ_LP, 1) == NOT_ENABLED
        assert chip.exchange(pyzvr.REBOOT, pyzvr.REBOOT)[0] == 0


class Drive(Wire):
    def read(self, register):
        reply = self.exchange(pyzvr.MOTION_READ_REG, 0, register)
        assert len(reply) == 7 and reply[0] == 0
        self.status = reply[2]
        return struct.unpack(">i", reply[3:])[0]

    def write(self, register, value):
        reply = self.exchange(pyzvr.MOTION_WRITE_REG, 0, register, 0, struct.pack(">i", value))
        assert len(reply) == 7
        return reply[6]

    def start(self, command, layout, *values):
        return self.exchange(command, 0, struct.pack(">" + layout, *values))[1]

    def state(self):
        return self.exchange(pyzvr.MOTION_GET_PROC_STATE, 0)[1]

    def settle(self):
        while self.state() == 1:
            pass
        return self.state(), self.read(XACTUAL)

    def switches(self):
        return struct.unpack(">H", self.exchange(pyzvr.READ_AND_GET_DI, 1, 0, 7)[1:])[0]


GCONF, GSTAT, RAMPMODE, XACTUAL, VACTUAL, AMAX, VMAX, DMAX, XTARGET, SWMODE, RAMPSTAT, XENC = (
    0, 1, 0x20, 0x21, 0x22, 0x26, 0x27, 0x28, 0x2D, 0x34, 0x35, 0x39)  # fmt: skip
DONE, STOPPED, FAILED = 2, 3, 4


@pytest.fixture
def drive():
    with running_simulator("Pawl", "--axis", "0:-300:-2000:2000:100") as simulator:
        yield Drive(simulator)


def test_the_drive_moves_by_its_own_commands(drive):
    assert drive.state() == 0
    fast = (20000, 500000, 500000)
    assert drive.start(pyzvr.MOTION_START_P_MOVE, "iIIIB", 1500, *fast, 0) == 0 and drive.settle() == (DONE, 1500)
    assert drive.start(pyzvr.MOTION_START_P_MOVE, "iIIIB", -600, *fast, 1) == 0 and drive.settle() == (DONE, 900)
    assert drive.read(XENC) == 900
    assert drive.start(pyzvr.MOTION_START_V_MOVE, "IIIB", 1000, 500000, 500000, 1) == 0
    while drive.read(VACTUAL) != -1000:
        pass
    assert drive.status & 0b111000 == 0b010000 and drive.read(RAMPSTAT) >> 8 & 7 == 1
    assert drive.exchange(pyzvr.MOTION_STOP_PROC, 0)[1] == 0 and drive.state() == STOPPED
    while drive.read(VACTUAL) != 0:
        pass
    assert drive.start(pyzvr.MOTION_START_SCAN_MOVE, "iiII", -50, 50, 5000, 1000000) == 0
    seen = set()
    while not ({-50, 50} <= seen and len(seen) > 5):
        seen.add(drive.read(XACTUAL))
    assert drive.state() == 1 and min(seen - {p for p in seen if p > 50}) == -50
    assert drive.exchange(pyzvr.MOTION_STOP_PROC, 0)[1] == 0


def test_the_drive_searches_its_switches(drive):
    fast = (10000, 1000, 500000)
    assert drive.switches() == 0
    assert drive.start(pyzvr.MOTION_START_FIND_HOME, "IIIBBiB", *fast, 1, 1, 0, 0) == 0
    assert drive.settle() == (DONE, -300) and drive.switches() == 4
    assert drive.start(pyzvr.MOTION_START_FIND_END, "BIIIiB", 0, *fast, -100, 0) == 0
    assert drive.settle() == (DONE, 1900)
    assert drive.start(pyzvr.MOTION_START_FIND_END, "BIIIiB", 0, *fast, 0, 1) == 0
    assert drive.settle() == (DONE, 0) and drive.read(XENC) == 0 and drive.switches() == 1
    assert drive.start(pyzvr.MOTION_START_FIND_Z, "IIIBBiB", *fast, 1, 1, 7, 0) == 0
    assert drive.settle() == (DONE, -93)


def test_limits_of_the_drive_count_when_they_are_enabled(drive):
    velocity = ("IIIB", 20000, 1000000, 1000000, 0)
    assert drive.write(SWMODE, 0b10) == 0 and drive.start(pyzvr.MOTION_START_V_MOVE, *velocity) == 0
    while drive.read(XACTUAL) < 3000:
        pass
    assert drive.write(SWMODE, 0b11) == 0
    assert drive.start(pyzvr.MOTION_START_P_MOVE, "iIIIB", 0, 20000, 1000000, 1000000, 0) == 0
    assert drive.settle() == (DONE, 0)
    assert drive.start(pyzvr.MOTION_START_V_MOVE, *velocity) == 0
    assert drive.settle() == (FAILED, 2000) and drive.status >> 6 == 1 and drive.switches() == 1


def test_registers_of_the_drive_move_it_too(drive):
    assert drive.read(GSTAT) == 1 and drive.write(GSTAT, 31) == 0 and drive.read(GSTAT) == 0
    assert drive.read(GCONF) == 8 and drive.write(GCONF, 24) == 0 and drive.read(GCONF) == 24
    assert [drive.write(register, value) for register, value in (
        (AMAX, 500000), (DMAX, 500000), (VMAX, 20000), (RAMPMODE, 0), (XTARGET, -700))] == [0] * 5  # fmt: skip
    while drive.read(RAMPSTAT) >> 9 & 3 != 3:
        pass
    assert drive.read(XACTUAL) == -700 and drive.state() == 0
    assert drive.write(RAMPMODE, 3) == drive.write(XACTUAL, 40) == drive.write(XENC, 50) == 0
    assert (drive.read(XACTUAL), drive.read(XENC)) == (40, 50)
    reply = drive.exchange(pyzvr.MOTION_GET_PARAM, 0)
    assert reply[:3] == bytes([0, 0, 88]) and struct.unpack(">II", reply[3:11]) == (24, 32) and len(reply) == 91
    assert drive.exchange(pyzvr.MOTION_RESET_FACTORY, 0)[1] == 0
    assert (drive.read(GCONF), drive.read(XACTUAL), drive.read(GSTAT)) == (8, 0, 1)


def test_what_the_drive_cannot_do_is_refused(drive):
    assert drive.exchange(pyzvr.MOTION_STOP_PROC, 1) == bytes([1, DRIVE_REFUSED])
    assert drive.exchange(pyzvr.MOTION_WRITE_REG, 1, 0, 0, bytes(4))[6] == DRIVE_REFUSED
    assert drive.exchange(pyzvr.MOTION_START_P_MOVE, 0, 0) == bytes([0, TOO_SHORT])
    move = ("IIIB", 1000, 1000, 1000, 0)
    assert drive.start(pyzvr.MOTION_START_V_MOVE, "IIIB", 0, 1000, 1000, 0) == DRIVE_REFUSED
    servo = (pyzvr.SET_AND_WRITE_DO, 2, b"\0\1\0")
    assert drive.exchange(*servo, 1)[0] == 2 and drive.start(pyzvr.MOTION_START_V_MOVE, *move) == DRIVE_REFUSED
    assert drive.exchange(*servo, 0)[0] == 2 and drive.start(pyzvr.MOTION_START_V_MOVE, *move) == 0
