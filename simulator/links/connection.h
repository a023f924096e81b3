// One client of a device: splits received bytes into requests, answers them, and sends the device's unsolicited frames.
#pragma once

#include <asio.hpp>
#include <deque>
#include <memory>

#include "core/wire/splitter.h"
#include "device/device.h"
#include "links/faults.h"
#include "options.h"

namespace zvr::sim {

/// Logs a request or a frame on standard error.
void logFrame(const char* direction, int command, ByteView data);
void logFrame(const char* direction, int command, const Frame& frame);

/// Lives while any of its operations is pending. Sockets and terminals are both served as descriptors; the program
/// ignores SIGPIPE.
class Connection : public FrameSink, public std::enable_shared_from_this<Connection> {
public:
    struct Rules {
        bool answers = true;  ///< or requests are ignored
        bool isLine = false;  ///< cannot end and never blocks others: when cut it falls silent and loses frames
        std::function<void()> onArrival;  ///< called before received bytes are parsed
        std::function<void()> onRoom;     ///< called when the client's queue has become empty
    };

    Connection(asio::posix::stream_descriptor stream, Device& device, const Options& options, Rules rules);

    void read();
    /// Sends an unsolicited frame. If too many are waiting for the client, it is dropped and logged.
    bool sendUnsolicited(int command, const Frame& frame) override;
    /// Whether only a few frames wait; true if nothing can be sent any more.
    bool hasRoom() const override { return queue_.size() < fewWaiting; }
    /// Drops received and queued bytes when the line gets another client or none.
    void restart(bool hasClient);
    /// Ends it; a line falls silent until its next client.
    void end();

private:
    using Clock = std::chrono::steady_clock;

    // A client that does not read is not read from, or loses frames, so that its queue stays bounded.
    static constexpr std::size_t mostWaiting = 4096, fewWaiting = 32;

    struct Outgoing {
        Frame bytes;
        Clock::time_point due;
        bool last;
    };

    bool isFull() const { return queue_.size() >= mostWaiting; }
    void readOn();
    void answer(const Packet& request);
    void drop();
    void send(int command, const Frame& frame);
    void pump();
    bool write();
    void giveUp();

    asio::posix::stream_descriptor stream_;
    asio::steady_timer timer_;
    Device& device_;
    const Options& options_;
    const Rules rules_;
    std::optional<Faults> faults_;
    Splitter splitter_;
    std::array<std::uint8_t, 4096> buffer_{};
    std::deque<Outgoing> queue_;
    std::size_t written_ = 0;  // bytes of the first in the queue
    std::size_t dropped_ = 0;
    bool busy_ = false;    // a wait is pending, which pumps when it ends
    bool paused_ = false;  // does not read
    bool silent_ = false;
    bool broken_ = false;  // accepts no more data
};

/// The connections that get unsolicited frames.
class Subscribers : public FrameSink {
public:
    void add(const std::shared_ptr<Connection>& connection);
    bool sendUnsolicited(int command, const Frame& frame) override;
    bool hasRoom() const override;

private:
    std::vector<std::weak_ptr<Connection>> connections_;
};

}  // namespace zvr::sim
