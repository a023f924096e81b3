"""The examples, run as a user runs them."""

import re
import subprocess
import sys
from pathlib import Path

import pytest
from simulators import can_make_networks, simulator_program

import pyzvr

EXAMPLES = sorted(path for path in (Path(__file__).parents[2] / "examples").glob("*.py") if path.name[0] != "_")
DEMO = next(path for path in EXAMPLES if path.name == "demo.py")
LAB = str(Path(__file__).with_name("labs") / "network_lab.py")


def command_for(example):
    run = [sys.executable, "-W", "error", str(example)]
    if example.name == "discover.py":
        if not can_make_networks():
            pytest.skip("network namespaces are not allowed here")
        return ["unshare", "--net", sys.executable, LAB, *run]
    if "run_beside_usb(" in example.read_text() and not Path(simulator_program("zvr-sim-usb")).exists():
        pytest.skip("zvr-sim-usb is not built: it needs libumockdev")
    return run


@pytest.mark.parametrize("example", EXAMPLES, ids=lambda path: path.name)
def test_examples_run(example):
    done = subprocess.run(command_for(example), capture_output=True, text=True, timeout=60)
    assert (done.returncode, done.stderr) == (0, ""), done.stdout
    assert ("Closed handle (" in done.stdout) == (example.name != "multimeter.py")
    if example.name == "demo.py":
        logged = re.findall(r"Logged (\d+) rows to (.*)", done.stdout)
        assert [int(rows) for rows, _ in logged] == [60000, 10000, 20000, 4000]
        assert "0 dropped" in done.stdout
        for rows, path in logged:
            lines = Path(path).read_text().splitlines()
            assert len(lines) == int(rows) + 1
            assert lines[0].count("channel") == lines[-1].count(",") + 1
    if example.name == "discover.py":
        assert "3 on the network, 0 on USB" in done.stdout
        assert "SIM-0003" in done.stdout
    if example.name == "motion.py":
        assert len(re.findall(r"home: .* \[0, 0, 0, 0]\n +line: .* \[4000, 3000, 2000, 1000]", done.stdout)) == 2


@pytest.mark.parametrize("model", ["HeronAnalog", "LatticeLite", "SableMixed"])
def test_the_demonstration_runs_with_each_model_that_streams(model):
    if model.startswith("Sable") and not Path(simulator_program("zvr-sim-usb")).exists():
        pytest.skip("zvr-sim-usb is not built: it needs libumockdev")
    done = subprocess.run([sys.executable, str(DEMO), model], capture_output=True, text=True, timeout=60)
    assert (done.returncode, done.stderr) == (0, ""), done.stdout
    assert re.search(r"Logged \d{3,5} rows to", done.stdout) and "0 dropped" in done.stdout


def test_the_demonstration_knows_all_models_that_stream():
    streaming = {name for name in pyzvr.HANDLE_LIST if hasattr(getattr(pyzvr, name), "AI_readStreamingBlock")}
    refused = subprocess.run([sys.executable, str(DEMO), "TarnDio"], capture_output=True, text=True)
    assert refused.returncode == 1
    assert set(refused.stderr.rpartition(": ")[2].strip().split(", ")) == streaming
