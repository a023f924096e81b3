// Replaces the parts of a running thread.
#pragma once

namespace zvr {

/// The thread asks `changed` on every iteration, and again before it uses an item it has taken. If true, it calls
/// `renew`, which replaces its parts or runs one iteration itself, and starts its next iteration.
template <class Thread>
class Supervisor {
public:
    virtual ~Supervisor() = default;
    /// Cheap, and without any lock.
    virtual bool changed() const noexcept = 0;
    virtual void renew(Thread& thread) = 0;
};

}  // namespace zvr
