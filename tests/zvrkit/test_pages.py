"""The pages' programs do what the pages say, as a reader types them."""

import contextlib
import doctest
import re
import subprocess
import sys
from pathlib import Path

import pytest
import zvrkit.sim
from page_lab import blocks_of
from simulators import can_make_networks

ROOT = Path(__file__).parents[2]
HERE = Path(__file__).parent
PAGES = [ROOT / "README.md", *sorted((ROOT / "docs").rglob("*.md"))]
# What is on the buses of a page's simulated USB devices, where it is not what they have anyway.
PEERS = {"can_filters.md": ("--peer", "cyclic@can:1:10:0x100", "--peer", "responder@can:1")}
# The blocking forms of motion lose a reply that a busy machine holds back for 30 ms, as the pages say.
BUSY = "ReceivePacketTimeoutError: Error -8004"
TRIES = 3


def runs(page):
    return any(block.runs for block in blocks_of(page.read_text()))


@pytest.mark.parametrize("page", filter(runs, PAGES), ids=lambda page: page.name)
def test_the_programs_of_a_page_print_what_it_says(page):
    command = [sys.executable, str(HERE / "page_lab.py"), str(page)]
    with contextlib.ExitStack() as stack:
        run = subprocess.run
        models = sorted({*re.findall(r"pyzvr\.(Sable\w+)\(\) as|= pyzvr\.(Sable\w+)", page.read_text())})
        if models:
            try:
                bus = zvrkit.sim.usb(*(f"{model}:{model[:8]}" for model in map("".join, models)), *PEERS.get(page.name, ()))
            except zvrkit.sim.SimulatorError as missing:
                pytest.skip(str(missing))
            run = stack.enter_context(bus).run
        if page.name == "discovery.md":
            if not can_make_networks():
                pytest.skip("network namespaces are not allowed here")
            lab = ROOT / "tests/python/labs/network_lab.py"
            command = ["unshare", "--net", sys.executable, str(lab), *command]
        for _ in range(TRIES if "pyzvr.Ratchet" in page.read_text() else 1):
            done = run(command, capture_output=True, text=True, timeout=60)
            if BUSY not in done.stderr:
                break
    assert done.returncode == 0, done.stderr


def test_blocks_have_a_language_and_few_programs_are_left_out():
    blocks = [(page.name, block) for page in PAGES for block in blocks_of(page.read_text())]
    assert all(block.language for _, block in blocks), [page for page, block in blocks if not block.language]
    programs = [block for _, block in blocks if block.language == "python"]
    assert sum(not block.runs for block in programs) <= 2
    assert len(programs) > 15


def test_every_program_of_the_pages_is_shown_and_run():
    blocks = [(page, block) for page in PAGES for block in blocks_of(page.read_text())]
    shown = {(page.parent / block.argument).resolve() for page, block in blocks if block.language == "{literalinclude}"}
    typed = " ".join(block.code for _, block in blocks if block.language == "console" and block.runs)
    programs = set((ROOT / "docs/programs").glob("*.py"))
    assert shown == programs and len(programs) > 4
    assert [program.name for program in programs if f" {program.name}\n" not in typed] == []


def test_links_lead_to_pages_files_and_drawings():
    """Those without a suffix are pages of the reference that the build writes; `make docs` follows them."""
    drawn = set(re.findall(r"(?m)^def (\w+)\(path\)", (ROOT / "docs/figures/figures.py").read_text()))
    lost, shown = [], set()
    for page in [*PAGES, ROOT / "CONTRIBUTING.md", ROOT / "simulator/README.md"]:
        prose = re.sub(r"```.*?```|(?<!\[)`[^`\n]+`", "", page.read_text(), flags=re.DOTALL)
        for target in re.findall(r"\]\(([^)#\s]+)[^)]*\)", prose):
            name = target.removeprefix("/figures/")
            if target.startswith("https:"):
                continue
            if name != target and Path(name).stem in drawn:
                shown.add(Path(name).stem)
                continue
            place = page.parent / target if name == target else ROOT / "docs/figures" / name
            written = "reference" in place.parts and place.suffix not in (".md", ".py", ".svg")
            if not place.exists() and not written:
                lost.append((page.name, target))
    assert lost == []
    assert shown == drawn


@pytest.mark.parametrize(("text", "wrong"), [
    ("```python\nprint(1 + 1)  # 2\nprint('a b')  # a ...\n```\n", []),
    ("```python\nprint(1 + 1)  # 3\n```\n", ["prints '2', and the page says '3'"]),
    ("```python\nif False:\n    print(2)  # 2\n```\n", ["prints '', and"]),
    ("```python\nx = 1  # \"Opened handle\"\n```\n", ["is not printed"]),
    ("```python\n1 / 0\n```\n\n```python\nprint(1)  # 2\n```\n", ["ZeroDivisionError", "prints '1'"]),
    ("```python\n>>> 1 + 1\n3\n```\n", ["Expected:"]),
    ("```console\n$ echo a\na\n$ echo b >&2\nb\n```\n", []),
    ("```console\n$ python3 -c 'import pyzvr; print(1)'\n2\n```\n", ["prints '1', and the page says '2'"]),
    ("<!-- lines in any order -->\n```console\n$ printf 'b\\na\\n'\na\nb\n```\n", []),
    ("<!-- times may differ -->\n```console\n$ echo 1.5 s 7\n0.2 s 8\n```\n", ["prints '0 s 7'"]),
    ("<!-- not run: it would take off -->\n```python\n1 / 0\n```\n", []),
])
def test_a_page_that_says_something_else_fails(tmp_path, text, wrong):
    page = tmp_path / "page.md"
    page.write_text(text)
    done = subprocess.run([sys.executable, str(HERE / "page_lab.py"), str(page)], capture_output=True, text=True)
    assert done.returncode == bool(wrong)
    assert all(each in done.stderr for each in wrong), done.stderr


def test_the_programs_in_docstrings_print_what_they_say():
    tested = doctest.testmod(zvrkit.sim)
    assert tested.attempted > 1 and tested.failed == 0
    assert ">>>" not in (ROOT / "python/pyzvr/__init__.pyi").read_text()  # there are none to be run
