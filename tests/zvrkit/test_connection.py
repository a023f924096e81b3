"""A box that is kept connected: it comes back after a loss, with growing pauses, and nothing is done unasked."""

import queue
import subprocess
import sys
import threading
import time

import pytest
import zvrkit
import zvrkit.sim

import pyzvr


class Telling:
    """Takes what a watched box's callback is told."""

    def __init__(self):
        self.told = queue.Queue()

    def __call__(self, connected, reason):
        self.told.put((connected, reason))

    def next(self):
        return self.told.get(timeout=20)


@pytest.mark.parametrize("model", ["TarnDio", "HeronAnalog"])
def test_a_box_comes_back_after_each_loss(model):
    telling = Telling()
    with zvrkit.sim.device(model) as place, getattr(pyzvr, model)() as box:
        box.connect(*place.address, verbose=False)
        with zvrkit.reconnecting(box, callback=telling):
            for _ in range(3):
                assert box.Sys_getSerialNumber() == "SIM00001"
                place.cut()
                connected, reason = telling.next()
                assert connected is False and isinstance(reason, pyzvr.NetworkConnectionLostError)
                assert telling.next() == (True, None)
        place.cut()
        with pytest.raises(pyzvr.NetworkConnectionLostError):
            for _ in range(50):
                box.Sys_getSerialNumber(timeout=1)
        assert telling.told.empty()
        box.reconnect(verbose=False)


class Unreachable:
    """A box whose tries to reconnect fail as often as told."""

    killed = False

    def __init__(self, failures):
        self.failures = failures
        self.tries = []

    def isConnected(self):
        return False

    def reconnect(self, verbose=True):
        self.tries.append(time.monotonic())
        if len(self.tries) <= self.failures:
            raise pyzvr.NetworkConnectionError()

    def onConnectionLost(self, callback):
        self.lose = callback


def test_pauses_grow_up_to_the_longest_and_stop_ends_them():
    box, telling = Unreachable(5), Telling()
    with zvrkit.reconnecting(box, first=0.02, most=0.1, callback=telling):
        box.lose(pyzvr.NetworkConnectionLostError())
        assert [telling.next()[0] for _ in range(2)] == [False, True]
    pauses = [after - before for before, after in zip(box.tries, box.tries[1:])]
    assert all(pause >= least for pause, least in zip(pauses, [0.02, 0.04, 0.08, 0.1, 0.1]))
    dead = Unreachable(10**6)
    with zvrkit.reconnecting(dead, first=30):
        dead.lose(pyzvr.NetworkConnectionLostError())
        while not dead.tries:
            time.sleep(0.001)
    assert len(dead.tries) == 1  # the pause ended with the block


def test_a_closed_box_is_left_alone_and_bad_pauses_are_refused(caplog):
    box = Unreachable(10**6)
    with zvrkit.reconnecting(box, first=0.01) as keeping:
        box.killed = True
        box.lose(pyzvr.NetworkConnectionLostError())
        keeping._thread.join(10)
        assert not keeping._thread.is_alive()
    for first, most in ((0, 1), (2, 1), (-1, 5)):
        with pytest.raises(ValueError, match="first"):
            zvrkit.reconnecting(box, first, most)


class Trying(pyzvr.TarnDio):
    """Tells when it is tried to connect it anew; `goes_on` lets a try end."""

    def __init__(self):
        super().__init__()
        self.tried, self.goes_on = threading.Semaphore(0), threading.Event()
        self.goes_on.set()

    def reconnect(self, verbose=True):
        self.tried.release()
        assert self.goes_on.wait(10)
        super().reconnect(verbose)


def wait_until(condition):
    while not condition():
        time.sleep(0.001)


def test_a_box_that_is_disconnected_while_it_is_tried_is_left_alone_until_it_is_connected(caplog):
    caplog.set_level("INFO", "zvrkit.connection")
    telling = Telling()
    with zvrkit.sim.device("TarnDio") as place, Trying() as box:
        box.connect(*place.address, verbose=False)
        with zvrkit.reconnecting(box, first=0.01, most=0.02, callback=telling):
            place.kill()
            assert telling.next()[0] is False
            wait_until(lambda: "not reached" in caplog.text)
            box.disconnect(verbose=False)
            wait_until(lambda: "left alone" in caplog.text)
            with zvrkit.sim.device("TarnDio", "--port", str(place.address[1])) as again:
                tries = box.tried._value
                box.connect(*again.address, verbose=False)
                assert telling.next() == (True, None)
                assert box.tried._value == tries  # the connection is the user's
                again.cut()
                assert [telling.next()[0] for _ in range(2)] == [False, True]
                assert box.Sys_getSerialNumber() == "SIM00001"


def test_a_disconnect_under_a_try_is_not_undone(caplog):
    caplog.set_level("INFO", "zvrkit.connection")
    with zvrkit.sim.device("TarnDio") as place, Trying() as box:
        box.connect(*place.address, verbose=False)
        with zvrkit.reconnecting(box, first=0.01, most=0.02):
            assert box._disconnect_asked is False
            place.cut()
            assert box.tried.acquire(timeout=10)
            wait_until(box.isConnected)
            box.disconnect(verbose=False)
            assert box._disconnect_asked is True and not box.isConnected()
            box.connect(*place.address, verbose=False)
            assert box._disconnect_asked is False


def test_nothing_is_printed_by_a_program_without_logging():
    code = """
import queue, pyzvr, zvrkit, zvrkit.sim
told = queue.Queue()
with zvrkit.sim.device("TarnDio") as place, pyzvr.TarnDio() as box:
    box.connect(*place.address, verbose=False)
    with zvrkit.reconnecting(box, callback=lambda *state: told.put(state)):
        place.cut()
        print([told.get(timeout=20)[0] for _ in range(2)])
"""
    run = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, timeout=60)
    assert "[False, True]" in run.stdout and run.stderr == ""
