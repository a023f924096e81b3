// The four-axis controller: checks, configuration of axes, captures and break points, and the state of axes. Moves,
// interpolations and files have pages of their own.
#include "motion/controller.h"

#include "models/traits.h"
#include "motion/motion.h"

namespace zvr::python {

namespace {

const Parameter& port = controllerPort;
const Parameter& axis = axisParameter;

/// An operation that writes one bit of a register of an axis, and remembers it.
struct RegisterBit {
    const char* name;
    Parameter value;
    std::vector<const char*> settings;
    int number;  ///< of the register
    int bit;
    const char* what;
};
// clang-format off
const std::vector<RegisterBit>& registerBits() {
    static const std::vector<RegisterBit> table = {
        {"_Motion_setHomeLimitEnable", onOff("home_enable"), {"Home Enable"}, 2, 3, "the home input"},
        {"_Motion_setHomePolarity", level("home_polarity"), {"Home Polarity"}, 2, 2, "the home level"},
        {"_Motion_setInpositionLimitEnable", onOff("inposition_enable"), {"Inposition Enable"}, 2, 7,
            "the in-position input"},
        {"_Motion_setInpositionPolarity", level("inposition_polarity"), {"Inposition Polarity"}, 2, 6,
            "the in-position level"},
        {"_Motion_setAlarmLimitEnable", onOff("alarm_enable"), {"Alarm Enable"}, 2, 9, "the servo alarm"},
        {"_Motion_setAlarmPolarity", level("alarm_polarity"), {"Alarm Polarity"}, 2, 8, "the alarm level"},
        {"_Motion_setLimitPolarity", level("limit_polarity"), {"Forward Polarity", "Reverse Polarity"}, 2, 10,
            "the level of both limit inputs"},
        {"_Motion_setInstantLimitStop", integer("stop", "1 at once, 0 with deceleration"), {}, 2, 12,
            "the stop at a limit"},
        {"_Motion_setEncoderDirection", inverse("encoder_direction"), {"Inverse Encoder Direction"}, 3, 11,
            "the counting direction of the encoder"},
    };
    return table;
}
// clang-format on

const char* readOf(int number) { return number == 2 ? "_Motion_getWR2" : "_Motion_getWR3"; }
const char* writeOf(int number) { return number == 2 ? "_Motion_writeWR2" : "_Motion_writeWR3"; }

Result writeRegisterBit(const RegisterBit& row, Op op, Object port, Object axis, Object value) {
    checkPortAndAxis(op, port, axis);
    const Object record = recordOf(op, axis);
    for (const char* key : row.settings) setSetting(record, key, value);
    if (row.settings.empty()) setAttribute(record, "stop", value);
    Object word = co_await op.request(readOf(row.number), port, axis);
    word = writeBit(word, py::int_(row.bit), value);
    co_return co_await op.request(writeOf(row.number), port, axis, word);
}

// The chip has one switch for both directions.
Result setLimitEnable(Op op, Object port, Object axis, Object forward, Object reverse) {
    checkPortAndAxis(op, port, axis);
    const Object record = recordOf(op, axis);
    setSetting(record, "Forward Enable", forward);
    setSetting(record, "Reverse Enable", reverse);
    Object word = co_await op.request("_Motion_getWR2", port, axis);
    word = withBits(word, {{11, forward | reverse}, {12, 0}});
    co_return co_await op.request("_Motion_writeWR2", port, axis, word);
}

// The bits of S-curve and asymmetry go too.
Result setOutput(Op op, Object port, Object axis, Object output, Object direction) {
    setSetting(recordOf(op, axis), "Inverse Motion Direction", direction);
    Object word = co_await op.request("_Motion_getWR3", port, axis);
    const Object inverse = direction & py::int_(1);
    if (isZero(output)) {
        word = withBits(word, {{0, 0}, {1, 0}, {2, 0}, {3, 1}, {4, 1}, {6, inverse}, {7, 0}, {5, 0}});
    } else {
        word = withBits(word, {{0, 0}, {1, 0}, {2, 0}, {3, 0}, {4, 0}, {6, 0}, {7, inverse}, {5, 0}});
    }
    co_return co_await op.request("_Motion_writeWR3", port, axis, word);
}

Result writeAcceleration(Op op, Object port, Object axis, Object acceleration, Object deceleration) {
    const Object record = recordOf(op, axis);
    setFields(record, {{"acceleration", acceleration}, {"deceleration", deceleration}});
    const bool curved = !isZero(attribute(record, "acceleration_mode"));
    const Object jerk = attribute(record, "jerk");
    Merged status;
    status.take(co_await op.request("_Motion_setAcceleration", port, axis, acceleration));
    status.take(co_await op.request("_Motion_setDeceleration", port, axis, deceleration));
    if (!curved && acceleration.equal(deceleration)) co_return status.value();
    if (curved) {
        status.take(co_await op.request("_Motion_setAccelerationJerk", port, axis, jerk));
        status.take(co_await op.request("_Motion_setDecelerationJerk", port, axis, jerk));
    }
    Object word = co_await op.request("_Motion_getWR3", port, axis);
    word = withBits(word, {{0, 0}, {1, curved ? 0 : 1}, {2, curved ? 1 : 0}});
    status.take(co_await op.request("_Motion_writeWR3", port, axis, word));
    co_return status.value();
}

Result writeVelocity(Op op, Object port, Object axis, Object velocity) {
    const Object record = recordOf(op, axis);
    setAttribute(record, "velocity", velocity);
    const Object start = startingSpeed(attribute(record, "acceleration"));
    Merged status;
    status.take(co_await op.request("_Motion_setDriveSpeed", port, axis, own(PyNumber_Absolute(velocity.ptr()))));
    status.take(co_await op.request("_Motion_setInitialSpeed", port, axis, start));
    co_return status.value();
}

// The logical counter is rewritten with its own value.
Result switchServo(Op op, Object port, Object axis, Object on) {
    checkPortAndAxis(op, port, axis);
    op.call("_checkMCX514Enable", on);
    const bool activeLow = isZero(settingOf(recordOf(op, axis), "Servo On Polarity"));
    const Object level = writeBit(py::int_(0), py::int_(0), py::int_(activeLow ? 1 : 0) ^ on);
    Merged status;
    status.take(co_await op.request("_Motion_setGPIOValue", port, axis, py::int_(1), level));
    const Object position = co_await op.request("Motion_getLogicalPosi", port, axis);
    status.take(co_await op.request("Motion_setLogicalPosi", port, axis, position));
    co_return status.value();
}

Result open(Op op, Object port) {
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

template <const Input& input>
Result configureInput(Op op, Object port, Object axis, Object enable, Object polarity) {
    port = enter(op, port, axis);
    op.call("_checkMCX514Enable", enable);
    op.call("_checkMCX514Polarity", polarity);
    Merged status;
    status.take(co_await op.request(input.enable, port, axis, enable));
    status.take(co_await op.request(input.polarity, port, axis, polarity));
    co_return status.value();
}

Result configureLimit(Op op, Object port, Object axis, Object forward, Object reverse, Object polarity) {
    port = enter(op, port, axis);
    op.call("_checkMCX514Enable", forward);
    op.call("_checkMCX514Enable", reverse);
    op.call("_checkMCX514Polarity", polarity);
    Merged status;
    status.take(co_await op.request("_Motion_setLimitEnable", port, axis, forward, reverse));
    status.take(co_await op.request("_Motion_setLimitPolarity", port, axis, polarity));
    co_return status.value();
}

Result configureAxis(Op op, Object port, Object axis, Object output, Object direction, Object encoderDirection,
                     Object servoPolarity) {
    port = enter(op, port, axis);
    op.call("_checkMCX514StepperOutput", output);
    op.call("_checkMCX514Direction", direction);
    op.call("_checkMCX514Direction", encoderDirection);
    op.call("_checkMCX514Polarity", servoPolarity);
    const Object record = recordOf(op, axis);
    setSetting(record, "Stepper Output", output);
    setSetting(record, "Servo On Polarity", servoPolarity);
    Merged status;
    status.take(co_await op.request("_Motion_setAxisModeAndDirection", port, axis, output, direction));
    status.take(co_await op.request("_Motion_setEncoderDirection", port, axis, encoderDirection));
    co_return status.value();
}

Result configureEncoder(Op op, Object port, Object axis, Object polarity) {
    port = enter(op, port, axis);
    op.call("_checkMCX514Polarity", polarity);
    setSetting(recordOf(op, axis), "Encoder Z Polarity", polarity);
    Object word = co_await op.request("_Motion_getWR2", port, axis);
    word = withBits(word, {{4, isZero(polarity) ? 1 : 0}});
    co_return co_await op.request("_Motion_writeWR2", port, axis, word);
}

Result configureJerk(Op op, Object port, Object axis, Object jerk, Object mode) {
    enter(op, port, axis);
    checkIsInt(jerk);
    op.call("_checkMCX514AccelerationMode", mode);
    setFields(recordOf(op, axis), {{"jerk", jerk}, {"acceleration_mode", mode}});
    co_return py::none();
}

Result resetPosition(Op op, Object port, Object axis, Object position) {
    port = enter(op, port, axis);
    checkIsInt(position);
    setAttribute(recordOf(op, axis), "encoder_position", position);
    Merged status;
    status.take(co_await op.request("Motion_setLogicalPosi", port, axis, position));
    status.take(co_await op.request("_Motion_setRealPositionCounter", port, axis, position));
    co_return status.value();
}

template <int on>
Result turnServo(Op op, Object port, Object axis) {
    port = enter(op, port);
    co_return co_await op.request("_Motion_enableServoOn", port, axis, py::int_(on));
}

Result configureCapture(Op op, Object port, Object axis, Object type, Object mode) {
    port = enter(op, port, axis);
    op.call("_checkMCX514CaptureType", type);
    op.call("_checkMCX514CaptureMode", mode);
    setFields(recordOf(op, axis), {{"capture_type", type}, {"capture_mode", mode}});
    const int word = (isOne(mode) ? 106 : 90) + (isOne(type) ? 1 : 0);
    co_return co_await op.request("_Motion_setSYNCAction3", port, axis, py::int_(word));
}

/// A SYNC action that is switched on and off.
struct Action {
    const char* enable;
    const char* disable;
};
constexpr Action captureAction{"_Motion_enableActionSYNC3", "_Motion_disableActionSYNC3"},
    breakAction{"_Motion_enableActionSYNC0", "_Motion_disableActionSYNC0"};

template <const Action& action>
Result switchAction(Op op, Object port, Object axis, Object on) {
    port = enter(op, port, axis);
    op.call("_checkMCX514Enable", on);
    co_return co_await op.request(isOne(on) ? action.enable : action.disable, port, axis);
}

Result configureBreakPoint(Op op, Object port, Object axis, Object mode, Object polarity, Object start, Object width,
                           Object period, Object number) {
    port = enter(op, port, axis);
    op.call("_checkMCX514BreakPointMode", mode);
    op.call("_checkMCX514Polarity", polarity);
    for (const Object& each : {start, width, period, number}) checkIsInt(each);
    setFields(recordOf(op, axis), {{"breakpoint_mode", mode},
                                   {"breakpoint_polarity", polarity},
                                   {"breakpoint_start_position", start},
                                   {"breakpoint_pulse_width", width},
                                   {"breakpoint_pulse_period", period},
                                   {"breakpoint_pulse_number", number}});
    Merged status;
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

// The encoder's step counts the port anew on the chassis, so it gets the slot.
Result sendAll(Op op, Object port, Object axis) {
    const Object record = recordOf(op, axis);
    const auto setting = [&](const char* key) { return settingOf(record, key); };
    const Object slot = port + (port - devicePort(op.self(), port));
    Merged status;
    status.take(co_await applyOutput(op, port, axis));
    status.take(co_await op.request("Motion_cfgEncoder", slot, axis, setting("Encoder Z Polarity")));
    status.take(co_await op.request("_Motion_setHomeLimitEnable", port, axis, setting("Home Enable")));
    const Object forward = setting("Forward Enable"), reverse = setting("Reverse Enable");
    status.take(co_await op.request("_Motion_setLimitEnable", port, axis, forward, reverse));
    status.take(co_await op.request("_Motion_setAlarmLimitEnable", port, axis, setting("Alarm Enable")));
    status.take(co_await op.request("_Motion_setInpositionLimitEnable", port, axis, setting("Inposition Enable")));
    status.take(co_await op.request("_Motion_setHomePolarity", port, axis, setting("Home Polarity")));
    status.take(co_await op.request("_Motion_setLimitPolarity", port, axis, setting("Forward Polarity")));
    status.take(co_await op.request("_Motion_setAlarmPolarity", port, axis, setting("Alarm Polarity")));
    status.take(co_await op.request("_Motion_setInpositionPolarity", port, axis, setting("Inposition Polarity")));
    co_return status.value();
}

Result standing(Op op, Object port, Object axis) {
    port = enter(op, port, axis);
    const Object state = co_await op.request("_Motion_writeRR0", port);
    co_return readBit(state, axis) ^ py::int_(1);
}

// An input's bit as on or off. All go by the level of the forward limit.
Object inputState(const Op& op, const Object& axis, const Object& state, int bit) {
    const Object level = readBit(state, py::int_(bit));
    const bool activeLow = isZero(settingOf(recordOf(op, axis), "Forward Polarity"));
    return activeLow ? level ^ py::int_(1) : level;
}

Result homeStatus(Op op, Object port, Object axis) {
    port = enter(op, port, axis);
    const Object state = co_await op.request("_Motion_writeRR3", port, axis, py::int_(0));
    co_return inputState(op, axis, state, 1);
}

Result limitStatus(Op op, Object port, Object axis) {
    port = enter(op, port, axis);
    const Object state = co_await op.request("_Motion_writeRR3", port, axis, py::int_(0));
    py::list both;
    both.append(inputState(op, axis, state, 7));
    both.append(inputState(op, axis, state, 8));
    co_return both;
}

Result capturePoint(Op op, Object port, Object axis) {
    port = enter(op, port, axis);
    co_return co_await op.request("_Motion_getMultiPurposeRegister3", port, axis);
}

void defineChecks(ClassMaker& based) {
    const auto check = [&](const char* name, const char* argument, const char* accepted, const char* failure,
                           auto body) {
        Raises raises{"InputTypeNotCorrectError: an argument is no integer", failure};
        raises.back() += ": another value";
        based.method(name, {{argument, "int", accepted}}, "Refuses another value.", {}, std::move(raises), body);
    };
    using enum FailureId;
    check("_checkMCX514StopMode", "mode", "0 or 1", "MotionStopModeError",
          Calls<checkAccepted<MotionStopModeError, 0, 1>>{});
    check("_checkMCX514SearchType", "search_type", "0, 1 or 2", "MotionSearchTypeError",
          Calls<checkAccepted<MotionSearchTypeError, 0, 1, 2>>{});
    // The failure is that of the type: programs that catch it know it so.
    check("_checkMCX514SearchDirection", "direction", "0 or 1", "MotionSearchTypeError",
          Calls<checkAccepted<MotionSearchTypeError, 0, 1>>{});
    check("_checkMCX514Enable", "status", "0 or 1", "MotionEnableError",
          Calls<checkAccepted<MotionEnableError, 0, 1>>{});
    check("_checkMCX514StepperOutput", "status", "0 or 1", "MotionStepperOutputError",
          Calls<checkAccepted<MotionStepperOutputError, 0, 1>>{});
    check("_checkMCX514Direction", "direction", "0 or 1", "MotionDirectionError",
          Calls<checkAccepted<MotionDirectionError, 0, 1>>{});
    check("_checkMCX514Polarity", "status", "0 or 1", "MotionPolarityError",
          Calls<checkAccepted<MotionPolarityError, 0, 1>>{});
    check("_checkMCX514CaptureType", "status", "0 or 1", "MotionCaptureTypeError",
          Calls<checkAccepted<MotionCaptureTypeError, 0, 1>>{});
    check("_checkMCX514CaptureMode", "status", "0 or 1", "MotionCaptureModeError",
          Calls<checkAccepted<MotionCaptureModeError, 0, 1>>{});
    check("_checkMCX514BreakPointMode", "status", "0 or 1", "MotionBreakPointModeError",
          Calls<checkAccepted<MotionBreakPointModeError, 0, 1>>{});
    check("_checkMCX514OperationMode", "status", "0, 1 or 2", "MotionOperationModeError",
          Calls<checkAccepted<MotionOperationModeError, 0, 1, 2>>{});
    check("_checkMCX514AccelerationMode", "status", "0, 1 or 2", "MotionAccelerationModeError",
          Calls<checkAccepted<MotionAccelerationModeError, 0, 1, 2>>{});
    check("_checkMCX514MotionPort", "port", "connector as the device counts it", "MotionPortNotAvaliable",
          [](py::handle self, const Object& port) {
              checkIsInt(port);
              if (!attribute(self, "motion_dict").contains(port)) throw Failure(MotionPortNotAvaliable);
          });
    based
        .method("_checkMCX514Axis",
                {{"axis", "int", "axis"}, {"mode", "bool", "whether to look at the number too", "True"}},
                "Refuses what is no integer. An axis that there is not is told, not refused.",
                {"Any", "the class `MotionAxisError` for an axis other than 0 to 3, else True"},
                {"InputTypeNotCorrectError: an argument is no integer"},
                [](py::handle, const Object& axis, const Object& mode) -> Object {
                    checkIsInt(axis);
                    if (mode.is(py::bool_(true)) && !isOneOf(axis, {0, 1, 2, 3})) return classNamed("MotionAxisError");
                    return py::bool_(true);
                })
        .method("_getAxisHandle", {axisParameter}, "The record of an axis.",
                {"MotionAxis", "`axis_1` for axis 0 and so on; `axis_4` for any other number", "a host record"}, {},
                [](py::handle self, const Object& axis) {
                    for (const auto& [number, field] : {std::pair{0, "axis_1"}, {1, "axis_2"}, {2, "axis_3"}}) {
                        if (axis.equal(py::int_(number))) return attribute(self, field);
                    }
                    return attribute(self, "axis_4");
                });
}

void defineRegisterBits(Feature& controller) {
    for (std::size_t i = 0; i < registerBits().size(); ++i) {
        const RegisterBit& row = registerBits()[i];
        Definition definition{row.name,
                              {connector, axis, row.value},
                              std::string("Sets ") + row.what + ": bit " + std::to_string(row.bit) +
                                  " of write register " + std::to_string(row.number) + ".",
                              commandStatus,
                              entering(),
                              [](const Definition& self, Op op, Arguments given) {
                                  return writeRegisterBit(registerBits()[self.tag], std::move(op), given[0], given[1],
                                                          given[2]);
                              }};
        definition.tag = i;
        controller.add(std::move(definition));
    }
    controller
        .operation("_Motion_setLimitEnable", {connector, axis, onOff("forward_enable"), onOff("reverse_enable")},
                   "Sets the limit inputs: either one switches both on.", commandStatus, entering(),
                   Calls<setLimitEnable>{})
        .operation("_Motion_setAxisModeAndDirection",
                   {connector, axis, integer("stepper_output", "0 pulse and direction, 1 two pulses"),
                    inverse("axis_direction")},
                   "Sets the pulse output. S-curve and asymmetry are off afterwards.", commandStatus, {},
                   Calls<setOutput>{})
        .operation("_Motion_writeAcceleration",
                   {connector,
                    axis,
                    {"acceleration", "int", "pulses per second squared", "100000"},
                    {"deceleration", "int", "pulses per second squared", "100000"}},
                   "Sets both rates, and the shape that the record wants.", mergedStatus, {},
                   Calls<writeAcceleration>{})
        .operation("_Motion_writeVelocity",
                   {connector, axis, {"velocity", "int", "pulses per second; the sign is only remembered", "10000"}},
                   "Sets the speed, and a starting speed that goes with the stored acceleration.", mergedStatus,
                   {"ValueError: the stored acceleration is negative"}, Calls<writeVelocity>{})
        .operation("_Motion_enableServoOn", {connector, axis, onOff("en_servo_on")},
                   "Switches the servo output. The logical counter is rewritten with its own value.", mergedStatus,
                   entering({"@_checkMCX514Enable"}), Calls<switchServo>{})
        .operation("_Motion_sendAllConfiguration", {connector, axis},
                   "Sends the settings of an axis, all but the encoder's direction.", mergedStatus,
                   entering({"@_checkMCX514Polarity"}), Calls<sendAll>{});
}

void defineConfiguration(Feature& controller) {
    const Raises inputRaises = entering({"@_checkMCX514Enable", "@_checkMCX514Polarity"});
    controller
        .operation("Motion_open", {port}, "Makes a connector ready.", commandStatus, entering({}, false), Calls<open>{})
        .operation("Motion_close", {port}, "Ends the use of a connector; nothing is sent.", {"int", "0"},
                   entering({}, false),
                   [](Op op, Object port) -> Result {
                       enter(op, port);
                       co_return py::int_(0);
                   })
        .operation("Motion_cfgAlarm", {port, axis, onOff("en_alarm"), level("alarm_polarity")},
                   "Configures the servo alarm.", mergedStatus, inputRaises, Calls<configureInput<alarmInput>>{})
        .operation("Motion_cfgHome", {port, axis, onOff("en_home"), level("home_polarity")},
                   "Configures the home input.", mergedStatus, inputRaises, Calls<configureInput<homeInput>>{})
        .operation("Motion_cfgInposi", {port, axis, onOff("en_inposi"), level("inposi_polarity")},
                   "Configures the in-position input.", mergedStatus, inputRaises,
                   Calls<configureInput<inpositionInput>>{})
        .operation("Motion_cfgLimit", {port, axis, onOff("en_forward"), onOff("en_reverse"), level("limit_polarity")},
                   "Configures the limit inputs. The chip has one switch and one level for both.", mergedStatus,
                   inputRaises, Calls<configureLimit>{})
        .operation("Motion_cfgAxis",
                   {port, axis, integer("stepper_output", "0 pulse and direction, 1 two pulses"), inverse("axis_dir"),
                    inverse("encoder_dir"), level("servo_on_polarity")},
                   "Configures pulse output, directions and servo output.", mergedStatus,
                   entering({"@_checkMCX514StepperOutput", "@_checkMCX514Direction", "@_checkMCX514Polarity"}),
                   Calls<configureAxis>{})
        .operation("Motion_cfgEncoder", {port, axis, level("encoder_z_polarity")}, "Configures the encoder's index.",
                   commandStatus, entering({"@_checkMCX514Polarity"}), Calls<configureEncoder>{})
        .operation("Motion_cfgJerkAndAccelMode",
                   {port, axis, integer("jerk", "change of the acceleration in the chip's unit, 0 to 4294967295"),
                    integer("accel_mode", "0 trapezoid, 1 or 2 S-curve")},
                   "Remembers the shape of acceleration, which goes out with the next one. Nothing is sent.", {},
                   entering({"@_checkMCX514AccelerationMode"}), Calls<configureJerk>{})
        .operation("Motion_rstEncoderPosi", {port, axis, {"encoder_posi", "int", "position in pulses", "0"}},
                   "Sets both position counters.", mergedStatus, entering(), Calls<resetPosition>{})
        .operation("Motion_enableServoOn", {port, axis}, "Switches the servo on.", mergedStatus, entering(),
                   Calls<turnServo<1>>{})
        .operation("Motion_enableServoOff", {port, axis}, "Switches the servo off.", mergedStatus, entering(),
                   Calls<turnServo<0>>{})
        .operation("Motion_cfgCapture",
                   {port, axis, integer("capture_type", "edge, 0 or 1"),
                    integer("mode", "position that is captured, 0 or 1, in the chip's numbering")},
                   "Configures the capture of a position.", commandStatus,
                   entering({"@_checkMCX514CaptureType", "@_checkMCX514CaptureMode"}), Calls<configureCapture>{})
        .operation("Motion_enableCapture", {port, axis, onOff("en_capture")}, "Switches the capture.", commandStatus,
                   entering({"@_checkMCX514Enable"}), Calls<switchAction<captureAction>>{})
        .operation("Motion_cfgBreakPoint",
                   {port, axis, integer("mode", "0 at a position, 1 at a distance from the present one"),
                    level("breakpoint_polarity"), integer("start_posi", "first break point, in pulses"),
                    integer("pulse_width", "width in the chip's unit, 0 to 65535"),
                    integer("pulse_period", "period in the chip's unit, 0 to 65535"),
                    integer("pulse_number", "number of pulses, 0 to 65535")},
                   "Configures pulses that an axis gives out from a position on.", mergedStatus,
                   entering({"@_checkMCX514BreakPointMode", "@_checkMCX514Polarity"}), Calls<configureBreakPoint>{})
        .operation("Motion_enableBreakPoint", {port, axis, onOff("en_break")}, "Switches the break points.",
                   commandStatus, entering({"@_checkMCX514Enable"}), Calls<switchAction<breakAction>>{});
}

void defineStates(Feature& controller) {
    const Returns stands{"int", "1 when the axis stands, 0 while it drives", "the device"};
    controller
        .operation("Motion_getMoveStatus", {port, axis}, "Tells whether a move has ended.", stands, entering(),
                   Calls<standing>{})
        .operation("Motion_checkRef", {port, axis}, "Tells whether a reference search has ended.", stands, entering(),
                   Calls<standing>{})
        .operation("Motion_getHomeStatus", {port, axis},
                   "Reads the home input. Its level goes by that of the forward limit.",
                   {"int", "1 active, 0 not", "the device"}, entering(), Calls<homeStatus>{})
        .operation("Motion_getLimitStatus", {port, axis}, "Reads both limit inputs.",
                   {"list[int]", "forward and reverse, each 1 active, 0 not", "the device"}, entering(),
                   Calls<limitStatus>{})
        .operation("Motion_readCapturePoint", {port, axis}, "Reads the captured position.",
                   {"int", "position in pulses", "the device"}, entering(), Calls<capturePoint>{});
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

Raises entering(std::initializer_list<std::string> more, bool hasAxis) {
    Raises raises{"@_checkMCX514MotionPort"};
    if (hasAxis) raises.emplace_back("@_checkMCX514Axis");
    raises.insert(raises.end(), more);
    return raises;
}

Pending applyOutput(const Op& op, const Object& port, const Object& axis) {
    const Object record = recordOf(op, axis);
    return op.request("_Motion_setAxisModeAndDirection", port, axis, settingOf(record, "Stepper Output"),
                      settingOf(record, "Inverse Motion Direction"));
}

Object startingSpeed(const Object& acceleration) {
    const Object root = callObject(hostObject("math", "sqrt"), acceleration);
    return own(PyNumber_Long((root * py::float_(1.1)).ptr()));
}

Object withBits(Object word, const std::vector<Bit>& bits) {
    for (const auto& [index, value] : bits) word = writeBit(word, index, value);
    return word;
}

namespace {

// Both forms go through the constructor of their own driver.
template <bool isTwin>
void defineConstructor(Package& package) {
    ClassMaker(package.get(isTwin ? "MCX514Module_async" : "MCX514Module"))
        .method("__init__", {{"motion_dict", "dict[int, list[int]]", "connectors of the model's controllers"}},
                "Takes what the model offers.", {}, {}, [](py::handle self, const Object& connectors) {
                    setAttribute(self, "motion_dict", connectors);
                    callOf(isTwin ? "MCX514Driver_async" : "MCX514Driver", "__init__", self);
                });
}

}  // namespace

void defineMotionController(Package& package) {
    ClassMaker based = package.makeClass("MCX514Based", {},
                                         "The four-axis motion controller.\n\nWhat both forms of the feature share.");
    defineChecks(based);
    Feature controller(package, "MCX514Module", {"MCX514Driver", "MCX514Based"}, "The four-axis motion controller.");
    controller.field({"motion_dict", "dict[int, list[int]]", "connectors of the model's controllers"});
    defineConstructor<false>(package);
    defineConstructor<true>(package);
    defineRegisterBits(controller);
    defineConfiguration(controller);
    defineStates(controller);
    defineMoves(controller);
    defineInterpolations(controller);
    defineControllerFiles(controller);
}

}  // namespace zvr::python
