#include "transport/serial.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "core/wire/constants.h"
#include "core/wire/failures.h"
#include "transport/baud_rate.h"

namespace zvr {

namespace {

class SerialLine final : public SystemSocket {
public:
    explicit SerialLine(int descriptor) : SystemSocket(descriptor, FailureId::UARTConnectionError) {}

protected:
    ssize_t receiveNow(int descriptor, std::span<std::uint8_t> buffer) override {
        const ssize_t count = ::read(descriptor, buffer.data(), buffer.size());
        if (count == 0) errno = EIO;  // the line has hung up
        return count == 0 ? -1 : count;
    }
    ssize_t sendNow(int descriptor, ByteView bytes) override { return ::write(descriptor, bytes.data(), bytes.size()); }
    bool endsWithNothing() const override { return true; }
    bool isWokenByShutdown() const override { return false; }
};

std::shared_ptr<Socket> openLine(const std::string& port, int baudRate, double readTimeout) {
    using line = asio::serial_port_base;
    asio::io_context context;
    asio::serial_port opened(context, port);
    if (::flock(opened.native_handle(), LOCK_EX | LOCK_NB) != 0) {
        throw std::system_error(std::make_error_code(std::errc::device_or_resource_busy));
    }
    opened.set_option(line::character_size(8));
    opened.set_option(line::parity(line::parity::none));
    opened.set_option(line::stop_bits(line::stop_bits::one));
    opened.set_option(line::flow_control(line::flow_control::none));
    std::error_code unusual;
    opened.set_option(line::baud_rate(static_cast<unsigned>(baudRate)), unusual);
    if (unusual) setUnusualBaudRate(opened.native_handle(), baudRate);
    // The port closes its own descriptor; the copy shares its settings and its lock.
    const int copy = ::fcntl(opened.native_handle(), F_DUPFD_CLOEXEC, 0);
    if (copy < 0) throw std::system_error(errno, std::generic_category());
    auto made = std::make_shared<SerialLine>(copy);
    made->setTimeout(readTimeout);
    return made;
}

// With a timeout of 0 a read that finds nothing would block.
bool isTimeOver(const std::system_error& failure) {
    return failure.code() == asio::error::timed_out || failure.code() == asio::error::would_block;
}

}  // namespace

SerialClient::SerialClient() : readTimeout_(UART_READ_TIMEOUT) {}

std::shared_ptr<Socket> SerialClient::connect(const std::string& port, int baudRate, const InterruptCheck& wanted) {
    try {
        requireOwn();
        closeIf(wanted);
        setPlace(port);
        auto made = openLine(port, baudRate, readTimeout_);
        replaceSocket(made, wanted);
        return made;
    } catch (const std::system_error&) {
        std::throw_with_nested(Failure(FailureId::UARTConnectionError));
    }
}

void SerialClient::disconnect() {
    if (const auto held = socket()) held->shutDown();
    close();
}

void SerialClient::setReadTimeout(double seconds) {
    readTimeout_ = seconds;
    if (const auto held = socket()) held->setTimeout(seconds);
    changed();
}

ReadStatus SerialClient::read(Bytes& buffer, const InterruptCheck& onWait) {
    try {
        return SocketClient::read(buffer, onWait);
    } catch (const std::system_error& failure) {
        if (!isTimeOver(failure)) throw;
    }
    buffer.clear();
    return ReadStatus::idle;
}

ReadStatus SerialClient::receiveAs(Reader reader, std::size_t length, std::vector<Packet>& packets,
                                   const InterruptCheck& onWait) {
    try {
        return SocketClient::receiveAs(reader, length, packets, onWait);
    } catch (const std::system_error& failure) {
        if (!isTimeOver(failure)) throw;
    }
    return ReadStatus::idle;
}

}  // namespace zvr
