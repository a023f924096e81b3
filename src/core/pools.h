// The three data pools of a device: the only meeting point between receive threads and callers.
//
// Receive threads file what they received (DataPools::file); callers take it. Every member of every pool may be called
// from any thread. A listener is told of an arrival on the receive thread, with no lock held.
#pragma once

#include <compare>
#include <map>
#include <memory>
#include <set>
#include <unordered_map>
#include <vector>

#include "core/commands.h"
#include "core/fifo.h"
#include "core/frame.h"

namespace zvr {

/// Told when something it waits for has arrived. It may already be gone when it looks.
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
    std::optional<Bytes> await(Key key, Deadline deadline, const Attend& attend = {});

    /// From now on the listener hears of every reply with this key, until `forget`.
    void listen(Key key, std::shared_ptr<Listener> listener);
    void forget(const Listener& listener);

    bool contains(Key key) const;
    std::optional<Bytes> peek(Key key) const;
    std::vector<Key> keys() const;

private:
    mutable std::mutex mutex_;
    std::unordered_map<Key, Bytes> replies_;
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

class StreamPool {
public:
    /// The FIFO of a key; made, empty and without limit, when it is first asked for.
    std::shared_ptr<StreamFifo> at(const StreamKey& key);
    void put(const StreamKey& key, std::shared_ptr<StreamFifo> fifo);
    bool erase(const StreamKey& key);
    bool contains(const StreamKey& key) const;
    std::vector<StreamKey> keys() const;

private:
    mutable std::mutex mutex_;
    std::map<StreamKey, std::shared_ptr<StreamFifo>> fifos_;
};

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

class BroadcastPool {
public:
    /// The set of a command; made, empty, when it is first asked for, and the same one ever after.
    std::shared_ptr<RecordSet> at(int command);
    void put(int command, std::shared_ptr<RecordSet> records);
    bool erase(int command);
    bool contains(int command) const;
    std::vector<int> keys() const;

private:
    mutable std::mutex mutex_;
    std::map<int, std::shared_ptr<RecordSet>> sets_;
};

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
