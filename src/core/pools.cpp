#include "core/pools.h"

#include <algorithm>
#include <stdexcept>
#include <thread>

namespace zvr {

namespace {

// A caller gives way to other threads for this long before it parks: on one core the device's answer and the receive
// thread's work happen meanwhile, and parking and waking cost as much as an exchange over loopback.
constexpr std::chrono::microseconds longestYield{20};
constexpr int mostSkips = 6;  // as a power of two

// Lets one thread sleep until it is told of an arrival.
class Parker final : public Listener {
public:
    void onArrival() noexcept override {
        {
            const std::lock_guard lock(mutex_);
            arrived_ = true;
        }
        condition_.notify_one();
    }

    bool park(Deadline until) {
        std::unique_lock lock(mutex_);
        const bool arrived = waitOn(condition_, lock, until, [this] { return arrived_; });
        arrived_ = false;
        return arrived;
    }

private:
    std::mutex mutex_;
    std::condition_variable condition_;
    bool arrived_ = false;
};

}  // namespace

void EchoPool::put(Key key, Bytes data) {
    std::vector<std::shared_ptr<Listener>> told;
    {
        const std::lock_guard lock(mutex_);
        replies_.insert_or_assign(key, std::move(data));
        for (const auto& [wanted, listener] : listeners_) {
            if (wanted == key) told.push_back(listener);
        }
    }
    arrivals_.fetch_add(1, std::memory_order_release);
    for (const auto& listener : told) listener->onArrival();
}

std::optional<Bytes> EchoPool::take(Key key) {
    const std::lock_guard lock(mutex_);
    const auto found = replies_.find(key);
    if (found == replies_.end()) return std::nullopt;
    std::optional<Bytes> data(std::move(found->second));
    replies_.erase(found);
    return data;
}

void EchoPool::yieldFor(Key key, Deadline deadline) {
    if (callsToSkip_ > 0) {
        --callsToSkip_;
        return;
    }
    std::uint64_t seen = arrivals_.load(std::memory_order_acquire);
    if (contains(key)) return;
    const Deadline until = std::min(deadline, Clock::now() + longestYield);
    do {
        std::this_thread::yield();
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

std::optional<Bytes> EchoPool::await(Key key, Deadline deadline, const Attend& attend) {
    yieldFor(key, deadline);
    if (auto data = take(key)) return data;
    const auto parker = std::make_shared<Parker>();
    listen(key, parker);
    struct Forget {
        EchoPool& pool;
        const Listener& listener;
        ~Forget() { pool.forget(listener); }
    } const forget{*this, *parker};
    std::optional<Bytes> data = Clock::now() < deadline ? take(key) : std::nullopt;
    if (data) return data;
    waitAttended(deadline, attend, [&](Deadline until) {
        if (!parker->park(until)) return false;
        data = take(key);
        return data.has_value();
    });
    return data;
}

void EchoPool::listen(Key key, std::shared_ptr<Listener> listener) {
    const std::lock_guard lock(mutex_);
    listeners_.emplace_back(key, std::move(listener));
}

void EchoPool::forget(const Listener& listener) {
    const std::lock_guard lock(mutex_);
    std::erase_if(listeners_, [&](const auto& entry) { return entry.second.get() == &listener; });
}

bool EchoPool::contains(Key key) const {
    const std::lock_guard lock(mutex_);
    return replies_.contains(key);
}

std::optional<Bytes> EchoPool::peek(Key key) const {
    const std::lock_guard lock(mutex_);
    const auto found = replies_.find(key);
    return found == replies_.end() ? std::nullopt : std::optional(found->second);
}

std::vector<EchoPool::Key> EchoPool::keys() const {
    const std::lock_guard lock(mutex_);
    std::vector<Key> keys;
    keys.reserve(replies_.size());
    for (const auto& [key, data] : replies_) keys.push_back(key);
    return keys;
}

namespace {

// The pool of a map from key to something shared that is made on first access.
template <class Map>
auto obtain(std::mutex& mutex, Map& map, const typename Map::key_type& key) {
    const std::lock_guard lock(mutex);
    auto& place = map[key];
    if (!place) place = std::make_shared<typename Map::mapped_type::element_type>();
    return place;
}

template <class Map>
auto keysOf(std::mutex& mutex, const Map& map) {
    const std::lock_guard lock(mutex);
    std::vector<typename Map::key_type> keys;
    keys.reserve(map.size());
    for (const auto& entry : map) keys.push_back(entry.first);
    return keys;
}

}  // namespace

std::shared_ptr<StreamFifo> StreamPool::at(const StreamKey& key) { return obtain(mutex_, fifos_, key); }

void StreamPool::put(const StreamKey& key, std::shared_ptr<StreamFifo> fifo) {
    const std::lock_guard lock(mutex_);
    fifos_[key].swap(fifo);
}

bool StreamPool::erase(const StreamKey& key) {
    std::map<StreamKey, std::shared_ptr<StreamFifo>>::node_type gone;  // its items go without the lock
    const std::lock_guard lock(mutex_);
    gone = fifos_.extract(key);
    return !gone.empty();
}

bool StreamPool::contains(const StreamKey& key) const {
    const std::lock_guard lock(mutex_);
    return fifos_.contains(key);
}

std::vector<StreamKey> StreamPool::keys() const { return keysOf(mutex_, fifos_); }

void RecordSet::add(Bytes record) {
    const std::lock_guard lock(mutex_);
    records_.insert(std::move(record));
}

bool RecordSet::discard(const Bytes& record) {
    const std::lock_guard lock(mutex_);
    return records_.erase(record) != 0;
}

void RecordSet::clear() {
    const std::lock_guard lock(mutex_);
    records_.clear();
}

bool RecordSet::contains(const Bytes& record) const {
    const std::lock_guard lock(mutex_);
    return records_.contains(record);
}

std::vector<Bytes> RecordSet::records() const {
    const std::lock_guard lock(mutex_);
    return {records_.begin(), records_.end()};
}

std::shared_ptr<RecordSet> BroadcastPool::at(int command) { return obtain(mutex_, sets_, command); }

void BroadcastPool::put(int command, std::shared_ptr<RecordSet> records) {
    const std::lock_guard lock(mutex_);
    sets_[command].swap(records);
}

bool BroadcastPool::erase(int command) {
    const std::lock_guard lock(mutex_);
    return sets_.erase(command) != 0;
}

bool BroadcastPool::contains(int command) const {
    const std::lock_guard lock(mutex_);
    return sets_.contains(command);
}

std::vector<int> BroadcastPool::keys() const { return keysOf(mutex_, sets_); }

namespace {

int byteAt(ByteView data, std::size_t index) {
    if (index >= data.size()) throw std::out_of_range("a stream frame is too short for its key");
    return data[index];
}

Bytes from(Bytes data, std::size_t skip) {
    data.erase(data.begin(), data.begin() + static_cast<std::ptrdiff_t>(std::min(skip, data.size())));
    return data;
}

}  // namespace

StreamPlace streamPlaceOf(int command, ByteView data) {
    switch (command) {
        case START_AI_STREAMING: return {{command, byteAt(data, 0), byteAt(data, 1)}, 2};
        case AI_START_STREAMING_24BIT:
        case START_AI_STREAMING_VARIABLE: return {{command, 0, 0}, 2};
        case START_CAN: return {{command}, 2};
        case AHRS_START: return {{command}, 1};
        case START_UART_READING: return {{command, byteAt(data, 0)}, 2};
        default: return {{command}, 0};
    }
}

void DataPools::file(int command, Bytes data) {
    const CommandClass commandClass = classify(command, data);
    file(command, std::move(data), commandClass);
}

void DataPools::file(int command, Bytes data, CommandClass commandClass) {
    switch (commandClass) {
        case CommandClass::streaming: {
            const StreamPlace place = streamPlaceOf(command, data);
            stream->at(place.key)->tryPut(from(std::move(data), place.skip));
            return;
        }
        case CommandClass::broadcast:
            if (byteAt(data, 0) == 1) broadcast->at(command)->add(from(std::move(data), 1));
            return;
        case CommandClass::echo: {
            const EchoPool::Key key = command == MOTION ? motionKey(data) : command;
            echo->put(key, std::move(data));
            return;
        }
        case CommandClass::ignore: return;
    }
}

}  // namespace zvr
