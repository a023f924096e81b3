// The devices connected to a device's serial buses.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "core/wire/bus_pins.h"

namespace zvr::sim {

enum class PeerKind { none, eeprom, thermometer, flash, loop, echo, gps, count, cyclic, responder };

struct Peer {
    PeerKind kind;
    Bus bus;
    int port;
    std::vector<double> arguments;  ///< all that its kind has

    double real(std::size_t which) const { return arguments[which]; }
    template <class Number = int>
    Number number(std::size_t which) const {
        return static_cast<Number>(arguments[which]);
    }
};

/// At the start something useful on each port.
class Peers {
public:
    Peers();

    /// KIND@BUS:PORT[:ARGUMENT...]. The first one for a port takes the place of what it has at the start. Throws
    /// std::invalid_argument.
    void add(std::string_view text);

    std::vector<Peer> at(Bus bus, int port) const;

private:
    std::vector<Peer> initial_, chosen_;
};

}  // namespace zvr::sim
