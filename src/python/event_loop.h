// How a receive thread wakes an event loop.
//
// One Waker belongs to one object and one event loop. Where the loop has `add_reader`, the receive thread writes an
// event descriptor that the loop watches, which needs no interpreter lock; elsewhere it takes the lock for one
// `call_soon_threadsafe`. Wake-ups are coalesced, and one timer per waker ends the waits whose limit has struck.
//
// Who runs what: `Arrival::onArrival` runs on any thread, without the interpreter lock; all the rest under it, and
// `deliver` and `expire` on the loop's thread.
#pragma once

#include "core/pools.h"
#include "python/coroutine.h"

namespace zvr::python {

class Waker;

/// One wait of one awaited step for a reply.
class Arrival final : public Listener {
public:
    Arrival(std::shared_ptr<Waker> waker, Object future, Deadline limit);

    void onArrival() noexcept override;

    /// Lets the step go on; false tells it that nothing arrived before its limit.
    void resolve(bool arrived);

    py::handle future() const { return future_; }
    bool arrived() const { return arrived_; }
    bool expired() const { return expired_; }
    Deadline limit() const { return limit_; }
    /// Its waker does not look at it any more. The receive thread may be the last to hold it, so nothing of the
    /// interpreter is left in it.
    void leave();

private:
    const std::shared_ptr<Waker> waker_;
    Object future_;
    const Deadline limit_;
    std::atomic<bool> arrived_{false};
    bool expired_ = false;
};

class Waker : public std::enable_shared_from_this<Waker> {
public:
    /// The last holder may be a receive thread: what belongs to the interpreter is then let go of under its lock.
    static std::shared_ptr<Waker> make(py::handle loop);
    explicit Waker(py::handle loop);
    ~Waker();
    Waker(const Waker&) = delete;
    Waker& operator=(const Waker&) = delete;

    /// Any thread, without the interpreter lock.
    void signal() noexcept;

    void deliver();
    void expire();
    void enter(Arrival& arrival);
    void leave(Arrival& arrival);

    /// Nothing once the loop is gone or closed.
    Object loop() const;
    bool idle() const { return arrivals_.empty(); }

private:
    void watch();
    void startTimer();

    Object loop_;  // weak reference
    int descriptor_ = -1;
    bool watched_ = false;
    std::atomic<bool> signalled_{false};
    std::vector<Arrival*> arrivals_;
    Deadline timer_ = forever;
};

/// The wakers of one object.
class Wakers {
public:
    std::shared_ptr<Waker> of(py::handle loop);

    /// Replies that are there at once do not suspend their step. Whether the loop has gone without a turn for so long
    /// that the step ought to; the answer counts as a turn.
    bool loopIsDue();
    void loopHasTurn() { lastTurn_ = Clock::now(); }

private:
    Deadline lastTurn_{};
    std::vector<std::shared_ptr<Waker>> wakers_;
};

/// Waits on the running event loop until a reply with this key may be there.
class ArrivalPending {
public:
    ArrivalPending(Wakers& wakers, std::shared_ptr<EchoPool> pool, EchoPool::Key key)
        : wakers_(wakers), pool_(std::move(pool)), key_(key) {}
    ~ArrivalPending();
    ArrivalPending(const ArrivalPending&) = delete;
    ArrivalPending& operator=(const ArrivalPending&) = delete;

    bool await_ready() const noexcept { return false; }
    /// Goes on at once if the reply has arrived in between. Throws AwaitTimedOut if the limit has struck already.
    bool await_suspend(Result::Handle handle);
    void await_resume();

private:
    Wakers& wakers_;
    std::shared_ptr<EchoPool> pool_;
    EchoPool::Key key_;
    std::shared_ptr<Arrival> arrival_;
    std::optional<Listening> listening_;
    std::optional<Pending> pending_;
};

}  // namespace zvr::python
