"""A network of its own: a bridge with this process and some simulated devices on it, each in a namespace of its own.

    unshare --net python3 network_lab.py             prints what a finder saw there as JSON
    unshare --net python3 network_lab.py COMMAND...  runs a program there
"""

import asyncio
import contextlib
import io
import json
import os
import pathlib
import subprocess
import sys

sys.path.append(str(pathlib.Path(__file__).parent.parent))
from simulators import simulator_program  # noqa: E402

import pyzvr

HERE = "10.77.0.1"
DEVICES = [("TarnDioLite", "10.77.0.2", "02:0a:00:00:00:01", "SIM-0001"),
           ("HeronAnalog", "10.77.0.3", "02:0a:00:00:00:02", "SIM-0002"),
           ("TarnDio", "10.77.0.4", "02:0a:00:00:00:03", "SIM-0003")]


def ip(*words, inside=None):
    enter = ["nsenter", "--target", str(inside), "--net"] if inside else []
    subprocess.run([*enter, "ip", *words], check=True)


@contextlib.contextmanager
def device(number, model, address, mac, serial):
    """A simulated device behind the bridge; it starts when its end of the cable is there."""
    command = [simulator_program(), model, "--host", address, "--mac", mac, "--serial", serial, "--discovery",
               "--alias", "rack" if model == "TarnDio" else "bench", "--port", "7", "--stdin-stop"]
    if model.startswith("Heron"):
        command += ["--data-port", "1336"]
    process = subprocess.Popen(["unshare", "--net", "sh", "-c", 'read go; exec "$@"', "sh", *command],
                               stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
    cable = f"port{number}"
    # The shell's namespace is there once it is another than ours.
    while network_of(process.pid) == network_of("self"):
        pass
    ip("link", "add", cable, "type", "veth", "peer", "name", "eth0", "netns", str(process.pid))
    ip("link", "set", cable, "master", "bridge", "up")
    ip("link", "set", "lo", "up", inside=process.pid)
    ip("addr", "add", address + "/24", "broadcast", "10.77.0.255", "dev", "eth0", inside=process.pid)
    ip("link", "set", "eth0", "up", inside=process.pid)
    process.stdin.write("go\n")
    process.stdin.flush()
    said = json.loads(process.stdout.readline())
    try:
        yield said
    finally:
        process.stdin.close()
        process.stdout.close()
        assert process.wait(10) == 0


def network_of(process):
    with contextlib.suppress(OSError):
        return os.readlink(f"/proc/{process}/ns/net")


@contextlib.contextmanager
def lab():
    ip("link", "set", "lo", "up")
    ip("link", "add", "bridge", "type", "bridge", "forward_delay", "0")
    ip("addr", "add", HERE + "/24", "broadcast", "10.77.0.255", "dev", "bridge")
    ip("link", "set", "bridge", "up")
    with contextlib.ExitStack() as stack:
        yield [stack.enter_context(device(number, *row)) for number, row in enumerate(DEVICES)]


def error_of(operation, *args):
    try:
        return operation(*args)
    except Exception as error:
        return type(error).__name__


async def ask_all(finder, ring, move, nobody):
    """All at once: each command has a set of its own."""
    answers = await asyncio.gather(
        finder.Bcst_enumerateNetworkDevices_async(), finder.Bcst_checkMACAndRing_async(ring),
        finder.Bcst_checkMACAndSetIP_async("10.77.0.9", move, HERE), return_exceptions=True)
    nobodys = await asyncio.gather(finder.Bcst_checkMACAndRing_async(nobody), return_exceptions=True)
    return [each if isinstance(each, list) else type(each).__name__ if isinstance(each, Exception) else list(each)
            for each in [*answers, *nobodys]]


def opened(where):
    """What stands behind a name."""
    try:
        with pyzvr.open(where, verbose=False) as box:
            return [type(box).__name__, box.Sys_getSerialNumber(), box.isConnected()]
    except pyzvr.Error as error:
        return [type(error).__name__, *getattr(error, "__notes__", [])]


def discovery():
    with lab() as devices, pyzvr.DeviceFinder() as finder:
        (_, _, wifi_mac, wifi_serial) = DEVICES[1]
        names = [wifi_serial, wifi_mac.upper().replace(":", "-"), DEVICES[0][1], "rack", "bench", "nobody"]
        by_name = {name: opened(name) for name in names}
        finder.connect()
        busy = opened("rack")
        with pyzvr.DeviceFinder() as second:
            taken = error_of(second.connect)
        found, ring, move, nobody = asyncio.run(ask_all(finder, DEVICES[0][2], DEVICES[2][2], "2:0:0:0:0:99"))
        for _ in range(20):
            finder.disconnect(verbose=False)
            finder.connect(verbose=False)
        blocking = error_of(finder.Bcst_enumerateNetworkDevices)
        with pyzvr.TarnDioLite() as box:
            box.connect(devices[0]["host"], devices[0]["command_port"])
            serial = box.Sys_getSerialNumber()
        with pyzvr.TarnDio() as box:
            box.connect(devices[2]["host"], devices[2]["command_port"])
            moved = box.Net_getIPAddrAndSubmask()
        return {"taken": taken, "found": sorted(found), "ring": ring, "move": move, "nobody": nobody,
                "blocking": blocking, "serial": serial, "moved": moved, "busy": busy,
                "opened": by_name}


if __name__ == "__main__":
    if sys.argv[1:]:
        with lab():
            sys.exit(subprocess.run(sys.argv[1:]).returncode)
    with contextlib.redirect_stdout(io.StringIO()):
        report = discovery()
    print(json.dumps(report))
