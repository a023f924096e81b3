"""Signals, interpreter exit and the module itself, in processes of their own."""

import inspect
import os
import subprocess
import sys
from pathlib import Path

import pytest
from peer import Peer, answer_serial

import pyzvr

HEAD = "import pyzvr, sys, threading, asyncio\nport = int(sys.argv[1])\nd = pyzvr.TarnDio()\nd.connect('127.0.0.1', port)\n"


@pytest.fixture
def peer():
    peer = Peer(answer_serial)
    yield peer
    peer.close()


def start(code, port):
    return subprocess.Popen([sys.executable, "-X", "dev", "-c", HEAD + code, str(port)], stdout=subprocess.PIPE,
                            stderr=subprocess.PIPE, text=True)


@pytest.mark.parametrize("code", [
    "d.Sys_getSerialNumber()",
    "globals().pop('d')",
    "d.close()",
    "threading.Thread(target=d._getReplyFromPool, args=(1, 1000), daemon=True).start()",
    "asyncio.run(d.Sys_getSerialNumber_async())",
    "import atexit; atexit.register(lambda: d.Sys_getSerialNumber(timeout=0.1))",
    "d.cycle = d",
    "sys.exit(0)",
])
def test_leaving_the_interpreter_is_silent_and_clean(peer, code):
    process = start(code, peer.port)
    _, errors = process.communicate(timeout=20)
    assert (process.returncode, errors) == (0, "")


@pytest.mark.parametrize("wait", [
    "d._echoPacketWithRetry(200, [], 60)", "d._getReplyFromPool(200, 60)", "d.data_pool_strm[1].get()",
    "d._getStreamingFromPool(d.data_pool_strm[1], 1, 60)", "d.recv_cmd_thread.join()",
    "d._broadcastPacket(252, [0])", "d.client_cmd.recvPacket(1)",
])
def test_ctrl_c_interrupts_a_wait_and_leaves_the_connection_usable(peer, wait):
    code = f"""
import os, signal
signal.signal(signal.SIGINT, signal.default_int_handler)  # a background job would not hear it
class Udp:
    def sendBcstPacket(self, packet): pass
d.client_udp = Udp()
if "recvPacket" in {wait!r}: d.recv_cmd_lock.acquire()
threading.Timer(0.2, os.kill, (os.getpid(), signal.SIGINT)).start()
try:
    {wait}
except KeyboardInterrupt:
    d.recv_cmd_lock.release()
    print("interrupted", d.Sys_getSerialNumber())
"""
    out, errors = start(code, peer.port).communicate(timeout=20)
    assert "interrupted SN000001" in out, errors


def test_the_module_exports_one_function():
    library = Path(pyzvr.__file__)
    assert library.name.startswith("__init__.")
    assert (library.parent / "py.typed").exists()
    symbols = subprocess.run(["nm", "-D", "--defined-only", library], capture_output=True, text=True, check=True).stdout
    names = [line.split()[-1] for line in symbols.splitlines()]
    assert [name for name in names if not name.startswith("_ZSt") and "@" not in name] == ["PyInit_pyzvr"]


def callables():
    operation = type(pyzvr.checkFirmwareError)
    for name, value in vars(pyzvr).items():
        if isinstance(value, operation):
            yield name, value
        if inspect.isclass(value):
            for member, method in vars(value).items():
                if isinstance(method, operation):
                    yield f"{name}.{member}", method


def test_every_callable_has_a_signature_and_a_docstring_that_tells_its_parameters():
    found = dict(callables())
    assert len(found) > 300
    for name, function in found.items():
        parameters = list(inspect.signature(function).parameters)
        documented = function.__doc__.partition("Args:")[2]
        for parameter in parameters:
            if parameter not in ("self", "args", "kwargs", "failure") and "__" not in name:
                assert f"    {parameter} (" in documented, name
        member = name.partition("Module.")[2]
        # What needs no device has one form; so has the drone.
        if not member or member.startswith(
            ("__", "_check", "_ckeck", "_AI_getPinMapPort", "AI_getBacklog", "AI_getDroppedRows", "AI_stream",
             "Bcst_enumerateUSBDevices", "Drone_", "_Drone_", "_Motion_INI_")):
            continue
        has_limit = not member.startswith(
            ("Bcst_", "AI_readStreaming", "AO_startStreaming", "UART_read", "_UART_startReading", "CAN_read",
             "Motion_openCfgFile", "Motion_saveCfgFile"))
        assert (parameters[-1] == "timeout") == has_limit, name
        variant = name.replace("Module.", "Module_async.") + "_async"
        variant = found[variant.replace("readAcceleration", "readAccleration").replace("setTau_async", "setTau")]
        assert list(inspect.signature(variant).parameters) == parameters[:len(parameters) - has_limit], name


def test_calls_bind_like_those_of_python(bench):
    bench.client_cmd.replies = {pyzvr.SET_DIO_CURRENT: b"\x00\x00", pyzvr.GET_PIN_MODE_OF_SLOT: b"\x00\x02\x11"}
    assert bench.DI_openPins(pin=[0], port=0, timeout=1) == 0
    assert pyzvr.DIOModule.DI_openPins(bench, 0, pin=[1]) == 0
    for arguments, named, text in [((), {}, "missing required argument 'port'"), ((0, [0], 1, 2), {}, "at most 3"),
                                   ((0, [0]), {"pin": [0]}, "multiple values for argument 'pin'"),
                                   ((0, [0]), {"x": 1}, "unexpected keyword argument 'x'")]:
        with pytest.raises(TypeError, match=text):
            bench.DI_openPins(*arguments, **named)
    assert bench.DI_openPins.__self__ is bench
    assert pyzvr.DIOModule.DI_openPins.__qualname__ == "DIOModule.DI_openPins"
    assert os.linesep
    assert "Opens pins as digital inputs" in pyzvr.DIOModule.DI_openPins.__doc__
