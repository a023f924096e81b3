// The C++ state of a device object: what its threads use.
#pragma once

#include "core/engine/pools.h"
#include "core/engine/row_queue.h"
#include "device/connects.h"
#include "device/watch.h"
#include "python/event_loop.h"
#include "python/log.h"
#include "transport/receiver.h"

namespace zvr::python {

/// A connection: a client and its gated receive thread, kept in fields of the object.
struct DeviceLink {
    const char* client;
    const char* status;  ///< whether it is open
    const char* lock;    ///< gate of the thread
    const char* thread;
    const char* body;  ///< method that is the thread's body; also the thread's name
    const char* clientClass = nullptr;
    FailureId failure = FailureId::NetworkConnectionLostError;  ///< raised by requests without a connection
    int readLength = 0;
    bool connectsAnew = false;  ///< each connection has a new client; there is none before
    bool reportsReads = false;  ///< a failed read is printed and retried
    bool anybodySends = false;  ///< any host may send, so a frame that cannot be filed is ignored
};

/// The field with the callbacks for the loss of the connection: triples of function, event loop or None, and time of
/// registration.
inline constexpr const char* lossCallbacks = "_loss_callbacks";

/// Lives in the object's `_runtime`. It never refers back to the object, so that dropping the object ends its threads.
class DeviceRuntime {
public:
    explicit DeviceRuntime(py::handle self);
    ~DeviceRuntime() { endAll(); }
    DeviceRuntime(const DeviceRuntime&) = delete;
    DeviceRuntime& operator=(const DeviceRuntime&) = delete;

    /// Marks the process that made the object; a forked child must not use it.
    const ProcessMark mark;
    /// The object's initial pools.
    DataPools pools;
    LoopWakers wakers;
    /// Receives the replies to requests; null if there is no such link.
    const std::shared_ptr<Receiver>& commands() const { return wakers.receiver; }
    const std::shared_ptr<Watch> watch;
    /// Cached by requests, under the interpreter lock.
    std::shared_ptr<const class RequestPath> requestPath;

    /// The class of errors of the link that carries requests.
    FailureId linkFailure = FailureId::NetworkConnectionLostError;
    /// Weak reference to the object.
    const SharedObject reference;
    Connects connects;
    /// The last connection's arguments, a tuple.
    SharedObject connectedWith;
    /// If requests are serialized, one token per key, held by the request whose turn it is.
    const std::shared_ptr<EchoPool> turns = std::make_shared<EchoPool>();
    std::set<EchoPool::Key> turnsMade;

    /// Throws Failure NetworkConnectionLostError in a forked child.
    void requireOwn() const;
    /// Whether a link is missing or has ended. The second one throws its Failure if the device or the system ended it.
    bool isCut() const;
    void requireLinks() const;
    /// Whether a connection that was made has ended or been disconnected.
    bool isOver() const { return connectedWith != nullptr && isCut(); }

    /// Makes and starts the receive thread of a connection, gate shut.
    std::shared_ptr<Receiver> startReceiver(py::handle self, const DeviceLink& link);

    /// Adds a row queue of the object's streams, for `endWaits`.
    void addRows(const std::shared_ptr<RowQueue>& rows) { rows_.push_back(rows); }
    /// Ends the waits for replies and for streamed items, as the connection ends.
    void endWaits();
    /// Only those for streamed items; waits for replies notice a lost link themselves.
    void endReads();

    /// Ends the receive threads and closes their links for good.
    void endAll();

private:
    std::vector<std::shared_ptr<Receiver>> receivers_;
    std::vector<std::weak_ptr<RowQueue>> rows_;
};

/// Calls each loss callback registered until `when` once, with the reason, on a thread of the library or on its event
/// loop. Runs on any thread; does not wait.
void tellLoss(const SharedObject& reference, const std::exception_ptr& loss, Deadline when, bool isNew);
/// Registers the callback; invokes it immediately if the link is already lost.
void askForLoss(py::handle self, const Object& callback, const Object& loop);

/// The intervals at which a read checks its link: long while it is up, and two short ones after its end, by which all
/// received frames are decoded.
class EndOfReads {
public:
    explicit EndOfReads(Deadline deadline) : deadline_(deadline) {}

    /// The end of the next interval; nothing at the deadline, or when nothing more can arrive.
    std::optional<Deadline> nextLook(bool isOver) {
        constexpr std::chrono::milliseconds usual{50}, atTheEnd{10};
        constexpr int looksAtTheEnd = 2;
        const Deadline now = Clock::now();
        if (now >= deadline_ || (isOver && looks_++ == looksAtTheEnd)) return std::nullopt;
        return std::min(deadline_, now + (isOver ? atTheEnd : usual));
    }

private:
    const Deadline deadline_;
    int looks_ = 0;
};

/// Whether the object was made before this process was forked.
bool isForeign(py::handle self);
/// Throws Failure NetworkConnectionLostError if so.
void requireOwn(py::handle self);

/// The runtime of an object. The second one throws an AttributeError if there is none.
std::shared_ptr<DeviceRuntime> runtimeOrNothing(py::handle self);
std::shared_ptr<DeviceRuntime> runtimeOf(py::handle self);

/// Whether the object has been closed for good.
bool isKilled(py::handle self);

/// The client that carries the object's requests. Throws the link's Failure if there is none.
Object clientOf(py::handle self);
/// Throws the link's Failure if a connection that was made has ended or been disconnected, and in a forked child.
void requireConnection(py::handle self);
/// The address of the current or last connection, for messages: host and port, line, or USB serial number. Empty if
/// there was none.
std::string placeOf(py::handle self);
/// Logs a message about an object.
void logOf(py::handle self, LogLevel level, const std::function<std::string()>& what);

/// The body of a receive thread, on the caller's thread: reads and files through the object until it is killed.
void runReceiverBody(py::handle self, const DeviceLink& link);

/// The Python object of a thread. The thread ends when Python drops it.
Object threadObject(const std::shared_ptr<OwnedThread>& thread);

/// Makes the thread end at interpreter shutdown.
void endAtExit(const std::shared_ptr<OwnedThread>& thread);

/// At interpreter shutdown, ends all running threads and waits briefly for them. Queued rows of data loggers are
/// written first, however long that takes.
void leaveLibrary();

}  // namespace zvr::python
