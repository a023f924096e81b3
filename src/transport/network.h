// The network clients: a TCP connection to a device, and the UDP socket of broadcasts.
#pragma once

#include "transport/socket.h"

namespace zvr {

class NetworkClient : public Client {
public:
    /// Seconds that later reads and sends wait; nothing if there is no socket.
    void setTimeout(double seconds);

    Reading read(Bytes& buffer, const Attend& attend = {}) override;
    bool send(ByteView bytes, Deadline deadline, const Attend& attend = {}) override;

    /// Shuts the socket down and lets go of it. Throws Failure NetworkConnectionLostError and keeps the socket if that
    /// fails.
    void disconnect();
    /// Lets go of the socket whatever state it is in; waits briefly for the threads that were in a read or a send.
    void abandon() noexcept;

    /// Nothing while there is no socket.
    std::shared_ptr<Socket> socket() const;

protected:
    void replaceSocket(std::shared_ptr<Socket> socket);

private:
    std::shared_ptr<Socket> connectedSocket() const;

    mutable std::mutex mutex_;
    std::shared_ptr<Socket> socket_;
};

class TcpClient final : public NetworkClient {
public:
    /// Throws Failure NetworkConnectionError.
    void connect(const std::string& host, int port, const Attend& attend = {});
};

class UdpClient final : public NetworkClient {
public:
    /// Throws Failure NetworkConnectionError.
    void bind(const std::string& host, int port);
    /// Sends to every device on every interface of this host. Throws std::system_error.
    static void sendBroadcast(ByteView bytes);
};

}  // namespace zvr
