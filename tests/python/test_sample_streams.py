"""Streams as loops of either form: what they give, and that every way out of the loop closes them."""

import asyncio
import contextlib
import gc
import warnings

import pytest
from simulators import connected
from test_streaming import counted

import pyzvr


def configured(mode=2, rate=4000, samples=0, model="TarnAnalog", wave=("--wave", "*:count"), port=0):
    @contextlib.contextmanager
    def boxes():
        with connected(model, *wave) as box:
            box.AI_setMode(port, mode)
            box.AI_setSamplingRate(port, rate)
            box.AI_setNumSamples(port, samples)
            yield box

    return boxes()


def taken(box, form, rows, count, port=0):
    """The first blocks of a stream, which a `break` ends."""
    blocks = []

    async def follow():
        async for block in box.AI_stream(port, rows):
            blocks.append(block)
            if len(blocks) == count:
                break
        while box.ai_open_flag:
            await asyncio.sleep(0)  # the loop closes what was dropped

    if form == "await":
        asyncio.run(follow())
    else:
        for block in box.AI_stream(port, rows):
            blocks.append(block)
            if len(blocks) == count:
                break
    return blocks


def rows_of(blocks):
    return [values for block in blocks for values in block]


def is_idle(box, port=0):
    """Whether neither side streams: the device counts rows only as long as a run goes on."""
    made = box._AI_getCounter(port)[0]
    return not box.ai_open_flag and box._AI_getCounter(port)[0] == made


@pytest.fixture(params=["for", "await"])
def form(request):
    return request.param


@pytest.mark.parametrize("model, port, wave", [("TarnAnalog", 0, 1), ("Lattice", 4, 1)])
def test_left_loop_closes_its_stream(form, model, port, wave):
    with configured(model=model, port=port) as box:
        for _ in range(2):  # rows that the first run leaves are none of the second
            blocks = taken(box, form, 100, 3, port)
            assert [(len(block), block.first_row, block.rate) for block in blocks] == [
                (100, i, 4000) for i in (0, 100, 200)
            ]
            assert rows_of(blocks) == counted(0, 300)
            assert is_idle(box, port)


def test_a_stream_that_is_left_does_not_close_the_next_one(form):
    async def first(box):
        async for block in box.AI_stream(0, 100):
            return block

    async def follow(box):
        blocks = [await first(box) for _ in range(6)]
        while box.ai_open_flag:
            await asyncio.sleep(0)  # the loop closes the last one
        return blocks

    with configured() as box:
        blocks = asyncio.run(follow(box)) if form == "await" else [next(box.AI_stream(0, 100)) for _ in range(6)]
        assert [(len(block), block.first_row) for block in blocks] == [(100, 0)] * 6
        assert rows_of(blocks) == counted(0, 100) * 6
        assert is_idle(box)


def test_settings_of_an_earlier_run_are_not_taken_for_those_of_now(form):
    with configured(rate=4000) as box:
        stale = box.AI_openStreaming(0)
        box.AI_closeStreaming(0)
        box.AI_setSamplingRate(0, 2000)
        box.data_pool_echo[pyzvr.OPEN_AI_STREAMING] = b"\0\0\0\0\0\0" + bytes(pyzvr.convertF32To4U8(stale[1])) + b"\0"
        assert [block.rate for block in taken(box, form, 100, 1)] == [2000]


def test_run_of_some_rows_ends_with_a_short_block(form):
    with configured(mode=1, samples=250) as box:
        blocks = taken(box, form, 100, None)
        assert [len(block) for block in blocks] == [100, 100, 50]
        assert rows_of(blocks) == counted(0, 250)
        assert is_idle(box)
        assert [len(block) for block in taken(box, form, 125, None)] == [125, 125]


def test_error_in_the_loop_and_context_managers_close(form):
    with configured() as box:
        box.AI_open(0)  # who opens the port closes it

        async def follow():
            async with box.AI_stream(0, 50) as stream:
                async for block in stream:
                    raise LookupError(len(block))

        with pytest.raises(LookupError, match="50"):
            if form == "await":
                asyncio.run(follow())
            else:
                with box.AI_stream(0, 50) as stream:
                    for block in stream:
                        raise LookupError(len(block))
        assert box.ai_open_flag
        box.AI_close(0)
        assert is_idle(box)
        stream = box.AI_stream(0, 10)
        assert len(next(stream)) == 10
        stream.close()
        stream.close()
        assert list(stream) == []
        assert is_idle(box)


def test_cancelled_wait_closes():
    async def follow(box, started):
        async for _ in box.AI_stream(0, 50_000):
            pass
        started.set()

    async def cancel(box):
        task = asyncio.create_task(follow(box, asyncio.Event()))
        while not box.AI_getBacklog(0):
            await asyncio.sleep(0)
        task.cancel()
        with pytest.raises(asyncio.CancelledError):
            await task
        assert not box.ai_open_flag

    with configured() as box:
        asyncio.run(cancel(box))
        assert is_idle(box)


def test_loop_runs_on_while_a_stream_is_awaited():
    async def follow(box):
        turns = 0

        async def count():
            nonlocal turns
            while True:
                turns += 1
                await asyncio.sleep(0)

        counting = asyncio.create_task(count())
        stream = box.AI_stream(0, 400)
        last = 0
        for _ in range(3):
            assert len(await anext(stream)) == 400
            assert turns > last
            last = turns
        await stream.aclose()
        counting.cancel()

    with configured() as box:
        asyncio.run(follow(box))
        assert is_idle(box)


def test_sixteen_streams_share_a_loop_with_requests():
    async def follow(box):
        rows = []
        async with box.AI_stream(0, 200) as stream:
            async for block in stream:
                rows += block
                await box._AI_getCounter_async(0)
                if len(rows) >= 1000:
                    return rows

    async def follow_all(boxes):
        return await asyncio.gather(*(follow(box) for box in boxes))

    with contextlib.ExitStack() as stack:
        boxes = [stack.enter_context(configured()) for _ in range(16)]
        assert asyncio.run(follow_all(boxes)) == [counted(0, 1000)] * 16


def test_end_of_the_connection_ends_the_stream_with_the_error(form):
    async def follow(box, blocks):
        async for block in box.AI_stream(0, 100):
            blocks.append(block)
            if len(blocks) == 2:
                box.disconnect(verbose=False)

    for _ in range(2):
        blocks = []
        with configured() as box, pytest.raises(pyzvr.NetworkConnectionLostError):
            if form == "await":
                asyncio.run(follow(box, blocks))
            else:
                for block in box.AI_stream(0, 100):
                    blocks.append(block)
                    if len(blocks) == 2:
                        box.close(verbose=False)
        rows = rows_of(blocks)
        assert rows == counted(0, len(rows))
        assert all(len(block) == 100 for block in blocks[:-1])


def test_stream_that_somebody_else_closes_ends(form):
    async def follow(box):
        return [block async for block in closing(box.AI_stream(0, 100))]

    async def closing(stream):
        async for block in stream:
            yield block
            await stream._box.AI_closeStreaming_async(0)

    with configured() as box:
        if form == "await":
            blocks = asyncio.run(follow(box))
        else:
            blocks = []
            for block in box.AI_stream(0, 100):
                blocks.append(block)
                box.AI_closeStreaming(0)
        assert rows_of(blocks) == counted(0, sum(map(len, blocks)))
        assert is_idle(box)


def test_dropped_rows_are_told(form):
    samples = 2_500_000
    with configured(mode=1, samples=samples, rate=20000, wave=("--wave", "*:count", "--fast")) as box:
        with warnings.catch_warnings(record=True) as caught:
            warnings.simplefilter("always")
            blocks = []

            def wait_for_drops():
                while len(blocks) == 1 and not box.AI_getDroppedRows(0):
                    box._AI_getCounter(0)

            async def follow():
                async for block in box.AI_stream(0, 100_000):
                    blocks.append(block)
                    wait_for_drops()

            if form == "await":
                asyncio.run(follow())
            else:
                for block in box.AI_stream(0, 100_000):
                    blocks.append(block)
                    wait_for_drops()
        position = 0
        for block in blocks:
            position += block.dropped_before
            assert block.first_row == position
            position += len(block)
            number = block.first_row + len(block) - 1
            assert block[-1] == counted(number, 1)[0]
        told = sum(block.dropped_before for block in blocks)
        assert 0 < told <= box.AI_getDroppedRows(0)
        assert position + box.AI_getDroppedRows(0) - told == samples
        assert any("AI queue overflow" in str(each.message) for each in caught)


def test_what_cannot_stream_is_refused_in_words(form):
    with configured(mode=0) as box:
        with pytest.raises(pyzvr.AIModeNotAvaliableError, match="AI_setMode"):
            taken(box, form, 10, 1)
        assert is_idle(box)
        for rows, error in ((0, ValueError), (1_000_001, ValueError), (1e3, TypeError), (None, TypeError)):
            with pytest.raises(error, match="rows"):
                box.AI_stream(0, rows)
        with pytest.raises(pyzvr.AIPortNotAvaliableError):
            box.AI_stream(7, 10)
    assert not hasattr(pyzvr.TarnCurrent, "AI_stream")
    with pyzvr.TarnAnalog() as box:
        stream = box.AI_stream(0, 10)
        del stream
        gc.collect()
