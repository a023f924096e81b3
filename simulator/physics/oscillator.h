// An oscillator whose frequency may change while it runs.
#pragma once

#include <chrono>

namespace zvr::sim {

class Oscillator {
public:
    explicit Oscillator(double frequency = 0) : frequency_(frequency) {}

    /// In Hz; 0 stands still, and below 0 it turns back.
    double frequency() const { return frequency_; }
    void setFrequency(double frequency) {
        turns_ = turns();
        since_ = Clock::now();
        frequency_ = frequency;
    }

    /// Since it was made, with fractions.
    double turns() const { return turns_ + frequency_ * std::chrono::duration<double>(Clock::now() - since_).count(); }

private:
    using Clock = std::chrono::steady_clock;

    double frequency_;
    double turns_ = 0;
    Clock::time_point since_ = Clock::now();
};

}  // namespace zvr::sim
