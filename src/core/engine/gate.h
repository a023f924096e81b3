// The gate at which a receive thread stands while its connection is shut.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>

#include "core/engine/process.h"
#include "core/engine/waiting.h"

namespace zvr {

/// Shut from construction. The user's side shuts it (`acquire`) and opens it (`release`); both may be repeated and
/// never wait. The thread passes it once a cycle. In a forked child no thread stands at it, and its lock may be held
/// for good: it is a flag there.
class Gate {
public:
    void acquire() { turn(true); }
    void release() { turn(false); }

    /// Shuts the gate if it is open, or opens before `deadline`; tells whether.
    bool acquireOpen(Deadline deadline, const InterruptCheck& onWait = {}) {
        if (mark_.foreign()) return !shut_.exchange(true);
        const bool shut = waitInterruptibly(deadline, onWait, [&](Deadline until) {
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
        if (mark_.foreign()) return shut_;
        const std::lock_guard lock(mutex_);
        return shut_;
    }

    /// What one thread remembers of the gate: how often it had been opened when it was passed last.
    using Passed = std::uint64_t;

    Passed openings() const {
        const std::lock_guard lock(mutex_);
        return opened_;
    }

    /// Waits until the gate is open, or has been open since the thread passed it last, so that no opening is missed
    /// however short. Ends also at `deadline`, or when `otherwise` comes true, which is asked again after each `wake`.
    /// Returns the generation counter, which grows with every acquire, release and wake.
    template <class Otherwise>
    std::uint64_t pass(Passed& passed, Otherwise otherwise, Deadline deadline = forever) {
        std::unique_lock lock(mutex_);
        waitOn(turned_, lock, deadline, [&] { return !shut_ || opened_ != passed || otherwise(); });
        passed = opened_;
        return turn_;
    }

    std::uint64_t pass(Passed& passed) {
        return pass(passed, [] { return false; });
    }

    /// Passes if that needs no wait; gives the generation counter.
    std::optional<std::uint64_t> tryPass(Passed& passed) {
        const std::lock_guard lock(mutex_);
        if (shut_ && opened_ == passed) return std::nullopt;
        passed = opened_;
        return turn_;
    }

    /// Waits as `pass` does, and passes nothing.
    template <class Otherwise>
    void awaitPassable(Passed passed, Otherwise otherwise) {
        pass(passed, otherwise);
    }

    /// Waits until the gate is open, at most until `deadline`; tells whether it is.
    bool awaitOpen(Deadline deadline) {
        std::unique_lock lock(mutex_);
        return waitOn(turned_, lock, deadline, [this] { return !shut_; });
    }

    /// Lets who waits at the gate, or for a turn of it, look around; the gate stays as it is.
    void wake() {
        if (mark_.foreign()) return;
        {
            const std::lock_guard lock(mutex_);
            ++turn_;
        }
        turned_.notify_all();
    }

    /// The generation counter now.
    std::uint64_t turn() const {
        const std::lock_guard lock(mutex_);
        return turn_;
    }

    /// Waits until the generation counter is no longer `turn`, or until `deadline`.
    void awaitTurn(std::uint64_t turn, Deadline deadline = forever) {
        std::unique_lock lock(mutex_);
        waitOn(turned_, lock, deadline, [&] { return turn_ != turn; });
    }

private:
    void turn(bool shut) {
        if (mark_.foreign()) {
            shut_ = shut;
            return;
        }
        {
            const std::lock_guard lock(mutex_);
            if (shut_ && !shut) ++opened_;
            shut_ = shut;
            ++turn_;
        }
        turned_.notify_all();
    }

    mutable std::mutex mutex_;
    std::condition_variable turned_;
    const ProcessMark mark_;
    std::atomic<bool> shut_{true};
    std::uint64_t turn_ = 0, opened_ = 0;
};

}  // namespace zvr
