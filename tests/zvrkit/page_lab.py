"""Runs the code blocks of a page as a reader does, one after the other, and compares what they print.

    python3 page_lab.py PAGE

A block of language "python" is a program, or with prompts a dialogue. A comment behind a print is what that line prints,
a comment in quotes what the line makes something else print; "..." stands for anything. Devices of the page are simulated:
`connect` reaches a simulator, whatever address of a real one it is given. A "{literalinclude}" is a program that the reader
saves; "console" is typed at a shell where it lies: lines behind "$ ", each with what it prints, behind
"<!-- lines in any order -->" in any order, behind "<!-- times may differ -->" with other seconds. A block behind
"<!-- not run: REASON -->" is left out.
"""

import ast
import asyncio
import contextlib
import doctest
import functools
import inspect
import io
import os
import re
import shutil
import subprocess
import sys
import tempfile
import traceback
import warnings
from pathlib import Path
from typing import NamedTuple

import zvrkit.sim

import pyzvr

FENCE = re.compile(r"^( *)```(\S*)(?: (.*))?$")
OPTIONS = doctest.ELLIPSIS | doctest.NORMALIZE_WHITESPACE
RUN = ("python", "console", "{literalinclude}")
SIMULATED = {"Drone": ["--pace", "20"], "Ratchet": ["--axis", "*:-3000"]}  # options that save time


class Block(NamedTuple):
    language: str
    line: int  # of its first line in the page, from 0
    code: str
    runs: bool
    argument: str = ""  # of a directive
    note: str = ""  # the comment before it


def blocks_of(text):
    """The fenced blocks of a page."""
    blocks, lines, note = [], text.split("\n"), ""
    number = 0
    while number < len(lines):
        fence = FENCE.match(lines[number])
        if fence is None:
            if lines[number].strip():
                note = lines[number].strip()
        else:
            end = next(i for i in range(number + 1, len(lines)) if lines[i].strip() == "```")
            code = [line.removeprefix(fence[1]) for line in lines[number + 1:end]]
            runs = fence[2] in RUN and not note.startswith("<!-- not run: ")
            blocks.append(Block(fence[2], number + 1, "\n".join(code) + "\n", runs, fence[3] or "", note))
            number, note = end, ""
        number += 1
    return blocks


def differences(wanted, got, where):
    checker = doctest.OutputChecker()
    if checker.check_output(wanted + "\n", got, OPTIONS):
        return []
    return [f"{where}: prints {got.strip()!r}, and the page says {wanted!r}"]


def run_program(page, block, names):
    """What is wrong with a program's output."""
    printed, everything = {}, io.StringIO()

    def record(*values, **options):
        here = inspect.currentframe().f_back.f_lineno
        text = io.StringIO()
        print(*values, **{**options, "file": text})
        printed.setdefault(here, text.getvalue())
        everything.write(text.getvalue())

    names["print"] = record
    with contextlib.redirect_stdout(everything):
        code = compile("\n" * block.line + block.code, str(page), "exec", ast.PyCF_ALLOW_TOP_LEVEL_AWAIT)
        result = eval(code, names)
        if code.co_flags & inspect.CO_COROUTINE:
            asyncio.run(result)
    del names["print"]  # a dialogue after it has the host's own
    wrong = []
    for number, line in enumerate(block.code.split("\n"), block.line + 1):
        where = f"{page}:{number}"
        comment = re.search(r"  # (.*)$", line)
        if comment is None:
            continue
        if "print(" in line:
            wrong += differences(comment[1], printed.get(number, ""), where)
        elif re.fullmatch(r'".*"', comment[1]) and comment[1].strip('"') not in everything.getvalue():
            wrong.append(f"{where}: {comment[1]} is not printed")
    return wrong


class WithNotes:
    """The host's module `traceback` for doctest, which shows an exception's notes as its own."""

    def __getattr__(self, name):
        return getattr(traceback, name)

    def format_exception_only(self, *exception):
        return ["".join(traceback.format_exception_only(*exception))]


def run_dialogue(page, block, names):
    doctest.traceback = WithNotes()
    test = doctest.DocTestParser().get_doctest(block.code, names, str(page), str(page), block.line)
    said = io.StringIO()
    runner = doctest.DocTestRunner(optionflags=OPTIONS, verbose=False)
    runner.run(test, out=said.write, clear_globs=False)
    names.update(test.globs)
    return [said.getvalue()] if runner.failures else []


def save_program(page, block, names):
    """Puts an included program where the reader saves it."""
    shutil.copy(page.parent / block.argument, Path(block.argument).name)
    return []


def run_console(page, block, names):
    """What is wrong with what commands print, in a shell whose `python3` is this one."""
    wrong = []
    with tempfile.TemporaryDirectory() as programs:
        python = Path(programs) / "python3"
        python.write_text(f'#!/bin/sh\nexec {sys.executable} "$@"\n')
        python.chmod(0o755)
        path = os.pathsep.join([programs, str(Path(zvrkit.sim.program()).parent), os.environ["PATH"]])
        for each in re.split(r"^\$ ", block.code, flags=re.MULTILINE)[1:]:
            command, _, output = each.rstrip("\n").partition("\n")
            done = subprocess.run(command, shell=True, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                  env={**os.environ, "PATH": path}, timeout=60)
            printed = done.stdout
            if block.note == "<!-- lines in any order -->":
                output, printed = ("\n".join(sorted(text.splitlines())) for text in (output, printed))
            if block.note == "<!-- times may differ -->":
                output, printed = (re.sub(r"\d+\.\d+ ?s", "0 s", text) for text in (output, printed))
            wrong += differences(output, printed, f"{page}:{block.line + 1}: {command}")
    return wrong


def how_to_run(block):
    if block.language == "{literalinclude}":
        return save_program
    if block.language == "console":
        return run_console
    return run_dialogue if block.code.startswith(">>>") else run_program


@contextlib.contextmanager
def reached_by_simulators():
    """Lets `connect` of each model start a simulator of its own; on USB it finds the device of its kind."""
    with contextlib.ExitStack() as stack:

        def reached(name, connect):
            @functools.wraps(connect)
            def replacement(self, *given, **options):
                if name.startswith("Sable"):
                    return connect(self, name[:8], **options)
                if "127.0.0.1" in given:  # a simulator of the page's own
                    return connect(self, *given, **options)
                place = stack.enter_context(zvrkit.sim.device(name, *SIMULATED.get(name, [])))
                return connect(self, *place.address, **options)

            return replacement

        for name in pyzvr.HANDLE_LIST:
            cls = getattr(pyzvr, name)
            cls.connect = reached(name, cls.connect)
        yield


def main():
    page = Path(sys.argv[1]).resolve()
    warnings.simplefilter("ignore", UserWarning)  # libusb is not where a user would have it
    names = {"__name__": "__main__"}
    wrong = []
    with tempfile.TemporaryDirectory() as folder, reached_by_simulators():
        os.chdir(folder)
        for block in blocks_of(page.read_text()):
            if not block.runs:
                continue
            try:
                wrong += how_to_run(block)(page, block, names)
            except Exception:
                wrong.append(f"{page}:{block.line + 1}: the block fails\n{traceback.format_exc()}")
        names.clear()
    if wrong:
        sys.exit("\n".join(wrong))


if __name__ == "__main__":
    main()
