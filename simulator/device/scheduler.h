// Actions of a device that are due later.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <stdexcept>

namespace zvr::sim {

/// Actions by due time. The thread that serves the device runs them; not thread-safe.
class Scheduler {
public:
    using Clock = std::chrono::steady_clock;

    void at(Clock::time_point due, std::function<void()> action) {
        const auto place = actions_.emplace(due, std::move(action));
        if (place == actions_.begin() && onEarlier_) onEarlier_();
    }

    /// Due time of the first action.
    std::optional<Clock::time_point> next() const {
        if (actions_.empty()) return std::nullopt;
        return actions_.begin()->first;
    }

    /// Runs the actions due now. Actions they add wait for the next call.
    void run() {
        const auto end = actions_.upper_bound(Clock::now());
        std::multimap<Clock::time_point, std::function<void()>> due;
        while (actions_.begin() != end) due.insert(actions_.extract(actions_.begin()));
        for (const auto& [time, action] : due) action();
    }

    /// Sets the callback for when the first action becomes an earlier one. Setting it twice is an error.
    void attach(std::function<void()> onEarlier) {
        if (onEarlier_) throw std::logic_error("the scheduler is run already");
        onEarlier_ = std::move(onEarlier);
    }
    void detach() { onEarlier_ = {}; }

private:
    std::multimap<Clock::time_point, std::function<void()>> actions_;
    std::function<void()> onEarlier_;
};

}  // namespace zvr::sim
