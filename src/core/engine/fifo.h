// A thread-safe queue, first in, first out.
#pragma once

#include <atomic>
#include <deque>
#include <memory>
#include <optional>

#include "core/engine/process.h"
#include "core/engine/waiting.h"

namespace zvr {

/// Wakes a thread that waits on several queues at once.
class Notifier {
public:
    void notify() {
        {
            const std::lock_guard lock(mutex_);
            ++count_;
        }
        notified_.notify_all();
    }
    std::uint64_t count() const {
        const std::lock_guard lock(mutex_);
        return count_;
    }
    /// Waits until it has been notified more often than `count` times, or until `deadline`; returns whether it has.
    bool await(std::uint64_t count, Deadline deadline) {
        std::unique_lock lock(mutex_);
        return waitOn(notified_, lock, deadline, [&] { return count_ != count; });
    }

private:
    mutable std::mutex mutex_;
    std::condition_variable notified_;
    std::uint64_t count_ = 0;
};

/// Items that were put and not yet declared done.
class UnfinishedTasks {
public:
    void add(std::size_t count) {
        const std::lock_guard lock(mutex_);
        count_ += count;
    }
    /// Declares one done; returns whether there was one.
    bool done() {
        {
            const std::lock_guard lock(mutex_);
            if (count_ == 0) return false;
            --count_;
        }
        finished_.notify_all();
        return true;
    }
    std::size_t count() const {
        const std::lock_guard lock(mutex_);
        return count_;
    }
    /// Waits until all are done.
    void await(const InterruptCheck& onWait) const {
        waitInterruptibly(forever, onWait, [&](Deadline until) {
            std::unique_lock lock(mutex_);
            return waitOn(finished_, lock, until, [&] { return count_ == 0; });
        });
    }

private:
    mutable std::mutex mutex_;
    mutable std::condition_variable finished_;
    std::size_t count_ = 0;
};

template <class Item>
class Fifo;

/// A consumer of a queue that may take an item directly, on the thread that puts it.
template <class Item>
class DirectTaker {
public:
    virtual ~DirectTaker() = default;
    /// Takes an item of an empty queue, or leaves it as it is. Never waits.
    virtual bool tryTake(const Fifo<Item>& queue, Item& item) = 0;
};

/// Any thread may use any member. A capacity of 0 means no limit.
template <class Item>
class Fifo {
public:
    explicit Fifo(std::size_t capacity = 0) : capacity_(capacity) {}

    UnfinishedTasks tasks;

    /// Adds an item if there is room; returns whether there was.
    bool tryPut(Item item) {
        if (const auto taker = takerOfNext(); taker && taker->tryTake(*this, item)) {
            tasks.add(1);
            return true;
        }
        return add([&](std::unique_lock<std::mutex>&) {
            if (capacity_ != 0 && items_.size() >= capacity_) return false;
            items_.push_back(std::move(item));
            return true;
        });
    }

    /// Waits for room until `deadline` at most.
    bool put(Item item, Deadline deadline, const InterruptCheck& onWait = {}) {
        return waitInterruptibly(deadline, onWait, [&](Deadline until) {
            return add([&](std::unique_lock<std::mutex>& lock) {
                if (!waitOn(left_, lock, until, [&] { return capacity_ == 0 || items_.size() < capacity_; }))
                    return false;
                items_.push_back(std::move(item));
                return true;
            });
        });
    }

    /// Puts the item that was taken last back at the front.
    void putBack(Item item) {
        {
            const std::lock_guard lock(mutex_);
            items_.push_front(std::move(item));
        }
        arrived_.notify_all();
    }

    /// Notified of every item that is added from now on.
    void setNotifier(std::shared_ptr<Notifier> notifier) {
        const std::lock_guard lock(mutex_);
        notifier_ = std::move(notifier);
    }
    /// Offered every item that is put into the empty queue.
    void setTaker(std::weak_ptr<DirectTaker<Item>> taker) {
        const std::lock_guard lock(mutex_);
        taker_ = std::move(taker);
    }

    std::optional<Item> tryGet() {
        const std::lock_guard lock(mutex_);
        return pop();
    }

    /// Waits for an item until `deadline` at most.
    std::optional<Item> get(Deadline deadline, const InterruptCheck& onWait = {}) {
        std::optional<Item> item;
        waitInterruptibly(deadline, onWait, [&](Deadline until) {
            std::unique_lock lock(mutex_);
            waitOn(arrived_, lock, until, [&] { return !items_.empty(); });
            item = pop();
            return item.has_value();
        });
        return item;
    }

    /// Waits until there are at least `count` items, until `deadline`, or until `endWaits`; returns the number of
    /// items.
    std::size_t waitForSize(std::size_t count, Deadline deadline, const InterruptCheck& onWait = {}) {
        const std::uint64_t ends = ends_;
        waitInterruptibly(deadline, onWait, [&](Deadline until) {
            std::unique_lock lock(mutex_);
            return waitOn(arrived_, lock, until, [&] { return items_.size() >= count || ends_ != ends; });
        });
        return size();
    }

    std::size_t size() const {
        const std::lock_guard lock(mutex_);
        return items_.size();
    }

    std::size_t capacity() const { return capacity_; }

    /// Nothing more will come for now: ends all waits for a size.
    void endWaits() {
        {
            const std::lock_guard lock(mutex_);
            ++ends_;
        }
        arrived_.notify_all();
    }
    /// Number of endWaits() calls so far.
    std::uint64_t ends() const noexcept { return ends_; }

    /// Whether it belongs to the parent of this forked child, where its lock may be held for good.
    bool isForeign() const { return mark_.foreign(); }

    /// Calls `visit` with every item, with the queue's lock held; with none in a forked child.
    template <class Visit>
    void visit(Visit visit) const {
        if (isForeign()) return;
        const std::lock_guard lock(mutex_);
        for (const Item& item : items_) visit(item);
    }
    void clear() {
        if (isForeign()) return;
        std::deque<Item> gone;  // destroyed without the lock
        const std::lock_guard lock(mutex_);
        gone.swap(items_);
    }

private:
    template <class Put>
    bool add(Put put) {
        std::shared_ptr<Notifier> notifier;
        {
            std::unique_lock lock(mutex_);
            if (!put(lock)) return false;
            tasks.add(1);
            notifier = notifier_;
        }
        arrived_.notify_all();
        if (notifier) notifier->notify();
        return true;
    }

    std::shared_ptr<DirectTaker<Item>> takerOfNext() const {
        const std::lock_guard lock(mutex_);
        return items_.empty() ? taker_.lock() : nullptr;
    }

    std::optional<Item> pop() {
        if (items_.empty()) return std::nullopt;
        std::optional<Item> item(std::move(items_.front()));
        items_.pop_front();
        if (capacity_ != 0) left_.notify_one();
        return item;
    }

    const std::size_t capacity_;
    const ProcessMark mark_;
    mutable std::mutex mutex_;
    std::condition_variable arrived_, left_;  // arrived_ wakes all waiters: one may wait for several items
    std::deque<Item> items_;
    std::atomic<std::uint64_t> ends_{0};
    std::shared_ptr<Notifier> notifier_;
    std::weak_ptr<DirectTaker<Item>> taker_;
};

}  // namespace zvr
