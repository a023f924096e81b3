#include "modules/sampling.h"

#include <algorithm>
#include <cmath>

#include "core/wire/constants.h"

namespace zvr::sim {

namespace {

constexpr double frameSeconds = 0.005;
constexpr std::size_t frameBytes = 1390;          // fits one segment, header included
constexpr std::size_t fastFrameBytes = 8192;      // spares system calls
constexpr std::size_t longestFrame = 0x7FFF - 4;  // of rows; a longer one is not recognised
constexpr std::size_t turnBytes = 1 << 19;        // made before anything else gets its turn

}  // namespace

SampleRun::SampleRun(Device& device, RunPlan plan, std::shared_ptr<SampleCounters> counters)
    : device_(device),
      plan_(std::move(plan)),
      counters_(std::move(counters)),
      fast_(device.signals.fast),
      rowSize_(plan_.channels * plan_.coding.bytes),
      frames_(plan_.chipSelects.size()),
      alarm_(device.scheduler, [this] { advance(); }) {
    const std::size_t wanted =
        device.signals.frameRows != 0 ? device.signals.frameRows
        : fast_                       ? fastFrameBytes / rowSize_
                : std::min(static_cast<std::size_t>(std::lround(plan_.rate * frameSeconds)), frameBytes / rowSize_);
    frameRows_ = std::clamp<std::size_t>(wanted, 1, longestFrame / rowSize_);
    takeSignals();
    ++counters_->runs;
}

void SampleRun::takeSignals() {
    changes_ = device_.signals.changes;
    sources_.clear();
    for (const std::uint8_t chipSelect : plan_.chipSelects) {
        for (std::size_t channel = 0; channel < plan_.channels; ++channel) {
            const std::uint64_t stream = plan_.port * 16U + chipSelect;
            sources_.emplace_back(device_.signals, channel, stream, plan_.rate, plan_.coding);
        }
    }
}

// Each from its number, so that nothing adds up.
SampleRun::Clock::time_point SampleRun::timeOf(std::uint64_t row) const {
    constexpr double never = 1e9;  // s; a clock does not count much further
    const std::chrono::duration<double> after(std::min(never, static_cast<double>(row) / plan_.rate));
    return plan_.start + std::chrono::ceil<Clock::duration>(after);
}

std::uint64_t SampleRun::dueRows(Clock::time_point now) const {
    constexpr double rounding = 1e-6;
    const double last = std::floor(std::chrono::duration<double>(now - plan_.start).count() * plan_.rate + rounding);
    return static_cast<std::uint64_t>(last) + 1;
}

void SampleRun::advance() {
    const Clock::time_point now = Clock::now();
    if (now < plan_.start) return alarm_.set(plan_.start);
    const std::uint64_t end = plan_.rows.value_or(UINT64_MAX);
    const std::uint64_t due = fast_ ? end : std::min(end, dueRows(now));
    if (!fast_ && due > made_ + 2 * frameRows_) counters_->lateRows += static_cast<std::uint32_t>(due - made_);
    waits_ = false;
    if (changes_ != device_.signals.changes) takeSignals();
    for (std::size_t bytes = 0; made_ < due && bytes < turnBytes;) {
        if (fast_ && filled_ == 0 && !device_.hasRoom()) {
            waits_ = true;
            return;
        }
        const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(due - made_, frameRows_ - filled_));
        makeRows(count);
        bytes += count * rowSize_ * frames_.size();
        if (filled_ == frameRows_ || finished()) sendFrames();
    }
    if (!finished()) alarm_.set(made_ < due ? now : timeOf(std::min(end, made_ + frameRows_ - filled_) - 1));
}

// Not at once, since it is called amid the work of a connection.
void SampleRun::resume() {
    if (!waits_) return;
    waits_ = false;
    alarm_.set(Clock::now());
}

void SampleRun::makeRows(std::size_t count) {
    const std::size_t header = (plan_.command < 256 ? 4 : 5) + 2;
    for (std::size_t stream = 0; stream < frames_.size(); ++stream) {
        auto& frame = frames_[stream];
        if (!frame) {
            const auto rows = std::min<std::uint64_t>(frameRows_, plan_.rows.value_or(UINT64_MAX) - made_);
            Bytes data(2 + static_cast<std::size_t>(rows) * rowSize_);
            data[0] = plan_.port;
            data[1] = plan_.chipSelects[stream];
            frame = std::make_shared<Bytes>(buildFrame(plan_.command, data));
        }
        std::uint8_t* row = frame->data() + header + filled_ * rowSize_;
        for (std::size_t channel = 0; channel < plan_.channels; ++channel, row += plan_.coding.bytes) {
            writeChannel(stream, channel, count, row);
        }
    }
    made_ += count;
    filled_ += count;
    counters_->rows += static_cast<std::uint32_t>(count);
    counters_->samples += static_cast<std::uint32_t>(count * plan_.channels * frames_.size());
}

// Inputs wired to an output show its voltage.
void SampleRun::writeChannel(std::size_t stream, std::size_t channel, std::size_t count, std::uint8_t* to) const {
    const auto& outputs = device_.outputVoltages;
    if (!outputs || !outputs->drives(plan_.port, channel)) {
        return sources_[stream * plan_.channels + channel].write(made_, count, to, rowSize_);
    }
    for (std::size_t i = 0; i < count; ++i, to += rowSize_) {
        const double voltage = outputs->voltage(plan_.port, channel, timeOf(made_ + i));
        writeCode(plan_.coding.codeOf(voltage), plan_.coding.bytes, to);
    }
}

void SampleRun::sendFrames() {
    filled_ = 0;
    for (std::shared_ptr<Bytes>& frame : frames_) {
        ++counters_->framesMade;
        ++(device_.stream(plan_.command, Frame(std::move(frame))) ? counters_->framesSent : counters_->framesDropped);
        frame.reset();
    }
}

}  // namespace zvr::sim
