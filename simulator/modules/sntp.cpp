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
    device.on(SNTP_SYNC_NOW, [&device, state](ByteView) {
        device.clockOffset = {};
        state->synchronized = true;
        return reply(Status::ok);
    });
    device.on(SNTP_GET_SYNC_STATUS, [state](ByteView) {
        return reply(0, viewOf(state->synchronized ? "synchronized" : "not synchronized"));
    });
    device.on(SNTP_GET_SERVER_IP, [state](ByteView) { return reply(0, state->server); });
    device.on(SNTP_SET_SERVER_IP, [state](ByteView data) {
        if (data.size() != 1 + state->server.size()) return reply(Status::parser);
        std::ranges::copy(data.subspan(1), state->server.begin());
        return reply(Status::ok);
    });
    device.on(SNTP_GET_SYNC_PERIOD, [state](ByteView) {
        Bytes data;
        appendBigEndian(data, state->period);
        return data;
    });
    device.on(SNTP_SET_SYNC_PERIOD, [state](ByteView data) {
        const auto period = readBigEndian<float>(data);
        if (!std::isfinite(period) || period <= 0) return reply(Status::clock);
        state->period = period;
        return reply(Status::ok);
    });
}

}  // namespace zvr::sim
