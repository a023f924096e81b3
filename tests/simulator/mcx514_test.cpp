// What the registers of the simulated MCX514 show while axes move, and what it does by itself.
#include "mcx514_fixture.h"

namespace zvr::sim {

using namespace mcx514;

namespace {

TEST_F(Mcx514Test, AnswersItsCodesAndNoOthers) {
    int known = 0;
    for (int code = 0; code < 256; ++code) {
        if (code == MOTION_50_DRVRL || (code >= MOTION_60_LHK1 && code <= MOTION_6C_HLPCCW))
            continue;  // these need an aim
        known += chip_.run(static_cast<std::uint8_t>(code), 1, 0, now_).has_value() ? 1 : 0;
        run(MOTION_57_DRVFBRK, allAxes);
    }
    run(MOTION_2A_IPM, noAxis, axis0 | axis1);
    for (int code = MOTION_50_DRVRL; code <= MOTION_6C_HLPCCW;
         code = code == MOTION_50_DRVRL ? MOTION_60_LHK1 : code + 1) {
        run(MOTION_08_CP, axis0, 10);
        known += chip_.run(static_cast<std::uint8_t>(code), 1, 0, now_).has_value() ? 1 : 0;
        run(MOTION_57_DRVFBRK, allAxes);
    }
    EXPECT_EQ(known, 199);
    EXPECT_TRUE(refuses(MOTION_05_DV, noAxis) && refuses(MOTION_57_DRVFBRK, 128) && refuses(MOTION_30_LP, noAxis));
}

TEST_F(Mcx514Test, RegistersAreReadBack) {
    run(MOTION_E2_WR2, axis0 | axis1, 0x1234);
    EXPECT_EQ(run(MOTION_3E_WR2, axis0), 0x1234U);
    EXPECT_EQ(run(MOTION_3E_WR2, axis1), 0x1234U);
    run(MOTION_E3_WR3, axis2, 0);
    for (int bit = 0; bit < 15; ++bit) {
        run(MOTION_D0_MANLD + bit, axis2, 1);
        EXPECT_EQ(run(MOTION_3F_WR3, axis2), (1U << (bit + 1)) - 1);
    }
    run(MOTION_C0_SP0L, axis0, 0);
    EXPECT_EQ(run(MOTION_3E_WR2, axis0), 0x1234U);
    run(MOTION_C2_SP1L, axis0, 0), run(MOTION_C4_SP2L, axis0, 0), run(MOTION_CF_SLMM, axis0, 1);
    EXPECT_EQ(run(MOTION_3E_WR2, axis0), 0x9220U | 0x0000U);
    run(MOTION_06_TP, axis0, -5);
    EXPECT_EQ(run(MOTION_46_TP, axis0), 0xFFFFFFFBU);
    run(MOTION_12_MR2, axis3, -7), run(MOTION_20_MRM, axis3, 77), run(MOTION_22_P2M, axis3, 88),
        run(MOTION_19_TX, noAxis, 99), run(MOTION_1B_HLV, noAxis, 55);
    EXPECT_EQ(run(MOTION_36_MR2, axis3), 0xFFFFFFF9U);
    EXPECT_EQ(run(MOTION_40_MRM, axis3), 77U);
    EXPECT_EQ(run(MOTION_42_P2M, axis3), 88U);
    EXPECT_EQ(run(MOTION_39_TX, axis3), 99U);
    EXPECT_EQ(run(MOTION_3B_HLV, noAxis), 55U);
    run(MOTION_1C_GPIO, axis1, 0x0301);
    run(MOTION_1C_GPIO, axis1, 0x0102);
    EXPECT_EQ(run(MOTION_48_UI, axis1) & 0xFF, 0U);
    run(MOTION_1C_GPIO, axis1, 0x0203);
    EXPECT_EQ(run(MOTION_EC_RR4, noAxis), 0x0200U);
    run(MOTION_FE_HDRST, noAxis);
    EXPECT_EQ(run(MOTION_3F_WR3, axis2), 0U);
}

TEST_F(Mcx514Test, MoveIsATrapezoid) {
    move(axis0, -3000);
    EXPECT_EQ(driving(), axis0);
    now_ = 0.5;
    EXPECT_EQ(logical(axis0), -125);
    EXPECT_EQ(speed(axis0), 500U);
    EXPECT_EQ(run(MOTION_33_CA, axis0), 1000U);
    EXPECT_EQ(run(MOTION_EB_RR3, axis0, 1) & 7U, speedsUp);
    now_ = 2;
    EXPECT_EQ(logical(axis0), -1500);
    EXPECT_EQ(speed(axis0), 1000U);
    EXPECT_EQ(run(MOTION_EB_RR3, axis0, 1) & 7U, isSteady);
    now_ = 3.5;
    EXPECT_EQ(speed(axis0), 500U);
    EXPECT_EQ(run(MOTION_EB_RR3, axis0, 1) & 7U, slowsDown);
    now_ = 4.001;
    EXPECT_EQ(logical(axis0), -3000);
    EXPECT_EQ(driving(), 0U);
    EXPECT_EQ(speed(axis0), 0U);
    run(MOTION_54_DRVAB, axis0);
    now_ = 10;
    EXPECT_EQ(logical(axis0), -3000);
    run(MOTION_51_DRVNR, axis0);
    now_ = 20;
    EXPECT_EQ(logical(axis0), 0);
}

TEST_F(Mcx514Test, JerkAndAsymmetryShapeTheMove) {
    run(MOTION_E3_WR3, axis0, bitOf(MOTION_D2_SACC));
    run(MOTION_00_JK, axis0, 1000);
    move(axis0, 2000);
    now_ = 0.5;
    EXPECT_EQ(speed(axis0), 125U);
    EXPECT_EQ(run(MOTION_33_CA, axis0), 500U);
    follow();
    EXPECT_NEAR(now_, 4, 0.02);
    EXPECT_EQ(logical(axis0), 2000);

    run(MOTION_E3_WR3, axis1, bitOf(MOTION_D1_DSNDE));
    run(MOTION_03_DC, axis1, 250);
    now_ = 100;
    move(axis1, 5000);
    follow();
    EXPECT_NEAR(now_, 100 + 1 + 4 + 2.5, 0.02);
}

TEST_F(Mcx514Test, ContinuousDriveStopsAsItIsTold) {
    run(MOTION_53_DRVVM, axis0);
    run(MOTION_52_DRVVP, axis1);
    now_ = 10;
    EXPECT_EQ(logical(axis0), -9500);
    EXPECT_TRUE(refuses(MOTION_50_DRVRL, axis0));
    run(MOTION_57_DRVFBRK, axis0);
    run(MOTION_56_DRVSBRK, axis1);
    EXPECT_EQ(driving(), axis1);
    now_ = 20;
    EXPECT_EQ(logical(axis0), -9500);
    EXPECT_EQ(logical(axis1), 10000);
}

TEST_F(Mcx514Test, OverridesCountOnTheWay) {
    move(axis0, 10000);
    now_ = 2;
    run(MOTION_05_DV, axis0, 2000);
    now_ = 3;
    EXPECT_EQ(speed(axis0), 2000U);
    run(MOTION_05_DV, axis0, 500);
    now_ = 4.5;
    EXPECT_EQ(speed(axis0), 500U);
    run(MOTION_15_IV, axis0, 100);
    run(MOTION_70_VINC, axis0);
    now_ = 5;
    EXPECT_EQ(speed(axis0), 600U);
    run(MOTION_71_VDEC, axis0);
    run(MOTION_06_TP, axis0, 6000);
    follow();
    EXPECT_EQ(logical(axis0), 6000);
    run(MOTION_05_DV, axis0, 1000);
    run(MOTION_06_TP, axis0, 0);
    run(MOTION_54_DRVAB, axis0);
    now_ += 2;
    run(MOTION_06_TP, axis0, 5800);  // it is past that
    const int there = logical(axis0);
    EXPECT_LT(there, 5800);
    follow();
    EXPECT_EQ(logical(axis0), 5800);
}

TEST_F(Mcx514Test, HeldAxesStartInTheSameInstant) {
    run(MOTION_77_DHOLD, axis0 | axis1 | axis2);
    run(MOTION_06_TP, axis0 | axis1 | axis2, 1000);
    run(MOTION_50_DRVRL, axis0);
    now_ = 1;
    run(MOTION_50_DRVRL, axis1);
    now_ = 5;
    EXPECT_EQ(driving(), 0U);
    run(MOTION_78_DFREE, axis0 | axis1);
    EXPECT_EQ(driving(), axis0 | axis1);
    follow(0.1, [&] { EXPECT_EQ(logical(axis0), logical(axis1)); });
    EXPECT_EQ(logical(axis0), 1000);
    run(MOTION_50_DRVRL, axis2);
    now_ += 10;
    EXPECT_EQ(logical(axis2), 0);
}

TEST_F(Mcx514Test, LimitsStopADriveIntoThem) {
    tracks_[0].forwardAt = 5000, tracks_[0].reverseAt = -700;
    run(MOTION_E2_WR2, axis0, instantLimits);
    run(MOTION_09_LP, axis0, 100000);
    run(MOTION_52_DRVVP, axis0);
    follow();
    EXPECT_EQ(logical(axis0), 105000);
    EXPECT_EQ(run(MOTION_EA_RR2, axis0), hardPlus);
    EXPECT_EQ(run(MOTION_E8_RR0, noAxis) & failed, failed0);
    EXPECT_EQ(run(MOTION_EB_RR3, axis0) & (forwardLimit | reverseLimit), forwardLimit);
    run(MOTION_CA_HLML, axis0, 0);  // low is active
    EXPECT_EQ(run(MOTION_EB_RR3, axis0) & (forwardLimit | reverseLimit), reverseLimit);
    move(axis0, 10);
    EXPECT_EQ(driving(), 0U);
    move(axis0, -10);
    follow();
    EXPECT_EQ(logical(axis0), 104990);
    run(MOTION_CC_HLMM, axis0, 0);  // to stop there takes its way
    run(MOTION_53_DRVVM, axis0);
    follow();
    EXPECT_EQ(logical(axis0), 100000 - 700 - 500);

    run(MOTION_0B_SP, axis1, 2000), run(MOTION_0C_SM, axis1, -50), run(MOTION_0A_RP, axis1, 500),
        run(MOTION_E3_WR3, axis1, bitOf(MOTION_DB_PIINV));
    run(MOTION_E2_WR2, axis1, bitOf(MOTION_CD_SLME) | bitOf(MOTION_CE_SLMO) | bitOf(MOTION_CF_SLMM));
    run(MOTION_53_DRVVM, axis1);  // the encoder counts up
    follow();
    EXPECT_EQ(real(axis1), 2000);
    EXPECT_EQ(logical(axis1), -1500);
    EXPECT_EQ(run(MOTION_EA_RR2, axis1), softPlus);
}

TEST_F(Mcx514Test, AlarmEndsADriveAndForbidsTheNext) {
    tracks_[2].alarmAt = 600;
    run(MOTION_E2_WR2, axis2, bitOf(MOTION_C8_ALML) | bitOf(MOTION_C9_ALME));
    run(MOTION_53_DRVVM, axis2);
    follow();
    EXPECT_EQ(logical(axis2), -600);
    EXPECT_EQ(run(MOTION_EB_RR3, axis2) & alarmInput, alarmInput);
    run(MOTION_52_DRVVP, axis2);
    EXPECT_EQ(driving(), 0U);
    EXPECT_EQ(run(MOTION_EA_RR2, axis2), alarmed);
    run(MOTION_C9_ALME, axis2, 0);
    move(axis2, 100);
    follow();
    EXPECT_EQ(logical(axis2), -500);
}

TEST_F(Mcx514Test, InPositionComesAfterTheDrive) {
    run(MOTION_E2_WR2, axis0, bitOf(MOTION_C6_INPL) | bitOf(MOTION_C7_INPE));
    now_ = 1;
    EXPECT_EQ(run(MOTION_EB_RR3, axis0) & inPositionInput, inPositionInput);
    move(axis0, 4000);
    now_ = 6.001;
    EXPECT_EQ(speed(axis0), 0U);
    EXPECT_EQ(driving(), axis0);
    EXPECT_EQ(run(MOTION_EB_RR3, axis0) & inPositionInput, 0U);
    now_ = 6.006;
    EXPECT_EQ(driving(), 0U);
}

TEST_F(Mcx514Test, EncoderFollowsAndCountersWrap) {
    run(MOTION_0A_RP, axis0, 50);
    move(axis0, 100);
    follow();
    EXPECT_EQ(real(axis0), 150);
    run(MOTION_DB_PIINV, axis0, 1);
    EXPECT_EQ(real(axis0), 150);
    move(axis0, 100);
    follow();
    EXPECT_EQ(real(axis0), 50);
    run(MOTION_0E_LX, axis0, 149);
    EXPECT_EQ(logical(axis0), 50);
}

TEST_F(Mcx514Test, SearchEndsAtTheSwitch) {
    tracks_[0].homeAt = -3000;
    run(MOTION_14_HV, axis0, 100);
    run(MOTION_06_TP, axis0, -250);
    run(MOTION_23_H1M, axis0, homeBackwards | addsOffset);
    run(MOTION_24_H2M, axis0, clearsLogical);
    run(MOTION_0A_RP, axis0, 7);
    run(MOTION_5A_HMSRC, axis0);
    std::set<int> seen;
    follow(0.05, [&] { seen.insert(static_cast<int>(std::lround(speed(axis0) / 100.0))); });
    EXPECT_TRUE(seen.contains(10) && seen.contains(1));
    EXPECT_EQ(logical(axis0), 0);
    EXPECT_EQ(real(axis0), 7 - 3250);
    EXPECT_EQ(run(MOTION_EB_RR3, axis0) & homeInput, 0U);  // closed, which is low

    tracks_[1].forwardAt = 2000;
    run(MOTION_14_HV, axis1, 100);
    run(MOTION_23_H1M, axis1, searchesSwitch | ofLimit | comesBack | comesBackToLimit);
    run(MOTION_E2_WR2, axis1, instantLimits);
    run(MOTION_5A_HMSRC, axis1);
    follow();
    EXPECT_EQ(logical(axis1), 2000);
    EXPECT_EQ(run(MOTION_EA_RR2, axis1), 0U);

    run(MOTION_14_HV, axis2, 100);
    run(MOTION_23_H1M, axis2, searchesIndex | indexBackwards);
    move(axis2, 10);
    follow();
    run(MOTION_5A_HMSRC, axis2);
    follow();
    EXPECT_EQ(logical(axis2), 0);

    tracks_[3].reverseAt = -50;  // in front of the switch
    run(MOTION_E2_WR2, axis3, instantLimits);
    run(MOTION_23_H1M, axis3, homeBackwards);
    run(MOTION_24_H2M, axis3, clearsLogical | clearsReal);
    run(MOTION_09_LP, axis3, 1000);
    run(MOTION_5A_HMSRC, axis3);
    follow();
    EXPECT_EQ(logical(axis3), 950);
    EXPECT_EQ(run(MOTION_EA_RR2, axis3), hardMinus);
}

TEST_F(Mcx514Test, CaptureLatchesAtTheIndex) {
    run(MOTION_29_S3M, axis0, sync(captureRises, latchLogical));
    run(MOTION_88_SYNC3EN, axis0);
    run(MOTION_09_LP, axis0, 100000);
    move(axis0, 9000);
    now_ = 3.9;
    EXPECT_EQ(run(MOTION_37_MR3, axis0), 0U);
    follow();
    EXPECT_EQ(run(MOTION_37_MR3, axis0), 104000U);  // the first one only
    run(MOTION_29_S3M, axis0, sync(captureFalls, latchReal));
    run(MOTION_88_SYNC3EN, axis0);
    move(axis0, -9000);
    follow();
    EXPECT_EQ(run(MOTION_37_MR3, axis0), 8000U);  // down from the index it falls
}

TEST_F(Mcx514Test, BreakPointStartsPulses) {
    run(MOTION_17_SP1, axis0, 5 << 16 | 100);
    run(MOTION_20_MRM, axis0, comparison(0, equal));
    run(MOTION_10_MR0, axis0, 1500);
    run(MOTION_26_S0M, axis0, sync(comparedTrue, startsSplit));
    move(axis0, 3000);
    now_ = 1.9;
    run(MOTION_81_SYNC0EN, axis0);
    EXPECT_EQ(run(MOTION_48_UI, axis0) >> 16, 0U);
    follow();
    EXPECT_EQ(run(MOTION_48_UI, axis0) >> 16, 16U);
    move(axis0, -3000);  // it was for once
    follow();
    EXPECT_EQ(run(MOTION_48_UI, axis0) >> 16, 16U);
    run(MOTION_18_SP2, axis0, 4);
    run(MOTION_81_SYNC0EN, axis0);
    move(axis0, 3000);
    follow();
    EXPECT_EQ(run(MOTION_48_UI, axis0) >> 16, 4U);
}

TEST_F(Mcx514Test, ComparisonsTellEachCondition) {
    run(MOTION_E1_WR1, axis0, 15 * compared0);
    run(MOTION_20_MRM, axis0,
        comparison(0, less) | comparison(1, equal) | comparison(2, notLess) |
            comparison(3, greater, Compared::realPosition));
    run(MOTION_DB_PIINV, axis0, 1);
    run(MOTION_10_MR0, axis0, 200), run(MOTION_11_MR1, axis0, 500), run(MOTION_12_MR2, axis0, -10),
        run(MOTION_13_MR3, axis0, -100);
    move(axis0, 500);
    follow();
    EXPECT_EQ(run(MOTION_E9_RR1, axis0), compared0 << 1);  // at the very end of the way
    move(axis0, -500);
    now_ += 1.4;
    EXPECT_EQ(run(MOTION_E9_RR1, axis0), compared0 | compared0 << 3);
    follow();
    move(axis0, -11);
    follow();
    EXPECT_EQ(run(MOTION_E9_RR1, axis0), 0U);
    move(axis0, 11);
    follow();
    EXPECT_EQ(run(MOTION_E9_RR1, axis0), compared0 << 2);
}

TEST_F(Mcx514Test, ReversalStartsAtTheEndOfTheDrive) {
    run(MOTION_52_DRVVP, axis0);
    now_ = 5;
    run(MOTION_27_S1M, axis0, sync(driveEnds, startsReverse));
    run(MOTION_82_SYNC1EN, axis0);
    run(MOTION_56_DRVSBRK, axis0);
    run(MOTION_05_DV, axis0, 500);
    now_ = 5.5;
    EXPECT_EQ(speed(axis0), 500U);
    now_ = 8;
    EXPECT_EQ(speed(axis0), 500U);
    EXPECT_EQ(logical(axis0), 5000 - 125 - 750);
}

TEST_F(Mcx514Test, ActionsWithoutEndHoldNobodyUp) {
    run(MOTION_26_S0M, axis0, repeats | sync(splitStarts, startsSplit));  // pulses start when pulses start
    run(MOTION_27_S1M, axis0, repeats | sync(driveEnds, firstDrive));     // no way is gone when no way has been gone
    run(MOTION_83_SYNC01EN, axis0);
    run(MOTION_75_SPSTA, axis0);
    move(axis0, 0);
    now_ = 1e6;
    EXPECT_EQ(driving(), axis0);
    run(MOTION_93_SYNC01DIS, axis0);
    run(MOTION_57_DRVFBRK, axis0);
    EXPECT_EQ(driving(), 0U);
}

TEST_F(Mcx514Test, TimerRunsOnceOrAgain) {
    run(MOTION_16_TM, axis0, 1500000);
    run(MOTION_E1_WR1, axis0, timerEnd);
    run(MOTION_73_TMSTA, axis0);
    now_ = 1;
    EXPECT_NEAR(run(MOTION_38_CT, axis0), 1000000, 1);
    EXPECT_EQ(run(MOTION_E9_RR1, axis0), 0U);
    now_ = 2;
    EXPECT_EQ(run(MOTION_38_CT, axis0), 0U);
    EXPECT_EQ(run(MOTION_E9_RR1, axis0), timerEnd);
    EXPECT_EQ(run(MOTION_E9_RR1, axis0), 0U);
    run(MOTION_DE_TMMD, axis0, 1);
    run(MOTION_73_TMSTA, axis0);
    now_ = 1000002;
    EXPECT_NEAR(run(MOTION_38_CT, axis0), 1000000, 10);
    run(MOTION_74_TMSTP, axis0);
    EXPECT_EQ(run(MOTION_38_CT, axis0), 0U);
}

}  // namespace
}  // namespace zvr::sim
