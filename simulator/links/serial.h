// The simulator's serial side: a pseudo-terminal whose far end is the device's serial port.
#pragma once

#include "links/connection.h"

namespace zvr::sim {

/// A symbolic link that is removed with its owner.
class SymbolicLink {
public:
    /// Replaces an older link, but no other file; throws std::system_error.
    SymbolicLink(std::string target, std::string path);
    ~SymbolicLink();
    SymbolicLink(const SymbolicLink&) = delete;
    SymbolicLink& operator=(const SymbolicLink&) = delete;

private:
    std::string target_;
    std::string path_;
};

class SerialLine {
public:
    /// Opens at once; throws std::system_error.
    SerialLine(asio::io_context& context, Device& device, const Options& options);
    SerialLine(const SerialLine&) = delete;
    SerialLine& operator=(const SerialLine&) = delete;

    /// Its address, as members of a JSON object.
    std::string description() const;
    /// Falls silent until its next client.
    void cut();

private:
    void watch();
    void followClients();
    void restart();

    std::string path_;
    int master_ = -1;                       // belongs to the connection
    asio::posix::stream_descriptor slave_;  // kept open, so that a client that closes the line does not hang it up
    asio::posix::stream_descriptor visits_;
    int clients_ = 0;
    std::shared_ptr<Connection> connection_;
    std::optional<SymbolicLink> link_;
};

}  // namespace zvr::sim
