"""What the operations of digital lines send and return."""

import pytest
from cases import Exchange, operation_of
from fake_client import FakeClient

import pyzvr

U16 = pyzvr.convertU16To2U8
REFUSED = b"\x00\x15"  # status 21 at byte 1
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
    error = pyzvr.DIPortNotAvaliableError if operation.startswith("DI") else pyzvr.DOPortNotAvaliableError
    with pytest.raises(error):
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


@pytest.mark.parametrize("operation, arguments, error", REFUSALS)
def test_bad_arguments_fail_by_name_before_anything_is_sent(bench, call, operation, arguments, error):
    with pytest.raises(error):
        call(bench, operation, *arguments)
    assert bench.client_cmd.sent == []


def test_models_of_fixed_function_open_and_close_without_traffic(call):
    class Mine(pyzvr.TarnDio):
        """A subclass counts as its model."""

    with Mine() as services_box:
        services_box.client_cmd = FakeClient(services_box)
        for side in ("DI", "DO"):
            for verb in ("open", "close"):
                assert call(services_box, f"{side}_{verb}Port", 99) == 0
                assert call(services_box, f"{side}_{verb}Pins", 99, "nonsense") == 0
        with pytest.raises(pyzvr.DIPortNotAvaliableError):
            call(services_box, "DI_readPort", 99)
        assert services_box.client_cmd.sent == []
        assert services_box.DI_getPinMap() == {1: [0, 1, 2, 3, 4, 5, 6, 7]}
        assert services_box.DO_getPinMap() == {0: [0, 1, 2, 3, 4, 5]}
        assert services_box._getDeviceName() == "Tarn-Dio"
