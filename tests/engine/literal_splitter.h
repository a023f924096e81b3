// The search for frames written down step by step, however slow: what Splitter has to agree with.
#pragma once

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "core/wire/constants.h"
#include "core/wire/frame.h"

namespace zvr::testing {

class LiteralSplitter {
public:
    Bytes stream;
    std::size_t lastIndex = 0;

    void append(ByteView bytes) { stream.insert(stream.end(), bytes.begin(), bytes.end()); }

    std::vector<Packet> split() {
        std::vector<Packet> packets;
        while (const auto trailer = find({CMD_CR_2, CMD_LF_2}, lastIndex, stream.size())) {
            auto start = find({CMD_STX_2}, 0, *trailer);
            while (start && lengthAt(*start) != static_cast<std::ptrdiff_t>(*trailer - *start) - 3) {
                start = find({CMD_STX_2}, *start + 1, *trailer);
            }
            if (!start) {
                lastIndex = *trailer + 1;
                continue;
            }
            const std::size_t at = *start + CMD_INDEX_2;
            if (stream[at] > 48) {
                packets.push_back({stream[at], part(at + 1, *trailer)});
            } else {
                packets.push_back({stream[at] * 256 + stream[at + 1], part(at + 2, *trailer)});
            }
            stream.erase(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(*trailer) + 2);
            lastIndex = 0;
        }
        return packets;
    }

private:
    template <std::size_t Size>
    std::optional<std::size_t> find(const std::uint8_t (&wanted)[Size], std::size_t from, std::size_t end) const {
        if (from >= end) return std::nullopt;
        const auto last = stream.begin() + static_cast<std::ptrdiff_t>(end);
        const auto found = std::search(stream.begin() + static_cast<std::ptrdiff_t>(from), last, wanted, wanted + Size);
        if (found == last) return std::nullopt;
        return static_cast<std::size_t>(found - stream.begin());
    }

    // Signed, unlike what a sender writes.
    std::ptrdiff_t lengthAt(std::size_t start) const {
        return readBigEndian<std::int16_t>(ByteView(stream).subspan(start + 1, 2));
    }

    Bytes part(std::size_t from, std::size_t end) const {
        if (from >= end) return {};
        return {stream.begin() + static_cast<std::ptrdiff_t>(from), stream.begin() + static_cast<std::ptrdiff_t>(end)};
    }
};

}  // namespace zvr::testing
