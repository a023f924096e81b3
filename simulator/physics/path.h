// Paths of several axes, parametrised by length.
#pragma once

#include <array>
#include <functional>
#include <vector>

#include "physics/profile.h"

namespace zvr::sim {

constexpr std::size_t axisCount = 4;
using Offsets = std::array<double, axisCount>;

/// From where the axes stand, in pulses.
struct Path {
    std::function<double(std::size_t axis, double length)> at;
    double length = infinity;
    double turn = 0;    ///< length of a full turn; 0 is none
    double corner = 0;  ///< the first length, of four in a turn, at which an axis turns round

    /// Lengths between which no axis reverses; what does not occur within a turn does not occur later.
    std::vector<double> corners(double from) const;
};

/// One axis; the length is its offset, and has a sign.
Path freePath();

/// All axes straight to the end. The length is that of the longest.
Path linePath(const Offsets& end);

struct Arc {
    std::size_t x, y;  ///< axes
    Offsets centre, end;
    bool clockwise;
    int turns;  ///< beside what is left to the end
};

/// An arc of two axes, on which the others go straight. The length is that on the arc.
Path arcPath(const Arc& arc);

}  // namespace zvr::sim
