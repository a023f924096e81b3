// The flat layer over the motion controller's chip: one operation for each of its commands. They check nothing. A
// request holds connector, sub-command, axis byte and four data bytes; its reply repeats the first three.
#include <algorithm>

#include "core/wire/motion_codes.h"
#include "models/traits.h"
#include "motion/controller.h"
#include "motion/motion.h"

namespace zvr::python {

namespace {

constexpr std::size_t statusPlace = 6;

const Parameter& port = connector;
const Parameter axis{"axis", "int", "axis, 0 to 3, sent as a mask"};

/// The type of a command's four data bytes, or of its reply's value.
enum class Data { none, u32, i32, u16, i16, flag };

/// One command of the chip; `what` is its description.
struct ChipCommand {
    MotionCode code;
    std::string name;  ///< without its prefix
    std::string what;
    Data data = Data::none;
    std::string argument = {};
};

/// Commands with the same axis byte and kind of effect.
struct Family {
    bool perAxis;
    bool reads;
    const char* verb;
    std::vector<ChipCommand> commands;
    bool switches = false;  ///< each with one bit
};

Object maskOfAxis(const Object& axis) {
    if (PyNumber_Check(axis.ptr()) == 0) refuseType("axis", "a number", axis);
    if (PyIndex_Check(axis.ptr()) != 0 && axis >= py::int_(mostBits)) {
        throw std::overflow_error("axis: the number is too large");
    }
    const Object power = own(PyNumber_Power(py::int_(2).ptr(), axis.ptr(), Py_None));
    return own(PyNumber_Long(power.ptr()));
}

Field codeField(MotionCode code) {
    const auto row = std::ranges::find(motionCodes, int{code}, &CommandName::code);
    return constant(code, std::string(row->name));
}

constexpr Encoding axisMask{"mask",
                            [](Payload& data, py::handle axis, int) { data.add(maskOfAxis(borrow(axis.ptr()))); }};

std::vector<Field> dataFields(Data data, const Parameter& argument) {
    const Field zero = constant(0);
    switch (data) {
        case Data::none: return {zero, zero, zero, zero};
        case Data::u32: return {argument | u32};
        case Data::i32: return {argument | i32};
        case Data::u16: return {zero, zero, argument | u16};
        case Data::i16: return {zero, zero, argument | i16};
        case Data::flag: break;
    }
    return {zero, zero, zero, argument | u8};
}

const char* rangeOf(Data data) {
    switch (data) {
        case Data::u32: return "0 to 4294967295";
        case Data::i32: return "-2147483648 to 2147483647";
        case Data::u16: return "0 to 65535";
        case Data::i16: return "-32768 to 32767";
        default: return "0 or 1";
    }
}

Reply valueOf(Data data, const std::string& what) {
    const std::string doc = what + ", " + rangeOf(data) + "; a refusal cannot be distinguished from a value";
    if (data == Data::i32) return numberAt<std::int32_t>(3, doc);
    return data == Data::u32 ? numberAt<std::uint32_t>(3, doc) : numberAt<std::uint16_t>(5, doc);
}

Request requestOf(const Family& family, ChipCommand command) {
    if (family.switches) {
        command.data = Data::flag;
        command.argument = "on_state";
    }
    Request request{.name = "_Motion_" + command.name,
                    .sends = MOTION,
                    .fields = {port | u8, codeField(command.code), family.perAxis ? axis | axisMask : constant(0)},
                    .reply = family.reads ? valueOf(command.data, command.what) : status(statusPlace),
                    .doc = family.verb + command.what + "."};
    const Parameter argument{command.argument, "int", command.what + ", " + rangeOf(command.data)};
    for (Field& field : dataFields(family.reads ? Data::none : command.data, argument)) {
        request.fields.push_back(std::move(field));
    }
    return request;
}

const std::vector<Family>& families() {
    using enum Data;
    static const std::vector<Family> table = {
        {true,
         false,
         "Sets ",
         {{MOTION_00_JK, "setAccelerationJerk", "the change of the acceleration, in the chip's unit", u32, "jerk"},
          {MOTION_01_DJ, "setDecelerationJerk", "the change of the deceleration, in the chip's unit", u32, "jerk"},
          {MOTION_02_AC, "setAcceleration", "the acceleration, in pulses per second squared", u32, "acceleration"},
          {MOTION_03_DC, "setDeceleration", "the deceleration, in pulses per second squared", u32, "deceleration"},
          {MOTION_04_SV, "setInitialSpeed", "the starting speed, in pulses per second", u32, "speed"},
          {MOTION_05_DV, "setDriveSpeed", "the driving speed, in pulses per second", u32, "speed"},
          {MOTION_06_TP, "setDrivePositionFinishPoint", "the distance or finish point, in pulses", i32, "position"},
          {MOTION_07_DP, "setManualDecelerationPoint", "where a manual deceleration begins, in pulses", u32, "point"},
          {MOTION_08_CP, "setCircularCenterPoint", "the centre of an arc, in pulses", i32, "position"},
          {MOTION_0A_RP, "setRealPositionCounter", "the encoder's counter, in pulses", i32, "position"},
          {MOTION_0B_SP, "setSoftwareLimitP", "the forward limit of the software, in pulses", i32, "position"},
          {MOTION_0C_SM, "setSoftwareLimitM", "the reverse limit of the software, in pulses", i32, "position"},
          {MOTION_0E_LX, "setLogicalCounterMaxValue", "where the logical counter wraps, in pulses", u32, "value"},
          {MOTION_0F_RX, "setRealCounterMaxValue", "where the encoder's counter wraps, in pulses", u32, "value"},
          {MOTION_10_MR0, "setMultiPurposeRegister0", "multi-purpose register 0", i32, "value"},
          {MOTION_11_MR1, "setMultiPurposeRegister1", "multi-purpose register 1", i32, "value"},
          {MOTION_12_MR2, "setMultiPurposeRegister2", "multi-purpose register 2", i32, "value"},
          {MOTION_13_MR3, "setMultiPurposeRegister3", "multi-purpose register 3", i32, "value"},
          {MOTION_14_HV, "setHomeSearchSpeed", "the speed near the reference, in pulses per second", u32, "speed"},
          {MOTION_15_IV, "setIncreasingOrDecreasingSpeed", "the step of the speed, in pulses a second", u32, "speed"},
          {MOTION_16_TM, "setTimer", "the timer, in the chip's unit", u32, "value"},
          {MOTION_0D_AO, "setAccelerationCounterOffset", "the offset of the acceleration counter", i16, "offset"},
          // Compat 8: the timer's code.
          {MOTION_16_TM, "splitPulse2", "the timer instead of the number of split pulses (compatibility note 8)", u16,
           "pulse_number"},
          {MOTION_20_MRM, "setMultiPurposeMode", "the mode of the multi-purpose registers", u16, "mode"},
          {MOTION_22_P2M, "setPIOSignal2", "the second word of signal functions", u16, "state"},
          {MOTION_23_H1M, "setAutoHomeSearchMode1", "the first mode word of the reference search", u16, "mode"},
          {MOTION_24_H2M, "setAutoHomeSearchMode2", "the second mode word of the reference search", u16, "mode"},
          {MOTION_25_FLM, "setInputSignalFilterMode", "the input filters", u16, "mode"},
          {MOTION_26_S0M, "setSYNCAction0", "SYNC action 0", u16, "action"},
          {MOTION_27_S1M, "setSYNCAction1", "SYNC action 1", u16, "action"},
          {MOTION_28_S2M, "setSYNCAction2", "SYNC action 2", u16, "action"},
          {MOTION_29_S3M, "setSYNCAction3", "SYNC action 3", u16, "action"},
          {MOTION_E1_WR1, "writeWR1", "write register 1", u16, "state"},
          {MOTION_E2_WR2, "writeWR2", "write register 2", u16, "state"},
          {MOTION_E3_WR3, "writeWR3", "write register 3", u16, "state"}}},
        {false,
         false,
         "Sets ",
         {{MOTION_19_TX, "setMaxInterpolationPoint", "the greatest finish point of an interpolation", u32, "point"},
          {MOTION_1A_HLN, "setHelicalRotationNumber", "the number of turns of a helix", u16, "rotation_number"},
          {MOTION_1B_HLV, "setHelicalCalculation", "the calculated value of a helix", u32, "value"},
          {MOTION_2A_IPM, "setInterpolationMode", "the mode word of the interpolation", u16, "mode"},
          {MOTION_E0_WR0, "writeWR0", "write register 0", u16, "state"},
          {MOTION_E4_WR4, "writeWR4", "write register 4", u16, "state"},
          {MOTION_E5_WR5, "writeWR5", "write register 5", u16, "state"},
          {MOTION_E6_WR6, "writeWR6", "write register 6", u16, "state"},
          {MOTION_E7_WR7, "writeWR7", "write register 7", u16, "state"}}},
        {true,
         true,
         "Reads ",
         {{MOTION_32_CV, "getCurrentDriveSpeed", "the present speed, in pulses per second", u32},
          {MOTION_33_CA, "getCurrentAcceleration", "the present acceleration, in pulses per second squared", u32},
          {MOTION_34_MR0, "getMultiPurposeRegister0", "multi-purpose register 0", i32},
          {MOTION_35_MR1, "getMultiPurposeRegister1", "multi-purpose register 1", i32},
          {MOTION_36_MR2, "getMultiPurposeRegister2", "multi-purpose register 2", i32},
          {MOTION_37_MR3, "getMultiPurposeRegister3", "multi-purpose register 3", i32},
          {MOTION_38_CT, "getCurrentTimer", "the present timer value, in the chip's unit", u32},
          {MOTION_39_TX, "getMaxInterpolationPoint", "the greatest finish point of an interpolation", u32},
          {MOTION_3A_CHLN, "getHelicalRotaionNumber", "the present turn of a helix", u16},
          {MOTION_3D_WR1, "getWR1", "write register 1", u16},
          {MOTION_3E_WR2, "getWR2", "write register 2", u16},
          {MOTION_3F_WR3, "getWR3", "write register 3", u16},
          {MOTION_40_MRM, "getMultiPurposeRegisterMode", "the mode of the multi-purpose registers", u16},
          {MOTION_41_P1M, "getPIOSignal1", "the first word of signal functions", u16},
          {MOTION_42_P2M, "getPIOSignal2", "the second word of signal functions", u16},
          {MOTION_43_AC, "getAcceleration", "the acceleration, in pulses per second squared", u32},
          {MOTION_44_SV, "getInitialSpeed", "the starting speed, in pulses per second", u32},
          {MOTION_45_DV, "getDriveSpeed", "the driving speed, in pulses per second", u32},
          {MOTION_46_TP, "getDrivePulseNumberPoint", "the finish point in pulses, without its sign", u32},
          {MOTION_48_UI, "getGeneralPurposeInput", "the general-purpose inputs", u32},
          {MOTION_E9_RR1, "writeRR1", "read register 1", u16},
          {MOTION_EA_RR2, "writeRR2", "read register 2", u16}}},
        {false,
         true,
         "Reads ",
         {{MOTION_3B_HLV, "getHelicalCalculation", "the calculated value of a helix", u32},
          {MOTION_E8_RR0, "writeRR0", "read register 0, bit i is set while axis i drives", u16},
          {MOTION_EC_RR4, "writeRR4", "read register 4", u16},
          {MOTION_ED_RR5, "writeRR5", "read register 5", u16},
          {MOTION_EE_RR6, "writeRR6", "read register 6", u16},
          {MOTION_EF_RR7, "writeRR7", "read register 7", u16}}},
        {true,
         false,
         "",
         {{MOTION_1F_NOP, "NOP", "Does nothing"},
          {MOTION_50_DRVRL, "relativePositionDriving", "Starts a move by the set distance"},
          {MOTION_51_DRVNR, "counterRelativePositionDriving", "Starts a move by the set distance the other way"},
          {MOTION_52_DRVVP, "positiveDirContinuousPlusDriving", "Starts a continuous move forward"},
          {MOTION_53_DRVVM, "negativeDirContinuousPlusDriving", "Starts a continuous move backwards"},
          {MOTION_54_DRVAB, "absolutePositionDriving", "Starts a move to the set finish point"},
          {MOTION_56_DRVSBRK, "decelerateStop", "Stops with deceleration"},
          {MOTION_57_DRVFBRK, "instantStop", "Stops at once"},
          {MOTION_58_DIRCP, "dirSignalPositiveSetting", "Turns the direction output forward"},
          {MOTION_59_DIRCM, "dirSignalNegativeSetting", "Turns the direction output backwards"},
          {MOTION_5A_HMSRC, "autoHomeSearch", "Starts the reference search"},
          {MOTION_70_VINC, "increaseSpeed", "Speeds up by the set step"},
          {MOTION_71_VDEC, "decreaseSpeed", "Slows down by the set step"},
          {MOTION_72_DCC, "clearDeviationCounterSpeed", "Gives out the pulse that clears a deviation counter"},
          {MOTION_73_TMSTA, "startTimer", "Starts the timer"},
          {MOTION_74_TMSTP, "stopTimer", "Stops the timer"},
          {MOTION_75_SPSTA, "startSplitPulse", "Starts the split pulses"},
          {MOTION_76_SPSTP, "stopSplitPulse", "Stops the split pulses"},
          {MOTION_77_DHOLD, "holdDrivingStart", "Holds the start of the next drive"},
          {MOTION_79_R2CLR, "clearErrorStatus", "Clears the error bits of read register 2"},
          {MOTION_7A_RR3P0, "displayRR3PageZero", "Shows page 0 in read register 3"},
          {MOTION_7B_RR3P1, "displayRR3PageOne", "Shows page 1 in read register 3"},
          {MOTION_7C_MFPC, "clearMaxFinishPoint", "Clears the greatest finish point"}}},
        {false,
         false,
         "",
         {{MOTION_60_LHK1, "oneAxisLinearInterpolation", "Starts a linear interpolation of one axis"},
          {MOTION_61_LHK2, "twoAxisLinearInterpolation", "Starts a linear interpolation of two axes"},
          {MOTION_62_LHK3, "threeAxisLinearInterpolation", "Starts a linear interpolation of three axes"},
          {MOTION_63_LHK4, "fourAxisLinearInterpolation", "Starts a linear interpolation of four axes"},
          {MOTION_64_CHKCW, "cwCircularInterpolation", "Starts an arc, clockwise"},
          {MOTION_65_CHKCCW, "ccwCircularInterpolation", "Starts an arc, counter-clockwise"},
          {MOTION_66_BHK2, "twoAxisPatternPolation", "Starts a bit pattern of two axes"},
          {MOTION_67_BHK3, "threeAxisPatternPolation", "Starts a bit pattern of three axes"},
          {MOTION_68_BHK4, "fourAxisPatternPolation", "Starts a bit pattern of four axes"},
          {MOTION_69_HLCW, "cwHelicalInterpolation", "Starts a helix, clockwise"},
          {MOTION_6A_HLCCW, "ccwHelicalInterpolation", "Starts a helix, counter-clockwise"},
          {MOTION_6B_HLPCW, "cwHelicalCalculation", "Starts the calculation of a helix, clockwise"},
          {MOTION_6C_HLPCCW, "ccwHelicalCalculation", "Starts the calculation of a helix, counter-clockwise"},
          {MOTION_6D_DECEN, "enableDeceleration", "Makes an interpolation decelerate"},
          {MOTION_6E_DECDIS, "disableDeceleration", "Keeps an interpolation from decelerating"},
          {MOTION_6F_CLRSTEP, "interruptSingleStepInterpolation", "Ends single steps of an interpolation"},
          {MOTION_FC_I2CCHK, "checkI2C", "Makes the device check its link to the chip"},
          {MOTION_FD_I2CRST, "resetI2C", "Makes the device reset its link to the chip"},
          {MOTION_FE_HDRST, "resetHardware", "Resets the chip"},
          {MOTION_FE_HDRST, "reset", "Resets the chip"}}},
        {true,
         false,
         "Switches ",
         {{MOTION_C0_SP0L, "setLogicalLevelDrivingStop0", "the active level of stop input 0"},
          {MOTION_C1_SP0E, "enableDrivingStop0", "stop input 0"},
          {MOTION_C2_SP1L, "setLogicalLevelDrivingStop1", "the active level of stop input 1"},
          {MOTION_C3_SP1E, "enableDrivingStop1", "stop input 1"},
          {MOTION_C4_SP2L, "setLogicalLevelDrivingStop2", "the active level of stop input 2"},
          {MOTION_C5_SP2E, "enableDrivingStop2", "stop input 2"},
          {MOTION_C6_INPL, "setLogicalLevelInposition", "the active level of the in-position input"},
          {MOTION_C7_INPE, "enableInposition", "the in-position input"},
          {MOTION_C8_ALML, "setLogicalLevelServoAlarm", "the active level of the servo alarm"},
          {MOTION_C9_ALME, "enableServoAlarm", "the servo alarm"},
          {MOTION_CA_HLML, "setLogicalLevelHardwareLimit", "the active level of the limit inputs"},
          {MOTION_CB_HLME, "enableHardwareLimit", "the limit inputs"},
          {MOTION_CC_HLMM, "enableDeceleratingStopHardwareLimitOn", "the deceleration at a limit input"},
          {MOTION_CD_SLME, "enableSoftwareLimit", "the limits of the software"},
          {MOTION_CE_SLMO, "enableRealPosiCounterSoftwareLimitOn", "those limits to the encoder's counter"},
          {MOTION_CF_SLMM, "enableInstantStopSoftwareLimitOn", "the stop at once at those limits"},
          {MOTION_D0_MANLD, "enableManualDeceleration", "the manual deceleration"},
          {MOTION_D1_DSNDE, "enableAsymmetricAccelerationDeceleration", "a deceleration of its own"},
          {MOTION_D2_SACC, "enableScurveDriving", "S-curve driving"},
          {MOTION_D3_DPMD0, "setPulseModeBit0", "bit 0 of the pulse output's mode"},
          {MOTION_D4_DPMD1, "setPulseModeBit1", "bit 1 of the pulse output's mode"},
          {MOTION_D5_DPL, "setLogicalLevelOfDrivingPulse", "the active level of the pulses"},
          {MOTION_D6_DIRL, "setLogicalLevelOfOnePulse", "the active level of the direction"},
          {MOTION_D7_DPINV, "enablePMPPPinInversion", "the exchange of the two pulse pins"},
          {MOTION_D8_PIMD0, "setEncoderPulseInputBit0", "bit 0 of the encoder input's mode"},
          {MOTION_D9_PIMD1, "setEncoderPulseInputBit1", "bit 1 of the encoder input's mode"},
          {MOTION_DA_PIL, "setLogicalLevelOfEncoderInputSignal", "the active level of the encoder"},
          {MOTION_DB_PIINV, "enableECA_ECBPinInversion", "the exchange of the two encoder pins"},
          {MOTION_DC_LMINV, "enableLMTP_LMTMPinInversion", "the exchange of the two limit pins"},
          {MOTION_DD_AVTRI, "disableTriangleFormPrevention", "triangular speed profiles"},
          {MOTION_DE_TMMD, "enableRepeatTimer", "the repetition of the timer"}},
         true},
    };
    return table;
}

/// The commands that turn subsets of the four SYNC actions on or off: bit i of the number is action i.
Family syncFamily(bool enables) {
    Family family{true, false, enables ? "Enables " : "Disables ", {}};
    for (int subset = 1; subset < 16; ++subset) {
        std::string name = enables ? "enableAction" : "disableAction", what;
        for (int action = 0; action < 4; ++action) {
            if ((subset >> action & 1) == 0) continue;
            name += "SYNC" + std::to_string(action);
            what += (what.empty() ? "SYNC action " : " and ") + std::to_string(action);
        }
        family.commands.push_back({MotionCode((enables ? 0x80 : 0x90) + subset), name, what});
    }
    return family;
}

// Compat 13: only the awaitable form counts the slots of the chassis.
Task setLogicalPosition(Op op, Object port, Object axis, Object counter) {
    if (op.awaitable()) port = devicePort(op.self(), port);
    const py::list data =
        payload(py::int_(argument<int>(port, "port")), MOTION_09_LP, maskOfAxis(axis), pack<std::int32_t>(counter));
    const Object reply = co_await exchange(op, MOTION, data);
    co_return statusOf(op, MOTION, reply, statusPlace);
}

// Commands outside the families.
std::vector<Request> singleRows() {
    const auto value = [](const char* name, const char* doc) { return Parameter{name, "int", doc}; };
    const Parameter width = value("pulse_width", "width in the chip's unit, 0 to 65535"),
                    period = value("pulse_period", "period in the chip's unit, 0 to 65535"),
                    lines = value("mask", "lines to drive, 0 to 255"),
                    levels = value("value", "their levels, 0 to 255"),
                    axes = value("axis", "mask of axes, 0 to 15, sent as it is"), page = value("page", "page, 0 or 1");
    const Field zero = constant(0);
    return {
        {.name = "_Motion_splitPulse1",
         .sends = MOTION,
         .fields = {port | u8, codeField(MOTION_17_SP1), axis | axisMask, width | u16, period | u16},
         .reply = status(statusPlace),
         .doc = "Sets the width and the period of split pulses."},
        {.name = "_Motion_setGPIOValue",
         .sends = MOTION,
         .fields = {port | u8, codeField(MOTION_1C_GPIO), axis | axisMask, zero, zero, lines | u8, levels | u8},
         .reply = status(statusPlace),
         .doc = "Drives general-purpose outputs."},
        {.name = "_Motion_setPIOSignal1",
         .parameters = {port, axes, value("state", "without effect (compatibility note 12)")},
         .sends = MOTION,
         .fields = {port | u8, codeField(MOTION_21_P1M), axes | u8, zero, zero, constant(85), constant(5)},
         .reply = status(statusPlace),
         .doc = "Sets the first word of signal functions to its one value."},
        {.name = "_Motion_writeRR3",
         .sends = MOTION,
         .fields = {port | u8, codeField(MOTION_EB_RR3), axis | axisMask, zero, zero, zero, page | u8},
         .reply = valueOf(Data::u16, "read register 3"),
         .doc = "Reads a page of read register 3."},
        {.name = "_Motion_releaseDrivingStart",
         .checks = {checkMotionAxis(axes)},
         .sends = MOTION,
         .fields = {port | u8, codeField(MOTION_78_DFREE), axes | u8, zero, zero, zero, zero},
         .reply = status(statusPlace),
         .doc = "Releases the drives that are held. The object must have a check of its own for the mask "
                "(compatibility note 11)."},
    };
}

}  // namespace

void defineMotionConstants(Package& package) {
    for (const auto& [name, code] : motionCodes) package.constant(name.data(), code);
    for (const auto& [name, address] : pawlRegisters) package.constant(name.data(), address);
}

void defineMotionDriver(Package& package) {
    Feature driver(package, "MCX514Driver", {"Packet"}, "The commands of the four-axis motion controller, one by one.");
    for (const auto& [name, what] : {std::pair{"axis_1", "axis 0"},
                                     {"axis_2", "axis 1"},
                                     {"axis_3", "axis 2"},
                                     {"axis_4", "axis 3 and all further numbers"}}) {
        driver.field({name, "MotionAxis", std::string("record of ") + what});
    }
    driver.field({"linear_interpo", "MotionLinearInterpolation", "record of the last linear interpolation"})
        .field({"circular_interpo", "MotionCircularInterpolation", "record of the last circular interpolation"})
        .field({"helical_interpo", "MotionHelicalInterpolation", "record of the last helical interpolation"})
        .field({"motion_ini", "MotionInifile", "texts of the settings in a file"})
        .constructor({}, constructMotionState);
    std::vector<Family> all = families();
    for (const bool enables : {true, false}) all.push_back(syncFamily(enables));
    for (const Family& family : all) {
        for (const ChipCommand& command : family.commands) driver.operation(requestOf(family, command));
    }
    driver.operations(singleRows());
    driver.operation({.name = "Motion_setLogicalPosi",
                      .parameters = {port, axis, {"counter", "int", "position in pulses, -2147483648 to 2147483647"}},
                      .doc = "Sets the logical position counter. On the chassis the awaitable form takes the slot "
                             "(compatibility note 13).",
                      .returns = status(statusPlace).returns,
                      .body = setLogicalPosition});
}

void definePositions(Feature& controller) {
    const Field zero = constant(0);
    controller.operations(
        {{.name = "Motion_getLogicalPosi",
          .checks = {checkMCX514Axis(axisParameter)},
          .sends = MOTION,
          .fields = {controllerPort | u8, codeField(MOTION_30_LP), axisParameter | axisMask, zero, zero, zero, zero},
          .reply = valueOf(Data::i32, "the position given out, in pulses"),
          .adapt = adaptPort,
          .doc = "Reads the logical position counter."},
         {.name = "Motion_getEncoderPosi",
          .sends = MOTION,
          .fields = {controllerPort | u8, codeField(MOTION_31_RP), axisParameter | axisMask, zero, zero, zero, zero},
          .reply = valueOf(Data::i32, "the position of the encoder, in pulses"),
          .adapt = adaptPort,
          .doc = "Reads the encoder's counter."}});
}

}  // namespace zvr::python
