#include "physics/tmc5240.h"

#include <cmath>
#include <utility>

#include "core/wire/motion_codes.h"

namespace zvr::sim {

namespace {

enum RampMode : std::uint32_t { toTarget, upwards, downwards, holding };
enum GlobalStatus : std::uint32_t { wasReset = 1, driverError = 2 };
enum SwitchMode : std::uint32_t { forwardEnabled = 1, reverseEnabled = 2 };
// The two limits and the status of the chip are bits of RAMPSTAT.
enum RampStatus : std::uint32_t {
    limits = 3,
    velocityReached = 1 << 8,
    positionReached = 1 << 9,
    standstill = 1 << 10
};

constexpr int mostLegs = 100000;  // of a scan, between two requests

std::uint32_t wordOf(double value) { return static_cast<std::uint32_t>(std::llround(value)); }

}  // namespace

void TMC5240::reset() {
    const auto here = static_cast<double>(steps());
    registers_.fill(0);
    for (const PawlSetting& setting : pawlSettings) registers_[setting.address] = setting.value;
    registers_[PAWL_01_GSTAT] = wasReset;
    registers_[PAWL_20_RAMPMODE] = holding;
    profile_ = Profile(here);
    zero_ = encoderZero_ = -steps();
    process_ = Process::none;
    scans_ = resets_ = false;
}

std::int64_t TMC5240::steps() const { return std::llround(place()); }

Ramp TMC5240::ramp() const {
    return {static_cast<double>(registers_[PAWL_23_VSTART]), static_cast<double>(registers_[PAWL_27_VMAX]),
            static_cast<double>(registers_[PAWL_26_AMAX]), static_cast<double>(registers_[PAWL_28_DMAX])};
}

void TMC5240::advance(double now) {
    for (int most = 0; most < mostLegs; ++most) {
        double time = start_ + profile_.duration();
        Process process = Process::done;
        const auto offerStop = [&](double at, Crossing direction) {
            const auto crossed = profile_.timeOf(at, direction, clock_ - start_);
            if (!crossed || *crossed + start_ > time) return false;
            time = *crossed + start_;
            process = Process::failed;
            return true;
        };
        bool jams = offerStop(track_.alarmAt, Crossing::up) || offerStop(-track_.alarmAt, Crossing::down);
        if (watchesLimits_ && (registers_[PAWL_34_SWMODE] & forwardEnabled) != 0 &&
            offerStop(track_.forwardAt, Crossing::up))
            jams = false;
        if (watchesLimits_ && (registers_[PAWL_34_SWMODE] & reverseEnabled) != 0 &&
            offerStop(track_.reverseAt, Crossing::down))
            jams = false;
        // Standing is no move, but a move may begin where it ends.
        if (time > now || (profile_.duration() == 0 && process_ != Process::running)) break;
        clock_ = time;
        if (jams) registers_[PAWL_01_GSTAT] |= driverError;
        if (process == Process::done && scans_ && turningPoints_[0] != turningPoints_[1]) {
            std::swap(turningPoints_[0], turningPoints_[1]);
            registers_[PAWL_2D_XTARGET] = static_cast<std::uint32_t>(turningPoints_[0]);
            plan();
        } else {
            halt(process);
        }
    }
    clock_ = now;
}

// Stands here from now on.
void TMC5240::halt(Process process) {
    profile_ = Profile(static_cast<double>(steps()));
    if (process == Process::done && resets_) zero_ = encoderZero_ = -steps();
    if (process_ == Process::running) {
        process_ = process;
        registers_[PAWL_20_RAMPMODE] = holding;
        registers_[PAWL_2D_XTARGET] = read(PAWL_21_XACTUAL);
    }
    scans_ = resets_ = false;
    watchesLimits_ = true;
}

// Follows the registers from the current position and speed.
void TMC5240::plan() {
    const Movement now = movement();
    start_ = clock_;
    profile_ = Profile(now.position, now.speed);
    switch (registers_[PAWL_20_RAMPMODE]) {
        case toTarget:
            profile_.moveTo(static_cast<double>(static_cast<std::int32_t>(registers_[PAWL_2D_XTARGET]) - zero_),
                            ramp());
            break;
        case upwards: profile_.run(1, ramp()); break;
        case downwards: profile_.run(-1, ramp()); break;
        default:
            if (now.speed != 0) profile_.hold(infinity);
    }
}

bool TMC5240::begin(const Ramp& ramp) {
    if (!(ramp.speed > 0 && ramp.acceleration > 0 && ramp.deceleration > 0)) return false;
    registers_[PAWL_27_VMAX] = wordOf(ramp.speed);
    registers_[PAWL_26_AMAX] = wordOf(ramp.acceleration);
    registers_[PAWL_28_DMAX] = wordOf(ramp.deceleration);
    process_ = Process::running;
    scans_ = resets_ = false;
    watchesLimits_ = true;
    return true;
}

bool TMC5240::run(int direction, const Ramp& ramp) {
    if (!begin(ramp)) return false;
    registers_[PAWL_20_RAMPMODE] = direction > 0 ? upwards : downwards;
    plan();
    return true;
}

bool TMC5240::moveTo(std::int32_t position, const Ramp& ramp) {
    if (!begin(ramp)) return false;
    registers_[PAWL_20_RAMPMODE] = toTarget;
    registers_[PAWL_2D_XTARGET] = static_cast<std::uint32_t>(position);
    plan();
    return true;
}

bool TMC5240::scan(std::int32_t from, std::int32_t to, const Ramp& ramp) {
    if (from == to || !moveTo(from, ramp)) return false;
    turningPoints_ = {from, to};
    scans_ = true;
    return true;
}

bool TMC5240::seek(const Search& search, const Ramp& ramp) {
    if (!begin(ramp)) return false;
    const Movement now = movement();
    start_ = clock_;
    profile_ = Profile(now.position, now.speed);
    sim::seek(profile_, search.zone, search.direction, search.finalDirection, this->ramp(), search.approach,
              search.offset);
    registers_[PAWL_20_RAMPMODE] = toTarget;
    registers_[PAWL_2D_XTARGET] = static_cast<std::uint32_t>(std::llround(profile_.end().position) + zero_);
    resets_ = search.resets;
    watchesLimits_ = !search.ofLimit;
    return true;
}

void TMC5240::stop() {
    const Movement now = movement();
    start_ = clock_;
    profile_ = Profile(now.position, now.speed);
    profile_.stop(ramp());
    registers_[PAWL_20_RAMPMODE] = holding;
    if (process_ == Process::running) process_ = Process::stopped;
    scans_ = resets_ = false;
}

std::uint16_t TMC5240::switches() const {
    const auto here = static_cast<double>(steps());
    const bool closed[] = {track_.forward().holds(here), track_.reverse().holds(here), track_.home().holds(here)};
    return static_cast<std::uint16_t>(closed[0] | closed[1] << 1 | closed[2] << 2);
}

std::uint8_t TMC5240::status() const {
    const std::uint32_t ramp = read(PAWL_35_RAMPSTAT);
    return static_cast<std::uint8_t>((registers_[PAWL_01_GSTAT] & 3) | (ramp >> 10 & 1) << 3 | (ramp >> 8 & 3) << 4 |
                                     (ramp & 3) << 6);
}

Bytes TMC5240::parameters() const {
    Bytes data;
    for (const PawlSetting& setting : pawlSettings) appendBigEndian(data, read(setting.address));
    return data;
}

std::uint32_t TMC5240::read(std::uint8_t address) const {
    const Movement now = movement();
    switch (address) {
        case PAWL_21_XACTUAL: return static_cast<std::uint32_t>(steps() + zero_);
        case PAWL_39_XENC: {
            const int sign = static_cast<std::int32_t>(registers_[PAWL_3A_ENC_CONST]) < 0 ? -1 : 1;
            return static_cast<std::uint32_t>(sign * steps() + encoderZero_);
        }
        case PAWL_22_VACTUAL: return wordOf(now.speed);
        case PAWL_31_AACTUAL: return wordOf(now.acceleration);
        case PAWL_35_RAMPSTAT: {
            const bool isFast = now.speed != 0 && std::abs(std::abs(now.speed) - registers_[PAWL_27_VMAX]) < 0.5;
            const bool isThere = read(PAWL_21_XACTUAL) == registers_[PAWL_2D_XTARGET];
            return (switches() & limits) | (isFast ? velocityReached : 0U) | (isThere ? positionReached : 0U) |
                   (now.speed == 0 ? standstill : 0U);
        }
        default: return registers_.at(address);
    }
}

void TMC5240::write(std::uint8_t address, std::uint32_t value) {
    const std::int64_t encoder = read(PAWL_39_XENC);
    const auto number = static_cast<std::int32_t>(value);
    std::uint32_t& word = registers_.at(address);
    word = address == PAWL_01_GSTAT ? word & ~value : value;
    switch (address) {
        case PAWL_21_XACTUAL: zero_ = number - steps(); break;
        case PAWL_39_XENC:
        case PAWL_3A_ENC_CONST: {
            encoderZero_ = 0;
            encoderZero_ = (address == PAWL_39_XENC ? number : encoder) - static_cast<std::int32_t>(read(PAWL_39_XENC));
            return;
        }
        case PAWL_20_RAMPMODE:
        case PAWL_2D_XTARGET:
        case PAWL_23_VSTART:
        case PAWL_27_VMAX:
        case PAWL_26_AMAX:
        case PAWL_28_DMAX: break;
        default: return;
    }
    // Writing these registers takes over control from the drive.
    if (address == PAWL_20_RAMPMODE && process_ == Process::running) {
        process_ = Process::stopped;
        scans_ = resets_ = false;
    }
    plan();
}

}  // namespace zvr::sim
