"""A device with the services of a box, behind a fake client."""

import pytest
from fake_client import FakeClient

import pyzvr


def classes(*prefixes):
    return [getattr(pyzvr, prefix + ending) for ending in ("Module", "Module_async") for prefix in prefixes]


AllServices = type("AllServices", (pyzvr.Device, *classes(
    "System", "Network", "PWM", "Counter", "Encoder", "Wifi", "SystemAnalog", "SNTP", "SDCard", "Relay", "DPOT")), {})


@pytest.fixture
def services_box():
    product = AllServices()
    product.client_cmd = FakeClient(product)
    return product
