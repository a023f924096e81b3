// The flight controller.
#pragma once

#include "python/classes.h"

namespace zvr::python {

void defineDrone(Package& package);

}  // namespace zvr::python
