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

    bool locked() const {
        const std::lock_guard lock(mutex_);
        return shut_;
    }

    /// Waits until the gate is open; tells its turn, which grows with every acquire and release.
    std::uint64_t pass() {
        std::unique_lock lock(mutex_);
        turned_.wait(lock, [this] { return !shut_; });
        return turn_;
    }

    std::uint64_t turn() const {
        const std::lock_guard lock(mutex_);
        return turn_;
    }

    /// Wakes who waits for a turn, so that it looks around; the gate stays as it is.
    void nudge() {
        {
            const std::lock_guard lock(mutex_);
            ++turn_;
        }
        turned_.notify_all();
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
