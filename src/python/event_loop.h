// How a step of the awaitable form waits on its event loop for what other threads bring.
//
// An object has one waker for each loop that waits on it. Where the loop has `add_reader`, a thread that brings
// something writes an event descriptor that the loop watches, which needs no interpreter lock; elsewhere it takes the
// lock for one `call_soon_threadsafe`. Wake-ups are coalesced, and one timer per waker ends the waits whose limit has
// struck.
//
// Who keeps what: the loop keeps its callbacks, these keep the futures that tasks wait for, and the tasks keep their
// steps and the object. The waker keeps nothing of the interpreter. So a task that waits lives as long as its loop will
// go on with it, as it would with the host's own waits; and when the loop is closed or dropped, its callbacks go, the
// descriptor with them, and what the tasks held is left to the collector.
#pragma once

#include "core/engine/pools.h"
#include "python/coroutine.h"

namespace zvr::python {

class Arrival;
class Waker;

/// The wakers of one object. All of it happens under the interpreter lock.
class Wakers {
public:
    Wakers() = default;
    /// The loops stop watching, each on the thread that runs it.
    ~Wakers();
    Wakers(const Wakers&) = delete;
    Wakers& operator=(const Wakers&) = delete;

    /// A wait on the running loop that ends at `limit` at the latest.
    std::shared_ptr<Arrival> wait(Deadline limit);

    /// Replies that are there at once do not suspend their step. Whether the loop of this thread has gone without a
    /// turn for so long that the step ought to; the answer counts as a turn.
    bool loopIsDue();

private:
    std::shared_ptr<Waker> find(py::handle loop) const;
    Object callbacksOf(py::handle loop);
    void forgetClosed();

    std::vector<std::shared_ptr<Waker>> wakers_;
};

/// Waits on the running event loop until a reply with this key may be there. Whoever drops it, at whatever moment, ends
/// its part in the loop.
class ArrivalPending {
public:
    ArrivalPending(Wakers& wakers, std::shared_ptr<EchoPool> pool, EchoPool::Key key)
        : wakers_(wakers), pool_(std::move(pool)), key_(key) {}
    ~ArrivalPending();
    ArrivalPending(const ArrivalPending&) = delete;
    ArrivalPending& operator=(const ArrivalPending&) = delete;

    bool await_ready() const noexcept { return false; }
    /// Goes on at once if the reply has arrived in between. Throws AwaitTimedOut if the limit has struck already.
    bool await_suspend(Task::Handle handle);
    /// Throws what the loop brought instead of a result, or AwaitTimedOut.
    void await_resume();

private:
    Wakers& wakers_;
    std::shared_ptr<EchoPool> pool_;
    EchoPool::Key key_;
    std::shared_ptr<Arrival> arrival_;
    std::optional<Listening> listening_;
    std::optional<Awaiter> pending_;
};

/// Called once, when the module is made.
void prepareWakerType();

}  // namespace zvr::python
