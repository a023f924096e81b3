#include "transport/socket_client.h"

namespace zvr {

namespace {

// Longest wait for the threads woken by a close to leave the socket.
constexpr std::chrono::milliseconds linger{75};

}  // namespace

ReadStatus SocketClient::receiveAs(Reader reader, std::size_t length, std::vector<Packet>& packets,
                                   const InterruptCheck& onWait) {
    return connectedSocket()->receive(reader, length, splitter, packets, onWait);
}

ReadStatus SocketClient::read(Bytes& buffer, const InterruptCheck& onWait) {
    return connectedSocket()->read(buffer, onWait);
}

bool SocketClient::send(ByteView bytes, Deadline deadline, const InterruptCheck& onWait) {
    return connectedSocket()->send(bytes, deadline, onWait);
}

void SocketClient::interrupt() noexcept {
    if (const auto held = socket()) held->interrupt();
}

std::optional<ReadStatus> SocketClient::receiveFor(const Wake* wake, Deadline until, std::size_t length,
                                                   std::vector<Packet>& packets) {
    return connectedSocket()->receiveFor(wake, until, length, splitter, packets);
}

bool SocketClient::waitsApart() const {
    const auto held = socket();
    return held && held->waitsApart();
}

bool SocketClient::awaitBytes() { return connectedSocket()->awaitBytes(); }

bool SocketClient::watchOnce(int epoll) const {
    try {
        return connectedSocket()->watchOnce(epoll);
    } catch (const std::exception&) {
        return false;  // it is closed
    }
}

std::optional<std::error_code> SocketClient::loss() const {
    const auto held = socket();
    return held ? held->loss() : std::make_error_code(std::errc::not_connected);
}

void SocketClient::close() noexcept { closeIf({}); }

void SocketClient::closeIf(const InterruptCheck& wanted) {
    if (isForeign()) return;
    std::shared_ptr<Socket> held;
    {
        const std::lock_guard lock(mutex_);
        if (wanted) wanted();
        held.swap(socket_);
    }
    closeTaken(held);
}

void SocketClient::letGoOf(const std::shared_ptr<Socket>& socket) noexcept {
    if (isForeign()) return;
    std::shared_ptr<Socket> held;
    {
        const std::lock_guard lock(mutex_);
        if (socket_ != socket) return;
        held.swap(socket_);
    }
    closeTaken(held);
}

// A port is free for the next socket only after its last user has left.
void SocketClient::closeTaken(const std::shared_ptr<Socket>& taken) noexcept {
    if (taken) taken->close(Clock::now() + linger);
    changed();
}

std::shared_ptr<Socket> SocketClient::socket() const {
    if (isForeign()) return nullptr;
    const std::lock_guard lock(mutex_);
    return socket_;
}

void SocketClient::replaceSocket(std::shared_ptr<Socket> socket, const InterruptCheck& wanted) {
    requireOwn();
    const std::shared_ptr<Socket> placed = socket;
    if (placed) {
        placed->onLoss([told = losses, link = failure()](const std::error_code& why, Deadline when) {
            told->tell(LinkLoss(link, why), when);
        });
    }
    {
        const std::lock_guard lock(mutex_);
        if (wanted) wanted();
        socket_.swap(socket);
    }
    if (socket && socket != placed) socket->onLoss({});
    // Readers of the previous socket have no reason to go on.
    if (socket) socket->interrupt();
    if (placed && placed->loss()) losses->tell(lossFailure(), Clock::now());
    changed();
}

std::shared_ptr<Socket> SocketClient::connectedSocket() const {
    requireOwn();
    auto held = socket();
    if (!held) throw std::system_error(std::make_error_code(std::errc::not_connected));
    return held;
}

}  // namespace zvr
