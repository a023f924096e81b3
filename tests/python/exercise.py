"""Takes one product through its life over its own kind of link, and tells what it saw.

    python3 exercise.py MODEL ADDRESS...   prints it as JSON; for links that need an environment of their own
"""

import asyncio
import contextlib
import io
import json
import sys
import warnings

import pyzvr


def identity(product, form):
    """Name and serial number as the device tells them, by one form of the operations."""
    if isinstance(product, pyzvr.Drone):
        return [product.Drone_getFirmwareVersion(), product.Drone_getSerialNumber()]
    if form == "blocking":
        return [product.Sys_getDriverInfo()[0], product.Sys_getSerialNumber()]

    async def both():
        return await asyncio.gather(product.Sys_getDriverInfo_async(), product.Sys_getSerialNumber_async())

    driver, serial = asyncio.run(both())
    return [driver[0], serial]


def exercise(name, *address):
    printed = io.StringIO()
    with contextlib.redirect_stdout(printed), warnings.catch_warnings(record=True) as warned:
        warnings.simplefilter("always")
        product = getattr(pyzvr, name)()
        seen = [identity_after_connecting(product, form, address) for form in ("blocking", "awaitable")]
        product.connect(*address)
        product.close()
        product.close()
    lines = [line for line in printed.getvalue().splitlines() if "handle (" in line or "onnected " in line]
    alive = [thread for thread in ("recv_cmd_thread", "recv_data_thread")
             if hasattr(product, thread) and is_alive_after_a_moment(getattr(product, thread))]
    return {"seen": seen, "lines": lines, "alive": alive, "warnings": sorted({str(each.message) for each in warned})}


def identity_after_connecting(product, form, address):
    product.connect(*address)
    product.connect(*address)  # does nothing
    try:
        return identity(product, form)
    finally:
        product.disconnect()
        product.disconnect()


def is_alive_after_a_moment(thread):
    thread.join(5)
    return thread.is_alive()


if __name__ == "__main__":
    print(json.dumps(exercise(sys.argv[1], *(int(word) if word.isdigit() else word for word in sys.argv[2:]))))
