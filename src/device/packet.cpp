// The request engine on the caller's side: frames out, replies from the pools, in both forms.
#include "core/wire/commands.h"
#include "core/wire/constants.h"
#include "core/wire/failures.h"
#include "core/wire/frame.h"
#include "device/attempts.h"
#include "device/frame_log.h"
#include "device/protocol.h"
#include "device/replies.h"
#include "device/request_path.h"
#include "device/row_fifo.h"
#include "python/raising.h"

namespace zvr::python {

namespace {

const Parameter command{"cmd", "int", "command code"};
const Parameter data{"data_out", "Sequence[int]", "byte values of the request's data"};
const Parameter seconds{"timeout", "float", "seconds"};
const Returns reply{"bytes", "data of the reply", "the device"};
const Raises noReply{"ReceivePacketTimeoutError: no reply in time"};

[[noreturn]] void timedOut() { throw Failure(FailureId::ReceivePacketTimeoutError); }

// Replies of motion commands have a key for each connector, sub-command and axis.
EchoPool::Key keyOf(int command, py::handle data) { return command == MOTION ? motionKey(bytesOf(data)) : command; }

// Detects that other Python threads compute and hold the interpreter lock for long. A caller then requests the
// lock as soon as its request is sent, and leaves the reply to the receive thread meanwhile.
class LockQueue {
public:
    bool isLong() { return left_ > 0 && left_-- > 0; }
    void note(Clock::duration waited) {
        if (waited > std::chrono::microseconds(250)) left_ = mostUnseen;
    }

private:
    static constexpr int mostUnseen = 16;
    int left_ = 0;
};
LockQueue lockQueue;  // under the interpreter lock

// Sends and waits without running Python in between.
Object exchangeOnce(const RequestPath& path, int command, const Bytes& data, double timeout) {
    const EchoPool::Key key = command == MOTION ? motionKey(data) : command;
    const Bytes frame = buildFrame(command, data);
    const Deadline deadline = deadlineIn(timeout);
    const bool queues = lockQueue.isLong();
    askForFrameLog();
    bool sent = false;
    Deadline asked;
    auto received = blocking([&](const InterruptCheck& onWait) {
        sent = path.client->sendRequest(frame, deadline, onWait);
        if (queues && path.receiver) path.receiver->right().endLease();
        auto reply = sent && !queues ? path.await(key, deadline, onWait) : std::nullopt;
        asked = Clock::now();
        return reply;
    });
    lockQueue.note(Clock::now() - asked);
    if (sent && queues) {
        received = path.pool->take(key);
        if (!received) {
            received = blocking([&](const InterruptCheck& onWait) { return path.await(key, deadline, onWait); });
        }
    }
    if (!received) timedOut();
    return toBytes(*received);
}

Object echoPacket(py::handle self, int command, const Object& data, Seconds timeout) {
    if (timeout > 0) {
        if (const auto path = RequestPath::of(self); path && path->blocking) {
            return exchangeOnce(*path, command, bytesOf(data), timeout);
        }
    }
    const Object frame = callMethod(self, "_preparePacket", py::int_(command), data);
    callMethod(clientOf(self), "sendPacket", frame);
    return callMethod(self, "_getReplyFromPool", py::int_(keyOf(command, data)), py::float_(timeout));
}

// Sends up to three times in quick succession and then waits for the rest of the time. Times are nominal.
Object sendUpToThrice(py::handle self, std::shared_ptr<const RequestPath> path, const Object& command,
                      const Object& data, Seconds limit) {
    std::shared_ptr<RequestTurn> turn;
    if (!path || path->serialize) {
        turn = RequestTurn::of(self, keyOf(argument<int>(command, "cmd"), data));
        if (turn) turn->begin(self);
    }
    Attempts attempts;
    const auto attempt = [&] {
        if (turn || attempts.count() > 1) path = RequestPath::of(self);
        if (path && path->blocking) {
            attempts.look(*path);
            return exchangeOnce(*path, argument<int>(command, "cmd"), bytesOf(data), QUICK_TRY);
        }
        return callMethod(self, "_echoPacket", command, data, py::float_(QUICK_TRY));
    };
    double timer = 0.0;
    for (; attempts.count() < NUM_RETRIES && timer < limit; timer += QUICK_TRY) {
        try {
            attempts.add(self, command);
            return attempt();
        } catch (const Failure& failure) {
            if (failure.id() != FailureId::ReceivePacketTimeoutError) throw;
        } catch (const py::error_already_set& error) {
            if (!isFailure(error, FailureId::ReceivePacketTimeoutError)) throw;
        }
    }
    if (timer >= limit) {
        Failure failure(FailureId::ReceivePacketTimeoutError);
        for (std::string& note : attempts.notes(self, command)) std::move(failure).noting(std::move(note));
        throw failure;
    }
    path = nullptr;  // it would keep a dropped client alive
    try {
        return callMethod(self, "_getReplyFromPool", command, py::float_(limit - timer));
    } catch (const py::error_already_set& error) {
        if (isFailure(error, FailureId::ReceivePacketTimeoutError))
            addNotes(error.value(), attempts.notes(self, command));
        throw;
    }
}

Object echoPacketWithRetry(py::handle self, const Object& command, const Object& data, Seconds limit) {
    return sendUpToThrice(self, RequestPath::of(self), command, data, limit);
}

// A foreign mapping is polled, at intervals of a thousandth of the limit.
Object pollReply(const ReplyPool& pool, const Object& key, double limit) {
    const double step = limit / 1000;
    for (double timer = 0; timer <= limit; timer += step) {
        if (timer < limit) {
            if (Object data = pool.takeForeign(key)) return data;
        }
        sleepBlocking(step);
    }
    timedOut();
}

Object getReplyFromPool(py::handle self, const Object& key, Seconds limit) {
    if (limit <= 0) timedOut();
    const ReplyPool pool(self);
    if (!pool.ours) return pollReply(pool, key, limit);
    const auto number = argument<EchoPool::Key>(key, "cmd");
    auto data = pool.ours->take(number);
    if (!data) {
        data = blocking([&](const InterruptCheck& onWait) { return pool.await(number, deadlineIn(limit), onWait); });
    }
    if (!data) timedOut();
    return toBytes(*data);
}

Py_ssize_t sizeOf(py::handle queue) { return argument<Py_ssize_t>(callMethod(queue, "qsize"), "qsize"); }

// Takes the items that are in a queue now, at most `wanted`; -1 means all.
py::list takeStreaming(py::handle queue, Py_ssize_t wanted) {
    const Py_ssize_t size = sizeOf(queue);
    py::list items;
    const Py_ssize_t times = wanted > -1 && wanted < size ? wanted : size;
    if (const auto ours = nativeOrNothing<RowFifo>(queue); ours && hasOwnMethod(queue, "get_nowait")) {
        items = ours->takeObjects(static_cast<std::size_t>(std::max(times, Py_ssize_t{0})));
    } else {
        for (Py_ssize_t i = 0; i < times; ++i) {
            try {
                items.append(callMethod(queue, "get_nowait"));
            } catch (const py::error_already_set& error) {
                if (!error.matches(pythonObject("queue", "Empty"))) throw;
                break;  // another thread takes from it too
            }
        }
    }
    if (items.size() == 1 && PyList_Check(Object(items[0]).ptr()) != 0) return py::list(items[0]);
    return items;
}

// Waits for so many items; once the link has ended only until all received frames are decoded.
template <class Queue>
bool awaitSize(py::handle self, py::handle queue, Py_ssize_t count, double seconds) {
    const auto ours = nativeOrNothing<Queue>(queue);
    if (!ours) return false;
    const auto runtime = runtimeOrNothing(self);
    const auto wanted = static_cast<std::size_t>(count);
    const bool hadLink = runtime && runtime->connectedWith != nullptr;
    blocking([&](const InterruptCheck& onWait) {
        EndOfReads end(deadlineIn(seconds));
        while (const auto until = end.nextLook(hadLink && runtime->isCut())) {
            if (ours->waitForSize(wanted, *until, onWait) >= wanted) break;
        }
        return true;
    });
    return true;
}

// What is there; the end of a connection is an error where nothing is.
py::list takeOrTell(py::handle self, const Object& queue, Py_ssize_t wanted) {
    py::list items = takeStreaming(queue, wanted);
    if (wanted > 0 && items.empty()) requireConnection(self);
    return items;
}

py::list getStreamingFromPool(py::handle self, const Object& queue, Py_ssize_t wanted, Seconds delay) {
    if (wanted > -1 && sizeOf(queue) < wanted && !awaitSize<StreamFifo>(self, queue, wanted, delay) &&
        !awaitSize<RowFifo>(self, queue, wanted, delay)) {
        sleepBlocking(delay);
    }
    return takeOrTell(self, queue, wanted);
}

// Sends a prepared frame without blocking the event loop; false if the link accepts no more at the moment.
bool sendNow(py::handle self, const Object& frame) {
    const Object client = clientOf(self);
    const auto link = nativeOrNothing<Client>(client);
    if (!link || !hasOwnMethod(client, "sendPacket")) {
        callMethod(client, "sendPacket", frame);
        return true;
    }
    const Bytes bytes = bytesOf(frame);
    askForFrameLog();
    const WithoutGil released;
    return link->sendRequest(bytes, Clock::now());
}

// After a request without reply frames come that nobody asks for, so the receive thread reads at once.
void readOn(py::handle self) {
    const auto runtime = runtimeOrNothing(self);
    if (runtime && runtime->commands()) runtime->commands()->right().endLease();
}

Task sendWithoutReplySteps(Op op, Object command, Object data) {
    const Object frame = op.call("_preparePacket", command, data);
    const Deadline deadline = deadlineIn(PACKET_TIMEOUT);
    while (!sendNow(op.self(), frame)) {
        if (Clock::now() >= deadline) throw AwaitTimedOut();
        co_await op.sleep(ECHO_DELAY);
    }
    readOn(op.self());
    co_return py::none();
}

// The part of an awaited request that needs no turn of the loop: the sending, and the reply of a nearby device.
struct Begun {
    bool sent = false;
    Object reply;
};

Begun begin(py::handle self, int command, const Object& data, Attempts* attempts = nullptr) {
    const auto path = RequestPath::of(self);
    if (!path || !path->awaitable) return {};
    if (attempts != nullptr) attempts->look(*path);
    const Bytes payload = bytesOf(data);
    const EchoPool::Key key = command == MOTION ? motionKey(payload) : command;
    const Bytes frame = buildFrame(command, payload);
    Begun begun;
    askForFrameLog();
    {
        const WithoutGil released;
        begun.sent = path->client->sendRequest(frame, Clock::now());
        if (begun.sent && path->receiver) path->receiver->awaitBriefly(*path->pool, key);
    }
    if (!begun.sent) return begun;
    if (const auto reply = path->pool->take(key)) begun.reply = toBytes(*reply);
    return begun;
}

// Yields to the loop now and then, however fast the device is.
Awaiter giveLoopItsTurn(const Op& op) { return LoopWakers::loopIsDue() ? op.sleep(0) : Awaiter::done(py::none()); }

bool isTimeOver(const py::error_already_set& error) { return error.matches(pythonObject("asyncio", "TimeoutError")); }

Task awaitReplySteps(Op op, EchoPool::Key key, Deadline deadline) {
    try {
        co_return co_await within(deadline, op.call("_getReplyFromPool_async", py::int_(key)));
    } catch (const py::error_already_set& error) {
        if (!isTimeOver(error)) throw;
    }
    co_return py::none();
}

// A peer that accepts no more bytes counts as one that does not answer in time.
Task echoPacketSteps(Op op, int command, Object data, Seconds timeout) {
    const Deadline deadline = deadlineIn(timeout);
    Begun begun = begin(op.self(), command, data);
    if (begun.reply) {
        co_await giveLoopItsTurn(op);
        co_return begun.reply;
    }
    if (!begun.sent) {
        const Object frame = op.call("_preparePacket", py::int_(command), data);
        while (!sendNow(op.self(), frame)) {
            if (Clock::now() >= deadline) co_return py::none();
            co_await op.sleep(ECHO_DELAY);
        }
    }
    co_return co_await op.run(awaitReplySteps(op, keyOf(command, data), deadline));
}

Task echoPacketWithRetrySteps(Op op, Object command, Object data, int most, Seconds timeout) {
    // Its temporaries must not stay in this frame, where the garbage collector does not see them.
    const auto attempt = [&] {
        static PyObject* const byTimeout = PyTuple_Pack(1, interned("timeout"));
        const py::int_ seconds(RETRY_TIMEOUT);
        return Awaiter::on(callNamedBy(byTimeout, op.self(), interned("_echoPacket_async"), command, data, seconds));
    };
    const int code = argument<int>(command, "cmd");
    const auto turn = RequestTurn::of(op.self(), keyOf(code, data));
    while (turn && !turn->tryBegin(op.self())) co_await turn->wait();
    Attempts attempts;
    while (attempts.count() < most) {
        attempts.add(op.self(), command);
        const Deadline deadline = deadlineIn(RETRY_TIMEOUT);
        Begun begun = begin(op.self(), code, data, &attempts);
        if (begun.reply) {
            co_await giveLoopItsTurn(op);
            co_return begun.reply;
        }
        Object value;
        if (begun.sent) {
            value = co_await op.run(awaitReplySteps(op, keyOf(code, data), deadline));
        } else {
            value = co_await attempt();
        }
        if (!value.is_none()) co_return value;
    }
    const double left = std::max(timeout - static_cast<double>(RETRY_TIMEOUT) * most, 0.0);
    try {
        co_return co_await within(deadlineIn(left), op.call("_getReplyFromPool_async", command));
    } catch (const py::error_already_set& error) {
        if (isTimeOver(error)) addNotes(error.value(), attempts.notes(op.self(), command));
        throw;
    }
}

Task getReplySteps(Op op, Object key) {
    const ReplyPool pool(op.self());
    const auto& runtime = pool.runtime;
    while (!pool.ours || !runtime) {
        if (Object data = pool.takeForeign(key)) co_return data;
        co_await op.sleep(ECHO_DELAY);
    }
    const auto number = argument<EchoPool::Key>(key, "cmd");
    for (;;) {
        const auto data = pool.ours->take(number);
        if (!data) {
            co_await ReplyAwaiter(runtime->wakers, pool.ours, number);
            continue;
        }
        co_await giveLoopItsTurn(op);
        co_return toBytes(*data);
    }
}

Task broadcastSteps(Op op, Object command, Object data) {
    const Object records = attribute(op.self(), "data_pool_bcst")[command];
    callMethod(records, "clear");
    const Object frame = op.call("_preparePacket", command, data);
    const Object client = attribute(op.self(), "client_udp");
    for (int i = 0; i < NUM_BCST_RETRIES; ++i) callMethod(client, "sendBcstPacket", frame);
    co_await op.sleep(PACKET_TIMEOUT);
    co_return records;
}

}  // namespace

// One Python call fewer where the step is the library's own.
Awaiter exchange(const Op& op, int command, const py::list& data) {
    constexpr const char* step = "_echoPacketWithRetry";
    const py::int_ code(command);
    auto path = op.awaitable() ? nullptr : RequestPath::of(op.self());
    const bool isOwn =
        path && path->retries && PyDict_GetItemWithError(dictionaryOf(op.self()).ptr(), interned(step)) == nullptr;
    if (!isOwn) return op.requestBy(step, code, data);
    return Awaiter::done(sendUpToThrice(op.self(), std::move(path), code, data, {secondsOf(op.timeout())}));
}

void definePacket(Package& package) {
    Watch::watchNames({"_preparePacket", "_echoPacket", "_echoPacketWithRetry", "_getReplyFromPool",
                       "_echoPacket_async", "_getReplyFromPool_async", "serialize"});
    const Parameter queue{"queue_", "Fifo", "queue of samples"};
    const Parameter count{"num_samples", "int", "most items to take; -1 for all"};
    const Parameter delay{"delay", "float", "seconds to wait once if there are fewer items"};
    const Parameter key{"cmd", "int", "key of the echo pool"};
    const Returns samples{"list", "the items; a single item that is a list is flattened (compatibility note 27)",
                          "the queue"};
    const Returns maybeReply{"bytes | None", "data of the reply, or None if there was none in time", "the device"};

    package.makeClass("Packet_based", {}, "Shared by both forms of the request engine.")
        .method({.name = "_preparePacket",
                 .parameters = {command, data.withDefault("[]")},
                 .doc = "Builds a frame.",
                 .returns = {"list[int]", "byte values of the whole frame"},
                 .raises = {"OverflowError: the data does not fit a frame", "ValueError: a value is not a byte"},
                 .body = [](py::handle, int code, const Object& bytes) -> Object {
                     return toList(buildFrame(code, bytesOf(bytes, "data_out")));
                 }});

    const Definition broadcast{
        .name = "_broadcastPacket",
        .parameters = {command, data},
        .doc = "Sends a request to every device on the network and collects the replies for 5 seconds.",
        .returns = {"RecordSet", "the replies without their first byte; the set stays live in the pool", "the devices"},
        .body = broadcastSteps};
    package.makeClass("Packet", {"Packet_based"}, "The request engine, blocking.")
        .method({.name = "_echoPacket",
                 .parameters = {command, data, seconds},
                 .doc = "Sends a request once and waits for its reply.",
                 .returns = reply,
                 .raises = noReply,
                 .body = echoPacket})
        .method({.name = "_echoPacketWithRetry",
                 .parameters = {command, data, seconds.withDefault("5")},
                 .doc = "Sends a request, up to three times in quick succession, and waits for its reply.",
                 .returns = reply,
                 .raises = noReply,
                 .body = echoPacketWithRetry})
        .method({.name = "_getReplyFromPool",
                 .parameters = {key, seconds},
                 .doc = "Waits for a reply and takes it from the echo pool.",
                 .returns = reply,
                 .raises = noReply,
                 .body = getReplyFromPool})
        .method({.name = "_getStreamingFromPool",
                 .parameters = {queue, count, delay},
                 .doc = "Takes items from a queue.",
                 .returns = samples,
                 .body = getStreamingFromPool})
        .method({.name = "_sendPacketWithoutReply",
                 .parameters = {command, data},
                 .doc = "Sends a request that has no reply.",
                 .body =
                     [](py::handle self, const Object& code, const Object& bytes) {
                         const Object frame = callMethod(self, "_preparePacket", code, bytes);
                         callMethod(clientOf(self), "sendPacket", frame);
                         readOn(self);
                     }})
        .method(broadcast);

    package.makeClass("Packet_async", {"Packet_based"}, "The request engine, awaitable.")
        .awaitable({.name = "_echoPacket",
                    .parameters = {command, data, seconds.withDefault("5")},
                    .doc = "Sends a request once and waits for its reply.",
                    .returns = maybeReply,
                    .body = echoPacketSteps})
        .awaitable({.name = "_echoPacketWithRetry",
                    .parameters = {command,
                                   data,
                                   {"num_retries", "int", "times to send, one second apart", "3"},
                                   seconds.withDefault("5")},
                    .doc = "Sends a request until its reply arrives.",
                    .returns = reply,
                    .body = echoPacketWithRetrySteps})
        .awaitable({.name = "_getReplyFromPool",
                    .parameters = {key},
                    .doc = "Waits for a reply, without a limit, and takes it from the echo pool.",
                    .returns = reply,
                    .body = getReplySteps})
        .awaitable({.name = "_getStreamingFromPool",
                    .parameters = {queue, count, delay},
                    .doc = "Takes items from a queue; never waits.",
                    .returns = samples,
                    .body = [](Op op, Object items, Py_ssize_t most, Object) -> Task {
                        co_return takeOrTell(op.self(), items, most);
                    }})
        .awaitable({.name = "_sendPacketWithoutReply",
                    .parameters = {command, data},
                    .doc = "Sends a request that has no reply.",
                    .body = sendWithoutReplySteps})
        .awaitable(broadcast);
}

}  // namespace zvr::python
