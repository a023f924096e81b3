// Injected faults of replies.
#pragma once

#include <chrono>
#include <optional>
#include <random>
#include <vector>

#include "core/wire/bytes.h"

namespace zvr::sim {

struct FaultOptions {
    double drop = 0, duplicate = 0, corrupt = 0, truncate = 0;
    double delay = 0;  ///< seconds
    std::size_t split = 0, coalesce = 0, flood = 0;
    std::optional<std::size_t> cut, stall;
    std::optional<int> command;  ///< the only one with faults
    unsigned seed = 1;

    bool any() const {
        return drop > 0 || duplicate > 0 || corrupt > 0 || truncate > 0 || delay > 0 || split != 0 || coalesce != 0 ||
               flood != 0 || cut || stall;
    }
};

/// Bytes to send, and their delay.
struct Piece {
    Bytes bytes;
    std::chrono::microseconds after{};
};

/// The faults of one connection.
class Faults {
public:
    explicit Faults(const FaultOptions& options) : options_(options), any_(options.any()), random_(options.seed) {}

    /// Whether anything can go wrong with frames of this command.
    bool concern(int command) const { return any_ && (!options_.command || *options_.command == command); }
    /// The pieces that are sent instead of a reply.
    std::vector<Piece> apply(int command, Bytes frame);
    /// Whether the connection ends after the replies processed so far.
    bool cuts() const { return options_.cut && replies_ >= *options_.cut; }

private:
    bool happens(double probability) { return probability > 0 && std::bernoulli_distribution(probability)(random_); }
    Bytes garbage(std::size_t count);

    const FaultOptions& options_;
    const bool any_;
    std::mt19937 random_;
    std::size_t replies_ = 0;
    std::size_t held_ = 0;
    Bytes together_;
};

}  // namespace zvr::sim
