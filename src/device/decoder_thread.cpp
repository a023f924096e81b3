#include "device/decoder_thread.h"

#include <algorithm>

#include "core/engine/stream_reader.h"
#include "core/wire/constants.h"
#include "device/protocol.h"
#include "device/runtime.h"
#include "device/thread_body.h"
#include "python/raising.h"

namespace zvr::python {

namespace {

// The library's threads wait for foreign locks and queues in slices of this length, to notice replacements meanwhile.
constexpr double turnSeconds = 0.05;
constexpr double pollSeconds = 0.005;

bool isOneLock(py::handle lock) {
    const std::string_view name = Py_TYPE(lock.ptr())->tp_name;
    return name == "_thread.lock" || name == "_thread.RLock";
}

void warnOf(FailureId warning) { callObject(failureClass(warning)); }

using Pairs = std::vector<std::pair<Object, Object>>;

// The queues of a field, which holds one queue or a list.
py::list queuesIn(const StreamedFunction& function, const Object& field) {
    if (function.hasLists) return py::list(field);
    py::list alone;
    alone.append(field);
    return alone;
}

Pairs pairsOf(const StreamedFunction& function, const DecoderParts& parts) {
    if (!function.hasLists) return {{parts.frames, parts.items}};
    Pairs pairs;
    for (const auto pair : callObject(pythonObject("builtins", "zip"), parts.frames, parts.items)) {
        const py::tuple both = borrow(pair.ptr());
        pairs.emplace_back(both[0], both[1]);
    }
    return pairs;
}

DecoderParts partsOf(py::handle self, const DecoderFields& fields, const DecoderParts& given = {}) {
    const auto part = [&](const Object& known, const char* field) { return known ? known : attribute(self, field); };
    return {part(given.lock, fields.lock), part(given.frames, fields.frames), part(given.items, fields.items)};
}

// The next frame of a queue; null if it is empty.
Object frameOf(const StreamedFunction& function, py::handle queue, double seconds) {
    try {
        if (function.hasLists) return callMethod(queue, "get", py::bool_(false));
        return callMethod(queue, "get", py::bool_(true),
                          seconds == QUEUE_TIMEOUT ? Object(py::int_(QUEUE_TIMEOUT)) : py::float_(seconds));
    } catch (const py::error_already_set& error) {
        if (!error.matches(pythonObject("queue", "Empty"))) throw;
        return {};
    }
}

Object itemsOf(const StreamedFunction& function, py::handle self, const Object& frame) {
    if (function.itemsOf != nullptr) return function.itemsOf(self, frame);
    RowQueue rows(0);
    rows.put(function.layoutOf(self), bytesOf(frame));
    return function.items.toList(rows.take(RowQueue::noLimit));
}

void putAll(const StreamedFunction& function, py::handle queue, const Object& items) {
    for (const py::handle item : items) {
        try {
            callMethod(queue, "put", item, py::bool_(false));
        } catch (const py::error_already_set& error) {
            if (!error.matches(pythonObject("queue", "Full"))) throw;
            warnOf(function.overflow);
        }
    }
}

// One iteration of the body through the object, which `self` returns, or null once it is gone. Returns whether there
// was any frame.
template <class Self>
bool turn(const StreamedFunction& function, const DecoderParts& parts, double seconds, Self self) {
    bool any = false;
    for (const auto& [frames, items] : pairsOf(function, parts)) {
        const Object frame = frameOf(function, frames, seconds);
        if (!frame || frame.is_none()) continue;
        any = true;
        const Object object = self();
        if (!object) return any;
        putAll(function, items, itemsOf(function, object, frame));
    }
    return any;
}

/// Looks up the parts of a decoder thread in its object.
class DecoderSupervisor final : public ObjectSupervisor<StreamReader> {
public:
    DecoderSupervisor(py::handle self, const StreamedFunction& function, const DecoderFields& fields,
                      std::shared_ptr<Watch> watch)
        : ObjectSupervisor(self, function.body, std::move(watch)), function_(function), fields_(fields) {}

private:
    Next look(StreamReader& reader, Object object) override {
        switch (body_.callOther(object, [this](const Object& self) { return argumentsOf(self); })) {
            case ThreadBody::Found::known: return Next::rest;
            case ThreadBody::Found::called: return body_.begunByOther() ? Next::end : Next::lookAgain;
            case ThreadBody::Found::own: break;
        }
        if (isTrue(attribute(object, function_.killed))) return Next::end;
        const DecoderParts parts = partsOf(object, fields_);
        if (watch_ && goNative(reader, object, parts)) return Next::goOn;
        object = {};
        if (!passInTurn(parts.lock)) return Next::lookAgain;
        const bool any = turn(function_, parts, turnSeconds, [this] { return self(); });
        return function_.hasLists && !any ? Next::rest : Next::lookAgain;
    }

    py::tuple argumentsOf(const Object& self) const {
        const DecoderParts parts = partsOf(self, fields_);
        py::list arguments;
        if (function_.bodyTakesLock) arguments.append(parts.lock);
        arguments.append(parts.frames);
        if (function_.bodyTakesItems) arguments.append(parts.items);
        return py::tuple(arguments);
    }

    bool goNative(StreamReader& reader, const Object& object, const DecoderParts& parts) {
        const auto gate = nativeOrNothing<Gate>(parts.lock);
        if (!gate) return false;
        std::vector<StreamReader::Pair> pairs;
        for (const auto& [frames, items] : pairsOf(function_, parts)) {
            const auto from = nativeOrNothing<StreamFifo>(frames);
            const auto to = nativeOrNothing<RowFifo>(items);
            if (!from || !to || &to->kind != &function_.items || !hasOwnMethod(frames, "get") ||
                !hasOwnMethod(items, "put")) {
                return false;
            }
            pairs.push_back({from, to});
        }
        try {
            reader.setLayout(function_.layoutOf(object));
        } catch (const std::exception&) {
            return false;  // the next frame reports the error
        }
        reader.setRoute(std::move(pairs), gate, !function_.hasLists);
        return true;
    }

    const StreamedFunction& function_;
    const DecoderFields& fields_;
};

Object startDecoder(py::handle self, const StreamedFunction& function, const DecoderFields& fields,
                    const std::shared_ptr<Gate>& gate) {
    const auto runtime = runtimeOrNothing(self);
    const auto watch = runtime ? runtime->watch : nullptr;
    const auto supervisor = std::make_shared<DecoderSupervisor>(self, function, fields, watch);
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

bool hasDecoder(py::handle self, const char* field) {
    const Object thread = attributeOrNothing(self, field);
    const auto running = thread ? nativeOrNothing<OwnedThread>(thread) : nullptr;
    return running && running->alive();
}

bool areSame(const py::list& some, const py::list& others) {
    return std::equal(some.begin(), some.end(), others.begin(), others.end(),
                      [](py::handle one, py::handle other) { return one.is(other); });
}

void markQueues(py::handle self, const StreamedFunction& function) {
    for (const DecoderFields& fields : function.threads) {
        for (const py::handle queue : queuesIn(function, attribute(self, fields.frames))) {
            callMethod(queue, "put", py::none());
        }
    }
}

}  // namespace

// Returns whether the lock was free within a slice. A foreign lock may not support a timeout.
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
        blocking([&](const InterruptCheck& onWait) {
            return waitInterruptibly(forever, onWait, [&](Deadline until) { return gate->awaitOpen(until); });
        });
        return;
    }
    callMethod(lock, "acquire");
    callMethod(lock, "release");
}

void watchStream(const StreamedFunction& function) {
    Watch::watchNames({function.body, function.killed});
    for (const DecoderFields& fields : function.threads) Watch::watchNames({fields.lock, fields.frames, fields.items});
}

void constructStream(py::handle self, const StreamedFunction& function) {
    setAttribute(self, function.opened, py::bool_(false));
    setAttribute(self, function.killed, py::bool_(false));
    const Object pool = attribute(self, "data_pool_strm");
    for (std::size_t i = 0; i < function.threads.size(); ++i) {
        const DecoderFields& fields = function.threads[i];
        py::list frames, items;
        for (const StreamKey& key : function.keysOf(self, i)) {
            frames.append(own(PyObject_GetItem(pool.ptr(), keyObject(key).ptr())));
            const auto rows = std::make_shared<RowFifo>(QUEUE_SIZE_MAX, function.items);
            if (const auto runtime = runtimeOrNothing(self)) runtime->addRows(rows);
            items.append(py::cast(rows));
        }
        // The constructor of the other form may already have run.
        if (hasDecoder(self, fields.thread) && areSame(queuesIn(function, attribute(self, fields.frames)), frames)) {
            continue;
        }
        const auto gate = std::make_shared<Gate>();
        setAttribute(self, fields.frames, function.hasLists ? Object(frames) : Object(frames[0]));
        setAttribute(self, fields.items, function.hasLists ? Object(items) : Object(items[0]));
        setAttribute(self, fields.lock, py::cast(gate));
        setAttribute(self, fields.thread, startDecoder(self, function, fields, gate));
    }
}

void turnLocks(py::handle self, const StreamedFunction& function, const char* action) {
    for (const DecoderFields& fields : function.threads) callMethod(attribute(self, fields.lock), action);
}

bool isStreamOpen(py::handle self, const StreamedFunction& function) {
    return isTrue(attribute(self, function.opened));
}

void closeStream(py::handle self, const StreamedFunction& function) {
    if (!isStreamOpen(self, function)) return;
    setAttribute(self, function.opened, py::bool_(false));
    turnLocks(self, function, "acquire");
    markQueues(self, function);
}

void freeStream(py::handle self, const StreamedFunction& function) {
    setAttribute(self, function.killed, py::bool_(true));
    for (const DecoderFields& fields : function.threads) {
        callMethod(attribute(self, fields.lock), "acquire", py::bool_(false));
    }
    if (function.opensBeforeMarks) turnLocks(self, function, "release");
    markQueues(self, function);
    if (!function.opensBeforeMarks) turnLocks(self, function, "release");
}

void runDecoderBody(py::handle self, const StreamedFunction& function, const DecoderParts& given) {
    while (!isTrue(attribute(self, function.killed))) {
        const DecoderParts parts = partsOf(self, function.threads[0], given);
        passLock(parts.lock);
        const bool any = turn(function, parts, QUEUE_TIMEOUT, [&] { return borrow(self.ptr()); });
        if (function.hasLists && !any) sleepBlocking(pollSeconds);
    }
}

}  // namespace zvr::python
