"""A place that takes no connections for now: a connect to it waits."""

import queue
import socket
import threading
from pathlib import Path

import pytest
from queue_support import until

SYN_SENT = "02"


class Crowded:
    """Its queue of connections is full from `fill` to `admit`."""

    def __init__(self):
        self.listener = socket.create_server(("127.0.0.1", 0), backlog=0)
        self.address = self.listener.getsockname()
        self.arrived = queue.Queue()
        self.crowd, self.known = [], set()

    def fill(self):
        self.crowd = [socket.socket() for _ in range(4)]
        for each in self.crowd:
            each.setblocking(False)
            each.connect_ex(self.address)
        self.known = {each.getsockname() for each in self.crowd}

    def waiting(self):
        """How many connections of others wait to be made."""
        port = f"{self.address[1]:04X}"
        mine = {f"{name[1]:04X}" for name in self.known}
        lines = [line.split() for line in Path("/proc/net/tcp").read_text().splitlines()[1:]]
        return sum(state == SYN_SENT and remote.endswith(":" + port) and local.split(":")[1] not in mine
                   for _, local, remote, state, *_ in lines)

    def admit(self):
        """Takes all connections; those of others are put into `arrived`."""
        for each in self.crowd:
            each.close()
        threading.Thread(target=self._accept, daemon=True).start()

    def _accept(self):
        while True:
            try:
                connection, name = self.listener.accept()
            except OSError:
                return
            if name not in self.known:
                self.arrived.put(connection)

    def admit_all_that_wait(self):
        """Nobody waits behind it; tells how many have arrived."""
        self.admit()
        until(lambda: not self.waiting())
        return self.arrived.qsize()

    def close(self):
        for each in self.crowd:
            each.close()
        self.listener.shutdown(socket.SHUT_RDWR)
        self.listener.close()


@pytest.fixture
def crowded():
    crowded = Crowded()
    crowded.fill()
    yield crowded
    crowded.close()
