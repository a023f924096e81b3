// Who reads a link: a thread that waits for a reply, or the receive thread if none waits.
//
// A hand-over from one thread to another costs as much as a request itself, so the thread that waits for a reply reads
// the link and files everything it receives, for any waiter. There is one right to read. Only its holder uses the parts
// of the receive loop, so frames are filed in order; it passes the right to the next waiter, or back. While requests
// follow each other the receive thread leaves the link alone: it checks by itself, without a notification, whether the
// lease has expired, and reads on then.
//
// An event loop holds the right without a blocked thread. A loop that does not read, because it is busy or stopped,
// loses the right to the receive thread once bytes have been waiting for `longestUnread`.
#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <vector>

#include "core/engine/waiting.h"

namespace zvr {

class ReadingRight {
public:
    /// How long the receive thread leaves the link alone after another's last read. Shorter, it wakes more often while
    /// requests follow each other; longer, an unasked frame after the last one is filed later.
    static constexpr std::chrono::microseconds lease{1'750};
    /// How long bytes may wait for an event loop to read them.
    static constexpr std::chrono::milliseconds longestUnread{15};

    /// A waiter that can read the link meanwhile.
    class Waiter {
    public:
        virtual ~Waiter() = default;
        /// It has been given the right, or must check its condition again. Called on any thread, with the lock of the
        /// right held.
        virtual void onTurn() noexcept = 0;
        bool hasTurn() const noexcept { return turn_; }

    protected:
        explicit Waiter(bool isLoop = false) : isLoop_(isLoop) {}

    private:
        friend class ReadingRight;
        const bool isLoop_;
        std::atomic<bool> turn_{false};
        bool absent_ = false;  // it did not read in time, and gets no turn before it enters again
        bool idle_ = false;    // it waits but cannot read
    };

    /// Adds a waiter unless it is in already; it may get the right at once. While a waiter is in that cannot read, the
    /// receive thread keeps reading instead of pausing for the others.
    void enter(Waiter& waiter, bool canRead = true);
    /// Removes it and passes its right to the next waiter. Does nothing if it is not in.
    void leave(Waiter& waiter) noexcept;
    /// Takes the right from its holder, until that enters again, and gives it to the receive thread, which alone can
    /// handle what came up.
    void leaveToThread(Waiter& waiter) noexcept;
    /// Bracket a read of an event loop; `begin` returns false if the loop no longer holds the right.
    bool begin(Waiter& waiter);
    void end(Waiter& waiter) noexcept;
    /// Called by the holder after a read.
    void noteRead() noexcept { ++reads_; }
    /// Wakes all waiters to check again.
    void tellAll() noexcept;

    /// The outcome for the receive thread: it has the right, or others still have it and it may only watch.
    enum class Turn { own, others };
    /// On the receive thread: waits for the right. With `watched` it has seen bytes, and gets the right only if they
    /// are still unread.
    Turn take(bool watched = false);
    /// On the receive thread: gives the right back. Others get it only if `mayRead`.
    void give(bool mayRead) noexcept;
    /// Wakes the holder to check again, and the receive thread without waiting for the end of the lease.
    void hurry() noexcept;
    /// Frames follow that nobody waits for: the receive thread need not wait for the end of the lease.
    void endLease() noexcept;
    /// Whether any waiter could read.
    bool isWanted() const;

private:
    void pass() noexcept;
    void takeFrom(Waiter& waiter) noexcept;
    void awaitChange(std::unique_lock<std::mutex>& lock, Deadline until);

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Waiter*> waiters_;
    Waiter* holder_ = nullptr;
    bool threadHolds_ = false, mayRead_ = false, hurried_ = false, loopReads_ = false;
    bool threadSleeps_ = false;  // until notified
    int idle_ = 0;               // number of waiters that cannot read
    Deadline lastUse_{};
    std::atomic<std::uint64_t> reads_{0};
};

}  // namespace zvr
