// The gate that holds a receive thread back while its connection is shut.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>

#include "core/engine/process.h"
#include "core/engine/waiting.h"

namespace zvr {

/// Shut from construction. The user's side shuts it (`acquire`) and opens it (`release`); both may be repeated and
/// never wait. The thread passes it once per cycle. In a forked child no thread waits at it and its lock may be held
/// for ever, so there it is only a flag.
class Gate {
public:
    void acquire() { turn(true); }
    void release() { turn(false); }

    /// Shuts the gate if it is open or opens before `deadline`; returns whether it did.
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

    /// What a thread remembers of the gate: the number of openings when it last passed.
    using Passed = std::uint64_t;

    Passed openings() const {
        const std::lock_guard lock(mutex_);
        return opened_;
    }

    /// Waits until the gate is open, or has been open since the thread last passed, so that no opening is missed
    /// however short. Ends also at `deadline`, or when `otherwise` becomes true, which is checked again after each
    /// `wake`. Returns the generation counter, which grows with every acquire, release and wake.
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

    /// Passes if that needs no wait; returns the generation counter.
    std::optional<std::uint64_t> tryPass(Passed& passed) {
        const std::lock_guard lock(mutex_);
        if (shut_ && opened_ == passed) return std::nullopt;
        passed = opened_;
        return turn_;
    }

    /// Waits as `pass` does, without passing.
    template <class Otherwise>
    void awaitPassable(Passed passed, Otherwise otherwise) {
        pass(passed, otherwise);
    }

    /// Waits until the gate is open, until `deadline` at most; returns whether it is.
    bool awaitOpen(Deadline deadline) {
        std::unique_lock lock(mutex_);
        return waitOn(turned_, lock, deadline, [this] { return !shut_; });
    }

    /// Wakes all waiters to check again; the gate is unchanged.
    void wake() {
        if (mark_.foreign()) return;
        {
            const std::lock_guard lock(mutex_);
            ++turn_;
        }
        turned_.notify_all();
    }

    /// The current generation counter.
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
