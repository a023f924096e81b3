// A simulated MCX514 with time given to it.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include "physics/mcx514.h"

namespace zvr::sim {

class Mcx514Test : public ::testing::Test {
protected:
    Mcx514Test() {
        for (std::uint8_t axis = 1; axis <= 8; axis = static_cast<std::uint8_t>(axis * 2)) setUp(axis, 1000, 1000, 0);
    }

    std::uint32_t run(int code, int mask, std::int64_t data = 0) {
        const auto value = chip_.run(static_cast<std::uint8_t>(code), static_cast<std::uint8_t>(mask),
                                     static_cast<std::uint32_t>(data), now_);
        if (!value) ADD_FAILURE() << "refused: " << std::hex << code;
        return value.value_or(0);
    }
    bool refuses(int code, int mask, std::int64_t data = 0) {
        return !chip_.run(static_cast<std::uint8_t>(code), static_cast<std::uint8_t>(mask),
                          static_cast<std::uint32_t>(data), now_);
    }
    void setUp(int mask, int speed, int acceleration, int initial) {
        run(MOTION_02_AC, mask, acceleration);
        run(MOTION_03_DC, mask, acceleration);
        run(MOTION_04_SV, mask, initial);
        run(MOTION_05_DV, mask, speed);
    }
    int logical(int mask) { return static_cast<int>(run(MOTION_30_LP, mask)); }
    int real(int mask) { return static_cast<int>(run(MOTION_31_RP, mask)); }
    std::uint32_t driving() { return run(MOTION_E8_RR0, mcx514::noAxis) & mcx514::driving; }
    std::uint32_t speed(int mask) { return run(MOTION_32_CV, mask); }
    void move(int mask, int distance) {
        run(MOTION_06_TP, mask, distance);
        run(MOTION_50_DRVRL, mask);
    }
    // Goes on in steps until nothing drives; looks after each.
    template <class Look>
    void follow(double step, Look look) {
        for (int i = 0; driving() != 0; ++i) {
            ASSERT_LT(i, 100000);
            now_ += step;
            look();
        }
    }
    void follow() {
        follow(0.01, [] {});
    }

    // The limit switches stop a drive at once, and are high when closed.
    static constexpr int instantLimits =
        mcx514::bitOf(MOTION_CA_HLML) | mcx514::bitOf(MOTION_CB_HLME) | mcx514::bitOf(MOTION_CC_HLMM);
    // To the home switch, which is closed below its place, and back to it from above.
    static constexpr int homeBackwards = mcx514::searchesSwitch | mcx514::backwards | mcx514::searchesIndex |
                                         mcx514::comesBack | mcx514::finallyBackwards;
    static constexpr int pair = mcx514::axis0 | mcx514::axis1 | mcx514::twoAxes;

    Tracks tracks_;
    MCX514 chip_{tracks_};
    double now_ = 0;
};

}  // namespace zvr::sim
