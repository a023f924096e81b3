// The events of the MCX514 in order, and the SYNC actions they trigger.
#include <algorithm>
#include <cmath>
#include <functional>

#include "physics/mcx514.h"

namespace zvr::sim {

using namespace mcx514;

namespace {

constexpr int mostEvents = 2000;  // between two requests: actions may follow each other without end

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
        const double period = std::max<double>(state.values[MOTION_16_TM], 1) * 1e-6;
        first.offer(*state.timerStart + period, [this, axis, period, now = first.time] {
            Axis& state = axes_[axis];
            if (state.has(MOTION_DE_TMMD)) {
                *state.timerStart += period * std::floor((now - *state.timerStart) / period);
            } else {
                state.timerStart.reset();
            }
            state.events |= timerEnd;
            fire(axis, timeIsOver);
        });
    }
    if (!state.drive) return;
    findComparisons(axis, first);
    findEdges(axis, first);
    const Drive& drive = *state.drive;
    const auto offerStop = [&](double at, Crossing direction, Error error, bool atOnce) {
        first.offer(crossing(axis, at, direction), [this, axis, error, atOnce] {
            axes_[axis].errors |= error;
            stop(axis, atOnce);
        });
    };
    const Track& track = tracks_[axis];
    if (state.has(MOTION_C9_ALME)) {
        offerStop(track.alarmAt, Crossing::up, alarmed, true);
        offerStop(-track.alarmAt, Crossing::down, alarmed, true);
    }
    if (drive.watchesLimits && state.has(MOTION_CB_HLME)) {
        offerStop(track.forwardAt, Crossing::up, hardPlus, state.has(MOTION_CC_HLMM));
        offerStop(track.reverseAt, Crossing::down, hardMinus, state.has(MOTION_CC_HLMM));
    }
    if (drive.watchesLimits && state.has(MOTION_CD_SLME)) {
        const bool ofReal = state.has(MOTION_CE_SLMO), turned = ofReal && state.realSign() < 0;
        const auto plus = turned ? Crossing::down : Crossing::up, minus = turned ? Crossing::up : Crossing::down;
        offerStop(placeOf(state, MOTION_0B_SP, ofReal), plus, softPlus, state.has(MOTION_CF_SLMM));
        offerStop(placeOf(state, MOTION_0C_SM, ofReal), minus, softMinus, state.has(MOTION_CF_SLMM));
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
    return (axis.syncs >> sync & 1) != 0 && (axis.values[MOTION_26_S0M + sync] & 15) == static_cast<unsigned>(cause);
}

void MCX514::findComparisons(std::size_t axis, Event& first) {
    const Axis& state = axes_[axis];
    const double here = exactPlace(axis);
    for (std::size_t sync = 0; sync < 4; ++sync) {
        const unsigned mode = state.values[MOTION_20_MRM] >> (4 * sync);
        const bool isWanted = waitsFor(state, sync, comparedTrue) || (state.modes[1] >> sync & 1) != 0;
        if (!isWanted || (mode & 3) > Compared::realPosition) continue;  // only positions are compared
        const bool ofReal = (mode & 3) == Compared::realPosition, turned = ofReal && state.realSign() < 0;
        const unsigned condition = mode >> 2 & 3;
        const auto way = condition == equal              ? Crossing::either
                         : (condition == less) != turned ? Crossing::down
                                                         : Crossing::up;
        const double at = placeOf(state, MOTION_10_MR0 + sync, ofReal);
        if ((way == Crossing::up && here >= at) || (way == Crossing::down && here <= at)) continue;
        first.offer(crossing(axis, at, way), [this, axis, sync] {
            axes_[axis].events |= static_cast<std::uint16_t>(compared0 << sync);
            fire(axis, comparedTrue, static_cast<std::uint8_t>(1 << sync));
        });
    }
}

// The capture input is high in the first half of each revolution.
void MCX514::findEdges(std::size_t axis, Event& first) {
    const Track& track = tracks_[axis];
    const double here = exactPlace(axis), half = track.revolution / 2;
    for (const SyncCause cause : {captureRises, captureFalls}) {
        bool isWanted = false;
        for (std::size_t sync = 0; sync < 4; ++sync) isWanted = isWanted || waitsFor(axes_[axis], sync, cause);
        if (!isWanted) continue;
        const auto offer = [&](int direction, Crossing way, double shift) {
            first.offer(crossing(axis, track.indexBehind(here - shift, direction) + shift, way),
                        [this, axis, cause] { fire(axis, cause); });
        };
        offer(1, Crossing::up, cause == captureRises ? 0 : half);
        offer(-1, Crossing::down, cause == captureRises ? half : 0);
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

// Processes the consequences of events, which may be endless.
void MCX514::follow() {
    for (int most = 0; !causes_.empty() && most < mostEvents; ++most) {
        const auto [axis, cause, which] = causes_.front();
        causes_.pop_front();
        Axis& state = axes_[axis];
        for (std::size_t sync = 0; sync < 4; ++sync) {
            if ((which >> sync & 1) == 0 || !waitsFor(state, sync, cause)) continue;
            if ((state.values[MOTION_26_S0M + sync] & repeats) == 0)
                state.syncs &= static_cast<std::uint8_t>(~(1 << sync));
            act(axis, sync);
        }
    }
    causes_.clear();
}

void MCX514::act(std::size_t axis, std::size_t sync) {
    Axis& state = axes_[axis];
    std::uint32_t& word = state.values[MOTION_10_MR0 + sync];
    state.events |= static_cast<std::uint16_t>(syncDone0 << sync);
    const std::uint32_t action = state.values[MOTION_26_S0M + sync] >> 4 & 31;
    constexpr std::uint8_t drives[] = {MOTION_50_DRVRL, MOTION_51_DRVNR, MOTION_54_DRVAB, MOTION_52_DRVVP,
                                       MOTION_53_DRVVM};
    constexpr std::uint8_t commands[] = {MOTION_56_DRVSBRK, MOTION_57_DRVFBRK, MOTION_70_VINC,  MOTION_71_VDEC,
                                         MOTION_73_TMSTA,   MOTION_74_TMSTP,   MOTION_75_SPSTA, MOTION_76_SPSTP};
    switch (action) {
        case loadSpeed: write(axis, MOTION_05_DV, word); break;
        case loadFinishPoint: write(axis, MOTION_06_TP, word); break;
        case loadSplit: write(axis, MOTION_17_SP1, word); break;
        case loadPosition: write(axis, sync == 0 ? MOTION_09_LP : MOTION_0A_RP, word); break;
        case latchLogical: word = read(MOTION_30_LP, axis, 0); break;
        case latchReal: word = read(MOTION_31_RP, axis, 0); break;
        case latchTimer: word = read(MOTION_38_CT, axis, 0); break;
        case latchSpeed: word = read(MOTION_32_CV, axis, 0); break;
        default:
            if (action >= firstDrive && action <= startsReverse) command(axis, drives[action - firstDrive], 0);
            if (action >= firstCommand && action <= lastCommand) command(axis, commands[action - firstCommand], 0);
    }
}

}  // namespace zvr::sim
