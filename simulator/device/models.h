// The simulated models as a table, one row each.
#pragma once

#include <algorithm>
#include <iosfwd>
#include <span>
#include <string_view>
#include <vector>

#include "core/wire/bus_pins.h"
#include "core/wire/commands.h"
#include "physics/waveform.h"

namespace zvr::sim {

class Device;

/// The possible directions of the lines of one digital port; bit i is pin i.
struct PortLines {
    int port;
    std::uint16_t inputs;
    std::uint16_t outputs;
};

/// The pins of an output port are wired to the same pins of an input port.
struct Wire {
    int output;
    int input;
};

/// The analog inputs of a model, the same channels behind each chip select of each port; none without ports.
struct AnalogInputs {
    /// What a client can select on a port.
    enum class Choice { nothing, channels, chipSelects };

    std::vector<int> ports;
    std::size_t channels = 8;
    Coding coding{};
    Command read{};    ///< the command of a read on demand
    Command stream{};  ///< that of the data frames; 0 is none
    Choice choice = Choice::nothing;
    std::vector<double> rates{};      ///< highest in Hz, by the number selected
    std::vector<double> portUnits{};  ///< by port, if they differ from the coding's

    double highestRate(std::size_t chosen) const { return rates[std::min(chosen, rates.size()) - 1]; }
};

/// The analog outputs of a model, the same channels in each port; none without ports. They are wired to the inputs of
/// the same number, if any.
struct AnalogOutputs {
    std::vector<int> ports;
    std::size_t channels = 8;       ///< the mask of a run has a bit for each of at most 8
    double least = -10, most = 10;  ///< V
    double rate = 15000;            ///< the highest in Hz
    bool streams = false;
};

/// The ports of a serial bus; `bus_pins.h` has their lines.
struct BusPortNumbers {
    Bus bus;
    std::vector<int> ports;
};

/// One group of commands, named as in the interface.
struct Module {
    std::string_view name;
    void (*add)(Device&);
};

/// How a model is reached.
enum class Link { ethernet, wifi, usb, serial };

struct Model {
    std::string_view name;
    std::string_view displayName;
    Link link;
    std::vector<Module> modules;
    int firstYear = 1900;        ///< the clock's epoch
    int pinsPerPort = 8;         ///< positions in a port, with or without a line
    bool fixedFunction = false;  ///< lines are always in use
    std::vector<PortLines> lines{};
    std::vector<PortLines> boardLines{};  ///< of what is on the board: LEDs and power inputs
    std::vector<Wire> wires{};
    std::vector<BusPortNumbers> buses{};
    AnalogInputs analogInputs{};
    AnalogOutputs analogOutputs{};
    std::vector<int> thermometerPorts{};
    std::size_t thermometersPerPort = 0;
    std::vector<int> motionPorts{};  ///< the connectors with a motion chip behind them

    bool hasBus(Bus bus, int port) const {
        return std::ranges::any_of(buses, [&](const BusPortNumbers& each) {
            return each.bus == bus && std::ranges::find(each.ports, port) != each.ports.end();
        });
    }
};

std::span<const Model> models();

/// Null if there is no such model.
const Model* findModel(std::string_view name);

/// The rows as one JSON array.
void printTable(std::ostream& out);

}  // namespace zvr::sim
