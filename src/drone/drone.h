// The flight controller. Every request begins with its port, 0, and so does every reply.
#pragma once

#include "device/feature.h"

namespace zvr::python {

// The checks of the modes; `DroneBased` has them.
Definition checkInputMode();
Definition checkFlightMode();

void defineDroneStatus(ClassMaker& drone);
void defineDroneMoves(ClassMaker& drone);

/// Six floats of a reply: roll, pitch and yaw converted to degrees, and x, y and z unchanged.
py::list sixAxes(ByteView data, std::size_t place);

void defineDrone(Package& package);

}  // namespace zvr::python
