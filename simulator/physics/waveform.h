// Signals at the analog inputs, and the codes to which a converter digitises them.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "core/wire/bytes.h"

namespace zvr::sim {

constexpr std::size_t mostAnalogChannels = 8;  ///< that have signals of their own

/// How a converter writes a value.
struct Coding {
    std::size_t bytes = 2;       ///< of a sample, most significant first
    double unit = 10.0 / 32768;  ///< of one count
    bool offsetBinary = false;   ///< or two's complement

    std::uint32_t codeOf(double value) const;
};

void writeCode(std::uint32_t code, std::size_t bytes, std::uint8_t* to);

enum class WaveKind { sine, ramp, noise, constant, square, count };

struct Waveform {
    WaveKind kind = WaveKind::sine;
    double frequency = 10;
    double amplitude = 5;
    double offset = 0;

    /// After so many periods, with fractions; noise depends on a stream number.
    double at(double periods, std::uint64_t noise) const;
};

/// The signals of all channels, and how they are sampled.
struct Signals {
    Signals();

    /// CHANNEL:KIND[:FREQUENCY[:AMPLITUDE[:OFFSET]]]. Throws std::invalid_argument.
    void set(std::string_view text);
    /// Beyond the last channel the signals repeat.
    const Waveform& at(std::size_t channel) const { return waves[channel % waves.size()]; }

    std::array<Waveform, mostAnalogChannels> waves;
    std::uint32_t seed = 1;
    bool fast = false;          ///< as fast as the clients take it
    std::size_t frameRows = 0;  ///< rows of a frame; 0 leaves it to the device
    unsigned changes = 0;       ///< how often a signal has been set
};

/// The codes of one channel of a run with a constant rate, by row.
class CodeSource {
public:
    /// Noise differs from stream to stream. For a few rows only it does not pay to keep a period.
    CodeSource(const Signals& signals, std::size_t channel, std::uint64_t stream, double rate, const Coding& coding,
               bool keepsPeriod = true);

    /// Writes the codes of some rows, `stride` bytes apart.
    void write(std::uint64_t row, std::size_t count, std::uint8_t* to, std::size_t stride) const;

private:
    std::uint32_t codeAt(std::uint64_t row) const;

    Waveform wave_;
    std::size_t channel_;
    std::uint64_t noise_;
    double rate_;
    Coding coding_;
    std::vector<std::uint32_t> period_;  // all codes, if they repeat soon enough
};

}  // namespace zvr::sim
