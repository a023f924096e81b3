// Rows of samples between a stream's reader thread and the caller, kept as the bytes that the device sent.
#pragma once

#include <deque>

#include "core/scale.h"
#include "core/waiting.h"

namespace zvr {

/// Consecutive rows of one layout. They stay valid as long as the run is held.
struct RowRun {
    RowLayout layout;
    std::size_t rows = 0;
    const std::uint8_t* bytes = nullptr;
    std::shared_ptr<const void> holder = {};
};

/// Any thread may use any member.
class RowQueue {
public:
    explicit RowQueue(std::size_t capacity) : capacity_(capacity) {}

    /// Adds the rows of a frame, as many as there is room for; tells how many were dropped. Throws
    /// std::invalid_argument for a frame that is no whole number of rows.
    std::size_t put(const RowLayout& layout, Bytes frame);

    /// Takes up to `count` rows, oldest first.
    std::vector<RowRun> take(std::size_t count);

    /// Number of values in each of the oldest rows, and how many rows have that many.
    std::pair<int, std::size_t> uniformRows() const;

    /// Waits until at least `count` rows are there, at most until `deadline`; tells how many there are then.
    std::size_t waitForSize(std::size_t count, Deadline deadline, const Attend& attend = {}) const;

    std::size_t size() const;
    std::size_t capacity() const { return capacity_; }
    /// Rows dropped since construction.
    std::uint64_t dropped() const;

private:
    static constexpr std::size_t nobody = static_cast<std::size_t>(-1);

    // Bytes of rows. Only behind `used` is anything ever written, so that runs may be read without the lock.
    struct Chunk {
        RowLayout layout;
        std::shared_ptr<std::uint8_t> bytes;
        std::size_t room, used, taken;
        std::size_t rows() const { return (used - taken) / layout.rowBytes(); }
    };

    void append(const RowLayout& layout, Bytes&& frame);

    const std::size_t capacity_;
    mutable std::mutex mutex_;
    mutable std::condition_variable arrived_;
    std::deque<Chunk> chunks_;
    std::size_t rows_ = 0;
    std::uint64_t dropped_ = 0;
    mutable std::size_t wanted_ = nobody;  // who waits is woken when this many rows are there
};

}  // namespace zvr
