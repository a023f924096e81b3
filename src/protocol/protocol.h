// What every operation stands on: constants, failures, conversions, pools and the request engine, as Python sees them.
#pragma once

#include "python/classes.h"

namespace zvr::python {

void defineConstants(Package& package);
void defineFailures(Package& package);
void defineConversions(Package& package);
void definePools(Package& package);
void defineObjectQueue(Package& package);
void definePacket(Package& package);

inline void defineProtocol(Package& package) {
    defineConstants(package);
    defineFailures(package);
    defineConversions(package);
    definePools(package);
    defineObjectQueue(package);
    definePacket(package);
}

}  // namespace zvr::python
