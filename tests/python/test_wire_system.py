"""What the operations of system and network send and return."""

import pytest
from cases import Exchange, operation_of

import pyzvr

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
def test_system_and_network(services_box, call, case):
    services_box.client_cmd.replies = {getattr(pyzvr, case.command): case.reply}
    assert call(services_box, case.operation, *case.arguments) == case.result
    assert services_box.client_cmd.sent == [(getattr(pyzvr, case.command), bytes(case.sent))]
    if case.kept_in:
        assert getattr(services_box, case.kept_in) == case.result


def test_pin_modes_are_kept(services_box, call):
    services_box.client_cmd.replies = {pyzvr.GET_PIN_MODE_OF_SLOT: b"\0\3\x21\x03"}
    assert call(services_box, "Sys_getPinModeInPort", 0) == ["Idle", "DI", "DO", "Disabled"]
    assert (services_box.num_of_pins, services_box.pin_mode_list) == (3, [1, 2, 3, 0])
