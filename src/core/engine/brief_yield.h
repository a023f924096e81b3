// A short wait without going to sleep.
#pragma once

#include <algorithm>
#include <atomic>
#include <thread>

#include "core/engine/waiting.h"

namespace zvr {

/// Yields to other threads for some microseconds, in case what is waited for comes at once. After a miss it does
/// nothing for a growing number of calls, so that what comes slowly costs no processor time. Any thread may use it.
class BriefYield {
public:
    /// Calls `done` after each yield, until `deadline` at most; returns whether it returned true.
    template <class Done>
    bool until(Done&& done, Deadline deadline = forever) {
        if (callsToSkip_ > 0) {
            --callsToSkip_;
            return false;
        }
        const Deadline begin = Clock::now(), until = std::min(deadline, begin + longest);
        if (begin >= until) return false;
        do {
            std::this_thread::yield();
            if (done()) {
                missesInARow_ = 0;
                return true;
            }
        } while (Clock::now() < until);
        missesInARow_ = std::min(missesInARow_ + 1, mostSkips);
        callsToSkip_ = (1 << missesInARow_) - 1;
        return false;
    }

private:
    // Going to sleep and being woken cost as much as an exchange over loopback, and on one core the other side runs
    // meanwhile.
    static constexpr std::chrono::microseconds longest{50};
    static constexpr int mostSkips = 6;  // as a power of two

    std::atomic<int> missesInARow_{0}, callsToSkip_{0};
};

}  // namespace zvr
