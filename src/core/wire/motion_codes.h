// Numbers of the two motion chips: sub-commands of the MOTION request, and registers of the stepper drive.
#pragma once

#include "core/wire/commands.h"

namespace zvr {

enum MotionCode : std::uint8_t {
#define ZVR_MOTION_CODE(hex, mnemonic) MOTION_##hex##_##mnemonic = 0x##hex,
#include "core/wire/motion_codes.def"
#undef ZVR_MOTION_CODE
};

inline constexpr CommandName motionCodes[] = {
#define ZVR_MOTION_CODE(hex, mnemonic) {"MOTION_" #hex "_" #mnemonic, 0x##hex},
#include "core/wire/motion_codes.def"
#undef ZVR_MOTION_CODE
};

enum PawlRegister : std::uint8_t {
#define ZVR_PAWL_REGISTER(name, address) name = address,
#include "core/wire/pawl_registers.def"
};

inline constexpr CommandName pawlRegisters[] = {
#define ZVR_PAWL_REGISTER(name, address) {#name, address},
#include "core/wire/pawl_registers.def"
};

/// A register of the drive, its value after a reset, and its key in the interface's map of settings.
struct PawlSetting {
    const char* key;
    PawlRegister address;
    std::uint32_t value;
};
inline constexpr PawlSetting pawlSettings[] = {
#define ZVR_PAWL_REGISTER(name, address)
#define ZVR_PAWL_SETTING(name, address, key, value) {#key, name, value},
#include "core/wire/pawl_registers.def"
};

}  // namespace zvr
