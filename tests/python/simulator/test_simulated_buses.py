"""The simulated serial buses by raw frames over TCP, without the library between a test and the device."""

import contextlib
import socket
import struct
import subprocess
from collections import deque

import pytest
from simulators import running_simulator, simulator_program

import pyzvr

DIGITAL, PARSER = 50, 80
UART, I2C, SPI, CAN = (4, 23), (5, 21), (6, 22), (7, 57)  # pin mode and status of refusals


class Wire:
    """A client that keeps what is streamed apart from the replies."""

    def __init__(self, simulator):
        self.stream = socket.create_connection((simulator["host"], simulator["command_port"]), 10).makefile("rwb", 0)
        self.received = b""
        self.unsolicited = deque()

    def send(self, command, *data):
        body = bytes([command, *data]) if command < 256 else struct.pack(">H", command) + bytes(data)
        self.stream.write(b"\2" + struct.pack(">H", len(body)) + body + b"\r\n")

    def frame(self):
        while len(self.received) < 3 or len(self.received) < 5 + int.from_bytes(self.received[1:3], "big"):
            chunk = self.stream.read(1 << 16)
            assert chunk, "the simulator has gone"
            self.received += chunk
        end = 5 + int.from_bytes(self.received[1:3], "big")
        frame, self.received = self.received[:end], self.received[end:]
        assert frame[0] == 2 and frame[-2:] == b"\r\n"
        return frame[3:-2]

    def ask(self, command, *data):
        self.send(command, *data)
        wide = struct.pack(">H", command) if command == pyzvr.OPEN_CAN or command > 255 else bytes([command])
        while not (frame := self.frame()).startswith(wide):
            assert frame[0] in (pyzvr.START_CAN, pyzvr.START_UART_READING)
            self.unsolicited.append(frame)
        return list(frame[len(wide):])

    def status(self, command, port, *data):
        answer = self.ask(command, port, *data)
        assert answer[0] == port and len(answer) == 2
        return answer[1]

    def modes(self, port):
        _, count, *pairs = self.ask(pyzvr.GET_PIN_MODE_OF_SLOT, port)
        return [mode for pair in pairs for mode in (pair & 15, pair >> 4)][:count]

    def streamed(self, command, port):
        """What is in the next frame of a stream."""
        frame = self.unsolicited.popleft() if self.unsolicited else self.frame()
        assert frame[:2] == bytes([command, port])
        return frame[2], frame[3:]

    def records(self, count):
        found = []
        while len(found) < count:
            number, data = self.streamed(pyzvr.START_CAN, 1)
            assert len(data) == 12 * number > 0
            found += struct.iter_unpack(">I8s", data)
        return found

    def heard(self, port, count):
        data = b""
        while len(data) < count:
            number, more = self.streamed(pyzvr.START_UART_READING, port)
            assert number == len(more) > 0
            data += more
        return data

    def i2c(self, address, *data):
        return self.status(pyzvr.WRITE_I2C, 1, address, len(data), *data)

    def spi(self, *data, port=2):
        answer = self.ask(pyzvr.READ_AND_WRITE_SPI, port, len(data), *data)
        assert answer[:2] == [port, 0]
        return answer[2:]

    def can(self, word, data=bytes(8)):
        return self.status(pyzvr.WRITE_CAN, 1, 0, *struct.pack(">I", word), *data)

    def can_values(self, command, shape):
        return struct.unpack(shape, bytes(self.ask(command, 1)[1:]))


@contextlib.contextmanager
def wired(model, *options):
    with running_simulator(model, "--tcp", *options) as simulator:
        wire = Wire(simulator)
        with wire.stream:
            yield wire


@pytest.fixture
def wire():
    with wired("SableCan") as wire:
        yield wire


def four(number):
    return struct.pack(">I", number)


def standard(identifier):
    return identifier << 21


def extended(identifier):
    return (identifier & 0x1FFC0000) << 3 | 1 << 19 | identifier & 0x3FFFF


REMOTE = 1 << 20

PORTS = [(pyzvr.OPEN_UART, pyzvr.CLOSE_UART, 1, *UART), (pyzvr.OPEN_UART, pyzvr.CLOSE_UART, 2, *UART),
         (pyzvr.OPEN_I2C, pyzvr.CLOSE_I2C, 1, *I2C), (pyzvr.OPEN_I2C, pyzvr.CLOSE_I2C, 2, *I2C),
         (pyzvr.OPEN_SPI, pyzvr.CLOSE_SPI, 2, *SPI), (pyzvr.OPEN_CAN, pyzvr.CLOSE_CAN, 1, *CAN)]


def all_modes(wire):
    return [(port, pin, mode) for port in range(4) for pin, mode in enumerate(wire.modes(port))]


def test_open_ports_have_lines_of_their_own_until_they_are_closed(wire):
    idle = all_modes(wire)
    lines = {}
    for open_, _, port, mode, refusal in PORTS:
        before = all_modes(wire)
        assert wire.status(open_, port) == 0 and wire.status(open_, port) == refusal
        changed = [(new, old) for new, old in zip(all_modes(wire), before, strict=True) if new != old]
        assert all(new[2] == mode and old[2] == 1 for new, old in changed)  # idle before: nobody else's
        lines[open_, port] = [new[:2] for new, _ in changed]
    assert [len(each) for each in lines.values()] == [2, 2, 2, 2, 4, 2]
    for _, close, port, _, refusal in PORTS:
        assert wire.status(close, port) == 0 and wire.status(close, port) == refusal
    assert all_modes(wire) == idle


def test_lines_of_an_open_bus_are_not_digital(wire):
    configure = (pyzvr.SET_DIO_CURRENT, 0)
    everything, released = [255] * 6, [255, 255, 0, 0, 0, 0]
    assert wire.status(*configure, *everything, 0, 0) == 0 and wire.modes(0) == [3] * 8
    assert wire.status(pyzvr.OPEN_UART, 2) == 0 and wire.modes(0) == [3, 3, 4, 4, 3, 3, 3, 3]
    written = wire.ask(pyzvr.SET_AND_WRITE_DO, 0, 255, 255, 0, 255)
    assert written == [0, 0, 0xF3]
    assert wire.status(*configure, 0, 0b100, 0, 0b100, 0, 0, 0, 0) == DIGITAL  # to be an input
    assert wire.status(*configure, 0, 0b100, 0, 0, 0, 0, 0, 0) == DIGITAL  # to be released
    assert wire.status(*configure, *everything, 0, 0) == DIGITAL
    assert wire.status(*configure, *released, 0, 0) == 0 and wire.modes(0) == [1, 1, 4, 4, 1, 1, 1, 1]
    assert wire.status(pyzvr.CLOSE_UART, 2) == 0 and wire.modes(0) == [1] * 8
    assert wire.status(*configure, *everything, 0, 0) == 0
    assert wire.status(pyzvr.OPEN_I2C, 1) == 0
    assert wire.ask(pyzvr.REBOOT, pyzvr.REBOOT) == [0] and wire.modes(0) == [1] * 8
    assert wire.status(pyzvr.OPEN_I2C, 1) == 0


def test_which_ports_a_model_has():
    with wired("SableDio") as wire:
        assert wire.status(pyzvr.OPEN_SPI, 1) == wire.status(pyzvr.OPEN_SPI, 2) == 0
        assert wire.modes(2)[:4] == wire.modes(1)[:4] == [6] * 4
        assert wire.spi(1, 2, 3, port=1) == [1, 2, 3] and wire.ask(pyzvr.READ_SPI, 1, 2) == [1, 0, 0, 0]
    with wired("SableMixed") as wire:
        assert wire.status(pyzvr.OPEN_I2C, 2) == wire.status(pyzvr.OPEN_UART, 1) == 0
        for absent in (pyzvr.OPEN_SPI, pyzvr.OPEN_CAN):
            wire.send(absent, 1)
        assert wire.modes(3)[:3] == [1, 1, 0]  # the next answer is that of the next request


@pytest.mark.parametrize("requests", [
    [(pyzvr.WRITE_UART, 1, 65), (pyzvr.SET_UART_BAUD_RATE, *four(9600)), (pyzvr.RESET_UART,),
     (pyzvr.STOP_UART_READING,), (pyzvr.SET_UART_PARITY, 1), (23, pyzvr.OPEN_UART, 1)],
    [(pyzvr.WRITE_I2C, 80, 1, 0), (pyzvr.READ_I2C, 80, 2), (pyzvr.SET_I2C_FREQUENCY, *four(100000)), (pyzvr.RESET_I2C,),
     (pyzvr.SET_I2C_ADDR_SIZE, 1), (21, pyzvr.OPEN_I2C, 1)],
    [(pyzvr.WRITE_SPI, 1, 6), (pyzvr.READ_SPI, 1), (pyzvr.READ_AND_WRITE_SPI, 1, 0), (pyzvr.SET_SPI_CPOL, 1),
     (pyzvr.SET_SPI_PRESCALER, 0, 2), (pyzvr.RESET_SPI,), (22, pyzvr.OPEN_SPI, 2)],
    [(pyzvr.WRITE_CAN, *bytes(13)), (pyzvr.STOP_CAN,), (57, pyzvr.OPEN_CAN, 1)],
])
def test_closed_and_missing_ports_refuse(wire, requests):
    *requests, (refusal, open_, port) = requests
    for command, *data in requests:
        for number in (port, 3):
            assert wire.status(command, number, *data) == refusal
    assert wire.status(open_, 3) == refusal and wire.status(open_, port) == 0
    for command, *data in requests:
        if data:
            assert wire.ask(command, port, *data[:-1]) == [port, PARSER]


def test_settings_that_cannot_be_are_refused(wire):
    for open_, _, port, *_ in PORTS:
        assert wire.status(open_, port) == 0
    for command, port, refusal, good, bad in [
        (pyzvr.SET_UART_BAUD_RATE, 1, 23, [four(1), four(400000)], [four(0), four(400001)]),
        (pyzvr.SET_UART_DATA_SIZE, 1, 23, [[0], [1]], [[2]]),
        (pyzvr.SET_UART_PARITY, 1, 23, [[3]], [[4]]),
        (pyzvr.SET_UART_NUM_STOP_BITS, 1, 23, [[3]], [[4]]),
        (pyzvr.SET_I2C_FREQUENCY, 1, 21, [four(100000), four(3400000)], [four(0), four(200000)]),
        (pyzvr.SET_I2C_ADDR_SIZE, 1, 21, [[0], [1]], [[2]]),
        (pyzvr.SET_SPI_DATA_SIZE, 2, 22, [[1]], [[2]]),
        (pyzvr.SET_SPI_FIRST_BIT, 2, 22, [[1]], [[2]]),
        (pyzvr.SET_SPI_CPHA, 2, 22, [[1]], [[2]]),
        (pyzvr.SET_SPI_PRESCALER, 2, 22, [[0, 2], [1, 0]], [[0, 1], [0, 3], [2, 0]]),
        (pyzvr.SET_CAN_SPEED, 1, 57, [[0], [3]], [[4]]),
        (pyzvr.SET_CAN_TX_PRIORITY, 1, 57, [[2, 3]], [[3, 0], [0, 4]]),
        (pyzvr.SET_CAN_RX_FILTER_OR_MASK, 1, 57, [[7, *bytes(12)]], [[8, *bytes(12)]]),
    ]:
        assert [wire.status(command, port, *each) for each in [*good, *bad]] == [0] * len(good) + [refusal] * len(bad)
    assert wire.status(pyzvr.WRITE_UART, 1, 51, *bytes(51)) == 23


def test_eeprom_writes_within_a_page_and_reads_around(wire):
    def read(count):
        answer = wire.ask(pyzvr.READ_I2C, 1, 0x50, count)
        assert answer[:3] == [1, 0, count] and len(answer) == 3 + count
        return answer[3:]

    assert wire.status(pyzvr.OPEN_I2C, 1) == 0
    assert wire.i2c(0x50, 0, *range(8)) == 0 and wire.i2c(0x50, 14, 1, 2, 3, 4) == 0
    assert wire.i2c(0x50, 8) == 0 and read(8) == [3, 4, 255, 255, 255, 255, 1, 2]
    assert read(2) == [255, 255]  # the place goes on
    assert wire.i2c(0x50, 254) == 0 and read(4) == [255, 255, 0, 1]
    assert read(0) == [] and read(1) == [2]
    assert wire.i2c(0x51, 0) == 21 and wire.ask(pyzvr.READ_I2C, 1, 0x51, 4) == [1, 21]
    assert wire.ask(pyzvr.WRITE_I2C, 1, 0x50, 2, 1) == [1, PARSER]
    assert wire.status(pyzvr.CLOSE_I2C, 1) == wire.status(pyzvr.OPEN_I2C, 1) == 0
    assert wire.i2c(0x50, 8) == 0 and read(2) == [3, 4]


def test_chips_follow_the_clock_and_addresses_that_they_know(wire):
    assert wire.status(pyzvr.OPEN_I2C, 1) == 0
    seen = {}
    for clock in (100000, 400000, 1000000, 3400000):
        assert wire.status(pyzvr.SET_I2C_FREQUENCY, 1, *four(clock)) == 0
        seen[clock] = [wire.i2c(0x48, 0), wire.i2c(0x50, 0)]
    assert seen == {100000: [0, 0], 400000: [0, 0], 1000000: [21, 0], 3400000: [21, 21]}
    assert wire.status(pyzvr.RESET_I2C, 1) == 0 and wire.i2c(0x48) == 0
    assert wire.status(pyzvr.SET_I2C_ADDR_SIZE, 1, 1) == 0 and wire.i2c(0x48) == 21


def test_thermometer_keeps_its_limits_and_measures():
    with wired("SableDio", "--peer", "thermometer@i2c:1:0x4F:-20") as wire:
        assert wire.status(pyzvr.OPEN_I2C, 1) == 0 and wire.i2c(0x48) == wire.i2c(0x50) == 21

        def read(register, count):
            assert wire.i2c(0x4F, register) == 0
            return bytes(wire.ask(pyzvr.READ_I2C, 1, 0x4F, count)[3:])

        (value,) = struct.unpack(">h", read(0, 2))
        assert -25 * 256 <= value <= -15 * 256 and value % 32 == 0
        assert wire.i2c(0x4F, 2, 30, 128) == wire.i2c(0x4F, 1, 6) == wire.i2c(0x4F, 0, 99, 99) == 0
        assert read(2, 2) == bytes([30, 128]) and read(3, 4) == bytes([80, 0, 80, 0]) and read(1, 2) == bytes([6, 6])
        assert struct.unpack(">h", read(0, 2))[0] < -10 * 256


PROGRAM, READ, STATUS, ENABLE, ERASE, IDENTITY = 0x02, 0x03, 0x05, 0x06, 0x20, 0x9F


def test_flash_changes_only_what_is_enabled_and_only_downwards(wire):
    def read(place, count):
        return wire.spi(READ, *four(place)[1:], *bytes(count))[4:]

    def settle():
        while wire.spi(STATUS, 0)[1] & 1:
            pass

    def change(*command):
        assert wire.status(pyzvr.WRITE_SPI, 2, 1, ENABLE) == 0 and wire.spi(STATUS, 0)[1] == 2
        assert wire.status(pyzvr.WRITE_SPI, 2, len(command), *command) == 0
        settle()
        assert wire.spi(STATUS, 0)[1] == 0  # enabled for one change

    assert wire.status(pyzvr.OPEN_SPI, 2) == 0 and wire.spi(IDENTITY, 0, 0, 0) == [255, 0xEF, 0x40, 0x14]
    wire.spi(PROGRAM, 0, 0x10, 0xFE, 1, 2, 3)
    assert read(0x10FE, 4) == [255] * 4
    change(PROGRAM, 0, 0x10, 0xFE, 1, 2, 3)  # around within the page
    assert read(0x10FE, 3) == [1, 2, 255] and read(0x1000, 2) == [3, 255]
    change(PROGRAM, 0, 0x10, 0xFE, 0xF6)
    assert read(0x10FE, 1) == [0]
    wire.spi(ENABLE)
    assert wire.spi(ERASE, 0, 0x10, 0) == [255] * 4 and wire.spi(STATUS, 0)[1] & 1
    assert wire.spi(IDENTITY, 0) == [255, 255]  # busy
    settle()
    assert read(0x10FE, 2) == read(0x1000, 2) == [255, 255]
    assert read(0xFFFFF, 2) == [255, 255]


def test_how_bits_travel_matters_to_a_chip(wire):
    assert wire.status(pyzvr.OPEN_SPI, 2) == 0
    seen = []
    for polarity, phase in ((0, 0), (0, 1), (1, 1), (1, 0)):
        assert wire.status(pyzvr.SET_SPI_CPOL, 2, polarity) == wire.status(pyzvr.SET_SPI_CPHA, 2, phase) == 0
        seen.append(wire.spi(IDENTITY, 0)[1])
    assert seen == [0xEF, 255, 0xEF, 255]
    assert wire.status(pyzvr.RESET_SPI, 2) == wire.status(pyzvr.SET_SPI_FIRST_BIT, 2, 1) == 0
    assert wire.spi(0xF9, 0) == [255, 0xF7]  # both mirrored
    assert wire.status(pyzvr.SET_SPI_DATA_SIZE, 2, 1) == 0 and wire.spi(0, 0xF9, 0, 0) == [0xF7, 255, 0x28, 2]
    assert wire.status(pyzvr.WRITE_SPI, 2, 1, 6) == 22 and wire.ask(pyzvr.READ_SPI, 2, 3) == [2, 22]


def test_a_looped_line_brings_everything_back_in_order(wire):
    for port in (1, 2):
        assert wire.status(pyzvr.OPEN_UART, port) == 0
    assert wire.status(pyzvr.WRITE_UART, 1, 2, 9, 9) == 0  # nobody listens yet
    assert wire.status(pyzvr.SET_UART_BAUD_RATE, 1, *four(400000)) == 0
    for _ in range(2):
        wire.send(pyzvr.START_UART_READING, 1)
    sent = bytes(i % 256 for i in range(1000))
    for i in range(0, len(sent), 50):
        assert wire.status(pyzvr.WRITE_UART, 1, 50, *sent[i:i + 50]) == 0
    assert wire.heard(1, len(sent)) == sent
    assert wire.status(pyzvr.SET_UART_DATA_SIZE, 1, 1) == wire.status(pyzvr.WRITE_UART, 1, 2, 0xC1, 2) == 0
    assert wire.heard(1, 2) == b"A\2"
    assert wire.status(pyzvr.STOP_UART_READING, 1) == wire.status(pyzvr.WRITE_UART, 1, 1, 3) == 0
    wire.send(pyzvr.START_UART_READING, 1)
    assert wire.status(pyzvr.WRITE_UART, 1, 1, 4) == 0 and wire.heard(1, 1) == b"\4" and not wire.unsolicited


def test_an_echo_answers_lines_and_takes_another_speed_for_noise():
    with wired("SableMixed", "--peer", "echo@uart:2:19200") as wire:
        assert wire.status(pyzvr.OPEN_UART, 2) == wire.status(pyzvr.SET_UART_BAUD_RATE, 2, *four(19200)) == 0
        wire.send(pyzvr.START_UART_READING, 2)
        assert wire.status(pyzvr.WRITE_UART, 2, 5, *b"one\nt") == 0 and wire.heard(2, 4) == b"one\n"
        assert wire.status(pyzvr.WRITE_UART, 2, 3, *b"wo\n") == 0 and wire.heard(2, 4) == b"two\n"
        assert wire.status(pyzvr.SET_UART_BAUD_RATE, 2, *four(38400)) == 0
        noise = bytes(byte ^ 255 for byte in b"three\n")
        assert wire.status(pyzvr.WRITE_UART, 2, 6, *noise) == 0 and wire.heard(2, 6) == noise


def test_a_talker_tells_its_place_with_right_checksums():
    with wired("SableAnalog", "--peer", "gps@uart:1:20:57600") as wire:
        assert wire.status(pyzvr.OPEN_UART, 1) == wire.status(pyzvr.SET_UART_BAUD_RATE, 1, *four(57600)) == 0
        wire.send(pyzvr.START_UART_READING, 1)
        heard = b""
        while heard.count(b"\n") < 8:
            heard += wire.heard(1, 1)
    sentences = heard.decode().split("\r\n")[:8]
    assert [each[:6] for each in sentences] == ["$GPGGA", "$GPRMC"] * 4
    for sentence in sentences:
        body, checksum = sentence[1:].split("*")
        expected = 0
        for character in body.encode():
            expected ^= character
        assert f"{expected:02X}" == checksum
    fix, minimum = (each.split(",") for each in sentences[:2])
    assert len(fix) == 15 and len(minimum) == 12 and fix[1:6] == [minimum[1], *minimum[3:7]]
    assert 4759 <= float(fix[2]) <= 4801 and 1059 <= float(fix[4]) <= 1101
    times = [each.split(",")[1] for each in sentences[::2]]
    assert len(set(times)) == 4


@pytest.mark.parametrize("options", [[], ["--fast"]])
def test_counted_bytes_lose_none(options):
    with wired("SableDio", "--peer", "count@uart:1", *options) as wire:
        assert wire.status(pyzvr.OPEN_UART, 1) == wire.status(pyzvr.SET_UART_BAUD_RATE, 1, *four(400000)) == 0
        wire.send(pyzvr.START_UART_READING, 1)
        heard = wire.heard(1, 200000 if options else 10000)
        assert heard == bytes(i % 256 for i in range(len(heard)))
        assert wire.status(pyzvr.CLOSE_UART, 1) == 0


def start_can(wire, *settings):
    for command, *data in settings:
        assert wire.status(command, 1, *data) == 0
    assert wire.status(pyzvr.OPEN_CAN, 1) == 0
    wire.send(pyzvr.START_CAN, 1)
    return wire


def test_the_reply_of_opening_can_has_two_command_bytes(wire):
    for status in (0, 57):  # opened, refused
        wire.send(pyzvr.OPEN_CAN, 1)
        assert wire.frame() == bytes([0, 48, 1, status])


@pytest.mark.parametrize("speed, identifier, period, options", [
    (3, "291", 125, []), (3, "0x12345", 131, ["--fast"]), (0, "0x123", 888, []),
])
def test_cyclic_frames_come_whole_and_in_order(speed, identifier, period, options):
    count = 300000 if options else 2000
    word = standard(0x123) if period != 131 else extended(0x12345)
    with wired("SableCan", "--peer", "cyclic@can:1:8000:" + identifier, *options) as wire:
        start_can(wire, (pyzvr.SET_CAN_SPEED, speed))
        wire.send(pyzvr.START_CAN, 1)  # is no second start
        records = wire.records(count)
        # Number and time of each; the bus carries no more than its speed allows.
        assert {each for each, _ in records} == {word}
        assert all(struct.unpack(">II", data) == (i, i * period) for i, (_, data) in enumerate(records[:1000]))
        assert [int.from_bytes(data[:4], "big") for _, data in records] == list(range(len(records)))
        assert wire.status(pyzvr.SET_CAN_SPEED, 1, 1) == 57
        assert wire.status(pyzvr.STOP_CAN, 1) == 0
        total = len(records) + sum(frame[2] for frame in wire.unsolicited)
        wire.unsolicited.clear()
        assert wire.can_values(pyzvr.GET_CAN_COUNTERS, ">6I") == (0, total, 0, 0, 0, 0) and not wire.unsolicited
        wire.send(pyzvr.START_CAN, 1)
        assert int.from_bytes(wire.records(1)[0][1][:4], "big") == 0


def test_a_node_answers_frames_and_requests():
    with wired("SableCan", "--peer", "responder@can:1") as wire:
        start_can(wire)
        data = bytes(range(1, 9))
        for word, answer in ((standard(0x7FE), standard(0x7FF)), (standard(0x7FF), standard(0)),
                             (extended(0x3FFFF), extended(0x40000))):
            assert wire.can(word, data) == 0 and wire.records(1) == [(answer, data)]
        for number in range(2):
            assert wire.can(standard(5) | REMOTE) == 0
            assert wire.records(1) == [(standard(5), bytes([number, 0, 0, 0, 0, 0, 0, 0]))]
        assert wire.can_values(pyzvr.GET_CAN_COUNTERS, ">6I") == (5, 5, 0, 0, 0, 0)
        assert wire.status(pyzvr.WRITE_CAN, 1, 3, *bytes(12)) == 57  # no such buffer


def test_filters_let_through_what_they_name():
    def accepted(wire, *words):
        """Which of the answers get through; each is its request with the next identifier."""
        for word in words:
            assert wire.can(word) == 0
        return [wire.records(1)[0][0] for _ in range(len(wire.unsolicited))]

    with wired("SableCan", "--peer", "responder@can:1") as wire:
        start_can(wire, (pyzvr.SET_CAN_RX_FILTERING_ON, 1))
        assert accepted(wire, standard(0x120)) == []  # no filter is set

        def set_word(index, word):
            assert wire.status(pyzvr.SET_CAN_RX_FILTER_OR_MASK, 1, index, *four(word), *bytes(8)) == 0

        set_word(0, standard(0x123))
        assert accepted(wire, standard(0x122), standard(0x123), extended(0x122)) == [standard(0x123)]
        set_word(6, standard(0x7F0))  # the mask of the first two filters
        assert accepted(wire, standard(0x11F), standard(0x12E), standard(0x12F)) == [standard(0x120), standard(0x12F)]
        set_word(5, extended(0x10001))
        assert accepted(wire, extended(0x10000), extended(0x10001), standard(0x10)) == [extended(0x10001)]
        set_word(7, extended(0x1FFC0000))  # the mask of the others: only the upper bits
        assert accepted(wire, extended(0x3FFFE), extended(0x3FFFF)) == [extended(0x3FFFF)]
        counters = wire.can_values(pyzvr.GET_CAN_COUNTERS, ">6I")
        assert counters[:3] == (12, 5, 7)
        assert wire.status(pyzvr.SET_CAN_RX_FILTERING_ON, 1, 0) == 0
        assert accepted(wire, standard(0x700)) == [standard(0x701)]


def errors(wire):
    return wire.can_values(pyzvr.GET_CAN_ERRORS, ">2B"), wire.can_values(pyzvr.GET_CAN_INTERRUPTS, ">3B")[2]


def test_frames_that_nobody_acknowledges_make_a_port_passive():
    with wired("SableCan", "--peer", "none@can:1") as wire:
        start_can(wire, (pyzvr.SET_CAN_ENABLED_ITR, 1))
        states = []
        for _ in range(20):
            assert wire.can(0) == 57
            states.append(errors(wire))
        assert states[0] == ((8, 0), 0) and states[11] == ((96, 0), 0b101)
        assert states[15] == states[19] == ((128, 0), 0b10101)  # passive, but never off the bus
        assert wire.can_values(pyzvr.GET_CAN_COUNTERS, ">6I") == (0, 0, 0, 0, 20, 0)


def test_another_bit_rate_puts_a_port_off_the_bus_until_it_starts_anew():
    with wired("SableCan", "--peer", "responder@can:1:2") as wire:
        start_can(wire, (pyzvr.SET_CAN_SPEED, 1), (pyzvr.SET_CAN_ENABLED_ITR, 1))
        assert {wire.can(0) for _ in range(32)} == {57}
        assert errors(wire) == ((255, 0), 0b110101)
        failed = wire.can_values(pyzvr.GET_CAN_COUNTERS, ">6I")[4]
        assert wire.can(0) == 57 and wire.can_values(pyzvr.GET_CAN_COUNTERS, ">6I")[4] == failed == 32
        assert wire.status(pyzvr.STOP_CAN, 1) == wire.status(pyzvr.SET_CAN_SPEED, 1, 2) == 0
        assert wire.can(0) == 57  # not started
        wire.send(pyzvr.START_CAN, 1)
        assert wire.can(0) == 0 and wire.records(1)[0][0] == standard(1) and errors(wire) == ((0, 0), 0)
        assert wire.can_values(pyzvr.GET_CAN_INTERRUPTS, ">3B") == (1, 0, 0)  # read just before


def test_frames_of_another_bit_rate_are_errors():
    with wired("SableCan", "--peer", "cyclic@can:1:5000:1:0") as wire:
        start_can(wire, (pyzvr.SET_CAN_SPEED, 3), (pyzvr.SET_CAN_ENABLED_ITR, 1))
        seen = 0
        while errors(wire)[0] != (0, 128):
            seen |= wire.can_values(pyzvr.GET_CAN_INTERRUPTS, ">3B")[1]
        assert errors(wire)[1] == 0b1011 and seen & ~0b10100000 == 0
        counters = wire.can_values(pyzvr.GET_CAN_COUNTERS, ">6I")
        assert counters[1] == 0 and counters[5] >= 128 and not wire.unsolicited


@pytest.mark.parametrize("peer", ["", "flash", "flash@spi", "flash@uart:1", "what@spi:1", "flash@what:1", "flash@spi:3",
                                  "flash@spi:1:1", "gps@uart:1:0", "cyclic@can:1:10:0x20000000", "eeprom@i2c:1:80x"])
def test_peers_that_cannot_be_are_refused(peer):
    run = subprocess.run([simulator_program(), "SableCan", "--tcp", "--peer", peer], capture_output=True, text=True)
    assert run.returncode == 2 and "--peer: " in run.stderr
