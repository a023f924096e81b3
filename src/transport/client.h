// The seam between the engine and the links: a client moves bytes, and cuts what it receives into frames.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>

#include "core/splitter.h"
#include "core/waiting.h"

namespace zvr {

/// What one read brought.
enum class Reading {
    data,    ///< bytes
    idle,    ///< nothing within the read's own time; the next read may bring something
    ended,   ///< nothing, and nothing will come until the client is connected again
    failed,  ///< nothing, and the failure has been reported; the next read may fail in the same way
};

/// A source of packets for a receive loop. `receive` is called by one thread at a time.
class PacketSource {
public:
    virtual ~PacketSource() = default;
    /// Reads at most `length` bytes and adds the frames that are complete now to `packets`.
    virtual Reading receive(std::size_t length, std::vector<Packet>& packets) = 0;
};

/// A link to a device.
///
/// `send` may be called from any thread while another one receives. `splitter` belongs to the receiving thread.
class Client : public PacketSource {
public:
    Splitter splitter;

    Reading receive(std::size_t length, std::vector<Packet>& packets) override {
        Bytes buffer(length);
        const Reading reading = read(buffer);
        if (reading == Reading::data) {
            splitter.append(buffer);
            if (buffer.size() == length) {
                readWaiting(buffer);
                splitter.append(buffer);
            }
            packets = splitter.split();
        }
        return reading;
    }

    /// One read of at most `buffer.size()` bytes; shrinks the buffer to what came. Throws std::system_error.
    virtual Reading read(Bytes& buffer, const Attend& attend = {}) = 0;

    /// Replaces the buffer's content by what has arrived already, as far as a link tells without waiting.
    virtual void readWaiting(Bytes& buffer) { buffer.clear(); }

    /// Sends all bytes, waiting for room until `deadline`; tells whether they are sent. Throws std::system_error.
    /// A deadline in the past makes it one attempt that never waits; if that sent a part of the frame, the rest is sent
    /// as if the deadline were `finishWithin` away, since half a frame would spoil the next one.
    virtual bool send(ByteView bytes, Deadline deadline, const Attend& attend = {}) = 0;

    static constexpr std::chrono::seconds finishWithin{5};

    /// Lets go of the link whatever state it is in.
    virtual void abandon() noexcept = 0;
};

}  // namespace zvr
