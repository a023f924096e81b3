// What an event loop watches for one object: a descriptor that other threads ring, and that tells when there is
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

/// Where a thread rings and a loop hears it. Closed when the last who may ring or listen has let go.
///
/// An epoll of its own serves for both: a link is put into it for one event at a time, from any thread, and so is, to
/// ring, a descriptor of the process that is always readable. So a link and a loop share this one descriptor, and the
/// loop need not be told of anything else.
class LoopDescriptor {
public:
    struct Heard {
        bool ring = false, link = false;
    };

    /// Nothing where there is none to be had.
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
    void ring() const {
        epoll_event event{};
        event.events = EPOLLIN | EPOLLONESHOT;
        event.data.u64 = ringing;
        const int always = alwaysReadable();
        if (epoll_ctl(number(), EPOLL_CTL_MOD, always, &event) != 0) epoll_ctl(number(), EPOLL_CTL_ADD, always, &event);
    }

    /// What has happened since it was asked last.
    Heard listen() const {
        std::array<epoll_event, 4> events{};
        const int count = epoll_wait(number(), events.data(), static_cast<int>(events.size()), 0);
        Heard heard;
        for (int i = 0; i < count; ++i) {
            (events[static_cast<std::size_t>(i)].data.u64 == ringing ? heard.ring : heard.link) = true;
        }
        return heard;
    }
#else
    void ring() const {}
    Heard listen() const { return {}; }
#endif

    /// A forked process shares what its parent watches, and must not end it.
    bool isOurs() const { return !mark_.foreign(); }

    /// -1 in a forked child.
    int number() const { return descriptor_.get(); }

private:
#ifdef __linux__
    static constexpr std::uint64_t ringing = 1;  // a link has 0

    static int alwaysReadable() {
        struct Rung {
            Wake wake;
            Rung() { wake.ring(); }
        };
        static PerProcess<Rung> rung;
        return rung.get().wake.number();
    }
#endif

    const ProcessMark mark_;
    const OwnDescriptor descriptor_;
};

}  // namespace zvr::python
