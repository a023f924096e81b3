// Digital lines and what is made of them.
#pragma once

#include "python/classes.h"

namespace zvr::python {

void defineDio(Package& package);

inline void defineDigital(Package& package) { defineDio(package); }

}  // namespace zvr::python
