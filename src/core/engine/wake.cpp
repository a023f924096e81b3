#include "core/engine/wake.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#ifdef __linux__
#include <sys/eventfd.h>
#endif

namespace zvr {

namespace {

int check(int result) {
    if (result < 0) throw std::system_error(errno, std::system_category());
    return result;
}

int makeDescriptor() {
#ifdef __linux__
    return check(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
#else
    // A socket connected to itself: one descriptor, as with eventfd.
    const int made = check(::socket(AF_INET, SOCK_DGRAM, 0));
    sockaddr_in self{};
    self.sin_family = AF_INET;
    self.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof self;
    auto* const address = reinterpret_cast<sockaddr*>(&self);
    if (::bind(made, address, size) < 0 || ::getsockname(made, address, &size) < 0 ||
        ::connect(made, address, size) < 0 || ::fcntl(made, F_SETFL, O_NONBLOCK) < 0) {
        const int number = errno;
        ::close(made);
        throw std::system_error(number, std::system_category());
    }
    closeOnExec(made);
    return made;
#endif
}

}  // namespace

Wake::Wake() : descriptor_(makeDescriptor()) {}

void Wake::ring() const noexcept {
    constexpr std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(number(), &one, sizeof one);
}

void Wake::silence() const noexcept {
    std::uint64_t count = 0;
    while (::read(number(), &count, sizeof count) > 0) {
#ifdef __linux__
        return;  // one read resets the counter
#endif
    }
}

}  // namespace zvr
