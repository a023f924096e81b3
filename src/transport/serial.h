// The client of a serial line.
#pragma once

#include "transport/socket_client.h"

namespace zvr {

class SerialClient final : public SocketClient {
public:
    SerialClient();

    /// Opens a port by its name, 8 data bits, no parity, one stop bit. Throws Failure UARTConnectionError if there is
    /// no such port, another program uses it, or it does not support the speed.
    /// `wanted` as that of a TcpClient.
    std::shared_ptr<Socket> connect(const std::string& port, int baudRate, const InterruptCheck& wanted = {});

    /// Closes the port, if one is open. Throws std::system_error if its replacement cannot be closed.
    void disconnect();

    /// Both return idle if nothing arrives within the line's read timeout.
    ReadStatus read(Bytes& buffer, const InterruptCheck& onWait = {}) override;
    ReadStatus receiveAs(Reader reader, std::size_t length, std::vector<Packet>& packets,
                         const InterruptCheck& onWait) override;

    /// Read timeout in seconds; setting it applies to an open line too.
    double readTimeout() const { return readTimeout_; }
    void setReadTimeout(double seconds);

    FailureId failure() const override { return FailureId::UARTConnectionError; }

private:
    std::atomic<double> readTimeout_;
};

}  // namespace zvr
