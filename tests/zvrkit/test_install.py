"""What a newcomer does before the first program: install, run an example, and meet another Python."""

import importlib
import json
import os
import re
import shutil
import subprocess
import sys
import sysconfig
import textwrap
import venv
from pathlib import Path

import pytest
import zvrkit

import pyzvr

ROOT = Path(__file__).parents[2]
BUILT = Path(pyzvr.__file__).parent
BUILD = next((folder for folder in (BUILT.parent / "default", BUILT.parents[1]) if (folder / "CMakeCache.txt").exists()), None)
CLEAN = {key: value for key, value in os.environ.items() if not key.startswith("PYTHON")}


def test_the_named_examples_are_where_they_are_named():
    files = set(pyzvr.EXAMPLE_CONSOLE_DICT.values())
    assert all((ROOT / name).read_text() == (zvrkit.EXAMPLES.parent / name).read_text() for name in files)
    assert len(files) > 10


@pytest.mark.parametrize("interpreter", [[sys.executable], [sys.executable, "-E"]])
def test_an_example_of_the_checkout_finds_its_build(interpreter, tmp_path):
    if BUILT.parent != ROOT / "build":
        pytest.skip("another build is tested")
    done = subprocess.run([*interpreter, str(ROOT / "examples/relays.py")], cwd=tmp_path, env={**CLEAN, "PATH": "/usr/bin:/bin"},
                          capture_output=True, text=True)
    assert (done.returncode, done.stderr) == (0, "")
    assert "Refused:" in done.stdout


@pytest.mark.skipif(BUILD is None or "asan" in os.environ.get("LD_PRELOAD", ""), reason="no build folder of this package")
def test_an_environment_with_what_is_installed_needs_nothing_else(tmp_path):
    cmake = "/usr/bin/cmake" if os.path.exists("/usr/bin/cmake") else "cmake"
    venv.create(tmp_path, symlinks=True)
    subprocess.run([cmake, "--install", str(BUILD), "--prefix", str(tmp_path), "--component", "python"], check=True,
                   capture_output=True)
    python = str(tmp_path / "bin/python")
    code = ("import json, pyzvr, zvrkit, zvrkit.sim;"
            "print(json.dumps([pyzvr.__file__, zvrkit.__file__, zvrkit.sim.program(), str(zvrkit.EXAMPLES)]))")
    files = json.loads(subprocess.run([python, "-c", code], env=CLEAN, capture_output=True, text=True, check=True).stdout)
    assert all(name.startswith(str(tmp_path)) for name in files)
    for name in ("settings.py", "pulses.py"):
        if name == "pulses.py" and not (tmp_path / "bin/zvr-sim-usb").exists():
            continue
        done = subprocess.run([python, str(Path(files[3]) / name)], env=CLEAN, capture_output=True, text=True)
        assert (done.returncode, done.stderr) == (0, "")
        assert "Closed handle (" in done.stdout


def test_another_python_is_told_which_one_the_build_is_for(tmp_path):
    assert pyzvr.__file__.endswith(sysconfig.get_config_var("EXT_SUFFIX"))  # here the module comes first
    shutil.copytree(BUILT, tmp_path / "pyzvr", ignore=shutil.ignore_patterns("*.so"))
    done = subprocess.run([sys.executable, "-c", "import pyzvr"], env={**CLEAN, "PYTHONPATH": str(tmp_path)},
                          capture_output=True, text=True)
    assert done.returncode == 1
    said = done.stderr.splitlines()[-1]
    here = ".".join(map(str, sys.version_info[:2]))
    assert said.startswith(f"ImportError: this pyzvr is built for Python {here} (cpython-")
    assert "not for CPython " + ".".join(map(str, sys.version_info[:3])) in said


def test_the_shell_has_what_its_greeting_names():
    greeting = (ROOT / "tools/shell.py").read_text()
    typed = "\n".join(line for line in greeting.splitlines() if line.startswith("    "))
    done = subprocess.run([sys.executable, "-i", str(ROOT / "tools/shell.py")], input=textwrap.dedent(typed) + "\nbox.close()\n",
                          capture_output=True, text=True)
    assert "Connected to Tarn-Analog (127.0.0.1)" in done.stdout and "Closed handle (Tarn-Analog)" in done.stdout
    values = re.search(r"\[(.*)]", done.stdout)
    assert values and len(values[1].split(",")) == 8, done.stderr


def test_packages_go_where_this_python_looks_for_them(tmp_path):
    version = f"lib/python{sys.version_info.major}.{sys.version_info.minor}"
    for own in (f"{version}/dist-packages", f"{version}/site-packages"):
        run = [sys.executable, str(ROOT / "tools/install_dir.py"), str(tmp_path)]
        environment = {**CLEAN, "PYTHONPATH": str(tmp_path / own)}
        done = [subprocess.run([*run, *more], env=environment, capture_output=True, text=True) for more in ([], ["--advice"])]
        assert [each.stdout.strip() for each in done] == [own, ""]
    advice = subprocess.run([*run, "--advice"], env=CLEAN, capture_output=True, text=True).stdout
    assert f"export PYTHONPATH={tmp_path / own}" in advice


def test_the_entry_point_for_pytest_is_there():
    text = (ROOT / "pyproject.toml").read_text()
    name, target = re.search(r"\[project.entry-points.pytest11]\n(\w+) = \"(.*)\"", text).groups()
    assert name == "zvrkit"
    assert hasattr(importlib.import_module(target), "simulated_device")


PROGRAMS = ["sh", "dirname", "sed", "grep", "cat"]


def set_up(tmp_path, *purposes, has=(), installed=("cmake",)):
    """tools/setup.sh for somebody who is not root and has no sudo, on a machine with these Debian packages."""
    folder = tmp_path / "bin"
    folder.mkdir()
    stubs = {
        "id": "echo 1000",
        "apt-get": "echo called >&2; exit 7",
        "dpkg-query": f'for each in {" ".join(installed)}; do [ "$4" = "$each" ] && echo install ok installed; done',
        **{name: "" for name in has}
    }
    for name, text in stubs.items():
        (folder / name).write_text(f"#!/bin/sh\n{text}\n")
        (folder / name).chmod(0o755)
    for name in PROGRAMS:
        (folder / name).symlink_to(shutil.which(name))
    return subprocess.run([str(ROOT / "tools/setup.sh"), *purposes], env={"PATH": str(folder)}, stdin=subprocess.DEVNULL,
                          capture_output=True, text=True)


def test_without_root_the_set_up_tells_what_an_administrator_should_install(tmp_path):
    done = set_up(tmp_path, "build", "--wanted", "usb", has=["cmake", "ninja", "c++"])
    assert done.returncode == 0 and "called" not in done.stderr
    assert "ask an administrator" in done.stderr
    asked = next(line for line in done.stderr.splitlines() if "apt-get install" in line).split()
    assert {"ninja-build", "pybind11-dev", "libumockdev-dev"} < set(asked)
    assert not {"cmake", "libgtest-dev"} & set(asked)


def test_without_a_compiler_the_set_up_ends_there(tmp_path):
    done = set_up(tmp_path, "build", has=["cmake", "ninja"])
    assert done.returncode == 1 and "There is no c++" in done.stderr


def test_what_is_only_wanted_is_not_asked_of_anybody(tmp_path):
    lines = (ROOT / "packages.txt").read_text().splitlines()
    build = next(line for line in lines if line.startswith("build: ")).split()[1:]
    done = set_up(tmp_path, "build", "--wanted", "usb", installed=build)
    assert (done.returncode, done.stdout, done.stderr) == (0, "", "")
