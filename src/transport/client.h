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

/// What one read brought.
enum class ReadStatus {
    data,    ///< bytes
    idle,    ///< nothing within the read's own time; the next read may bring something
    ended,   ///< nothing, and nothing will come until the client is connected again
    failed,  ///< nothing, and the failure has been reported; the next read may fail in the same way
};

/// Who reads: a caller waits as the link's reads wait; the receive thread may wait longer, and `interrupt` ends that.
enum class Reader { caller, thread };

/// What an error says of a request that has no link to go over.
inline constexpr const char* notConnected = "There is no connection. Call connect() first.";

/// What is told of a link that the device or the system has ended.
class LinkLoss final : public Failure {
public:
    /// `link` is the class of the link's errors.
    LinkLoss(FailureId link, std::optional<std::error_code> why);
    /// The system's reason; nothing for an orderly end.
    const std::optional<std::error_code>& why() const noexcept { return why_; }

private:
    std::optional<std::error_code> why_;
};

/// Hears of links that the device or the system has ended.
class LossListener {
public:
    virtual ~LossListener() = default;
    /// Once of each, on the thread that meets the end first; must not wait. `when` is before the end.
    virtual void onLoss(const LinkLoss& reason, Deadline when) = 0;
};

/// Who hears of the losses of a source, whose sockets tell them. The first listener hears also of one before it came.
class LossListeners {
public:
    /// Where the link `isLost` still, that counts as an end of now.
    void add(const std::shared_ptr<LossListener>& listener, bool isLost);
    void remove(const LossListener& listener);
    void tell(const LinkLoss& reason, Deadline when);

private:
    std::mutex mutex_;
    std::vector<std::weak_ptr<LossListener>> listeners_;
    std::optional<std::pair<LinkLoss, Deadline>> untold_;
};

/// A source of packets for a receive loop. One at a time reads, the receive thread or another in its place.
class PacketSource {
public:
    virtual ~PacketSource() = default;
    /// Reads at most `length` bytes and adds the frames that are complete now to `packets`.
    virtual ReadStatus receive(std::size_t length, std::vector<Packet>& packets) = 0;

    /// Ends a wait of the receive thread, or else its next one, with nothing lost. Sources that never wait long need
    /// none.
    virtual void interrupt() noexcept {}

    /// Whether others than the receive thread may read.
    virtual bool isShared() const { return waitsApart(); }
    /// `receive` for another: waits until `until` at most, and not beyond a ring of `wake` where that can be heard.
    /// Without a wake it waits no longer than a link's one call does that cannot be woken, which is some milliseconds.
    /// Nothing if it is the receive thread that must read.
    virtual std::optional<ReadStatus> receiveFor(const Wake* wake, Deadline until, std::size_t length,
                                                 std::vector<Packet>& packets);

    /// Whether the receive thread can wait for bytes without reading them. Then it waits in `awaitBytes`, which tells
    /// whether there is something to read, the end or a failure included, and `receive` does not wait.
    virtual bool waitsApart() const { return false; }
    virtual bool awaitBytes() { return true; }
    /// Lets an epoll tell once when there is something to read; false where nothing can be watched.
    virtual bool watchOnce(int epoll) const;

    /// Why there is no link, if there has been one that the device or the system ended, or none at all
    /// (`not_connected`). Sources that cannot tell have none.
    virtual std::optional<std::error_code> loss() const { return std::nullopt; }
    /// The class of the errors of this kind of link.
    virtual FailureId failure() const { return FailureId::NetworkConnectionLostError; }
    LinkLoss lossFailure() const { return {failure(), loss()}; }
    const std::shared_ptr<LossListeners> losses = std::make_shared<LossListeners>();

    /// Grows whenever a step of the source may have been replaced, so that who reads from it looks again.
    std::uint64_t steps() const noexcept { return steps_; }
    void replaceSteps() noexcept;

    /// `gate` rings from now on whenever the link changes so that a read may fare differently.
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
/// Everything may be called from any thread. Bytes that two threads receive at once come into the splitter in the order
/// in which they came from the device.
class Client : public PacketSource {
public:
    SharedSplitter splitter;

    ReadStatus receive(std::size_t length, std::vector<Packet>& packets) final {
        return receiveAs(Reader::thread, length, packets, {});
    }

    /// The same for either reader. Throws std::system_error, of a caller also where its time is over.
    virtual ReadStatus receiveAs(Reader reader, std::size_t length, std::vector<Packet>& packets,
                                 const InterruptCheck& onWait);

    /// One read of at most `buffer.size()` bytes; shrinks the buffer to what came. Throws std::system_error.
    virtual ReadStatus read(Bytes& buffer, const InterruptCheck& onWait = {}) = 0;

    /// Where the device is, or was last: host and port, line, or USB serial number. Empty if there has been none.
    std::string place() const;

    /// Sends all bytes, waiting for room until `deadline`; tells whether they are sent. Throws std::system_error.
    /// A deadline in the past makes it one attempt that never waits; if that sent a part of the frame, the rest is sent
    /// as if the deadline were `finishWithin` away, since half a frame would spoil the next one.
    virtual bool send(ByteView bytes, Deadline deadline, const InterruptCheck& onWait = {}) = 0;

    static constexpr std::chrono::seconds finishWithin{5};

    /// The same for a request: a link that is not there, or has ended, is its Failure.
    bool sendRequest(ByteView bytes, Deadline deadline, const InterruptCheck& onWait = {});

    /// Closes the link, whatever state it is in; never throws. Does nothing in a forked child: the link is the
    /// parent's.
    virtual void close() noexcept = 0;

    /// Is told of every frame that is to be sent, of any client, on the thread that sends it. Nothing for nobody.
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

/// A client without a link: the base of those that are written elsewhere.
class BareClient final : public Client {
public:
    ReadStatus read(Bytes& buffer, const InterruptCheck& onWait = {}) override;
    bool send(ByteView bytes, Deadline deadline, const InterruptCheck& onWait = {}) override;
    void close() noexcept override {}
};

}  // namespace zvr
