// The simulated models as a table.
#pragma once

#include <algorithm>
#include <span>
#include <string_view>
#include <vector>

#include "core/wire/commands.h"
#include "physics/waveform.h"

namespace zvr::sim {

class Device;

/// What the lines of one digital port can be; bit i is pin i.
struct PortLines {
    int port;
    std::uint16_t inputs;
    std::uint16_t outputs;
};

/// The pins of an output port lead to the same pins of an input port.
struct Wire {
    int output;
    int input;
};

/// The analog inputs of a model, eight channels behind each chip select of each port; none without ports.
struct AnalogInputs {
    /// What a client chooses of a port.
    enum class Choice { nothing, channels, chipSelects };

    std::vector<int> ports;
    Coding coding;
    Command read{};    ///< the command of a read on demand
    Command stream{};  ///< that of the data frames; 0 is none
    Choice choice = Choice::nothing;
    std::vector<double> rates;      ///< the highest in Hz, by how many are chosen
    std::vector<double> portUnits;  ///< by port, where they differ from the coding's

    double highestRate(std::size_t chosen) const { return rates[std::min(chosen, rates.size()) - 1]; }
};

/// The analog outputs of a model, eight channels in each port; none without ports. They lead to the inputs of the same
/// number, where there are any.
struct AnalogOutputs {
    std::vector<int> ports;
    double least = -10, most = 10;  ///< V
    double rate = 15000;            ///< the highest in Hz
    bool streams = false;
};

using AddModule = void (*)(Device&);

/// How a model is reached.
enum class Link { ethernet, wifi, usb, serial };

struct Model {
    std::string_view name;
    std::string_view displayName;
    Link link;
    int firstYear;       ///< that the clock counts from
    int pinsPerPort;     ///< places in a port, whether or not a line is there
    bool fixedFunction;  ///< lines are in use for good
    std::vector<PortLines> lines;
    std::vector<Wire> wires;
    std::vector<AddModule> modules;
    AnalogInputs analogInputs{};
    AnalogOutputs analogOutputs{};
};

std::span<const Model> models();

/// Nothing if there is no such model.
const Model* findModel(std::string_view name);

}  // namespace zvr::sim
