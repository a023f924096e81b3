// Which connect of a handle is current: the last one that began, unless the handle has been disconnected or closed
// since, or the call was cancelled. All others are superseded: they end at once, and their sockets are closed.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "python/common.h"
#include "transport/socket_client.h"

namespace zvr::python {

class DeviceRuntime;
struct DeviceClass;

/// The sequence numbers of a handle's connects. Each call takes one, and so does whatever supersedes earlier calls;
/// only the call with the last number is current. They change under the interpreter lock; any thread may
/// read them.
class Connects {
public:
    using Number = std::uint64_t;

    Number ask() { return ++asked_; }
    /// A call that took its number before the last one is superseded when it begins.
    void begin(Number number) {
        if (number < last_) return;
        isBegun_ = true;
        why_ = "Another connect of the handle has begun meanwhile.";
        last_ = number;
    }
    void end(const char* why) {
        isBegun_ = false;
        why_ = why;
        last_ = ask();
    }
    /// For good.
    void close() {
        isClosed_ = true;
        end("");
    }

    bool isOver(Number number) const { return isClosed_ || number != last_; }
    /// Why earlier calls were superseded.
    const char* why() const { return isClosed_ ? "The handle is closed." : why_.load(); }
    /// Whether that was another connect.
    bool isBegun() const { return isBegun_ && !isClosed_; }

private:
    Number asked_ = 0;
    std::atomic<Number> last_{0};
    std::atomic<const char*> why_{""};
    std::atomic<bool> isBegun_{false}, isClosed_{false};
};

/// One call that connects a handle, and all nested calls on its thread.
class ConnectCall {
public:
    explicit ConnectCall(const std::shared_ptr<DeviceRuntime>& runtime);

    /// The call of this thread, if there is one.
    static std::shared_ptr<ConnectCall> current();

    /// Whether it is superseded; the second one throws the link's Failure then. On any thread, also with locks held.
    bool isOver() const;
    void requireWanted() const;
    /// The same as an InterruptCheck; empty if there is no call.
    static InterruptCheck wanted(const std::shared_ptr<ConnectCall>& call);

    // The rest requires the interpreter lock.
    /// Remembers the socket that this call has given its client.
    void noteSocket(std::shared_ptr<Socket> socket) { socket_ = std::move(socket); }
    /// Accepts a client's new connection; throws as `requireWanted` and closes it if the call is superseded.
    void settle(py::handle client);
    /// Supersedes the call and closes what it has connected.
    void cancel(py::handle self);

private:
    friend class Connecting;

    void begin(const DeviceClass& device);

    const std::shared_ptr<DeviceRuntime> runtime_;
    const Connects::Number number_;
    const DeviceClass* device_ = nullptr;  // from its beginning on
    std::shared_ptr<Socket> socket_;
    bool isConnected_ = false;
    std::atomic<bool> isCancelled_{false};
};

/// Makes a call the current one of its thread for a scope.
class Connecting {
public:
    /// For a call that begins when it reaches its handle.
    explicit Connecting(std::shared_ptr<ConnectCall> call);
    /// The thread's current call if it is for the same handle, else a new one; it begins now.
    Connecting(const std::shared_ptr<DeviceRuntime>& runtime, const DeviceClass& device);
    ~Connecting();
    Connecting(const Connecting&) = delete;
    Connecting& operator=(const Connecting&) = delete;

    const ConnectCall& call() const { return *call_; }

private:
    std::shared_ptr<ConnectCall> call_, outer_;
};

}  // namespace zvr::python
