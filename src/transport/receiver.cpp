#include "transport/receiver.h"

#include <utility>

namespace zvr {

namespace {

// A source that brings nothing without waiting for it must not make the thread burn a core.
constexpr std::chrono::milliseconds idlePause{1};

// How long to leave a link alone that has ended or fails, while nobody tells of a change.
struct Pause {
    std::chrono::milliseconds first, longest, now = first;

    std::chrono::milliseconds next() { return std::exchange(now, std::min(2 * now, longest)); }
    void reset() { now = first; }
};
constexpr Pause silentPause{std::chrono::milliseconds(1), std::chrono::milliseconds(1'000)};
// A dead link must not flood anybody with reports.
constexpr Pause reportPause{std::chrono::milliseconds(100), std::chrono::milliseconds(10'000)};

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
    Pause silent = silentPause, reporting = reportPause;
    while (!killed_) {
        const std::uint64_t turn = gate.pass();
        if (killed_) return;
        packets.clear();
        const Deadline begin = Clock::now();
        const Reading reading = cycle(packets);
        for (Packet& packet : packets) file(std::move(packet));
        switch (reading) {
            case Reading::ended: gate.awaitTurn(turn, begin + silent.next()); continue;
            case Reading::failed: gate.awaitTurn(turn, begin + (reportRead_ ? reporting : silent).next()); continue;
            case Reading::idle: gate.awaitTurn(turn, begin + idlePause); break;
            case Reading::data: break;
        }
        silent.reset();
        reporting.reset();
    }
}

Reading Receiver::cycle(std::vector<Packet>& packets) {
    const std::shared_ptr<PacketSource> read = source();
    try {
        if (read) return read->receive(readLength_, packets);
        if (!reportRead_) return Reading::ended;
        throw MissingClient();
    } catch (const std::exception&) {
        if (reportRead_ && !killed_) reportRead_(std::current_exception());
        return Reading::failed;
    }
}

void Receiver::file(Packet packet) {
    try {
        sink_(std::move(packet));
    } catch (...) {
        if (!ignoresUnfiled_) throw;
    }
}

void Receiver::end() {
    killed_ = true;
    if (isForeign()) return;
    gate.release();
    if (const auto read = source()) read->interrupt();
}

std::shared_ptr<PacketSource> Receiver::source() const {
    const std::lock_guard lock(mutex_);
    return source_;
}

void Receiver::setSource(std::shared_ptr<PacketSource> source) {
    if (isForeign()) return;
    if (source) source->tellChanges(std::shared_ptr<Gate>(shared_from_this(), &gate));
    {
        const std::lock_guard lock(mutex_);
        source_.swap(source);
    }
    if (source) source->interrupt();
    gate.ring();
}

}  // namespace zvr
