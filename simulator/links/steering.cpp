#include "links/steering.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <sstream>
#include <stdexcept>

#include "core/wire/commands.h"

namespace zvr::sim {

namespace {

int numberUpTo(const std::string& word, int most) {
    int number = -1;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (error != std::errc() || end != word.data() + word.size() || number < 0 || number > most) {
        throw std::invalid_argument("\"" + word + "\" is not a number from 0 to " + std::to_string(most));
    }
    return number;
}

// Samples due so far still belong to the previous signal.
void setWave(Device& device, const std::string& wave) {
    if (device.sampler) device.sampler->takeSamples();
    device.signals.set(wave);
}

void setLevel(Device& device, int port, int pin, const std::string& level) {
    const auto modes = device.digitalLines ? device.digitalLines->modes(port) : std::vector<PinMode>();
    if (static_cast<std::size_t>(pin) >= modes.size() || modes[static_cast<std::size_t>(pin)] == PinMode::disabled) {
        throw std::invalid_argument("there is no pin " + std::to_string(pin) + " on port " + std::to_string(port));
    }
    const auto bit = static_cast<std::uint16_t>(1U << static_cast<unsigned>(pin));
    OutsideLevels& outside = device.steered.levels[port];
    outside.mask = static_cast<std::uint16_t>(outside.mask | bit);
    outside.levels = static_cast<std::uint16_t>(outside.levels & ~bit);
    if (level == "off") {
        outside.mask = static_cast<std::uint16_t>(outside.mask & ~bit);
    } else if (numberUpTo(level, 1) == 1) {
        outside.levels = static_cast<std::uint16_t>(outside.levels | bit);
    }
}

void setRefusal(Device& device, const std::string& command, const std::string& status) {
    const int code = commandOf(command);
    if (!device.knows(code)) throw std::invalid_argument("the model does not know the command " + command);
    if (status == "off") {
        device.steered.refusals.erase(code);
    } else {
        device.steered.refusals[code] = static_cast<std::uint8_t>(numberUpTo(status, 255));
    }
}

}  // namespace

const char* const steeringHelp =
    R"(  stall on|off             answer and send nothing
  wave CHANNEL:KIND...     what is at an analog input from now on, as for --wave
  level PORT PIN 0|1|off   what is at a digital input; off leaves it to its wire
  refuse COMMAND STATUS    answer a command, by name or number, with this status; off ends it)";

Words wordsOf(const std::string& line) {
    std::istringstream stream(line);
    Words words;
    for (std::string word; stream >> word;) words.push_back(word);
    return words;
}

bool isOn(const std::string& word) {
    if (word != "on" && word != "off") throw std::invalid_argument("\"" + word + "\" is neither on nor off");
    return word == "on";
}

int commandOf(std::string_view text) {
    const auto found = std::ranges::find(commandTable(), text, &CommandName::name);
    if (found != commandTable().end()) return found->code;
    const bool isNumber = !text.empty() && std::isdigit(static_cast<unsigned char>(text.front())) != 0;
    if (!isNumber) throw std::invalid_argument("no command has the name \"" + std::string(text) + "\"");
    return numberUpTo(std::string(text), 0xFFFF);
}

bool steer(Device& device, const Words& words) {
    const auto asks = [&](const char* verb, std::size_t arguments) {
        return words.size() == arguments + 1 && words[0] == verb;
    };
    if (asks("stall", 1)) {
        device.stall(isOn(words[1]));
    } else if (asks("wave", 1)) {
        setWave(device, words[1]);
    } else if (asks("level", 3)) {
        setLevel(device, numberUpTo(words[1], 255), numberUpTo(words[2], 15), words[3]);
    } else if (asks("refuse", 2)) {
        setRefusal(device, words[1], words[2]);
    } else {
        return false;
    }
    return true;
}

std::string jsonText(std::string_view text) {
    std::string json = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') json += '\\';
        json += c >= ' ' && c <= '~' ? c : '?';
    }
    return json + '"';
}

}  // namespace zvr::sim
