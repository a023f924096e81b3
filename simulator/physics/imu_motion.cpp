#include "physics/imu_motion.h"

#include <cmath>
#include <numbers>

namespace zvr::sim {

namespace {

constexpr Vector amplitudes = {20, 5, 10};  // degrees
constexpr Vector periods = {8, 5, 30};      // seconds
constexpr Vector earthField = {20, 0, -45};

}  // namespace

Quaternion Quaternion::ofAngles(const Vector& rollPitchYaw) {
    const auto half = [&](std::size_t axis) {
        return std::pair{std::cos(rollPitchYaw[axis] / 2), std::sin(rollPitchYaw[axis] / 2)};
    };
    const auto [rollCos, rollSin] = half(0);
    const auto [pitchCos, pitchSin] = half(1);
    const auto [yawCos, yawSin] = half(2);
    return Quaternion{yawCos, 0, 0, yawSin} * Quaternion{pitchCos, 0, pitchSin, 0} * Quaternion{rollCos, rollSin, 0, 0};
}

Quaternion Quaternion::operator*(const Quaternion& o) const {
    return {w * o.w - x * o.x - y * o.y - z * o.z, w * o.x + x * o.w + y * o.z - z * o.y,
            w * o.y - x * o.z + y * o.w + z * o.x, w * o.z + x * o.y - y * o.x + z * o.w};
}

Vector Quaternion::turn(const Vector& vector) const {
    const Quaternion turned = *this * Quaternion{0, vector[0], vector[1], vector[2]} * inverse();
    return {turned.x, turned.y, turned.z};
}

ImuMotion imuMotionAt(double seconds, double gravity) {
    ImuMotion motion{};
    Vector rates{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const double amplitude = amplitudes[axis] * std::numbers::pi / 180;
        const double speed = 2 * std::numbers::pi / periods[axis];
        motion.angles[axis] = amplitude * std::sin(speed * seconds);
        rates[axis] = amplitude * speed * std::cos(speed * seconds);
    }
    const auto [roll, pitch, yaw] = motion.angles;
    motion.angularVelocity = {rates[0] - rates[2] * std::sin(pitch),
                              rates[1] * std::cos(roll) + rates[2] * std::sin(roll) * std::cos(pitch),
                              -rates[1] * std::sin(roll) + rates[2] * std::cos(roll) * std::cos(pitch)};
    const Quaternion toBoard = motion.orientation().inverse();
    motion.acceleration = toBoard.turn({0, 0, gravity});
    motion.magneticField = toBoard.turn(earthField);
    return motion;
}

}  // namespace zvr::sim
