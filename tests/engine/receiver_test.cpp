// The receive loop, on real connections and on sources that misbehave on purpose.
#include "transport/receiver.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "core/engine/threads.h"
#include "support.h"
#include "transport/network.h"

namespace zvr::testing {
namespace {

using asio::ip::tcp;

// What a receiver delivered and reported.
class Delivery {
public:
    std::shared_ptr<Receiver> receiver(std::shared_ptr<PacketSource> source, const std::string& name = "_recvCMDThread",
                                       Receiver::ReportRead reportRead = {}) {
        auto made = std::make_shared<Receiver>(
            name, 1536, [this](const Packet& packet) { take(packet); },
            [this](const std::string& thread, std::exception_ptr error) {
                const std::lock_guard lock(mutex_);
                reports_.emplace_back(thread, error);
            },
            std::move(reportRead));
        made->setSource(std::move(source));
        made->start();
        return made;
    }

    std::vector<int> commands() const {
        const std::lock_guard lock(mutex_);
        return commands_;
    }
    std::vector<std::pair<std::string, std::exception_ptr>> reports() const {
        const std::lock_guard lock(mutex_);
        return reports_;
    }

    Milestone packets;

private:
    void take(const Packet& packet) {
        if (packet.command == 666) throw std::out_of_range("a frame too short for its key");
        {
            const std::lock_guard lock(mutex_);
            commands_.push_back(packet.command);
        }
        packets.reach();
    }

    mutable std::mutex mutex_;
    std::vector<int> commands_;
    std::vector<std::pair<std::string, std::exception_ptr>> reports_;
};

// Counts the reads and answers each of them as told.
class FakeSource : public PacketSource {
public:
    using Answer = std::function<ReadStatus(int call, std::vector<Packet>& packets)>;
    explicit FakeSource(Answer answer) : answer_(std::move(answer)) {}

    ReadStatus receive(std::size_t, std::vector<Packet>& packets) override {
        struct Count {
            Milestone& calls;
            ~Count() { calls.reach(); }
        } const count{calls};
        return answer_(calls.count() + 1, packets);
    }

    Milestone calls;

private:
    Answer answer_;
};

class ReceiverTest : public ::testing::Test {
protected:
    ~ReceiverTest() override {
        // No thread may outlive what its sink refers to.
        for (const auto& receiver : started_) receiver->end();
        for (const auto& client : clients_) client->close();
        for (const auto& receiver : started_) EXPECT_TRUE(receiver->awaitEnd(patience()));
    }

    std::shared_ptr<Receiver> start(std::shared_ptr<PacketSource> source, Receiver::ReportRead reportRead = {}) {
        return started_.emplace_back(delivery_.receiver(std::move(source), "_recvCMDThread", std::move(reportRead)));
    }

    std::shared_ptr<TcpClient> connect(tcp::socket& device) {
        auto client = clients_.emplace_back(std::make_shared<TcpClient>());
        client->connect("127.0.0.1", acceptor_.local_endpoint().port());
        device = acceptor_.accept();
        return client;
    }

    static void write(tcp::socket& device, int command) { asio::write(device, asio::buffer(buildFrame(command, {}))); }

    asio::io_context context_;
    tcp::acceptor acceptor_{context_, tcp::endpoint(asio::ip::address_v4::loopback(), 0)};
    tcp::socket device_{context_};
    Delivery delivery_;
    Milestone readReports_;
    std::vector<std::shared_ptr<TcpClient>> clients_;
    std::vector<std::shared_ptr<Receiver>> started_;
};

TEST_F(ReceiverTest, PacketsReachTheSinkInOrderOnceTheGateIsOpen) {
    const auto receiver = start(connect(device_));
    EXPECT_TRUE(receiver->alive());
    Bytes stream;
    std::vector<int> expected;
    for (int i = 0; i < 3000; ++i) {
        const int command = 1000 + i;
        const Bytes frame = buildFrame(command, Bytes(static_cast<std::size_t>(i % 40), 13));
        stream.insert(stream.end(), frame.begin(), frame.end());
        expected.push_back(command);
    }
    receiver->gate->release();
    asio::write(device_, asio::buffer(stream));
    ASSERT_TRUE(delivery_.packets.awaitCount(3000));
    EXPECT_EQ(delivery_.commands(), expected);
}

// Reads of a dead link become fewer and fewer, and one follows each turn of the gate at once.
TEST_F(ReceiverTest, DeadPeerIsReadEverMoreSlowlyAndAtOnceAfterATurnOfTheGate) {
    const auto client = connect(device_);
    const auto source =
        std::make_shared<FakeSource>([&](int, std::vector<Packet>& packets) { return client->receive(1536, packets); });
    const auto receiver = start(source);
    device_.close();
    receiver->gate->release();
    ASSERT_TRUE(source->calls.awaitCount(8));
    EXPECT_FALSE(receiver->awaitEnd(Clock::now() + std::chrono::milliseconds(120)));
    EXPECT_LE(source->calls.count(), 12);  // 1, 2, 4, ... 128 ms
    for (int turn = 0; turn < 100; ++turn) {
        const int before = source->calls.count();
        receiver->gate->acquire();
        receiver->gate->release();
        ASSERT_TRUE(source->calls.awaitCount(before + 1, Clock::now() + std::chrono::seconds(1)));
    }
}

TEST_F(ReceiverTest, SourceThatBringsNothingWithoutWaitingIsReadAtMostOncePerPause) {
    const auto source = std::make_shared<FakeSource>([](int, std::vector<Packet>&) { return ReadStatus::idle; });
    const auto receiver = start(source);
    const auto begin = Clock::now();
    receiver->gate->release();
    ASSERT_TRUE(source->calls.awaitCount(20));  // idle is not the end
    receiver->gate->acquire();
    const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(Clock::now() - begin).count();
    EXPECT_LE(source->calls.count(), milliseconds + 2);
}

TEST_F(ReceiverTest, FailedReadsAreTurnsLostAndTheThreadReadsOn) {
    const auto source = std::make_shared<FakeSource>([](int call, std::vector<Packet>& packets) {
        if (call == 1) throw std::runtime_error("the cable is out");
        if (call == 2) throw std::system_error(std::make_error_code(std::errc::connection_reset));
        packets.push_back({call, {}});
        return call < 5 ? ReadStatus::data : ReadStatus::ended;
    });
    const auto receiver = start(source);
    receiver->gate->release();
    ASSERT_TRUE(delivery_.packets.awaitCount(3));
    EXPECT_EQ(delivery_.commands()[2], 5);
    EXPECT_TRUE(delivery_.reports().empty());
}

// Each change of a link that has failed for long is followed by a read, well before the pause of a second is over.
TEST_F(ReceiverTest, ChangesOfTheLinkEndThePause) {
    const auto client = connect(device_);
    const auto receiver = start(client);
    receiver->gate->release();
    const auto deliver = [&](int count) {
        write(device_, 1000 + count);
        ASSERT_TRUE(delivery_.packets.awaitCount(count, Clock::now() + std::chrono::milliseconds(500)));
    };
    const auto awaitLongPause = [&] {
        EXPECT_FALSE(receiver->awaitEnd(Clock::now() + std::chrono::milliseconds(1100)));
    };
    deliver(1);
    device_.close();
    awaitLongPause();
    client->disconnect();  // by hand, with the gate open
    client->connect("127.0.0.1", acceptor_.local_endpoint().port());
    device_ = acceptor_.accept();
    deliver(2);
    device_.close();
    awaitLongPause();
    tcp::socket other(context_);
    const auto second = connect(other);
    receiver->setSource(second);
    device_ = std::move(other);
    deliver(3);
    second->setTimeout(0.01);
    EXPECT_FALSE(receiver->awaitEnd(Clock::now() + std::chrono::milliseconds(200)));
    deliver(4);
}

// A source that is replaced while it waits for bytes must not keep the thread.
TEST_F(ReceiverTest, SourceIsReplacedUnderItsRead) {
    tcp::socket quiet(context_);
    const auto silent = connect(quiet), talking = connect(device_);
    const auto receiver = start(silent);
    receiver->gate->release();
    for (int round = 1; round <= 200; ++round) {
        receiver->setSource(silent);
        if (round % 2 == 0) std::this_thread::yield();
        receiver->setSource(talking);
        write(device_, 1000 + round);
        ASSERT_TRUE(delivery_.packets.awaitCount(round, Clock::now() + std::chrono::seconds(2))) << round;
    }
    receiver->setSource(silent);
    receiver->end();  // out of its read
    EXPECT_TRUE(receiver->awaitEnd(patience()));
}

TEST_F(ReceiverTest, DatagramThatCannotBeFiledIsIgnoredWhereAnybodyMaySend) {
    const auto receiver = start(connect(device_));
    receiver->ignoreUnfiled();
    receiver->gate->release();
    for (const int command : {1001, 666, 1002}) write(device_, command);
    ASSERT_TRUE(delivery_.packets.awaitCount(2));
    EXPECT_EQ(delivery_.commands(), (std::vector{1001, 1002}));
    EXPECT_TRUE(receiver->alive() && delivery_.reports().empty());
}

// The first pause of a link that reports is 100 ms, and each is twice the one before.
TEST_F(ReceiverTest, LinkThatReportsItsReadsIsReadEverMoreSlowlyUntilItWorksAgain) {
    const auto dead = std::make_shared<std::atomic<bool>>(true);
    const auto source = std::make_shared<FakeSource>([dead](int, std::vector<Packet>& packets) {
        if (*dead) throw std::system_error(std::make_error_code(std::errc::no_such_device));
        packets.push_back({7, {}});
        return ReadStatus::ended;
    });
    const auto receiver = start(source, [this](std::exception_ptr) { readReports_.reach(); });
    const auto begin = Clock::now();
    receiver->gate->release();
    ASSERT_TRUE(readReports_.awaitCount(3));
    EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(300));
    *dead = false;
    receiver->gate->release();  // whoever turns the gate need not wait for the pause
    ASSERT_TRUE(delivery_.packets.awaitCount(1, Clock::now() + std::chrono::milliseconds(350)));
    EXPECT_EQ(readReports_.count(), 3);
}

TEST_F(ReceiverTest, MissingClientIsReportedOnlyWhereReadsAre) {
    const auto loud = start(nullptr, [this](std::exception_ptr error) {
        EXPECT_THROW(std::rethrow_exception(error), MissingClient);
        readReports_.reach();
    });
    const auto silent = start(nullptr);
    loud->gate->release();
    silent->gate->release();
    ASSERT_TRUE(readReports_.awaitCount(1));
    silent->setSource(std::make_shared<FakeSource>([](int, std::vector<Packet>& packets) {
        packets.push_back({7, {}});
        return ReadStatus::ended;
    }));
    silent->gate->release();
    ASSERT_TRUE(delivery_.packets.awaitCount(1));
    EXPECT_TRUE(delivery_.reports().empty());
}

TEST_F(ReceiverTest, ThrowingSinkEndsTheThreadAndIsReportedWithItsName) {
    const auto receiver = start(connect(device_));
    receiver->gate->release();
    asio::write(device_, asio::buffer(Bytes{2, 0, 2, 1, 7, 13, 10, 2, 0, 2, 2, 154, 13, 10, 2, 0, 2, 1, 8, 13, 10}));
    ASSERT_TRUE(receiver->awaitEnd(patience()));
    EXPECT_FALSE(receiver->alive());
    EXPECT_EQ(delivery_.commands(), std::vector{0x107});  // 666 is 2, 154; what follows it is lost
    const auto reports = delivery_.reports();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].first, "_recvCMDThread");
    EXPECT_THROW(std::rethrow_exception(reports[0].second), std::out_of_range);
}

TEST_F(ReceiverTest, ShutGateHoldsTheThreadThroughManyReconnects) {
    const auto first = connect(device_);
    const auto receiver = start(first);
    for (int cycle = 1; cycle <= 100; ++cycle) {
        receiver->gate->release();
        write(device_, 1000 + cycle);
        ASSERT_TRUE(delivery_.packets.awaitCount(cycle));
        // As a device disconnects: the gate first, then the socket under the read.
        receiver->gate->acquire();
        first->disconnect();
        EXPECT_EQ(delivery_.packets.count(), cycle);
        first->connect("127.0.0.1", acceptor_.local_endpoint().port());
        device_ = acceptor_.accept();
    }
}

TEST_F(ReceiverTest, ReplacedSourceIsReadAfterTheNextTurn) {
    const auto receiver = start(nullptr);  // no connection yet
    receiver->gate->release();
    tcp::socket other(context_);
    const auto first = connect(device_), second = connect(other);
    receiver->setSource(first);
    receiver->gate->release();
    write(device_, 1001);
    ASSERT_TRUE(delivery_.packets.awaitCount(1));
    receiver->gate->acquire();
    receiver->setSource(second);
    first->disconnect();
    receiver->gate->release();
    write(other, 1002);
    ASSERT_TRUE(delivery_.packets.awaitCount(2));
    EXPECT_EQ(delivery_.commands(), (std::vector<int>{1001, 1002}));
}

TEST_F(ReceiverTest, EndsAtTheGateInAReadAndBehindADeadPeer) {
    tcp::socket dead(context_);
    const auto reading = connect(device_), ended = connect(dead);
    dead.close();
    const auto atTheGate = start(reading), inARead = start(reading), behindTheEnd = start(ended);
    bool aliveBefore = false;
    const auto onWait = [&] {
        aliveBefore = aliveBefore || atTheGate->alive();
        atTheGate->end();
    };
    EXPECT_TRUE(atTheGate->awaitEnd(patience(), onWait) && aliveBefore);

    inARead->gate->release();
    write(device_, 1001);
    ASSERT_TRUE(delivery_.packets.awaitCount(1));
    inARead->end();
    reading->close();
    EXPECT_TRUE(inARead->awaitEnd(patience()));

    behindTheEnd->gate->release();
    behindTheEnd->end();
    EXPECT_TRUE(behindTheEnd->awaitEnd(patience()));
    for (const auto& receiver : {atTheGate, inARead, behindTheEnd}) EXPECT_FALSE(receiver->alive());
    EXPECT_TRUE(delivery_.reports().empty());
}

TEST_F(ReceiverTest, BodyAlsoRunsOnTheCallersThreadUntilItsEnd) {
    const auto source = std::make_shared<FakeSource>([](int, std::vector<Packet>& packets) {
        packets.push_back({1, {}});
        return ReadStatus::ended;
    });
    std::vector<int> commands;
    const auto receiver = std::make_shared<Receiver>(
        "_recvDataThread", 9606, [&](const Packet& packet) { commands.push_back(packet.command); }, nullptr);
    receiver->setSource(source);
    auto run = std::async(std::launch::async, [&] { receiver->run(); });
    receiver->gate->release();
    ASSERT_TRUE(source->calls.awaitCount(1));
    receiver->end();
    ASSERT_TRUE(endsSoon(run));
    // A link that has ended is read again after a pause, which a busy machine may let pass.
    EXPECT_FALSE(commands.empty());
    EXPECT_EQ(commands, std::vector(commands.size(), 1));
    EXPECT_FALSE(receiver->alive());
}

TEST_F(ReceiverTest, ForkedChildHasNoThreadsAndWaitsForNone) {
    const auto receiver = start(connect(device_));
    receiver->gate->release();
    for (int round = 1; round <= 20; ++round) {
        const pid_t child = ::fork();
        if (child == 0) {
            const Deadline begin = Clock::now();
            bool right = !receiver->alive() && receiver->awaitEnd(forever) && receiver->isForeign();
            receiver->gate->acquire();
            right = right && receiver->gate->locked();
            receiver->gate->release();
            receiver->setSource(nullptr);
            receiver->end();
            awaitAllThreads(begin + std::chrono::seconds(30));
            ::_exit(right && Clock::now() - begin < std::chrono::seconds(10) ? 0 : 1);
        }
        write(device_, 1000 + round);
        ASSERT_TRUE(delivery_.packets.awaitCount(round));
        int status = 1;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    EXPECT_TRUE(receiver->alive());
}

TEST(Threads, AwaitAllReturnsOnlyWhenEveryBodyIsGoneWithAllItHolds) {
    Milestone started, leave, gone;
    // Takes its time to go, so that a count that came too early shows.
    struct Held {
        Held(Milestone& late, Milestone& end) : never(late), gone(end) {}
        Held(const Held&) = delete;
        Held& operator=(const Held&) = delete;
        ~Held() {
            EXPECT_FALSE(never.awaitCount(2, Clock::now() + std::chrono::milliseconds(5)));
            gone.reach();
        }
        Milestone &never, &gone;
    };
    constexpr int count = 10;
    for (int i = 0; i < count; ++i) {
        startThread("a name longer than a kernel takes", [&, held = std::make_shared<Held>(leave, gone)] {
            started.reach();
            EXPECT_TRUE(leave.awaitCount(1));
        });
    }
    ASSERT_TRUE(started.awaitCount(count));
    awaitAllThreads(Clock::now() + std::chrono::milliseconds(10));  // gives up
    EXPECT_EQ(gone.count(), 0);
    leave.reach();
    awaitAllThreads(patience());
    EXPECT_EQ(gone.count(), count);
}

}  // namespace
}  // namespace zvr::testing
