// The base of every operation, as Python sees it: constants, failures, conversions, pools and the request engine.
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

/// Completes all bound types of the package: constructors that reject objects they cannot construct, and an error on
/// copying or pickling.
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
