"""Leaving the interpreter with objects that nobody closes, in every state."""

import asyncio
import contextlib
import time
import warnings

from exit_scenarios import SERIAL, connected, keep, made, scenario, streaming


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
