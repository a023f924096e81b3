#include "core/engine/row_queue.h"

#include <algorithm>
#include <cmath>

#include "core/engine/pools.h"

namespace zvr {

namespace {

// Small frames are copied into a shared chunk of this size; large ones keep their own buffer.
constexpr std::size_t chunkBytes = 32768;
constexpr std::size_t largeFrame = 4096;

double secondsSince1970() {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

}  // namespace

std::size_t RowQueue::put(const RowLayout& layout, Bytes frame, std::uint64_t number) {
    const std::size_t rowBytes = layout.rowBytes();
    if (rowBytes == 0 || frame.size() % rowBytes != 0) {
        throw std::invalid_argument("a frame of " + std::to_string(frame.size()) +
                                    " bytes is no whole number of rows of " + std::to_string(layout.columns) +
                                    " samples of " + std::to_string(layout.sampleBytes()) + " bytes");
    }
    bool isEnough = false;
    const std::size_t dropped = add(layout, frame, number, isEnough);
    if (isEnough) wake();
    return dropped;
}

bool RowQueue::putWhole(const RowLayout& layout, Bytes& frame, std::uint64_t number, bool& isEnough) {
    const std::size_t rowBytes = layout.rowBytes();
    if (rowBytes == 0 || frame.size() % rowBytes != 0) return false;
    return add(layout, frame, number, isEnough, frame.size() / rowBytes) == 0;
}

// Drops the rows that do not fit, or all if fewer than `least` fit; the frame is left unchanged then.
std::size_t RowQueue::add(const RowLayout& layout, Bytes& frame, std::uint64_t number, bool& isEnough,
                          std::size_t least) {
    const std::size_t rows = frame.size() / layout.rowBytes();
    const std::lock_guard lock(mutex_);
    if (room() < least) return rows;
    enterRun(rows, number);
    const std::size_t kept = std::min(rows, room());
    dropped_ += rows - kept;
    if (kept != 0) {
        frame.resize(kept * layout.rowBytes());
        append(layout, std::move(frame));
    }
    now_.first += rows;
    now_.droppedBefore += rows - kept;
    isEnough = count(kept);
    return rows - kept;
}

bool RowQueue::putRow(const RowLayout& layout, const Bytes& row, std::shared_ptr<void> object, Deadline deadline,
                      const InterruptCheck& onWait) {
    if (row.empty() || row.size() != layout.rowBytes()) throw std::invalid_argument("this is no row");
    const auto holder = std::make_shared<Bytes>(row);
    return waitInterruptibly(deadline, onWait, [&](Deadline until) {
        bool enough = false;
        {
            std::unique_lock lock(mutex_);
            if (!waitOn(left_, lock, until, [&] { return room() != 0; })) return false;
            chunks_.push_back(
                {layout, {holder, holder->data()}, row.size(), row.size(), 0, std::move(object), placeOfNext()});
            ++now_.first;
            enough = count(1);
        }
        if (enough) wake();
        return true;
    });
}

bool RowQueue::count(std::size_t rows) {
    rows_ += rows;
    tasks.add(rows);
    if (rows_ < wanted_) return false;
    wanted_ = noWaiter;
    return true;
}

void RowQueue::append(const RowLayout& layout, Bytes&& frame) {
    const std::size_t size = frame.size();
    if (size >= largeFrame) {
        const auto holder = std::make_shared<Bytes>(std::move(frame));
        chunks_.push_back({layout, {holder, holder->data()}, size, size, 0, {}, placeOfNext()});
        return;
    }
    const bool continues = !startsChunk_ && now_.droppedBefore == 0;
    if (!continues || chunks_.empty() || chunks_.back().room - chunks_.back().used < size ||
        chunks_.back().layout != layout) {
        const std::shared_ptr<std::uint8_t[]> bytes = std::make_unique_for_overwrite<std::uint8_t[]>(chunkBytes);
        chunks_.push_back({layout, {bytes, bytes.get()}, chunkBytes, 0, 0, {}, placeOfNext()});
    }
    Chunk& last = chunks_.back();
    std::memcpy(last.bytes.get() + last.used, frame.data(), size);
    last.used += size;
}

void RowQueue::enterRun(std::size_t rows, std::uint64_t number) {
    if (beginning_ && number > beginning_->before) {
        now_ = {.rate = beginning_->rate, .run = beginning_->run};
        startsChunk_ = true;
    }
    if (std::isnan(now_.start)) {
        const double taken = now_.rate > 0 ? static_cast<double>(rows - std::min(rows, std::size_t{1})) / now_.rate : 0;
        now_.start = secondsSince1970() - taken;
        if (startsChunk_ && beginning_) now_.start = std::max(now_.start, beginning_->since);
    }
    if (beginning_ && now_.run == beginning_->run) beginning_.reset();
}

RowPlace RowQueue::placeOfNext() {
    const RowPlace place = now_;
    now_.droppedBefore = 0;
    startsChunk_ = false;
    return place;
}

RowPlace RowQueue::placeOfOldest() const {
    for (const Chunk& chunk : chunks_) {
        if (chunk.rows() == 0) continue;
        RowPlace place = chunk.place;
        place.first += chunk.taken / chunk.layout.rowBytes();
        if (chunk.taken != 0) place.droppedBefore = 0;
        return place;
    }
    return now_;
}

std::uint64_t RowQueue::beginRun(std::uint64_t before) {
    const std::lock_guard lock(mutex_);
    ended_ = false;
    beginning_ = {++runs_, before, toldRate_, secondsSince1970()};
    return runs_;
}

void RowQueue::endRun() {
    const std::lock_guard lock(mutex_);
    ended_ = true;
}

void RowQueue::setRate(double rate) {
    const std::lock_guard lock(mutex_);
    toldRate_ = rate;
    if (runs_ == 0) now_.rate = rate;
}

RowQueue::Run RowQueue::run() const {
    const std::lock_guard lock(mutex_);
    return {runs_, beginning_ ? 0 : now_.first, ended_};
}

bool RowQueue::tellAt(std::size_t count, std::shared_ptr<ReplySubscriber> listener) {
    const std::lock_guard lock(mutex_);
    if (rows_ >= count) return false;
    wanted_ = std::min(wanted_, count);
    listeners_.push_back(std::move(listener));
    return true;
}

void RowQueue::forget(const ReplySubscriber& listener) {
    const std::lock_guard lock(mutex_);
    std::erase_if(listeners_, [&](const auto& each) { return each.get() == &listener; });
}

void RowQueue::wake() {
    arrived_.notify_all();
    std::vector<std::shared_ptr<ReplySubscriber>> listeners;
    {
        const std::lock_guard lock(mutex_);
        listeners.swap(listeners_);
    }
    for (const auto& listener : listeners) listener->onReply();
}

std::vector<RowRun> RowQueue::take(std::size_t count) {
    const std::lock_guard lock(mutex_);
    return takeLocked(count);
}

std::vector<RowRun> RowQueue::takeLocked(std::size_t count) {
    std::vector<RowRun> runs;
    while (count > 0 && !chunks_.empty()) {
        Chunk& first = chunks_.front();
        const std::size_t rows = std::min(count, first.rows());
        if (rows != 0) runs.push_back({first.layout, rows, first.bytes.get() + first.taken, first.bytes, first.object});
        first.taken += rows * first.layout.rowBytes();
        count -= rows;
        rows_ -= rows;
        const bool mayGrow = chunks_.size() == 1 && first.used < first.room;
        if (first.rows() != 0 || mayGrow) break;
        chunks_.pop_front();
    }
    if (capacity_ != 0) left_.notify_all();
    return runs;
}

namespace {

// Locks several mutexes in a fixed order, each once.
std::vector<std::unique_lock<std::mutex>> lockAll(std::vector<std::mutex*> mutexes) {
    std::ranges::sort(mutexes);
    const auto [first, last] = std::ranges::unique(mutexes);
    mutexes.erase(first, last);
    std::vector<std::unique_lock<std::mutex>> locks;
    for (std::mutex* mutex : mutexes) locks.emplace_back(*mutex);
    return locks;
}

}  // namespace

RowsTaken RowQueue::takeTogether(std::span<const std::shared_ptr<RowQueue>> queues, std::size_t count) {
    std::vector<std::mutex*> mutexes;
    for (const auto& queue : queues) mutexes.push_back(&queue->mutex_);
    const auto locked = lockAll(std::move(mutexes));
    RowsTaken taken;
    for (const auto& queue : queues) count = std::min(count, queue->rows_);
    for (const auto& queue : queues) taken.runs.push_back(queue->takeLocked(count));
    taken.rows = count;
    return taken;
}

RowsTaken RowQueue::takeUniform(std::span<const std::shared_ptr<RowQueue>> queues, const RowsWanted& wanted) {
    std::vector<std::mutex*> mutexes;
    for (const auto& queue : queues) mutexes.push_back(&queue->mutex_);
    const auto locked = lockAll(std::move(mutexes));
    RowsTaken taken;
    taken.rows = queues.empty() ? 0 : wanted.rows;
    for (const auto& queue : queues) {
        const auto [columns, rows] = queue->uniformRows(wanted);
        taken.columns += columns;
        taken.rows = std::min(taken.rows, rows);
    }
    if (wanted.columns != 0 && taken.columns != wanted.columns) taken.rows = 0;
    if (taken.columns != 0) taken.rows = std::min(taken.rows, wanted.mostValues / taken.columns);
    for (const auto& queue : queues) {
        const RowPlace place = queue->placeOfOldest();
        if (queue == queues.front()) taken.place = place;
        taken.place.first = std::max(taken.place.first, place.first);
        taken.place.droppedBefore = std::max(taken.place.droppedBefore, place.droppedBefore);
        taken.runs.push_back(queue->takeLocked(taken.rows));
    }
    return taken;
}

std::pair<std::size_t, std::size_t> RowQueue::uniformRows(const RowsWanted& wanted) const {
    std::size_t columns = 0, rows = 0;
    for (const Chunk& chunk : chunks_) {
        if (rows >= wanted.rows && rows != 0) break;
        if (chunk.rows() == 0) continue;
        const auto width = static_cast<std::size_t>(chunk.layout.columns);
        if (rows != 0 && (width != columns || (wanted.consecutive && chunk.breaks()))) break;
        columns = width;
        rows += chunk.rows();
    }
    return {columns, rows};
}

std::size_t RowQueue::waitForSize(std::size_t count, Deadline deadline, const InterruptCheck& onWait) const {
    const std::uint64_t ends = ends_;
    waitInterruptibly(deadline, onWait, [&](Deadline until) {
        std::unique_lock lock(mutex_);
        return waitOn(arrived_, lock, until, [&] {
            if (rows_ < count) wanted_ = std::min(wanted_, count);
            return rows_ >= count || ends_ != ends;
        });
    });
    return size();
}

void RowQueue::endWaits() {
    {
        const std::lock_guard lock(mutex_);
        ++ends_;
    }
    wake();
}

std::size_t RowQueue::size() const {
    const std::lock_guard lock(mutex_);
    return rows_;
}

std::uint64_t RowQueue::dropped() const {
    const std::lock_guard lock(mutex_);
    return dropped_;
}

}  // namespace zvr
