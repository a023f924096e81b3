// What the battery-powered models have: LEDs, power inputs, radio, battery and the sensors on the board.
#include <algorithm>
#include <cmath>
#include <memory>

#include "device/modules.h"

namespace zvr::sim {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int fullBattery = 4100, emptyBattery = 3000;  // mV
constexpr std::uint16_t gravity = 16384;
constexpr std::int16_t roomTemperature = 25 * 128;

struct WifiState {
    Clock::time_point start = Clock::now();
    std::uint16_t retries = 3;
    std::uint16_t apSeconds = 60;
    std::uint8_t bandwidth = 1;

    double seconds() const { return std::chrono::duration<double>(Clock::now() - start).count(); }
};

template <class... Words>
Bytes wordsOf(Words... words) {
    Bytes data;
    (appendBigEndian(data, words), ...);
    return data;
}

void addRadio(Device& device, const std::shared_ptr<WifiState>& state) {
    device.on(GET_WIFI_CONFIGURATION, [state](ByteView) { return wordsOf(state->retries, state->apSeconds); });
    device.on(SET_WIFI_CONFIGURATION, [state](ByteView data) {
        if (data.size() != 4) return reply(Status::parser);
        state->retries = readBigEndian<std::uint16_t>(data.first(2));
        state->apSeconds = readBigEndian<std::uint16_t>(data.last(2));
        return reply(Status::ok);
    });
    device.on(GET_WIFI_BANDWIDTH, [state](ByteView) { return Bytes{state->bandwidth}; });
    device.on(SET_WIFI_BANDWIDTH, [state](ByteView data) {
        const std::uint8_t bandwidth = slice(data, 0, 1)[0];
        if (bandwidth == 0) return reply(Status::tcp);
        state->bandwidth = bandwidth;
        return reply(Status::ok);
    });
    // The level in dBm, 256 higher.
    device.on(GET_RSSI, [state](ByteView) {
        return Bytes{static_cast<std::uint8_t>(200 + std::lround(5 * std::sin(state->seconds() / 10)))};
    });
    device.on(SET_AP, [](ByteView) { return reply(Status::ok); });
}

}  // namespace

void addWifi(Device& device) {
    const auto state = std::make_shared<WifiState>();
    addRadio(device, state);
    // The LEDs and the power inputs are lines. The supply is good, and the battery is not charged.
    device.inputLevels = [](int port) { return static_cast<std::uint16_t>(port == powerPort ? 1 : 0); };
    // A millivolt is gone every second.
    device.on(GET_BATTERY, [state](ByteView) {
        const double millivolts = std::max<double>(emptyBattery, fullBattery - state->seconds());
        return wordsOf(static_cast<std::uint16_t>(millivolts));
    });
    // The device lies flat.
    device.on(READ_ACCELERATION, [](ByteView) { return wordsOf(std::uint16_t{0}, std::uint16_t{0}, gravity); });
    device.on(GET_THERMOMETER, [](ByteView) { return wordsOf(roomTemperature); });
    device.onPort(AI_RESET_BUFFER, [](std::uint8_t port, ByteView) { return reply(port, Status::ok); });
}

}  // namespace zvr::sim
