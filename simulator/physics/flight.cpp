#include "physics/flight.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace zvr::sim {

namespace {

constexpr double stepSeconds = 0.005;
constexpr double gravity = 9.81, drag = 0.3;  // 1/s
constexpr double ceiling = -8;
constexpr double takeOffHeight = -1.5, climbSpeed = 1, sinkSpeed = 0.5;
constexpr double mostSpeed = 10, mostTurn = 2 * std::numbers::pi, mostTilt = std::numbers::pi / 4;
constexpr double acceleration = 2, turnAcceleration = 4, tiltSpeed = 3, tiltAcceleration = 30;

constexpr double capacity = 5 * 3600;  // As
constexpr double emptyVolts = 14, fullVolts = 16.8;
constexpr double leastForTakeOff = 0.1, leastForFlight = 0.05;

// In position by the host's limits.
constexpr Flight::Six tolerance = {
    5 * std::numbers::pi / 180, 5 * std::numbers::pi / 180, 10 * std::numbers::pi / 180, 0.4, 0.4, 0.4};

double wrapped(double angle) { return std::remainder(angle, 2 * std::numbers::pi); }
bool isBetween(double value, double least, double most) { return value >= least && value <= most; }

}  // namespace

void Flight::Follower::follow(double to, double fastest, double strongest) {
    target = to;
    speed = fastest;
    limit = strongest;
}

void Flight::Follower::brake(double strongest) {
    follow(position + velocity * std::abs(velocity) / (2 * strongest), std::abs(velocity), strongest);
}

void Flight::Follower::step() {
    const double left = target - position;
    const double change = limit * stepSeconds;
    // From this speed it can still brake, step by step, before it is there.
    const double fastest = std::sqrt(change * change / 4 + 2 * limit * std::abs(left)) - change / 2;
    const double wanted = std::copysign(std::min(speed, fastest), left);
    const double before = velocity;
    velocity += std::clamp(wanted - velocity, -change, change);
    if (std::abs(left) <= std::abs(velocity) * stepSeconds && std::abs(before) <= 2 * change) {
        position = target;
        velocity = 0;
    } else {
        position += velocity * stepSeconds;
    }
    acceleration = (velocity - before) / stepSeconds;
}

void Flight::advance(double seconds) {
    waiting_ += seconds;
    while (waiting_ >= stepSeconds) {
        const double passed = isFlying() ? stepSeconds : waiting_;
        if (isFlying()) step();
        drain(passed);
        waiting_ -= passed;
    }
}

void Flight::step() {
    if (charge_ < leastForFlight && task_ != Task::landing) startLanding();
    if (holdsPosition_) {
        for (const Axis axis : {x, y}) axes_[axis].step();
        lean();
    } else {
        stepTilted();
    }
    for (const Axis axis : {roll, pitch, yaw, z}) axes_[axis].step();
    if (task_ == Task::takeOff && axes_[z].position == takeOffHeight) {
        task_ = Task::hover;
        takeOff_ = Progress::done;
    }
    if (task_ == Task::landing && axes_[z].position >= 0) {
        task_ = Task::ground;
        landing_ = Progress::done;
        takeOff_ = Progress::none;
        for (const Axis axis : {roll, pitch, z}) axes_[axis].position = 0;
        for (Follower& axis : axes_) axis.rest();
    }
}

// While it holds its position, it leans into its accelerations.
void Flight::lean() {
    const double cosine = std::cos(axes_[yaw].position), sine = std::sin(axes_[yaw].position);
    const double forward = cosine * axes_[x].acceleration + sine * axes_[y].acceleration;
    const double right = cosine * axes_[y].acceleration - sine * axes_[x].acceleration;
    axes_[roll].follow(std::atan(right / gravity), tiltSpeed, tiltAcceleration);
    axes_[pitch].follow(std::atan((0 - forward) / gravity), tiltSpeed, tiltAcceleration);
}

// Without holding its position it goes where it leans to.
void Flight::stepTilted() {
    const auto [north, east] =
        fromBody(-gravity * std::tan(axes_[pitch].position), gravity * std::tan(axes_[roll].position));
    for (const auto& [axis, pull] : {std::pair{x, north}, {y, east}}) {
        Follower& each = axes_[axis];
        each.acceleration = pull - drag * each.velocity;
        each.velocity += each.acceleration * stepSeconds;
        each.position += each.velocity * stepSeconds;
        each.target = each.position;
    }
}

void Flight::drain(double seconds) { charge_ = std::max(0.0, charge_ - battery().amperes * seconds / capacity); }

Flight::Battery Flight::battery() const {
    const double amperes = isFlying() ? 18 : active_ ? 1.5 : 0.5;
    return {emptyVolts + (fullVolts - emptyVolts) * charge_, amperes, 100 * charge_};
}

Flight::Six Flight::each(double Follower::*member) const {
    Six values;
    std::ranges::transform(axes_, values.begin(), [member](const Follower& axis) { return axis.*member; });
    return values;
}

Flight::Six Flight::positions() const {
    Six values = each(&Follower::position);
    values[yaw] = wrapped(values[yaw]);
    return values;
}

Flight::Six Flight::targets() const {
    Six values = each(&Follower::target);
    values[yaw] = wrapped(values[yaw]);
    return values;
}

bool Flight::hasReached(Axis axis) const {
    return std::abs(axes_[axis].target - axes_[axis].position) <= tolerance[axis];
}

bool Flight::isOnTarget() const {
    return std::ranges::all_of(axes_, [this](const Follower& axis) {
        return axis.position == axis.target && (axis.acceleration == 0 || !holdsPosition_);
    });
}

Flight::Task Flight::task() const { return task_ == Task::hover && !isOnTarget() ? Task::move : task_; }

Flight::Answer Flight::activate(bool active) {
    if (isFlying()) return Answer::notNow;
    active_ = active;
    return Answer::done;
}

Flight::Answer Flight::holdPosition(bool holds) {
    holdsPosition_ = holds;
    if (!isFlying()) return Answer::done;
    for (const Axis axis : {x, y}) axes_[axis].brake(acceleration);
    for (const Axis axis : {roll, pitch}) axes_[axis].follow(0, tiltSpeed, tiltAcceleration);
    return Answer::done;
}

Flight::Answer Flight::takeOff(bool start) {
    if (!start) {
        if (task_ != Task::takeOff) return Answer::notNow;
        task_ = Task::hover;
        takeOff_ = Progress::none;
        brake();
        return Answer::done;
    }
    if (!active_ || isFlying() || charge_ < leastForTakeOff) return Answer::notNow;
    task_ = Task::takeOff;
    takeOff_ = Progress::underWay;
    landing_ = Progress::none;
    axes_[z].follow(takeOffHeight, climbSpeed, acceleration);
    return Answer::done;
}

void Flight::startLanding() {
    brake();
    task_ = Task::landing;
    landing_ = Progress::underWay;
    takeOff_ = Progress::none;
    axes_[z].follow(0, sinkSpeed, acceleration);
}

Flight::Answer Flight::land(bool start) {
    if (start != (task_ == Task::hover || task_ == Task::takeOff)) return Answer::notNow;
    if (start) {
        startLanding();
        return Answer::done;
    }
    if (task_ != Task::landing) return Answer::notNow;
    task_ = Task::hover;
    landing_ = Progress::none;
    brake();
    return Answer::done;
}

void Flight::brake() {
    for (const Axis axis : {x, y, z}) axes_[axis].brake(acceleration);
    axes_[yaw].brake(turnAcceleration);
    for (const Axis axis : {roll, pitch}) axes_[axis].follow(0, tiltSpeed, tiltAcceleration);
}

Flight::Answer Flight::stop() {
    if (task_ != Task::hover) return Answer::notNow;
    brake();
    return Answer::done;
}

Flight::Answer Flight::moveTo(Axis axis, double target, double speed) {
    const bool tilts = axis == roll || axis == pitch, turns = axis == yaw;
    if (task_ != Task::hover || (axis != yaw && axis != z && tilts == holdsPosition_)) return Answer::notNow;
    if (!std::isfinite(target) || !(speed > 0 && speed <= (tilts || turns ? mostTurn : mostSpeed))) {
        return Answer::impossible;
    }
    if (axis == z && !isBetween(target, ceiling, 0)) return Answer::impossible;
    if (tilts && std::abs(target) > mostTilt) return Answer::impossible;
    Follower& moved = axes_[axis];
    if (turns) target = moved.position + wrapped(target - moved.position);
    moved.follow(target, speed, tilts ? tiltAcceleration : turns ? turnAcceleration : acceleration);
    return Answer::done;
}

Flight::Answer Flight::moveTo(double toX, double toY, double speed) {
    const double wayX = toX - axes_[x].position, wayY = toY - axes_[y].position;
    const double way = std::hypot(wayX, wayY);
    const Follower before = axes_[x];
    const bool rests = before.velocity == 0 && axes_[y].velocity == 0;
    // Each takes its part of the way, so that both are there at the same time.
    Answer answer = moveTo(x, toX, speed);
    if (answer == Answer::done) answer = moveTo(y, toY, speed);
    if (answer != Answer::done) {
        axes_[x] = before;
    } else if (way > 0) {
        for (const auto& [axis, part] : {std::pair{x, wayX}, {y, wayY}}) {
            Follower& each = axes_[axis];
            // One that is on its way must be able to come back.
            each.speed = std::max(each.speed * std::abs(part) / way, std::abs(each.velocity));
            if (rests) each.limit *= std::abs(part) / way;
        }
    }
    return answer;
}

std::array<double, 2> Flight::fromBody(double forward, double right) const {
    const double cosine = std::cos(axes_[yaw].position), sine = std::sin(axes_[yaw].position);
    return {cosine * forward - sine * right, sine * forward + cosine * right};
}

}  // namespace zvr::sim
