// Payloads: requests that are parsed sequentially, and replies.
#pragma once

#include <ranges>
#include <type_traits>

#include "core/wire/bytes.h"

namespace zvr::sim {

/// Reads the payload of a request, item by item. Throws TooShort if it ends too early, WrongLength if bytes follow the
/// last item; either refuses the request as malformed.
class Request {
public:
    explicit Request(ByteView data) : data_(data) {}

    template <class Number>
    Number next() {
        return readBigEndian<Number>(bytes(sizeof(Number)));
    }
    std::uint8_t u8() { return next<std::uint8_t>(); }
    std::uint16_t u16() { return next<std::uint16_t>(); }
    std::uint32_t u32() { return next<std::uint32_t>(); }
    std::int32_t i32() { return next<std::int32_t>(); }
    float f32() { return next<float>(); }
    ByteView bytes(std::size_t count) {
        const ByteView part = slice(data_.subspan(taken_), 0, count);
        taken_ += count;
        return part;
    }
    ByteView rest() { return bytes(left()); }

    /// The last item: nothing may follow it.
    template <class Number>
    Number last() {
        return readBigEndian<Number>(lastBytes(sizeof(Number)));
    }
    ByteView lastBytes(std::size_t count) {
        if (left() != count) throw WrongLength(count, left());
        return rest();
    }
    /// A count and that many bytes, up to the end.
    ByteView lastCounted() {
        const std::size_t count = u8();
        return lastBytes(count);
    }

    std::size_t left() const { return data_.size() - taken_; }
    /// The bytes read so far.
    ByteView taken() const { return data_.first(taken_); }

private:
    ByteView data_;
    std::size_t taken_ = 0;
};

/// Appends a number as wide as its type, an enumerator, or each of a range of them, most significant byte first.
template <class Value>
void append(Bytes& data, const Value& value) {
    if constexpr (std::ranges::range<Value>) {
        for (const auto& each : value) append(data, each);
    } else if constexpr (std::is_enum_v<Value>) {
        append(data, static_cast<std::underlying_type_t<Value>>(value));
    } else {
        static_assert(!std::is_same_v<Value, int> && !std::is_same_v<Value, double>, "a width of the wire is wanted");
        appendBigEndian(data, value);
    }
}

/// A payload of these values.
template <class... Values>
Bytes reply(const Values&... values) {
    Bytes data;
    (append(data, values), ...);
    return data;
}

}  // namespace zvr::sim
