"""Analog boxes behind a fake client, and what codes stand for."""

import contextlib
import struct

from fake_client import FakeClient

import pyzvr

OK = b"\0\0"
RATIO = 10 / 32768


def volts(code):
    return round(code * RATIO, 4)


@contextlib.contextmanager
def fake_device(model):
    with getattr(pyzvr, model)() as product:
        product.client_cmd = FakeClient(product)
        yield product


def samples(*codes):
    return struct.pack(f">{len(codes)}h", *codes)


def frames(box, *rows, key=None):
    box.data_pool_strm[key or (box.ai_strm_cmd, 0, 0)].put(b"".join(samples(*row) for row in rows))


def row(first, columns=8):
    return range(first, first + columns)
