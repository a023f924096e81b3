"""What the tests share: the simulator as a process, both forms of an operation, and a client that is a test double."""

import asyncio
import contextlib
import json
import os
import subprocess

import pytest

import pyzvr


def simulator_program(name="zvr-sim"):
    """Path of one of the simulator's programs."""
    return os.path.join(os.path.dirname(os.environ["ZVR_SIM"]), name)


def can_make_networks():
    """Whether a test may have a network of its own."""
    trial = ["unshare", "--net", "ip", "link", "add", "trial", "type", "bridge"]
    return subprocess.run(trial, capture_output=True).returncode == 0


@contextlib.contextmanager
def running_simulator(model, *options):
    """A simulator process; yields what it says of itself."""
    process = subprocess.Popen(
        [simulator_program(), model, "--stdin-stop", *options],
        stdin=subprocess.PIPE,
        stdout=subprocess.PIPE,
        text=True,
    )
    try:
        yield json.loads(process.stdout.readline())
    finally:
        process.stdin.close()
        process.stdout.close()
        assert process.wait(10) == 0


def address_of(simulator):
    """What `connect` of a product takes to reach it."""
    if "serial_port" in simulator:
        return (simulator["serial_port"],)
    return tuple(simulator[key] for key in ("host", "data_port", "command_port") if key in simulator)


@contextlib.contextmanager
def connected(model, *options):
    """A product object on a simulator of its own."""
    with running_simulator(model, *options) as simulator, getattr(pyzvr, model)() as product:
        product.connect(*address_of(simulator), verbose=False)
        yield product


def blocking(product, name, *args, **kwargs):
    return getattr(product, name)(*args, **kwargs)


def awaited(product, name, *args, **kwargs):
    return asyncio.run(getattr(product, name + "_async")(*args, **kwargs))


@pytest.fixture(params=[blocking, awaited])
def call(request):
    """Runs an operation in one form; each test with it runs in both."""
    return request.param


class Double:
    """A client that records what is sent and files the replies that a script gives."""

    def __init__(self, product):
        self.product = product
        self.sent = []
        self.replies = {}

    def sendPacket(self, int_list):
        frame = bytes(int_list)
        assert frame[0] == 2 and frame[-2:] == b"\r\n" and int.from_bytes(frame[1:3], "big") == len(frame) - 5
        wide = frame[3] < 48  # no code of two bytes begins with 48, OPEN_CAN itself
        command = int.from_bytes(frame[3:5], "big") if wide else frame[3]
        data = frame[5 if wide else 4 : -2]
        self.sent.append((command, data))
        if command in self.replies:
            reply = self.replies[command]
            self.product._putToDataPool(command, reply(data) if callable(reply) else bytes(reply))


@contextlib.contextmanager
def wired(model, **replies):
    """A product whose client is a test double; `replies` are by the name of the command."""
    with getattr(pyzvr, model)() as product:
        product.client_cmd = Double(product)
        product.client_cmd.replies = {getattr(pyzvr, command): reply for command, reply in replies.items()}
        yield product


class BenchDio(pyzvr.Device, pyzvr.SystemModule, pyzvr.DIOModule, pyzvr.SystemModule_async, pyzvr.DIOModule_async):
    """A small digital box behind whatever client a test brings."""

    def __init__(self):
        pyzvr.Device.__init__(self)
        for module in (pyzvr.DIOModule, pyzvr.DIOModule_async):
            module.__init__(self, {0: [0, 1, 2, 3, 4, 5, 6, 7], 1: [0, 1]}, {0: [0, 1, 2, 3, 4, 5, 6, 7]}, 8)
        self.client_cmd = Double(self)


@pytest.fixture
def bench(monkeypatch):
    monkeypatch.setitem(pyzvr.LABEL_DICT, "BenchDio", "Bench-Dio")
    product = BenchDio()
    yield product
    product.close(verbose=False)
