#include "transport/receiver.h"

namespace zvr {

namespace {

// A source that brings nothing without waiting for it must not make the thread burn a core.
constexpr std::chrono::milliseconds idlePause{1};
// A dead link must not flood anybody with reports.
constexpr std::chrono::milliseconds firstPause{100}, longestPause{10'000};

}  // namespace

Receiver::Receiver(std::string name, std::size_t readLength, Sink sink, Report report, ReportRead reportRead)
    : OwnedThread(std::move(name), std::move(report)),
      readLength_(readLength),
      sink_(std::move(sink)),
      reportRead_(std::move(reportRead)) {}

void Receiver::start() {
    startBody([self = shared_from_this()] { self->run(); });
}

void Receiver::run() {
    std::vector<Packet> packets;
    std::chrono::milliseconds pause = firstPause;
    while (!killed_) {
        const std::uint64_t turn = gate.pass();
        if (killed_) return;
        packets.clear();
        const Deadline begin = Clock::now();
        const Reading reading = cycle(packets);
        for (Packet& packet : packets) sink_(std::move(packet));
        if (reading == Reading::ended) gate.awaitTurn(turn);
        if (reading == Reading::idle) gate.awaitTurn(turn, begin + idlePause);
        if (reading == Reading::failed) {
            gate.awaitTurn(turn, begin + pause);
            pause = std::min(2 * pause, longestPause);
        } else {
            pause = firstPause;
        }
    }
}

Reading Receiver::cycle(std::vector<Packet>& packets) {
    std::shared_ptr<PacketSource> source;
    {
        const std::lock_guard lock(mutex_);
        source = source_;
    }
    try {
        if (source) return source->receive(readLength_, packets);
        if (!reportRead_) return Reading::ended;
        throw MissingClient();
    } catch (const std::exception&) {
        // A network link that fails has ended: nothing comes until somebody turns the gate.
        if (!reportRead_) return Reading::ended;
        if (!killed_) reportRead_(std::current_exception());
        return Reading::failed;
    }
}

void Receiver::end() {
    killed_ = true;
    gate.release();
}

void Receiver::setSource(std::shared_ptr<PacketSource> source) {
    const std::lock_guard lock(mutex_);
    source_ = std::move(source);
}

}  // namespace zvr
