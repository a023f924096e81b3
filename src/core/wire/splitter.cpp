#include "core/wire/splitter.h"

#include <algorithm>
#include <cstring>

#include "core/wire/constants.h"

namespace zvr {

namespace {

// A stream this long without a frame drops the part that can no longer belong to one.
constexpr std::size_t deadPrefixLimit = 1 << 20;

// The furthest place that a start byte can predict.
constexpr std::size_t reach = 3 + 0x7FFF;

// Searches go from hit to hit while hits are far apart. Where they may be dense, whole blocks are processed by
// branch-free loops, which compilers vectorize.
constexpr std::size_t block = 64;

// Fewer bytes than this are examined one by one.
constexpr std::size_t few = 8;

constexpr std::size_t none = static_cast<std::size_t>(-1);

bool isTrailer(ByteView bytes, std::size_t place) { return bytes[place] == CMD_CR && bytes[place + 1] == CMD_LF; }

// The two length bytes behind a start byte.
std::size_t lengthAt(const std::uint8_t* start) { return static_cast<std::size_t>(start[1] << 8 | start[2]); }

// Whether a frame from `start` would have to end at `trailer`. A length is read as signed, so that one of 0x8000 or
// more never matches.
bool predicts(ByteView bytes, std::size_t start, std::size_t trailer) {
    if (start + 3 > trailer || bytes[start] != CMD_STX) return false;
    const std::size_t length = lengthAt(&bytes[start]);
    return length <= 0x7FFF && start + 3 + length == trailer;
}

// The first byte of this value in [from, end), or `end`.
std::size_t find(ByteView bytes, int value, std::size_t from, std::size_t end) {
    for (const std::size_t near = std::min(end, from + few); from < near; ++from) {
        if (bytes[from] == value) return from;
    }
    if (from >= end) return end;
    const void* hit = std::memchr(bytes.data() + from, value, end - from);
    return hit ? static_cast<std::size_t>(static_cast<const std::uint8_t*>(hit) - bytes.data()) : end;
}

bool blockHasTrailer(const std::uint8_t* bytes) {
    unsigned any = 0;
    for (std::size_t i = 0; i < block; ++i) any |= (bytes[i] == CMD_CR) & (bytes[i + 1] == CMD_LF);
    return any != 0;
}

bool blockHasMarkedTrailer(const std::uint8_t* bytes, const std::uint8_t* marks, std::uint8_t mark) {
    unsigned any = 0;
    for (std::size_t i = 0; i < block; ++i) {
        any |= (bytes[i] == CMD_CR) & (bytes[i + 1] == CMD_LF) & (marks[i] == mark);
    }
    return any != 0;
}

bool blockPredicts(const std::uint8_t* bytes, std::uint16_t ahead) {
    unsigned any = 0;
    for (std::uint16_t i = 0; i < block; ++i) {
        const auto length = static_cast<std::uint16_t>(bytes[i + 1] << 8 | bytes[i + 2]);
        any |= (bytes[i] == CMD_STX) & (length < 0x8000) & (static_cast<std::uint16_t>(i + 3 + length) == ahead);
    }
    return any != 0;
}

// The first trailer that begins in [from, end), or `end`.
std::size_t findTrailer(ByteView bytes, std::size_t from, std::size_t end) {
    while ((from = find(bytes, CMD_CR, from, end)) < end) {
        if (bytes[from + 1] == CMD_LF) return from;
        ++from;
        while (from + block <= end && !blockHasTrailer(bytes.data() + from)) from += block;
    }
    return end;
}

}  // namespace

void Splitter::append(ByteView bytes) {
    received_ += bytes.size();
    if (front_ == buffer_.size()) {
        buffer_.clear();
        front_ = 0;
    } else if (front_ > buffer_.size() / 2) {
        buffer_.erase(buffer_.begin(), buffer_.begin() + static_cast<std::ptrdiff_t>(front_));
        front_ = 0;
    }
    buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());
}

void Splitter::setStream(ByteView bytes) {
    const std::size_t index = lastIndex();
    restart(index);
    buffer_.assign(bytes.begin(), bytes.end());
    front_ = 0;
}

std::size_t Splitter::lastIndex() const {
    for (std::size_t place = searched_; place > lastIndex_; --place) {
        if (isTrailer(stream(), place - 1)) return place;
    }
    return lastIndex_;
}

void Splitter::setLastIndex(std::size_t index) { restart(index); }

std::vector<Packet> Splitter::split() {
    std::vector<Packet> packets;
    for (;;) {
        const std::size_t trailer = firstTrailer();
        if (trailer == none) break;
        if (packets.empty()) packets.reserve(stream().size() / (trailer + 2));  // often all of one size
        packets.push_back(packetAt(startOf(trailer), trailer));
        restart(0);
        front_ += trailer + 2;
    }
    dropDeadPrefix();
    return packets;
}

// The first place that holds a trailer predicted by some start byte. If there is none, everything received has been
// searched.
std::size_t Splitter::firstTrailer() {
    const ByteView bytes = stream();
    if (bytes.size() < 2) return none;
    const std::size_t decided = bytes.size() - 1;  // both bytes of a trailer at a place before it have arrived
    std::size_t place = std::max(lastIndex_, searched_);
    while ((place = findTrailer(bytes, place, decided)) < decided) {
        if (predicts(bytes, 0, place)) return place;
        advance(place);
        markPredictions(place - std::min<std::size_t>(place, 2), place);
        if (isMarked(place)) return place;
        const std::size_t first = place++;
        for (std::size_t from = first / block * block; from < decided; from += block) {
            const std::size_t end = std::min(from + block, decided);
            const bool whole = end == from + block;
            if (whole && !blockHasTrailer(&bytes[from])) break;
            markPredictions(std::min(end, decided - 1), place);
            if (!whole || blockHasMarkedTrailer(&bytes[from], &marks_[from % ring], mark_)) {
                for (; place < end; ++place) {
                    if (isTrailer(bytes, place) && isMarked(place)) return place;
                }
            }
            advance(place = end);
        }
    }
    advance(decided);
    return none;
}

// Marks the places predicted by the start bytes before `end`, except places before `floor`.
void Splitter::markPredictions(std::size_t end, std::size_t floor) {
    const ByteView bytes = stream();
    std::size_t start = std::max(scanned_, floor - std::min(floor, reach));
    while ((start = find(bytes, CMD_STX, start, end)) < end) {
        if (end - start > few && start + block + 2 <= bytes.size()) {  // may go beyond `end`, harmlessly
            markBlock(start, floor);
            start += block;
        } else {
            const std::size_t place = start + 3 + lengthAt(&bytes[start]);
            if (place >= floor && place <= start + reach) marks_[place % ring] = mark_;
            ++start;
        }
        markedEnd_ = start + reach;
    }
    scanned_ = std::max(scanned_, start);
}

// The same for one block.
void Splitter::markBlock(std::size_t start, std::size_t floor) {
    const std::uint8_t* bytes = &stream()[start];
    const auto unused = static_cast<std::uint16_t>(searched_ - 1);
    const auto least = static_cast<std::uint16_t>(floor - std::min(floor, start));
    std::array<std::uint16_t, block> places;
    for (std::uint16_t i = 0; i < block; ++i) {
        const auto length = static_cast<std::uint16_t>(bytes[i + 1] << 8 | bytes[i + 2]);
        const auto ahead = static_cast<std::uint16_t>(i + 3 + length);
        const bool counts = (bytes[i] == CMD_STX) & (length < 0x8000) & (ahead >= least);
        places[i] = counts ? static_cast<std::uint16_t>(start + ahead) : unused;
    }
    const std::uint8_t mark = mark_;
    for (const std::uint16_t place : places) marks_[place] = mark;
    marks_[unused] = 0;
}

// The earliest start byte that predicts `trailer`; there is one. The bytes searched here are consumed next.
std::size_t Splitter::startOf(std::size_t trailer) const {
    const ByteView bytes = stream();
    std::size_t start = trailer - std::min(trailer, reach);
    if (predicts(bytes, start, trailer)) return start;
    while (start + block <= trailer && !blockPredicts(&bytes[start], static_cast<std::uint16_t>(trailer - start))) {
        start += block;
    }
    while (!predicts(bytes, start, trailer)) ++start;
    return start;
}

Packet Splitter::packetAt(std::size_t start, std::size_t trailer) const {
    const ByteView bytes = stream();
    const std::size_t at = start + CMD_INDEX_2;
    const bool wide = startsWide(bytes[at]);
    const std::size_t from = std::min(at + (wide ? 2 : 1), trailer);
    const int command = wide ? bytes[at] << 8 | bytes[at + 1] : bytes[at];
    return {command, Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(from),
                           bytes.begin() + static_cast<std::ptrdiff_t>(trailer))};
}

void Splitter::restart(std::size_t lastIndex) {
    if (markedEnd_ > searched_ && ++mark_ == 0) {
        marks_.fill(0);
        mark_ = 1;
    }
    lastIndex_ = lastIndex;
    searched_ = scanned_ = markedEnd_ = 0;
}

void Splitter::dropDeadPrefix() {
    if (stream().size() < deadPrefixLimit || searched_ < reach) return;
    // Whole turns of the ring, so that the marks stay where they are.
    const std::size_t dead = (searched_ - reach) / ring * ring;
    lastIndex_ -= std::min(lastIndex_, dead);
    front_ += dead;
    searched_ -= dead;
    scanned_ -= std::min(scanned_, dead);
    markedEnd_ -= std::min(markedEnd_, dead);
}

// Everything before `place` is searched now: its marks make way for the next turn of the ring.
void Splitter::advance(std::size_t place) {
    for (const std::size_t end = std::min(place, markedEnd_); searched_ < end;) {
        const std::size_t from = searched_ % ring;
        const std::size_t count = std::min(end - searched_, ring - from);
        std::memset(&marks_[from], 0, count);
        searched_ += count;
    }
    searched_ = std::max(searched_, place);
}

}  // namespace zvr
