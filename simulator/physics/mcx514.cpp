// Registers and commands of the MCX514.
#include "physics/mcx514.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

#include "physics/mcx514_words.h"

namespace zvr::sim {

using namespace mcx514;

namespace {

struct Range {
    std::uint8_t first, last;
};
template <std::size_t Count>
bool isIn(const Range (&ranges)[Count], std::uint8_t code) {
    return std::ranges::any_of(ranges, [code](const Range& r) { return code >= r.first && code <= r.last; });
}
bool isKnown(std::uint8_t code) {
    return std::ranges::find(motionCodes, int{code}, &CommandName::code) != std::end(motionCodes);
}

constexpr Range ofChip[] = {{MOTION_19_TX, MOTION_1B_HLV},      {MOTION_1F_NOP, MOTION_1F_NOP},
                            {MOTION_2A_IPM, MOTION_2A_IPM},     {MOTION_60_LHK1, MOTION_6F_CLRSTEP},
                            {MOTION_78_DFREE, MOTION_78_DFREE}, {MOTION_E0_WR0, MOTION_E0_WR0},
                            {MOTION_E4_WR4, MOTION_E7_WR7},     {MOTION_FC_I2CCHK, MOTION_FE_HDRST}};
constexpr Range reading[] = {{MOTION_30_LP, MOTION_48_UI}, {MOTION_E8_RR0, MOTION_EF_RR7}};
constexpr Range readingChip[] = {
    {MOTION_39_TX, MOTION_3B_HLV}, {MOTION_E8_RR0, MOTION_E8_RR0}, {MOTION_EC_RR4, MOTION_EF_RR7}};

constexpr double settling = 0.005;  // seconds until an axis that stands is in position

}  // namespace

void MCX514::reset() {
    for (std::size_t axis = 0; axis < axisCount; ++axis) {
        const std::int64_t here = position(axis);  // the motor stays where it is
        axes_[axis] = Axis{};
        axes_[axis].position = here;
        axes_[axis].logicalBase = axes_[axis].realBase = -here;
        axes_[axis].values[MOTION_0E_LX] = axes_[axis].values[MOTION_0F_RX] = 0xFFFFFFFF;
        axes_[axis].modes[2] = bitOf(MOTION_CA_HLML);
    }
    shared_.fill(0);
    words_.fill(0);
    queue_.clear();
    decelerates_ = false;
    calculated_ = -infinity;
}

std::optional<std::uint32_t> MCX514::run(std::uint8_t code, std::uint8_t mask, std::uint32_t data, double now) {
    advance(now);
    if (!isKnown(code)) return std::nullopt;
    mask &= allAxes;
    const auto lowest = static_cast<std::size_t>(std::countr_zero(mask));
    if (isIn(reading, code)) {
        if (mask == 0 && !isIn(readingChip, code)) return std::nullopt;
        return read(code, mask == 0 ? 0 : lowest, data);
    }
    bool done = true;
    if (isIn(ofChip, code)) {
        done = commandChip(code, code == MOTION_78_DFREE ? mask : data);
    } else {
        if (mask == 0) return std::nullopt;
        for (std::size_t axis = 0; axis < axisCount; ++axis) {
            if ((mask >> axis & 1) != 0) done = command(axis, code, data) && done;
        }
    }
    follow();
    return done ? std::optional<std::uint32_t>(0) : std::nullopt;
}

bool MCX514::commandChip(std::uint8_t code, std::uint32_t data) {
    switch (code) {
        case MOTION_6D_DECEN:
        case MOTION_6E_DECDIS: decelerates_ = code == MOTION_6D_DECEN; return true;
        case MOTION_6F_CLRSTEP: queue_.clear(); return true;
        case MOTION_78_DFREE:
            for (std::size_t axis = 0; axis < axisCount; ++axis) {
                Axis& state = axes_[axis];
                if ((data >> axis & 1) == 0) continue;
                state.held = false;
                if (const std::uint8_t pending = std::exchange(state.pending, 0)) {
                    if (pending >= MOTION_60_LHK1) {
                        startInterpolation(pending);
                    } else {
                        command(axis, pending, 0);
                    }
                }
            }
            return true;
        case MOTION_FE_HDRST: reset(); return true;
        case MOTION_1F_NOP:
        case MOTION_FC_I2CCHK:
        case MOTION_FD_I2CRST: return true;
        default: break;
    }
    if (code < shared_.size()) {
        shared_[code] = data;
        return true;
    }
    if (code >= MOTION_60_LHK1 && code <= MOTION_6C_HLPCCW) return startInterpolation(code);
    const int word = code - MOTION_E0_WR0;
    words_[word] = static_cast<std::uint16_t>(data);
    if (code == MOTION_E4_WR4 || code == MOTION_E5_WR5) {
        const std::size_t first = code == MOTION_E4_WR4 ? 0 : 2;
        axes_[first].outputs = static_cast<std::uint8_t>(data);
        axes_[first + 1].outputs = static_cast<std::uint8_t>(data >> 8);
    }
    return true;
}

bool MCX514::command(std::size_t axis, std::uint8_t code, std::uint32_t data) {
    Axis& state = axes_[axis];
    if (code < state.values.size()) {
        write(axis, code, data);
    } else if (code <= MOTION_54_DRVAB || code == MOTION_5A_HMSRC) {
        if (state.drive) return false;
        if (state.held) {
            state.pending = code;
        } else {
            return code == MOTION_5A_HMSRC ? startSearch(axis) : startMove(axis, code);
        }
    } else if (code >= MOTION_A1_SYNC0ACT && code < MOTION_C0_SP0L) {
        for (std::size_t sync = 0; sync < 4; ++sync) {
            if ((code >> sync & 1) != 0) act(axis, sync);
        }
    } else if (code >= MOTION_91_SYNC0DIS && code < MOTION_A1_SYNC0ACT) {
        state.syncs &= static_cast<std::uint8_t>(~(code & 15));
    } else if (code >= MOTION_81_SYNC0EN && code < MOTION_91_SYNC0DIS) {
        state.syncs |= code & 15;
    } else if (code >= MOTION_C0_SP0L && code < MOTION_E0_WR0) {
        const auto setting = static_cast<MotionCode>(code);
        const int mode = registerOf(setting);
        const unsigned bit = bitOf(setting);
        writeMode(axis, mode, static_cast<std::uint16_t>((state.modes[mode] & ~bit) | ((data & 1) != 0 ? bit : 0)));
    } else if (code > MOTION_E0_WR0) {
        writeMode(axis, code - MOTION_E0_WR0, static_cast<std::uint16_t>(data));
    } else {
        switch (code) {
            case MOTION_56_DRVSBRK: stop(axis, false); break;
            case MOTION_57_DRVFBRK: stop(axis, true); break;
            case MOTION_70_VINC: changeSpeed(axis, state.values[MOTION_15_IV]); break;
            case MOTION_71_VDEC: changeSpeed(axis, -static_cast<double>(state.values[MOTION_15_IV])); break;
            case MOTION_73_TMSTA: state.timerStart = clock_; break;
            case MOTION_74_TMSTP: state.timerStart.reset(); break;
            case MOTION_75_SPSTA:
                state.splitFrom = position(axis);
                state.splits = 0;
                state.events |= splitStart;
                fire(axis, splitStarts);
                break;
            case MOTION_76_SPSTP:
                if (!state.splitFrom) break;
                state.splits = splits(axis);
                state.splitFrom.reset();
                state.events |= splitEnd;
                fire(axis, splitEnds);
                break;
            case MOTION_77_DHOLD: state.held = true; break;
            case MOTION_79_R2CLR: state.errors = 0; break;
            default: break;  // unconnected signals, and the page of RR3, which each read selects
        }
    }
    return true;
}

void MCX514::write(std::size_t axis, std::uint8_t code, std::uint32_t data) {
    Axis& state = axes_[axis];
    const auto number = static_cast<std::int32_t>(data);
    const bool changes = state.values[code] != data;
    state.values[code] = data;
    if (code == MOTION_09_LP) state.logicalBase = number - position(axis);
    if (code == MOTION_0A_RP) state.realBase = number - state.realSign() * position(axis);
    if (code == MOTION_1C_GPIO) {
        const std::uint32_t mask = data >> 8;
        state.outputs = static_cast<std::uint8_t>((state.outputs & ~mask) | (data & mask));
    }
    const auto& drive = state.drive;
    if (code == MOTION_06_TP && drive && drive->overridable && !drive->interpolates && std::isfinite(drive->target)) {
        drive->target = drive->pointSign * number - drive->zero;
        override(axis);
    }
    if (code < MOTION_06_TP && changes) override(axis);
}

void MCX514::writeMode(std::size_t axis, int mode, std::uint16_t word) {
    Axis& state = axes_[axis];
    const std::int64_t before = state.realSign() * position(axis);
    const unsigned changed = state.modes[mode] ^ word;
    state.modes[mode] = word;
    state.realBase += before - state.realSign() * position(axis);
    if (mode == 3 && (changed & (bitOf(MOTION_D1_DSNDE) | bitOf(MOTION_D2_SACC))) != 0) override(axis);
}

bool MCX514::inPosition(const Axis& axis) const { return !axis.drive && clock_ >= axis.stopped + settling; }

bool MCX514::alarm(std::size_t axis) const {
    return std::abs(static_cast<double>(position(axis))) >= tracks_[axis].alarmAt;
}

std::uint32_t MCX514::splits(std::size_t axis) const {
    const Axis& state = axes_[axis];
    if (!state.splitFrom) return state.splits;
    const std::int64_t period = std::max<std::int64_t>(state.values[MOTION_17_SP1] & 0xFFFF, 1);
    const std::int64_t pulses = std::abs(position(axis) - *state.splitFrom) / period + 1;
    const std::uint32_t most = state.values[MOTION_18_SP2] != 0 ? state.values[MOTION_18_SP2] : 0xFFFF;
    return static_cast<std::uint32_t>(std::min<std::int64_t>(pulses, most));
}

std::uint32_t MCX514::readInputs(std::size_t axis) const {
    const Axis& state = axes_[axis];
    const Track& track = tracks_[axis];
    const auto here = static_cast<double>(position(axis));
    const double phase = here - track.revolution * std::floor(here / track.revolution);
    // A signal, where it is shown, and the setting of its level.
    struct Signal {
        bool active;
        unsigned bit;
        MotionCode polarity;
    };
    const Signal signals[] = {{false, 1, MOTION_C0_SP0L},
                              {track.home().holds(here), homeInput, MOTION_C2_SP1L},
                              {phase < track.revolution / 2, indexInput, MOTION_C4_SP2L},
                              {inPosition(state), inPositionInput, MOTION_C6_INPL},
                              {alarm(axis), alarmInput, MOTION_C8_ALML},
                              {track.forward().holds(here), forwardLimit, MOTION_CA_HLML},
                              {track.reverse().holds(here), reverseLimit, MOTION_CA_HLML}};
    std::uint32_t word = 0;
    for (const auto& [active, bit, polarity] : signals) word |= active == state.has(polarity) ? bit : 0;
    return word;
}

std::uint32_t MCX514::readState(std::size_t axis) const {
    const Axis& state = axes_[axis];
    std::uint32_t word = state.syncs * syncEnabled0;
    if (state.held) word |= isHeld;
    if (!state.drive) return word;
    const Movement now = state.drive->profile.at(clock_ - state.drive->start);
    const double change = now.speed * now.acceleration;
    return word | (change > 0 ? speedsUp : change == 0 ? isSteady : slowsDown);
}

std::uint32_t MCX514::readMainStatus() const {
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < axisCount; ++i) {
        const Axis& axis = axes_[i];
        const bool settles = axis.has(MOTION_C7_INPE) && !inPosition(axis);
        if (axis.drive || settles) word |= 1U << i;
        if (axis.errors != 0) word |= static_cast<std::uint32_t>(failed0) << i;
        if (axis.drive && axis.drive->interpolates && queue_.size() < longestQueue) word |= takesNext;
    }
    if (clock_ < calculated_) word |= shared_[MOTION_2A_IPM] & 15;
    return word | static_cast<std::uint32_t>(queue_.size()) << queuedAt;
}

std::uint32_t MCX514::read(std::uint8_t code, std::size_t axis, std::uint32_t data) {
    Axis& state = axes_[axis];
    const auto pair = [this](std::size_t first) {
        return static_cast<std::uint32_t>(axes_[first].outputs | axes_[first + 1].outputs << 8);
    };
    constexpr std::uint8_t settings[] = {MOTION_20_MRM, MOTION_21_P1M, MOTION_22_P2M, MOTION_02_AC,
                                         MOTION_04_SV,  MOTION_05_DV,  MOTION_06_TP,  MOTION_17_SP1};
    if (code >= MOTION_34_MR0 && code <= MOTION_37_MR3) return state.values[MOTION_10_MR0 + code - MOTION_34_MR0];
    if (code >= MOTION_3D_WR1 && code <= MOTION_3F_WR3) return state.modes[1 + code - MOTION_3D_WR1];
    if (code >= MOTION_40_MRM && code <= MOTION_47_SP1) return state.values[settings[code - MOTION_40_MRM]];
    switch (code) {
        case MOTION_30_LP: return static_cast<std::uint32_t>(logical(axis));
        case MOTION_31_RP: return static_cast<std::uint32_t>(real(axis));
        case MOTION_32_CV: return static_cast<std::uint32_t>(std::llround(speed(state)));
        case MOTION_33_CA:
            if (!state.drive) return 0;
            return static_cast<std::uint32_t>(
                std::llround(std::abs(state.drive->profile.at(clock_ - state.drive->start).acceleration)));
        case MOTION_38_CT: return state.timerStart ? static_cast<std::uint32_t>((clock_ - *state.timerStart) * 1e6) : 0;
        case MOTION_39_TX: return shared_[MOTION_19_TX];
        case MOTION_3A_CHLN:
            if (!state.drive || state.drive->path.turn <= 0) return 0;
            return static_cast<std::uint32_t>(gone(*state.drive) / state.drive->path.turn);
        case MOTION_3B_HLV: return shared_[MOTION_1B_HLV];
        case MOTION_48_UI: return state.outputs | splits(axis) << 16;
        case MOTION_E8_RR0: return readMainStatus();
        case MOTION_E9_RR1: return std::exchange(state.events, 0) & state.modes[1];
        case MOTION_EA_RR2: return state.errors;
        case MOTION_EB_RR3: return data == 0 ? readInputs(axis) : readState(axis);
        case MOTION_EC_RR4: return pair(0);
        case MOTION_ED_RR5: return pair(2);
        default: return words_[code - MOTION_E8_RR0];
    }
}

}  // namespace zvr::sim
