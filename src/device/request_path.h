// Caches the native objects that a request uses while none of them has been replaced.
#pragma once

#include "device/runtime.h"

namespace zvr::python {

class RequestPath {
public:
    /// The current path of an object; null if its steps or objects are not the library's own. Throws Failure
    /// NetworkConnectionLostError in a forked child.
    static std::shared_ptr<const RequestPath> of(py::handle self);

    /// Whether the steps of a form are the library's own, so that they may be done directly.
    bool blocking = false, awaitable = false;
    bool retries = false;    ///< whether `_echoPacketWithRetry` is, too
    bool serialize = false;  ///< requests with the same key are serialized
    std::shared_ptr<Client> client;
    std::shared_ptr<EchoPool> pool;
    std::shared_ptr<Receiver> receiver;  ///< receives the replies; may be null

    /// Waits for a reply. Without the interpreter lock.
    std::optional<Bytes> await(EchoPool::Key key, Deadline deadline, const InterruptCheck& onWait) const {
        if (receiver) return receiver->await(*pool, key, deadline, onWait);
        return pool->await(key, deadline, onWait);
    }

private:
    static std::shared_ptr<const RequestPath> find(py::handle self, const std::shared_ptr<DeviceRuntime>& runtime);
    bool holds() const;

    Watch::Seen seen_, clientSeen_;
    std::weak_ptr<DeviceRuntime> runtime_;  // the runtime owns the path
    std::uint64_t clientSteps_ = 0;
    std::unique_ptr<const Watch> clientWatch_;
};

}  // namespace zvr::python
