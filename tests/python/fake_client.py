"""A client that records what is sent and gives replies of a script, and products behind it."""

import contextlib

import pyzvr


class FakeClient:
    """A client that records what is sent and files the replies that a script gives."""

    def __init__(self, product):
        self.product = product
        self.sent = []
        self.replies = {}

    def sendPacket(self, int_list):
        frame = bytes(int_list)
        assert frame[0] == 2
        assert frame[-2:] == b"\r\n"
        assert int.from_bytes(frame[1:3], "big") == len(frame) - 5
        wide = frame[3] < 48  # no code of two bytes begins with 48, OPEN_CAN itself
        command = int.from_bytes(frame[3:5], "big") if wide else frame[3]
        data = frame[5 if wide else 4 : -2]
        self.sent.append((command, data))
        if command in self.replies:
            reply = self.replies[command]
            self.product._putToDataPool(command, reply(data) if callable(reply) else bytes(reply))


@contextlib.contextmanager
def fake_device(model, **replies):
    """A product behind a fake client; `replies` are by the name of the command."""
    with getattr(pyzvr, model)() as product:
        product.client_cmd = FakeClient(product)
        product.client_cmd.replies = {getattr(pyzvr, command): reply for command, reply in replies.items()}
        yield product


class BenchDio(pyzvr.Device, pyzvr.SystemModule, pyzvr.DIOModule, pyzvr.SystemModule_async, pyzvr.DIOModule_async):
    """A small digital box behind whatever client a test brings."""

    def __init__(self):
        pyzvr.Device.__init__(self)
        for module in (pyzvr.DIOModule, pyzvr.DIOModule_async):
            module.__init__(self, {0: [0, 1, 2, 3, 4, 5, 6, 7], 1: [0, 1]}, {0: [0, 1, 2, 3, 4, 5, 6, 7]}, 8)
        self.client_cmd = FakeClient(self)
