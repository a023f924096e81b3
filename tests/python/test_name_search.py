"""A search for a name that gets no answer can be left."""

import subprocess
import sys
import time

import pytest
from simulators import can_make_networks

# A name server of its own that never answers: a search for a name takes many seconds.
NAMES = """
import os, pyzvr, signal, socket, subprocess, sys, threading, time
signal.signal(signal.SIGINT, signal.default_int_handler)
subprocess.run(["ip", "link", "set", "lo", "up"], check=True)
for path, text in (("/etc/resolv.conf", "nameserver 127.0.0.1\\noptions timeout:30 attempts:3\\n"),
                   ("/etc/nsswitch.conf", "hosts: dns\\n")):
    own = "/tmp/" + os.path.basename(path) + str(os.getpid())
    open(own, "w").write(text)
    subprocess.run(["mount", "--bind", own, os.path.realpath(path)], check=True)
    os.unlink(own)
server = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
server.bind(("127.0.0.1", 53))
box = pyzvr.TarnDio()
if sys.argv[1] == "interrupt":
    def interrupt():
        server.recv(1000)  # the search has begun
        time.sleep(0.3)
        global sent
        sent = time.monotonic()
        os.kill(os.getpid(), signal.SIGINT)
    threading.Thread(target=interrupt).start()
    try:
        box.connect("device.invalid")
    except KeyboardInterrupt:
        print(time.monotonic() - sent < 1)
elif sys.argv[1] == "limit":
    begin = time.monotonic()
    try:
        box.connect("device.invalid")
    except pyzvr.NetworkConnectionError:
        print(4.5 < time.monotonic() - begin < 7)
else:
    begin = time.monotonic()
    for _ in range(3):
        try:
            pyzvr.UDPClient().sendBcstPacket([1, 2, 3])
        except OSError:
            pass
    server.settimeout(5)
    print(time.monotonic() - begin < 2 and len(server.recv(1000)) > 0)
"""


@pytest.mark.parametrize("what", ["interrupt", "limit", "broadcast"])
def test_a_search_for_a_name_that_gets_no_answer(what):
    if not can_make_networks():
        pytest.skip("network namespaces are not allowed here")
    begin = time.monotonic()
    run = subprocess.run(
        ["unshare", "--net", "--mount", sys.executable, "-c", NAMES, what], capture_output=True, text=True, timeout=60
    )
    assert run.stdout.split()[-1:] == ["True"], run.stdout + run.stderr
    assert run.returncode == 0
    assert time.monotonic() - begin < 20
