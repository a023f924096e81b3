// A socket or a serial line shared by several threads: some read, others send, and any may close it.
#pragma once

#include <asio.hpp>

#include "transport/client.h"
#include "transport/link_end.h"

namespace zvr {

/// Carries the bytes of a client.
class Socket {
public:
    virtual ~Socket() = default;

    /// Waits until there is something to read, end of stream included, and reads it.
    virtual ReadStatus read(Bytes& buffer, const InterruptCheck& onWait) = 0;
    /// The same with the bytes put into a splitter. A timeout of the receive thread is an idle turn; with `waitsApart`
    /// it does not wait here.
    virtual ReadStatus receive(Reader reader, std::size_t length, SharedSplitter& splitter,
                               std::vector<Packet>& packets, const InterruptCheck& onWait) = 0;
    virtual bool send(ByteView bytes, Deadline deadline, const InterruptCheck& onWait) = 0;

    /// As in PacketSource. By default only the receive thread may read.
    virtual std::optional<ReadStatus> receiveFor(const Wake* wake, Deadline until, std::size_t length,
                                                 SharedSplitter& splitter, std::vector<Packet>& packets);
    virtual bool waitsApart() const { return false; }
    virtual bool awaitBytes() { return true; }
    virtual bool watchOnce(int epoll);
    /// Why it has ended, if the peer or the system ended it.
    virtual std::optional<std::error_code> loss() const { return std::nullopt; }
    /// Sets the function that is called once at that, as a LossListener is.
    using Told = std::function<void(const std::error_code& why, Deadline)>;
    virtual void onLoss(Told /*told*/) {}

    /// Seconds that a read or a send waits; infinite for no limit.
    virtual void setTimeout(double seconds) = 0;
    /// Ends a wait of the receive thread, or else its next one, as an idle turn.
    virtual void interrupt() noexcept = 0;
    /// Shuts it down. If that fails, throws std::system_error and leaves it open.
    virtual void shutDown() = 0;
    /// Ends the reads and sends of all threads and closes it once none is inside one; waits for that until `deadline`.
    virtual void close(Deadline deadline) noexcept = 0;
};

/// Address and port of an end of a connection.
using SocketName = std::pair<std::string, int>;

/// A socket or a line of the system.
///
/// The descriptor stays open while a thread is inside a call, even if another closes it, so that no thread reads from a
/// reused descriptor.
class SystemSocket : public Socket {
public:
    /// `foreignFailure` is thrown in a forked child, where the link is the parent's.
    SystemSocket(int descriptor, FailureId foreignFailure);
    ~SystemSocket() override;

    ReadStatus read(Bytes& buffer, const InterruptCheck& onWait) override;
    ReadStatus receive(Reader reader, std::size_t length, SharedSplitter& splitter, std::vector<Packet>& packets,
                       const InterruptCheck& onWait) override;
    bool send(ByteView bytes, Deadline deadline, const InterruptCheck& onWait) override;
    std::optional<ReadStatus> receiveFor(const Wake* wake, Deadline until, std::size_t length, SharedSplitter& splitter,
                                         std::vector<Packet>& packets) override;
    bool waitsApart() const override { return true; }
    bool awaitBytes() override;
    bool watchOnce(int epoll) override;
    std::optional<std::error_code> loss() const override;
    void onLoss(Told told) override;
    /// Sends once, as much as there is room for; returns the number of bytes.
    std::size_t sendSome(ByteView bytes, const InterruptCheck& onWait);

    void setTimeout(double seconds) override { timeout_ = seconds; }
    double timeout() const { return timeout_; }
    void interrupt() noexcept override;
    void shutDown() override { shutDown(SHUT_RDWR); }
    void close(Deadline deadline) noexcept override;

    /// -1 once it is closed.
    int fileno() const { return mark_.foreign() ? -1 : descriptor_.get(); }

    /// The calls of a socket; each throws std::system_error, and always does on a serial line.
    void shutDown(int direction);
    SocketName localName();
    SocketName peerName();
    int family();
    int type();
    void setOption(int level, int name, ByteView value);
    Bytes option(int level, int name, std::size_t size);

protected:
    /// Never wait; return a negative number with errno set on failure.
    virtual ssize_t receiveNow(int descriptor, std::span<std::uint8_t> buffer) = 0;
    virtual ssize_t sendNow(int descriptor, ByteView bytes) = 0;
    /// Waits `shortWait` at most if the system can wait and receive in one call; else `shortWait` is 0.
    virtual ssize_t receiveSoon(int descriptor, std::span<std::uint8_t> buffer) {
        return receiveNow(descriptor, buffer);
    }
    virtual Clock::duration shortWait() const { return Clock::duration::zero(); }
    /// Whether zero bytes received mean the end of the stream.
    virtual bool endsWithNothing() const = 0;
    /// Whether a shutdown wakes the threads that wait.
    virtual bool isWokenByShutdown() const { return true; }

private:
    class Use;

    void requireOwn() const;
    [[noreturn]] void failAndNote();
    void noteLoss(int number);
    /// Reads the bytes that are there and shrinks the buffer to them; empty if there are none yet.
    std::optional<ReadStatus> takeNow(std::span<std::uint8_t>& buffer, bool waits = false);
    std::optional<ReadStatus> takeInto(SharedSplitter& splitter, std::size_t length, std::vector<Packet>& packets,
                                       bool waits = false);
    std::size_t lengthInPlaceOf(std::size_t length) const;
    bool sendParts(ByteView frame, std::uint64_t& number);
    template <class Take>
    ReadStatus readWith(Take&& take, const InterruptCheck& onWait);
    /// The events as poll returns them; 0 at the deadline, or if `wake` was notified first.
    short awaitEvent(short events, Deadline deadline, const InterruptCheck& onWait, const Wake* wake = nullptr);

    const FailureId foreignFailure_;
    const ProcessMark mark_;
    std::atomic<double> timeout_{std::numeric_limits<double>::infinity()};
    OwnDescriptor descriptor_;
    const Wake threadWake_;
    // Held while bytes are received and put into the splitter, so that readers keep their order.
    std::mutex receiving_;
    std::unique_ptr<std::uint8_t[]> buffer_;
    std::size_t bufferSize_ = 0;
    std::mutex mutex_;
    std::condition_variable left_;
    std::atomic<int> users_{0};
    std::atomic<bool> closing_{false}, shut_{false};  // by this side
    std::mutex sending_;
    Bytes unsent_, begun_;  // the rest of the frame that was begun last, and that frame
    std::uint64_t begunNumber_ = 0;
    Deadline claimUntil_{};  // whoever sends the same frame until then goes on with it
    LinkEnd end_;            // reason: the system's error; -1 for an orderly end
    Told onLoss_;
};

/// Connects to an IPv4 address or host name within `limit`, the search for the name included. Throws std::system_error.
std::shared_ptr<Socket> connectTcp(const std::string& host, int port, std::chrono::seconds limit,
                                   const InterruptCheck& onWait);

/// Takes a local UDP port; an empty host means every interface. Throws std::system_error.
std::shared_ptr<Socket> bindUdp(const std::string& host, int port);

}  // namespace zvr
