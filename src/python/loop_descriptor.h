// The descriptor that an event loop watches for one object: readable when another thread notifies it, or when there is
// something to read on a link.
#pragma once

#include <cstdint>
#include <memory>
#ifdef __linux__
#include <sys/epoll.h>
#include <sys/eventfd.h>

#include <array>
#endif

#include "core/engine/wake.h"

namespace zvr::python {

/// Threads notify it, a loop polls it. Closed when its last user releases it.
///
/// One epoll serves for both: a link is added to it for one event at a time, from any thread; a notification adds, also
/// for one event, a descriptor of the process that is always readable. So the loop needs to watch this one descriptor
/// only.
class LoopDescriptor {
public:
    struct Heard {
        bool notified = false, link = false;
    };

    /// Null if it cannot be made.
    static std::shared_ptr<const LoopDescriptor> make() {
#ifdef __linux__
        if (const int number = epoll_create1(EPOLL_CLOEXEC); number >= 0) {
            return std::make_shared<const LoopDescriptor>(number);
        }
#endif
        return nullptr;
    }

    explicit LoopDescriptor(int number) : descriptor_(number) {}

#ifdef __linux__
    void notify() const {
        epoll_event event{};
        event.events = EPOLLIN | EPOLLONESHOT;
        event.data.u64 = notification;
        const int always = alwaysReadable();
        if (epoll_ctl(number(), EPOLL_CTL_MOD, always, &event) != 0) epoll_ctl(number(), EPOLL_CTL_ADD, always, &event);
    }

    /// The events since the last call.
    Heard listen() const {
        std::array<epoll_event, 4> events{};
        const int count = epoll_wait(number(), events.data(), static_cast<int>(events.size()), 0);
        Heard heard;
        for (int i = 0; i < count; ++i) {
            (events[static_cast<std::size_t>(i)].data.u64 == notification ? heard.notified : heard.link) = true;
        }
        return heard;
    }
#else
    void notify() const {}
    Heard listen() const { return {}; }
#endif

    /// A forked child shares the parent's epoll and must not change it.
    bool isOurs() const { return !mark_.foreign(); }

    /// -1 in a forked child.
    int number() const { return descriptor_.get(); }

private:
#ifdef __linux__
    static constexpr std::uint64_t notification = 1;  // a link has 0

    static int alwaysReadable() {
        struct Readable {
            Wake wake;
            Readable() { wake.ring(); }
        };
        static PerProcess<Readable> readable;
        return readable.get().wake.number();
    }
#endif

    const ProcessMark mark_;
    const OwnDescriptor descriptor_;
};

}  // namespace zvr::python
