// Rows of samples between a stream's decoder thread and the caller, kept as the bytes that the device sent.
#pragma once

#include <deque>
#include <limits>
#include <span>

#include "core/engine/fifo.h"
#include "core/engine/scale.h"

namespace zvr {

class ReplySubscriber;

/// Position of rows in their stream. A run is the data of one streaming start; rows received without a start are run 0.
struct RowPlace {
    static constexpr double unknown = std::numeric_limits<double>::quiet_NaN();

    double rate = unknown;   ///< rows per second
    double start = unknown;  ///< time of the run's first row, in seconds since 1970
    std::uint64_t run = 0;
    std::uint64_t first = 0;          ///< number of the first row in its run, counting dropped rows
    std::uint64_t droppedBefore = 0;  ///< rows of the run dropped immediately before
};

/// Consecutive rows of one layout. They stay valid as long as the run is held.
struct RowRun {
    RowLayout layout;
    std::size_t rows = 0;
    const std::uint8_t* bytes = nullptr;
    std::shared_ptr<const void> holder = {};
    std::shared_ptr<void> object = {};  ///< a single row as a user put it, to be given back unchanged
};

/// The same number of rows from each of several queues.
struct RowsTaken {
    std::vector<std::vector<RowRun>> runs;
    std::size_t rows = 0;
    std::size_t columns = 0;  ///< values per row over all queues, if every queue's rows have one width
    RowPlace place = {};      ///< that of the first queue
};

/// Which rows are taken together; those of one queue always have one width.
struct RowsWanted {
    std::size_t rows;
    std::size_t mostValues = static_cast<std::size_t>(-1);
    std::size_t columns = 0;   ///< required number of values per row over all queues; 0 for any
    bool consecutive = false;  ///< only rows of one run without a gap between them
};

/// Any thread may use any member.
class RowQueue {
public:
    explicit RowQueue(std::size_t capacity) : capacity_(capacity) {}

    static constexpr std::uint64_t newest = static_cast<std::uint64_t>(-1);
    /// Adds as many rows of a frame as there is room for; returns how many were dropped. Throws std::invalid_argument
    /// for a frame that is no whole number of rows.
    std::size_t put(const RowLayout& layout, Bytes frame, std::uint64_t number = newest);

    /// The same if the frame is a whole number of rows and all fit; else does nothing and leaves the frame. If
    /// `isEnough` is set, the caller must wake the waiters.
    bool putWhole(const RowLayout& layout, Bytes& frame, std::uint64_t number, bool& isEnough);
    /// Wakes the waiters, with no lock held.
    void wake();

    /// Adds one row that is to be given back as `object`; waits for room until `deadline` at most and returns whether
    /// there was.
    bool putRow(const RowLayout& layout, const Bytes& row, std::shared_ptr<void> object, Deadline deadline,
                const InterruptCheck& onWait = {});

    /// Takes up to `count` rows, oldest first.
    std::vector<RowRun> take(std::size_t count);

    static constexpr std::size_t noLimit = static_cast<std::size_t>(-1);

    /// Takes the same number of rows from each queue in one step, as many as all of them have and at most `count`.
    static RowsTaken takeTogether(std::span<const std::shared_ptr<RowQueue>> queues, std::size_t count);
    /// The same for rows of one width in each queue. If none are taken, `columns` is that of the oldest rows.
    static RowsTaken takeUniform(std::span<const std::shared_ptr<RowQueue>> queues, const RowsWanted& wanted);

    /// Returns the number of a new run, which begins with the first frame whose number is above `before`. Late frames
    /// of the previous run never start a new one.
    std::uint64_t beginRun(std::uint64_t before);
    /// The device sends no more data of the run.
    void endRun();
    /// Rows per second of the run that begins next.
    void setRate(double rate);
    struct Run {
        std::uint64_t number = 0;
        std::uint64_t rows = 0;  ///< received so far, including dropped ones
        bool ended = false;
    };
    /// The latest run.
    Run run() const;

    /// Notifies the listener once when `count` rows may be available; returns true, without notifying, if they already
    /// are.
    bool tellAt(std::size_t count, std::shared_ptr<ReplySubscriber> listener);
    void forget(const ReplySubscriber& listener);

    /// Waits until there are at least `count` rows, until `deadline`, or until `endWaits`; returns the number of rows.
    std::size_t waitForSize(std::size_t count, Deadline deadline, const InterruptCheck& onWait = {}) const;
    /// Nothing more will come for now: ends all waits for a size.
    void endWaits();
    /// Number of endWaits() calls so far.
    std::uint64_t ends() const noexcept { return ends_; }

    std::size_t size() const;
    /// 0 means no limit.
    std::size_t capacity() const { return capacity_; }
    /// Rows dropped since construction.
    std::uint64_t dropped() const;

    UnfinishedTasks tasks;

    /// Whether it belongs to the parent of this forked child, where its lock may be held for good.
    bool isForeign() const { return mark_.foreign(); }

    /// Calls `visit` with every object that a user put, with the queue's lock held; with none in a forked child.
    template <class Visit>
    void visit(Visit visit) const {
        if (isForeign()) return;
        const std::lock_guard lock(mutex_);
        for (const Chunk& chunk : chunks_) {
            if (chunk.object) visit(chunk.object);
        }
    }
    void clear() {
        if (!isForeign()) take(noLimit);
    }

private:
    static constexpr std::size_t noWaiter = static_cast<std::size_t>(-1);

    // Bytes of rows. Writes only ever go beyond `used`, so that runs may be read without the lock.
    struct Chunk {
        RowLayout layout;
        std::shared_ptr<std::uint8_t> bytes;
        std::size_t room, used, taken;
        std::shared_ptr<void> object = {};
        RowPlace place = {};
        std::size_t rows() const { return (used - taken) / layout.rowBytes(); }
        /// Whether its next row follows a gap or begins a run.
        bool breaks() const { return taken == 0 && (place.droppedBefore != 0 || place.first == 0); }
    };

    std::size_t add(const RowLayout& layout, Bytes& frame, std::uint64_t number, bool& isEnough, std::size_t least = 0);
    std::size_t room() const { return capacity_ == 0 ? noLimit : capacity_ - std::min(rows_, capacity_); }
    void append(const RowLayout& layout, Bytes&& frame);
    /// Begins a run with a received frame of so many rows, if one is due.
    void enterRun(std::size_t rows, std::uint64_t number);
    RowPlace placeOfNext();
    /// Counts appended rows; returns whether waiters must be woken.
    bool count(std::size_t rows);
    std::vector<RowRun> takeLocked(std::size_t count);
    /// Number of values in the oldest rows, and how many consecutive rows have it; looks no further than wanted.
    std::pair<std::size_t, std::size_t> uniformRows(const RowsWanted& wanted) const;
    RowPlace placeOfOldest() const;

    const std::size_t capacity_;
    const ProcessMark mark_;
    mutable std::mutex mutex_;
    mutable std::condition_variable arrived_, left_;
    std::deque<Chunk> chunks_;
    std::size_t rows_ = 0;
    std::uint64_t dropped_ = 0;
    std::atomic<std::uint64_t> ends_{0};
    mutable std::size_t wanted_ = noWaiter;  // waiters are woken when there are this many rows
    std::vector<std::shared_ptr<ReplySubscriber>> listeners_;

    RowPlace now_;  // place of the next row
    bool startsChunk_ = false;
    double toldRate_ = RowPlace::unknown;
    std::uint64_t runs_ = 0;
    struct Beginning {
        std::uint64_t run;
        std::uint64_t before;  // number of the last frame of earlier runs
        double rate, since;
    };
    std::optional<Beginning> beginning_;
    bool ended_ = false;
};

}  // namespace zvr
