// The device's side of network connections, and what tests of the clients ask of them.
#pragma once

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

#include "core/wire/failures.h"
#include "support.h"
#include "transport/network.h"

namespace zvr::testing {

using asio::ip::tcp;

// The socket of a connected client.
inline std::shared_ptr<SystemSocket> socketOf(const NetworkClient& client) {
    auto socket = std::dynamic_pointer_cast<SystemSocket>(client.socket());
    if (!socket) throw std::logic_error("the client has no socket");
    return socket;
}

inline constexpr const char* loopback = "127.0.0.1";

// The device's side of TCP connections.
class Peer {
public:
    int port() const { return acceptor_.local_endpoint().port(); }
    tcp::socket accept() { return acceptor_.accept(); }

    tcp::socket connect(TcpClient& client) {
        client.connect(loopback, port());
        return accept();
    }

private:
    asio::io_context context_;
    tcp::acceptor acceptor_{context_, tcp::endpoint(asio::ip::make_address_v4(loopback), 0)};
};

inline Bytes readAll(tcp::socket& socket, std::size_t count) {
    Bytes bytes(count);
    asio::read(socket, asio::buffer(bytes));
    return bytes;
}

// The peer ends the connection without a farewell.
inline void reset(tcp::socket& socket) {
    socket.set_option(asio::socket_base::linger(true, 0));
    socket.close();
}

template <class Action>
std::string errorOf(Action action) {
    try {
        action();
    } catch (const Failure& error) {
        return std::string(rowOf(error.id()).name);
    } catch (const std::system_error& error) {
        return error.code() == asio::error::timed_out ? "timed out" : "system error";
    }
    return "none";
}

// A read without a limit on another thread; this one goes on when that one holds the socket.
inline std::future<ReadStatus> startRead(NetworkClient& client) {
    auto reading = std::async(std::launch::async, [&] {
        Bytes buffer(10);
        try {
            return client.read(buffer);
        } catch (const std::system_error& error) {
            EXPECT_EQ(error.code().value(), EBADF);  // it was closed before the read began
            return ReadStatus::ended;
        }
    });
    while (client.socket().use_count() < 3) std::this_thread::yield();
    return reading;
}

}  // namespace zvr::testing
