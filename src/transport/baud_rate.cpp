// A file of its own: the kernel's header and the C library's define the same names differently.
#include "transport/baud_rate.h"

#include <system_error>

#ifdef __linux__
#include <asm/termbits.h>
#include <sys/ioctl.h>

#include <cerrno>
#endif

namespace zvr {

void setUnusualBaudRate([[maybe_unused]] int descriptor, [[maybe_unused]] int baudRate) {
#ifdef __linux__
    termios2 settings{};
    if (baudRate > 0 && ::ioctl(descriptor, TCGETS2, &settings) == 0) {
        settings.c_cflag = (settings.c_cflag & ~static_cast<tcflag_t>(CBAUD)) | BOTHER;
        settings.c_ispeed = settings.c_ospeed = static_cast<speed_t>(baudRate);
        if (::ioctl(descriptor, TCSETS2, &settings) == 0) return;
        throw std::system_error(errno, std::generic_category());
    }
#endif
    throw std::system_error(std::make_error_code(std::errc::invalid_argument));
}

}  // namespace zvr
