// The moves of the flight controller: a target and a speed. It checks them itself; this side does not.
#include "drone/drone.h"

namespace zvr::python {

namespace {

// Degrees for the caller, radians on the wire.
constexpr Encoding radians{"f32 in radians", [](Payload& data, py::handle degrees, int) {
                               data.add(f32(py::float_(radiansOf(numberOf<double>(degrees)))));
                           }};

Request oneAxis(const char* name, Command command, const char* summary) {
    const Parameter position{"position", "float", "in metres"}, velocity{"velocity", "float", "in metres per second"};
    return {.name = name, .sends = command, .fields = {constant(0), position | f32, velocity | f32}, .doc = summary};
}

Request angle(const char* name, Command command, const char* summary) {
    const Parameter position{"position", "float", "in degrees"}, velocity{"velocity", "float", "in degrees per second"};
    return {.name = name,
            .sends = command,
            .fields = {constant(0), position | radians, velocity | radians},
            .doc = summary};
}

Request twoAxes(const char* name, Command command, const char* summary) {
    const Parameter x{"position_x", "float", "in metres"}, y{"position_y", "float", "in metres"},
        velocity{"velocity_xy", "float", "in metres per second"};
    return {.name = name, .sends = command, .fields = {constant(0), x | f32, y | f32, velocity | f32}, .doc = summary};
}

Reply trajectory() {
    return {[](py::handle, const Bytes& data) -> Object { return sixAxes(data, 1); },
            {"list[float]", "roll, pitch and yaw in degrees, x, y and z in metres", "the device"}};
}

}  // namespace

void defineDroneMoves(ClassMaker& drone) {
    defineOperations(
        drone, {oneAxis("Drone_moveVehicleRelX", DRONE_MOVE_RELATIVE_X_VEHICLE, "Moves forward by a distance."),
                oneAxis("Drone_moveVehicleRelY", DRONE_MOVE_RELATIVE_Y_VEHICLE, "Moves to its right by a distance."),
                twoAxes("Drone_moveVehicleRelXY", DRONE_MOVE_RELATIVE_XY_VEHICLE,
                        "Moves forward and to its right by distances."),
                angle("Drone_moveVehicleAbsRoll", DRONE_MOVE_ABSOLUTE_ROLL_VEHICLE, "Rolls to an angle."),
                angle("Drone_moveVehicleAbsPitch", DRONE_MOVE_ABSOLUTE_PITCH_VEHICLE, "Pitches to an angle."),
                angle("Drone_moveNedRelYaw", DRONE_MOVE_RELATIVE_YAW_NED, "Turns by an angle."),
                oneAxis("Drone_moveNedRelX", DRONE_MOVE_RELATIVE_X_NED, "Moves north by a distance."),
                oneAxis("Drone_moveNedRelY", DRONE_MOVE_RELATIVE_Y_NED, "Moves east by a distance."),
                oneAxis("Drone_moveNedRelZ", DRONE_MOVE_RELATIVE_Z_NED, "Moves down by a distance."),
                twoAxes("Drone_moveNedRelXY", DRONE_MOVE_RELATIVE_XY_NED, "Moves north and east by distances."),
                angle("Drone_moveNedAbsYaw", DRONE_MOVE_ABSOLUTE_YAW_NED, "Turns to an angle from north."),
                oneAxis("Drone_moveNedAbsX", DRONE_MOVE_ABSOLUTE_X_NED, "Moves to an x, north being positive."),
                oneAxis("Drone_moveNedAbsY", DRONE_MOVE_ABSOLUTE_Y_NED, "Moves to a y, east being positive."),
                oneAxis("Drone_moveNedAbsZ", DRONE_MOVE_ABSOLUTE_Z_NED, "Moves to a z, down being positive."),
                twoAxes("Drone_moveNedAbsXY", DRONE_MOVE_ABSOLUTE_XY_NED, "Moves to an x and a y."),
                {.name = "Drone_readTrajectory",
                 .sends = DRONE_READ_TRAJECTORY,
                 .fields = {constant(0)},
                 .reply = trajectory(),
                 .doc = "Reads where the trajectory is."},
                {.name = "Drone_readTrajectoryStatus",
                 .sends = DRONE_READ_TRAJECTORY_DONE,
                 .fields = {constant(0)},
                 .reply = bytesFrom(1, "the device's flags"),
                 .doc = "Reads whether the trajectory is done."}});
}

}  // namespace zvr::python
