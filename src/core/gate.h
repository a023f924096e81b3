// The gate at which a receive thread stands while its connection is shut.
#pragma once

#include <cstdint>

#include "core/process.h"
#include "core/waiting.h"

namespace zvr {

/// Shut from construction. The user's side shuts it (`acquire`) and opens it (`release`); both may be repeated and
/// never wait. The thread passes it once a cycle.
class Gate {
public:
    void acquire() { turn(true); }
    void release() { turn(false); }

    /// Counts as a turn, and leaves the gate as it is.
    void ring() {
        if (mark_.foreign()) return;
        {
            const std::lock_guard lock(mutex_);
            ++turn_;
        }
        turned_.notify_all();
    }

    bool locked() const {
        if (mark_.foreign()) return shut_;
        const std::lock_guard lock(mutex_);
        return shut_;
    }

    /// Waits until the gate is open; tells its turn, which grows with every acquire and release.
    std::uint64_t pass() {
        std::unique_lock lock(mutex_);
        turned_.wait(lock, [this] { return !shut_; });
        return turn_;
    }

    /// Waits until somebody turns the gate after `turn`, or until `deadline`.
    void awaitTurn(std::uint64_t turn, Deadline deadline = forever) {
        std::unique_lock lock(mutex_);
        waitOn(turned_, lock, deadline, [&] { return turn_ != turn; });
    }

private:
    void turn(bool shut) {
        if (mark_.foreign()) {
            shut_ = shut;  // no thread stands there, and the lock may be held for good
            return;
        }
        {
            const std::lock_guard lock(mutex_);
            shut_ = shut;
            ++turn_;
        }
        turned_.notify_all();
    }

    mutable std::mutex mutex_;
    std::condition_variable turned_;
    const ProcessMark mark_;
    std::atomic<bool> shut_{true};
    std::uint64_t turn_ = 0;
};

}  // namespace zvr
