"""Fixtures for pytest: simulated devices that end with the test.

It is at hand where the package is installed; beside a build, `pytest -p zvrkit.pytest_plugin`.
"""

from __future__ import annotations

import contextlib
from collections.abc import Iterator
from typing import Protocol

import pytest

from zvrkit import sim


class StartsDevice(Protocol):
    def __call__(self, model: str, *options: str) -> sim.Place: ...


class StartsBus(Protocol):
    def __call__(self, *devices: str) -> sim.Bus: ...


@pytest.fixture
def simulated_device() -> Iterator[StartsDevice]:
    """Starts simulated devices: `simulated_device("TarnDio", "--serial", "SN1")` gives its place."""
    with contextlib.ExitStack() as stack:

        def start(model: str, *options: str) -> sim.Place:
            return stack.enter_context(sim.device(model, *options))

        yield start


@pytest.fixture
def simulated_usb() -> Iterator[StartsBus]:
    """Starts a USB with simulated devices: `simulated_usb("SableDio").run([...])`."""
    with contextlib.ExitStack() as stack:

        def start(*devices: str) -> sim.Bus:
            return stack.enter_context(sim.usb(*devices))

        yield start
