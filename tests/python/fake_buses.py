"""A device with serial buses, behind a fake client."""

import warnings

import pytest
from fake_client import FakeClient

import pyzvr

U32 = pyzvr.convertU32To4U8


@pytest.fixture
def bus_box():
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")  # libusb is not where a user would have it
        product = pyzvr.SableCan()
    product.client_cmd = FakeClient(product)
    yield product
    product.close(verbose=False)


FRAME = [36, 96, 0, 0, 1, 2, 3, 0, 0, 0, 0, 0]


def push(bus_box, key, data):
    bus_box.data_pool_strm[key].put(bytes(data))
