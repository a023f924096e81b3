// A motion chip of four axes, as its registers show it. It takes the time from its caller, in seconds, and does what
// has become due when it is asked; between requests it does nothing.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>

#include "physics/mcx514_words.h"
#include "physics/path.h"
#include "physics/track.h"

namespace zvr::sim {

class MCX514 {
public:
    explicit MCX514(const Tracks& tracks) : tracks_(tracks) { reset(); }

    /// The value of a read, 0 after a command, nothing if it is refused. Bit i of the mask is axis i.
    std::optional<std::uint32_t> run(std::uint8_t code, std::uint8_t mask, std::uint32_t data, double now);

private:
    struct Drive {
        unsigned mask;
        std::size_t main;  ///< the axis whose registers set the speed
        Path path;
        double target;  ///< length to go to, or for ever
        Ramp ramp;
        double pointSign = 1, zero = 0;  ///< the target is the finish point with this sign, less this
        bool stops = true;               ///< at the end of the path
        bool overridable = true;         ///< registers written on the way count
        bool watchesLimits = true;
        bool homes = false;
        bool interpolates = false;
        double start = 0;
        Profile profile{};
        std::array<std::int64_t, axisCount> origins{};
    };

    struct Axis {
        std::array<std::uint32_t, MOTION_2A_IPM + 1> values{};  ///< by the code that writes them
        std::array<std::uint16_t, 4> modes{};                   ///< WR1 to WR3, by number
        std::int64_t position = 0;                              ///< on its track, while it stands
        std::int64_t logicalBase = 0, realBase = 0;
        std::shared_ptr<Drive> drive;
        double stopped = -infinity;
        bool held = false;
        std::uint8_t pending = 0;  ///< the drive command that is held
        std::uint16_t events = 0, errors = 0;
        std::uint8_t outputs = 0;
        std::uint8_t syncs = 0;  ///< those that are enabled
        std::optional<double> timerStart;
        std::optional<std::int64_t> splitFrom;
        std::uint32_t splits = 0;

        /// A setting of one bit.
        bool has(MotionCode setting) const {
            return (modes[mcx514::registerOf(setting)] & mcx514::bitOf(setting)) != 0;
        }
        int realSign() const { return has(MOTION_DB_PIINV) ? -1 : 1; }
        std::int32_t signedValue(std::size_t code) const { return static_cast<std::int32_t>(values[code]); }
    };

    static constexpr std::size_t longestQueue = 8;

    struct Event;
    /// Something that enabled actions may wait for; those of a mask.
    struct Cause {
        std::size_t axis;
        int number;
        std::uint8_t which;
    };

    void reset();
    void advance(double now);
    void findEvents(std::size_t axis, Event& first);
    void findComparisons(std::size_t axis, Event& first);
    void findEdges(std::size_t axis, Event& first);
    static double placeOf(const Axis& axis, std::size_t code, bool ofReal);
    static bool waitsFor(const Axis& axis, std::size_t sync, int cause);
    std::optional<double> crossing(std::size_t axis, double place, Crossing direction) const;

    std::uint32_t read(std::uint8_t code, std::size_t axis, std::uint32_t data);
    std::uint32_t readInputs(std::size_t axis) const;
    std::uint32_t readState(std::size_t axis) const;
    std::uint32_t readMainStatus() const;
    bool commandChip(std::uint8_t code, std::uint32_t data);
    bool command(std::size_t axis, std::uint8_t code, std::uint32_t data);
    void write(std::size_t axis, std::uint8_t code, std::uint32_t data);
    void writeMode(std::size_t axis, int mode, std::uint16_t word);

    bool startMove(std::size_t axis, std::uint8_t code);
    bool startSearch(std::size_t axis);
    bool startInterpolation(std::uint8_t code);
    bool begin(Drive drive, double speed = 0);
    void plan(Drive& drive, double position, double speed);
    void override(std::size_t axis);
    void changeSpeed(std::size_t axis, double change);
    void stop(std::size_t axis, bool atOnce);
    void finish(const std::shared_ptr<Drive>& drive);
    void fire(std::size_t axis, int cause, std::uint8_t which = 15);
    void follow();
    void act(std::size_t axis, std::size_t sync);

    Ramp rampOf(const Axis& axis) const;
    double gone(const Drive& drive) const;
    std::int64_t position(std::size_t axis) const;
    double exactPlace(std::size_t axis) const;
    std::int64_t logical(std::size_t axis) const;
    std::int64_t real(std::size_t axis) const;
    double speed(const Axis& axis) const;
    bool inPosition(const Axis& axis) const;
    bool alarm(std::size_t axis) const;
    std::uint32_t splits(std::size_t axis) const;

    const Tracks& tracks_;
    std::array<Axis, axisCount> axes_;
    std::array<std::uint32_t, MOTION_2A_IPM + 1> shared_{};  // values of the whole chip, by the code that writes them
    std::array<std::uint16_t, 8> words_{};                   // WR0 and WR4 to WR7, by number
    std::deque<Drive> queue_;                                // interpolations that follow the present one
    std::deque<Cause> causes_;                               // that have not been followed yet
    bool decelerates_ = false;                               // at the end of an interpolation
    double calculated_ = -infinity;                          // when the calculation of a helix ends
    double clock_ = 0;
};

}  // namespace zvr::sim
