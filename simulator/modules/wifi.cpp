// The battery-powered models' LEDs, power inputs, radio, battery and the sensors on the board.
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

void addRadio(Device& device, const std::shared_ptr<WifiState>& state) {
    device.on(GET_WIFI_CONFIGURATION, [state](Request) { return reply(state->retries, state->apSeconds); });
    device.on(SET_WIFI_CONFIGURATION, [state](Request r) {
        const std::uint16_t retries = r.u16();
        state->apSeconds = r.last<std::uint16_t>();
        state->retries = retries;
        return reply(Status::ok);
    });
    device.on(GET_WIFI_BANDWIDTH, [state](Request) { return Bytes{state->bandwidth}; });
    device.on(SET_WIFI_BANDWIDTH, [state](Request r) {
        const std::uint8_t bandwidth = r.u8();
        if (bandwidth == 0) return reply(Status::tcp);
        state->bandwidth = bandwidth;
        return reply(Status::ok);
    });
    // The level in dBm, 256 higher.
    device.on(GET_RSSI, [state](Request) {
        return Bytes{static_cast<std::uint8_t>(200 + std::lround(5 * std::sin(state->seconds() / 10)))};
    });
    device.on(SET_AP, [](Request) { return reply(Status::ok); });
}

class PowerInputs : public InputLevels {
public:
    std::uint16_t levels(int port) override { return port == powerPort ? 1 : 0; }
};

}  // namespace

void addWifi(Device& device) {
    const auto state = std::make_shared<WifiState>();
    addRadio(device, state);
    // The LEDs and the power inputs are lines. The supply is good, and the battery is not charged.
    device.inputLevels.provide(std::make_shared<PowerInputs>());
    // A millivolt is gone every second.
    device.on(GET_BATTERY, [state](Request) {
        const double millivolts = std::max<double>(emptyBattery, fullBattery - state->seconds());
        return reply(static_cast<std::uint16_t>(millivolts));
    });
    // The device lies flat.
    device.on(READ_ACCELERATION, [](Request) { return reply(std::uint16_t{0}, std::uint16_t{0}, gravity); });
    device.on(GET_THERMOMETER, [](Request) { return reply(roomTemperature); });
    device.onPort(AI_RESET_BUFFER, [](std::uint8_t port, Request) { return reply(port, Status::ok); });
}

}  // namespace zvr::sim
