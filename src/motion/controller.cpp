// The four-axis controller: checks, configuration of axes, captures and break points, and the state of axes. Moves,
// interpolations and files have their own source files.
#include "motion/controller.h"

#include "models/traits.h"
#include "motion/motion.h"

namespace zvr::python {

namespace {

const Parameter& port = controllerPort;
const Parameter& axis = axisParameter;

Task open(Op op, Object port) {
    port = enter(op, port);
    co_return co_await op.request("_Motion_setPIOSignal1", port, py::int_(15), py::int_(5));
}

/// An input with a switch and a level.
struct Input {
    const char* enable;
    const char* polarity;
};
constexpr Input alarmInput{"_Motion_setAlarmLimitEnable", "_Motion_setAlarmPolarity"},
    homeInput{"_Motion_setHomeLimitEnable", "_Motion_setHomePolarity"},
    inpositionInput{"_Motion_setInpositionLimitEnable", "_Motion_setInpositionPolarity"};

Task configureInput(Input input, Op op, Object port, Object axis, Object enable, Object polarity) {
    port = enter(op, port, axis);
    op.call("_checkMCX514Enable", enable);
    op.call("_checkMCX514Polarity", polarity);
    WorstStatus status;
    status.take(co_await op.request(input.enable, port, axis, enable));
    status.take(co_await op.request(input.polarity, port, axis, polarity));
    co_return status.value();
}

Task configureLimit(Op op, Object port, Object axis, Object forward, Object reverse, Object polarity) {
    port = enter(op, port, axis);
    op.call("_checkMCX514Enable", forward);
    op.call("_checkMCX514Enable", reverse);
    op.call("_checkMCX514Polarity", polarity);
    WorstStatus status;
    status.take(co_await op.request("_Motion_setLimitEnable", port, axis, forward, reverse));
    status.take(co_await op.request("_Motion_setLimitPolarity", port, axis, polarity));
    co_return status.value();
}

Task configureAxis(Op op, Object port, Object axis, Object output, Object direction, Object encoderDirection,
                   Object servoPolarity) {
    port = enter(op, port, axis);
    op.call("_checkMCX514StepperOutput", output);
    op.call("_checkMCX514Direction", direction);
    op.call("_checkMCX514Direction", encoderDirection);
    op.call("_checkMCX514Polarity", servoPolarity);
    const Object record = recordOf(op, axis);
    setSetting(record, "Stepper Output", output);
    setSetting(record, "Servo On Polarity", servoPolarity);
    WorstStatus status;
    status.take(co_await op.request("_Motion_setAxisModeAndDirection", port, axis, output, direction));
    status.take(co_await op.request("_Motion_setEncoderDirection", port, axis, encoderDirection));
    co_return status.value();
}

Task configureEncoder(Op op, Object port, Object axis, Object polarity) {
    port = enter(op, port, axis);
    op.call("_checkMCX514Polarity", polarity);
    setSetting(recordOf(op, axis), "Encoder Z Polarity", polarity);
    Object word = co_await op.request("_Motion_getWR2", port, axis);
    word = withBits(word, {{4, isZero(polarity) ? 1 : 0}});
    co_return co_await op.request("_Motion_writeWR2", port, axis, word);
}

Task configureJerk(Op op, Object port, Object axis, Object jerk, Object mode) {
    enter(op, port, axis);
    checkIsInt(jerk, "jerk");
    op.call("_checkMCX514AccelerationMode", mode);
    setFields(recordOf(op, axis), {{"jerk", jerk}, {"acceleration_mode", mode}});
    co_return py::none();
}

Task resetPosition(Op op, Object port, Object axis, Object position) {
    port = enter(op, port, axis);
    checkIsInt(position, "encoder_posi");
    setAttribute(recordOf(op, axis), "encoder_position", position);
    WorstStatus status;
    status.take(co_await op.request("Motion_setLogicalPosi", port, axis, position));
    status.take(co_await op.request("_Motion_setRealPositionCounter", port, axis, position));
    co_return status.value();
}

Task turnServo(int on, Op op, Object port, Object axis) {
    port = enter(op, port);
    co_return co_await op.request("_Motion_enableServoOn", port, axis, py::int_(on));
}

Task configureCapture(Op op, Object port, Object axis, Object type, Object mode) {
    port = enter(op, port, axis);
    op.call("_checkMCX514CaptureType", type);
    op.call("_checkMCX514CaptureMode", mode);
    setFields(recordOf(op, axis), {{"capture_type", type}, {"capture_mode", mode}});
    const int word = (isOne(mode) ? 106 : 90) + (isOne(type) ? 1 : 0);
    co_return co_await op.request("_Motion_setSYNCAction3", port, axis, py::int_(word));
}

/// A SYNC action that can be turned on and off.
struct Action {
    const char* enable;
    const char* disable;
};
constexpr Action captureAction{"_Motion_enableActionSYNC3", "_Motion_disableActionSYNC3"},
    breakAction{"_Motion_enableActionSYNC0", "_Motion_disableActionSYNC0"};

Task switchAction(Action action, Op op, Object port, Object axis, Object on) {
    port = enter(op, port, axis);
    op.call("_checkMCX514Enable", on);
    co_return co_await op.request(isOne(on) ? action.enable : action.disable, port, axis);
}

Task configureBreakPoint(Op op, Object port, Object axis, Object mode, Object polarity, Object start, Object width,
                         Object period, Object number) {
    port = enter(op, port, axis);
    op.call("_checkMCX514BreakPointMode", mode);
    op.call("_checkMCX514Polarity", polarity);
    for (const auto& [value, name] : {std::pair{start, "start_posi"}, std::pair{width, "pulse_width"},
                                      std::pair{period, "pulse_period"}, std::pair{number, "pulse_number"}})
        checkIsInt(value, name);
    setFields(recordOf(op, axis), {{"breakpoint_mode", mode},
                                   {"breakpoint_polarity", polarity},
                                   {"breakpoint_start_position", start},
                                   {"breakpoint_pulse_width", width},
                                   {"breakpoint_pulse_period", period},
                                   {"breakpoint_pulse_number", number}});
    WorstStatus status;
    status.take(co_await op.request("_Motion_splitPulse1", port, axis, width, period));
    status.take(co_await op.request("_Motion_splitPulse2", port, axis, number));
    Object word = co_await op.request("_Motion_getPIOSignal2", port, axis);
    word = withBits(word, {{10, isZero(polarity) ? 1 : 0}, {11, 1}});
    status.take(co_await op.request("_Motion_setPIOSignal2", port, axis, word));
    word = co_await op.request("_Motion_getMultiPurposeRegisterMode", port, axis);
    word = withBits(word, {{0, 0}, {1, 0}, {2, 0}, {3, 1}});
    status.take(co_await op.request("_Motion_setMultiPurposeMode", port, axis, word));
    if (isOne(mode)) {
        const Object position = co_await op.request("Motion_getLogicalPosi", port, axis);
        start = position + start;
    }
    status.take(co_await op.request("_Motion_setMultiPurposeRegister0", port, axis, start));
    status.take(co_await op.request("_Motion_setSYNCAction0", port, axis, py::int_(369)));
    co_return status.value();
}

Task standing(Op op, Object port, Object axis) {
    port = enter(op, port, axis);
    const Object state = co_await op.request("_Motion_writeRR0", port);
    co_return readBit(state, axis) ^ py::int_(1);
}

// An input's bit as on or off. All use the active level of the forward limit.
Object inputState(const Op& op, const Object& axis, const Object& state, int bit) {
    const Object level = readBit(state, py::int_(bit));
    const bool activeLow = isZero(settingOf(recordOf(op, axis), "Forward Polarity"));  // Compat 34
    return activeLow ? level ^ py::int_(1) : level;
}

Task homeStatus(Op op, Object port, Object axis) {
    port = enter(op, port, axis);
    const Object state = co_await op.request("_Motion_writeRR3", port, axis, py::int_(0));
    co_return inputState(op, axis, state, 1);
}

Task limitStatus(Op op, Object port, Object axis) {
    port = enter(op, port, axis);
    const Object state = co_await op.request("_Motion_writeRR3", port, axis, py::int_(0));
    py::list both;
    both.append(inputState(op, axis, state, 7));
    both.append(inputState(op, axis, state, 8));
    co_return both;
}

Task capturePoint(Op op, Object port, Object axis) {
    port = enter(op, port, axis);
    co_return co_await op.request("_Motion_getMultiPurposeRegister3", port, axis);
}

void defineChecks(ClassMaker& based) {
    for (const Definition& check :
         {checkMCX514StopMode, checkMCX514SearchType, checkMCX514SearchDirection, checkMCX514Enable,
          checkMCX514StepperOutput, checkMCX514Direction, checkMCX514Polarity, checkMCX514CaptureType,
          checkMCX514CaptureMode, checkMCX514BreakPointMode, checkMCX514OperationMode, checkMCX514AccelerationMode,
          checkMCX514MotionPort, checkMCX514Axis}) {
        based.method(check);
    }
    based.method(
        {.name = "_getAxisHandle",
         .parameters = {axisParameter},
         .doc = "The record of an axis.",
         .returns = {"MotionAxis", "`axis_1` for axis 0 and so on; `axis_4` for any other number", "a host record"},
         .body = [](py::handle self, const Object& axis) {
             for (const auto& [number, field] : {std::pair{0, "axis_1"}, {1, "axis_2"}, {2, "axis_3"}}) {
                 if (axis.equal(py::int_(number))) return attribute(self, field);
             }
             return attribute(self, "axis_4");
         }});
}

void defineConfiguration(Feature& controller) {
    const Raises inputRaises = enteringRaises({checkMCX514Enable, checkMCX514Polarity});
    controller
        .operation({.name = "Motion_open",
                    .parameters = {port},
                    .doc = "Makes a connector ready.",
                    .returns = commandStatus,
                    .raises = enteringRaises({}, false),
                    .body = open})
        .operation({.name = "Motion_close",
                    .parameters = {port},
                    .doc = "Ends the use of a connector; nothing is sent.",
                    .returns = {"int", "0"},
                    .raises = enteringRaises({}, false),
                    .body = [](Op op, Object port) -> Task {
                        enter(op, port);
                        co_return py::int_(0);
                    }})
        .operation({.name = "Motion_cfgAlarm",
                    .parameters = {port, axis, onOff("en_alarm"), level("alarm_polarity")},
                    .doc = "Configures the servo alarm.",
                    .returns = mergedStatus,
                    .raises = inputRaises,
                    .body =
                        [](Op op, Object port, Object axis, Object enable, Object polarity) {
                            return configureInput(alarmInput, std::move(op), port, axis, enable, polarity);
                        }})
        .operation({.name = "Motion_cfgHome",
                    .parameters = {port, axis, onOff("en_home"), level("home_polarity")},
                    .doc = "Configures the home input.",
                    .returns = mergedStatus,
                    .raises = inputRaises,
                    .body =
                        [](Op op, Object port, Object axis, Object enable, Object polarity) {
                            return configureInput(homeInput, std::move(op), port, axis, enable, polarity);
                        }})
        .operation({.name = "Motion_cfgInposi",
                    .parameters = {port, axis, onOff("en_inposi"), level("inposi_polarity")},
                    .doc = "Configures the in-position input.",
                    .returns = mergedStatus,
                    .raises = inputRaises,
                    .body =
                        [](Op op, Object port, Object axis, Object enable, Object polarity) {
                            return configureInput(inpositionInput, std::move(op), port, axis, enable, polarity);
                        }})
        .operation({.name = "Motion_cfgLimit",
                    .parameters = {port, axis, onOff("en_forward"), onOff("en_reverse"), level("limit_polarity")},
                    .doc = "Configures the limit inputs. The chip has one switch and one level for both.",
                    .returns = mergedStatus,
                    .raises = inputRaises,
                    .body = configureLimit})
        .operation({.name = "Motion_cfgAxis",
                    .parameters = {port, axis, integer("stepper_output", "0 pulse and direction, 1 two pulses"),
                                   inverse("axis_dir"), inverse("encoder_dir"), level("servo_on_polarity")},
                    .doc = "Configures pulse output, directions and servo output.",
                    .returns = mergedStatus,
                    .raises = enteringRaises({checkMCX514StepperOutput, checkMCX514Direction, checkMCX514Polarity}),
                    .body = configureAxis})
        .operation({.name = "Motion_cfgEncoder",
                    .parameters = {port, axis, level("encoder_z_polarity")},
                    .doc = "Configures the encoder's index.",
                    .returns = commandStatus,
                    .raises = enteringRaises({checkMCX514Polarity}),
                    .body = configureEncoder})
        .operation({.name = "Motion_cfgJerkAndAccelMode",
                    .parameters = {port, axis,
                                   integer("jerk", "change of the acceleration in the chip's unit, 0 to 4294967295"),
                                   integer("accel_mode", "0 trapezoid, 1 or 2 S-curve")},
                    .doc = "Stores the shape of acceleration, which is sent with the next one. Nothing is sent.",
                    .raises = enteringRaises({checkMCX514AccelerationMode}),
                    .body = configureJerk})
        .operation({.name = "Motion_rstEncoderPosi",
                    .parameters = {port, axis, {"encoder_posi", "int", "position in pulses", "0"}},
                    .doc = "Sets both position counters.",
                    .returns = mergedStatus,
                    .raises = enteringRaises(),
                    .body = resetPosition})
        .operation({.name = "Motion_enableServoOn",
                    .parameters = {port, axis},
                    .doc = "Switches the servo on. On the chassis it fails in slot 1 (compatibility note 32).",
                    .returns = mergedStatus,
                    .raises = enteringRaises(),
                    .body = [](Op op, Object port, Object axis) { return turnServo(1, std::move(op), port, axis); }})
        .operation({.name = "Motion_enableServoOff",
                    .parameters = {port, axis},
                    .doc = "Switches the servo off. On the chassis it fails in slot 1 (compatibility note 32).",
                    .returns = mergedStatus,
                    .raises = enteringRaises(),
                    .body = [](Op op, Object port, Object axis) { return turnServo(0, std::move(op), port, axis); }})
        .operation({.name = "Motion_cfgCapture",
                    .parameters = {port, axis, integer("capture_type", "edge, 0 or 1"),
                                   integer("mode", "position that is captured, 0 or 1, in the chip's numbering")},
                    .doc = "Configures the capture of a position.",
                    .returns = commandStatus,
                    .raises = enteringRaises({checkMCX514CaptureType, checkMCX514CaptureMode}),
                    .body = configureCapture})
        .operation({.name = "Motion_enableCapture",
                    .parameters = {port, axis, onOff("en_capture")},
                    .doc = "Switches the capture.",
                    .returns = commandStatus,
                    .raises = enteringRaises({checkMCX514Enable}),
                    .body = [](Op op, Object port, Object axis,
                               Object on) { return switchAction(captureAction, std::move(op), port, axis, on); }})
        .operation({.name = "Motion_cfgBreakPoint",
                    .parameters = {port, axis, integer("mode", "0 at a position, 1 at a distance from the present one"),
                                   level("breakpoint_polarity"), integer("start_posi", "first break point, in pulses"),
                                   integer("pulse_width", "width in the chip's unit, 0 to 65535"),
                                   integer("pulse_period", "period in the chip's unit, 0 to 65535"),
                                   integer("pulse_number", "number of pulses, 0 to 65535")},
                    .doc = "Configures pulses that an axis gives out from a position on.",
                    .returns = mergedStatus,
                    .raises = enteringRaises({checkMCX514BreakPointMode, checkMCX514Polarity}),
                    .body = configureBreakPoint})
        .operation({.name = "Motion_enableBreakPoint",
                    .parameters = {port, axis, onOff("en_break")},
                    .doc = "Switches the break points.",
                    .returns = commandStatus,
                    .raises = enteringRaises({checkMCX514Enable}),
                    .body = [](Op op, Object port, Object axis, Object on) {
                        return switchAction(breakAction, std::move(op), port, axis, on);
                    }});
}

void defineStates(Feature& controller) {
    const Returns stands{"int", "1 when the axis stands, 0 while it drives", "the device"};
    controller
        .operation({.name = "Motion_getMoveStatus",
                    .parameters = {port, axis},
                    .doc = "Reads whether a move has ended.",
                    .returns = stands,
                    .raises = enteringRaises(),
                    .body = standing})
        .operation({.name = "Motion_checkRef",
                    .parameters = {port, axis},
                    .doc = "Reads whether a reference search has ended.",
                    .returns = stands,
                    .raises = enteringRaises(),
                    .body = standing})
        .operation(
            {.name = "Motion_getHomeStatus",
             .parameters = {port, axis},
             .doc = "Reads the home input. It uses the active level of the forward limit (compatibility note 34).",
             .returns = {"int", "1 active, 0 not", "the device"},
             .raises = enteringRaises(),
             .body = homeStatus})
        .operation({.name = "Motion_getLimitStatus",
                    .parameters = {port, axis},
                    .doc = "Reads both limit inputs.",
                    .returns = {"list[int]", "forward and reverse, each 1 active, 0 not", "the device"},
                    .raises = enteringRaises(),
                    .body = limitStatus})
        .operation({.name = "Motion_readCapturePoint",
                    .parameters = {port, axis},
                    .doc = "Reads the captured position.",
                    .returns = {"int", "position in pulses", "the device"},
                    .raises = enteringRaises(),
                    .body = capturePoint});
    definePositions(controller);
}

}  // namespace

Object enter(const Op& op, const Object& port) {
    Object connector = devicePort(op.self(), port);
    op.call("_checkMCX514MotionPort", connector);
    return connector;
}

Object enter(const Op& op, const Object& port, const Object& axis) {
    Object connector = enter(op, port);
    op.call("_checkMCX514Axis", axis);
    return connector;
}

void checkPortAndAxis(const Op& op, const Object& port, const Object& axis) {
    op.call("_checkMCX514MotionPort", port);
    op.call("_checkMCX514Axis", axis);
}

Raises enteringRaises(std::initializer_list<Raises::Entry> more, bool hasAxis) {
    Raises raises{checkMCX514MotionPort};
    if (hasAxis) raises.add({checkMCX514Axis});
    raises.add(more);
    return raises;
}

Awaiter applyOutput(const Op& op, const Object& port, const Object& axis) {
    const Object record = recordOf(op, axis);
    return op.request("_Motion_setAxisModeAndDirection", port, axis, settingOf(record, "Stepper Output"),
                      settingOf(record, "Inverse Motion Direction"));
}

Object startingSpeed(const Object& acceleration) {
    const Object root = callObject(pythonObject("math", "sqrt"), acceleration);
    return own(PyNumber_Long((root * py::float_(1.1)).ptr()));
}

Object withBits(Object word, const std::vector<Bit>& bits) {
    for (const auto& [index, value] : bits) word = writeBit(word, index, value);
    return word;
}

namespace {

// Each form calls the constructor of its own driver.
void defineConstructor(Package& package, const char* module, const char* driver) {
    ClassMaker(package.get(module))
        .method({.name = "__init__",
                 .parameters = {{"motion_dict", "dict[int, list[int]]", "connectors of the model's controllers"}},
                 .doc = "Sets the resources of the model.",
                 .body = [driver](py::handle self, const Object& connectors) {
                     setAttribute(self, "motion_dict", connectors);
                     callOf(driver, "__init__", self);
                 }});
}

}  // namespace

void defineMotionController(Package& package) {
    ClassMaker based = package.makeClass("MCX514Based", {},
                                         "The four-axis motion controller.\n\nWhat both forms of the feature share.");
    defineChecks(based);
    Feature controller(package, "MCX514Module", {"MCX514Driver", "MCX514Based"}, "The four-axis motion controller.");
    controller.field({"motion_dict", "dict[int, list[int]]", "connectors of the model's controllers"});
    defineConstructor(package, "MCX514Module", "MCX514Driver");
    defineConstructor(package, "MCX514Module_async", "MCX514Driver_async");
    defineRegisterAccess(controller);
    defineConfiguration(controller);
    defineStates(controller);
    defineMoves(controller);
    defineInterpolations(controller);
    defineControllerFiles(controller);
}

}  // namespace zvr::python
