// A blocking call that an awaited step runs on a thread of its own, so that it neither blocks the event loop nor queues
// behind other calls.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "python/event_loop.h"

namespace zvr::python {

/// Waits for the outcome of such a call. If the loop ends or the step is cancelled, the thread runs on by itself.
class ThreadAwaiter : public LoopAwaiter {
public:
    /// The call is made under the interpreter lock, and must be one that any thread may drop.
    using Call = std::function<Object()>;

    /// `abandoned` is called when the step ends without the outcome.
    ThreadAwaiter(LoopWakers& wakers, std::string threadName, Call call, std::function<void()> abandoned)
        : LoopAwaiter(wakers),
          threadName_(std::move(threadName)),
          call_(std::move(call)),
          abandoned_(std::move(abandoned)) {}
    ~ThreadAwaiter();

    void await_suspend(Task::Handle handle);
    Object await_resume();

private:
    struct Outcome {
        SharedObject result, error;
    };

    const std::string threadName_;
    Call call_;
    std::function<void()> abandoned_;
    std::shared_ptr<Outcome> outcome_;
    bool isTaken_ = false;
};

}  // namespace zvr::python
