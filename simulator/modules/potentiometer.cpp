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

// All or none of them.
Status set(Values& values, std::size_t first, ByteView floats) {
    if (floats.size() % sizeof(float) != 0) throw WrongLength(sizeof(float), floats.size());
    const std::size_t count = floats.size() / sizeof(float);
    if (first + count > resistors) return Status::pinIndex;
    Values wanted = values;
    for (std::size_t i = 0; i < count; ++i) {
        const auto ohms = readBigEndian<float>(slice(floats, i * sizeof(float), sizeof(float)));
        if (!(ohms >= 0 && ohms <= mostOhms)) return Status::core;
        wanted[first + i] = static_cast<std::uint32_t>(std::lround(ohms));
    }
    values = wanted;
    return Status::ok;
}

}  // namespace

void addPotentiometer(Device& device) {
    const auto values = std::make_shared<Values>();
    device.onPort(POT_READ, [values](std::uint8_t port, ByteView rest) {
        const std::uint8_t channel = slice(rest, 0, 1)[0];
        Bytes data{port, channel};
        appendBigEndian(data, channel < resistors ? (*values)[channel] : 0);
        return data;
    });
    device.onPort(POT_WRITE_BY_CS, [values](std::uint8_t port, ByteView rest) {
        const std::uint8_t channel = slice(rest, 0, 1)[0];
        return reply(port, set(*values, channel, slice(rest, 1, sizeof(float))));
    });
    device.onPort(POT_WRITE_ALL_CS,
                  [values](std::uint8_t port, ByteView rest) { return reply(port, set(*values, 0, rest)); });
}

}  // namespace zvr::sim
