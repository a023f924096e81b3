// The drives of the MCX514: moves, reference searches and interpolations.
#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

#include "physics/mcx514.h"

namespace zvr::sim {

using namespace mcx514;

namespace {

constexpr double calculation = 0.002;

// Pulses already travelled.
double whole(double length) { return length < 0 ? std::ceil(length - 1e-6) : std::floor(length + 1e-6); }

std::int64_t counted(std::int64_t count, std::uint32_t most) {
    if (most >= 0x7FFFFFFF) return static_cast<std::int32_t>(count);
    const std::int64_t period = std::int64_t{most} + 1;
    return (count % period + period) % period;
}

}  // namespace

Ramp MCX514::rampOf(const Axis& axis) const {
    const bool asymmetric = axis.has(MOTION_D1_DSNDE), curved = axis.has(MOTION_D2_SACC);
    const auto value = [&](MotionCode code) { return static_cast<double>(axis.values[code]); };
    return {value(MOTION_04_SV),
            value(MOTION_05_DV),
            value(MOTION_02_AC),
            value(asymmetric ? MOTION_03_DC : MOTION_02_AC),
            curved ? value(MOTION_00_JK) : 0,
            !curved ? 0 : value(asymmetric ? MOTION_01_DJ : MOTION_00_JK)};
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
    return counted(position(axis) + axes_[axis].logicalBase, axes_[axis].values[MOTION_0E_LX]);
}

std::int64_t MCX514::real(std::size_t axis) const {
    const Axis& state = axes_[axis];
    return counted(state.realSign() * position(axis) + state.realBase, state.values[MOTION_0F_RX]);
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
        state.errors = alarm(axis) && state.has(MOTION_C9_ALME) ? alarmed : 0;
        jammed = jammed || state.errors != 0;
    }
    if (jammed) return true;
    drive.start = clock_;
    if (!drive.homes) plan(drive, 0, speed);
    const auto shared = std::make_shared<Drive>(std::move(drive));
    for (std::size_t axis = 0; axis < axisCount; ++axis) {
        if ((shared->mask >> axis & 1) == 0) continue;
        axes_[axis].drive = shared;
        axes_[axis].events |= driveStart;
        fire(axis, driveStarts);
    }
    return true;
}

bool MCX514::startMove(std::size_t axis, std::uint8_t code) {
    const Axis& state = axes_[axis];
    Drive drive{1U << axis, axis, freePath(), infinity, rampOf(state)};
    if (code == MOTION_52_DRVVP || code == MOTION_53_DRVVM) {
        if (code == MOTION_53_DRVVM) drive.target = -infinity;
    } else {
        if (code == MOTION_51_DRVNR) drive.pointSign = -1;
        if (code == MOTION_54_DRVAB) drive.zero = static_cast<double>(logical(axis));
        drive.target = drive.pointSign * state.signedValue(MOTION_06_TP) - drive.zero;
    }
    return begin(std::move(drive));
}

bool MCX514::startSearch(std::size_t axis) {
    const Axis& state = axes_[axis];
    const Track& track = tracks_[axis];
    const std::uint32_t mode = state.values[MOTION_23_H1M];
    const auto has = [mode](HomeMode bit) { return (mode & bit) != 0; };
    const auto way = [has](HomeMode bit) { return has(bit) ? -1 : 1; };
    Drive drive{1U << axis, axis, freePath(), 0, rampOf(state)};
    drive.overridable = false;
    drive.homes = true;
    const auto here = static_cast<double>(state.position);
    const double offset = has(addsOffset) ? state.signedValue(MOTION_06_TP) : 0, slow = state.values[MOTION_14_HV];
    if (has(searchesSwitch)) {
        drive.watchesLimits = !has(ofLimit);
        const Zone zone = !has(ofLimit) ? track.home() : has(backwards) ? track.reverse() : track.forward();
        seek(drive.profile, {zone.from - here, zone.to - here}, way(backwards), way(finallyBackwards), drive.ramp,
             has(comesBack) ? slow : 0, offset);
    } else if (has(searchesIndex)) {
        Ramp ramp = drive.ramp;
        ramp.speed = slow;
        drive.profile.moveTo(track.indexBehind(here, way(indexBackwards)) - here, ramp);
        if (offset != 0) drive.profile.moveTo(drive.profile.end().position + offset, drive.ramp);
    }
    return begin(std::move(drive));
}

bool MCX514::startInterpolation(std::uint8_t code) {
    const std::uint32_t mode = shared_[MOTION_2A_IPM];
    const unsigned mask = mode & 15;
    if (mask == 0) return false;
    const auto main = static_cast<std::size_t>(std::countr_zero(mask));
    Offsets end{}, centre{};
    for (std::size_t axis = 0; axis < axisCount; ++axis) {
        end[axis] = (mask >> axis & 1) != 0 ? axes_[axis].signedValue(MOTION_06_TP) : 0;
        centre[axis] = axes_[axis].signedValue(MOTION_08_CP);
    }
    Path path = linePath(end);
    if (code >= MOTION_66_BHK2 && code <= MOTION_68_BHK4) {
        path = linePath({});  // bit patterns are not supplied
    } else if (code > MOTION_63_LHK4) {
        const bool helix = code >= MOTION_69_HLCW;
        const unsigned others = mask & (mask - 1);
        if (others == 0) return false;
        const auto second = static_cast<std::size_t>(std::countr_zero(others));
        const bool swapped = (mode & swapsPair) != 0;
        Arc arc{swapped ? second : main, swapped ? main : second, centre, end, false, 0};
        if (std::hypot(centre[arc.x], centre[arc.y]) < 0.5) return false;
        arc.clockwise = code == MOTION_64_CHKCW || code == MOTION_69_HLCW || code == MOTION_6B_HLPCW;
        arc.turns = helix ? static_cast<int>(shared_[MOTION_1A_HLN] & 0xFFFF) : 0;
        path = arcPath(arc);
    }
    if (code == MOTION_6B_HLPCW || code == MOTION_6C_HLPCCW) {
        shared_[MOTION_1B_HLV] = static_cast<std::uint32_t>(std::llround(path.length));
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
        command(axis, MOTION_76_SPSTP, 0);
        state.position = position(axis);
        state.drive.reset();
        state.stopped = clock_;
        state.events |= driveEnd;
        if (!drive->homes) continue;
        state.events |= homeEnd;
        if ((state.values[MOTION_24_H2M] & clearsLogical) != 0) write(axis, MOTION_09_LP, 0);
        if ((state.values[MOTION_24_H2M] & clearsReal) != 0) write(axis, MOTION_0A_RP, 0);
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

}  // namespace zvr::sim
