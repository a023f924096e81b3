// Shared by the threads of a device object: the body of each is a method of the object, which users may replace, and
// the thread looks at the object again when anything that it uses has been replaced.
#pragma once

#include "core/engine/supervisor.h"
#include "device/watch.h"
#include "python/operation.h"

namespace zvr::python {

/// The current body of a thread.
class ThreadBody {
public:
    enum class Found {
        own,     ///< the library's
        called,  ///< a user's, which has just been called and has returned
        known,   ///< a user's, which is not called twice
    };

    ThreadBody(py::handle self, const char* method) : method_(method), begunByOther_(!hasOwnMethod(self, method)) {}

    /// Calls a user's body with the tuple that `argumentsOf` returns. Releases the object before the call.
    template <class ArgumentsOf>
    Found callOther(Object& object, ArgumentsOf argumentsOf) {
        if (hasOwnMethod(object, method_)) {
            called_ = nullptr;
            return Found::own;
        }
        const Object body = attribute(object, method_);
        const void* const function = PyMethod_Check(body.ptr()) ? PyMethod_GET_FUNCTION(body.ptr()) : body.ptr();
        if (std::exchange(called_, function) == function) return Found::known;
        const py::tuple arguments = argumentsOf(object);
        object = {};
        own(entering([&] { return PyObject_CallObject(body.ptr(), arguments.ptr()); }));
        return Found::called;
    }

    /// Whether a user's body was there when the thread was made: the thread ends when it returns.
    bool begunByOther() const { return begunByOther_; }

private:
    const char* const method_;
    const bool begunByOther_;
    const void* called_ = nullptr;  // the function called last; only compared
};

/// Looks up a thread's parts in its object, without keeping the object alive.
template <class Thread>
class ObjectSupervisor : public Supervisor<Thread> {
public:
    bool changed() const noexcept override { return !watch_ || watch_->changed(seen_); }

    void renew(Thread& thread) final {
        if (!interpreterAlive()) return thread.end();
        Next next = Next::rest;
        {
            const WithGil acquired;
            const std::uint64_t before = watch_ ? watch_->changes() : 0;
            Object object = self();
            next = object ? look(thread, std::move(object)) : Next::end;
            seen_ = next == Next::goOn ? Watch::Seen{before, watch_->look().version} : Watch::Seen{};
        }
        if (next == Next::end) thread.end();
        if (next == Next::rest) thread.rest(std::chrono::milliseconds(50));
    }

protected:
    enum class Next {
        goOn,       ///< with these parts, until something changes
        lookAgain,  ///< immediately
        rest,       ///< look again after a moment or at the next change
        end,
    };

    ObjectSupervisor(py::handle self, const char* body, std::shared_ptr<Watch> watch)
        : self_(shared(callObject(pythonObject("weakref", "ref"), self))),
          body_(self, body),
          watch_(std::move(watch)) {}

    /// Sets the thread's parts, under the interpreter lock. May return `goOn` only if there is a watch.
    virtual Next look(Thread& thread, Object object) = 0;

    /// The object; null once it is gone.
    Object self() const {
        Object object = callObject(self_.get());
        return object.is_none() ? Object() : object;
    }

    const SharedObject self_;  // weak
    ThreadBody body_;
    const std::shared_ptr<Watch> watch_;

private:
    Watch::Seen seen_;
};

}  // namespace zvr::python
