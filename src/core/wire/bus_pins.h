// The digital lines used by the ports of the serial buses.
//
// The lines are not known for certain, so they are assumed: no two ports share a line, and every model with a port of a
// bus has its lines.
#pragma once

#include <array>

namespace zvr {

enum class Bus { uart, i2c, spi, can };

/// One port of a bus, and pins of a digital port from the first to the last.
struct BusLines {
    Bus bus;
    int port;
    int digitalPort;
    int firstPin;
    int lastPin;
};

inline constexpr std::array<BusLines, 7> busLines{{
    {Bus::uart, 1, 0, 0, 1},
    {Bus::uart, 2, 0, 2, 3},
    {Bus::i2c, 1, 0, 4, 5},
    {Bus::i2c, 2, 0, 6, 7},
    {Bus::spi, 1, 2, 0, 3},
    {Bus::spi, 2, 1, 0, 3},
    {Bus::can, 1, 2, 6, 7},
}};

}  // namespace zvr
