#include "physics/output_port.h"

#include <bit>
#include <numbers>

namespace zvr::sim {

namespace {

struct Span {
    double least, most;
};
constexpr std::array<Span, 5> spans = {{{0, 5}, {0, 10}, {-5, 5}, {-10, 10}, {-2.5, 2.5}}};

// The place of a channel in a row of the channels of a mask; nothing if it is not one of them.
std::optional<std::size_t> placeIn(std::uint8_t mask, std::size_t channel) {
    if ((mask >> channel & 1) == 0) return std::nullopt;
    return static_cast<std::size_t>(std::popcount(mask & ((1U << channel) - 1)));
}

}  // namespace

double Form::at(double seconds) const {
    const double periods = seconds * frequency + phase / 360;
    const double place = periods - std::floor(periods);
    switch (kind) {
        case square: return offset + (place < dutyCycle ? amplitude : -amplitude);
        case triangle: {
            const double level = place < dutyCycle ? place / dutyCycle : (1 - place) / (1 - dutyCycle);
            return offset + amplitude * (2 * level - 1);
        }
        default: return offset + amplitude * std::sin(2 * std::numbers::pi * place);
    }
}

OutputPort::OutputPort(const AnalogOutputs& outputs) : outputs_(outputs) {
    for (std::size_t span = 0; span < spans.size(); ++span) {
        if (spans[span].least == outputs.least && spans[span].most == outputs.most) {
            setSpan(static_cast<std::uint8_t>(span));
        }
    }
}

bool OutputPort::setSpan(std::uint8_t span) {
    if (span >= spans.size()) return false;
    settings_.span = span;
    least_ = std::max(outputs_.least, spans[span].least);
    most_ = std::min(outputs_.most, spans[span].most);
    for (double& value : held_) value = clip(value);
    return true;
}

std::uint64_t OutputPort::sampleAt(Clock::time_point time) const {
    const double seconds = std::chrono::duration<double>(time - run_->start).count();
    constexpr double rounding = 1e-6;
    const auto sample = static_cast<std::uint64_t>(std::max(0.0, std::floor(seconds * run_->rate + rounding)));
    return run_->samples ? std::min(sample, *run_->samples - 1) : sample;
}

double OutputPort::valueAt(std::size_t channel, Clock::time_point time) const {
    const auto place = run_ && time >= run_->start ? placeIn(run_->mask, channel) : std::nullopt;
    if (!place) return held_[channel];
    const std::uint64_t sample = sampleAt(time);
    if (!run_->pushed) return clip(settings_.forms[channel].at(static_cast<double>(sample) / run_->rate));
    const auto width = static_cast<std::size_t>(std::popcount(run_->mask));
    const std::uint64_t rows = pushed_.size() / width;
    if (sample < first_ || rows == 0) return held_[channel];
    return pushed_[static_cast<std::size_t>(std::min(sample - first_, rows - 1)) * width + *place];
}

void OutputPort::settle() {
    if (!run_ || Clock::now() < run_->start) return;
    const Clock::time_point now = Clock::now();
    const std::uint64_t current = sampleAt(now);
    made_ = static_cast<std::uint32_t>(current + 1);
    if (run_->pushed) playPushed(current);
    const double seconds = std::chrono::duration<double>(now - run_->start).count();
    if (!run_->samples || seconds * run_->rate < static_cast<double>(*run_->samples)) return;
    for (std::size_t channel = 0; channel < held_.size(); ++channel) held_[channel] = valueAt(channel, now);
    run_.reset();
}

// Rows before the current one are over. A sample without a row is missing, and rows that come late belong to later
// samples.
void OutputPort::playPushed(std::uint64_t current) {
    const auto width = static_cast<std::size_t>(std::popcount(run_->mask));
    for (; first_ < current && pushed_.size() >= width; ++first_) {
        for (std::size_t channel = 0; channel < held_.size(); ++channel) {
            if (const auto place = placeIn(run_->mask, channel)) held_[channel] = pushed_[*place];
        }
        pushed_.erase(pushed_.begin(), pushed_.begin() + static_cast<std::ptrdiff_t>(width));
    }
    if (pushed_.size() >= width || first_ > current) return;
    missing_ += static_cast<std::uint32_t>(current + 1 - first_);
    first_ = current + 1;
}

void OutputPort::close() {
    closeStreaming();
    drives_ = false;
    held_.fill(clip(0));
}

bool OutputPort::canWrite(std::size_t channel, double value) const {
    const bool taken = run_ && placeIn(run_->mask, channel);
    return !taken && value >= least_ && value <= most_;
}

void OutputPort::write(std::size_t channel, double value) {
    held_[channel] = value;
    drives_ = true;
}

void OutputPort::openStreaming() {
    stop();
    state_ = OutputState::open;
    drives_ = true;
}

void OutputPort::start() {
    const bool nothing = settings_.mode == someSamples && settings_.samples == 0;
    if (state_ != OutputState::open || settings_.mode == onDemand || settings_.mask == 0 || nothing) return;
    stop();
    run_ = Run{Clock::now(), settings_.rate, {}, settings_.mask, buffered_};
    if (settings_.mode == someSamples) run_->samples = settings_.samples;
    first_ = 0;
    made_ = missing_ = 0;
}

void OutputPort::stop() {
    if (!run_) return;
    const Clock::time_point now = Clock::now();
    for (std::size_t channel = 0; channel < held_.size(); ++channel) held_[channel] = valueAt(channel, now);
    run_.reset();
}

void OutputPort::closeStreaming() {
    stop();
    state_ = OutputState::idle;
    buffered_ = false;
    pushed_.clear();
}

void OutputPort::initBuffer() {
    stop();
    buffered_ = true;
    pushed_.clear();
}

bool OutputPort::push(const std::vector<double>& values) {
    if (!buffered_ || pushed_.size() + values.size() > bufferSize) return false;
    for (const double value : values) {
        if (!(value >= least_ && value <= most_)) return false;
    }
    pushed_.insert(pushed_.end(), values.begin(), values.end());
    return true;
}

}  // namespace zvr::sim
