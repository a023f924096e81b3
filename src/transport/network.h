// The network clients: a TCP connection to a device, and the UDP socket of broadcasts.
#pragma once

#include "transport/socket_client.h"

namespace zvr {

class NetworkClient : public SocketClient {
public:
    /// Timeout of later reads and sends, in seconds; does nothing if there is no socket.
    void setTimeout(double seconds);

    /// Shuts the socket down and releases it. Throws Failure NetworkConnectionLostError and keeps the socket if that
    /// fails. Does nothing in a forked child.
    void disconnect();
};

class TcpClient final : public NetworkClient {
public:
    /// Throws Failure NetworkConnectionError.
    void connect(const std::string& host, int port, const InterruptCheck& onWait = {});
};

class UdpClient final : public NetworkClient {
public:
    /// Throws Failure NetworkConnectionError if the port is taken.
    void bind(const std::string& host, int port);
    /// Sends to every device on every interface of this host. An interface that cannot send it is skipped; throws
    /// std::system_error if none can.
    static void sendBroadcast(ByteView bytes, const InterruptCheck& onWait = {});
};

}  // namespace zvr
