#include "physics/profile.h"

#include <algorithm>
#include <cmath>

namespace zvr::sim {

namespace {

constexpr double longest = 1e9;  // seconds that stand for ever where a time has to be found

double durationOf(double change, double rate, double jerk) {
    if (rate <= 0) return 0;
    if (jerk <= 0) return change / rate;
    return change >= rate * rate / jerk ? change / rate + rate / jerk : 2 * std::sqrt(change / jerk);
}

// Both shapes are symmetric, so the mean speed is that in the middle.
double lengthOf(double from, double to, const Ramp& ramp) {
    const double duration = to > from ? durationOf(to - from, ramp.acceleration, ramp.jerk)
                                      : durationOf(from - to, ramp.deceleration, ramp.decelerationJerk);
    return (from + to) / 2 * duration;
}

// The greatest value that holds; it holds up to some value and not beyond.
template <class Test>
double greatest(double holds, double fails, Test test) {
    for (;;) {
        const double middle = holds + (fails - holds) / 2;
        if (middle == holds || middle == fails) return holds;
        (test(middle) ? holds : fails) = middle;
    }
}

}  // namespace

std::optional<double> firstCrossing(const std::vector<double>& times, const std::function<double(double)>& value,
                                    double level, Crossing crossing) {
    for (std::size_t i = 0; i + 1 < times.size(); ++i) {
        const double begin = times[i], end = std::min(times[i + 1], begin + longest);
        const double from = value(begin), to = value(end);
        const bool rises = to > from;
        if (from == to || crossing == (rises ? Crossing::down : Crossing::up)) continue;
        const auto isBefore = [&](double place) { return rises ? place < level : place > level; };
        if (isBefore(to)) continue;
        if (!isBefore(from)) {
            if (crossing == Crossing::either) continue;
            return begin;
        }
        const double last = greatest(begin, end, [&](double time) { return isBefore(value(time)); });
        return std::min(std::nextafter(last, infinity), end);
    }
    return std::nullopt;
}

Movement Profile::Piece::at(double time) const {
    const auto& [position, speed, acceleration] = movement;
    const double t = time - start;
    return {position + t * (speed + t * (acceleration / 2 + t * jerk / 6)), speed + t * (acceleration + t * jerk / 2),
            acceleration + t * jerk};
}

void Profile::add(double seconds, double acceleration, double jerk) {
    if (!(seconds > 0)) return;
    pieces_.push_back({duration_, {end_.position, end_.speed, acceleration}, jerk});
    duration_ += seconds;
    if (duration_ < infinity) end_ = pieces_.back().at(duration_);
}

void Profile::hold(double seconds) { add(seconds, 0, 0); }

void Profile::changeSpeed(double speed, double rate, double jerk) {
    const double change = std::abs(speed - end_.speed), sign = speed < end_.speed ? -1 : 1;
    const double duration = durationOf(change, rate, jerk);
    if (jerk <= 0) {
        add(duration, sign * rate, 0);
    } else {
        const double rise = std::min(rate / jerk, duration / 2), most = sign * jerk * rise;
        add(rise, 0, sign * jerk);
        add(duration - 2 * rise, most, 0);
        add(rise, most, -sign * jerk);
    }
    end_.speed = speed;
    end_.acceleration = 0;
}

void Profile::run(double direction, const Ramp& ramp) {
    if (!(ramp.speed > 0)) return stop(ramp);
    direction = direction < 0 ? -1 : 1;
    if (end_.speed * direction < 0) stop(ramp);
    if (end_.speed == 0) end_.speed = direction * std::min(ramp.initial, ramp.speed);
    const bool faster = ramp.speed > std::abs(end_.speed);
    changeSpeed(direction * ramp.speed, faster ? ramp.acceleration : ramp.deceleration,
                faster ? ramp.jerk : ramp.decelerationJerk);
    hold(infinity);
}

void Profile::moveTo(double target, const Ramp& ramp, bool stops) {
    if (!(ramp.speed > 0)) return stop(ramp);
    const double slow = std::min(ramp.initial, ramp.speed);
    const auto stopping = [&](double speed) { return stops && speed > slow ? lengthOf(speed, slow, ramp) : 0; };
    const double ahead = (target - end_.position) * (end_.speed < 0 ? -1 : 1);
    if (end_.speed != 0 && stopping(std::abs(end_.speed)) > ahead + 1e-6) stop(ramp);

    const double distance = std::abs(target - end_.position), direction = target < end_.position ? -1 : 1;
    const double start = end_.speed == 0 ? slow : std::abs(end_.speed);
    const auto fits = [&](double peak) { return lengthOf(start, peak, ramp) + stopping(peak) <= distance; };
    const double peak = ramp.speed > start && !fits(ramp.speed) ? greatest(start, ramp.speed, fits) : ramp.speed;
    if (distance > 0) {
        end_.speed = direction * start;
        changeSpeed(direction * peak, peak > start ? ramp.acceleration : ramp.deceleration,
                    peak > start ? ramp.jerk : ramp.decelerationJerk);
        hold(((target - end_.position) * direction - stopping(peak)) / peak);
        if (stops && peak > slow) changeSpeed(direction * slow, ramp.deceleration, ramp.decelerationJerk);
    }
    end_ = {target, stops ? 0 : direction * peak, 0};
}

void Profile::stop(const Ramp& ramp) {
    const double speed = std::min({ramp.initial, ramp.speed, std::abs(end_.speed)});
    changeSpeed(std::copysign(speed, end_.speed), ramp.deceleration, ramp.decelerationJerk);
    end_.speed = 0;
}

void Profile::cut(double time) {
    if (time >= duration_) return;
    end_ = at(time);
    std::erase_if(pieces_, [&](const Piece& piece) { return piece.start >= time; });
    duration_ = time;
}

Movement Profile::at(double time) const {
    if (time >= duration_ || pieces_.empty()) return end_;
    const auto next = std::ranges::upper_bound(pieces_, std::max(time, 0.0), {}, &Piece::start);
    return std::prev(next)->at(std::max(time, 0.0));
}

std::vector<double> Profile::times(double from) const {
    std::vector<double> times{from};
    for (const Piece& piece : pieces_) {
        if (piece.start > from) times.push_back(piece.start);
    }
    if (duration_ > from) times.push_back(duration_);
    return times;
}

std::optional<double> Profile::timeOf(double position, Crossing crossing, double from) const {
    return firstCrossing(
        times(from), [this](double time) { return at(time).position; }, position, crossing);
}

}  // namespace zvr::sim
