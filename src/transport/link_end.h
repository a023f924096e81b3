// When a link ended, recorded once by the thread that detects it first.
#pragma once

#include <atomic>
#include <limits>
#include <mutex>
#include <optional>

#include "core/engine/waiting.h"

namespace zvr {

class LinkEnd {
public:
    /// The time of the end, returned to the first caller only. Checks that saw the link alive precede it; checks that
    /// saw it ended follow it. `reason` is not 0.
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
