"""Writes the type stub, the pages of models and wire, and the reference from the definitions in the module.

    generate.py                    writes the stub and the two pages, which are kept in the tree
    generate.py --check            writes nothing; the exit status tells whether they are as they would be
    generate.py --reference FILE   writes the reference of all operations

Each callable of the library carries its stub line (`__stub__`) and, where it is one exchange, its wire data
(`__exchange__`).
"""

import argparse
import ast
import contextlib
import inspect
import io
import re
import sys
import types
from pathlib import Path

import pyzvr
import wire

ROOT = Path(__file__).resolve().parent.parent
STUB = ROOT / "python" / "pyzvr" / "__init__.pyi"
MODELS = ROOT / "docs" / "models.md"
WIRE = ROOT / "docs" / "wire.md"

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


def signature(name, value):
    return f"`{name}{inspect.signature(value)}`"


def reference_of_class(cls):
    _, own = members(cls)
    operations = {name: value for name, value in own.items() if isinstance(value, OPERATION)}
    lines = [f"## {cls.__name__}", "", inspect.getdoc(cls) or "", ""]
    exchanges = {name: value for name, value in operations.items() if value.__exchange__}
    if exchanges:
        lines += ["| Operation | Command | Payload | Result |", "| --- | --- | --- | --- |"]
        for name, value in exchanges.items():
            command, payload, reply = value.__exchange__
            lines.append(f"| `{name}` | `{command}` ({getattr(pyzvr, command)}) | {payload or 'none'} | {reply} |")
        lines.append("")
    for name, value in operations.items():
        if not name.startswith("__"):
            lines += ["### " + signature(name, value), "", "```text", value.__doc__, "```", ""]
    return lines


def reference():
    _, functions, classes = contents()
    lines = ["# Reference", "", "Written by `make docs` from the definitions; do not edit.", "", "## Functions", ""]
    for name, value in functions.items():
        lines += ["### " + signature(name, value), "", "```text", value.__doc__, "```", ""]
    lines += ["## Failures", "", "| Class | Base | Code | Message |", "| --- | --- | --- | --- |"]
    failures = [cls for cls in classes.values() if issubclass(cls, (pyzvr.Error, pyzvr.ZVRWarning))]
    for cls in failures:
        if cls not in (pyzvr.Error, pyzvr.ZVRWarning):
            failure = cls(silent=True)
            lines.append(f"| `{cls.__name__}` | `{cls.__bases__[0].__name__}` | {failure.code} | {failure.msg} |")
    lines.append("")
    for cls in classes.values():
        # An asynchronous variant says what its blocking form says, but for the time limit.
        if cls not in failures and not (cls.__name__.endswith("_async") and cls is not pyzvr.Packet_async):
            lines += reference_of_class(cls)
    return "\n".join(lines).rstrip() + "\n"


LINKS = {"USBDevice": "USB", "ETHDevice": "Ethernet", "WifiDevice": "Wi-Fi", "UARTDevice": "serial line"}


def lines_of(ports):
    """Ports and pins of a digital map, "0: 0-7, 1: 0-5"."""
    texts = []
    for port, pins in ports.items():
        runs = []
        for pin in pins:
            if runs and pin == runs[-1][1] + 1:
                runs[-1][1] = pin
            else:
                runs.append([pin, pin])
        texts.append(f"{port}: " + " ".join(f"{first}-{last}" if last > first else str(first) for first, last in runs))
    return ", ".join(texts)


def models():
    lines = [
        "# Models",
        "",
        "Written by `make stubs` from the table of models; do not edit.",
        "",
        "| Class | Name | Link | Modules | Digital inputs, port: pins | Digital outputs |",
        "| --- | --- | --- | --- | --- | --- |",
    ]
    for name in pyzvr.HANDLE_LIST:
        cls = getattr(pyzvr, name)
        bases = [base.__name__ for base in cls.__mro__]
        link = next(text for base, text in LINKS.items() if base in bases)
        modules = [base.removesuffix("Module") for base in bases if base.endswith("Module")]
        with contextlib.redirect_stdout(io.StringIO()), cls() as handle:
            pins = [lines_of(getattr(handle, field, {})) for field in ("di_dict", "do_dict")]
        if pins[0] == pins[1] and pins[0]:
            pins[1] = "the same"
        cells = [f"`{name}`", pyzvr.LABEL_DICT[name], link, ", ".join(modules), *pins]
        lines.append("| " + " | ".join(cells) + " |")
    return "\n".join(lines) + "\n"


def write(path, text):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(text)


def main():
    parser = argparse.ArgumentParser(description="Writes what comes from the definitions in the module.")
    parser.add_argument("--check", action="store_true", help="only tell whether the files of the tree are up to date")
    parser.add_argument("--reference", type=Path, metavar="FILE", help="write the reference of all operations")
    options = parser.parse_args()
    if options.reference:
        write(options.reference, reference())
        return
    stale = []
    for path, text in ((STUB, stub()), (MODELS, models()), (WIRE, wire.page())):
        if not path.exists() or path.read_text() != text:
            stale.append(path.relative_to(ROOT).as_posix())
            if not options.check:
                write(path, text)
    if options.check and stale:
        sys.exit("out of date, run `make stubs`: " + ", ".join(stale))


if __name__ == "__main__":
    main()
