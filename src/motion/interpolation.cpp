// Moves of several axes along lines, arcs and helices.
#include <chrono>

#include "motion/controller.h"

namespace zvr::python {

namespace {

const Parameter& port = controllerPort;

Object item(const Object& sequence, Py_ssize_t index) { return own(PySequence_GetItem(sequence.ptr(), index)); }

// The lowest axis is the main one, whatever the order of the arguments.
Task configureLine(Op op, std::vector<Object> given) {
    static constexpr std::pair<const char*, const char*> fields[] = {{"main_axis", "main_dest"},
                                                                     {"second_axis", "second_dest"},
                                                                     {"third_axis", "third_dest"},
                                                                     {"fourth_axis", "fourth_dest"}};
    const std::size_t count = (given.size() - 4) / 2;
    const Object port = enter(op, given[0]);
    const Object &speed = given[2 * count + 1], &acceleration = given[2 * count + 2],
                 &deceleration = given[2 * count + 3];
    py::list pairs;
    for (std::size_t i = 0; i < count; ++i) {
        op.call("_checkMCX514Axis", given[2 * i + 1]);
        checkIsInt(given[2 * i + 2], "dest_posi");
        pairs.append(py::make_tuple(given[2 * i + 1], given[2 * i + 2]));
    }
    for (const auto& [value, name] :
         {std::pair{speed, "speed"}, std::pair{acceleration, "accel"}, std::pair{deceleration, "decel"}})
        checkIsInt(value, name);
    callMethod(pairs, "sort");
    std::vector<Object> axes, positions;
    const Object record = attribute(op.self(), "linear_interpo");
    for (std::size_t i = 0; i < count; ++i) {
        axes.push_back(item(pairs[i], 0));
        positions.push_back(item(pairs[i], 1));
        setAttribute(record, fields[i].first, axes[i]);
        setAttribute(record, fields[i].second, positions[i]);
    }
    setFields(record, {{"speed", speed}, {"acceleration", acceleration}, {"deceleration", deceleration}});
    setAttribute(record, "mode", py::int_(count));
    WorstStatus status;
    for (const Object& axis : axes) status.take(co_await applyOutput(op, port, axis));
    Object word = py::int_(0);
    for (const Object& axis : axes) word = writeBit(word, axis, py::int_(1));
    word = withBits(word, {{6, count == 2 ? 1 : 0}, {7, count == 3 ? 1 : 0}});
    status.take(co_await op.request("_Motion_setInterpolationMode", port, word));
    status.take(co_await op.request("_Motion_setInitialSpeed", port, axes[0], startingSpeed(acceleration)));
    status.take(co_await op.request("_Motion_setDriveSpeed", port, axes[0], speed));
    status.take(co_await op.request("_Motion_setAcceleration", port, axes[0], acceleration));
    status.take(co_await op.request("_Motion_setDeceleration", port, axes[0], deceleration));
    for (std::size_t i = 0; i < count; ++i) {
        status.take(co_await op.request("_Motion_setDrivePositionFinishPoint", port, axes[i], positions[i]));
    }
    status.take(co_await op.request("_Motion_enableDeceleration", port));
    co_return status.value();
}

Task startLine(Op op, Object port) {
    port = enter(op, port);
    const Object mode = attribute(attribute(op.self(), "linear_interpo"), "mode");
    const char* start = nullptr;
    if (mode.equal(py::int_(2))) start = "_Motion_twoAxisLinearInterpolation";
    if (mode.equal(py::int_(3))) start = "_Motion_threeAxisLinearInterpolation";
    if (mode.equal(py::int_(4))) start = "_Motion_fourAxisLinearInterpolation";
    if (start == nullptr) co_return py::int_(0);
    co_return co_await op.request(start, port);
}

Task configureArc(Op op, Object port, Object x, Object y, Object centerX, Object centerY, Object finishX,
                  Object finishY, Object direction, Object speed, Object acceleration, Object deceleration) {
    port = enter(op, port, x);
    op.call("_checkMCX514Axis", y);
    for (const auto& [value, name] : {std::pair{centerX, "center_point_x"}, std::pair{centerY, "center_point_y"},
                                      std::pair{finishX, "finish_point_x"}, std::pair{finishY, "finish_point_y"}})
        checkIsNumber(value, name);
    op.call("_checkMCX514Direction", direction);
    for (const auto& [value, name] :
         {std::pair{speed, "speed"}, std::pair{acceleration, "accel"}, std::pair{deceleration, "decel"}})
        checkIsInt(value, name);
    const bool swapped = x > y;
    const Object main = swapped ? y : x;
    const Object record = attribute(op.self(), "circular_interpo");
    setFields(record, {{"main_axis", main},
                       {"finish_point_x", finishX},
                       {"finish_point_y", finishY},
                       {"center_point_x", centerX},
                       {"center_point_y", centerY},
                       {"direction", direction},
                       {"speed", speed},
                       {"acceleration", acceleration},
                       {"deceleration", deceleration}});
    WorstStatus status;
    status.take(co_await applyOutput(op, port, x));
    status.take(co_await applyOutput(op, port, y));
    Object word = writeBit(writeBit(py::int_(0), x, py::int_(1)), y, py::int_(1));
    word = withBits(word, {{6, 1}, {4, swapped ? 1 : 0}});
    status.take(co_await op.request("_Motion_setInterpolationMode", port, word));
    status.take(co_await op.request("_Motion_setInitialSpeed", port, main, speed));
    status.take(co_await op.request("_Motion_setDriveSpeed", port, main, speed));
    status.take(co_await op.request("_Motion_setAcceleration", port, main, acceleration));
    status.take(co_await op.request("_Motion_setDeceleration", port, main, deceleration));
    status.take(co_await op.request("_Motion_setCircularCenterPoint", port, x, centerX));
    status.take(co_await op.request("_Motion_setDrivePositionFinishPoint", port, x, finishX));
    status.take(co_await op.request("_Motion_setCircularCenterPoint", port, y, centerY));
    status.take(co_await op.request("_Motion_setDrivePositionFinishPoint", port, y, finishY));
    co_return status.value();
}

Task startArc(Op op, Object port) {
    port = enter(op, port);
    const bool clockwise = isZero(attribute(attribute(op.self(), "circular_interpo"), "direction"));
    co_return co_await op.request(clockwise ? "_Motion_cwCircularInterpolation" : "_Motion_ccwCircularInterpolation",
                                  port);
}

Task writeHelix(Op op, Object port, Object finish1, Object finish2, Object center1, Object center2, Object enable3,
                Object pitch3, Object enable4, Object pitch4, Object turns, Object speed, Object direction) {
    op.call("_checkMCX514MotionPort", port);
    const Object record = attribute(op.self(), "helical_interpo");
    setFields(record, {{"finish_point_axis1", finish1},
                       {"finish_point_axis2", finish2},
                       {"center_point_axis1", center1},
                       {"center_point_axis2", center2},
                       {"enable_axis3", enable3},
                       {"pitch_axis3", pitch3},
                       {"enable_axis4", enable4},
                       {"pitch_axis4", pitch4},
                       {"rotation_number", turns},
                       {"circular_speed", speed},
                       {"circular_direction", direction}});
    const bool third = isOne(enable3), fourth = isOne(enable4);
    const py::int_ axes[] = {0, 1, 2, 3};
    const Object word = withBits(py::int_(0), {{0, 1}, {1, 1}, {2, enable3}, {3, enable4}, {6, 1}, {8, 1}});
    WorstStatus status;
    status.take(co_await applyOutput(op, port, axes[0]));
    status.take(co_await applyOutput(op, port, axes[1]));
    if (third) status.take(co_await applyOutput(op, port, axes[2]));
    if (fourth) status.take(co_await applyOutput(op, port, axes[3]));
    status.take(co_await op.request("_Motion_setInterpolationMode", port, word));
    status.take(co_await op.request("_Motion_setInitialSpeed", port, axes[0], speed));
    status.take(co_await op.request("_Motion_setDriveSpeed", port, axes[0], speed));
    status.take(co_await op.request("_Motion_setHelicalRotationNumber", port, turns));
    status.take(co_await op.request("_Motion_setDrivePositionFinishPoint", port, axes[0], finish1));
    status.take(co_await op.request("_Motion_setCircularCenterPoint", port, axes[0], center1));
    status.take(co_await op.request("_Motion_setDrivePositionFinishPoint", port, axes[1], finish2));
    status.take(co_await op.request("_Motion_setCircularCenterPoint", port, axes[1], center2));
    if (third) status.take(co_await op.request("_Motion_setDrivePositionFinishPoint", port, axes[2], pitch3));
    if (fourth) status.take(co_await op.request("_Motion_setDrivePositionFinishPoint", port, axes[3], pitch4));
    co_return status.value();
}

long long wallMilliseconds() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

// The chip calculates where the helix must slow down; waits for the result and keeps it for the start.
Task configureHelix(Op op, Object port, Object centerX, Object centerY, Object finishX, Object finishY, Object enable3,
                    Object pitch3, Object enable4, Object pitch4, Object turns, Object speed, Object direction,
                    Object limit) {
    port = enter(op, port);
    for (const auto& [value, name] : {std::pair{centerX, "center_point_x"}, std::pair{centerY, "center_point_y"},
                                      std::pair{finishX, "finish_point_x"}, std::pair{finishY, "finish_point_y"}})
        checkIsNumber(value, name);
    op.call("_checkMCX514Enable", enable3);
    checkIsNumber(pitch3, "pitch_axis3");
    op.call("_checkMCX514Enable", enable4);
    checkIsNumber(pitch4, "pitch_axis4");
    checkIsNumber(turns, "rotation_number");
    checkIsInt(speed, "speed");
    op.call("_checkMCX514Direction", direction);
    checkIsNumber(limit, "calculation_timeout");
    const char* calculate = isZero(direction) ? "_Motion_cwHelicalCalculation" : "_Motion_ccwHelicalCalculation";
    WorstStatus status;
    status.take(co_await op.request("_Motion_writeHelicalInterpolation", port, finishX, finishY, centerX, centerY,
                                    enable3, pitch3, enable4, pitch4, turns, speed, direction));
    status.take(co_await op.request(calculate, port));
    const long long start = wallMilliseconds();
    for (bool over = false; !over;) {
        over = py::int_(wallMilliseconds() - start) >= limit;
        const Object state = co_await op.request("_Motion_writeRR0", port);
        if (!isZero(readBit(state, py::int_(0)))) continue;
        const Object result = co_await op.request("_Motion_getHelicalCalculation", port);
        setAttribute(attribute(op.self(), "helical_interpo"), "calculation_result", result);
        break;
    }
    co_return status.value();
}

Task startHelix(Op op, Object port) {
    port = enter(op, port);
    const Object record = attribute(op.self(), "helical_interpo");
    const auto stored = [&](const char* field) { return attribute(record, field); };
    const Object finish1 = stored("finish_point_axis1"), finish2 = stored("finish_point_axis2"),
                 center1 = stored("center_point_axis1"), center2 = stored("center_point_axis2"),
                 enable3 = stored("enable_axis3"), pitch3 = stored("pitch_axis3"), enable4 = stored("enable_axis4"),
                 pitch4 = stored("pitch_axis4"), turns = stored("rotation_number"), speed = stored("circular_speed"),
                 direction = stored("circular_direction");
    const char* move = isZero(direction) ? "_Motion_cwHelicalInterpolation" : "_Motion_ccwHelicalInterpolation";
    WorstStatus status;
    status.take(co_await op.request("_Motion_writeHelicalInterpolation", port, finish1, finish2, center1, center2,
                                    enable3, pitch3, enable4, pitch4, turns, speed, direction));
    status.take(co_await op.request("_Motion_setHelicalCalculation", port, stored("calculation_result")));
    status.take(co_await op.request(move, port));
    co_return status.value();
}

void defineLine(Feature& controller, const char* name, int axes, const Parameters& pace) {
    Definition definition{.name = name,
                          .parameters = {port},
                          .doc = "Configures a line of " + std::to_string(axes) + " axes.",
                          .returns = mergedStatus,
                          .raises = enteringRaises({"ValueError: the acceleration is negative"}),
                          .body = [](const Definition& self, Op op, Arguments given) {
                              return configureLine(std::move(op), {given, given + self.parameters.size()});
                          }};
    for (int i = 1; i <= axes; ++i) {
        const std::string number = std::to_string(i);
        definition.parameters.push_back({"axis" + number, "int", "axis, 0 to 3"});
        definition.parameters.push_back({"dest_posi" + number, "int", "its distance in pulses"});
    }
    definition.parameters.insert(definition.parameters.end(), pace.begin(), pace.end());
    controller.operation(definition);
}

}  // namespace

void defineInterpolations(Feature& controller) {
    const auto number = [](const char* name, const char* doc) { return Parameter{name, "float", doc}; };
    const Parameters pace{{"speed", "int", "pulses per second along the path", "10000"},
                          {"accel", "int", "pulses per second squared", "100000"},
                          {"decel", "int", "pulses per second squared", "100000"}};
    const Parameter center1 = number("center_point_x", "pulses from the start"),
                    center2 = number("center_point_y", "pulses from the start"),
                    finish1 = number("finish_point_x", "pulses from the start"),
                    finish2 = number("finish_point_y", "pulses from the start"),
                    direction = integer("dir", "0 clockwise, 1 counter-clockwise");
    defineLine(controller, "Motion_cfg2AxisLinearInterpo", 2, pace);
    defineLine(controller, "Motion_cfg3AxisLinearInterpo", 3, pace);
    defineLine(controller, "Motion_cfg4AxisLinearInterpo", 4, pace);
    controller
        .operation({.name = "Motion_startLinearInterpo",
                    .parameters = {port},
                    .doc = "Starts the configured line; nothing happens without one.",
                    .returns = commandStatus,
                    .raises = enteringRaises({}, false),
                    .body = startLine})
        .operation({.name = "Motion_cfgCircularInterpo",
                    .parameters = {port, integer("x_axis", "axis, 0 to 3"), integer("y_axis", "axis, 0 to 3"), center1,
                                   center2, finish1, finish2, direction, pace[0], pace[1], pace[2]},
                    .doc = "Configures an arc of two axes.",
                    .returns = mergedStatus,
                    .raises = enteringRaises({checkMCX514Direction}),
                    .body = configureArc})
        .operation({.name = "Motion_startCircularInterpo",
                    .parameters = {port},
                    .doc = "Starts the configured arc.",
                    .returns = commandStatus,
                    .raises = enteringRaises({}, false),
                    .body = startArc})
        .operation(
            {.name = "_Motion_writeHelicalInterpolation",
             .parameters = {connector, number("finish_point_axis1", "pulses from the start"),
                            number("finish_point_axis2", "pulses from the start"),
                            number("center_point_axis1", "pulses from the start"),
                            number("center_point_axis2", "pulses from the start"),
                            integer("enable_axis3", "1 moves it along"), number("pitch_axis3", "pulses of axis 2"),
                            integer("enable_axis4", "1 moves it along"), number("pitch_axis4", "pulses of axis 3"),
                            number("rotation_number", "turns, 0 to 65535"),
                            integer("circular_speed", "pulses per second"),
                            integer("circular_direction", "0 clockwise, 1 counter-clockwise")},
             .doc = "Sets all parameters of a helix except those that the chip calculates.",
             .returns = mergedStatus,
             .raises = enteringRaises({}, false),
             .body = writeHelix})
        .operation(
            {.name = "Motion_cfgHelicalInterpo",
             .parameters = {port, center1, center2, finish1, finish2,
                            integer("en_axis3", "1 moves axis 2 along, 0 does not"),
                            number("pitch_axis3", "pulses of axis 2"),
                            integer("en_axis4", "1 moves axis 3 along, 0 does not"),
                            number("pitch_axis4", "pulses of axis 3"), number("rotation_number", "turns, 0 to 65535"),
                            integer("speed", "pulses per second along the arc"), direction,
                            number("calculation_timeout",
                                   "milliseconds in which the chip must have calculated; "
                                   "later the old result stays and nothing is raised")},
             .doc = "Configures a helix about axes 0 and 1, and lets the chip calculate it.",
             .returns = mergedStatus,
             .raises = enteringRaises({checkMCX514Enable, checkMCX514Direction}, false),
             .body = configureHelix})
        .operation({.name = "Motion_startHelicalInterpo",
                    .parameters = {port},
                    .doc = "Starts the configured helix.",
                    .returns = mergedStatus,
                    .raises = enteringRaises({}, false),
                    .body = startHelix});
}

}  // namespace zvr::python
