// The gate at which a receive thread stands while its connection is shut.
#pragma once

#include <cstdint>

#include "core/waiting.h"

namespace zvr {

/// Shut from construction. The user's side shuts it (`acquire`) and opens it (`release`); both may be repeated and
/// never wait. The thread passes it once a cycle.
class Gate {
public:
    void acquire() { turn(true); }
    void release() { turn(false); }

    /// Shuts the gate if it is open, or opens before `deadline`; tells whether.
    bool acquireOpen(Deadline deadline, const Attend& attend = {}) {
        const bool shut = waitAttended(deadline, attend, [&](Deadline until) {
            std::unique_lock lock(mutex_);
            if (!waitOn(turned_, lock, until, [this] { return !shut_; })) return false;
            shut_ = true;
            ++turn_;
            return true;
        });
        if (shut) turned_.notify_all();
        return shut;
    }

    bool locked() const {
        const std::lock_guard lock(mutex_);
        return shut_;
    }

    /// Waits until the gate is open; tells its turn, which grows with every acquire and release.
    std::uint64_t pass() {
        return pass([] { return false; });
    }
    /// The same, but also ends at `deadline`, or when `otherwise` comes true, which is asked again after each `wake`.
    template <class Otherwise>
    std::uint64_t pass(Otherwise otherwise, Deadline deadline = forever) {
        std::unique_lock lock(mutex_);
        waitOn(turned_, lock, deadline, [&] { return !shut_ || otherwise(); });
        return turn_;
    }

    /// Lets who waits at the gate, or for a turn of it, look around; the gate stays as it is.
    void wake() {
        {
            const std::lock_guard lock(mutex_);
            ++turn_;
        }
        turned_.notify_all();
    }

    /// Its turn now.
    std::uint64_t turn() const {
        const std::lock_guard lock(mutex_);
        return turn_;
    }

    /// Waits until somebody turns the gate after `turn`, or until `deadline`.
    void awaitTurn(std::uint64_t turn, Deadline deadline = forever) {
        std::unique_lock lock(mutex_);
        waitOn(turned_, lock, deadline, [&] { return turn_ != turn; });
    }

private:
    void turn(bool shut) {
        {
            const std::lock_guard lock(mutex_);
            shut_ = shut;
            ++turn_;
        }
        turned_.notify_all();
    }

    mutable std::mutex mutex_;
    std::condition_variable turned_;
    bool shut_ = true;
    std::uint64_t turn_ = 0;
};

}  // namespace zvr
