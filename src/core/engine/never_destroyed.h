// Objects that are never destroyed: threads and the interpreter may use them while the process ends.
#pragma once

#include <memory>
#include <utility>

namespace zvr {

/// A new object, default constructed.
template <class Thing>
Thing& neverDestroyed() {
    return *std::make_unique<Thing>().release();
}
/// The given object, moved.
template <class Thing>
Thing& neverDestroyed(Thing thing) {
    return *std::make_unique<Thing>(std::move(thing)).release();
}

}  // namespace zvr
