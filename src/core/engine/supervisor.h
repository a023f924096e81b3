// Who looks after a thread whose parts may be replaced while it runs.
#pragma once

namespace zvr {

/// The thread asks `changed` at every turn, and again before it uses what it has just taken. If so, it calls `renew`,
/// which gives it other parts, or does a turn in its place, and begins its next turn.
template <class Thread>
class Supervisor {
public:
    virtual ~Supervisor() = default;
    /// Cheap, and without any lock.
    virtual bool changed() const noexcept = 0;
    virtual void renew(Thread& thread) = 0;
};

}  // namespace zvr
