"""Tests of a program that uses a box, without a box. What is tested stands first; usually it is a module of its own."""

import pytest

import pyzvr


class Lamp:
    """A lamp at output 2, and a switch at input 3."""

    def __init__(self, box: pyzvr.TarnDio) -> None:
        self.box = box

    def follow_switch(self) -> int:
        """Puts the lamp to what the switch says; 1 is on."""
        level = self.box.DI_readPins(1, [3])[0]
        if self.box.DO_writePins(0, [2], [level]) != 0:
            raise RuntimeError("the lamp cannot be switched")
        return level


@pytest.fixture
def place(simulated_device):
    return simulated_device("TarnDio")


@pytest.fixture
def box(place):
    with pyzvr.TarnDio() as box:
        box.connect(*place.address)
        yield box


def test_the_lamp_follows_the_switch(place, box):
    lamp = Lamp(box)
    for high in (True, False, True):
        place.level(1, 3, high)
        assert lamp.follow_switch() == high
        assert box.DI_readPins(1, [2]) == [high]  # output 2 is wired to input 2


def test_a_refusal_is_not_overlooked(place, box):
    place.refuse("SET_AND_WRITE_DO", 11)
    with pytest.raises(RuntimeError, match="cannot be switched"):
        Lamp(box).follow_switch()


def test_a_box_that_is_gone_is_told(place, box):
    place.cut()
    with pytest.raises(pyzvr.NetworkConnectionLostError):
        Lamp(box).follow_switch()
