#include "transport/socket_client.h"

#include <thread>

namespace zvr {

namespace {

// Longest wait for the threads that a shutdown has woken, or whose read ends by itself, to let go of a socket.
constexpr std::chrono::milliseconds letGoWithin{75};
// Bytes that a busy link's second read takes.
constexpr std::size_t mostWaiting = 65536;

}  // namespace

Reading SocketClient::read(Bytes& buffer, const Attend& attend) { return connectedSocket()->read(buffer, attend); }

void SocketClient::readWaiting(Bytes& buffer) {
    const auto held = socket();
    buffer.resize(held ? mostWaiting : 0);
    if (held) held->readWaiting(buffer);
}

bool SocketClient::send(ByteView bytes, Deadline deadline, const Attend& attend) {
    return connectedSocket()->send(bytes, deadline, attend);
}

void SocketClient::abandon() noexcept {
    const std::shared_ptr<Socket> held = socket();
    replaceSocket(nullptr);
    try {
        if (held) held->shutDown();
    } catch (const std::system_error&) {
        // The other end went first.
    }
    // A port is free for the next socket only when its last holder is gone.
    const Deadline deadline = Clock::now() + letGoWithin;
    while (held.use_count() > 1 && Clock::now() < deadline) std::this_thread::yield();
}

std::shared_ptr<Socket> SocketClient::socket() const {
    const std::lock_guard lock(mutex_);
    return socket_;
}

void SocketClient::replaceSocket(std::shared_ptr<Socket> socket) {
    const std::lock_guard lock(mutex_);
    socket_.swap(socket);
}

std::shared_ptr<Socket> SocketClient::connectedSocket() const {
    auto held = socket();
    if (!held) throw std::system_error(std::make_error_code(std::errc::not_connected));
    return held;
}

}  // namespace zvr
