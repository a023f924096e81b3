"""Blocks of samples by themselves: what they tell, their parts and copies, and the buffers that rows are written into."""

import array
import copy
import math
import pickle
import sys
import time

import pytest
from fake_analog import OK, fake_device, frames, row, volts
from simulators import connected
from test_streaming import begin, counted, end

import pyzvr


def expected(first, count):
    return [[volts(code) for code in row(i)] for i in range(first, first + count)]


def test_blocks_tell_their_place_in_time(call):
    with connected("TarnAnalog", "--wave", "*:count") as box:
        before = time.time()
        begin(call, box, rate=4000)
        first, second = (call(box, "AI_readStreamingBlock", 0, count, 5) for count in (300, 200))
        end(call, box)
        assert (first.rate, first.first_row, second.first_row, second.dropped_before) == (4000, 0, 300, 0)
        assert before <= first.start == second.start <= time.time()
        assert (first.units, first.channels) == ("V", tuple(range(8)))
        while call(box, "AI_readStreaming", 0, 10000, 0.05):
            pass
        begin(call, box, rate=8000)
        again = call(box, "AI_readStreamingBlock", 0, 10, 5)
        assert (again.rate, again.first_row, again.tolist()) == (8000, 0, counted(0, 10))
        assert again.start > first.start


def test_runs_do_not_share_a_block(call):
    with connected("TarnAnalog", "--wave", "*:count", "--fast") as box:
        begin(call, box, mode=1, samples=70)
        while box.AI_getBacklog(0) < 70:
            call(box, "_AI_getCounter", 0)
        begin(call, box, mode=1, samples=50)
        while box.AI_getBacklog(0) < 120:
            call(box, "_AI_getCounter", 0)
        blocks = [call(box, "AI_readStreamingBlock", 0, 120, 0.05) for _ in range(2)]
        assert [(len(block), block.first_row) for block in blocks] == [(70, 0), (50, 0)]


def test_chassis_blocks_name_the_channels_of_their_chip_selects(call):
    with fake_device("Lattice") as box:
        box.client_cmd.replies = {pyzvr.SET_AI_ENABLED_CS: OK}
        call(box, "AI_open", 4)
        call(box, "AI_enableCS", 4, [0, 2])
        for select in (0, 2):
            frames(box, row(0), key=(pyzvr.START_AI_STREAMING, 3, select))
        block = call(box, "AI_readStreamingBlock", 4, 1, 5)
        assert block.channels == (*range(8), *range(16, 24))
        assert math.isnan(block.rate)


def test_parts_of_a_block():
    with fake_device("TarnAnalog") as box:
        box.AI_open(0)
        frames(box, *(row(i) for i in range(20)))
        block = box.AI_readStreamingBlock(0, 20, 5)
    rows = expected(0, 20)
    assert (block[3], block[-1], block[2, 5], list(block)) == (rows[3], rows[-1], rows[2][5], rows)
    part = block[5:-5]
    assert (part.tolist(), part.first_row, part[2:4].tolist(), part[2:4].first_row) == (rows[5:15], 5, rows[7:9], 7)
    assert (block[9:3].shape, block[:].tolist()) == ((0, 8), rows)
    memoryview(block)[5, 0] = 9.0
    assert part[0, 0] == 9.0
    assert repr(block).startswith("<SampleBlock (20, 8), rate unknown, first row 0")
    html = block._repr_html_()
    assert (html.count("<tr>"), html.count("<th>19</th>"), html.count("<th>9</th>")) == (12, 1, 0)
    for key, error in ((20, IndexError), (-21, IndexError), ((0, 8), IndexError), (slice(None, None, 2), ValueError),
                       ("a", TypeError), ((slice(None), 0), TypeError), (1.0, TypeError)):
        with pytest.raises(error):
            block[key]


def test_copies_of_a_block_are_blocks_of_their_own():
    with connected("TarnAnalog", "--wave", "*:count", "--fast") as box:
        begin(lambda box, name, *arguments: getattr(box, name)(*arguments), box, mode=1, samples=50)
        box.AI_readStreamingBlock(0, 10, 5)
        block = box.AI_readStreamingBlock(0, 40, 5)
    copies = [copy.copy(block), copy.deepcopy(block)]
    copies += [pickle.loads(pickle.dumps(block, protocol)) for protocol in range(2, pickle.HIGHEST_PROTOCOL + 1)]
    for each in copies:
        told = [(b.shape, b.tolist(), b.rate, b.start, b.first_row, b.dropped_before, b.channels) for b in (each, block)]
        assert told[0] == told[1]
        memoryview(each)[0, 0] = -9.0
        assert block[0, 0] != -9.0
    state = block.__reduce_ex__(4)[2]
    for broken in ((), state[:2] + (state[2][:-8],) + state[3:], (10**12, *state[1:])):
        with pytest.raises(ValueError):
            pyzvr.SampleBlock.__new__(pyzvr.SampleBlock).__setstate__(broken)


def test_arrays_of_numpy(monkeypatch):
    with fake_device("TarnAnalog") as box:
        box.AI_open(0)
        frames(box, *(row(i) for i in range(5)))
        block = box.AI_readStreamingBlock(0, 5, 5)
    with monkeypatch.context() as without:
        without.setitem(sys.modules, "numpy", None)
        with pytest.raises(ImportError):
            block.__array__()
    numpy = pytest.importorskip("numpy")
    assert numpy.shares_memory(block.__array__(), numpy.asarray(block))
    assert not numpy.shares_memory(block.__array__(copy=True), numpy.asarray(block))
    assert numpy.asarray(block, dtype="f4").dtype == block.__array__("f4").dtype == "f4"
    with pytest.raises(ValueError, match="copy"):
        block.__array__("f4", copy=False)


def room(*shape):
    return memoryview(bytearray(8 * math.prod(shape))).cast("d", shape)


def test_buffers_that_would_scramble_columns_are_refused_and_lose_nothing(call):
    with fake_device("SableAnalog") as box:
        box.client_cmd.replies = {pyzvr.OPEN_AI: OK, pyzvr.SET_AI_ENABLED_CS: OK}
        call(box, "AI_open", 0)
        refused = {"its last dimension is 4, the row's width 8 is wanted": room(10, 4),
                   "its last dimension is 16, the row's width 8 is wanted": room(5, 16),
                   "it holds 7 doubles, at least a row of 8 is wanted": array.array("d", bytes(56))}
        for waiting in (0, 20):
            frames(box, *(row(i) for i in range(waiting)))
            for message, buffer in refused.items():
                with pytest.raises(pyzvr.InputDataNotInRangeError, match=message):
                    call(box, "AI_readStreamingInto", 0, buffer, 0.01)
        fitting = room(10, 8)
        assert call(box, "AI_readStreamingInto", 0, fitting, 5) == 10
        assert fitting.tolist() == expected(0, 10)
        call(box, "AI_enableChannel", 0, 3)  # those that wait are wider still
        with pytest.raises(pyzvr.InputDataNotInRangeError, match="width 8"):
            call(box, "AI_readStreamingInto", 0, room(10, 3), 5)
        cube = room(2, 3, 8)
        assert call(box, "AI_readStreamingInto", 0, cube, 5) == 6
        assert cube.tolist() == [expected(10, 3), expected(13, 3)]
