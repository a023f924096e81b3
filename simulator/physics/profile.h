// How something moves over time: pieces of constant jerk, in closed form.
#pragma once

#include <functional>
#include <limits>
#include <optional>
#include <vector>

namespace zvr::sim {

constexpr double infinity = std::numeric_limits<double>::infinity();

struct Movement {
    double position = 0, speed = 0, acceleration = 0;
};

/// How fast it may be and become, per second. A rate of 0 changes the speed at once, a jerk of 0 the rate.
struct Ramp {
    double initial = 0;  ///< the speed from which it starts and stops at once
    double speed = 0;
    double acceleration = 0, deceleration = 0;
    double jerk = 0, decelerationJerk = 0;
    bool operator==(const Ramp&) const = default;
};

enum class Crossing { up, down, either };

/// When a value first reaches a level by crossing it; between the given times it moves in one direction only.
/// With `up` and `down` a value that is there already crosses it as soon as it goes on.
std::optional<double> firstCrossing(const std::vector<double>& times, const std::function<double(double)>& value,
                                    double level, Crossing crossing);

class Profile {
public:
    explicit Profile(double position = 0, double speed = 0) : end_{position, speed, 0} {}

    /// Goes on with another speed, in the direction of its sign, which is the present one.
    void changeSpeed(double speed, double rate, double jerk);
    /// Goes on unchanged; `infinity` is a valid time.
    void hold(double seconds);
    /// Goes on in a direction, for ever.
    void run(double direction, const Ramp& ramp);
    /// Goes to a position, and turns round if it is behind. Without a stop it gets there as fast as it may.
    void moveTo(double target, const Ramp& ramp, bool stops = true);
    void stop(const Ramp& ramp);
    /// Forgets what comes after a time.
    void cut(double time);

    Movement at(double time) const;
    const Movement& end() const { return end_; }
    double duration() const { return duration_; }
    /// From a time on, those between which the speed keeps its sign; they end with the last.
    std::vector<double> times(double from = 0) const;
    std::optional<double> timeOf(double position, Crossing crossing = Crossing::either, double from = 0) const;

private:
    struct Piece {
        double start;
        Movement movement;
        double jerk;

        Movement at(double time) const;
    };

    void add(double seconds, double acceleration, double jerk);

    std::vector<Piece> pieces_;
    Movement end_;
    double duration_ = 0;
};

}  // namespace zvr::sim
