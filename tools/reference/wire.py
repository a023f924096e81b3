"""What every operation sends and returns, as tables.

Command and payload of an operation that is one exchange are in its definition. What an operation with steps sends is
seen by letting it run on each model with a stand-in for the device, which records the requests and answers them. Checks
pass meanwhile. Arguments and replies are varied, to tell the bytes that depend on them from those that are always the
same. Where no arguments bring the operation to its end, the page says so.
"""

import array
import ast
import contextlib
import inspect
import io
import itertools
import os
import tempfile

import pyzvr
from reference import markup, package

OPERATION = type(pyzvr.checkFirmwareError)
# Of names that share a number, the first one.
COMMANDS = {}
for _name, _value in itertools.takewhile(lambda entry: entry[0] != "STREAMING_CMD_LIST", vars(pyzvr).items()):
    if type(_value) is int:
        COMMANDS.setdefault(_value, _name)
# Where zeros would say that nothing is free.
FREE = {pyzvr.GET_PIN_MODE_OF_SLOT: b"\0\x0c" + b"\x11" * 6, pyzvr.GET_SLOT_MODE: b"\x08\x10\x18\x20\x30"}
BROADCAST_REPLIES = [set(), {bytes(128), bytes(127)}]
REPLIES = [bytes(128), bytes([0, 0, *range(1, 127)])]
MOST_REQUESTS = 50
MOST_SHOWN = 8
VARIES = "_"
NUMBERS = (0, 1, 2, 3, 4, 9)
GREAT = (200, 50_000, 0x7A6B5C4D)


class EnoughSeenError(Exception):
    """An operation would go on asking."""


class StandIn:
    """Comes before a product's own classes."""

    def note(self, cmd, data_out):
        self._preparePacket(cmd, data_out)
        self.requests.append((COMMANDS[cmd], list(data_out)))
        if len(self.requests) == MOST_REQUESTS:
            raise EnoughSeenError

    def _echoPacketWithRetry(self, cmd, data_out, timeout=5):
        self.note(cmd, data_out)
        return FREE.get(cmd, self.reply)

    def _sendPacketWithoutReply(self, cmd, data_out):
        self.note(cmd, data_out)

    def _broadcastPacket(self, cmd, data_out):
        self.note(cmd, data_out)
        return self.found


def is_timed(value):
    return "timeout=3" in value.__text_signature__


def operations_of(cls):
    """Own operations of a blocking class; those that wait for the device have a time limit, an async variant, or both."""
    variants = vars(getattr(pyzvr, cls.__name__ + "_async", object))
    return {name: value for name, value in vars(cls).items()
            if isinstance(value, OPERATION) and (is_timed(value) or name + "_async" in variants)}


def feature_classes():
    """Classes with operations, but for the request engine."""
    for name, cls in vars(pyzvr).items():
        if inspect.isclass(cls) and name.endswith(("Module", "Based", "Union")) and operations_of(cls):
            yield cls


def stand_in(model):
    cls = getattr(pyzvr, model)
    checks = {name: lambda *_: None for base in cls.__mro__ for name, value in vars(base).items()
              if name.startswith("_check") and isinstance(value, OPERATION) and not is_timed(value)}
    del checks["_checkCommandType"]
    return type(model, (StandIn, cls), checks)()


def samples(kind, number):
    """Values of a parameter's type."""
    integers, modes = [number] * (number + 1), [["Idle"], ["DI", "DI"]]
    known = {
        "int": [number], "bool": [number % 2 == 0], "float": [number * 1.1 + 0.3],
        "str": [sign.join(str(number + place) for place in range(count)) for sign, count in ((".", 4), (":", 6))],
        "list[str]": [modes[number % 2]], "list[int]": [integers], "Sequence[int]": [integers],
        "list[float]": [integers], "Sequence[float]": [integers], "Any": [array.array("d", bytes(64))]
    }
    return known.get(kind.partition(" | ")[0], [None])


def arguments_of(value):
    """Lists of arguments to try: those that must be given, then all. All are 0, then 1, and so on; then one is great."""
    parameters = ast.parse(value.__stub__).body[0].args
    needed = parameters.args[1:len(parameters.args) - len(parameters.defaults)]
    optional = [each for each in parameters.args[1 + len(needed):] if each.arg not in ("timeout", "delay")]
    for wanted in [needed, needed + optional] if optional else [needed]:
        for number in NUMBERS:
            yield from itertools.product(*(samples(ast.unparse(each.annotation), number) for each in wanted))
        ones = [samples(ast.unparse(each.annotation), 1)[0] for each in wanted]
        for place, great in itertools.product(range(len(ones)), GREAT):
            if type(ones[place]) is int:
                yield *ones[:place], great, *ones[place + 1:]


def runs_on(product, name, value):
    """What each try sends, and whether the operation comes to its end with it."""
    found = BROADCAST_REPLIES if name.startswith("Bcst_") else BROADCAST_REPLIES[:1]
    for arguments, product.found, product.reply in itertools.product(arguments_of(value), found, REPLIES):
        product.requests = []
        try:
            getattr(product, name)(*arguments)
        except pyzvr.APINotSupportError:
            return
        except Exception as error:
            yield arguments, product.requests, isinstance(error, EnoughSeenError)
        else:
            yield arguments, product.requests, True


def payload(data):
    """The bytes that are the same in all these payloads, and where others stand."""
    width = min(map(len, data))
    cells = [str(column[0]) if len(set(column)) == 1 else VARIES for column in zip(*data)]
    return cells + ["..."] * any(len(each) > width for each in data)


def text_of(runs, with_payload):
    """What these runs send; all send the same commands, but for how often one comes in a row."""
    if len({len(run) for run in runs}) > 1 or len(runs[0]) > MOST_SHOWN:
        # A command that comes again and again is told once.
        runs = [[(command, [data for _, data in group])
                 for command, group in itertools.groupby(run, lambda each: each[0])] for run in runs]
    else:
        runs = [[(command, [data]) for command, data in run] for run in runs]
    parts = []
    for requests in zip(*runs):
        cells = payload([data for _, group in requests for data in group]) if with_payload else []
        parts.append(f"`{requests[0][0]}`" + (": " + ", ".join(cells) if cells else ""))
    return ", then ".join(parts) or "nothing"


def commands_of(run):
    return tuple(command for command, _ in itertools.groupby(command for command, _ in run))


def sent_by(name, value, products):
    """What the operation sends on all the models that have it, shortest first."""
    tried = {True: [], False: []}
    for product in products:
        if getattr(type(product), name, None) is value:
            runs = list(runs_on(product, name, value))
            ended = [(arguments, run) for arguments, run, comes_to_end in runs if comes_to_end]
            unfinished = max((run for _, run, _ in runs), key=len, default=None)
            if ended:
                tried[True] += ended
            elif unfinished is not None:
                tried[False].append(((), unfinished))
    texts = set()
    for comes_to_end, runs in tried.items():
        for commands in {commands_of(run) for _, run in runs}:
            alike = [(arguments, run) for arguments, run in runs if commands_of(run) == commands]
            # From one list of arguments alone it cannot be told which bytes depend on them.
            varied = len({repr(arguments)
                          for arguments, _ in alike}) > 1 or not any(arguments for arguments, _ in alike)
            texts.add(text_of([run for _, run in alike], varied and comes_to_end)
                      + ("" if comes_to_end else " before it fails"))
    return "; or ".join(sorted(texts, key=lambda text: (text.startswith("`"), len(text), text)))


def result_of(value):
    """What is declared, with its type."""
    kind = value.__stub__.rpartition(" -> ")[2].removesuffix(": ...")
    declared = value.__doc__.partition("\n\nReturns:\n    ")[2].partition("\n")[0]
    return declared.removesuffix(".") or kind


def told(name, value, products):
    """What an operation sends, and what it returns."""
    if value.__exchange__:
        command, payload, _ = value.__exchange__
        return f"`{command}`" + (f": {payload}" if payload else ""), result_of(value)
    return sent_by(name, value, products), result_of(value)


@contextlib.contextmanager
def stand_ins():
    """One of each model, in a folder that is thrown away."""
    before = os.getcwd()
    with tempfile.TemporaryDirectory() as folder, contextlib.ExitStack() as stack:
        os.chdir(folder)
        stack.callback(os.chdir, before)
        stack.enter_context(contextlib.redirect_stdout(io.StringIO()))
        yield [stack.enter_context(stand_in(model)) for model in [*pyzvr.HANDLE_LIST, "DeviceFinder"]]


def of_all():
    """What each operation sends and returns, by its class and name."""
    with stand_ins() as products:
        return {(cls.__name__, name): told(name, value, products)
                for cls in feature_classes() for name, value in operations_of(cls).items()}


def pages(wire, targets):
    """A page of tables for each chapter, by its name."""
    found = {}
    for chapter, modules in package.CHAPTERS.items():
        lines = markup.heading(f"{chapter}: what is sent, and what comes back")
        lines += [".. py:currentmodule:: pyzvr", "", ":doc:`index` tells how to read these tables.", ""]
        empty = len(lines)
        for title, names in modules.values():
            for cls in names.split():
                rows = [[targets.role(name, f"pyzvr.{cls}"), markup.line(sent, targets), markup.line(result, targets)]
                        for (holder, name), (sent, result) in wire.items() if holder == cls]
                if rows:
                    lines += markup.heading(f"{title}: {cls}", "-")
                    lines += markup.table(["Operation", "Sends", "Returns"], rows, (3, 5, 4))
        if len(lines) > empty:
            found[f"wire/{chapter.lower()}.rst"] = "\n".join(lines)
    return found
