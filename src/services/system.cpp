// The system module: identity, driver information, clock and alarm, reboot, slots of the chassis, service operations.
#include "core/wire/constants.h"
#include "core/wire/failures.h"
#include "models/traits.h"
#include "services/services.h"

namespace zvr::python {

namespace {

constexpr std::array slotModes = {"Idle", "DI", "DO", "DIO", "Motion", "AIO", "Switch"};
constexpr std::array pinModes = {"Disabled", "Idle", "DI", "DO", "UART", "I2C", "SPI", "CAN", "PWM", "ADC"};

const Parameter port{"port", "int", "port number, from 0"};
const Parameter slot{"slot", "int", "slot of the chassis: 1, 2 or 4"};
const Parameter mode{"mode", "int", "mode number, 0 to 255"};
const Parameter day{"day", "int", "day of the month"};
const Parameter hour{"hour", "int", "hour, 0 to 23"};
const Parameter minute{"minute", "int", "minute, 0 to 59"};
const Parameter second{"second", "int", "second, 0 to 59"};
const Parameter page{"page_number", "int", "page of the EEPROM, 0 to 255"};

// Year, month, day, hour, minute, second.
Object dateText(const Bytes& data, std::size_t from, int firstYear) {
    const ByteView field = slice(data, from, 6);
    return py::str("{:04d}-{:02d}-{:02d}, {:02d}:{:02d}:{:02d}")
        .format(firstYear + field[0], field[1], field[2], field[3], field[4], field[5]);
}

Reply clockReply() {
    return {[](py::handle self, const Bytes& data) { return dateText(data, 0, firstYearOf(self)); },
            {"str", "\"YYYY-MM-DD, hh:mm:ss\"", "the device's clock"}};
}

Reply driverInfoReply() {
    return {[](py::handle self, const Bytes& data) {
                const py::list pieces(callMethod(textOf(data), "split", py::str("_")));
                // Kept for timeout errors, which report it if it is another model's.
                setAttribute(self, "_driver_name", Object(pieces[0]));
                return Object(pieces);
            },
            {"list[str]", "name, version and further information of the firmware", "the device"}};
}

Reply aliasReply() {
    return {[](py::handle, const Bytes& data) -> Object {
                constexpr std::uint8_t end[] = {CMD_CR, CMD_LF};
                const auto found = std::search(data.begin(), data.end(), std::begin(end), std::end(end));
                return textOf(ByteView(data.begin(), found));
            },
            {"str", "the alias, up to 16 characters", "the device"}};
}

Reply alarmStateReply() {
    return {[](py::handle, const Bytes& data) -> Object { return py::str(byteOf(data, 1) == 1 ? "on" : "off"); },
            {"str", R"("on" or "off")", "the device"}};
}

Reply alarmConfigReply() {
    return {[](py::handle, const Bytes& data) { return dateText(data, 1, 0); },
            {"str", "the alarm's time in the form of the clock, its year in the device's numbering", "the device"}};
}

Task getPinModes(Op op, Object port) {
    checkIsInt(port, "port");
    const Object reply = co_await exchange(op, GET_PIN_MODE_OF_SLOT, payload(port));
    const Bytes data = bytesOf(reply, "reply");
    const int pins = byteOf(data, 1);
    // Two pins a byte, the low half first; with an odd number of pins the last half is listed too.
    py::list modes;
    for (const std::uint8_t pair : slice(data, 2, static_cast<std::size_t>(pins + 1) / 2)) {
        for (const int number : {pair & 15, pair >> 4}) {
            modes.append(number);
        }
    }
    setAttribute(op.self(), "num_of_pins", py::int_(pins));
    setAttribute(op.self(), "pin_mode_list", modes);
    py::list names;
    for (const py::handle mode : modes) {
        const auto number = py::cast<std::size_t>(mode);
        if (number >= pinModes.size()) {
            throw py::key_error("no pin mode has the number " + std::to_string(number));
        }
        names.append(pinModes[number]);
    }
    co_return names;
}

Task getSlotMode(Op op, Object slot) {
    op.call("_checkLatticeSlot", slot);
    const Object reply = co_await exchange(op, GET_SLOT_MODE, payload());
    const Bytes data = bytesOf(reply);
    py::list modes;
    for (const std::uint8_t state : slice(data, 1, byteOf(data, 0) / 2)) {
        const std::size_t number = state & 15;
        modes.append(number < slotModes.size() ? slotModes[number] : slotModes[0]);
    }
    const Object port = slot - py::int_(1);
    co_return own(PyObject_GetItem(modes.ptr(), port.ptr()));
}

Task setSlotMode(Op op, Object slot, Object mode) {
    op.call("_checkLatticeSlot", slot);
    if (PyIndex_Check(mode.ptr()) == 0) refuseType("mode", "an integer", mode);
    const Object port = slot - py::int_(1);
    const Object reply = co_await exchange(op, SET_SLOT_MODE, payload(port * py::int_(2), mode));
    co_return itemOf(reply, 1);
}

// A year below 100 counts from 1900; all devices are sent years since 1900.
Task setClock(Op op, Object year, Object month, Object day, Object hour, Object minute, Object second) {
    for (const auto& [value, name] :
         {std::pair{year, "year"}, std::pair{month, "month"}, std::pair{day, "day"}, std::pair{hour, "hour"},
          std::pair{minute, "minute"}, std::pair{second, "second"}})
        checkIsInt(value, name);
    const py::int_ century(1900);
    if (year < py::int_(100)) year = year + century;
    const Object reply =
        co_await exchange(op, SET_DATE_TIME, payload(year - century, month, day, hour, minute, second));
    co_return statusOf(op, SET_DATE_TIME, reply, 0);
}

const Returns slotStatus{"int", "the device's status, 0 for success; it is not checked", "the device"};

const Definition checkLatticeSlot{.name = "_checkLatticeSlot",
                                  .parameters = {slot},
                                  .doc = "Raises LatticePortNotAvaliableError unless the slot is 1, 2 or 4.",
                                  .raises = {"InputTypeNotCorrectError: `slot` has the wrong type",
                                             "LatticePortNotAvaliableError: `slot` is not 1, 2 or 4"},
                                  .body = [](py::handle, const Object& slot) {
                                      checkIsInt(slot, "slot");
                                      if (!isOneOf(slot, {1, 2, 4}))
                                          throw Failure(FailureId::LatticePortNotAvaliableError);
                                  }};

void defineSlotSetter(Feature& system, int mode, const std::string& name) {
    const std::string title = slotModes[mode];
    system.operation({.name = name,
                      .parameters = {slot},
                      .doc = "Sets a slot of the chassis to the mode \"" + title + "\".",
                      .returns = slotStatus,
                      .raises = {checkLatticeSlot},
                      .body = [mode](Op op, Object slot) -> Task {
                          co_return co_await op.request("_Sys_setSlotMode", slot, py::int_(mode));
                      }});
}

std::vector<Request> rows() {
    const std::string serialDoc = "the serial number, up to 8 characters";
    return {
        {.name = "Sys_getDriverInfo",
         .sends = GET_DRIVER_INFO,
         .fields = {constant(0)},
         .reply = driverInfoReply(),
         .doc = "Reads name and version of the device's driver."},
        {.name = "_getDriverInfo_dev",
         .sends = GET_DRIVER_INFO,
         .fields = {mode | u8},
         .reply = kept("driver_info", textReply("the driver information, unsplit")),
         .doc = "Reads driver information of a kind."},
        {.name = "Sys_getDeviceAlias",
         .sends = GET_DEV_ALIAS,
         .reply = aliasReply(),
         .doc = "Reads the name that a user gave the device."},
        {.name = "Sys_setDeviceAlias",
         .sends = SET_DEV_ALIAS,
         .fields = {Parameter{"alias", "str", "the name, up to 16 characters"} | text},
         .reply = status(0),
         .doc = "Sets the device's name."},
        {.name = "Sys_getRTC",
         .sends = GET_DATE_TIME,
         .fields = {constant(0)},
         .reply = kept("rtc_time", clockReply()),
         .doc = "Reads the device's clock."},
        {.name = "Sys_startRTCAlarm",
         .sends = RTC_START_ALARM,
         .fields = {constant(0), mode | u8, day | u8, hour | u8, minute | u8, second | u8},
         .reply = byteAt(1, "the device's status; it is not checked"),
         .doc = "Starts the clock's alarm."},
        {.name = "Sys_stopRTCAlarm",
         .sends = RTC_STOP_ALARM,
         .fields = {constant(0)},
         .reply = byteAt(1, "the device's status; it is not checked"),
         .doc = "Stops the clock's alarm."},
        {.name = "_Sys_getRTCAlarmState",
         .sends = RTC_GET_ALARM_STATE,
         .fields = {constant(0)},
         .reply = alarmStateReply(),
         .doc = "Reads whether the alarm is on."},
        {.name = "_Sys_getRTCAlarmConfig",
         .sends = RTC_GET_ALARM_CONFIG,
         .fields = {constant(0)},
         .reply = alarmConfigReply(),
         .doc = "Reads the alarm's time."},
        {.name = "Sys_getSerialNumber",
         .sends = GET_SERIAL_NUMBER,
         .reply = kept("serial_number", textReply(serialDoc, 8)),
         .doc = "Reads the serial number."},
        {.name = "Sys_reboot",
         .sends = REBOOT,
         .fields = {constant(REBOOT)},
         .reply = status(0),
         .doc = "Restarts the device."},
        {.name = "_Sys_rebootOnBootloader",
         .sends = REBOOT_ON_BOOTLOADER,
         .fields = {constant(REBOOT_ON_BOOTLOADER)},
         .reply = status(0),
         .doc = "Restarts the device in its bootloader."},
        {.name = "_getEEPROMPage",
         .sends = GET_EEPROM_PAGE,
         .fields = {page | u8},
         .reply = byteList("the page's byte values"),
         .doc = "Reads a page of the EEPROM."},
        {.name = "_setEEPROMPage",
         .sends = SET_EEPROM_PAGE,
         .fields = {page | u8, Parameter{"int_list", "Sequence[int]", "byte values, 0 to 255"} | bytes},
         .reply = status(0),
         .doc = "Writes a page of the EEPROM."},
        {.name = "_getEEPROMDevice",
         .sends = GET_EEPROM_DEVICE,
         .fields = {Parameter{"device_number", "int", "number of the EEPROM chip, 0 to 255"} | u8},
         .reply = byteList("the chip's identification bytes"),
         .doc = "Reads an EEPROM chip's identification."},
        {.name = "_setEEPROMByte",
         .sends = SET_EEPROM_BYTE,
         .fields = {page | u8, Parameter{"byte_index", "int", "byte of the page, 0 to 255"} | u8,
                    Parameter{"value", "int", "byte value, 0 to 255"} | u8},
         .reply = status(0),
         .doc = "Writes a byte of the EEPROM."},
        {.name = "_setSerialNumber",
         .sends = SET_SERIAL_NUMBER,
         .fields = {Parameter{"serial_num", "str", serialDoc} | text},
         .reply = status(0),
         .doc = "Sets the device's serial number."},
        {.name = "_resetFactory",
         .sends = RESET_FACTORY,
         .reply = status(0),
         .doc = "Resets the device to its factory state."},
        {.name = "_getThreads",
         .sends = GET_THREADS,
         .reply = kept("thread_info", textReply("the firmware's threads")),
         .doc = "Lists the firmware's threads."},
    };
}

}  // namespace

void defineSystem(Package& package) {
    Feature system(package, "System", "Identity, clock and reboot of every device, and the slots of the chassis.");
    system.field({"serial_number", "str", "last serial number read"})
        .field({"rtc_time", "str", "last time read"})
        .field({"driver_info", "str", "last driver information read by the service operation"})
        .field({"thread_info", "str", "last list of firmware threads read"})
        .field({"num_of_pins", "int", "number of pins of the port read last"})
        .field({"pin_mode_list", "list[int]", "mode numbers of the port read last"})
        .shared(checkLatticeSlot)
        .operations(rows())
        .operation({.name = "Sys_getPythonVersion",
                    .doc = "Returns the library's version; sends nothing.",
                    .returns = {"str", "the version", "the library"},
                    .body = [](Op) -> Task { co_return py::str(LIBRARY_VERSION); }})
        .operation(
            {.name = "Sys_getPinModeInPort",
             .parameters = {port},
             .doc = "Reads what each pin of a port is used for.",
             .returns = {"list[str]",
                         "one of \"Disabled\", \"Idle\", \"DI\", \"DO\", \"UART\", \"I2C\", \"SPI\", \"CAN\", \"PWM\", "
                         "\"ADC\" per pin; the numbers are kept in `pin_mode_list`",
                         "the device"},
             .raises = {"InputTypeNotCorrectError: `port` has the wrong type", "IndexError: the reply is too short",
                        "KeyError: a mode has no name; the numbers are kept"},
             .body = getPinModes})
        .operation({.name = "Sys_setRTC",
                    .parameters = {{"year", "int", "year; below 100 it counts from 1900"},
                                   {"month", "int", "month, 1 to 12"},
                                   day,
                                   hour,
                                   minute,
                                   second},
                    .doc = "Sets the device's clock.",
                    .returns = status(0).returns,
                    .raises = {"InputTypeNotCorrectError: an argument has the wrong type"},
                    .body = setClock})
        .operation({.name = "Sys_getMode",
                    .parameters = {slot},
                    .doc = "Reads the mode of a slot of the chassis.",
                    .returns = {"str", R"("Idle", "DI", "DO", "DIO", "Motion", "AIO" or "Switch")", "the device"},
                    .raises = {checkLatticeSlot},
                    .body = getSlotMode})
        .operation({.name = "_Sys_setSlotMode",
                    .parameters = {slot, mode},
                    .doc = "Sets the mode of a slot of the chassis.",
                    .returns = slotStatus,
                    .raises = {checkLatticeSlot},
                    .body = setSlotMode});
    defineSlotSetter(system, 0, "Sys_setIdleMode");
    defineSlotSetter(system, 1, "Sys_setDIMode");
    defineSlotSetter(system, 2, "Sys_setDOMode");
    defineSlotSetter(system, 3, "Sys_setDIOMode");
    defineSlotSetter(system, 4, "Sys_setMotionMode");
    defineSlotSetter(system, 5, "Sys_setAIOMode");
    defineSlotSetter(system, 6, "Sys_setSwitchMode");
}

}  // namespace zvr::python
