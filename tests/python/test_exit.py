"""The end of the interpreter: silent, with code 0 and within a second, in whatever state it finds the library."""

import concurrent.futures
import contextlib
import csv
import os
import re
import signal
import subprocess
import sys
import time
from pathlib import Path

import pytest
from exit_lab import SCENARIOS
from simulators import address_of, running_simulator

LAB = str(Path(__file__).with_name("labs") / "exit_lab.py")
# What a daemon thread held when the interpreter ended is never freed, by the host; a leak sanitizer would tell of it.
ENVIRONMENT = {**os.environ, "ASAN_OPTIONS": os.environ.get("ASAN_OPTIONS", "") + ":detect_leaks=0"}
PATIENCE = 20.0  # seconds for a scenario as a whole
LONGEST = 1.0  # seconds from the last line of a program to its end
ROWS = [[str(number), str(number / 8)] for number in range(2000)]


def leave(name, file):
    """Runs a scenario. Returns what it said, what it complained of, its code and the longest of its times."""
    model = SCENARIOS[name].model
    with running_simulator(model) if model else contextlib.nullcontext({}) as simulator:
        process = subprocess.Popen([
            sys.executable, "-X", "faulthandler", "-W", "ignore::DeprecationWarning", LAB, name,
            str(file), *map(str, address_of(simulator))
        ],
                                   stdin=subprocess.DEVNULL,
                                   env=ENVIRONMENT,
                                   stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE,
                                   text=True)
        try:
            out, errors = process.communicate(timeout=PATIENCE)
        except subprocess.TimeoutExpired:
            process.send_signal(signal.SIGUSR1)
            with contextlib.suppress(subprocess.TimeoutExpired):
                process.communicate(timeout=1)
            process.kill()
            out, errors = process.communicate()
            errors += "\nit did not end"
        end = time.monotonic()
    lines = [line.split() for line in out.splitlines()]
    times = [float(words[1]) for words in lines if words and words[0] == "took"]
    times += [end - float(words[1]) for words in lines if words and words[0] == "done"]
    said = [" ".join(words) for words in lines if words and words[0] not in ("took", "done")]
    return "\n".join(said), errors, process.returncode, max(times, default=99.0)


@pytest.fixture(scope="module")
def begun(request, tmp_path_factory):
    """The chosen scenarios, under way some at a time."""
    folder = tmp_path_factory.mktemp("exit")
    chosen = [
        item.callspec.params["name"] for item in request.session.items
        if getattr(item, "originalname", "") == "test_leaving"
    ]
    with concurrent.futures.ThreadPoolExecutor(2 * (os.cpu_count() or 1)) as executor:
        files = {name: folder / f"{number}.csv" for number, name in enumerate(chosen)}
        yield {name: (executor.submit(leave, name, file), file) for name, file in files.items()}
        executor.shutdown(cancel_futures=True)


@pytest.mark.parametrize("name", SCENARIOS, ids=[re.sub(r"\W+", "-", name) for name in SCENARIOS])
def test_leaving(begun, name):
    first, file = begun[name]
    times = []
    while not times or (min(times) > LONGEST and len(times) < 3):  # the machine may be slow once, the library always
        said, errors, code, took = leave(name, file) if times else first.result()
        times.append(took)
        assert (code, errors) == (0, ""), errors
        assert re.fullmatch(SCENARIOS[name].says, said), said
    print(f"{name}: {min(times):.2f} s")
    assert min(times) < LONGEST


@pytest.mark.parametrize("name", ["logger with an open file", "forked child of a logger"])
def test_rows_are_all_in_the_file_and_once(tmp_path, name):
    leave(name, tmp_path / "log.csv")
    with open(tmp_path / "log.csv", newline="", encoding="utf8") as file:
        assert list(csv.reader(file)) == ROWS
