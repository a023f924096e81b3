"""Queues, pools and gates are what they say: beside the host's own, in every call that those have."""

import asyncio
import collections
import contextlib
import gc
import queue
import threading
import time
import warnings
import weakref

import pytest
from conftest import Double, awaited, wired
from hypothesis import given, settings
from hypothesis import strategies as st

import pyzvr

KINDS = (pyzvr.Fifo, pyzvr.ItemFifo, pyzvr.RowFifo)
every_kind = pytest.mark.parametrize("kind", KINDS, ids=lambda kind: kind.__name__)
PATIENCE = 10  # seconds for what is to happen at once


def outcome(action, *arguments, **named):
    """What a call gives: its value, or the kind of its failure."""
    try:
        return action(*arguments, **named)
    except Exception as failure:
        return type(failure)


def until(condition):
    """Waits for what another thread does."""
    end = time.monotonic() + PATIENCE
    while not condition():
        assert time.monotonic() < end
        time.sleep(0.001)


@contextlib.contextmanager
def running(body, *arguments):
    """A body of a thread, called by hand; what it raises comes out at the end."""
    failures = []

    def run():
        try:
            body(*arguments)
        except BaseException as failure:
            failures.append(failure)

    thread = threading.Thread(target=run, daemon=True)
    thread.start()
    yield thread
    thread.join(PATIENCE)
    assert not thread.is_alive()
    if failures:
        raise failures[0]


@contextlib.contextmanager
def warned():
    """The warnings of all threads, each with the thread that made it."""
    made = []
    with warnings.catch_warnings():
        warnings.simplefilter("always")
        warnings.showwarning = lambda message, *rest: made.append((str(message), threading.get_ident()))
        yield made


# Queues.

A, B = object(), object()
CALLS = [  # in an order that leaves nothing waiting; the queue has room for two
    ("get", False), ("get", {"block": False}), ("get", True, 0), ("get", {"timeout": 0.001}), ("get", {"timeout": -1}), ("get_nowait",),
    ("task_done",), ("put", A), ("put", B, False), ("put", A, False), ("put", A, {"block": False}), ("put", A, True, 0.001), ("put", A, {"timeout": 0.001}),
    ("put", A, {"timeout": -1}), ("put_nowait", A), ("full",), ("get",), ("get", {"timeout": -1}), ("get", {"timeout": 1}), ("empty",), ("get", True, "x"),
    ("put", None, {"block": False}), ("get",), ("put", {"item": [1], "block": True, "timeout": 1}), ("get", False), ("task_done",), ("task_done",), ("task_done",),
    ("task_done",), ("task_done",), ("join",), ("put",), ("put", A, {"wait": 1}), ("get", 1, 2, 3), ("put", A, {"timeout": "x"}), ("put", B, {"timeout": 5}),
    ("put", A, False, -1), ("get", False, -1), ("put", A, {"timeout": "x"}), ("put", A, {"timeout": "x"}),
]


def called(tried, calls):
    for name, *arguments in calls:
        named = arguments.pop() if arguments and isinstance(arguments[-1], dict) else {}
        value = outcome(getattr(tried, name), *arguments, **named)
        yield name, arguments, named, value, tried.qsize(), tried.full(), tried.empty(), tried.unfinished_tasks


@every_kind
def test_every_call_gives_what_the_host_s_queue_gives(kind):
    own, ours = queue.Queue(2), kind(2)
    assert ours.maxsize == 2
    for expected, seen in zip(called(own, CALLS), called(ours, CALLS)):
        assert seen == expected  # objects without values of their own are equal to themselves alone


@every_kind
@pytest.mark.parametrize("maxsize", [0, -1, 1, 10**6, 2**40, None])
def test_size_is_the_one_given(kind, maxsize):
    own, ours = (queue.Queue(), kind()) if maxsize is None else (queue.Queue(maxsize), kind(maxsize))
    if maxsize is not None or kind is not pyzvr.RowFifo:
        assert max(ours.maxsize, 0) == max(own.maxsize, 0) == max(kind(maxsize=own.maxsize).maxsize, 0)
    for _ in range(3):
        assert outcome(ours.put_nowait, A) == outcome(own.put_nowait, A)
    assert ours.qsize() == own.qsize()


STEP = st.one_of(
    st.tuples(st.sampled_from(["put_nowait", "put"]), st.integers(0, 9)).map(lambda step: (*step, False) if step[0] == "put" else step),
    st.sampled_from([("get_nowait",), ("get", False), ("get", True, 0), ("task_done",), ("empty",), ("full",)]))


@every_kind
@settings(deadline=None, max_examples=50)
@given(size=st.integers(0, 3), steps=st.lists(STEP, max_size=30))
def test_it_keeps_step_with_the_host_s_queue(kind, size, steps):
    assert list(called(kind(size), steps)) == list(called(queue.Queue(size), steps))


ITEMS = [None, 0, 1.5, True, "text", b"", b"bytes", bytearray(b"array"), [1, [2]], [], (1,), {1: 2}, {3}, object(), 2**80, float("nan"), "\udc80",
         memoryview(b"view"), lambda: 0, pyzvr.CANFrame(5), [1.0] * 8, [b"a", 5]]


@every_kind
def test_items_come_back_as_the_same_objects(kind):
    fifo = kind(0)
    for item in ITEMS:
        fifo.put(item)
    assert all(fifo.get() is item for item in ITEMS) and fifo.empty()


@pytest.mark.parametrize("find", [
    lambda box: box.data_pool_strm[5], lambda box: box.can_frame_queue, lambda box: box.can_data_queue, lambda box: box.uart_p1_signal_queue,
    lambda box: box.uart_p2_data_queue, lambda box: box.save_data_queue], ids=["pool", "frames", "records", "bytes", "packets", "rows"])
def test_queues_of_an_object_are_such_queues(find):
    with wired("SableCan") as box:
        fifo = find(box)
        for item in ITEMS:
            if item is not None:  # which would tell a thread something
                fifo.put(item, timeout=1)
                assert fifo.get(timeout=1) is item and fifo.unfinished_tasks > 0
                fifo.task_done()
        fifo.join()
        with pytest.raises(ValueError):
            fifo.task_done()


@every_kind
def test_waits_end_by_the_other_side(kind):
    fifo = kind(1)

    def both(waits, ends):
        results = []
        thread = threading.Thread(target=lambda: results.append(waits()))
        thread.start()
        ends()
        thread.join(PATIENCE)
        assert not thread.is_alive()
        return results[0]

    for _ in range(50):
        assert both(fifo.get, lambda: fifo.put(A)) is A
    fifo.put(B)
    for _ in range(50):
        assert both(lambda: fifo.put(B), fifo.get) is None
    assert fifo.full()


@every_kind
def test_join_waits_for_what_was_put(kind):
    fifo = kind(0)
    fifo.join()
    for item in range(3):
        fifo.put(item)
    joined = threading.Event()
    thread = threading.Thread(target=lambda: (fifo.join(), joined.set()), daemon=True)
    thread.start()
    while not fifo.empty():
        fifo.get()
    fifo.task_done()
    fifo.task_done()
    assert not joined.wait(0.02)
    fifo.task_done()
    assert joined.wait(PATIENCE)


@every_kind
def test_many_threads_lose_and_double_nothing(kind):
    fifo, taken, numbers = kind(10), [], range(2000)
    makers = [threading.Thread(target=lambda base=base: [fifo.put((base, number)) for number in numbers]) for base in range(4)]
    takers = [threading.Thread(target=lambda: [taken.append(item) for item in iter(fifo.get, None)]) for _ in range(4)]
    for thread in makers + takers:
        thread.start()
    for thread in makers:
        thread.join()
    for _ in takers:
        fifo.put(None)
    for thread in takers:
        thread.join()
    assert sorted(taken) == [(base, number) for base in range(4) for number in numbers]


@every_kind
def test_items_do_not_outlive_the_queue(kind):
    class Item:
        pass

    item, fifo = Item(), kind(0)
    item.fifo, gone = fifo, weakref.ref(item)  # each keeps the other
    fifo.put(item)
    del item, fifo
    gc.collect()
    assert gone() is None


@every_kind
def test_items_may_use_the_queue_while_they_die(kind):
    class Item:
        def __init__(self, fifo):
            self.fifo = fifo

        def __del__(self):
            died.append(self.fifo.qsize())
            self.fifo.put_nowait("from the grave")

    died, fifo = [], kind(0)
    fifo.put(Item(fifo))
    fifo.get()
    assert died == [0] and fifo.get_nowait() == "from the grave"


# Pools.


@pytest.fixture
def device():
    device = pyzvr.Device()
    yield device
    device.killed = True


SAME = "the same object"
POOLS = {  # the host's own, and values of the kind that such a pool holds
    "data_pool_echo": (dict, lambda: [b"first", b"second", b"third"]),
    "data_pool_strm": (lambda: collections.defaultdict(queue.Queue), lambda: [queue.Queue(), queue.Queue(5), pyzvr.Fifo()]),
    "data_pool_bcst": (lambda: collections.defaultdict(set), lambda: [set(), {b"record"}, {b"a", b"b"}]),
}


def map_steps(values):
    """Calls on a map, each by a name that a failure shows."""
    first, second, third = values
    steps = {
        "len of none": len, "bool of none": bool, "get": lambda m: m.get(1), "get with another": lambda m: m.get(1, first), "missing": lambda m: 1 in m,
        "set": lambda m: m.__setitem__(1, first), "get it": lambda m: m.get(1), "index": lambda m: m[1], "set again": lambda m: m.__setitem__(1, second),
        "index again": lambda m: m[1], "contains": lambda m: 1 in m, "negative key": lambda m: m.__setitem__(-5, third), "huge key": lambda m: m.get(2**70),
        "is there a huge key": lambda m: 2**70 in m, "is there a text": lambda m: "x" in m, "get by text": lambda m: m.get("x"), "get by list": lambda m: m.get([]),
        "setdefault": lambda m: m.setdefault(3, third), "setdefault again": lambda m: m.setdefault(3, first), "order": list, "keys": lambda m: list(m.keys()),
        "values": lambda m: list(m.values()), "items": lambda m: list(m.items()), "reversed": lambda m: list(reversed(m)), "as a dict": dict,
        "equal": lambda m: m == {1: second, -5: third, 3: third}, "equal the other way": lambda m: {1: second, -5: third, 3: third} == m,
        "not equal": lambda m: m != {1: second}, "not equal to a list": lambda m: m == [], "copy": lambda m: dict(m.copy()), "or": lambda m: dict(m | {7: first}),
        "or the other way": lambda m: dict({7: first} | m), "pop": lambda m: m.pop(1), "pop of none": lambda m: m.pop(1), "pop with another": lambda m: m.pop(1, first),
        "pop with none": lambda m: m.pop(1, None), "del": lambda m: m.__delitem__(-5), "del of none": lambda m: m.__delitem__(-5), "update": lambda m: m.update({4: first, 5: second}),
        "update by pairs": lambda m: m.update([(6, third)]), "update by itself": lambda m: m.update(m), "update by nonsense": lambda m: m.update(5),
        "len": len, "popitem": lambda m: m.popitem(), "or in place": lambda m: m.__ior__({8: first}) is m, "what is left": lambda m: dict(m), "hash": hash,
        "clear": lambda m: m.clear(), "after clear": lambda m: (len(m), bool(m), list(m), m == {}), "popitem of none": lambda m: m.popitem(),
        "set after clear": lambda m: m.__setitem__(1, first), "at the end": lambda m: dict(m),
    }
    return steps.items()


@pytest.mark.parametrize("pool", POOLS)
def test_a_pool_does_all_that_a_map_does(device, pool):
    make, values = POOLS[pool]
    values = values()
    own, ours = make(), getattr(device, pool)
    for name, step in map_steps(values):
        assert (name, outcome(step, ours)) == (name, outcome(step, own))


@pytest.mark.parametrize("pool", POOLS)
def test_a_pool_shows_what_is_in_it(device, pool):
    ours = getattr(device, pool)
    ours[5] = {"data_pool_echo": b"reply", "data_pool_strm": "", "data_pool_bcst": {b"record"}}[pool] or queue.Queue()
    assert repr(5) in repr(ours) and repr({"data_pool_echo": b"reply", "data_pool_strm": ours[5], "data_pool_bcst": b"record"}[pool]) in repr(ours)


def test_what_is_missing_is_made_when_it_is_indexed_and_only_then(device):
    assert outcome(device.data_pool_echo.__getitem__, 5) is KeyError
    assert outcome(device.data_pool_echo.__getitem__, "x") in (KeyError, TypeError)
    for pool in (device.data_pool_strm, device.data_pool_bcst):
        for key in (5, (183, 0, 0), "mine"):
            assert pool.get(key) is None and key not in pool and pool.pop(key, A) is A
            made = pool[key]
            assert pool[key] is made and pool.get(key) is made and pool.setdefault(key, A) is made and pool.pop(key) is made and len(pool) == 0
        assert outcome(pool.__getitem__, []) is TypeError


def test_frames_go_to_what_the_pools_hold_now(device):
    own, own_set = queue.Queue(), {b"old"}
    device.data_pool_strm[pyzvr.AHRS_START] = own
    device.data_pool_bcst[pyzvr.GET_DEVICE_INFO] = own_set
    device._putToDataPool(pyzvr.AHRS_START, b"\1frame")
    device._putToDataPool(pyzvr.GET_DEVICE_INFO, b"\1record")
    device._putToDataPool(pyzvr.GET_SERIAL_NUMBER, b"reply")
    assert own.get_nowait() == b"frame" and own_set == {b"old", b"record"} and device.data_pool_echo == {pyzvr.GET_SERIAL_NUMBER: b"reply"}
    for pool in (device.data_pool_echo, device.data_pool_strm, device.data_pool_bcst):
        pool.clear()
    device._putToDataPool(pyzvr.AHRS_START, b"\1more")
    device._putToDataPool(pyzvr.GET_DEVICE_INFO, b"\1more")
    assert own.empty() and device.data_pool_strm[pyzvr.AHRS_START].get_nowait() == b"more" and device.data_pool_bcst == {pyzvr.GET_DEVICE_INFO: {b"more"}}


def test_a_pool_may_be_walked_while_frames_come(device):
    stop = threading.Event()

    def file_frames():
        number = 0
        while not stop.is_set():
            number += 1
            device._putToDataPool(50 + number % 50, b"reply")
            device._putToDataPool(pyzvr.GET_DEVICE_INFO, b"\1" + number.to_bytes(4, "big"))

    with running(file_frames):
        for _ in range(300):
            for walk in (lambda: dict(device.data_pool_echo), lambda: set(device.data_pool_bcst[pyzvr.GET_DEVICE_INFO]), lambda: repr(device.data_pool_strm)):
                assert outcome(walk) is not None  # a change in the middle may fail as it does in the host's own
            device.data_pool_echo.clear()
            device.data_pool_bcst[pyzvr.GET_DEVICE_INFO].clear()
        stop.set()


R, S, T = b"r", b"s", b"t"
SET_STEPS = {
    "none": lambda s: (len(s), bool(s), list(s)), "add": lambda s: s.add(R), "add again": lambda s: s.add(R), "update": lambda s: s.update([S], {T}), "len": len,
    "contains": lambda s: (R in s, b"x" in s, 5 in s), "equal": lambda s: (s == {R, S, T}, {R, S, T} == s, s != {R}, s == [R], s == frozenset([R, S, T])),
    "order": lambda s: (s <= {R, S, T}, s < {R, S, T}, s >= {R}, s > {R}, {R} < s), "or": lambda s: set(s | {b"x"}), "or the other way": lambda s: set({b"x"} | s),
    "and": lambda s: set(s & {R, b"x"}), "and the other way": lambda s: set({R, b"x"} & s), "minus": lambda s: set(s - {R}), "minus the other way": lambda s: set({R, b"x"} - s),
    "xor": lambda s: set(s ^ {R, b"x"}), "xor the other way": lambda s: set({R, b"x"} ^ s), "or a list": lambda s: s | [R], "union": lambda s: set(s.union([b"x"], (b"y",))),
    "union of none": lambda s: set(s.union()), "intersection": lambda s: set(s.intersection([R, S], {R})), "difference": lambda s: set(s.difference([R])),
    "symmetric difference": lambda s: set(s.symmetric_difference([R, b"x"])), "subset": lambda s: (s.issubset([R, S, T, b"x"]), s.issubset([R])),
    "superset": lambda s: (s.issuperset([R]), s.issuperset([b"x"])), "disjoint": lambda s: (s.isdisjoint([b"x"]), s.isdisjoint([R])), "copy": lambda s: (set(s.copy()), s.copy() is s),
    "sorted": sorted, "remove": lambda s: s.remove(R), "remove again": lambda s: s.remove(R), "discard": lambda s: s.discard(R), "or in place": lambda s: (s.__ior__({R}) is s, set(s)),
    "minus in place": lambda s: (s.__isub__({R}) is s, set(s)), "and in place": lambda s: (s.__iand__({S}) is s, set(s)), "xor in place": lambda s: (s.__ixor__({S, T}) is s, set(s)),
    "pop": lambda s: s.pop(), "pop of none": lambda s: s.pop(), "update of many": lambda s: s.update([R, S], [T]), "difference update": lambda s: (s.difference_update([R]), set(s)),
    "intersection update": lambda s: (s.intersection_update([S]), set(s)), "symmetric update": lambda s: (s.symmetric_difference_update([S, T]), set(s)), "hash": hash,
    "clear": lambda s: s.clear(), "after clear": lambda s: (len(s), s == set()),
}


def test_a_set_of_records_does_all_that_a_set_does(device):
    own, ours = set(), device.data_pool_bcst[pyzvr.GET_DEVICE_INFO]
    for name, step in SET_STEPS.items():
        assert (name, outcome(step, ours)) == (name, outcome(step, own))
    ours.add(b"record")
    assert repr(b"record") in repr(ours) and device.data_pool_bcst[pyzvr.GET_DEVICE_INFO] is ours


# What an object takes from a queue.

QUEUES = {"Fifo": pyzvr.Fifo, "ItemFifo": pyzvr.ItemFifo, "RowFifo": pyzvr.RowFifo, "queue.Queue": queue.Queue, "SimpleQueue": queue.SimpleQueue, "the pool's": None}


TAKEN = [
    ([], -1, []), ([], 3, []), ([["a", "b"]], -1, ["a", "b"]), ([["a", "b"]], 1, ["a", "b"]), ([[]], 1, []), ([["a"], ["b"]], -1, [["a"], ["b"]]), ([["a"], ["b"]], 1, ["a"]),
    ([b"frame"], 1, [b"frame"]), ([5], 1, [5]), ([(1, 2)], 1, [(1, 2)]), (["text"], 1, ["text"]), ([1, 2, 3], 2, [1, 2]), ([1, 2, 3], 9, [1, 2, 3]), ([1, 2], 0, []), ([[1, 2]], 0, []),
]


@pytest.mark.parametrize("kind", QUEUES)
def test_items_are_taken_one_way_from_every_queue(call, kind):
    with wired("TarnDio") as box:
        for key, (items, number, taken) in enumerate(TAKEN):
            source = QUEUES[kind]() if QUEUES[kind] else box.data_pool_strm[key]
            for item in items:
                source.put(item)
            assert (items, number, call(box, "_getStreamingFromPool", source, number, 0.001)) == (items, number, taken)
            assert source.qsize() == len(items) - (len(items) if number < 0 else min(number, len(items)))


# Gates.


def test_gate_that_is_held_is_refused_or_not_waited_for():
    gate = pyzvr.Gate()
    assert not gate.locked() and gate.acquire() and gate.locked()
    begin = time.monotonic()
    assert gate.acquire(False) is False and gate.acquire(blocking=False) is False
    assert gate.acquire(timeout=0.05) is False and gate.acquire(True, 0.05) is False and time.monotonic() - begin >= 0.1
    gate.acquire()  # returns, since nothing may hang
    assert gate.locked() and gate.acquire(False) is False
    gate.release()
    assert not gate.locked()
    gate.release()
    assert not gate.locked() and gate.acquire(False) is True
    gate.release()
    with gate:
        assert gate.locked() and gate.acquire(False) is False
    assert not gate.locked()


def test_gate_that_opens_in_time_is_passed():
    gate = pyzvr.Gate()
    for _ in range(20):
        gate.acquire()
        timer = threading.Timer(0.002, gate.release)
        timer.start()
        assert gate.acquire(timeout=PATIENCE) is True and gate.locked()
        timer.join()
        gate.release()


def test_gate_lets_one_thread_at_a_time_take_it():
    gate, taken = pyzvr.Gate(), []
    start = threading.Barrier(8)

    def take():
        start.wait()
        taken.append(gate.acquire(False))

    threads = [threading.Thread(target=take) for _ in range(8)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert sorted(taken) == [False] * 7 + [True]


LOCKS = {"Lock": threading.Lock, "Gate": pyzvr.Gate, "Semaphore": lambda: threading.Semaphore(1)}


def held(kind):
    lock = LOCKS[kind]()
    lock.acquire()
    return lock


def is_held(lock):
    """Whether the lock stays held: a thread that passes it has it for a moment."""
    for _ in range(1000):
        if lock.acquire(False):
            lock.release()
            return False
        time.sleep(0.0001)
    return True


@pytest.mark.parametrize("kind", LOCKS)
def test_link_is_gated_by_the_lock_that_the_object_has(kind):
    from peer import Peer, answer_serial

    peer = Peer(answer_serial)
    with pyzvr.TarnDio() as box:
        before = box.recv_cmd_lock
        box.recv_cmd_lock = lock = held(kind)
        before.release()  # the thread stands at the one that it knows
        for _ in range(3):
            assert is_held(lock)
            box.connect("127.0.0.1", peer.port, verbose=False)
            assert box.Sys_getSerialNumber() == "SN000001" == asyncio.run(box.Sys_getSerialNumber_async()) and not is_held(lock)
            box.disconnect(verbose=False)
            assert box.recv_cmd_lock is lock
    box.recv_cmd_thread.join(PATIENCE)
    assert not box.recv_cmd_thread.is_alive() and not is_held(lock)
    peer.close()


IDLE = bytes([0, 8, 0x11, 0x11, 0x11, 0x11])
OPENED = {"GET_PIN_MODE_OF_SLOT": IDLE, **dict.fromkeys(
    ("OPEN_UART", "CLOSE_UART", "STOP_UART_READING", "OPEN_CAN", "CLOSE_CAN", "STOP_CAN", "OPEN_AI", "CLOSE_AI"), b"\1\0")}
FRAMES = [pyzvr.CANFrame(number, data=[number]) for number in range(1, 11)]
RECORDS = bytes(byte for frame in FRAMES for byte in frame.frame_in_list)


@pytest.mark.parametrize("kind", LOCKS)
def test_feeders_are_gated_by_the_lock_that_the_object_has(call, kind):
    with wired("SableCan", **OPENED) as box:
        before = box.can_lock
        box.can_lock = lock = held(kind)
        before.release()
        box.data_pool_strm[pyzvr.START_CAN].put(RECORDS)
        assert is_held(lock) and box.can_frame_queue.empty()
        assert call(box, "CAN_open", 1) == 0
        until(lambda: box.can_frame_queue.qsize() == 10)
        assert call(box, "CAN_close", 1) == 0 and is_held(lock)
        box.data_pool_strm[pyzvr.START_CAN].put(RECORDS)
        assert box.CAN_read(1, -1) == FRAMES and box.CAN_read(1, 1, 0.05) == []
    box.can_stream_thread.join(PATIENCE)
    assert not box.can_stream_thread.is_alive()


def test_logger_waits_at_the_lock_that_it_has(tmp_path):
    log = pyzvr.DataLogger()
    before = log.save_data_lock
    log.save_data_lock = lock = held("Lock")
    before.release()
    log.Logger_writeValue(1)
    assert is_held(lock)
    log.Logger_openFile(str(tmp_path / "log.csv"), verbose=False)
    log.Logger_flush()
    assert (tmp_path / "log.csv").read_text() == "1\n" and not is_held(lock)
    log._Logger_close(False)
    log.save_data_thread.join(PATIENCE)
    assert not log.save_data_thread.is_alive()


# The bodies of the threads, called by hand with whatever queue and lock.

QUEUE_PAIRS = pytest.mark.parametrize("make", [queue.Queue, pyzvr.Fifo, pyzvr.ItemFifo, pyzvr.RowFifo], ids=lambda make: make.__name__)


@QUEUE_PAIRS
@pytest.mark.parametrize("kind", LOCKS)
def test_bytes_are_fed_by_hand(make, kind):
    with wired("SableDio") as box:
        lock, source, target = held(kind), make(), make()
        with running(box._UARTStreamThread, lock, source, target):
            source.put(b"ab")
            assert outcome(target.get, timeout=0.02) is queue.Empty
            lock.release()
            assert [target.get(timeout=PATIENCE), target.get(timeout=PATIENCE)] == [97, 98]
            for item in (None, b"", [A, B]):
                source.put(item)
            assert [target.get(timeout=PATIENCE), target.get(timeout=PATIENCE)] == [A, B]
            box.uart_killed = True
            source.put(None)


@QUEUE_PAIRS
def test_frames_are_fed_by_hand(make):
    with wired("SableCan") as box:
        box.can_lock.release()
        source, target = make(), make()
        box.can_frame_queue = target
        with running(box._CANStreamThread, source):
            for item in (RECORDS, None, b"", RECORDS[:12]):
                source.put(item)
            assert [target.get(timeout=PATIENCE) for _ in range(11)] == FRAMES + FRAMES[:1]
            box.can_killed = True
            source.put(None)
        box.can_killed = False
        source.put(RECORDS[:13])
        with pytest.raises(ValueError):
            box._CANStreamThread(source)


ROW = [0.0, 0.0003, -0.0003, 9.9997, -10.0, 0.0, 0.0, 0.0]
SAMPLES = b"".join(code.to_bytes(2, "big", signed=True) for code in (0, 1, -1, 32767, -32768, 0, 0, 0))


@QUEUE_PAIRS
def test_rows_are_fed_by_hand(make):
    with wired("TarnAnalog") as box:
        box.ai_lock.release()
        sources, targets = [make(), make()], [make(), make()]
        with running(box._AIStreamThread, sources, targets):
            sources[0].put(SAMPLES * 3)
            sources[1].put(None)
            sources[1].put(SAMPLES)
            assert [targets[0].get(timeout=PATIENCE) for _ in range(3)] == [ROW] * 3 and targets[1].get(timeout=PATIENCE) == ROW
            box.ai_killed = True
        box.ai_killed = False
        sources[0].put(SAMPLES[:-1])
        with pytest.raises(ValueError):
            box._AIStreamThread(sources, targets)


class Writer:
    """Takes the place of a writer of CSV."""

    def __init__(self):
        self.rows = queue.Queue()

    def writerows(self, rows):
        self.rows.put(rows)


@QUEUE_PAIRS
def test_matrices_are_written_by_hand(make, tmp_path):
    log = pyzvr.DataLogger()
    log.Logger_openFile(str(tmp_path / "log.csv"), verbose=False)
    log.writer_csv = writer = Writer()
    source, matrix = make(), [[1, "a"], [2, "b"]]
    with running(log._saveStreamingDataThread, source):
        source.put(matrix)
        assert writer.rows.get(timeout=PATIENCE) is matrix
        source.put(None)
        log.Logger_writeList([3])  # its own thread writes there too
        assert writer.rows.get(timeout=PATIENCE) == [[3]]
        log.killed = True
        source.put(None)
    log.killed = False
    log._Logger_close(False)
    assert (tmp_path / "log.csv").read_text() == ""


# What is dropped, and what tells a thread to look again.


def test_every_byte_that_is_dropped_is_one_warning():
    with wired("SableDio") as box, warned() as made:
        source, target = queue.Queue(), queue.Queue(2)
        with running(box._UARTStreamThread, threading.Lock(), source, target) as thread:
            source.put(bytes(range(10)))
            until(lambda: len(made) == 8)
            box.uart_killed = True
            source.put(None)
            assert {ident for _, ident in made} == {thread.ident}
    assert all("Occurrence UART queue overflow." in text for text, _ in made) and [target.get(), target.get()] == [0, 1]


@pytest.mark.parametrize("make", [lambda: queue.Queue(2), lambda: pyzvr.RowFifo(2)], ids=["foreign", "own"])
def test_every_frame_that_is_dropped_is_one_warning(make):
    with wired("SableCan", **OPENED) as box, warned() as made:
        box.can_frame_queue = make()
        box.CAN_open(1)
        box.data_pool_strm[pyzvr.START_CAN].put(RECORDS)
        until(lambda: len(made) == 8)
        assert box.CAN_read(1, 5, 0.01) == FRAMES[:2]
        box.data_pool_strm[pyzvr.START_CAN].put(RECORDS)
        until(lambda: len(made) == 16)
    assert all("Occurrence CAN queue overflow." in text for text, _ in made) and threading.get_ident() not in {ident for _, ident in made}
    assert len(made) == 16


@pytest.mark.parametrize("make", [lambda: queue.Queue(2), lambda: pyzvr.RowFifo(2)], ids=["foreign", "own"])
def test_every_row_that_is_dropped_is_one_warning(make):
    with wired("TarnAnalog", **OPENED) as box, warned() as made:
        box.ai_signal_queue_list[0] = make()
        box.AI_open(0)
        for _ in range(2):
            box.data_pool_strm[(pyzvr.START_AI_STREAMING, 0, 0)].put(SAMPLES * 5)
        until(lambda: len(made) == 8)
        assert box.AI_readStreaming(0, 5, 0.01) == [ROW] * 2
    assert all("Occurrence AI queue overflow." in text for text, _ in made) and threading.get_ident() not in {ident for _, ident in made}
    assert len(made) == 8


def test_markers_of_closing_have_been_taken(call):
    with wired("SableCan", **OPENED) as box:
        for _ in range(10):
            assert call(box, "UART_open", 1) == 0 == awaited(box, "UART_close", 1)  # the blocking form ends before
            assert call(box, "CAN_open", 1) == 0 == call(box, "CAN_close", 1)
            for fifo in (box.uart_p1_data_queue, box.uart_p2_data_queue, box.can_data_queue):
                until(fifo.empty)


@pytest.mark.parametrize("model, number", [("SableDio", 1), ("TarnAnalog", 0), ("SableCan", 1)])
def test_queues_of_an_object_can_be_another_s(model, number, call):
    """Feeders and reads on queues of the host's own kind, put in place of what the object had."""
    with wired(model, **OPENED) as box:
        if model == "SableDio":
            box.uart_p1_signal_queue = queue.Queue()
            box.uart_p1_signal_queue.put(65)
            assert call(box, "UART_read", 1, 3, 0.001) == ["A"]
        elif model == "SableCan":
            box.can_frame_queue = queue.Queue()
            box.CAN_open(1)
            box.data_pool_strm[pyzvr.START_CAN].put(RECORDS)
            until(lambda: box.can_frame_queue.qsize() == 10)
            assert call(box, "CAN_read", 1, 10) == FRAMES
        else:
            box.ai_data_queue_list[0], box.ai_signal_queue_list[0] = queue.Queue(), queue.Queue()
            box.AI_open(0)
            box.ai_data_queue_list[0].put(SAMPLES * 3)
            until(lambda: box.ai_signal_queue_list[0].qsize() == 3)
            assert call(box, "AI_readStreaming", 0, 2, 5) == [ROW] * 2 and call(box, "AI_readStreaming", 0, 2, 0.01) == [ROW]


def test_double_files_into_whatever_pool_the_object_has():
    with wired("TarnDio") as box:
        box.data_pool_echo = pool = {}
        box.client_cmd = Double(box)
        box.client_cmd.replies = {pyzvr.GET_SERIAL_NUMBER: b"SN000001"}
        assert box.Sys_getSerialNumber() == "SN000001" and box.data_pool_echo is pool and pool == {}
