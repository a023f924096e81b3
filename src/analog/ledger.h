// Tracks pieces of work from beginning to end.
#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <thread>

#include "core/engine/waiting.h"

namespace zvr {

/// Numbers pieces of work from 1 on, and waits until all up to a number are done.
class Ledger {
public:
    /// One piece of work of the calling thread, for a scope.
    class Entry {
    public:
        explicit Entry(Ledger& ledger) : ledger_(ledger), number_(ledger.begin()) {}
        ~Entry() { ledger_.end(number_); }
        Entry(const Entry&) = delete;
        Entry& operator=(const Entry&) = delete;

    private:
        Ledger& ledger_;
        const std::uint64_t number_;
    };

    std::uint64_t begun() const {
        const std::lock_guard lock(mutex_);
        return begun_;
    }

    /// Whether the calling thread is inside a piece.
    bool isMine() const {
        const std::lock_guard lock(mutex_);
        return std::ranges::any_of(open_, [](const auto& piece) { return piece.second == std::this_thread::get_id(); });
    }

    /// Waits until `count` pieces have begun and those are done; the calling thread's own are not waited for.
    bool await(std::uint64_t count, Deadline until) {
        std::unique_lock lock(mutex_);
        return waitOn(done_, lock, until, [&] {
            return begun_ >= count && std::ranges::none_of(open_, [&](const auto& piece) {
                       return piece.first <= count && piece.second != std::this_thread::get_id();
                   });
        });
    }

private:
    std::uint64_t begin() {
        const std::lock_guard lock(mutex_);
        open_.emplace(++begun_, std::this_thread::get_id());
        return begun_;
    }

    void end(std::uint64_t number) {
        {
            const std::lock_guard lock(mutex_);
            open_.erase(number);
        }
        done_.notify_all();
    }

    mutable std::mutex mutex_;
    std::condition_variable done_;
    std::uint64_t begun_ = 0;
    std::map<std::uint64_t, std::thread::id> open_;
};

}  // namespace zvr
