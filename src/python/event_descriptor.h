// A descriptor that wakes an event loop, where the system has one that costs little.
#pragma once

#include <cstdint>
#include <memory>
#ifdef __linux__
#include <sys/eventfd.h>
#include <unistd.h>
#endif

namespace zvr::python {

/// Where a thread rings and a loop hears it. Closed when the last who may ring or listen has let go.
class Descriptor {
public:
    /// Nothing where there is none to be had.
    static std::shared_ptr<const Descriptor> make() {
#ifdef __linux__
        if (const int number = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC); number >= 0) {
            return std::make_shared<const Descriptor>(number);
        }
#endif
        return nullptr;
    }

    explicit Descriptor(int number) : number_(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

#ifdef __linux__
    ~Descriptor() { close(number_); }
    void ring() const {
        const std::uint64_t one = 1;
        [[maybe_unused]] const auto written = write(number_, &one, sizeof one);
    }
    void silence() const {
        std::uint64_t count = 0;
        [[maybe_unused]] const auto read = ::read(number_, &count, sizeof count);
    }
    /// A forked process shares what its parent watches, and must not end it.
    bool isOurs() const { return getpid() == process_; }
#else
    void ring() const {}
    void silence() const {}
    bool isOurs() const { return true; }
#endif

    int number() const { return number_; }

private:
    const int number_;
#ifdef __linux__
    const pid_t process_ = getpid();
#endif
};

}  // namespace zvr::python
