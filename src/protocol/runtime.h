// The C++ state behind a device object: what its threads touch.
#pragma once

#include "core/pools.h"
#include "python/event_loop.h"
#include "transport/receiver.h"

namespace zvr::python {

/// A Python object that C++ threads may hold and drop without the interpreter lock.
using SharedObject = std::shared_ptr<PyObject>;
SharedObject shared(py::handle object);

/// Lives in the object's `_runtime`. It never refers back to the object, so that dropping the object ends its threads.
class DeviceRuntime {
public:
    DeviceRuntime() = default;
    ~DeviceRuntime();
    DeviceRuntime(const DeviceRuntime&) = delete;
    DeviceRuntime& operator=(const DeviceRuntime&) = delete;

    DataPools pools;
    Wakers wakers;

    bool killed() const { return killed_; }
    void setKilled(bool killed);

    /// Makes and starts the receive thread of a connection, gate shut. `clientField` names the object's field with the
    /// client that the thread reads from. With `reportsReads` a failed read is printed and tried again.
    std::shared_ptr<Receiver> startReceiver(py::handle self, const char* clientField, const char* threadName,
                                            int readLength, bool reportsReads = false);

    /// Lets the thread read from another client, which may be any object with `recvAndSplitPacket`.
    void setClient(py::handle self, const char* clientField, py::handle client);

private:
    struct Connection {
        std::shared_ptr<Receiver> receiver;
        std::shared_ptr<Client> client;
        bool reportsReads = false;
    };

    std::atomic<bool> killed_{false};
    std::map<std::string, Connection> connections_;
};

/// The runtime of an object; throws a missing-attribute failure if it has none.
DeviceRuntime& runtimeOf(py::handle self);

/// Ends what `runtimes` are still there when the interpreter leaves, and waits for their threads.
void endAllRuntimes();

}  // namespace zvr::python
