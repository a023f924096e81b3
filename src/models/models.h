// The product classes, and the tables about them.
#pragma once

#include "device/feature.h"

namespace zvr::python {

void defineModels(Package& package);
void defineCatalogue(Package& package);
/// pyzvr.open.
void defineOpening(Package& package);

}  // namespace zvr::python
