// Shared by the ports of all buses: their lines, and opening.
#pragma once

#include "core/wire/commands.h"
#include "device/feature.h"
#include "digital/pin_map.h"

namespace zvr::python {

inline const Parameter busPort{"port", "int", "port of the bus"};

/// The modes of lines that a bus may claim.
py::list freeModes();

/// Checks port and lines and sends the command; returns the reply, whose status the caller handles.
Task openPort(Op op, PinnedPorts ports, Object port, Command command);

/// Defines the field with the model's map, a constructor that takes it, the checks of port and lines, and
/// `X_getPinMap`, which returns the map.
void definePorts(Feature& bus, const PinnedPorts& ports);

/// A list of the reply's bytes from this offset on.
Reply byteListFrom(std::size_t place);

}  // namespace zvr::python
