"""Runs the code blocks of a page as a reader does, one after the other, and compares what they print.

    python3 page_lab.py PAGE

A block of language "python" is a program, or with prompts a dialogue. A comment behind a print is what that line prints,
a comment in quotes what the line makes something else print; "..." stands for anything. Devices of the page are simulated:
`connect` reaches a simulator, whatever address of a real one it is given. A block behind "<!-- not run: REASON -->" is left out.
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
import sys
import tempfile
import traceback
import warnings
from pathlib import Path
from typing import NamedTuple

import zvrkit.sim

import pyzvr

FENCE = re.compile(r"^( *)```(\S*)$")
OPTIONS = doctest.ELLIPSIS | doctest.NORMALIZE_WHITESPACE
SIMULATED = {"Drone": ["--pace", "20"], "Ratchet": ["--axis", "*:-3000"]}  # options that save time


class Block(NamedTuple):
    language: str
    line: int  # of its first line in the page, from 0
    code: str
    runs: bool


def blocks_of(text):
    """The fenced blocks of a page."""
    blocks, lines, runs = [], text.split("\n"), True
    number = 0
    while number < len(lines):
        fence = FENCE.match(lines[number])
        if fence is None:
            if lines[number].strip():
                runs = not lines[number].startswith("<!-- not run: ")
        else:
            end = next(i for i in range(number + 1, len(lines)) if lines[i].strip() == "```")
            code = [line.removeprefix(fence[1]) for line in lines[number + 1:end]]
            blocks.append(Block(fence[2], number + 1, "\n".join(code) + "\n", runs and fence[2] == "python"))
            number, runs = end, True
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


def run_dialogue(page, block, names):
    test = doctest.DocTestParser().get_doctest(block.code, names, str(page), str(page), block.line)
    said = io.StringIO()
    runner = doctest.DocTestRunner(optionflags=OPTIONS, verbose=False)
    runner.run(test, out=said.write, clear_globs=False)
    names.update(test.globs)
    return [said.getvalue()] if runner.failures else []


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
            run = run_dialogue if block.code.startswith(">>>") else run_program
            try:
                wrong += run(page, block, names)
            except Exception:
                wrong.append(f"{page}:{block.line + 1}: the block fails\n{traceback.format_exc()}")
        names.clear()
    if wrong:
        sys.exit("\n".join(wrong))


if __name__ == "__main__":
    main()
