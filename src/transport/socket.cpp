#include "transport/socket.h"

#include <poll.h>

#include <optional>

#include "core/immortal.h"

namespace zvr {

namespace {

[[noreturn]] void fail(const std::error_code& error) { throw std::system_error(error); }

void check(const std::error_code& error) {
    if (error) fail(error);
}

bool isTransient(const std::error_code& error) {
    return error == asio::error::would_block || error == asio::error::try_again || error == asio::error::interrupted;
}

template <class Protocol>
class SocketOf final : public Socket {
public:
    explicit SocketOf(typename Protocol::socket socket) : socket_(std::move(socket)) { socket_.non_blocking(true); }

    int fileno() override { return static_cast<int>(socket_.native_handle()); }
    std::pair<std::string, int> localName() override { return nameOf(socket_.local_endpoint()); }
    std::pair<std::string, int> peerName() override { return nameOf(socket_.remote_endpoint()); }

    void shutDown() override {
        std::error_code error;
        socket_.shutdown(asio::socket_base::shutdown_both, error);
        // A socket that only receives datagrams is woken by this, although it has no peer to disconnect from.
        if (!std::is_same_v<Protocol, asio::ip::udp> || error != asio::error::not_connected) check(error);
    }

protected:
    std::size_t receiveNow(Bytes& buffer, std::error_code& error) override {
        const std::size_t count = socket_.receive(asio::buffer(buffer), 0, error);
        if (error == asio::error::eof) error.clear();
        return count;
    }

    std::size_t sendNow(ByteView bytes, std::error_code& error) override {
        return socket_.send(asio::buffer(bytes.data(), bytes.size()), 0, error);
    }

    bool endsWithNothing() const override { return std::is_same_v<Protocol, asio::ip::tcp>; }

private:
    static std::pair<std::string, int> nameOf(const typename Protocol::endpoint& endpoint) {
        return {endpoint.address().to_string(), endpoint.port()};
    }

    typename Protocol::socket socket_;
};

}  // namespace

// Never destroyed: a thread may let go of its socket while the process ends.
asio::io_context& restingContext() {
    static const auto& context = immortal(std::make_unique<asio::io_context>());
    return *context;
}

short Socket::awaitEvent(short events, Deadline deadline, const Attend& attend) {
    pollfd entry{fileno(), events, 0};
    waitAttended(deadline, attend, [&](Deadline until) {
        int milliseconds = -1;
        if (until != forever) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now()).count();
            milliseconds = static_cast<int>(std::clamp<std::int64_t>(left, 0, 60'000));
        }
        return ::poll(&entry, 1, milliseconds) > 0;
    });
    return entry.revents;
}

Reading Socket::read(Bytes& buffer, const Attend& attend) {
    const double limit = timeout;
    const Deadline deadline = deadlineIn(limit);
    for (short events = 0;;) {
        std::error_code error;
        const std::size_t count = receiveNow(buffer, error);
        if (!error) {
            buffer.resize(count);
            return count != 0 ? Reading::data : endsWithNothing() ? Reading::ended : Reading::idle;
        }
        if (!isTransient(error)) fail(error);
        if ((events & POLLHUP) != 0) {  // a datagram socket that is shut down has nothing to read, and says so for ever
            buffer.clear();
            return Reading::ended;
        }
        events = awaitEvent(POLLIN, deadline, attend);
        if (events == 0) fail(asio::error::timed_out);
    }
}

void Socket::readWaiting(Bytes& buffer) {
    std::error_code error;
    const std::size_t count = receiveNow(buffer, error);
    buffer.resize(error ? 0 : count);
}

bool Socket::send(ByteView bytes, Deadline deadline, const Attend& attend) {
    deadline = std::min(deadline, deadlineIn(timeout));
    bool partly = false;
    for (;;) {
        std::error_code error;
        bytes = bytes.subspan(sendNow(bytes, error));
        if (bytes.empty()) return true;
        if (!error) {
            if (!partly) deadline = std::max(deadline, Clock::now() + Client::finishWithin);
            partly = true;
        } else if (!isTransient(error)) {
            fail(error);
        } else if (awaitEvent(POLLOUT, deadline, attend) == 0) {
            return false;
        }
    }
}

std::shared_ptr<Socket> connectTcp(const std::string& host, int port, std::chrono::seconds limit,
                                   const Attend& attend) {
    using asio::ip::tcp;
    std::error_code error;
    auto address = asio::ip::make_address_v4(host, error);
    if (error) {
        tcp::resolver resolver(restingContext());
        address = resolver.resolve(tcp::v4(), host, "").begin()->endpoint().address().to_v4();
    }
    asio::io_context connecting;
    tcp::socket socket(connecting);
    std::optional<std::error_code> outcome;
    socket.async_connect({address, static_cast<std::uint16_t>(port)},
                         [&](std::error_code result) { outcome = result; });
    waitAttended(Clock::now() + limit, attend, [&](Deadline until) {
        connecting.run_until(until);
        return outcome.has_value();
    });
    check(outcome.value_or(asio::error::timed_out));
    socket.set_option(tcp::no_delay(true));
    return std::make_shared<SocketOf<tcp>>(tcp::socket(restingContext(), tcp::v4(), socket.release()));
}

std::shared_ptr<Socket> bindUdp(const std::string& host, int port) {
    using asio::ip::udp;
    const auto address = host.empty() ? asio::ip::address_v4::any() : asio::ip::make_address_v4(host);
    return std::make_shared<SocketOf<udp>>(
        udp::socket(restingContext(), udp::endpoint(address, static_cast<std::uint16_t>(port))));
}

}  // namespace zvr
