// The flight controller. Every request begins with its port, 0, and so does every reply.
#pragma once

#include "python/classes.h"

namespace zvr::python {

void defineDroneStatus(ClassMaker& drone);
void defineDroneMoves(ClassMaker& drone);

/// Six floats of a reply: roll, pitch and yaw turned into degrees, and x, y and z as they are.
py::list sixAxes(ByteView data, std::size_t place);

void defineDrone(Package& package);

}  // namespace zvr::python
