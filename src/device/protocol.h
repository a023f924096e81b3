// What every operation stands on: constants, failures, conversions, pools and the request engine, as Python sees them.
#pragma once

#include "core/engine/pools.h"
#include "python/classes.h"

namespace zvr::python {

/// The key of a stream's queue: the command, or a tuple of it with port and chip select.
Object keyObject(const StreamKey& key);

void defineConstants(Package& package);
void defineFailures(Package& package);
void defineConversions(Package& package);
void defineQueues(Package& package);
void definePools(Package& package);
void defineRowFifo(Package& package);
void definePacket(Package& package);

/// Gives all bound types of the package what Python can ask of any: a constructor that refuses what it cannot make, and
/// a refusal to be copied or pickled.
void completeBoundTypes(Package& package);

inline void defineProtocol(Package& package) {
    defineConstants(package);
    defineFailures(package);
    defineConversions(package);
    defineQueues(package);
    definePools(package);
    defineRowFifo(package);
    definePacket(package);
}

}  // namespace zvr::python
