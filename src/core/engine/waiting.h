// How a thread of the engine waits: on a condition, until a time, with a check of the caller every few milliseconds.
#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <limits>
#include <mutex>

namespace zvr {

using Clock = std::chrono::steady_clock;
using Deadline = Clock::time_point;

inline constexpr Deadline forever = Deadline::max();

/// The time `seconds` from now; `forever` beyond the range of the clock.
inline Deadline deadlineIn(double seconds) {
    constexpr double limit = 1e9;
    if (seconds > limit) return forever;
    return Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
}

/// Called now and then while a thread waits, on that thread and with no lock of the engine held. It may throw, which
/// ends the wait. An empty one is never called.
using InterruptCheck = std::function<void()>;

/// Longest time between two calls of an InterruptCheck while a thread waits, be it in one long wait or in many short
/// ones.
inline constexpr std::chrono::milliseconds checkEvery{25};

/// When this thread last called an InterruptCheck.
inline thread_local Deadline lastChecked{};

/// Calls `onWait` if the last check on this thread was `checkEvery` ago or more.
inline void checkIfDue(const InterruptCheck& onWait) {
    const Deadline now = Clock::now();
    if (now - lastChecked < checkEvery) return;
    lastChecked = now;
    onWait();
}

/// Calls `wait(until)` until it returns true or `deadline` is reached, in pieces short enough for `onWait`, which is
/// called before each piece, so that it never discards the result of a piece.
template <class Wait>
bool waitInterruptibly(Deadline deadline, const InterruptCheck& onWait, Wait&& wait) {
    for (;;) {
        if (onWait) checkIfDue(onWait);
        if (wait(onWait ? std::min(deadline, lastChecked + checkEvery) : deadline)) return true;
        if (Clock::now() >= deadline) return false;
    }
}

/// Waits on a condition variable; returns whether the predicate came true.
template <class Predicate>
bool waitOn(std::condition_variable& condition, std::unique_lock<std::mutex>& lock, Deadline until, Predicate done) {
    if (until == forever) {
        condition.wait(lock, done);
        return true;
    }
    return condition.wait_until(lock, until, done);
}

}  // namespace zvr
