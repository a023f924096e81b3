"""What happens on USB, seen from a program beside emulated devices: one scenario, told as JSON.

    python3 usb_lab.py SCENARIO CONTROL  under the emulation; CONTROL is a descriptor that takes the simulator's commands,
                                         which it answers on standard input
"""

import asyncio
import contextlib
import gc
import io
import json
import os
import sys
import threading
import time
import warnings

import pyzvr


def control(line):
    os.write(int(sys.argv[2]), (line + "\n").encode())
    answer = json.loads(sys.stdin.readline())
    assert answer["ok"], answer
    return answer


def error_of(action):
    try:
        action()
    except Exception as error:
        return [type(error).__name__, isinstance(error, pyzvr.Error), getattr(error, "errno", None)]


def finding():
    """Two devices, AAA and BBB; the first is a driver's of the kernel."""
    found = pyzvr.SableDio()._getAllUSBDevices()
    seen = {}
    for serial in ("BBB", "AAA", "default"):
        with pyzvr.SableDio() as box:
            box.connect(serial)
            seen[serial] = [box.serial_num, box.Sys_getSerialNumber()]
    opened = []
    for where in ("BBB", "bench"):  # a serial number, and the alias of both
        with pyzvr.open(where, verbose=False) as box:
            opened.append([type(box).__name__, box.serial_num])
    client = pyzvr.USBClient("AAA")
    fields = [client.takeSerialNumber(), client.takeProductName(), client.device.serial_number, client.config,
              client.interface, client.ep_in, client.ep_out]
    return {"found": sorted(found), "seen": seen, "fields": fields, "opened": opened[0],
            "alias": opened[1] in (["SableDio", "AAA"], ["SableCan", "BBB"]),
            "wrong": error_of(lambda: pyzvr.USBClient("CCC")), "detached": control("transfers AAA")["detached"]}


def transfers():
    client = pyzvr.USBClient()
    quiet = error_of(lambda: client.recvPacket(64))
    for length in (0, 58, 59):
        client.sendPacket(pyzvr.Packet_based()._preparePacket(pyzvr.GET_THREADS, [65] * length))
    replies = []
    while len(replies) < 3:
        with contextlib.suppress(pyzvr.USBTimeoutError):
            replies += client.recvAndSplitPacket(64)
    with pyzvr.SableDio() as busy:
        return {"quiet": quiet, "replies": len(replies), "out": control("transfers SIM00001")["out"],
                "busy": error_of(lambda: (busy.connect(), busy.Sys_getSerialNumber(0.2)))}


def traffic():
    """Requests from threads and from a loop, and a device that is let go in every way."""
    with pyzvr.SableDio() as box:
        box.connect()
        names = []
        threads = [threading.Thread(target=lambda: names.extend(box.Sys_getDriverInfo()[0] for _ in range(100))),
                   threading.Thread(target=lambda: [box._getEEPROMPage(number % 64) for number in range(100)])]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()

        async def awaited():
            return [await box.Sys_getSerialNumber_async() for _ in range(100)]

        serials = asyncio.run(awaited())
        box._setEEPROMPage(3, list(range(50)))
        # A repeated request of before may have left one more reply, to another page.
        page = next(seen for seen in iter(lambda: box._getEEPROMPage(3)[:50], None) if any(seen))
        for _ in range(5):
            box.disconnect()
            box.connect()
        descriptors = len(os.listdir("/proc/self/fd"))
        for _ in range(10):
            box.disconnect()
            box.connect()
        grown = len(os.listdir("/proc/self/fd")) - descriptors
    dropped = pyzvr.SableDio()
    dropped.connect()
    del dropped
    gc.collect()
    with pyzvr.SableDio() as box:
        deadline = time.monotonic() + 5
        while error_of(lambda: (box.connect(), box.Sys_getSerialNumber())) and time.monotonic() < deadline:
            box.disconnect()
        return {"names": sorted(set(names)), "count": len(names), "serials": sorted(set(serials)), "page": page,
                "grown": grown, "again": box.Sys_getSerialNumber()}


def pulses():
    """A PWM output that leads to the counter of its number, and the encoder."""
    with pyzvr.SableDio() as box:
        box.connect()
        refused = box.Counter_start(0)
        ready = [box.PWM_open(0), box.PWM_setFrequency(0, 100000), box.PWM_start(0), box.Counter_open(0),
                 box.Counter_setPosition(0, 2**48 - 1), box.Counter_setEdge(0, 2), box.Encoder_open(0),
                 box.Encoder_setPosition(0, -3), box.Encoder_setDirection(0, 1)]
        set_to = [box.Counter_readPosition(0), box.Encoder_readPosition(0), box.Encoder_getDirection(0)]

        async def count():
            started = [await box.Counter_start_async(0), await box.Encoder_start_async(0)]
            while await box.Counter_readPosition_async(0) > 2**47 or await box.Encoder_readPosition_async(0) > -5:
                pass  # until the counter has wrapped and the encoder has gone down
            return [*started, await box.Counter_readFrequency_async(0), abs(await box.Encoder_readFrequency_async(0))]

        counted = asyncio.run(count())
        stopped = [box.Counter_stop(0), box.Encoder_stop(0)]
        still = [box._Counter_read(0) == box._Counter_read(0), box._Encoder_read(0) == box._Encoder_read(0)]
        return {"refused": refused, "ready": ready, "set": set_to, "counted": counted, "stopped": stopped,
                "still": still, "closed": [box.Counter_close(0), box.Encoder_close(0), box.PWM_close(0)]}


def lateness():
    """Replies that come in the moment in which a read gives up."""
    with pyzvr.SableDio() as box:
        box.connect()
        control("late SIM00001 on")
        return {"serials": [box.Sys_getSerialNumber() for _ in range(30)]}


def idling():
    """A device that is connected and has nothing to say, and the ways out of the thread's read."""
    with pyzvr.SableDio() as box:
        box.connect()
        box.Sys_getSerialNumber()
        begin = time.process_time()
        time.sleep(2)
        share = (time.process_time() - begin) / 2
        # A caller that reads comes before the thread, which waits longer; its own limit is a millisecond.
        box.recv_cmd_lock.acquire()
        quiet = [error_of(lambda: box.client_cmd.recvPacket(64))[0] for _ in range(20)]
        box.recv_cmd_lock.release()
        own = [error_of(lambda: box.client_cmd.recvAndSplitPacket(64)) for _ in range(20)]
        serials = [box.Sys_getSerialNumber() for _ in range(20)]
        held = box.client_cmd
        begin = time.thread_time()
        box.disconnect()
        spun = time.thread_time() - begin
        del held
        box.connect()
        again = box.Sys_getSerialNumber()
        thread = box.recv_cmd_thread
    thread.join(5)
    return {"costly": share > 0.05, "share": share, "quiet": sorted(set(quiet)), "serials": sorted(set(serials)),
            "own": [each for each in own if each and each[0] != "USBTimeoutError"], "spun": spun > 0.05, "again": again,
            "ended": not thread.is_alive()}


def forking():
    """Children that use, close or drop a device of their parent."""
    with pyzvr.SableDio() as box:
        box.connect()
        report = []
        for end in (lambda: os._exit(0), box.close, box.disconnect, lambda: box.__dict__.clear()):
            child = os.fork()
            if child == 0:
                refused = [
                    error_of(action) for action in (box.Sys_getSerialNumber, lambda: box.client_cmd.recvPacket(64))
                ]
                right = refused[1][0] == "USBConnectionError" and all(each[1] for each in refused)
                right = right and not box.recv_cmd_thread.is_alive()
                error_of(end)
                gc.collect()
                os._exit(0 if right else 7)
            report.append([os.waitpid(child, 0)[1], box.Sys_getSerialNumber()])
        return report


def streaming():
    """A stream of a counting signal, with all channels and with some."""
    report = {}
    with pyzvr.SableAnalog() as box:
        box.connect()
        for channels, rate in ((8, 2000), (3, 6300)):
            ready = [
                box.AI_open(0),
                box.AI_enableChannel(0, channels),
                box.AI_setMode(0, 2),
                box.AI_setSamplingRate(0, rate)
            ]
            opened = box.AI_openStreaming(0)[1:]
            box.AI_startStreaming(0)
            rows = box.AI_readStreaming(0, 1500, 10)
            codes = [[round(value * 32768 / 10) for value in row] for row in rows]
            right = codes == [[8 * k + c for c in range(channels)] for k in range(1500)]
            report[str(channels)] = [ready, opened, right, box.AI_closeStreaming(0), box.AI_close(0)]
            box.AI_readStreaming(0, 1000000, 0.1)
    return report


def unplugging():
    """The device vanishes while a request waits, and comes back."""
    reports = []
    first = threading.Event()
    pyzvr.printGenericError = lambda error: (reports.append(type(error).__name__), first.set())
    with pyzvr.SableDio() as box:
        box.connect()
        control("stall SIM00001 on")
        waiting = threading.Timer(0.2, lambda: control("unplug SIM00001"))
        waiting.start()
        request = error_of(lambda: box.Sys_getSerialNumber(1))
        waiting.join()
        reported = first.wait(5)
        awaited = error_of(lambda: asyncio.run(asyncio.wait_for(box.Sys_getSerialNumber_async(), 0.5)))
        begin = time.process_time()
        threading.Event().wait(0.5)
        spent = time.process_time() - begin
        box.disconnect()
        gone = error_of(box.connect)
        listed = box._getAllUSBDevices()
        control("plug SableDio:BACK")
        box.connect()
        return {
            "request": request, "reported": reported, "kinds": sorted(set(reports)), "few": len(reports) < 8,
            "awaited": awaited, "busy": spent > 0.25, "gone": gone, "listed": listed, "back": box.Sys_getSerialNumber()
        }


if __name__ == "__main__":
    warnings.simplefilter("ignore")
    with contextlib.redirect_stdout(io.StringIO()):
        report = globals()[sys.argv[1]]()
    print(json.dumps(report))
