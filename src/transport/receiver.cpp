#include "transport/receiver.h"

#include <utility>

namespace zvr {

namespace {

// A source that returns nothing without waiting must not keep the thread spinning.
constexpr std::chrono::milliseconds idlePause{1};

// Pause between reads of a link that has ended or fails, unless a change is notified.
struct Pause {
    std::chrono::milliseconds first, longest, now = first;

    std::chrono::milliseconds next() { return std::exchange(now, std::min(2 * now, longest)); }
    void reset() { now = first; }
};
constexpr Pause silentPause{std::chrono::milliseconds(1), std::chrono::milliseconds(1'000)};
// A dead link must not flood the log with reports.
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
    const struct Leaving {
        ReadingRight& right;
        ~Leaving() { right.give(false); }
    } leaving{right_};
    Pause silent = silentPause, reporting = reportPause;
    std::uint64_t turn = 0;
    while (!killed_) {
        const bool holds = right_.take() == ReadingRight::Turn::own;
        if (holds && !prepareTurn(turn)) continue;
        const Deadline begin = Clock::now();
        const std::shared_ptr<PacketSource> read = source();
        if (read && read->waitsApart() && !(holds && trouble_)) {
            if (holds) right_.give(othersMayRead());
            if (!awaitBytes(*read)) continue;
        } else if (!holds) {
            right_.hurry();  // the event loop watches a source that has been replaced
            continue;
        } else if (read && othersMayRead() && read->isShared() && (readsLong_ = true, right_.isWanted())) {
            right_.give(true);
            continue;
        }
        const ReadStatus reading = cycle(read.get());
        if (!filePending()) {
            right_.give(false);
            continue;
        }
        wakeAtLoss();
        right_.give(othersMayRead());
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
    setSource(nullptr);  // it may have been set again since the link was closed
}

// Prepares each read. Returns false, with the right given back, if the loop must start over.
bool Receiver::prepareTurn(std::uint64_t& turn) {
    if (unfiled_) std::rethrow_exception(std::exchange(unfiled_, nullptr));
    const struct Look {
        Receiver& self;
        const std::uint64_t asked = self.looksAsked_;
        ~Look() {
            const bool isNew = self.looksDone_.exchange(asked) != asked;
            if (isNew) self.wakeAtLoss();
        }
    } look{*this};
    if (partsChanged()) {  // not `changed()`: after `end` the supervisor may be gone
        supervisor_->renew(*this);
    } else if (filePending() && (!foreignPass_ || foreignPass_())) {
        const auto passed = gateNow_->tryPass(passed_);
        if (passed && !changed()) {
            turn = *passed;
            return true;
        }
        right_.give(false);
        if (!passed) gateNow_->awaitPassable(passed_, [this] { return changed(); });
        return false;
    }
    right_.give(false);
    return false;
}

// Without the right: waits for something to read and for the turn to read it.
bool Receiver::awaitBytes(PacketSource& source) {
    for (;;) {
        try {
            if (!source.awaitBytes()) return false;
        } catch (const std::exception&) {
            // The read will report it.
        }
        if (changed()) return false;
        if (right_.take(true) == ReadingRight::Turn::others) continue;
        if (!changed()) return true;
        right_.give(false);
        return false;
    }
}

// Returns whether everything is filed: packets received before a change of the parts are filed after it.
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

ReadStatus Receiver::cycle(PacketSource* source) {
    const struct Reading {
        std::atomic<bool>& readsLong;
        ~Reading() { readsLong = false; }
    } reading{readsLong_};
    std::exception_ptr failure = std::exchange(failure_, nullptr);
    const auto trouble = std::exchange(trouble_, std::nullopt);
    if (trouble && !failure) return *trouble;
    if (!failure) {
        try {
            if (source != nullptr) return source->receive(readLength_, pending_);
            if (!reportRead_) return ReadStatus::ended;
            throw MissingClient();
        } catch (const std::exception&) {
            failure = std::current_exception();
        }
    }
    if (reportRead_ && !killed_) reportRead_(failure);
    return ReadStatus::failed;
}

bool Receiver::readFor(ReadingRight::Waiter& reader, const Wake* wake, Deadline until) {
    const bool mayGoOn = [&] {
        if (changed() || !sinkNeverWaits_() || gateNow_->locked()) return false;
        const std::shared_ptr<PacketSource> read = source();
        try {
            const auto reading = read ? read->receiveFor(wake, until, readLength_, pending_) : std::nullopt;
            if (!reading) return false;
            if (*reading == ReadStatus::ended) trouble_ = reading;
        } catch (const std::exception&) {
            trouble_ = ReadStatus::failed;
            failure_ = std::current_exception();
        }
        if (!pending_.empty()) right_.noteRead();
        try {
            return filePending() && !trouble_;
        } catch (...) {
            unfiled_ = std::current_exception();
            return false;
        }
    }();
    if (mayGoOn) return true;
    right_.leaveToThread(reader);
    if (const auto read = source()) read->interrupt();
    return false;
}

std::optional<std::error_code> Receiver::loss() const {
    if (looksAsked_ != looksDone_) return std::nullopt;
    const auto read = source();
    const auto why = read ? read->loss() : std::nullopt;
    return why && *why != std::errc::not_connected ? why : std::nullopt;
}

bool Receiver::isCut() const {
    const auto read = source();
    return killed_ || !read || read->loss();
}

void Receiver::requireLink() const {
    if (!loss()) return;
    if (const auto read = source()) throw read->lossFailure();
}

void Receiver::endWaits() noexcept {
    if (isForeign()) return;
    ++waitsEnded_;
    right_.tellAll();
}

void Receiver::requireLink(std::uint64_t since) const {
    if (waitsEnded_ != since) throw Failure(linkFailure_, killed_ ? closedForGood : notConnected);
    requireLink();
}

// Called after the last received packet has been filed.
void Receiver::wakeAtLoss() {
    if (loss()) right_.tellAll();
}

void Receiver::onLoss(const LinkLoss& reason, Deadline when) {
    if (!killed_ && onLoss_) onLoss_(reason, when);
}

std::optional<Bytes> Receiver::await(EchoPool& pool, EchoPool::Key key, Deadline deadline,
                                     const InterruptCheck& onWait) {
    if (auto data = pool.take(key)) return data;
    const std::uint64_t since = waitsEnded_;
    const auto waiter = ThreadWaiter::ofThisThread();
    struct Stay {
        Receiver& receiver;
        ThreadWaiter& waiter;
        const InterruptCheck& onWait;

        void enter() {
            receiver.right_.enter(waiter);
            if (waiter.hasTurn() || !receiver.readsLong_) return;
            if (const auto read = receiver.source()) read->interrupt();
        }
        ~Stay() { receiver.right_.leave(waiter); }
    } stay{*this, *waiter, onWait};
    stay.enter();
    if (waiter->hasTurn()) {
        // Most replies arrive at once, to the thread that reads; the code below serves the other cases.
        readFor(*waiter, nullptr, deadline);
        if (Clock::now() >= deadline) return std::nullopt;
        if (auto data = pool.take(key)) return data;
        if (isOver(since)) {
            if (auto data = pool.take(key)) return data;  // it was filed before the end
            requireLink(since);
        }
    }
    InterruptCheck check;
    if (onWait) {
        check = [&stay] {  // it may run any code, even wait for a reply
            stay.receiver.right_.leave(stay.waiter);
            stay.onWait();
            stay.enter();
        };
    }
    return pool.awaitWith(*waiter, key, deadline, check, [this, since](ThreadWaiter& held, Deadline until) {
        if (!held.hasTurn()) {
            if (held.park(until)) return true;
        } else {
            readFor(held, &held.wake(), until);
            if (held.takeReply()) return true;
        }
        const bool isLate = isOver(since);
        if (held.takeReply()) return true;
        if (isLate) requireLink(since);
        return false;
    });
}

void Receiver::awaitBriefly(EchoPool& pool, EchoPool::Key key) {
    if (!canBeWatched()) return;
    const auto waiter = ThreadWaiter::ofThisThread();
    right_.enter(*waiter);
    if (waiter->hasTurn()) {
        pool.yieldFor(key, [&] {
            if (waiter->hasTurn()) readFor(*waiter, nullptr, Clock::now());
        });
    }
    right_.leave(*waiter);
}

bool Receiver::canBeWatched() const {
    const auto read = source();
    return read && read->waitsApart();
}

bool Receiver::watchOnce(int epoll) const {
    const auto read = source();
    return read && read->watchOnce(epoll);
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
    ++looksAsked_;
    right_.hurry();
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
    if (source) {
        linkFailure_ = source->failure();
        source->tellChanges(gateOfTurns);
        const auto why = source->loss();
        const bool isLost = why && *why != std::errc::not_connected;
        if (const auto self = weak_from_this().lock()) source->losses->add(self, isLost);
    }
    {
        const std::lock_guard lock(mutex_);
        if (source == source_) return;
        source_.swap(source);
    }
    if (source) {
        source->losses->remove(*this);
        source->interrupt();
    }
    right_.hurry();
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
