"""What `make shell` begins with."""

import asyncio

import zvrkit.sim

import pyzvr

__all__ = ["asyncio", "pyzvr", "zvrkit"]

print(f"""pyzvr {pyzvr.__version__}, zvrkit.sim and asyncio are imported. A device without hardware:

    place = zvrkit.sim.device("TarnAnalog")
    box = pyzvr.TarnAnalog()
    box.connect(*place.address)
    box.AI_readOnDemand(0)
""")
