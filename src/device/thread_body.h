// What the threads of a device object share: each has a method of the object for its body, which may be another one
// than the library's, and looks at the object again when something that it uses has been replaced.
#pragma once

#include "core/engine/supervisor.h"
#include "device/watch.h"
#include "python/operation.h"

namespace zvr::python {

/// The body of a thread, as the object has it now.
class ThreadBody {
public:
    enum class Found {
        own,     ///< the library's
        called,  ///< another one, which has just been called and has returned
        known,   ///< another one, which is not called twice
    };

    ThreadBody(py::handle self, const char* method) : method_(method), begunByOther_(!hasOwnMethod(self, method)) {}

    /// Calls a body that is not the library's with what `argumentsOf` gives, a tuple. Holds the object no longer than
    /// the call does.
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

    /// Whether another one was there when the thread was made: the thread ends with it.
    bool begunByOther() const { return begunByOther_; }

private:
    const char* const method_;
    const bool begunByOther_;
    const void* called_ = nullptr;  // the function that has been called; only compared
};

/// Looks at an object for one of its threads, without keeping it alive.
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
        goOn,       ///< with what the look has given the thread, until something changes
        lookAgain,  ///< at once
        rest,       ///< and look again, after a moment or at the next change
        end,
    };

    ObjectSupervisor(py::handle self, const char* body, std::shared_ptr<Watch> watch)
        : self_(shared(callObject(pythonObject("weakref", "ref"), self))),
          body_(self, body),
          watch_(std::move(watch)) {}

    /// Gives the thread what it is to use. Under the interpreter lock. Only an object with a watch may let it go on.
    virtual Next look(Thread& thread, Object object) = 0;

    /// The object; nothing once it is gone.
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
