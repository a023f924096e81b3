"""Finding devices: over the pools, and on a network of the test's own."""

import asyncio
import json
import subprocess
import sys
from pathlib import Path

import pytest
from network_lab import DEVICES
from simulators import can_make_networks

import pyzvr

MAC = "02:0a:00:00:00:01"
MAC_BYTES = bytes([2, 10, 0, 0, 0, 1])


def record(address=(10, 0, 0, 2), serial=b"SN000001"):
    texts = [b"Tarn-Dio".ljust(32, b"\0"), serial, b"bench".ljust(16, b"\0"), b"application".ljust(32, b"\0")]
    return bytes([*address, 255, 255, 0, 0, *MAC_BYTES]) + b"".join(texts) + bytes([10, 0, 0, 1])


FIELDS = ["10.0.0.2", "255.255.0.0", MAC, "Tarn-Dio", "SN000001", "bench", "application", "10.0.0.1"]


class Radio:
    """A client that records broadcasts and lets the devices answer each of them."""

    def __init__(self, finder):
        self.finder, self.sent, self.answers = finder, [], []

    def sendBcstPacket(self, packet):
        frame = bytes(packet)
        self.sent.append(frame[3:-2])
        wide = frame[3] <= 48
        command = int.from_bytes(frame[3:5], "big") if wide else frame[3]
        self.finder._putToDataPool(command, b"\0" + b"what others ask")
        for answer in self.answers:
            self.finder._putToDataPool(command, b"\1" + answer)

    def disconnect(self):
        pass


class Impatient(pyzvr.DeviceFinder):
    """Collects for no time, with the sending and the sets as they are."""

    def _broadcastPacket(self, cmd, data_out):
        self.data_pool_bcst[cmd].clear()
        for _ in range(pyzvr.NUM_BCST_RETRIES):
            self.client_udp.sendBcstPacket(self._preparePacket(cmd, data_out))
        return self.data_pool_bcst[cmd]

    async def _broadcastPacket_async(self, cmd, data_out):
        return self._broadcastPacket(cmd, data_out)


@pytest.fixture
def finder():
    with Impatient() as finder:
        finder.client_udp = Radio(finder)
        yield finder


def test_records_in_both_forms(finder):
    async def find():
        return await finder.Bcst_enumerateNetworkDevices_async()

    assert asyncio.run(find()) == []
    assert finder.Bcst_enumerateNetworkDevices() == []
    assert finder.client_udp.sent == [b"\xfc\0"] * 6
    finder.client_udp.answers = [record(), record((10, 0, 0, 3), b"SN000002")]
    assert sorted(asyncio.run(find())) == [FIELDS, ["10.0.0.3", *FIELDS[1:4], "SN000002", *FIELDS[5:]]]
    with pytest.raises(IndexError):
        finder.Bcst_enumerateNetworkDevices()
    finder.client_udp.answers = [record()[:20]]
    with pytest.raises(IndexError):
        asyncio.run(find())


def test_commands_by_mac_address(finder, call):
    radio = finder.client_udp
    with pytest.raises(IndexError):
        call(finder, "Bcst_checkMACAndRing", MAC)
    assert radio.sent == [b"\x0a\x16\0" + MAC_BYTES + b"\1"] * 3
    radio.answers = [b"\1\0"]
    assert call(finder, "Bcst_checkMACAndRing", MAC) == b"\1\0"
    radio.sent.clear()
    with pytest.raises(IndexError):  # the same answer three times is one entry
        call(finder, "Bcst_checkMACAndSetIP", "10.0.0.9", MAC, "10.0.0.1")
    assert radio.sent == [b"\xfd\0" + bytes([10, 0, 0, 9, 255, 255, 255, 0]) + MAC_BYTES + bytes([10, 0, 0, 1])] * 3
    radio.answers = [b"\1\0", b"\2\0"]
    assert call(finder, "Bcst_checkMACAndSetIP", "10.0.0.9", MAC, "10.0.0.1", "255.0.0.0") == 0


@pytest.mark.parametrize("operation, arguments, error",
                         [("Bcst_checkMACAndReboot", (MAC,), TypeError),
                          ("Bcst_checkMACAndReboot", (5,), pyzvr.InputTypeNotCorrectError),
                          ("Bcst_checkMACAndRing", (None,), pyzvr.InputTypeNotCorrectError),
                          ("Bcst_checkMACAndRing", ("0:g",), ValueError),
                          ("Bcst_checkMACAndSetIP", ("1.2.3", MAC, "x"), OSError),
                          ("Bcst_checkMACAndSetIP", ("1.2.3.4", MAC, 5), pyzvr.InputTypeNotCorrectError),
                          ("Bcst_checkMACAndSetIP",
                           ("1.2.3.4", MAC, "1.2.3.4", b"\xff"), pyzvr.InputTypeNotCorrectError)])
def test_bad_arguments_send_nothing(finder, call, operation, arguments, error):
    with pytest.raises(error):
        call(finder, operation, *arguments)
    assert finder.client_udp.sent == []


def test_simulated_devices_on_a_network_of_their_own():
    if not can_make_networks():
        pytest.skip("network namespaces are not allowed here")
    lab = str(Path(__file__).with_name("labs") / "network_lab.py")
    run = subprocess.run(["unshare", "--net", sys.executable, lab], capture_output=True, text=True, timeout=90)
    assert run.returncode == 0, run.stderr
    report = json.loads(run.stdout)
    labels = {model: pyzvr.LABEL_DICT[model] for model, *_ in DEVICES}
    found = {fields[2]: fields for fields in report["found"]}
    assert len(report["found"]) == len(DEVICES)
    for model, address, mac, serial in DEVICES:
        assert found[mac][:2] in ([address, "255.255.255.0"], ["10.77.0.9", "255.255.255.0"])
        assert found[mac][3:5] == [labels[model], serial]
    assert report["taken"] == "NetworkConnectionError"
    assert report["serial"] == DEVICES[0][3]
    assert report["ring"] == [1, 0]
    assert report["nobody"] == report["move"] == report["blocking"] == "IndexError"
    assert report["moved"] == ["10.77.0.9", "255.255.255.0"]
    assert report["busy"][0] == "NetworkConnectionError"
    opened = report["opened"]
    assert "SIM-0002 (bench) at 10.77.0.3" in opened.pop("nobody")[1]
    assert sorted(opened.pop("bench")[1].removeprefix("at ").split(", ")) == ["10.77.0.2", "10.77.0.3"]
    assert opened == {
        "SIM-0002": ["HeronAnalog", "SIM-0002", True], "02-0A-00-00-00-02": ["HeronAnalog", "SIM-0002", True],
        "10.77.0.2": ["TarnDioLite", "SIM-0001", True], "rack": ["TarnDio", "SIM-0003", True]}
