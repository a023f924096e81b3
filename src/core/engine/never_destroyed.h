// Objects that outlive everything: threads and the interpreter may still use them while the process ends.
#pragma once

#include <memory>
#include <utility>

namespace zvr {

/// A new one, made in place.
template <class Thing>
Thing& neverDestroyed() {
    return *std::make_unique<Thing>().release();
}
/// This one.
template <class Thing>
Thing& neverDestroyed(Thing thing) {
    return *std::make_unique<Thing>(std::move(thing)).release();
}

}  // namespace zvr
