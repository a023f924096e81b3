"""The logger when its object, its process or the interpreter ends."""

import gc
import queue
import re
import subprocess
import sys
import threading
import time
import weakref

import pytest
from logger_support import Rows, content, plain, slow_file, slow_queue, slow_writer

import pyzvr


def test_a_second_constructor_keeps_the_thread_and_loses_nothing(tmp_path, logger):
    path = tmp_path / "log.csv"
    thread, rows = logger.save_data_thread, logger.save_data_queue
    logger.Logger_openFile(str(path), verbose=False)
    logger.Logger_writeValue(1)
    logger.__init__()
    assert content(path) == [["1"]]
    assert logger.f_handle is None
    assert logger.filename is None
    assert logger.save_data_thread is thread
    assert logger.save_data_queue is rows
    assert logger.save_data_lock.locked()
    logger._Logger_close()
    logger.__init__()
    assert not logger.killed
    assert logger.save_data_thread is not thread
    assert logger.save_data_thread.is_alive()


def test_a_logger_that_the_collector_takes_writes_what_is_queued(tmp_path, monkeypatch):
    path = tmp_path / "log.csv"
    for make_slow in (plain, slow_queue, slow_writer, slow_file):
        logger = pyzvr.DataLogger()
        with monkeypatch.context() as patched:
            make_slow(patched, logger)
            logger.Logger_openFile(str(path), True, False)
        logger.me = logger
        for number in range(200):
            logger.Logger_writeValue(number)
        thread, file = logger.save_data_thread, logger.f_handle.file if make_slow is slow_file else logger.f_handle
        del logger
        gc.collect()
        thread.join(20)
        assert file.closed
        assert content(path) == [[str(number)] for number in range(200)]


@pytest.mark.parametrize("foreign", [False, True])
def test_a_dropped_logger_writes_what_is_queued_and_ends_whatever_refers_to_it(tmp_path, foreign):
    for number in range(10):
        logger = pyzvr.DataLogger()
        if foreign:
            logger.save_data_queue, logger.save_data_lock = queue.Queue(), threading.Lock()
        logger.Logger_openFile(str(tmp_path / "log.csv"), True, False)
        logger.me = logger
        logger.writer_csv = rows = Rows(owner=logger)
        thread, file, gone = logger.save_data_thread, logger.f_handle, weakref.ref(logger)
        if number % 2:
            logger.Logger_writeValue(0)
            rows.take(1)
        count = number % 5
        for value in range(count):
            logger.Logger_writeValue(value)
        del logger, rows.owner
        while gone() is not None:
            gc.collect()
        thread.join(20)
        assert not thread.is_alive()
        assert file.closed
        assert rows[len(rows) - count:] == [[[i]] for i in range(count)]


def test_an_idle_thread_does_not_keep_its_object(tmp_path):
    for state in ("no file", "file", "foreign lock", "held row"):
        logger = pyzvr.DataLogger()
        if state == "foreign lock":
            logger.save_data_lock = threading.Lock()
            logger.save_data_lock.acquire()
        if state == "file":
            logger.Logger_openFile(str(tmp_path / "log.csv"), verbose=False)
        if state == "held row":
            logger.save_data_lock.release()
            logger.Logger_writeValue(1)
            while logger.save_data_queue.qsize():
                time.sleep(0.001)
        thread, gone = logger.save_data_thread, weakref.ref(logger)
        del logger
        assert gone() is None
        thread.join(20)
        assert not thread.is_alive()


def test_files_may_be_changed_from_within_a_write(tmp_path, logger):
    class Rotating:
        def writerows(self, rows):
            paths.append(str(tmp_path / f"{len(paths)}.csv"))
            logger.Logger_openFile(paths[-1], True, False)
            logger.writer_csv.writerows(rows)
            logger.Logger_flush()
            logger.writer_csv = self

    paths = []
    logger.writer_csv = Rotating()
    logger.save_data_lock.release()
    for number in range(10):
        logger.Logger_writeValue(number)
    deadline = time.monotonic() + 10
    while (len(paths) < 10 or not content(paths[9])) and time.monotonic() < deadline:
        time.sleep(0.001)
    assert [content(path) for path in paths] == [[[str(number)]] for number in range(10)]


LEAVING = """
import atexit, csv, os, queue, signal, sys, threading, time
import pyzvr
signal.signal(signal.SIGINT, signal.default_int_handler)
path = sys.argv[1]
leaving = []
atexit.register(leaving.append, True)

class Slow:
    count = 0
    def __init__(self, file): self.real = csv.writer(file)
    def writerows(self, rows):
        time.sleep(0.0012)
        Slow.count += 1
        if "signal" in sys.argv and Slow.count > 100 and leaving:
            leaving.clear()
            os.kill(os.getpid(), signal.SIGINT)
        self.real.writerows(rows)

log = pyzvr.DataLogger()
log.Logger_openFile(path, verbose=False)
log.writer_csv = Slow(log.f_handle)
def put():
    for first in range(0, 200000, 100):
        log.Logger_write2DList([[number] for number in range(first, first + 100)])
"""


def leave(path, code, *options):
    # The other's SIGINT is ours too if we share a group.
    process = subprocess.Popen([sys.executable, "-X", "dev", "-c", LEAVING + code, str(path), *options], text=True,
                               stdout=subprocess.PIPE, stderr=subprocess.PIPE, start_new_session=True)
    out, errors = process.communicate(timeout=60)
    return process.returncode, out, errors


@pytest.mark.parametrize("code", ["put()", "put(); log.me = log; del log; import gc; gc.collect()",
                                  "log.save_data_queue = queue.Queue(); put(); log.save_data_lock.acquire()"])
def test_leaving_the_interpreter_waits_for_a_slow_disk(tmp_path, code):
    path = tmp_path / "log.csv"
    assert leave(path, code) == (0, "", "")
    assert content(path) == [[str(number)] for number in range(200000)]


def test_ctrl_c_ends_that_wait_and_tells_what_is_lost(tmp_path):
    path = tmp_path / "log.csv"
    status, out, errors = leave(path, "put()", "signal")
    told = re.fullmatch(rf"pyzvr: interrupted, up to (\d+) rows that were queued for '{path}' are lost\n", errors)
    assert (status, out) == (0, "")
    assert told
    rows = content(path)
    assert rows == [[str(number)] for number in range(len(rows))]
    assert 100 * 100 <= len(rows) < 200000 <= len(rows) + int(told[1]) <= 200000 + 100


@pytest.mark.parametrize("code", [
    "other = pyzvr.DataLogger(); other.save_data_lock.release(); other.Logger_writeValue(1)",
    "other = pyzvr.DataLogger(); other.Logger_writeValue(1)",
    "other = pyzvr.DataLogger(); other.save_data_lock = threading.Lock(); other.save_data_lock.acquire()",
    "log._Logger_close(); put()",
    "log.Logger_openFile('/dev/full', verbose=False); log._Logger_close()",
])
def test_leaving_the_interpreter_waits_for_no_more_than_an_open_file(tmp_path, code):
    began = time.monotonic()
    status, out, _ = leave(tmp_path / "log.csv", code)
    assert (status, out) == (0, "")
    assert time.monotonic() - began < 20


def test_a_forked_child_writes_nothing_and_waits_for_nothing(tmp_path):
    path = tmp_path / "log.csv"
    code = """
log.writer_csv = csv.writer(log.f_handle)
for number in range(1000): log.Logger_writeValue(number)
for ends in ("log._Logger_close()", "log.Logger_flush(); globals().pop('log')", "sys.exit()"):
    child = os.fork()
    if child == 0:
        exec(ends)
        sys.exit()
    assert os.waitpid(child, 0)[1] == 0
"""
    assert leave(path, code) == (0, "", "")
    assert content(path) == [[str(number)] for number in range(1000)]
