"""A node of a CAN bus with two more: frames that come, frames that are answered, filters and error counters.

    python3 examples/can_bus.py         starts itself again beside a simulated box on such a bus
    python3 examples/can_bus.py SERIAL  uses a device by its serial number; "default" takes the first one
"""

from __future__ import annotations

import asyncio
import sys
import time
import warnings

from _simulated import run_beside_usb  # first: it finds a build

import pyzvr

PORT = 1


def frames_until(box: pyzvr.SableCan, wanted: int, seconds: float = 3) -> list[pyzvr.CANFrame]:
    """Frames up to one with the wanted identifier."""
    frames: list[pyzvr.CANFrame] = []
    limit = time.monotonic() + seconds
    while time.monotonic() < limit and not any(frame.id == wanted for frame in frames):
        frames += box.CAN_read(PORT, 1, 0.05)
    return frames


def talk(box: pyzvr.SableCan) -> None:
    """One node sends by itself ten times a second, the other one answers with the next identifier."""
    for frame in box.CAN_read(PORT, 3, 1):
        print("Comes by itself:", frame)
    print("Sent:           ", box.CAN_write(PORT, 0x20, [1, 2, 3]))
    print("Answer:         ", frames_until(box, 0x21)[-1])
    print("Remote frame:   ", box.CAN_write(PORT, 0x1ABCDEF0, [], remote=True, extended_id=True))
    print("Answer:         ", frames_until(box, 0x1ABCDEF0)[-1])


def filter_frames(box: pyzvr.SableCan) -> None:
    box.CAN_setRXFilterOrMask(PORT, 0, 0x31, False, False)  # a filter: this identifier only
    box.CAN_setRXFilteringOn(PORT, True)
    box.can_frame_queue.get_many(1000)
    for identifier in (0x20, 0x30):
        box.CAN_write(PORT, identifier, [identifier])
    seen = {frame.id for frame in frames_until(box, 0x31)}
    print("Filtered:       ", sorted(seen))
    box.CAN_setRXFilteringOn(PORT, False)
    sent, received, filtered, lost, failed, errors = box._CAN_getCounters(PORT)
    print(f"Counters:        {sent} sent, {received} received, {filtered} filtered out, {lost} lost, {failed} not sent, {errors} errors")


def fail(box: pyzvr.SableCan) -> None:
    """At another speed than the others, nobody acknowledges."""
    box.CAN_stop(PORT)
    box.CAN_setSpeed(PORT, 0)
    asyncio.run(box.CAN_start_async(PORT))
    print("Refused:        ", [box.CAN_write(PORT, 1, []) for _ in range(3)], "error counters", box._CAN_getErrors(PORT))


def main() -> None:
    run_beside_usb("SableCan", "--peer", "cyclic@can:1:10:0x100:2", "--peer", "responder@can:1:2")
    # Where no libusb lies beside the package, the system's own is used, with a warning.
    warnings.simplefilter("ignore", UserWarning)
    with pyzvr.SableCan() as box:
        box.connect(sys.argv[1] if len(sys.argv) > 1 else "default")
        box.CAN_open(PORT)
        box.CAN_setSpeed(PORT, 2)
        asyncio.run(box.CAN_start_async(PORT))  # the blocking form would wait for a reply that never comes
        talk(box)
        filter_frames(box)
        fail(box)
        box.CAN_close(PORT)


if __name__ == "__main__":
    main()
