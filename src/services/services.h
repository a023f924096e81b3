// What every device offers, and the network settings.
#pragma once

#include "python/classes.h"

namespace zvr::python {

void defineSystem(Package& package);
void defineNetwork(Package& package);

inline void defineServices(Package& package) {
    defineSystem(package);
    defineNetwork(package);
}

}  // namespace zvr::python
