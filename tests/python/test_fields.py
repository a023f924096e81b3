"""Fields of products and devices are plain: they can be read, set, deleted and patched."""

import contextlib
import json
import queue
import threading
from unittest import mock

import pytest
from own_process import run_apart
from replacement import PATIENCE, SERIAL, factory_of, on_fake_client, on_opened, on_peers, rows_pass, serial
from queue_support import SAMPLES

import pyzvr

FIELD_MODELS = [
    "Device", "TarnDio", "HeronMixed", "SableCan", "SableMixed", "Drone", "Lattice", "Pawl", "DeviceFinder",
    "TarnAnalog24", "DataLogger"
]
OWN = {
    "killed", "data_pool_echo", "data_pool_strm", "data_pool_bcst", "ai_num_channels", "ai_ratio", "ai_killed",
    "uart_killed", "can_killed"
}


def fields_of(box):
    named = {name for name in OWN if hasattr(box, name)}
    return sorted(named | {name for name in vars(box) if not name.startswith("__") and name != "_runtime"})


def wrongs_of(model):
    """What is wrong with the fields of a model; in a process of its own, since threads read them."""
    wrongs = []

    def check(name, what, right):
        if not right:
            wrongs.append(f"{name}: {what}")

    stranger = object()
    box = getattr(pyzvr, model)()
    for name in fields_of(box):
        before = getattr(box, name)
        for value in (before, True, False, None, 7, stranger, {}, queue.Queue(), threading.Lock()):
            if name == "killed" and value is not False:
                continue  # true by itself or by any other value it ends the threads: below
            try:
                with mock.patch.object(box, name, value):
                    check(name, f"patched with {value!r:.30}",
                          getattr(box, name) is value or getattr(box, name) == value)
                check(name, f"restored after {value!r:.30}",
                      getattr(box, name) is before or getattr(box, name) == before)
                setattr(box, name, value)
                check(name, f"set to {value!r:.30}", getattr(box, name) is value or getattr(box, name) == value)
                setattr(box, name, before)
            except Exception as error:
                check(name, f"{value!r:.30} raises {error!r}", False)
    for name in [name for name in fields_of(box) if name != "killed"] + ["killed"]:
        try:
            before = getattr(box, name)
            delattr(box, name)
            try:
                getattr(box, name)
                check(name, "is still there after del", name in ("killed", "ai_killed"))  # a class may have one too
            except AttributeError:
                pass
            setattr(box, name, before)
            check(name, "set again after del", getattr(box, name) is before or getattr(box, name) == before)
        except Exception as error:
            check(name, f"del raises {error!r}", False)
    for name in fields_of(box):  # and nothing of it may crash what comes then
        with contextlib.suppress(Exception):
            delattr(box, name)
    for action in ("Sys_getSerialNumber", "AI_readStreaming", "UART_read", "CAN_read", "connect", "_AI_free",
                   "_CAN_free", "_UART_free", "disconnect", "close"):
        with contextlib.suppress(Exception):
            getattr(box, action)(*{"AI_readStreaming": (0, 1), "UART_read": (1, 1), "CAN_read": (1, 1)}.get(action, ()))
    return wrongs


@pytest.mark.parametrize("model", FIELD_MODELS)
def test_fields_are_plain(model):
    code = f"import sys, json, warnings; warnings.simplefilter('ignore'); import test_fields as t; wrongs = t.wrongs_of({model!r}); print(json.dumps(wrongs))"
    run = run_apart(code)
    assert run.returncode == 0, run.stderr
    assert json.loads(run.stdout.splitlines()[-1]) == []


def test_killed_can_be_patched_and_the_threads_see_it():
    with on_peers(pyzvr.TarnDio) as box:
        assert serial(box) == SERIAL
        with mock.patch.object(box, "killed", False):
            assert box.killed is False
            assert serial(box) == SERIAL
        assert box.killed is False
        assert serial(box) == SERIAL
        with mock.patch.object(box, "killed", True):
            assert box.killed is True
            box.close()  # does nothing to an object that is closed
            assert box.client_cmd is not None
        assert box.killed is False
    assert box.killed is True


@pytest.mark.parametrize("field, threads", [("uart_killed", ("uart_p1_stream_thread", "uart_p2_stream_thread")),
                                            ("can_killed", ("can_stream_thread",))])
def test_decoder_threads_end_when_their_flag_is_set_by_hand(field, threads):
    with on_opened(factory_of({"uart_killed": "SableDio", "can_killed": "SableCan"}[field])) as box:
        setattr(box, field, True)
        for name in ("uart_p1_data_queue", "uart_p2_data_queue", "can_data_queue"):
            if hasattr(box, name):
                getattr(box, name).put(None)
        for name in threads:
            getattr(box, name).join(PATIENCE)
            assert not getattr(box, name).is_alive()


def test_channels_and_ratio_of_a_stream_are_those_of_now():
    with on_opened(factory_of("TarnAnalog")) as box:
        rows_pass(box)
        with mock.patch.object(box, "ai_num_channels", 2), mock.patch.object(box, "ai_ratio", 2.0):
            box.ai_data_queue_list[0].put(SAMPLES)
            assert [box.ai_signal_queue_list[0].get(timeout=PATIENCE) for _ in range(4)] == [
                [0.0, 2.0],
                [-2.0, 65534.0],
                [-65536.0, 0.0],
                [0.0, 0.0],
            ]
        rows_pass(box)


def test_a_second_constructor_sets_the_plain_fields():
    with on_fake_client(pyzvr.TarnAnalog) as box:
        queues, threads = box.ai_signal_queue_list, box.ai_stream_thread
        box.ai_max_rate = box.ai_dict = box.ai_num_channels = box.ai_ratio = None
        pyzvr.AIModule.__init__(box, {0: [1]}, 5, 0.5, 3)
        assert (box.ai_dict, box.ai_max_rate, box.ai_ratio, box.ai_num_channels) == ({0: [1]}, 5, 0.5, 3)
        assert box.ai_signal_queue_list is queues
        assert box.ai_stream_thread is threads
