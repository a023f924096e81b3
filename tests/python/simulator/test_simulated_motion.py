"""The simulated motion chips and the stepper drive over raw sockets: what goes over the wire, and that axes move."""

import math
import socket
import struct

import pytest
from motion_products import ALL_AXES, AXIS_0, AXIS_1, AXIS_2, AXIS_3, DRIVE_REFUSED, NO_AXIS, REFUSED, TWO_AXES, WR2
from motion_products import FORWARD_LIMIT, REVERSE_LIMIT
from simulators import running_simulator

import pyzvr

NOT_ENABLED, TOO_SHORT = 10, 80  # statuses of any command


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

    def run(self, code, axes=NO_AXIS, value=0):
        header = bytes([self.connector, code, axes])
        reply = self.exchange(pyzvr.MOTION, header, struct.pack(">i", value))
        assert len(reply) == 7 and reply[:3] == header
        return struct.unpack(">i", reply[3:])[0]

    def do(self, axes, **values):
        """Runs sub-commands, by their names with their values. None is refused."""
        assert [self.run(getattr(pyzvr, name), axes, value) for name, value in values.items()] == [0] * len(values)

    def settle(self):
        """Waits until nothing drives; the positions that were seen on the way."""
        seen = []
        while self.run(pyzvr.MOTION_E8_RR0) & ALL_AXES:
            seen.append(tuple(self.run(pyzvr.MOTION_30_LP, 1 << axis) for axis in range(4)))
        return seen


@pytest.fixture
def chip():
    with running_simulator("Ratchet", "--axis", "*:-300:-2000:2000:100") as simulator:
        yield Chip(simulator)


def test_every_code_is_answered_and_no_other(chip):
    for axis in range(4):
        chip.do(1 << axis, MOTION_06_TP=10 + axis, MOTION_08_CP=20, MOTION_02_AC=100000, MOTION_05_DV=100000)
    chip.do(NO_AXIS, MOTION_2A_IPM=TWO_AXES | AXIS_0 | AXIS_1 | AXIS_2)
    answered = 0
    for code in range(256):
        if code in (pyzvr.MOTION_2A_IPM, pyzvr.MOTION_FE_HDRST) or code < pyzvr.MOTION_20_MRM:
            continue
        reply = chip.run(code, AXIS_0)
        answered += reply != REFUSED
        chip.run(pyzvr.MOTION_57_DRVFBRK, ALL_AXES)
    assert answered + 32 == 199  # with those of values that there are, the mode word and the reset
    assert [code for code in range(pyzvr.MOTION_20_MRM) if chip.run(code, AXIS_0) == REFUSED] == [0x1D, 0x1E]
    chip.do(NO_AXIS, MOTION_2A_IPM=0, MOTION_FE_HDRST=0)


def test_what_is_not_there_is_refused(chip):
    assert chip.run(pyzvr.MOTION_57_DRVFBRK, 1 << 7) == chip.run(pyzvr.MOTION_05_DV, NO_AXIS, 1000) == REFUSED
    assert chip.run(pyzvr.MOTION_30_LP, NO_AXIS) == REFUSED
    chip.connector = 1
    assert chip.run(pyzvr.MOTION_1F_NOP) == NOT_ENABLED
    for payload in (b"", bytes([0, pyzvr.MOTION_05_DV]), bytes(6), bytes(8)):
        assert chip.exchange(pyzvr.MOTION, payload) == payload[:3].ljust(3, b"\0") + bytes([0, 0, 0, TOO_SHORT])


def test_values_and_registers_stand_at_their_bytes(chip):
    chip.do(AXIS_1, MOTION_05_DV=0x01020304)
    header = bytes([0, pyzvr.MOTION_45_DV, AXIS_1])
    assert chip.exchange(pyzvr.MOTION, header, bytes(4)) == header + b"\x01\x02\x03\x04"
    chip.do(AXIS_3, MOTION_E2_WR2=0xABCD)
    header = bytes([0, pyzvr.MOTION_3E_WR2, AXIS_3])
    assert chip.exchange(pyzvr.MOTION, header, bytes(4)) == header + b"\0\0\xab\xcd"


def test_a_move_has_the_shape_of_a_trapezoid(chip):
    chip.do(AXIS_2, MOTION_02_AC=20000, MOTION_03_DC=20000, MOTION_04_SV=0, MOTION_05_DV=2000, MOTION_06_TP=-1200)
    chip.do(AXIS_2, MOTION_50_DRVRL=0)
    assert chip.run(pyzvr.MOTION_E8_RR0) == AXIS_2
    speeds = []
    while chip.run(pyzvr.MOTION_E8_RR0):
        speeds.append(chip.run(pyzvr.MOTION_32_CV, AXIS_2))
    peak = speeds.index(max(speeds))
    assert speeds[:peak] == sorted(speeds[:peak]) and speeds.count(2000) > len(speeds) / 4
    assert chip.run(pyzvr.MOTION_30_LP, AXIS_2) == chip.run(pyzvr.MOTION_31_RP, AXIS_2) == -1200


def test_held_axes_start_together(chip):
    chip.do(ALL_AXES, MOTION_02_AC=50000, MOTION_03_DC=50000, MOTION_04_SV=0, MOTION_05_DV=3000, MOTION_06_TP=900)
    chip.do(ALL_AXES, MOTION_77_DHOLD=0)
    for axis in range(4):
        chip.do(1 << axis, MOTION_50_DRVRL=0)
    assert chip.run(pyzvr.MOTION_E8_RR0) == 0
    chip.do(AXIS_0 | AXIS_1 | AXIS_2, MOTION_78_DFREE=0)
    assert chip.run(pyzvr.MOTION_E8_RR0) == AXIS_0 | AXIS_1 | AXIS_2
    assert all(now[3] == 0 and now[0] <= now[1] <= now[2] for now in chip.settle())
    assert [chip.run(pyzvr.MOTION_30_LP, 1 << axis) for axis in range(4)] == [900, 900, 900, 0]


def test_a_limit_ends_a_drive_and_is_shown(chip):
    chip.do(AXIS_0, MOTION_02_AC=500000, MOTION_03_DC=500000, MOTION_05_DV=10000)
    chip.do(AXIS_0, MOTION_E2_WR2=WR2.HLML | WR2.HLME | WR2.HLMM, MOTION_53_DRVVM=0)
    chip.settle()
    assert chip.run(pyzvr.MOTION_30_LP, AXIS_0) == -2000
    assert chip.run(pyzvr.MOTION_EB_RR3, AXIS_0) & (FORWARD_LIMIT | REVERSE_LIMIT) == REVERSE_LIMIT


@pytest.mark.parametrize(
    "search, end", [(0b110111, -300), (0b1111011, -2000), (0b1100, -100)], ids=["home", "limit", "index"]
)
def test_a_search_ends_at_its_switch(chip, search, end):
    chip.do(AXIS_3, MOTION_02_AC=500000, MOTION_03_DC=500000, MOTION_05_DV=10000, MOTION_06_TP=50, MOTION_14_HV=2000)
    for offset in (0, 50):
        chip.do(AXIS_3, MOTION_23_H1M=search | (1 << 15 if offset else 0), MOTION_5A_HMSRC=0)
        chip.settle()
        assert chip.run(pyzvr.MOTION_30_LP, AXIS_3) == end + offset
        chip.do(AXIS_3, MOTION_06_TP=0, MOTION_54_DRVAB=0)
        chip.settle()
        chip.do(AXIS_3, MOTION_06_TP=50)
    chip.do(AXIS_3, MOTION_24_H2M=0b110, MOTION_5A_HMSRC=0)
    chip.settle()
    assert chip.run(pyzvr.MOTION_30_LP, AXIS_3) == chip.run(pyzvr.MOTION_31_RP, AXIS_3) == 0


def test_a_line_and_an_arc(chip):
    chip.do(AXIS_0 | AXIS_1, MOTION_02_AC=100000, MOTION_03_DC=100000, MOTION_04_SV=100, MOTION_05_DV=4000)
    chip.do(AXIS_0, MOTION_06_TP=1500)
    chip.do(AXIS_1, MOTION_06_TP=-600)
    chip.do(NO_AXIS, MOTION_2A_IPM=TWO_AXES | AXIS_0 | AXIS_1, MOTION_6D_DECEN=0, MOTION_61_LHK2=0)
    # Reads of two axes are two requests, between which they go on.
    seen = [now for now in chip.settle() if now[0] not in (0, 1500)]
    assert len(seen) > 10 and all(now[1] <= round(now[0] * -0.4) + 1 for now in seen)
    assert (chip.run(pyzvr.MOTION_30_LP, AXIS_0), chip.run(pyzvr.MOTION_30_LP, AXIS_1)) == (1500, -600)
    chip.do(AXIS_0, MOTION_09_LP=0, MOTION_08_CP=-400, MOTION_06_TP=-400)
    chip.do(AXIS_1, MOTION_09_LP=0, MOTION_08_CP=0, MOTION_06_TP=400)
    chip.do(NO_AXIS, MOTION_65_CHKCCW=0)
    assert all(abs(math.hypot(now[0] + 400, now[1]) - 400) < 20 for now in chip.settle())
    assert (chip.run(pyzvr.MOTION_30_LP, AXIS_0), chip.run(pyzvr.MOTION_30_LP, AXIS_1)) == (-400, 400)


def test_each_slot_in_motion_mode_has_a_chip():
    with running_simulator("Lattice") as simulator:
        chip = Chip(simulator)
        assert chip.run(pyzvr.MOTION_1F_NOP) == NOT_ENABLED
        for slot in range(4):
            assert chip.exchange(pyzvr.SET_SLOT_MODE, 2 * slot, 4)[1] == 0
        refused = []
        for chip.connector in range(5):
            refused.append(chip.run(pyzvr.MOTION_09_LP, AXIS_0, 100 + chip.connector))
        assert refused == [0, 0, NOT_ENABLED, 0, NOT_ENABLED]
        for chip.connector in (0, 1, 3):
            assert chip.run(pyzvr.MOTION_30_LP, AXIS_0) == 100 + chip.connector
        assert chip.exchange(pyzvr.SET_SLOT_MODE, 6, 0)[1] == 0 and chip.run(pyzvr.MOTION_30_LP, AXIS_0) == NOT_ENABLED
        assert chip.exchange(pyzvr.REBOOT, pyzvr.REBOOT)[0] == 0


class Drive(Wire):
    def read(self, register):
        reply = self.exchange(pyzvr.MOTION_READ_REG, 0, register)
        assert len(reply) == 7 and reply[0] == 0
        self.status = reply[2]
        return struct.unpack(">i", reply[3:])[0]

    def write(self, **values):
        """Writes registers, by their names. None is refused."""
        for name, value in values.items():
            reply = self.exchange(pyzvr.MOTION_WRITE_REG, 0, getattr(pyzvr, name), 0, struct.pack(">i", value))
            assert len(reply) == 7 and reply[6] == 0

    def check(self, **values):
        assert {name: self.read(getattr(pyzvr, name)) for name in values} == values

    def start(self, command, layout, *values):
        return self.exchange(command, 0, struct.pack(">" + layout, *values))[1]

    def state(self):
        return self.exchange(pyzvr.MOTION_GET_PROC_STATE, 0)[1]

    def settle(self):
        while self.state() == RUNS:
            pass
        return self.state(), self.read(pyzvr.PAWL_21_XACTUAL)

    def switches(self):
        return struct.unpack(">H", self.exchange(pyzvr.READ_AND_GET_DI, 1, 0, 7)[1:])[0]


RUNS, DONE, STOPPED, FAILED = 1, 2, 3, 4  # states of a process


@pytest.fixture
def drive():
    with running_simulator("Pawl", "--axis", "0:-300:-2000:2000:100") as simulator:
        yield Drive(simulator)


def test_the_drive_moves_by_its_own_commands(drive):
    assert drive.state() == 0
    fast = (20000, 500000, 500000)
    assert drive.start(pyzvr.MOTION_START_P_MOVE, "iIIIB", 1500, *fast, 0) == 0 and drive.settle() == (DONE, 1500)
    assert drive.start(pyzvr.MOTION_START_P_MOVE, "iIIIB", -600, *fast, 1) == 0 and drive.settle() == (DONE, 900)
    assert drive.read(pyzvr.PAWL_39_XENC) == 900
    assert drive.start(pyzvr.MOTION_START_V_MOVE, "IIIB", 1000, 500000, 500000, 1) == 0
    while drive.read(pyzvr.PAWL_22_VACTUAL) != -1000:
        pass
    assert drive.status & 0b111000 == 0b010000 and drive.read(pyzvr.PAWL_35_RAMPSTAT) >> 8 & 7 == 1
    assert drive.exchange(pyzvr.MOTION_STOP_PROC, 0)[1] == 0 and drive.state() == STOPPED
    while drive.read(pyzvr.PAWL_22_VACTUAL) != 0:
        pass
    assert drive.start(pyzvr.MOTION_START_SCAN_MOVE, "iiII", -50, 50, 5000, 1000000) == 0
    seen = set()
    while not ({-50, 50} <= seen and len(seen) > 5):
        seen.add(drive.read(pyzvr.PAWL_21_XACTUAL))
    assert drive.state() == RUNS and min(seen - {p for p in seen if p > 50}) == -50
    assert drive.exchange(pyzvr.MOTION_STOP_PROC, 0)[1] == 0


def test_the_drive_searches_its_switches(drive):
    fast = (10000, 1000, 500000)
    assert drive.switches() == 0
    assert drive.start(pyzvr.MOTION_START_FIND_HOME, "IIIBBiB", *fast, 1, 1, 0, 0) == 0
    assert drive.settle() == (DONE, -300) and drive.switches() == 4
    assert drive.start(pyzvr.MOTION_START_FIND_END, "BIIIiB", 0, *fast, -100, 0) == 0
    assert drive.settle() == (DONE, 1900)
    assert drive.start(pyzvr.MOTION_START_FIND_END, "BIIIiB", 0, *fast, 0, 1) == 0
    assert drive.settle() == (DONE, 0) and drive.read(pyzvr.PAWL_39_XENC) == 0 and drive.switches() == 1
    assert drive.start(pyzvr.MOTION_START_FIND_Z, "IIIBBiB", *fast, 1, 1, 7, 0) == 0
    assert drive.settle() == (DONE, -93)


def test_limits_of_the_drive_count_when_they_are_enabled(drive):
    velocity = ("IIIB", 20000, 1000000, 1000000, 0)
    drive.write(PAWL_34_SWMODE=0b10)
    assert drive.start(pyzvr.MOTION_START_V_MOVE, *velocity) == 0
    while drive.read(pyzvr.PAWL_21_XACTUAL) < 3000:
        pass
    drive.write(PAWL_34_SWMODE=0b11)
    assert drive.start(pyzvr.MOTION_START_P_MOVE, "iIIIB", 0, 20000, 1000000, 1000000, 0) == 0
    assert drive.settle() == (DONE, 0)
    assert drive.start(pyzvr.MOTION_START_V_MOVE, *velocity) == 0
    assert drive.settle() == (FAILED, 2000) and drive.status >> 6 == 1 and drive.switches() == 1


def test_registers_of_the_drive_move_it_too(drive):
    drive.check(PAWL_01_GSTAT=1, PAWL_00_GCONF=8)
    drive.write(PAWL_01_GSTAT=31, PAWL_00_GCONF=24)
    drive.check(PAWL_01_GSTAT=0, PAWL_00_GCONF=24)
    drive.write(PAWL_26_AMAX=500000, PAWL_28_DMAX=500000, PAWL_27_VMAX=20000, PAWL_20_RAMPMODE=0, PAWL_2D_XTARGET=-700)
    while drive.read(pyzvr.PAWL_35_RAMPSTAT) >> 9 & 3 != 3:
        pass
    assert drive.read(pyzvr.PAWL_21_XACTUAL) == -700 and drive.state() == 0
    drive.write(PAWL_20_RAMPMODE=3, PAWL_21_XACTUAL=40, PAWL_39_XENC=50)
    drive.check(PAWL_21_XACTUAL=40, PAWL_39_XENC=50)
    reply = drive.exchange(pyzvr.MOTION_GET_PARAM, 0)
    assert reply[:3] == bytes([0, 0, 88]) and struct.unpack(">II", reply[3:11]) == (24, 32) and len(reply) == 91
    assert drive.exchange(pyzvr.MOTION_RESET_FACTORY, 0)[1] == 0
    drive.check(PAWL_00_GCONF=8, PAWL_21_XACTUAL=0, PAWL_01_GSTAT=1)


def test_what_the_drive_cannot_do_is_refused(drive):
    assert drive.exchange(pyzvr.MOTION_STOP_PROC, 1) == bytes([1, DRIVE_REFUSED])
    assert drive.exchange(pyzvr.MOTION_WRITE_REG, 1, pyzvr.PAWL_00_GCONF, 0, bytes(4))[6] == DRIVE_REFUSED
    assert drive.exchange(pyzvr.MOTION_START_P_MOVE, 0, 0) == bytes([0, TOO_SHORT])
    move = ("IIIB", 1000, 1000, 1000, 0)
    assert drive.start(pyzvr.MOTION_START_V_MOVE, "IIIB", 0, 1000, 1000, 0) == DRIVE_REFUSED
    servo = (pyzvr.SET_AND_WRITE_DO, 2, b"\0\1\0")
    assert drive.exchange(*servo, 1)[0] == 2 and drive.start(pyzvr.MOTION_START_V_MOVE, *move) == DRIVE_REFUSED
    assert drive.exchange(*servo, 0)[0] == 2 and drive.start(pyzvr.MOTION_START_V_MOVE, *move) == 0
