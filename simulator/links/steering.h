// What lines on standard input change of a device while it runs.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "device/device.h"

namespace zvr::sim {

/// What the help says of the requests that every device takes.
extern const char* const steeringHelp;

/// The words of a line.
using Words = std::vector<std::string>;
Words wordsOf(const std::string& line);

/// Does what a line asks of a device. False if it is no such request; throws std::invalid_argument if it is refused.
bool steer(Device& device, const Words& words);

/// On or off, and nothing else.
bool isOn(const std::string& word);

/// Command by its name or number; throws std::invalid_argument.
int commandOf(std::string_view text);

/// A text as JSON has it.
std::string jsonText(std::string_view text);

/// The answer to a line, one line of JSON: members that `obey` makes of the words, or why it refused them.
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
