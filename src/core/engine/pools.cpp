#include "core/engine/pools.h"

#include <algorithm>
#include <stdexcept>

#include "core/engine/polling.h"

namespace zvr {

std::shared_ptr<ThreadWaiter> ThreadWaiter::ofThisThread() {
    thread_local std::shared_ptr<ThreadWaiter> own;
    if (!own || own->mark_.foreign()) own = std::make_shared<ThreadWaiter>();
    return own;
}

void ThreadWaiter::onReply() noexcept {
    replied_ = true;
    if (std::this_thread::get_id() != thread_) wake_.ring();
}

void ThreadWaiter::onTurn() noexcept {
    if (std::this_thread::get_id() != thread_) wake_.ring();
}

bool ThreadWaiter::park(Deadline until) {
    if (replied_ || hasTurn()) return takeReply();
    pollfd entry{wake_.number(), POLLIN, 0};
    if (pollUntil({&entry, 1}, until) && entry.revents != 0) wake_.silence();
    return takeReply();
}

void EchoPool::put(Key key, Bytes data) {
    std::vector<std::shared_ptr<ReplySubscriber>> notified;
    {
        const std::lock_guard lock(mutex_);
        auto place = replies_.find(key);
        if (place == replies_.end()) {
            if (spare_) {
                spare_.key() = key;
                place = replies_.insert(std::move(spare_)).position;
            } else {
                place = replies_.try_emplace(key).first;
            }
            place->second.order = ++filed_;
        }
        place->second.data = std::move(data);
        for (const auto& [wanted, subscriber] : subscribers_) {
            if (wanted == key) notified.push_back(subscriber);
        }
    }
    arrivals_.fetch_add(1, std::memory_order_release);
    for (const auto& subscriber : notified) subscriber->onReply();
}

std::optional<Bytes> EchoPool::take(Key key) {
    const std::lock_guard lock(mutex_);
    const auto found = replies_.find(key);
    if (found == replies_.end()) return std::nullopt;
    std::optional<Bytes> data(std::move(found->second.data));
    spare_ = replies_.extract(found);
    return data;
}

std::optional<Bytes> EchoPool::await(Key key, Deadline deadline, const InterruptCheck& onWait) {
    return awaitWith(*ThreadWaiter::ofThisThread(), key, deadline, onWait,
                     [](ThreadWaiter& waiter, Deadline until) { return waiter.park(until); });
}

void EchoPool::subscribe(Key key, std::shared_ptr<ReplySubscriber> subscriber) {
    const std::lock_guard lock(mutex_);
    subscribers_.emplace_back(key, std::move(subscriber));
}

void EchoPool::unsubscribe(Key key, const ReplySubscriber& subscriber) {
    std::shared_ptr<ReplySubscriber> gone;  // destroyed without the lock
    const std::lock_guard lock(mutex_);
    const auto found = std::ranges::find_if(
        subscribers_, [&](const auto& each) { return each.first == key && each.second.get() == &subscriber; });
    if (found == subscribers_.end()) return;
    gone = std::move(found->second);
    subscribers_.erase(found);
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
    std::vector<Key> keys(ordered.size());
    std::ranges::transform(ordered, keys.begin(), [](const auto& entry) { return entry.second; });
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
