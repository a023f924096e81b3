"""Every product class over its own kind of link, and what the tables say of it."""

import json
import subprocess
import sys
import warnings
from pathlib import Path

import pytest
from simulators import address_of, running_simulator, simulator_program
from exercise import exercise

import pyzvr

TRANSPORTS = {pyzvr.USBDevice: "usb", pyzvr.WifiDevice: "wifi", pyzvr.ETHDevice: "ethernet", pyzvr.UARTDevice: "serial"}
BLOCKING_FIRST = {pyzvr.ETHDevice, pyzvr.UARTDevice}


def link_of(name):
    return next(link for device, link in TRANSPORTS.items() if issubclass(getattr(pyzvr, name), device))


def over_usb(name):
    command = [simulator_program("zvr-sim-usb"), name, "--", sys.executable, str(Path(__file__).with_name("exercise.py"))]
    run = subprocess.run([*command, name, "default"], capture_output=True, text=True, timeout=60)
    assert run.returncode == 0, run.stderr
    return json.loads(run.stdout), "SIM00001"


def over_another_link(name):
    with running_simulator(name) as simulator:
        return exercise(name, *address_of(simulator)), address_of(simulator)[0]


@pytest.mark.parametrize("name", pyzvr.HANDLE_LIST)
def test_every_model_lives_over_its_own_link(name):
    label = pyzvr.LABEL_DICT[name]
    report, place = over_usb(name) if link_of(name) == "usb" else over_another_link(name)
    connection = [f"Connected to {label} ({place})", f"Disconnected from {label} ({place})"]
    assert report["lines"] == [f"Opened handle ({label})", *connection * 3, f"Closed handle ({label})"]
    assert report["seen"][0] == report["seen"][1] and report["seen"][0][1] == "SIM00001"
    assert name == "Drone" or report["seen"][0][0] == label
    assert report["alive"] == []
    missing = 'External library "libusb-1.0.dll" not found at indicated path'
    assert all(missing in warning for warning in report["warnings"]) and bool(report["warnings"]) == (link_of(name) == "usb")


def test_tables_and_classes_agree():
    models = pyzvr.HANDLE_LIST
    assert set(pyzvr.PRODUCT_LIST) == {*models, "Bollard"} and not hasattr(pyzvr, "Bollard")
    assert set(pyzvr.HANDLE_DICT) == set(pyzvr.HANDLE_PROPERTIES) == set(models)
    assert set(pyzvr.LABEL_DICT) == {*models, "DeviceFinder", "DataLogger"}
    defaults = {"usb": "default", "ethernet": "192.168.1.110", "wifi": "192.168.5.79", "serial": "COM5"}
    for name in models:
        assert pyzvr.HANDLE_DICT[name] == defaults[link_of(name)]
        with getattr(pyzvr, name)() as product:
            assert product._getDeviceName() == pyzvr.LABEL_DICT[name]
            for function, port in pyzvr.HANDLE_PROPERTIES[name].items():
                if function in ("DI", "DO"):
                    assert port in getattr(product, f"{function.lower()}_dict")
            assert not hasattr(product, "di_dict") or product.dio_num_pins_per_port == (12 if "Lattice" in name else 8)
    root = Path(__file__).resolve().parents[2]
    for category in pyzvr.CATEGORY_CONSOLE_LIST:
        for title in pyzvr.CATEGORY_CONSOLE_DICT[category]:
            assert (root / pyzvr.EXAMPLE_CONSOLE_DICT[title]).is_file()


@pytest.mark.parametrize("name", [name for name in pyzvr.HANDLE_LIST if name.startswith("Sable")])
def test_no_two_functions_have_the_same_line(name):
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")  # libusb is not where a user would have it
        product = getattr(pyzvr, name)()
    with product:
        maps = [getattr(product, field, {}) for field in ("uart_dict", "I2C_dict", "SPI_dict", "can_dict", "thermal_dict")]
        lines = [line for ports in maps for entries in ports.values() for line in entries]
        assert len(lines) == len(set(lines)) and (lines != []) == (name != "SableSink")
        assert all(pin in product.di_dict[port] for port, pin in lines)


@pytest.mark.parametrize("name", ["SableDio", "HeronMixed", "TarnRelay", "Lattice", "LatticeLite"])
def test_constructors_run_in_the_order_of_the_family(name, monkeypatch):
    cls, order = getattr(pyzvr, name), []
    for base in cls.__mro__[1:]:
        if base.__name__.endswith(("Module", "Module_async", "Device")) and "__init__" in vars(base):
            def traced(self, *args, _base=base, _init=vars(base)["__init__"]):
                order.append(_base.__name__)
                _init(self, *args)

            monkeypatch.setattr(base, "__init__", traced)
    cls().close()
    assert order[0] == {"usb": "USBDevice", "wifi": "WifiDevice", "ethernet": "NetworkDevice"}[link_of(name)]
    modules = [each for each in order if "Module" in each]
    async_first = name in ("Lattice", "LatticeLite") or link_of(name) != "ethernet"
    plain = [each for each in modules if not each.endswith("_async")]
    variants = [each + "_async" for each in plain]
    assert modules == (variants + plain if async_first else plain + variants) and "DIOModule" in plain


def test_wifi_model_connects_once_and_recovers_from_a_failed_data_side():
    with running_simulator("HeronAnalog") as simulator, pyzvr.HeronAnalog() as box:
        host, data, command = address_of(simulator)
        box.connect(host, data, command, verbose=False)
        first = box.client_data.socket
        box.connect(host, data, command)
        assert box.client_data.socket is first and box.Sys_getSerialNumber() == "SIM00001"
        box.disconnect(verbose=False)
        with pytest.raises(pyzvr.NetworkConnectionError):
            box.connect(host, 1, command)
        assert box.connect_status_cmd and not box.connect_status_data and box.Sys_getSerialNumber() == "SIM00001"
        box.disconnect()
        box.connect(host, data, command, verbose=False)
        assert box.connect_status_data and box.Wifi_readRSSI() < 0


def test_usb_models_need_the_usb_simulator():
    run = subprocess.run([simulator_program("zvr-sim"), "SableDio"], capture_output=True, text=True, timeout=10)
    assert run.returncode == 2 and "zvr-sim-usb" in run.stderr
