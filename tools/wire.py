"""The page of what every operation sends and returns.

Command and payload of an operation that is one exchange are in its definition. What an operation with steps sends is
seen by letting it run on each model with a stand-in for the device, which notes the commands and answers zeros. Checks
pass meanwhile, and arguments are tried so that the operation comes to its end; where it does not, the page says so.
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

OPERATION = type(pyzvr.checkFirmwareError)
# Of names that share a number, the first one.
COMMANDS = {}
for _name, _value in itertools.takewhile(lambda entry: entry[0] != "STREAMING_CMD_LIST", vars(pyzvr).items()):
    if type(_value) is int:
        COMMANDS.setdefault(_value, _name)
# Where zeros would say that nothing is free.
REPLIES = {pyzvr.GET_PIN_MODE_OF_SLOT: b"\0\x0c" + b"\x11" * 6, pyzvr.GET_SLOT_MODE: b"\x08\x10\x18\x20\x30"}
BROADCAST_REPLIES = [set(), {bytes(128), bytes(127)}]
MOST_REQUESTS = 50


class EnoughSeenError(Exception):
    """An operation would go on asking."""


class StandIn:
    """Comes before a product's own classes."""

    def note(self, cmd, data_out):
        self._preparePacket(cmd, data_out)
        self.commands.append(COMMANDS[cmd])
        if len(self.commands) == MOST_REQUESTS:
            raise EnoughSeenError

    def _echoPacketWithRetry(self, cmd, data_out, timeout=5):
        self.note(cmd, data_out)
        return REPLIES.get(cmd, bytes(128))

    def _sendPacketWithoutReply(self, cmd, data_out):
        self.note(cmd, data_out)

    def _broadcastPacket(self, cmd, data_out):
        self.note(cmd, data_out)
        return self.found


def is_timed(value):
    return "timeout=3" in value.__text_signature__


def operations_of(cls):
    """Own operations of a blocking class; those that wait for the device have a time limit, a twin, or both."""
    twin = vars(getattr(pyzvr, cls.__name__ + "_async", object))
    return {name: value for name, value in vars(cls).items()
            if isinstance(value, OPERATION) and (is_timed(value) or name + "_async" in twin)}


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
    known = {"int": [number], "bool": [True], "float": [1.0], "str": ["1.2.3.4", "0:1:2:3:4:5"], "list[str]": [["Idle"]],
             "list[int]": [[0]], "Sequence[int]": [[0]], "list[float]": [[1.0]], "Sequence[float]": [[1.0]],
             "Any": [array.array("d", bytes(64))]}
    return known.get(kind.partition(" | ")[0], [None])


def arguments_of(value):
    """Lists of arguments to try: ports and numbers are 0, then 1, and so on."""
    parameters = ast.parse(value.__stub__).body[0].args
    wanted = parameters.args[1:len(parameters.args) - len(parameters.defaults)]
    for number in range(5):
        yield from itertools.product(*(samples(ast.unparse(each.annotation), number) for each in wanted))


def runs_on(product, name, value):
    """What each try sends, and whether the operation comes to its end with it."""
    for arguments, product.found in itertools.product(arguments_of(value), BROADCAST_REPLIES):
        product.commands = []
        try:
            getattr(product, name)(*arguments)
        except pyzvr.APINotSupportError:
            return
        except Exception as failure:
            yield product.commands, isinstance(failure, EnoughSeenError)
        else:
            yield product.commands, True


def sent_by(name, value, products):
    """What the operation sends on all the models that have it, shortest first."""
    texts = set()
    for product in products:
        if getattr(type(product), name, None) is value:
            runs = list(runs_on(product, name, value))
            ended = [commands for commands, comes_to_end in runs if comes_to_end]
            for commands in ended or [max((commands for commands, _ in runs), key=len, default=None)]:
                if commands is not None:
                    # A command that comes again and again is told once.
                    text = ", ".join(f"`{command}`" for command, _ in itertools.groupby(commands)) or "nothing"
                    texts.add(text if ended else text + " before it fails")
    return "; or ".join(sorted(texts, key=lambda text: (text.startswith("`"), len(text), text)))


def result_of(value):
    """What is declared, with its type."""
    kind = value.__stub__.rpartition(" -> ")[2].removesuffix(": ...")
    declared = value.__doc__.partition("\n\nReturns:\n    ")[2].partition("\n")[0]
    return declared.removesuffix(".") or kind


def row_of(name, value, products):
    if value.__exchange__:
        command, payload, _ = value.__exchange__
        sent = f"`{command}`" + (f": {payload}" if payload else "")
    else:
        sent = sent_by(name, value, products)
    cells = [f"`{name}`", sent, result_of(value)]
    return "| " + " | ".join(cell.replace("|", "\\|") for cell in cells) + " |"


@contextlib.contextmanager
def stand_ins():
    """One of each model, in a folder that is thrown away."""
    before = os.getcwd()
    with tempfile.TemporaryDirectory() as folder, contextlib.ExitStack() as stack:
        os.chdir(folder)
        stack.callback(os.chdir, before)
        stack.enter_context(contextlib.redirect_stdout(io.StringIO()))
        yield [stack.enter_context(stand_in(model)) for model in [*pyzvr.HANDLE_LIST, "DeviceFinder"]]


def page():
    lines = ["# What is sent, and what comes back", "", "Written by `make docs`; do not edit.", "",
             "Operations that are one exchange have their payload here: arguments in the order of the bytes, and numbers that",
             "no argument gives. Of operations with steps it is the commands that they send, one behind the other; some send",
             "others on another model or with other arguments, or nothing. The awaitable forms send the same. Frames and",
             "arguments are in [reference.md](reference.md).", ""]
    with stand_ins() as products:
        for cls in feature_classes():
            lines += [f"## {cls.__name__}", "", "| Operation | Sends | Returns |", "| --- | --- | --- |"]
            lines += [row_of(name, value, products) for name, value in operations_of(cls).items()]
            lines.append("")
    return "\n".join(lines).rstrip() + "\n"
