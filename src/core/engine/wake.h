// A descriptor with which one thread wakes another from a poll.
#pragma once

#include "core/engine/process.h"

namespace zvr {

/// Readable from a `ring` (a notification) to the next `silence`. In a forked child it is closed, and calls do nothing.
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
