// The words of the MCX514: what the bits of its registers stand for. The registers and codes themselves have the names
// of motion_codes.def.
#pragma once

#include <cstdint>

#include "core/wire/motion_codes.h"

namespace zvr::sim::mcx514 {

/// Axes of a command, by mask.
enum AxisMask : std::uint8_t { noAxis = 0, axis0 = 1, axis1 = 2, axis2 = 4, axis3 = 8, allAxes = 15 };

/// The register, WR2 or WR3, and the bit of it that a setting of one bit changes.
constexpr int registerOf(MotionCode setting) { return setting < MOTION_D0_MANLD ? 2 : 3; }
constexpr std::uint16_t bitOf(MotionCode setting) { return static_cast<std::uint16_t>(1U << (setting & 15)); }

/// RR1, and WR1, which enables its bits.
enum Event : std::uint16_t {
    compared0 = 1 << 0,  ///< and the next three, of the multi-purpose registers
    driveStart = 1 << 4,
    driveEnd = 1 << 7,
    homeEnd = 1 << 8,
    timerEnd = 1 << 9,
    splitStart = 1 << 10,
    splitEnd = 1 << 11,
    syncDone0 = 1 << 12,  ///< and the next three
};

/// RR2.
enum Error : std::uint16_t { softPlus = 1, softMinus = 2, hardPlus = 4, hardMinus = 8, alarmed = 16 };

/// RR0: axes that drive, from bit 0, and that have an error, from bit 4.
enum MainStatus : std::uint16_t { driving = 0xF, failed0 = 1 << 4, failed = 0xF0, takesNext = 1 << 8 };
constexpr int queuedAt = 12;  ///< where the number of waiting interpolations begins

/// RR3, page 0.
enum Input : std::uint16_t {
    homeInput = 1 << 1,
    indexInput = 1 << 2,
    inPositionInput = 1 << 5,
    alarmInput = 1 << 6,
    forwardLimit = 1 << 7,
    reverseLimit = 1 << 8,
};

/// RR3, page 1.
enum State : std::uint16_t { speedsUp = 1, isSteady = 2, slowsDown = 4, isHeld = 1 << 7, syncEnabled0 = 1 << 10 };

/// MOTION_23_H1M: to the home switch or a limit, or to the index.
enum HomeMode : std::uint16_t {
    searchesSwitch = 1 << 0,
    backwards = 1 << 1,
    searchesIndex = 1 << 2,
    ofLimit = 1 << 3,         ///< of a search for a switch
    indexBackwards = 1 << 3,  ///< of a search for the index
    comesBack = 1 << 4,
    finallyBackwards = 1 << 5,
    comesBackToLimit = 1 << 6,
    addsOffset = 1 << 15,
};
/// MOTION_24_H2M.
enum HomeEnd : std::uint16_t { clearsLogical = 2, clearsReal = 4 };

/// MOTION_2A_IPM, beside the mask of the axes.
enum InterpolationMode : std::uint16_t { swapsPair = 1 << 4, twoAxes = 1 << 6, threeAxes = 1 << 7, helical = 1 << 8 };

/// MOTION_20_MRM has four bits for each multi-purpose register: what it is compared with, and how.
enum Compared : std::uint8_t { logicalPosition = 0, realPosition = 1 };
enum Comparison : std::uint8_t { notLess = 0, greater = 1, equal = 2, less = 3 };
constexpr std::uint16_t comparison(int number, Comparison how, Compared with = logicalPosition) {
    return static_cast<std::uint16_t>((how << 2 | with) << (4 * number));
}

/// MOTION_26_S0M to MOTION_29_S3M.
enum SyncCause : std::uint8_t {
    comparedTrue = 1,
    timeIsOver = 2,
    driveStarts = 3,
    driveEnds = 6,
    splitStarts = 7,
    splitEnds = 8,
    captureRises = 10,
    captureFalls = 11,
};
enum SyncAction : std::uint8_t {
    loadSpeed = 1,
    loadFinishPoint = 2,
    loadSplit = 3,
    loadPosition = 4,
    latchLogical = 5,
    latchReal = 6,
    latchTimer = 7,
    latchSpeed = 8,
    firstDrive = 10,  ///< and on: relative, back, absolute, forward, reverse
    startsReverse = 14,
    firstCommand = 17,  ///< and on: stops, faster, slower, timer, split pulses
    startsSplit = 23,
    lastCommand = 24,
};
constexpr std::uint16_t repeats = 1 << 15;
constexpr std::uint16_t sync(SyncCause cause, SyncAction action) {
    return static_cast<std::uint16_t>(cause | action << 4);
}

}  // namespace zvr::sim::mcx514
