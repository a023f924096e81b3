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
    /// Returns the new socket. Throws Failure NetworkConnectionError. `wanted` throws if the call is superseded; it is
    /// called while waiting for the connection, and once more with a lock held before the socket is put in place.
    std::shared_ptr<Socket> connect(const std::string& host, int port, const InterruptCheck& onWait = {},
                                    const InterruptCheck& wanted = {});
};

class UdpClient final : public NetworkClient {
public:
    /// The same with a local port. Throws Failure NetworkConnectionError if it is taken.
    std::shared_ptr<Socket> bind(const std::string& host, int port, const InterruptCheck& wanted = {});
    /// Sends to every device on every interface of this host. An interface that cannot send it is skipped; throws
    /// std::system_error if none can.
    static void sendBroadcast(ByteView bytes, const InterruptCheck& onWait = {});
};

}  // namespace zvr
