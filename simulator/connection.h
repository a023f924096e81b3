// One client of a device: cuts what comes into requests, answers them, and sends what the device says unasked.
#pragma once

#include <asio.hpp>
#include <deque>
#include <memory>

#include "core/splitter.h"
#include "device.h"
#include "faults.h"
#include "options.h"

namespace zvr::sim {

/// Shows a frame on standard error.
void logFrame(const char* direction, int command, ByteView data);

/// Lives as long as one of its operations is under way. Sockets and terminals are both served as descriptors; the
/// program ignores SIGPIPE.
class Connection : public std::enable_shared_from_this<Connection> {
public:
    struct Rules {
        bool answers = true;  ///< or takes requests for nothing
        bool isLine = false;  ///< cannot end and holds nobody back: cut it falls silent, and frames get lost
        std::function<void()> onArrival;  ///< called before what has come is looked at
    };

    Connection(asio::posix::stream_descriptor stream, Device& device, const Options& options, Rules rules);

    void read();
    /// Sends a frame that nobody has asked for. It is dropped if the client lets too many wait.
    void sendUnasked(int command, ByteView data);
    /// Forgets what came and what waits, for another client on the same line, or as long as there is none.
    void restart(bool hasClient);

private:
    using Clock = std::chrono::steady_clock;

    // A client that takes nothing is not read from, or loses frames, so that what waits for it stays bounded.
    static constexpr std::size_t mostWaiting = 4096;

    struct Outgoing {
        Bytes bytes;
        Clock::time_point due;
        bool last;
    };

    bool isFull() const { return queue_.size() >= mostWaiting; }
    void readOn();
    void answer(const Packet& request);
    void drop();
    void send(int command, ByteView data);
    void pump();
    bool write(Outgoing& next);
    void end();

    asio::posix::stream_descriptor stream_;
    asio::steady_timer timer_;
    Device& device_;
    const Options& options_;
    const Rules rules_;
    std::optional<Faults> faults_;
    Splitter splitter_;
    std::array<std::uint8_t, 4096> buffer_{};
    std::deque<Outgoing> queue_;
    std::size_t dropped_ = 0;
    bool busy_ = false;    // one wait is under way, and pumps when it is over
    bool paused_ = false;  // does not read
    bool silent_ = false;
};

/// The connections that are sent what the device says unasked.
class Audience {
public:
    void add(const std::shared_ptr<Connection>& connection);
    void send(int command, ByteView data);

private:
    std::vector<std::weak_ptr<Connection>> connections_;
};

}  // namespace zvr::sim
