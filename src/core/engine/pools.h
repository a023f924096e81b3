// The three data pools of a device: the only meeting point between receive threads and callers.
//
// Receive threads file what they received (DataPools::file); callers take it. Every member of every pool may be called
// from any thread. A listener is told of an arrival on the receive thread, with no lock held.
#pragma once

#include <algorithm>
#include <compare>
#include <map>
#include <memory>
#include <set>
#include <unordered_map>
#include <vector>

#include "core/engine/fifo.h"
#include "core/wire/commands.h"
#include "core/wire/frame.h"

namespace zvr {

/// Notified on arrival; the reply may already be taken.
class Listener {
public:
    virtual ~Listener() = default;
    virtual void onArrival() noexcept = 0;
};

/// Latest unclaimed reply per key: the command code, or the composite key of a MOTION command.
class EchoPool {
public:
    using Key = std::int64_t;

    /// Overwrites an unclaimed reply with the same key.
    void put(Key key, Bytes data);
    /// Removes and returns the reply.
    std::optional<Bytes> take(Key key);
    /// Gives way to other threads for some microseconds, in case the reply is one of a near device. After a miss this
    /// does nothing for a growing number of calls, so that a slow device costs no processor time.
    void yieldFor(Key key, Deadline deadline = forever);
    /// Waits for a reply until `deadline` and takes it. A reply that is there only at the deadline is left.
    std::optional<Bytes> await(Key key, Deadline deadline, const InterruptCheck& onWait = {});

    /// From now on the listener hears of every reply with this key, until `forget`.
    void listen(Key key, std::shared_ptr<Listener> listener);
    void forget(const Listener& listener);

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
    std::uint64_t filed_ = 0;
    std::vector<std::pair<Key, std::shared_ptr<Listener>>> listeners_;
    std::atomic<std::uint64_t> arrivals_{0};
    std::atomic<int> missesInARow_{0}, callsToSkip_{0};
};

/// A listener's stay in a pool.
class Listening {
public:
    Listening(std::shared_ptr<EchoPool> pool, EchoPool::Key key, std::shared_ptr<Listener> listener)
        : pool_(std::move(pool)), listener_(std::move(listener)) {
        pool_->listen(key, listener_);
    }
    ~Listening() { pool_->forget(*listener_); }
    Listening(const Listening&) = delete;
    Listening& operator=(const Listening&) = delete;

private:
    std::shared_ptr<EchoPool> pool_;
    std::shared_ptr<Listener> listener_;
};

/// Streamed frames wait under the command alone, under command and port, or under command, port and chip select.
struct StreamKey {
    static constexpr int absent = -1;
    int command = 0, port = absent, chipSelect = absent;
    auto operator<=>(const StreamKey&) const = default;
};

/// One entry of a stream's queue: a frame, something else that somebody put there, or nothing, which is the marker that
/// wakes a reader so that it looks around.
struct StreamItem {
    StreamItem() = default;
    StreamItem(Bytes bytes) : isFrame(true), frame(std::move(bytes)) {}  // NOLINT: a frame is an item
    /// What was put is given back as it is; `bytes` is what a reader makes of it, if it is a frame.
    StreamItem(std::optional<Bytes> bytes, std::shared_ptr<void> put)
        : isFrame(bytes.has_value()), frame(std::move(bytes).value_or(Bytes())), object(std::move(put)) {}

    bool isMarker() const { return !isFrame && !object; }
    bool operator==(const StreamItem&) const = default;

    bool isFrame = false;
    Bytes frame;
    std::shared_ptr<void> object;
};
using StreamFifo = Fifo<StreamItem>;

/// Replies to one broadcast command; equal ones count once.
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

/// A pool that makes what is missing. What it holds under a key is either the library's own, or something else that
/// somebody put there; the receive threads hand their part of that to a function that knows such things.
template <class Key, class Thing>
class MakingPool {
public:
    /// What is there under a key: one of the two, or neither.
    struct Entry {
        std::shared_ptr<Thing> own;
        std::shared_ptr<void> foreign;
        std::uint64_t order = 0;
    };

    /// The thing of a key; made, empty, when it is first asked for. Nothing if it is a foreign one.
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
        Entry& entry = entryOf(key);
        entry.own.swap(own);
        entry.foreign.swap(foreign);
    }

    bool erase(const Key& key) {
        typename std::map<Key, Entry>::node_type gone;  // it goes without the lock
        const std::lock_guard lock(mutex_);
        gone = entries_.extract(key);
        return !gone.empty();
    }

    bool contains(const Key& key) const {
        const std::lock_guard lock(mutex_);
        return entries_.contains(key);
    }

    /// In the order in which they came.
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
};

using StreamPool = MakingPool<StreamKey, StreamFifo>;
using BroadcastPool = MakingPool<int, RecordSet>;

/// Where the frames of a streaming command wait, and how many leading data bytes are not part of what waits.
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

    /// Files one received frame. Throws std::out_of_range if it lacks the data bytes that its key is made of.
    void file(int command, Bytes data);
    /// The same for a frame whose class is known.
    void file(int command, Bytes data, CommandClass commandClass);
};

}  // namespace zvr
