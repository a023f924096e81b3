// Profiles of the simulator: limits of speed, rate and jerk are kept, and every move ends where it should.
#include "physics/profile.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "physics/track.h"

namespace zvr::sim {
namespace {

// Looks at a profile in small steps: it never jumps and never exceeds its limits.
void expectSmooth(const Profile& profile, const Ramp& ramp, double initial) {
    const double step = profile.duration() / 5000;
    Movement last = profile.at(0);
    EXPECT_LE(std::abs(last.speed), std::max(initial, ramp.initial) + 1e-6);
    const double rate = std::max(ramp.acceleration, ramp.deceleration);
    const double top = std::max(ramp.speed, initial);
    for (double time = step; time < profile.duration() - step / 2; time += step) {
        const Movement now = profile.at(time);
        ASSERT_LE(std::abs(now.speed), top * (1 + 1e-9) + 1e-9);
        ASSERT_LE(std::abs(now.acceleration), rate * (1 + 1e-9));
        const double mean = (now.speed + last.speed) / 2;
        const double turns = now.speed * last.speed <= 0 ? 2 * ramp.initial : 0;
        ASSERT_LE(std::abs(now.speed - last.speed), rate * step * (1 + 1e-6) + turns + 1e-6) << time;
        ASSERT_NEAR(now.position - last.position, mean * step, (rate * step + turns) * step + 1e-6) << time;
        last = now;
    }
    EXPECT_NEAR(profile.at(profile.duration() * (1 - 1e-12)).position, profile.end().position, 0.01);
}

TEST(Profile, TrapezoidHasTheTimesOfTheTextbook) {
    Profile profile;
    profile.moveTo(10000, {0, 1000, 1000, 500});
    EXPECT_NEAR(profile.duration(), 1 + 2 + (10000 - 500 - 1000) / 1000.0, 1e-9);
    EXPECT_NEAR(profile.at(0.5).position, 125, 1e-9);
    EXPECT_NEAR(profile.at(0.5).speed, 500, 1e-9);
    EXPECT_NEAR(profile.at(profile.duration() - 1).speed, 500, 1e-6);
    EXPECT_NEAR(*profile.timeOf(125), 0.5, 1e-9);
    EXPECT_FALSE(profile.timeOf(-1));
    EXPECT_FALSE(profile.timeOf(500, Crossing::down));
}

TEST(Profile, SCurveReachesItsRateAndKeepsItsJerk) {
    Profile profile;
    profile.moveTo(-1000, {0, 100, 100, 100, 200, 200});
    EXPECT_NEAR(profile.duration(), 10 + 1.5, 1e-9);  // v / a + a / j to come up, and the same to come down
    EXPECT_NEAR(profile.at(0.25).acceleration, -50, 1e-9);
    EXPECT_NEAR(profile.at(0.5).acceleration, -100, 1e-9);
    EXPECT_NEAR(profile.at(1.5).speed, -100, 1e-9);
}

TEST(Profile, AnyMoveIsSmoothAndEndsAtItsTarget) {
    std::mt19937 random(5);
    const auto between = [&](double least, double most) {
        return std::uniform_real_distribution<double>(least, most)(random);
    };
    for (int i = 0; i < 300; ++i) {
        Ramp ramp{between(0, 200), between(100, 2000), between(100, 5000), between(100, 5000)};
        if (i % 2 == 0) {
            ramp.jerk = between(100, 50000);
            ramp.decelerationJerk = between(100, 50000);
        }
        const double initial = i % 3 == 0 ? between(-3000, 3000) : 0;
        const double target = std::round(between(-5000, 5000));
        Profile profile(0, initial);
        profile.moveTo(target, ramp);
        EXPECT_EQ(profile.end().position, target);
        expectSmooth(profile, ramp, std::abs(initial));
        if (HasFailure()) FAIL() << "in round " << i;
    }
}

TEST(Profile, RunsUntilItIsCutAndStopped) {
    const Ramp ramp{10, 100, 100, 200};
    Profile profile;
    profile.run(-1, ramp);
    EXPECT_EQ(profile.duration(), infinity);
    EXPECT_NEAR(profile.at(1000.9).position - profile.at(1000).position, -90, 1e-6);
    profile.cut(*profile.timeOf(-500));
    profile.stop(ramp);
    EXPECT_NEAR(profile.end().position, -500 - (100.0 * 100 - 10 * 10) / 400, 1e-6);
    EXPECT_EQ(profile.end().speed, 0);
}

TEST(Track, SearchMeetsTheEdgeInItsLastDirection) {
    const Ramp ramp{0, 1000, 1000, 1000};
    for (const double from : {500.0, 0.0, -50.0, -130.0}) {
        Profile profile(from);
        seek(profile, {-1000, -20}, -1, -1, ramp, 50, 0);
        EXPECT_EQ(profile.end().position, -20) << from;
        EXPECT_LT(profile.at(profile.duration() - 0.001).speed, 0);
        EXPECT_GE(profile.at(profile.duration() - 0.001).speed, -50);
    }
    Profile lost(-2000);
    seek(lost, {-1000, -20}, -1, -1, ramp, 50, 0);
    EXPECT_EQ(lost.duration(), infinity);
}

TEST(Track, OptionsSetWhatTheyName) {
    Tracks tracks;
    tracks.set("*:-500");
    tracks.set("2:100:-3000:4000:200:5000");
    EXPECT_EQ(tracks[0].homeAt, -500);
    EXPECT_EQ(tracks[0].forwardAt, 1e6);
    EXPECT_EQ(tracks[2].home().to, 100);
    EXPECT_EQ(tracks[2].alarmAt, 5000);
    EXPECT_EQ(tracks[2].indexBehind(200, 1), 400);
    EXPECT_EQ(tracks[2].indexBehind(200, -1), 0);
    EXPECT_EQ(tracks[2].indexBehind(-199, -1), -200);
    for (const char* text : {"", "4:0", "0", "0:x", "0:0:5:4", "0:0:-1:1:0", "0:0:0:1:1:1:1"}) {
        EXPECT_THROW(tracks.set(text), std::invalid_argument) << text;
    }
}

}  // namespace
}  // namespace zvr::sim
