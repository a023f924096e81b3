// The system commands: identity, clock and alarm, restart, EEPROM, slots.
#include <array>
#include <chrono>
#include <ctime>
#include <memory>

#include "device/modules.h"

namespace zvr::sim {

namespace {

using WallClock = std::chrono::system_clock;

constexpr std::size_t eepromPages = 64, eepromPageSize = 64, aliasWidth = 16, serialWidth = 8;

Bytes textOf(std::string_view text) { return {text.begin(), text.end()}; }

std::string stringOf(ByteView bytes) {
    std::string text(bytes.begin(), bytes.end());
    return text.substr(0, text.find('\0'));
}

// An alarm on the clock, and what the EEPROM keeps.
struct SystemState {
    std::optional<WallClock::time_point> alarm;
    std::array<std::array<std::uint8_t, eepromPageSize>, eepromPages> eeprom{};
};

// The clock runs with the host's, at an offset.
WallClock::time_point now(const Device& device) { return WallClock::now() + device.clockOffset; }

std::tm fieldsOf(WallClock::time_point time) {
    const std::time_t seconds = WallClock::to_time_t(time);
    std::tm fields{};
    localtime_r(&seconds, &fields);
    return fields;
}

Bytes bytesOf(const std::tm& fields, int firstYear) {
    Bytes bytes;
    for (const int field : {fields.tm_year + 1900 - firstYear, fields.tm_mon + 1, fields.tm_mday, fields.tm_hour,
                            fields.tm_min, fields.tm_sec}) {
        bytes.push_back(static_cast<std::uint8_t>(field));
    }
    return bytes;
}

// The time that the fields name; nothing if there is no such time.
std::optional<WallClock::time_point> timeOf(std::tm fields) {
    std::tm same = fields;
    same.tm_isdst = -1;
    const std::time_t seconds = std::mktime(&same);
    const bool isSame = same.tm_mon == fields.tm_mon && same.tm_mday == fields.tm_mday &&
                        same.tm_hour == fields.tm_hour && same.tm_min == fields.tm_min && same.tm_sec == fields.tm_sec;
    if (seconds == -1 || !isSame) return std::nullopt;
    return WallClock::from_time_t(seconds);
}

void addClock(Device& device, const std::shared_ptr<SystemState>& state) {
    device.on(GET_DATE_TIME, [&device](ByteView) { return bytesOf(fieldsOf(now(device)), device.model().firstYear); });
    device.on(SET_DATE_TIME, [&device](ByteView data) {
        const ByteView field = slice(data, 0, 6);
        std::tm fields{};
        fields.tm_year = field[0];
        fields.tm_mon = field[1] - 1;
        fields.tm_mday = field[2];
        fields.tm_hour = field[3];
        fields.tm_min = field[4];
        fields.tm_sec = field[5];
        const auto time = timeOf(fields);
        // The request counts from 1900; a clock that begins later does not go back to before.
        if (!time || fields.tm_year + 1900 < device.model().firstYear) return reply(Status::clock);
        device.clockOffset = *time - WallClock::now();
        return reply(Status::ok);
    });
    // The alarm's mode, byte 1, says how it repeats; the simulator knows the next time only.
    device.onPort(RTC_START_ALARM, [&device, state](std::uint8_t port, ByteView data) {
        const ByteView field = slice(data, 1, 4);
        std::tm fields = fieldsOf(now(device));
        fields.tm_mday = field[0];
        fields.tm_hour = field[1];
        fields.tm_min = field[2];
        fields.tm_sec = field[3];
        const auto time = timeOf(fields);
        if (!time) return reply(port, Status::clock);
        state->alarm = time;
        return reply(port, Status::ok);
    });
    device.onPort(RTC_STOP_ALARM, [state](std::uint8_t port, ByteView) {
        state->alarm.reset();
        return reply(port, Status::ok);
    });
    device.onPort(RTC_GET_ALARM_STATE, [&device, state](std::uint8_t port, ByteView) {
        const bool armed = state->alarm && *state->alarm > now(device);
        return Bytes{port, static_cast<std::uint8_t>(armed)};
    });
    device.onPort(RTC_GET_ALARM_TRIG, [&device, state](std::uint8_t port, ByteView) {
        const bool went = state->alarm && *state->alarm <= now(device);
        return Bytes{port, static_cast<std::uint8_t>(went)};
    });
    device.onPort(RTC_GET_ALARM_CONFIG, [&device, state](std::uint8_t port, ByteView) {
        Bytes data = state->alarm ? bytesOf(fieldsOf(*state->alarm), device.model().firstYear) : Bytes(6);
        data.insert(data.begin(), port);
        return data;
    });
}

void addEeprom(Device& device, const std::shared_ptr<SystemState>& state) {
    device.on(GET_EEPROM_PAGE, [state](ByteView data) {
        const std::size_t page = slice(data, 0, 1)[0];
        if (page >= eepromPages) return Bytes();
        return Bytes(state->eeprom[page].begin(), state->eeprom[page].end());
    });
    device.on(SET_EEPROM_PAGE, [state](ByteView data) {
        const std::size_t page = slice(data, 0, 1)[0];
        const ByteView bytes = data.subspan(1);
        if (page >= eepromPages || bytes.size() > eepromPageSize) return reply(Status::eeprom);
        std::copy(bytes.begin(), bytes.end(), state->eeprom[page].begin());
        return reply(Status::ok);
    });
    device.on(SET_EEPROM_BYTE, [state](ByteView data) {
        const ByteView place = slice(data, 0, 3);
        if (place[0] >= eepromPages || place[1] >= eepromPageSize) return reply(Status::eeprom);
        state->eeprom[place[0]][place[1]] = place[2];
        return reply(Status::ok);
    });
    device.on(GET_EEPROM_DEVICE, [](ByteView data) {
        return Bytes{slice(data, 0, 1)[0], eepromPages, eepromPageSize};
    });
}

void addIdentity(Device& device) {
    device.on(GET_DRIVER_INFO, [&device](ByteView data) {
        const std::string name(device.model().displayName);
        return textOf(slice(data, 0, 1)[0] == 0 ? name + "_3.2.6_simulator" : name + "_3.2.6_simulator_development");
    });
    device.on(GET_DEV_ALIAS, [&device](ByteView) { return textOf(device.identity.alias + "\r\n"); });
    device.on(SET_DEV_ALIAS, [&device](ByteView data) {
        if (data.size() > aliasWidth) return reply(Status::parser);
        device.identity.alias = stringOf(data);
        return reply(Status::ok);
    });
    device.on(GET_SERIAL_NUMBER, [&device](ByteView) { return padded(device.identity.serial, serialWidth); });
    device.on(SET_SERIAL_NUMBER, [&device](ByteView data) {
        if (data.size() > serialWidth) return reply(Status::parser);
        device.identity.serial = stringOf(data);
        return reply(Status::ok);
    });
    device.on(GET_THREADS, [](ByteView) { return textOf("main net dio clock"); });
}

// A restart wants the command's own code as a confirmation.
void addRestart(Device& device, Command command) {
    device.on(command, [&device, command](ByteView data) {
        if (slice(data, 0, 1)[0] != command) return reply(Status::bootloader);
        device.reboot();
        return reply(Status::ok);
    });
}

}  // namespace

void addSystem(Device& device) {
    const auto state = std::make_shared<SystemState>();
    const Identity delivered = device.identity;
    addIdentity(device);
    addClock(device, state);
    addEeprom(device, state);
    addRestart(device, REBOOT);
    addRestart(device, REBOOT_ON_BOOTLOADER);
    device.on(RESET_FACTORY, [&device, state, delivered](ByteView) {
        *state = SystemState();
        device.clockOffset = {};
        device.identity = delivered;
        device.reboot();
        return reply(Status::ok);
    });
    device.onPort(GET_PIN_MODE_OF_SLOT, [&device](std::uint8_t port, ByteView) {
        std::vector<PinMode> modes = device.pinModes(port);
        Bytes data{port, static_cast<std::uint8_t>(modes.size())};
        if (modes.size() % 2 != 0) modes.push_back(PinMode::disabled);
        for (std::size_t i = 0; i < modes.size(); i += 2) {
            const auto half = [&](std::size_t place) { return static_cast<unsigned>(modes[place]); };
            data.push_back(static_cast<std::uint8_t>(half(i) | half(i + 1) << 4));
        }
        return data;
    });
    // Only the chassis has slots: everything else shows four idle ones and takes no mode.
    device.on(GET_SLOT_MODE, [](ByteView) { return Bytes{8, 0, 0, 0, 0}; });
    device.onPort(SET_SLOT_MODE, [](std::uint8_t port, ByteView) { return reply(port, Status::notEnabled); });
}

}  // namespace zvr::sim
