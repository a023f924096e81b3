// The context of an operation's steps: their object, the form they run in, and the ways to wait.
#pragma once

#include "python/arguments.h"
#include "python/event_loop.h"

namespace zvr::python {

class Op {
public:
    /// A null timeout makes it the awaitable form.
    Op(py::handle self, Object timeout) : self_(borrow(self.ptr())), timeout_(std::move(timeout)) {}

    py::handle self() const { return self_; }
    bool awaitable() const { return !timeout_; }
    /// The caller's seconds, as given; only in the blocking form.
    const Object& timeout() const { return timeout_; }

    /// Calls a method of the object that has one form.
    template <class... Args>
    Object call(const char* name, const Args&... args) const {
        return callMethod(self_, name, args...);
    }

    /// Runs another operation of the object in the same form: name(args..., timeout), or await name_async(args...).
    template <class... Args>
    Awaiter request(const char* name, const Args&... args) const {
        if (!awaitable()) return Awaiter::done(callMethod(self_, name, args..., timeout_));
        return Awaiter::on(callNamed(self_, internedAsyncName(name), args...));
    }

    /// The same with the timeout by keyword.
    template <class... Args>
    Awaiter requestBy(const char* name, const Args&... args) const {
        if (!awaitable()) {
            return Awaiter::done(callNamedBy(timeoutKeyword(), self_, interned(name), args..., timeout_));
        }
        return Awaiter::on(callNamed(self_, internedAsyncName(name), args...));
    }

    /// The same for operations whose blocking form takes no timeout.
    template <class... Args>
    Awaiter callSameForm(const char* name, const Args&... args) const {
        if (!awaitable()) return Awaiter::done(callMethod(self_, name, args...));
        return Awaiter::on(callNamed(self_, internedAsyncName(name), args...));
    }

    /// Runs steps that several operations share, in the same form.
    Awaiter run(Task steps) const;

    /// Waits this many seconds.
    Awaiter sleep(double seconds) const;

private:
    static PyObject* timeoutKeyword();

    Object self_;
    Object timeout_;
};

/// Awaits a Python awaitable until `limit`, at which the event loop's timeout error is raised. Takes ownership: the
/// garbage collector cannot see references held by suspended frames.
Awaiter within(Deadline limit, Object&& awaitable);

/// Blocks this many seconds; Python's signal handlers run meanwhile.
void sleepBlocking(double seconds);

/// The caller's argument `timeout`, or `name`, in seconds.
inline double secondsOf(py::handle seconds, const char* name = "timeout") { return secondsArgument(seconds, name); }

}  // namespace zvr::python
