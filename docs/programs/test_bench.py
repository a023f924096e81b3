"""Tests of a program that uses a box, without a box. What is tested stands first, usually in a module of its own."""

import contextlib

import pytest

import pyzvr


def name_by_switch(box: pyzvr.TarnDio) -> str:
    """Names the box by the switch at input 3; the device keeps the name."""
    name = "right rack" if box.DI_readPins(1, [3]) == [1] else "left rack"
    status = box.Sys_setDeviceAlias(name)
    if status != 0:
        raise RuntimeError(f"the box does not take the name: {status}")
    return name


@pytest.fixture
def place(simulated_device):
    return simulated_device("TarnDio")


@pytest.fixture
def box(place):
    box = pyzvr.TarnDio()
    box.connect(*place.address)
    yield box
    with contextlib.suppress(pyzvr.NetworkConnectionLostError):  # a test may have cut it
        box.close()


@pytest.mark.parametrize(("high", "name"), [(True, "right rack"), (False, "left rack")])
def test_the_switch_decides_the_name(place, box, high, name):
    place.level(1, 3, high)
    assert name_by_switch(box) == name
    assert box.Sys_getDeviceAlias() == name


def test_a_refusal_is_not_overlooked(place, box):
    place.refuse("SET_DEV_ALIAS", 42)
    with pytest.raises(RuntimeError, match="-7014"):
        name_by_switch(box)


def test_a_box_that_is_gone_is_told(place, box):
    place.cut()
    with pytest.raises(pyzvr.NetworkConnectionLostError):
        name_by_switch(box)
