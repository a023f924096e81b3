"""Pools are maps, and whatever an object takes from the queues in them."""

import collections
import queue
import threading

import pytest
from fake_client import fake_device
from queue_support import A, outcome, running

import pyzvr


# Pools.


@pytest.fixture
def device():
    device = pyzvr.Device()
    yield device
    device.killed = True


POOLS = {  # the host's own, and values of the kind that such a pool holds
    "data_pool_echo": (dict, lambda: [b"first", b"second", b"third"]),
    "data_pool_strm": (lambda: collections.defaultdict(queue.Queue), lambda: [queue.Queue(), queue.Queue(5), pyzvr.Fifo()]),
    "data_pool_bcst": (lambda: collections.defaultdict(set), lambda: [set(), {b"record"}, {b"a", b"b"}]),
}


def map_steps(values):
    """Calls on a map, each by a name that an error shows."""
    first, second, third = values
    steps = {
        "len of none": len, "bool of none": bool, "get": lambda m: m.get(1),
        "get with another": lambda m: m.get(1, first), "missing": lambda m: 1 in m,
        "set": lambda m: m.__setitem__(1, first), "get it": lambda m: m.get(1), "index": lambda m: m[1],
        "set again": lambda m: m.__setitem__(1, second), "index again": lambda m: m[1], "contains": lambda m: 1 in m,
        "negative key": lambda m: m.__setitem__(-5, third), "huge key": lambda m: m.get(2**70),
        "is there a huge key": lambda m: 2**70 in m, "is there a text": lambda m: "x" in m,
        "get by text": lambda m: m.get("x"), "get by list": lambda m: m.get([]),
        "setdefault": lambda m: m.setdefault(3, third), "setdefault again": lambda m: m.setdefault(3, first),
        "order": list, "keys": lambda m: list(m.keys()), "values": lambda m: list(m.values()),
        "items": lambda m: list(m.items()), "reversed": lambda m: list(reversed(m)), "as a dict": dict,
        "equal": lambda m: m == {1: second, -5: third, 3: third},
        "equal the other way": lambda m: {1: second, -5: third, 3: third} == m, "not equal": lambda m: m != {1: second},
        "not equal to a list": lambda m: m == [], "copy": lambda m: dict(m.copy()),
        "or": lambda m: dict(m | {7: first}), "or the other way": lambda m: dict({7: first} | m),
        "pop": lambda m: m.pop(1), "pop of none": lambda m: m.pop(1), "pop with another": lambda m: m.pop(1, first),
        "pop with none": lambda m: m.pop(1, None), "del": lambda m: m.__delitem__(-5),
        "del of none": lambda m: m.__delitem__(-5), "update": lambda m: m.update({4: first, 5: second}),
        "update by pairs": lambda m: m.update([(6, third)]), "update by itself": lambda m: m.update(m),
        "update by nonsense": lambda m: m.update(5), "len": len, "popitem": lambda m: m.popitem(),
        "or in place": lambda m: m.__ior__({8: first}) is m, "what is left": lambda m: dict(m), "hash": hash,
        "clear": lambda m: m.clear(), "after clear": lambda m: (len(m), bool(m), list(m), m == {}),
        "popitem of none": lambda m: m.popitem(), "set after clear": lambda m: m.__setitem__(1, first),
        "at the end": lambda m: dict(m),
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
    assert repr(5) in repr(ours)
    assert repr(
        {"data_pool_echo": b"reply", "data_pool_strm": ours[5], "data_pool_bcst": b"record"}[pool]) in repr(ours)


def test_what_is_missing_is_made_when_it_is_indexed_and_only_then(device):
    assert outcome(device.data_pool_echo.__getitem__, 5) is KeyError
    assert outcome(device.data_pool_echo.__getitem__, "x") in (KeyError, TypeError)
    for pool in (device.data_pool_strm, device.data_pool_bcst):
        for key in (5, (183, 0, 0), "mine"):
            assert pool.get(key) is None
            assert key not in pool
            assert pool.pop(key, A) is A
            made = pool[key]
            assert pool[key] is made
            assert pool.get(key) is made
            assert pool.setdefault(key, A) is made
            assert pool.pop(key) is made
            assert len(pool) == 0
        assert outcome(pool.__getitem__, []) is TypeError


def test_frames_go_to_what_the_pools_hold_now(device):
    own, own_set = queue.Queue(), {b"old"}
    device.data_pool_strm[pyzvr.AHRS_START] = own
    device.data_pool_bcst[pyzvr.GET_DEVICE_INFO] = own_set
    device._putToDataPool(pyzvr.AHRS_START, b"\1frame")
    device._putToDataPool(pyzvr.GET_DEVICE_INFO, b"\1record")
    device._putToDataPool(pyzvr.GET_SERIAL_NUMBER, b"reply")
    assert own.get_nowait() == b"frame"
    assert own_set == {b"old", b"record"}
    assert device.data_pool_echo == {pyzvr.GET_SERIAL_NUMBER: b"reply"}
    for pool in (device.data_pool_echo, device.data_pool_strm, device.data_pool_bcst):
        pool.clear()
    device._putToDataPool(pyzvr.AHRS_START, b"\1more")
    device._putToDataPool(pyzvr.GET_DEVICE_INFO, b"\1more")
    assert own.empty()
    assert device.data_pool_strm[pyzvr.AHRS_START].get_nowait() == b"more"
    assert device.data_pool_bcst == {pyzvr.GET_DEVICE_INFO: {b"more"}}


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
            for walk in (lambda: dict(device.data_pool_echo), lambda: set(device.data_pool_bcst[pyzvr.GET_DEVICE_INFO]),
                         lambda: repr(device.data_pool_strm)):
                assert outcome(walk) is not None  # a change in the middle may fail as it does in the host's own
            device.data_pool_echo.clear()
            device.data_pool_bcst[pyzvr.GET_DEVICE_INFO].clear()
        stop.set()


R, S, T = b"r", b"s", b"t"
SET_STEPS = {
    "none": lambda s: (len(s), bool(s), list(s)),
    "add": lambda s: s.add(R),
    "add again": lambda s: s.add(R),
    "update": lambda s: s.update([S], {T}),
    "len": len,
    "contains": lambda s: (R in s, b"x" in s, 5 in s),
    "equal": lambda s: (s == {R, S, T}, {R, S, T} == s, s != {R}, s == [R], s == frozenset([R, S, T])),
    "order": lambda s: (s <= {R, S, T}, s < {R, S, T}, s >= {R}, s > {R}, {R} < s),
    "or": lambda s: set(s | {b"x"}),
    "or the other way": lambda s: set({b"x"} | s),
    "and": lambda s: set(s & {R, b"x"}),
    "and the other way": lambda s: set({R, b"x"} & s),
    "minus": lambda s: set(s - {R}),
    "minus the other way": lambda s: set({R, b"x"} - s),
    "xor": lambda s: set(s ^ {R, b"x"}),
    "xor the other way": lambda s: set({R, b"x"} ^ s),
    "or a list": lambda s: s | [R],
    "union": lambda s: set(s.union([b"x"], (b"y",))),
    "union of none": lambda s: set(s.union()),
    "intersection": lambda s: set(s.intersection([R, S], {R})),
    "difference": lambda s: set(s.difference([R])),
    "symmetric difference": lambda s: set(s.symmetric_difference([R, b"x"])),
    "subset": lambda s: (s.issubset([R, S, T, b"x"]), s.issubset([R])),
    "superset": lambda s: (s.issuperset([R]), s.issuperset([b"x"])),
    "disjoint": lambda s: (s.isdisjoint([b"x"]), s.isdisjoint([R])),
    "copy": lambda s: (set(s.copy()), s.copy() is s),
    "sorted": sorted,
    "remove": lambda s: s.remove(R),
    "remove again": lambda s: s.remove(R),
    "discard": lambda s: s.discard(R),
    "or in place": lambda s: (s.__ior__({R}) is s, set(s)),
    "minus in place": lambda s: (s.__isub__({R}) is s, set(s)),
    "and in place": lambda s: (s.__iand__({S}) is s, set(s)),
    "xor in place": lambda s: (s.__ixor__({S, T}) is s, set(s)),
    "pop": lambda s: s.pop(),
    "pop of none": lambda s: s.pop(),
    "update of many": lambda s: s.update([R, S], [T]),
    "difference update": lambda s: (s.difference_update([R]), set(s)),
    "intersection update": lambda s: (s.intersection_update([S]), set(s)),
    "symmetric update": lambda s: (s.symmetric_difference_update([S, T]), set(s)),
    "hash": hash,
    "clear": lambda s: s.clear(),
    "after clear": lambda s: (len(s), s == set()),
}


def test_a_set_of_records_does_all_that_a_set_does(device):
    own, ours = set(), device.data_pool_bcst[pyzvr.GET_DEVICE_INFO]
    for name, step in SET_STEPS.items():
        assert (name, outcome(step, ours)) == (name, outcome(step, own))
    ours.add(b"record")
    assert repr(b"record") in repr(ours)
    assert device.data_pool_bcst[pyzvr.GET_DEVICE_INFO] is ours


# What an object takes from a queue.

QUEUES = {
    "Fifo": pyzvr.Fifo, "ItemFifo": pyzvr.ItemFifo, "RowFifo": pyzvr.RowFifo, "queue.Queue": queue.Queue,
    "SimpleQueue": queue.SimpleQueue, "the pool's": None
}
TAKEN = [([], -1, []), ([], 3, []), ([["a", "b"]], -1, ["a", "b"]), ([["a", "b"]], 1, ["a", "b"]), ([[]], 1, []),
         ([["a"], ["b"]], -1, [["a"], ["b"]]), ([["a"], ["b"]], 1, ["a"]), ([b"frame"], 1, [b"frame"]), ([5], 1, [5]),
         ([(1, 2)], 1, [(1, 2)]), (["text"], 1, ["text"]), ([1, 2, 3], 2, [1, 2]), ([1, 2, 3], 9, [1, 2, 3]),
         ([1, 2], 0, []), ([[1, 2]], 0, []), ]


@pytest.mark.parametrize("kind", QUEUES)
def test_items_are_taken_one_way_from_every_queue(call, kind):
    with fake_device("TarnDio") as box:
        for key, (items, number, taken) in enumerate(TAKEN):
            source = QUEUES[kind]() if QUEUES[kind] else box.data_pool_strm[key]
            for item in items:
                source.put(item)
            assert (items, number, call(box, "_getStreamingFromPool", source, number, 0.001)) == (items, number, taken)
            assert source.qsize() == len(items) - (len(items) if number < 0 else min(number, len(items)))
