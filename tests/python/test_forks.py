"""A forked child leaves the connection to its parent."""

import subprocess
import sys

import pytest

FORK = """
import asyncio, os, sys, gc, time, pyzvr
port = int(sys.argv[1])
box = pyzvr.TarnDio()
box.connect("127.0.0.1", port, verbose=False)
held = box.client_cmd.socket
assert box.Sys_getSerialNumber() == "SN000001"

def refused(action):
    try:
        action()
    except pyzvr.NetworkConnectionLostError as error:
        return "os.fork()" in str(error) and "parent" in str(error)

def child(end):
    assert not box.recv_cmd_thread.is_alive()
    assert refused(box.Sys_getSerialNumber), "request"
    assert refused(lambda: box.client_cmd.recvPacket(1)) and refused(lambda: box.client_cmd.stream)
    assert refused(lambda: held.send(b"x")) and held.fileno() == -1
    assert refused(lambda: box.connect("127.0.0.1", port)) and refused(lambda: asyncio.run(box.connect_async("127.0.0.1", port)))
    assert refused(box.reconnect) and repr(box).endswith("of the parent process>")
    box.recv_cmd_thread.join()
    other = pyzvr.TarnDio()
    other.connect("127.0.0.1", port, verbose=False)
    assert other.Sys_getSerialNumber() == "SN000001"
    other.close()
    end()

def drop():
    global box, held
    del box, held
    gc.collect()

ends = {"exit": sys.exit, "_exit": lambda: os._exit(0), "close": lambda: box.close(), "drop": drop,
        "disconnect": lambda: refused(box.disconnect), "again": lambda: refused(lambda: box.client_cmd.connect("127.0.0.1", port))}
for round in range(4):
    begin = time.monotonic()
    pid = os.fork()
    if pid == 0:
        child(ends[sys.argv[2]])
        sys.exit(0)
    status = os.waitpid(pid, 0)[1]
    assert status == 0, status
    assert time.monotonic() - begin < 1.5, "the child waited for threads that it does not have"
    assert box.Sys_getSerialNumber() == "SN000001"
print("the parent works")
"""


@pytest.mark.parametrize("end", ["exit", "_exit", "close", "drop", "disconnect", "again"])
def test_a_forked_child_leaves_the_connection_to_its_parent(peer, end):
    run = subprocess.run(
        [sys.executable, "-W", "ignore", "-c", FORK, str(peer.port), end], capture_output=True, text=True, timeout=60)
    assert run.returncode == 0 and "the parent works" in run.stdout, run.stdout + run.stderr


def test_a_forked_child_keeps_no_port_of_its_parent():
    code = """
import os, pyzvr
finder = pyzvr.DeviceFinder()
finder.client_udp.bind("127.0.0.1", 0)
port = finder.client_udp.socket.getsockname()[1]
(begun, begins), (ends, end) = os.pipe(), os.pipe()
if os.fork() == 0:
    os.close(end)
    os.write(begins, b"x")
    os.read(ends, 1)  # lives on
    os._exit(0)
os.read(begun, 1)
finder.client_udp.disconnect()
finder.client_udp.bind("127.0.0.1", port)
print("bound again")
"""
    run = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, timeout=60)
    assert "bound again" in run.stdout, run.stderr


def test_a_forked_child_closes_handles_with_streams_quietly():
    code = """
import os, asyncio, pyzvr
boxes = [getattr(pyzvr, model)() for model in ("TarnAnalog", "HeronAnalog", "TarnHub", "Lattice") if hasattr(pyzvr, model)]
assert len(boxes) > 1
if os.fork() == 0:
    for box in boxes[1:]:
        box.close()
        box.close()
        assert box.killed and repr(box).endswith("closed>")
    asyncio.run(boxes[0].close_async())
    os._exit(0)
assert os.wait()[1] == 0
for box in boxes:
    assert not box.killed
    box.close()
print("the parent closes too")
"""
    run = subprocess.run([sys.executable, "-W", "ignore", "-c", code], capture_output=True, text=True, timeout=60)
    assert "the parent closes too" in run.stdout and run.stderr == "", run.stdout + run.stderr
