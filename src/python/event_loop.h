// How a step of the awaitable form waits on its event loop for data from other threads.
//
// An object has one waker for each loop that waits on it. If the loop has `add_reader`, it watches a descriptor through
// which other threads notify it without the interpreter lock; otherwise they take the lock for one
// `call_soon_threadsafe`. While the loop has the right to read the link, the same descriptor is readable when bytes
// arrive, and the loop reads them itself. Notifications are coalesced, and one timer per waker ends the waits whose
// limit has expired.
//
// Ownership: the loop keeps its callbacks, these keep the futures that tasks wait for, and the tasks keep their steps
// and the object. The waker owns no Python object. So a waiting task lives as long as its loop can resume it, as with
// asyncio's own waits; when the loop is closed or dropped, its callbacks and the descriptor are released, and the
// garbage collector frees what the tasks held.
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
    /// Receives the replies; loops read in place of its thread. Set before the first wait.
    std::shared_ptr<Receiver> receiver;
    /// The loops stop watching, each on the thread that runs it.
    ~LoopWakers();
    LoopWakers(const LoopWakers&) = delete;
    LoopWakers& operator=(const LoopWakers&) = delete;

    /// A wait on the running loop that ends at `limit` at the latest. With `readsLink`, for replies, the loop reads the
    /// link; rows are delivered by the decoder threads.
    std::shared_ptr<LoopWait> wait(Deadline limit, bool readsLink = true);

    /// A step whose reply is already there does not suspend. Returns whether this thread's loop has gone so long
    /// without a turn that the step should yield; true counts as a turn.
    static bool loopIsDue();

private:
    std::shared_ptr<LoopWaker> find(py::handle loop) const;
    Object callbacksOf(py::handle loop);
    void forgetClosed();

    std::vector<std::shared_ptr<LoopWaker>> wakers_;
};

/// An awaiter on the running event loop. Destroying it, at any time, removes its wait from the loop.
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
    /// Rethrows the exception with which the loop ended the wait.
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

    /// Continues at once if the reply has arrived meanwhile. Throws AwaitTimedOut if the limit has already expired.
    bool await_suspend(Task::Handle handle);
    /// Throws AwaitTimedOut if the limit has expired.
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
