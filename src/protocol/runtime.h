// The C++ state behind a device object: what its threads touch.
#pragma once

#include "core/pools.h"
#include "python/event_loop.h"
#include "transport/receiver.h"

namespace zvr::python {

/// A Python object that C++ threads may hold and drop without the interpreter lock.
using SharedObject = std::shared_ptr<PyObject>;
SharedObject shared(py::handle object);

/// What a module keeps in the runtime of its object: a thread of its own, and what that touches.
class RuntimePart {
public:
    virtual ~RuntimePart() = default;
    /// Ends its threads soon, with nothing lost that can still be saved.
    virtual void end() = 0;
};

/// Lives in the object's `_runtime`. It never refers back to the object, so that dropping the object ends its threads.
class DeviceRuntime {
public:
    DeviceRuntime() = default;
    ~DeviceRuntime();
    DeviceRuntime(const DeviceRuntime&) = delete;
    DeviceRuntime& operator=(const DeviceRuntime&) = delete;

    DataPools pools;
    Wakers wakers;

    bool killed() const { return *killed_; }
    void setKilled(bool killed);
    /// The flag itself, for threads that may outlive the object.
    std::shared_ptr<const std::atomic<bool>> killedFlag() const { return killed_; }

    /// A part by its name; nothing if there is none.
    template <class Part>
    std::shared_ptr<Part> part(const char* name) const {
        const auto found = parts_.find(name);
        return found == parts_.end() ? nullptr : std::static_pointer_cast<Part>(found->second);
    }
    void keep(const char* name, std::shared_ptr<RuntimePart> part) {
        enroll();
        parts_[name] = std::move(part);
    }

    /// Ends everything for good.
    void endAll();

    /// Makes and starts the receive thread of a connection, gate shut. `clientField` names the object's field with the
    /// client that the thread reads from. With `reportsReads` a failed read is printed and tried again.
    std::shared_ptr<Receiver> startReceiver(py::handle self, const char* clientField, const char* threadName,
                                            int readLength, bool reportsReads = false);

    /// The receive thread of a connection.
    std::shared_ptr<Receiver> receiver(const char* clientField) const { return connections_.at(clientField).receiver; }

    /// Lets the thread read from another client, which may be any object with `recvAndSplitPacket`.
    void setClient(py::handle self, const char* clientField, py::handle client);

private:
    void enroll();

    struct Connection {
        std::shared_ptr<Receiver> receiver;
        std::shared_ptr<Client> client;
        bool reportsReads = false;
    };

    const std::shared_ptr<std::atomic<bool>> killed_ = std::make_shared<std::atomic<bool>>(false);
    std::map<std::string, Connection> connections_;
    std::map<std::string, std::shared_ptr<RuntimePart>> parts_;
};

/// The runtime of an object; throws a missing-attribute failure if it has none.
DeviceRuntime& runtimeOf(py::handle self);

/// Ends what `runtimes` are still there when the interpreter leaves, and waits for their threads.
void endAllRuntimes();

}  // namespace zvr::python
