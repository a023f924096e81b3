#include "core/engine/reading_right.h"

#include <algorithm>
#include <utility>

namespace zvr {

void ReadingRight::enter(Waiter& waiter, bool canRead) {
    const std::lock_guard lock(mutex_);
    const bool fresh = std::ranges::find(waiters_, &waiter) == waiters_.end();
    if (fresh) waiters_.push_back(&waiter);
    waiter.absent_ = !canRead;
    if (fresh && !canRead) {
        waiter.idle_ = true;
        ++idle_;
        changed_.notify_all();
    }
    pass();
}

void ReadingRight::leave(Waiter& waiter) noexcept {
    const std::lock_guard lock(mutex_);
    std::erase(waiters_, &waiter);
    if (std::exchange(waiter.idle_, false)) --idle_;
    takeFrom(waiter);
    pass();
}

void ReadingRight::leaveToThread(Waiter& waiter) noexcept {
    const std::lock_guard lock(mutex_);
    mayRead_ = false;
    hurried_ = true;
    waiter.absent_ = true;
    takeFrom(waiter);
    changed_.notify_all();
}

void ReadingRight::takeFrom(Waiter& waiter) noexcept {
    waiter.turn_ = false;
    if (holder_ != &waiter) return;
    holder_ = nullptr;
    loopReads_ = false;
    lastUse_ = Clock::now();
    if (threadSleeps_) changed_.notify_all();
}

void ReadingRight::pass() noexcept {
    if (!mayRead_ || threadHolds_ || holder_ != nullptr) return;
    const auto next = std::ranges::find_if(waiters_, [](const Waiter* waiter) { return !waiter->absent_; });
    if (next == waiters_.end()) return;
    holder_ = *next;
    holder_->turn_ = true;
    lastUse_ = Clock::now();
    holder_->onTurn();
}

bool ReadingRight::begin(Waiter& waiter) {
    const std::lock_guard lock(mutex_);
    waiter.absent_ = waiter.idle_;
    pass();
    if (holder_ != &waiter) return false;
    loopReads_ = true;
    return true;
}

void ReadingRight::end(Waiter& waiter) noexcept {
    const std::lock_guard lock(mutex_);
    if (holder_ != &waiter) return;
    loopReads_ = false;
    lastUse_ = Clock::now();
}

void ReadingRight::tellAll() noexcept {
    const std::lock_guard lock(mutex_);
    for (Waiter* const waiter : waiters_) waiter->onTurn();
}

void ReadingRight::awaitChange(std::unique_lock<std::mutex>& lock, Deadline until) {
    if (until != forever) {
        changed_.wait_until(lock, until);
        return;
    }
    threadSleeps_ = true;
    changed_.wait(lock);
    threadSleeps_ = false;
}

ReadingRight::Turn ReadingRight::take(bool watched) {
    const std::uint64_t seen = reads_;
    const Deadline lost = watched ? Clock::now() + longestUnread : forever;
    std::unique_lock lock(mutex_);
    for (;;) {
        const Deadline now = Clock::now(), rested = lastUse_ + lease;
        const bool due = now >= rested || hurried_ || idle_ > 0;
        if (holder_ == nullptr) {
            if (!due) {
                awaitChange(lock, rested);
                continue;
            }
            if (watched && !hurried_ && reads_ != seen) return Turn::others;
            threadHolds_ = true;
            hurried_ = false;
            return Turn::own;
        }
        if (!holder_->isLoop_) {
            awaitChange(lock, now < rested ? rested : forever);
        } else if (!loopReads_ && (hurried_ || now >= lost)) {
            holder_->turn_ = false;
            holder_->absent_ = !hurried_;
            holder_ = nullptr;
        } else if (due && (!watched || reads_ != seen)) {
            return Turn::others;
        } else {
            awaitChange(lock, due ? lost : std::min(rested, lost));
        }
    }
}

void ReadingRight::give(bool mayRead) noexcept {
    const std::lock_guard lock(mutex_);
    threadHolds_ = false;
    mayRead_ = mayRead;
    pass();
}

void ReadingRight::hurry() noexcept {
    const std::lock_guard lock(mutex_);
    hurried_ = true;
    if (holder_ != nullptr) holder_->onTurn();
    changed_.notify_all();
}

void ReadingRight::endLease() noexcept {
    const std::lock_guard lock(mutex_);
    lastUse_ = {};
    changed_.notify_all();
}

bool ReadingRight::isWanted() const {
    const std::lock_guard lock(mutex_);
    return std::ranges::any_of(waiters_, [](const Waiter* waiter) { return !waiter->absent_; });
}

}  // namespace zvr
