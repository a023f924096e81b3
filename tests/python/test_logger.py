"""The data logger: what reaches its files, in which order, and what happens when the disk refuses."""

import builtins
import csv
import gc
import itertools
import os
import queue
import re
import subprocess
import sys
import threading
import time
import weakref
from unittest import mock

import pytest
from test_analog import frames, row, volts, wired

import pyzvr


def content(path):
    with open(path, newline="", encoding="utf8") as file:
        return list(csv.reader(file))


@pytest.fixture
def logger():
    logger = pyzvr.DataLogger()
    yield logger
    logger._Logger_close()


def test_rows_queued_before_and_after_opening_reach_the_file_in_order(logger, tmp_path, capsys):
    path = tmp_path / "log.csv"
    logger.Logger_writeHeader(["time", "größe"])
    logger.Logger_writeList([1, 2.5])
    assert logger.f_handle is None and logger.save_data_queue.qsize() == 2 and logger.save_data_lock.locked()
    logger.Logger_openFile(str(path))
    logger.Logger_write2DList([["a,b", 'quoted "x"'], ["c\nd", ""]])
    logger.Logger_writeValue(7)
    logger.Logger_flush()
    expected = [["time", "größe"], ["1", "2.5"], ["a,b", 'quoted "x"'], ["c\nd", ""], ["7"]]
    assert content(path) == expected and path.read_bytes().startswith("time,größe\r\n".encode())
    assert capsys.readouterr().out == f"Opened file name: ({path})\n" and logger.filename == str(path)
    logger._Logger_close()
    assert logger.f_handle is None and logger.killed and content(path) == expected
    logger.save_data_thread.join(5)
    assert not logger.save_data_thread.is_alive()


def test_files_are_added_to_or_cleared_and_changed_in_between(logger, tmp_path):
    first, second = tmp_path / "1.csv", tmp_path / "2.csv"
    first.write_text("old\r\n")
    logger.Logger_openFile(str(first), verbose=False)
    for number in range(1000):
        logger.Logger_writeValue(number)
    logger.Logger_openFile(str(second), True, False)
    logger.Logger_writeValue("new")
    assert content(first) == [["old"], *([str(number)] for number in range(1000))]
    logger.Logger_openFile(str(first), clear_old=True, verbose=False)
    assert content(second) == [["new"]] and content(first) == []


def test_closing_loses_nothing_and_dropping_neither(tmp_path):
    path = tmp_path / "log.csv"
    for ends in ("close", "drop"):
        box = pyzvr.TarnOut()
        box.Logger_openFile(str(path), True, False)
        thread = box.save_data_thread
        for number in range(5000):
            box.Logger_writeList([number, number / 8])
        if ends == "close":
            box.close()
        del box
        gc.collect()
        thread.join(20)
        gc.collect()
        assert not thread.is_alive() and len(content(path)) == 5000


def test_closing_without_a_file_does_not_wait():
    box = pyzvr.TarnDio()
    box.Logger_writeValue(1)
    box.close()
    box.save_data_thread.join(5)
    assert not box.save_data_thread.is_alive() and not hasattr(pyzvr.Pawl, "Logger_openFile")


def test_blocks_are_written_as_they_are(tmp_path):
    path = tmp_path / "log.csv"
    with wired("TarnAnalog") as box:
        box.AI_open(0)
        frames(box, *[row(i) for i in range(700)])
        box.Logger_openFile(str(path), verbose=False)
        box.Logger_write2DList(box.AI_readStreamingBlock(0, 700, 5))
        box.Logger_flush()
        assert content(path) == [[str(volts(code)) for code in row(i)] for i in range(700)]


def test_disk_failures_are_reported_once_and_counted(logger, monkeypatch):
    reports = []
    monkeypatch.setattr(threading, "excepthook", lambda args: reports.append((args.exc_type, args.thread.name)))
    logger.Logger_openFile("/dev/full", verbose=False)
    for _ in range(5):
        logger.Logger_write2DList([["x" * 5000]] * 10)
    logger.Logger_write2DList(5)
    logger.Logger_writeValue("what waits to be flushed")
    with pytest.raises(OSError):
        logger.Logger_flush()
    assert reports == [(OSError, "_saveStreamingDataThread")] and logger.Logger_getLostWrites() >= 2
    with pytest.raises(OSError):
        logger._Logger_close()
    assert logger.f_handle is None and logger.killed


def test_file_that_cannot_be_opened_changes_nothing(logger, tmp_path):
    path = tmp_path / "log.csv"
    logger.Logger_openFile(str(path), verbose=False)
    with pytest.raises(OSError):
        logger.Logger_openFile(str(tmp_path / "no" / "such"), verbose=False)
    logger.Logger_writeValue(1)
    logger.Logger_flush()
    assert content(path) == [["1"]] and logger.filename == str(path)


def test_own_queue_of_a_test_is_looked_at_through_the_object(logger):
    logger.save_data_queue.put("rows")
    assert logger.save_data_queue.get() == "rows" and logger.save_data_queue.empty() and logger.queue_timeout == 999999


class SlowQueue(queue.Queue):
    """Stretches the time between the moment when rows leave the queue and the one when somebody knows of it."""

    def get(self, *args):
        item = super().get(*args)
        time.sleep(0.002)
        return item


class SlowFile:
    """A file that takes its time, as `open` of a test makes it."""

    def __init__(self, *args, **kwargs):
        self.file = real_open(*args, **kwargs)

    def write(self, text):
        time.sleep(0.002)
        return self.file.write(text)

    def __getattr__(self, name):
        return getattr(self.file, name)


real_open = open


def plain(monkeypatch, logger):
    pass


def slow_queue(monkeypatch, logger):
    logger.save_data_queue = SlowQueue()


def slow_writer(monkeypatch, logger):
    monkeypatch.setattr(csv, "writer", lambda file, make=csv.writer: mock.Mock(writerows=slowly(make(file).writerows)))


def slowly(call):
    def late(*args):
        time.sleep(0.002)
        return call(*args)

    return late


def slow_file(monkeypatch, logger):
    monkeypatch.setattr(builtins, "open", SlowFile)


@pytest.mark.parametrize("make_slow", [plain, slow_queue, slow_writer, slow_file])
@pytest.mark.parametrize("ends", ["close", "open", "flush", "drop"])
def test_rows_on_their_way_to_the_file_are_waited_for(tmp_path, monkeypatch, make_slow, ends):
    path, other = str(tmp_path / "log.csv"), str(tmp_path / "other.csv")
    for number in range(500 if make_slow is plain else 30):
        logger = pyzvr.DataLogger()
        with monkeypatch.context() as patched:
            make_slow(patched, logger)
            logger.Logger_openFile(path, True, False)
        thread, file = logger.save_data_thread, logger.f_handle
        logger.Logger_writeValue(number)
        if number % 2:
            logger.Logger_writeValue("more")
        if ends == "open":
            logger.Logger_openFile(other, True, False)
        elif ends == "flush":
            logger.Logger_flush()
        elif ends == "close":
            logger._Logger_close()
        else:
            del logger
            thread.join(20)
        assert file.closed == (ends != "flush")
        assert content(path) == [[str(number)], *[["more"]] * (number % 2)]
        if ends in ("open", "flush"):
            logger._Logger_close()
        thread.join(20)
        assert not thread.is_alive()


def writers_of(logger, count, stop, backlog):
    """Threads that write rows (number of the thread, number of the row) until they are told to stop."""
    written = [0] * count

    def write(me):
        while not stop.is_set():
            logger.Logger_writeList([me, written[me]])
            written[me] += 1
            while logger.save_data_queue.qsize() > backlog and not stop.is_set():
                time.sleep(0.0002)

    threads = [threading.Thread(target=write, args=(me,)) for me in range(count)]
    for thread in threads:
        thread.start()
    return threads, written


@pytest.mark.parametrize("make_slow", [plain, slow_queue])
def test_files_change_under_writing_threads_and_no_row_is_lost_or_out_of_order(tmp_path, logger, monkeypatch, make_slow):
    make_slow(monkeypatch, logger)
    paths = [tmp_path / f"{i}.csv" for i in range(60 if make_slow is plain else 8)]
    logger.Logger_openFile(str(paths[0]), True, False)
    stop = threading.Event()
    threads, written = writers_of(logger, 3, stop, 1000 if make_slow is plain else 20)
    for path in paths[1:]:
        logger.Logger_openFile(str(path), True, False)
        # The same file again, and a flush, change nothing.
        logger.Logger_openFile(str(path), False, False)
        logger.Logger_flush()
    stop.set()
    for thread in threads:
        thread.join()
    logger._Logger_close()
    rows = [tuple(map(int, row)) for path in paths for row in content(path)]
    for me, count in enumerate(written):
        assert [number for writer, number in rows if writer == me] == list(range(count))
    assert len(rows) == sum(written) and logger.Logger_getLostWrites() == 0


def test_the_open_file_opened_again_is_closed_first(tmp_path, logger):
    path = tmp_path / "log.csv"
    logger.Logger_openFile(str(path), verbose=False)
    for number in range(300):
        logger.Logger_writeValue(f"old {number}")
        logger.Logger_openFile(os.path.relpath(path), clear_old=True, verbose=False)
        logger.Logger_writeValue(number)
        logger.Logger_openFile(str(path), verbose=False)
        logger.Logger_writeValue(-number)
        logger.Logger_flush()
        assert content(path) == [[str(number)], [str(-number)]]
    # What cannot be asked which file it is, is known by its name.
    with mock.patch("builtins.open", mock.mock_open()) as opened:
        logger.Logger_openFile("a file", verbose=False)
        first = logger.f_handle
        logger.Logger_writeValue(1)
        logger.Logger_openFile("a file", verbose=False)
    first.write.assert_called_with("1\r\n")
    assert opened.call_args_list == [mock.call("a file", "a", encoding="UTF8", newline="")] * 2
    assert content(path) == [[str(number)], [str(-number)]]


def test_steps_of_the_host_are_those_of_now(tmp_path, logger):
    path = str(tmp_path / "log.csv")
    with mock.patch("csv.writer") as make:
        logger.Logger_openFile(path, verbose=False)
        assert logger.writer_csv is make.return_value and make.call_args == mock.call(logger.f_handle)
    logger.Logger_openFile(path, verbose=False)
    logger.Logger_writeValue("real")
    with mock.patch("builtins.open", side_effect=PermissionError), pytest.raises(PermissionError):
        logger.Logger_openFile(path + "2", verbose=False)
    with mock.patch("csv.writer", side_effect=ZeroDivisionError), pytest.raises(ZeroDivisionError):
        logger.Logger_openFile(path + "2", verbose=False)
    logger.Logger_flush()
    assert content(path) == [["real"]]


class Rows(list):
    """A writer that keeps what it gets, in ones own list; tells when something comes."""

    def __init__(self, owner=None):
        self.owner, self.came = owner, threading.Semaphore(0)

    def writerows(self, rows):
        self.append(rows)
        self.came.release()

    def take(self, count):
        for _ in range(count):
            assert self.came.acquire(timeout=10)
        return list(self)


def test_rows_go_through_the_writer_of_now(tmp_path, logger):
    path = tmp_path / "log.csv"
    logger.Logger_openFile(str(path), verbose=False)
    matrix = [[0]]
    logger.Logger_write2DList(matrix)
    logger.Logger_flush()
    with mock.patch.object(logger, "writer_csv", Rows()) as rows:
        logger.Logger_write2DList(matrix)
        assert rows.take(1)[0] is matrix
        logger.Logger_writeValue(1)
        logger.Logger_flush()
        assert rows == [[[0]], [[1]]]
    logger.Logger_writeValue(2)
    logger.Logger_flush()
    assert content(path) == [["0"], ["2"]] and vars(logger)["writer_csv"] is logger.writer_csv
    # Rows wait while there is none.
    del logger.writer_csv
    assert not hasattr(logger, "writer_csv")
    logger.Logger_writeValue(3)
    logger.Logger_writeValue(4)
    logger.writer_csv = rows = Rows()
    assert rows.take(2) == [[[3]], [[4]]]


def test_a_writer_alone_will_do(logger):
    logger.Logger_writeValue(1)
    logger.writer_csv = rows = Rows()
    logger.save_data_lock.release()
    assert rows.take(1) == [[[1]]]


def test_queue_and_lock_may_be_those_of_the_host(tmp_path):
    for make_lock, make_queue in itertools.product((threading.Lock, threading.RLock, pyzvr.DataLogger), (
            queue.Queue, lambda: queue.Queue(2), queue.SimpleQueue, pyzvr.DataLogger)):
        path = tmp_path / "log.csv"
        logger = pyzvr.DataLogger()
        logger.Logger_writeValue("in the first queue")
        if make_lock is not pyzvr.DataLogger:
            logger.save_data_lock = make_lock()
            logger.save_data_lock.acquire()
        if make_queue is not pyzvr.DataLogger:
            logger.save_data_queue = make_queue()
        logger.Logger_writeValue("before")
        assert logger.save_data_queue.qsize() >= 1
        logger.Logger_openFile(str(path), True, False)
        for number in range(20):
            logger.Logger_writeValue(number)
        # Replaced while the thread waits in it, and put back.
        first = logger.save_data_queue
        logger.Logger_flush()
        with mock.patch.object(logger, "save_data_queue", queue.Queue()) as second:
            logger.Logger_writeValue("second")
            assert logger.save_data_queue is second
        assert logger.save_data_queue is first
        logger.Logger_writeValue("first")
        logger.Logger_flush()
        assert content(path)[22:] == [["second"], ["first"]]
        # The gate is shut again: rows wait.
        gate = threading.Lock()
        logger.save_data_lock = gate
        gate.acquire()
        logger._Logger_close()
        logger.save_data_thread.join(20)
        assert not logger.save_data_thread.is_alive() and logger.killed
        assert content(path)[:22] == [["in the first queue"], ["before"], *([str(i)] for i in range(20))]


def test_locks_and_queues_without_a_file_hold_nothing_up():
    logger = pyzvr.DataLogger()
    logger.save_data_lock, logger.save_data_queue = threading.Lock(), queue.Queue(1)
    logger.save_data_lock.acquire()
    logger.Logger_writeValue("fills it")
    logger._Logger_close()
    logger.save_data_thread.join(20)
    assert not logger.save_data_thread.is_alive() and logger.Logger_getLostWrites() == 1
    with mock.patch.object(pyzvr.DataLogger, "_saveStreamingDataThread"):
        silent = pyzvr.DataLogger()
    silent.save_data_queue, silent.save_data_lock = mock.MagicMock(), mock.MagicMock()
    silent.f_handle, silent.writer_csv = mock.MagicMock(), mock.MagicMock()
    silent._Logger_close()
    assert silent.f_handle is None and silent.save_data_queue.put.call_args == mock.call(None)


class Bare(pyzvr.DataLogger):
    """Has what the steps ask for, and no thread."""

    def __init__(self):
        self.f_handle = self.writer_csv = self.filename = None
        self.killed, self.queue_timeout = False, 5
        self.save_data_queue, self.save_data_lock = queue.Queue(), threading.Lock()


@pytest.mark.parametrize("make", [Bare, pyzvr.DataLogger])
def test_the_body_takes_any_queue(tmp_path, make):
    logger = make()
    path = tmp_path / "log.csv"
    logger.Logger_openFile(str(path), verbose=False)
    rows = queue.Queue()
    for item in ([[1]], None, [[2], [3]]):
        rows.put(item)
    body = threading.Thread(target=logger._saveStreamingDataThread, args=(rows,), daemon=True)
    body.start()
    while len(content(path)) < 3:
        logger.Logger_flush()
    logger.killed = True
    rows.put([[4]])
    body.join(10)
    assert not body.is_alive()
    rows.put([[5]])
    logger._saveStreamingDataThread(rows)
    assert rows.qsize() == 1
    logger.killed, logger.queue_timeout = False, 0.01
    with pytest.raises(queue.Empty):
        logger._saveStreamingDataThread(queue.Queue())
    logger.writer_csv = mock.Mock(writerows=mock.Mock(side_effect=ZeroDivisionError))
    with pytest.raises(ZeroDivisionError):
        logger._saveStreamingDataThread(rows)
    logger._Logger_close()
    assert content(path) == [["1"], ["2"], ["3"], ["4"]]


def test_without_the_constructor_and_its_thread_everything_is_as_it_is_written(tmp_path, capsys):
    logger = Bare()
    logger.Logger_openFile(str(tmp_path / "log.csv"))
    assert "Opened" in capsys.readouterr().out and not logger.save_data_lock.locked()
    logger.Logger_writeHeader(["a"])
    assert logger.save_data_queue.get() == [["a"]] and logger.Logger_getLostWrites() == 0
    logger._Logger_close()
    assert logger.killed and logger.save_data_queue.get() is None and not hasattr(logger, "_runtime")


class OwnBody(pyzvr.DataLogger):
    def _saveStreamingDataThread(self, queue_):
        self.ran = queue_
        while not self.killed:
            self.save_data_lock.acquire(False)
            if self.f_handle:
                self.save_data_lock.release()
            rows = queue_.get(True, self.queue_timeout)
            if rows is not None:
                time.sleep(0.002)
                self.writer_csv.writerows([["own", *row] for row in rows])


class WrappedBody(pyzvr.DataLogger):
    def _saveStreamingDataThread(self, queue_):
        self.ran = queue_
        super()._saveStreamingDataThread(queue_)


@pytest.mark.parametrize("make, title", [(OwnBody, ["own"]), (WrappedBody, [])])
def test_a_replaced_body_is_what_the_thread_runs(tmp_path, make, title):
    path, other = tmp_path / "log.csv", tmp_path / "other.csv"
    for number in range(30):
        logger = make()
        logger.Logger_openFile(str(path), True, False)
        for value in range(number % 4):
            logger.Logger_writeValue(value)
        if number % 3:
            logger.Logger_openFile(str(other), True, False)
        logger._Logger_close()
        assert content(path) == [[*title, str(value)] for value in range(number % 4)]
        logger.save_data_thread.join(10)
        assert not logger.save_data_thread.is_alive() and logger.ran is logger.save_data_queue
    with mock.patch.object(pyzvr.DataLogger, "_saveStreamingDataThread") as body:
        logger = pyzvr.DataLogger()
    logger.save_data_thread.join(10)
    body.assert_called_once_with(logger.save_data_queue)


def test_killed_is_a_plain_field(logger):
    with mock.patch.object(logger, "killed", True):
        assert logger.killed is True
    assert logger.killed is False and vars(logger)["killed"] is False
    logger.killed = True
    logger.Logger_writeValue(1)
    logger.writer_csv = rows = Rows()
    logger.save_data_lock.release()
    logger.save_data_thread.join(10)
    assert not logger.save_data_thread.is_alive() and rows == [[[1]]]


def test_a_second_constructor_keeps_the_thread_and_loses_nothing(tmp_path, logger):
    path = tmp_path / "log.csv"
    thread, rows = logger.save_data_thread, logger.save_data_queue
    logger.Logger_openFile(str(path), verbose=False)
    logger.Logger_writeValue(1)
    logger.__init__()
    assert content(path) == [["1"]] and logger.f_handle is None and logger.filename is None
    assert logger.save_data_thread is thread and logger.save_data_queue is rows and logger.save_data_lock.locked()
    logger._Logger_close()
    logger.__init__()
    assert not logger.killed and logger.save_data_thread is not thread and logger.save_data_thread.is_alive()


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
        assert file.closed and content(path) == [[str(number)] for number in range(200)]


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
        assert not thread.is_alive() and file.closed and rows[len(rows) - count:] == [[[i]] for i in range(count)]


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
    assert (status, out) == (0, "") and told
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
    assert (status, out) == (0, "") and time.monotonic() - began < 20


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
