"""A logger, and what makes its writing slow."""

import builtins
import csv
import queue
import threading
import time
from unittest import mock

import pytest

import pyzvr


def content(path):
    with open(path, newline="", encoding="utf8") as file:
        return list(csv.reader(file))


@pytest.fixture
def logger():
    logger = pyzvr.DataLogger()
    yield logger
    logger._Logger_close()


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
