// The board with the inertial unit: what its sensors tell belongs together.
#include "physics/imu_motion.h"

#include <gtest/gtest.h>

#include <cmath>

namespace zvr::sim {
namespace {

void expectNear(const Vector& one, const Vector& other, double tolerance) {
    for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(one[i], other[i], tolerance);
}

TEST(ImuMotion, ItTurnsAsFastAsItSays) {
    constexpr double moment = 1e-4;
    for (double seconds = 0; seconds < 40; seconds += 0.37) {
        // The small turn from one moment to the next, seen from the board.
        const Quaternion turn = imuMotionAt(seconds - moment, 9.81).orientation().inverse() *
                                imuMotionAt(seconds + moment, 9.81).orientation();
        expectNear({turn.x / moment, turn.y / moment, turn.z / moment}, imuMotionAt(seconds, 9.81).angularVelocity,
                   1e-6);
    }
}

TEST(ImuMotion, GravityAndMagneticFieldStayWhereTheyAre) {
    for (double seconds = 0; seconds < 40; seconds += 0.37) {
        const ImuMotion motion = imuMotionAt(seconds, 10);
        expectNear(motion.orientation().turn(motion.acceleration), {0, 0, 10}, 1e-9);
        expectNear(motion.orientation().turn(motion.magneticField), imuMotionAt(0, 10).magneticField, 1e-9);
    }
    EXPECT_NEAR(imuMotionAt(2, 10).angles[0], 20 * 3.14159265358979 / 180, 1e-9);
}

}  // namespace
}  // namespace zvr::sim
