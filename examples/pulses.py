"""PWM outputs, pulse counters and the encoder of a box on USB.

    python3 examples/pulses.py         starts itself again beside a simulated box
    python3 examples/pulses.py SERIAL  uses a device by its serial number; "default" takes the first one
"""

from __future__ import annotations

import sys
import time
import warnings

from _simulated import run_beside_usb  # first: it finds a build

import pyzvr


def count_own_pulses(box: pyzvr.SableDio) -> None:
    """In the simulated box each PWM output leads to the counter of the same number."""
    pyzvr.check(box.PWM_open(0))
    pyzvr.check(box.Counter_open(0))
    pyzvr.check(box.PWM_setFrequency(0, 5000))
    pyzvr.check(box.PWM_setDutyCycle(0, 25))
    pyzvr.check(box.Counter_setPosition(0, 0))
    box.PWM_start(0)
    box.Counter_start(0)
    for _ in range(3):
        time.sleep(0.1)
        position, frequency = box._Counter_read(0)
        print(f"Counter: {position:5.0f} pulses at {frequency:.0f} Hz")
    box.Counter_stop(0)
    box.PWM_stop(0)
    box.Counter_close(0)
    box.PWM_close(0)


def follow_shaft(box: pyzvr.SableDio) -> None:
    pyzvr.check(box.Encoder_open(0))
    pyzvr.check(box.Encoder_setPosition(0, -5))
    box.Encoder_start(0)
    time.sleep(0.1)
    print("Encoder:", box.Encoder_readPosition(0), "counts at", box.Encoder_readFrequency(0), "Hz")
    box.Encoder_stop(0)
    box.Encoder_close(0)


def main() -> None:
    run_beside_usb("SableDio")
    # Where no libusb lies beside the package, the system's own is used, with a warning.
    warnings.simplefilter("ignore", UserWarning)
    with pyzvr.SableDio() as box:
        box.connect(sys.argv[1] if len(sys.argv) > 1 else "default")
        print(*box.Sys_getDriverInfo(), "serial number", box.Sys_getSerialNumber())
        count_own_pulses(box)
        follow_shaft(box)
        try:
            box.PWM_open(2)
        except pyzvr.Error as failure:
            print("Refused:", failure)


if __name__ == "__main__":
    main()
