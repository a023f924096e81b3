"""A recorded session of the 61E+ multimeter, decoded.

    python3 examples/multimeter.py            decodes what is recorded here
    python3 examples/multimeter.py HEX ...    decodes records of your own
"""

from __future__ import annotations

from _simulated import arguments  # first: it finds a build

import pyzvr

# Mode, range, display, bar, flags, and what the meter adds.
SESSION = [
    "02 31 20 31 32 2E 33 34 35 00 0C 00 30 38 03 41 00 00 00",  # a supply
    "02 31 20 31 32 2E 34 30 31 00 0C 08 34 38 03 41 00 00 00",  # the greatest value of it, the range held
    "06 32 20 34 2E 37 30 31 20 01 05 00 30 30 03 41 00 00 00",  # a resistor
    "06 36 20 20 20 4F 2E 4C 20 02 02 00 30 30 03 41 00 00 00",  # an open circuit
    "04 34 20 33 2E 32 37 36 38 00 00 00 30 30 03 41 00 00 00",  # a clock
    "0A 30 20 20 20 32 33 2E 31 00 00 00 32 30 03 41 00 00 00",  # the room, with a battery that is low
    "14 30 20 20 20 20 2D 2D 2D 00 00 00 30 30 03 41 00 00 00",  # a live wire nearby
]


def describe(meter: pyzvr.Measurement) -> str:
    marks = [word for word, applies in (("max", meter.isMax), ("auto", meter.isAuto), ("battery low", meter.hasBatteryWarning))
             if applies]
    return f"{meter.mode:6} {meter.display:>8} {meter.display_unit or '':6} = {meter.value} {meter.unit or ''}  {', '.join(marks)}"


def main() -> None:
    records = [bytes.fromhex(text) for text in arguments() or SESSION]
    meters = [pyzvr.Measurement(record) for record in records]
    for meter in meters:
        print(describe(meter))
    print(meters[-1])
    try:
        pyzvr.Measurement(records[-1][:9])
    except IndexError as failure:
        print("Refused:", failure)


if __name__ == "__main__":
    main()
