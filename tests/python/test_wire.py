"""What each operation sends and what it makes of a reply, in both forms, at a fake client."""

import asyncio

import pytest
from cases import Exchange, operation_of
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


SYSTEM = [
    Exchange(
        "Sys_getDriverInfo", (), command="GET_DRIVER_INFO", sent=[0], reply=b"Tarn_3.2_x\0\0",
        result=["Tarn", "3.2", "x"],
    ),
    Exchange(
        "_getDriverInfo_dev", (7,), command="GET_DRIVER_INFO", sent=[7], reply=b"a_b", result="a_b",
        kept_in="driver_info",
    ),
    Exchange("Sys_getDeviceAlias", (), command="GET_DEV_ALIAS", sent=[], reply=b"bench\r\nrest\xff", result="bench"),
    Exchange("Sys_getDeviceAlias", (), command="GET_DEV_ALIAS", sent=[], reply=b"whole", result="whole"),
    Exchange("Sys_setDeviceAlias", ("Ab",), command="SET_DEV_ALIAS", sent=[65, 98], reply=b"\0", result=0),
    Exchange(
        "Sys_setRTC", (24, 1, 2, 3, 4, 5), command="SET_DATE_TIME", sent=[24, 1, 2, 3, 4, 5], reply=b"\0", result=0,
    ),
    Exchange(
        "Sys_setRTC", (2024, 1, 2, 3, 4, 5), command="SET_DATE_TIME", sent=[124, 1, 2, 3, 4, 5], reply=b"\x14",
        result=-7004,
    ),
    Exchange(
        "Sys_getRTC", (), command="GET_DATE_TIME", sent=[0], reply=bytes([124, 1, 2, 3, 4, 5]),
        result="2024-01-02, 03:04:05", kept_in="rtc_time",
    ),
    Exchange(
        "Sys_startRTCAlarm", (1, 2, 3, 4, 5), command="RTC_START_ALARM", sent=[0, 1, 2, 3, 4, 5], reply=b"\0\x15",
        result=21,
    ),
    Exchange("Sys_stopRTCAlarm", (), command="RTC_STOP_ALARM", sent=[0], reply=b"\0\0", result=0),
    Exchange("_Sys_getRTCAlarmState", (), command="RTC_GET_ALARM_STATE", sent=[0], reply=b"\0\1", result="on"),
    Exchange("_Sys_getRTCAlarmState", (), command="RTC_GET_ALARM_STATE", sent=[0], reply=b"\0\2", result="off"),
    Exchange(
        "_Sys_getRTCAlarmConfig", (), command="RTC_GET_ALARM_CONFIG", sent=[0], reply=bytes(range(7)),
        result="0001-02-03, 04:05:06",
    ),
    Exchange(
        "Sys_getSerialNumber", (), command="GET_SERIAL_NUMBER", sent=[], reply=b"SN01\0\0\0\0more", result="SN01",
        kept_in="serial_number",
    ),
    Exchange("Sys_reboot", (), command="REBOOT", sent=[250], reply=b"\x50", result=-7027),
    Exchange("_Sys_rebootOnBootloader", (), command="REBOOT_ON_BOOTLOADER", sent=[251], reply=b"\0", result=0),
    Exchange("Sys_getMode", (4,), command="GET_SLOT_MODE", sent=[], reply=b"\x08\x10\x19\x02\x36", result="Switch"),
    Exchange("Sys_getMode", (2,), command="GET_SLOT_MODE", sent=[], reply=b"\x08\x10\x19\x02\x36", result="Idle"),
    Exchange("Sys_setIdleMode", (1,), command="SET_SLOT_MODE", sent=[0, 0], reply=b"\0\0", result=0),
    Exchange("Sys_setDIMode", (2,), command="SET_SLOT_MODE", sent=[2, 1], reply=b"\2\x0a", result=10),
    Exchange("Sys_setDOMode", (4,), command="SET_SLOT_MODE", sent=[6, 2], reply=b"\6\0", result=0),
    Exchange("Sys_setDIOMode", (1,), command="SET_SLOT_MODE", sent=[0, 3], reply=b"\0\0", result=0),
    Exchange("Sys_setMotionMode", (1,), command="SET_SLOT_MODE", sent=[0, 4], reply=b"\0\0", result=0),
    Exchange("Sys_setAIOMode", (1,), command="SET_SLOT_MODE", sent=[0, 5], reply=b"\0\0", result=0),
    Exchange("Sys_setSwitchMode", (1,), command="SET_SLOT_MODE", sent=[0, 6], reply=b"\0\0", result=0),
    Exchange("_getEEPROMPage", (3,), command="GET_EEPROM_PAGE", sent=[3], reply=b"\1\2\xff", result=[1, 2, 255]),
    Exchange("_setEEPROMPage", (3, [9, 8]), command="SET_EEPROM_PAGE", sent=[3, 9, 8], reply=b"\x28", result=-7012),
    Exchange("_getEEPROMDevice", (1,), command="GET_EEPROM_DEVICE", sent=[1], reply=b"\7", result=[7]),
    Exchange("_setEEPROMByte", (1, 2, 3), command="SET_EEPROM_BYTE", sent=[1, 2, 3], reply=b"\0", result=0),
    Exchange("_setSerialNumber", ("SN01",), command="SET_SERIAL_NUMBER", sent=list(b"SN01"), reply=b"\0", result=0),
    Exchange("_resetFactory", (), command="RESET_FACTORY", sent=[], reply=b"\0", result=0),
    Exchange(
        "_getThreads", (), command="GET_THREADS", sent=[], reply=b"main;net\0", result="main;net",
        kept_in="thread_info",
    ),
    Exchange(
        "Sys_getPinModeInPort", (2,), command="GET_PIN_MODE_OF_SLOT", sent=[2], reply=b"\2\3\x32\x94",
        result=["DI", "DO", "UART", "ADC"],
    ),
    Exchange(
        "Net_getGateway", (), command="GET_GATEWAY", sent=[], reply=b"\xc0\xa8\1\1", result="192.168.1.1",
        kept_in="gateway",
    ),
    Exchange(
        "Sys_getGateway", (), command="GET_GATEWAY", sent=[], reply=b"\xc0\xa8\1\1", result="192.168.1.1",
        kept_in="gateway",
    ),
    Exchange("_setGateway", ("10.0.0.1",), command="SET_GATEWAY", sent=[10, 0, 0, 1], reply=b"\0", result=0),
    Exchange(
        "Net_getIPAddrAndSubmask", (), command="GET_IP", sent=[], reply=b"\xc0\xa8\1\x6e\xff\xff\xff\0",
        result=["192.168.1.110", "255.255.255.0"],
    ),
    Exchange(
        "Sys_getIPAddrAndSubmask", (), command="GET_IP", sent=[], reply=b"\xc0\xa8\1\x6e\xff\xff\xff\0",
        result=["192.168.1.110", "255.255.255.0"],
    ),
    Exchange(
        "Net_setIPAddrAndSubmask", ("10.0.0.2",), command="SET_IP", sent=[10, 0, 0, 2, 255, 255, 255, 0], reply=b"\0",
        result=0,
    ),
    Exchange(
        "Sys_setIPAddrAndSubmask", ("10.0.0.2", "255.0.0.0"), command="SET_IP", sent=[10, 0, 0, 2, 255, 0, 0, 0],
        reply=b"\x48", result=-7025,
    ),
    Exchange(
        "Net_getMACAddr", (), command="GET_MAC", sent=[], reply=b"\0\x0a\xff\1\2\3", result="0:a:ff:1:2:3",
        kept_in="mac_addr",
    ),
    Exchange(
        "Sys_getMACAddr", (), command="GET_MAC", sent=[], reply=b"\0\x0a\xff\1\2\3", result="0:a:ff:1:2:3",
        kept_in="mac_addr",
    ),
    Exchange("_setMACAddr", ("0:a:ff:1:2:3",), command="SET_MAC", sent=[0, 10, 255, 1, 2, 3], reply=b"\0", result=0),
]


@pytest.mark.parametrize("case", SYSTEM, ids=operation_of)
def test_system_and_network(box, call, case):
    box.client_cmd.replies = {getattr(pyzvr, case.command): case.reply}
    assert call(box, case.operation, *case.arguments) == case.result
    assert box.client_cmd.sent == [(getattr(pyzvr, case.command), bytes(case.sent))]
    if case.kept_in:
        assert getattr(box, case.kept_in) == case.result


def test_pin_modes_are_kept(box, call):
    box.client_cmd.replies = {pyzvr.GET_PIN_MODE_OF_SLOT: b"\0\3\x21\x03"}
    assert call(box, "Sys_getPinModeInPort", 0) == ["Idle", "DI", "DO", "Disabled"]
    assert (box.num_of_pins, box.pin_mode_list) == (3, [1, 2, 3, 0])


F32 = pyzvr.convertF32To4U8
OK, PULSE, PWM, UDP = b"\0\0", b"\0\x1a", b"\0\x19", b"\x48"
READING = bytes([1, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, *F32(12.5), 9, 9])
SERVICES = [
    Exchange("PWM_open", (1,), command="OPEN_PWM", sent=[1], reply=PWM, result=-7009),
    Exchange("PWM_start", (0,), command="START_PWM", sent=[0], reply=OK, result=0),
    Exchange("PWM_stop", (0,), command="STOP_PWM", sent=[0], reply=OK, result=0),
    Exchange("PWM_close", (1,), command="CLOSE_PWM", sent=[1], reply=OK, result=0),
    Exchange("PWM_setFrequency", (1, 1000), command="SET_PWM_FREQUENCY", sent=[1, *F32(1000)], reply=OK, result=0),
    Exchange("PWM_setDutyCycle", (0, 150.0), command="SET_PWM_DUTY_CYCLE", sent=[0, *F32(150)], reply=OK, result=0),
    Exchange("Counter_open", (1,), command="PULSE_OPEN", sent=[1], reply=PULSE, result=-7010),
    Exchange("Counter_start", (0,), command="PULSE_START", sent=[0], reply=OK, result=0),
    Exchange("_Counter_read", (1,), command="PULSE_READ", sent=[1], reply=READING, result=[2**48 - 1, 12.5]),
    Exchange("Counter_readPosition", (1,), command="PULSE_READ", sent=[1], reply=READING, result=2**48 - 1),
    Exchange("Counter_readFrequency", (1,), command="PULSE_READ", sent=[1], reply=READING, result=12.5),
    Exchange("Counter_stop", (0,), command="PULSE_STOP", sent=[0], reply=OK, result=0),
    Exchange("Counter_close", (0,), command="PULSE_CLOSE", sent=[0], reply=OK, result=0),
    Exchange("Counter_setPosition", (0, 0x1122334455667788),
             command="PULSE_SET_VALUE",
             sent=[0, *bytes.fromhex("334455667788")],
             reply=OK,
             result=0,
             ),
    Exchange("Counter_setFreqWindow", (1, 0.5),
             command="PULSE_SET_FRQ_WINDOW",
             sent=[1, *F32(0.5)],
             reply=OK,
             result=0,
             ),
    Exchange("Encoder_open", (0,), command="ENCODER_OPEN", sent=[0], reply=OK, result=0),
    Exchange("Encoder_start", (0,), command="ENCODER_START", sent=[0], reply=OK, result=0),
    Exchange("_Encoder_read", (0,), command="ENCODER_READ", sent=[0], reply=READING, result=[-1, 12.5]),
    Exchange("_Encoder_read", (0,),
             command="ENCODER_READ",
             sent=[0],
             reply=bytes([0, 0, 0, 0, 0, 1, 2, *F32(-1)]),
             result=[258, -1.0],
             ),
    Exchange("Encoder_readPosition", (0,), command="ENCODER_READ", sent=[0], reply=READING, result=-1),
    Exchange("Encoder_readFrequency", (0,), command="ENCODER_READ", sent=[0], reply=READING, result=12.5),
    Exchange("Encoder_stop", (0,), command="ENCODER_STOP", sent=[0], reply=OK, result=0),
    Exchange("Encoder_close", (0,), command="ENCODER_CLOSE", sent=[0], reply=OK, result=0),
    Exchange("Encoder_setPosition", (0, -1), command="ENCODER_SET_VALUE", sent=[0] + [255] * 6, reply=OK, result=0),
    Exchange("Encoder_setDirection", (0, 5), command="ENCODER_SET_DIR", sent=[0, 1], reply=OK, result=0),
    Exchange("Encoder_setDirection", (0, -1), command="ENCODER_SET_DIR", sent=[0, 0], reply=OK, result=0),
    Exchange("Encoder_setFreqWindow", (0, 2), command="ENCODER_SET_FRQ_WINDOW", sent=[0, *F32(2)], reply=OK, result=0,
             ),
    Exchange("Encoder_getDirection", (0,), command="ENCODER_GET_DIR", sent=[0], reply=PULSE, result=26),
    Exchange("Wifi_setRedLED", (5,), command="SET_AND_WRITE_DO", sent=[0, 0, 1, 0, 1], reply=b"", result=0),
    Exchange("Wifi_setRedLED", (-1,), command="SET_AND_WRITE_DO", sent=[0, 0, 1, 0, 0], reply=b"", result=0),
    Exchange("Wifi_setGreenLED", (1,), command="SET_AND_WRITE_DO", sent=[0, 0, 2, 0, 2], reply=b"", result=0),
    Exchange("Wifi_setBlueLED", (1,), command="SET_AND_WRITE_DO", sent=[0, 0, 4, 0, 4], reply=b"", result=0),
    Exchange("Wifi_resetLED", (), command="SET_AND_WRITE_DO", sent=[0, 0, 7, 0, 0], reply=b"", result=0),
    Exchange("Wifi_getPowerGoodStatus", (), command="READ_AND_GET_DI", sent=[1, 0, 1], reply=b"\1\0\1", result=1),
    Exchange("Wifi_getPowerGoodStatus", (), command="READ_AND_GET_DI", sent=[1, 0, 1], reply=b"\1\xff\xfe", result=0),
    Exchange("Wifi_getChargeStatus", (), command="READ_AND_GET_DI", sent=[1, 0, 2], reply=b"\1\0\2", result=1),
    Exchange("_setWifiConfiguration", (3, 600),
             command="SET_WIFI_CONFIGURATION",
             sent=[0, 3, 2, 88],
             reply=UDP,
             result=-7025,
             ),
    Exchange("Wifi_getConfiguration", (),
             command="GET_WIFI_CONFIGURATION",
             sent=[],
             reply=b"\0\3\2\x58",
             result=[3, 600],
             ),
    Exchange("_Wifi_setBandwidth", (0,), command="SET_WIFI_BANDWIDTH", sent=[1], reply=b"\0", result=0),
    Exchange("_Wifi_setBandwidth", (7,), command="SET_WIFI_BANDWIDTH", sent=[7], reply=b"\0", result=0),
    Exchange("Wifi_getWifiBandWidth", (),
             command="GET_WIFI_BANDWIDTH",
             sent=[],
             reply=b"\4",
             result=4,
             kept_in="bandwidth",
             ),
    Exchange("Wifi_readRSSI", (), command="GET_RSSI", sent=[], reply=b"\xc8", result=-56, kept_in="rssi"),
    Exchange("_Wifi_setAP", (), command="SET_AP", sent=[], reply=b"\0", result=0),
    Exchange("Wifi_readBattery", (), command="GET_BATTERY", sent=[], reply=b"\x10\4", result=4100, kept_in="battery"),
    Exchange("_Wifi_readAcceleration", (),
             command="READ_ACCELERATION",
             sent=[],
             reply=b"\0\1\0\2\xff\xff",
             result=[1, 2, 65535],
             ),
    Exchange("_Wifi_readThermo", (),
             command="GET_THERMOMETER",
             sent=[],
             reply=b"\x0c\x80",
             result=25.0,
             kept_in="thermo"),
    Exchange("_Wifi_readThermo", (),
             command="GET_THERMOMETER",
             sent=[],
             reply=b"\xff\xc0",
             result=-0.5,
             kept_in="thermo"),
    Exchange("_Wifi_resetAIBuffer", (), command="AI_RESET_BUFFER", sent=[0], reply=b"\0\x50", result=-7027),
    Exchange("SNTP_syncNow", (), command="SNTP_SYNC_NOW", sent=[], reply=UDP, result=-7025),
    Exchange("Relay_read", (0, -1),
             command="RELAY_READ",
             sent=[0, 255],
             reply=bytes([0, 0, 0, 0, 0, 1, 255, 255, 255, 255, 9]),
             result=[1, 2**32 - 1],
             ),
    Exchange("Relay_read", (0, 5), command="RELAY_READ", sent=[0, 5], reply=b"\0\0\0\1\0\0", result=[65536]),
    Exchange("Relay_read", (0, 0), command="RELAY_READ", sent=[0, 0], reply=b"\0\x33", result=[]),
    Exchange("DPOT_readByChannel", (0, 4), command="POT_READ", sent=[0, 4], reply=b"\0\4\0\0\3\xe8more", result=1000),
    Exchange("DPOT_writeByChannel", (0, 1, 470.5),
             command="POT_WRITE_BY_CS",
             sent=[0, 1, *F32(470.5)],
             reply=b"\1\x2a",
             result=-7014,
             ),
    Exchange("DPOT_writeAllChannel", (0, [1, 2.5]),
             command="POT_WRITE_ALL_CS",
             sent=[0, *F32(1), *F32(2.5)],
             reply=OK,
             result=0,
             ),
    Exchange("DPOT_writeAllChannel", (0, ()), command="POT_WRITE_ALL_CS", sent=[0], reply=OK, result=0),
    Exchange("SNTP_getSyncStatus", (),
             command="SNTP_GET_SYNC_STATUS",
             sent=[],
             reply=b"\0synchronised\0x",
             result="synchronised",
             ),
    Exchange("SNTP_getServerIP", (),
             command="SNTP_GET_SERVER_IP",
             sent=[0],
             reply=b"\0\x0a\0\0\1\7",
             result="10.0.0.1",
             ),
    Exchange("SNTP_setServerIP", (),
             command="SNTP_SET_SERVER_IP",
             sent=[0, 255, 255, 255, 255],
             reply=b"\0",
             result=0,
             ),
    Exchange("SNTP_getPeriod", (),
             command="SNTP_GET_SYNC_PERIOD",
             sent=[],
             reply=bytes(F32(3600)) + b"x",
             result=3600.0,
             ),
    Exchange("SNTP_setPeriod", (60,), command="SNTP_SET_SYNC_PERIOD", sent=F32(60), reply=b"\0", result=0),
    Exchange("_SD_open", (), command="SD_OPEN", sent=[], reply=b"\0", result=0),
    Exchange("_SD_close", (), command="SD_CLOSE", sent=[], reply=b"\x50", result=-7027),
    Exchange("SD_getStorage", (), command="SD_GET_CAPACITY", sent=[], reply=b"\0\x7a\x12\0", result=8000000),
    Exchange("SD_openFile", ("a.txt", 2), command="SD_OPEN_FILE", sent=[2, 5, *b"a.txt"], reply=b"\0", result=0),
    Exchange("SD_openFile", (["a", "b"], 0), command="SD_OPEN_FILE", sent=[0, 2, 97, 98], reply=b"\0", result=0),
    Exchange("SD_writeFile", ("abc",), command="SD_WRITE_FILE", sent=[3, 97, 98, 99], reply=b"\0", result=0),
    Exchange("SD_writeFile", (["a", "\xff"],), command="SD_WRITE_FILE", sent=[2, 97, 255], reply=b"\0", result=0),
    Exchange("SD_readFile", (10,), command="SD_READ_FILE", sent=[11], reply=b"\3ab\xff", result=["a", "b", "\xff"]),
    Exchange("SD_closeFile", (), command="SD_CLOSE_FILE", sent=[], reply=b"\0", result=0),
]


@pytest.mark.parametrize("case", SERVICES, ids=operation_of)
def test_services_and_pulses(box, case):
    # One awaitable form has a name of its own.
    twin = case.operation.replace("readAcceleration", "readAccleration") + "_async"
    box.client_cmd.replies = {getattr(pyzvr, case.command): case.reply}
    for run in (lambda: getattr(box, case.operation)
                (*case.arguments), lambda: asyncio.run(getattr(box, twin)(*case.arguments))):
        assert run() == case.result
        assert box.client_cmd.sent.pop() == (getattr(pyzvr, case.command), bytes(case.sent)) and not box.client_cmd.sent
        if case.kept_in:
            assert getattr(box, case.kept_in) == case.result
            delattr(box, case.kept_in)


def test_the_awaitable_edge_is_a_flag(box):
    box.client_cmd.replies = {pyzvr.PULSE_SET_EDGE: OK}
    assert box.Counter_setEdge(0, 7) == asyncio.run(box.Counter_setEdge_async(0, 7)) == 0
    asyncio.run(box.Counter_setEdge_async(1, -1))
    assert [data for _, data in box.client_cmd.sent] == [b"\0\7", b"\0\1", b"\1\0"]


def test_short_replies_fail_by_themselves_and_nothing_else(box, call):
    for operation, arguments, command, reply, failure in [
        ("_Counter_read", (0,), "PULSE_READ", b"\0\1\2", IndexError),
        ("PWM_open", (0,), "OPEN_PWM", b"\0", IndexError),
        ("Encoder_getDirection", (0,), "ENCODER_GET_DIR", b"", IndexError),
        ("Wifi_readRSSI", (), "GET_RSSI", b"", IndexError),
        ("SNTP_getServerIP", (), "SNTP_GET_SERVER_IP", b"\0\1\2", IndexError),
        ("SNTP_getPeriod", (), "SNTP_GET_SYNC_PERIOD", b"\0", IndexError),
        ("SD_readFile", (1,), "SD_READ_FILE", b"", IndexError), ("Net_getMACAddr", (), "GET_MAC", b"\0", IndexError)
    ]:
        box.client_cmd.replies = {getattr(pyzvr, command): reply}
        with pytest.raises(failure):
            call(box, operation, *arguments)


LEVELS = b"\0\x01\xa5"
DIO = [
    Exchange(
        "DIO_loadStartup", (0,), command="LOAD_DIO_STARTUP", sent=[0, 1, 1, 1, 1, 1, 1], reply=b"\0\0\1\0\2\0\3",
        result=([1] + [0] * 7, [0, 1] + [0] * 6, [1, 1] + [0] * 6),
    ),
    Exchange(
        "_DIO_saveStartup", (0, 1, 2, 3), command="SAVE_DIO_STARTUP", sent=[0, *U16(1), *U16(2), *U16(3)],
        reply=b"\0\0", result=0,
    ),
    Exchange(
        "_getDIOCurrent", (0, 259), command="GET_DIO_CURRENT", sent=[0, 1, 3, 1, 1, 1, 1, 1, 1],
        reply=b"\0\0\1\0\0\0\0", result=([1] + [0] * 7, [0] * 8, [0] * 8),
    ),
    Exchange(
        "_setDIOCurrent", (0, 1, 2, 3, 4), command="SET_DIO_CURRENT", sent=[0, 0, 1, 0, 2, 0, 3, 0, 4], reply=REFUSED,
        result=-7005,
    ),
    Exchange(
        "_toggleDIODirection", (0, 1, 2), command="TOGGLE_DIO_DIR", sent=[0, 0, 1, 0, 2], reply=b"\0\0", result=0,
    ),
    Exchange(
        "_getDIOState", (0, 65535), command="GET_DIO_STATE", sent=[0, 255, 255], reply=LEVELS,
        result=[1, 0, 1, 0, 0, 1, 0, 1],
    ),
    Exchange("_setDIOState", (0, 1, 1), command="SET_DIO_STATE", sent=[0, 0, 1, 0, 1], reply=b"\0\x32", result=-7015),
    Exchange("_readDI", (0,), command="READ_DI", sent=[0, 0], reply=b"\0\0", result=0),
    Exchange("_writeDO", (0,), command="WRITE_DO", sent=[0, 0], reply=b"\0\0", result=0),
    Exchange(
        "_readAndGetDI", (0, 1), command="READ_AND_GET_DI", sent=[0, 0, 1], reply=LEVELS,
        result=[1, 0, 1, 0, 0, 1, 0, 1],
    ),
    Exchange(
        "_setAndWriteDO", (0, 1, 1), command="SET_AND_WRITE_DO", sent=[0, 0, 1, 0, 1], reply=LEVELS,
        result=[1, 0, 1, 0, 0, 1, 0, 1],
    ),
    Exchange("_DIO_setPortDI", (1,), command="SET_SLOT_DI", sent=[1, 0], reply=b"\1\0", result=0),
    Exchange("_DIO_setPortDO", (0,), command="SET_SLOT_DO", sent=[0, 0], reply=b"\0\0", result=0),
    Exchange("_DIO_setPortIdle", (0,), command="SET_SLOT_IDLE", sent=[0, 0], reply=b"\0\0", result=0),
    Exchange(
        "_toggleAndWriteDO", (0, 6), command="TOGGLE_AND_WRITE_DO", sent=[0, 0, 6], reply=LEVELS,
        result=[1, 0, 1, 0, 0, 1, 0, 1],
    ),
    Exchange(
        "_closeDIOInPins", (0, 5), command="SET_DIO_CURRENT", sent=[0, 0, 5, 0, 0, 0, 0, 0, 0], reply=b"\0\0",
        result=0,
    ),
    Exchange(
        "_closeDIOInPort", (0,), command="SET_DIO_CURRENT", sent=[0, 255, 255, 0, 0, 0, 0, 0, 0], reply=b"\0\0",
        result=0,
    ),
    Exchange(
        "DI_closePort", (1,), command="SET_DIO_CURRENT", sent=[1, 255, 255, 0, 0, 0, 0, 0, 0], reply=b"\0\0",
        result=0,
    ),
    Exchange(
        "DI_closePins", (0, [0, 2]), command="SET_DIO_CURRENT", sent=[0, 0, 5, 0, 0, 0, 0, 0, 0], reply=b"\0\0",
        result=0,
    ),
    Exchange(
        "DO_closePins", (0, 6), command="SET_DIO_CURRENT", sent=[0, 0, 6, 0, 0, 0, 0, 0, 0], reply=b"\0\0", result=0,
    ),
    Exchange(
        "DI_readPort", (0,), command="READ_AND_GET_DI", sent=[0, 255, 255], reply=LEVELS,
        result=[1, 0, 1, 0, 0, 1, 0, 1],
    ),
    Exchange(
        "DI_readPins", (0, [7, 1, 0]), command="READ_AND_GET_DI", sent=[0, 0, 131], reply=LEVELS, result=[1, 0, 1],
    ),
    Exchange(
        "DO_writePort", (0, [1, 0, 1]), command="SET_AND_WRITE_DO", sent=[0, 255, 255, 0, 5], reply=LEVELS, result=0,
    ),
    Exchange(
        "DO_writePort", (0, 0x1234), command="SET_AND_WRITE_DO", sent=[0, 255, 255, 0x12, 0x34], reply=LEVELS,
        result=0,
    ),
    Exchange(
        "DO_writePins", (0, [0, 2], [0, 7]), command="SET_AND_WRITE_DO", sent=[0, 0, 5, 0, 4], reply=LEVELS, result=0,
    ),
    Exchange("DO_writePins", (0, 3, 1), command="SET_AND_WRITE_DO", sent=[0, 0, 3, 0, 1], reply=LEVELS, result=0),
    Exchange(
        "DO_togglePort", (0,), command="TOGGLE_AND_WRITE_DO", sent=[0, 255, 255], reply=LEVELS,
        result=[1, 0, 1, 0, 0, 1, 0, 1],
    ),
    Exchange(
        "DO_togglePins", (0, [9]), command="TOGGLE_AND_WRITE_DO", sent=[0, 2, 0], reply=LEVELS,
        result=[1, 0, 1, 0, 0, 1, 0, 1],
    ),
]


@pytest.mark.parametrize("case", DIO, ids=operation_of)
def test_digital(bench, call, case):
    bench.client_cmd.replies = {getattr(pyzvr, case.command): case.reply}
    assert call(bench, case.operation, *case.arguments) == case.result
    assert bench.client_cmd.sent == [(getattr(pyzvr, case.command), bytes(case.sent))]


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


REFUSALS = [("DI_openPort", (9,), pyzvr.DIPortNotAvaliableError),
            ("DI_openPort", ("0",), pyzvr.InputTypeNotCorrectError),
            ("DI_openPins", (1, [0, 2]), pyzvr.PinsNotExistError),
            ("DI_openPins", (0, (0,)), pyzvr.InputTypeNotCorrectError), ("DI_openPins", (0, 5), TypeError),
            ("DI_closePins", (0, 5), TypeError), ("DI_readPins", (0, 5), TypeError),
            ("DI_readPort", (9,), pyzvr.DIPortNotAvaliableError),
            ("DO_openPort", (1,), pyzvr.DOPortNotAvaliableError), ("DO_openPins", (0, 0x100), pyzvr.PinsNotExistError),
            ("DO_closePort", (1,), pyzvr.DOPortNotAvaliableError),
            ("DO_writePort", (0, "1"), pyzvr.InputTypeNotCorrectError), ("DO_writePort", (0, 65536), OverflowError),
            ("DO_writePins", (0, [0, 1], [1]), pyzvr.PinsValueNotDefineError),
            ("DO_writePins", (0, 3, [1, 1]), pyzvr.InputTypeNotConsistentError),
            ("DO_togglePins", (1, [0]), pyzvr.DOPortNotAvaliableError), ("DO_togglePins", (0, 1 << 16), OverflowError),
            ("_DIO_setPortIdle", (1,), pyzvr.DOPortNotAvaliableError), ("DIO_loadStartup", (256,), ValueError),
            ("_setDIOCurrent", (0, -1, 0, 0, 0), OverflowError), ("_setDIOCurrent", (0, "1", 0, 0, 0), TypeError),
            ("Sys_setIdleMode", (3,), pyzvr.LatticePortNotAvaliableError),
            ("Sys_getMode", (0,), pyzvr.LatticePortNotAvaliableError),
            ("Sys_getMode", ("1",), pyzvr.InputTypeNotCorrectError),
            ("Sys_getPinModeInPort", (0.0,), pyzvr.InputTypeNotCorrectError),
            ("Sys_setRTC", (2024, 1, 1, 0, 0, "0"), pyzvr.InputTypeNotCorrectError),
            ("Sys_setRTC", (2200, 1, 1, 0, 0, 0), ValueError), ("_getEEPROMPage", (-1,), ValueError),
            ("Sys_setDeviceAlias", ("œ",), ValueError), ]


@pytest.mark.parametrize("operation, arguments, failure", REFUSALS)
def test_bad_arguments_fail_by_name_before_anything_is_sent(bench, call, operation, arguments, failure):
    with pytest.raises(failure):
        call(bench, operation, *arguments)
    assert bench.client_cmd.sent == []


@pytest.mark.parametrize("operation, arguments, failure",
                         [("_setGateway", (5,), pyzvr.InputTypeNotCorrectError), ("_setGateway", ("x",), OSError),
                          ("Net_setIPAddrAndSubmask", ("1.2.3.4", None), pyzvr.InputTypeNotCorrectError),
                          ("_setMACAddr", ("0:g",), ValueError), ("_setMACAddr", ("0:1:2:3:4:100",), ValueError),
                          ("SNTP_setServerIP", (None,), pyzvr.InputTypeNotCorrectError),
                          ("PWM_open", (2,), pyzvr.CounterChannelNotAvaliableError),
                          ("PWM_setFrequency", (-1, 1), pyzvr.CounterChannelNotAvaliableError),
                          ("PWM_setDutyCycle", (0, "1"), TypeError), ("PWM_setFrequency", (0, 1e39), OverflowError),
                          ("Counter_open", (2,), pyzvr.PWMChannelNotAvaliableError),
                          ("Counter_readPosition", (None,), pyzvr.PWMChannelNotAvaliableError),
                          ("Counter_setEdge", (3, 1), pyzvr.PWMChannelNotAvaliableError),
                          ("Counter_setPosition", (0, -1), OverflowError),
                          ("Encoder_open", (1,), pyzvr.EncoderChannelNotAvaliableError),
                          ("Encoder_setPosition", (0, 1 << 63), OverflowError),
                          ("Encoder_setDirection", (0, "x"), TypeError), ("Wifi_setRedLED", ("x",), TypeError),
                          ("Relay_open", (1,), pyzvr.RelayPortNotAvaliableError),
                          ("Relay_close", ("0",), pyzvr.InputTypeNotCorrectError),
                          ("Relay_read", (1, 0), pyzvr.RelayPortNotAvaliableError),
                          ("Relay_read", (0, 6), pyzvr.RelayCounterIndexError),
                          ("Relay_read", (0, -2), pyzvr.RelayCounterIndexError),
                          ("Relay_read", (0, 1.0), pyzvr.InputTypeNotCorrectError),
                          ("DPOT_open", (1,), pyzvr.DPOTPortNotAvaliableError),
                          ("DPOT_close", ("0",), pyzvr.DPOTPortNotAvaliableError),
                          ("DPOT_readByChannel", (0, 5), pyzvr.DPOTChannelNotAvaliableError),
                          ("DPOT_readByChannel", (0, -1), pyzvr.DPOTChannelNotAvaliableError),
                          ("DPOT_writeByChannel", (1, 0, 1), pyzvr.DPOTPortNotAvaliableError),
                          ("DPOT_writeByChannel", (0, 0, "1"), TypeError),
                          ("DPOT_writeAllChannel", (0, [1] * 5), pyzvr.DPOTChannelNotAvaliableError),
                          ("DPOT_writeAllChannel", (0, [1, None]), TypeError),
                          ("_Wifi_setBandwidth", (1.5,), pyzvr.InputTypeNotCorrectError),
                          ("_Wifi_setBandwidth", (256,), ValueError),
                          ("_setWifiConfiguration", (1, 65536), OverflowError),
                          ("SD_openFile", (5, 0), pyzvr.InputTypeNotCorrectError),
                          ("SD_openFile", ("a" * 256, 0), ValueError), ("SD_openFile", ("œ", 0), ValueError),
                          ("SD_writeFile", ("a" * 256,), ValueError), ("SD_writeFile", ([65],), TypeError),
                          ("SD_writeFile", (5,), TypeError),
                          ("SD_writeFile", (("a",),), pyzvr.InputTypeNotCorrectError),
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
