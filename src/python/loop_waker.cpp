#include "python/loop_waker.h"

#include "python/raising.h"

namespace zvr::python {

std::runtime_error loopIsClosed() { return std::runtime_error("the event loop is closed"); }

bool isClosed(py::handle loop) { return callMethod(loop, "is_closed").cast<bool>(); }

namespace {

// Registers a callback with a loop in an empty context: the current one belongs to some task, and the loop would keep
// its contents alive as long as the callback.
template <class Call>
void inEmptyContext(Call&& call) {
    struct Entered {
        Object context = own(PyContext_New());
        Entered() {
            if (PyContext_Enter(context.ptr()) != 0) throw py::error_already_set();
        }
        ~Entered() {
            if (PyContext_Exit(context.ptr()) != 0) PyErr_WriteUnraisable(context.ptr());
        }
    } const entered;
    call();
}

// Resumes the tasks that wait for these futures. Each may run any Python code and let other threads run, so the list
// must not be shared. The first failure is thrown after all have been resumed.
void resolve(const std::vector<Object>& futures) {
    std::exception_ptr failure;
    for (const Object& future : futures) {
        try {
            if (!callMethod(future, "done").cast<bool>()) callMethod(future, "set_result", py::none());
        } catch (...) {
            if (failure) {
                reportUnraisable();
            } else {
                failure = caught();
            }
        }
    }
    if (failure) std::rethrow_exception(failure);
}

}  // namespace

// The part of a waker that a loop holds: a Python object with the callbacks as methods. It shows the garbage collector
// the awaited futures; its deallocation means that the loop has released it.
struct Callbacks {
    std::shared_ptr<LoopWaker> waker;
    Object loop;  // weak reference
    std::shared_ptr<const LoopDescriptor> descriptor;

    static Object make(const std::shared_ptr<LoopWaker>& waker, py::handle loop);
    /// Null once the loop is gone.
    Object livingLoop() const {
        Object living = callObject(loop);
        return living.is_none() ? Object() : living;
    }
};

namespace {

struct CallbacksObject {
    PyObject_HEAD Callbacks* content;
};

PyTypeObject callbacksType{};

Callbacks& contentOf(py::handle callbacks) { return *reinterpret_cast<CallbacksObject*>(callbacks.ptr())->content; }

// A method that calls the waker, which stays alive even if the object is released meanwhile.
template <void (LoopWaker::*action)()>
PyObject* method(PyObject* self, PyObject* /*unused*/) {
    try {
        const auto waker = contentOf(self).waker;
        ((*waker).*action)();
    } catch (...) {
        raiseCurrent();
        return nullptr;
    }
    Py_RETURN_NONE;
}

PyMethodDef callbackMethods[] = {
    {"deliver", method<&LoopWaker::deliver>, METH_NOARGS, "Resumes the waits whose data has arrived."},
    {"expire", method<&LoopWaker::expire>, METH_NOARGS, "Ends the waits whose limit has expired."},
    {"unwatch", method<&LoopWaker::unwatch>, METH_NOARGS, "Makes the loop stop watching."},
    {nullptr, nullptr, 0, nullptr},
};

int traverseCallbacks(PyObject* self, visitproc visit, void* arg) {
    const Callbacks& content = contentOf(self);
    Py_VISIT(content.loop.ptr());
    for (const LoopWait* wait : content.waker->waiting()) Py_VISIT(wait->future().ptr());
    return 0;
}

int clearCallbacks(PyObject* self) {
    const auto waker = contentOf(self).waker;
    waker->close();
    return 0;
}

void deallocateCallbacks(PyObject* self) {
    PyObject_GC_UnTrack(self);
    const py::error_scope keepError;
    const std::unique_ptr<Callbacks> content(&contentOf(self));
    content->waker->close();
    PyObject_GC_Del(self);
}

}  // namespace

void prepareLoopWakerType() {
    callbacksType.tp_name = "pyzvr.waker";
    callbacksType.tp_doc = "Callbacks of an event loop for the requests awaited on it.";
    callbacksType.tp_basicsize = sizeof(CallbacksObject);
    callbacksType.tp_flags = Py_TPFLAGS_DEFAULT | Py_TPFLAGS_HAVE_GC | Py_TPFLAGS_DISALLOW_INSTANTIATION;
    callbacksType.tp_dealloc = deallocateCallbacks;
    callbacksType.tp_traverse = traverseCallbacks;
    callbacksType.tp_clear = clearCallbacks;
    callbacksType.tp_methods = callbackMethods;
    Py_SET_REFCNT(&callbacksType, 1);
    if (PyType_Ready(&callbacksType) != 0) throw py::error_already_set();
}

Object Callbacks::make(const std::shared_ptr<LoopWaker>& waker, py::handle loop) {
    auto content = std::make_unique<Callbacks>(Callbacks{waker, own(PyWeakref_NewRef(loop.ptr(), nullptr)), nullptr});
    auto* self = PyObject_GC_New(CallbacksObject, &callbacksType);
    if (self == nullptr) throw py::error_already_set();
    self->content = content.release();
    auto made = py::reinterpret_steal<Object>(reinterpret_cast<PyObject*>(self));
    waker->callbacks_ = made.ptr();
    PyObject_GC_Track(self);
    return made;
}

void LoopWait::onReply() noexcept {
    if (!arrived_.exchange(true)) waker_->signal(shared_from_this());
}

Object LoopWaker::attach(py::handle loop, std::shared_ptr<Receiver> receiver) {
    const auto waker = std::make_shared<LoopWaker>(std::move(receiver));
    Object callbacks = Callbacks::make(waker, loop);
    const auto descriptor = LoopDescriptor::make();
    if (!descriptor) return callbacks;
    try {
        const Object deliver = attribute(callbacks, "deliver");
        inEmptyContext([&] { callMethod(loop, "add_reader", py::int_(descriptor->number()), deliver); });
    } catch (py::error_already_set& error) {
        if (!error.matches(PyExc_NotImplementedError) && !error.matches(PyExc_AttributeError)) throw;
        return callbacks;
    }
    const std::lock_guard lock(waker->mutex_);
    if (!waker->closed_) contentOf(callbacks).descriptor = waker->descriptor_ = descriptor;
    return callbacks;
}

void LoopWaker::signal(std::shared_ptr<LoopWait> wait) noexcept {
    std::shared_ptr<const LoopDescriptor> descriptor;
    {
        const std::lock_guard lock(mutex_);
        if (closed_) return;
        arrived_.push_back(std::move(wait));
        if (std::exchange(signalled_, true)) return;
        descriptor = descriptor_;
    }
    if (descriptor) {
        descriptor->notify();
        return;
    }
    onInterpreter([this] {
        const Object callbacks = py::reinterpret_borrow<Object>(callbacks_);
        const Object loop = callbacks ? contentOf(callbacks).livingLoop() : Object();
        if (!loop) return;
        try {
            callMethod(loop, "call_soon_threadsafe", attribute(callbacks, "deliver"));
        } catch (const py::error_already_set&) {
            {
                const std::lock_guard lock(mutex_);
                signalled_ = false;
            }
            if (!isClosed(loop)) throw;
        }
    });
}

void LoopWaker::onTurn() noexcept {
    std::shared_ptr<const LoopDescriptor> descriptor;
    {
        const std::lock_guard lock(mutex_);
        descriptor = descriptor_;
    }
    if (!descriptor) return;
    armed_ = hasTurn() && receiver_->watchOnce(descriptor->number());
    if (!armed_) descriptor->notify();  // make the loop check again
}

bool LoopWaker::isWatching() const { return callbacks_ != nullptr && contentOf(callbacks_).descriptor; }

// A loop that cannot watch the link leaves it to the receive thread, which then keeps reading without a lease.
void LoopWaker::enterRight() {
    if (!receiver_ || receiver_->isForeign()) return;
    receiver_->right().enter(*this, isWatching() && receiver_->canBeWatched());
    if (hasTurn() && !armed_) onTurn();
}

void LoopWaker::leaveRight() noexcept {
    if (!receiver_ || receiver_->isForeign()) return;
    receiver_->right().leave(*this);
}

// Reads in place of the receive thread. The caller delivers what is filed for this loop, so no notification is sent.
void LoopWaker::readLink() {
    if (!receiver_ || !readsForAny()) return;
    {
        const std::lock_guard lock(mutex_);
        signalled_ = true;
    }
    const WithoutGil released;
    ReadingRight& right = receiver_->right();
    if (!right.begin(*this)) return;
    receiver_->readFor(*this, nullptr, Clock::now());
    right.end(*this);
}

// Re-arm first: later notifications wake us again, earlier ones are in the batch taken below.
void LoopWaker::deliver() {
    const auto descriptor = callbacks_ != nullptr ? contentOf(callbacks_).descriptor : nullptr;
    const bool bytes = descriptor && descriptor->listen().link;
    if (bytes) armed_ = false;
    deliver(bytes);
}

void LoopWaker::deliver(bool bytes) {
    if (bytes) readLink();
    std::vector<std::shared_ptr<LoopWait>> arrived;
    {
        const std::lock_guard lock(mutex_);
        signalled_ = false;
        arrived.swap(arrived_);
    }
    const bool isOwn = receiver_ && !receiver_->isForeign();
    const bool isLost = isOwn && receiver_->loss().has_value();
    const auto waitsOn = [](const LoopWait* wait) { return wait->readsLink && !wait->arrived() && !wait->over(); };
    if (!isLost && hasTurn() && !armed_ && std::ranges::any_of(waiting_, waitsOn)) onTurn();
    std::vector<Object> futures;
    futures.reserve(arrived.size());
    for (const auto& wait : arrived) {
        if (wait->future()) futures.push_back(wait->future());
    }
    for (LoopWait* const wait : waiting_) {
        const bool isOver = isLost || (isOwn && receiver_->waitsEnded() != wait->since);
        if (!isOver || !wait->future() || !waitsOn(wait)) continue;
        wait->lose();
        futures.push_back(wait->future());
    }
    resolve(futures);
}

// Data that has arrived counts as in time, even if the loop was too busy to read or deliver it.
void LoopWaker::expire() {
    timer_ = forever;
    deliver(hasTurn());
    const Deadline now = Clock::now();
    std::vector<Object> futures;
    for (LoopWait* wait : waiting_) {
        if (wait->over() || wait->limit() > now) continue;
        wait->end();
        futures.push_back(wait->future());
    }
    thenAlways([&] { resolve(futures); }, [&] { schedule(); });
}

void LoopWaker::enter(LoopWait& wait) {
    waiting_.push_back(&wait);
    if (wait.readsLink) enterRight();
    schedule();
}

void LoopWaker::leave(LoopWait& wait) {
    std::erase(waiting_, &wait);
    if (wait.readsLink && !readsForAny()) leaveRight();
    const Object future = wait.takeFuture();
    if (dismissed_ && waiting_.empty()) stopWatching();
}

// The timer of an earlier, finished wait stays: limits nearly always come in order, so one timer serves many. If the
// loop watches no descriptor, the timer also keeps the callbacks alive while there are waits.
void LoopWaker::schedule() {
    constexpr std::chrono::seconds longest{60};
    const Object callbacks = py::reinterpret_borrow<Object>(callbacks_);
    if (!callbacks || waiting_.empty()) return;
    const Callbacks& content = contentOf(callbacks);
    Deadline next = content.descriptor ? forever : Clock::now() + longest;
    for (const LoopWait* wait : waiting_) {
        if (!wait->over()) next = std::min(next, wait->limit());
    }
    if (next >= timer_) return;
    const Object loop = content.livingLoop();
    if (!loop) return;
    const Deadline before = std::exchange(timer_, next);
    const double seconds = std::chrono::duration<double>(next - Clock::now()).count();
    try {
        const Object expire = attribute(callbacks, "expire");
        inEmptyContext([&] { callMethod(loop, "call_later", py::float_(std::max(seconds, 0.0)), expire); });
    } catch (...) {
        timer_ = before;
        throw;
    }
}

void LoopWaker::dismiss() {
    dismissed_ = true;
    if (waiting_.empty()) stopWatching();
}

// The loop stops watching on the thread that runs it, if any.
void LoopWaker::stopWatching() {
    const Object callbacks = py::reinterpret_borrow<Object>(callbacks_);
    if (!callbacks) return;
    const Callbacks& content = contentOf(callbacks);
    const py::error_scope keepError;
    Object loop;
    try {
        loop = content.livingLoop();
        if (!loop || !content.descriptor || !content.descriptor->isOurs() || isClosed(loop)) {
            close();
        } else if (callMethod(loop, "is_running").cast<bool>() &&
                   !callObject(pythonObject("asyncio", "_get_running_loop")).is(loop)) {
            callMethod(loop, "call_soon_threadsafe", attribute(callbacks, "unwatch"));
        } else {
            unwatch();
        }
    } catch (py::error_already_set& error) {
        error.discard_as_unraisable("pyzvr");
    }
}

void LoopWaker::unwatch() {
    const Object callbacks = py::reinterpret_borrow<Object>(callbacks_);
    if (!callbacks) return;
    const auto descriptor = contentOf(callbacks).descriptor;
    const Object loop = contentOf(callbacks).livingLoop();
    if (loop && descriptor) callMethod(loop, "remove_reader", py::int_(descriptor->number()));
    close();
}

void LoopWaker::close() {
    leaveRight();
    if (callbacks_ != nullptr) contentOf(callbacks_).descriptor.reset();
    callbacks_ = nullptr;
    std::vector<Object> futures;
    for (LoopWait* wait : waiting_) futures.push_back(wait->takeFuture());
    waiting_.clear();
    std::vector<std::shared_ptr<LoopWait>> arrived;
    std::shared_ptr<const LoopDescriptor> descriptor;
    const std::lock_guard lock(mutex_);
    closed_ = true;
    arrived.swap(arrived_);
    descriptor.swap(descriptor_);
}

const std::shared_ptr<LoopWaker>& wakerOf(py::handle callbacks) { return contentOf(callbacks).waker; }

Object loopOf(py::handle callbacks) { return contentOf(callbacks).livingLoop(); }

}  // namespace zvr::python
