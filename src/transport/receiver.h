// The receive thread of one connection.
//
// Who runs what: the thread runs Receiver::run from the construction of a device to its close. It reads from the
// source, cuts frames and files them through the sink. The user's side only turns the gate, replaces the source and
// ends the thread. Nobody joins the thread: it holds all it needs.
//
// A read that fails or brings the end is one turn lost. The next turn comes after a pause, which grows while that goes
// on, and at once when the gate is turned, the source is replaced, or the source tells of a change of its link.
#pragma once

#include <functional>
#include <string>
#include <thread>

#include "core/gate.h"
#include "core/threads.h"
#include "transport/client.h"

namespace zvr {

/// The link is open, and nobody has set a client.
struct MissingClient : std::runtime_error {
    MissingClient() : std::runtime_error("the link has no client") {}
};

class Receiver final : public OwnedThread, public std::enable_shared_from_this<Receiver> {
public:
    /// Files one packet; what it throws ends the thread, unless `ignoresUnfiled`.
    using Sink = std::function<void(Packet)>;

    /// Told of a read that failed, on the thread that reads.
    using ReportRead = std::function<void(std::exception_ptr)>;

    /// With `reportRead` failed reads are reported, and so is a missing client.
    Receiver(std::string name, std::size_t readLength, Sink sink, Report report, ReportRead reportRead = {});

    /// Starts the thread. It waits at the gate until that is opened.
    void start();

    /// The body of the thread; also runs on the caller's thread, until `end`.
    void run();

    /// Ends the thread soon, out of its read.
    void end();

    /// A read from the source before ends soon, with nothing lost.
    void setSource(std::shared_ptr<PacketSource> source);

    /// Lets the thread go on behind a packet that cannot be filed. For links on which anybody may send.
    void ignoreUnfiled() { ignoresUnfiled_ = true; }

    Gate gate;

private:
    Reading cycle(std::vector<Packet>& packets);
    void file(Packet packet);
    std::shared_ptr<PacketSource> source() const;

    const std::size_t readLength_;
    const Sink sink_;
    const ReportRead reportRead_;
    std::atomic<bool> killed_{false}, ignoresUnfiled_{false};
    mutable std::mutex mutex_;
    std::shared_ptr<PacketSource> source_;
};

}  // namespace zvr
