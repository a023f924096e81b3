// The counters of the relays, which are the outputs of one port.
#include "device/modules.h"

namespace zvr::sim {

namespace {

constexpr std::size_t relays = 6;
constexpr std::uint8_t allRelays = 255;

}  // namespace

void addRelay(Device& device) {
    device.onPort(RELAY_READ, [&device](std::uint8_t port, ByteView rest) {
        const std::uint8_t index = slice(rest, 0, 1)[0];
        if (port != 0 || (index >= relays && index != allRelays)) return reply(port, Status::relay);
        const auto counts = device.switchings(port);
        Bytes data{port, static_cast<std::uint8_t>(Status::ok)};
        for (std::size_t i = 0; i < relays; ++i) {
            if (index == allRelays || index == i) appendBigEndian(data, counts[i]);
        }
        return data;
    });
}

}  // namespace zvr::sim
