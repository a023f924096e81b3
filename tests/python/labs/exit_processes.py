"""Leaving the interpreter with other processes and interpreters."""

import asyncio
import copy
import gc
import multiprocessing
import os
import signal
import sys
import threading
import time

from exit_calls import in_threads
from exit_scenarios import KEPT, SERIAL, attempt, connected, keep, say, scenario, streaming


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
    "ends by sys.exit": lambda address: sys.exit(0),
    "ends by os._exit": lambda address: os._exit(0),
    "drops": lambda address: (KEPT.clear(), gc.collect(), os._exit(0)),
    "drops and ends by sys.exit": lambda address: (KEPT.clear(), gc.collect(), sys.exit(0)),
    "closes": lambda address: (attempt(lambda: KEPT[0].close()), os._exit(0)),
    "disconnects": lambda address: (attempt(lambda: KEPT[0].disconnect()), os._exit(0)),
    "leaves a with block": lambda address: (attempt(lambda: KEPT[0].__exit__(None, None, None)), sys.exit(0)),
    "disconnects the client": lambda address: (attempt(lambda: KEPT[0].client_cmd.disconnect()), os._exit(0)),
    "closes a copy": lambda address: (attempt(lambda: copy.copy(KEPT[0]).close()), os._exit(0)),
    "waits in a FIFO": lambda address: (attempt(lambda: KEPT[0].data_pool_strm[1].get(timeout=0.05)), sys.exit(0)),
    "asks": lambda address: ask_in_vain(),
    "awaits": lambda address: (attempt(lambda: asyncio.run(asyncio.wait_for(KEPT[0].Sys_getSerialNumber_async(), 0.1))), sys.exit(0)),
    "has one of its own": ask_by_oneself,
    "leaves one of its own": leave_without_closing,
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
