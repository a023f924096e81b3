"""Objects that bring pools and clients of their own."""

import asyncio
import collections
import gc
import queue
import threading
import weakref
from unittest import mock

import pytest
from fake_client import FakeClient
from forms import awaited
from queue_support import ROW, SAMPLES, until
from replacement import PATIENCE, REPLIES, REQUEST, SERIAL, bytes_pass, frames_pass, on_peers, rows_pass, serial

import pyzvr


class Answering:
    """A client that puts the reply where its object keeps such."""

    def __init__(self, box, replies=REPLIES):
        self.box, self.replies, self.sent = box, replies, []

    def sendPacket(self, int_list):
        self.sent.append(bytes(int_list))
        if int_list[3] in self.replies:
            self.box.data_pool_echo[int_list[3]] = self.replies[int_list[3]]


class Asked(dict):
    """A map that remembers how it was asked."""

    def __init__(self):
        self.asked = []

    def __contains__(self, key):
        self.asked.append(key)
        return super().__contains__(key)


@pytest.mark.parametrize("make", [dict, Asked, collections.OrderedDict])
def test_an_operation_needs_pools_and_a_client_and_no_device(call, make):
    class Bare(pyzvr.SystemModule, pyzvr.SystemModule_async):
        def __init__(self):
            self.data_pool_echo, self.client_cmd = make(), Answering(self)

    box = Bare()
    assert serial(box, call) == SERIAL
    assert box.client_cmd.sent == [bytes(REQUEST)]
    assert box.data_pool_echo == {}
    if make is Asked:
        assert pyzvr.GET_SERIAL_NUMBER in box.data_pool_echo.asked
    box.client_cmd.replies = {}
    late = threading.Timer(0.05, box.data_pool_echo.__setitem__, (pyzvr.GET_SERIAL_NUMBER, b"LATE5678"))
    late.start()
    assert serial(box, call) == "LATE5678"
    late.join()
    box.data_pool_echo[7] = b"seven"
    assert box._getReplyFromPool(7, 1) == b"seven"
    box.data_pool_echo[7] = b"again"
    assert asyncio.run(box._getReplyFromPool_async(7)) == b"again"
    with pytest.raises(pyzvr.ReceivePacketTimeoutError):
        box._getReplyFromPool(7, 0.01)
    with pytest.raises(asyncio.TimeoutError):
        asyncio.run(asyncio.wait_for(box._getReplyFromPool_async(7), 0.02))
    del box.data_pool_echo
    with pytest.raises(AttributeError):
        box._getReplyFromPool(7, 0.01)


def test_a_bus_needs_no_device():
    class Bare(pyzvr.SystemModule, pyzvr.CANModule):
        def __init__(self):
            self.data_pool_echo, self.data_pool_strm, self.client_cmd = {}, collections.defaultdict(
                queue.Queue), Answering(self)
            pyzvr.CANModule.__init__(self, {1: [(0, 0)]})

    box = Bare()
    assert box.can_data_queue is box.data_pool_strm[pyzvr.START_CAN]
    assert isinstance(box.can_data_queue, queue.Queue)
    assert box.CAN_open(1) == 0
    frames_pass(box)
    box._CAN_free()
    box.can_stream_thread.join(PATIENCE)
    assert not box.can_stream_thread.is_alive()


def test_a_serial_port_needs_no_device():
    class Bare(pyzvr.SystemModule, pyzvr.UARTModule):
        def __init__(self):
            self.data_pool_echo, self.data_pool_strm, self.client_cmd = {}, collections.defaultdict(
                queue.Queue), Answering(self)
            pyzvr.UARTModule.__init__(self, {1: [(0, 0)], 2: [(0, 1)]})

    box = Bare()
    assert box.uart_p2_data_queue is box.data_pool_strm[(pyzvr.START_UART_READING, 2)]
    assert box.UART_open(1) == 0
    bytes_pass(box)
    box._UART_free()
    for thread in (box.uart_p1_stream_thread, box.uart_p2_stream_thread):
        thread.join(PATIENCE)
        assert not thread.is_alive()


def test_an_analog_input_needs_no_device():
    class Bare(pyzvr.AIModule, pyzvr.AIModule_async):
        def __init__(self):
            self.data_pool_echo, self.data_pool_strm, self.client_cmd = {}, collections.defaultdict(
                queue.Queue), Answering(self)
            pyzvr.AIModule.__init__(self, {0: [0]}, 1000, 10 / 32768, 8)

    box = Bare()
    box.ai_lock.release()
    rows_pass(box)
    box.ai_data_queue_list[0].put(SAMPLES * 3)
    assert box.AI_readStreaming(0, 2, PATIENCE) == [ROW] * 2
    assert awaited(box, "AI_readStreaming", 0, 1, PATIENCE) == [ROW]
    box._AI_free()
    box.ai_stream_thread.join(PATIENCE)
    assert not box.ai_stream_thread.is_alive()


def test_a_broadcast_needs_no_device():
    class Bare(pyzvr.BroadcastModule_async):
        def __init__(self):
            self.data_pool_bcst, self.client_udp, self.sent = collections.defaultdict(set), self, []

        def sendBcstPacket(self, packet):
            self.sent.append(bytes(packet))
            self.data_pool_bcst[252].add(b"record")

    async def at_once(seconds):
        slept.append(seconds)

    box, slept = Bare(), []
    box.data_pool_bcst[252].add(b"old")
    with mock.patch("asyncio.sleep", at_once):
        assert asyncio.run(box._broadcastPacket_async(252, [0])) is box.data_pool_bcst[252]
    assert box.data_pool_bcst == {252: {b"record"}}
    assert len(box.sent) == pyzvr.NUM_BCST_RETRIES
    assert slept == [pyzvr.PACKET_TIMEOUT]


def test_a_device_takes_pools_of_the_host_s_kind(call):
    with on_peers(pyzvr.TarnDio) as box:
        own = box.data_pool_echo
        for pool in ({}, Asked(), own, {}):
            box.data_pool_echo = pool
            for _ in range(3):
                assert box.data_pool_echo is pool
                assert serial(box, call) == SERIAL
        streams, sets = collections.defaultdict(queue.Queue), collections.defaultdict(set)
        with mock.patch.object(box, "data_pool_strm", streams), mock.patch.object(box, "data_pool_bcst", sets):
            connection = box.link.peers[0].connection()
            for command in (pyzvr.AHRS_START, pyzvr.GET_DEVICE_INFO):
                connection.sendall(bytes(box._preparePacket(command, b"\1data")))
            assert streams[pyzvr.AHRS_START].get(timeout=PATIENCE) == b"data"
            until(lambda: sets == {pyzvr.GET_DEVICE_INFO: {b"data"}})
        connection.sendall(bytes(box._preparePacket(pyzvr.AHRS_START, b"\1more")))
        assert box.data_pool_strm[pyzvr.AHRS_START].get(timeout=PATIENCE) == b"more"
        assert streams[pyzvr.AHRS_START].empty()


@pytest.mark.parametrize("end", ["closed", "dropped"])
@pytest.mark.parametrize("use", ["read", "unread"])
def test_a_client_that_refers_back_goes_with_its_object(use, end, call):
    class Client(FakeClient):
        read = threading.Event()

        def recvAndSplitPacket(self, _):
            self.read.set()
            return []

    for _ in range(20):
        box = pyzvr.TarnAnalog()
        Client.read.clear()
        box.client_cmd = Client(box)
        call(box, "AI_open", 0)
        box.recv_cmd_lock.release()
        assert use == "unread" or Client.read.wait(PATIENCE)
        gone, threads = weakref.ref(box), [box.recv_cmd_thread, box.ai_stream_thread]
        if end == "closed":
            box.close(verbose=False)
            for thread in threads:
                thread.join(PATIENCE)
        del box
        gc.collect()
        for thread in threads:
            thread.join(PATIENCE)
            assert not thread.is_alive()
        assert gone() is None


def test_a_client_that_only_a_property_gives_is_read():
    read = threading.Semaphore(0)

    class Client:
        def recvAndSplitPacket(self, _):
            read.release()
            return []

    class Box(pyzvr.TarnDio):
        client_cmd = property(lambda _: Client(), lambda *_: None)

    with Box() as box:
        box.recv_cmd_lock.release()
        assert all(read.acquire(timeout=PATIENCE) for _ in range(3))


def test_a_client_replaced_behind_the_setter_is_read():
    read = queue.Queue()

    class Client:
        def recvAndSplitPacket(self, _):
            read.put(self)
            return []

    with pyzvr.TarnDio() as box:
        box.client_cmd = Client()
        box.recv_cmd_lock.release()
        read.get(timeout=PATIENCE)
        other = box.__dict__["client_cmd"] = Client()
        while read.get(timeout=PATIENCE) is not other:
            pass
