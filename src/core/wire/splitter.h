// Cuts a byte stream back into frames.
//
// A trailer alone does not end a frame, since data may hold 13 10; a start byte alone does not begin one, since data
// may hold 2. A frame is where a start byte, its length field and a trailer agree. The frame whose trailer comes first
// in the stream is taken, with the earliest start byte that fits this trailer, and everything up to the trailer's end
// is consumed with it.
//
// Trying the start bytes for every trailer would cost quadratic work on hostile bytes. But a start byte predicts the
// one place where its trailer would have to stand. So the trailers are visited in order, and before one is decided,
// every start byte before it has marked the place that it predicts; each start byte is looked at once, and only if a
// trailer comes at all.
//
// A Splitter is for one thread. A SharedSplitter is for the threads that share a link.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <mutex>
#include <utility>
#include <vector>

#include "core/wire/frame.h"

namespace zvr {

class Splitter {
public:
    /// Appends received bytes to those not yet consumed.
    void append(ByteView bytes);

    /// Consumes the complete frames and returns them in stream order.
    std::vector<Packet> split();

    /// Everything received and not yet consumed.
    ByteView stream() const { return ByteView(buffer_).subspan(front_); }
    void setStream(ByteView bytes);

    /// Offset in the stream where the next search for a trailer starts: after the last trailer that ended no frame.
    std::size_t lastIndex() const;
    void setLastIndex(std::size_t index);

    /// Number of bytes received so far.
    std::uint64_t received() const { return received_; }

private:
    static constexpr std::size_t ring = 1 << 16;  // more than a start byte can predict ahead

    std::size_t firstTrailer();
    std::size_t startOf(std::size_t trailer) const;
    Packet packetAt(std::size_t start, std::size_t trailer) const;
    void restart(std::size_t lastIndex);
    void dropDeadPrefix();
    void markPredictions(std::size_t end, std::size_t floor);
    void markBlock(std::size_t start, std::size_t floor);
    bool isMarked(std::size_t place) const { return marks_[place % ring] == mark_; }
    void advance(std::size_t place);

    Bytes buffer_;
    std::uint64_t received_ = 0;
    std::size_t front_ = 0;      // start of the stream in buffer_; all places below are offsets in the stream
    std::size_t lastIndex_ = 0;  // no trailer before it ends a frame
    std::size_t searched_ = 0;   // everything before it has been searched
    std::size_t scanned_ = 0;    // start bytes before it have marked their predictions, or predict no place of interest

    // The predicted places between searched_ and markedEnd_ hold the mark, modulo ring. Entries of older frames hold
    // older marks.
    std::array<std::uint8_t, ring> marks_{};
    std::uint8_t mark_ = 1;
    std::size_t markedEnd_ = 0;
};

/// A splitter that several threads share. Each call is atomic; `stream` returns a copy.
///
/// No thread waits for bytes or for the interpreter lock while holding it.
class SharedSplitter {
public:
    /// Runs `use` on the splitter with its lock held.
    template <class Use>
    decltype(auto) with(Use&& use) {
        const std::lock_guard lock(mutex_);
        const Counting counting{*this};
        return std::forward<Use>(use)(splitter_);
    }
    template <class Use>
    decltype(auto) with(Use&& use) const {
        const std::lock_guard lock(mutex_);
        return std::forward<Use>(use)(splitter_);
    }

    std::vector<Packet> split() {
        return with([](Splitter& splitter) { return splitter.split(); });
    }
    /// Adds bytes and consumes the frames they complete.
    std::vector<Packet> take(ByteView bytes) {
        return with([&](Splitter& splitter) {
            splitter.append(bytes);
            return splitter.split();
        });
    }
    /// Number of bytes received so far; takes no lock.
    std::uint64_t received() const noexcept { return received_.load(std::memory_order_relaxed); }
    Bytes stream() const {
        return with([](const Splitter& splitter) {
            const ByteView stream = splitter.stream();
            return Bytes(stream.begin(), stream.end());
        });
    }

private:
    struct Counting {
        ~Counting() { shared.received_.store(shared.splitter_.received(), std::memory_order_relaxed); }
        SharedSplitter& shared;
    };

    mutable std::mutex mutex_;
    Splitter splitter_;
    std::atomic<std::uint64_t> received_{0};
};

}  // namespace zvr
