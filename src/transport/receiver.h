// The receive thread of one connection.
//
// Who runs what: the thread runs Receiver::run from the construction of a device to its close. It reads from the
// source, cuts frames and files them through the sink. The user's side only opens and shuts the gate, replaces the
// source and ends the thread. The thread is never joined: it holds all it needs.
//
// A thread that waits for a reply reads in its place (reading_right.h), as long as that makes no difference: the gate
// is open, source and sink are the library's own, and nothing has been replaced. Any other outcome of a read (a
// failure, the end of the link, a frame that cannot be filed) is left to the receive thread.
//
// After a read that fails or meets the end, the next turn comes after a pause, which grows while that goes on, or at
// once when the gate is turned, the source is replaced, or the source reports a change of its link.
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

/// The link is open, but no client is set.
struct MissingClient : std::runtime_error {
    MissingClient() : std::runtime_error("the link has no client") {}
};

class Receiver final : public OwnedThread, public LossListener, public std::enable_shared_from_this<Receiver> {
public:
    /// Files one packet; what it throws ends the thread, unless `ignoresUnfiled`.
    using Sink = std::function<void(Packet)>;

    /// Called when a read failed, on the thread that reads.
    using ReportRead = std::function<void(std::exception_ptr)>;

    /// With `reportRead` failed reads are reported, and so is a missing client. Without a supervisor the thread files
    /// through `sink`; with one, the supervisor sets the source and the sink.
    Receiver(std::string name, std::size_t readLength, Sink sink, Report report, ReportRead reportRead = {});
    Receiver(std::string name, std::size_t readLength, Report report, ReportRead reportRead,
             std::shared_ptr<Supervisor<Receiver>> supervisor);

    /// Starts the thread. It waits at the gate until that is opened.
    void start();

    /// The body of the thread; also runs on the caller's thread, until `end`.
    void run();

    /// Waits for a reply, and reads meanwhile. Otherwise as EchoPool::await.
    std::optional<Bytes> await(EchoPool& pool, EchoPool::Key key, Deadline deadline, const InterruptCheck& onWait = {});

    /// Polls for the reply of a nearby device for some microseconds, and takes nothing. For callers that must not
    /// block.
    void awaitBriefly(EchoPool& pool, EchoPool::Key key);

    /// For the holder of the right: reads once, waiting until `until` at most or until `wake` is notified, and files
    /// what was read. False if only the thread can go on; it has the right then.
    bool readFor(ReadingRight::Waiter& reader, const Wake* wake, Deadline until);
    /// Watches the link in an epoll, for one event, until there is something to read; false if it cannot be watched.
    bool watchOnce(int epoll) const;
    bool canBeWatched() const;
    ReadingRight& right() { return right_; }

    /// Why the link has ended, if it was open once and the device or the system has ended it.
    std::optional<std::error_code> loss() const;
    /// Throws the link's Failure if it has ended so.
    void requireLink() const;
    /// Ends the waits for what the link brings: it is being disconnected, or closed for good.
    void endWaits() noexcept;
    /// Number of endWaits() calls so far.
    std::uint64_t waitsEnded() const noexcept { return waitsEnded_; }
    /// Whether what has been waited for since that number can no longer come; and throws the link's Failure then.
    bool isOver(std::uint64_t since) const { return waitsEnded_ != since || loss().has_value(); }
    void requireLink(std::uint64_t since) const;
    FailureId linkFailure() const noexcept { return linkFailure_; }
    /// Whether nothing can arrive at all: there is no link, or it has ended.
    bool isCut() const;
    /// Called at each loss, as a LossListener is. Set before the start.
    void onLoss(std::function<void(const LinkLoss& reason, Deadline when)> told) { onLoss_ = std::move(told); }
    void onLoss(const LinkLoss& reason, Deadline when) override;

    /// Ends the thread soon, interrupting its read.
    void end() override;

    /// Closes the link that is read from.
    void closeLink() noexcept;

    /// A pending read on the previous source is interrupted; no data is lost.
    void setSource(std::shared_ptr<PacketSource> source);

    /// Wakes the thread, at its gate or in its read, to ask its supervisor.
    void lookAgain() noexcept;

    /// Makes the thread skip a packet that cannot be filed. For links on which any host may send.
    void ignoreUnfiled() { ignoresUnfiled_ = true; }

    /// On the thread itself. Null means the thread's own gate; `pass` of a foreign one returns whether it was passed.
    void setGate(std::shared_ptr<Gate> passes);
    void setForeignGate(std::function<bool()> pass) { foreignPass_ = std::move(pass); }
    /// Waiters may file through the sink only while `neverWaits` returns true; it is asked each time.
    void setSink(Sink sink, std::function<bool()> neverWaits) {
        sink_ = std::move(sink);
        sinkNeverWaits_ = std::move(neverWaits);
    }
    /// Waits until `lookAgain`, at most this long.
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
    // Owned by the holder of the right.
    std::vector<Packet> pending_;  // received but not filed yet
    std::function<bool()> sinkNeverWaits_ = [] { return true; };
    // Left to the thread by another's read: its status and failure, or the failure of the sink.
    std::optional<ReadStatus> trouble_;
    std::exception_ptr failure_, unfiled_;
    std::atomic<std::uint64_t> looksAsked_{0}, looksDone_{0};  // a replaced source takes effect at the next look
    std::function<void(const LinkLoss& reason, Deadline when)> onLoss_;
    ReadingRight right_;

    std::atomic<bool> killed_{false}, ignoresUnfiled_{false}, readsLong_{false};
    std::atomic<std::uint64_t> waitsEnded_{0};
    std::atomic<FailureId> linkFailure_{FailureId::NetworkConnectionLostError};  // of the last source
    mutable std::mutex mutex_;
    std::shared_ptr<PacketSource> source_;
};

}  // namespace zvr
