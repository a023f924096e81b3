"""Records of the handheld multimeter, decoded."""

import decimal
from decimal import Decimal

import pytest
from hypothesis import given
from hypothesis import strategies as st

from pyzvr import Measurement


def record(mode, range_, display, bar=(0, 0), flags=(0, 0, 0), rest=b"\1\2\3\4\5"):
    number = mode if isinstance(mode, int) else Measurement._MODE.index(mode)
    return bytes([number, ord(range_)]) + display.rjust(7).encode() + bytes([*bar, *flags]) + rest


def test_volts_and_the_text_form():
    data = record("DCV", "1", "-12.345", (4, 6), (8, 0, 8))
    meter = Measurement(data)
    assert (meter.binary, meter.mode, meter.range, meter.display) == (data, "DCV", "1", "-12.345")
    assert meter.display_decimal == meter.value == Decimal("-12.345")
    assert meter.display_unit == meter.unit == "V"
    assert meter.progress == meter._data["progres"] == 46
    assert not meter.overload
    assert meter.isDC
    assert meter.isAuto
    assert str(meter).splitlines() == [
        "mode=DCV", "range=1", "display=-12.345", "display_decimal=-12.345", "display_unit=V", "overload=False",
        "value=-12.345", "unit=V", "progress=46", "isMax=True", "ismin=False", "isHold=False", "isRel=False",
        "isAuto=True", "hasBatteryWarning=False", "hasHVWarning=False", "isDC=True", "isMaxPeak=False",
        "isMinPeak=False", "isBarPol=False"]
    with pytest.raises(AttributeError):
        meter.value = 1


FLAGS = [("isMax", 0, 8), ("isMin", 0, 4), ("isHold", 0, 2), ("isRel", 0, 1), ("hasBatteryWarning", 1, 2),
         ("hasHVWarning", 1, 1), ("isDC", 2, 8), ("isMaxPeak", 2, 4), ("isMinPeak", 2, 2), ("isBarPol", 2, 1)]


@pytest.mark.parametrize("name, place, bit", [*FLAGS, ("isAuto", 1, 4)])
def test_each_flag_is_one_bit(name, place, bit):
    flags = [0, 4, 0]
    flags[place] ^= bit
    meter = Measurement(record("OHM", "0", "1.0", flags=flags))
    told = {flag for flag, _, _ in FLAGS} | {"isAuto"}
    assert {flag for flag in told if getattr(meter, flag) is True} == {name}


UNITS = {
    "ACV": "0123", "ACmV": "0", "DCV": "0123", "DCmV": "0", "Hz": "01234567", "%": "0", "OHM": "0123456", "CONT": "0",
    "DIDOE": "0", "CAP": "01234567", "deg C": "01", "deg F": "01", "DCuA": "01", "ACuA": "01", "DCmA": "01",
    "ACmA": "01", "DCA": "1", "ACA": "1", "HFE": "0", "NCV": "0", "LozV": "0123", "LPF": "0123", "AC/DC": "0123",
    "AC+DC": "1", "AC+DC2": "1"
}


def test_every_mode_has_its_ranges():
    assert len(Measurement._MODE) == 31
    assert Measurement._MODE[22:31] == ["ACA", "DCA", "LPF", "AC/DC", "LPF", "AC+DC", "LPF", "AC+DC2", "INRUSH"]
    for number, mode in enumerate(Measurement._MODE):
        known = [range_ for range_ in "0123456789" if Measurement(record(number, range_, "1")).display_unit is not None]
        assert "".join(known) == UNITS.get(mode, "")
    found = [Measurement(record("CAP", range_, "1")).display_unit for range_ in "01234567"]
    assert found == ["nF"] * 2 + ["uF"] * 3 + ["mF"] * 3
    assert [Measurement(record("OHM", range_, "1")).display_unit for range_ in "06"] == ["Ω", "MΩ"]
    assert [Measurement(record("Hz", range_, "1")).display_unit for range_ in "147"] == ["Hz", "kHz", "MHz"]


@pytest.mark.parametrize("mode", ["Live", "INRUSH"])
def test_a_mode_without_units_has_none(mode):
    meter = Measurement(record(mode, "0", "7"))
    assert meter.display_unit is None
    assert meter.unit is None
    assert meter.value == 7
    assert "unit=None" in str(meter)


# Only digits that are zero may leave on the right.
@pytest.mark.parametrize("mode, range_, display, value, unit", [
    ("OHM", "2", "12.345", "12345", "Ω"), ("OHM", "5", "1.5", "1.5E6", "Ω"), ("Hz", "7", "60.000", "60000000", "Hz"),
    ("ACmA", "0", "12000", "12", "A"), ("DCuA", "1", "3000000", "3", "A"), ("deg C", "1", "21.5", "21.5", "deg C"),
    ("DCmV", "0", "12.34", "23400000000000000000000000.01", "V"), ("HFE", "0", "100", "100", "B")])
def test_prefixes_rotate_the_digits(mode, range_, display, value, unit):
    meter = Measurement(record(mode, range_, display))
    assert (meter.value, meter.unit) == (Decimal(value), unit)
    assert meter.display_unit.endswith(unit)


def rotated(display, places):
    """The 28 digits of a number as a ring."""
    sign, digits, exponent = Decimal(display).as_tuple()
    ring = [0] * (28 - len(digits)) + list(digits)
    return Decimal((sign, ring[places % 28:] + ring[:places % 28], exponent))


@given(st.decimals(-99999, 99999, places=2).filter(lambda number: len(str(number)) <= 7),
       st.sampled_from([("OHM", "4", 6), ("OHM", "1", 3), ("DCmA", "0", -3), ("DCuA", "0", -6), ("CAP", "0", -9)]))
def test_arithmetic_is_the_host_s(number, scale):
    mode, range_, exponent = scale
    meter = Measurement(record(mode, range_, str(number)))
    assert meter.display_decimal == number
    assert meter.value == rotated(str(number), exponent)
    if exponent > 0:
        assert meter.value == number.scaleb(exponent)


@pytest.mark.parametrize("display", [".OL", "O.L", "OL.", "OL", "-.OL", "-O.L", "-OL.", "-OL", "O L"])
def test_overload_is_a_text_and_keeps_the_unit(display):
    meter = Measurement(record("OHM", "6", display))
    assert meter.overload
    assert meter.value == meter.display_decimal == "Overflow"
    assert meter.unit == "MΩ"


@pytest.mark.parametrize("level, display", enumerate(["EF", "-", "--", "---", "----", "-----"]))
def test_field_strengths(level, display):
    meter = Measurement(record("NCV", "0", display))
    assert meter._data["ncv"]
    assert meter.value == meter.display_decimal == level
    assert meter.unit == "NCV"
    assert not meter.overload


def test_what_is_no_record():
    good = record("DCV", "0", "1.0", rest=b"")
    assert Measurement(good).value == 1
    assert Measurement(bytearray(good)).value == 1
    assert Measurement(list(good)).value == 1
    for bad, error, message in ((good[:13], IndexError,
                                   "14 bytes"), (b"", IndexError, "14 bytes"), (b"\x1f" + good[1:], IndexError, "31"),
                                  (record("DCV", "0", "word"), decimal.InvalidOperation, None), (5, TypeError, None),
                                  ("text", TypeError, None), (good[:1] + b"\xff" + good[2:], UnicodeDecodeError, None),
                                  (good[:3] + b"\xff" + good[4:], UnicodeDecodeError, None)):
        with pytest.raises(error, match=message):
            Measurement(bad)


def test_a_kind_of_its_own_may_know_more_modes():
    class Mine(Measurement):
        _MODE = [*Measurement._MODE, "DCkV"]
        _UNITS = {**Measurement._UNITS, "DCkV": {"0": "kV"}}

    assert (Mine(record(31, "0", "1.5")).value, Mine(record(31, "0", "1.5")).unit) == (1500, "V")
