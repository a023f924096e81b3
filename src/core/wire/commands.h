// Command codes, and their classes for a receiver.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

namespace zvr {

enum Command : int {
#define ZVR_COMMAND(name, code) name = code,
#include "core/wire/commands.def"
#undef ZVR_COMMAND
};

struct CommandName {
    std::string_view name;
    int code;
};

/// The whole code table, in file order.
std::span<const CommandName> commandTable();
/// The name of a code; empty if it has none.
std::string_view nameOfCommand(int code);

/// Commands whose frames are unsolicited data that keeps arriving after one start request.
inline constexpr std::array streamingCommands = {
    START_CAN,          START_UART_READING,      START_AI_STREAMING, START_AI_STREAMING_VARIABLE,
    START_AO_STREAMING, START_MOTION_MONITORING, AHRS_START,         AI_START_STREAMING_24BIT};

/// Commands sent to all devices on the network, any of which may answer.
inline constexpr std::array broadcastCommands = {GET_DEVICE_INFO, CHECK_MAC_AND_SET_IP, NETCOM_CHECK_MAC_RINGING,
                                                 CHECK_MAC_AND_REBOOT};

enum class CommandClass { streaming, broadcast, ignore, echo };

/// The class of a received frame. The first data byte of a broadcast frame is 1 in a reply; throws std::out_of_range if
/// it is missing.
CommandClass classify(int command, std::span<const std::uint8_t> data);

std::string_view nameOf(CommandClass commandClass);

}  // namespace zvr
