// What several tests of the engine need.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <future>
#include <iterator>

#include "core/engine/waiting.h"

namespace zvr::testing {

/// For waits that a correct engine ends at once.
inline Deadline patience() { return Clock::now() + std::chrono::seconds(20); }

template <class Result>
bool endsSoon(const std::future<Result>& result) {
    return result.wait_until(patience()) == std::future_status::ready;
}

/// A place where threads tell that they have come to it, and how often.
class Milestone {
public:
    void reach() {
        {
            const std::lock_guard lock(mutex_);
            ++count_;
        }
        changed_.notify_all();
    }

    [[nodiscard]] bool awaitCount(int count, Deadline deadline = patience()) {
        std::unique_lock lock(mutex_);
        return waitOn(changed_, lock, deadline, [&] { return count_ >= count; });
    }

    int count() const {
        const std::lock_guard lock(mutex_);
        return count_;
    }

private:
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    int count_ = 0;
};

/// What a test throws out of an InterruptCheck.
struct Interrupted {};

inline std::ptrdiff_t openDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

}  // namespace zvr::testing
