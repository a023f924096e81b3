// How the board with the inertial unit sways, and what its sensors measure while it does.
#pragma once

#include <array>

namespace zvr::sim {

using Vector = std::array<double, 3>;

/// The rotation from the axes of the board to those of the world: x to the north, y to the west, z up.
struct Quaternion {
    double w = 1, x = 0, y = 0, z = 0;

    static Quaternion ofAngles(const Vector& rollPitchYaw);
    Quaternion operator*(const Quaternion& other) const;
    Quaternion inverse() const { return {w, -x, -y, -z}; }
    Vector turn(const Vector& vector) const;
};

struct ImuMotion {
    Vector angles;           ///< roll, pitch, yaw in radians
    Vector angularVelocity;  ///< in radians per second, about the axes of the board
    Vector acceleration;     ///< that a sensor at rest shows: gravity, upwards
    Vector magneticField;    ///< in microtesla

    Quaternion orientation() const { return Quaternion::ofAngles(angles); }
};

/// After so many seconds.
ImuMotion imuMotionAt(double seconds, double gravity);

}  // namespace zvr::sim
