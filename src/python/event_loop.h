// How a step of the awaitable form waits on its event loop for what other threads bring.
//
// An object has one waker for each loop that waits on it. Where the loop has `add_reader`, it watches a descriptor by
// which a thread that brings something wakes it, which needs no interpreter lock; elsewhere that takes the lock for one
// `call_soon_threadsafe`. While the loop has the right to read the link, the same descriptor tells of bytes there, and
// the loop reads them itself. Wake-ups are coalesced, and one timer per waker ends the waits whose limit has struck.
//
// Who keeps what: the loop keeps its callbacks, these keep the futures that tasks wait for, and the tasks keep their
// steps and the object. The waker keeps nothing of the interpreter. So a task that waits lives as long as its loop will
// go on with it, as it would with the host's own waits; and when the loop is closed or dropped, its callbacks go, the
// descriptor with them, and what the tasks held is left to the collector.
#pragma once

#include "core/engine/pools.h"
#include "python/coroutine.h"

namespace zvr {
class Receiver;
}

namespace zvr {
class RowQueue;
}

namespace zvr::python {

class LoopWait;
class LoopWaker;

/// The wakers of one object. All of it happens under the interpreter lock.
class LoopWakers {
public:
    LoopWakers() = default;
    /// Who brings the replies; loops read in the place of its thread. Set before anybody waits.
    std::shared_ptr<Receiver> receiver;
    /// The loops stop watching, each on the thread that runs it.
    ~LoopWakers();
    LoopWakers(const LoopWakers&) = delete;
    LoopWakers& operator=(const LoopWakers&) = delete;

    /// A wait on the running loop that ends at `limit` at the latest. The loop reads the link for one that waits for a
    /// reply; what threads make of frames is theirs to bring.
    std::shared_ptr<LoopWait> wait(Deadline limit, bool readsLink = true);

    /// Replies that are there at once do not suspend their step. Whether the loop of this thread has gone without a
    /// turn for so long that the step ought to; the answer counts as a turn.
    static bool loopIsDue();

private:
    std::shared_ptr<LoopWaker> find(py::handle loop) const;
    Object callbacksOf(py::handle loop);
    void forgetClosed();

    std::vector<std::shared_ptr<LoopWaker>> wakers_;
};

/// What waits on the running event loop. Whoever drops it, at whatever moment, ends its part in the loop.
class LoopAwaiter {
public:
    LoopAwaiter(const LoopAwaiter&) = delete;
    LoopAwaiter& operator=(const LoopAwaiter&) = delete;

    bool await_ready() const noexcept { return false; }

protected:
    explicit LoopAwaiter(LoopWakers& wakers) : wakers_(wakers) {}
    ~LoopAwaiter();
    /// Suspends until the wait is over.
    void suspend(Task::Handle handle);
    /// Throws what the loop brought instead of a result.
    void resume();

    LoopWakers& wakers_;
    std::shared_ptr<LoopWait> wait_;

private:
    std::optional<Awaiter> pending_;
};

/// Waits until a reply with this key may be there.
class ReplyAwaiter : public LoopAwaiter {
public:
    ReplyAwaiter(LoopWakers& wakers, std::shared_ptr<EchoPool> pool, EchoPool::Key key)
        : LoopAwaiter(wakers), pool_(std::move(pool)), key_(key) {}
    ~ReplyAwaiter() { subscription_.reset(); }

    /// Goes on at once if the reply has arrived in between. Throws AwaitTimedOut if the limit has struck already.
    bool await_suspend(Task::Handle handle);
    /// Throws AwaitTimedOut when the limit has struck.
    void await_resume();

private:
    std::shared_ptr<EchoPool> pool_;
    EchoPool::Key key_;
    std::optional<Subscription> subscription_;
};

/// Waits until a queue may have this many rows, or until `limit`.
class RowsAwaiter : public LoopAwaiter {
public:
    RowsAwaiter(LoopWakers& wakers, std::shared_ptr<RowQueue> queue, std::size_t count, Deadline limit)
        : LoopAwaiter(wakers), queue_(std::move(queue)), count_(count), limit_(limit) {}
    ~RowsAwaiter();

    bool await_suspend(Task::Handle handle);
    void await_resume() { resume(); }

private:
    std::shared_ptr<RowQueue> queue_;
    std::size_t count_;
    Deadline limit_;
};

/// Called once, when the module is made.
void prepareLoopWakerType();

}  // namespace zvr::python
