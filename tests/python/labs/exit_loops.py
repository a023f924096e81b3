"""Leaving the interpreter with event loops, and with handlers that run when it ends."""

import asyncio
import atexit
import gc
import sys
import threading

from exit_scenarios import KEPT, SERIAL, attempt, connected, keep, made, say, scenario


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
