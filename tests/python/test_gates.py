"""Gates, and locks of the host in their place."""

import asyncio
import threading
import time

import pytest
from fake_client import fake_device
from queue_support import FRAMES, LOCKS, OPENED, PATIENCE, RECORDS, held, until

import pyzvr


def test_gate_that_is_held_is_refused_or_not_waited_for():
    gate = pyzvr.Gate()
    assert not gate.locked()
    assert gate.acquire()
    assert gate.locked()
    begin = time.monotonic()
    assert gate.acquire(False) is False
    assert gate.acquire(blocking=False) is False
    assert gate.acquire(timeout=0.05) is False
    assert gate.acquire(True, 0.05) is False
    assert time.monotonic() - begin >= 0.1
    gate.acquire()  # returns, since nothing may hang
    assert gate.locked()
    assert gate.acquire(False) is False
    gate.release()
    assert not gate.locked()
    gate.release()
    assert not gate.locked()
    assert gate.acquire(False) is True
    gate.release()
    with gate:
        assert gate.locked()
        assert gate.acquire(False) is False
    assert not gate.locked()


def test_gate_that_opens_in_time_is_passed():
    gate = pyzvr.Gate()
    for _ in range(20):
        gate.acquire()
        timer = threading.Timer(0.002, gate.release)
        timer.start()
        assert gate.acquire(timeout=PATIENCE) is True
        assert gate.locked()
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
            assert box.Sys_getSerialNumber() == "SN000001" == asyncio.run(box.Sys_getSerialNumber_async())
            assert not is_held(lock)
            box.disconnect(verbose=False)
            assert box.recv_cmd_lock is lock
    box.recv_cmd_thread.join(PATIENCE)
    assert not box.recv_cmd_thread.is_alive()
    assert not is_held(lock)
    peer.close()


@pytest.mark.parametrize("kind", LOCKS)
def test_decoder_threads_are_gated_by_the_lock_that_the_object_has(call, kind):
    with fake_device("SableCan", **OPENED) as box:
        before = box.can_lock
        box.can_lock = lock = held(kind)
        before.release()
        box.data_pool_strm[pyzvr.START_CAN].put(RECORDS)
        assert is_held(lock)
        assert box.can_frame_queue.empty()
        assert call(box, "CAN_open", 1) == 0
        until(lambda: box.can_frame_queue.qsize() == 10)
        assert call(box, "CAN_close", 1) == 0
        assert is_held(lock)
        box.data_pool_strm[pyzvr.START_CAN].put(RECORDS)
        assert box.CAN_read(1, -1) == FRAMES
        assert box.CAN_read(1, 1, 0.05) == []
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
    assert (tmp_path / "log.csv").read_text() == "1\n"
    assert not is_held(lock)
    log._Logger_close(False)
    log.save_data_thread.join(PATIENCE)
    assert not log.save_data_thread.is_alive()
