#include "core/wire/commands.h"

#include <algorithm>
#include <stdexcept>

namespace zvr {

std::span<const CommandName> commandTable() {
    static constexpr CommandName table[] = {
#define ZVR_COMMAND(name, code) {#name, code},
#include "core/wire/commands.def"
#undef ZVR_COMMAND
    };
    return table;
}

std::string_view nameOfCommand(int code) {
    const auto table = commandTable();
    const auto found = std::ranges::find(table, code, &CommandName::code);
    return found == table.end() ? std::string_view() : found->name;
}

CommandClass classify(int command, std::span<const std::uint8_t> data) {
    if (std::ranges::find(streamingCommands, command) != streamingCommands.end()) return CommandClass::streaming;
    if (std::ranges::find(broadcastCommands, command) == broadcastCommands.end()) return CommandClass::echo;
    if (data.empty()) throw std::out_of_range("a broadcast frame without its direction byte");
    return data[0] == 1 ? CommandClass::broadcast : CommandClass::ignore;
}

std::string_view nameOf(CommandClass commandClass) {
    switch (commandClass) {
        case CommandClass::streaming: return "streaming";
        case CommandClass::broadcast: return "broadcast";
        case CommandClass::ignore: return "ignore";
        case CommandClass::echo: break;
    }
    return "echo";
}

}  // namespace zvr
