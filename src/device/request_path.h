// What a request goes through while nothing of it has been replaced, so that it need not be looked up each time.
#pragma once

#include "device/runtime.h"

namespace zvr::python {

class RequestPath {
public:
    /// That of an object now; nothing if it has none of ours. Throws Failure NetworkConnectionLostError in a forked
    /// child.
    static std::shared_ptr<const RequestPath> of(py::handle self);

    /// Whether the steps of a form are the library's own, so that what they do may be done at once.
    bool blocking = false, awaitable = false;
    bool serialize = false;  ///< requests with the same key take turns
    std::shared_ptr<Client> client;
    std::shared_ptr<EchoPool> pool;
    std::shared_ptr<Receiver> receiver;  ///< who brings the replies; may be nothing

    /// Waits for a reply. Without the interpreter lock.
    std::optional<Bytes> await(EchoPool::Key key, Deadline deadline, const InterruptCheck& onWait) const {
        if (receiver) return receiver->await(*pool, key, deadline, onWait);
        return pool->await(key, deadline, onWait);
    }

private:
    static std::shared_ptr<const RequestPath> find(py::handle self, const std::shared_ptr<DeviceRuntime>& runtime);
    bool holds() const;

    Watch::Seen seen_, clientSeen_;
    std::weak_ptr<DeviceRuntime> runtime_;  // it keeps the path
    std::uint64_t clientSteps_ = 0;
    std::unique_ptr<const Watch> clientWatch_;
};

}  // namespace zvr::python
