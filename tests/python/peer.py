"""A TCP peer under a test's control: what it gets goes to a queue, what it sends is up to the test."""

import queue
import socket
import struct
import threading

SERIAL_REPLY = b"\x02\x00\x09\x7aSN000001\r\n"


class Peer:
    """Listens on a free port of the loopback address and serves one connection at a time."""

    def __init__(self, answer=None):
        self.answer = answer
        self.received = queue.Queue()
        self.connections = queue.Queue()
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.port = self.listener.getsockname()[1]
        threading.Thread(target=self._accept, daemon=True).start()

    def _accept(self):
        while True:
            try:
                connection, _ = self.listener.accept()
            except OSError:
                return
            connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            self.connections.put(connection)
            if self.answer:
                threading.Thread(target=self._serve, args=(connection,), daemon=True).start()

    def _serve(self, connection):
        try:
            while data := connection.recv(4096):
                self.received.put(data)
                self.answer(connection, data)
        except OSError:
            pass

    def connection(self):
        return self.connections.get(timeout=5)

    def close(self):
        # Closing alone would leave the accepting thread in its call, and the port open.
        self.listener.shutdown(socket.SHUT_RDWR)
        self.listener.close()


def answer_serial(connection, data):
    """Answers each request in the data as one for the serial number."""
    connection.sendall(SERIAL_REPLY * data.count(b"\x7a\r\n"))


def reset(connection):
    """Ends a connection with a reset instead of an orderly end."""
    connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
    connection.close()


def finish(connection):
    """Ends a connection in order, although another thread may be reading from it."""
    connection.shutdown(socket.SHUT_RDWR)
    connection.close()
