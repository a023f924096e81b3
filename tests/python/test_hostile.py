"""What nobody should do to the library, and what it must not do then: crash, hang, or speak in another library's words."""

import concurrent.futures
import copy
import json
import os
import pickle
import subprocess
import sys
from pathlib import Path

import pytest
from fake_client import fake_device
from own_process import run_apart

import pyzvr

LAB = str(Path(__file__).with_name("labs") / "hostile_lab.py")
SECONDS = float(os.environ.get("HOSTILE_SECONDS", "8"))  # of each walk; more for a longer search
SEEDS = range(int(os.environ.get("HOSTILE_SEED", "1")), int(os.environ.get("HOSTILE_SEED", "1")) + 3)


def walk(seed, folder):
    path = folder / f"{seed}.txt"
    run = subprocess.run(
        [sys.executable, LAB, str(path), str(seed), str(SECONDS)],
        capture_output=True,
        text=True,
        timeout=SECONDS * 2 + 60)
    return run, path.read_text().strip() if path.exists() else "nothing"


@pytest.fixture(scope="module")
def walks(tmp_path_factory):
    with concurrent.futures.ThreadPoolExecutor(len(SEEDS)) as executor:
        folders = {seed: tmp_path_factory.mktemp(f"walk{seed}") for seed in SEEDS}
        yield {seed: executor.submit(walk, seed, folder) for seed, folder in folders.items()}


@pytest.mark.parametrize("seed", SEEDS)
def test_no_call_of_anything_with_anything_crashes_or_hangs(walks, seed):
    run, last = walks[seed].result()
    assert run.returncode == 0, f"it ended by {run.returncode} in call {last}\n{run.stderr[-3000:]}"
    report = json.loads(run.stdout)
    assert report["wrong"] == {} and report["made"] > 500, json.dumps(report["wrong"], indent=1)
    print(f"{report['made']} calls")


# Single ones, each of which has ended the process, hung or spoken wrongly.

SURVIVED = {
    "gate without constructor": "pyzvr.Gate.__new__(pyzvr.Gate).acquire()",
    "block without constructor": "block = pyzvr.SampleBlock.__new__(pyzvr.SampleBlock); print(block.shape)",
    "view of a block without constructor": "memoryview(pyzvr.SampleBlock.__new__(pyzvr.SampleBlock))",
    "client without constructor": "pyzvr.TCPClient.__new__(pyzvr.TCPClient)._splitPacket()",
    "USB client without constructor": "pyzvr.USBClient.__new__(pyzvr.USBClient).recvPacket(64)",
    "device without constructor": "pyzvr.TarnDio.__new__(pyzvr.TarnDio).Sys_getSerialNumber(0.01)",
    "bus without constructor": "pyzvr.SableCan.__new__(pyzvr.SableCan).CAN_read(1, 1)",
    "logger without constructor": "pyzvr.DataLogger.__new__(pyzvr.DataLogger).Logger_writeValue(1)",
    "frame without constructor": "print(pyzvr.CANFrame.__new__(pyzvr.CANFrame))",
    "CAN body on None": "box = pyzvr.SableCan(); box.can_lock.release(); box._CANStreamThread(None)",
    "UART body on None": "pyzvr.SableDio()._UARTStreamThread(None, None, None)",
    "AI body on None": "box = pyzvr.TarnAnalog(); box.ai_lock.release(); box._AIStreamThread([None], [None])",
    "logger's body on None": "log = pyzvr.DataLogger(); log.save_data_lock.release(); log._saveStreamingDataThread(None)",
    "FIFO of None": "pyzvr.Fifo.get(None)", "size of None": "pyzvr.Fifo.qsize(None)",
    "gate of None": "pyzvr.Gate.acquire(None)",
    "runtime away": "box = pyzvr.TarnDio(); box._runtime = None; box.Sys_getSerialNumber(0.01)",
    "runtime away, pools": "box = pyzvr.TarnDio(); box._runtime = None; box.data_pool_echo; box._putToDataPool(5, b'')",
    "runtime away, close": "box = pyzvr.TarnDio(); box._runtime = None; box.close()",
    "runtime another's": "box = pyzvr.TarnDio(); box._runtime = pyzvr.Fifo(3); box.Sys_getSerialNumber(0.01)",
    "runtime deleted": "box = pyzvr.TarnDio(); del box._runtime; box.close()",
    "constructor again": "box = pyzvr.SableCan()\nfor _ in range(20): box.__init__()\nbox.close()",
    "base constructor again": "box = pyzvr.SableCan()\nfor _ in range(20): pyzvr.Device.__init__(box); pyzvr.CANModule.__init__(box, {1: [(0, 0)]})\nbox.close()",
    "no chip selects": "box = pyzvr.Lattice(); box._echoPacketWithRetry = lambda *a, **k: b'\\0\\0'; box.AI_enableCS(1, [])\n"
    "import array; box.AI_readStreamingInto(1, array.array('d', bytes(800)), 0.01)",
    "no channels": "box = pyzvr.TarnAnalog(); box.ai_num_channels = 0; box.ai_lock.release(); box.ai_data_queue_list[0].put(b'ab'); box.AI_readStreamingBlock(0, 5, 0.05)",
    "many channels": "box = pyzvr.TarnAnalog(); box.ai_num_channels = 2**62; box.ai_lock.release(); box.ai_data_queue_list[0].put(b'ab'); box.AI_readStreamingBlock(0, 5, 0.05)",
    "many rows": "pyzvr.TarnAnalog().AI_readStreaming(0, 2**62, 0.01)", "many bits": "pyzvr.clearBit('x', 2**63)",
    "many bits of None": "pyzvr.fillBit(None, 2**63)", "huge indices": "pyzvr.convertIndexListToInt([2**64])",
    "much to adjust": "pyzvr.adjustDataList(b'', 2**31)",
    "much to read": "import socket; a = socket.create_server(('127.0.0.1', 0)); c = pyzvr.TCPClient(); c.connect(*a.getsockname()); b, _ = a.accept(); b.sendall(b'x'); c.recvPacket(2**31)",
    "constructor in a field": "class F(float):\n    def __float__(self): box.__init__(); return 1.0\nbox = pyzvr.TarnAnalog(); box.ai_ratio = F(); box.AI_readStreaming(0, 1, 0.01)",
    "constructor in a flag": "class F:\n    def __bool__(self): box.__init__(); return True\nbox = pyzvr.TarnAnalog(); box.killed = F(); box.close()",
    "object in its own pool": "box = pyzvr.TarnDio(); box.data_pool_strm[box].put(box); del box; import gc; gc.collect()",
}


@pytest.fixture(scope="module")
def survivors(request):
    chosen = [
        item.callspec.params["name"] for item in request.session.items
        if getattr(item, "originalname", "").startswith("test_process_survives")
    ]
    with concurrent.futures.ThreadPoolExecutor(2) as executor:
        yield {name: executor.submit(single, name) for name in chosen}


def single(name):
    code = "import hostile_lab, pyzvr, warnings\nhostile_lab.limit_memory()\nwarnings.simplefilter('ignore')\n" + SURVIVED[
        name]
    try:
        return run_apart(code, folder=Path(LAB).parent, patience=15)
    except subprocess.TimeoutExpired:
        return None


@pytest.mark.parametrize("name", SURVIVED)
def test_process_survives(survivors, name):
    run = survivors[name].result()
    assert run, "it hung"
    assert run.returncode in (0, 1), run.stderr
    for text in ("Unable to cast", "std::", "vector::", "map::", "bad_alloc", "SystemError"):
        assert text not in run.stderr, run.stderr


WRONG_TYPES = [  # a call, and the argument that its error names
    (lambda box: pyzvr.TarnDio().connect(None), "ip_addr"),
    (lambda box: pyzvr.TarnDio().connect("127.0.0.1", "7"), "port"),
    (lambda box: box.AI_readStreaming(0, 1e3), "num_samples"),
    (lambda box: box.AI_readStreaming(0, "5"), "num_samples"), (lambda box: box.AI_readStreaming(0, 1, "x"), "delay"),
    (lambda box: box._preparePacket("x"), "cmd"), (lambda box: box._preparePacket(122, 5), "data_out"),
    (lambda box: box._getReplyFromPool(5, "x"), "timeout"),
    (lambda box: box._echoPacketWithRetry(122, [], "x"), "timeout"),
    (lambda box: box._getStreamingFromPool(box.data_pool_strm[1], "x", 0.1), "num_samples"),
    (lambda box: box._putToDataPool("x", b""), "cmd"), (lambda box: pyzvr.TCPClient().connect(5, 7), "ip_addr"),
    (lambda box: pyzvr.TCPClient().connect("127.0.0.1", None), "port"),
    (lambda box: pyzvr.UARTClient().connect(5, 9600), "port"),
    (lambda box: pyzvr.UARTClient().connect("/dev/null", "fast"), "baudrate"),
    (lambda box: pyzvr.TCPClient().recvPacket("x"), "length"),
    (lambda box: pyzvr.checkFirmwareError("x"), "error_code"),
    (lambda box: box.Sys_getSerialNumber(timeout="x"), "timeout"),
    (lambda box: box.AI_readStreamingBlock(0, None), "num_samples"),
]


@pytest.mark.parametrize("number", range(len(WRONG_TYPES)))
def test_wrong_types_are_told_by_the_argument_s_name(number):
    act, argument = WRONG_TYPES[number]
    with fake_device("TarnAnalog") as box, pytest.raises(TypeError, match=rf"\b{argument}\b"):
        act(box)


def test_can_read_wants_a_number():
    with fake_device("SableCan") as box, pytest.raises(TypeError, match="num_frames"):
        box.CAN_read(1, "x")


@pytest.mark.parametrize("status", [14, 255, 256, 2**40, 2**70, -1])
def test_any_other_status_is_another_error(status):
    with pytest.raises(pyzvr.FirmwareOtherError):
        pyzvr.checkFirmwareError(status)


class Numbered:
    def __init__(self, number):
        self.number = number

    def __index__(self):
        return self.number


def sequences():
    import array

    yield from ([1, 2], (1, 2), b"\1\2", bytearray(b"\1\2"), memoryview(b"\1\2"), array.array("i", [1, 2]),
                array.array("H", [1, 2]), memoryview(array.array("i", [1, 2])), memoryview(b"\1\0\2\0")[::2],
                range(1, 3), [True, Numbered(2)])
    numpy = pytest.importorskip("numpy") if "numpy" in sys.modules else None
    if numpy:
        yield from (numpy.array([1, 2]), numpy.array([1, 2], numpy.uint8), numpy.array([[1, 0], [2, 0]])[:, 0],
                    [numpy.uint8(1), numpy.int64(2)])


def test_numbers_in_sequences_are_read_item_by_item():
    try:
        import numpy

        assert numpy
    except ImportError:
        pass  # what the host has will do
    for data in sequences():
        with fake_device("TarnDio") as box:
            assert box._preparePacket(122, data) == [2, 0, 3, 122, 1, 2, 13, 10], repr(data)
            box._sendPacketWithoutReply(122, data)
            assert box.client_cmd.sent == [(122, b"\1\2")], repr(data)
        assert pyzvr.convert2U8ToU16(data) == 258, repr(data)


# Copies.


def kinds():
    for name, class_ in sorted(vars(pyzvr).items()):
        if isinstance(class_, type) and not issubclass(class_, Warning):
            yield name


PICKLED = """
import copy, io, pickle, sys, warnings, pyzvr
warnings.simplefilter("ignore")
sys.stdout = io.StringIO()
seen = []
for name in sys.argv[1:]:
    class_ = getattr(pyzvr, name)
    for make in (class_, lambda: class_(5), lambda: class_.__new__(class_)):
        try:
            made = make()
        except Exception:
            continue
        for protocol in range(pickle.HIGHEST_PROTOCOL + 1):
            for act in (lambda: pickle.loads(pickle.dumps(made, protocol)), lambda: copy.copy(made), lambda: copy.deepcopy(made)):
                sys.stderr.write(f"{name} {protocol}\\n")
                try:
                    act()
                except Exception as error:
                    if type(error) in (SystemError, RuntimeError, MemoryError):
                        seen.append(f"{name}, {protocol}: {error!r}")
sys.__stdout__.write(repr(seen))
"""


def test_no_object_crashes_when_it_is_pickled_or_copied():
    names = list(kinds())
    parts = [names[begin::8] for begin in range(8)]
    with concurrent.futures.ThreadPoolExecutor(2) as executor:
        runs = list(executor.map(lambda part: run_apart(PICKLED, *part), parts))
    crashed = [(run.returncode, run.stderr.splitlines()[-12:]) for run in runs if run.returncode]
    assert crashed == []
    assert [run.stdout for run in runs] == ["[]"] * 8


@pytest.mark.parametrize(
    "make", [lambda: pyzvr.TarnDio(), lambda: pyzvr.Drone(), lambda: pyzvr.DeviceFinder(), lambda: pyzvr.DataLogger()],
    ids=["TarnDio", "Drone", "DeviceFinder", "DataLogger"])
def test_what_holds_a_link_is_not_copied_and_says_what_to_do(make):
    box = make()
    for act in (copy.copy, copy.deepcopy, *(lambda box, protocol=protocol: pickle.dumps(box, protocol)
                                            for protocol in range(pickle.HIGHEST_PROTOCOL + 1))):
        with pytest.raises(
                TypeError,
                match=rf"(?is)(?=.*\b{type(box).__name__}\b).*\b(make|create|construct|connect|instead|own)\b"):
            act(box)
    getattr(box, "close", getattr(box, "_Logger_close", None))(verbose=False)


def test_values_are_copied_and_pickled():
    for frame in (pyzvr.CANFrame(291, data=[1, 2, 3]), pyzvr.CANFrame(2**28, True, True)):
        frame.note = "kept"
        for again in (
            copy.copy(frame),
            copy.deepcopy(frame),
            *(pickle.loads(pickle.dumps(frame, protocol)) for protocol in range(pickle.HIGHEST_PROTOCOL + 1)),
        ):
            assert again == frame
            assert again is not frame
            assert again.frame_in_list == frame.frame_in_list
            assert again.note == "kept"
    for error in (pyzvr.InputDataNotInRangeError("port"), pyzvr.ReceivePacketTimeoutError(), pyzvr.Error(5, "five")):
        for protocol in range(pickle.HIGHEST_PROTOCOL + 1):
            again = pickle.loads(pickle.dumps(error, protocol))
            assert (type(again), str(again), again.code, again.msg) == (type(error), str(error), error.code, error.msg)
