#include "physics/path.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace zvr::sim {

namespace {

constexpr double fullTurn = 2 * std::numbers::pi;

// Between 0 and a period.
double wrapped(double angle, double period = fullTurn) { return angle - period * std::floor(angle / period); }

}  // namespace

std::vector<double> Path::corners(double from) const {
    std::vector<double> lengths;
    if (turn <= 0) return lengths;
    const double quarter = turn / 4;
    double next = corner + quarter * std::max(0.0, std::floor((from - corner) / quarter) + 1);
    for (int i = 0; i < 5 && next < length; ++i, next += quarter) lengths.push_back(next);
    return lengths;
}

Path freePath() {
    return {[](std::size_t, double length) { return length; }};
}

Path linePath(const Offsets& end) {
    double longest = 0;
    for (const double offset : end) longest = std::max(longest, std::abs(offset));
    return {[end, longest](std::size_t axis, double length) { return longest > 0 ? end[axis] * length / longest : 0; },
            longest};
}

Path arcPath(const Arc& arc) {
    const double cx = arc.centre[arc.x], cy = arc.centre[arc.y];
    const double radius = std::hypot(cx, cy), sign = arc.clockwise ? -1 : 1;
    const double start = std::atan2(-cy, -cx);
    double sweep = wrapped(sign * (std::atan2(arc.end[arc.y] - cy, arc.end[arc.x] - cx) - start));
    if (sweep < 0.5 / std::max(radius, 1.0) || sweep > fullTurn - 1e-9) sweep = 0;
    sweep += fullTurn * (sweep == 0 ? std::max(arc.turns, 1) : arc.turns);
    const double length = radius * sweep;
    const auto at = [=](std::size_t axis, double gone) {
        if (axis != arc.x && axis != arc.y) return arc.end[axis] * gone / length;
        const double angle = start + sign * gone / radius;
        const double place = axis == arc.x ? cx + radius * std::cos(angle) : cy + radius * std::sin(angle);
        // An end that is as near to the arc as it can be is met.
        return gone >= length && std::abs(place - arc.end[axis]) < 1 ? arc.end[axis] : place;
    };
    return {at, length, radius * fullTurn, radius * wrapped(-sign * start, fullTurn / 4)};
}

}  // namespace zvr::sim
