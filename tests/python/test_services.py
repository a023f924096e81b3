"""Settings, lights, card and pulses as the simulated devices keep them, in both forms."""

import asyncio
import datetime

from forms import awaited
from simulators import connected

import pyzvr


def test_time_server_and_clock(call):
    with connected("TarnAnalog") as box:
        assert call(box, "SNTP_setServerIP", "10.1.2.3") == call(box, "SNTP_setPeriod", 60) == 0
        assert (call(box, "SNTP_getServerIP"), call(box, "SNTP_getPeriod")) == ("10.1.2.3", 60.0)
        assert call(box, "SNTP_setPeriod", -1) == -7004
        assert call(box, "SNTP_getPeriod") == 60.0
        assert call(box, "Sys_setRTC", 2001, 2, 3, 4, 5, 6) == 0
        assert call(box, "Sys_getRTC").startswith("2001-02-03, 04:05")
        before = call(box, "SNTP_getSyncStatus")
        assert call(box, "SNTP_syncNow") == 0
        assert call(box, "SNTP_getSyncStatus") != before
        told = datetime.datetime.strptime(call(box, "Sys_getRTC"), "%Y-%m-%d, %H:%M:%S")
        assert abs(datetime.datetime.now() - told) < datetime.timedelta(seconds=60)


def test_a_clock_that_counts_from_2000_does_not_go_back_before(call):
    with connected("HeronAnalog") as box:
        assert call(box, "Sys_setRTC", 2024, 2, 3, 4, 5, 6) == 0
        for year in (1999, 99, 24, 1900):
            assert call(box, "Sys_setRTC", year, 2, 3, 4, 5, 6) == pyzvr.errFirmwareRTC
        assert call(box, "Sys_getRTC").startswith("2024-02-03, 04:05")
        assert call(box, "Sys_setRTC", 2000, 1, 1, 4, 5, 6) == 0
        assert call(box, "Sys_getRTC").startswith("2000-01-01, 04:05")


def test_addresses_are_kept(call):
    with connected("TarnOut") as box:
        assert (
            call(box, "Net_setIPAddrAndSubmask", "10.0.0.9", "255.0.0.0") == call(box, "_setGateway", "10.0.0.1") == 0
        )
        assert call(box, "_setMACAddr", "02:0a:00:00:00:ff") == 0
        assert call(box, "Sys_getIPAddrAndSubmask") == [box.ip_addr, box.subnet_mask] == ["10.0.0.9", "255.0.0.0"]
        assert (call(box, "Net_getGateway"), call(box, "Net_getMACAddr")) == ("10.0.0.1", "2:a:0:0:0:ff")


def test_wifi_box(call):
    with connected("HeronMixed") as box:
        lights = lambda: call(box, "_getDIOState", 0, 65535)[:3]  # noqa: E731
        assert call(box, "Wifi_setRedLED", 1) == call(box, "Wifi_setBlueLED", 9) == 0
        assert lights() == [1, 0, 1]
        assert call(box, "Wifi_setRedLED", 0) == 0
        assert lights() == [0, 0, 1]
        assert call(box, "Wifi_resetLED") == 0
        assert lights() == [0, 0, 0]
        assert call(box, "Wifi_getPowerGoodStatus") == 1
        assert call(box, "Wifi_getChargeStatus") == 0
        assert call(box, "_setWifiConfiguration", 7, 300) == 0
        assert call(box, "Wifi_getConfiguration") == [7, 300]
        assert call(box, "_Wifi_setBandwidth", 0) == 0
        assert call(box, "Wifi_getWifiBandWidth") == box.bandwidth == 1
        assert -100 < call(box, "Wifi_readRSSI") < -20
        assert 3000 <= call(box, "Wifi_readBattery") == box.battery <= 4100
        assert call(box, "_Wifi_readThermo") == 25.0
        assert call(box, "_Wifi_resetAIBuffer") in (0, -7028, -7017)
        assert call(box, "_Wifi_setAP") == 0
        assert call(box, "Sys_getRTC")[:2] == "20"
        assert call(box, "DO_writePort", 3, 0xA5) == 0
        assert call(box, "DI_readPort", 2) == [1, 0, 1, 0, 0, 1, 0, 1]


def test_both_spellings_of_the_acceleration():
    with connected("HeronAnalog") as box:
        assert box._Wifi_readAcceleration() == asyncio.run(box._Wifi_readAccleration_async())
        assert not hasattr(box, "_Wifi_readAcceleration_async")


def test_memory_card(call):
    with connected("HeronOut") as box:
        assert call(box, "SD_openFile", "a.txt", 0) == pyzvr.errFirmwareEnable
        assert call(box, "_SD_open") == 0
        assert call(box, "SD_getStorage") > 0
        assert call(box, "SD_openFile", "a.txt", 1) == 0
        for piece in ("hello ", ["w", "\xff"], "x" * 255):
            assert call(box, "SD_writeFile", piece) == 0
        assert call(box, "SD_closeFile") == 0
        assert call(box, "SD_openFile", "a.txt", 0) == 0
        assert "".join(call(box, "SD_readFile", 8)) == "hello w\xff"
        assert [len(call(box, "SD_readFile", 254)) for _ in range(3)] == [254, 1, 0]
        assert call(box, "SD_writeFile", "no") == pyzvr.errFirmwareEnable
        assert call(box, "SD_closeFile") == call(box, "_SD_close") == 0


def test_pwm_over_the_network(call):
    with connected("TarnDio") as box:
        assert call(box, "PWM_start", 1) == pyzvr.errFirmwarePWM
        assert call(box, "PWM_open", 1) == call(box, "PWM_setFrequency", 1, 500.0) == call(box, "PWM_start", 1) == 0
        assert call(box, "PWM_setDutyCycle", 1, 150.0) == pyzvr.errFirmwarePWM
        assert call(box, "PWM_stop", 1) == call(box, "PWM_close", 1) == 0
        assert awaited(box, "PWM_stop", 1) < 0
