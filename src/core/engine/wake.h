// A descriptor by which one thread wakes another out of a poll.
#pragma once

#include "core/engine/process.h"

namespace zvr {

/// Readable from a `ring` to the next `silence`. In a forked child it is nobody's, and nothing happens.
class Wake {
public:
    Wake();

    /// -1 in a forked child.
    int number() const { return descriptor_.get(); }
    void ring() const noexcept;
    void silence() const noexcept;

private:
    OwnDescriptor descriptor_;
};

}  // namespace zvr
