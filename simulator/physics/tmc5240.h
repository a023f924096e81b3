// A stepper drive: the registers of its chip, and moves that it runs by itself. It takes the time from its caller, in
// seconds, like MCX514. Speeds and rates are in microsteps and seconds.
#pragma once

#include <array>
#include <cstdint>

#include "core/wire/bytes.h"
#include "physics/track.h"

namespace zvr::sim {

class TMC5240 {
public:
    /// State of a move that the drive runs by itself.
    enum class Process : std::uint8_t { none, running, done, stopped, failed };

    explicit TMC5240(const Track& track) : track_(track) { reset(); }

    /// Puts the registers back, and stops at once.
    void reset();
    /// Does what has become due; before anything else.
    void advance(double now);

    std::uint32_t read(std::uint8_t address) const;
    void write(std::uint8_t address, std::uint32_t value);
    std::uint8_t status() const;
    /// The values that are reported together.
    Bytes parameters() const;
    /// Forward limit, reverse limit and home, from bit 0.
    std::uint16_t switches() const;

    struct Search {
        Zone zone;
        int direction, finalDirection;
        double approach, offset;
        bool resets, ofLimit;
    };

    /// Moves refuse a speed or rate of 0.
    bool run(int direction, const Ramp& ramp);
    bool moveTo(std::int32_t position, const Ramp& ramp);
    bool scan(std::int32_t from, std::int32_t to, const Ramp& ramp);
    bool seek(const Search& search, const Ramp& ramp);
    void stop();
    Process process() const { return process_; }

    const Track& track() const { return track_; }
    double place() const { return movement().position; }

private:
    Movement movement() const { return profile_.at(clock_ - start_); }
    std::int64_t steps() const;
    Ramp ramp() const;
    bool begin(const Ramp& ramp);
    void plan();
    void halt(Process process);

    const Track& track_;
    std::array<std::uint32_t, 128> registers_{};
    Profile profile_;
    double start_ = 0, clock_ = 0;
    std::int64_t zero_ = 0, encoderZero_ = 0;  // what is added to the steps
    Process process_ = Process::none;
    std::array<std::int32_t, 2> turningPoints_{};  // of a scan, the next one first
    bool scans_ = false, resets_ = false, watchesLimits_ = true;
};

}  // namespace zvr::sim
