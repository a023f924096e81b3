// The client of a serial line.
#pragma once

#include "transport/socket_client.h"

namespace zvr {

class SerialClient final : public SocketClient {
public:
    /// Opens a port by its name, 8 data bits, no parity, one stop bit. Throws Failure UARTConnectionError if there is
    /// no such port, another program has it, or it cannot run at this speed.
    void connect(const std::string& port, int baudRate);

    /// Idle if nothing comes within the line's read timeout.
    Reading read(Bytes& buffer, const Attend& attend = {}) override;
};

}  // namespace zvr
