// The simulated motion chip, with time given to it: what its registers show while axes move.
#include "physics/mcx514.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>

namespace zvr::sim {
namespace {

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
        run(0x02, mask, acceleration);
        run(0x03, mask, acceleration);
        run(0x04, mask, initial);
        run(0x05, mask, speed);
    }
    int logical(int mask) { return static_cast<int>(run(0x30, mask)); }
    int real(int mask) { return static_cast<int>(run(0x31, mask)); }
    std::uint32_t driving() { return run(0xE8, 0) & 15; }
    std::uint32_t speed(int mask) { return run(0x32, mask); }
    void move(int mask, int distance) {
        run(0x06, mask, distance);
        run(0x50, mask);
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

    Tracks tracks_;
    MCX514 chip_{tracks_};
    double now_ = 0;
};

TEST_F(Mcx514Test, AnswersItsCodesAndNoOthers) {
    int known = 0;
    for (int code = 0; code < 256; ++code) {
        if (code == 0x50 || (code >= 0x60 && code <= 0x6C)) continue;  // these need an aim
        known += chip_.run(static_cast<std::uint8_t>(code), 1, 0, now_).has_value() ? 1 : 0;
        run(0x57, 15);
    }
    run(0x2A, 0, 3);
    for (const int code : {0x50, 0x60, 0x61, 0x62, 0x63, 0x64, 0x65, 0x66, 0x67, 0x68, 0x69, 0x6A, 0x6B, 0x6C}) {
        run(0x08, 1, 10);
        known += chip_.run(static_cast<std::uint8_t>(code), 1, 0, now_).has_value() ? 1 : 0;
        run(0x57, 15);
    }
    EXPECT_EQ(known, 199);
    EXPECT_TRUE(refuses(0x05, 0) && refuses(0x57, 128) && refuses(0x30, 0));
}

TEST_F(Mcx514Test, RegistersAreReadBack) {
    run(0xE2, 3, 0x1234);
    EXPECT_EQ(run(0x3E, 1), 0x1234U);
    EXPECT_EQ(run(0x3E, 2), 0x1234U);
    run(0xE3, 4, 0);
    for (int bit = 0; bit < 15; ++bit) {
        run(0xD0 + bit, 4, 1);
        EXPECT_EQ(run(0x3F, 4), (1U << (bit + 1)) - 1);
    }
    run(0xC0, 1, 0);
    EXPECT_EQ(run(0x3E, 1), 0x1234U);
    run(0xC2, 1, 0), run(0xC4, 1, 0), run(0xCF, 1, 1);
    EXPECT_EQ(run(0x3E, 1), 0x9220U | 0x0000U);
    run(0x06, 1, -5);
    EXPECT_EQ(run(0x46, 1), 0xFFFFFFFBU);
    run(0x12, 8, -7), run(0x20, 8, 77), run(0x22, 8, 88), run(0x19, 0, 99), run(0x1B, 0, 55);
    EXPECT_EQ(run(0x36, 8), 0xFFFFFFF9U);
    EXPECT_EQ(run(0x40, 8), 77U);
    EXPECT_EQ(run(0x42, 8), 88U);
    EXPECT_EQ(run(0x39, 8), 99U);
    EXPECT_EQ(run(0x3B, 0), 55U);
    run(0x1C, 2, 0x0301);
    run(0x1C, 2, 0x0102);
    EXPECT_EQ(run(0x48, 2) & 0xFF, 0U);
    run(0x1C, 2, 0x0203);
    EXPECT_EQ(run(0xEC, 0), 0x0200U);
    run(0xFE, 0);
    EXPECT_EQ(run(0x3F, 4), 0U);
}

TEST_F(Mcx514Test, MoveIsATrapezoid) {
    move(1, -3000);
    EXPECT_EQ(driving(), 1U);
    now_ = 0.5;
    EXPECT_EQ(logical(1), -125);
    EXPECT_EQ(speed(1), 500U);
    EXPECT_EQ(run(0x33, 1), 1000U);
    EXPECT_EQ(run(0xEB, 1, 1) & 7, 1U);
    now_ = 2;
    EXPECT_EQ(logical(1), -1500);
    EXPECT_EQ(speed(1), 1000U);
    EXPECT_EQ(run(0xEB, 1, 1) & 7, 2U);
    now_ = 3.5;
    EXPECT_EQ(speed(1), 500U);
    EXPECT_EQ(run(0xEB, 1, 1) & 7, 4U);
    now_ = 4.001;
    EXPECT_EQ(logical(1), -3000);
    EXPECT_EQ(driving(), 0U);
    EXPECT_EQ(speed(1), 0U);
    run(0x54, 1);
    now_ = 10;
    EXPECT_EQ(logical(1), -3000);
    run(0x51, 1);
    now_ = 20;
    EXPECT_EQ(logical(1), 0);
}

TEST_F(Mcx514Test, JerkAndAsymmetryShapeTheMove) {
    run(0xE3, 1, 4);
    run(0x00, 1, 1000);
    move(1, 2000);
    now_ = 0.5;
    EXPECT_EQ(speed(1), 125U);
    EXPECT_EQ(run(0x33, 1), 500U);
    follow();
    EXPECT_NEAR(now_, 4, 0.02);
    EXPECT_EQ(logical(1), 2000);

    run(0xE3, 2, 2);
    run(0x03, 2, 250);
    now_ = 100;
    move(2, 5000);
    follow();
    EXPECT_NEAR(now_, 100 + 1 + 4 + 2.5, 0.02);
}

TEST_F(Mcx514Test, ContinuousDriveStopsAsItIsTold) {
    run(0x53, 1);
    run(0x52, 2);
    now_ = 10;
    EXPECT_EQ(logical(1), -9500);
    EXPECT_TRUE(refuses(0x50, 1));
    run(0x57, 1);
    run(0x56, 2);
    EXPECT_EQ(driving(), 2U);
    now_ = 20;
    EXPECT_EQ(logical(1), -9500);
    EXPECT_EQ(logical(2), 10000);
}

TEST_F(Mcx514Test, OverridesCountOnTheWay) {
    move(1, 10000);
    now_ = 2;
    run(0x05, 1, 2000);
    now_ = 3;
    EXPECT_EQ(speed(1), 2000U);
    run(0x05, 1, 500);
    now_ = 4.5;
    EXPECT_EQ(speed(1), 500U);
    run(0x15, 1, 100);
    run(0x70, 1);
    now_ = 5;
    EXPECT_EQ(speed(1), 600U);
    run(0x71, 1);
    run(0x06, 1, 6000);
    follow();
    EXPECT_EQ(logical(1), 6000);
    run(0x05, 1, 1000);
    run(0x06, 1, 0);
    run(0x54, 1);
    now_ += 2;
    run(0x06, 1, 5800);  // it is past that
    const int there = logical(1);
    EXPECT_LT(there, 5800);
    follow();
    EXPECT_EQ(logical(1), 5800);
}

TEST_F(Mcx514Test, HeldAxesStartInTheSameInstant) {
    run(0x77, 7);
    run(0x06, 7, 1000);
    run(0x50, 1);
    now_ = 1;
    run(0x50, 2);
    now_ = 5;
    EXPECT_EQ(driving(), 0U);
    run(0x78, 3);
    EXPECT_EQ(driving(), 3U);
    follow(0.1, [&] { EXPECT_EQ(logical(1), logical(2)); });
    EXPECT_EQ(logical(1), 1000);
    run(0x50, 4);
    now_ += 10;
    EXPECT_EQ(logical(4), 0);
}

TEST_F(Mcx514Test, LimitsStopADriveIntoThem) {
    tracks_[0].forwardAt = 5000, tracks_[0].reverseAt = -700;
    run(0xE2, 1, 1 << 10 | 1 << 11 | 1 << 12);
    run(0x09, 1, 100000);
    run(0x52, 1);
    follow();
    EXPECT_EQ(logical(1), 105000);
    EXPECT_EQ(run(0xEA, 1), 4U);
    EXPECT_EQ(run(0xE8, 0) & 0xF0, 0x10U);
    EXPECT_EQ(run(0xEB, 1) & 0x180, 0x80U);
    run(0xCA, 1, 0);  // low is active
    EXPECT_EQ(run(0xEB, 1) & 0x180, 0x100U);
    move(1, 10);
    EXPECT_EQ(driving(), 0U);
    move(1, -10);
    follow();
    EXPECT_EQ(logical(1), 104990);
    run(0xCC, 1, 0);  // to stop there takes its way
    run(0x53, 1);
    follow();
    EXPECT_EQ(logical(1), 100000 - 700 - 500);

    run(0x0B, 2, 2000), run(0x0C, 2, -50), run(0x0A, 2, 500), run(0xE3, 2, 1 << 11);
    run(0xE2, 2, 7 << 13);
    run(0x53, 2);  // the encoder counts up
    follow();
    EXPECT_EQ(real(2), 2000);
    EXPECT_EQ(logical(2), -1500);
    EXPECT_EQ(run(0xEA, 2), 1U);
}

TEST_F(Mcx514Test, AlarmEndsADriveAndForbidsTheNext) {
    tracks_[2].alarmAt = 600;
    run(0xE2, 4, 1 << 8 | 1 << 9);
    run(0x53, 4);
    follow();
    EXPECT_EQ(logical(4), -600);
    EXPECT_EQ(run(0xEB, 4) & 0x40, 0x40U);
    run(0x52, 4);
    EXPECT_EQ(driving(), 0U);
    EXPECT_EQ(run(0xEA, 4), 16U);
    run(0xC9, 4, 0);
    move(4, 100);
    follow();
    EXPECT_EQ(logical(4), -500);
}

TEST_F(Mcx514Test, InPositionComesAfterTheDrive) {
    run(0xE2, 1, 3 << 6);
    now_ = 1;
    EXPECT_EQ(run(0xEB, 1) & 0x20, 0x20U);
    move(1, 4000);
    now_ = 6.001;
    EXPECT_EQ(speed(1), 0U);
    EXPECT_EQ(driving(), 1U);
    EXPECT_EQ(run(0xEB, 1) & 0x20, 0U);
    now_ = 6.006;
    EXPECT_EQ(driving(), 0U);
}

TEST_F(Mcx514Test, EncoderFollowsAndCountersWrap) {
    run(0x0A, 1, 50);
    move(1, 100);
    follow();
    EXPECT_EQ(real(1), 150);
    run(0xDB, 1, 1);
    EXPECT_EQ(real(1), 150);
    move(1, 100);
    follow();
    EXPECT_EQ(real(1), 50);
    run(0x0E, 1, 149);
    EXPECT_EQ(logical(1), 50);
}

TEST_F(Mcx514Test, SearchEndsAtTheSwitch) {
    tracks_[0].homeAt = -3000;
    run(0x14, 1, 100);
    run(0x06, 1, -250);
    run(0x23, 1, 1 | 2 | 4 | 16 | 32 | 1 << 15);
    run(0x24, 1, 2);
    run(0x0A, 1, 7);
    run(0x5A, 1);
    std::set<int> seen;
    follow(0.05, [&] { seen.insert(static_cast<int>(std::lround(speed(1) / 100.0))); });
    EXPECT_TRUE(seen.contains(10) && seen.contains(1));
    EXPECT_EQ(logical(1), 0);
    EXPECT_EQ(real(1), 7 - 3250);
    EXPECT_EQ(run(0xEB, 1) & 2, 0U);  // closed, which is low

    tracks_[1].forwardAt = 2000;
    run(0x14, 2, 100);
    run(0x23, 2, 1 | 8 | 16 | 64);
    run(0xE2, 2, 7 << 10);
    run(0x5A, 2);
    follow();
    EXPECT_EQ(logical(2), 2000);
    EXPECT_EQ(run(0xEA, 2), 0U);

    run(0x14, 4, 100);
    run(0x23, 4, 4 | 8);
    move(4, 10);
    follow();
    run(0x5A, 4);
    follow();
    EXPECT_EQ(logical(4), 0);

    tracks_[3].reverseAt = -50;  // in front of the switch
    run(0xE2, 8, 7 << 10);
    run(0x23, 8, 1 | 2 | 4 | 16 | 32);
    run(0x24, 8, 6);
    run(0x09, 8, 1000);
    run(0x5A, 8);
    follow();
    EXPECT_EQ(logical(8), 950);
    EXPECT_EQ(run(0xEA, 8), 8U);
}

TEST_F(Mcx514Test, LinesAreStraight) {
    for (const int count : {1, 2, 3, 4}) {
        now_ += 1;
        run(0xFE, 0);
        setUp(2, 1000, 1000, 30);
        const int ends[] = {0, 3000, -1234, 517};
        const int masks[] = {2, 2 | 4, 2 | 4 | 8, 1 | 2 | 4 | 8};
        const int mask = masks[count - 1];
        if ((mask & 1) != 0) setUp(1, 1000, 1000, 30);
        run(0x2A, 0, mask);
        run(0x6D, 0);
        for (int axis = 0; axis < 4; ++axis) run(0x06, 1 << axis, ends[axis]);
        run(0x5F + count, 0);
        int looks = 0;
        follow(0.0501, [&] {
            EXPECT_EQ(driving() == 0 ? mask : driving(), static_cast<std::uint32_t>(mask));
            const double done = logical(2) / 3000.0;
            for (int axis = 0; axis < 4; ++axis) {
                EXPECT_NEAR(logical(1 << axis), (mask >> axis & 1) * done * ends[axis], 0.501);
            }
            ++looks;
        });
        EXPECT_GT(looks, 50);
        EXPECT_EQ(logical(2), 3000);
        EXPECT_EQ(logical(8), count >= 3 ? 517 : 0);
    }
    EXPECT_TRUE((run(0x2A, 0, 0), refuses(0x61, 0)));
}

TEST_F(Mcx514Test, ArcsAreRound) {
    struct Case {
        int mode, code, cx, cy, ex, ey;
        double turns;
    };
    const Case cases[] = {{0x43, 0x64, 1000, 0, 1000, 1000, 0.25},
                          {0x43, 0x65, 1000, 0, 1000, 1000, 0.75},
                          {0x43, 0x64, 300, -400, 0, 0, 1},
                          {0x53, 0x64, 1000, 0, 1000, 1000, 0.75},
                          {0x43, 0x65, -600, 800, -1600, 800, 0}};
    for (const Case& arc : cases) {
        run(0x09, 15, 0);
        run(0x2A, 0, arc.mode);
        run(0x08, 1, arc.cx), run(0x08, 2, arc.cy), run(0x06, 1, arc.ex), run(0x06, 2, arc.ey);
        setUp(1, 1000, 100000, 1000);
        const double begin = now_, radius = std::hypot(arc.cx, arc.cy);
        run(arc.code, 0);
        follow(0.0101, [&] { EXPECT_NEAR(std::hypot(logical(1) - arc.cx, logical(2) - arc.cy), radius, 1); });
        EXPECT_EQ(logical(1), arc.ex);
        EXPECT_EQ(logical(2), arc.ey);
        if (arc.turns > 0) {
            EXPECT_NEAR(now_ - begin, arc.turns * radius * 2 * M_PI / 1000, 0.02);
        }
    }
    run(0x08, 3, 0);
    EXPECT_TRUE(refuses(0x64, 0));
}

TEST_F(Mcx514Test, ArcsEndWhereTheyAreToldWhateverTheirLength) {
    setUp(1, 20000, 77777, 1000);
    run(0x2A, 0, 0x43);
    for (int radius = 100; radius < 4100; radius += 37) {
        run(0x09, 15, 0);
        run(0x08, 1, radius), run(0x08, 2, 0), run(0x06, 1, radius), run(0x06, 2, radius);
        run(0x64, 0);
        follow(0.0137, [] {});
        EXPECT_EQ(logical(1), radius);
        EXPECT_EQ(logical(2), radius);
    }
}

TEST_F(Mcx514Test, HelixClimbsEvenly) {
    run(0x2A, 0, 0x147);
    run(0x1A, 0, 2);
    run(0x08, 1, 500), run(0x08, 2, 0), run(0x06, 1, 500), run(0x06, 2, 500), run(0x06, 4, 900);
    setUp(1, 5000, 100000, 5000);
    run(0x6B, 0);
    EXPECT_NE(driving(), 0U);
    now_ += 0.1;
    EXPECT_EQ(driving(), 0U);
    const double length = 500 * 2.25 * 2 * M_PI;
    EXPECT_NEAR(run(0x3B, 0), length, 1);
    run(0x1B, 0, std::lround(length));
    run(0x69, 0);
    const double begin = now_;
    std::set<std::uint32_t> turns;
    follow(0.0101, [&] {
        EXPECT_NEAR(std::hypot(logical(1) - 500, logical(2)), 500, 1);
        EXPECT_NEAR(logical(4), std::min(1.0, (now_ - begin) * 5000 / length) * 900, 1.5);
        turns.insert(run(0x3A, 1));
    });
    EXPECT_EQ(turns, (std::set<std::uint32_t>{0, 1, 2}));
    EXPECT_EQ(logical(1), 500);
    EXPECT_EQ(logical(2), 500);
    EXPECT_EQ(logical(4), 900);
}

TEST_F(Mcx514Test, LimitsHoldOnAnArc) {
    tracks_[1].forwardAt = 700;
    run(0xE2, 2, 7 << 10);
    run(0x2A, 0, 0x43);
    run(0x08, 1, 1000), run(0x08, 2, 0), run(0x06, 3, 0);
    setUp(1, 1000, 100000, 1000);
    run(0x64, 0);
    follow();
    EXPECT_EQ(logical(2), 700);
    EXPECT_NEAR(logical(1), 1000 - std::sqrt(1e6 - 49e4), 1.5);
    EXPECT_EQ(run(0xEA, 2), 4U);
}

TEST_F(Mcx514Test, InterpolationsFollowEachOtherWithoutAStop) {
    run(0x2A, 0, 3);
    run(0x6E, 0);
    setUp(1, 1000, 1000, 0);
    const auto line = [&](int x, int y) {
        run(0x06, 1, x), run(0x06, 2, y);
        return !refuses(0x61, 0);
    };
    EXPECT_TRUE(line(1000, 500));
    EXPECT_NE(run(0xE8, 0) & 0x100, 0U);
    run(0x6D, 0);
    EXPECT_TRUE(line(1000, -500));
    EXPECT_EQ(run(0xE8, 0) >> 12, 1U);
    follow(0.01, [&] {
        if (logical(1) > 600 && logical(1) < 1400) {
            EXPECT_EQ(speed(1), 1000U);
        }
    });
    EXPECT_EQ(logical(1), 2000);
    EXPECT_EQ(logical(2), 0);
    for (int i = 0; i < 9; ++i) EXPECT_TRUE(line(10, 10));
    EXPECT_FALSE(line(10, 10));
    run(0x57, 1);
    EXPECT_EQ(driving(), 0U);
}

TEST_F(Mcx514Test, CaptureLatchesAtTheIndex) {
    run(0x29, 1, 90);
    run(0x88, 1);
    run(0x09, 1, 100000);
    move(1, 9000);
    now_ = 3.9;
    EXPECT_EQ(run(0x37, 1), 0U);
    follow();
    EXPECT_EQ(run(0x37, 1), 104000U);  // the first one only
    run(0x29, 1, 107);
    run(0x88, 1);
    move(1, -9000);
    follow();
    EXPECT_EQ(run(0x37, 1), 8000U);  // down from the index it falls
}

TEST_F(Mcx514Test, BreakPointStartsPulses) {
    run(0x17, 1, 5 << 16 | 100);
    run(0x20, 1, 8);
    run(0x10, 1, 1500);
    run(0x26, 1, 369);
    move(1, 3000);
    now_ = 1.9;
    run(0x81, 1);
    EXPECT_EQ(run(0x48, 1) >> 16, 0U);
    follow();
    EXPECT_EQ(run(0x48, 1) >> 16, 16U);
    move(1, -3000);  // it was for once
    follow();
    EXPECT_EQ(run(0x48, 1) >> 16, 16U);
    run(0x18, 1, 4);
    run(0x81, 1);
    move(1, 3000);
    follow();
    EXPECT_EQ(run(0x48, 1) >> 16, 4U);
}

TEST_F(Mcx514Test, ComparisonsTellEachCondition) {
    run(0xE1, 1, 15);
    run(0x20, 1, 0xC | 0x8 << 4 | 0x0 << 8 | 0x5 << 12);  // less, equal, not less, the encoder greater
    run(0xDB, 1, 1);
    run(0x10, 1, 200), run(0x11, 1, 500), run(0x12, 1, -10), run(0x13, 1, -100);
    move(1, 500);
    follow();
    EXPECT_EQ(run(0xE9, 1), 2U);  // at the very end of the way
    move(1, -500);
    now_ += 1.4;
    EXPECT_EQ(run(0xE9, 1), 1U | 8U);
    follow();
    move(1, -11);
    follow();
    EXPECT_EQ(run(0xE9, 1), 0U);
    move(1, 11);
    follow();
    EXPECT_EQ(run(0xE9, 1), 4U);
}

TEST_F(Mcx514Test, ReversalStartsAtTheEndOfTheDrive) {
    run(0x52, 1);
    now_ = 5;
    run(0x27, 1, 230);
    run(0x82, 1);
    run(0x56, 1);
    run(0x05, 1, 500);
    now_ = 5.5;
    EXPECT_EQ(speed(1), 500U);
    now_ = 8;
    EXPECT_EQ(speed(1), 500U);
    EXPECT_EQ(logical(1), 5000 - 125 - 750);
}

TEST_F(Mcx514Test, ActionsWithoutEndHoldNobodyUp) {
    run(0x26, 1, 1 << 15 | 0x17 << 4 | 7);  // pulses start when pulses start
    run(0x27, 1, 1 << 15 | 0x0A << 4 | 6);  // no way is gone when no way has been gone
    run(0x83, 1);
    run(0x75, 1);
    move(1, 0);
    now_ = 1e6;
    EXPECT_EQ(driving(), 1U);
    run(0x93, 1);
    run(0x57, 1);
    EXPECT_EQ(driving(), 0U);
}

TEST_F(Mcx514Test, TimerRunsOnceOrAgain) {
    run(0x16, 1, 1500000);
    run(0xE1, 1, 1 << 9);
    run(0x73, 1);
    now_ = 1;
    EXPECT_NEAR(run(0x38, 1), 1000000, 1);
    EXPECT_EQ(run(0xE9, 1), 0U);
    now_ = 2;
    EXPECT_EQ(run(0x38, 1), 0U);
    EXPECT_EQ(run(0xE9, 1), 0x200U);
    EXPECT_EQ(run(0xE9, 1), 0U);
    run(0xDE, 1, 1);
    run(0x73, 1);
    now_ = 1000002;
    EXPECT_NEAR(run(0x38, 1), 1000000, 10);
    run(0x74, 1);
    EXPECT_EQ(run(0x38, 1), 0U);
}

}  // namespace
}  // namespace zvr::sim
