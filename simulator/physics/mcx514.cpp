#include "physics/mcx514.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <functional>
#include <utility>

namespace zvr::sim {

namespace {

// clang-format off
// Codes by which values are written; each is told its number where it does not follow the one before.
enum Value : std::uint8_t {
    accelerationJerk = 0x00, decelerationJerk, acceleration, deceleration, initialSpeed, driveSpeed, finishPoint,
    circularCentre = 0x08, logicalPosition, realPosition, softLimitPlus, softLimitMinus,
    logicalMost = 0x0E, realMost, multiPurpose0,
    homeSpeed = 0x14, speedStep, timer, split1, split2, longestInterpolation, helixTurns, helixLength, outputs,
    multiPurposeMode = 0x20, homeMode1 = 0x23, homeMode2, sync0 = 0x26, interpolationMode = 0x2A,
};

enum Code : std::uint8_t {
    noOperation = 0x1F,
    relativeMove = 0x50, relativeBack, onPlus, onMinus, absoluteMove,
    slowStop = 0x56, instantStop, homeSearch = 0x5A,
    line1 = 0x60, line4 = 0x63, circleClockwise, circleBack, bits2, bits4 = 0x68, helixClockwise, helixBack,
    helixCalculation, helixCalculationBack, decelerate, doNotDecelerate, clearStep,
    faster = 0x70, slower, startTimer = 0x73, stopTimer, startSplit, stopSplit, hold, release, clearErrors,
    enableSyncs = 0x80, disableSyncs = 0x90, activateSyncs = 0xA0,
    setModeBits = 0xC0, writeWords = 0xE0, readWords = 0xE8, checkBus = 0xFC, resetBus, resetChip,
};
// clang-format on

struct Range {
    std::uint8_t first, last;
};
template <std::size_t Count>
bool isIn(const Range (&ranges)[Count], std::uint8_t code) {
    return std::ranges::any_of(ranges, [code](const Range& r) { return code >= r.first && code <= r.last; });
}

constexpr Range known[] = {{0x00, 0x1C}, {0x1F, 0x2A}, {0x30, 0x3B}, {0x3D, 0x48}, {0x50, 0x54},
                           {0x56, 0x5A}, {0x60, 0x7C}, {0x81, 0x8F}, {0x91, 0x9F}, {0xA1, 0xAF},
                           {0xC0, 0xDE}, {0xE0, 0xEF}, {0xFC, 0xFE}};
constexpr Range ofChip[] = {{0x19, 0x1B}, {0x1F, 0x1F}, {0x2A, 0x2A}, {0x60, 0x6F},
                            {0x78, 0x78}, {0xE0, 0xE0}, {0xE4, 0xE7}, {0xFC, 0xFE}};
constexpr Range reading[] = {{0x30, 0x48}, {0xE8, 0xEF}};
constexpr Range readingChip[] = {{0x39, 0x3B}, {0xE8, 0xE8}, {0xEC, 0xEF}};

enum ErrorBit { softPlus, softMinus, hardPlus, hardMinus, alarmBit };
enum EventBit { driveStart = 4, driveEnd = 7, homeEnd, timerEnd, splitStart, splitEnd, syncDone };
enum CauseNumber {
    compared = 1,
    timeIsOver = 2,
    driveStarts = 3,
    driveEnds = 6,
    splitStarts = 7,
    splitEnds = 8,
    rises = 10,
    falls
};

constexpr double settling = 0.005;  // seconds until an axis that stands is in position
constexpr double calculation = 0.002;
constexpr std::size_t longestQueue = 8;
constexpr int mostEvents = 2000;  // between two requests: actions may follow each other without end

// Pulses that are behind on a way.
double whole(double length) { return length < 0 ? std::ceil(length - 1e-6) : std::floor(length + 1e-6); }

std::int64_t counted(std::int64_t count, std::uint32_t most) {
    if (most >= 0x7FFFFFFF) return static_cast<std::int32_t>(count);
    const std::int64_t period = std::int64_t{most} + 1;
    return (count % period + period) % period;
}

}  // namespace

struct MCX514::Event {
    double time;
    std::function<void()> action{};

    void offer(std::optional<double> other, std::function<void()> what) {
        if (!other || *other > time || (action && *other == time)) return;
        time = *other;
        action = std::move(what);
    }
};

void MCX514::reset() {
    for (std::size_t axis = 0; axis < axisCount; ++axis) {
        const std::int64_t here = position(axis);  // the motor stays where it is
        axes_[axis] = Axis{};
        axes_[axis].position = here;
        axes_[axis].logicalBase = axes_[axis].realBase = -here;
        axes_[axis].values[logicalMost] = axes_[axis].values[realMost] = 0xFFFFFFFF;
        axes_[axis].modes[2] = 1 << 10;
    }
    shared_.fill(0);
    words_.fill(0);
    queue_.clear();
    decelerates_ = false;
    calculated_ = -forever;
}

std::optional<std::uint32_t> MCX514::run(std::uint8_t code, std::uint8_t mask, std::uint32_t data, double now) {
    advance(now);
    if (!isIn(known, code)) return std::nullopt;
    mask &= 15;
    const auto lowest = static_cast<std::size_t>(std::countr_zero(mask));
    if (isIn(reading, code)) {
        if (mask == 0 && !isIn(readingChip, code)) return std::nullopt;
        return read(code, mask == 0 ? 0 : lowest, data);
    }
    bool done = true;
    if (isIn(ofChip, code)) {
        done = commandChip(code, code == release ? mask : data);
    } else {
        if (mask == 0) return std::nullopt;
        for (std::size_t axis = 0; axis < axisCount; ++axis) {
            if ((mask >> axis & 1) != 0) done = command(axis, code, data) && done;
        }
    }
    follow();
    return done ? std::optional<std::uint32_t>(0) : std::nullopt;
}

// --- what happens by itself

void MCX514::advance(double now) {
    for (int most = 0; most < mostEvents; ++most) {
        Event first{now};
        for (std::size_t axis = 0; axis < axisCount; ++axis) {
            findEvents(axis, first);
        }
        if (!first.action) break;
        clock_ = std::max(clock_, first.time);
        first.action();
        follow();
    }
    clock_ = now;
}

void MCX514::findEvents(std::size_t axis, Event& first) {
    const Axis& state = axes_[axis];
    if (state.timerStart) {
        const double period = std::max<double>(state.values[timer], 1) * 1e-6;
        first.offer(*state.timerStart + period, [this, axis, period, now = first.time] {
            Axis& state = axes_[axis];
            if (state.has(3, 14)) {
                *state.timerStart += period * std::floor((now - *state.timerStart) / period);
            } else {
                state.timerStart.reset();
            }
            state.events |= 1 << timerEnd;
            fire(axis, timeIsOver);
        });
    }
    if (!state.drive) return;
    findComparisons(axis, first);
    findEdges(axis, first);
    const Drive& drive = *state.drive;
    const auto offerStop = [&](double at, Crossing direction, int error, bool atOnce) {
        first.offer(crossing(axis, at, direction), [this, axis, error, atOnce] {
            axes_[axis].errors |= static_cast<std::uint16_t>(1 << error);
            stop(axis, atOnce);
        });
    };
    const Track& track = tracks_[axis];
    if (state.has(2, 9)) {
        offerStop(track.alarmAt, Crossing::up, alarmBit, true);
        offerStop(-track.alarmAt, Crossing::down, alarmBit, true);
    }
    if (drive.watchesLimits && state.has(2, 11)) {
        offerStop(track.forwardAt, Crossing::up, hardPlus, state.has(2, 12));
        offerStop(track.reverseAt, Crossing::down, hardMinus, state.has(2, 12));
    }
    if (drive.watchesLimits && state.has(2, 13)) {
        const bool ofReal = state.has(2, 14), turned = ofReal && state.realSign() < 0;
        const auto plus = turned ? Crossing::down : Crossing::up, minus = turned ? Crossing::up : Crossing::down;
        offerStop(placeOf(state, softLimitPlus, ofReal), plus, softPlus, state.has(2, 15));
        offerStop(placeOf(state, softLimitMinus, ofReal), minus, softMinus, state.has(2, 15));
    }
    // Behind all that happens on the way to the end.
    if (drive.main == axis) {
        first.offer(drive.start + drive.profile.duration(), [this, ended = state.drive] { finish(ended); });
    }
}

// Where on the track a counter has the value of a register.
double MCX514::placeOf(const Axis& axis, std::size_t code, bool ofReal) {
    const std::int64_t value = axis.signedValue(code);
    return static_cast<double>(ofReal ? axis.realSign() * (value - axis.realBase) : value - axis.logicalBase);
}

bool MCX514::waitsFor(const Axis& axis, std::size_t sync, int cause) {
    return (axis.syncs >> sync & 1) != 0 && (axis.values[sync0 + sync] & 15) == static_cast<unsigned>(cause);
}

void MCX514::findComparisons(std::size_t axis, Event& first) {
    const Axis& state = axes_[axis];
    const double here = exactPlace(axis);
    for (std::size_t sync = 0; sync < 4; ++sync) {
        const unsigned mode = state.values[multiPurposeMode] >> (4 * sync);
        const bool isWanted = waitsFor(state, sync, compared) || state.has(1, static_cast<int>(sync));
        if (!isWanted || (mode & 3) > 1) continue;  // only positions are compared
        const bool ofReal = (mode & 3) == 1, turned = ofReal && state.realSign() < 0;
        const unsigned condition = mode >> 2 & 3;  // not less, greater, equal, less
        const auto way = condition == 2 ? Crossing::either : (condition == 3) != turned ? Crossing::down : Crossing::up;
        const double at = placeOf(state, multiPurpose0 + sync, ofReal);
        if ((way == Crossing::up && here >= at) || (way == Crossing::down && here <= at)) continue;
        first.offer(crossing(axis, at, way), [this, axis, sync] {
            axes_[axis].events |= static_cast<std::uint16_t>(1 << sync);
            fire(axis, compared, static_cast<std::uint8_t>(1 << sync));
        });
    }
}

// The capture input is high in the first half of each revolution.
void MCX514::findEdges(std::size_t axis, Event& first) {
    const Track& track = tracks_[axis];
    const double here = exactPlace(axis), half = track.revolution / 2;
    for (const int cause : {rises, falls}) {
        bool isWanted = false;
        for (std::size_t sync = 0; sync < 4; ++sync) isWanted = isWanted || waitsFor(axes_[axis], sync, cause);
        if (!isWanted) continue;
        const auto offer = [&](int direction, Crossing way, double shift) {
            first.offer(crossing(axis, track.indexBehind(here - shift, direction) + shift, way),
                        [this, axis, cause] { fire(axis, cause); });
        };
        offer(1, Crossing::up, cause == rises ? 0 : half);
        offer(-1, Crossing::down, cause == rises ? half : 0);
    }
}

// When a driving axis gets to a place on its track.
std::optional<double> MCX514::crossing(std::size_t axis, double place, Crossing direction) const {
    const Drive& drive = *axes_[axis].drive;
    const double from = clock_ - drive.start;
    std::vector<double> times = drive.profile.times(from);
    for (const double corner : drive.path.corners(gone(drive))) {
        if (const auto time = drive.profile.timeOf(corner, Crossing::either, from)) {
            times.insert(std::ranges::lower_bound(times, *time), *time);
        }
    }
    const auto placeAt = [&](double time) {
        return static_cast<double>(drive.origins[axis]) + drive.path.at(axis, drive.profile.at(time).position);
    };
    const auto time = firstCrossing(times, placeAt, place, direction);
    return time ? std::optional(*time + drive.start) : std::nullopt;
}

void MCX514::fire(std::size_t axis, int cause, std::uint8_t which) { causes_.push_back({axis, cause, which}); }

// What follows from what has happened, which may go on without end.
void MCX514::follow() {
    for (int most = 0; !causes_.empty() && most < mostEvents; ++most) {
        const auto [axis, cause, which] = causes_.front();
        causes_.pop_front();
        Axis& state = axes_[axis];
        for (std::size_t sync = 0; sync < 4; ++sync) {
            if ((which >> sync & 1) == 0 || !waitsFor(state, sync, cause)) continue;
            constexpr std::uint32_t repeats = 1 << 15;
            if ((state.values[sync0 + sync] & repeats) == 0) state.syncs &= static_cast<std::uint8_t>(~(1 << sync));
            act(axis, sync);
        }
    }
    causes_.clear();
}

void MCX514::act(std::size_t axis, std::size_t sync) {
    Axis& state = axes_[axis];
    std::uint32_t& word = state.values[multiPurpose0 + sync];
    state.events |= static_cast<std::uint16_t>(1 << (syncDone + sync));
    const std::uint32_t action = state.values[sync0 + sync] >> 4 & 31;
    constexpr std::uint8_t commands[] = {relativeMove, relativeBack, absoluteMove, onPlus, onMinus};
    constexpr std::uint8_t later[] = {slowStop,   instantStop, faster,     slower,
                                      startTimer, stopTimer,   startSplit, stopSplit};
    switch (action) {
        case 1: write(axis, driveSpeed, word); break;
        case 2: write(axis, finishPoint, word); break;
        case 3: write(axis, split1, word); break;
        case 4: write(axis, sync == 0 ? logicalPosition : realPosition, word); break;
        case 5: word = read(0x30, axis, 0); break;
        case 6: word = read(0x31, axis, 0); break;
        case 7: word = read(0x38, axis, 0); break;
        case 8: word = read(0x32, axis, 0); break;
        default:
            if (action >= 10 && action <= 14) command(axis, commands[action - 10], 0);
            if (action >= 17 && action <= 24) command(axis, later[action - 17], 0);
    }
}

// --- drives

Ramp MCX514::rampOf(const Axis& axis) const {
    const bool asymmetric = axis.has(3, 1), curved = axis.has(3, 2);
    const auto value = [&](Value code) { return static_cast<double>(axis.values[code]); };
    return {value(initialSpeed),
            value(driveSpeed),
            value(acceleration),
            value(asymmetric ? deceleration : acceleration),
            curved ? value(accelerationJerk) : 0,
            !curved ? 0 : value(asymmetric ? decelerationJerk : accelerationJerk)};
}

double MCX514::gone(const Drive& drive) const {
    return std::min(drive.profile.at(clock_ - drive.start).position, drive.path.length);
}

std::int64_t MCX514::position(std::size_t axis) const {
    const Axis& state = axes_[axis];
    if (!state.drive) return state.position;
    const Drive& drive = *state.drive;
    const double length = gone(drive);
    return drive.origins[axis] +
           std::llround(drive.path.at(axis, length >= drive.path.length - 1e-6 ? drive.path.length : whole(length)));
}

// Between pulses, since a pulse is counted a little early.
double MCX514::exactPlace(std::size_t axis) const {
    const Drive& drive = *axes_[axis].drive;
    return static_cast<double>(drive.origins[axis]) + drive.path.at(axis, gone(drive));
}

std::int64_t MCX514::logical(std::size_t axis) const {
    return counted(position(axis) + axes_[axis].logicalBase, axes_[axis].values[logicalMost]);
}

std::int64_t MCX514::real(std::size_t axis) const {
    const Axis& state = axes_[axis];
    return counted(state.realSign() * position(axis) + state.realBase, state.values[realMost]);
}

double MCX514::speed(const Axis& axis) const {
    return axis.drive ? std::abs(axis.drive->profile.at(clock_ - axis.drive->start).speed) : 0;
}

void MCX514::plan(Drive& drive, double position, double speed) {
    drive.start = clock_;
    drive.profile = Profile(position, speed);
    if (std::isfinite(drive.target)) {
        drive.profile.moveTo(drive.target, drive.ramp, drive.stops);
    } else {
        drive.profile.run(drive.target, drive.ramp);
    }
}

bool MCX514::begin(Drive drive, double speed) {
    bool jammed = false;
    for (std::size_t axis = 0; axis < axisCount; ++axis) {
        if ((drive.mask >> axis & 1) == 0) continue;
        Axis& state = axes_[axis];
        drive.origins[axis] = state.position;
        state.errors = alarm(axis) && state.has(2, 9) ? 1 << alarmBit : 0;
        jammed = jammed || state.errors != 0;
    }
    if (jammed) return true;
    drive.start = clock_;
    if (!drive.homes) plan(drive, 0, speed);
    const auto shared = std::make_shared<Drive>(std::move(drive));
    for (std::size_t axis = 0; axis < axisCount; ++axis) {
        if ((shared->mask >> axis & 1) == 0) continue;
        axes_[axis].drive = shared;
        axes_[axis].events |= 1 << driveStart;
        fire(axis, driveStarts);
    }
    return true;
}

bool MCX514::startMove(std::size_t axis, std::uint8_t code) {
    const Axis& state = axes_[axis];
    Drive drive{1U << axis, axis, freePath(), forever, rampOf(state)};
    if (code == onPlus || code == onMinus) {
        if (code == onMinus) drive.target = -forever;
    } else {
        if (code == relativeBack) drive.pointSign = -1;
        if (code == absoluteMove) drive.zero = static_cast<double>(logical(axis));
        drive.target = drive.pointSign * state.signedValue(finishPoint) - drive.zero;
    }
    return begin(std::move(drive));
}

bool MCX514::startSearch(std::size_t axis) {
    const Axis& state = axes_[axis];
    const Track& track = tracks_[axis];
    const std::uint32_t mode = state.values[homeMode1];
    const auto has = [mode](int bit) { return (mode >> bit & 1) != 0; };
    const auto way = [has](int bit) { return has(bit) ? -1 : 1; };
    Drive drive{1U << axis, axis, freePath(), 0, rampOf(state)};
    drive.overridable = false;
    drive.homes = true;
    const auto here = static_cast<double>(state.position);
    const double offset = has(15) ? state.signedValue(finishPoint) : 0, slow = state.values[homeSpeed];
    if (has(0)) {
        drive.watchesLimits = !has(3);
        const Zone zone = !has(3) ? track.home() : has(1) ? track.reverse() : track.forward();
        seek(drive.profile, {zone.from - here, zone.to - here}, way(1), way(5), drive.ramp, has(4) ? slow : 0, offset);
    } else if (has(2)) {
        Ramp ramp = drive.ramp;
        ramp.speed = slow;
        drive.profile.moveTo(track.indexBehind(here, way(3)) - here, ramp);
        if (offset != 0) drive.profile.moveTo(drive.profile.end().position + offset, drive.ramp);
    }
    return begin(std::move(drive));
}

bool MCX514::startInterpolation(std::uint8_t code) {
    const std::uint32_t mode = shared_[interpolationMode];
    const unsigned mask = mode & 15;
    if (mask == 0) return false;
    const auto main = static_cast<std::size_t>(std::countr_zero(mask));
    Offsets end{}, centre{};
    for (std::size_t axis = 0; axis < axisCount; ++axis) {
        end[axis] = (mask >> axis & 1) != 0 ? axes_[axis].signedValue(finishPoint) : 0;
        centre[axis] = axes_[axis].signedValue(circularCentre);
    }
    Path path = linePath(end);
    if (code >= bits2 && code <= bits4) {
        path = linePath({});  // nobody gives patterns
    } else if (code > line4) {
        const bool helix = code >= helixClockwise;
        const unsigned others = mask & (mask - 1);
        if (others == 0) return false;
        const auto second = static_cast<std::size_t>(std::countr_zero(others));
        const bool swapped = (mode >> 4 & 1) != 0;
        Arc arc{swapped ? second : main, swapped ? main : second, centre, end, false, 0};
        if (std::hypot(centre[arc.x], centre[arc.y]) < 0.5) return false;
        arc.clockwise = code == circleClockwise || code == helixClockwise || code == helixCalculation;
        arc.turns = helix ? static_cast<int>(shared_[helixTurns] & 0xFFFF) : 0;
        path = arcPath(arc);
    }
    if (code == helixCalculation || code == helixCalculationBack) {
        shared_[helixLength] = static_cast<std::uint32_t>(std::llround(path.length));
        calculated_ = clock_ + calculation;
        return true;
    }
    Drive drive{mask, main, std::move(path), 0, rampOf(axes_[main])};
    drive.target = drive.path.length;
    drive.stops = decelerates_;
    drive.interpolates = true;

    const auto& present = axes_[main].drive;
    if (present && present->interpolates && present->mask == mask) {
        if (queue_.size() >= longestQueue) return false;
        queue_.push_back(std::move(drive));
        return true;
    }
    for (std::size_t axis = 0; axis < axisCount; ++axis) {
        if ((mask >> axis & 1) != 0 && axes_[axis].drive) return false;
        if ((mask >> axis & 1) != 0 && axes_[axis].held) {
            axes_[axis].pending = code;
            return true;
        }
    }
    return begin(std::move(drive));
}

// The registers have changed on the way.
void MCX514::override(std::size_t axis) {
    const Axis& state = axes_[axis];
    if (!state.drive || !state.drive->overridable || state.drive->main != axis) return;
    Drive& drive = *state.drive;
    drive.ramp = rampOf(state);
    const Movement now = drive.profile.at(clock_ - drive.start);
    plan(drive, now.position, now.speed);
}

void MCX514::changeSpeed(std::size_t axis, double change) {
    const auto drive = axes_[axis].drive;
    if (!drive || !drive->overridable) return;
    const Movement now = drive->profile.at(clock_ - drive->start);
    drive->ramp.speed = std::max(1.0, drive->ramp.speed + change);
    plan(*drive, now.position, now.speed);
}

void MCX514::stop(std::size_t axis, bool atOnce) {
    const auto drive = axes_[axis].drive;
    if (!drive) return;
    drive->overridable = drive->watchesLimits = drive->homes = false;
    queue_.clear();
    if (atOnce) return finish(drive);
    const Movement now = drive->profile.at(clock_ - drive->start);
    drive->start = clock_;
    drive->profile = Profile(now.position, now.speed);
    drive->profile.stop(drive->ramp);
}

void MCX514::finish(const std::shared_ptr<Drive>& drive) {
    const double last = drive->stops ? 0 : drive->profile.end().speed;
    for (std::size_t axis = 0; axis < axisCount; ++axis) {
        Axis& state = axes_[axis];
        if (state.drive != drive) continue;
        command(axis, stopSplit, 0);
        state.position = position(axis);
        state.drive.reset();
        state.stopped = clock_;
        state.events |= 1 << driveEnd;
        if (!drive->homes) continue;
        state.events |= 1 << homeEnd;
        if ((state.values[homeMode2] & 2) != 0) write(axis, logicalPosition, 0);
        if ((state.values[homeMode2] & 4) != 0) write(axis, realPosition, 0);
    }
    if (drive->interpolates && !queue_.empty()) {
        Drive next = std::move(queue_.front());
        queue_.pop_front();
        begin(std::move(next), last);
        return;
    }
    for (std::size_t axis = 0; axis < axisCount; ++axis) {
        if ((drive->mask >> axis & 1) != 0) fire(axis, driveEnds);
    }
}

// --- commands

bool MCX514::commandChip(std::uint8_t code, std::uint32_t data) {
    switch (code) {
        case decelerate:
        case doNotDecelerate: decelerates_ = code == decelerate; return true;
        case clearStep: queue_.clear(); return true;
        case release:
            for (std::size_t axis = 0; axis < axisCount; ++axis) {
                Axis& state = axes_[axis];
                if ((data >> axis & 1) == 0) continue;
                state.held = false;
                if (const std::uint8_t pending = std::exchange(state.pending, 0)) {
                    if (pending >= line1) {
                        startInterpolation(pending);
                    } else {
                        command(axis, pending, 0);
                    }
                }
            }
            return true;
        case resetChip: reset(); return true;
        case noOperation:
        case checkBus:
        case resetBus: return true;
        default: break;
    }
    if (code < shared_.size()) {
        shared_[code] = data;
        return true;
    }
    if (code >= line1 && code <= helixCalculationBack) return startInterpolation(code);
    const int word = code - writeWords;
    words_[word] = static_cast<std::uint16_t>(data);
    if (word == 4 || word == 5) {
        const std::size_t first = word == 4 ? 0 : 2;
        axes_[first].outputs = static_cast<std::uint8_t>(data);
        axes_[first + 1].outputs = static_cast<std::uint8_t>(data >> 8);
    }
    return true;
}

bool MCX514::command(std::size_t axis, std::uint8_t code, std::uint32_t data) {
    Axis& state = axes_[axis];
    if (code < state.values.size()) {
        write(axis, code, data);
    } else if (code <= absoluteMove || code == homeSearch) {
        if (state.drive) return false;
        if (state.held) {
            state.pending = code;
        } else {
            return code == homeSearch ? startSearch(axis) : startMove(axis, code);
        }
    } else if (code > activateSyncs && code < setModeBits) {
        for (std::size_t sync = 0; sync < 4; ++sync) {
            if ((code >> sync & 1) != 0) act(axis, sync);
        }
    } else if (code > disableSyncs && code < activateSyncs) {
        state.syncs &= static_cast<std::uint8_t>(~(code & 15));
    } else if (code > enableSyncs && code < disableSyncs) {
        state.syncs |= code & 15;
    } else if (code >= setModeBits && code < writeWords) {
        const int mode = code < setModeBits + 16 ? 2 : 3;
        const unsigned bit = 1U << (code & 15);
        writeMode(axis, mode, static_cast<std::uint16_t>((state.modes[mode] & ~bit) | ((data & 1) != 0 ? bit : 0)));
    } else if (code > writeWords) {
        writeMode(axis, code - writeWords, static_cast<std::uint16_t>(data));
    } else {
        switch (code) {
            case slowStop: stop(axis, false); break;
            case instantStop: stop(axis, true); break;
            case faster: changeSpeed(axis, state.values[speedStep]); break;
            case slower: changeSpeed(axis, -static_cast<double>(state.values[speedStep])); break;
            case startTimer: state.timerStart = clock_; break;
            case stopTimer: state.timerStart.reset(); break;
            case startSplit:
                state.splitFrom = position(axis);
                state.splits = 0;
                state.events |= 1 << splitStart;
                fire(axis, splitStarts);
                break;
            case stopSplit:
                if (!state.splitFrom) break;
                state.splits = splits(axis);
                state.splitFrom.reset();
                state.events |= 1 << splitEnd;
                fire(axis, splitEnds);
                break;
            case hold: state.held = true; break;
            case clearErrors: state.errors = 0; break;
            default: break;  // signals that nothing is at, and the page of RR3, which each read tells
        }
    }
    return true;
}

void MCX514::write(std::size_t axis, std::uint8_t code, std::uint32_t data) {
    Axis& state = axes_[axis];
    const auto number = static_cast<std::int32_t>(data);
    const bool changes = state.values[code] != data;
    state.values[code] = data;
    if (code == logicalPosition) state.logicalBase = number - position(axis);
    if (code == realPosition) state.realBase = number - state.realSign() * position(axis);
    if (code == outputs) {
        const std::uint32_t mask = data >> 8;
        state.outputs = static_cast<std::uint8_t>((state.outputs & ~mask) | (data & mask));
    }
    const auto& drive = state.drive;
    if (code == finishPoint && drive && drive->overridable && !drive->interpolates && std::isfinite(drive->target)) {
        drive->target = drive->pointSign * number - drive->zero;
        override(axis);
    }
    if (code < finishPoint && changes) override(axis);
}

void MCX514::writeMode(std::size_t axis, int mode, std::uint16_t word) {
    Axis& state = axes_[axis];
    const std::int64_t before = state.realSign() * position(axis);
    const unsigned changed = state.modes[mode] ^ word;
    state.modes[mode] = word;
    state.realBase += before - state.realSign() * position(axis);
    if (mode == 3 && (changed & 6) != 0) override(axis);
}

// --- what is read

bool MCX514::inPosition(const Axis& axis) const { return !axis.drive && clock_ >= axis.stopped + settling; }

bool MCX514::alarm(std::size_t axis) const {
    return std::abs(static_cast<double>(position(axis))) >= tracks_[axis].alarmAt;
}

std::uint32_t MCX514::splits(std::size_t axis) const {
    const Axis& state = axes_[axis];
    if (!state.splitFrom) return state.splits;
    const std::int64_t period = std::max<std::int64_t>(state.values[split1] & 0xFFFF, 1);
    const std::int64_t pulses = std::abs(position(axis) - *state.splitFrom) / period + 1;
    const std::uint32_t most = state.values[split2] != 0 ? state.values[split2] : 0xFFFF;
    return static_cast<std::uint32_t>(std::min<std::int64_t>(pulses, most));
}

std::uint32_t MCX514::readInputs(std::size_t axis) const {
    const Axis& state = axes_[axis];
    const Track& track = tracks_[axis];
    const auto here = static_cast<double>(position(axis));
    const double phase = here - track.revolution * std::floor(here / track.revolution);
    // A signal, where it is shown, and the bit of WR2 that tells its level.
    struct Input {
        bool active;
        int bit, polarity;
    };
    const Input inputs[] = {{false, 0, 0},
                            {track.home().holds(here), 1, 2},
                            {phase < track.revolution / 2, 2, 4},
                            {inPosition(state), 5, 6},
                            {alarm(axis), 6, 8},
                            {track.forward().holds(here), 7, 10},
                            {track.reverse().holds(here), 8, 10}};
    std::uint32_t word = 0;
    for (const auto& [active, bit, polarity] : inputs) word |= (active == state.has(2, polarity) ? 1U : 0U) << bit;
    return word;
}

std::uint32_t MCX514::readState(std::size_t axis) const {
    const Axis& state = axes_[axis];
    std::uint32_t word = static_cast<std::uint32_t>(state.syncs) << 10;
    if (state.held) word |= 1 << 7;
    if (!state.drive) return word;
    const Movement now = state.drive->profile.at(clock_ - state.drive->start);
    const double change = now.speed * now.acceleration;
    return word | (change > 0 ? 1 : change == 0 ? 2 : 4);
}

std::uint32_t MCX514::readMainStatus() const {
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < axisCount; ++i) {
        const Axis& axis = axes_[i];
        const bool settles = axis.has(2, 7) && !inPosition(axis);
        if (axis.drive || settles) word |= 1U << i;
        if (axis.errors != 0) word |= 1U << (4 + i);
        if (axis.drive && axis.drive->interpolates && queue_.size() < longestQueue) word |= 1 << 8;
    }
    if (clock_ < calculated_) word |= shared_[interpolationMode] & 15;
    return word | static_cast<std::uint32_t>(queue_.size()) << 12;
}

std::uint32_t MCX514::read(std::uint8_t code, std::size_t axis, std::uint32_t data) {
    Axis& state = axes_[axis];
    const auto pair = [this](std::size_t first) {
        return static_cast<std::uint32_t>(axes_[first].outputs | axes_[first + 1].outputs << 8);
    };
    constexpr std::uint8_t settings[] = {multiPurposeMode, 0x21,       0x22,        acceleration,
                                         initialSpeed,     driveSpeed, finishPoint, split1};
    if (code >= 0x34 && code <= 0x37) return state.values[multiPurpose0 + code - 0x34];
    if (code >= 0x3D && code <= 0x3F) return state.modes[code - 0x3C];
    if (code >= 0x40 && code <= 0x47) return state.values[settings[code - 0x40]];
    switch (code) {
        case 0x30: return static_cast<std::uint32_t>(logical(axis));
        case 0x31: return static_cast<std::uint32_t>(real(axis));
        case 0x32: return static_cast<std::uint32_t>(std::llround(speed(state)));
        case 0x33:
            if (!state.drive) return 0;
            return static_cast<std::uint32_t>(
                std::llround(std::abs(state.drive->profile.at(clock_ - state.drive->start).acceleration)));
        case 0x38: return state.timerStart ? static_cast<std::uint32_t>((clock_ - *state.timerStart) * 1e6) : 0;
        case 0x39: return shared_[longestInterpolation];
        case 0x3A:
            if (!state.drive || state.drive->path.turn <= 0) return 0;
            return static_cast<std::uint32_t>(gone(*state.drive) / state.drive->path.turn);
        case 0x3B: return shared_[helixLength];
        case 0x48: return state.outputs | splits(axis) << 16;
        case readWords: return readMainStatus();
        case readWords + 1: return std::exchange(state.events, 0) & state.modes[1];
        case readWords + 2: return state.errors;
        case readWords + 3: return data == 0 ? readInputs(axis) : readState(axis);
        case readWords + 4: return pair(0);
        case readWords + 5: return pair(2);
        default: return words_[code - readWords];
    }
}

}  // namespace zvr::sim
