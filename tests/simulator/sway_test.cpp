// The board with the inertial unit: what its sensors tell belongs together.
#include "physics/sway.h"

#include <gtest/gtest.h>

#include <cmath>

namespace zvr::sim {
namespace {

void expectNear(const Vector& one, const Vector& other, double tolerance) {
    for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(one[i], other[i], tolerance);
}

TEST(Sway, ItTurnsAsFastAsItSays) {
    constexpr double moment = 1e-4;
    for (double seconds = 0; seconds < 40; seconds += 0.37) {
        // The small turn from one moment to the next, seen from the board.
        const Quaternion turn =
            swayAt(seconds - moment, 9.81).orientation().inverse() * swayAt(seconds + moment, 9.81).orientation();
        expectNear({turn.x / moment, turn.y / moment, turn.z / moment}, swayAt(seconds, 9.81).angularVelocity, 1e-6);
    }
}

TEST(Sway, GravityAndMagneticFieldStayWhereTheyAre) {
    for (double seconds = 0; seconds < 40; seconds += 0.37) {
        const Sway sway = swayAt(seconds, 10);
        expectNear(sway.orientation().turn(sway.acceleration), {0, 0, 10}, 1e-9);
        expectNear(sway.orientation().turn(sway.magneticField), swayAt(0, 10).magneticField, 1e-9);
    }
    EXPECT_NEAR(swayAt(2, 10).angles[0], 20 * 3.14159265358979 / 180, 1e-9);
}

}  // namespace
}  // namespace zvr::sim
