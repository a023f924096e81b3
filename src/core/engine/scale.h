// From the codes of a stream to physical values.
#pragma once

#include <array>
#include <memory>

#include "core/wire/bytes.h"

namespace zvr {

/// Converts the codes of 16-bit samples: code times ratio, rounded to 4 decimals as exactly as Python's `round`. There
/// is one shared object per ratio; the last few are cached.
class Scale16 {
public:
    static std::shared_ptr<const Scale16> of(double ratio);
    explicit Scale16(double ratio);

    double operator()(std::int16_t code) const { return values_[static_cast<std::uint16_t>(code)]; }
    double ratio() const { return ratio_; }

private:
    double ratio_;
    std::array<double, 65536> values_;
};

/// Rounds to this many decimals, to the nearest, ties of the exact value to even.
double roundDecimals(double value, int decimals);

/// How the bytes of a row are converted to values.
struct RowLayout {
    enum class Sample : std::uint8_t {
        scaled16,  ///< two bytes, scaled and rounded
        scaled24,  ///< three bytes, times `ratio`, not rounded
        value,     ///< a double in the host's byte order
        octet,     ///< a single byte
        record,    ///< bytes that are no number; a row has `columns` of them
    };
    Sample sample = Sample::scaled16;
    int columns = 0;
    double ratio = 0;
    std::shared_ptr<const Scale16> scale = {};  ///< of scaled16

    static RowLayout scaled16(int columns, double ratio) {
        return {Sample::scaled16, columns, ratio, Scale16::of(ratio)};
    }
    static RowLayout scaled24(int columns, double ratio) { return {Sample::scaled24, columns, ratio}; }
    static RowLayout values(int columns) { return {Sample::value, columns}; }
    static RowLayout octets(int columns) { return {Sample::octet, columns}; }
    static RowLayout records(int bytes) { return {Sample::record, bytes}; }

    std::size_t sampleBytes() const {
        constexpr std::array<std::uint8_t, 5> widths{2, 3, 8, 1, 1};
        return widths[static_cast<std::size_t>(sample)];
    }
    std::size_t rowBytes() const { return sampleBytes() * static_cast<std::size_t>(columns); }
    bool operator==(const RowLayout&) const = default;
};

/// One sample of 24 bits, most significant byte first, with its sign.
inline std::int32_t read24(const std::uint8_t* bytes) {
    const std::uint32_t word =
        std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8;
    return static_cast<std::int32_t>(word) >> 8;
}

inline std::int16_t read16(const std::uint8_t* bytes) {
    return static_cast<std::int16_t>(static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]));
}

/// Writes the values of `rows` rows to `out`, each row `stride` values after the previous one.
void convertRows(const RowLayout& layout, const std::uint8_t* bytes, std::size_t rows, double* out, std::size_t stride);

}  // namespace zvr
