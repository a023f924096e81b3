"""Event loops to run tests on."""

import asyncio
import os

import pytest

import pyzvr

# Codes whose replies wait under the code itself.
KEYS = [code for code in range(50, 250)
        if code not in (pyzvr.MOTION, *pyzvr.STREAMING_CMD_LIST, *pyzvr.BROADCAST_CMD_LIST)]


class WithoutReaders(asyncio.SelectorEventLoop):
    """As other systems' loops are. Its own pipe uses an internal way."""

    def add_reader(self, *_):
        raise NotImplementedError


LOOPS = [asyncio.SelectorEventLoop, WithoutReaders]


@pytest.fixture(params=LOOPS)
def make_loop(request):
    return request.param


def run(loop, main):
    """What asyncio.run does, on a loop of the test's own."""
    try:
        return loop.run_until_complete(main)
    finally:
        loop.close()


def descriptors():
    return len(os.listdir("/proc/self/fd"))
