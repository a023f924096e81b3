// The receive thread of one connection.
//
// Who runs what: the thread runs Receiver::run from the construction of a device to its close. It reads from the
// source, cuts frames and files them through the sink. The user's side only turns the gate, replaces the source and
// ends the thread. Nobody joins the thread: it holds all it needs.
//
// Who waits for a reply reads in the thread's place (reading_right.h), as long as that is the same to everybody: the
// gate is open, source and sink are the library's own, and nothing has been replaced. Whatever else a read brings (a
// failure, the end of the link, a frame that cannot be filed) is left to the thread.
//
// A read that fails or brings the end is one turn lost. The next turn comes after a pause, which grows while that goes
// on, and at once when the gate is turned, the source is replaced, or the source tells of a change of its link.
#pragma once

#include <functional>
#include <string>
#include <thread>

#include "core/engine/gate.h"
#include "core/engine/pools.h"
#include "core/engine/supervisor.h"
#include "core/engine/threads.h"
#include "transport/client.h"

namespace zvr {

/// The link is open, and nobody has set a client.
struct MissingClient : std::runtime_error {
    MissingClient() : std::runtime_error("the link has no client") {}
};

class Receiver final : public OwnedThread, public LossListener, public std::enable_shared_from_this<Receiver> {
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

    /// Waits for a reply, and reads meanwhile. Otherwise as EchoPool::await.
    std::optional<Bytes> await(EchoPool& pool, EchoPool::Key key, Deadline deadline, const InterruptCheck& onWait = {});

    /// Looks for the reply of a near device for some microseconds, and takes nothing. For who must not wait.
    void awaitBriefly(EchoPool& pool, EchoPool::Key key);

    /// On behalf of one that has the right: reads once, waiting until `until` at most and not beyond a ring of `wake`,
    /// and files what came. False if only the thread can go on; it has the right then.
    bool readFor(ReadingRight::Waiter& reader, const Wake* wake, Deadline until);
    /// Lets an epoll tell once when there is something to read; false if that cannot be told.
    bool watchOnce(int epoll) const;
    bool canBeWatched() const;
    ReadingRight& right() { return right_; }

    /// Why the link has ended, if it was open once and the device or the system has ended it.
    std::optional<std::error_code> loss() const;
    /// Throws the link's Failure then.
    void requireLink() const;
    /// Whether nothing can come at all: there is no link, or it has ended.
    bool isCut() const;
    /// Told of each such end, as a LossListener is. Set before the start.
    void onLoss(std::function<void(const LinkLoss& reason, Deadline when)> told) { onLoss_ = std::move(told); }
    void onLoss(const LinkLoss& reason, Deadline when) override;

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
    void setGate(std::shared_ptr<Gate> passes);
    void setForeignGate(std::function<bool()> pass) { foreignPass_ = std::move(pass); }
    /// Who waits may file through a sink that never makes it wait, which is asked each time.
    void setSink(Sink sink, std::function<bool()> neverWaits) {
        sink_ = std::move(sink);
        sinkNeverWaits_ = std::move(neverWaits);
    }
    /// Waits until it is to look again.
    void rest(std::chrono::milliseconds most);

    const std::shared_ptr<Gate> gate = std::make_shared<Gate>();

private:
    bool partsChanged() const noexcept { return supervisor_ && supervisor_->changed(); }
    bool changed() const noexcept { return killed_ || partsChanged(); }
    bool filePending();
    void wakeAtLoss();
    bool prepareTurn(std::uint64_t& turn);
    bool awaitBytes(PacketSource& source);
    ReadStatus cycle(PacketSource* source);
    bool othersMayRead() const { return sinkNeverWaits_() && !foreignPass_ && !trouble_ && !unfiled_; }
    std::shared_ptr<PacketSource> source() const;
    std::shared_ptr<Gate> gateNow() const;

    const std::size_t readLength_;
    Sink sink_;
    const ReportRead reportRead_;
    const std::shared_ptr<Supervisor<Receiver>> supervisor_;
    std::shared_ptr<Gate> gateNow_ = gate;
    Gate::Passed passed_ = 0;
    std::function<bool()> foreignPass_;
    // The holder's of the right.
    std::vector<Packet> pending_;  // received, and not filed yet
    std::function<bool()> sinkNeverWaits_ = [] { return true; };
    // What another's read brought that is the thread's to deal with: its status and failure, or that of the sink.
    std::optional<ReadStatus> trouble_;
    std::exception_ptr failure_, unfiled_;
    std::atomic<std::uint64_t> looksAsked_{0}, looksDone_{0};  // what has been replaced is not known before a look
    std::function<void(const LinkLoss& reason, Deadline when)> onLoss_;
    ReadingRight right_;

    std::atomic<bool> killed_{false}, ignoresUnfiled_{false}, readsLong_{false};
    mutable std::mutex mutex_;
    std::shared_ptr<PacketSource> source_;
};

}  // namespace zvr
