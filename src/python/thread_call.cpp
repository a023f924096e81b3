#include "python/thread_call.h"

#include "core/engine/threads.h"
#include "python/loop_waker.h"
#include "python/raising.h"

namespace zvr::python {

ThreadAwaiter::~ThreadAwaiter() {
    if (!outcome_ || isTaken_) return;
    const py::error_scope keepError;
    try {
        abandoned_();
    } catch (...) {
        reportUnraisable();
    }
}

void ThreadAwaiter::await_suspend(Task::Handle handle) {
    wait_ = wakers_.wait(forever, false);
    const auto outcome = std::make_shared<Outcome>();
    startThread(threadName_, [call = std::move(call_), outcome, wait = wait_]() mutable {
        onInterpreter([&] {
            try {
                outcome->result = shared(call());
            } catch (...) {
                raiseCurrent();
                const py::error_already_set raised;
                if (raised.trace()) PyException_SetTraceback(raised.value().ptr(), raised.trace().ptr());
                outcome->error = shared(raised.value());
            }
            call = nullptr;
        });
        wait->onReply();
    });
    outcome_ = outcome;
    suspend(handle);
}

Object ThreadAwaiter::await_resume() {
    resume();
    isTaken_ = true;
    if (outcome_->error) {
        const py::handle error = outcome_->error.get();
        PyErr_SetObject(py::type::handle_of(error).ptr(), error.ptr());
        throw py::error_already_set();
    }
    if (!outcome_->result) throw std::runtime_error("the interpreter ends: no other thread gets its lock any more");
    return borrow(outcome_->result.get());
}

}  // namespace zvr::python
