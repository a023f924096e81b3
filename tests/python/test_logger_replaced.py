"""The logger with queues, locks, writers and bodies of others."""

import itertools
import queue
import threading
import time
from unittest import mock

import pytest
from logger_support import Rows, content

import pyzvr


def test_steps_of_the_host_are_those_of_now(tmp_path, logger):
    path = str(tmp_path / "log.csv")
    with mock.patch("csv.writer") as make:
        logger.Logger_openFile(path, verbose=False)
        assert logger.writer_csv is make.return_value
        assert make.call_args == mock.call(logger.f_handle)
    logger.Logger_openFile(path, verbose=False)
    logger.Logger_writeValue("real")
    with mock.patch("builtins.open", side_effect=PermissionError), pytest.raises(PermissionError):
        logger.Logger_openFile(path + "2", verbose=False)
    with mock.patch("csv.writer", side_effect=ZeroDivisionError), pytest.raises(ZeroDivisionError):
        logger.Logger_openFile(path + "2", verbose=False)
    logger.Logger_flush()
    assert content(path) == [["real"]]


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
    assert content(path) == [["0"], ["2"]]
    assert vars(logger)["writer_csv"] is logger.writer_csv
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
        assert not logger.save_data_thread.is_alive()
        assert logger.killed
        assert content(path)[:22] == [["in the first queue"], ["before"], *([str(i)] for i in range(20))]


def test_locks_and_queues_without_a_file_hold_nothing_up():
    logger = pyzvr.DataLogger()
    logger.save_data_lock, logger.save_data_queue = threading.Lock(), queue.Queue(1)
    logger.save_data_lock.acquire()
    logger.Logger_writeValue("fills it")
    logger._Logger_close()
    logger.save_data_thread.join(20)
    assert not logger.save_data_thread.is_alive()
    assert logger.Logger_getLostWrites() == 1
    with mock.patch.object(pyzvr.DataLogger, "_saveStreamingDataThread"):
        silent = pyzvr.DataLogger()
    silent.save_data_queue, silent.save_data_lock = mock.MagicMock(), mock.MagicMock()
    silent.f_handle, silent.writer_csv = mock.MagicMock(), mock.MagicMock()
    silent._Logger_close()
    assert silent.f_handle is None
    assert silent.save_data_queue.put.call_args == mock.call(None)


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
    assert "Opened" in capsys.readouterr().out
    assert not logger.save_data_lock.locked()
    logger.Logger_writeHeader(["a"])
    assert logger.save_data_queue.get() == [["a"]]
    assert logger.Logger_getLostWrites() == 0
    logger._Logger_close()
    assert logger.killed
    assert logger.save_data_queue.get() is None
    assert not hasattr(logger, "_runtime")


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
        assert not logger.save_data_thread.is_alive()
        assert logger.ran is logger.save_data_queue
    with mock.patch.object(pyzvr.DataLogger, "_saveStreamingDataThread") as body:
        logger = pyzvr.DataLogger()
    logger.save_data_thread.join(10)
    body.assert_called_once_with(logger.save_data_queue)


def test_killed_is_a_plain_field(logger):
    with mock.patch.object(logger, "killed", True):
        assert logger.killed is True
    assert logger.killed is False
    assert vars(logger)["killed"] is False
    logger.killed = True
    logger.Logger_writeValue(1)
    logger.writer_csv = rows = Rows()
    logger.save_data_lock.release()
    logger.save_data_thread.join(10)
    assert not logger.save_data_thread.is_alive()
    assert rows == [[[1]]]
