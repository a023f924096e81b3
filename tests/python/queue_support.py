"""What tests of queues and of those who fill them share."""

import contextlib
import threading
import time

import pyzvr

PATIENCE = 10  # seconds for what is to happen at once


def outcome(action, *arguments, **named):
    """What a call gives: its value, or the kind of its error."""
    try:
        return action(*arguments, **named)
    except Exception as error:
        return type(error)


def until(condition):
    """Waits for what another thread does."""
    end = time.monotonic() + PATIENCE
    while not condition():
        assert time.monotonic() < end
        time.sleep(0.001)


@contextlib.contextmanager
def running(body, *arguments):
    """A body of a thread, called by hand; what it raises comes out at the end."""
    errors = []

    def run():
        try:
            body(*arguments)
        except BaseException as error:
            errors.append(error)

    thread = threading.Thread(target=run, daemon=True)
    thread.start()
    yield thread
    thread.join(PATIENCE)
    assert not thread.is_alive()
    if errors:
        raise errors[0]


A, B = object(), object()
LOCKS = {"Lock": threading.Lock, "Gate": pyzvr.Gate, "Semaphore": lambda: threading.Semaphore(1)}


def held(kind):
    lock = LOCKS[kind]()
    lock.acquire()
    return lock


IDLE = bytes([0, 8, 0x11, 0x11, 0x11, 0x11])
OPENED = {
    "GET_PIN_MODE_OF_SLOT": IDLE,
    **dict.fromkeys(("OPEN_UART", "CLOSE_UART", "STOP_UART_READING", "OPEN_CAN", "CLOSE_CAN", "STOP_CAN", "OPEN_AI", "CLOSE_AI"), b"\1\0")
}
FRAMES = [pyzvr.CANFrame(number, data=[number]) for number in range(1, 11)]
RECORDS = bytes(byte for frame in FRAMES for byte in frame.frame_in_list)
ROW = [0.0, 0.0003, -0.0003, 9.9997, -10.0, 0.0, 0.0, 0.0]
SAMPLES = b"".join(code.to_bytes(2, "big", signed=True) for code in (0, 1, -1, 32767, -32768, 0, 0, 0))
