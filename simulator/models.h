// The simulated models as a table.
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "core/bytes.h"

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
};

std::span<const Model> models();

/// Nothing if there is no such model.
const Model* findModel(std::string_view name);

}  // namespace zvr::sim
