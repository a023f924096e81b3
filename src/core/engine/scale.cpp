#include "core/engine/scale.h"

#include <charconv>
#include <cmath>
#include <deque>
#include <map>
#include <mutex>

#include "core/engine/never_destroyed.h"

namespace zvr {

double roundDecimals(double value, int decimals) {
    if (!std::isfinite(value)) return value;
    // Rounds the exact decimal expansion, then takes the nearest double.
    std::array<char, 400> text;
    const auto written = std::to_chars(text.begin(), text.end(), value, std::chars_format::fixed, decimals);
    double rounded = value;
    std::from_chars(text.data(), written.ptr, rounded);
    return rounded;
}

Scale16::Scale16(double ratio) : ratio_(ratio) {
    for (std::size_t code = 0; code < values_.size(); ++code) {
        values_[code] = roundDecimals(static_cast<std::int16_t>(code) * ratio, 4);
    }
}

namespace {

/// The scales used last, most recent first, and those still referenced elsewhere.
class Scales {
public:
    std::shared_ptr<const Scale16> of(double ratio) {
        const auto bits = std::bit_cast<std::uint64_t>(ratio);  // NaN is a valid key too
        const std::lock_guard lock(mutex_);
        auto scale = known_[bits].lock();
        if (!scale) {
            std::erase_if(known_, [](const auto& entry) { return entry.second.expired(); });
            scale = std::make_shared<const Scale16>(ratio);
            known_[bits] = scale;
        }
        std::erase(recent_, scale);
        recent_.push_front(scale);
        if (recent_.size() > kept) recent_.pop_back();
        return scale;
    }

private:
    static constexpr std::size_t kept = 4;

    std::mutex mutex_;
    std::map<std::uint64_t, std::weak_ptr<const Scale16>> known_;
    std::deque<std::shared_ptr<const Scale16>> recent_;
};

}  // namespace

std::shared_ptr<const Scale16> Scale16::of(double ratio) {
    static auto& scales = neverDestroyed<Scales>();
    return scales.of(ratio);
}

namespace {

template <class Convert>
void convertEach(const std::uint8_t* bytes, std::size_t sampleBytes, std::size_t rows, std::size_t columns, double* out,
                 std::size_t stride, Convert convert) {
    if (stride == columns) {
        columns *= rows;
        rows = 1;
    }
    for (std::size_t row = 0; row < rows; ++row, out += stride) {
        for (std::size_t column = 0; column < columns; ++column, bytes += sampleBytes) out[column] = convert(bytes);
    }
}

}  // namespace

void convertRows(const RowLayout& layout, const std::uint8_t* bytes, std::size_t rows, double* out,
                 std::size_t stride) {
    const auto columns = static_cast<std::size_t>(layout.columns);
    switch (layout.sample) {
        case RowLayout::Sample::scaled16:
            convertEach(bytes, 2, rows, columns, out, stride,
                        [&scale = *layout.scale](const std::uint8_t* sample) { return scale(read16(sample)); });
            return;
        case RowLayout::Sample::scaled24:
            convertEach(bytes, 3, rows, columns, out, stride,
                        [ratio = layout.ratio](const std::uint8_t* sample) { return read24(sample) * ratio; });
            return;
        case RowLayout::Sample::value:
            convertEach(bytes, 8, rows, columns, out, stride, [](const std::uint8_t* sample) {
                double value;
                std::memcpy(&value, sample, sizeof value);
                return value;
            });
            return;
        case RowLayout::Sample::octet:
            convertEach(bytes, 1, rows, columns, out, stride, [](const std::uint8_t* sample) { return *sample; });
            return;
        case RowLayout::Sample::record: throw std::invalid_argument("a record is no number");
    }
}

}  // namespace zvr
