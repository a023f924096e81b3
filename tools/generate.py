"""Writes the type stub from the definitions in the module.

    generate.py            writes the stub, which is kept in the tree
    generate.py --check    writes nothing; the exit status tells whether it is as it would be

Each callable of the library carries its stub line (`__stub__`).
"""

import argparse
import ast
import inspect
import re
import sys
import types
from pathlib import Path

import pyzvr

ROOT = Path(__file__).resolve().parent.parent
STUB = ROOT / "python" / "pyzvr" / "__init__.pyi"

STUB_HEAD = '''\
# Written by `make stubs`; do not edit.
import asyncio
import socket
from collections.abc import Callable, Iterable, Iterator, Mapping, MutableMapping, MutableSet, Sequence
from decimal import Decimal
from typing import Any

from typing_extensions import Self

'''
OPERATION = type(pyzvr.checkFirmwareError)
BUFFERS = (pyzvr.SampleBlock,)  # have the buffer protocol, which no member shows before Python 3.12


def members(cls):
    """Own members of a class, fields first, in the order of their definition."""
    fields = cls.__dict__.get("__annotations__", {})
    own = {name: value for name, value in vars(cls).items() if isinstance(value, (OPERATION, property))}
    own |= {name: value.__func__ for name, value in vars(cls).items() if isinstance(value, (staticmethod, classmethod))}
    return fields, own


def is_public_type(value):
    return inspect.isclass(value) and value.__module__ == "pyzvr" and not value.__name__.startswith("_")


def override_mark(cls, name, value):
    """Some device classes give a method arguments of its own."""
    inherited = [vars(base)[name] for base in cls.__mro__[1:] if isinstance(vars(base).get(name), OPERATION)]
    differs = name != "__init__" and any(each.__text_signature__ != value.__text_signature__ for each in inherited)
    return "  # type: ignore[override]" if differs else ""


def clash_mark(cls):
    """Some class has the awaitable form of an operation under the name of the blocking one."""
    forms = {}
    for base in cls.__mro__[1:]:
        for name, value in members(base)[1].items():
            if isinstance(value, OPERATION):
                forms.setdefault(name, set()).add(value.__stub__.startswith("async "))
    return "  # type: ignore[misc]" if any(len(kinds) == 2 for kinds in forms.values()) else ""


def docstring(value, indent):
    """First paragraph and arguments of a docstring, as lines of the stub; types stand in the signature already."""
    doc = value.__doc__ or ""
    lines = doc.partition("\n\n")[0].splitlines()
    arguments = re.search(r"\n\nArgs:\n(.*?)(?:\n\n|$)", doc, re.DOTALL)
    if arguments:
        lines += [
            "", "Args:", *re.sub(r"^( +\*{0,2}\w+) \([^)]*\):", r"\1:", arguments[1], flags=re.MULTILINE).splitlines()
        ]
    if not lines:
        return []
    lines = [line.replace("\\", "\\\\") for line in lines]
    lines[0] = '"""' + lines[0]
    if arguments or len(lines) > 1:
        lines.append('"""')
    else:
        lines[0] += ' """' if lines[0].endswith('"') else '"""'
    return [indent + line if line else "" for line in lines]


def callable_stub(line, value, indent="", mark=""):
    """A function or method of the stub with its docstring."""
    doc = docstring(value, indent + "    ")
    if not doc:
        return [indent + line + mark]
    return [indent + line.removesuffix(" ...") + mark, *doc]


def bound_constructor(cls):
    """The constructor of a bound type, if it takes arguments: the binding knows their names and default values."""
    signature = re.search(r"__init__\(self: [\w.]+, (.*)\) -> None",
                          getattr(vars(cls).get("__init__"), "__doc__", None) or "")
    if not signature:
        return []
    parameters = []
    for name, value in re.findall(r"(\w+): [^=]+ = ([^,]+)", signature[1]):
        parameters.append(f"{name}: {type(ast.literal_eval(value)).__name__} = {value}")
    return [f"    def __init__(self, {', '.join(parameters)}) -> None: ..."]


def stub_of_class(cls):
    bases = [base.__name__ for base in cls.__bases__ if base.__module__ in ("pyzvr", "builtins")]
    bases = [base for base in bases if base not in ("object", "pybind11_object")]
    bases += [vars(cls)["__stub_base__"]] if "__stub_base__" in vars(cls) else []
    fields, own = members(cls)
    lines = docstring(cls, "    ") if vars(cls).get("__doc__") else []
    lines += [f"    {name}: {kind}" for name, kind in fields.items()]
    for name, value in own.items():
        if isinstance(value, property):
            kind = value.fget.__stub__.split(" -> ")[1].removesuffix(": ...")
            if value.fset is None:
                lines += ["    @property", *callable_stub(f"def {name}(self) -> {kind}: ...", value, "    ")]
            else:
                lines += [f"    {name}: {kind}", *docstring(value, "    ")]
        else:
            if isinstance(vars(cls)[name], staticmethod):
                lines.append("    @staticmethod")
            line = value.__stub__
            if isinstance(vars(cls)[name], classmethod):
                lines.append("    @classmethod")
                line = line.replace("(self", "(cls", 1)
            lines += callable_stub(line, value, "    ", override_mark(cls, name, value))
    lines += bound_constructor(cls)
    if cls in BUFFERS:
        lines.append("    def __buffer__(self, flags: int, /) -> memoryview: ...")
    if not lines:
        lines = ["    ..."]
    head = f"class {cls.__name__}({', '.join(bases)}):" if bases else f"class {cls.__name__}:"
    return "\n".join([head + clash_mark(cls), *lines, ""])


def contents():
    """Names of the module by kind."""
    constants, functions, classes = {}, {}, {}
    for name, value in vars(pyzvr).items():
        if isinstance(value, OPERATION):
            functions[name] = value
        elif is_public_type(value):
            classes[name] = value
        elif not isinstance(value, (type, types.ModuleType)) and (name == "__version__" or not name.startswith("_")):
            constants[name] = value
    return constants, functions, classes


def constant_type(value):
    if isinstance(value, list):
        return f"list[{constant_type(value[0])}]"
    if isinstance(value, dict):
        return f"dict[str, {constant_type(next(iter(value.values()), ''))}]"
    return type(value).__name__


def stub():
    constants, functions, classes = contents()
    parts = [f"{name}: {constant_type(value)}" for name, value in constants.items()]
    parts += [line for value in functions.values() for line in callable_stub(value.__stub__, value)]
    return STUB_HEAD + "\n".join(parts) + "\n\n" + "\n".join(stub_of_class(cls) for cls in classes.values())


def main():
    parser = argparse.ArgumentParser(description="Writes what comes from the definitions in the module.")
    parser.add_argument("--check", action="store_true", help="only tell whether the file of the tree is up to date")
    options = parser.parse_args()
    text = stub()
    if STUB.exists() and STUB.read_text() == text:
        return
    if options.check:
        sys.exit("out of date, run `make stubs`: " + STUB.relative_to(ROOT).as_posix())
    STUB.write_text(text)


if __name__ == "__main__":
    main()
