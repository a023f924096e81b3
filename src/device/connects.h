// Which connect of a handle is still to be made. Of several it is the one that began last, and none that the handle was
// disconnected or closed behind, or that was cancelled: those end at once, and what they have reached is closed.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "python/common.h"
#include "transport/socket_client.h"

namespace zvr::python {

class DeviceRuntime;
struct DeviceClass;

/// The numbers of a handle's connects. Each takes one when it is asked for, and so does whatever ends those before;
/// only the begun one with the last number is still to be made. They change under the interpreter lock; any thread may
/// look.
class Connects {
public:
    using Number = std::uint64_t;

    Number ask() { return ++asked_; }
    /// One that is asked for before the last one is over as it begins.
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
    /// What ended those before.
    const char* why() const { return isClosed_ ? "The handle is closed." : why_.load(); }
    /// Whether that was another connect.
    bool isBegun() const { return isBegun_ && !isClosed_; }

private:
    Number asked_ = 0;
    std::atomic<Number> last_{0};
    std::atomic<const char*> why_{""};
    std::atomic<bool> isBegun_{false}, isClosed_{false};
};

/// One call that connects a handle, with all that it calls on its thread.
class ConnectCall {
public:
    explicit ConnectCall(const std::shared_ptr<DeviceRuntime>& runtime);

    /// The call of this thread, if there is one.
    static std::shared_ptr<ConnectCall> current();

    /// Whether it is not to be made any more; throws the link's Failure then. Any thread, and with locks held.
    bool isOver() const;
    void requireWanted() const;
    /// The same for who waits; nothing for no call.
    static InterruptCheck wanted(const std::shared_ptr<ConnectCall>& call);

    // The rest happens under the interpreter lock.
    /// What the client has been given by this call.
    void noteSocket(std::shared_ptr<Socket> socket) { socket_ = std::move(socket); }
    /// Before a client that is connected now counts: throws as `requireWanted`, and lets go of the connection then.
    void settle(py::handle client);
    /// Ends it, and what it has connected.
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

/// Makes a call the thread's own for a scope.
class Connecting {
public:
    /// One that begins when it comes to its handle.
    explicit Connecting(std::shared_ptr<ConnectCall> call);
    /// The one that this thread is in, if that is of the same handle, or else a new one; it begins now.
    Connecting(const std::shared_ptr<DeviceRuntime>& runtime, const DeviceClass& device);
    ~Connecting();
    Connecting(const Connecting&) = delete;
    Connecting& operator=(const Connecting&) = delete;

    const ConnectCall& call() const { return *call_; }

private:
    std::shared_ptr<ConnectCall> call_, outer_;
};

}  // namespace zvr::python
