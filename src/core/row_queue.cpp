#include "core/row_queue.h"

#include <algorithm>

namespace zvr {

namespace {

// Small frames share a chunk of this size; larger ones are kept as they came.
constexpr std::size_t chunkBytes = 32768;
constexpr std::size_t largeFrame = 4096;

}  // namespace

std::size_t RowQueue::put(const RowLayout& layout, Bytes frame) {
    const std::size_t rowBytes = layout.rowBytes();
    if (rowBytes == 0 || frame.size() % rowBytes != 0) {
        throw std::invalid_argument("a frame of " + std::to_string(frame.size()) +
                                    " bytes is no whole number of rows of " + std::to_string(layout.columns) +
                                    " samples of " + std::to_string(layout.sampleBytes()) + " bytes");
    }
    const std::size_t rows = frame.size() / rowBytes;
    std::size_t kept = 0;
    bool enough = false;
    {
        const std::lock_guard lock(mutex_);
        kept = std::min(rows, capacity_ - rows_);
        dropped_ += rows - kept;
        if (kept != 0) {
            frame.resize(kept * rowBytes);
            append(layout, std::move(frame));
            rows_ += kept;
        }
        enough = rows_ >= wanted_;
        if (enough) wanted_ = nobody;
    }
    if (enough) arrived_.notify_all();
    return rows - kept;
}

void RowQueue::append(const RowLayout& layout, Bytes&& frame) {
    const std::size_t size = frame.size();
    if (size >= largeFrame) {
        const auto holder = std::make_shared<Bytes>(std::move(frame));
        chunks_.push_back({layout, {holder, holder->data()}, size, size, 0});
        return;
    }
    if (chunks_.empty() || chunks_.back().room - chunks_.back().used < size || chunks_.back().layout != layout) {
        const std::shared_ptr<std::uint8_t[]> bytes = std::make_unique_for_overwrite<std::uint8_t[]>(chunkBytes);
        chunks_.push_back({layout, {bytes, bytes.get()}, chunkBytes, 0, 0});
    }
    Chunk& last = chunks_.back();
    std::memcpy(last.bytes.get() + last.used, frame.data(), size);
    last.used += size;
}

std::vector<RowRun> RowQueue::take(std::size_t count) {
    std::vector<RowRun> runs;
    const std::lock_guard lock(mutex_);
    while (count > 0 && !chunks_.empty()) {
        Chunk& first = chunks_.front();
        const std::size_t rows = std::min(count, first.rows());
        if (rows != 0) runs.push_back({first.layout, rows, first.bytes.get() + first.taken, first.bytes});
        first.taken += rows * first.layout.rowBytes();
        count -= rows;
        rows_ -= rows;
        const bool mayGrow = chunks_.size() == 1 && first.used < first.room;
        if (first.rows() != 0 || mayGrow) break;
        chunks_.pop_front();
    }
    return runs;
}

std::pair<int, std::size_t> RowQueue::uniformRows() const {
    const std::lock_guard lock(mutex_);
    int columns = 0;
    std::size_t rows = 0;
    for (const Chunk& chunk : chunks_) {
        if (chunk.rows() == 0) continue;
        if (rows != 0 && chunk.layout.columns != columns) break;
        columns = chunk.layout.columns;
        rows += chunk.rows();
    }
    return {columns, rows};
}

std::size_t RowQueue::waitForSize(std::size_t count, Deadline deadline, const Attend& attend) const {
    waitAttended(deadline, attend, [&](Deadline until) {
        std::unique_lock lock(mutex_);
        return waitOn(arrived_, lock, until, [&] {
            if (rows_ < count) wanted_ = std::min(wanted_, count);
            return rows_ >= count;
        });
    });
    return size();
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
