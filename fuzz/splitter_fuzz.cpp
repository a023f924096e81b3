// Feeds one stream to the splitter and to the literal search and stops where they differ. The input is a row of steps
// that also chooses where the stream is cut, so that a small input can make a long stream.
#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "core/wire/splitter.h"
#include "literal_splitter.h"

namespace {

using zvr::Bytes;
using zvr::ByteView;

constexpr std::size_t longestStream = 200'000;

class Input {
public:
    explicit Input(ByteView bytes) : bytes_(bytes) {}
    bool empty() const { return bytes_.empty(); }
    std::size_t byte() {
        const ByteView one = take(1);
        return one.empty() ? 0 : one[0];
    }
    std::size_t word() {
        const std::size_t high = byte();
        return high << 8 | byte();
    }
    ByteView take(std::size_t count) {
        const ByteView taken = bytes_.first(std::min(count, bytes_.size()));
        bytes_ = bytes_.subspan(taken.size());
        return taken;
    }

private:
    ByteView bytes_;
};

void require(bool same, const char* what) {
    if (same) return;
    std::fprintf(stderr, "the splitter differs from the literal search: %s\n", what);
    std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input({data, size});
    zvr::Splitter splitter;
    zvr::testing::LiteralSplitter literal;
    const auto append = [&](ByteView bytes) {
        splitter.append(bytes);
        literal.append(bytes);
    };
    while (!input.empty() && literal.stream.size() < longestStream) {
        const std::size_t step = input.byte();
        switch (step % 16) {
            case 0: {
                const ByteView taken = input.take(input.byte());
                const Bytes kept(taken.begin(), taken.end());
                splitter.setStream(kept);
                literal.stream = kept;
                break;
            }
            case 1:
                literal.lastIndex = input.word();
                splitter.setLastIndex(literal.lastIndex);
                break;
            case 2: append(Bytes(input.word(), 0x55)); break;
            case 3: append(zvr::buildFrame(static_cast<int>(input.word()), input.take(input.byte()))); break;
            case 4: {
                const ByteView pattern = input.take(input.byte() % 8);
                for (std::size_t times = input.byte(); times > 0; --times) append(pattern);
                break;
            }
            default: append(input.take(step)); break;
        }
        if (step >= 128 && step % 16 < 5) continue;  // the next step comes in the same read
        const auto packets = splitter.split();
        require(packets == literal.split(), "packets");
        require(std::ranges::equal(splitter.stream(), literal.stream), "stream");
        require(splitter.lastIndex() == literal.lastIndex, "last index");
    }
    return 0;
}
