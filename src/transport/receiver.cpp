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
    : Receiver(std::move(name), readLength, std::move(report), std::move(reportRead), nullptr) {
    sink_ = std::move(sink);
}

Receiver::Receiver(std::string name, std::size_t readLength, Report report, ReportRead reportRead,
                   std::shared_ptr<Supervisor<Receiver>> supervisor)
    : OwnedThread(std::move(name), std::move(report)),
      readLength_(readLength),
      reportRead_(std::move(reportRead)),
      supervisor_(std::move(supervisor)) {}

void Receiver::start() {
    startBody([self = shared_from_this()] { self->run(); });
}

void Receiver::run() {
    Pause silent = silentPause, reporting = reportPause;
    while (!killed_) {
        if (partsChanged()) {  // not at an end that comes meanwhile: there may be nobody to ask
            supervisor_->renew(*this);
            continue;
        }
        if (!filePending()) continue;
        if (foreignPass_ && !foreignPass_()) continue;
        const std::uint64_t turn = gateNow_->pass(passed_, [this] { return changed(); });
        if (changed()) continue;
        const Deadline begin = Clock::now();
        const ReadStatus reading = cycle();
        if (!filePending()) continue;
        switch (reading) {
            case ReadStatus::ended: gateNow_->awaitTurn(turn, begin + silent.next()); continue;
            case ReadStatus::failed:
                gateNow_->awaitTurn(turn, begin + (reportRead_ ? reporting : silent).next());
                continue;
            case ReadStatus::idle: gateNow_->awaitTurn(turn, begin + idlePause); break;
            case ReadStatus::data: break;
        }
        silent.reset();
        reporting.reset();
    }
}

// Tells whether all is filed: what has come before a change is filed behind it.
bool Receiver::filePending() {
    std::size_t filed = 0;
    const auto drop = [&] { pending_.erase(pending_.begin(), pending_.begin() + static_cast<std::ptrdiff_t>(filed)); };
    while (filed < pending_.size() && !partsChanged()) {
        try {
            sink_(std::move(pending_[filed++]));
        } catch (...) {
            if (ignoresUnfiled_) continue;
            drop();
            throw;
        }
    }
    drop();
    return pending_.empty();
}

ReadStatus Receiver::cycle() {
    const std::shared_ptr<PacketSource> read = source();
    try {
        if (read) return read->receive(readLength_, pending_);
        if (!reportRead_) return ReadStatus::ended;
        throw MissingClient();
    } catch (const std::exception&) {
        if (reportRead_ && !killed_) reportRead_(std::current_exception());
        return ReadStatus::failed;
    }
}

void Receiver::end() {
    killed_ = true;
    if (isForeign()) return;
    gate->release();
    lookAgain();
}

void Receiver::closeLink() noexcept {
    if (isForeign()) return;
    if (const auto client = std::dynamic_pointer_cast<Client>(source())) client->close();
    setSource(nullptr);
}

void Receiver::lookAgain() noexcept {
    if (isForeign()) return;
    gate->wake();
    if (const auto passed = gateNow(); passed != gate) passed->wake();
    if (const auto read = source()) read->interrupt();
}

void Receiver::rest(std::chrono::milliseconds most) { gateNow_->awaitTurn(gateNow_->turn(), Clock::now() + most); }

std::shared_ptr<PacketSource> Receiver::source() const {
    const std::lock_guard lock(mutex_);
    return source_;
}

std::shared_ptr<Gate> Receiver::gateNow() const {
    const std::lock_guard lock(mutex_);
    return gateNow_;
}

void Receiver::setSource(std::shared_ptr<PacketSource> source) {
    if (isForeign()) return;
    const auto gateOfTurns = gateNow();
    if (source) source->tellChanges(gateOfTurns);
    {
        const std::lock_guard lock(mutex_);
        if (source == source_) return;
        source_.swap(source);
    }
    if (source) source->interrupt();
    gateOfTurns->wake();
}

void Receiver::setGate(std::shared_ptr<Gate> passes) {
    foreignPass_ = nullptr;
    if (!passes) passes = gate;
    if (gateNow_ == passes) return;
    passed_ = passes->openings();
    const std::lock_guard lock(mutex_);
    gateNow_ = std::move(passes);
}

}  // namespace zvr
