// Variable resistors: each keeps its value.
#include <array>
#include <cmath>
#include <memory>

#include "device/modules.h"

namespace zvr::sim {

namespace {

constexpr std::size_t resistors = 4;
constexpr float mostOhms = 100000;

using Values = std::array<std::uint32_t, resistors>;

// All or none of the rest of the request.
Status set(Values& values, std::size_t first, Request request) {
    if (request.left() % sizeof(float) != 0) throw WrongLength(sizeof(float), request.left());
    if (first + request.left() / sizeof(float) > resistors) return Status::pinIndex;
    Values wanted = values;
    for (; request.left() != 0; ++first) {
        const float ohms = request.f32();
        if (!(ohms >= 0 && ohms <= mostOhms)) return Status::core;
        wanted[first] = static_cast<std::uint32_t>(std::lround(ohms));
    }
    values = wanted;
    return Status::ok;
}

}  // namespace

void addPotentiometer(Device& device) {
    const auto values = std::make_shared<Values>();
    device.onPort(POT_READ, [values](std::uint8_t port, Request r) {
        const std::uint8_t channel = r.u8();
        return reply(port, channel, channel < resistors ? (*values)[channel] : 0U);
    });
    device.onPort(POT_WRITE_BY_CS, [values](std::uint8_t port, Request r) {
        const std::uint8_t channel = r.u8();
        return reply(port, set(*values, channel, Request(r.bytes(sizeof(float)))));
    });
    device.onPort(POT_WRITE_ALL_CS, [values](std::uint8_t port, Request r) { return reply(port, set(*values, 0, r)); });
}

}  // namespace zvr::sim
