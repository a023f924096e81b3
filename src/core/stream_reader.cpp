#include "core/stream_reader.h"

#include <thread>
#include <utility>

namespace zvr {

namespace {

// A queue that rings for somebody else is looked at this often.
constexpr std::chrono::milliseconds lookAgain{50};
constexpr std::chrono::seconds betweenWarnings{1};
// Frames that come closer together than this are taken several at a time: waking costs more than a frame does.
constexpr std::chrono::microseconds dense{1000}, gather{500};

}  // namespace

StreamReader::StreamReader(std::string name, std::vector<Pair> pairs, RowLayout layout, Report report,
                           OnOverflow onOverflow)
    : OwnedThread(std::move(name), std::move(report)),
      pairs_(std::move(pairs)),
      onOverflow_(std::move(onOverflow)),
      layout_(std::move(layout)) {}

void StreamReader::start() {
    startBody([self = shared_from_this()] { self->run(); });
}

void StreamReader::run(const std::vector<Pair>& pairs, Gate& gate) {
    for (const Pair& pair : pairs) pair.frames->setBell(bell_);
    Deadline lastFound{};
    while (!ended_) {
        gate.pass();
        const std::uint64_t rung = bell_->count();
        bool any = false;
        for (const Pair& pair : pairs) any = drain(pair) || any;
        if (ended_) return;
        if (!any) {
            bell_->await(rung, Clock::now() + lookAgain);
        } else if (const Deadline now = Clock::now(); now - std::exchange(lastFound, now) < dense) {
            std::this_thread::sleep_for(gather);
        }
    }
}

// Takes what has arrived until now; a device that goes on sending does not keep the others waiting.
bool StreamReader::drain(const Pair& pair) {
    const std::size_t waiting = pair.frames->size();
    for (std::size_t i = 0; i < waiting && !ended_; ++i) {
        std::optional<StreamItem> item = pair.frames->tryGet();
        if (!item) break;
        if (!*item) continue;  // a marker that only wakes
        const std::size_t dropped = pair.rows->put(layout(), std::move(**item));
        if (dropped != 0 && Clock::now() >= nextWarning_) {
            nextWarning_ = Clock::now() + betweenWarnings;
            onOverflow_();
        }
    }
    return waiting != 0;
}

void StreamReader::end() {
    ended_ = true;
    gate.release();
    bell_->ring();
}

RowLayout StreamReader::layout() const {
    const std::lock_guard lock(mutex_);
    return layout_;
}

void StreamReader::setLayout(RowLayout layout) {
    const std::lock_guard lock(mutex_);
    layout_ = std::move(layout);
}

}  // namespace zvr
