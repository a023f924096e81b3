// A run of the analog inputs of one port: rows that are due at exact times, in frames.
#pragma once

#include <memory>
#include <optional>

#include "device/device.h"
#include "modules/alarm.h"
#include "physics/waveform.h"

namespace zvr::sim {

/// The counters that a port reports.
struct SampleCounters {
    std::uint32_t rows = 0;
    std::uint32_t samples = 0;
    std::uint32_t framesMade = 0;
    std::uint32_t framesSent = 0;     ///< that all clients have taken
    std::uint32_t framesDropped = 0;  ///< that a client has lost
    std::uint32_t lateRows = 0;       ///< made when the next frame was due already
    std::uint32_t runs = 0;
    std::uint32_t reads = 0;     ///< on demand
    std::uint32_t refusals = 0;  ///< settings that were refused
};

struct RunPlan {
    Command command{};  ///< of the frames
    std::uint8_t port = 0;
    std::vector<std::uint8_t> chipSelects;
    std::size_t channels = 0;
    double rate = 0;                     ///< Hz
    std::optional<std::uint64_t> rows;   ///< after which it ends
    Scheduler::Clock::time_point start;  ///< row k is due k / rate later
    Coding coding;
};

class SampleRun {
public:
    SampleRun(Device& device, RunPlan plan, std::shared_ptr<SampleCounters> counters);
    SampleRun(const SampleRun&) = delete;
    SampleRun& operator=(const SampleRun&) = delete;

    /// Makes what is due, and goes on by the device's scheduler until it is finished or destroyed.
    void advance();
    /// Goes on if it waits for clients to take what they have.
    void resume();
    bool finished() const { return plan_.rows && made_ >= *plan_.rows; }
    /// Rows that wait for their frame to be full.
    std::size_t waitingRows() const { return filled_; }
    std::size_t frameRows() const { return frameRows_; }

private:
    using Clock = Scheduler::Clock;

    std::uint64_t dueRows(Clock::time_point now) const;
    Clock::time_point timeOf(std::uint64_t row) const;
    void takeSignals();
    void makeRows(std::size_t count);
    void writeChannel(std::size_t stream, std::size_t channel, std::size_t count, std::uint8_t* to) const;
    void sendFrames();

    Device& device_;
    const RunPlan plan_;
    const std::shared_ptr<SampleCounters> counters_;
    const bool fast_;
    const std::size_t rowSize_;
    std::size_t frameRows_;
    std::vector<CodeSource> sources_;             // chip select by chip select
    unsigned changes_ = 0;                        // of the signals, that these are made of
    std::vector<std::shared_ptr<Bytes>> frames_;  // of each chip select, with the rows so far
    std::uint64_t made_ = 0;
    std::size_t filled_ = 0;
    bool waits_ = false;  // for room
    Alarm alarm_;
};

}  // namespace zvr::sim
