// The receive thread of one connection.
//
// Who runs what: the thread runs Receiver::run from the construction of a device to its close. It reads from the
// source, cuts frames and files them through the sink; nothing else touches the source's splitter. The user's side
// only turns the gate, replaces the source and ends the thread. Nobody joins the thread: it holds all it needs.
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
    /// Files one packet; what it throws ends the thread.
    using Sink = std::function<void(Packet)>;

    /// Told of a read that failed, on the thread that reads.
    using ReportRead = std::function<void(std::exception_ptr)>;

    /// Without `reportRead` a failed read counts as the end of the link. With it the read is reported and tried again,
    /// ever more slowly, and so is the read of a link whose client is missing.
    Receiver(std::string name, std::size_t readLength, Sink sink, Report report, ReportRead reportRead = {});

    /// Starts the thread. It waits at the gate until that is opened.
    void start();

    /// The body of the thread; also runs on the caller's thread, until `end`.
    void run();

    /// Ends the thread soon: a read that waits for nobody ends when its client lets go of its link.
    void end();

    void setSource(std::shared_ptr<PacketSource> source);

    Gate gate;

private:
    Reading cycle(std::vector<Packet>& packets);

    const std::size_t readLength_;
    const Sink sink_;
    const ReportRead reportRead_;
    std::atomic<bool> killed_{false};
    mutable std::mutex mutex_;
    std::shared_ptr<PacketSource> source_;
};

}  // namespace zvr
