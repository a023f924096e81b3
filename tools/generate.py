"""Writes the type stub and the pages of reference, models and wire from the definitions in the module.

Each callable of the library carries its stub line (`__stub__`) and, where it is one exchange, its wire data
(`__exchange__`). With --check nothing is written; the exit status tells whether the files are as they would be.
"""

import contextlib
import inspect
import io
import sys
import types
from pathlib import Path

import pyzvr
import wire

ROOT = Path(__file__).resolve().parent.parent
STUB = ROOT / "python" / "pyzvr" / "__init__.pyi"
REFERENCE = ROOT / "docs" / "reference.md"
MODELS = ROOT / "docs" / "models.md"
WIRE = ROOT / "docs" / "wire.md"

STUB_HEAD = '''\
# Written by `make stubs`; do not edit.
import socket
from collections.abc import Iterable, Iterator, Mapping, MutableMapping, MutableSet, Sequence
from decimal import Decimal
from typing import Any

from typing_extensions import Self

'''
# Of the bound types.
CONSTRUCTORS = {
    "Fifo": "maxsize: int = ...",
    "ItemFifo": "maxsize: int = ...",
    "RowFifo": "maxsize: int = ...",
    "USBClient": "serial_num: str = ...",
}
OPERATION = type(pyzvr.checkFirmwareError)


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


def stub_of_class(cls):
    bases = [base.__name__ for base in cls.__bases__ if base.__module__ in ("pyzvr", "builtins")]
    bases = [base for base in bases if base not in ("object", "pybind11_object")]
    bases += [vars(cls)["__stub_base__"]] if "__stub_base__" in vars(cls) else []
    fields, own = members(cls)
    lines = [f"    {name}: {kind}" for name, kind in fields.items()]
    for name, value in own.items():
        if isinstance(value, property):
            kind = value.fget.__stub__.split(" -> ")[1].removesuffix(": ...")
            if value.fset is None:
                lines += ["    @property", f"    def {name}(self) -> {kind}: ..."]
            else:
                lines.append(f"    {name}: {kind}")
        else:
            if isinstance(vars(cls)[name], staticmethod):
                lines.append("    @staticmethod")
            line = value.__stub__
            if isinstance(vars(cls)[name], classmethod):
                lines.append("    @classmethod")
                line = line.replace("(self", "(cls", 1)
            lines.append("    " + line + override_mark(cls, name, value))
    if cls.__name__ in CONSTRUCTORS:
        lines.append(f"    def __init__(self, {CONSTRUCTORS[cls.__name__]}) -> None: ...")
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
    parts += [value.__stub__ for value in functions.values()]
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
        # A twin says what its blocking form says, but for the time limit.
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
        "Written by `make docs` from the table of models; do not edit.",
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


def main():
    check = "--check" in sys.argv[1:]
    stale = []
    for path, text in ((STUB, stub()), (REFERENCE, reference()), (MODELS, models()), (WIRE, wire.page())):
        if not path.exists() or path.read_text() != text:
            stale.append(path.relative_to(ROOT).as_posix())
            if not check:
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text)
    if check and stale:
        sys.exit("out of date, run `make stubs`: " + ", ".join(stale))


if __name__ == "__main__":
    main()
