// Commands on standard input that change a running device.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "device/device.h"

namespace zvr::sim {

/// Help text of the commands for every device.
extern const char* const steeringHelp;

/// The words of a line.
using Words = std::vector<std::string>;
Words wordsOf(const std::string& line);

/// Executes a line's command on a device. False if it is no such command; throws std::invalid_argument if it is
/// refused.
bool steer(Device& device, const Words& words);

/// Parses "on" or "off".
bool isOn(const std::string& word);

/// Command by its name or number; throws std::invalid_argument.
int commandOf(std::string_view text);

/// A text as a JSON string.
std::string jsonText(std::string_view text);

/// The answer to a line, one line of JSON: the members that `obey` returns for the words, or the reason of a refusal.
template <class Obey>
std::string answerTo(const std::string& line, const Obey& obey) {
    try {
        const Words words = wordsOf(line);
        const std::string members = obey(words);
        return R"({"ok": true)" + (members.empty() ? "" : ", " + members) + "}";
    } catch (const std::invalid_argument& refusal) {
        return R"({"ok": false, "error": )" + jsonText(refusal.what()) + "}";
    }
}

}  // namespace zvr::sim
