// The system's poll, until a deadline of our clock.
#pragma once

#include <poll.h>

#include <span>

#include "core/engine/waiting.h"

namespace zvr {

/// Returns whether an event is pending; false also if a signal interrupted the poll.
inline bool pollUntil(std::span<pollfd> entries, Deadline until) {
    for (pollfd& entry : entries) entry.revents = 0;
    const auto count = static_cast<nfds_t>(entries.size());
#ifdef __linux__
    if (until == forever) return ::ppoll(entries.data(), count, nullptr, nullptr) > 0;
    const auto left = std::max(until - Clock::now(), Clock::duration::zero());
    const auto seconds = std::chrono::floor<std::chrono::seconds>(left);
    const timespec time{static_cast<time_t>(seconds.count()), static_cast<long>((left - seconds).count())};
    return ::ppoll(entries.data(), count, &time, nullptr) > 0;
#else
    const auto left =
        until == forever ? -1 : std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now()).count();
    return ::poll(entries.data(), count,
                  until == forever ? -1 : static_cast<int>(std::clamp<long long>(left, 0, 60'000))) > 0;
#endif
}

}  // namespace zvr
