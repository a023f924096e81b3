// A client over one socket or line at a time, which several threads use and any of them may take away.
#pragma once

#include "transport/socket.h"

namespace zvr {

class SocketClient : public Client {
public:
    Reading read(Bytes& buffer, const Attend& attend = {}) override;
    void readWaiting(Bytes& buffer) override;
    bool send(ByteView bytes, Deadline deadline, const Attend& attend = {}) override;

    /// Waits briefly for the threads that were in a read or a send.
    void abandon() noexcept override;

    /// Nothing while there is no socket.
    std::shared_ptr<Socket> socket() const;

protected:
    void replaceSocket(std::shared_ptr<Socket> socket);
    /// Throws std::system_error while there is no socket.
    std::shared_ptr<Socket> connectedSocket() const;

private:
    mutable std::mutex mutex_;
    std::shared_ptr<Socket> socket_;
};

}  // namespace zvr
