// Moves of the controller's axes: configured, started, overridden and stopped; and the reference search.
#include "motion/controller.h"

namespace zvr::python {

namespace {

const Parameter& port = controllerPort;
const Parameter& axis = axisParameter;

Task writeTarget(Op op, Object port, Object axis, Object position) {
    setAttribute(recordOf(op, axis), "target_position", position);
    co_return co_await op.request("_Motion_setDrivePositionFinishPoint", port, axis, position);
}

Task writeDriveMode(Op op, Object port, Object axis, Object mode, Object velocity) {
    const Object record = recordOf(op, axis);
    setFields(record, {{"operation_mode", mode}, {"velocity", velocity}});
    const char* start = nullptr;
    if (isZero(mode)) {
        start = "_Motion_absolutePositionDriving";
    } else if (isOne(mode)) {
        start = "_Motion_relativePositionDriving";
    } else {
        start = velocity >= py::int_(0) ? "_Motion_positiveDirContinuousPlusDriving"
                                        : "_Motion_negativeDirContinuousPlusDriving";
    }
    co_return co_await op.request(start, port, axis);
}

Task configureMove(Op op, Object port, Object axis, Object mode, Object target, Object velocity, Object acceleration,
                   Object deceleration) {
    port = enter(op, port, axis);
    op.call("_checkMCX514OperationMode", mode);
    for (const auto& [value, name] : {std::pair{target, "target_posi"}, std::pair{velocity, "velo"},
                                      std::pair{acceleration, "accel"}, std::pair{deceleration, "decel"}})
        checkIsInt(value, name);
    setAttribute(recordOf(op, axis), "operation_mode", mode);
    WorstStatus status;
    status.take(co_await op.request("_Motion_writeTargetPosition", port, axis, target));
    status.take(co_await op.request("_Motion_writeVelocity", port, axis, velocity));
    status.take(co_await op.request("_Motion_writeAcceleration", port, axis, acceleration, deceleration));
    status.take(co_await op.request("_Motion_setInstantLimitStop", port, axis, py::int_(1)));
    co_return status.value();
}

Awaiter startFromRecord(const Op& op, const Object& port, const Object& axis) {
    const Object record = recordOf(op, axis);
    return op.request("_Motion_writeDriveMode", port, axis, attribute(record, "operation_mode"),
                      attribute(record, "velocity"));
}

Task startOne(Op op, Object port, Object axis) {
    port = enter(op, port, axis);
    co_return co_await startFromRecord(op, port, axis);
}

Task startTogether(Op op, Object port, Object axes) {
    port = enter(op, port);
    for (const py::handle each : axes) op.call("_checkMCX514Axis", each);
    Object mask = py::int_(0);
    WorstStatus status;
    for (const py::handle each : axes) {
        const Object axis = borrow(each.ptr());
        const Object record = recordOf(op, axis);
        const auto stored = [&](const char* field) { return attribute(record, field); };
        mask = writeBit(mask, axis, py::int_(1));
        status.take(co_await applyOutput(op, port, axis));
        status.take(co_await op.request("_Motion_writeTargetPosition", port, axis, stored("target_position")));
        status.take(co_await op.request("_Motion_writeVelocity", port, axis, stored("velocity")));
        const Object acceleration = stored("acceleration"), deceleration = stored("deceleration");
        status.take(co_await op.request("_Motion_writeAcceleration", port, axis, acceleration, deceleration));
        status.take(co_await op.request("_Motion_setInstantLimitStop", port, axis, py::int_(1)));
        status.take(co_await op.request("_Motion_holdDrivingStart", port, axis));
        status.take(co_await startFromRecord(op, port, axis));
    }
    status.take(co_await op.request("_Motion_releaseDrivingStart", port, mask));
    co_return status.value();
}

Task stop(Op op, Object port, Object axis, Object mode) {
    port = enter(op, port, axis);
    op.call("_checkMCX514StopMode", mode);
    setAttribute(recordOf(op, axis), "stop_decl", mode);
    co_return co_await op.request(isZero(mode) ? "_Motion_decelerateStop" : "_Motion_instantStop", port, axis);
}

Task overridePosition(Op op, Object port, Object axis, Object position) {
    port = enter(op, port, axis);
    co_return co_await op.request("_Motion_writeTargetPosition", port, axis, position);
}

Task overrideAcceleration(Op op, Object port, Object axis, Object acceleration, Object deceleration) {
    port = enter(op, port, axis);
    checkIsInt(acceleration, "accel");
    checkIsInt(deceleration, "decel");
    const Object record = recordOf(op, axis);
    setFields(record, {{"acceleration", acceleration}, {"deceleration", deceleration}});
    co_return co_await op.request("_Motion_writeAcceleration", port, axis, acceleration, deceleration);
}

// A continuous move that is reversed brakes first, and restarts in the other direction once it stands.
Task overrideVelocity(Op op, Object port, Object axis, Object velocity) {
    port = enter(op, port, axis);
    checkIsInt(velocity, "velo");
    const Object record = recordOf(op, axis);
    const bool continuous = attribute(record, "operation_mode").equal(py::int_(2));
    const Object before = attribute(record, "velocity_move_direction");
    setAttribute(record, "velocity", velocity);
    const bool forward = velocity > py::int_(0);
    const py::int_ direction(forward ? 1 : 0);
    const Object speed = own(PyNumber_Absolute(velocity.ptr()));
    if (!continuous || isZero(before ^ direction)) {
        co_return co_await op.request("_Motion_setDriveSpeed", port, axis, speed);
    }
    setAttribute(record, "velocity_move_direction", direction);
    WorstStatus status;
    status.take(co_await op.request("_Motion_setAccelerationJerk", port, axis, py::int_(0)));
    status.take(co_await op.request("_Motion_setSYNCAction1", port, axis, py::int_(forward ? 214 : 230)));
    status.take(co_await op.request("_Motion_enableActionSYNC1", port, axis));
    status.take(co_await op.request("_Motion_decelerateStop", port, axis));
    status.take(co_await op.request("_Motion_setDriveSpeed", port, axis, speed));
    co_return status.value();
}

Task configureSearch(Op op, Object port, Object axis, Object type, Object direction, Object velocity,
                     Object acceleration, Object percent, Object resets, Object offset) {
    port = enter(op, port, axis);
    op.call("_checkMCX514SearchType", type);
    op.call("_checkMCX514SearchDirection", direction);
    checkIsInt(velocity, "search_velo");
    checkIsInt(acceleration, "search_accle");
    checkIsNumber(percent, "approach_velo_percent");
    op.call("_checkMCX514Enable", resets);
    checkIsInt(offset, "offset_posi");
    const Object record = recordOf(op, axis);
    setFields(record, {{"search_type", type}, {"search_velocity", velocity}, {"search_accerleration", acceleration}});
    const Object target = attribute(record, "target_position");
    WorstStatus status;
    status.take(co_await applyOutput(op, port, axis));
    status.take(co_await op.request("_Motion_writeTargetPosition", port, axis, target));
    status.take(co_await op.request("_Motion_writeVelocity", port, axis, velocity));
    status.take(co_await op.request("_Motion_writeAcceleration", port, axis, acceleration, acceleration));
    status.take(co_await op.request("_Motion_setAutoHome1", port, axis, type, direction, direction, percent, offset));
    status.take(co_await op.request("_Motion_setAutoHome2", port, axis, resets));
    status.take(co_await op.request("_Motion_writeHomeSpeed", port, axis, percent, velocity));
    status.take(co_await op.request("_Motion_writeOffsetPosition", port, axis, offset, direction));
    co_return status.value();
}

Task setSearchMode(Op op, Object port, Object axis, Object type, Object initial, Object final, Object percent,
                   Object offset) {
    checkPortAndAxis(op, port, axis);
    const Object record = recordOf(op, axis);
    setSetting(record, "Offset Position", offset);
    setSetting(record, "Approach Velocity Percent", percent);
    setSetting(record, "Initial Search Direction", initial);
    setSetting(record, "Final Approach Direction", final);
    const int a = isZero(initial) ? 0 : 1, b = isZero(percent) ? 0 : 1, c = isZero(offset) ? 0 : 1;
    std::vector<Bit> bits;
    if (isZero(type)) {
        bits = {{0, 1}, {1, a}, {2, 1}, {4, b}, {5, final}};
    } else if (isOne(type)) {
        bits = {{2, 1}, {3, a}};
    } else {
        bits = {{0, 1}, {1, a}, {3, 1}, {4, b}, {5, a}, {6, 1}};
    }
    bits.emplace_back(15, c);
    WorstStatus status;
    status.take(co_await op.request("_Motion_setAutoHomeSearchMode1", port, axis, withBits(py::int_(0), bits)));
    status.take(co_await op.request("_Motion_setInstantLimitStop", port, axis, py::int_(1)));
    co_return status.value();
}

Task setSearchEnd(Op op, Object port, Object axis, Object resets) {
    setSetting(recordOf(op, axis), "Enable Reset Position", resets);
    const Object word = withBits(py::int_(0), {{1, resets}, {2, resets}});
    co_return co_await op.request("_Motion_setAutoHomeSearchMode2", port, axis, word);
}

Task writeHomeSpeed(Op op, Object port, Object axis, Object percent, Object velocity) {
    setSetting(recordOf(op, axis), "Approach Velocity Percent", percent);
    Object speed = percent / py::float_(100.0) * velocity;
    if (isZero(speed)) speed = py::int_(1);
    co_return co_await op.request("_Motion_setHomeSearchSpeed", port, axis, speed);
}

Task writeOffset(Op op, Object port, Object axis, Object offset, Object direction) {
    const Object record = recordOf(op, axis);
    setSetting(record, "Offset Position", offset);
    setSetting(record, "Initial Search Direction", direction);
    if (isZero(direction)) offset = -offset;
    co_return co_await op.request("_Motion_setDrivePositionFinishPoint", port, axis, offset);
}

Task search(Op op, Object port, Object axis) {
    port = enter(op, port, axis);
    co_return co_await op.request("_Motion_autoHomeSearch", port, axis);
}

}  // namespace

void defineMoves(Feature& controller) {
    const Parameter velocity{"velo", "int", "pulses per second; negative is backwards in a continuous move", "10000"};
    const Parameter acceleration{"accel", "int", "pulses per second squared, 0 to 4294967295", "100000"};
    const Parameter deceleration{"decel", "int", "pulses per second squared, 0 to 4294967295", "100000"};
    const Parameter mode{"mode", "int", "0 to the position, 1 by the distance, 2 continuous"};
    const Parameter offset{"offset_position", "int", "distance from the reference to go at the end, in pulses"};
    const Parameter percent{"approach_velocity_percent", "float", "speed near the reference, in percent"};
    const Parameter initial = integer("initial_search_direction", "0 forward, else reverse");
    controller
        .operation({.name = "_Motion_writeTargetPosition",
                    .parameters = {connector, axis, {"target_position", "int", "position or distance in pulses", "0"}},
                    .doc = "Sets where the next move goes.",
                    .returns = commandStatus,
                    .body = writeTarget})
        .operation({.name = "_Motion_writeDriveMode",
                    .parameters = {connector, axis, integer("operation_mode", mode.doc.c_str()),
                                   integer("velocity", "its sign is the way of a continuous move")},
                    .doc = "Starts a move.",
                    .returns = commandStatus,
                    .body = writeDriveMode})
        .operation({.name = "Motion_cfgAxisMove",
                    .parameters = {port,
                                   axis,
                                   mode,
                                   {"target_posi", "int", "position or distance in pulses", "0"},
                                   velocity,
                                   acceleration,
                                   deceleration},
                    .doc = "Configures a move.",
                    .returns = mergedStatus,
                    .raises = enteringRaises({checkMCX514OperationMode}),
                    .body = configureMove})
        .operation({.name = "Motion_startSingleAxisMove",
                    .parameters = {port, axis},
                    .doc = "Starts the configured move of an axis.",
                    .returns = commandStatus,
                    .raises = enteringRaises(),
                    .body = startOne})
        .operation(
            {.name = "Motion_startMultiAxisMove",
             .parameters = {port, {"axis_list", "list[int]", "axes, 0 to 3"}},
             .doc = "Starts the configured moves of axes together. It fails at the release of the axes, which wait for "
                    "it then, if the object has no `_checkMotionAxis`.",
             .returns = mergedStatus,
             .raises = enteringRaises({checkMotionAxis}),
             .body = startTogether})
        .operation({.name = "Motion_stop",
                    .parameters = {port, axis, integer("mode", "0 with deceleration, 1 at once")},
                    .doc = "Stops an axis.",
                    .returns = commandStatus,
                    .raises = enteringRaises({checkMCX514StopMode}),
                    .body = stop})
        .operation({.name = "Motion_overrideAxisPosi",
                    .parameters = {port, axis, integer("new_position", "position or distance in pulses")},
                    .doc = "Changes where a move goes while it runs.",
                    .returns = commandStatus,
                    .raises = enteringRaises(),
                    .body = overridePosition})
        .operation({.name = "Motion_overrideAxisAccel",
                    .parameters = {port, axis, integer("new_accel", "pulses per second squared"),
                                   integer("new_decel", "pulses per second squared")},
                    .doc = "Changes the acceleration of a move.",
                    .returns = mergedStatus,
                    .raises = enteringRaises(),
                    .body = overrideAcceleration})
        .operation(
            {.name = "Motion_overrideAxisVelocity",
             .parameters = {port, axis, integer("new_velo", "pulses per second; another sign turns a continuous move")},
             .doc = "Changes the speed of a move while it runs.",
             .returns = mergedStatus,
             .raises = enteringRaises(),
             .body = overrideVelocity})
        .operation(
            {.name = "Motion_cfgFindRef",
             .parameters = {port,
                            axis,
                            integer("search_type", "0 home switch, 1 index, 2 limit switch"),
                            integer("search_dir", "0 forward, 1 reverse"),
                            {"search_velo", "int", "pulses per second", "10000"},
                            {"search_accle", "int", "pulses per second squared", "100000"},
                            {"approach_velo_percent", "float", "speed near the reference, in percent of the other",
                             "20"},
                            {"en_reset_posi", "int", "1 sets the counters to 0 at the end, 0 does not", "0"},
                            {"offset_posi", "int", "distance from the reference to go at the end, in pulses", "0"}},
             .doc = "Configures a reference search.",
             .returns = mergedStatus,
             .raises = enteringRaises({checkMCX514SearchType, checkMCX514SearchDirection, checkMCX514Enable}),
             .body = configureSearch})
        .operation({.name = "_Motion_setAutoHome1",
                    .parameters = {connector, axis, integer("search_type", "0, 1, else as 2"), initial,
                                   integer("final_approach_direction", "0 forward, 1 reverse"), percent, offset},
                    .doc = "Sets the first mode word of the reference search.",
                    .returns = mergedStatus,
                    .raises = enteringRaises(),
                    .body = setSearchMode})
        .operation(
            {.name = "_Motion_setAutoHome2",
             .parameters = {connector, axis, integer("reset_position_enable", "1 sets the counters to 0 at the end")},
             .doc = "Sets the second mode word of the reference search.",
             .returns = commandStatus,
             .body = setSearchEnd})
        .operation({.name = "_Motion_writeHomeSpeed",
                    .parameters = {connector, axis, percent, integer("search_velocity", "pulses per second")},
                    .doc = "Sets the speed near the reference, at least 1.",
                    .returns = commandStatus,
                    .body = writeHomeSpeed})
        .operation({.name = "_Motion_writeOffsetPosition",
                    .parameters = {connector, axis, offset, initial},
                    .doc = "Sets the distance to go at the end, backwards for direction 0.",
                    .returns = commandStatus,
                    .body = writeOffset})
        .operation({.name = "Motion_findRef",
                    .parameters = {port, axis},
                    .doc = "Starts the configured reference search.",
                    .returns = commandStatus,
                    .raises = enteringRaises(),
                    .body = search});
}

}  // namespace zvr::python
