"""Leaving the interpreter with threads inside a call."""

import asyncio
import contextlib
import os
import socket
import threading
import time

from exit_scenarios import connected, keep, made, scenario, streaming

A_LIST = [[1, 2.5, "x"]] * 3


def read_into(box):
    import array

    box.AI_readStreamingInto(0, array.array("d", bytes(8 * 8 * 10)), 0.01)


def await_serial(box):
    asyncio.run(box.Sys_getSerialNumber_async())


def await_forever(box):
    asyncio.run(box._getReplyFromPool_async(5))


def await_read(box):
    asyncio.run(box.AI_readStreaming_async(0, 10, 0.01))


def put_on_full(box):
    import pyzvr

    fifo = pyzvr.Fifo(1)
    fifo.put(b"full")
    fifo.put(b"more", timeout=0.01)


def connect_in_vain(box):
    """To one whose queue of connections is full."""
    with socket.create_server(("127.0.0.1", 0), backlog=0) as listener:
        places = [socket.socket() for _ in range(4)]
        for place in places:
            place.setblocking(False)
            place.connect_ex(listener.getsockname())
        made("TarnDio").connect(*listener.getsockname(), verbose=False)


def own_client(box):
    import pyzvr

    client = pyzvr.TCPClient()
    client.connect(*OWN_ADDRESS)
    client.recvPacket(10)


class Slow:
    """Whoever drops it has its own code run, without end."""

    def __del__(self):
        while True:
            time.sleep(0.0005)


def drop_a_field(box):
    box.note = Slow()
    box.note = None


def drop_a_queue(box):
    import pyzvr

    pyzvr.Fifo(1).put(Slow())


OWN_ADDRESS = []
WAITS = {
    "_getReplyFromPool 1 ms": ("TarnDio", lambda box: box._getReplyFromPool(5, 0.001)),
    "_getReplyFromPool 1000 s": ("TarnDio", lambda box: box._getReplyFromPool(5, 1000)),
    "_getReplyFromPool_async": ("TarnDio", await_forever),
    "_getStreamingFromPool": ("TarnDio", lambda box: box._getStreamingFromPool(box.data_pool_strm[1], 3, 0.01)),
    "FIFO get 1 ms": ("TarnDio", lambda box: box.data_pool_strm[1].get(timeout=0.001)),
    "FIFO get": ("TarnDio", lambda box: box.data_pool_strm[1].get()),
    "FIFO get without waiting": ("TarnDio", lambda box: box.data_pool_strm[1].get_nowait()),
    "FIFO put": ("TarnDio", put_on_full),
    "RowFifo get 1 ms": ("TarnAnalog", lambda box: box.ai_signal_queue_list[0].get(timeout=0.001)),
    "RowFifo get": ("TarnAnalog", lambda box: box.ai_signal_queue_list[0].get()),
    "ItemFifo get 1 ms": ("SableCan", lambda box: box.can_frame_queue.get(timeout=0.001)),
    "ItemFifo get": ("SableCan", lambda box: box.can_frame_queue.get()),
    "operation": ("TarnDio", lambda box: box.Sys_getSerialNumber(timeout=1)),
    "operation_async": ("TarnDio", await_serial),
    "unanswered operation": ("TarnDio", lambda box: box._echoPacketWithRetry(200, [], 0.05)),
    "broadcast": ("DeviceFinder", lambda box: box._broadcastPacket(252, [0])),
    "AI_readStreaming": ("TarnAnalog", lambda box: box.AI_readStreaming(0, 10, 0.01)),
    "AI_readStreaming_async": ("TarnAnalog", await_read),
    "AI_readStreamingBlock": ("TarnAnalog", lambda box: box.AI_readStreamingBlock(0, 10, 0.01)),
    "AI_readStreamingBlock 1000 s": ("TarnAnalog", lambda box: box.AI_readStreamingBlock(0, 10**6, 1000)),
    "AI_readStreamingInto": ("TarnAnalog", read_into),
    "UART_read": ("SableDio", lambda box: box.UART_read(1, 5, 0.001)),
    "UART_read 1000 s": ("SableDio", lambda box: box.UART_read(1, 5, 1000)),
    "CAN_read": ("SableCan", lambda box: box.CAN_read(1, 5, 0.001)),
    "Logger_write2DList": ("TarnDio", lambda box: (box.Logger_write2DList(A_LIST), time.sleep(0.001))),
    "Logger_flush": ("TarnDio", lambda box: (box.Logger_write2DList(A_LIST), box.Logger_flush())),
    "join 1 ms": ("TarnDio", lambda box: box.recv_cmd_thread.join(0.001)),
    "join": ("TarnDio", lambda box: box.recv_cmd_thread.join()),
    "gate 1 ms": ("HeronAnalog", lambda box: box.recv_data_lock.acquire(timeout=0.001)),
    "gate": ("HeronAnalog", lambda box: box.recv_data_lock.acquire()),
    "connect": ("TarnDio", connect_in_vain),
    "a client's read": ("TarnDio", own_client),
    "a client's parser": ("TarnDio", lambda box: (box.client_cmd.stream, box.client_cmd._splitPacket())),
    "steps of frames": ("TarnDio", lambda box: box._putToDataPool(5, b"\1\2")),
    "making and dropping": ("TarnDio", lambda box: made("TarnDio")),
    "refused arguments": ("TarnDio", lambda box: box.DO_writePins(99, 1, 1)),
    "refused rate": ("TarnAnalog", lambda box: box.AI_setSamplingRate(0, 1e9)),
    "Logger_openFile": ("TarnDio", lambda box: box.Logger_openFile(os.devnull, verbose=False)),
    "Logger_openFile in vain": ("TarnDio", lambda box: box.Logger_openFile("/none/such", verbose=False)),
    "a field's own code": ("TarnDio", drop_a_field),
    "a queue's own code": ("TarnDio", drop_a_queue),
}


def in_threads(wait, box, number=2, daemon=True):
    """Returns when threads are in the wait, again and again."""
    begun = threading.Semaphore(0)

    def again():
        while True:
            begun.release()
            with contextlib.suppress(Exception):
                wait(box)
            if not daemon:
                return

    for _ in range(number):
        threading.Thread(target=again, daemon=daemon).start()
    for _ in range(number):
        begun.acquire()
    time.sleep(0.02)  # nothing tells from outside that a thread is inside by now


for waits, (models, calls) in WAITS.items():
    for states in ("connected", "closed"):
        @scenario(f"{waits}, {states}", models if not models.startswith(("Sable", "DeviceFinder")) else None)
        def daemon_threads(address, file, wait=waits, model=models, call=calls, state=states):
            OWN_ADDRESS[:] = address
            box = keep(connected(model, address))
            if model == "TarnAnalog":
                streaming(box)
            if "Logger" in wait:
                box.Logger_openFile(file, verbose=False)
            in_threads(call, box)
            if state == "closed":
                box.close()
                time.sleep(0.02)  # and have met the closed object


for waits, calls in {
        "a wait for a reply": lambda box: box._getReplyFromPool(5, 0.3),
        "a FIFO": lambda box: box.data_pool_strm[1].get(timeout=0.3),
        "an operation": lambda box: box.Sys_getSerialNumber(), "a loop": await_serial,
}.items():
    @scenario(f"{waits} in a thread that is waited for", "TarnDio")
    def other_threads(address, file, call=calls):
        in_threads(call, keep(connected("TarnDio", address)), daemon=False)

    @scenario(f"{waits} in an executor", "TarnDio")
    def executor(address, file, call=calls):
        import concurrent.futures

        keep(concurrent.futures.ThreadPoolExecutor(2)).submit(call, keep(connected("TarnDio", address)))
