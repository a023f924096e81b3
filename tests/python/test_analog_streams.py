"""Streams of analog inputs behind a fake client: rows in every form, queues and what ends a reader."""

import asyncio
import copy
import gc
import os
import random
import struct
import threading
import weakref
from unittest import mock

import pytest
from fake_analog import OK, RATIO, fake_device, frames, row, samples, volts

import pyzvr


def test_opening_gates_the_reader_thread(call):
    with fake_device("TarnAnalog") as box:
        thread = box.ai_stream_thread
        frames(box, row(0))
        assert thread.is_alive()
        assert thread.name == "_AIStreamThread"
        assert call(box, "AI_readStreaming", 0, 1, 0.01) == []
        assert call(box, "AI_open", 0) == 0
        assert box.ai_open_flag
        assert not box.ai_lock.locked()
        assert call(box, "AI_readStreaming", 0, 1, 5) == [[volts(code) for code in row(0)]]
        box.ai_lock.acquire()
        assert call(box, "AI_open", 0) == 0
        assert box.ai_lock.locked()  # it was open already
        assert call(box, "AI_close", 0) == 0
        assert not box.ai_open_flag
        assert box.ai_data_queue_list[0].qsize() == 1
        assert call(box, "AI_close", 0) == 0
        assert box.ai_data_queue_list[0].qsize() == 1
        assert box.client_cmd.sent == []
    thread.join(5)
    assert not thread.is_alive()
    assert box.ai_killed


def test_rows_in_every_form(call):
    with fake_device("TarnAnalog") as box:
        call(box, "AI_open", 0)
        frames(box, *[row(10 * i) for i in range(100)])
        frames(box, *[row(10 * i) for i in range(100, 1000)])
        box.ai_signal_queue_list[0].get(timeout=5)
        expected = [[volts(code) for code in row(10 * i)] for i in range(1, 1000)]
        assert call(box, "AI_readStreaming", 0, 3, 5) == expected[:3]
        block = call(box, "AI_readStreamingBlock", 0, 500, 5)
        view = memoryview(block)
        assert (block.shape, len(block), view.format, view.c_contiguous, view.shape) == (
            (500, 8),
            500,
            "d",
            True,
            (500, 8),
        )
        assert block.tolist() == expected[3:503]
        buffer = bytearray(8 * 8 * 400 + 24)
        assert call(box, "AI_readStreamingInto", 0, memoryview(buffer).cast("d"), 5) == 400
        assert struct.unpack("8d", buffer[:64]) == tuple(expected[503])
        assert buffer[-24:] == bytes(24)
        assert box.AI_getBacklog(0) == 96
        assert call(box, "AI_readStreaming", 0, 1000, 0.01) == expected[903:]
        assert call(box, "AI_readStreamingBlock", 0, 10, 0.001).shape == (0, 8)
        assert call(box, "AI_readStreaming", 0, 9) == []
        with pytest.raises(TypeError):
            call(box, "AI_readStreamingInto", 0, bytearray(64))
        with pytest.raises(BufferError):
            call(box, "AI_readStreamingInto", 0, memoryview(bytes(64)).cast("d"))


def test_rows_that_the_program_has_are_never_filled_anew(call):
    """Whatever it kept of a result, or did to it, the next ones leave that alone."""
    choose = random.Random(1)
    kept, iterators = [], []  # what the program has, and what it shall stay

    def keep(thing):
        kept.append((thing, copy.deepcopy(thing)))

    def change(rows):
        at = choose.randrange(len(rows))
        choose.choice([
            lambda: rows[at].append("time"),
            lambda: rows[at].clear(),
            lambda: rows[at].__setitem__(3, None),
            lambda: rows.__setitem__(at, "no row"),
            lambda: rows.__setitem__(at, rows[0]),
            lambda: rows.pop(at),
            lambda: rows.clear(),
        ])()

    with fake_device("TarnAnalog") as box:
        call(box, "AI_open", 0)
        first = 0
        for _ in range(400):
            count = choose.choice([1, 7, 7, 7, 20])
            frames(box, *[row(first + i) for i in range(count)])
            rows = call(box, "AI_readStreaming", 0, count, 5)
            assert rows == [[volts(code) for code in row(first + i)] for i in range(count)]
            first += count
            choose.choice([
                lambda: None,
                lambda: None,
                lambda: keep(rows),
                lambda: keep(choose.choice(rows)),
                lambda: keep(rows[:2]),
                lambda: iterators.append((iter(rows), copy.deepcopy(rows))),
                lambda: change(rows),
            ])()
        assert len(kept) > 100
        assert len(iterators) > 20
        assert all(thing == before for thing, before in kept)
        assert all(list(rest) == before for rest, before in iterators)


class Thing:
    """A thing whose end runs code that looks at every list there is."""

    def __del__(self):
        for each in gc.get_objects():
            if type(each) is list:
                list(iter(each))


def test_what_a_program_put_into_a_row_is_let_go_of(call):
    def read_with_a_thing(box, place):
        frames(box, row(1), row(2))
        rows, thing = call(box, "AI_readStreaming", 0, 2, 5), Thing()
        place(rows, thing)
        return weakref.ref(thing)

    with fake_device("TarnAnalog") as box:
        places = [lambda rows, thing: rows.append(thing), lambda rows, thing: rows[1].append(thing),
                  lambda rows, thing: rows[0].__setitem__(0, thing)]
        for place in places * 5:
            call(box, "AI_open", 0)
            gone = read_with_a_thing(box, place)
            for first in range(3):
                frames(box, row(first), row(first))
                assert call(box, "AI_readStreaming", 0, 2, 5) == [[volts(code) for code in row(first)]] * 2
            assert gone() is None
            gone = read_with_a_thing(box, place)
            call(box, "AI_close", 0)
            assert gone() is None
        call(box, "AI_open", 0)
        frames(box, row(9))
        call(box, "AI_readStreaming", 0, 1, 5)[0].append(box)  # a cycle through the box
        gone, thread = weakref.ref(box), box.ai_stream_thread
    thread.join(5)  # it uses the box until then
    del box
    gc.collect()
    assert gone() is None


@pytest.mark.filterwarnings("ignore::pytest.PytestUnhandledThreadExceptionWarning")  # of the decoder thread, which ends
@pytest.mark.parametrize("queues", [None, 5, [object()], "deleted"])
def test_closing_needs_no_row_queues(queues, call):
    with fake_device("TarnAnalog") as box:
        call(box, "AI_open", 0)
        if queues == "deleted":
            del box.ai_signal_queue_list
        else:
            box.ai_signal_queue_list = queues
        assert call(box, "AI_close", 0) == 0
    assert repr(box).endswith("closed>")


def test_every_code_is_rounded_as_the_host_rounds():
    with fake_device("TarnAnalog") as box:
        box.AI_open(0)
        codes = range(-32768, 32768)
        frames(box, *[codes[i:i + 8] for i in range(0, 65536, 8)])
        got = [value for values in box.AI_readStreaming(0, 8192, 5) for value in values]
        assert got == [round(code * RATIO, 4) for code in codes]
        box.ai_ratio = 0.1
        frames(box, row(1))
        assert box.AI_readStreaming(0, 1, 5) == [[round(code * 0.1, 4) for code in row(1)]]
        assert box.ai_ratio == 0.1


def test_24_bits_keep_their_sign_and_are_not_rounded(call):
    with fake_device("TarnAnalog24") as box:
        call(box, "AI_open", 0)
        codes = [0, 1, -1, 2**23 - 1, -2**23, 1234567, -1234567, 42]
        box.data_pool_strm[(pyzvr.AI_START_STREAMING_24BIT, 0,
                            0)].put(b"".join(c.to_bytes(3, "big", signed=True) for c in codes))
        assert call(box, "AI_readStreaming", 0, 1, 5) == [[code * 1.3904889343373708e-6 for code in codes]]


def test_chip_selects_are_joined_row_by_row(call):
    with fake_device("Lattice") as box:
        box.client_cmd.replies = {pyzvr.SET_AI_ENABLED_CS: OK}
        call(box, "AI_open", 4)
        call(box, "AI_enableCS", 4, [0, 1])
        assert len(box.ai_data_queue_list) == len(box.ai_signal_queue_list) == 9
        assert [box._AI_changePortToIndex(port, cs) for port in (0, 1, 3) for cs in (0, 1, 2)] == list(range(9))
        frames(box, *[row(i) for i in range(10)], key=(pyzvr.START_AI_STREAMING, 3, 0))
        frames(box, *[row(-i) for i in range(4)], key=(pyzvr.START_AI_STREAMING, 3, 1))
        joined = [[volts(c) for c in (*row(i), *row(-i))] for i in range(4)]
        assert call(box, "AI_readStreamingBlock", 4, 2, 5).tolist() == joined[:2]
        assert call(box, "AI_readStreaming", 4, 8, 0.05) == joined[2:]
        assert box.AI_getBacklog(4) == 0
        box.ai_signal_queue_list[7].put([1.5] * 8)  # a row of values beside those of the device
        assert call(box, "AI_readStreaming", 4, 1, 5) == [[volts(c) for c in row(4)] + [1.5] * 8]
        with pytest.raises(pyzvr.AIPortNotAvaliableError):
            call(box, "AI_readStreaming", 3, 1)
        with pytest.raises(NameError):
            box._AI_changePortToIndex(2, 0)


def test_rows_change_their_width_with_the_number_of_channels():
    with fake_device("SableAnalog") as box:
        box.client_cmd.replies = {pyzvr.OPEN_AI: OK, pyzvr.SET_AI_ENABLED_CS: OK}
        box.AI_open(0)
        frames(box, row(0))
        assert len(box.AI_readStreaming(0, 1, 5)) == 1
        frames(box, row(0))
        while box.ai_signal_queue_list[0].qsize() < 1:
            pass  # the thread is at it
        box.AI_enableChannel(0, 3)
        frames(box, row(0, 3), row(3, 3))
        while box.ai_signal_queue_list[0].qsize() < 3:
            pass
        assert box.AI_readStreamingBlock(0, 9, 0.01).shape == (1, 8)
        assert [len(values) for values in box.AI_readStreaming(0, 9, 0.01)] == [3, 3]


def test_own_steps_and_queues_of_a_subclass_are_used():
    class Traced(pyzvr.TarnAnalog):
        taken = 0

        def _getStreamingFromPool(self, queue_, num_samples, delay):
            self.taken += 1
            return super()._getStreamingFromPool(queue_, num_samples, delay)

    with Traced() as box:
        box.AI_open(0)
        frames(box, row(0), row(1))
        assert box.AI_readStreaming(0, 2, 5) == [[volts(c) for c in row(i)] for i in (0, 1)]
        assert box.taken == 2


def test_replaced_places_and_sizes_of_queues_are_used(call):
    class Exaggerating(pyzvr.RowFifo):
        asked = 0

        def qsize(self):
            self.asked += 1
            return super().qsize() + 7

    with fake_device("TarnAnalog") as box:
        call(box, "AI_open", 0)
        other = pyzvr.RowFifo()
        other.put([3.5] * 8)
        box.ai_signal_queue_list.append(other)
        with mock.patch.object(box, "_AI_changePortToIndex", return_value=len(box.ai_signal_queue_list) - 1):
            assert call(box, "AI_readStreamingBlock", 0, 1, 5).tolist() == [[3.5] * 8]
            assert call(box, "AI_readStreaming", 0, 1, 0.001) == []
        own = box.ai_signal_queue_list[0] = Exaggerating()
        own.put([1.5] * 8)
        assert box.AI_getBacklog(0) == 8
        assert own.asked == 1
        assert call(box, "AI_readStreaming", 0, 8, 5) == [[1.5] * 8]
        assert own.asked > 1


def test_blocks_stay_as_they_are_while_others_come_and_go(call):
    with fake_device("TarnAnalog") as box:
        call(box, "AI_open", 0)
        held = []
        for number, rows in enumerate([1, 300, 600, 40, 3000, 40000, 257, 600] * 6):
            frames(box, *[row(number)] * rows)
            assert box.ai_signal_queue_list[0].get(timeout=5)
            frames(box, row(number))
            block = call(box, "AI_readStreamingBlock", 0, rows, 5)
            assert len(block) == rows
            held.append((memoryview(block), [volts(code) for code in row(number)], rows))
            del block
            if number % 3 != 0:
                view, values, count = held.pop(number % len(held))
                assert view.tolist() == [values] * count
        for view, values, count in held:
            assert view.tolist() == [values] * count


def test_broken_frame_ends_the_reader_with_a_report_and_nothing_else(monkeypatch):
    reported = threading.Event()
    reports = []
    monkeypatch.setattr(threading, "excepthook", lambda args: (reports.append(args), reported.set()))
    with fake_device("TarnAnalog") as box, fake_device("TarnAnalog") as other:
        box.AI_open(0)
        other.AI_open(0)
        frames(box, row(0))
        box.data_pool_strm[(box.ai_strm_cmd, 0, 0)].put(b"\0" * 17)
        assert reported.wait(5)
        assert reports[0].exc_type is ValueError
        assert reports[0].thread.name == "_AIStreamThread"
        box.ai_stream_thread.join(5)
        assert not box.ai_stream_thread.is_alive()
        assert len(box.AI_readStreaming(0, 5, 0.01)) == 1
        frames(other, row(0))
        assert len(other.AI_readStreaming(0, 1, 5)) == 1


def test_full_queue_drops_the_newest_rows_and_warns():
    with fake_device("TarnAnalog") as box:
        box.AI_open(0)
        chunk = samples(*row(0)) * 50000
        with pytest.warns(UserWarning, match="Occurrence AI queue overflow"):
            for _ in range(21):
                box.data_pool_strm[(box.ai_strm_cmd, 0, 0)].put(chunk)
            while box.ai_data_queue_list[0].qsize() or box.AI_getDroppedRows(0) == 0:
                pass
            box._AI_free()
            box.ai_stream_thread.join(5)
        assert (box.AI_getBacklog(0), box.AI_getDroppedRows(0)) == (1000000, 50000)
        assert box.ai_signal_queue_list[0].full()


def test_reading_in_a_loop_never_holds_up_the_loop():
    async def tick(stop):
        count = 0
        while not stop.is_set():
            await asyncio.sleep(0.001)
            count += 1
        return count

    async def main(box):
        stop = asyncio.Event()
        ticking = asyncio.create_task(tick(stop))
        assert await box.AI_readStreaming_async(0, 5, 0.2) == []
        stop.set()
        return await ticking

    with fake_device("TarnAnalog") as box:
        box.AI_open(0)
        assert asyncio.run(main(box)) > 5


def resident():
    with open("/proc/self/statm") as file:
        return int(file.read().split()[1]) * os.sysconf("SC_PAGESIZE")


def test_ratios_of_the_past_take_no_memory(call):
    with fake_device("TarnAnalog") as box:
        box.client_cmd.replies = {pyzvr.READ_AI_ON_DEMAND: b"\0\0" + samples(*[1000] * 8)}
        for ratio in range(100):
            if ratio == 8:
                before = resident()
            box.ai_ratio = 0.001 + ratio / 1e6
            assert call(box, "AI_readOnDemand", 0) == [round(1000 * box.ai_ratio, 4)] * 8
            box.ai_signal_queue_list[0].put([float(ratio)] * 8)
        assert resident() - before < 16 << 20  # each table has half of that
        box.ai_ratio = float("nan")
        assert str(call(box, "AI_readOnDemand", 0)[0]) == "nan"
        box.ai_ratio = 0.001
        assert call(box, "AI_readOnDemand", 0) == [1.0] * 8
        for field, value, text in (("ai_num_channels", "8", "ai_num_channels"), ("ai_ratio", None, "ai_ratio")):
            with mock.patch.object(box, field, value), pytest.raises(TypeError, match=text):
                call(box, "AI_readOnDemand", 0)
