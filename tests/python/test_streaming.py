"""Acquisition from end to end: simulated devices, their real links, and every way to take the rows."""

import array
import asyncio
import contextlib
import subprocess
import sys
import threading
import warnings
from pathlib import Path

import pytest
from forms import blocking
from peer import Peer
from simulators import connected

import pyzvr

SIXTEEN, TWENTY_FOUR = 10 / 32768, 1.3904889343373708e-6


def counted(first, count, ratio=SIXTEEN, selects=1, channels=8):
    """The rows of the simulator's counting signal."""
    def value(k, c):
        code = k * 8 + c
        return round((code + 2**15) % 2**16 * ratio - 2**15 * ratio, 4) if ratio == SIXTEEN else code * ratio

    return [[value(k, c) for c in range(channels)] * selects for k in range(first, first + count)]


def begin(call, box, port=0, rate=4000, mode=2, samples=0, selects=None):
    """The usual order of calls up to a stream that runs."""
    assert call(box, "AI_open", port) == 0
    if selects:
        assert call(box, "AI_enableCS", port, selects) == 0
    steps = [
        call(box, "AI_setMode", port, mode),
        call(box, "AI_setSamplingRate", port, rate),
        call(box, "AI_setNumSamples", port, samples)
    ]
    device_port = port - isinstance(box, pyzvr.Lattice)  # this one operation does not count from 1
    assert steps == [0, 0, 0]
    assert call(box, "AI_openStreaming", device_port) == [samples, rate, mode]
    assert call(box, "AI_startStreaming", port) == 0


def end(call, box, port=0):
    assert call(box, "AI_closeStreaming", port) == 0
    assert call(box, "AI_close", port) == 0


@pytest.mark.parametrize("model, port, rate, selects",
                         [("TarnAnalog", 0, 20000, None), ("TarnAnalog24", 0, 10000, None),
                          ("HeronAnalog", 0, 10000, None), ("HeronFast", 0, 20000, None),
                          ("HeronMixed", 0, 10000, None), ("Lattice", 1, 12000, [1]), ("Lattice", 4, 6000, [0, 2]),
                          ("LatticeLite", 2, 4000, [0, 1, 2]), ])
def test_every_row_arrives_in_order(call, model, port, rate, selects):
    ratio, selected = TWENTY_FOUR if model.endswith("24") else SIXTEEN, len(selects or [0])
    with connected(model, "--wave", "*:count") as box:
        begin(call, box, port, rate, selects=selects)
        assert call(box, "AI_readStreaming", port, 100, 5) == counted(0, 100, ratio, selected)
        block = call(box, "AI_readStreamingBlock", port, 1500, 5)
        assert block.shape == (1500, 8 * selected)
        assert block.tolist() == counted(100, 1500, ratio, selected)
        room = array.array("d", bytes(8 * 8 * selected * 300))
        assert call(box, "AI_readStreamingInto", port, room, 5) == 300
        assert room.tolist() == [value for row in counted(1600, 300, ratio, selected) for value in row]
        assert call(box, "AI_closeStreaming", port) == 0
        while any(queue.qsize() for queue in box.ai_data_queue_list):
            pass  # frames that wait at a shut gate would come first in the next run
        assert call(box, "AI_close", port) == 0
        assert box.AI_getDroppedRows(port) == 0 == call(box, "_AI_getCounter", port)[4]
        while call(box, "AI_readStreaming", port, 10000, 0.05):
            pass  # what had been decoded stays readable
        begin(call, box, port, rate, selects=selects)
        assert call(box, "AI_readStreaming", port, 1, 5) == counted(0, 1, ratio, selected)


def test_run_of_a_number_of_samples_ends_by_itself(call):
    with connected("TarnAnalog", "--wave", "*:count") as box:
        begin(call, box, mode=1, samples=777, rate=20000)
        assert call(box, "AI_readStreaming", 0, 777, 5) == counted(0, 777)
        assert call(box, "AI_readStreaming", 0, 1, 0.05) == []
        assert call(box, "_AI_getCounter", 0)[0] == 777
        end(call, box)
        assert call(box, "AI_setMode", 0, 0) == 0
        assert len(call(box, "AI_readOnDemand", 0)) == 8


def test_channels_and_chip_selects_of_several_ports_at_once(call):
    with connected("Lattice", "--wave", "*:count") as box:
        for port, selects in ((1, [0]), (2, [1, 2]), (4, [0, 1, 2])):
            begin(call, box, port, 4000, selects=selects)
        for _ in range(3):
            for port, selected in ((1, 1), (2, 2), (4, 3)):
                assert call(box, "AI_readStreamingBlock", port, 200, 5).shape == (200, 8 * selected)
        for port in (1, 2, 4):
            end(call, box, port)


def test_what_the_device_refuses_comes_back_as_a_code_and_starts_nothing(call):
    with connected("TarnAnalog") as box:
        assert call(box, "AI_open", 0) == 0
        assert call(box, "AI_setSamplingRate", 0, 0) == -7017
        assert call(box, "AI_startStreaming", 0) == 0
        assert call(box, "AI_readStreaming", 0, 1, 0.05) == []


def test_outputs_are_seen_by_the_inputs_that_they_lead_to(call):
    for model, port in (("HeronMixed", 0), ("Lattice", 1)):
        with connected(model) as box:
            assert call(box, "AO_open", port) == call(box, "AI_open", port) == 0
            assert call(box, "AO_writeAllChannels", port, [i - 3.5 for i in range(8)]) == 0
            seen = call(box, "AI_readOnDemand", port)
            assert seen == pytest.approx([i - 3.5 for i in range(8)], abs=0.0003)
            begin(call, box, port, 4000)
            assert call(box, "AI_readStreaming", port, 5, 5) == [seen] * 5


@pytest.mark.parametrize("options", [("--duplicate", "1"), ("--flood", "2000"), ("--split", "700"),
                                     ("--coalesce", "7")])
def test_bad_links_cannot_disturb_another_device(options):
    with connected("TarnAnalog", "--wave", "*:count") as good, connected(
        "TarnAnalog", "--wave", "*:count", *options
    ) as bad:
        for box in (good, bad):
            box.AI_open(0)
            box._sendPacketWithoutReply(pyzvr.OPEN_AI_STREAMING, [0])
            box._sendPacketWithoutReply(pyzvr.SET_AI_MODE, [0, 2])
            box.AI_startStreaming(0)
        assert good.AI_readStreaming(0, 2000, 10) == counted(0, 2000)
        rows = bad.AI_readStreaming(0, 200, 10)
        assert len(rows) == 200
        assert ([row for i, row in enumerate(rows) if row not in rows[:i]] == rows) == (options[0] != "--duplicate")


def test_device_that_stops_within_a_row_ends_its_own_reader_only(monkeypatch):
    errors = []
    monkeypatch.setattr(threading, "excepthook", lambda args: errors.append((args.exc_type, args.thread.name)))
    peer = Peer()
    with connected("TarnAnalog", "--wave", "*:count") as good, pyzvr.TarnAnalog() as broken:
        broken.connect("127.0.0.1", peer.port, verbose=False)
        broken.AI_open(0)
        connection = peer.connection()
        whole = b"".join(code.to_bytes(2, "big") for code in range(16))
        for data in (b"\0\0" + whole, b"\0\0" + whole[:-3], b"\0\0" + whole):
            connection.sendall(bytes(pyzvr.Packet_based()._preparePacket(pyzvr.START_AI_STREAMING, list(data))))
        broken.ai_stream_thread.join(5)
        assert not broken.ai_stream_thread.is_alive()
        assert errors == [(ValueError, "_AIStreamThread")]
        assert broken.AI_readStreaming(0, 10, 0.01) == counted(0, 2)
        begin(blocking, good)
        assert good.AI_readStreaming(0, 500, 5) == counted(0, 500)
        connection.close()
    peer.close()


def test_reader_that_comes_late_loses_the_newest_rows_and_hears_of_it():
    with connected("TarnAnalog", "--wave", "*:count", "--fast") as box, warnings.catch_warnings(record=True) as caught:
        warnings.simplefilter("always")
        begin(blocking, box, mode=1, samples=1_000_600, rate=20000)
        while box.AI_getDroppedRows(0) < 600:
            box._AI_getCounter(0)
        assert box.AI_getBacklog(0) == 1_000_000
        assert "AI queue overflow" in str(caught[0].message)
        assert box.AI_readStreamingBlock(0, 1_000_000).shape == (1_000_000, 8)


def test_sixteen_streams_in_one_loop():
    async def follow(box, count):
        for step, *arguments in (("open", 0), ("setMode", 0, 2), ("setSamplingRate", 0, 5000), ("openStreaming", 0),
                                 ("startStreaming", 0)):
            await getattr(box, f"AI_{step}_async")(*arguments)
        rows = []
        while len(rows) < count:
            rows += (await box.AI_readStreamingBlock_async(0, count - len(rows), 0.05)).tolist()
        assert await box.AI_closeStreaming_async(0) == 0
        return rows

    async def follow_all(boxes):
        return await asyncio.gather(*(follow(box, 4000) for box in boxes))

    with contextlib.ExitStack() as stack:
        boxes = [stack.enter_context(connected("TarnAnalog", "--wave", "*:count")) for _ in range(16)]
        assert asyncio.run(follow_all(boxes)) == [counted(0, 4000)] * 16


def test_soak_of_some_seconds_loses_nothing():
    soak = Path(__file__).resolve().parents[2] / "bench" / "soak.py"
    report = subprocess.run([sys.executable, str(soak), "20"], capture_output=True, text=True, timeout=120)
    assert report.returncode == 0, report.stdout + report.stderr
