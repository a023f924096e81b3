"""What scenarios of leaving the interpreter share: their list, and what they say."""

import os
import sys
import warnings
from typing import NamedTuple

SERIAL = "SIM00001"
OUT = sys.stdout
KEPT = []  # what lives until the interpreter takes the module apart
MAIN = os.getpid()


class Scenario(NamedTuple):
    body: object
    model: str | None  # of the simulated device
    says: str  # as a regular expression


SCENARIOS = {}


def scenario(name, model=None, says=""):
    def register(body):
        assert name not in SCENARIOS
        SCENARIOS[name] = Scenario(body, model, says)
        return body

    return register


def say(*words):
    print(*words, file=OUT, flush=True)


def keep(thing):
    KEPT.append(thing)
    return thing


def made(model):
    import pyzvr

    with warnings.catch_warnings():
        warnings.simplefilter("ignore")  # libusb is not where a user would have it
        return getattr(pyzvr, model)()


def connected(model, address):
    """A connected product; what has no link here stays as it was made."""
    box = made(model)
    if address:
        box.connect(*address, verbose=False)
    return box


def streaming(box, rate=20000):
    box.AI_open(0)
    box.AI_setMode(0, 2)
    box.AI_setSamplingRate(0, rate)
    box.AI_openStreaming(0)
    box.AI_startStreaming(0)
    while not box.AI_readStreaming(0, 1, 1):
        pass
    return box


def attempt(action):
    """The action's result in words, or the kind of its error."""
    try:
        return str(action())
    except Exception as error:
        return type(error).__name__
