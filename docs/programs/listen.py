"""Shows what a request is on the link."""

import pyzvr
import zvrkit.sim

with zvrkit.sim.device("TarnDio", "--verbose") as place, pyzvr.TarnDio() as box:
    box.connect(*place.address)
    box.Sys_getSerialNumber()
