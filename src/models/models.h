// The product classes.
#pragma once

#include "python/classes.h"

namespace zvr::python {

void defineModels(Package& package);

}  // namespace zvr::python
