// Interpolations of the simulated MCX514: the way of its axes together.
#include "mcx514_fixture.h"

namespace zvr::sim {

using namespace mcx514;

namespace {

TEST_F(Mcx514Test, LinesAreStraight) {
    for (const int count : {1, 2, 3, 4}) {
        now_ += 1;
        run(MOTION_FE_HDRST, noAxis);
        setUp(axis1, 1000, 1000, 30);
        const int ends[] = {0, 3000, -1234, 517};
        const int masks[] = {axis1, axis1 | axis2, axis1 | axis2 | axis3, allAxes};
        const int mask = masks[count - 1];
        if ((mask & axis0) != 0) setUp(axis0, 1000, 1000, 30);
        run(MOTION_2A_IPM, noAxis, mask);
        run(MOTION_6D_DECEN, noAxis);
        for (int axis = 0; axis < 4; ++axis) run(MOTION_06_TP, 1 << axis, ends[axis]);
        run(MOTION_60_LHK1 + count - 1, noAxis);
        int looks = 0;
        follow(0.0501, [&] {
            EXPECT_EQ(driving() == 0 ? mask : driving(), static_cast<std::uint32_t>(mask));
            const double done = logical(axis1) / 3000.0;
            for (int axis = 0; axis < 4; ++axis) {
                EXPECT_NEAR(logical(1 << axis), (mask >> axis & 1) * done * ends[axis], 0.501);
            }
            ++looks;
        });
        EXPECT_GT(looks, 50);
        EXPECT_EQ(logical(axis1), 3000);
        EXPECT_EQ(logical(axis3), count >= 3 ? 517 : 0);
    }
    EXPECT_TRUE((run(MOTION_2A_IPM, noAxis, 0), refuses(MOTION_61_LHK2, noAxis)));
}

TEST_F(Mcx514Test, ArcsAreRound) {
    struct Case {
        int mode, code, cx, cy, ex, ey;
        double turns;
    };
    const Case cases[] = {{pair, MOTION_64_CHKCW, 1000, 0, 1000, 1000, 0.25},
                          {pair, MOTION_65_CHKCCW, 1000, 0, 1000, 1000, 0.75},
                          {pair, MOTION_64_CHKCW, 300, -400, 0, 0, 1},
                          {pair | swapsPair, MOTION_64_CHKCW, 1000, 0, 1000, 1000, 0.75},
                          {pair, MOTION_65_CHKCCW, -600, 800, -1600, 800, 0}};
    for (const Case& arc : cases) {
        run(MOTION_09_LP, allAxes, 0);
        run(MOTION_2A_IPM, noAxis, arc.mode);
        run(MOTION_08_CP, axis0, arc.cx), run(MOTION_08_CP, axis1, arc.cy), run(MOTION_06_TP, axis0, arc.ex),
            run(MOTION_06_TP, axis1, arc.ey);
        setUp(axis0, 1000, 100000, 1000);
        const double begin = now_, radius = std::hypot(arc.cx, arc.cy);
        run(arc.code, 0);
        follow(0.0101, [&] { EXPECT_NEAR(std::hypot(logical(axis0) - arc.cx, logical(axis1) - arc.cy), radius, 1); });
        EXPECT_EQ(logical(axis0), arc.ex);
        EXPECT_EQ(logical(axis1), arc.ey);
        if (arc.turns > 0) {
            EXPECT_NEAR(now_ - begin, arc.turns * radius * 2 * M_PI / 1000, 0.02);
        }
    }
    run(MOTION_08_CP, axis0 | axis1, 0);
    EXPECT_TRUE(refuses(MOTION_64_CHKCW, noAxis));
}

TEST_F(Mcx514Test, ArcsEndWhereTheyAreToldWhateverTheirLength) {
    setUp(axis0, 20000, 77777, 1000);
    run(MOTION_2A_IPM, noAxis, pair);
    for (int radius = 100; radius < 4100; radius += 37) {
        run(MOTION_09_LP, allAxes, 0);
        run(MOTION_08_CP, axis0, radius), run(MOTION_08_CP, axis1, 0), run(MOTION_06_TP, axis0, radius),
            run(MOTION_06_TP, axis1, radius);
        run(MOTION_64_CHKCW, noAxis);
        follow(0.0137, [] {});
        EXPECT_EQ(logical(axis0), radius);
        EXPECT_EQ(logical(axis1), radius);
    }
}

TEST_F(Mcx514Test, HelixClimbsEvenly) {
    run(MOTION_2A_IPM, noAxis, pair | axis2 | helical);
    run(MOTION_1A_HLN, noAxis, 2);
    run(MOTION_08_CP, axis0, 500), run(MOTION_08_CP, axis1, 0), run(MOTION_06_TP, axis0, 500),
        run(MOTION_06_TP, axis1, 500), run(MOTION_06_TP, axis2, 900);
    setUp(axis0, 5000, 100000, 5000);
    run(MOTION_6B_HLPCW, noAxis);
    EXPECT_NE(driving(), 0U);
    now_ += 0.1;
    EXPECT_EQ(driving(), 0U);
    const double length = 500 * 2.25 * 2 * M_PI;
    EXPECT_NEAR(run(MOTION_3B_HLV, noAxis), length, 1);
    run(MOTION_1B_HLV, noAxis, std::lround(length));
    run(MOTION_69_HLCW, noAxis);
    const double begin = now_;
    std::set<std::uint32_t> turns;
    follow(0.0101, [&] {
        EXPECT_NEAR(std::hypot(logical(axis0) - 500, logical(axis1)), 500, 1);
        EXPECT_NEAR(logical(axis2), std::min(1.0, (now_ - begin) * 5000 / length) * 900, 1.5);
        turns.insert(run(MOTION_3A_CHLN, axis0));
    });
    EXPECT_EQ(turns, (std::set<std::uint32_t>{0, 1, 2}));
    EXPECT_EQ(logical(axis0), 500);
    EXPECT_EQ(logical(axis1), 500);
    EXPECT_EQ(logical(axis2), 900);
}

TEST_F(Mcx514Test, LimitsHoldOnAnArc) {
    tracks_[1].forwardAt = 700;
    run(MOTION_E2_WR2, axis1, instantLimits);
    run(MOTION_2A_IPM, noAxis, pair);
    run(MOTION_08_CP, axis0, 1000), run(MOTION_08_CP, axis1, 0), run(MOTION_06_TP, axis0 | axis1, 0);
    setUp(axis0, 1000, 100000, 1000);
    run(MOTION_64_CHKCW, noAxis);
    follow();
    EXPECT_EQ(logical(axis1), 700);
    EXPECT_NEAR(logical(axis0), 1000 - std::sqrt(1e6 - 49e4), 1.5);
    EXPECT_EQ(run(MOTION_EA_RR2, axis1), hardPlus);
}

TEST_F(Mcx514Test, InterpolationsFollowEachOtherWithoutAStop) {
    run(MOTION_2A_IPM, noAxis, axis0 | axis1);
    run(MOTION_6E_DECDIS, noAxis);
    setUp(axis0, 1000, 1000, 0);
    const auto line = [&](int x, int y) {
        run(MOTION_06_TP, axis0, x), run(MOTION_06_TP, axis1, y);
        return !refuses(MOTION_61_LHK2, noAxis);
    };
    EXPECT_TRUE(line(1000, 500));
    EXPECT_NE(run(MOTION_E8_RR0, noAxis) & takesNext, 0U);
    run(MOTION_6D_DECEN, noAxis);
    EXPECT_TRUE(line(1000, -500));
    EXPECT_EQ(run(MOTION_E8_RR0, noAxis) >> queuedAt, 1U);
    follow(0.01, [&] {
        if (logical(axis0) > 600 && logical(axis0) < 1400) {
            EXPECT_EQ(speed(axis0), 1000U);
        }
    });
    EXPECT_EQ(logical(axis0), 2000);
    EXPECT_EQ(logical(axis1), 0);
    for (int i = 0; i < 9; ++i) EXPECT_TRUE(line(10, 10));
    EXPECT_FALSE(line(10, 10));
    run(MOTION_57_DRVFBRK, axis0);
    EXPECT_EQ(driving(), 0U);
}

}  // namespace
}  // namespace zvr::sim
