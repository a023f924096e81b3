"""Relays: switched as digital outputs, and counted by the box.

    python3 examples/relays.py            starts a simulator
    python3 examples/relays.py HOST PORT  uses a device
"""

from __future__ import annotations

from _simulated import device  # first: it finds a build

import pyzvr

RELAYS, CONTACTS = 0, 1  # ports of the outputs and of the inputs
COUNTERS, ALL = 0, -1


def main() -> None:
    with device("TarnRelay") as place, pyzvr.TarnRelay() as box:
        box.connect(*place)
        pyzvr.check(box.Relay_open(COUNTERS))
        print("Counters:", box.Relay_read(COUNTERS, ALL))
        for step in range(1, 25):
            box.DO_writePort(RELAYS, step ^ step >> 1)  # one relay switches at a time
        print("Contacts:", box.DI_readPort(CONTACTS))
        print("Counters:", box.Relay_read(COUNTERS, ALL))
        box.DO_writePort(RELAYS, 0)
        print("Relay 4: ", *box.Relay_read(COUNTERS, 4))
        try:
            box.Relay_read(COUNTERS, 6)
        except pyzvr.RelayCounterIndexError as failure:
            print("Refused: ", failure)
        box.Relay_close(COUNTERS)


if __name__ == "__main__":
    main()
