// The seam between the engine and the links: a client moves bytes, and cuts what it receives into frames.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <system_error>

#include "core/engine/gate.h"
#include "core/engine/process.h"
#include "core/engine/waiting.h"
#include "core/engine/wake.h"
#include "core/wire/failures.h"
#include "core/wire/splitter.h"

namespace zvr {

/// The result of one read.
enum class ReadStatus {
    data,    ///< bytes
    idle,    ///< nothing within the read's own time; the next read may bring something
    ended,   ///< nothing, and nothing will come until the client is connected again
    failed,  ///< nothing, and the failure has been reported; the next read may fail in the same way
};

/// Who reads: a caller waits no longer than the link's own reads; the receive thread may wait longer, until
/// `interrupt`.
enum class Reader { caller, thread };

/// The error message of a request without a link.
inline constexpr const char* notConnected = "There is no connection. Call connect() first.";
inline constexpr const char* closedForGood = "The handle is closed.";

/// The failure that reports a link that the device or the system has ended.
class LinkLoss final : public Failure {
public:
    /// `link` is the class of the link's errors.
    LinkLoss(FailureId link, std::optional<std::error_code> why);
    /// The system's reason; nothing for an orderly end.
    const std::optional<std::error_code>& why() const noexcept { return why_; }

private:
    std::optional<std::error_code> why_;
};

/// Notified when the device or the system has ended a link.
class LossListener {
public:
    virtual ~LossListener() = default;
    /// Called once per loss, on the thread that detects it first; must not wait. `when` is before the end.
    virtual void onLoss(const LinkLoss& reason, Deadline when) = 0;
};

/// The listeners to a source's losses, which its sockets report. The first listener is also notified of an earlier one.
class LossListeners {
public:
    /// If the link `isLost` already, the listener is notified as if it had ended just now.
    void add(const std::shared_ptr<LossListener>& listener, bool isLost);
    void remove(const LossListener& listener);
    void tell(const LinkLoss& reason, Deadline when);

private:
    std::mutex mutex_;
    std::vector<std::weak_ptr<LossListener>> listeners_;
    std::optional<std::pair<LinkLoss, Deadline>> unreported_;
};

/// A source of packets for a receive loop. One thread reads at a time: the receive thread or another in its place.
class PacketSource {
public:
    virtual ~PacketSource() = default;
    /// Reads at most `length` bytes and adds the frames that are complete now to `packets`.
    virtual ReadStatus receive(std::size_t length, std::vector<Packet>& packets) = 0;

    /// Ends the receive thread's current wait, or else its next one; no data is lost. Sources that never wait long need
    /// not override it.
    virtual void interrupt() noexcept {}

    /// Whether threads other than the receive thread may read.
    virtual bool isShared() const { return waitsApart(); }
    /// `receive` for another thread: waits until `until` at most, or until `wake` is notified if the link can be woken.
    /// Without a wake it makes one read call, which waits a few milliseconds at most. Empty if only the receive thread
    /// may read.
    virtual std::optional<ReadStatus> receiveFor(const Wake* wake, Deadline until, std::size_t length,
                                                 std::vector<Packet>& packets);

    /// Whether the receive thread can wait for bytes without reading them. Then it waits in `awaitBytes`, which returns
    /// whether there is something to read, the end or a failure included, and `receive` does not wait.
    virtual bool waitsApart() const { return false; }
    virtual bool awaitBytes() { return true; }
    /// Watches the link in an epoll, for one event, until there is something to read; false if it cannot be watched.
    virtual bool watchOnce(int epoll) const;

    /// Why there is no link: the error with which the device or the system ended it, or `not_connected` if there is
    /// none. Empty while there is a link, and from sources that cannot know.
    virtual std::optional<std::error_code> loss() const { return std::nullopt; }
    /// The class of the errors of this kind of link.
    virtual FailureId failure() const { return FailureId::NetworkConnectionLostError; }
    LinkLoss lossFailure() const { return {failure(), loss()}; }
    const std::shared_ptr<LossListeners> losses = std::make_shared<LossListeners>();

    /// Grows whenever a step of the source may have been replaced, so that its readers look it up again.
    std::uint64_t steps() const noexcept { return steps_; }
    void replaceSteps() noexcept;

    /// From now on `gate` is notified of each change of the link that may change the result of a read.
    void tellChanges(const std::shared_ptr<Gate>& gate);

protected:
    void changed() noexcept;

private:
    std::atomic<std::uint64_t> steps_{0};
    std::mutex listening_;
    std::vector<std::weak_ptr<Gate>> gates_;
};

/// A link to a device.
///
/// Everything may be called from any thread. Bytes that two threads receive concurrently enter the splitter in the
/// order in which the device sent them.
class Client : public PacketSource {
public:
    SharedSplitter splitter;

    ReadStatus receive(std::size_t length, std::vector<Packet>& packets) final {
        return receiveAs(Reader::thread, length, packets, {});
    }

    /// The same for either reader. Throws std::system_error, for a caller also when its time is over.
    virtual ReadStatus receiveAs(Reader reader, std::size_t length, std::vector<Packet>& packets,
                                 const InterruptCheck& onWait);

    /// One read of at most `buffer.size()` bytes; shrinks the buffer to the bytes received. Throws std::system_error.
    virtual ReadStatus read(Bytes& buffer, const InterruptCheck& onWait = {}) = 0;

    /// Where the device is, or was last: host and port, line, or USB serial number. Empty before the first connection.
    std::string place() const;

    /// Sends all bytes, waiting for room until `deadline`, and returns whether they are sent. Throws std::system_error.
    /// Half a frame would corrupt the next one, so one that was begun is given `finishWithin` at least, and what is
    /// left of it then goes out before whatever is sent next. A deadline in the past makes it one attempt that never
    /// waits: where that sends only a part of the frame, the same frame given again goes on with it.
    virtual bool send(ByteView bytes, Deadline deadline, const InterruptCheck& onWait = {}) = 0;

    static constexpr std::chrono::seconds finishWithin{5};

    /// The same for a request: throws the link's Failure if there is no link or it has ended.
    bool sendRequest(ByteView bytes, Deadline deadline, const InterruptCheck& onWait = {});

    /// Closes the link, whatever state it is in; never throws. Does nothing in a forked child: the link is the
    /// parent's.
    virtual void close() noexcept = 0;

    /// Called with every outgoing frame of any client, on the sending thread; null disables.
    using SendListener = void (*)(const Client& client, ByteView frame);
    static inline std::atomic<SendListener> sendListener = nullptr;
    void tellSending(ByteView frame) const {
        if (const SendListener listener = sendListener) listener(*this, frame);
    }

    bool isForeign() const noexcept { return mark_.foreign(); }
    /// Throws the link's failure in a forked child of the process that made the client.
    void requireOwn() const {
        if (isForeign()) throw Failure(failure(), foreignMessage("The client"));
    }

protected:
    void setPlace(std::string place);

private:
    const ProcessMark mark_;
    mutable std::mutex placing_;
    std::string place_;
};

/// A client without a link: the base of clients implemented in Python.
class BareClient final : public Client {
public:
    ReadStatus read(Bytes& buffer, const InterruptCheck& onWait = {}) override;
    bool send(ByteView bytes, Deadline deadline, const InterruptCheck& onWait = {}) override;
    void close() noexcept override {}
};

}  // namespace zvr
