// One port of analog outputs: what each channel is at any time.
#pragma once

#include <array>
#include <cmath>
#include <deque>
#include <optional>

#include "device/models.h"
#include "device/scheduler.h"

namespace zvr::sim {

/// A generated signal. The phase is in degrees; the duty cycle is the part of a period in which a square is high and a
/// triangle rises.
struct Form {
    enum Kind : std::uint8_t { sine = 1, square = 2, triangle = 3 };
    Kind kind = sine;
    double amplitude = 1, offset = 0, frequency = 10, phase = 0, dutyCycle = 0.5;

    double at(double seconds) const;
};

enum class OutputState : std::uint8_t { idle = 0, open = 1, running = 2 };

/// Outputs keep what was written to them, until a run gives them the samples of their forms, or those that were pushed:
/// sample k from k / rate after the start until the next. They keep the last one of a run.
class OutputPort {
public:
    using Clock = Scheduler::Clock;

    enum Mode : std::uint8_t { onDemand = 0, someSamples = 1, continuous = 2 };
    struct Settings {
        Mode mode = onDemand;
        float rate = 1000;
        std::uint32_t samples = 1000;
        std::uint8_t mask = 0xFF;
        std::uint8_t span = 0;
        std::array<Form, mostAnalogChannels> forms;
    };

    static constexpr std::size_t bufferSize = 4096;  // values

    explicit OutputPort(const AnalogOutputs& outputs);

    Settings& settings() { return settings_; }
    OutputState state() const { return run_ ? OutputState::running : state_; }
    /// Whether it has been opened or written to, and gives its voltages to what it leads to.
    bool drives() const { return drives_; }
    double valueAt(std::size_t channel, Clock::time_point time) const;

    void open() { drives_ = true; }
    void close();
    /// False if the value cannot be, or the channel belongs to a run.
    bool canWrite(std::size_t channel, double value) const;
    void write(std::size_t channel, double value);
    bool setSpan(std::uint8_t span);

    void openStreaming();
    void start();
    void stop();
    void closeStreaming();
    void initBuffer();
    /// False if they do not fit.
    bool push(const std::vector<double>& values);

    /// Brings what is kept up to now; called before anything else.
    void settle();
    /// Samples of the run so far, and those for which nothing had been pushed.
    std::uint32_t made() const { return made_; }
    std::uint32_t missing() const { return missing_; }

private:
    struct Run {
        Clock::time_point start;
        double rate;
        std::optional<std::uint64_t> samples;
        std::uint8_t mask;
        bool pushed;
    };

    std::uint64_t sampleAt(Clock::time_point time) const;
    double clip(double value) const { return std::clamp(value, least_, most_); }
    void playPushed(std::uint64_t current);

    AnalogOutputs outputs_;
    double least_ = 0, most_ = 0;  // of the span
    Settings settings_;
    OutputState state_ = OutputState::idle;
    bool drives_ = false, buffered_ = false;
    std::array<double, mostAnalogChannels> held_{};
    std::optional<Run> run_;
    std::deque<double> pushed_;  // rows of the channels of the run
    std::uint64_t first_ = 0;    // the sample to which the first row belongs
    std::uint32_t made_ = 0, missing_ = 0;
};

}  // namespace zvr::sim
