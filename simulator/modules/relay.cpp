// The counters of the relays, which are the outputs of one port.
#include "device/modules.h"

namespace zvr::sim {

namespace {

constexpr std::size_t relays = 6;
constexpr std::uint8_t allRelays = 255;

}  // namespace

void addRelay(Device& device) {
    device.onPort(RELAY_READ, [&device](std::uint8_t port, Request r) {
        const std::uint8_t index = r.u8();
        if (port != 0 || (index >= relays && index != allRelays)) return reply(port, Status::relay);
        const auto switchings = device.digitalLines->switchings(port);
        const auto counts = std::span(switchings).first(relays);
        return reply(port, Status::ok, index == allRelays ? counts : counts.subspan(index, 1));
    });
}

}  // namespace zvr::sim
