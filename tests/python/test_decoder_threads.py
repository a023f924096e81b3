"""The threads that decode streams, with queues and locks of any kind: what they put, what they drop."""

import contextlib
import queue
import threading
import warnings

import pytest
from fake_client import FakeClient, fake_device
from forms import awaited
from queue_support import A, B, FRAMES, LOCKS, OPENED, PATIENCE, RECORDS, ROW, SAMPLES, held, outcome, running, until

import pyzvr


@contextlib.contextmanager
def warned():
    """The warnings of all threads, each with the thread that made it."""
    made = []
    with warnings.catch_warnings():
        warnings.simplefilter("always")
        warnings.showwarning = lambda message, *rest: made.append((str(message), threading.get_ident()))
        yield made


# The bodies of the threads, called by hand with whatever queue and lock.

QUEUE_PAIRS = pytest.mark.parametrize("make", [queue.Queue, pyzvr.Fifo, pyzvr.ItemFifo, pyzvr.RowFifo],
                                      ids=lambda make: make.__name__)


@QUEUE_PAIRS
@pytest.mark.parametrize("kind", LOCKS)
def test_bytes_are_fed_by_hand(make, kind):
    with fake_device("SableDio") as box:
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
    with fake_device("SableCan") as box:
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


@QUEUE_PAIRS
def test_rows_are_fed_by_hand(make):
    with fake_device("TarnAnalog") as box:
        box.ai_lock.release()
        sources, targets = [make(), make()], [make(), make()]
        with running(box._AIStreamThread, sources, targets):
            sources[0].put(SAMPLES * 3)
            sources[1].put(None)
            sources[1].put(SAMPLES)
            assert [targets[0].get(timeout=PATIENCE) for _ in range(3)] == [ROW] * 3
            assert targets[1].get(timeout=PATIENCE) == ROW
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
    with fake_device("SableDio") as box, warned() as made:
        source, target = queue.Queue(), queue.Queue(2)
        with running(box._UARTStreamThread, threading.Lock(), source, target) as thread:
            source.put(bytes(range(10)))
            until(lambda: len(made) == 8)
            box.uart_killed = True
            source.put(None)
            assert {ident for _, ident in made} == {thread.ident}
    assert all("Occurrence UART queue overflow." in text for text, _ in made)
    assert [target.get(), target.get()] == [0, 1]


@pytest.mark.parametrize("make", [lambda: queue.Queue(2), lambda: pyzvr.RowFifo(2)], ids=["foreign", "own"])
def test_every_frame_that_is_dropped_is_one_warning(make):
    with fake_device("SableCan", **OPENED) as box, warned() as made:
        box.can_frame_queue = make()
        box.CAN_open(1)
        box.data_pool_strm[pyzvr.START_CAN].put(RECORDS)
        until(lambda: len(made) == 8)
        assert box.CAN_read(1, 5, 0.01) == FRAMES[:2]
        box.data_pool_strm[pyzvr.START_CAN].put(RECORDS)
        until(lambda: len(made) == 16)
    assert all("Occurrence CAN queue overflow." in text for text, _ in made)
    assert threading.get_ident() not in {ident for _, ident in made}
    assert len(made) == 16


@pytest.mark.parametrize("make", [lambda: queue.Queue(2), lambda: pyzvr.RowFifo(2)], ids=["foreign", "own"])
def test_every_row_that_is_dropped_is_one_warning(make):
    with fake_device("TarnAnalog", **OPENED) as box, warned() as made:
        box.ai_signal_queue_list[0] = make()
        box.AI_open(0)
        for _ in range(2):
            box.data_pool_strm[(pyzvr.START_AI_STREAMING, 0, 0)].put(SAMPLES * 5)
        until(lambda: len(made) == 8)
        assert box.AI_readStreaming(0, 5, 0.01) == [ROW] * 2
    assert all("Occurrence AI queue overflow." in text for text, _ in made)
    assert threading.get_ident() not in {ident for _, ident in made}
    assert len(made) == 8


def test_markers_of_closing_have_been_taken(call):
    with fake_device("SableCan", **OPENED) as box:
        for _ in range(10):
            assert call(box, "UART_open", 1) == 0 == awaited(box, "UART_close", 1)  # the blocking form ends before
            assert call(box, "CAN_open", 1) == 0 == call(box, "CAN_close", 1)
            for fifo in (box.uart_p1_data_queue, box.uart_p2_data_queue, box.can_data_queue):
                until(fifo.empty)


@pytest.mark.parametrize("model, number", [("SableDio", 1), ("TarnAnalog", 0), ("SableCan", 1)])
def test_queues_of_an_object_can_be_another_s(model, number, call):
    """Feeders and reads on queues of the host's own kind, put in place of what the object had."""
    with fake_device(model, **OPENED) as box:
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
            assert call(box, "AI_readStreaming", 0, 2, 5) == [ROW] * 2
            assert call(box, "AI_readStreaming", 0, 2, 0.01) == [ROW]


def test_fake_client_files_into_whatever_pool_the_object_has():
    with fake_device("TarnDio") as box:
        box.data_pool_echo = pool = {}
        box.client_cmd = FakeClient(box)
        box.client_cmd.replies = {pyzvr.GET_SERIAL_NUMBER: b"SN000001"}
        assert box.Sys_getSerialNumber() == "SN000001"
        assert box.data_pool_echo is pool
        assert pool == {}
