// Who reads a link: whoever waits for something from it, and its receive thread when nobody does.
//
// A hand-over from one thread to another costs as much as a request itself, so the one that waits for a reply reads
// the link, and files everything that comes, whoever it is for. There is one right to read. Its holder alone touches
// the parts of the receive loop and the order in which frames are filed; it gives the right on to the next one that
// waits, or back. While requests follow each other the thread leaves the link alone: it looks by itself, without being
// told, whether the right has been idle for a moment, and reads on then.
//
// An event loop holds the right without a thread behind it. One that does not come to read, because it is busy or
// stopped, loses the right to the thread as soon as bytes have been waiting for it for a while.
#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <vector>

#include "core/engine/waiting.h"

namespace zvr {

class ReadingRight {
public:
    /// How long the thread leaves the link alone after the last read of another.
    static constexpr std::chrono::microseconds lease{1'000};
    /// How long bytes may wait for an event loop.
    static constexpr std::chrono::milliseconds longestUnread{15};

    /// One that waits, and would read meanwhile.
    class Waiter {
    public:
        virtual ~Waiter() = default;
        /// It has got the right, or is to look around. Any thread, with the lock of the right held.
        virtual void onTurn() noexcept = 0;
        bool hasTurn() const noexcept { return turn_; }

    protected:
        explicit Waiter(bool isLoop = false) : isLoop_(isLoop) {}

    private:
        friend class ReadingRight;
        const bool isLoop_;
        std::atomic<bool> turn_{false};
        bool absent_ = false;  // it does not come to read, and gets no turn before it comes
        bool idle_ = false;    // it cannot read
    };

    /// Adds a waiter that is not there yet; it may have the right at once. While one waits that cannot read, the thread
    /// reads on without a pause for the others.
    void enter(Waiter& waiter, bool canRead = true);
    /// Removes it; what it had goes to the next one. Nothing happens if it is not there.
    void leave(Waiter& waiter) noexcept;
    /// Takes the right from a waiter that has it, until it enters again, and gives it to the thread: there is something
    /// that only that can do.
    void leaveToThread(Waiter& waiter) noexcept;
    /// Brackets a read of an event loop; nothing is begun while the right is another's.
    bool begin(Waiter& waiter);
    void end(Waiter& waiter) noexcept;
    /// The holder has read.
    void noteRead() noexcept { ++reads_; }
    /// Lets all that wait look around.
    void tellAll() noexcept;

    /// What the thread has come to: the right, or others that still have it, beside whom it may only watch.
    enum class Turn { own, others };
    /// On the thread: waits for the right. With `watched` it has seen bytes, and has the right only if they are still
    /// to be read.
    Turn take(bool watched = false);
    /// On the thread: gives the right back. Others get it only if they may read as the thread would.
    void give(bool mayRead) noexcept;
    /// Lets whoever has the right look around, and the thread, too, without a wait for the others' pause.
    void hurry() noexcept;
    /// Whether somebody would read.
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
    bool threadSleeps_ = false;  // until it is told
    int idle_ = 0;               // how many cannot read
    Deadline lastUse_{};
    std::atomic<std::uint64_t> reads_{0};
};

}  // namespace zvr
