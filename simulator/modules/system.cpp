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

std::string stringOf(ByteView bytes) {
    std::string text(bytes.begin(), bytes.end());
    return text.substr(0, text.find('\0'));
}

// An alarm on the clock, and what the EEPROM keeps.
struct SystemState {
    std::optional<WallClock::time_point> alarm;
    std::array<std::array<std::uint8_t, eepromPageSize>, eepromPages> eeprom{};
};

// The clock is the host's plus an offset.
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
    device.on(GET_DATE_TIME, [&device](Request) { return bytesOf(fieldsOf(now(device)), device.model().firstYear); });
    device.on(SET_DATE_TIME, [&device](Request r) {
        const ByteView field = r.bytes(6);
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
    device.onPort(RTC_START_ALARM, [&device, state](std::uint8_t port, Request r) {
        r.u8();
        const ByteView field = r.bytes(4);
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
    device.onPort(RTC_STOP_ALARM, [state](std::uint8_t port, Request) {
        state->alarm.reset();
        return reply(port, Status::ok);
    });
    device.onPort(RTC_GET_ALARM_STATE, [&device, state](std::uint8_t port, Request) {
        const bool armed = state->alarm && *state->alarm > now(device);
        return Bytes{port, static_cast<std::uint8_t>(armed)};
    });
    device.onPort(RTC_GET_ALARM_TRIG, [&device, state](std::uint8_t port, Request) {
        const bool went = state->alarm && *state->alarm <= now(device);
        return Bytes{port, static_cast<std::uint8_t>(went)};
    });
    device.onPort(RTC_GET_ALARM_CONFIG, [&device, state](std::uint8_t port, Request) {
        return reply(port, state->alarm ? bytesOf(fieldsOf(*state->alarm), device.model().firstYear) : Bytes(6));
    });
}

void addEeprom(Device& device, const std::shared_ptr<SystemState>& state) {
    device.on(GET_EEPROM_PAGE, [state](Request r) {
        const std::size_t page = r.u8();
        return page < eepromPages ? reply(state->eeprom[page]) : Bytes();
    });
    device.on(SET_EEPROM_PAGE, [state](Request r) {
        const std::size_t page = r.u8();
        const ByteView bytes = r.rest();
        if (page >= eepromPages || bytes.size() > eepromPageSize) return reply(Status::eeprom);
        std::copy(bytes.begin(), bytes.end(), state->eeprom[page].begin());
        return reply(Status::ok);
    });
    device.on(SET_EEPROM_BYTE, [state](Request r) {
        const std::uint8_t page = r.u8(), place = r.u8(), value = r.u8();
        if (page >= eepromPages || place >= eepromPageSize) return reply(Status::eeprom);
        state->eeprom[page][place] = value;
        return reply(Status::ok);
    });
    device.on(GET_EEPROM_DEVICE, [](Request r) { return Bytes{r.u8(), eepromPages, eepromPageSize}; });
}

void addIdentity(Device& device) {
    device.on(GET_DRIVER_INFO, [&device](Request r) {
        const std::string_view kind = r.u8() == 0 ? "_simulator" : "_simulator_development";
        return reply(device.model().displayName, std::string_view("_"), firmwareVersion, kind);
    });
    device.on(GET_DEV_ALIAS, [&device](Request) { return reply(device.identity.alias, std::string_view("\r\n")); });
    device.on(SET_DEV_ALIAS, [&device](Request r) {
        if (r.left() > aliasWidth) return reply(Status::parser);
        device.identity.alias = stringOf(r.rest());
        return reply(Status::ok);
    });
    device.on(GET_SERIAL_NUMBER, [&device](Request) { return padded(device.identity.serial, serialWidth); });
    device.on(SET_SERIAL_NUMBER, [&device](Request r) {
        if (r.left() > serialWidth) return reply(Status::parser);
        device.identity.serial = stringOf(r.rest());
        return reply(Status::ok);
    });
    device.on(GET_THREADS, [](Request) { return reply(std::string_view("main net dio clock")); });
}

// A restart wants the command's own code as a confirmation.
void addRestart(Device& device, Command command) {
    device.on(command, [&device, command](Request r) {
        if (r.u8() != command) return reply(Status::bootloader);
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
    device.on(RESET_FACTORY, [&device, state, delivered](Request) {
        *state = SystemState();
        device.clockOffset = {};
        device.identity = delivered;
        device.reboot();
        return reply(Status::ok);
    });
    device.onPort(GET_PIN_MODE_OF_SLOT, [&device](std::uint8_t port, Request) {
        std::vector<PinMode> modes = device.digitalLines ? device.digitalLines->modes(port) : std::vector<PinMode>();
        Bytes data{port, static_cast<std::uint8_t>(modes.size())};
        if (modes.size() % 2 != 0) modes.push_back(PinMode::disabled);
        for (std::size_t i = 0; i < modes.size(); i += 2) {
            const auto half = [&](std::size_t place) { return static_cast<unsigned>(modes[place]); };
            data.push_back(static_cast<std::uint8_t>(half(i) | half(i + 1) << 4));
        }
        return data;
    });
    // Only the chassis has slots: everything else shows four idle ones and takes no mode.
    device.on(GET_SLOT_MODE, [&device](Request) {
        constexpr std::uint8_t ports = SlotModes::slotCount * SlotModes::portsOfSlot;
        return reply(ports, device.slotModes ? device.slotModes->modes() : SlotModes::Modes{});
    });
    device.onPort(SET_SLOT_MODE, [&device](std::uint8_t port, Request r) {
        const bool done = device.slotModes && device.slotModes->setMode(port, r.u8());
        return reply(port, done ? Status::ok : Status::notEnabled);
    });
}

}  // namespace zvr::sim
