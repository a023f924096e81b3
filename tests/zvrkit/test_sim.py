"""The simulator's starter: what it gives, how it ends, and what can be changed of a device while it runs."""

import contextlib
import fcntl
import json
import os
import select
import shutil
import socket
import subprocess
import sys
from pathlib import Path

import pytest
import zvrkit.sim
from zvrkit.sim import SimulatorError

import pyzvr

def is_gone(pid):
    try:
        return "State:\tZ" in Path(f"/proc/{pid}/status").read_text()  # nobody may have asked for its status yet
    except OSError:
        return True


@pytest.fixture
def place():
    with zvrkit.sim.device("TarnDio") as place:
        yield place


@pytest.fixture
def box(place):
    box = pyzvr.TarnDio()
    box.connect(*place.address, verbose=False)
    yield box
    box.close(verbose=False)


@pytest.mark.parametrize(
    ("model", "fields"),
    [("TarnDio", ("host", "port")), ("HeronAnalog", ("host", "data_port", "port")), ("Drone", ("serial_port",))],
)
def test_a_place_tells_where_it_is_and_ends_with_its_block(model, fields):
    with zvrkit.sim.device(model, "--serial", "SN7") as place:
        assert place.address == tuple(getattr(place, field) for field in fields)
        assert (place.model, place.serial) == (model, "SN7")
        assert not is_gone(place.said["pid"])
        with getattr(pyzvr, model)() as box:
            box.connect(*place.address, verbose=False)
    assert is_gone(place.said["pid"])
    place.close()  # nothing more happens
    with pytest.raises(SimulatorError, match="ended"):
        place.stall()


def test_what_cannot_start_says_why():
    with pytest.raises(SimulatorError, match="no model is called Nothing"):
        zvrkit.sim.device("Nothing")
    with pytest.raises(SimulatorError, match="zvr-sim-usb simulates it"):
        zvrkit.sim.device("SableDio")
    with pytest.raises(FileNotFoundError):
        zvrkit.sim.device("TarnDio", program="/nowhere/zvr-sim")


def test_a_simulator_that_dies_is_told_but_never_over_the_users_failure():
    with pytest.raises(SimulatorError, match="status -9"), zvrkit.sim.device("TarnDio") as place:
        place.process.kill()
        place.process.wait()
    with pytest.raises(ZeroDivisionError), zvrkit.sim.device("TarnDio") as place:
        place.process.kill()
        place.process.wait()
        1 / 0
    place = zvrkit.sim.device("TarnDio")
    place.kill()
    assert is_gone(place.said["pid"])


def test_a_simulator_ends_with_a_program_that_is_killed():
    code = ("import os, signal, zvrkit.sim; place = zvrkit.sim.device('TarnDio'); print(place.said['pid'], flush=True);"
            "os.kill(os.getpid(), signal.SIGKILL)")
    process = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True)
    simulator = int(process.stdout)
    ended = select.poll()
    with contextlib.suppress(ProcessLookupError):
        ended.register(os.pidfd_open(simulator), select.POLLIN)
        ended.poll(10_000)
    assert is_gone(simulator)


def test_the_simulator_is_found_beside_an_installed_package_and_on_the_path(tmp_path):
    package = tmp_path / "lib/python3.99/site-packages/zvrkit"
    package.mkdir(parents=True)
    shutil.copy(zvrkit.sim.__file__, package / "sim.py")
    (package / "__init__.py").touch()
    ask = [sys.executable, "-c", "import zvrkit.sim; print(zvrkit.sim.program())"]
    folders = {"beside": tmp_path / "bin", "path": tmp_path / "elsewhere"}
    found = {}
    for name, folder in reversed(folders.items()):
        folder.mkdir()
        (folder / "zvr-sim").write_text("#!/bin/sh\n")
        (folder / "zvr-sim").chmod(0o755)
        environment = {**os.environ, "PYTHONPATH": str(package.parent), "PATH": str(folders["path"])}
        found[name] = subprocess.run(ask, env=environment, capture_output=True, text=True, check=True).stdout.strip()
    assert found == {name: str(folder / "zvr-sim") for name, folder in folders.items()}
    environment["PATH"] = "/nowhere"
    shutil.rmtree(folders["beside"])
    nothing = subprocess.run(ask, env=environment, capture_output=True, text=True)
    assert "neither beside" in nothing.stderr and "make build" in nothing.stderr


def test_a_stalled_device_answers_again_when_it_may(box, place, call):
    place.stall()
    with pytest.raises(pyzvr.ReceivePacketTimeoutError):
        box.Sys_getSerialNumber(timeout=0.1)
    place.stall(False)
    assert call(box, "Sys_getSerialNumber") == "SIM00001"


@pytest.mark.parametrize("model", ["TarnDio", "HeronAnalog"])
def test_a_cut_ends_connections_and_new_ones_are_taken(model):
    with zvrkit.sim.device(model) as place, contextlib.ExitStack() as stack:
        clients = [stack.enter_context(socket.create_connection((place.host, port))) for port in place.address[1:] * 2]
        for client in clients:
            client.settimeout(0.2)
            while True:
                place.cut()  # what the device has taken by now
                with contextlib.suppress(TimeoutError):
                    assert client.recv(1) == b""
                    break
        other = stack.enter_context(getattr(pyzvr, model)())
        other.connect(*place.address, verbose=False)
        assert other.Sys_getSerialNumber() == "SIM00001"


def test_a_serial_line_that_is_cut_serves_its_next_client():
    with zvrkit.sim.device("Drone") as place, pyzvr.Drone() as drone:
        drone.connect(*place.address, verbose=False)
        place.cut()
        with pytest.raises(pyzvr.ReceivePacketTimeoutError):
            drone.Drone_getSerialNumber(timeout=0.1)
        drone.disconnect(verbose=False)
        drone.connect(*place.address, verbose=False)
        assert drone.Drone_getSerialNumber() != ""


def test_levels_reach_inputs_over_their_wires(box, place, call):
    box.DO_writePort(0, 0b000001)
    place.level(1, 3, True)
    place.level(1, 0, False)
    assert call(box, "DI_readPort", 1) == [0, 0, 0, 1, 0, 0, 0, 0]
    place.level(1, 3, None)
    place.level(1, 0, None)
    assert call(box, "DI_readPort", 1) == [1, 0, 0, 0, 0, 0, 0, 0]


def test_commands_are_refused_until_that_ends(box, place, call):
    place.refuse("SET_DEV_ALIAS", 42)
    place.refuse(pyzvr.READ_AND_GET_DI, 50)
    assert call(box, "Sys_setDeviceAlias", "rack") == pyzvr.errFirmwareCore
    with pytest.raises(IndexError):
        call(box, "DI_readPort", 1)
    place.refuse("SET_DEV_ALIAS", None)
    assert call(box, "Sys_setDeviceAlias", "rack") == 0 and call(box, "Sys_getDeviceAlias") == "rack"


def test_a_stream_goes_on_with_another_signal():
    with zvrkit.sim.device("TarnAnalog", "--wave", "*:constant:0:5") as place, pyzvr.TarnAnalog() as box:
        box.connect(*place.address, verbose=False)
        box.AI_open(0)
        assert box.AI_readOnDemand(0) == [5.0] * 8
        box.AI_setMode(0, 2)
        box.AI_setSamplingRate(0, 1000)
        box.AI_openStreaming(0)
        box.AI_startStreaming(0)
        assert box.AI_readStreaming(0, 100, 5)[-1] == [5.0] * 8
        place.wave(2, "constant", 0, 1.25)
        place.wave("*", "constant", 0, -2.5)
        # Rows of before may be on their way; none of them comes after one of the new signal.
        column = [row[0] for row in box.AI_readStreaming(0, 300, 5)]
        assert column == sorted(column, reverse=True) and column[-1] == -2.5
        assert box.AI_readOnDemand(0) == [-2.5] * 8


@pytest.mark.parametrize(("words", "reason"), [
    (("stall", "maybe"), "neither on nor off"), (("wave", "9:sine"), "channels are 0 to 7"),
    (("wave", "0:sine:-1"), "below 0"), (("level", 1, 9, 1), "no pin 9"), (("level", 7, 0, 1), "no pin 0 on port 7"),
    (("level", 1, 0, 2), "0 to 1"), (("refuse", "NOTHING", 1), "no command has the name"),
    (("refuse", "SET_DEV_ALIAS", 256), "255"),
    (("refuse", "OPEN_CAN", 1), "does not know"), (("dance",), "no such request"), (("cut", "now"), "no such request"),
    (('"\\',), "no such request"), ((), "no such request"),
])
def test_what_cannot_be_done_is_refused_and_harms_nothing(box, place, words, reason):
    with pytest.raises(SimulatorError, match=reason):
        place.request(*words)
    place.stall(False)
    assert box.Sys_getSerialNumber() == "SIM00001"


def test_a_terminal_steers_it_and_stays_as_it_is():
    keyboard, terminal = os.openpty()
    process = subprocess.Popen([zvrkit.sim.program(), "TarnDio"], stdin=terminal, stdout=subprocess.PIPE, text=True)
    process.stdout.readline()
    for line, ok in (("stall on", True), ("sit down", False)):
        os.write(keyboard, line.encode() + b"\n")
        assert json.loads(process.stdout.readline())["ok"] == ok
    assert not fcntl.fcntl(terminal, fcntl.F_GETFL) & os.O_NONBLOCK
    process.terminate()
    assert process.wait(10) == 0
    process.stdout.close()
    os.close(keyboard)
    os.close(terminal)


@pytest.mark.parametrize("end", ["</dev/null", "<&-"])
def test_a_simulator_without_input_serves_unless_it_is_to_end_with_it(end):
    command = f"exec {zvrkit.sim.program()} TarnDio"
    process = subprocess.Popen(["sh", "-c", f"{command} {end}"], stdout=subprocess.PIPE, text=True)
    said = json.loads(process.stdout.readline())
    with pyzvr.TarnDio() as box:
        box.connect(said["host"], said["command_port"], verbose=False)
        assert box.Sys_getSerialNumber() == said["serial"]
    process.terminate()
    assert process.wait(10) == 0
    process.stdout.close()
    assert subprocess.run(["sh", "-c", f"{command} --stdin-stop {end}"], capture_output=True, timeout=10).returncode == 0


USB_PROGRAM = """
import sys, warnings
import pyzvr
warnings.simplefilter("ignore")
with pyzvr.SableDio() as box:
    box.connect(sys.argv[1], verbose=False)
    box.DI_openPort(0)
    print("levels", box.DI_readPort(0), box.Sys_setDeviceAlias("rack"))
"""


@pytest.fixture
def bus():
    try:
        bus = zvrkit.sim.usb("SableDio:ONE", "SableDio:TWO")
    except SimulatorError as missing:
        pytest.skip(str(missing))
    with bus:
        yield bus


def test_devices_on_usb_are_seen_and_steered_each_by_itself(bus):
    one, two = bus.devices
    assert (one.model, one.serial, two.serial) == ("SableDio", "ONE", "TWO")
    one.level(0, 3, True)
    two.refuse("SET_DEV_ALIAS", 42)
    said = [bus.run([sys.executable, "-c", USB_PROGRAM, each.serial], capture_output=True, text=True, check=True).stdout
            for each in (one, two)]
    assert "levels [0, 0, 0, 1, 0, 0, 0, 0] 0" in said[0]
    assert f"levels [0, 0, 0, 0, 0, 0, 0, 0] {pyzvr.errFirmwareCore}" in said[1]
    one.unplug()
    with pytest.raises(SimulatorError, match="no device"):
        one.stall()
    assert bus.plug("SableCan", "NEW").request("transfers")["count"] == 0


def test_a_program_restarts_itself_beside_usb(bus, tmp_path):
    program = tmp_path / "program.py"
    program.write_text("import zvrkit.sim\nzvrkit.sim.restart_beside_usb('SableDio:ABC')\n"
                       "import sys, warnings, pyzvr\nwarnings.simplefilter('ignore')\n"
                       "print(sys.argv[1:], pyzvr.SableDio()._getAllUSBDevices())\nsys.exit(3)\n")
    done = subprocess.run([sys.executable, str(program), "word"], capture_output=True, text=True)
    assert (done.returncode, done.stderr) == (3, "")
    assert "['word'] [['ABC', 'Sable-Dio']]" in done.stdout


PLUGIN_TEST = """
def test_it(simulated_device):
    first, second = simulated_device("TarnDio", "--serial", "A"), simulated_device("TarnDio", "--serial", "B")
    print("pids", first.said["pid"], second.said["pid"])
    assert (first.serial, second.serial) == ("A", "B") and first.port != second.port
"""


def test_the_fixture_starts_devices_and_ends_them(tmp_path):
    (tmp_path / "test_it.py").write_text(PLUGIN_TEST)
    command = [sys.executable, "-m", "pytest", "-p", "zvrkit.pytest_plugin", "-p", "no:cacheprovider", "-rP", "-q", "test_it.py"]
    done = subprocess.run(command, cwd=tmp_path, capture_output=True, text=True)
    assert done.returncode == 0, done.stdout
    assert "1 passed" in done.stdout
    pids = next(line for line in done.stdout.splitlines() if line.startswith("pids")).split()[1:]
    assert all(is_gone(pid) for pid in pids)


def test_the_companion_needs_neither_the_library_nor_pytest():
    code = "import sys; sys.modules['pyzvr'] = sys.modules['pytest'] = None; import zvrkit, zvrkit.sim; print(zvrkit.EXAMPLES)"
    done = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True)
    assert (Path(done.stdout.strip()) / "demo.py").exists(), done.stderr
