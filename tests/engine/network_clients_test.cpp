// The network clients over real sockets of this host: forks, descriptors, datagrams.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include <thread>

#include "core/wire/constants.h"
#include "network_peer.h"

namespace zvr::testing {
namespace {

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
            right = right && errorOf([&] { client->read(buffer); }) == "NetworkConnectionLostError";
            right = right && errorOf([&] { client->receive(10, packets); }) == "NetworkConnectionLostError";
            right = right && errorOf([&] { client->send(Bytes{1}, patience()); }) == "NetworkConnectionLostError";
            right = right && errorOf([&] { socket->read(buffer, {}); }) == "NetworkConnectionLostError";
            right = right && errorOf([&] { client->connect(loopback, 1); }) == "NetworkConnectionLostError";
            right = right && errorOf([&] { finder.bind(loopback, 0); }) == "NetworkConnectionLostError";
            right = right && errorOf([&] { client->disconnect(); }) == "none";
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
    EXPECT_EQ(errorOf([&] { finder.bind(loopback, port); }), "none");
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

TEST(UdpClient, TakenPortIsTheNetworkErrorAndAFreeOneReceives) {
    UdpClient first, second;
    first.bind(loopback, 0);
    const int port = socketOf(first)->localName().second;
    EXPECT_EQ(errorOf([&] { second.bind(loopback, port); }), "NetworkConnectionError");
    EXPECT_EQ(errorOf([&] { second.bind("no address", 0); }), "NetworkConnectionError");
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
        EXPECT_EQ(errorOf([&] { client.disconnect(); }), "none");
        ASSERT_EQ(errorOf([&] { next.bind("", port); }), "none") << "in round " << round;
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
        if (i % 3 == 0) errorOf([&] { client.disconnect(); });  // connecting also lets go of the socket before
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
}  // namespace zvr::testing
