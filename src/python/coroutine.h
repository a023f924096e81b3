// The bridge between C++ and Python coroutines.
//
// An operation with steps is one C++ coroutine that serves both forms. In the blocking form every co_await completes
// immediately, so the coroutine runs to its end on the caller's thread. In the awaitable form the same coroutine lives
// in an object with Python's coroutine protocol: it suspends on a Python awaitable, which this object drives on its
// behalf, passing values, exceptions and cancellation down and the result up.
//
// All of it happens under the interpreter lock.
//
// The garbage collector sees what suspended steps hold: their parameters and the awaited object. So a cycle between an
// object and the task that runs its steps is collected.
#pragma once

#include <coroutine>
#include <exception>
#include <vector>

#include "python/common.h"

namespace zvr::python {

/// A time limit expired in the awaitable form; becomes the event loop's timeout error.
struct AwaitTimedOut : std::runtime_error {
    AwaitTimedOut() : std::runtime_error("the time limit of an awaited exchange struck") {}
};

/// The parameters of running steps, for the garbage collector. They live as long as the steps; C++ references among
/// them are not visited.
class Held {
public:
    template <class... Parameters>
    explicit Held(Parameters&... parameters) {
        (add(parameters), ...);
    }

    int visit(visitproc visitor, void* argument) const {
        for (std::size_t i = 0; i < count_; ++i) {
            if (const int stop = parameters_[i].visit(parameters_[i].place, visitor, argument)) return stop;
        }
        return 0;
    }

private:
    struct Parameter {
        const void* place;
        int (*visit)(const void* place, visitproc visitor, void* argument);
    };

    static int visitOne(py::handle object, visitproc visitor, void* argument) {
        return object ? visitor(object.ptr(), argument) : 0;
    }

    template <class Kind>
    void add([[maybe_unused]] Kind& parameter) {
        if constexpr (std::is_same_v<Kind, Object>) {
            put(&parameter, [](const void* place, visitproc visitor, void* argument) {
                return visitOne(*static_cast<const Kind*>(place), visitor, argument);
            });
        } else if constexpr (std::is_same_v<Kind, std::vector<Object>>) {
            put(&parameter, [](const void* place, visitproc visitor, void* argument) {
                for (const Object& object : *static_cast<const Kind*>(place)) {
                    if (const int stop = visitOne(object, visitor, argument)) return stop;
                }
                return 0;
            });
        } else if constexpr (!std::is_const_v<Kind> && requires { parameter.self(); }) {
            put(&parameter, [](const void* place, visitproc visitor, void* argument) {
                return visitOne(static_cast<const Kind*>(place)->self(), visitor, argument);
            });
        }
    }

    // Parameters beyond the array's size are not visited; their objects are merely kept alive.
    void put(const void* place, int (*visit)(const void*, visitproc, void*)) {
        if (count_ < parameters_.size()) parameters_[count_++] = {place, visit};
    }

    std::array<Parameter, 12> parameters_{};
    std::size_t count_ = 0;
};

/// The running steps of one call.
class [[nodiscard]] Task {
public:
    struct promise_type {
        Object value;                ///< result of the steps
        std::exception_ptr failure;  ///< or their exception
        Object awaited;              ///< the Python iterator they wait for while suspended
        Object answer;               ///< its result
        std::exception_ptr trouble;  ///< or its exception
        Deadline limit = forever;    ///< waits for the device end at this time
        const Held held;

        /// Gets the parameters of the coroutine function.
        template <class... Parameters>
        explicit promise_type(Parameters&... parameters) : held(parameters...) {}

        Task get_return_object() { return Task(Handle::from_promise(*this)); }
        std::suspend_always initial_suspend() noexcept { return {}; }
        std::suspend_always final_suspend() noexcept { return {}; }
        void return_value(Object result) { value = std::move(result); }
        void unhandled_exception() { failure = std::current_exception(); }
    };
    using Handle = std::coroutine_handle<promise_type>;

    explicit Task(Handle handle) : handle_(handle) {}
    Task(Task&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    Task& operator=(Task&&) = delete;
    ~Task() {
        if (handle_) handle_.destroy();
    }

    /// Runs the steps of a blocking call to their end.
    Object runThrough() {
        handle_.resume();
        return outcome();
    }

    Handle handle() const { return handle_; }

    /// Returns the result of the finished steps, or rethrows their exception.
    Object outcome() {
        if (handle_.promise().failure) std::rethrow_exception(handle_.promise().failure);
        return std::move(handle_.promise().value);
    }

private:
    Handle handle_;
};

/// One awaited step: its result is known, or comes from a Python awaitable.
class [[nodiscard]] Awaiter {
public:
    static Awaiter done(Object value) { return Awaiter(std::move(value), true); }
    static Awaiter on(py::handle awaitable);

    bool await_ready() const noexcept { return done_; }
    void await_suspend(Task::Handle handle);
    Object await_resume();

private:
    Awaiter(Object value, bool done) : value_(std::move(value)), done_(done) {}

    Object value_;
    bool done_;
    Task::Handle steps_;
};

/// A Python coroutine object that runs the steps when it is awaited.
Object makeCoroutine(Task steps, py::handle name, py::handle qualifiedName);

bool isOurCoroutine(py::handle object);
/// Makes waits for the device inside this coroutine end at `limit` at the latest.
void limitCoroutine(py::handle coroutine, Deadline limit);

void prepareCoroutineType(py::module_& module);

}  // namespace zvr::python
