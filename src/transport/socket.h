// A socket or a serial line that several threads may hold: one reads, others send, and one shuts it down under both.
#pragma once

#include <asio.hpp>

#include "transport/client.h"

namespace zvr {

/// The descriptor is closed when the last holder lets go, so that no thread reads from a descriptor of somebody else.
class Socket {
public:
    virtual ~Socket() = default;

    virtual int fileno() = 0;
    /// Address and port of this end, and of the other one. Throws std::system_error where there is no such thing.
    virtual std::pair<std::string, int> localName() = 0;
    virtual std::pair<std::string, int> peerName() = 0;
    /// Ends the reads and sends of all threads. Throws std::system_error.
    virtual void shutDown() = 0;

    /// Waits until there is something to read, end of stream included, and reads it.
    Reading read(Bytes& buffer, const Attend& attend);
    /// Reads what is there, without waiting; a failure shows in the next read.
    void readWaiting(Bytes& buffer);
    bool send(ByteView bytes, Deadline deadline, const Attend& attend);

    /// Seconds that a read or a send waits; `forever` by default.
    std::atomic<double> timeout{std::numeric_limits<double>::infinity()};

protected:
    virtual std::size_t receiveNow(Bytes& buffer, std::error_code& error) = 0;
    virtual std::size_t sendNow(ByteView bytes, std::error_code& error) = 0;
    /// Whether zero bytes received mean the end of the stream.
    virtual bool endsWithNothing() const = 0;

private:
    /// What came, as poll tells it; 0 if nothing came in time.
    short awaitEvent(short events, Deadline deadline, const Attend& attend);
};

/// Sockets and lines need a context to live in; nothing ever runs in this one, since every operation is a direct one.
asio::io_context& restingContext();

/// Connects to an IPv4 address or host name. Throws std::system_error.
std::shared_ptr<Socket> connectTcp(const std::string& host, int port, std::chrono::seconds limit, const Attend& attend);

/// Takes a local UDP port; an empty host means every interface. Throws std::system_error.
std::shared_ptr<Socket> bindUdp(const std::string& host, int port);

}  // namespace zvr
