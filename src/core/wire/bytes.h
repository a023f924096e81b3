// Byte strings and the big-endian numbers in them. Everything on the wire is most significant byte first.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace zvr {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

/// A number was read from a byte string of another width.
struct WrongLength : std::runtime_error {
    WrongLength(std::size_t wanted, std::size_t got)
        : std::runtime_error("unpack requires a buffer of " + std::to_string(wanted) + " bytes, got " +
                             std::to_string(got)) {}

protected:
    using std::runtime_error::runtime_error;
};

/// A byte was read beyond the end of a byte string.
struct TooShort : WrongLength {
    TooShort(std::size_t wanted, std::size_t got)
        : WrongLength(std::to_string(wanted) + " bytes or more are wanted, " + std::to_string(got) + " came") {}
};

template <std::size_t Width>
using UnsignedOf = std::conditional_t<
    Width == 1, std::uint8_t,
    std::conditional_t<Width == 2, std::uint16_t, std::conditional_t<Width == 4, std::uint32_t, std::uint64_t>>>;

/// Reads one number from exactly sizeof(Number) bytes; throws WrongLength for any other length.
template <class Number>
Number readBigEndian(ByteView bytes) {
    if (bytes.size() != sizeof(Number)) throw WrongLength(sizeof(Number), bytes.size());
    UnsignedOf<sizeof(Number)> word = 0;
    for (const std::uint8_t byte : bytes) word = static_cast<decltype(word)>((std::uint64_t{word} << 8) | byte);
    return std::bit_cast<Number>(word);
}

/// Appends one number, most significant byte first.
template <class Number>
void appendBigEndian(Bytes& out, Number value) {
    const auto word = std::bit_cast<UnsignedOf<sizeof(Number)>>(value);
    for (std::size_t i = sizeof(Number); i-- > 0;) out.push_back(static_cast<std::uint8_t>(word >> (8 * i)));
}

/// Part of a byte string; throws TooShort if the byte string does not hold all of it.
inline ByteView slice(ByteView bytes, std::size_t from, std::size_t count) {
    if (bytes.size() < from + count) throw TooShort(from + count, bytes.size());
    return bytes.subspan(from, count);
}

/// One byte of a byte string; throws TooShort if it is too short.
inline std::uint8_t byteOf(ByteView bytes, std::size_t place) { return slice(bytes, place, 1)[0]; }

/// The bytes from an offset on; empty if there are none.
inline ByteView restOf(ByteView bytes, std::size_t from) { return bytes.subspan(std::min(from, bytes.size())); }

inline ByteView viewOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

}  // namespace zvr
