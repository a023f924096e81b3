#include "transport/serial.h"

#include <sys/file.h>

#include "core/constants.h"
#include "core/failures.h"
#include "transport/baud_rate.h"

namespace zvr {

namespace {

class SerialLine final : public Socket {
public:
    explicit SerialLine(asio::posix::stream_descriptor line) : line_(std::move(line)) { line_.non_blocking(true); }

    int fileno() override { return line_.native_handle(); }
    std::pair<std::string, int> localName() override { return noSocket(); }
    std::pair<std::string, int> peerName() override { return noSocket(); }
    void shutDown() override {}  // its reads end by themselves

protected:
    std::size_t receiveNow(Bytes& buffer, std::error_code& error) override {
        return line_.read_some(asio::buffer(buffer), error);
    }
    std::size_t sendNow(ByteView bytes, std::error_code& error) override {
        return line_.write_some(asio::buffer(bytes.data(), bytes.size()), error);
    }
    bool endsWithNothing() const override { return true; }

private:
    [[noreturn]] static std::pair<std::string, int> noSocket() {
        throw std::system_error(std::make_error_code(std::errc::not_a_socket));
    }

    asio::posix::stream_descriptor line_;
};

std::shared_ptr<Socket> openLine(const std::string& port, int baudRate) {
    using line = asio::serial_port_base;
    asio::serial_port opened(restingContext(), port);
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
    // The port closes its own descriptor; the copy shares what was set, and the lock.
    const int copy = ::dup(opened.native_handle());
    if (copy < 0) throw std::system_error(errno, std::generic_category());
    auto made = std::make_shared<SerialLine>(asio::posix::stream_descriptor(restingContext(), copy));
    made->timeout = UART_READ_TIMEOUT;
    return made;
}

}  // namespace

void SerialClient::connect(const std::string& port, int baudRate) {
    try {
        abandon();
        replaceSocket(openLine(port, baudRate));
    } catch (const std::system_error&) {
        throw Failure(FailureId::UARTConnectionError);
    }
}

Reading SerialClient::read(Bytes& buffer, const Attend& attend) {
    try {
        return SocketClient::read(buffer, attend);
    } catch (const std::system_error& failure) {
        if (failure.code() != asio::error::timed_out) throw;
    }
    buffer.clear();
    return Reading::idle;
}

}  // namespace zvr
