#include "transport/network.h"

#include <thread>

#include "core/constants.h"
#include "core/failures.h"

namespace zvr {

namespace {

// Longest wait for the threads that a shutdown has woken to let go of a socket.
constexpr std::chrono::milliseconds letGoWithin{50};

}  // namespace

void NetworkClient::setTimeout(double seconds) {
    if (const auto held = socket()) held->timeout = seconds;
}

Reading NetworkClient::read(Bytes& buffer, const Attend& attend) { return connectedSocket()->read(buffer, attend); }

bool NetworkClient::send(ByteView bytes, Deadline deadline, const Attend& attend) {
    return connectedSocket()->send(bytes, deadline, attend);
}

void NetworkClient::disconnect() {
    try {
        connectedSocket()->shutDown();
    } catch (const std::system_error&) {
        throw Failure(FailureId::NetworkConnectionLostError);
    }
    abandon();
}

void NetworkClient::abandon() noexcept {
    const auto held = socket();
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

std::shared_ptr<Socket> NetworkClient::socket() const {
    const std::lock_guard lock(mutex_);
    return socket_;
}

void NetworkClient::replaceSocket(std::shared_ptr<Socket> socket) {
    const std::lock_guard lock(mutex_);
    socket_.swap(socket);
}

std::shared_ptr<Socket> NetworkClient::connectedSocket() const {
    auto held = socket();
    if (!held) throw std::system_error(std::make_error_code(std::errc::not_connected));
    return held;
}

void TcpClient::connect(const std::string& host, int port, const Attend& attend) {
    try {
        abandon();
        replaceSocket(connectTcp(host, port, std::chrono::seconds(CONNECTION_TIMEOUT), attend));
    } catch (const std::system_error&) {
        throw Failure(FailureId::NetworkConnectionError);
    }
}

void UdpClient::bind(const std::string& host, int port) {
    try {
        abandon();
        replaceSocket(bindUdp(host, port));
    } catch (const std::system_error&) {
        throw Failure(FailureId::NetworkConnectionError);
    }
}

void UdpClient::sendBroadcast(ByteView bytes) {
    using asio::ip::udp;
    asio::io_context context;
    udp::resolver resolver(context);
    const udp::endpoint everyone(asio::ip::address_v4::broadcast(), UDP_SEND_PORT);
    for (const auto& entry : resolver.resolve(udp::v4(), asio::ip::host_name(), "")) {
        udp::socket socket(context, udp::endpoint(entry.endpoint().address(), 0));
        socket.set_option(asio::socket_base::broadcast(true));
        socket.send_to(asio::buffer(bytes.data(), bytes.size()), everyone);
    }
}

}  // namespace zvr
