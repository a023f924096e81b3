#include "physics/tmc5240.h"

#include <cmath>
#include <utility>

namespace zvr::sim {

namespace {

// clang-format off
enum Register : std::uint8_t {
    GSTAT = 0x01,
    RAMPMODE = 0x20, XACTUAL, VACTUAL, VSTART, AMAX = 0x26, VMAX, DMAX, XTARGET = 0x2D, AACTUAL = 0x31,
    SWMODE = 0x34, RAMPSTAT, XENC = 0x39, ENC_CONST,
};
// clang-format on
enum RampMode : std::uint32_t { toTarget, upwards, downwards, holding };
enum GlobalStatus : std::uint32_t { wasReset = 1, driverError = 2 };

struct Default {
    std::uint8_t address;
    std::uint32_t value;
};
constexpr Default defaults[] = {
    {0x00, 8},          {0x0A, 32},        {0x10, 461315},     {0x11, 10},         {0x2A, 10},
    {0x2B, 10},         {0x30, 10},        {0x3A, 65536},      {0x52, 194121509},  {0x60, 2863314260},
    {0x61, 1251300522}, {0x62, 608774441}, {0x63, 269500962},  {0x64, 4227858431}, {0x65, 3048961917},
    {0x66, 1227445590}, {0x67, 4211234},   {0x68, 4294934614}, {0x69, 16187392},   {0x6C, 4260179},
    {0x70, 3293315102}, {0x74, 0},
};

constexpr int mostLegs = 100000;  // of a scan, between two requests

std::uint32_t wordOf(double value) { return static_cast<std::uint32_t>(std::llround(value)); }

}  // namespace

void TMC5240::reset() {
    const auto here = static_cast<double>(steps());
    registers_.fill(0);
    for (const auto& [address, value] : defaults) registers_[address] = value;
    registers_[GSTAT] = wasReset;
    registers_[RAMPMODE] = holding;
    profile_ = Profile(here);
    zero_ = encoderZero_ = -steps();
    process_ = Process::none;
    scans_ = resets_ = false;
}

std::int64_t TMC5240::steps() const { return std::llround(place()); }

Ramp TMC5240::ramp() const {
    return {static_cast<double>(registers_[VSTART]), static_cast<double>(registers_[VMAX]),
            static_cast<double>(registers_[AMAX]), static_cast<double>(registers_[DMAX])};
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
        if (watchesLimits_ && (registers_[SWMODE] & 1) != 0 && offerStop(track_.forwardAt, Crossing::up)) jams = false;
        if (watchesLimits_ && (registers_[SWMODE] & 2) != 0 && offerStop(track_.reverseAt, Crossing::down))
            jams = false;
        // Standing is no move, but a move may begin where it ends.
        if (time > now || (profile_.duration() == 0 && process_ != Process::running)) break;
        clock_ = time;
        if (jams) registers_[GSTAT] |= driverError;
        if (process == Process::done && scans_ && turningPoints_[0] != turningPoints_[1]) {
            std::swap(turningPoints_[0], turningPoints_[1]);
            registers_[XTARGET] = static_cast<std::uint32_t>(turningPoints_[0]);
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
        registers_[RAMPMODE] = holding;
        registers_[XTARGET] = read(XACTUAL);
    }
    scans_ = resets_ = false;
    watchesLimits_ = true;
}

// Follows the registers, from where and as fast as it is.
void TMC5240::plan() {
    const Movement now = movement();
    start_ = clock_;
    profile_ = Profile(now.position, now.speed);
    switch (registers_[RAMPMODE]) {
        case toTarget:
            profile_.moveTo(static_cast<double>(static_cast<std::int32_t>(registers_[XTARGET]) - zero_), ramp());
            break;
        case upwards: profile_.run(1, ramp()); break;
        case downwards: profile_.run(-1, ramp()); break;
        default:
            if (now.speed != 0) profile_.hold(forever);
    }
}

bool TMC5240::begin(const Ramp& ramp) {
    if (!(ramp.speed > 0 && ramp.acceleration > 0 && ramp.deceleration > 0)) return false;
    registers_[VMAX] = wordOf(ramp.speed);
    registers_[AMAX] = wordOf(ramp.acceleration);
    registers_[DMAX] = wordOf(ramp.deceleration);
    process_ = Process::running;
    scans_ = resets_ = false;
    watchesLimits_ = true;
    return true;
}

bool TMC5240::run(int direction, const Ramp& ramp) {
    if (!begin(ramp)) return false;
    registers_[RAMPMODE] = direction > 0 ? upwards : downwards;
    plan();
    return true;
}

bool TMC5240::moveTo(std::int32_t position, const Ramp& ramp) {
    if (!begin(ramp)) return false;
    registers_[RAMPMODE] = toTarget;
    registers_[XTARGET] = static_cast<std::uint32_t>(position);
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
    registers_[RAMPMODE] = toTarget;
    registers_[XTARGET] = static_cast<std::uint32_t>(std::llround(profile_.end().position) + zero_);
    resets_ = search.resets;
    watchesLimits_ = !search.ofLimit;
    return true;
}

void TMC5240::stop() {
    const Movement now = movement();
    start_ = clock_;
    profile_ = Profile(now.position, now.speed);
    profile_.stop(ramp());
    registers_[RAMPMODE] = holding;
    if (process_ == Process::running) process_ = Process::stopped;
    scans_ = resets_ = false;
}

std::uint16_t TMC5240::switches() const {
    const auto here = static_cast<double>(steps());
    const bool closed[] = {track_.forward().holds(here), track_.reverse().holds(here), track_.home().holds(here)};
    return static_cast<std::uint16_t>(closed[0] | closed[1] << 1 | closed[2] << 2);
}

std::uint8_t TMC5240::status() const {
    const std::uint32_t ramp = read(RAMPSTAT);
    return static_cast<std::uint8_t>((registers_[GSTAT] & 3) | (ramp >> 10 & 1) << 3 | (ramp >> 8 & 3) << 4 |
                                     (ramp & 3) << 6);
}

Bytes TMC5240::parameters() const {
    Bytes data;
    for (const auto& entry : defaults) appendBigEndian(data, read(entry.address));
    return data;
}

std::uint32_t TMC5240::read(std::uint8_t address) const {
    const Movement now = movement();
    switch (address) {
        case XACTUAL: return static_cast<std::uint32_t>(steps() + zero_);
        case XENC: {
            const int sign = static_cast<std::int32_t>(registers_[ENC_CONST]) < 0 ? -1 : 1;
            return static_cast<std::uint32_t>(sign * steps() + encoderZero_);
        }
        case VACTUAL: return wordOf(now.speed);
        case AACTUAL: return wordOf(now.acceleration);
        case RAMPSTAT: {
            const bool isFast = now.speed != 0 && std::abs(std::abs(now.speed) - registers_[VMAX]) < 0.5;
            const bool isThere = read(XACTUAL) == registers_[XTARGET];
            return (switches() & 3U) | (isFast ? 1U << 8 : 0) | (isThere ? 1U << 9 : 0) |
                   (now.speed == 0 ? 1U << 10 : 0);
        }
        default: return registers_.at(address);
    }
}

void TMC5240::write(std::uint8_t address, std::uint32_t value) {
    const std::int64_t encoder = read(XENC);
    const auto number = static_cast<std::int32_t>(value);
    std::uint32_t& word = registers_.at(address);
    word = address == GSTAT ? word & ~value : value;
    switch (address) {
        case XACTUAL: zero_ = number - steps(); break;
        case XENC:
        case ENC_CONST: {
            encoderZero_ = 0;
            encoderZero_ = (address == XENC ? number : encoder) - static_cast<std::int32_t>(read(XENC));
            return;
        }
        case RAMPMODE:
        case XTARGET:
        case VSTART:
        case VMAX:
        case AMAX:
        case DMAX: break;
        default: return;
    }
    // Whoever writes these takes over from the drive.
    if (address == RAMPMODE && process_ == Process::running) {
        process_ = Process::stopped;
        scans_ = resets_ = false;
    }
    plan();
}

}  // namespace zvr::sim
