"""Queues have the whole face of queue.Queue and give back what was put."""

import gc
import queue
import threading
import weakref

import pytest
from fake_client import fake_device
from hypothesis import given, settings, strategies as st
from queue_support import A, B, PATIENCE, outcome

import pyzvr

KINDS = (pyzvr.Fifo, pyzvr.ItemFifo, pyzvr.RowFifo)
every_kind = pytest.mark.parametrize("kind", KINDS, ids=lambda kind: kind.__name__)
CALLS = [  # in an order that leaves nothing waiting; the queue has room for two
    ("get", False), ("get", {"block": False}), ("get", True, 0), ("get", {"timeout": 0.001}), ("get", {"timeout": -1}),
    ("get_nowait",), ("task_done",), ("put", A), ("put", B, False), ("put", A, False), ("put", A, {"block": False}),
    ("put", A, True, 0.001), ("put", A, {"timeout": 0.001}), ("put", A, {"timeout": -1}), ("put_nowait", A), ("full",),
    ("get",), ("get", {"timeout": -1}), ("get", {"timeout": 1}), ("empty",), ("get", True, "x"),
    ("put", None, {"block": False}), ("get",), ("put", {"item": [1], "block": True, "timeout": 1}), ("get", False),
    ("task_done",), ("task_done",), ("task_done",), ("task_done",), ("task_done",), ("join",), ("put",),
    ("put", A, {"wait": 1}), ("get", 1, 2, 3), ("put", A, {"timeout": "x"}), ("put", B, {"timeout": 5}),
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
    st.tuples(st.sampled_from(["put_nowait", "put"]),
              st.integers(0, 9)).map(lambda step: (*step, False) if step[0] == "put" else step),
    st.sampled_from([("get_nowait",), ("get", False), ("get", True, 0), ("task_done",), ("empty",), ("full",)]))


@every_kind
@settings(deadline=None, max_examples=50)
@given(size=st.integers(0, 3), steps=st.lists(STEP, max_size=30))
def test_it_keeps_step_with_the_host_s_queue(kind, size, steps):
    assert list(called(kind(size), steps)) == list(called(queue.Queue(size), steps))


ITEMS = [
    None, 0, 1.5, True, "text", b"", b"bytes",
    bytearray(b"array"), [1, [2]], [], (1,), {1: 2}, {3},
    object(), 2**80,
    float("nan"), "\udc80",
    memoryview(b"view"), lambda: 0,
    pyzvr.CANFrame(5), [1.0] * 8, [b"a", 5]
]


@every_kind
def test_items_come_back_as_the_same_objects(kind):
    fifo = kind(0)
    for item in ITEMS:
        fifo.put(item)
    assert all(fifo.get() is item for item in ITEMS)
    assert fifo.empty()


@pytest.mark.parametrize("find", [
    lambda box: box.data_pool_strm[5], lambda box: box.can_frame_queue, lambda box: box.can_data_queue,
    lambda box: box.uart_p1_signal_queue, lambda box: box.uart_p2_data_queue, lambda box: box.save_data_queue
],
                         ids=["pool", "frames", "records", "bytes", "packets", "rows"])
def test_queues_of_an_object_are_such_queues(find):
    with fake_device("SableCan") as box:
        fifo = find(box)
        for item in ITEMS:
            if item is not None:  # which would tell a thread something
                fifo.put(item, timeout=1)
                assert fifo.get(timeout=1) is item
                assert fifo.unfinished_tasks > 0
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
    makers = [
        threading.Thread(target=lambda base=base: [fifo.put((base, number)) for number in numbers]) for base in range(4)
    ]
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
    assert died == [0]
    assert fifo.get_nowait() == "from the grave"
