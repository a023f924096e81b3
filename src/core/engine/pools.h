// The three data pools of a device: all that passes between the threads that read and those that wait.
//
// The reader of a link files what it received (DataPools::file); callers take it. Every member of every pool may be
// called from any thread. A subscriber is notified of a reply on the thread that files it, with no lock held.
#pragma once

#include <algorithm>
#include <compare>
#include <map>
#include <memory>
#include <set>
#include <thread>
#include <unordered_map>
#include <vector>

#include "core/engine/fifo.h"
#include "core/engine/reading_right.h"
#include "core/engine/wake.h"
#include "core/wire/commands.h"
#include "core/wire/frame.h"

namespace zvr {

/// Notified of a reply; it may already be taken.
class ReplySubscriber {
public:
    virtual ~ReplySubscriber() = default;
    virtual void onReply() noexcept = 0;
};

class ThreadWaiter;

/// Latest unclaimed reply per key: the command code, or the composite key of a MOTION command.
class EchoPool {
public:
    using Key = std::int64_t;

    /// Overwrites an unclaimed reply with the same key.
    void put(Key key, Bytes data);
    /// Removes and returns the reply.
    std::optional<Bytes> take(Key key);
    /// Yields to other threads for some microseconds, in case a nearby device answers at once, and polls with `read`
    /// each time. After a miss this does nothing for a growing number of calls, so that a slow device costs no
    /// processor time.
    template <class Read>
    void yieldFor(Key key, Read&& read);
    /// Waits for a reply until `deadline` and takes it. A reply that arrives only at the deadline stays in the pool.
    std::optional<Bytes> await(Key key, Deadline deadline, const InterruptCheck& onWait = {});
    /// The same with the caller's own wait: `wait(waiter, until)` returns whether the waiter was notified of a reply.
    template <class Wait>
    std::optional<Bytes> awaitWith(ThreadWaiter& waiter, Key key, Deadline deadline, const InterruptCheck& onWait,
                                   Wait&& wait);

    /// Notifies the subscriber of every reply with this key from now on, until `unsubscribe`.
    void subscribe(Key key, std::shared_ptr<ReplySubscriber> subscriber);
    void unsubscribe(Key key, const ReplySubscriber& subscriber);

    bool contains(Key key) const;
    std::optional<Bytes> peek(Key key) const;
    std::vector<Key> keys() const;

private:
    mutable std::mutex mutex_;
    struct Reply {
        std::uint64_t order;
        Bytes data;
    };
    std::unordered_map<Key, Reply> replies_;
    std::unordered_map<Key, Reply>::node_type spare_;  // node of the reply taken last, for reuse
    // How long to yield: parking and waking cost as much as an exchange over loopback, and on one core the device
    // answers meanwhile.
    static constexpr std::chrono::microseconds longestYield{50};
    static constexpr int mostSkips = 6;  // as a power of two

    std::uint64_t filed_ = 0;
    std::vector<std::pair<Key, std::shared_ptr<ReplySubscriber>>> subscribers_;
    std::atomic<std::uint64_t> arrivals_{0};
    std::atomic<int> missesInARow_{0}, callsToSkip_{0};
};

/// Keeps a subscriber in a pool for a scope.
class Subscription {
public:
    Subscription(EchoPool& pool, EchoPool::Key key, std::shared_ptr<ReplySubscriber> subscriber)
        : pool_(pool), key_(key), subscriber_(std::move(subscriber)) {
        pool_.subscribe(key_, subscriber_);
    }
    ~Subscription() { pool_.unsubscribe(key_, *subscriber_); }
    Subscription(const Subscription&) = delete;
    Subscription& operator=(const Subscription&) = delete;

private:
    EchoPool& pool_;
    const EchoPool::Key key_;
    const std::shared_ptr<ReplySubscriber> subscriber_;
};

/// How a calling thread waits for a reply: it polls a descriptor of its own, and a link beside it if it reads.
class ThreadWaiter final : public ReplySubscriber,
                           public ReadingRight::Waiter,
                           public std::enable_shared_from_this<ThreadWaiter> {
public:
    /// The waiter of this thread, made once. Nested waits share it, so a wake may be meant for another of them.
    static std::shared_ptr<ThreadWaiter> ofThisThread();

    void onReply() noexcept override;
    void onTurn() noexcept override;
    const Wake& wake() const { return wake_; }

    /// Whether it was notified of a reply since the last call.
    bool takeReply() noexcept { return replied_.exchange(false); }
    /// Waits until it is notified of anything, until `until` at most; returns whether of a reply.
    bool park(Deadline until);

private:
    const std::thread::id thread_ = std::this_thread::get_id();
    const ProcessMark mark_;
    const Wake wake_;
    std::atomic<bool> replied_{false};
};

template <class Read>
void EchoPool::yieldFor(Key key, Read&& read) {
    if (callsToSkip_ > 0) {
        --callsToSkip_;
        return;
    }
    std::uint64_t seen = arrivals_.load(std::memory_order_acquire);
    if (contains(key)) return;
    const Deadline until = Clock::now() + longestYield;
    do {
        std::this_thread::yield();
        read();
        const std::uint64_t now = arrivals_.load(std::memory_order_acquire);
        if (now != seen && contains(key)) {
            missesInARow_ = 0;
            return;
        }
        seen = now;
    } while (Clock::now() < until);
    missesInARow_ = std::min(missesInARow_ + 1, mostSkips);
    callsToSkip_ = (1 << missesInARow_) - 1;
}

template <class Wait>
std::optional<Bytes> EchoPool::awaitWith(ThreadWaiter& waiter, Key key, Deadline deadline, const InterruptCheck& onWait,
                                         Wait&& wait) {
    const Subscription stay(*this, key, waiter.shared_from_this());
    std::optional<Bytes> data = Clock::now() < deadline ? take(key) : std::nullopt;
    if (data) return data;
    waitInterruptibly(deadline, onWait, [&](Deadline until) {
        if (!wait(waiter, until)) return false;
        data = take(key);
        return data.has_value();
    });
    return data;
}

/// The key of queued stream frames: the command alone, command and port, or command, port and chip select.
struct StreamKey {
    static constexpr int absent = -1;
    int command = 0, port = absent, chipSelect = absent;
    auto operator<=>(const StreamKey&) const = default;
};

/// One entry of a stream's queue: a frame, an object that a user put there, or nothing, the marker that only wakes a
/// reader.
struct StreamItem {
    StreamItem() = default;
    StreamItem(Bytes bytes)  // NOLINT: a frame is an item
        : isFrame(true), frame(std::move(bytes)), number(++newest) {}
    /// `put` is the object to be given back unchanged; `bytes` is its content if it is a frame.
    StreamItem(std::optional<Bytes> bytes, std::shared_ptr<void> put)
        : isFrame(bytes.has_value()),
          frame(std::move(bytes).value_or(Bytes())),
          object(std::move(put)),
          number(++newest) {}

    bool isMarker() const { return !isFrame && !object; }
    bool operator==(const StreamItem& other) const {
        return isFrame == other.isFrame && frame == other.frame && object == other.object;
    }

    /// The number of the item made last; later items have greater ones.
    static inline std::atomic<std::uint64_t> newest = 0;

    bool isFrame = false;
    Bytes frame;
    std::shared_ptr<void> object;
    std::uint64_t number = 0;
};
using StreamFifo = Fifo<StreamItem>;

/// Replies to one broadcast command, without duplicates.
class RecordSet {
public:
    void add(Bytes record);
    bool discard(const Bytes& record);
    void clear();
    bool contains(const Bytes& record) const;
    std::vector<Bytes> records() const;

private:
    mutable std::mutex mutex_;
    std::set<Bytes> records_;
};

/// A pool that creates missing entries. An entry is either the library's own thing or a foreign object that a user put
/// there, into which receive threads file through a function set by the binding.
template <class Key, class Thing>
class MakingPool {
public:
    /// The entry of a key: own, foreign, or neither.
    struct Entry {
        std::shared_ptr<Thing> own;
        std::shared_ptr<void> foreign;
        std::uint64_t order = 0;
    };

    /// The thing of a key, created empty at first use. Null if it is foreign.
    std::shared_ptr<Thing> at(const Key& key) {
        const std::lock_guard lock(mutex_);
        Entry& entry = entryOf(key);
        if (!entry.own && !entry.foreign) entry.own = std::make_shared<Thing>();
        return entry.own;
    }

    Entry find(const Key& key) const {
        const std::lock_guard lock(mutex_);
        const auto found = entries_.find(key);
        return found == entries_.end() ? Entry() : found->second;
    }

    void put(const Key& key, std::shared_ptr<Thing> own, std::shared_ptr<void> foreign = nullptr) {
        const std::lock_guard lock(mutex_);
        if (foreign) holdsForeign_ = true;
        Entry& entry = entryOf(key);
        entry.own.swap(own);
        entry.foreign.swap(foreign);
    }

    bool erase(const Key& key) {
        typename std::map<Key, Entry>::node_type gone;  // destroyed without the lock
        const std::lock_guard lock(mutex_);
        gone = entries_.extract(key);
        return !gone.empty();
    }

    bool contains(const Key& key) const {
        const std::lock_guard lock(mutex_);
        return entries_.contains(key);
    }

    /// Whether it has ever held a foreign thing.
    bool holdsForeign() const noexcept { return holdsForeign_; }

    /// In order of creation.
    std::vector<Key> keys() const {
        std::vector<std::pair<std::uint64_t, Key>> ordered;
        {
            const std::lock_guard lock(mutex_);
            for (const auto& [key, entry] : entries_) ordered.emplace_back(entry.order, key);
        }
        std::sort(ordered.begin(), ordered.end());
        std::vector<Key> keys;
        for (const auto& [order, key] : ordered) keys.push_back(key);
        return keys;
    }

    /// Adds bytes to a foreign thing; set once, before any thread runs.
    static inline void (*addForeign)(const std::shared_ptr<void>& thing, Bytes bytes) = nullptr;

private:
    Entry& entryOf(const Key& key) {
        const auto [place, fresh] = entries_.try_emplace(key);
        if (fresh) place->second.order = ++made_;
        return place->second;
    }

    mutable std::mutex mutex_;
    std::map<Key, Entry> entries_;
    std::uint64_t made_ = 0;
    std::atomic<bool> holdsForeign_{false};
};

using StreamPool = MakingPool<StreamKey, StreamFifo>;
using BroadcastPool = MakingPool<int, RecordSet>;

/// The queue of a streaming command's frames, and the number of leading data bytes that are not queued.
struct StreamPlace {
    StreamKey key;
    std::size_t skip;
};

/// Throws std::out_of_range if the data is too short for its key.
StreamPlace streamPlaceOf(int command, ByteView data);

struct DataPools {
    std::shared_ptr<EchoPool> echo = std::make_shared<EchoPool>();
    std::shared_ptr<StreamPool> stream = std::make_shared<StreamPool>();
    std::shared_ptr<BroadcastPool> broadcast = std::make_shared<BroadcastPool>();

    /// Files one received frame. Throws std::out_of_range if the data is too short for its key.
    void file(int command, Bytes data);
    /// The same for a frame of known class.
    void file(int command, Bytes data, CommandClass commandClass);
};

}  // namespace zvr
