#include "links/faults.h"

#include <algorithm>
#include <utility>

namespace zvr::sim {

namespace {

// Between pieces of a reply, so that they arrive separately.
constexpr std::chrono::milliseconds pieceGap{1};

}  // namespace

Bytes Faults::garbage(std::size_t count) {
    Bytes bytes(count);
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random_());
    return bytes;
}

std::vector<Piece> Faults::apply(int command, Bytes frame) {
    if (!concern(command)) return {{std::move(frame), {}}};
    if (options_.stall && replies_ >= *options_.stall) return {};
    ++replies_;
    if (happens(options_.drop)) return {};
    if (happens(options_.corrupt)) frame[random_() % frame.size()] ^= static_cast<std::uint8_t>(1 + random_() % 255);
    if (happens(options_.truncate)) frame.resize(frame.size() / 2);
    Bytes bytes = garbage(options_.flood);
    const int times = happens(options_.duplicate) ? 2 : 1;
    for (int i = 0; i < times; ++i) bytes.insert(bytes.end(), frame.begin(), frame.end());
    if (options_.coalesce != 0) {
        together_.insert(together_.end(), bytes.begin(), bytes.end());
        if (++held_ < options_.coalesce) return {};
        held_ = 0;
        bytes = std::exchange(together_, {});
    }
    auto after = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::duration<double>(options_.delay));
    const std::size_t size = options_.split != 0 ? options_.split : bytes.size();
    std::vector<Piece> pieces;
    for (std::size_t from = 0; from < bytes.size(); from += size, after += pieceGap) {
        const ByteView piece = ByteView(bytes).subspan(from, std::min(size, bytes.size() - from));
        pieces.push_back({{piece.begin(), piece.end()}, after});
    }
    return pieces;
}

}  // namespace zvr::sim
