#include "transport/socket.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <optional>

#ifdef __linux__
#include <sys/epoll.h>
#endif

#include "core/engine/polling.h"
#include "transport/names.h"

namespace zvr {

namespace {

[[noreturn]] void fail(const std::error_code& error) { throw std::system_error(error); }
[[noreturn]] void failWithErrno() { throw std::system_error(errno, std::system_category()); }

void check(int result) {
    if (result < 0) failWithErrno();
}

void check(const std::error_code& error) {
    if (error) fail(error);
}

bool isTransient(int number) { return number == EAGAIN || number == EWOULDBLOCK || number == EINTR; }

// Most bytes taken by one read of a busy link.
constexpr std::size_t mostWaiting = 65536;
// How often a thread checks whether its line was closed, where closing does not wake it.
constexpr std::chrono::milliseconds lookEvery{50};
// A lost peer makes the send fail instead of raising SIGPIPE.
#ifdef MSG_NOSIGNAL
constexpr int quietly = MSG_NOSIGNAL;
#else
constexpr int quietly = 0;
#endif
#ifdef __linux__
// The resolution of the system's clock ticks.
Clock::duration tick() {
    static const Clock::duration step = [] {
        timespec resolution{};
        check(::clock_getres(CLOCK_MONOTONIC_COARSE, &resolution));
        return std::chrono::nanoseconds(resolution.tv_nsec);
    }();
    return step;
}
#endif

template <class Protocol>
class SocketOf final : public SystemSocket {
public:
    explicit SocketOf(int descriptor) : SystemSocket(descriptor, FailureId::NetworkConnectionLostError) {
#ifdef __linux__
        // The descriptor blocks for a short time, unless a call asks otherwise: one call that waits and receives costs
        // less than two. The system counts this timeout in ticks and ends it within one more.
        const auto time = std::chrono::duration_cast<std::chrono::microseconds>(tick());
        const timeval limit{0, time.count()};
        check(::setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit));
        check(::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) & ~O_NONBLOCK));
#endif
    }

protected:
    ssize_t receiveNow(int descriptor, std::span<std::uint8_t> buffer) override {
        return ::recv(descriptor, buffer.data(), buffer.size(), MSG_DONTWAIT);
    }

#ifdef __linux__
    ssize_t receiveSoon(int descriptor, std::span<std::uint8_t> buffer) override {
        return ::recv(descriptor, buffer.data(), buffer.size(), 0);
    }
    Clock::duration shortWait() const override { return 2 * tick(); }
#endif

    ssize_t sendNow(int descriptor, ByteView bytes) override {
        return ::send(descriptor, bytes.data(), bytes.size(), MSG_DONTWAIT | quietly);
    }

    bool endsWithNothing() const override { return std::is_same_v<Protocol, asio::ip::tcp>; }
};

// A socket whose descriptor is not inherited by programs started meanwhile.
template <class Protocol>
typename Protocol::socket newSocket(asio::io_context& context) {
    const Protocol protocol = Protocol::v4();
#ifdef SOCK_CLOEXEC
    const int descriptor = ::socket(protocol.family(), protocol.type() | SOCK_CLOEXEC, protocol.protocol());
    check(descriptor);
#else
    const int descriptor = ::socket(protocol.family(), protocol.type(), protocol.protocol());
    check(descriptor);
    closeOnExec(descriptor);
#endif
    typename Protocol::socket made(context, protocol, descriptor);
#ifdef SO_NOSIGPIPE
    const int on = 1;
    check(::setsockopt(descriptor, SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on));
#endif
    return made;
}

SocketName nameFrom(int descriptor, int (*ask)(int, sockaddr*, socklen_t*)) {
    asio::ip::tcp::endpoint endpoint;
    auto size = static_cast<socklen_t>(endpoint.capacity());
    check(ask(descriptor, endpoint.data(), &size));
    endpoint.resize(size);
    return {endpoint.address().to_string(), endpoint.port()};
}

}  // namespace

/// A thread inside a call: keeps the descriptor open until it leaves.
class SystemSocket::Use {
public:
    explicit Use(SystemSocket& socket) : socket_(socket) {
        socket_.requireOwn();
        ++socket_.users_;
        if (!socket_.closing_) return;
        leave();
        throw std::system_error(EBADF, std::system_category());
    }
    ~Use() {
        if (!socket_.mark_.foreign()) leave();
    }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;

private:
    // The last one to leave a socket that is being closed closes it.
    void leave() noexcept {
        if (--socket_.users_ > 0 || !socket_.closing_) return;
        const std::lock_guard lock(socket_.mutex_);
        if (socket_.users_ > 0) return;
        socket_.descriptor_.reset();
        socket_.left_.notify_all();
    }

    SystemSocket& socket_;
};

std::optional<ReadStatus> Socket::receiveFor(const Wake* /*wake*/, Deadline /*until*/, std::size_t /*length*/,
                                             SharedSplitter& /*splitter*/, std::vector<Packet>& /*packets*/) {
    return std::nullopt;
}

bool Socket::watchOnce(int /*epoll*/) { return false; }

SystemSocket::SystemSocket(int descriptor, FailureId foreignFailure)
    : foreignFailure_(foreignFailure), descriptor_(descriptor) {
    check(::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) | O_NONBLOCK));
}

SystemSocket::~SystemSocket() = default;

void SystemSocket::requireOwn() const {
    if (mark_.foreign()) throw Failure(foreignFailure_, foreignMessage("The connection"));
}

void SystemSocket::onLoss(Told listener) {
    const std::lock_guard lock(mutex_);
    onLoss_ = std::move(listener);
}

// A failed read or send of a stream is its end; a datagram socket lives on.
void SystemSocket::noteLoss(int number) {
    if (!endsWithNothing() || closing_ || shut_) return;
    const auto when = end_.note(number);
    if (!when) return;
    Told listener;
    {
        const std::lock_guard lock(mutex_);
        listener = onLoss_;
    }
    if (listener) listener(*loss(), *when);
}

void SystemSocket::failAndNote() {
    const int number = errno;
    noteLoss(number);
    throw std::system_error(number, std::system_category());
}

std::optional<std::error_code> SystemSocket::loss() const {
    const int number = end_.reason();
    if (number == 0) return std::nullopt;
    if (number < 0) return asio::error::make_error_code(asio::error::eof);
    return std::error_code(number, std::system_category());
}

short SystemSocket::awaitEvent(short events, Deadline deadline, const InterruptCheck& onWait, const Wake* wake) {
    std::array<pollfd, 2> entries{{{descriptor_.get(), events, 0}, {wake == nullptr ? -1 : wake->number(), POLLIN, 0}}};
    const std::span polled = std::span(entries).first(wake == nullptr ? 1 : 2);
    const bool isWoken = wake == &threadWake_ || isWokenByShutdown();
    waitInterruptibly(deadline, onWait, [&](Deadline until) {
        requireOwn();  // the check may have forked
        if (!isWoken) until = std::min(until, Clock::now() + lookEvery);
        return pollUntil(polled, until) || closing_;
    });
    if (entries[1].revents != 0) wake->silence();
    return closing_ && entries[0].revents == 0 ? short{POLLHUP} : entries[0].revents;
}

std::optional<ReadStatus> SystemSocket::takeNow(std::span<std::uint8_t>& buffer, bool waits) {
    const int descriptor = descriptor_.get();
    const ssize_t count = waits ? receiveSoon(descriptor, buffer) : receiveNow(descriptor, buffer);
    if (count < 0) {
        if (isTransient(errno)) return std::nullopt;
        failAndNote();
    }
    buffer = buffer.first(static_cast<std::size_t>(count));
    if (count == 0) noteLoss(-1);
    return count != 0 ? ReadStatus::data : endsWithNothing() ? ReadStatus::ended : ReadStatus::idle;
}

std::optional<ReadStatus> SystemSocket::takeInto(SharedSplitter& splitter, std::size_t length,
                                                 std::vector<Packet>& packets, bool waits) {
    const std::lock_guard lock(receiving_);
    if (bufferSize_ < length) {  // what no read fills takes no memory
        buffer_ = std::make_unique_for_overwrite<std::uint8_t[]>(length);
        bufferSize_ = length;
    }
    std::span taken(buffer_.get(), length);
    const std::optional<ReadStatus> reading = takeNow(taken, waits);
    if (reading == ReadStatus::data) packets = splitter.take(taken);
    return reading;
}

// A stream's reader takes all waiting bytes in one call; a datagram is cut at the length.
std::size_t SystemSocket::lengthInPlaceOf(std::size_t length) const {
    return endsWithNothing() ? std::max(length, mostWaiting) : length;
}

template <class Take>
ReadStatus SystemSocket::readWith(Take&& take, const InterruptCheck& onWait) {
    const Use use(*this);
    const double limit = timeout_;
    const Deadline deadline = deadlineIn(limit);
    for (short events = 0;;) {
        if (const std::optional<ReadStatus> reading = take()) return *reading;
        // A datagram socket that is shut down stays readable with no data for ever.
        if (closing_ || (events & POLLHUP) != 0) return ReadStatus::ended;
        events = limit > 0 ? awaitEvent(POLLIN, deadline, onWait) : short{0};
        if (events == 0) fail(limit > 0 ? asio::error::timed_out : asio::error::would_block);
    }
}

ReadStatus SystemSocket::read(Bytes& buffer, const InterruptCheck& onWait) {
    std::span taken(buffer);
    const ReadStatus reading = readWith([&] { return takeNow(taken); }, onWait);
    buffer.resize(reading == ReadStatus::data ? taken.size() : 0);
    return reading;
}

ReadStatus SystemSocket::receive(Reader reader, std::size_t length, SharedSplitter& splitter,
                                 std::vector<Packet>& packets, const InterruptCheck& onWait) {
    const auto take = [&] { return takeInto(splitter, length, packets); };
    if (reader == Reader::caller) return readWith(take, onWait);
    const Use use(*this);
    length = lengthInPlaceOf(length);
    const std::optional<ReadStatus> reading = take();
    return closing_ && !reading ? ReadStatus::ended : reading.value_or(ReadStatus::idle);
}

std::optional<ReadStatus> SystemSocket::receiveFor(const Wake* wake, Deadline until, std::size_t length,
                                                   SharedSplitter& splitter, std::vector<Packet>& packets) {
    const Use use(*this);
    const Clock::duration left = until - Clock::now(), brief = shortWait();
    const bool waits = wake == nullptr && left > Clock::duration::zero();
    if (waits && (brief == Clock::duration::zero() || left <= brief)) return ReadStatus::idle;
    const short events = wake == nullptr ? short{POLLIN} : awaitEvent(POLLIN, until, {}, wake);
    if (events == 0) return ReadStatus::idle;
    const auto reading = takeInto(splitter, lengthInPlaceOf(length), packets, waits);
    if (!reading && (closing_ || (events & POLLHUP) != 0)) return ReadStatus::ended;
    return reading.value_or(ReadStatus::idle);
}

bool SystemSocket::awaitBytes() {
    const Use use(*this);
    const double limit = timeout_;
    return limit <= 0 || awaitEvent(POLLIN, deadlineIn(limit), {}, &threadWake_) != 0;
}

bool SystemSocket::watchOnce([[maybe_unused]] int epoll) {
#ifdef __linux__
    const Use use(*this);
    epoll_event event{};
    event.events = EPOLLIN | EPOLLONESHOT;
    event.data.u64 = 0;
    if (::epoll_ctl(epoll, EPOLL_CTL_MOD, descriptor_.get(), &event) == 0) return true;
    return errno == ENOENT && ::epoll_ctl(epoll, EPOLL_CTL_ADD, descriptor_.get(), &event) == 0;
#else
    return false;
#endif
}

// Sends as much as there is room for, and what is left of another frame before that. Gives whether `frame` is sent;
// once it is begun, `number` is its own.
bool SystemSocket::sendParts(ByteView frame, std::uint64_t& number) {
    const std::lock_guard lock(sending_);
    const auto push = [&](ByteView bytes) {
        while (!bytes.empty()) {
            const ssize_t sent = sendNow(descriptor_.get(), bytes);
            if (sent < 0 && !isTransient(errno)) failAndNote();
            if (sent < 0) break;
            bytes = bytes.subspan(static_cast<std::size_t>(sent));
        }
        return bytes;
    };
    const bool isClaimed = claimUntil_ != Deadline() && Clock::now() < claimUntil_;
    if (number == 0 && isClaimed && std::ranges::equal(begun_, frame)) number = begunNumber_;
    if (!unsent_.empty() && (number == 0 || number == begunNumber_)) {
        const ByteView left = push(unsent_);
        if (left.size() != unsent_.size()) claimUntil_ = Clock::now() + Client::finishWithin;
        unsent_.erase(unsent_.begin(), unsent_.end() - static_cast<std::ptrdiff_t>(left.size()));
        if (!unsent_.empty()) return false;
    }
    if (number != 0) {
        if (number == begunNumber_) claimUntil_ = {};
        return true;
    }
    const ByteView left = push(frame);
    if (left.size() == frame.size()) return frame.empty();
    number = ++begunNumber_;
    if (left.empty()) return true;
    unsent_.assign(left.begin(), left.end());
    begun_.assign(frame.begin(), frame.end());
    claimUntil_ = Clock::now() + Client::finishWithin;
    return false;
}

bool SystemSocket::send(ByteView bytes, Deadline deadline, const InterruptCheck& onWait) {
    const Use use(*this);
    std::uint64_t number = 0;
    if (sendParts(bytes, number)) return true;
    deadline = std::min(deadline, deadlineIn(timeout_));
    const bool waits = deadline > Clock::now();
    bool isLonger = false;
    do {
        if (!waits) return false;
        if (number != 0 && !std::exchange(isLonger, true)) {
            deadline = std::max(deadline, Clock::now() + Client::finishWithin);
        }
        if (awaitEvent(POLLOUT, deadline, onWait) == 0) return false;
        if (closing_) throw std::system_error(EBADF, std::system_category());
    } while (!sendParts(bytes, number));
    return true;
}

std::size_t SystemSocket::sendSome(ByteView bytes, const InterruptCheck& onWait) {
    const Use use(*this);
    const double limit = timeout_;
    for (const Deadline deadline = deadlineIn(limit);;) {
        const ssize_t sent = sendNow(descriptor_.get(), bytes);
        if (sent >= 0) return static_cast<std::size_t>(sent);
        if (!isTransient(errno)) failWithErrno();
        if (limit <= 0) fail(asio::error::would_block);
        if (awaitEvent(POLLOUT, deadline, onWait) == 0) fail(asio::error::timed_out);
        if (closing_) throw std::system_error(EBADF, std::system_category());
    }
}

void SystemSocket::interrupt() noexcept {
    if (!mark_.foreign()) threadWake_.ring();
}

void SystemSocket::close(Deadline deadline) noexcept {
    if (mark_.foreign()) return;
    std::unique_lock lock(mutex_);
    closing_ = true;
    if (users_ > 0) ::shutdown(descriptor_.get(), SHUT_RDWR);
    interrupt();
    if (users_ == 0) {
        descriptor_.reset();
    } else {
        waitOn(left_, lock, deadline, [this] { return descriptor_.get() < 0; });
    }
}

void SystemSocket::shutDown(int direction) {
    const Use use(*this);
    if (!isWokenByShutdown()) return;
    shut_ = true;
    if (::shutdown(descriptor_.get(), direction) == 0) return;
    shut_ = false;
    // A socket that only receives datagrams is woken by this, although it has no peer to disconnect from.
    if (endsWithNothing() || errno != ENOTCONN) failWithErrno();
}

SocketName SystemSocket::localName() {
    const Use use(*this);
    return nameFrom(descriptor_.get(), ::getsockname);
}

SocketName SystemSocket::peerName() {
    const Use use(*this);
    return nameFrom(descriptor_.get(), ::getpeername);
}

int SystemSocket::family() {
    const Use use(*this);
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    check(::getsockname(descriptor_.get(), reinterpret_cast<sockaddr*>(&address), &size));
    return address.ss_family;
}

int SystemSocket::type() {
    const Bytes value = option(SOL_SOCKET, SO_TYPE, sizeof(int));
    int type = 0;
    std::memcpy(&type, value.data(), std::min(value.size(), sizeof type));
    return type;
}

void SystemSocket::setOption(int level, int name, ByteView value) {
    const Use use(*this);
    check(::setsockopt(descriptor_.get(), level, name, value.data(), static_cast<socklen_t>(value.size())));
}

Bytes SystemSocket::option(int level, int name, std::size_t size) {
    const Use use(*this);
    Bytes value(size);
    auto taken = static_cast<socklen_t>(size);
    check(::getsockopt(descriptor_.get(), level, name, value.data(), &taken));
    value.resize(taken);
    return value;
}

std::shared_ptr<Socket> connectTcp(const std::string& host, int port, std::chrono::seconds limit,
                                   const InterruptCheck& onWait) {
    using asio::ip::tcp;
    const Deadline deadline = Clock::now() + limit;
    std::error_code error;
    auto address = asio::ip::make_address_v4(host, error);
    if (error) address = addressesOf(host, deadline, onWait).front();
    asio::io_context connecting;
    tcp::socket socket = newSocket<tcp>(connecting);
    std::optional<std::error_code> outcome;
    socket.async_connect({address, static_cast<std::uint16_t>(port)},
                         [&](std::error_code result) { outcome = result; });
    waitInterruptibly(deadline, onWait, [&](Deadline until) {
        connecting.run_until(until);
        return outcome.has_value();
    });
    check(outcome.value_or(asio::error::timed_out));
    socket.set_option(tcp::no_delay(true));
    return std::make_shared<SocketOf<tcp>>(socket.release());
}

std::shared_ptr<Socket> bindUdp(const std::string& host, int port) {
    using asio::ip::udp;
    const auto address = host.empty() ? asio::ip::address_v4::any() : asio::ip::make_address_v4(host);
    asio::io_context binding;
    udp::socket socket = newSocket<udp>(binding);
    socket.bind(udp::endpoint(address, static_cast<std::uint16_t>(port)));
    return std::make_shared<SocketOf<udp>>(socket.release());
}

}  // namespace zvr
