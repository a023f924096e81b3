"""Shows the frames of a request."""

import logging
import sys

import pyzvr
import zvrkit.sim

logging.basicConfig(stream=sys.stdout, format="%(message)s")

with zvrkit.sim.device("TarnDio") as place, pyzvr.TarnDio() as box:
    box.connect(*place.address)
    logging.getLogger("pyzvr.wire").setLevel(logging.DEBUG)
    box.Sys_getSerialNumber()
