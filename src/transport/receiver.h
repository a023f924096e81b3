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

#include "core/engine/gate.h"
#include "core/engine/supervisor.h"
#include "core/engine/threads.h"
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

    /// With `reportRead` failed reads are reported, and so is a missing client. Without a supervisor the thread files
    /// through `sink`; with one, what it reads from and files through is the supervisor's to set.
    Receiver(std::string name, std::size_t readLength, Sink sink, Report report, ReportRead reportRead = {});
    Receiver(std::string name, std::size_t readLength, Report report, ReportRead reportRead,
             std::shared_ptr<Supervisor<Receiver>> supervisor);

    /// Starts the thread. It waits at the gate until that is opened.
    void start();

    /// The body of the thread; also runs on the caller's thread, until `end`.
    void run();

    /// Ends the thread soon, out of its read.
    void end() override;

    /// Lets go of the link that is read from.
    void closeLink() noexcept;

    /// A read from the source before ends soon, with nothing lost.
    void setSource(std::shared_ptr<PacketSource> source);

    /// Lets a thread that waits, at its gate or in its read, ask its supervisor.
    void lookAgain() noexcept;

    /// Lets the thread go on behind a packet that cannot be filed. For links on which anybody may send.
    void ignoreUnfiled() { ignoresUnfiled_ = true; }

    /// On the thread itself. No gate stands for the thread's own; a foreign one tells whether it has been passed.
    void setGate(std::shared_ptr<Gate> gate);
    void setForeignGate(std::function<bool()> pass) { foreignPass_ = std::move(pass); }
    void setSink(Sink sink) { sink_ = std::move(sink); }
    /// Waits until it is to look again.
    void rest(std::chrono::milliseconds most);

    const std::shared_ptr<Gate> gate = std::make_shared<Gate>();

private:
    bool partsChanged() const noexcept { return supervisor_ && supervisor_->changed(); }
    bool changed() const noexcept { return killed_ || partsChanged(); }
    bool filePending();
    ReadStatus cycle();
    std::shared_ptr<PacketSource> source() const;
    std::shared_ptr<Gate> gateNow() const;

    const std::size_t readLength_;
    Sink sink_;
    const ReportRead reportRead_;
    const std::shared_ptr<Supervisor<Receiver>> supervisor_;
    std::shared_ptr<Gate> gateNow_ = gate;
    Gate::Passed passed_ = 0;
    std::function<bool()> foreignPass_;
    std::vector<Packet> pending_;  // received, and not filed yet
    std::atomic<bool> killed_{false}, ignoresUnfiled_{false};
    mutable std::mutex mutex_;
    std::shared_ptr<PacketSource> source_;
};

}  // namespace zvr
