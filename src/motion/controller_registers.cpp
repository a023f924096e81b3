// Writes the registers of the four-axis controller: single bits, and the settings in an axis's record.
#include "motion/controller.h"

#include "models/traits.h"
#include "motion/motion.h"

namespace zvr::python {

namespace {

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
const std::vector<RegisterBit>& registerBits() {
    static const std::vector<RegisterBit> table = {
        {"_Motion_setHomeLimitEnable", onOff("home_enable"), {"Home Enable"}, 2, 3, "the home input"},
        {"_Motion_setHomePolarity", level("home_polarity"), {"Home Polarity"}, 2, 2, "the home level"},
        {"_Motion_setInpositionLimitEnable",
         onOff("inposition_enable"),
         {"Inposition Enable"},
         2,
         7,
         "the in-position input"},
        {"_Motion_setInpositionPolarity",
         level("inposition_polarity"),
         {"Inposition Polarity"},
         2,
         6,
         "the in-position level"},
        {"_Motion_setAlarmLimitEnable", onOff("alarm_enable"), {"Alarm Enable"}, 2, 9, "the servo alarm"},
        {"_Motion_setAlarmPolarity", level("alarm_polarity"), {"Alarm Polarity"}, 2, 8, "the alarm level"},
        {"_Motion_setLimitPolarity",
         level("limit_polarity"),
         {"Forward Polarity", "Reverse Polarity"},
         2,
         10,
         "the level of both limit inputs"},
        {"_Motion_setInstantLimitStop",
         integer("stop", "1 at once, 0 with deceleration"),
         {},
         2,
         12,
         "the stop at a limit"},
        {"_Motion_setEncoderDirection",
         inverse("encoder_direction"),
         {"Inverse Encoder Direction"},
         3,
         11,
         "the counting direction of the encoder"},
    };
    return table;
}

const char* readOf(int number) { return number == 2 ? "_Motion_getWR2" : "_Motion_getWR3"; }
const char* writeOf(int number) { return number == 2 ? "_Motion_writeWR2" : "_Motion_writeWR3"; }

Task writeRegisterBit(const RegisterBit& row, Op op, Object port, Object axis, Object value) {
    checkPortAndAxis(op, port, axis);
    const Object record = recordOf(op, axis);
    for (const char* key : row.settings) setSetting(record, key, value);
    if (row.settings.empty()) setAttribute(record, "stop", value);
    Object word = co_await op.request(readOf(row.number), port, axis);
    word = writeBit(word, py::int_(row.bit), value);
    co_return co_await op.request(writeOf(row.number), port, axis, word);
}

// The chip has one switch for both directions.
Task setLimitEnable(Op op, Object port, Object axis, Object forward, Object reverse) {
    checkPortAndAxis(op, port, axis);
    const Object record = recordOf(op, axis);
    setSetting(record, "Forward Enable", forward);
    setSetting(record, "Reverse Enable", reverse);
    Object word = co_await op.request("_Motion_getWR2", port, axis);
    word = withBits(word, {{11, forward | reverse}, {12, 0}});
    co_return co_await op.request("_Motion_writeWR2", port, axis, word);
}

// Clears the bits of S-curve and asymmetry too.
Task setOutput(Op op, Object port, Object axis, Object output, Object direction) {
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

Task writeAcceleration(Op op, Object port, Object axis, Object acceleration, Object deceleration) {
    const Object record = recordOf(op, axis);
    setFields(record, {{"acceleration", acceleration}, {"deceleration", deceleration}});
    const bool curved = !isZero(attribute(record, "acceleration_mode"));
    const Object jerk = attribute(record, "jerk");
    WorstStatus status;
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

Task writeVelocity(Op op, Object port, Object axis, Object velocity) {
    const Object record = recordOf(op, axis);
    setAttribute(record, "velocity", velocity);
    const Object start = startingSpeed(attribute(record, "acceleration"));
    WorstStatus status;
    status.take(co_await op.request("_Motion_setDriveSpeed", port, axis, own(PyNumber_Absolute(velocity.ptr()))));
    status.take(co_await op.request("_Motion_setInitialSpeed", port, axis, start));
    co_return status.value();
}

// The logical counter is rewritten with its own value.
Task switchServo(Op op, Object port, Object axis, Object on) {
    checkPortAndAxis(op, port, axis);
    op.call("_checkMCX514Enable", on);
    const bool activeLow = isZero(settingOf(recordOf(op, axis), "Servo On Polarity"));
    const Object level = writeBit(py::int_(0), py::int_(0), py::int_(activeLow ? 1 : 0) ^ on);
    WorstStatus status;
    status.take(co_await op.request("_Motion_setGPIOValue", port, axis, py::int_(1), level));
    const Object position = co_await op.request("Motion_getLogicalPosi", port, axis);
    status.take(co_await op.request("Motion_setLogicalPosi", port, axis, position));
    co_return status.value();
}

// The encoder's step maps the port again on the chassis, so it gets the slot.
Task sendAll(Op op, Object port, Object axis) {
    const Object record = recordOf(op, axis);
    const auto setting = [&](const char* key) { return settingOf(record, key); };
    const Object slot = port + (port - devicePort(op.self(), port));
    WorstStatus status;
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

}  // namespace

void defineRegisterAccess(Feature& controller) {
    for (const RegisterBit& row : registerBits()) {  // the table has static lifetime
        controller.operation({.name = row.name,
                              .parameters = {connector, axis, row.value},
                              .doc = std::string("Sets ") + row.what + ": bit " + std::to_string(row.bit) +
                                     " of write register " + std::to_string(row.number) + ".",
                              .returns = commandStatus,
                              .raises = enteringRaises(),
                              .body = [&row](Op op, Object port, Object axis, Object value) {
                                  return writeRegisterBit(row, std::move(op), port, axis, value);
                              }});
    }
    controller
        .operation({.name = "_Motion_setLimitEnable",
                    .parameters = {connector, axis, onOff("forward_enable"), onOff("reverse_enable")},
                    .doc = "Sets the limit inputs: either one switches both on (compatibility note 14).",
                    .returns = commandStatus,
                    .raises = enteringRaises(),
                    .body = setLimitEnable})
        .operation({.name = "_Motion_setAxisModeAndDirection",
                    .parameters = {connector, axis, integer("stepper_output", "0 pulse and direction, 1 two pulses"),
                                   inverse("axis_direction")},
                    .doc = "Sets the pulse output. S-curve and asymmetry are off afterwards.",
                    .returns = commandStatus,
                    .body = setOutput})
        .operation({.name = "_Motion_writeAcceleration",
                    .parameters = {connector,
                                   axis,
                                   {"acceleration", "int", "pulses per second squared", "100000"},
                                   {"deceleration", "int", "pulses per second squared", "100000"}},
                    .doc = "Sets both rates, and the shape that the record wants.",
                    .returns = mergedStatus,
                    .body = writeAcceleration})
        .operation({.name = "_Motion_writeVelocity",
                    .parameters = {connector,
                                   axis,
                                   {"velocity", "int", "pulses per second; the sign is only remembered", "10000"}},
                    .doc = "Sets the speed, and a starting speed that goes with the stored acceleration.",
                    .returns = mergedStatus,
                    .raises = {"ValueError: the stored acceleration is negative"},
                    .body = writeVelocity})
        .operation({.name = "_Motion_enableServoOn",
                    .parameters = {connector, axis, onOff("en_servo_on")},
                    .doc = "Switches the servo output. The logical counter is rewritten with its own value.",
                    .returns = mergedStatus,
                    .raises = enteringRaises({checkMCX514Enable}),
                    .body = switchServo})
        .operation({.name = "_Motion_sendAllConfiguration",
                    .parameters = {connector, axis},
                    .doc = "Sends the settings of an axis, all but the encoder's direction.",
                    .returns = mergedStatus,
                    .raises = enteringRaises({checkMCX514Polarity}),
                    .body = sendAll});
}

}  // namespace zvr::python
