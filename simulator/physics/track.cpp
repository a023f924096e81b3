#include "physics/track.h"

#include <cmath>
#include <stdexcept>
#include <string>

#include "device/fields.h"

namespace zvr::sim {

double Track::indexBehind(double position, int direction) const {
    const double turns = position / revolution;
    return revolution * (direction > 0 ? std::floor(turns) + 1 : std::ceil(turns) - 1);
}

void Tracks::set(std::string_view text) {
    constexpr int most = 1000000000;
    const std::vector<std::string_view> parts = partsOf(text);
    if (parts.size() < 2 || parts.size() > 6) {
        throw std::invalid_argument("\"" + std::string(text) +
                                    "\" is not AXIS:HOME[:REVERSE[:FORWARD[:REVOLUTION[:ALARM]]]]");
    }
    const std::vector<std::size_t> axes = choiceOf(parts[0], size());
    if (axes.empty()) throw std::invalid_argument("axes are 0 to 3, or * for all");
    for (const std::size_t axis : axes) {
        Track& track = (*this)[axis];
        double* const fields[] = {&track.homeAt, &track.reverseAt, &track.forwardAt, &track.revolution, &track.alarmAt};
        for (std::size_t k = 1; k < parts.size(); ++k) *fields[k - 1] = realOf(parts[k], most);
        if (!(track.revolution >= 1)) throw std::invalid_argument("a revolution has a pulse or more");
        if (!(track.reverseAt < track.forwardAt)) throw std::invalid_argument("limits are in rising order");
    }
}

void seek(Profile& profile, const Zone& zone, int direction, int finalDirection, const Ramp& ramp, double approach,
          double offset) {
    if (!zone.holds(profile.end().position)) {
        profile.run(direction, ramp);
        const auto arrival =
            direction > 0 ? profile.timeOf(zone.from, Crossing::up) : profile.timeOf(zone.to, Crossing::down);
        if (!arrival || !zone.holds(std::round(profile.at(*arrival).position))) return;
        profile.cut(*arrival);
        profile.stop(ramp);
    }
    const double edge = finalDirection > 0 ? zone.from : zone.to;
    if (approach > 0 && std::isfinite(edge)) {
        Ramp slow = ramp;
        slow.speed = approach;
        profile.moveTo(edge - finalDirection, slow);
        profile.moveTo(edge, slow);
    }
    if (offset != 0) profile.moveTo(std::round(profile.end().position) + offset, ramp);
}

}  // namespace zvr::sim
