// The stepper drive: moves that its firmware runs by itself, and the registers of its chip.
#include "core/wire/motion_codes.h"
#include "motion/motion.h"
#include "motion/records.h"

namespace zvr::python {

namespace {

constexpr int lines = 7;  // the three inputs of a port: limits and home

const Parameter port{"port", "int", "port of the drive, 0"};
const Raises portRaises{"@_checkTMC5240Port"};
const Returns writeStatus{"int", "the status as it is, 0 for done", "the device's status, byte 6 of its reply"};
const Returns registerBytes{"bytes", "the 4 bytes of the register", "the device"};

Field u32(const char* argument) { return packed<std::uint32_t>("u32", argument); }
Field i32(const char* argument) { return packed<std::int32_t>("i32", argument); }
Field lowByte(const char* argument) {
    return {argument, "low byte", [](Payload& data, py::handle v) { data.add(borrow(v.ptr()) & py::int_(255)); }};
}
Field isTrueText(const char* argument) {
    return {argument, "is \"true\"", [](Payload& data, py::handle v) { data.add(v.equal(py::str("true")) ? 1 : 0); }};
}

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

Result readAccess(const Access& access, Op op, Object port) {
    co_return co_await op.request("_Motion_read", port, py::int_(int{access.address}));
}
Result writeAccess(const Access& access, Op op, Object port, Object value) {
    co_return co_await op.request("_Motion_write", port, py::int_(int{access.address}), value);
}

void defineAccesses(Feature& drive) {
    for (std::size_t i = 0; i < std::size(accesses); ++i) {
        const auto& [name, address, argument, what] = accesses[i];
        const bool reads = argument == nullptr;
        Definition definition{
            name,
            {port},
            std::string(reads ? "Reads " : "Writes ") + what + ", register " + std::to_string(int{address}) + ".",
            reads ? registerBytes : writeStatus,
            {},
            [](const Definition& self, Op op, Arguments given) {
                const Access& access = accesses[self.tag];
                if (access.argument == nullptr) return readAccess(access, std::move(op), given[0]);
                return writeAccess(access, std::move(op), given[0], given[1]);
            }};
        definition.tag = i;
        if (!reads) definition.parameters.push_back({argument, "int", std::string(what) + ", 0 to 4294967295"});
        drive.add(std::move(definition));
    }
}

Result setRamp(Op op, Object port) {
    const Object ramp = callMethod(attribute(op.self(), "TMC5240_main_dict"), "values");
    Merged status;
    for (const py::handle each : py::list(ramp)) {
        const py::list entry = borrow(each.ptr());
        status.take(co_await op.request("_Motion_write", port, Object(entry[1]), Object(entry[0])));
    }
    co_return status.value();
}

Result alarmStatus(Op op, Object port) {
    op.call("_checkTMC5240Port", port);
    const Bytes bytes = bytesOf(co_await op.request("_Motion_getGlobalStatus", port), "register");
    const int third = byteOf(bytes, 2), fourth = byteOf(bytes, 3);
    const bool alarm = (third >> 4 & 1) != 0 || (fourth >> 2 & 1) != 0 || (fourth >> 1 & 1) != 0;
    co_return py::int_(alarm ? 1 : 0);
}

Result currentVelocity(Op op, Object port) {
    op.call("_checkTMC5240Port", port);
    co_return py::int_(wordOf(co_await op.request("_Motion_readCurrentVelocity", port)));
}

Result positions(Op op, Object port) {
    op.call("_checkTMC5240Port", port);
    py::list both;
    both.append(wordOf(co_await op.request("_Motion_readEncoderPosition", port)));
    both.append(wordOf(co_await op.request("_Motion_readCurrentPosition", port)));
    co_return both;
}

Result resetPositions(Op op, Object port, Object position) {
    op.call("_checkTMC5240Port", port);
    Merged status;
    status.take(co_await op.request("_Motion_setRampMode", port, py::int_(3)));
    status.take(co_await op.request("_Motion_resetPosition", port, position));
    status.take(co_await op.request("_Motion_setEncoderPosition", port, position));
    co_return status.value();
}

Result configureEncoder(Op op, Object port, Object direction, Object position) {
    op.call("_checkTMC5240Port", port);
    Merged status;
    status.take(co_await op.request("_Motion_resetPosition", port, position));
    status.take(co_await op.request("_Motion_setEncoderPosition", port, position));
    const py::int_ constant(isZero(direction) ? 1 : -1);
    status.take(co_await op.request("_Motion_setEncoderDirection", port, constant));
    co_return status.value();
}

Result configureDirection(Op op, Object port, Object direction) {
    op.call("_checkTMC5240Port", port);
    const py::int_ bit(4), inverse(isOne(direction) ? 1 : 0);
    Merged status;
    const Object general = co_await op.request("_Motion_getGlobalConfig", port);
    const Object newGeneral = writeBit(py::int_(wordOf(general)), bit, inverse);
    status.take(co_await op.request("_Motion_setGlobalConfig", port, newGeneral));
    const Object switches = co_await op.request("_Motion_getLimitSwitch", port);
    const Object newSwitches = writeBit(py::int_(wordOf(switches)), bit, inverse);
    status.take(co_await op.request("_Motion_setLimitSwitch", port, newSwitches));
    co_return status.value();
}

// The upper half of the register is cleared.
Result configureLimit(Op op, Object port, Object forward, Object reverse, Object polarity) {
    op.call("_checkTMC5240Port", port);
    Merged status;
    status.take(co_await op.request("_Motion_setLimitEnable", port, forward, reverse));
    status.take(co_await op.request("_Motion_setLimitPolarity", port, polarity));
    const Bytes bytes = bytesOf(co_await op.request("_Motion_getLimitSwitch", port), "register");
    const int low = isZero(polarity) ? 1 : 0, forwardOn = isOne(forward) ? 1 : 0, reverseOn = isOne(reverse) ? 1 : 0;
    const int word =
        byteOf(bytes, 2) << 8 | (byteOf(bytes, 3) & 0xF0) | low << 3 | low << 2 | reverseOn << 1 | forwardOn;
    status.take(co_await op.request("_Motion_setLimitSwitch", port, py::int_(word)));
    co_return status.value();
}

// Three bytes are cut for each value, which is one too few: it fails with the first one.
Result parameters(Op op, Object port) {
    op.call("_checkTMC5240Port", port);
    const Bytes reply = bytesOf(co_await op.exchange(MOTION_GET_PARAM, payload(port)), "reply");
    byteOf(reply, 2);
    const ByteView data = ByteView(reply).subspan(3);
    std::size_t i = 0;
    for (const py::handle entry : py::list(callMethod(attribute(op.self(), "TMC5240_default_dict"), "values"))) {
        const std::size_t from = std::min(4 * i++, data.size());
        const ByteView value = data.subspan(from, std::min<std::size_t>(3, data.size() - from));
        entry[py::int_(0)] = py::int_(readBigEndian<std::uint32_t>(value));
    }
    co_return statusOf(reply, 1);
}

Result sendAll(Op op, Object port) {
    const Object axis = attribute(op.self(), "axis");
    const auto setting = [&](const char* key) { return settingOf(axis, key); };
    Merged status;
    status.take(co_await op.request("_Motion_setEncoderDirection", port, setting("Inverse Encoder Direction")));
    status.take(co_await op.request("Motion_cfgAxisDirection", port, setting("Inverse Motion Direction")));
    const Object forward = setting("Forward Enable"), reverse = setting("Reverse Enable");
    status.take(co_await op.request("Motion_cfgLimit", port, forward, reverse, setting("Forward Polarity")));
    co_return status.value();
}

void defineBased(Package& package) {
    const Parameter acceleration{"acceleration", "int", "pulses per second squared", "100000"};
    const Parameter deceleration{"deceleration", "int", "pulses per second squared", "100000"};
    ClassMaker based =
        package.makeClass("TMC5240Based", {}, "The stepper drive.\n\nWhat both forms of the feature share.");
    based.field({"TMC5240_main_dict", "dict[str, list[int]]", "the ramp: value and register by key"})
        .field({"TMC5240_default_dict", "dict[str, list[int]]", "the chip's settings: value and register by key"});
    for (const char* field : statusFields) {
        based.field({field, "int", "bit of the chip's status, as the last register read told it"});
    }
    based.method("__init__", {acceleration, deceleration}, "Makes both maps.", {}, {}, Calls<constructMaps>{})
        .method("_TMC5240_getSPIStatus", {integer("status_byte", "the chip's status, 0 to 255")},
                "Keeps the bits of the chip's status.", {"int", "0"}, {}, Calls<keepStatus>{})
        .method("_checkTMC5240Port", {port}, "Refuses a port that the model lacks.", {},
                {"InputTypeNotCorrectError: an argument has the wrong type",
                 "PAWLPortNotAvaliable: the model has no such port"},
                [](py::handle self, const Object& port) {
                    checkIsInt(port);
                    if (!attribute(self, "pawl_dict").contains(port)) throw Failure(FailureId::PAWLPortNotAvaliable);
                });
}

void defineRegisters(Feature& drive) {
    const Parameter address{"reg_addr", "int", "register, one of the PAWL_ constants"};
    const Returns zero{"int", "0"};
    const Reply contents{nullptr, registerBytes, [](py::handle self, const Object& reply) {
                             callMethod(self, "_TMC5240_getSPIStatus", itemOf(reply, 2));
                             return restOfSequence(reply, 3);
                         }};
    const Reply everything{
        nullptr, {"bytes", "the whole reply", "the device"}, [](py::handle, const Object& reply) { return reply; }};
    // clang-format off
    drive.rows({
        {"_Motion_read", {port, address}, {}, MOTION_READ_REG, {u8("port"), u8("reg_addr")}, contents,
            "Reads a register, and keeps the chip's status."},
        {"_Motion_write", {port, address, integer("data", "0 to 4294967295")}, {}, MOTION_WRITE_REG,
            {u8("port"), u8("reg_addr"), constant(0), u32("data")}, byteAt(6, writeStatus.doc), "Writes a register."},
        {"_Motion_readDI", {integer("port", "digital port")}, {}, READ_AND_GET_DI,
            {u8("port"), constant(0), constant(lines)}, everything, "Reads the digital inputs."},
    });
    // clang-format on
    drive
        .operation("_Motion_writeDO",
                   {integer("port", "digital port"), integer("pin", "pin, 0 to 7"), integer("value", "0 or 1")},
                   "Drives a digital output.", zero, {},
                   [](Op op, Object port, Object pin, Object value) -> Result {
                       const Object mask = fillBit(py::int_(0), pin);
                       co_await op.exchange(SET_AND_WRITE_DO, payload(port, 0, mask, 0, mask * value));
                       co_return py::int_(0);
                   })
        .operation("_Motion_clearFault", {port}, "Clears the faults of the general status.", writeStatus, {},
                   [](Op op, Object port) -> Result {
                       co_return co_await op.request("_Motion_setGlobalStatus", port, py::int_(31));
                   })
        .operation("_Motion_setRamp", {port}, "Writes the ramp of `TMC5240_main_dict`.", mergedStatus, {},
                   Calls<setRamp>{})
        .operation("_Motion_setLimitEnable", {port, onOff("forward_enable"), onOff("reverse_enable")},
                   "Remembers which limits are in use; nothing is sent.", zero, {},
                   [](Op op, Object, Object forward, Object reverse) -> Result {
                       setSetting(attribute(op.self(), "axis"), "Forward Enable", forward);
                       setSetting(attribute(op.self(), "axis"), "Reverse Enable", reverse);
                       co_return py::int_(0);
                   })
        .operation("_Motion_setLimitPolarity", {port, level("limit_polarity")},
                   "Remembers the level of the limits; nothing is sent.", zero, {},
                   [](Op op, Object, Object polarity) -> Result {
                       for (const char* key : {"Forward Polarity", "Reverse Polarity"}) {
                           setSetting(attribute(op.self(), "axis"), key, polarity);
                       }
                       co_return py::int_(0);
                   })
        .operation("_Motion_getServeoOnStatus", {port}, "Has no effect; nothing is sent.", zero, portRaises,
                   [](Op op, Object port) -> Result {
                       op.call("_checkTMC5240Port", port);
                       co_return py::int_(0);
                   })
        .operation("_Motion_getInpositionStatus", {port}, "Tells whether the position was reached.",
                   {"int", "0 or 1", "the chip's status at the last register read"},
                   {"AttributeError: no register was read yet"},
                   [](Op op, Object) -> Result { co_return attribute(op.self(), "status_bit5_positionreach"); });
    defineAccesses(drive);
}

void defineDriveMoves(Feature& drive) {
    const Parameter speed = integer("speed", "pulses per second, 0 to 4294967295"),
                    acceleration = integer("acceleration", "pulses per second squared, 0 to 4294967295"),
                    deceleration = integer("deceleration", "pulses per second squared, 0 to 4294967295"),
                    searching = integer("searching_speed", "pulses per second, 0 to 4294967295"),
                    approaching = integer("approaching_speed", "pulses per second near the reference, 0 to 4294967295"),
                    offset = integer("offset", "distance to go at the end, in pulses"),
                    reset{"reset_position", "str", "\"true\" sets the position to 0 at the end"};
    const auto numbered = [](const char* name) {
        return integer(name, "in the firmware's numbering; its low byte is sent");
    };
    const auto position = [](const char* name) { return integer(name, "pulses, -2147483648 to 2147483647"); };
    const Check portCheck = calls("_checkTMC5240Port", {"port"});
    const Parameters searchArguments{
        port,   searching, approaching, acceleration, numbered("search_direction"), numbered("approach_direction"),
        offset, reset};
    const std::vector<Field> searchFields{
        u8("port"),          u32("searching_speed"),      u32("approaching_speed"),
        u32("acceleration"), lowByte("search_direction"), lowByte("approach_direction"),
        i32("offset"),       isTrueText("reset_position")};
    const Reply state{
        nullptr,
        {"tuple[int, bytes]", "state in the firmware's numbering, and the rest of the reply", "the device"},
        [](py::handle, const Object& reply) -> Object {
            return py::make_tuple(itemOf(reply, 1), restOfSequence(reply, 2));
        }};
    const Reply inputs{[](py::handle, const Bytes& data) -> Object {
                           const int word = readBigEndian<std::uint16_t>(slice(data, 1, 2));
                           py::list levels;
                           for (int bit = 0; bit < 3; ++bit) levels.append(word >> bit & 1);
                           return levels;
                       },
                       {"list[int]", "forward limit, reverse limit and home, 0 or 1", "the device"}};
    // clang-format off
    drive.rows({
        {"Motion_startVelocticyMove", {port, speed, numbered("dir"), acceleration, deceleration},
            {portCheck, isInt("speed"), isInt("acceleration"), isInt("deceleration")}, MOTION_START_V_MOVE,
            {u8("port"), u32("speed"), u32("acceleration"), u32("deceleration"), lowByte("dir")}, status(1),
            "Starts a move at a speed."},
        {"Motion_startPositionMove", {port, position("position"), speed, acceleration, deceleration,
                                      integer("mode", "in the firmware's numbering, 0 to 255")},
            {portCheck, isInt("speed"), isInt("acceleration"), isInt("deceleration")}, MOTION_START_P_MOVE,
            {u8("port"), i32("position"), u32("speed"), u32("acceleration"), u32("deceleration"), u8("mode")},
            status(1), "Starts a move to a position."},
        {"Motion_startScanMove", {port, position("position_0"), position("position_1"), speed, acceleration},
            {portCheck, isInt("speed"), isInt("acceleration")}, MOTION_START_SCAN_MOVE,
            {u8("port"), i32("position_0"), i32("position_1"), u32("speed"), u32("acceleration")}, status(1),
            "Starts a move to and fro between two positions."},
        {"Motion_startFindLimit", {port, numbered("mode"), searching, approaching, acceleration, offset, reset},
            {portCheck}, MOTION_START_FIND_END,
            {u8("port"), lowByte("mode"), u32("searching_speed"), u32("approaching_speed"), u32("acceleration"),
             i32("offset"), isTrueText("reset_position")}, status(1), "Starts the search of a limit."},
        {"Motion_startFindHome", searchArguments, {portCheck}, MOTION_START_FIND_HOME, searchFields, status(1),
            "Starts the search of the home input."},
        {"Motion_startFindZPolarity", searchArguments, {portCheck}, MOTION_START_FIND_Z, searchFields, status(1),
            "Starts the search of the encoder's index."},
        {"Motion_getProcessState", {port}, {portCheck}, MOTION_GET_PROC_STATE, {u8("port")}, state,
            "Reads the state of the move or search."},
        {"Motion_stopProcess", {port}, {portCheck}, MOTION_STOP_PROC, {u8("port")}, status(1),
            "Stops the move or search."},
        {"Motion_resetFactory", {port}, {portCheck}, MOTION_RESET_FACTORY, {u8("port")}, status(1),
            "Sets the drive's parameters to the factory's."},
        {"Motion_getLimitStatus", {port}, {portCheck}, READ_AND_GET_DI,
            {constant(1), constant(0), constant(lines)}, inputs, "Reads limits and home, from digital port 1."},
    });
    // clang-format on
}

template <int level>
Result switchServo(Op op, Object port) {
    op.call("_checkTMC5240Port", port);
    co_return co_await op.request("_Motion_writeDO", py::int_(2), py::int_(0), py::int_(level));
}

Result touch(Op op, Object port) {
    op.call("_checkTMC5240Port", port);
    co_return py::int_(0);
}

void defineControl(Feature& drive) {
    const Returns zero{"int", "0"};
    const Parameter position{"encoder_posi", "int", "position in pulses, 0 to 4294967295"};
    drive.operation("Motion_open", {port}, "Has no effect; nothing is sent.", zero, portRaises, Calls<touch>{})
        .operation("Motion_close", {port}, "Has no effect; nothing is sent.", zero, portRaises, Calls<touch>{})
        .operation("Motion_enableServoOn", {port}, "Switches the servo on, by digital port 2.", zero, portRaises,
                   Calls<switchServo<0>>{})
        .operation("Motion_enableServoOff", {port}, "Switches the servo off, by digital port 2.", zero, portRaises,
                   Calls<switchServo<1>>{})
        .operation("Motion_getAlarmStatus", {port}, "Tells whether the chip reports a fault.",
                   {"int", "1 for a fault, else 0", "the device"}, portRaises, Calls<alarmStatus>{})
        .operation("Motion_readCurrentVelocity", {port}, "Reads the speed.",
                   {"int", "the register as it is, without sign", "the device"}, portRaises, Calls<currentVelocity>{})
        .operation("Motion_readEncoderPosition", {port}, "Reads the positions of the encoder and of the motor.",
                   {"list[int]", "both in pulses, without sign", "the device"}, portRaises, Calls<positions>{})
        .operation("Motion_rstEncoderPosi", {port, position.withDefault("0")}, "Sets both positions, and holds.",
                   mergedStatus, portRaises, Calls<resetPositions>{})
        .operation("Motion_cfgEncoder",
                   {port, integer("encoder_dir", "0; anything else fails after the positions are set"), position},
                   "Sets both positions and the encoder's constant.", mergedStatus,
                   {"@_checkTMC5240Port", "OverflowError: `encoder_dir` is not 0"}, Calls<configureEncoder>{})
        .operation("Motion_cfgAxisDirection", {port, inverse("axis_dir")},
                   "Sets the direction of the motor and of its limits.", mergedStatus, portRaises,
                   Calls<configureDirection>{})
        .operation("Motion_cfgLimit", {port, onOff("en_forward"), onOff("en_reverse"), level("limit_polarity")},
                   "Configures the limit switches.", mergedStatus, portRaises, Calls<configureLimit>{})
        .operation("Motion_getParameters", {port}, "Reads the parameters into `TMC5240_default_dict`.",
                   status(1).returns, {"@_checkTMC5240Port", "struct.error: always, as a value is cut too short"},
                   Calls<parameters>{})
        .operation("_Motion_sendAllConfiguration", {port}, "Sends directions and limits of the settings.", mergedStatus,
                   portRaises, Calls<sendAll>{});
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
