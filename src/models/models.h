// The product classes, and the tables about them.
#pragma once

#include "python/classes.h"

namespace zvr::python {

void defineModels(Package& package);
void defineCatalogue(Package& package);

}  // namespace zvr::python
