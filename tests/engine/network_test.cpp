// The network clients over real sockets of this host.
#include "transport/network.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include <thread>

#include "core/wire/constants.h"
#include "core/wire/failures.h"
#include "support.h"

namespace zvr {
namespace {

using asio::ip::tcp;
using testing::endsSoon;
using testing::Interrupted;
using testing::openDescriptors;
using testing::patience;

// The socket of a connected client.
std::shared_ptr<SystemSocket> socketOf(const NetworkClient& client) {
    return std::dynamic_pointer_cast<SystemSocket>(client.socket());
}

constexpr const char* loopback = "127.0.0.1";

// The device's side of TCP connections.
class Peer {
public:
    int port() const { return acceptor_.local_endpoint().port(); }
    tcp::socket accept() { return acceptor_.accept(); }

    tcp::socket connect(TcpClient& client) {
        client.connect(loopback, port());
        return accept();
    }

private:
    asio::io_context context_;
    tcp::acceptor acceptor_{context_, tcp::endpoint(asio::ip::make_address_v4(loopback), 0)};
};

Bytes readAll(tcp::socket& socket, std::size_t count) {
    Bytes bytes(count);
    asio::read(socket, asio::buffer(bytes));
    return bytes;
}

// The peer ends the connection without a farewell.
void reset(tcp::socket& socket) {
    socket.set_option(asio::socket_base::linger(true, 0));
    socket.close();
}

template <class Action>
std::string failureOf(Action action) {
    try {
        action();
    } catch (const Failure& failure) {
        return std::string(rowOf(failure.id()).name);
    } catch (const std::system_error& error) {
        return error.code() == asio::error::timed_out ? "timed out" : "system error";
    }
    return "none";
}

// Sends until the peer's buffer and this side's one are full to the last byte; tells how many bytes fit.
std::size_t fill(NetworkClient& client) {
    const Bytes junk(1 << 16, 0x55);
    pollfd entry{socketOf(client)->fileno(), POLLOUT, 0};
    std::size_t filled = 0;
    for (std::size_t before = 1; before != filled;) {
        before = filled;
        for (std::size_t chunk = junk.size(); chunk > 0;) {
            const ssize_t sent = ::send(entry.fd, junk.data(), chunk, MSG_DONTWAIT | MSG_NOSIGNAL);
            if (sent < 0) {
                chunk /= 2;
            } else {
                filled += static_cast<std::size_t>(sent);
            }
        }
        ::poll(&entry, 1, 50);  // room may come while the bytes move on to the peer
    }
    return filled;
}

TEST(TcpClient, ConnectFailsWithTheNetworkFailureWhereNobodyListens) {
    int port = 0;
    {
        Peer gone;
        port = gone.port();
    }
    TcpClient client;
    EXPECT_EQ(failureOf([&] { client.connect(loopback, port); }), "NetworkConnectionError");
    EXPECT_EQ(client.socket(), nullptr);
    EXPECT_EQ(failureOf([&] { client.disconnect(); }), "NetworkConnectionLostError");
    client.setTimeout(1);  // nothing to set it on
    Bytes buffer(10);
    EXPECT_EQ(failureOf([&] { client.read(buffer); }), "system error");
    EXPECT_EQ(failureOf([&] { client.send(Bytes{1}, patience()); }), "system error");
}

TEST(TcpClient, ClosesTheSocketWhoeverHoldsIt) {
    Peer peer;
    TcpClient client;
    tcp::socket device = peer.connect(client);
    const auto held = socketOf(client);
    EXPECT_GE(held->fileno(), 0);
    client.disconnect();
    EXPECT_EQ(held->fileno(), -1);
    Bytes buffer(10);
    EXPECT_EQ(failureOf([&] { held->read(buffer, {}); }), "system error");
    EXPECT_EQ(failureOf([&] { held->send(buffer, patience(), {}); }), "system error");
}

TEST(TcpClient, ConnectsToAHostByName) {
    Peer peer;
    TcpClient client;
    client.connect("localhost", peer.port());
    tcp::socket device = peer.accept();
    EXPECT_EQ(socketOf(client)->peerName(), (std::pair<std::string, int>(loopback, peer.port())));
    EXPECT_EQ(socketOf(client)->localName().second, device.remote_endpoint().port());
}

// A listener whose queue is full answers no more: a connect to it hangs as it does to a host that is switched off.
class SilentHost : public ::testing::Test {
protected:
    SilentHost() {
        ::listen(acceptor_.native_handle(), 0);
        for (tcp::socket& socket : queue_) {
            socket.open(tcp::v4());
            socket.non_blocking(true);
            const auto endpoint = acceptor_.local_endpoint();
            ::connect(socket.native_handle(), endpoint.data(), static_cast<socklen_t>(endpoint.size()));
        }
    }
    int port() const { return acceptor_.local_endpoint().port(); }

    asio::io_context context_;
    tcp::acceptor acceptor_{context_, tcp::endpoint(asio::ip::make_address_v4(loopback), 0)};
    std::array<tcp::socket, 4> queue_{tcp::socket(context_), tcp::socket(context_), tcp::socket(context_),
                                      tcp::socket(context_)};
};

TEST_F(SilentHost, ConnectIsEndedByAttendAndLeavesNoSocketOpen) {
    TcpClient client;
    const auto before = openDescriptors();
    int looks = 0;
    const Attend interrupt = [&] {
        if (++looks == 3) throw Interrupted();
    };
    EXPECT_THROW(client.connect(loopback, port(), interrupt), Interrupted);
    EXPECT_EQ(looks, 3);
    EXPECT_EQ(client.socket(), nullptr);
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(SilentHost, ConnectEndsAtItsLimit) {
    const Deadline begin = Clock::now();
    EXPECT_EQ(failureOf([&] { connectTcp(loopback, port(), std::chrono::seconds(1), {}); }), "timed out");
    EXPECT_GE(Clock::now() - begin, std::chrono::seconds(1));
}

TEST(TcpClient, PeerThatClosesEndsTheStreamBehindItsLastBytes) {
    Peer peer;
    TcpClient client;
    {
        tcp::socket device = peer.connect(client);
        asio::write(device, asio::buffer("ab", 2));
    }
    Bytes buffer(10);
    EXPECT_EQ(client.read(buffer), ReadStatus::data);
    EXPECT_EQ(buffer, (Bytes{'a', 'b'}));
    for (int i = 0; i < 3; ++i) {
        buffer.resize(10);
        EXPECT_EQ(client.read(buffer), ReadStatus::ended);
        EXPECT_TRUE(buffer.empty());
    }
    EXPECT_EQ(failureOf([&] { client.disconnect(); }), "none");
    EXPECT_EQ(client.socket(), nullptr);
}

TEST(TcpClient, DisconnectAfterAResetFailsKeepsTheSocketAndConnectRecovers) {
    Peer peer;
    TcpClient client;
    tcp::socket device = peer.connect(client);
    reset(device);
    Bytes buffer(10);
    EXPECT_EQ(failureOf([&] { client.read(buffer); }), "system error");
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(failureOf([&] { client.disconnect(); }), "NetworkConnectionLostError");
        EXPECT_NE(client.socket(), nullptr);
    }
    EXPECT_EQ(failureOf([&] { client.send(Bytes{1}, patience()); }), "system error");  // and no signal kills us
    tcp::socket again = peer.connect(client);
    EXPECT_TRUE(client.send(Bytes{1, 2}, patience()));
    EXPECT_EQ(readAll(again, 2), (Bytes{1, 2}));
    client.close();
    EXPECT_EQ(client.socket(), nullptr);
}

TEST(TcpClient, FramesAreCutOverReadsAndOverAReconnect) {
    Peer peer;
    TcpClient client;
    tcp::socket device = peer.connect(client);
    const Bytes frame = buildFrame(183, Bytes(4000, 13));
    asio::write(device, asio::buffer(frame));
    asio::write(device, asio::buffer(frame.data(), 1000));
    std::vector<Packet> all, packets;
    while (all.empty()) {
        ASSERT_EQ(client.receive(1536, packets), ReadStatus::data);
        all.insert(all.end(), packets.begin(), packets.end());
    }
    while (client.splitter.stream().size() < 1000) client.receive(1536, packets);
    client.disconnect();
    device = peer.connect(client);
    asio::write(device, asio::buffer(frame.data() + 1000, frame.size() - 1000));
    while (all.size() < 2) {
        packets.clear();
        ASSERT_EQ(client.receive(1536, packets), ReadStatus::data);
        all.insert(all.end(), packets.begin(), packets.end());
    }
    EXPECT_EQ(all[0], (Packet{183, Bytes(4000, 13)}));
    EXPECT_EQ(all[1], all[0]);
    EXPECT_TRUE(client.splitter.stream().empty());
}

TEST(TcpClient, ReadEndsAtTheTimeoutOfTheSocketOrWhenAttendThrows) {
    Peer peer;
    TcpClient client;
    tcp::socket device = peer.connect(client);
    Bytes buffer(10);
    EXPECT_THROW(client.read(buffer, [] { throw Interrupted(); }), Interrupted);
    client.setTimeout(0.01);
    EXPECT_EQ(failureOf([&] { client.read(buffer); }), "timed out");
    client.setTimeout(std::numeric_limits<double>::infinity());
    asio::write(device, asio::buffer("a", 1));
    EXPECT_EQ(client.read(buffer), ReadStatus::data);
}

TEST(TcpClient, SendToAPeerThatDoesNotReadEndsAtItsDeadlineWithNothingSent) {
    Peer peer;
    TcpClient client;
    tcp::socket device = peer.connect(client);
    const std::size_t filled = fill(client);
    EXPECT_FALSE(client.send(Bytes{1, 2, 3}, Clock::now() - std::chrono::seconds(1)));
    const Deadline deadline = Clock::now() + std::chrono::milliseconds(40);
    EXPECT_FALSE(client.send(Bytes{1, 2, 3}, deadline));
    EXPECT_GE(Clock::now(), deadline);
    EXPECT_THROW(client.send(Bytes{1, 2, 3}, forever, [] { throw Interrupted(); }), Interrupted);
    client.setTimeout(0.02);
    EXPECT_FALSE(client.send(Bytes{1, 2, 3}, forever));
    client.setTimeout(std::numeric_limits<double>::infinity());
    // The peer reads on, and the next frame is the first one it gets.
    auto sent = std::async(std::launch::async, [&] { return client.send(Bytes{4, 5}, patience()); });
    readAll(device, filled);
    ASSERT_TRUE(endsSoon(sent));
    EXPECT_TRUE(sent.get());
    EXPECT_EQ(readAll(device, 2), (Bytes{4, 5}));
}

// Half a frame would spoil the next one, so a send that never waits finishes what it began.
TEST(TcpClient, SendThatWentInPartIsCompleted) {
    Peer peer;
    TcpClient client;
    tcp::socket device = peer.connect(client);
    Bytes large(16 << 20);
    for (std::size_t i = 0; i < large.size(); ++i) large[i] = static_cast<std::uint8_t>(i * 7 + i / 256);
    for (const Deadline deadline : {Clock::now() - std::chrono::seconds(1), forever}) {
        auto sent = std::async(std::launch::async, [&] { return client.send(large, deadline); });
        EXPECT_EQ(readAll(device, large.size()), large);
        ASSERT_TRUE(endsSoon(sent));
        EXPECT_TRUE(sent.get());
    }
}

// A busy link is read on where the first read was full; what comes is whole, in order, and followed by the end.
TEST(TcpClient, ReceivesWhatWaitsBehindAFullReadAndThenTheEnd) {
    Peer peer;
    TcpClient client;
    tcp::socket device = peer.connect(client);
    std::vector<Packet> sent, received;
    for (int i = 0; i < 400; ++i) {
        sent.push_back({1000 + i, Bytes(static_cast<std::size_t>(i), static_cast<std::uint8_t>(i))});
        asio::write(device, asio::buffer(buildFrame(sent.back().command, sent.back().data)));
    }
    device.close();
    for (ReadStatus reading = ReadStatus::data; reading == ReadStatus::data;) {
        std::vector<Packet> packets;
        reading = client.receive(1536, packets);
        received.insert(received.end(), packets.begin(), packets.end());
    }
    EXPECT_EQ(received, sent);
}

// A read without a limit on another thread; this one goes on when that one holds the socket.
std::future<ReadStatus> startRead(NetworkClient& client) {
    auto reading = std::async(std::launch::async, [&] {
        Bytes buffer(10);
        try {
            return client.read(buffer);
        } catch (const std::system_error& failure) {
            EXPECT_EQ(failure.code().value(), EBADF);  // it was closed before the read began
            return ReadStatus::ended;
        }
    });
    while (client.socket().use_count() < 3) std::this_thread::yield();
    return reading;
}

TEST(TcpClient, DisconnectWakesTheReadOfAnotherThread) {
    Peer peer;
    TcpClient client;
    for (int round = 0; round < 30; ++round) {
        tcp::socket device = peer.connect(client);
        auto reading = startRead(client);
        client.disconnect();
        ASSERT_TRUE(endsSoon(reading));
        EXPECT_EQ(reading.get(), ReadStatus::ended);
        std::error_code error;
        Bytes buffer(1);
        EXPECT_EQ(device.read_some(asio::buffer(buffer), error), 0u);
        EXPECT_EQ(error, asio::error::eof);
    }
}

// A thread that reads for long is let out of it by who needs it elsewhere, and nothing that has come is lost.
TEST(TcpClient, ReceiveThreadIsInterruptedAtOnceAndItsTimeOutIsAnIdleTurn) {
    Peer peer;
    TcpClient client;
    tcp::socket device = peer.connect(client);
    std::vector<Packet> packets;
    for (int round = 0; round < 2000; ++round) {
        auto reading = std::async(std::launch::async, [&] { return client.receive(1536, packets); });
        if (round % 2 == 0) std::this_thread::yield();
        client.interrupt();
        ASSERT_TRUE(endsSoon(reading));
        ASSERT_EQ(reading.get(), ReadStatus::idle);
    }
    client.interrupt();
    asio::write(device, asio::buffer(buildFrame(1001, {})));
    while (packets.empty()) client.receive(1536, packets);
    EXPECT_EQ(packets, (std::vector<Packet>{{1001, {}}}));
    for (const double limit : {0.01, 0.0}) {
        client.setTimeout(limit);
        EXPECT_EQ(client.receive(1536, packets), ReadStatus::idle);
    }
}

// Of two threads that receive at once each takes some of the bytes, and each frame comes out whole.
TEST(TcpClient, ManyReadersAndLookersShareOneStream) {
    Peer peer;
    TcpClient client;
    tcp::socket device = peer.connect(client);
    constexpr int count = 20'000;
    Bytes stream;
    for (int i = 0; i < count; ++i) {
        const Bytes frame = buildFrame(0x1000 + i % 0x1000, Bytes(static_cast<std::size_t>(i % 90), 13));
        stream.insert(stream.end(), frame.begin(), frame.end());
    }
    std::atomic<int> received{0};
    std::atomic<bool> over{false};
    std::vector<std::jthread> threads;
    for (int reader = 0; reader < 3; ++reader) {
        threads.emplace_back([&, reader] {
            for (ReadStatus reading = ReadStatus::data; reading != ReadStatus::ended;) {
                std::vector<Packet> packets;
                reading = client.receiveAs(reader == 0 ? Reader::thread : Reader::caller, 700, packets, {});
                received += static_cast<int>(packets.size());
            }
        });
    }
    threads.emplace_back([&] {
        while (!over) {
            const Bytes seen = client.splitter.stream();
            EXPECT_LE(client.splitter.with([](const Splitter& splitter) { return splitter.lastIndex(); }), 1u << 20);
            received += static_cast<int>(client.splitter.split().size());
            // A copy of one moment, not of two.
            EXPECT_TRUE(seen.empty() || seen.front() == CMD_STX);
        }
    });
    asio::write(device, asio::buffer(stream));
    device.shutdown(tcp::socket::shutdown_send);
    const Deadline late = patience();
    while (received < count && Clock::now() < late) std::this_thread::yield();
    over = true;
    threads.clear();
    EXPECT_EQ(received, count);
    EXPECT_TRUE(client.splitter.stream().empty());
}

// Runs in a forked child; tells whether it answered true.
template <class Body>
bool inChild(Body body) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(body() ? 0 : 1);
    int status = 0;
    for (const Deadline late = patience(); ::waitpid(child, &status, WNOHANG) == 0;) {
        if (Clock::now() > late) ::kill(child, SIGKILL);
        std::this_thread::yield();
    }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST(ForkedChild, HasNoLinkOfItsParentAndLeavesItAsItIs) {
    Peer peer;
    auto client = std::make_unique<TcpClient>();
    UdpClient finder;
    tcp::socket device = peer.connect(*client);
    finder.bind(loopback, 0);
    const int descriptor = socketOf(*client)->fileno(), port = socketOf(finder)->localName().second;
    const auto socket = socketOf(*client);
    for (int round = 0; round < 20; ++round) {
        auto reading = startRead(*client);  // inside a call at the fork
        EXPECT_TRUE(inChild([&] {
            Bytes buffer(10);
            std::vector<Packet> packets;
            bool right = ::fcntl(descriptor, F_GETFD) < 0 && socket->fileno() == -1 && client->socket() == nullptr;
            right = right && failureOf([&] { client->read(buffer); }) == "NetworkConnectionLostError";
            right = right && failureOf([&] { client->receive(10, packets); }) == "NetworkConnectionLostError";
            right = right && failureOf([&] { client->send(Bytes{1}, patience()); }) == "NetworkConnectionLostError";
            right = right && failureOf([&] { socket->read(buffer, {}); }) == "NetworkConnectionLostError";
            right = right && failureOf([&] { client->connect(loopback, 1); }) == "NetworkConnectionLostError";
            right = right && failureOf([&] { finder.bind(loopback, 0); }) == "NetworkConnectionLostError";
            right = right && failureOf([&] { client->disconnect(); }) == "none";
            client->interrupt();
            socket->close(forever);
            client->close();
            client.reset();
            finder.close();
            return right;
        })) << "in round "
            << round;
        ASSERT_TRUE(client->send(Bytes{7}, patience()));
        EXPECT_EQ(readAll(device, 1), Bytes{7});
        asio::write(device, asio::buffer(Bytes{8}));
        ASSERT_TRUE(endsSoon(reading));
        EXPECT_EQ(reading.get(), ReadStatus::data);
    }
    // A child that lives on keeps no port.
    std::array<int, 2> begun{};
    ASSERT_EQ(::pipe(begun.data()), 0);
    char byte = 0;
    const pid_t child = ::fork();
    if (child == 0) {
        const ssize_t written = ::write(begun[1], &byte, 1);
        ::pause();
        ::_exit(static_cast<int>(written));
    }
    EXPECT_EQ(::read(begun[0], &byte, 1), 1);
    for (const int each : begun) ::close(each);
    finder.disconnect();
    EXPECT_EQ(failureOf([&] { finder.bind(loopback, port); }), "none");
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
}

TEST(Socket, ProgramsThatAreStartedGetNone) {
    Peer peer;
    TcpClient client;
    tcp::socket device = peer.connect(client);
    UdpClient udp;
    udp.bind(loopback, 0);
    for (const NetworkClient* each : {static_cast<NetworkClient*>(&client), static_cast<NetworkClient*>(&udp)}) {
        EXPECT_EQ(::fcntl(socketOf(*each)->fileno(), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
    }
}

TEST(UdpClient, TakenPortIsTheNetworkFailureAndAFreeOneReceives) {
    UdpClient first, second;
    first.bind(loopback, 0);
    const int port = socketOf(first)->localName().second;
    EXPECT_EQ(failureOf([&] { second.bind(loopback, port); }), "NetworkConnectionError");
    EXPECT_EQ(failureOf([&] { second.bind("no address", 0); }), "NetworkConnectionError");
    EXPECT_EQ(second.socket(), nullptr);

    asio::io_context context;
    asio::ip::udp::socket sender(context, asio::ip::udp::v4());
    const asio::ip::udp::endpoint target(asio::ip::make_address_v4(loopback), static_cast<std::uint16_t>(port));
    std::vector<Packet> packets;
    sender.send_to(asio::buffer(Bytes{}), target);
    EXPECT_EQ(first.receive(512, packets), ReadStatus::idle);  // an empty datagram is not the end
    sender.send_to(asio::buffer(buildFrame(252, Bytes{1, 2})), target);
    EXPECT_EQ(first.receive(512, packets), ReadStatus::data);
    EXPECT_EQ(packets, (std::vector<Packet>{{252, {1, 2}}}));
}

TEST(UdpClient, DisconnectWakesTheReadOfAnotherThreadAndThePortIsFreeRightAfter) {
    UdpClient client, next;
    client.bind("", 0);
    const int port = socketOf(client)->localName().second;
    for (int round = 0; round < 30; ++round) {
        auto reading = startRead(client);
        EXPECT_EQ(failureOf([&] { client.disconnect(); }), "none");
        ASSERT_EQ(failureOf([&] { next.bind("", port); }), "none") << "in round " << round;
        ASSERT_TRUE(endsSoon(reading));
        EXPECT_EQ(reading.get(), ReadStatus::ended);
        next.disconnect();
        client.bind("", port);
    }
}

TEST(NetworkClient, ConnectingAgainAndAgainLeaksNoDescriptor) {
    Peer peer;
    TcpClient client;
    UdpClient udp;
    peer.connect(client);
    const auto before = openDescriptors();
    for (int i = 0; i < 200; ++i) {
        if (i % 3 == 0) failureOf([&] { client.disconnect(); });  // connecting also lets go of the socket before
        tcp::socket device = peer.connect(client);
        if (i % 5 == 0) reset(device);
        udp.bind(loopback, 0);
        if (i % 2 == 0) udp.disconnect();
    }
    client.close();
    udp.close();
    EXPECT_EQ(openDescriptors(), before - 2);  // the socket, and what wakes its readers
}

}  // namespace
}  // namespace zvr
