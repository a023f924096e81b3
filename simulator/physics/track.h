// The switches along an axis, and the search for them.
#pragma once

#include <array>
#include <string_view>

#include "physics/profile.h"

namespace zvr::sim {

/// Where a switch is closed.
struct Zone {
    double from, to;
    bool holds(double position) const { return position >= from && position <= to; }
};

/// Positions in pulses from where the axis stands at the start.
struct Track {
    double homeAt = -20000;  ///< the switch is closed here and some way behind
    double reverseAt = -1e6, forwardAt = 1e6;
    double revolution = 4000;   ///< pulses from index to index
    double alarmAt = infinity;  ///< the motor jams at this distance to either side

    Zone home() const { return {homeAt - 100000, homeAt}; }
    Zone reverse() const { return {-infinity, reverseAt}; }
    Zone forward() const { return {forwardAt, infinity}; }
    /// The next index in a direction.
    double indexBehind(double position, int direction) const;
};

struct Tracks : std::array<Track, 4> {
    /// AXIS:HOME[:REVERSE[:FORWARD[:REVOLUTION[:ALARM]]]]. Throws std::invalid_argument.
    void set(std::string_view text);
};

/// Runs to a switch and stops behind its edge; if `approach` is a speed, returns and approaches the edge with it in the
/// final direction; then goes on by an offset. Runs for ever if there is no switch.
void seek(Profile& profile, const Zone& zone, int direction, int finalDirection, const Ramp& ramp, double approach,
          double offset);

}  // namespace zvr::sim
