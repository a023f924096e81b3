"""Ways to leave the interpreter, each for a process of its own that ends by coming to its end.

    python3 exit_lab.py SCENARIO FILE ADDRESS...   says what it saw, then "done" and the time

What is slow to end otherwise says "took" and the seconds. The library is imported where a scenario needs it, not before.
"""

import asyncio
import atexit
import contextlib
import copy
import faulthandler
import gc
import io
import multiprocessing
import os
import queue
import signal
import socket
import sys
import threading
import time
import warnings
from typing import NamedTuple

SERIAL = "SIM00001"
OUT = sys.stdout
if __name__.endswith("main__"):
    sys.stdout = io.StringIO()  # what the library prints is no matter here
KEPT = []  # what lives until the interpreter takes the module apart
MAIN = os.getpid()


class Scenario(NamedTuple):
    body: object
    model: str | None  # of the simulated device
    says: str  # as a regular expression


SCENARIOS = {}


def scenario(name, model=None, says=""):
    def register(body):
        assert name not in SCENARIOS
        SCENARIOS[name] = Scenario(body, model, says)
        return body

    return register


def say(*words):
    print(*words, file=OUT, flush=True)


def keep(thing):
    KEPT.append(thing)
    return thing


def made(model):
    import pyzvr

    with warnings.catch_warnings():
        warnings.simplefilter("ignore")  # libusb is not where a user would have it
        return getattr(pyzvr, model)()


def connected(model, address):
    """A connected product; what has no link here stays as it was made."""
    box = made(model)
    if address:
        box.connect(*address, verbose=False)
    return box


def streaming(box, rate=20000):
    box.AI_open(0)
    box.AI_setMode(0, 2)
    box.AI_setSamplingRate(0, rate)
    box.AI_openStreaming(0)
    box.AI_startStreaming(0)
    while not box.AI_readStreaming(0, 1, 1):
        pass
    return box


def attempt(action):
    """The action's result in words, or the kind of its failure."""
    try:
        return str(action())
    except Exception as failure:
        return type(failure).__name__


# Objects that nobody closes, in every state.


@scenario("imported")
def imported(address, file):
    import pyzvr

    keep(pyzvr)


for states in ("made", "connected", "requested", "awaited", "disconnected", "closed", "cyclic", "local"):
    @scenario(f"network box {states}", "TarnDio")
    def unclosed_box(address, file, state=states):
        box = connected("TarnDio", address if state != "made" else ())
        if state != "local":
            keep(box)
        if state == "requested":
            assert box.Sys_getSerialNumber() == SERIAL
        if state == "awaited":
            assert asyncio.run(box.Sys_getSerialNumber_async()) == SERIAL
        if state == "disconnected":
            box.disconnect(verbose=False)
        if state == "closed":
            box.close()
        if state == "cyclic":
            box.cycle = box


@scenario("many network boxes", "TarnDio")
def many_boxes(address, file):
    for number in range(20):
        keep(connected("TarnDio", address if number % 2 else ()))


for kinds in ("HeronMixed", "Drone", "Lattice"):
    @scenario(f"{kinds} connected", kinds)
    def unclosed_product(address, file, kind=kinds):
        box = keep(connected(kind, address))
        assert (box.Drone_getSerialNumber if kind == "Drone" else box.Sys_getSerialNumber)() == SERIAL


for kinds in ("SableCan", "SableMixed", "DeviceFinder"):
    @scenario(f"{kinds} not connected")
    def unconnected_product(address, file, kind=kinds):
        keep(made(kind))


@scenario("finder that listens")
def listening_finder(address, file):
    import pyzvr

    finder = keep(made("DeviceFinder"))
    with contextlib.suppress(pyzvr.NetworkConnectionError):  # another one on this host may listen
        finder.connect(verbose=False)


for parts in ("Gate", "Fifo", "ItemFifo", "RowFifo", "TCPClient", "UARTClient", "UDPClient"):
    @scenario(f"{parts} alone")
    def alone(address, file, part=parts):
        import pyzvr

        with contextlib.suppress(TypeError):  # it may want to be made by an object
            keep(getattr(pyzvr, part)())


@scenario("logger with an open file")
def logger(address, file):
    import pyzvr

    log = keep(pyzvr.DataLogger())
    log.Logger_openFile(file, verbose=False)
    for number in range(2000):
        log.Logger_writeList([number, number / 8])


@scenario("logger that waits without a file")
def waiting_logger(address, file):
    log = keep(made("DataLogger"))
    log.save_data_lock.release()
    time.sleep(0.05)  # nothing tells that its thread waits


for models in ("TarnAnalog", "HeronAnalog", "TarnAnalog24"):
    @scenario(f"{models} streams", models)
    def unread_stream(address, file, model=models):
        streaming(keep(connected(model, address)), 4000)


STEPS = {"_putToDataPool": ("cmd", "data"), "_checkCommandType": ("cmd", "data"), "_recvDataThread": ()}

for steps in STEPS:
    @scenario(f"stream into {steps} in Python", "HeronAnalog")
    def stream_into_python(address, file, step=steps):
        import pyzvr

        def replaced(self, *arguments):
            return getattr(super(Replaced, self), step)(*arguments)

        Replaced = type("HeronAnalog", (pyzvr.HeronAnalog,), {step: replaced})
        box = keep(Replaced())
        box.connect(*address, verbose=False)
        streaming(box, 4000)


@scenario("stream that overflows", "TarnAnalog")
def overflowing(address, file):
    import pyzvr

    warnings.simplefilter("ignore")
    box = keep(connected("TarnAnalog", address))
    box.ai_signal_queue_list[0] = pyzvr.RowFifo(5)
    box.AI_open(0)
    box.AI_setMode(0, 2)
    box.AI_setSamplingRate(0, 20000)
    box.AI_startStreaming(0)
    time.sleep(0.05)  # while it warns and warns


# Threads that are inside a call at the end.

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


# Clients in Python.


def spin(peer):
    while True:
        pass


def nap(peer):
    time.sleep(0.005)
    return []


def sleep_long(peer):
    time.sleep(1000)


def from_socket(peer):
    return peer.recv(100)


def from_queue(peer):
    queue.Queue().get()


def refuse(peer):
    raise OSError("nothing to read")


READS = (spin, nap, sleep_long, from_socket, from_queue, refuse)
CLIENTS = ("plain", "recvAndSplitPacket of TCPClient", "recvPacket of TCPClient")

for kinds in CLIENTS:
    for reads in READS if kinds == "plain" else (spin, sleep_long, from_socket):
        for states in ("connected", "closed"):
            @scenario(f"client in Python: {kinds} by {reads.__name__}, {states}")
            def python_client(address, file, kind=kinds, read=reads, state=states):
                import pyzvr

                here, there = socket.socketpair()
                keep(there)
                reading = threading.Event()

                def receive(self, length):
                    reading.set()
                    return read(here)

                methods = {
                    "connect": lambda self, *address: True, "disconnect": lambda self: None,
                    "sendPacket": lambda self, data: None,
                    "recvPacket" if kind.startswith("recvPacket") else "recvAndSplitPacket": receive
                }
                box = keep(made("TarnDio"))
                box.client_cmd = type("Client", () if kind == "plain" else (pyzvr.TCPClient,), methods)()
                box.connect("anywhere", 7, verbose=False)
                assert reading.wait(10)
                if state == "closed":
                    box.close()


# Event loops.


def loop_that_is_quiet():
    loop = asyncio.new_event_loop()
    loop.set_exception_handler(lambda loop, context: None)  # asyncio itself has a word on dropped tasks
    return loop


@scenario("asyncio.run with pending tasks", "TarnDio")
def pending_tasks(address, file):
    box = keep(connected("TarnDio", address))

    async def main():
        for command in range(50, 55):
            keep(asyncio.create_task(box._getReplyFromPool_async(command)))
        keep(asyncio.create_task(box._echoPacketWithRetry_async(200, [])))
        await asyncio.sleep(0.02)

    asyncio.run(main())


@scenario("sys.exit within asyncio.run", "TarnDio")
def exit_within_a_loop(address, file):
    box = keep(connected("TarnDio", address))

    async def main():
        keep(asyncio.create_task(box._getReplyFromPool_async(5)))
        await box.Sys_getSerialNumber_async()
        sys.exit(0)

    asyncio.run(main())


@scenario("sys.exit in a callback of the loop", "TarnDio")
def exit_in_a_callback(address, file):
    box = keep(connected("TarnDio", address))

    async def main():
        asyncio.get_running_loop().call_later(0.02, sys.exit, 0)
        await box._getReplyFromPool_async(5)

    asyncio.run(main())


for ends in ("dropped", "kept", "closed", "stopped"):
    @scenario(f"loop {ends} under waiting tasks", "TarnDio")
    def loop_left(address, file, end=ends):
        box = keep(connected("TarnDio", address))
        loop = loop_that_is_quiet()
        tasks = [loop.create_task(box._getReplyFromPool_async(command)) for command in (5, 6)]
        loop.run_until_complete(asyncio.sleep(0.02))
        if end == "closed":
            loop.close()
        if end == "kept":
            keep((loop, tasks))
        if end == "stopped":
            loop.call_soon(loop.stop)
            keep(tasks)
            loop.run_forever()
        box._putToDataPool(5, b"for whom?")


@scenario("loop in a daemon thread", "TarnDio", says=SERIAL)
def loop_in_a_thread(address, file):
    box = keep(connected("TarnDio", address))
    loop = keep(loop_that_is_quiet())
    threading.Thread(target=loop.run_forever, daemon=True).start()
    for command in range(50, 60):
        keep(asyncio.run_coroutine_threadsafe(box._getReplyFromPool_async(command), loop))
    say(asyncio.run_coroutine_threadsafe(box.Sys_getSerialNumber_async(), loop).result(10))


# Handlers that run when the interpreter ends.

AT_EXIT = {
    "request": lambda: say(attempt(lambda: KEPT[0].Sys_getSerialNumber(timeout=0.2))),
    "await": lambda: say(attempt(lambda: asyncio.run(asyncio.wait_for(KEPT[0].Sys_getSerialNumber_async(), 0.2)))),
    "close": lambda: say(attempt(lambda: KEPT[0].close())),
    "disconnect": lambda: say(attempt(lambda: KEPT[0].disconnect(verbose=False))),
    "drop": lambda: (KEPT.clear(), gc.collect(), say("None")),
    "make": lambda: say(attempt(lambda: made("TarnDio").close())),
    "wait": lambda: say(attempt(lambda: KEPT[0]._getReplyFromPool(5, 0.05))),
}
ANSWERS = {"request": SERIAL, "await": SERIAL, "wait": "ReceivePacketTimeoutError"}
# A handler of before the import comes after the library's own end; a request is then answered or fails.
LATE_ANSWERS = {
    "request": rf"{SERIAL}|\w+Error", "await": rf"{SERIAL}|\w+Error", "make": r"None|\w+Error",
    "disconnect": r"None|\w+Error"
}

for times in ("before", "after"):
    for works, handlers in AT_EXIT.items():
        answers = {**ANSWERS, **(LATE_ANSWERS if times == "before" else {})}
        @scenario(f"atexit, registered {times} the import: {works}", "TarnDio", answers.get(works, "None"))
        def at_exit(address, file, handler=handlers, when=times):
            assert "pyzvr" not in sys.modules
            if when == "before":
                atexit.register(handler)
            import pyzvr

            assert pyzvr
            if when == "after":
                atexit.register(handler)
            keep(connected("TarnDio", address))


# Other processes and interpreters.


def ask_in_vain():
    """A handle of another process refuses, at once."""
    begin = time.monotonic()
    answer = attempt(lambda: KEPT[0].Sys_getSerialNumber(timeout=1))
    os._exit(0 if answer != SERIAL and time.monotonic() - begin < 0.9 else 7)


def ask_by_oneself(address):
    own = connected("TarnDio", address)
    answer = own.Sys_getSerialNumber()
    own.close()
    os._exit(0 if answer == SERIAL else 7)


def leave_without_closing(address):
    keep(connected("TarnDio", address))
    sys.exit(0 if KEPT[-1].Sys_getSerialNumber() == SERIAL else 7)


CHILDREN = {
    "ends by sys.exit": lambda address: sys.exit(0), "ends by os._exit": lambda address: os._exit(0),
    "drops": lambda address: (KEPT.clear(), gc.collect(), os._exit(0)), "drops and ends by sys.exit": lambda address:
    (KEPT.clear(), gc.collect(), sys.exit(0)), "closes": lambda address:
    (attempt(lambda: KEPT[0].close()), os._exit(0)), "disconnects": lambda address:
    (attempt(lambda: KEPT[0].disconnect()), os._exit(0)), "leaves a with block": lambda address:
    (attempt(lambda: KEPT[0].__exit__(None, None, None)), sys.exit(0)), "disconnects the client": lambda address:
    (attempt(lambda: KEPT[0].client_cmd.disconnect()), os._exit(0)), "closes a copy": lambda address:
    (attempt(lambda: copy.copy(KEPT[0]).close()), os._exit(0)), "waits in a FIFO": lambda address:
    (attempt(lambda: KEPT[0].data_pool_strm[1].get(timeout=0.05)), sys.exit(0)), "asks": lambda address: ask_in_vain(),
    "awaits": lambda address:
    (attempt(lambda: asyncio.run(asyncio.wait_for(KEPT[0].Sys_getSerialNumber_async(), 0.1))), sys.exit(0)),
    "has one of its own": ask_by_oneself, "leaves one of its own": leave_without_closing,
}


def forked(child, address):
    """Runs the child's part in a fork, and tells its code and how long it took."""
    begin = time.monotonic()
    process = os.fork()
    if process == 0:
        signal.alarm(10)  # ends it if it hangs
        child(address)
        os._exit(9)
    code = os.waitstatus_to_exitcode(os.waitpid(process, 0)[1])
    say("took", time.monotonic() - begin)
    return code


for works, children in CHILDREN.items():
    @scenario(f"forked child {works}", "TarnDio", says=f"0 {SERIAL} {SERIAL}")
    def fork(address, file, child=children):
        box = keep(connected("TarnDio", address))
        assert box.Sys_getSerialNumber() == SERIAL
        say(forked(child, address), box.Sys_getSerialNumber(), asyncio.run(box.Sys_getSerialNumber_async()))


for works in ("ends by sys.exit", "drops", "closes", "asks"):
    @scenario(f"forked child {works} beside threads in calls", "TarnDio", says=f"(0 ){{10}}{SERIAL}")
    def fork_beside_threads(address, file, work=works):
        box = keep(connected("TarnDio", address))
        in_threads(lambda box: box.Sys_getRTC(), box, 1)
        in_threads(lambda box: box._getReplyFromPool(5, 0.001), box, 1)
        in_threads(lambda box: box.data_pool_strm[1].put(b"x"), box, 1)
        say(*(forked(CHILDREN[work], address) for _ in range(10)), box.Sys_getSerialNumber())


@scenario("forked child closes a streaming box", "TarnAnalog", says="0 True")
def fork_streaming(address, file):
    box = streaming(keep(connected("TarnAnalog", address)), 4000)
    code = forked(CHILDREN["closes"], address)
    box.AI_readStreamingBlock(0, box.AI_getBacklog(0))
    say(code, len(box.AI_readStreaming(0, 100, 5)) == 100)


@scenario("forked child of a loop", "TarnDio", says=f"0 {SERIAL}")
def fork_in_loop(address, file):
    box = keep(connected("TarnDio", address))

    async def main():
        task = asyncio.create_task(box._getReplyFromPool_async(5))
        await asyncio.sleep(0.02)
        code = forked(CHILDREN["drops and ends by sys.exit"], address)
        box._putToDataPool(5, b"here")
        assert await task == b"here"
        say(code, await box.Sys_getSerialNumber_async())

    asyncio.run(main())


@scenario("forked child of a logger", says="0")
def fork_logger(address, file):
    """The child's end writes nothing of the parent's rows again."""
    import pyzvr

    log = keep(pyzvr.DataLogger())
    log.Logger_openFile(file, verbose=False)
    for number in range(2000):
        log.Logger_writeList([number, number / 8])
    say(forked(CHILDREN["ends by sys.exit"], address))


def child_with_own(address):
    leave_without_closing(address)


def child_with_nothing(address):
    pass


METHODS = ("fork", "spawn")

for methods in METHODS:
    for times in ("before", "in the child"):

        @scenario(f"multiprocessing by {methods}, made {times}",
                  "TarnDio",
                  says=f"0 {SERIAL}" if times == "before" else "0")
        def processes(address, file, method=methods, made=times):
            if made == "before":
                keep(connected("TarnDio", address))
            process = multiprocessing.get_context(method).Process(
                target=child_with_own if made != "before" else child_with_nothing, args=(address,))
            begin = time.monotonic()
            process.start()
            process.join(20)
            if method == "fork":  # a new interpreter has a start of its own
                say("took", time.monotonic() - begin)
            say(process.exitcode, *(box.Sys_getSerialNumber() for box in KEPT))


def serial_in_pool(address):
    own = connected("TarnDio", address)
    return own.Sys_getSerialNumber()


@scenario("multiprocessing by a pool", "TarnDio", says=f"{SERIAL} {SERIAL} {SERIAL}")
def pool(address, file):
    box = keep(connected("TarnDio", address))
    with multiprocessing.get_context("fork").Pool(2) as workers:
        serials = workers.map(serial_in_pool, [address] * 2)
    say(*serials, box.Sys_getSerialNumber())


@scenario("multiprocessing given the object", "TarnDio", says="TypeError")
def given_the_object(address, file):
    import pickle

    say(attempt(lambda: pickle.dumps(keep(connected("TarnDio", address)))))


IN_SUBINTERPRETER = """
import os
try:
    import pyzvr
except ImportError:
    os.write(1, b"refused\\n")
else:
    os.write(1, b"imported\\n")
"""


def in_subinterpreter():
    try:
        import _interpreters as interpreters  # 3.13 and on
    except ImportError:
        import _xxsubinterpreters as interpreters
    identity = interpreters.create()
    interpreters.run_string(identity, IN_SUBINTERPRETER)
    interpreters.destroy(identity)


for orders in ("first", "last", "in between"):

    @scenario(f"subinterpreter {orders}",
              "TarnDio",
              says=f"refused\n{SERIAL}" if orders == "first" else f"{SERIAL}\nrefused\n{SERIAL}")
    def subinterpreter(address, file, order=orders):
        if order == "first":
            in_subinterpreter()
        box = connected("TarnDio", address)
        say(box.Sys_getSerialNumber())
        if order == "last":
            in_subinterpreter()
            say(box.Sys_getSerialNumber())
            box.close()
        elif order == "in between":
            thread = threading.Thread(target=in_subinterpreter)
            thread.start()
            thread.join()
            say(keep(box).Sys_getSerialNumber())


# Exceptions that are to end everything.


for steps in ("_putToDataPool", "_recvCMDThread", "_checkCommandType"):
    @scenario(f"sys.exit in {steps}", "TarnDio")
    def exit_in_step(address, file, step=steps):
        import pyzvr

        left = threading.Event()

        def leave(self, *arguments):
            left.set()
            sys.exit(3)  # ends its thread, as everywhere

        box = keep(type("TarnDio", (pyzvr.TarnDio,), {step: leave})())
        box.connect(*address, verbose=False)
        with contextlib.suppress(pyzvr.ReceivePacketTimeoutError):
            box.Sys_getSerialNumber(timeout=0.1)
        assert left.wait(10)


@scenario("sys.exit in the logger's writer")
def exit_in_writer(address, file):
    import pyzvr

    left = threading.Event()

    class Writer:
        def writerows(self, rows):
            left.set()
            sys.exit(3)

    log = keep(pyzvr.DataLogger())
    log.Logger_openFile(file, verbose=False)
    log.writer_csv = Writer()
    log.Logger_writeValue(1)
    assert left.wait(10)


@scenario("sys.exit in a wait of the main thread", "TarnDio")
def exit_from_signal(address, file):
    box = keep(connected("TarnDio", address))
    signal.signal(signal.SIGALRM, lambda *_: sys.exit(0))
    signal.setitimer(signal.ITIMER_REAL, 0.05)
    box._getReplyFromPool(5, 1000)


for waits in ("_getReplyFromPool 1000 s", "_getReplyFromPool_async", "FIFO get", "join", "AI_readStreamingBlock 1000 s",
              "broadcast"):
    @scenario(f"Ctrl-C in {waits}", WAITS[waits][0] if waits != "broadcast" else None, says="interrupted")
    def interrupted(address, file, wait=waits):
        model, call = WAITS[wait]
        box = keep(connected(model, address))
        signal.signal(signal.SIGINT, signal.default_int_handler)  # a job in the background would not hear it
        signal.signal(signal.SIGALRM, lambda *_: signal.raise_signal(signal.SIGINT))
        signal.setitimer(signal.ITIMER_REAL, 0.05)
        try:
            call(box)
        except KeyboardInterrupt:
            say("interrupted")


if __name__ == "__main__":
    faulthandler.register(signal.SIGUSR1)  # tells where it hangs; a watchdog's thread would hang a forked child
    chosen, path, *where = sys.argv[1:]
    try:
        SCENARIOS[chosen].body([int(word) if word.isdigit() else word for word in where], path)
    finally:
        if os.getpid() == MAIN:
            say("done", time.monotonic())
