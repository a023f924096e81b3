"""Leaving the interpreter with clients in Python, and with exceptions that are to end everything."""

import contextlib
import queue
import signal
import socket
import sys
import threading
import time

from exit_calls import WAITS
from exit_scenarios import connected, keep, made, say, scenario


def spin(peer):
    while True:
        pass


def nap(peer):
    time.sleep(0.005)
    return []


def sleep_long(peer):
    time.sleep(1000)


def from_socket(peer):
    return peer.recv(100)


def from_queue(peer):
    queue.Queue().get()


def refuse(peer):
    raise OSError("nothing to read")


READS = (spin, nap, sleep_long, from_socket, from_queue, refuse)
CLIENTS = ("plain", "recvAndSplitPacket of TCPClient", "recvPacket of TCPClient")

for kinds in CLIENTS:
    for reads in READS if kinds == "plain" else (spin, sleep_long, from_socket):
        for states in ("connected", "closed"):
            @scenario(f"client in Python: {kinds} by {reads.__name__}, {states}")
            def python_client(address, file, kind=kinds, read=reads, state=states):
                import pyzvr

                here, there = socket.socketpair()
                keep(there)
                reading = threading.Event()

                def receive(self, length):
                    reading.set()
                    return read(here)

                methods = {
                    "connect": lambda self, *address: True, "disconnect": lambda self: None,
                    "sendPacket": lambda self, data: None,
                    "recvPacket" if kind.startswith("recvPacket") else "recvAndSplitPacket": receive
                }
                box = keep(made("TarnDio"))
                box.client_cmd = type("Client", () if kind == "plain" else (pyzvr.TCPClient,), methods)()
                box.connect("anywhere", 7, verbose=False)
                assert reading.wait(10)
                if state == "closed":
                    box.close()


# Exceptions that are to end everything.


for steps in ("_putToDataPool", "_recvCMDThread", "_checkCommandType"):
    @scenario(f"sys.exit in {steps}", "TarnDio")
    def exit_in_step(address, file, step=steps):
        import pyzvr

        left = threading.Event()

        def leave(self, *arguments):
            left.set()
            sys.exit(3)  # ends its thread, as everywhere

        box = keep(type("TarnDio", (pyzvr.TarnDio,), {step: leave})())
        box.connect(*address, verbose=False)
        with contextlib.suppress(pyzvr.ReceivePacketTimeoutError):
            box.Sys_getSerialNumber(timeout=0.1)
        assert left.wait(10)


@scenario("sys.exit in the logger's writer")
def exit_in_writer(address, file):
    import pyzvr

    left = threading.Event()

    class Writer:
        def writerows(self, rows):
            left.set()
            sys.exit(3)

    log = keep(pyzvr.DataLogger())
    log.Logger_openFile(file, verbose=False)
    log.writer_csv = Writer()
    log.Logger_writeValue(1)
    assert left.wait(10)


@scenario("sys.exit in a wait of the main thread", "TarnDio")
def exit_from_signal(address, file):
    box = keep(connected("TarnDio", address))
    signal.signal(signal.SIGALRM, lambda *_: sys.exit(0))
    signal.setitimer(signal.ITIMER_REAL, 0.05)
    box._getReplyFromPool(5, 1000)


for waits in ("_getReplyFromPool 1000 s", "_getReplyFromPool_async", "FIFO get", "join", "AI_readStreamingBlock 1000 s",
              "broadcast"):
    @scenario(f"Ctrl-C in {waits}", WAITS[waits][0] if waits != "broadcast" else None, says="interrupted")
    def interrupted(address, file, wait=waits):
        model, call = WAITS[wait]
        box = keep(connected(model, address))
        signal.signal(signal.SIGINT, signal.default_int_handler)  # a job in the background would not hear it
        signal.signal(signal.SIGALRM, lambda *_: signal.raise_signal(signal.SIGINT))
        signal.setitimer(signal.ITIMER_REAL, 0.05)
        try:
            call(box)
        except KeyboardInterrupt:
            say("interrupted")
