// The bridge between C++ coroutines and the host's.
//
// An operation with steps is one C++ coroutine that serves both forms. In the blocking form every co_await completes in
// place, so the coroutine runs through on the caller's thread. In the awaitable form the same coroutine lives in an
// object of the host's coroutine protocol: it suspends on an awaitable of the host, which this object then drives on
// its behalf, passing values, failures and cancellation down and their outcome up.
//
// All of it happens under the interpreter lock.
//
// The collector sees what suspended steps hold: their parameters, and what they wait for. An object that refers to the
// task that runs its own steps is freed with it.
#pragma once

#include <coroutine>
#include <exception>
#include <vector>

#include "python/common.h"

namespace zvr::python {

/// A time limit struck in the awaitable form; becomes the event loop's timeout error.
struct AwaitTimedOut : std::runtime_error {
    AwaitTimedOut() : std::runtime_error("the time limit of an awaited exchange struck") {}
};

/// The parameters of running steps, for the collector. They live as long as the steps; a reference among them is not
/// theirs and not seen.
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

    // What has no room is not seen, and merely keeps what it refers to.
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
        Object value;                ///< what the steps returned
        std::exception_ptr failure;  ///< or threw
        Object awaited;              ///< the host's iterator that they wait for, while they are suspended
        Object answer;               ///< what that returned
        std::exception_ptr trouble;  ///< or raised
        Deadline limit = forever;    ///< waits for the device end here
        const Held held;

        /// The parameters are those of the steps themselves.
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

    /// Runs the steps of a blocking call through.
    Object runThrough() {
        handle_.resume();
        return outcome();
    }

    Handle handle() const { return handle_; }

    /// What the finished steps returned or threw.
    Object outcome() {
        if (handle_.promise().failure) std::rethrow_exception(handle_.promise().failure);
        return std::move(handle_.promise().value);
    }

private:
    Handle handle_;
};

/// One awaited step: its result is there, or comes from an awaitable of the host.
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

/// A host coroutine object that runs the steps when it is awaited.
Object makeCoroutine(Task steps, py::handle name, py::handle qualifiedName);

bool isOurCoroutine(py::handle object);
/// Waits for the device inside this coroutine end at `limit` at the latest.
void limitCoroutine(py::handle coroutine, Deadline limit);

void prepareCoroutineType(py::module_& module);

}  // namespace zvr::python
