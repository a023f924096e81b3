"""An Ethernet box's addresses, clock and time server, in the blocking form.

    python3 examples/settings.py            starts a simulator
    python3 examples/settings.py HOST PORT  uses a device; the settings are put back at the end
"""

from __future__ import annotations

from _simulated import device  # first: it finds a build

import pyzvr


def show(box: pyzvr.TarnAnalog) -> None:
    address, mask = box.Net_getIPAddrAndSubmask()
    print(f"Address {address}, mask {mask}, gateway {box.Net_getGateway()}, MAC {box.Net_getMACAddr()}")
    print(f"Time server {box.SNTP_getServerIP()} every {box.SNTP_getPeriod():g}, {box.SNTP_getSyncStatus()}")
    print("Clock", box.Sys_getRTC())


def main() -> None:
    with device("TarnAnalog") as place, pyzvr.TarnAnalog() as box:
        box.connect(*place)
        print(*box.Sys_getDriverInfo(), "serial number", box.Sys_getSerialNumber())
        show(box)
        server, period = box.SNTP_getServerIP(), box.SNTP_getPeriod()
        # Writes return 0, or the negative code of the device's refusal.
        pyzvr.check(box.SNTP_setServerIP("192.168.1.1"))
        pyzvr.check(box.SNTP_setPeriod(600))
        pyzvr.check(box.Sys_setRTC(2020, 1, 1, 0, 0, 0))
        show(box)
        if box.SNTP_syncNow() == 0:
            print("Synchronised:", box.Sys_getRTC())
        box.SNTP_setServerIP(server)
        box.SNTP_setPeriod(period)
        try:
            box.SNTP_setServerIP("time.example")
        except OSError as failure:
            print("Refused before anything was sent:", failure)


if __name__ == "__main__":
    main()
