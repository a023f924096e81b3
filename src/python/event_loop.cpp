#include "python/event_loop.h"

#include "core/engine/row_queue.h"
#include "python/loop_descriptor.h"
#include "python/raising.h"
#include "transport/receiver.h"

namespace zvr::python {

namespace {

std::runtime_error loopIsClosed() { return std::runtime_error("the event loop is closed"); }

bool isClosed(py::handle loop) { return callMethod(loop, "is_closed").cast<bool>(); }

// Registers a callback with a loop, in an empty context: the one of the moment belongs to some task, and the loop would
// keep what it holds for as long as the callback.
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

// Lets the tasks go on that wait for these futures. Each of them may run any code of Python and let other threads run,
// so nothing is walked here that others may change. The first failure is thrown once all have had their turn.
void resolve(const std::vector<Object>& futures) {
    std::exception_ptr failure;
    for (const Object& future : futures) {
        try {
            if (!callMethod(future, "done").cast<bool>()) callMethod(future, "set_result", py::none());
        } catch (...) {
            if (failure) {
                reportUnraisable();
            } else {
                failure = std::current_exception();
            }
        }
    }
    if (failure) std::rethrow_exception(failure);
}

}  // namespace

/// One wait of one awaited step.
class LoopWait final : public ReplySubscriber, public std::enable_shared_from_this<LoopWait> {
public:
    LoopWait(std::shared_ptr<LoopWaker> waker, Object future, Deadline limit, bool readsLink)
        : readsLink(readsLink), waker_(std::move(waker)), future_(std::move(future)), limit_(limit) {}

    /// Whether the loop reads the link for it.
    const bool readsLink;

    /// Any thread. Only the first reply counts.
    void onReply() noexcept override;

    // All the rest happens under the interpreter lock. The future is gone once the wait is over, so that whichever
    // thread holds the wait last holds nothing of the interpreter.
    const Object& future() const { return future_; }
    Object takeFuture() { return std::move(future_); }
    Deadline limit() const { return limit_; }
    /// Its limit has struck: the wait is over, as one in time if something has arrived by now.
    void end() {
        over_ = true;
        expired_ = !arrived_;
    }
    /// What it waits for can no longer come.
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

    /// Makes the callbacks of a waker and lets the loop watch. The caller is the only one to keep them where the loop
    /// has nothing to watch.
    static Object attach(py::handle loop, std::shared_ptr<Receiver> receiver);

    /// Any thread.
    void signal(std::shared_ptr<LoopWait> wait) noexcept;
    /// The link is to be read by the loop, which hears of bytes from now on.
    void onTurn() noexcept override;

    // On the loop's thread.
    void enter(LoopWait& wait);
    void deliver();
    void expire();
    void unwatch();

    // On any thread, under the interpreter lock.
    void leave(LoopWait& wait);
    /// The object is gone: the loop stops watching once nobody waits any more.
    void dismiss();
    /// The loop has let go of the callbacks. Who waits still is never told.
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
    std::atomic<bool> armed_{false};  // the descriptor tells of bytes

    // Under the mutex.
    std::mutex mutex_;
    std::vector<std::shared_ptr<LoopWait>> arrived_;
    std::shared_ptr<const LoopDescriptor> descriptor_;
    bool signalled_ = false;
    bool closed_ = false;

    // Under the interpreter lock.
    PyObject* callbacks_ = nullptr;  // not ours
    std::vector<LoopWait*> waiting_;
    Deadline timer_ = forever;
    bool dismissed_ = false;
};

// What a loop holds of a waker: an object of the host with the callbacks as methods. It shows the collector the futures
// that are waited for, and its end is the news that the loop has let go.
struct Callbacks {
    std::shared_ptr<LoopWaker> waker;
    Object loop;  // weak reference
    std::shared_ptr<const LoopDescriptor> descriptor;

    static Object make(const std::shared_ptr<LoopWaker>& waker, py::handle loop);
    /// Nothing once the loop is gone.
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

// A method that does something with the waker, whatever becomes of the object meanwhile.
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
    {"deliver", method<&LoopWaker::deliver>, METH_NOARGS, "Lets go on what waited for something that has arrived."},
    {"expire", method<&LoopWaker::expire>, METH_NOARGS, "Ends the waits whose limit has struck."},
    {"unwatch", method<&LoopWaker::unwatch>, METH_NOARGS, "Ends the watch of the loop."},
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
    callbacksType.tp_doc = "What an event loop calls for the requests that are awaited on it.";
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
        descriptor->ring();
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
    if (!armed_) descriptor->ring();  // the loop is to look around
}

bool LoopWaker::isWatching() const { return callbacks_ != nullptr && contentOf(callbacks_).descriptor; }

// A loop that cannot watch the link leaves it to its thread, which is not to wait for others then.
void LoopWaker::enterRight() {
    if (!receiver_ || receiver_->isForeign()) return;
    receiver_->right().enter(*this, isWatching() && receiver_->canBeWatched());
    if (hasTurn() && !armed_) onTurn();
}

void LoopWaker::leaveRight() noexcept {
    if (!receiver_ || receiver_->isForeign()) return;
    receiver_->right().leave(*this);
}

// In the place of the receive thread. What that files for this loop is delivered by who calls, without a ring.
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

// Listening comes first: who rings after it rings anew, and who rang before it is among those that are taken.
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
    const bool isOver = receiver_ && !receiver_->isForeign() && receiver_->loss().has_value();
    const auto waitsOn = [](const LoopWait* wait) { return wait->readsLink && !wait->arrived() && !wait->over(); };
    if (!isOver && hasTurn() && !armed_ && std::ranges::any_of(waiting_, waitsOn)) onTurn();
    std::vector<Object> futures;
    futures.reserve(arrived.size());
    for (const auto& wait : arrived) {
        if (wait->future()) futures.push_back(wait->future());
    }
    for (LoopWait* const wait : waiting_) {
        if (!isOver || !wait->future() || !waitsOn(wait)) continue;
        wait->lose();
        futures.push_back(wait->future());
    }
    resolve(futures);
}

// What has come counts as in time, even if the loop was too busy to read or deliver it yet.
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

// The timer of an earlier, already finished wait stays: limits come in order nearly always, so one timer serves many.
// Where the loop watches nothing, the timer is also what keeps the callbacks while somebody waits.
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

// A watch ends on the thread that runs the loop, if one does.
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

LoopWakers::~LoopWakers() {
    if (wakers_.empty()) return;
    onInterpreter([this] {
        for (const auto& waker : std::exchange(wakers_, {})) waker->dismiss();
    });
}

std::shared_ptr<LoopWaker> LoopWakers::find(py::handle loop) const {
    for (const auto& waker : wakers_) {
        if (waker->callbacks() && contentOf(waker->callbacks()).livingLoop().is(loop)) return waker;
    }
    return nullptr;
}

// Most loops let go of their callbacks when they are closed; the others are asked. That may run any code, so it is done
// on a copy.
void LoopWakers::forgetClosed() {
    const auto wakers = wakers_;
    for (const auto& waker : wakers) {
        const Object callbacks = py::reinterpret_borrow<Object>(waker->callbacks());
        try {
            const Object loop = callbacks ? contentOf(callbacks).livingLoop() : Object();
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
    const auto& waker = contentOf(made).waker;
    if (waker->callbacks()) wakers_.push_back(waker);
    return made;
}

std::shared_ptr<LoopWait> LoopWakers::wait(Deadline limit, bool readsLink) {
    const Object loop = pythonObject("asyncio", "get_running_loop")();
    Object future = callMethod(loop, "create_future");
    const Object callbacks = callbacksOf(loop);
    const auto waker = contentOf(callbacks).waker;
    if (!waker->callbacks()) throw loopIsClosed();
    const auto wait = std::make_shared<LoopWait>(waker, std::move(future), limit, readsLink);
    try {
        waker->enter(*wait);
    } catch (...) {
        waker->leave(*wait);
        throw;
    }
    return wait;
}

namespace {

// One loop at most runs on a thread.
thread_local Deadline lastTurn{};

}  // namespace

bool LoopWakers::loopIsDue() {
    constexpr std::chrono::microseconds longest{500};
    const Deadline now = Clock::now();
    if (now - lastTurn < longest) return false;
    lastTurn = now;
    return true;
}

ReplyAwaiter::~ReplyAwaiter() {
    subscription_.reset();
    if (wait_) wait_->waker()->leave(*wait_);
}

bool ReplyAwaiter::await_suspend(Task::Handle handle) {
    const Deadline limit = handle.promise().limit;
    if (limit <= Clock::now()) throw AwaitTimedOut();
    wait_ = wakers_.wait(limit);
    subscription_.emplace(*pool_, key_, wait_);
    const bool isLost = wakers_.receiver && wakers_.receiver->loss();  // behind what the link brought last
    if (pool_->contains(key_)) return false;
    if (isLost) wakers_.receiver->requireLink();
    const Object future = wait_->future();
    if (!future) throw loopIsClosed();
    lastTurn = Clock::now();
    pending_.emplace(Awaiter::on(future));
    pending_->await_suspend(handle);
    return true;
}

void ReplyAwaiter::await_resume() {
    if (pending_) pending_->await_resume();
    if (wait_->lost()) wakers_.receiver->requireLink();
    if (wait_->expired()) throw AwaitTimedOut();
}

RowsAwaiter::~RowsAwaiter() {
    if (!wait_) return;
    queue_->forget(*wait_);
    wait_->waker()->leave(*wait_);
}

bool RowsAwaiter::await_suspend(Task::Handle handle) {
    if (limit_ <= Clock::now()) return false;
    wait_ = wakers_.wait(limit_, false);
    if (!queue_->tellAt(count_, wait_)) return false;
    const Object future = wait_->future();
    if (!future) throw loopIsClosed();
    lastTurn = Clock::now();
    pending_.emplace(Awaiter::on(future));
    pending_->await_suspend(handle);
    return true;
}

void RowsAwaiter::await_resume() {
    if (pending_) pending_->await_resume();
}

}  // namespace zvr::python
