// What the ports of all buses share: the lines behind them, and opening.
#pragma once

#include "core/wire/commands.h"
#include "device/feature.h"
#include "digital/pin_map.h"

namespace zvr::python {

inline const Parameter busPort{"port", "int", "port of the bus"};

/// The modes of lines that a bus may take.
py::list freeModes();

/// Checks port and lines and sends the command; gives the reply. What else is to be done comes before its status.
Task openPort(Op op, PinnedPorts ports, Object port, Command command);

/// The map that the model gave, a constructor that takes it, the checks of port and lines, and `X_getPinMap`, which
/// gives the map.
void definePorts(Feature& bus, const PinnedPorts& ports);

/// A list of the reply's bytes from this place on.
Reply bytesFrom(std::size_t place);

}  // namespace zvr::python
