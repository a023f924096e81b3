// The flat layer over the motion controller's chip: one operation for each of its commands. They check nothing. A
// request holds connector, sub-command, axis byte and four data bytes; its reply repeats the first three.
#include <algorithm>

#include "core/motion.h"
#include "motion/controller.h"
#include "motion/motion.h"
#include "python/model.h"

namespace zvr::python {

namespace {

constexpr std::size_t statusPlace = 6;

const Parameter& port = connector;
const Parameter axis{"axis", "int", "axis, 0 to 3, sent as a mask"};

/// What the four data bytes of a command hold, or the value of its reply.
enum class Data { none, u32, i32, u16, i16, flag };

/// One command of the chip. `what` is told of it.
struct ChipCommand {
    MotionCode code;
    std::string name;
    Data data;
    std::string argument;
    std::string what;
};

/// Commands that share the axis byte and what they do.
struct Family {
    bool perAxis;
    bool reads;
    const char* verb;
    std::vector<ChipCommand> commands;
};

Object maskOfAxis(const Object& axis) {
    const Object power = own(PyNumber_Power(py::int_(2).ptr(), axis.ptr(), Py_None));
    return own(PyNumber_Long(power.ptr()));
}

Field codeField(MotionCode code) {
    const auto row = std::ranges::find(motionCodes, int{code}, &CommandName::code);
    return constant(code, std::string(row->name));
}

Field maskField() {
    return {"axis", "mask", [](Payload& data, py::handle axis) { data.add(maskOfAxis(borrow(axis.ptr()))); }};
}

std::vector<Field> dataFields(Data data, const std::string& argument) {
    const Field zero = constant(0);
    switch (data) {
        case Data::none: return {zero, zero, zero, zero};
        case Data::u32: return {packed<std::uint32_t>("u32", argument)};
        case Data::i32: return {packed<std::int32_t>("i32", argument)};
        case Data::u16: return {zero, zero, word(argument)};
        case Data::i16: return {zero, zero, packed<std::int16_t>("i16", argument)};
        case Data::flag: break;
    }
    return {zero, zero, zero, u8(argument)};
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
    const std::string doc = what + ", " + rangeOf(data) + "; no refusal is told from it";
    if (data == Data::i32) return numberAt<std::int32_t>(3, doc);
    return data == Data::u32 ? numberAt<std::uint32_t>(3, doc) : numberAt<std::uint16_t>(5, doc);
}

Row rowOf(const Family& family, const ChipCommand& command) {
    Row row{command.name,
            {port},
            {},
            MOTION,
            {u8("port"), codeField(command.code), family.perAxis ? maskField() : constant(0)},
            family.reads ? valueOf(command.data, command.what) : status(statusPlace),
            family.verb + command.what + "."};
    if (family.perAxis) row.parameters.push_back(axis);
    if (!command.argument.empty()) {
        row.parameters.push_back({command.argument, "int", command.what + ", " + rangeOf(command.data)});
    }
    for (Field& field : dataFields(family.reads ? Data::none : command.data, command.argument)) {
        row.payload.push_back(std::move(field));
    }
    return row;
}

// clang-format off
const std::vector<Family>& families() {
    using enum Data;
    static const std::vector<Family> table = {
        {true, false, "Sets ", {
            {MOTION_00_JK, "_Motion_setAccelerationJerk", u32, "jerk", "the change of the acceleration, in the chip's unit"},
            {MOTION_01_DJ, "_Motion_setDecelerationJerk", u32, "jerk", "the change of the deceleration, in the chip's unit"},
            {MOTION_02_AC, "_Motion_setAcceleration", u32, "acceleration", "the acceleration, in pulses per second squared"},
            {MOTION_03_DC, "_Motion_setDeceleration", u32, "deceleration", "the deceleration, in pulses per second squared"},
            {MOTION_04_SV, "_Motion_setInitialSpeed", u32, "speed", "the starting speed, in pulses per second"},
            {MOTION_05_DV, "_Motion_setDriveSpeed", u32, "speed", "the driving speed, in pulses per second"},
            {MOTION_06_TP, "_Motion_setDrivePositionFinishPoint", i32, "position", "the distance or finish point, in pulses"},
            {MOTION_07_DP, "_Motion_setManualDecelerationPoint", u32, "point", "the point where a manual deceleration begins, in pulses"},
            {MOTION_08_CP, "_Motion_setCircularCenterPoint", i32, "position", "the centre of an arc, in pulses"},
            {MOTION_0A_RP, "_Motion_setRealPositionCounter", i32, "position", "the encoder's counter, in pulses"},
            {MOTION_0B_SP, "_Motion_setSoftwareLimitP", i32, "position", "the forward limit of the software, in pulses"},
            {MOTION_0C_SM, "_Motion_setSoftwareLimitM", i32, "position", "the reverse limit of the software, in pulses"},
            {MOTION_0E_LX, "_Motion_setLogicalCounterMaxValue", u32, "value", "where the logical counter turns over, in pulses"},
            {MOTION_0F_RX, "_Motion_setRealCounterMaxValue", u32, "value", "where the encoder's counter turns over, in pulses"},
            {MOTION_10_MR0, "_Motion_setMultiPurposeRegister0", i32, "value", "multi-purpose register 0"},
            {MOTION_11_MR1, "_Motion_setMultiPurposeRegister1", i32, "value", "multi-purpose register 1"},
            {MOTION_12_MR2, "_Motion_setMultiPurposeRegister2", i32, "value", "multi-purpose register 2"},
            {MOTION_13_MR3, "_Motion_setMultiPurposeRegister3", i32, "value", "multi-purpose register 3"},
            {MOTION_14_HV, "_Motion_setHomeSearchSpeed", u32, "speed", "the speed near the reference, in pulses per second"},
            {MOTION_15_IV, "_Motion_setIncreasingOrDecreasingSpeed", u32, "speed", "the step of a speed change, in pulses per second"},
            {MOTION_16_TM, "_Motion_setTimer", u32, "value", "the timer, in the chip's unit"},
            {MOTION_0D_AO, "_Motion_setAccelerationCounterOffset", i16, "offset", "the offset of the acceleration counter"},
            // The timer's code: programs rely on it.
            {MOTION_16_TM, "_Motion_splitPulse2", u16, "pulse_number", "the number of split pulses"},
            {MOTION_20_MRM, "_Motion_setMultiPurposeMode", u16, "mode", "the mode of the multi-purpose registers"},
            {MOTION_22_P2M, "_Motion_setPIOSignal2", u16, "state", "the second word of signal functions"},
            {MOTION_23_H1M, "_Motion_setAutoHomeSearchMode1", u16, "mode", "the first mode word of the reference search"},
            {MOTION_24_H2M, "_Motion_setAutoHomeSearchMode2", u16, "mode", "the second mode word of the reference search"},
            {MOTION_25_FLM, "_Motion_setInputSignalFilterMode", u16, "mode", "the input filters"},
            {MOTION_26_S0M, "_Motion_setSYNCAction0", u16, "action", "SYNC action 0"},
            {MOTION_27_S1M, "_Motion_setSYNCAction1", u16, "action", "SYNC action 1"},
            {MOTION_28_S2M, "_Motion_setSYNCAction2", u16, "action", "SYNC action 2"},
            {MOTION_29_S3M, "_Motion_setSYNCAction3", u16, "action", "SYNC action 3"},
            {MOTION_E1_WR1, "_Motion_writeWR1", u16, "state", "write register 1"},
            {MOTION_E2_WR2, "_Motion_writeWR2", u16, "state", "write register 2"},
            {MOTION_E3_WR3, "_Motion_writeWR3", u16, "state", "write register 3"}}},
        {false, false, "Sets ", {
            {MOTION_19_TX, "_Motion_setMaxInterpolationPoint", u32, "point", "the greatest finish point of an interpolation"},
            {MOTION_1A_HLN, "_Motion_setHelicalRotationNumber", u16, "rotation_number", "the number of turns of a helix"},
            {MOTION_1B_HLV, "_Motion_setHelicalCalculation", u32, "value", "the calculated value of a helix"},
            {MOTION_2A_IPM, "_Motion_setInterpolationMode", u16, "mode", "the mode word of the interpolation"},
            {MOTION_E0_WR0, "_Motion_writeWR0", u16, "state", "write register 0"},
            {MOTION_E4_WR4, "_Motion_writeWR4", u16, "state", "write register 4"},
            {MOTION_E5_WR5, "_Motion_writeWR5", u16, "state", "write register 5"},
            {MOTION_E6_WR6, "_Motion_writeWR6", u16, "state", "write register 6"},
            {MOTION_E7_WR7, "_Motion_writeWR7", u16, "state", "write register 7"}}},
        {true, true, "Reads ", {
            {MOTION_32_CV, "_Motion_getCurrentDriveSpeed", u32, "", "the present speed, in pulses per second"},
            {MOTION_33_CA, "_Motion_getCurrentAcceleration", u32, "", "the present acceleration, in pulses per second squared"},
            {MOTION_34_MR0, "_Motion_getMultiPurposeRegister0", i32, "", "multi-purpose register 0"},
            {MOTION_35_MR1, "_Motion_getMultiPurposeRegister1", i32, "", "multi-purpose register 1"},
            {MOTION_36_MR2, "_Motion_getMultiPurposeRegister2", i32, "", "multi-purpose register 2"},
            {MOTION_37_MR3, "_Motion_getMultiPurposeRegister3", i32, "", "multi-purpose register 3"},
            {MOTION_38_CT, "_Motion_getCurrentTimer", u32, "", "the present timer value, in the chip's unit"},
            {MOTION_39_TX, "_Motion_getMaxInterpolationPoint", u32, "", "the greatest finish point of an interpolation"},
            {MOTION_3A_CHLN, "_Motion_getHelicalRotaionNumber", u16, "", "the present turn of a helix"},
            {MOTION_3D_WR1, "_Motion_getWR1", u16, "", "write register 1"},
            {MOTION_3E_WR2, "_Motion_getWR2", u16, "", "write register 2"},
            {MOTION_3F_WR3, "_Motion_getWR3", u16, "", "write register 3"},
            {MOTION_40_MRM, "_Motion_getMultiPurposeRegisterMode", u16, "", "the mode of the multi-purpose registers"},
            {MOTION_41_P1M, "_Motion_getPIOSignal1", u16, "", "the first word of signal functions"},
            {MOTION_42_P2M, "_Motion_getPIOSignal2", u16, "", "the second word of signal functions"},
            {MOTION_43_AC, "_Motion_getAcceleration", u32, "", "the acceleration, in pulses per second squared"},
            {MOTION_44_SV, "_Motion_getInitialSpeed", u32, "", "the starting speed, in pulses per second"},
            {MOTION_45_DV, "_Motion_getDriveSpeed", u32, "", "the driving speed, in pulses per second"},
            {MOTION_46_TP, "_Motion_getDrivePulseNumberPoint", u32, "", "the distance or finish point, in pulses, without its sign"},
            {MOTION_48_UI, "_Motion_getGeneralPurposeInput", u32, "", "the general-purpose inputs"},
            {MOTION_E9_RR1, "_Motion_writeRR1", u16, "", "read register 1"},
            {MOTION_EA_RR2, "_Motion_writeRR2", u16, "", "read register 2"}}},
        {false, true, "Reads ", {
            {MOTION_3B_HLV, "_Motion_getHelicalCalculation", u32, "", "the calculated value of a helix"},
            {MOTION_E8_RR0, "_Motion_writeRR0", u16, "", "read register 0, bit i of which tells that axis i drives"},
            {MOTION_EC_RR4, "_Motion_writeRR4", u16, "", "read register 4"},
            {MOTION_ED_RR5, "_Motion_writeRR5", u16, "", "read register 5"},
            {MOTION_EE_RR6, "_Motion_writeRR6", u16, "", "read register 6"},
            {MOTION_EF_RR7, "_Motion_writeRR7", u16, "", "read register 7"}}},
        {true, false, "", {
            {MOTION_1F_NOP, "_Motion_NOP", none, "", "Does nothing"},
            {MOTION_50_DRVRL, "_Motion_relativePositionDriving", none, "", "Starts a move by the set distance"},
            {MOTION_51_DRVNR, "_Motion_counterRelativePositionDriving", none, "", "Starts a move by the set distance the other way"},
            {MOTION_52_DRVVP, "_Motion_positiveDirContinuousPlusDriving", none, "", "Starts a continuous move forward"},
            {MOTION_53_DRVVM, "_Motion_negativeDirContinuousPlusDriving", none, "", "Starts a continuous move backwards"},
            {MOTION_54_DRVAB, "_Motion_absolutePositionDriving", none, "", "Starts a move to the set finish point"},
            {MOTION_56_DRVSBRK, "_Motion_decelerateStop", none, "", "Stops with deceleration"},
            {MOTION_57_DRVFBRK, "_Motion_instantStop", none, "", "Stops at once"},
            {MOTION_58_DIRCP, "_Motion_dirSignalPositiveSetting", none, "", "Turns the direction output forward"},
            {MOTION_59_DIRCM, "_Motion_dirSignalNegativeSetting", none, "", "Turns the direction output backwards"},
            {MOTION_5A_HMSRC, "_Motion_autoHomeSearch", none, "", "Starts the reference search"},
            {MOTION_70_VINC, "_Motion_increaseSpeed", none, "", "Speeds up by the set step"},
            {MOTION_71_VDEC, "_Motion_decreaseSpeed", none, "", "Slows down by the set step"},
            {MOTION_72_DCC, "_Motion_clearDeviationCounterSpeed", none, "", "Gives out the pulse that clears a deviation counter"},
            {MOTION_73_TMSTA, "_Motion_startTimer", none, "", "Starts the timer"},
            {MOTION_74_TMSTP, "_Motion_stopTimer", none, "", "Stops the timer"},
            {MOTION_75_SPSTA, "_Motion_startSplitPulse", none, "", "Starts the split pulses"},
            {MOTION_76_SPSTP, "_Motion_stopSplitPulse", none, "", "Stops the split pulses"},
            {MOTION_77_DHOLD, "_Motion_holdDrivingStart", none, "", "Holds the start of the next drive"},
            {MOTION_79_R2CLR, "_Motion_clearErrorStatus", none, "", "Clears the error bits of read register 2"},
            {MOTION_7A_RR3P0, "_Motion_displayRR3PageZero", none, "", "Shows page 0 in read register 3"},
            {MOTION_7B_RR3P1, "_Motion_displayRR3PageOne", none, "", "Shows page 1 in read register 3"},
            {MOTION_7C_MFPC, "_Motion_clearMaxFinishPoint", none, "", "Clears the greatest finish point"}}},
        {false, false, "", {
            {MOTION_60_LHK1, "_Motion_oneAxisLinearInterpolation", none, "", "Starts a linear interpolation of one axis"},
            {MOTION_61_LHK2, "_Motion_twoAxisLinearInterpolation", none, "", "Starts a linear interpolation of two axes"},
            {MOTION_62_LHK3, "_Motion_threeAxisLinearInterpolation", none, "", "Starts a linear interpolation of three axes"},
            {MOTION_63_LHK4, "_Motion_fourAxisLinearInterpolation", none, "", "Starts a linear interpolation of four axes"},
            {MOTION_64_CHKCW, "_Motion_cwCircularInterpolation", none, "", "Starts an arc, clockwise"},
            {MOTION_65_CHKCCW, "_Motion_ccwCircularInterpolation", none, "", "Starts an arc, counter-clockwise"},
            {MOTION_66_BHK2, "_Motion_twoAxisPatternPolation", none, "", "Starts a bit pattern of two axes"},
            {MOTION_67_BHK3, "_Motion_threeAxisPatternPolation", none, "", "Starts a bit pattern of three axes"},
            {MOTION_68_BHK4, "_Motion_fourAxisPatternPolation", none, "", "Starts a bit pattern of four axes"},
            {MOTION_69_HLCW, "_Motion_cwHelicalInterpolation", none, "", "Starts a helix, clockwise"},
            {MOTION_6A_HLCCW, "_Motion_ccwHelicalInterpolation", none, "", "Starts a helix, counter-clockwise"},
            {MOTION_6B_HLPCW, "_Motion_cwHelicalCalculation", none, "", "Starts the calculation of a helix, clockwise"},
            {MOTION_6C_HLPCCW, "_Motion_ccwHelicalCalculation", none, "", "Starts the calculation of a helix, counter-clockwise"},
            {MOTION_6D_DECEN, "_Motion_enableDeceleration", none, "", "Lets an interpolation decelerate"},
            {MOTION_6E_DECDIS, "_Motion_disableDeceleration", none, "", "Keeps an interpolation from decelerating"},
            {MOTION_6F_CLRSTEP, "_Motion_interruptSingleStepInterpolation", none, "", "Ends single steps of an interpolation"},
            {MOTION_FC_I2CCHK, "_Motion_checkI2C", none, "", "Lets the device check its link to the chip"},
            {MOTION_FD_I2CRST, "_Motion_resetI2C", none, "", "Lets the device reset its link to the chip"},
            {MOTION_FE_HDRST, "_Motion_resetHardware", none, "", "Resets the chip"},
            {MOTION_FE_HDRST, "_Motion_reset", none, "", "Resets the chip"}}},
        {true, false, "Switches ", {
            {MOTION_C0_SP0L, "_Motion_setLogicalLevelDrivingStop0", flag, "on_state", "the active level of stop input 0"},
            {MOTION_C1_SP0E, "_Motion_enableDrivingStop0", flag, "on_state", "stop input 0"},
            {MOTION_C2_SP1L, "_Motion_setLogicalLevelDrivingStop1", flag, "on_state", "the active level of stop input 1"},
            {MOTION_C3_SP1E, "_Motion_enableDrivingStop1", flag, "on_state", "stop input 1"},
            {MOTION_C4_SP2L, "_Motion_setLogicalLevelDrivingStop2", flag, "on_state", "the active level of stop input 2"},
            {MOTION_C5_SP2E, "_Motion_enableDrivingStop2", flag, "on_state", "stop input 2"},
            {MOTION_C6_INPL, "_Motion_setLogicalLevelInposition", flag, "on_state", "the active level of the in-position input"},
            {MOTION_C7_INPE, "_Motion_enableInposition", flag, "on_state", "the in-position input"},
            {MOTION_C8_ALML, "_Motion_setLogicalLevelServoAlarm", flag, "on_state", "the active level of the servo alarm"},
            {MOTION_C9_ALME, "_Motion_enableServoAlarm", flag, "on_state", "the servo alarm"},
            {MOTION_CA_HLML, "_Motion_setLogicalLevelHardwareLimit", flag, "on_state", "the active level of the limit inputs"},
            {MOTION_CB_HLME, "_Motion_enableHardwareLimit", flag, "on_state", "the limit inputs"},
            {MOTION_CC_HLMM, "_Motion_enableDeceleratingStopHardwareLimitOn", flag, "on_state", "the deceleration at a limit input"},
            {MOTION_CD_SLME, "_Motion_enableSoftwareLimit", flag, "on_state", "the limits of the software"},
            {MOTION_CE_SLMO, "_Motion_enableRealPosiCounterSoftwareLimitOn", flag, "on_state", "those limits to the encoder's counter"},
            {MOTION_CF_SLMM, "_Motion_enableInstantStopSoftwareLimitOn", flag, "on_state", "the stop at once at those limits"},
            {MOTION_D0_MANLD, "_Motion_enableManualDeceleration", flag, "on_state", "the manual deceleration"},
            {MOTION_D1_DSNDE, "_Motion_enableAsymmetricAccelerationDeceleration", flag, "on_state", "a deceleration of its own"},
            {MOTION_D2_SACC, "_Motion_enableScurveDriving", flag, "on_state", "S-curve driving"},
            {MOTION_D3_DPMD0, "_Motion_setPulseModeBit0", flag, "on_state", "bit 0 of the pulse output's mode"},
            {MOTION_D4_DPMD1, "_Motion_setPulseModeBit1", flag, "on_state", "bit 1 of the pulse output's mode"},
            {MOTION_D5_DPL, "_Motion_setLogicalLevelOfDrivingPulse", flag, "on_state", "the active level of the pulses"},
            {MOTION_D6_DIRL, "_Motion_setLogicalLevelOfOnePulse", flag, "on_state", "the active level of the direction"},
            {MOTION_D7_DPINV, "_Motion_enablePMPPPinInversion", flag, "on_state", "the exchange of the two pulse pins"},
            {MOTION_D8_PIMD0, "_Motion_setEncoderPulseInputBit0", flag, "on_state", "bit 0 of the encoder input's mode"},
            {MOTION_D9_PIMD1, "_Motion_setEncoderPulseInputBit1", flag, "on_state", "bit 1 of the encoder input's mode"},
            {MOTION_DA_PIL, "_Motion_setLogicalLevelOfEncoderInputSignal", flag, "on_state", "the active level of the encoder"},
            {MOTION_DB_PIINV, "_Motion_enableECA_ECBPinInversion", flag, "on_state", "the exchange of the two encoder pins"},
            {MOTION_DC_LMINV, "_Motion_enableLMTP_LMTMPinInversion", flag, "on_state", "the exchange of the two limit pins"},
            {MOTION_DD_AVTRI, "_Motion_disableTriangleFormPrevention", flag, "on_state", "triangular speed profiles"},
            {MOTION_DE_TMMD, "_Motion_enableRepeatTimer", flag, "on_state", "the repetition of the timer"}}},
    };
    return table;
}
// clang-format on

/// The commands that turn subsets of the four SYNC actions on or off: bit i of the number stands for action i.
Family syncFamily(bool enables) {
    Family family{true, false, enables ? "Enables " : "Disables ", {}};
    for (int subset = 1; subset < 16; ++subset) {
        std::string name = enables ? "_Motion_enableAction" : "_Motion_disableAction", what;
        for (int action = 0; action < 4; ++action) {
            if ((subset >> action & 1) == 0) continue;
            name += "SYNC" + std::to_string(action);
            what += (what.empty() ? "SYNC action " : " and ") + std::to_string(action);
        }
        family.commands.push_back({MotionCode((enables ? 0x80 : 0x90) + subset), name, Data::none, "", what});
    }
    return family;
}

// Only the awaitable form counts the slots of the chassis.
Result setLogicalPosition(Op op, Object port, Object axis, Object counter) {
    if (op.awaitable()) port = devicePort(op.self(), port);
    const py::list data = payload(port, MOTION_09_LP, maskOfAxis(axis), pack<std::int32_t>(counter));
    const Object reply = co_await op.exchange(MOTION, data);
    co_return statusOf(bytesOf(reply), statusPlace);
}

// Rows that no family has.
std::vector<Row> singleRows() {
    const auto value = [](const char* name, const char* doc) { return Parameter{name, "int", doc}; };
    const Field zero = constant(0);
    // clang-format off
    return {
        {"_Motion_splitPulse1", {port, axis, value("pulse_width", "width in the chip's unit, 0 to 65535"),
                                 value("pulse_period", "period in the chip's unit, 0 to 65535")}, {}, MOTION,
            {u8("port"), codeField(MOTION_17_SP1), maskField(), word("pulse_width"), word("pulse_period")},
            status(statusPlace), "Sets the width and the period of split pulses."},
        {"_Motion_setGPIOValue", {port, axis, value("mask", "lines to drive, 0 to 255"), value("value", "their levels, 0 to 255")},
            {}, MOTION, {u8("port"), codeField(MOTION_1C_GPIO), maskField(), zero, zero, u8("mask"), u8("value")},
            status(statusPlace), "Drives general-purpose outputs."},
        {"_Motion_setPIOSignal1", {port, value("axis", "mask of axes, 0 to 15, sent as it is"), value("state", "without effect")},
            {}, MOTION, {u8("port"), codeField(MOTION_21_P1M), u8("axis"), zero, zero, constant(85), constant(5)},
            status(statusPlace), "Sets the first word of signal functions to its one value."},
        {"_Motion_writeRR3", {port, axis, value("page", "page, 0 or 1")}, {}, MOTION,
            {u8("port"), codeField(MOTION_EB_RR3), maskField(), zero, zero, zero, u8("page")},
            valueOf(Data::u16, "read register 3"), "Reads a page of read register 3."},
        {"_Motion_releaseDrivingStart", {port, value("axis", "mask of axes, 0 to 15, sent as it is")},
            {calls("_checkMotionAxis", {"axis"})}, MOTION,
            {u8("port"), codeField(MOTION_78_DFREE), u8("axis"), zero, zero, zero, zero}, status(statusPlace),
            "Releases the drives that are held. The object must have a check of its own for the mask."},
    };
    // clang-format on
}

}  // namespace

void defineMotionConstants(Package& package) {
    for (const auto& [name, code] : motionCodes) package.constant(name.data(), code);
    for (const auto& [name, address] : pawlRegisters) package.constant(name.data(), address);
}

void defineMotionDriver(Package& package) {
    // No class of the library has it: a subclass that wants synchronous starts brings it along.
    rememberRaises({"_checkMotionAxis", {}, {}, {}, {"AttributeError: the object has no `_checkMotionAxis`"}, {}});
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
        .constructor({}, Calls<constructMotionState>{});
    std::vector<Family> all = families();
    for (const bool enables : {true, false}) all.push_back(syncFamily(enables));
    for (const Family& family : all) {
        for (const ChipCommand& command : family.commands) driver.row(rowOf(family, command));
    }
    driver.rows(singleRows());
    driver.operation("Motion_setLogicalPosi",
                     {port, axis, {"counter", "int", "position in pulses, -2147483648 to 2147483647"}},
                     "Sets the logical position counter. On the chassis the awaitable form takes the slot.",
                     status(statusPlace).returns, {}, Calls<setLogicalPosition>{});
}

void definePositions(Feature& controller) {
    const Field zero = constant(0);
    controller.rows({
        {"Motion_getLogicalPosi",
         {controllerPort, axisParameter},
         {calls("_checkMCX514Axis", {"axis"})},
         MOTION,
         {u8("port"), codeField(MOTION_30_LP), maskField(), zero, zero, zero, zero},
         valueOf(Data::i32, "the position given out, in pulses"),
         "Reads the logical position counter.",
         adaptPort},
        {"Motion_getEncoderPosi",
         {controllerPort, axisParameter},
         {},
         MOTION,
         {u8("port"), codeField(MOTION_31_RP), maskField(), zero, zero, zero, zero},
         valueOf(Data::i32, "the position of the encoder, in pulses"),
         "Reads the encoder's counter.",
         adaptPort},
    });
}

}  // namespace zvr::python
