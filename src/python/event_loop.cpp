#include "python/event_loop.h"

#include "core/engine/row_queue.h"
#include "python/loop_waker.h"

namespace zvr::python {

LoopWakers::~LoopWakers() {
    if (wakers_.empty()) return;
    onInterpreter([this] {
        for (const auto& waker : std::exchange(wakers_, {})) waker->dismiss();
    });
}

std::shared_ptr<LoopWaker> LoopWakers::find(py::handle loop) const {
    for (const auto& waker : wakers_) {
        if (waker->callbacks() && loopOf(waker->callbacks()).is(loop)) return waker;
    }
    return nullptr;
}

// Most loops release their callbacks when they are closed; the others are asked. That may run any code, so it iterates
// over a copy.
void LoopWakers::forgetClosed() {
    const auto wakers = wakers_;
    for (const auto& waker : wakers) {
        const Object callbacks = py::reinterpret_borrow<Object>(waker->callbacks());
        try {
            const Object loop = callbacks ? loopOf(callbacks) : Object();
            if (!loop || isClosed(loop)) waker->close();
        } catch (py::error_already_set& error) {
            error.discard_as_unraisable("pyzvr");
        }
    }
    std::erase_if(wakers_, [](const auto& waker) { return !waker->callbacks(); });
}

Object LoopWakers::callbacksOf(py::handle loop) {
    if (const auto waker = find(loop)) return borrow(waker->callbacks().ptr());
    forgetClosed();
    Object made = LoopWaker::attach(loop, receiver);
    const auto& waker = wakerOf(made);
    if (waker->callbacks()) wakers_.push_back(waker);
    return made;
}

std::shared_ptr<LoopWait> LoopWakers::wait(Deadline limit, bool readsLink) {
    const Object loop = pythonObject("asyncio", "get_running_loop")();
    Object future = callMethod(loop, "create_future");
    const Object callbacks = callbacksOf(loop);
    const auto waker = wakerOf(callbacks);
    if (!waker->callbacks()) throw loopIsClosed();
    const auto wait =
        std::make_shared<LoopWait>(waker, std::move(future), limit, readsLink, receiver ? receiver->waitsEnded() : 0);
    try {
        waker->enter(*wait);
    } catch (...) {
        caught();
        waker->leave(*wait);
        throw;
    }
    return wait;
}

namespace {

// Per thread, since a thread runs at most one loop.
thread_local Deadline lastTurn{};

}  // namespace

bool LoopWakers::loopIsDue() {
    constexpr std::chrono::microseconds longest{500};
    const Deadline now = Clock::now();
    if (now - lastTurn < longest) return false;
    lastTurn = now;
    return true;
}

LoopAwaiter::~LoopAwaiter() {
    if (wait_) wait_->waker()->leave(*wait_);
}

void LoopAwaiter::suspend(Task::Handle handle) {
    const Object future = wait_->future();
    if (!future) throw loopIsClosed();
    lastTurn = Clock::now();
    pending_.emplace(Awaiter::on(future));
    pending_->await_suspend(handle);
}

void LoopAwaiter::resume() {
    if (pending_) pending_->await_resume();
}

bool ReplyAwaiter::await_suspend(Task::Handle handle) {
    const Deadline limit = handle.promise().limit;
    if (limit <= Clock::now()) throw AwaitTimedOut();
    wait_ = wakers_.wait(limit);
    subscription_.emplace(*pool_, key_, wait_);
    const bool isOver = wakers_.receiver && wakers_.receiver->isOver(wait_->since);  // after the last reply was filed
    if (pool_->contains(key_)) return false;
    if (isOver) wakers_.receiver->requireLink(wait_->since);
    suspend(handle);
    return true;
}

void ReplyAwaiter::await_resume() {
    resume();
    if (wait_->lost()) {
        wakers_.receiver->requireLink(wait_->since);
        throw Failure(wakers_.receiver->linkFailure());  // it has been connected again meanwhile
    }
    if (wait_->expired()) throw AwaitTimedOut();
}

RowsAwaiter::~RowsAwaiter() {
    if (wait_) queue_->forget(*wait_);
}

bool RowsAwaiter::await_suspend(Task::Handle handle) {
    if (limit_ <= Clock::now()) return false;
    wait_ = wakers_.wait(limit_, false);
    if (!queue_->tellAt(count_, wait_)) return false;
    suspend(handle);
    return true;
}

}  // namespace zvr::python
