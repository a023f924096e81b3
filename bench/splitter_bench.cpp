// The splitter's speed on good and hostile streams, in reads of the data connection's size.
#include <benchmark/benchmark.h>

#include <random>

#include "core/wire/constants.h"
#include "core/wire/splitter.h"

namespace {

using zvr::Bytes;
using zvr::ByteView;

constexpr std::size_t streamLength = 1 << 20;

Bytes repeated(const Bytes& pattern) {
    Bytes stream;
    stream.reserve(streamLength + pattern.size());
    while (stream.size() < streamLength) stream.insert(stream.end(), pattern.begin(), pattern.end());
    return stream;
}

Bytes randomBytes(std::size_t count) {
    std::mt19937 random(1);
    Bytes bytes(count);
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
    return bytes;
}

Bytes drawn(const Bytes& alphabet) {
    Bytes stream = randomBytes(streamLength);
    for (std::uint8_t& byte : stream) byte = alphabet[byte % alphabet.size()];
    return stream;
}

// A whole frame of `size` bytes; its samples are those of a converter that is not connected: no start bytes.
Bytes frame(std::size_t size) { return zvr::buildFrame(183, Bytes(size - 6, 0x55)); }

// The same with samples of every value.
Bytes noisyFrame(std::size_t size) { return zvr::buildFrame(183, randomBytes(size - 6)); }

// Feeds the stream to one splitter over and over.
void split(benchmark::State& state, const Bytes& stream) {
    zvr::Splitter splitter;
    std::size_t packets = 0;
    for (auto _ : state) {
        for (std::size_t from = 0; from < stream.size(); from += zvr::TCP_DATA_LENGTH_MAX) {
            const std::size_t count = std::min<std::size_t>(zvr::TCP_DATA_LENGTH_MAX, stream.size() - from);
            splitter.append(ByteView(stream).subspan(from, count));
            const auto cut = splitter.split();
            packets += cut.size();
            benchmark::DoNotOptimize(cut.data());
        }
    }
    const auto bytes = static_cast<double>(state.iterations()) * static_cast<double>(stream.size());
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes));
    state.counters["ns/byte"] =
        benchmark::Counter(bytes / 1e9, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    state.counters["packets"] = static_cast<double>(packets) / static_cast<double>(state.iterations());
}

const auto registered = [] {
    const auto add = [](const char* name, Bytes stream) {
        benchmark::RegisterBenchmark(name,
                                     [stream = std::move(stream)](benchmark::State& state) { split(state, stream); });
    };
    add("good/6", repeated(frame(6)));
    add("good/100", repeated(frame(100)));
    add("good/1500", repeated(frame(1500)));
    add("good/9600", repeated(frame(9600)));
    add("good/9600_every_value", repeated(noisyFrame(9600)));
    add("hostile/start_bytes", repeated({2}));
    add("hostile/start_bytes_one_trailer_in_1000", repeated([] {
            Bytes pattern(1000, 2);
            pattern[998] = 13;
            pattern[999] = 10;
            return pattern;
        }()));
    add("hostile/starts_and_trailers", repeated({2, 13, 10}));
    add("hostile/starts_trailers_and_lengths_at_random", drawn({2, 13, 10, 0, 1, 127, 128}));
    add("hostile/starts_and_fill_at_random", drawn({2, 13, 200, 201}));
    add("hostile/trailers", repeated({13, 10}));
    add("hostile/carriage_returns", repeated({13}));
    add("hostile/near_predictions", repeated({2, 0, 9, 9, 13, 10, 9}));
    add("hostile/far_predictions", repeated({2, 127, 200, 13, 10}));
    add("hostile/far_start_before_each_frame", repeated({2, 127, 200, 2, 0, 1, 122, 13, 10}));
    add("hostile/noise_before_each_frame", repeated({9, 2, 0, 1, 122, 13, 10}));
    add("hostile/random_bytes", randomBytes(streamLength));
    return 0;
}();

}  // namespace
