#include "core/engine/pools.h"

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
        const auto [place, fresh] = replies_.try_emplace(key);
        if (fresh) place->second.order = ++filed_;
        place->second.data = std::move(data);
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
    std::optional<Bytes> data(std::move(found->second.data));
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

std::optional<Bytes> EchoPool::await(Key key, Deadline deadline, const InterruptCheck& onWait) {
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
    waitInterruptibly(deadline, onWait, [&](Deadline until) {
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
    return found == replies_.end() ? std::nullopt : std::optional(found->second.data);
}

std::vector<EchoPool::Key> EchoPool::keys() const {
    std::vector<std::pair<std::uint64_t, Key>> ordered;
    {
        const std::lock_guard lock(mutex_);
        for (const auto& [key, reply] : replies_) ordered.emplace_back(reply.order, key);
    }
    std::ranges::sort(ordered);
    std::vector<Key> keys;
    for (const auto& [order, key] : ordered) keys.push_back(key);
    return keys;
}

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

namespace {

int byteAt(ByteView data, std::size_t index) {
    if (index >= data.size()) throw std::out_of_range("a stream frame is too short for its key");
    return data[index];
}

void add(StreamFifo& fifo, Bytes frame) { fifo.tryPut(std::move(frame)); }
void add(RecordSet& records, Bytes record) { records.add(std::move(record)); }

template <class Key, class Thing>
void fileIn(MakingPool<Key, Thing>& pool, const Key& key, Bytes bytes) {
    if (const auto own = pool.at(key)) {
        add(*own, std::move(bytes));
    } else if (const auto foreign = pool.find(key).foreign) {
        pool.addForeign(foreign, std::move(bytes));
    }
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
            fileIn(*stream, place.key, from(std::move(data), place.skip));
            return;
        }
        case CommandClass::broadcast:
            if (byteAt(data, 0) == 1) fileIn(*broadcast, command, from(std::move(data), 1));
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
