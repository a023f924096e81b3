// The time server's client: it sets the clock to the host's.
#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

#include "device/modules.h"

namespace zvr::sim {

namespace {

struct SntpState {
    std::array<std::uint8_t, 4> server{255, 255, 255, 255};
    float period = 3600;  // s
    bool synchronized = false;
};

}  // namespace

void addSntp(Device& device) {
    const auto state = std::make_shared<SntpState>();
    device.on(SNTP_SYNC_NOW, [&device, state](Request) {
        device.clockOffset = {};
        state->synchronized = true;
        return reply(Status::ok);
    });
    device.on(SNTP_GET_SYNC_STATUS, [state](Request) {
        return reply(std::uint8_t{0}, std::string_view(state->synchronized ? "synchronized" : "not synchronized"));
    });
    device.on(SNTP_GET_SERVER_IP, [state](Request) { return reply(std::uint8_t{0}, state->server); });
    device.on(SNTP_SET_SERVER_IP, [state](Request r) {
        r.u8();
        std::ranges::copy(r.lastBytes(state->server.size()), state->server.begin());
        return reply(Status::ok);
    });
    device.on(SNTP_GET_SYNC_PERIOD, [state](Request) { return reply(state->period); });
    device.on(SNTP_SET_SYNC_PERIOD, [state](Request r) {
        const auto period = r.last<float>();
        if (!std::isfinite(period) || period <= 0) return reply(Status::clock);
        state->period = period;
        return reply(Status::ok);
    });
}

}  // namespace zvr::sim
