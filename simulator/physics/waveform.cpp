#include "physics/waveform.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>
#include <stdexcept>
#include <string>

#include "device/fields.h"

namespace zvr::sim {

namespace {

constexpr std::array<std::string_view, 6> kindNames = {"sine", "ramp", "noise", "constant", "square", "count"};

// Rows of a period that is kept as codes.
constexpr std::uint64_t longestPeriod = 1 << 15;

// Random bits that depend on nothing but the number: what a row holds does not depend on how rows are asked for.
std::uint64_t scramble(std::uint64_t number) {
    number += 0x9E3779B97F4A7C15;
    number = (number ^ (number >> 30)) * 0xBF58476D1CE4E5B9;
    number = (number ^ (number >> 27)) * 0x94D049BB133111EB;
    return number ^ (number >> 31);
}

// After how many rows a signal is where it was; 0 if that takes too long.
std::uint64_t periodOf(const Waveform& wave, double rate, std::size_t bytes) {
    if (wave.kind == WaveKind::constant || (wave.kind != WaveKind::count && wave.frequency == 0)) return 1;
    if (wave.kind == WaveKind::count) return bytes == 2 ? 0x10000 / mostAnalogChannels : 0;
    if (wave.kind == WaveKind::noise) return 0;
    constexpr double fraction = 1024 * 125;  // recognises binary and decimal fractions
    const double frequency = wave.frequency * fraction;
    const double scaled = rate * fraction;
    if (frequency != std::round(frequency) || scaled != std::round(scaled) || scaled > 1e15 || frequency > 1e15)
        return 0;
    const auto rows = static_cast<std::uint64_t>(scaled);
    const std::uint64_t period = rows / std::gcd(rows, static_cast<std::uint64_t>(frequency));
    return period <= longestPeriod ? period : 0;
}

}  // namespace

std::uint32_t Coding::codeOf(double value) const {
    const double half = std::ldexp(1.0, static_cast<int>(8 * bytes) - 1);
    const auto count = static_cast<std::int64_t>(std::clamp(std::round(value / unit), -half, half - 1));
    return static_cast<std::uint32_t>(offsetBinary ? count + static_cast<std::int64_t>(half) : count);
}

void writeCode(std::uint32_t code, std::size_t bytes, std::uint8_t* to) {
    for (std::size_t i = bytes; i-- > 0; code >>= 8) to[i] = static_cast<std::uint8_t>(code);
}

double Waveform::at(double periods, std::uint64_t noise) const {
    const double phase = periods - std::floor(periods);
    switch (kind) {
        case WaveKind::sine: return offset + amplitude * std::sin(2 * std::numbers::pi * phase);
        case WaveKind::ramp: return offset + amplitude * (2 * phase - 1);
        case WaveKind::square: return offset + (phase < 0.5 ? amplitude : -amplitude);
        case WaveKind::noise:
            return offset + amplitude * (std::ldexp(static_cast<double>(scramble(noise) >> 11), -52) - 1);
        default: return offset + amplitude;
    }
}

Signals::Signals() {
    for (double frequency = 0; Waveform & wave : waves) wave.frequency = frequency += 10;
}

void Signals::set(std::string_view text) {
    constexpr int most = 1000000;
    const std::vector<std::string_view> parts = partsOf(text);
    if (parts.size() < 2 || parts.size() > 5) {
        throw std::invalid_argument("\"" + std::string(text) +
                                    "\" is not CHANNEL:KIND[:FREQUENCY[:AMPLITUDE[:OFFSET]]]");
    }
    const std::vector<std::size_t> channels = choiceOf(parts[0], waves.size());
    if (channels.empty()) throw std::invalid_argument("channels are 0 to 7, or * for all");
    const auto kind = std::ranges::find(kindNames, parts[1]);
    if (kind == kindNames.end()) throw std::invalid_argument("\"" + std::string(parts[1]) + "\" is no kind of signal");
    for (const std::size_t channel : channels) {
        Waveform wave = waves[channel];
        wave.kind = static_cast<WaveKind>(kind - kindNames.begin());
        if (parts.size() > 2) wave.frequency = realOf(parts[2], most);
        if (parts.size() > 3) wave.amplitude = realOf(parts[3], most);
        if (parts.size() > 4) wave.offset = realOf(parts[4], most);
        if (wave.frequency < 0) throw std::invalid_argument("a frequency is not below 0");
        waves[channel] = wave;
    }
    ++changes;
}

CodeSource::CodeSource(const Signals& signals, std::size_t channel, std::uint64_t stream, double rate,
                       const Coding& coding, bool keepsPeriod)
    : wave_(signals.at(channel)),
      channel_(channel),
      noise_(scramble(signals.seed * std::uint64_t{0x10000} + stream * mostAnalogChannels + channel)),
      rate_(rate),
      coding_(coding) {
    const std::uint64_t period = !keepsPeriod ? 0 : periodOf(wave_, rate, coding.bytes);
    period_.reserve(period);
    for (std::uint64_t row = 0; row < period; ++row) period_.push_back(codeAt(row));
}

std::uint32_t CodeSource::codeAt(std::uint64_t row) const {
    if (wave_.kind == WaveKind::count) return static_cast<std::uint32_t>(row * mostAnalogChannels + channel_);
    return coding_.codeOf(wave_.at(static_cast<double>(row) * wave_.frequency / rate_, noise_ + row));
}

void CodeSource::write(std::uint64_t row, std::size_t count, std::uint8_t* to, std::size_t stride) const {
    if (period_.empty()) {
        for (; count > 0; --count, ++row, to += stride) writeCode(codeAt(row), coding_.bytes, to);
        return;
    }
    for (std::size_t place = row % period_.size(); count > 0; --count, to += stride) {
        writeCode(period_[place], coding_.bytes, to);
        if (++place == period_.size()) place = 0;
    }
}

}  // namespace zvr::sim
