"""What the operations of services and pulses send and return."""

import asyncio

import pytest
from cases import Exchange, operation_of
from fake_client import FakeClient

import pyzvr

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
    Exchange(
        "Counter_setPosition",
        (0, 0x1122334455667788),
        command="PULSE_SET_VALUE",
        sent=[0, *bytes.fromhex("334455667788")],
        reply=OK,
        result=0,
    ),
    Exchange(
        "Counter_setFreqWindow", (1, 0.5), command="PULSE_SET_FRQ_WINDOW", sent=[1, *F32(0.5)], reply=OK, result=0
    ),
    Exchange("Encoder_open", (0,), command="ENCODER_OPEN", sent=[0], reply=OK, result=0),
    Exchange("Encoder_start", (0,), command="ENCODER_START", sent=[0], reply=OK, result=0),
    Exchange("_Encoder_read", (0,), command="ENCODER_READ", sent=[0], reply=READING, result=[-1, 12.5]),
    Exchange(
        "_Encoder_read",
        (0,),
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
    Exchange("Encoder_setFreqWindow", (0, 2), command="ENCODER_SET_FRQ_WINDOW", sent=[0, *F32(2)], reply=OK, result=0),
    Exchange("Encoder_getDirection", (0,), command="ENCODER_GET_DIR", sent=[0], reply=PULSE, result=26),
    Exchange("Wifi_setRedLED", (5,), command="SET_AND_WRITE_DO", sent=[0, 0, 1, 0, 1], reply=b"", result=0),
    Exchange("Wifi_setRedLED", (-1,), command="SET_AND_WRITE_DO", sent=[0, 0, 1, 0, 0], reply=b"", result=0),
    Exchange("Wifi_setGreenLED", (1,), command="SET_AND_WRITE_DO", sent=[0, 0, 2, 0, 2], reply=b"", result=0),
    Exchange("Wifi_setBlueLED", (1,), command="SET_AND_WRITE_DO", sent=[0, 0, 4, 0, 4], reply=b"", result=0),
    Exchange("Wifi_resetLED", (), command="SET_AND_WRITE_DO", sent=[0, 0, 7, 0, 0], reply=b"", result=0),
    Exchange("Wifi_getPowerGoodStatus", (), command="READ_AND_GET_DI", sent=[1, 0, 1], reply=b"\1\0\1", result=1),
    Exchange("Wifi_getPowerGoodStatus", (), command="READ_AND_GET_DI", sent=[1, 0, 1], reply=b"\1\xff\xfe", result=0),
    Exchange("Wifi_getChargeStatus", (), command="READ_AND_GET_DI", sent=[1, 0, 2], reply=b"\1\0\2", result=1),
    Exchange(
        "_setWifiConfiguration", (3, 600), command="SET_WIFI_CONFIGURATION", sent=[0, 3, 2, 88], reply=UDP, result=-7025
    ),
    Exchange(
        "Wifi_getConfiguration", (), command="GET_WIFI_CONFIGURATION", sent=[], reply=b"\0\3\2\x58", result=[3, 600]
    ),
    Exchange("_Wifi_setBandwidth", (0,), command="SET_WIFI_BANDWIDTH", sent=[1], reply=b"\0", result=0),
    Exchange("_Wifi_setBandwidth", (7,), command="SET_WIFI_BANDWIDTH", sent=[7], reply=b"\0", result=0),
    Exchange(
        "Wifi_getWifiBandWidth", (), command="GET_WIFI_BANDWIDTH", sent=[], reply=b"\4", result=4, kept_in="bandwidth"
    ),
    Exchange("Wifi_readRSSI", (), command="GET_RSSI", sent=[], reply=b"\xc8", result=-56, kept_in="rssi"),
    Exchange("_Wifi_setAP", (), command="SET_AP", sent=[], reply=b"\0", result=0),
    Exchange("Wifi_readBattery", (), command="GET_BATTERY", sent=[], reply=b"\x10\4", result=4100, kept_in="battery"),
    Exchange(
        "_Wifi_readAcceleration",
        (),
        command="READ_ACCELERATION",
        sent=[],
        reply=b"\0\1\0\2\xff\xff",
        result=[1, 2, 65535],
    ),
    Exchange(
        "_Wifi_readThermo", (), command="GET_THERMOMETER", sent=[], reply=b"\x0c\x80", result=25.0, kept_in="thermo"
    ),
    Exchange(
        "_Wifi_readThermo", (), command="GET_THERMOMETER", sent=[], reply=b"\xff\xc0", result=-0.5, kept_in="thermo"
    ),
    Exchange("_Wifi_resetAIBuffer", (), command="AI_RESET_BUFFER", sent=[0], reply=b"\0\x50", result=-7027),
    Exchange("SNTP_syncNow", (), command="SNTP_SYNC_NOW", sent=[], reply=UDP, result=-7025),
    Exchange(
        "Relay_read",
        (0, -1),
        command="RELAY_READ",
        sent=[0, 255],
        reply=bytes([0, 0, 0, 0, 0, 1, 255, 255, 255, 255, 9]),
        result=[1, 2**32 - 1],
    ),
    Exchange("Relay_read", (0, 5), command="RELAY_READ", sent=[0, 5], reply=b"\0\0\0\1\0\0", result=[65536]),
    Exchange("Relay_read", (0, 0), command="RELAY_READ", sent=[0, 0], reply=b"\0\x33", result=[]),
    Exchange("DPOT_readByChannel", (0, 4), command="POT_READ", sent=[0, 4], reply=b"\0\4\0\0\3\xe8more", result=1000),
    Exchange(
        "DPOT_writeByChannel",
        (0, 1, 470.5),
        command="POT_WRITE_BY_CS",
        sent=[0, 1, *F32(470.5)],
        reply=b"\1\x2a",
        result=-7014,
    ),
    Exchange(
        "DPOT_writeAllChannel",
        (0, [1, 2.5]),
        command="POT_WRITE_ALL_CS",
        sent=[0, *F32(1), *F32(2.5)],
        reply=OK,
        result=0,
    ),
    Exchange("DPOT_writeAllChannel", (0, ()), command="POT_WRITE_ALL_CS", sent=[0], reply=OK, result=0),
    Exchange(
        "SNTP_getSyncStatus",
        (),
        command="SNTP_GET_SYNC_STATUS",
        sent=[],
        reply=b"\0synchronised\0x",
        result="synchronised",
    ),
    Exchange(
        "SNTP_getServerIP", (), command="SNTP_GET_SERVER_IP", sent=[0], reply=b"\0\x0a\0\0\1\7", result="10.0.0.1"
    ),
    Exchange("SNTP_setServerIP", (), command="SNTP_SET_SERVER_IP", sent=[0, 255, 255, 255, 255], reply=b"\0", result=0),
    Exchange(
        "SNTP_getPeriod", (), command="SNTP_GET_SYNC_PERIOD", sent=[], reply=bytes(F32(3600)) + b"x", result=3600.0
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
def test_services_and_pulses(services_box, case):
    # One awaitable form has a name of its own.
    variant = case.operation.replace("readAcceleration", "readAccleration") + "_async"
    services_box.client_cmd.replies = {getattr(pyzvr, case.command): case.reply}
    for run in (lambda: getattr(services_box, case.operation)
                (*case.arguments), lambda: asyncio.run(getattr(services_box, variant)(*case.arguments))):
        assert run() == case.result
        assert services_box.client_cmd.sent.pop() == (getattr(pyzvr, case.command), bytes(case.sent))
        assert not services_box.client_cmd.sent
        if case.kept_in:
            assert getattr(services_box, case.kept_in) == case.result
            delattr(services_box, case.kept_in)


def test_the_awaitable_edge_is_a_flag(services_box):
    services_box.client_cmd.replies = {pyzvr.PULSE_SET_EDGE: OK}
    assert services_box.Counter_setEdge(0, 7) == asyncio.run(services_box.Counter_setEdge_async(0, 7)) == 0
    asyncio.run(services_box.Counter_setEdge_async(1, -1))
    assert [data for _, data in services_box.client_cmd.sent] == [b"\0\7", b"\0\1", b"\1\0"]


def test_short_replies_fail_by_themselves_and_nothing_else(services_box, call):
    for operation, arguments, command, reply, error in [
        ("_Counter_read", (0,), "PULSE_READ", b"\0\1\2", IndexError),
        ("PWM_open", (0,), "OPEN_PWM", b"\0", IndexError),
        ("Encoder_getDirection", (0,), "ENCODER_GET_DIR", b"", IndexError),
        ("Wifi_readRSSI", (), "GET_RSSI", b"", IndexError),
        ("SNTP_getServerIP", (), "SNTP_GET_SERVER_IP", b"\0\1\2", IndexError),
        ("SNTP_getPeriod", (), "SNTP_GET_SYNC_PERIOD", b"\0", IndexError),
        ("SD_readFile", (1,), "SD_READ_FILE", b"", IndexError), ("Net_getMACAddr", (), "GET_MAC", b"\0", IndexError)
    ]:
        services_box.client_cmd.replies = {getattr(pyzvr, command): reply}
        with pytest.raises(error):
            call(services_box, operation, *arguments)


@pytest.mark.parametrize("operation, arguments, error",
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
def test_bad_settings_fail_before_anything_is_sent(services_box, call, operation, arguments, error):
    with pytest.raises(error):
        call(services_box, operation, *arguments)
    assert services_box.client_cmd.sent == []


@pytest.mark.parametrize("operation", ["Relay_open", "Relay_close", "DPOT_open", "DPOT_close"])
def test_nothing_is_sent_to_open_relays_and_resistors(services_box, call, operation):
    assert call(services_box, operation, 0) == 0
    assert services_box.client_cmd.sent == []


def test_wifi_devices_count_years_from_2000(call):
    class WifiBox(pyzvr.WifiDevice, pyzvr.SystemModule, pyzvr.SystemModule_async):
        def _getDeviceName(self):
            return "Heron-Box"

    with WifiBox() as services_box:
        services_box.client_cmd = FakeClient(services_box)
        services_box.client_cmd.replies = {pyzvr.GET_DATE_TIME: bytes([24, 1, 2, 3, 4, 5])}
        assert call(services_box, "Sys_getRTC") == "2024-01-02, 03:04:05"
