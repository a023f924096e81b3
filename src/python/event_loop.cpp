#include "python/event_loop.h"

#include "python/raising.h"

#ifdef __linux__
#include <sys/eventfd.h>
#include <unistd.h>
#endif

namespace zvr::python {

namespace {

#ifdef __linux__
int makeDescriptor() { return eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC); }
void ring(int descriptor) {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = write(descriptor, &one, sizeof one);
}
void silence(int descriptor) {
    std::uint64_t count = 0;
    [[maybe_unused]] const auto read = ::read(descriptor, &count, sizeof count);
}
void closeDescriptor(int descriptor) { close(descriptor); }
#else
int makeDescriptor() { return -1; }
void ring(int) {}
void silence(int) {}
void closeDescriptor(int) {}
#endif

using Action = void (*)(Waker&);

// A callable for the loop that does something with the waker as long as it lives.
template <Action action>
Object callback(const std::shared_ptr<Waker>& waker) {
    static PyMethodDef definition = {
        "wake",
        [](PyObject* self, PyObject*) -> PyObject* {
            try {
                const auto* held = static_cast<std::weak_ptr<Waker>*>(PyCapsule_GetPointer(self, nullptr));
                if (const auto waker = held->lock()) action(*waker);
            } catch (...) {
                raiseCurrent();
                return nullptr;
            }
            Py_RETURN_NONE;
        },
        METH_NOARGS, "Wakes what waits for a device."};
    auto held = std::make_unique<std::weak_ptr<Waker>>(waker);
    const py::capsule self(held.get(), [](void* pointer) {
        const std::unique_ptr<std::weak_ptr<Waker>> owned(static_cast<std::weak_ptr<Waker>*>(pointer));
    });
    held.release();  // NOLINT: the capsule owns it
    return own(PyCFunction_New(&definition, self.ptr()));
}

void deliver(Waker& waker) { waker.deliver(); }
void expire(Waker& waker) { waker.expire(); }

// Ends the watch on a descriptor. It must happen on the thread that runs the loop, if one does.
void unwatch(const Object& loop, int descriptor) {
    const auto unwatchNow = py::cpp_function([loop, descriptor] {
        attribute(loop, "remove_reader")(descriptor);
        closeDescriptor(descriptor);
    });
    const bool elsewhere =
        callMethod(loop, "is_running").cast<bool>() && !hostObject("asyncio", "_get_running_loop")().is(loop);
    if (elsewhere) {
        callMethod(loop, "call_soon_threadsafe", unwatchNow);
    } else {
        unwatchNow();
    }
}

}  // namespace

Arrival::Arrival(std::shared_ptr<Waker> waker, Object future, Deadline limit)
    : waker_(std::move(waker)), future_(std::move(future)), limit_(limit) {
    waker_->enter(*this);
}

void Arrival::onArrival() noexcept {
    arrived_ = true;
    waker_->signal();
}

void Arrival::resolve(bool arrived) {
    expired_ = !arrived;
    if (!callMethod(future_, "done").cast<bool>()) callMethod(future_, "set_result", py::none());
}

void Arrival::leave() {
    waker_->leave(*this);
    future_ = {};
}

std::shared_ptr<Waker> Waker::make(py::handle loop) {
    return {std::make_unique<Waker>(loop).release(),
            [](Waker* waker) { onInterpreter([waker] { const std::unique_ptr<Waker> owned(waker); }); }};
}

Waker::Waker(py::handle loop) : loop_(callObject(hostObject("weakref", "ref"), loop)) {}

Waker::~Waker() {
    if (descriptor_ < 0) return;
    const py::error_scope keepError;
    try {
        if (const Object held = loop()) {
            unwatch(held, descriptor_);
        } else {
            closeDescriptor(descriptor_);
        }
    } catch (py::error_already_set& error) {
        error.discard_as_unraisable("pyzvr");
    }
}

Object Waker::loop() const {
    Object held = callObject(loop_);
    if (held.is_none() || callMethod(held, "is_closed").cast<bool>()) return {};
    return held;
}

void Waker::watch() {
    const Object loop = this->loop();
    if (std::exchange(watched_, true) || !loop) return;
    descriptor_ = makeDescriptor();
    if (descriptor_ < 0) return;
    try {
        callMethod(loop, "add_reader", py::int_(descriptor_), callback<python::deliver>(shared_from_this()));
    } catch (py::error_already_set& error) {
        closeDescriptor(std::exchange(descriptor_, -1));
        if (!error.matches(PyExc_NotImplementedError) && !error.matches(PyExc_AttributeError)) throw;
    }
}

void Waker::signal() noexcept {
    if (signalled_.exchange(true)) return;
    if (descriptor_ >= 0) {
        ring(descriptor_);
        return;
    }
    onInterpreter([this] {
        if (const Object held = loop()) {
            callMethod(held, "call_soon_threadsafe", callback<python::deliver>(shared_from_this()));
        }
    });
}

void Waker::deliver() {
    signalled_ = false;
    if (descriptor_ >= 0) silence(descriptor_);
    for (Arrival* arrival : arrivals_) {
        if (arrival->arrived()) arrival->resolve(true);
    }
}

void Waker::expire() {
    timer_ = forever;
    const Deadline now = Clock::now();
    for (Arrival* arrival : arrivals_) {
        if (arrival->limit() <= now) arrival->resolve(false);
    }
    startTimer();
}

void Waker::enter(Arrival& arrival) {
    watch();
    arrivals_.push_back(&arrival);
    startTimer();
}

void Waker::leave(Arrival& arrival) { std::erase(arrivals_, &arrival); }

// The timer of an earlier, already finished wait stays: limits come in order nearly always, so one timer serves many.
void Waker::startTimer() {
    Deadline next = forever;
    for (const Arrival* arrival : arrivals_) {
        if (!arrival->expired()) next = std::min(next, arrival->limit());
    }
    if (next >= timer_) return;
    const Object held = loop();
    if (!held) return;
    timer_ = next;
    const double seconds = std::chrono::duration<double>(next - Clock::now()).count();
    callMethod(held, "call_later", py::float_(std::max(seconds, 0.0)), callback<python::expire>(shared_from_this()));
}

std::shared_ptr<Waker> Wakers::of(py::handle loop) {
    for (const auto& waker : wakers_) {
        if (waker->loop().is(loop)) return waker;
    }
    std::erase_if(wakers_, [](const auto& waker) { return !waker->loop(); });
    return wakers_.emplace_back(Waker::make(loop));
}

bool Wakers::loopIsDue() {
    constexpr std::chrono::microseconds longest{500};
    const Deadline now = Clock::now();
    if (now - lastTurn_ < longest) return false;
    lastTurn_ = now;
    return true;
}

bool ArrivalPending::await_suspend(Result::Handle handle) {
    const Deadline limit = handle.promise().limit;
    if (limit <= Clock::now()) throw AwaitTimedOut();
    const Object loop = hostObject("asyncio", "get_running_loop")();
    arrival_ = std::make_shared<Arrival>(wakers_.of(loop), callMethod(loop, "create_future"), limit);
    listening_.emplace(pool_, key_, arrival_);
    if (pool_->contains(key_)) return false;
    wakers_.loopHasTurn();
    pending_.emplace(Pending::on(arrival_->future()));
    pending_->await_suspend(handle);
    return true;
}

ArrivalPending::~ArrivalPending() {
    listening_.reset();
    if (arrival_) arrival_->leave();
}

void ArrivalPending::await_resume() {
    if (pending_) pending_->await_resume();
    if (arrival_->expired()) throw AwaitTimedOut();
}

}  // namespace zvr::python
