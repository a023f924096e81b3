"""Calls everything that the module has with what nobody should give it: hostile objects as self, hostile arguments.

    python3 hostile_lab.py FILE SEED SECONDS [CALL]   each call stands in the file before it is made, so that a crash has a name

Prints what is wrong as JSON. With a number as CALL only this one is made, to look at it.
"""

import array
import asyncio
import contextlib
import faulthandler
import inspect
import io
import json
import os
import queue
import random
import resource
import signal
import sys
import threading
import time
import types
import warnings

import pyzvr

FORBIDDEN = ("Unable to cast", "_M_", "std::", "map::at", "vector::", "basic_string", "stoi", "stod", "bad_",
             "pybind11", "C++", "bad allocation", "__n (which is")
# Those that wait for devices or answers by design, so long that a run would be theirs alone.
SLOW = {
    "connect", "connect_async", "Bcst_enumerateNetworkDevices", "Bcst_checkMACAndRing", "Bcst_checkMACAndReboot",
    "Bcst_checkMACAndSetIP", "_broadcastPacket", "sendBcstPacket"
}


class Raising:
    """Whatever is asked of it, it fails."""

    def _raise(self, *_):
        raise LookupError("hostile")

    __index__ = __int__ = __float__ = __iter__ = __bool__ = __len__ = __getitem__ = __contains__ = __eq__ = __repr__ = __str__ = __call__ = __bytes__ = _raise
    __hash__ = object.__hash__
    __lt__ = __gt__ = __le__ = __ge__ = __add__ = __radd__ = __mul__ = __and__ = __fspath__ = _raise


class CallingBack:
    """Uses the object that it was given to while it is looked at."""

    box = None

    def _use(self):
        box = self.box
        with contextlib.suppress(Exception):
            box._getReplyFromPool(5, 0)
        with contextlib.suppress(Exception):
            type(box).__init__(box)
        with contextlib.suppress(Exception):
            box.data_pool_echo = {}

    def __index__(self):
        self._use()
        return 1

    def __float__(self):
        self._use()
        return 1.0

    def __bool__(self):
        self._use()
        return True

    def __len__(self):
        self._use()
        return 1

    def __iter__(self):
        self._use()
        return iter([1])

    def __getitem__(self, key):
        self._use()
        if key > 3:
            raise IndexError
        return 1


class Endless:
    """A sequence that says it is long, and ends after all."""

    def __len__(self):
        return 2**62

    def __getitem__(self, key):
        if isinstance(key, int) and key > 1000:
            raise IndexError
        return 1

    def __iter__(self):
        return iter(range(1000))


class Shrinking(list):
    """A list that loses its items while they are read."""

    def __getitem__(self, key):
        self.clear()
        return 1


class Changing:
    """Another number each time it is asked."""

    def __init__(self):
        self.number = 0

    def __index__(self):
        self.number += 1
        return self.number * 100


class Subclassed(int):
    def __index__(self):
        return 5

    def __int__(self):
        raise LookupError("hostile")


def one_of_each():
    """An object of every class that can be made, and one of each that was never initialised."""
    for name, class_ in sorted(vars(pyzvr).items()):
        if inspect.isclass(class_) and not issubclass(class_, Warning):
            with contextlib.suppress(Exception):
                yield f"{name}.__new__", class_.__new__(class_)
            if not issubclass(class_, BaseException):
                with contextlib.suppress(Exception):
                    yield name, class_()


def calling_back(boxes):
    calling = CallingBack()
    calling.box = random.choice(boxes)
    return calling


def self_containing():
    inner = []
    inner.append(inner)
    return inner


NUMBERS = (None, True, 0, 1, 2, -1, 7, 255, 256, 65536, 2**31, 2**32, 2**63, -2**63, 2**64, 10**40, 0.0, 0.001, -0.5,
           1e300, 1j, float("nan"), float("inf"), float("-inf"))
TEXTS = ("", "x", "1.2.3.4", "\udc80", "a\0b", b"", b"ab", (1, 2), range(3), int, len, sys, pyzvr.TarnDio)
VALUES = {  # what is given as an argument: made anew for each call, from the boxes
    **{repr(value): lambda boxes, value=value: value for value in NUMBERS + TEXTS},
    "long text": lambda boxes: "x" * 100000, "long bytes": lambda boxes: bytes(70000), "bytearray": lambda boxes: bytearray(b"ab"),
    "memoryview": lambda boxes: memoryview(array.array("d", [1, 2])), "strided": lambda boxes: memoryview(bytearray(20))[::2],
    "array": lambda boxes: array.array("d", bytes(80)), "array of bytes": lambda boxes: array.array("B", bytes(8)),
    "[]": lambda boxes: [], "[1]": lambda boxes: [1], "[None]": lambda boxes: [None], "[2**64]": lambda boxes: [2**64], "[-1, 300]": lambda boxes: [-1, 300],
    "['x']": lambda boxes: ["x"], "[[1]]": lambda boxes: [[1]], "long list": lambda boxes: [1] * 5000, "None list": lambda boxes: [None] * 9, "self-containing": lambda boxes: self_containing(),
    "{}": lambda boxes: {}, "{1: 2}": lambda boxes: {1: 2}, "{1: [(0, 0)]}": lambda boxes: {1: [(0, 0)]}, "set": lambda boxes: {1, 2}, "generator": lambda boxes: (i for i in range(3)),
    "object": lambda boxes: object(), "namespace": lambda boxes: types.SimpleNamespace(), "lambda": lambda boxes: lambda *a, **k: None, "exception": lambda boxes: KeyError("x"),
    "Raising": lambda boxes: Raising(), "[Raising]": lambda boxes: [Raising()], "CallingBack": calling_back, "[CallingBack]": lambda boxes: [calling_back(boxes)],
    "Endless": lambda boxes: Endless(), "Shrinking": lambda boxes: Shrinking([1, 2, 3]), "Changing": lambda boxes: Changing(), "Subclassed": lambda boxes: Subclassed(3),
    "box": lambda boxes: random.choice(boxes), "queue": lambda boxes: queue.Queue(2), "lock": lambda boxes: threading.Lock(), "Fifo": lambda boxes: boxes[0].data_pool_strm[1],
    "frame": lambda boxes: pyzvr.CANFrame(5),
}


def callables():
    operation = type(pyzvr.checkFirmwareError)
    for name, value in sorted(vars(pyzvr).items()):
        if name.startswith("__"):
            continue
        if inspect.isclass(value):
            yield name, None, value
            for member in sorted(vars(value)):
                if member not in ("__doc__", "__module__", "__dict__", "__weakref__", "__annotations__",
                                  "__orig_bases__", "__parameters__", "__class_getitem__"):
                    yield f"{name}.{member}", value, vars(value)[member]
        elif callable(value) or isinstance(value, operation):
            yield name, None, value


def awaited(coroutine):
    """Its first steps; then it is left."""
    loop = asyncio.new_event_loop()
    try:
        with contextlib.suppress(asyncio.TimeoutError):
            return loop.run_until_complete(asyncio.wait_for(coroutine, 0.002))
    finally:
        loop.close()


class Patience:
    """Ends a call that waits, as Ctrl-C would; one that does not hear of it is the watchdog's."""

    active = False

    def __init__(self, seconds):
        self.seconds = seconds

    def __enter__(self):
        Patience.active = True
        signal.setitimer(signal.ITIMER_REAL, self.seconds, 0.05)

    def __exit__(self, *_):
        Patience.active = False
        signal.setitimer(signal.ITIMER_REAL, 0)


class Waited(BaseException):
    pass


def interrupt(*_):
    if Patience.active:
        raise Waited


def text_of(error):
    try:
        return f"{type(error).__name__}: {error}"
    except Exception:
        return type(error).__name__


def limit_memory():
    """A list of 2**31 is to fail, not to take the machine with it."""
    if "asan" not in os.environ.get("LD_PRELOAD", ""):
        resource.setrlimit(resource.RLIMIT_AS, (4 << 30, 4 << 30))


def main(path, seed, seconds, only=None):
    limit_memory()
    signal.signal(signal.SIGALRM, interrupt)
    warnings.simplefilter("ignore")
    threading.excepthook = lambda _: None
    sys.unraisablehook = lambda _: None
    os.chdir(os.path.dirname(path) or ".")
    boxes = [
        pyzvr.TarnDio(),
        pyzvr.SableCan(),
        pyzvr.Lattice(),
        pyzvr.HeronImu(),
        pyzvr.TarnOut(),
        pyzvr.Pawl(),
        pyzvr.Drone(),
        pyzvr.DeviceFinder(),
        pyzvr.TarnThermo()
    ]
    selves = dict(one_of_each())
    targets = list(callables())
    names = sorted(VALUES)
    wrong, made, end = {}, 0, time.monotonic() + seconds
    log = os.open(path, os.O_WRONLY | os.O_CREAT | os.O_TRUNC)
    order = []
    while time.monotonic() < end:
        if not order:
            order = random.Random(seed * 2**40 - made).sample(range(len(targets)), len(targets))
        name, owner, target = targets[order.pop()]
        random.seed(seed * 2**40 + made)  # a call is the same whatever was left out before it
        member = name.partition(".")[2]
        arguments = [random.choice(names) for _ in range(random.choice((0, 1, 1, 2, 2, 3, 4, 6)))]
        chosen = []
        if owner is not None:
            fitting = [key for key, each in selves.items() if isinstance(each, owner)]
            kind = random.random()
            if fitting and kind < 0.6:
                chosen = [random.choice(fitting)]
            elif kind < 0.8:
                chosen = [random.choice(list(selves))]
            else:
                arguments.insert(0, random.choice(("None", "object", "1", "box", repr(int), "Raising")))
        made += 1
        call = f"{made}: {name}({', '.join(chosen + arguments)})"
        if only is not None and made != only:
            continue
        if member in SLOW and chosen:
            continue
        os.pwrite(log, call.encode().ljust(400) + b"\n", 0)
        if made % 20 == 1:
            faulthandler.dump_traceback_later(20, exit=True)
        given = [VALUES[key](boxes) for key in arguments]
        if member == "Logger_openFile" and any(hasattr(each, "__index__") for each in given):
            continue  # a number is a descriptor, and closing it would take this program's own
        try:
            with Patience(0.05):
                function = target
                if isinstance(target, (staticmethod, classmethod)):
                    function = target.__func__
                elif isinstance(target, property) or not callable(target):
                    subject = selves[chosen[0]] if chosen else given[0] if given else None
                    with contextlib.suppress(AttributeError):
                        if len(given) > 1 and hasattr(type(target), "__set__"):
                            target.__set__(subject, given[1])
                        elif hasattr(type(target), "__get__"):
                            target.__get__(subject, type(subject))
                    continue
                result = function(*(selves[key] for key in chosen), *given)
                if inspect.iscoroutine(result) or hasattr(result, "send") and hasattr(result, "cr_await"):
                    awaited(result)
                elif isinstance(result, types.GeneratorType):
                    next(result, None)
        except (Waited, LookupError, KeyboardInterrupt):
            Patience.active = False
        except BaseException as error:
            Patience.active = False
            text = text_of(error)
            if isinstance(error, SystemError) or any(each in text for each in FORBIDDEN):
                wrong.setdefault(f"{name}: {text[:160]}", call)
        if made % 500 == 0:
            boxes[:] = [type(each)() for each in boxes]
    faulthandler.cancel_dump_traceback_later()
    os.pwrite(log, b"all done".ljust(400) + b"\n", 0)
    print(json.dumps({"made": made, "wrong": wrong}), file=OUT, flush=True)
    os._exit(0)  # what was broken on purpose need not be taken apart


if __name__ == "__main__":
    faulthandler.enable()
    OUT, sys.stdout = sys.stdout, io.StringIO()
    main(sys.argv[1], int(sys.argv[2]), float(sys.argv[3]), int(sys.argv[4]) if len(sys.argv) > 4 else None)
