"""The logger: every row reaches its file, in order."""

import gc
import os
import threading
import time
from unittest import mock

import pytest
from fake_analog import fake_device, frames, row, volts
from logger_support import content, plain, slow_file, slow_queue, slow_writer

import pyzvr


def test_rows_queued_before_and_after_opening_reach_the_file_in_order(logger, tmp_path, capsys, call):
    path = tmp_path / "log.csv"
    logger.Logger_writeHeader(["time", "größe"])
    logger.Logger_writeList([1, 2.5])
    assert logger.f_handle is None
    assert logger.save_data_queue.qsize() == 2
    assert logger.save_data_lock.locked()
    logger.Logger_openFile(str(path))
    logger.Logger_write2DList([["a,b", 'quoted "x"'], ["c\nd", ""]])
    logger.Logger_writeValue(7)
    call(logger, "Logger_flush")
    expected = [["time", "größe"], ["1", "2.5"], ["a,b", 'quoted "x"'], ["c\nd", ""], ["7"]]
    assert content(path) == expected
    assert path.read_bytes().startswith("time,größe\r\n".encode())
    assert capsys.readouterr().out == f"Opened file name: ({path})\n"
    assert logger.filename == str(path)
    logger._Logger_close()
    assert logger.f_handle is None
    assert logger.killed
    assert content(path) == expected
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
    assert content(second) == [["new"]]
    assert content(first) == []


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
        assert not thread.is_alive()
        assert len(content(path)) == 5000


def test_closing_without_a_file_does_not_wait():
    box = pyzvr.TarnDio()
    box.Logger_writeValue(1)
    box.close()
    box.save_data_thread.join(5)
    assert not box.save_data_thread.is_alive()
    assert not hasattr(pyzvr.Pawl, "Logger_openFile")


def test_blocks_are_written_as_they_are(tmp_path):
    path = tmp_path / "log.csv"
    with fake_device("TarnAnalog") as box:
        box.AI_open(0)
        frames(box, *[row(i) for i in range(700)])
        box.Logger_openFile(str(path), verbose=False)
        box.Logger_write2DList(box.AI_readStreamingBlock(0, 700, 5))
        box.Logger_flush()
        assert content(path) == [[str(volts(code)) for code in row(i)] for i in range(700)]


def test_disk_errors_are_reported_once_and_counted(logger, monkeypatch):
    reports = []
    monkeypatch.setattr(threading, "excepthook", lambda args: reports.append((args.exc_type, args.thread.name)))
    logger.Logger_openFile("/dev/full", verbose=False)
    for _ in range(5):
        logger.Logger_write2DList([["x" * 5000]] * 10)
    logger.Logger_write2DList(5)
    logger.Logger_writeValue("what waits to be flushed")
    with pytest.raises(OSError):
        logger.Logger_flush()
    assert reports == [(OSError, "_saveStreamingDataThread")]
    assert logger.Logger_getLostWrites() >= 2
    with pytest.raises(OSError):
        logger._Logger_close()
    assert logger.f_handle is None
    assert logger.killed


def test_file_that_cannot_be_opened_changes_nothing(logger, tmp_path):
    path = tmp_path / "log.csv"
    logger.Logger_openFile(str(path), verbose=False)
    with pytest.raises(OSError):
        logger.Logger_openFile(str(tmp_path / "no" / "such"), verbose=False)
    logger.Logger_writeValue(1)
    logger.Logger_flush()
    assert content(path) == [["1"]]
    assert logger.filename == str(path)


def test_own_queue_of_a_test_is_looked_at_through_the_object(logger):
    logger.save_data_queue.put("rows")
    assert logger.save_data_queue.get() == "rows"
    assert logger.save_data_queue.empty()
    assert logger.queue_timeout == 999999


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
def test_files_change_under_writing_threads_and_no_row_is_lost_or_out_of_order(
    tmp_path, logger, monkeypatch, make_slow
):
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
    assert len(rows) == sum(written)
    assert logger.Logger_getLostWrites() == 0


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
