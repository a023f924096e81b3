// One event loop that waits for data of one object: its waits, and what wakes it (event_loop.h).
#pragma once

#include "python/event_loop.h"
#include "python/loop_descriptor.h"
#include "transport/receiver.h"

namespace zvr::python {

bool isClosed(py::handle loop);
std::runtime_error loopIsClosed();

/// One wait of one awaited step.
class LoopWait final : public ReplySubscriber, public std::enable_shared_from_this<LoopWait> {
public:
    LoopWait(std::shared_ptr<LoopWaker> waker, Object future, Deadline limit, bool readsLink, std::uint64_t since)
        : readsLink(readsLink), since(since), waker_(std::move(waker)), future_(std::move(future)), limit_(limit) {}

    /// Whether the loop reads the link for it.
    const bool readsLink;
    /// The link's `waitsEnded` when the wait began.
    const std::uint64_t since;

    /// On any thread. Only the first reply counts.
    void onReply() noexcept override;

    // All the rest happens under the interpreter lock. The future is released once the wait is over, so that the last
    // holder of the wait, on any thread, owns no Python object.
    const Object& future() const { return future_; }
    Object takeFuture() { return std::move(future_); }
    Deadline limit() const { return limit_; }
    /// Its limit has expired: the wait is over, and in time if something has arrived by now.
    void end() {
        over_ = true;
        expired_ = !arrived_;
    }
    /// Its data can no longer arrive.
    void lose() { over_ = lost_ = true; }
    bool lost() const { return lost_; }
    bool over() const { return over_; }
    bool arrived() const { return arrived_; }
    bool expired() const { return expired_; }
    const std::shared_ptr<LoopWaker>& waker() const { return waker_; }

private:
    const std::shared_ptr<LoopWaker> waker_;
    Object future_;
    const Deadline limit_;
    std::atomic<bool> arrived_{false};
    bool over_ = false;
    bool expired_ = false;
    bool lost_ = false;
};

/// Belongs to one object and one loop.
class LoopWaker final : public ReadingRight::Waiter, public std::enable_shared_from_this<LoopWaker> {
public:
    explicit LoopWaker(std::shared_ptr<Receiver> receiver) : Waiter(true), receiver_(std::move(receiver)) {}
    ~LoopWaker() override { leaveRight(); }
    LoopWaker(const LoopWaker&) = delete;
    LoopWaker& operator=(const LoopWaker&) = delete;

    /// Makes the callbacks of a waker and makes the loop watch. If the loop cannot watch, only the caller keeps the
    /// callbacks alive.
    static Object attach(py::handle loop, std::shared_ptr<Receiver> receiver);

    /// On any thread.
    void signal(std::shared_ptr<LoopWait> wait) noexcept;
    /// The loop reads the link; it is notified of incoming data from now on.
    void onTurn() noexcept override;

    // On the loop's thread.
    void enter(LoopWait& wait);
    void deliver();
    void expire();
    void unwatch();

    // On any thread, under the interpreter lock.
    void leave(LoopWait& wait);
    /// The object is gone: the loop stops watching after the last wait.
    void dismiss();
    /// The loop has released the callbacks. Remaining waits never end.
    void close();

    /// The callbacks, as long as the loop has them.
    py::handle callbacks() const { return callbacks_; }
    const std::vector<LoopWait*>& waiting() const { return waiting_; }

private:
    friend struct Callbacks;
    void schedule();
    void stopWatching();
    void deliver(bool bytes);
    bool isWatching() const;
    bool readsForAny() const {
        return std::ranges::any_of(waiting_, [](const LoopWait* wait) { return wait->readsLink; });
    }
    void enterRight();
    void leaveRight() noexcept;
    void readLink();

    const std::shared_ptr<Receiver> receiver_;
    std::atomic<bool> armed_{false};  // the descriptor watches the link

    // Under the mutex.
    std::mutex mutex_;
    std::vector<std::shared_ptr<LoopWait>> arrived_;
    std::shared_ptr<const LoopDescriptor> descriptor_;
    bool signalled_ = false;
    bool closed_ = false;

    // Under the interpreter lock.
    PyObject* callbacks_ = nullptr;  // borrowed
    std::vector<LoopWait*> waiting_;
    Deadline timer_ = forever;
    bool dismissed_ = false;
};

/// The waker of such callbacks.
const std::shared_ptr<LoopWaker>& wakerOf(py::handle callbacks);
/// Their loop; nothing once it is gone.
Object loopOf(py::handle callbacks);

}  // namespace zvr::python
