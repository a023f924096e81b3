"""The simulator as a process, and products that are connected to it."""

import contextlib
import json
import os
import subprocess

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
