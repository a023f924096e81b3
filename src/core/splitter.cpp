#include "core/splitter.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "core/constants.h"

namespace zvr {

namespace {

// A stream this long without a frame gives up the part that can no longer belong to one.
constexpr std::size_t deadPrefixLimit = 1 << 20;

// Bytes looked at one by one before a search goes over to memchr: hits may be dense.
constexpr std::size_t probe = 8;

constexpr std::size_t none = static_cast<std::size_t>(-1);

bool isTrailer(ByteView bytes, std::size_t place) { return bytes[place] == CMD_CR && bytes[place + 1] == CMD_LF; }

// Where the frame that begins at `start` would have to end. A length is read as signed, so that one of 0x8000 or more
// never matches. The two length bytes must be there.
std::size_t predictedTrailer(ByteView bytes, std::size_t start) {
    const std::size_t length = static_cast<std::size_t>(bytes[start + 1]) << 8 | bytes[start + 2];
    return length > 0x7FFF ? none : start + 3 + length;
}

// The first start byte in [from, end); `end`, or `from` if that is behind it, where there is none.
std::size_t findStart(ByteView bytes, std::size_t from, std::size_t end) {
    const std::size_t near = std::min(end, from + probe);
    for (; from < near; ++from) {
        if (bytes[from] == CMD_STX) return from;
    }
    if (from >= end) return from;
    const void* hit = std::memchr(bytes.data() + from, CMD_STX, end - from);
    return hit ? static_cast<std::size_t>(static_cast<const std::uint8_t*>(hit) - bytes.data()) : end;
}

}  // namespace

void Splitter::append(ByteView bytes) {
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
        packets.push_back(packetAt(startOf(trailer), trailer));
        restart(0);
        front_ += trailer + 2;
    }
    dropDeadPrefix();
    return packets;
}

// The first place that holds a trailer and that some start byte predicts. If there is none, everything that has
// arrived is searched.
std::size_t Splitter::firstTrailer() {
    const ByteView bytes = stream();
    if (bytes.size() < 2) return none;
    const std::size_t decided = bytes.size() - 1;  // both bytes of a trailer at a place before it have arrived
    const std::size_t from = std::max(lastIndex_, searched_);
    std::size_t trailer = firstPendingTrailer();
    std::size_t start = scanned_;
    // A start byte needs its length before the trailer that it would beat, or at least before the end.
    for (std::size_t end = std::min(bytes.size(), trailer) - 2; (start = findStart(bytes, start, end)) < end; ++start) {
        const std::size_t place = predictedTrailer(bytes, start);
        if (place < decided) {
            if (isTrailer(bytes, place) && place >= from && place < trailer) end = (trailer = place) - 2;
        } else if (place < trailer) {  // none is the greatest place of all
            setPending(place);
        }
    }
    scanned_ = std::max(scanned_, start);
    if (trailer == none && searched_ < decided) {
        clearPending(searched_, decided);
        searched_ = decided;
    }
    return trailer;
}

// The first trailer among the predicted places that have arrived since the last search.
std::size_t Splitter::firstPendingTrailer() {
    const ByteView bytes = stream();
    const std::size_t end = std::min(pendingEnd_, bytes.size() - 1);
    for (std::size_t place = searched_; place < end;) {
        const std::uint64_t word = pending_[place % ringBits / 64] >> (place % 64);
        if (word == 0) {
            place += 64 - place % 64;
            continue;
        }
        place += static_cast<std::size_t>(std::countr_zero(word));
        if (place < end && isTrailer(bytes, place)) return place;
        ++place;
    }
    return none;
}

// The earliest start byte that predicts `trailer`; there is one. What is looked at here is consumed next.
std::size_t Splitter::startOf(std::size_t trailer) const {
    const ByteView bytes = stream();
    std::size_t start = findStart(bytes, 0, trailer);
    while (predictedTrailer(bytes, start) != trailer) start = findStart(bytes, start + 1, trailer);
    return start;
}

// The width of the command field shows in its first byte alone: up to 48 it is the high half of a two-byte code.
Packet Splitter::packetAt(std::size_t start, std::size_t trailer) const {
    const ByteView bytes = stream();
    const std::size_t at = start + CMD_INDEX_2;
    const bool wide = bytes[at] <= 48;
    const std::size_t from = std::min(at + (wide ? 2 : 1), trailer);
    const int command = wide ? bytes[at] << 8 | bytes[at + 1] : bytes[at];
    return {command, Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(from),
                           bytes.begin() + static_cast<std::ptrdiff_t>(trailer))};
}

void Splitter::restart(std::size_t lastIndex) {
    clearPending(searched_, pendingEnd_);
    lastIndex_ = lastIndex;
    searched_ = scanned_ = pendingEnd_ = 0;
}

void Splitter::dropDeadPrefix() {
    constexpr std::size_t reach = 3 + 0x7FFF;
    if (stream().size() < deadPrefixLimit || searched_ < reach) return;
    // Whole turns of the ring, so that the pending places stay where they are.
    const std::size_t dead = (searched_ - reach) / ringBits * ringBits;
    lastIndex_ = lastIndex() - std::min(lastIndex(), dead);
    front_ += dead;
    searched_ -= dead;
    scanned_ -= dead;
    pendingEnd_ -= std::min(pendingEnd_, dead);
}

void Splitter::setPending(std::size_t place) {
    pending_[place % ringBits / 64] |= std::uint64_t{1} << (place % 64);
    pendingEnd_ = std::max(pendingEnd_, place + 1);
}

void Splitter::clearPending(std::size_t from, std::size_t end) {
    end = std::min(end, pendingEnd_);
    while (from < end) {
        const std::size_t bit = from % 64;
        const std::size_t count = std::min<std::size_t>(64 - bit, end - from);
        const std::uint64_t mask = count == 64 ? ~std::uint64_t{0} : ((std::uint64_t{1} << count) - 1) << bit;
        pending_[from % ringBits / 64] &= ~mask;
        from += count;
    }
}

}  // namespace zvr
