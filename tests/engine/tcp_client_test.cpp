// The TCP client over real sockets of this host.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>

#include <thread>

#include "core/wire/constants.h"
#include "core/wire/failures.h"
#include "network_peer.h"

namespace zvr::testing {
namespace {

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

TEST(TcpClient, ConnectFailsWithTheNetworkErrorWhereNobodyListens) {
    int port = 0;
    {
        Peer gone;
        port = gone.port();
    }
    TcpClient client;
    EXPECT_EQ(errorOf([&] { client.connect(loopback, port); }), "NetworkConnectionError");
    EXPECT_EQ(client.socket(), nullptr);
    EXPECT_EQ(errorOf([&] { client.disconnect(); }), "NetworkConnectionLostError");
    client.setTimeout(1);  // nothing to set it on
    Bytes buffer(10);
    EXPECT_EQ(errorOf([&] { client.read(buffer); }), "system error");
    EXPECT_EQ(errorOf([&] { client.send(Bytes{1}, patience()); }), "system error");
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
    EXPECT_EQ(errorOf([&] { held->read(buffer, {}); }), "system error");
    EXPECT_EQ(errorOf([&] { held->send(buffer, patience(), {}); }), "system error");
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
    const InterruptCheck interrupt = [&] {
        if (++looks == 3) throw Interrupted();
    };
    EXPECT_THROW(client.connect(loopback, port(), interrupt), Interrupted);
    EXPECT_EQ(looks, 3);
    EXPECT_EQ(client.socket(), nullptr);
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(SilentHost, ConnectEndsAtItsLimit) {
    const Deadline begin = Clock::now();
    EXPECT_EQ(errorOf([&] { connectTcp(loopback, port(), std::chrono::seconds(1), {}); }), "timed out");
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
    EXPECT_EQ(errorOf([&] { client.disconnect(); }), "none");
    EXPECT_EQ(client.socket(), nullptr);
}

TEST(TcpClient, DisconnectAfterAResetFailsKeepsTheSocketAndConnectRecovers) {
    Peer peer;
    TcpClient client;
    tcp::socket device = peer.connect(client);
    reset(device);
    Bytes buffer(10);
    EXPECT_EQ(errorOf([&] { client.read(buffer); }), "system error");
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(errorOf([&] { client.disconnect(); }), "NetworkConnectionLostError");
        EXPECT_NE(client.socket(), nullptr);
    }
    EXPECT_EQ(errorOf([&] { client.send(Bytes{1}, patience()); }), "system error");  // and no signal kills us
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
    EXPECT_EQ(errorOf([&] { client.read(buffer); }), "timed out");
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

// More than any link holds.
Bytes largeFrame() {
    Bytes large(16 << 20);
    for (std::size_t i = 0; i < large.size(); ++i) large[i] = static_cast<std::uint8_t>(i * 7 + i / 256);
    return large;
}

TEST(TcpClient, SendThatWentInPartIsCompleted) {
    Peer peer;
    TcpClient client;
    tcp::socket device = peer.connect(client);
    const Bytes large = largeFrame();
    auto sent = std::async(std::launch::async, [&] { return client.send(large, forever); });
    EXPECT_EQ(readAll(device, large.size()), large);
    ASSERT_TRUE(endsSoon(sent));
    EXPECT_TRUE(sent.get());
}

// Half a frame would spoil the next one, so what is left of it goes first, whoever sends; and only once.
TEST(TcpClient, SendThatNeverWaitsIsGoneOnWithByTheNextOne) {
    Peer peer;
    TcpClient client;
    tcp::socket device = peer.connect(client);
    const Bytes large = largeFrame(), next{4, 5};
    const Deadline past = Clock::now() - std::chrono::seconds(1);
    for (const bool isFinishedByAnother : {false, true}) {
        ASSERT_FALSE(client.send(large, past));
        EXPECT_FALSE(client.send(next, past));
        auto received = std::async(std::launch::async, [&] { return readAll(device, large.size() + next.size()); });
        if (isFinishedByAnother) {
            EXPECT_TRUE(client.send(next, patience()));
        }
        const Deadline end = patience();
        while (!client.send(large, past)) ASSERT_LT(Clock::now(), end);
        if (!isFinishedByAnother) {
            EXPECT_TRUE(client.send(next, patience()));
        }
        ASSERT_TRUE(endsSoon(received));
        Bytes expected = large;
        expected.insert(expected.end(), next.begin(), next.end());
        EXPECT_EQ(received.get(), expected);
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

// As the receive thread does: the wait comes first.
ReadStatus receiveAsThread(Client& client, std::vector<Packet>& packets) {
    return client.awaitBytes() ? client.receive(1536, packets) : ReadStatus::idle;
}

// A thread that reads for long is let out of it by who needs it elsewhere, and nothing that has come is lost.
TEST(TcpClient, ReceiveThreadIsInterruptedAtOnceAndItsTimeOutIsAnIdleTurn) {
    Peer peer;
    TcpClient client;
    tcp::socket device = peer.connect(client);
    std::vector<Packet> packets;
    for (int round = 0; round < 2000; ++round) {
        auto reading = std::async(std::launch::async, [&] { return receiveAsThread(client, packets); });
        if (round % 2 == 0) std::this_thread::yield();
        client.interrupt();
        ASSERT_TRUE(endsSoon(reading));
        ASSERT_EQ(reading.get(), ReadStatus::idle);
    }
    client.interrupt();
    asio::write(device, asio::buffer(buildFrame(1001, {})));
    while (packets.empty()) receiveAsThread(client, packets);
    EXPECT_EQ(packets, (std::vector<Packet>{{1001, {}}}));
    for (const double limit : {0.01, 0.0}) {
        client.setTimeout(limit);
        EXPECT_EQ(receiveAsThread(client, packets), ReadStatus::idle);
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
                reading =
                    reader == 0 ? receiveAsThread(client, packets) : client.receiveAs(Reader::caller, 700, packets, {});
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

}  // namespace
}  // namespace zvr::testing
