// A thread-safe queue, first in, first out.
#pragma once

#include <atomic>
#include <deque>
#include <memory>
#include <optional>

#include "core/waiting.h"

namespace zvr {

/// Wakes a thread that waits for several queues at once.
class Bell {
public:
    void ring() {
        {
            const std::lock_guard lock(mutex_);
            ++count_;
        }
        rung_.notify_all();
    }
    std::uint64_t count() const {
        const std::lock_guard lock(mutex_);
        return count_;
    }
    /// Waits until it has rung more often than `count` times, or until `deadline`.
    void await(std::uint64_t count, Deadline deadline) {
        std::unique_lock lock(mutex_);
        waitOn(rung_, lock, deadline, [&] { return count_ != count; });
    }

private:
    mutable std::mutex mutex_;
    std::condition_variable rung_;
    std::uint64_t count_ = 0;
};

/// Any thread may use any member. A capacity of 0 means no limit.
template <class Item>
class Fifo {
public:
    explicit Fifo(std::size_t capacity = 0) : capacity_(capacity) {}

    /// Adds an item if there is room; tells whether there was.
    bool tryPut(Item item) {
        return add([&](std::unique_lock<std::mutex>&) {
            if (capacity_ != 0 && items_.size() >= capacity_) return false;
            items_.push_back(std::move(item));
            return true;
        });
    }

    /// Waits for room at most until `deadline`.
    bool put(Item item, Deadline deadline, const Attend& attend = {}) {
        return waitAttended(deadline, attend, [&](Deadline until) {
            return add([&](std::unique_lock<std::mutex>& lock) {
                if (!waitOn(left_, lock, until, [&] { return capacity_ == 0 || items_.size() < capacity_; }))
                    return false;
                items_.push_back(std::move(item));
                return true;
            });
        });
    }

    /// Every item that is added from now on rings it.
    void setBell(std::shared_ptr<Bell> bell) {
        const std::lock_guard lock(mutex_);
        bell_ = std::move(bell);
    }

    std::optional<Item> tryGet() {
        const std::lock_guard lock(mutex_);
        return pop();
    }

    /// Waits for an item at most until `deadline`.
    std::optional<Item> get(Deadline deadline, const Attend& attend = {}) {
        std::optional<Item> item;
        waitAttended(deadline, attend, [&](Deadline until) {
            std::unique_lock lock(mutex_);
            waitOn(arrived_, lock, until, [&] { return !items_.empty(); });
            item = pop();
            return item.has_value();
        });
        return item;
    }

    /// Waits until at least `count` items are there, at most until `deadline`; tells how many there are then.
    std::size_t waitForSize(std::size_t count, Deadline deadline, const Attend& attend = {}) {
        waitAttended(deadline, attend, [&](Deadline until) {
            std::unique_lock lock(mutex_);
            return waitOn(arrived_, lock, until, [&] { return items_.size() >= count; });
        });
        return size();
    }

    std::size_t size() const {
        const std::lock_guard lock(mutex_);
        return items_.size();
    }

    std::size_t capacity() const { return capacity_; }

private:
    template <class Put>
    bool add(Put put) {
        std::shared_ptr<Bell> bell;
        {
            std::unique_lock lock(mutex_);
            if (!put(lock)) return false;
            bell = bell_;
        }
        arrived_.notify_all();
        if (bell) bell->ring();
        return true;
    }

    std::optional<Item> pop() {
        if (items_.empty()) return std::nullopt;
        std::optional<Item> item(std::move(items_.front()));
        items_.pop_front();
        if (capacity_ != 0) left_.notify_one();
        return item;
    }

    const std::size_t capacity_;
    mutable std::mutex mutex_;
    std::condition_variable arrived_, left_;  // arrived_ wakes all: the one woken may wait for more than one item
    std::deque<Item> items_;
    std::shared_ptr<Bell> bell_;
};

}  // namespace zvr
