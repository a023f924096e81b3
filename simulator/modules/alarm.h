// A module's deferred action.
#pragma once

#include <memory>

#include "device/scheduler.h"

namespace zvr::sim {

/// One deferred action; setting it again replaces the time.
class Alarm {
public:
    Alarm(Scheduler& scheduler, std::function<void()> action)
        : scheduler_(scheduler), state_(std::make_shared<State>()) {
        state_->action = std::move(action);
    }

    void cancel() { state_->due.reset(); }
    void set(Scheduler::Clock::time_point due) {
        if (state_->due == due) return;
        state_->due = due;
        scheduler_.at(due, [weak = std::weak_ptr(state_), due] {
            const auto state = weak.lock();
            if (!state || state->due != due) return;
            state->due.reset();
            state->action();
        });
    }

private:
    struct State {
        std::optional<Scheduler::Clock::time_point> due;
        std::function<void()> action;
    };

    Scheduler& scheduler_;
    std::shared_ptr<State> state_;
};

}  // namespace zvr::sim
