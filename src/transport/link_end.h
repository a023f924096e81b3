// When a link ended, noted once by whoever meets the end first.
#pragma once

#include <atomic>
#include <limits>
#include <mutex>
#include <optional>

#include "core/engine/waiting.h"

namespace zvr {

class LinkEnd {
public:
    /// The time of the end, for the first who notes one: who has found the link alive did so before it, who finds it
    /// ended does so after it. `reason` is not 0.
    std::optional<Deadline> note(int reason) {
        const std::lock_guard lock(mutex_);
        if (reason_ != 0) return std::nullopt;
        reason_ = noting;
        const Deadline when = Clock::now();
        reason_ = reason;
        return when;
    }

    /// 0 for a link that is alive.
    int reason() const {
        if (const int reason = reason_; reason != noting) return reason;
        const std::lock_guard lock(mutex_);
        return reason_;
    }

private:
    static constexpr int noting = std::numeric_limits<int>::min();

    mutable std::mutex mutex_;
    std::atomic<int> reason_{0};
};

}  // namespace zvr
