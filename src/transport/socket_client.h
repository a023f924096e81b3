// A client over one socket or line at a time, which several threads use and any of them may replace.
#pragma once

#include "transport/socket.h"

namespace zvr {

class SocketClient : public Client {
public:
    ReadStatus receiveAs(Reader reader, std::size_t length, std::vector<Packet>& packets,
                         const InterruptCheck& onWait) override;
    ReadStatus read(Bytes& buffer, const InterruptCheck& onWait = {}) override;
    bool send(ByteView bytes, Deadline deadline, const InterruptCheck& onWait = {}) override;
    void interrupt() noexcept override;
    std::optional<ReadStatus> receiveFor(const Wake* wake, Deadline until, std::size_t length,
                                         std::vector<Packet>& packets) override;
    bool waitsApart() const override;
    bool awaitBytes() override;
    bool watchOnce(int epoll) const override;
    std::optional<std::error_code> loss() const override;

    /// Waits briefly for the threads that are in a read or a send to leave.
    void close() noexcept override;

    /// Null while there is no socket, and in a forked child.
    std::shared_ptr<Socket> socket() const;
    /// Replaces the socket; the previous one is not closed. `wanted` throws if it is no longer to be replaced; it is
    /// called with a lock held.
    void replaceSocket(std::shared_ptr<Socket> socket, const InterruptCheck& wanted = {});
    /// Closes this socket if it is the one there.
    void letGoOf(const std::shared_ptr<Socket>& socket) noexcept;

protected:
    /// Throws std::system_error while there is no socket.
    std::shared_ptr<Socket> connectedSocket() const;
    /// As `close`, if `wanted` does not throw.
    void closeIf(const InterruptCheck& wanted);

private:
    void closeTaken(const std::shared_ptr<Socket>& taken) noexcept;

    mutable std::mutex mutex_;
    std::shared_ptr<Socket> socket_;
};

}  // namespace zvr
