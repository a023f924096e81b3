#include "links/serial.h"

#include <fcntl.h>
#include <sys/inotify.h>
#include <termios.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace zvr::sim {

namespace {

using Descriptor = asio::posix::stream_descriptor;

int checked(int result, const std::string& what) {
    if (result < 0) throw std::system_error(errno, std::generic_category(), what);
    return result;
}

Descriptor openMaster(asio::io_context& context) {
    Descriptor master(context, checked(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC), "cannot open a pseudo-terminal"));
    checked(grantpt(master.native_handle()), "grantpt");
    checked(unlockpt(master.native_handle()), "unlockpt");
    return master;
}

std::string slaveOf(Descriptor& master) {
    std::array<char, 128> path{};
    const int error = ptsname_r(master.native_handle(), path.data(), path.size());
    if (error != 0) throw std::system_error(error, std::generic_category(), "ptsname");
    return path.data();
}

// Raw mode without echo.
void makeRaw(int terminal) {
    termios settings{};
    checked(tcgetattr(terminal, &settings), "tcgetattr");
    cfmakeraw(&settings);
    checked(tcsetattr(terminal, TCSANOW, &settings), "tcsetattr");
}

}  // namespace

SymbolicLink::SymbolicLink(std::string target, std::string path) : target_(std::move(target)), path_(std::move(path)) {
    std::error_code ignored;
    if (std::filesystem::is_symlink(path_, ignored)) std::filesystem::remove(path_, ignored);
    checked(symlink(target_.c_str(), path_.c_str()), "cannot make the link " + path_);
}

SymbolicLink::~SymbolicLink() {
    // Another simulator may have replaced it.
    std::error_code failed;
    if (std::filesystem::read_symlink(path_, failed) == target_) std::filesystem::remove(path_, failed);
}

SerialLine::SerialLine(asio::io_context& context, Device& device, const Options& options)
    : slave_(context), visits_(context) {
    Descriptor master = openMaster(context);
    master_ = master.native_handle();
    path_ = slaveOf(master);
    slave_.assign(checked(open(path_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC), "cannot open " + path_));
    makeRaw(slave_.native_handle());
    visits_.assign(checked(inotify_init1(IN_NONBLOCK | IN_CLOEXEC), "inotify"));
    visits_.non_blocking(true);
    checked(inotify_add_watch(visits_.native_handle(), path_.c_str(), IN_OPEN | IN_CLOSE), "cannot watch " + path_);
    if (!options.link.empty()) link_.emplace(path_, options.link);
    connection_ = std::make_shared<Connection>(std::move(master), device, options,
                                               Connection::Rules{.answers = true,
                                                                 .isLine = true,
                                                                 .onArrival = [this] { followClients(); },
                                                                 .onRoom = [&device] { device.tellRoom(); }});
    device.sink.provide(connection_);
    restart();
    connection_->read();
    watch();
}

void SerialLine::watch() {
    visits_.async_wait(Descriptor::wait_read, [this](std::error_code error) {
        if (error) return;
        followClients();
        watch();
    });
}

// A line has no connections: clients are distinguished by opening and closing it.
void SerialLine::followClients() {
    alignas(inotify_event) std::array<char, 4096> buffer;
    std::error_code none;
    const std::size_t count = visits_.read_some(asio::buffer(buffer), none);
    for (std::size_t place = 0; place < count;) {
        inotify_event event;
        std::memcpy(&event, buffer.data() + place, sizeof event);
        place += sizeof event + event.len;
        const bool opened = (event.mask & IN_OPEN) != 0;
        clients_ = std::max(0, clients_ + (opened ? 1 : -1));
        if (clients_ == (opened ? 1 : 0)) restart();
    }
}

// The next client must not get data of the previous one.
void SerialLine::restart() {
    connection_->restart(clients_ > 0);
    tcflush(master_, TCOFLUSH);                 // output in flight
    tcflush(slave_.native_handle(), TCIFLUSH);  // input not yet read
}

void SerialLine::cut() {
    followClients();
    connection_->end();
}

std::string SerialLine::description() const { return R"("serial_port": ")" + path_ + '"'; }

}  // namespace zvr::sim
