// The C++ state behind a device object: what its threads touch.
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
    FailureId failure = FailureId::NetworkConnectionLostError;  ///< what requests without a connection raise
    int readLength = 0;
    bool connectsAnew = false;  ///< connecting makes another client; there is none before
    bool reportsReads = false;  ///< a failed read is printed and tried again
    bool anybodySends = false;  ///< a frame that cannot be filed is nobody's fault here, and ignored
};

/// The field of those that want to hear of the end of the connection: triples of function, event loop or None, and the
/// moment in which they asked.
inline constexpr const char* lossCallbacks = "_loss_callbacks";

/// Lives in the object's `_runtime`. It never refers back to the object, so that dropping the object ends its threads.
class DeviceRuntime {
public:
    explicit DeviceRuntime(py::handle self);
    ~DeviceRuntime() { endAll(); }
    DeviceRuntime(const DeviceRuntime&) = delete;
    DeviceRuntime& operator=(const DeviceRuntime&) = delete;

    /// Of the process that made the object; a forked child leaves it alone.
    const ProcessMark mark;
    /// The pools that the object begins with.
    DataPools pools;
    LoopWakers wakers;
    /// Who brings the replies to requests; nothing where there is no such link.
    const std::shared_ptr<Receiver>& commands() const { return wakers.receiver; }
    const std::shared_ptr<Watch> watch;
    /// Kept by the requests, under the interpreter lock.
    std::shared_ptr<const class RequestPath> requestPath;

    /// The class of errors of the link that carries requests.
    FailureId linkFailure = FailureId::NetworkConnectionLostError;
    /// A weak one to the object.
    const SharedObject reference;
    Connects connects;
    /// What the object was connected with last, a tuple.
    SharedObject connectedWith;
    /// Whose turn it is to send a request with a key, where requests take turns: one token for each key.
    const std::shared_ptr<EchoPool> turns = std::make_shared<EchoPool>();
    std::set<EchoPool::Key> turnsMade;

    /// Throws Failure NetworkConnectionLostError in a forked child.
    void requireOwn() const;
    /// Whether a link is missing or has ended; and its Failure, if it was ended by the device or the system.
    bool isCut() const;
    void requireLinks() const;

    /// Makes and starts the receive thread of a connection, gate shut.
    std::shared_ptr<Receiver> startReceiver(py::handle self, const DeviceLink& link);

    /// The rows of the object's streams, whose readers are told when nothing more comes.
    void addRows(const std::shared_ptr<RowQueue>& rows) { rows_.push_back(rows); }
    /// Ends the waits for what is streamed: the connection goes.
    void endWaits();

    /// Ends the receive threads, and lets go of their links, for good.
    void endAll();

private:
    std::vector<std::shared_ptr<Receiver>> receivers_;
    std::vector<std::weak_ptr<RowQueue>> rows_;
};

/// Calls those that asked, until `when`, to hear why a connection has ended, each once, on a thread of ours or on its
/// event loop. Any thread; does not wait.
void tellLoss(const SharedObject& reference, const std::exception_ptr& loss, Deadline when, bool isNew);
/// Has it called so; at once if there is a loss.
void askForLoss(py::handle self, const Object& callback, const Object& loop);

/// Whether the object was made before this process was forked off.
bool isForeign(py::handle self);
/// Throws Failure NetworkConnectionLostError if it was.
void requireOwn(py::handle self);

/// The runtime of an object. The second one throws a missing-attribute failure if it has none.
std::shared_ptr<DeviceRuntime> runtimeOrNothing(py::handle self);
std::shared_ptr<DeviceRuntime> runtimeOf(py::handle self);

/// Whether the object has been closed for good.
bool isKilled(py::handle self);

/// The object's client of requests. Throws the link's Failure if there is none.
Object clientOf(py::handle self);
/// What the object is or was last connected to, as messages name it: host and port, line, or USB serial number. Empty
/// if there is nothing of it.
std::string placeOf(py::handle self);
/// Tells the log something of an object.
void logOf(py::handle self, LogLevel level, const std::function<std::string()>& what) noexcept;

/// The body of a receive thread, on the caller's: reads and files through the object until it is killed.
void runReceiverBody(py::handle self, const DeviceLink& link);

/// The thread as Python sees it. It ends when Python drops it.
Object threadObject(const std::shared_ptr<OwnedThread>& thread);

/// Has the thread ended when the interpreter leaves.
void endAtExit(const std::shared_ptr<OwnedThread>& thread);

/// Ends all that still runs when the interpreter leaves, and waits a moment for it. What the logger has is written
/// first, however long that takes.
void leaveLibrary();

}  // namespace zvr::python
