#include "device/decoder_thread.h"

#include "core/wire/constants.h"
#include "device/runtime.h"
#include "python/operation.h"
#include "python/raising.h"

namespace zvr::python {

namespace {

// A thread of ours waits for foreign locks and queues in turns of this length, to see what is replaced meanwhile.
constexpr double turnSeconds = 0.05;
constexpr double pollSeconds = 0.005;

bool isOneLock(py::handle lock) {
    const std::string_view name = Py_TYPE(lock.ptr())->tp_name;
    return name == "_thread.lock" || name == "_thread.RLock";
}

void warnOf(FailureId warning) { callObject(failureClass(warning)); }

// The next frame of a queue; nothing if it is empty.
Object frameOf(const StreamedFunction& function, py::handle queue, double seconds) {
    try {
        if (function.polls) return callMethod(queue, "get", py::bool_(false));
        return callMethod(queue, "get", py::bool_(true),
                          seconds == QUEUE_TIMEOUT ? Object(py::int_(QUEUE_TIMEOUT)) : py::float_(seconds));
    } catch (const py::error_already_set& error) {
        if (!error.matches(hostObject("queue", "Empty"))) throw;
        return {};
    }
}

void putAll(const StreamedFunction& function, py::handle queue, const Object& items) {
    for (const py::handle item : items) {
        try {
            callMethod(queue, "put", item, py::bool_(false));
        } catch (const py::error_already_set& error) {
            if (!error.matches(hostObject("queue", "Full"))) throw;
            warnOf(function.overflow);
        }
    }
}

// One turn of the body through the object, which `self` gives, or nothing once it is gone. Tells whether any frame
// came.
template <class Self>
bool turn(const StreamedFunction& function, const FeedParts& parts, double seconds, Self self) {
    bool any = false;
    for (const auto& [frames, items] : parts.queues) {
        const Object frame = frameOf(function, frames, seconds);
        if (!frame || frame.is_none()) continue;
        any = true;
        const Object object = self();
        if (!object) return any;
        putAll(function, items, function.itemsOf(object, frame));
    }
    return any;
}

/// Looks at the object for its thread.
class FeederSupervisor final : public Supervisor<StreamReader> {
public:
    FeederSupervisor(py::handle self, const StreamedFunction& function, std::size_t index, std::shared_ptr<Watch> watch)
        : function_(function),
          index_(index),
          self_(shared(callObject(hostObject("weakref", "ref"), self))),
          watch_(std::move(watch)),
          begunByOther_(!hasOwnMethod(self, function.body)) {}

    bool changed() const noexcept override { return !native_ || watch_->changed(seen_); }

    void renew(StreamReader& reader) override {
        bool rests = false;
        if (!interpreterAlive()) return reader.end();
        {
            const WithGil acquired;
            native_ = false;
            const std::uint64_t before = watch_ ? watch_->changes() : 0;
            rests = !look(reader);
            if (native_) seen_ = {before, watch_->look().version};
        }
        if (rests) reader.rest(std::chrono::milliseconds(50));
    }

private:
    Object self() const {
        Object object = callObject(self_.get());
        return object.is_none() ? Object() : object;
    }

    // Tells whether there is more to be done at once.
    bool look(StreamReader& reader) {
        Object object = self();
        if (!object) return reader.end(), true;
        if (!hasOwnMethod(object, function_.body)) return callOther(reader, std::move(object));
        other_ = nullptr;
        if (isTrue(attribute(object, function_.killed))) return reader.end(), true;
        const FeedParts parts = function_.partsOf(object, index_);
        if (watch_ && goNative(reader, object, parts)) return native_ = true;
        object = {};
        if (!passInTurn(parts.lock)) return true;
        const bool any = turn(function_, parts, turnSeconds, [this] { return self(); });
        return !function_.polls || any;
    }

    bool goNative(StreamReader& reader, const Object& object, const FeedParts& parts) {
        const auto gate = nativeOrNothing<Gate>(parts.lock);
        if (!gate) return false;
        std::vector<StreamReader::Pair> pairs;
        for (const auto& [frames, items] : parts.queues) {
            const auto from = nativeOrNothing<StreamFifo>(frames);
            const auto to = nativeOrNothing<ObjectQueue>(items);
            if (!from || !to || &to->kind != &function_.items || !hasOwnMethod(frames, "get") ||
                !hasOwnMethod(items, "put")) {
                return false;
            }
            pairs.push_back({from, to});
        }
        try {
            reader.setLayout(function_.layoutOf(object));
        } catch (const std::exception&) {
            return false;  // the next frame tells what is wrong
        }
        reader.setRoute(std::move(pairs), gate, !function_.polls);
        return true;
    }

    // A body that somebody put in the place of ours is called once. If it was there from the beginning, the thread ends
    // with it; else the thread rests until something changes.
    bool callOther(StreamReader& reader, Object object) {
        const Object body = attribute(object, function_.body);
        const void* const function = PyMethod_Check(body.ptr()) ? PyMethod_GET_FUNCTION(body.ptr()) : body.ptr();
        if (std::exchange(other_, function) == function) return false;
        const std::vector<Object> arguments = function_.argumentsOf(function_.partsOf(object, index_));
        object = {};
        py::tuple tuple(arguments.size());
        for (std::size_t i = 0; i < arguments.size(); ++i) tuple[i] = arguments[i];
        own(entering([&] { return PyObject_CallObject(body.ptr(), tuple.ptr()); }));
        if (begunByOther_) reader.end();
        return true;
    }

    const StreamedFunction& function_;
    const std::size_t index_;
    const SharedObject self_;
    const std::shared_ptr<Watch> watch_;
    const bool begunByOther_;
    bool native_ = false;
    Watch::Seen seen_;
    const void* other_ = nullptr;  // replacement that has been called; only compared
};

}  // namespace

// Tells whether the lock was free within a turn. A lock that is not one of the host's knows its own ways only.
bool passInTurn(py::handle lock) {
    if (const auto gate = nativeOrNothing<Gate>(lock)) {
        const Deadline until = deadlineIn(turnSeconds);
        const WithoutGil released;
        return gate->awaitOpen(until);
    }
    if (!isOneLock(lock)) {
        callMethod(lock, "acquire");
    } else if (!isTrue(callMethod(lock, "acquire", py::bool_(true), py::float_(turnSeconds)))) {
        return false;
    }
    callMethod(lock, "release");
    return true;
}

void passLock(py::handle lock) {
    if (const auto gate = nativeOrNothing<Gate>(lock)) {
        blocking([&](const Attend& attend) {
            return waitAttended(forever, attend, [&](Deadline until) { return gate->awaitOpen(until); });
        });
        return;
    }
    callMethod(lock, "acquire");
    callMethod(lock, "release");
}

void runFeederBody(py::handle self, const StreamedFunction& function, const std::function<FeedParts()>& parts) {
    while (!isTrue(attribute(self, function.killed))) {
        const FeedParts now = parts();
        passLock(now.lock);
        const bool any = turn(function, now, QUEUE_TIMEOUT, [&] { return borrow(self.ptr()); });
        if (function.polls && !any) sleepBlocking(pollSeconds);
    }
}

Object startFeeder(py::handle self, const StreamedFunction& function, std::size_t index,
                   const std::shared_ptr<Gate>& gate) {
    const auto runtime = runtimeOrNothing(self);
    const auto watch = runtime ? runtime->watch : nullptr;
    const auto supervisor = std::make_shared<FeederSupervisor>(self, function, index, watch);
    const auto reader = std::make_shared<StreamReader>(
        function.body, std::vector<StreamReader::Pair>{}, RowLayout(), reportThreadFailure,
        [&function](std::size_t count) {
            for (; count != 0; --count) onInterpreter([&] { warnOf(function.overflow); });
        },
        supervisor, gate);
    if (watch) watch->onChange(reader);
    endAtExit(reader);
    reader->start();
    return threadObject(reader);
}

bool hasFeeder(py::handle self, const char* field) {
    const Object thread = attributeOrNothing(self, field);
    const auto running = thread ? nativeOrNothing<OwnedThread>(thread) : nullptr;
    return running && running->alive();
}

}  // namespace zvr::python
