#include "core/engine/stream_reader.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace zvr {

namespace {

// A queue that notifies another reader is polled at this interval.
constexpr std::chrono::milliseconds lookAgainAfter{50};
constexpr std::chrono::seconds warningSpan{1};
constexpr std::size_t all = static_cast<std::size_t>(-1);
constexpr std::size_t mostWarnings = 1000;  // in that span
// Frames less than `dense` apart are taken in batches: a wake-up costs more than a frame.
constexpr std::chrono::microseconds dense{1000}, gather{500};

}  // namespace

StreamReader::StreamReader(std::string name, std::vector<Pair> pairs, RowLayout layout, Report report,
                           OnOverflow onOverflow, std::shared_ptr<Supervisor<StreamReader>> supervisor,
                           std::shared_ptr<Gate> passes)
    : OwnedThread(std::move(name), std::move(report)),
      gate(std::move(passes)),
      onOverflow_(std::move(onOverflow)),
      supervisor_(std::move(supervisor)),
      layout_(std::move(layout)) {
    setRoute(std::move(pairs), gate);
}

void StreamReader::rest(std::chrono::milliseconds most) { notifier_->await(notifier_->count(), Clock::now() + most); }

void StreamReader::start() {
    for (const Pair& pair : pairs_) pair.frames->setTaker(weak_from_this());
    startBody([self = shared_from_this()] { self->run(); });
}

void StreamReader::run() {
    Deadline lastFound{};
    std::unique_lock route(route_);
    const struct Running {
        bool& runs;
        explicit Running(bool& now) : runs(now) { runs = true; }
        ~Running() { runs = false; }
    } running(runs_);
    const auto waiting = [&](auto wait) {
        route.unlock();
        wait();
        route.lock();
    };
    while (!ended_) {
        if (changed()) {
            supervisor_->renew(*this);
            continue;
        }
        gateNow_->pass(passed_, [this] { return changed(); });
        if (changed()) continue;
        const std::uint64_t notified = notifier_->count();
        if (!drainAll(all)) {
            bool isNotified = false;
            waiting([&] { isNotified = notifier_->await(notified, Clock::now() + lookAgainAfter); });
            if (isNotified && waitsInQueue_) drainAll(1);
        } else if (const Deadline now = Clock::now(); now - std::exchange(lastFound, now) < dense) {
            waiting([] { std::this_thread::sleep_for(gather); });
        }
    }
}

bool StreamReader::tryTake(const StreamFifo& queue, StreamItem& item) {
    std::shared_ptr<RowQueue> rows;
    bool isEnough = false;
    {
        const std::unique_lock route(route_, std::try_to_lock);
        if (!route || !runs_ || ended_ || changed() || waitsInQueue_) return false;
        if (!item.isFrame || item.object || gateNow_->locked()) return false;
        const auto pair = std::ranges::find(pairs_, &queue, [](const Pair& each) { return each.frames.get(); });
        if (pair == pairs_.end()) return false;
        rows = pair->rows;
        const std::lock_guard lock(mutex_);
        if (!rows->putWhole(layout_, item.frame, item.number, isEnough)) return false;
    }
    if (isEnough) rows->wake();
    return true;
}

bool StreamReader::drainAll(std::size_t most) {
    bool any = false;
    for (const Pair& pair : pairs_) {
        if (changed()) break;
        any = drain(pair, most) || any;
    }
    return any;
}

// Takes the frames that have arrived so far, so that a device that keeps sending does not starve the other queues.
bool StreamReader::drain(const Pair& pair, std::size_t most) {
    const std::size_t waiting = std::min(pair.frames->size(), most);
    for (std::size_t i = 0; i < waiting && !ended_; ++i) {
        std::optional<StreamItem> item = pair.frames->tryGet();
        if (!item) break;
        if (changed()) {
            pair.frames->putBack(std::move(*item));
            break;
        }
        if (item->isMarker()) continue;  // only wakes the thread
        if (!item->isFrame) throw std::invalid_argument("an item of the queue is no frame");
        RowLayout layout;
        {
            const std::lock_guard lock(mutex_);
            layout = layout_;
        }
        tellOfOverflow(pair.rows.get(), pair.rows->put(layout, std::move(item->frame), item->number));
    }
    return waiting != 0;
}

void StreamReader::tellOfOverflow(const RowQueue* queue, std::size_t dropped) {
    if (dropped == 0) return;
    Warned& warned = warned_[queue];
    if (const Deadline now = Clock::now(); now - warned.since >= warningSpan) warned = {now, 0};
    const std::size_t reported = std::min(dropped, mostWarnings - warned.count);
    warned.count += reported;
    if (reported != 0) onOverflow_(reported);
}

void StreamReader::end() {
    ended_ = true;
    if (isForeign()) return;  // the child has no such thread, and its locks may be held for ever
    gate->release();
    lookAgain();
}

void StreamReader::lookAgain() noexcept {
    if (isForeign()) return;
    gate->wake();
    notifier_->notify();
}

void StreamReader::setLayout(RowLayout layout) {
    const std::lock_guard lock(mutex_);
    layout_ = std::move(layout);
}

void StreamReader::setRoute(std::vector<Pair> pairs, std::shared_ptr<Gate> passes, bool waitsInQueue) {
    waitsInQueue_ = waitsInQueue;
    pairs_ = std::move(pairs);
    if (gateNow_ != passes) passed_ = passes->openings();
    gateNow_ = std::move(passes);
    for (const Pair& pair : pairs_) {
        pair.frames->setNotifier(notifier_);
        pair.frames->setTaker(weak_from_this());
    }
}

}  // namespace zvr
