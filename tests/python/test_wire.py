"""What each operation sends and what it makes of a reply, in both forms, at a client that is a test double."""

import asyncio

import pytest
from fake_client import FakeClient

import pyzvr

U16 = pyzvr.convertU16To2U8
REFUSED = b"\x00\x15"  # status 21 at byte 1


def classes(*prefixes):
    return [getattr(pyzvr, prefix + ending) for ending in ("Module", "Module_async") for prefix in prefixes]


Box = type("Box", (pyzvr.Device, *classes(
    "System", "Network", "PWM", "Counter", "Encoder", "Wifi", "SystemAnalog", "SNTP", "SDCard", "Relay", "DPOT")), {})


@pytest.fixture
def box():
    box = Box()
    box.client_cmd = FakeClient(box)
    return box


# operation, arguments, command, data sent, reply, result, field that keeps it
SYSTEM = [
    ("Sys_getDriverInfo", (), "GET_DRIVER_INFO", [0], b"Tarn_3.2_x\0\0", ["Tarn", "3.2", "x"], None),
    ("_getDriverInfo_dev", (7,), "GET_DRIVER_INFO", [7], b"a_b", "a_b", "driver_info"),
    ("Sys_getDeviceAlias", (), "GET_DEV_ALIAS", [], b"bench\r\nrest\xff", "bench", None),
    ("Sys_getDeviceAlias", (), "GET_DEV_ALIAS", [], b"whole", "whole", None),
    ("Sys_setDeviceAlias", ("Ab",), "SET_DEV_ALIAS", [65, 98], b"\0", 0, None),
    ("Sys_setRTC", (24, 1, 2, 3, 4, 5), "SET_DATE_TIME", [24, 1, 2, 3, 4, 5], b"\0", 0, None),
    ("Sys_setRTC", (2024, 1, 2, 3, 4, 5), "SET_DATE_TIME", [124, 1, 2, 3, 4, 5], b"\x14", -7004, None),
    ("Sys_getRTC", (), "GET_DATE_TIME", [0], bytes([124, 1, 2, 3, 4, 5]), "2024-01-02, 03:04:05", "rtc_time"),
    ("Sys_startRTCAlarm", (1, 2, 3, 4, 5), "RTC_START_ALARM", [0, 1, 2, 3, 4, 5], b"\0\x15", 21, None),
    ("Sys_stopRTCAlarm", (), "RTC_STOP_ALARM", [0], b"\0\0", 0, None),
    ("_Sys_getRTCAlarmState", (), "RTC_GET_ALARM_STATE", [0], b"\0\1", "on", None),
    ("_Sys_getRTCAlarmState", (), "RTC_GET_ALARM_STATE", [0], b"\0\2", "off", None),
    ("_Sys_getRTCAlarmConfig", (), "RTC_GET_ALARM_CONFIG", [0], bytes(range(7)), "0001-02-03, 04:05:06", None),
    ("Sys_getSerialNumber", (), "GET_SERIAL_NUMBER", [], b"SN01\0\0\0\0more", "SN01", "serial_number"),
    ("Sys_reboot", (), "REBOOT", [250], b"\x50", -7027, None),
    ("_Sys_rebootOnBootloader", (), "REBOOT_ON_BOOTLOADER", [251], b"\0", 0, None),
    ("Sys_getMode", (4,), "GET_SLOT_MODE", [], b"\x08\x10\x19\x02\x36", "Switch", None),
    ("Sys_getMode", (2,), "GET_SLOT_MODE", [], b"\x08\x10\x19\x02\x36", "Idle", None),
    ("Sys_setIdleMode", (1,), "SET_SLOT_MODE", [0, 0], b"\0\0", 0, None),
    ("Sys_setDIMode", (2,), "SET_SLOT_MODE", [2, 1], b"\2\x0a", 10, None),
    ("Sys_setDOMode", (4,), "SET_SLOT_MODE", [6, 2], b"\6\0", 0, None),
    ("Sys_setDIOMode", (1,), "SET_SLOT_MODE", [0, 3], b"\0\0", 0, None),
    ("Sys_setMotionMode", (1,), "SET_SLOT_MODE", [0, 4], b"\0\0", 0, None),
    ("Sys_setAIOMode", (1,), "SET_SLOT_MODE", [0, 5], b"\0\0", 0, None),
    ("Sys_setSwitchMode", (1,), "SET_SLOT_MODE", [0, 6], b"\0\0", 0, None),
    ("_getEEPROMPage", (3,), "GET_EEPROM_PAGE", [3], b"\1\2\xff", [1, 2, 255], None),
    ("_setEEPROMPage", (3, [9, 8]), "SET_EEPROM_PAGE", [3, 9, 8], b"\x28", -7012, None),
    ("_getEEPROMDevice", (1,), "GET_EEPROM_DEVICE", [1], b"\7", [7], None),
    ("_setEEPROMByte", (1, 2, 3), "SET_EEPROM_BYTE", [1, 2, 3], b"\0", 0, None),
    ("_setSerialNumber", ("SN01",), "SET_SERIAL_NUMBER", list(b"SN01"), b"\0", 0, None),
    ("_resetFactory", (), "RESET_FACTORY", [], b"\0", 0, None),
    ("_getThreads", (), "GET_THREADS", [], b"main;net\0", "main;net", "thread_info"),
    ("Sys_getPinModeInPort", (2,), "GET_PIN_MODE_OF_SLOT", [2], b"\2\3\x32\x94",
     ["DI", "DO", "UART", "ADC"], None),
    ("Net_getGateway", (), "GET_GATEWAY", [], b"\xc0\xa8\1\1", "192.168.1.1", "gateway"),
    ("Sys_getGateway", (), "GET_GATEWAY", [], b"\xc0\xa8\1\1", "192.168.1.1", "gateway"),
    ("_setGateway", ("10.0.0.1",), "SET_GATEWAY", [10, 0, 0, 1], b"\0", 0, None),
    ("Net_getIPAddrAndSubmask", (), "GET_IP", [], b"\xc0\xa8\1\x6e\xff\xff\xff\0",
     ["192.168.1.110", "255.255.255.0"], None),
    ("Sys_getIPAddrAndSubmask", (), "GET_IP", [], b"\xc0\xa8\1\x6e\xff\xff\xff\0",
     ["192.168.1.110", "255.255.255.0"], None),
    ("Net_setIPAddrAndSubmask", ("10.0.0.2",), "SET_IP", [10, 0, 0, 2, 255, 255, 255, 0], b"\0", 0, None),
    ("Sys_setIPAddrAndSubmask", ("10.0.0.2", "255.0.0.0"), "SET_IP", [10, 0, 0, 2, 255, 0, 0, 0], b"\x48", -7025, None),
    ("Net_getMACAddr", (), "GET_MAC", [], b"\0\x0a\xff\1\2\3", "0:a:ff:1:2:3", "mac_addr"),
    ("Sys_getMACAddr", (), "GET_MAC", [], b"\0\x0a\xff\1\2\3", "0:a:ff:1:2:3", "mac_addr"),
    ("_setMACAddr", ("0:a:ff:1:2:3",), "SET_MAC", [0, 10, 255, 1, 2, 3], b"\0", 0, None),
]


@pytest.mark.parametrize("operation, arguments, command, sent, reply, result, field", SYSTEM)
def test_system_and_network(box, call, operation, arguments, command, sent, reply, result, field):
    box.client_cmd.replies = {getattr(pyzvr, command): reply}
    assert call(box, operation, *arguments) == result
    assert box.client_cmd.sent == [(getattr(pyzvr, command), bytes(sent))]
    if field:
        assert getattr(box, field) == result


def test_pin_modes_are_kept(box, call):
    box.client_cmd.replies = {pyzvr.GET_PIN_MODE_OF_SLOT: b"\0\3\x21\x03"}
    assert call(box, "Sys_getPinModeInPort", 0) == ["Idle", "DI", "DO", "Disabled"]
    assert (box.num_of_pins, box.pin_mode_list) == (3, [1, 2, 3, 0])


F32 = pyzvr.convertF32To4U8
OK, PULSE, PWM, UDP = b"\0\0", b"\0\x1a", b"\0\x19", b"\x48"
READING = bytes([1, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, *F32(12.5), 9, 9])
SERVICES = [
    ("PWM_open", (1,), "OPEN_PWM", [1], PWM, -7009), ("PWM_start", (0,), "START_PWM", [0], OK, 0),
    ("PWM_stop", (0,), "STOP_PWM", [0], OK, 0), ("PWM_close", (1,), "CLOSE_PWM", [1], OK, 0),
    ("PWM_setFrequency", (1, 1000), "SET_PWM_FREQUENCY", [1, *F32(1000)], OK, 0),
    ("PWM_setDutyCycle", (0, 150.0), "SET_PWM_DUTY_CYCLE", [0, *F32(150)], OK, 0),
    ("Counter_open", (1,), "PULSE_OPEN", [1], PULSE, -7010), ("Counter_start", (0,), "PULSE_START", [0], OK, 0),
    ("_Counter_read", (1,), "PULSE_READ", [1], READING, [2**48 - 1, 12.5]),
    ("Counter_readPosition", (1,), "PULSE_READ", [1], READING, 2**48 - 1),
    ("Counter_readFrequency", (1,), "PULSE_READ", [1], READING, 12.5),
    ("Counter_stop", (0,), "PULSE_STOP", [0], OK, 0), ("Counter_close", (0,), "PULSE_CLOSE", [0], OK, 0),
    ("Counter_setPosition", (0, 0x1122334455667788), "PULSE_SET_VALUE", [0, *bytes.fromhex("334455667788")], OK, 0),
    ("Counter_setFreqWindow", (1, 0.5), "PULSE_SET_FRQ_WINDOW", [1, *F32(0.5)], OK, 0),
    ("Encoder_open", (0,), "ENCODER_OPEN", [0], OK, 0), ("Encoder_start", (0,), "ENCODER_START", [0], OK, 0),
    ("_Encoder_read", (0,), "ENCODER_READ", [0], READING, [-1, 12.5]),
    ("_Encoder_read", (0,), "ENCODER_READ", [0], bytes([0, 0, 0, 0, 0, 1, 2, *F32(-1)]), [258, -1.0]),
    ("Encoder_readPosition", (0,), "ENCODER_READ", [0], READING, -1),
    ("Encoder_readFrequency", (0,), "ENCODER_READ", [0], READING, 12.5),
    ("Encoder_stop", (0,), "ENCODER_STOP", [0], OK, 0), ("Encoder_close", (0,), "ENCODER_CLOSE", [0], OK, 0),
    ("Encoder_setPosition", (0, -1), "ENCODER_SET_VALUE", [0] + [255] * 6, OK, 0),
    ("Encoder_setDirection", (0, 5), "ENCODER_SET_DIR", [0, 1], OK, 0),
    ("Encoder_setDirection", (0, -1), "ENCODER_SET_DIR", [0, 0], OK, 0),
    ("Encoder_setFreqWindow", (0, 2), "ENCODER_SET_FRQ_WINDOW", [0, *F32(2)], OK, 0),
    ("Encoder_getDirection", (0,), "ENCODER_GET_DIR", [0], PULSE, 26),
    ("Wifi_setRedLED", (5,), "SET_AND_WRITE_DO", [0, 0, 1, 0, 1], b"", 0),
    ("Wifi_setRedLED", (-1,), "SET_AND_WRITE_DO", [0, 0, 1, 0, 0], b"", 0),
    ("Wifi_setGreenLED", (1,), "SET_AND_WRITE_DO", [0, 0, 2, 0, 2], b"", 0),
    ("Wifi_setBlueLED", (1,), "SET_AND_WRITE_DO", [0, 0, 4, 0, 4], b"", 0),
    ("Wifi_resetLED", (), "SET_AND_WRITE_DO", [0, 0, 7, 0, 0], b"", 0),
    ("Wifi_getPowerGoodStatus", (), "READ_AND_GET_DI", [1, 0, 1], b"\1\0\1", 1),
    ("Wifi_getPowerGoodStatus", (), "READ_AND_GET_DI", [1, 0, 1], b"\1\xff\xfe", 0),
    ("Wifi_getChargeStatus", (), "READ_AND_GET_DI", [1, 0, 2], b"\1\0\2", 1),
    ("_setWifiConfiguration", (3, 600), "SET_WIFI_CONFIGURATION", [0, 3, 2, 88], UDP, -7025),
    ("Wifi_getConfiguration", (), "GET_WIFI_CONFIGURATION", [], b"\0\3\2\x58", [3, 600]),
    ("_Wifi_setBandwidth", (0,), "SET_WIFI_BANDWIDTH", [1], b"\0", 0),
    ("_Wifi_setBandwidth", (7,), "SET_WIFI_BANDWIDTH", [7], b"\0", 0),
    ("Wifi_getWifiBandWidth", (), "GET_WIFI_BANDWIDTH", [], b"\4", ("bandwidth", 4)),
    ("Wifi_readRSSI", (), "GET_RSSI", [], b"\xc8", ("rssi", -56)),
    ("_Wifi_setAP", (), "SET_AP", [], b"\0", 0),
    ("Wifi_readBattery", (), "GET_BATTERY", [], b"\x10\4", ("battery", 4100)),
    ("_Wifi_readAcceleration", (), "READ_ACCELERATION", [], b"\0\1\0\2\xff\xff", [1, 2, 65535]),
    ("_Wifi_readThermo", (), "GET_THERMOMETER", [], b"\x0c\x80", ("thermo", 25.0)),
    ("_Wifi_readThermo", (), "GET_THERMOMETER", [], b"\xff\xc0", ("thermo", -0.5)),
    ("_Wifi_resetAIBuffer", (), "AI_RESET_BUFFER", [0], b"\0\x50", -7027),
    ("SNTP_syncNow", (), "SNTP_SYNC_NOW", [], UDP, -7025),
    ("Relay_read", (0, -1), "RELAY_READ", [0, 255], bytes([0, 0, 0, 0, 0, 1, 255, 255, 255, 255, 9]), [1, 2**32 - 1]),
    ("Relay_read", (0, 5), "RELAY_READ", [0, 5], b"\0\0\0\1\0\0", [65536]), ("Relay_read", (0, 0), "RELAY_READ", [0, 0], b"\0\x33", []),
    ("DPOT_readByChannel", (0, 4), "POT_READ", [0, 4], b"\0\4\0\0\3\xe8more", 1000),
    ("DPOT_writeByChannel", (0, 1, 470.5), "POT_WRITE_BY_CS", [0, 1, *F32(470.5)], b"\1\x2a", -7014),
    ("DPOT_writeAllChannel", (0, [1, 2.5]), "POT_WRITE_ALL_CS", [0, *F32(1), *F32(2.5)], OK, 0),
    ("DPOT_writeAllChannel", (0, ()), "POT_WRITE_ALL_CS", [0], OK, 0),
    ("SNTP_getSyncStatus", (), "SNTP_GET_SYNC_STATUS", [], b"\0synchronised\0x", "synchronised"),
    ("SNTP_getServerIP", (), "SNTP_GET_SERVER_IP", [0], b"\0\x0a\0\0\1\7", "10.0.0.1"),
    ("SNTP_setServerIP", (), "SNTP_SET_SERVER_IP", [0, 255, 255, 255, 255], b"\0", 0),
    ("SNTP_getPeriod", (), "SNTP_GET_SYNC_PERIOD", [], bytes(F32(3600)) + b"x", 3600.0),
    ("SNTP_setPeriod", (60,), "SNTP_SET_SYNC_PERIOD", F32(60), b"\0", 0),
    ("_SD_open", (), "SD_OPEN", [], b"\0", 0), ("_SD_close", (), "SD_CLOSE", [], b"\x50", -7027),
    ("SD_getStorage", (), "SD_GET_CAPACITY", [], b"\0\x7a\x12\0", 8000000),
    ("SD_openFile", ("a.txt", 2), "SD_OPEN_FILE", [2, 5, *b"a.txt"], b"\0", 0),
    ("SD_openFile", (["a", "b"], 0), "SD_OPEN_FILE", [0, 2, 97, 98], b"\0", 0),
    ("SD_writeFile", ("abc",), "SD_WRITE_FILE", [3, 97, 98, 99], b"\0", 0),
    ("SD_writeFile", (["a", "\xff"],), "SD_WRITE_FILE", [2, 97, 255], b"\0", 0),
    ("SD_readFile", (10,), "SD_READ_FILE", [11], b"\3ab\xff", ["a", "b", "\xff"]),
    ("SD_closeFile", (), "SD_CLOSE_FILE", [], b"\0", 0),
]


@pytest.mark.parametrize("operation, arguments, command, sent, reply, result", SERVICES)
def test_services_and_pulses(box, operation, arguments, command, sent, reply, result):
    # One awaitable form has a name of its own.
    twin = operation.replace("readAcceleration", "readAccleration") + "_async"
    field, result = result if isinstance(result, tuple) else (None, result)
    box.client_cmd.replies = {getattr(pyzvr, command): reply}
    for run in (lambda: getattr(box, operation)(*arguments), lambda: asyncio.run(getattr(box, twin)(*arguments))):
        assert run() == result
        assert box.client_cmd.sent.pop() == (getattr(pyzvr, command), bytes(sent)) and not box.client_cmd.sent
        if field:
            assert getattr(box, field) == result
            delattr(box, field)


def test_the_awaitable_edge_is_a_flag(box):
    box.client_cmd.replies = {pyzvr.PULSE_SET_EDGE: OK}
    assert box.Counter_setEdge(0, 7) == asyncio.run(box.Counter_setEdge_async(0, 7)) == 0
    asyncio.run(box.Counter_setEdge_async(1, -1))
    assert [data for _, data in box.client_cmd.sent] == [b"\0\7", b"\0\1", b"\1\0"]


def test_short_replies_fail_by_themselves_and_nothing_else(box, call):
    for operation, arguments, command, reply, failure in [
        ("_Counter_read", (0,), "PULSE_READ", b"\0\1\2", IndexError), ("PWM_open", (0,), "OPEN_PWM", b"\0", IndexError),
        ("Encoder_getDirection", (0,), "ENCODER_GET_DIR", b"", IndexError), ("Wifi_readRSSI", (), "GET_RSSI", b"", IndexError),
        ("SNTP_getServerIP", (), "SNTP_GET_SERVER_IP", b"\0\1\2", IndexError),
        ("SNTP_getPeriod", (), "SNTP_GET_SYNC_PERIOD", b"\0", IndexError),
        ("SD_readFile", (1,), "SD_READ_FILE", b"", IndexError), ("Net_getMACAddr", (), "GET_MAC", b"\0", IndexError)]:
        box.client_cmd.replies = {getattr(pyzvr, command): reply}
        with pytest.raises(failure):
            call(box, operation, *arguments)


LEVELS = b"\0\x01\xa5"
DIO = [
    ("DIO_loadStartup", (0,), "LOAD_DIO_STARTUP", [0, 1, 1, 1, 1, 1, 1], b"\0\0\1\0\2\0\3",
     ([1] + [0] * 7, [0, 1] + [0] * 6, [1, 1] + [0] * 6)),
    ("_DIO_saveStartup", (0, 1, 2, 3), "SAVE_DIO_STARTUP", [0, *U16(1), *U16(2), *U16(3)], b"\0\0", 0),
    ("_getDIOCurrent", (0, 259), "GET_DIO_CURRENT", [0, 1, 3, 1, 1, 1, 1, 1, 1], b"\0\0\1\0\0\0\0",
     ([1] + [0] * 7, [0] * 8, [0] * 8)),
    ("_setDIOCurrent", (0, 1, 2, 3, 4), "SET_DIO_CURRENT", [0, 0, 1, 0, 2, 0, 3, 0, 4], REFUSED, -7005),
    ("_toggleDIODirection", (0, 1, 2), "TOGGLE_DIO_DIR", [0, 0, 1, 0, 2], b"\0\0", 0),
    ("_getDIOState", (0, 65535), "GET_DIO_STATE", [0, 255, 255], LEVELS, [1, 0, 1, 0, 0, 1, 0, 1]),
    ("_setDIOState", (0, 1, 1), "SET_DIO_STATE", [0, 0, 1, 0, 1], b"\0\x32", -7015),
    ("_readDI", (0,), "READ_DI", [0, 0], b"\0\0", 0),
    ("_writeDO", (0,), "WRITE_DO", [0, 0], b"\0\0", 0),
    ("_readAndGetDI", (0, 1), "READ_AND_GET_DI", [0, 0, 1], LEVELS, [1, 0, 1, 0, 0, 1, 0, 1]),
    ("_setAndWriteDO", (0, 1, 1), "SET_AND_WRITE_DO", [0, 0, 1, 0, 1], LEVELS, [1, 0, 1, 0, 0, 1, 0, 1]),
    ("_DIO_setPortDI", (1,), "SET_SLOT_DI", [1, 0], b"\1\0", 0),
    ("_DIO_setPortDO", (0,), "SET_SLOT_DO", [0, 0], b"\0\0", 0),
    ("_DIO_setPortIdle", (0,), "SET_SLOT_IDLE", [0, 0], b"\0\0", 0),
    ("_toggleAndWriteDO", (0, 6), "TOGGLE_AND_WRITE_DO", [0, 0, 6], LEVELS, [1, 0, 1, 0, 0, 1, 0, 1]),
    ("_closeDIOInPins", (0, 5), "SET_DIO_CURRENT", [0, 0, 5, 0, 0, 0, 0, 0, 0], b"\0\0", 0),
    ("_closeDIOInPort", (0,), "SET_DIO_CURRENT", [0, 255, 255, 0, 0, 0, 0, 0, 0], b"\0\0", 0),
    ("DI_closePort", (1,), "SET_DIO_CURRENT", [1, 255, 255, 0, 0, 0, 0, 0, 0], b"\0\0", 0),
    ("DI_closePins", (0, [0, 2]), "SET_DIO_CURRENT", [0, 0, 5, 0, 0, 0, 0, 0, 0], b"\0\0", 0),
    ("DO_closePins", (0, 6), "SET_DIO_CURRENT", [0, 0, 6, 0, 0, 0, 0, 0, 0], b"\0\0", 0),
    ("DI_readPort", (0,), "READ_AND_GET_DI", [0, 255, 255], LEVELS, [1, 0, 1, 0, 0, 1, 0, 1]),
    ("DI_readPins", (0, [7, 1, 0]), "READ_AND_GET_DI", [0, 0, 131], LEVELS, [1, 0, 1]),
    ("DO_writePort", (0, [1, 0, 1]), "SET_AND_WRITE_DO", [0, 255, 255, 0, 5], LEVELS, 0),
    ("DO_writePort", (0, 0x1234), "SET_AND_WRITE_DO", [0, 255, 255, 0x12, 0x34], LEVELS, 0),
    ("DO_writePins", (0, [0, 2], [0, 7]), "SET_AND_WRITE_DO", [0, 0, 5, 0, 4], LEVELS, 0),
    ("DO_writePins", (0, 3, 1), "SET_AND_WRITE_DO", [0, 0, 3, 0, 1], LEVELS, 0),
    ("DO_togglePort", (0,), "TOGGLE_AND_WRITE_DO", [0, 255, 255], LEVELS, [1, 0, 1, 0, 0, 1, 0, 1]),
    ("DO_togglePins", (0, [9]), "TOGGLE_AND_WRITE_DO", [0, 2, 0], LEVELS, [1, 0, 1, 0, 0, 1, 0, 1]),
]


@pytest.mark.parametrize("operation, arguments, command, sent, reply, result", DIO)
def test_digital(bench, call, operation, arguments, command, sent, reply, result):
    bench.client_cmd.replies = {getattr(pyzvr, command): reply}
    assert call(bench, operation, *arguments) == result
    assert bench.client_cmd.sent == [(getattr(pyzvr, command), bytes(sent))]


ALL_IDLE, NONE_FREE = b"\0\x08\x11\x11\x11\x11", b"\0\x08\x44\x44\x44\x44"


@pytest.mark.parametrize("operation, arguments, mask, direction", [
    ("DI_openPort", (0,), 65535, 0), ("DI_openPins", (0, [0, 2]), 5, 0),
    ("DO_openPort", (0,), 65535, 65535), ("DO_openPins", (0, [0, 2]), 5, 65535), ("DO_openPins", (0, 5), 5, 65535)])
def test_opening_reads_the_pin_modes_first(bench, call, operation, arguments, mask, direction):
    bench.client_cmd.replies = {pyzvr.GET_PIN_MODE_OF_SLOT: ALL_IDLE, pyzvr.SET_DIO_CURRENT: REFUSED}
    assert call(bench, operation, *arguments) == -7005
    assert bench.client_cmd.sent == [
        (pyzvr.GET_PIN_MODE_OF_SLOT, b"\0"),
        (pyzvr.SET_DIO_CURRENT, bytes([0, *U16(mask), 255, 255, *U16(direction), 0, 0]))]
    bench.client_cmd.replies[pyzvr.GET_PIN_MODE_OF_SLOT] = NONE_FREE
    failure = pyzvr.DIPortNotAvaliableError if operation.startswith("DI") else pyzvr.DOPortNotAvaliableError
    with pytest.raises(failure):
        call(bench, operation, *arguments)
    assert len(bench.client_cmd.sent) == 3


REFUSALS = [
    ("DI_openPort", (9,), pyzvr.DIPortNotAvaliableError), ("DI_openPort", ("0",), pyzvr.InputTypeNotCorrectError),
    ("DI_openPins", (1, [0, 2]), pyzvr.PinsNotExistError), ("DI_openPins", (0, (0,)), pyzvr.InputTypeNotCorrectError),
    ("DI_openPins", (0, 5), TypeError), ("DI_closePins", (0, 5), TypeError), ("DI_readPins", (0, 5), TypeError),
    ("DI_readPort", (9,), pyzvr.DIPortNotAvaliableError), ("DO_openPort", (1,), pyzvr.DOPortNotAvaliableError),
    ("DO_openPins", (0, 0x100), pyzvr.PinsNotExistError), ("DO_closePort", (1,), pyzvr.DOPortNotAvaliableError),
    ("DO_writePort", (0, "1"), pyzvr.InputTypeNotCorrectError), ("DO_writePort", (0, 65536), OverflowError),
    ("DO_writePins", (0, [0, 1], [1]), pyzvr.PinsValueNotDefineError),
    ("DO_writePins", (0, 3, [1, 1]), pyzvr.InputTypeNotConsistentError),
    ("DO_togglePins", (1, [0]), pyzvr.DOPortNotAvaliableError), ("DO_togglePins", (0, 1 << 16), OverflowError),
    ("_DIO_setPortIdle", (1,), pyzvr.DOPortNotAvaliableError), ("DIO_loadStartup", (256,), ValueError),
    ("_setDIOCurrent", (0, -1, 0, 0, 0), OverflowError), ("_setDIOCurrent", (0, "1", 0, 0, 0), TypeError),
    ("Sys_setIdleMode", (3,), pyzvr.LatticePortNotAvaliableError), ("Sys_getMode", (0,), pyzvr.LatticePortNotAvaliableError),
    ("Sys_getMode", ("1",), pyzvr.InputTypeNotCorrectError), ("Sys_getPinModeInPort", (0.0,), pyzvr.InputTypeNotCorrectError),
    ("Sys_setRTC", (2024, 1, 1, 0, 0, "0"), pyzvr.InputTypeNotCorrectError), ("Sys_setRTC", (2200, 1, 1, 0, 0, 0), ValueError),
    ("_getEEPROMPage", (-1,), ValueError), ("Sys_setDeviceAlias", ("œ",), ValueError),
]


@pytest.mark.parametrize("operation, arguments, failure", REFUSALS)
def test_bad_arguments_fail_by_name_before_anything_is_sent(bench, call, operation, arguments, failure):
    with pytest.raises(failure):
        call(bench, operation, *arguments)
    assert bench.client_cmd.sent == []


@pytest.mark.parametrize("operation, arguments, failure", [
    ("_setGateway", (5,), pyzvr.InputTypeNotCorrectError), ("_setGateway", ("x",), OSError),
    ("Net_setIPAddrAndSubmask", ("1.2.3.4", None), pyzvr.InputTypeNotCorrectError), ("_setMACAddr", ("0:g",), ValueError),
    ("_setMACAddr", ("0:1:2:3:4:100",), ValueError), ("SNTP_setServerIP", (None,), pyzvr.InputTypeNotCorrectError),
    ("PWM_open", (2,), pyzvr.CounterChannelNotAvaliableError), ("PWM_setFrequency", (-1, 1), pyzvr.CounterChannelNotAvaliableError),
    ("PWM_setDutyCycle", (0, "1"), TypeError), ("PWM_setFrequency", (0, 1e39), OverflowError),
    ("Counter_open", (2,), pyzvr.PWMChannelNotAvaliableError), ("Counter_readPosition", (None,), pyzvr.PWMChannelNotAvaliableError),
    ("Counter_setEdge", (3, 1), pyzvr.PWMChannelNotAvaliableError), ("Counter_setPosition", (0, -1), OverflowError),
    ("Encoder_open", (1,), pyzvr.EncoderChannelNotAvaliableError), ("Encoder_setPosition", (0, 1 << 63), OverflowError),
    ("Encoder_setDirection", (0, "x"), TypeError), ("Wifi_setRedLED", ("x",), TypeError),
    ("Relay_open", (1,), pyzvr.RelayPortNotAvaliableError), ("Relay_close", ("0",), pyzvr.InputTypeNotCorrectError),
    ("Relay_read", (1, 0), pyzvr.RelayPortNotAvaliableError), ("Relay_read", (0, 6), pyzvr.RelayCounterIndexError),
    ("Relay_read", (0, -2), pyzvr.RelayCounterIndexError), ("Relay_read", (0, 1.0), pyzvr.InputTypeNotCorrectError),
    ("DPOT_open", (1,), pyzvr.DPOTPortNotAvaliableError), ("DPOT_close", ("0",), pyzvr.DPOTPortNotAvaliableError),
    ("DPOT_readByChannel", (0, 5), pyzvr.DPOTChannelNotAvaliableError), ("DPOT_readByChannel", (0, -1), pyzvr.DPOTChannelNotAvaliableError),
    ("DPOT_writeByChannel", (1, 0, 1), pyzvr.DPOTPortNotAvaliableError), ("DPOT_writeByChannel", (0, 0, "1"), TypeError),
    ("DPOT_writeAllChannel", (0, [1] * 5), pyzvr.DPOTChannelNotAvaliableError), ("DPOT_writeAllChannel", (0, [1, None]), TypeError),
    ("_Wifi_setBandwidth", (1.5,), pyzvr.InputTypeNotCorrectError), ("_Wifi_setBandwidth", (256,), ValueError),
    ("_setWifiConfiguration", (1, 65536), OverflowError), ("SD_openFile", (5, 0), pyzvr.InputTypeNotCorrectError),
    ("SD_openFile", ("a" * 256, 0), ValueError), ("SD_openFile", ("œ", 0), ValueError), ("SD_writeFile", ("a" * 256,), ValueError),
    ("SD_writeFile", ([65],), TypeError), ("SD_writeFile", (5,), TypeError), ("SD_writeFile", (("a",),), pyzvr.InputTypeNotCorrectError),
    ("SD_readFile", (255,), ValueError), ("SD_readFile", (-2,), ValueError)])
def test_bad_settings_fail_before_anything_is_sent(box, call, operation, arguments, failure):
    with pytest.raises(failure):
        call(box, operation, *arguments)
    assert box.client_cmd.sent == []


@pytest.mark.parametrize("operation", ["Relay_open", "Relay_close", "DPOT_open", "DPOT_close"])
def test_nothing_is_sent_to_open_relays_and_resistors(box, call, operation):
    assert call(box, operation, 0) == 0 and box.client_cmd.sent == []


def test_wifi_devices_count_years_from_2000(call):
    class WifiBox(pyzvr.WifiDevice, pyzvr.SystemModule, pyzvr.SystemModule_async):
        def _getDeviceName(self):
            return "Heron-Box"

    with WifiBox() as box:
        box.client_cmd = FakeClient(box)
        box.client_cmd.replies = {pyzvr.GET_DATE_TIME: bytes([24, 1, 2, 3, 4, 5])}
        assert call(box, "Sys_getRTC") == "2024-01-02, 03:04:05"


def test_models_of_fixed_function_open_and_close_without_traffic(call):
    class Mine(pyzvr.TarnDio):
        """A subclass counts as its model."""

    with Mine() as box:
        box.client_cmd = FakeClient(box)
        for side in ("DI", "DO"):
            for verb in ("open", "close"):
                assert call(box, f"{side}_{verb}Port", 99) == 0
                assert call(box, f"{side}_{verb}Pins", 99, "nonsense") == 0
        with pytest.raises(pyzvr.DIPortNotAvaliableError):
            call(box, "DI_readPort", 99)
        assert box.client_cmd.sent == [] and box.DI_getPinMap() == {1: [0, 1, 2, 3, 4, 5, 6, 7]}
        assert box.DO_getPinMap() == {0: [0, 1, 2, 3, 4, 5]} and box._getDeviceName() == "Tarn-Dio"
