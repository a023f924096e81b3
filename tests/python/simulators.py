"""Products that are connected to a simulator of their own."""

import contextlib
import subprocess

import zvrkit.sim

import pyzvr


def simulator_program(name="zvr-sim"):
    """Path of one of the simulator's programs, whether it is built or not."""
    try:
        return zvrkit.sim.program(name)
    except zvrkit.sim.SimulatorError:
        return name


def can_make_networks():
    """Whether a test may have a network of its own."""
    trial = ["unshare", "--net", "ip", "link", "add", "trial", "type", "bridge"]
    return subprocess.run(trial, capture_output=True).returncode == 0


@contextlib.contextmanager
def running_simulator(model, *options):
    """A simulator process; yields what it says of itself."""
    with zvrkit.sim.device(model, *options) as place:
        yield place.said


def address_of(simulator):
    """What `connect` of a product takes to reach it."""
    if "serial_port" in simulator:
        return (simulator["serial_port"],)
    return tuple(simulator[key] for key in ("host", "data_port", "command_port") if key in simulator)


@contextlib.contextmanager
def connected(model, *options):
    """A product object on a simulator of its own."""
    with zvrkit.sim.device(model, *options) as place, getattr(pyzvr, model)() as product:
        product.connect(*place.address, verbose=False)
        yield product
