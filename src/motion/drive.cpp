// The stepper drive: moves that its firmware runs by itself, and the registers of its chip.
#include "motion/drive.h"
#include "core/wire/motion_codes.h"
#include "motion/motion.h"
#include "motion/records.h"

namespace zvr::python {

namespace {

const Parameter& port = drivePort;
const Definition& checkPort = checkDrivePort;
const Returns writeStatus{"int", "the status as it is, 0 for done", "the device's status, byte 6 of its reply"};
const Returns registerBytes{"bytes", "the 4 bytes of the register", "the device"};

const Raises portRaises{checkPort};

void put(py::dict& map, const char* key, PawlRegister address, const Object& value) {
    py::list entry;
    entry.append(value);
    entry.append(py::int_(int{address}));
    map[key] = entry;
}

void constructMaps(py::handle self, const Object& acceleration, const Object& deceleration) {
    py::dict ramp, settings;
    put(ramp, "vstart_23", PAWL_23_VSTART, py::int_(0));
    put(ramp, "vstop_2B", PAWL_2B_VSTOP, py::int_(500));
    put(ramp, "A1_x24", PAWL_24_A1, acceleration);
    put(ramp, "A2_x2F", PAWL_2F_A2, acceleration);
    put(ramp, "AMAX_x26", PAWL_26_AMAX, acceleration);
    put(ramp, "D1_x2A", PAWL_2A_D1, deceleration);
    put(ramp, "D2_x30", PAWL_30_D2, deceleration);
    put(ramp, "DMAX_x28", PAWL_28_DMAX, deceleration);
    for (const auto& [key, address, value] : pawlSettings) put(settings, key, address, py::int_(value));
    setAttribute(self, "TMC5240_main_dict", ramp);
    setAttribute(self, "TMC5240_default_dict", settings);
}

constexpr std::array statusFields = {"status_bit0_resetflag",  "status_bit1_driver_err",    "status_bit2_sg2",
                                     "status_bit3_standstill", "status_bit4_velocityreach", "status_bit5_positionreach",
                                     "status_bit6_stopl",      "status_bit7_stopr"};

int keepStatus(py::handle self, const Object& status) {
    for (std::size_t bit = 0; bit < statusFields.size(); ++bit) {
        setAttribute(self, statusFields[bit], readBit(status, py::int_(bit)));
    }
    return 0;
}

std::uint32_t wordOf(const Object& bytes) {
    return readBigEndian<std::uint32_t>(slice(bytesOf(bytes, "register"), 0, 4));
}

/// An operation that is one access to one register; without an argument it reads.
struct Access {
    const char* name;
    PawlRegister address;
    const char* argument;
    const char* what;
};
constexpr Access accesses[] = {
    {"_Motion_setGlobalConfig", PAWL_00_GCONF, "value", "the general configuration"},
    {"_Motion_getGlobalConfig", PAWL_00_GCONF, nullptr, "the general configuration"},
    {"_Motion_setGlobalStatus", PAWL_01_GSTAT, "value", "the general status"},
    {"_Motion_getGlobalStatus", PAWL_01_GSTAT, nullptr, "the general status"},
    {"_Motion_setRampMode", PAWL_20_RAMPMODE, "ramp_mode", "the ramp mode"},
    {"_Motion_resetPosition", PAWL_21_XACTUAL, "position", "the position"},
    {"_Motion_readCurrentPosition", PAWL_21_XACTUAL, nullptr, "the position"},
    {"_Motion_readCurrentVelocity", PAWL_22_VACTUAL, nullptr, "the speed"},
    {"_Motion_setLimitSwitch", PAWL_34_SWMODE, "value", "the mode of the limit switches"},
    {"_Motion_getLimitSwitch", PAWL_34_SWMODE, nullptr, "the mode of the limit switches"},
    {"_Motion_setEncoderPosition", PAWL_39_XENC, "position", "the encoder's position"},
    {"_Motion_readEncoderPosition", PAWL_39_XENC, nullptr, "the encoder's position"},
    {"_Motion_setEncoderDirection", PAWL_3A_ENC_CONST, "direction", "the encoder's constant"},
    {"_Motion_readEncoderDirection", PAWL_3A_ENC_CONST, nullptr, "the encoder's constant"},
};

void defineAccesses(Feature& drive) {
    for (const auto& [name, address, argument, what] : accesses) {
        const std::string which = std::string(what) + ", register " + std::to_string(int{address}) + ".";
        if (argument == nullptr) {
            drive.operation({.name = name,
                             .parameters = {port},
                             .doc = "Reads " + which,
                             .returns = registerBytes,
                             .body = [address = address](Op op, Object port) -> Task {
                                 co_return co_await op.request("_Motion_read", port, py::int_(int{address}));
                             }});
        } else {
            drive.operation({.name = name,
                             .parameters = {port, {argument, "int", std::string(what) + ", 0 to 4294967295"}},
                             .doc = "Writes " + which,
                             .returns = writeStatus,
                             .body = [address = address](Op op, Object port, Object value) -> Task {
                                 co_return co_await op.request("_Motion_write", port, py::int_(int{address}), value);
                             }});
        }
    }
}

Task setRamp(Op op, Object port) {
    const Object ramp = callMethod(attribute(op.self(), "TMC5240_main_dict"), "values");
    WorstStatus status;
    for (const py::handle each : py::list(ramp)) {
        const py::list entry = borrow(each.ptr());
        status.take(co_await op.request("_Motion_write", port, Object(entry[1]), Object(entry[0])));
    }
    co_return status.value();
}

Task alarmStatus(Op op, Object port) {
    op.call("_checkTMC5240Port", port);
    const Bytes bytes = bytesOf(co_await op.request("_Motion_getGlobalStatus", port), "register");
    const int third = byteOf(bytes, 2), fourth = byteOf(bytes, 3);
    const bool alarm = (third >> 4 & 1) != 0 || (fourth >> 2 & 1) != 0 || (fourth >> 1 & 1) != 0;
    co_return py::int_(alarm ? 1 : 0);
}

Task currentVelocity(Op op, Object port) {
    op.call("_checkTMC5240Port", port);
    co_return py::int_(wordOf(co_await op.request("_Motion_readCurrentVelocity", port)));
}

Task positions(Op op, Object port) {
    op.call("_checkTMC5240Port", port);
    py::list both;
    both.append(wordOf(co_await op.request("_Motion_readEncoderPosition", port)));
    both.append(wordOf(co_await op.request("_Motion_readCurrentPosition", port)));
    co_return both;
}

Task resetPositions(Op op, Object port, Object position) {
    op.call("_checkTMC5240Port", port);
    WorstStatus status;
    status.take(co_await op.request("_Motion_setRampMode", port, py::int_(3)));
    status.take(co_await op.request("_Motion_resetPosition", port, position));
    status.take(co_await op.request("_Motion_setEncoderPosition", port, position));
    co_return status.value();
}

Task configureEncoder(Op op, Object port, Object direction, Object position) {
    op.call("_checkTMC5240Port", port);
    WorstStatus status;
    status.take(co_await op.request("_Motion_resetPosition", port, position));
    status.take(co_await op.request("_Motion_setEncoderPosition", port, position));
    const py::int_ constant(isZero(direction) ? 1 : -1);  // Compat 16: the register has no sign
    status.take(co_await op.request("_Motion_setEncoderDirection", port, constant));
    co_return status.value();
}

Task configureDirection(Op op, Object port, Object direction) {
    op.call("_checkTMC5240Port", port);
    const py::int_ bit(4), inverse(isOne(direction) ? 1 : 0);
    WorstStatus status;
    const Object general = co_await op.request("_Motion_getGlobalConfig", port);
    const Object newGeneral = writeBit(py::int_(wordOf(general)), bit, inverse);
    status.take(co_await op.request("_Motion_setGlobalConfig", port, newGeneral));
    const Object switches = co_await op.request("_Motion_getLimitSwitch", port);
    const Object newSwitches = writeBit(py::int_(wordOf(switches)), bit, inverse);
    status.take(co_await op.request("_Motion_setLimitSwitch", port, newSwitches));
    co_return status.value();
}

// The upper half of the register is cleared.
Task configureLimit(Op op, Object port, Object forward, Object reverse, Object polarity) {
    op.call("_checkTMC5240Port", port);
    WorstStatus status;
    status.take(co_await op.request("_Motion_setLimitEnable", port, forward, reverse));
    status.take(co_await op.request("_Motion_setLimitPolarity", port, polarity));
    const Bytes bytes = bytesOf(co_await op.request("_Motion_getLimitSwitch", port), "register");
    const int low = isZero(polarity) ? 1 : 0, forwardOn = isOne(forward) ? 1 : 0, reverseOn = isOne(reverse) ? 1 : 0;
    const int word =
        byteOf(bytes, 2) << 8 | (byteOf(bytes, 3) & 0xF0) | low << 3 | low << 2 | reverseOn << 1 | forwardOn;
    status.take(co_await op.request("_Motion_setLimitSwitch", port, py::int_(word)));
    co_return status.value();
}

// Compat 15: three bytes are sliced for each value, one too few, so it fails on the first one.
Task parameters(Op op, Object port) {
    op.call("_checkTMC5240Port", port);
    const Object reply = co_await exchange(op, MOTION_GET_PARAM, payload(port));
    const Bytes bytes = bytesOf(reply, "reply");
    byteOf(bytes, 2);
    const ByteView data = ByteView(bytes).subspan(3);
    std::size_t i = 0;
    for (const py::handle entry : py::list(callMethod(attribute(op.self(), "TMC5240_default_dict"), "values"))) {
        const std::size_t from = std::min(4 * i++, data.size());
        const ByteView value = data.subspan(from, std::min<std::size_t>(3, data.size() - from));
        entry[py::int_(0)] = py::int_(readBigEndian<std::uint32_t>(value));
    }
    co_return statusOf(op, MOTION_GET_PARAM, reply);
}

Task sendAll(Op op, Object port) {
    const Object axis = attribute(op.self(), "axis");
    const auto setting = [&](const char* key) { return settingOf(axis, key); };
    WorstStatus status;
    status.take(co_await op.request("_Motion_setEncoderDirection", port, setting("Inverse Encoder Direction")));
    status.take(co_await op.request("Motion_cfgAxisDirection", port, setting("Inverse Motion Direction")));
    const Object forward = setting("Forward Enable"), reverse = setting("Reverse Enable");
    status.take(co_await op.request("Motion_cfgLimit", port, forward, reverse, setting("Forward Polarity")));
    co_return status.value();
}

Task touch(Op op, Object port) {
    op.call("_checkTMC5240Port", port);
    co_return py::int_(0);
}

void defineBased(Package& package) {
    const Parameter acceleration{"acceleration", "int", "pulses per second squared", "100000"};
    const Parameter deceleration{"deceleration", "int", "pulses per second squared", "100000"};
    ClassMaker based =
        package.makeClass("TMC5240Based", {}, "The stepper drive.\n\nWhat both forms of the feature share.");
    based.field({"TMC5240_main_dict", "dict[str, list[int]]", "the ramp: value and register by key"})
        .field({"TMC5240_default_dict", "dict[str, list[int]]", "the chip's settings: value and register by key"});
    for (const char* field : statusFields) {
        based.field({field, "int", "bit of the chip's status, as of the last register read"});
    }
    based
        .method({.name = "__init__",
                 .parameters = {acceleration, deceleration},
                 .doc = "Makes both maps.",
                 .body = constructMaps})
        .method({.name = "_TMC5240_getSPIStatus",
                 .parameters = {integer("status_byte", "the chip's status, 0 to 255")},
                 .doc = "Keeps the bits of the chip's status.",
                 .returns = {"int", "0"},
                 .body = keepStatus})
        .method(checkPort);
}

void defineRegisters(Feature& drive) {
    const Parameter address{"reg_addr", "int", "register, one of the PAWL_ constants"};
    const Returns zero{"int", "0"};
    const Reply contents{nullptr, registerBytes, [](const Op& op, const SentCommand&, const Object& reply) {
                             callMethod(op.self(), "_TMC5240_getSPIStatus", itemOf(reply, 2));
                             return restOfSequence(reply, 3);
                         }};
    const Reply everything{nullptr,
                           {"bytes", "the whole reply", "the device"},
                           [](const Op&, const SentCommand&, const Object& reply) { return reply; }};
    drive.operations({
        {.name = "_Motion_read",
         .sends = MOTION_READ_REG,
         .fields = {port | u8, address | u8},
         .reply = contents,
         .doc = "Reads a register, and keeps the chip's status."},
        {.name = "_Motion_write",
         .sends = MOTION_WRITE_REG,
         .fields = {port | u8, address | u8, constant(0), integer("data", "0 to 4294967295") | u32},
         .reply = byteAt(6, writeStatus.doc),
         .doc = "Writes a register."},
        {.name = "_Motion_readDI",
         .sends = READ_AND_GET_DI,
         .fields = {integer("port", "digital port") | u8, constant(0), constant(lines)},
         .reply = everything,
         .doc = "Reads the digital inputs."},
    });
    drive
        .operation(
            {.name = "_Motion_writeDO",
             .parameters = {integer("port", "digital port"), integer("pin", "pin, 0 to 7"), integer("value", "0 or 1")},
             .doc = "Drives a digital output.",
             .returns = zero,
             .body = [](Op op, Object port, Object pin, Object value) -> Task {
                 const Object mask = fillBit(py::int_(0), pin);
                 co_await exchange(op, SET_AND_WRITE_DO, payload(port, 0, mask, 0, mask * value));
                 co_return py::int_(0);
             }})
        .operation({.name = "_Motion_clearFault",
                    .parameters = {port},
                    .doc = "Clears the faults of the general status.",
                    .returns = writeStatus,
                    .body = [](Op op, Object port) -> Task {
                        co_return co_await op.request("_Motion_setGlobalStatus", port, py::int_(31));
                    }})
        .operation({.name = "_Motion_setRamp",
                    .parameters = {port},
                    .doc = "Writes the ramp of `TMC5240_main_dict`.",
                    .returns = mergedStatus,
                    .body = setRamp})
        .operation({.name = "_Motion_setLimitEnable",
                    .parameters = {port, onOff("forward_enable"), onOff("reverse_enable")},
                    .doc = "Stores which limits are in use; nothing is sent.",
                    .returns = zero,
                    .body = [](Op op, Object, Object forward, Object reverse) -> Task {
                        setSetting(attribute(op.self(), "axis"), "Forward Enable", forward);
                        setSetting(attribute(op.self(), "axis"), "Reverse Enable", reverse);
                        co_return py::int_(0);
                    }})
        .operation({.name = "_Motion_setLimitPolarity",
                    .parameters = {port, level("limit_polarity")},
                    .doc = "Stores the level of the limits; nothing is sent.",
                    .returns = zero,
                    .body = [](Op op, Object, Object polarity) -> Task {
                        for (const char* key : {"Forward Polarity", "Reverse Polarity"}) {
                            setSetting(attribute(op.self(), "axis"), key, polarity);
                        }
                        co_return py::int_(0);
                    }})
        .operation({.name = "_Motion_getServeoOnStatus",
                    .parameters = {port},
                    .doc = "Has no effect; nothing is sent.",
                    .returns = zero,
                    .raises = portRaises,
                    .body = touch})
        .operation(
            {.name = "_Motion_getInpositionStatus",
             .parameters = {port},
             .doc = "Reads whether the position was reached.",
             .returns = {"int", "0 or 1", "the chip's status at the last register read"},
             .raises = {"AttributeError: no register was read yet"},
             .body = [](Op op, Object) -> Task { co_return attribute(op.self(), "status_bit5_positionreach"); }});
    defineAccesses(drive);
}

Task switchServo(Op op, Object port, int level) {
    op.call("_checkTMC5240Port", port);
    co_return co_await op.request("_Motion_writeDO", py::int_(2), py::int_(0), py::int_(level));
}

void defineControl(Feature& drive) {
    const Returns zero{"int", "0"};
    const Parameter position{"encoder_posi", "int", "position in pulses, 0 to 4294967295"};
    drive
        .operation({.name = "Motion_open",
                    .parameters = {port},
                    .doc = "Has no effect; nothing is sent.",
                    .returns = zero,
                    .raises = portRaises,
                    .body = touch})
        .operation({.name = "Motion_close",
                    .parameters = {port},
                    .doc = "Has no effect; nothing is sent.",
                    .returns = zero,
                    .raises = portRaises,
                    .body = touch})
        .operation({.name = "Motion_enableServoOn",
                    .parameters = {port},
                    .doc = "Switches the servo on, by digital port 2.",
                    .returns = zero,
                    .raises = portRaises,
                    .body = [](Op op, Object port) { return switchServo(std::move(op), port, 0); }})
        .operation({.name = "Motion_enableServoOff",
                    .parameters = {port},
                    .doc = "Switches the servo off, by digital port 2.",
                    .returns = zero,
                    .raises = portRaises,
                    .body = [](Op op, Object port) { return switchServo(std::move(op), port, 1); }})
        .operation({.name = "Motion_getAlarmStatus",
                    .parameters = {port},
                    .doc = "Reads whether the chip reports a fault.",
                    .returns = {"int", "1 for a fault, else 0", "the device"},
                    .raises = portRaises,
                    .body = alarmStatus})
        .operation({.name = "Motion_readCurrentVelocity",
                    .parameters = {port},
                    .doc = "Reads the speed.",
                    .returns = {"int", "the register as it is, without sign (compatibility note 17)", "the device"},
                    .raises = portRaises,
                    .body = currentVelocity})
        .operation({.name = "Motion_readEncoderPosition",
                    .parameters = {port},
                    .doc = "Reads the positions of the encoder and of the motor.",
                    .returns = {"list[int]", "both in pulses, without sign (compatibility note 17)", "the device"},
                    .raises = portRaises,
                    .body = positions})
        .operation({.name = "Motion_rstEncoderPosi",
                    .parameters = {port, position.withDefault("0")},
                    .doc = "Sets both positions, and holds.",
                    .returns = mergedStatus,
                    .raises = portRaises,
                    .body = resetPositions})
        .operation({.name = "Motion_cfgEncoder",
                    .parameters = {port, integer("encoder_dir", "0; anything else fails after the positions are set"),
                                   position},
                    .doc = "Sets both positions and the encoder's constant (compatibility note 16).",
                    .returns = mergedStatus,
                    .raises = {checkPort, "OverflowError: `encoder_dir` is not 0"},
                    .body = configureEncoder})
        .operation({.name = "Motion_cfgAxisDirection",
                    .parameters = {port, inverse("axis_dir")},
                    .doc = "Sets the direction of the motor and of its limits.",
                    .returns = mergedStatus,
                    .raises = portRaises,
                    .body = configureDirection})
        .operation({.name = "Motion_cfgLimit",
                    .parameters = {port, onOff("en_forward"), onOff("en_reverse"), level("limit_polarity")},
                    .doc = "Configures the limit switches.",
                    .returns = mergedStatus,
                    .raises = portRaises,
                    .body = configureLimit})
        .operation({.name = "Motion_getParameters",
                    .parameters = {port},
                    .doc = "Reads the parameters into `TMC5240_default_dict`.",
                    .returns = status(1).returns,
                    .raises = {checkPort, "struct.error: always, as a value is cut too short (compatibility note 15)"},
                    .body = parameters})
        .operation({.name = "_Motion_sendAllConfiguration",
                    .parameters = {port},
                    .doc = "Sends directions and limits of the settings.",
                    .returns = mergedStatus,
                    .raises = portRaises,
                    .body = sendAll});
}

}  // namespace

void defineMotionDrive(Package& package) {
    const FieldDoc ports{"pawl_dict", "dict[int, list[int]]", "ports of the model's drive"};
    defineBased(package);
    Feature drive(package, "TMC5240Module", {"Packet", "MotionAxis", "TMC5240Based"}, "The stepper drive.");
    drive.field(ports)
        .field({"axis", "MotionAxis", "record of the axis"})
        .field({"motion_ini", "MotionInifile", "texts of the settings in a file"})
        .constructor({{ports.name, ports.type, ports.doc}}, [](py::handle self, const Object& ports) {
            const Object axis = makeRecord("MotionAxis");
            setAttribute(self, "pawl_dict", ports);
            setAttribute(self, "axis", axis);
            setAttribute(self, "motion_ini", makeRecord("MotionInifile"));
            callOf("TMC5240Based", "__init__", self, attribute(axis, "acceleration"), attribute(axis, "deceleration"));
        });
    defineRegisters(drive);
    defineDriveMoves(drive);
    defineControl(drive);
    defineDriveFiles(drive);
}

}  // namespace zvr::python
