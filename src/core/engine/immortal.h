// Objects that outlive everything: threads and the interpreter may still use them while the process ends.
#pragma once

#include <memory>
#include <utility>

namespace zvr {

template <class Thing>
Thing& immortal(Thing thing = {}) {
    return *std::make_unique<Thing>(std::move(thing)).release();
}

}  // namespace zvr
