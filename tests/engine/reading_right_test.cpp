// Who reads a link: callers, event loops and the receive thread, over a real connection to a device that answers.
#include "core/engine/reading_right.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/epoll.h>

#include <charconv>
#include <cstdlib>

#include "core/wire/commands.h"
#include "network_peer.h"
#include "transport/receiver.h"

namespace zvr {
namespace {

using asio::ip::tcp;
using testing::Milestone;
using testing::patience;

constexpr int firstKey = 0x1001;
constexpr int unsolicited = 0x1100;

// Requests of each caller; the sanitizers ask for more.
int roundsOfEach() {
    int rounds = 3000;
    if (const char* const text = std::getenv("ZVR_TRIPS")) {
        std::from_chars(text, text + std::strlen(text), rounds);
        rounds /= 8;
    }
    return rounds;
}

// An event loop of a program, as far as the right to read goes: it watches the link, and reads when it is told.
class Loop final : public ReadingRight::Waiter, public ReplySubscriber {
public:
    explicit Loop(Receiver& receiver) : Waiter(true), receiver_(receiver) {
        epoll_event event{};
        event.events = EPOLLIN;
        event.data.u64 = 1;
        if (::epoll_ctl(epoll_.get(), EPOLL_CTL_ADD, wake_.number(), &event) != 0) throw std::bad_alloc();
    }

    void onTurn() noexcept override { receiver_.watchOnce(epoll_.get()); }
    void onReply() noexcept override { wake_.ring(); }

    std::optional<Bytes> await(EchoPool& pool, int key, const std::function<void()>& busy = {}) {
        const auto self = std::shared_ptr<Loop>(std::shared_ptr<void>(), this);
        const Subscription stay(pool, key, self);
        receiver_.right().enter(*this);
        std::optional<Bytes> data;
        for (const Deadline until = patience(); !(data = pool.take(key)) && Clock::now() < until;) {
            if (busy) busy();
            turn();
        }
        receiver_.right().leave(*this);
        return data;
    }

private:
    void turn() {
        std::array<epoll_event, 2> events{};
        const int count = ::epoll_wait(epoll_.get(), events.data(), 2, 50);
        for (int i = 0; i < count; ++i) {
            if (events[static_cast<std::size_t>(i)].data.u64 == 1) wake_.silence();
        }
        if (count > 0 && receiver_.right().begin(*this)) {
            receiver_.readFor(*this, nullptr, Clock::now());
            receiver_.right().end(*this);
            if (hasTurn()) onTurn();
        }
    }

    Receiver& receiver_;
    OwnDescriptor epoll_{::epoll_create1(EPOLL_CLOEXEC)};
    Wake wake_;
};

// A device that answers each frame with the same frame; some of them late, some with frames that nobody asked for.
class Device {
public:
    explicit Device(tcp::socket socket) : socket_(std::move(socket)), thread_([this] { run(); }) {}
    ~Device() {
        std::error_code ignored;
        socket_.shutdown(tcp::socket::shutdown_both, ignored);
    }

    void write(const Bytes& bytes) {
        const std::lock_guard lock(mutex_);
        asio::write(socket_, asio::buffer(bytes));
    }

    std::atomic<int> unasked{0};

private:
    void run() {
        Splitter splitter;
        Bytes buffer(4096);
        std::error_code error;
        for (int frames = 0;;) {
            const std::size_t count = socket_.read_some(asio::buffer(buffer), error);
            if (error) return;
            splitter.append(ByteView(buffer).first(count));
            for (const Packet& packet : splitter.split()) {
                if (++frames % 97 == 0) std::this_thread::sleep_for(std::chrono::milliseconds(2));  // past the lease
                Bytes answer = buildFrame(packet.command, packet.data);
                if (frames % 5 == 0) {
                    Bytes number;
                    appendBigEndian(number, unasked++);
                    const Bytes more = buildFrame(unsolicited, number);
                    answer.insert(answer.begin(), more.begin(), more.end());
                }
                write(answer);
            }
        }
    }

    tcp::socket socket_;
    std::mutex mutex_;
    std::jthread thread_;
};

class ReadingRightTest : public ::testing::Test {
protected:
    ReadingRightTest() {
        client_->connect(testing::loopback, acceptor_.local_endpoint().port());
        device_.emplace(acceptor_.accept());
        receiver_->setSource(client_);
        receiver_->start();
        receiver_->gate->release();
    }
    ~ReadingRightTest() override {
        receiver_->end();
        client_->close();
        EXPECT_TRUE(receiver_->awaitEnd(patience()));
    }

    void file(const Packet& packet) {
        if (packet.command == 666) throw std::out_of_range("a frame too short for its key");
        if (packet.command != unsolicited) return pools_.file(packet.command, packet.data, CommandClass::echo);
        if (readBigEndian<int>(packet.data) != unasked_.count()) outOfOrder_ = true;
        unasked_.reach();
    }

    bool send(int key, const Bytes& data) { return client_->send(buildFrame(key, data), patience()); }

    template <class Await>
    int callInTurn(int key, Await&& await) {
        const int rounds = roundsOfEach();
        for (int i = 0; i < rounds; ++i) {
            Bytes data;
            appendBigEndian(data, i * 16 + key);
            if (!send(key, data) || await(i) != data) return i;
        }
        return rounds;
    }

    asio::io_context context_;
    tcp::acceptor acceptor_{context_, tcp::endpoint(asio::ip::address_v4::loopback(), 0)};
    DataPools pools_;
    Milestone unasked_;
    std::atomic<bool> outOfOrder_{false};
    std::atomic<int> reports_{0};
    std::shared_ptr<TcpClient> client_ = std::make_shared<TcpClient>();
    std::optional<Device> device_;
    std::shared_ptr<Receiver> receiver_ = std::make_shared<Receiver>(
        "_recvCMDThread", 1536, [this](const Packet& packet) { file(packet); },
        [this](const std::string&, std::exception_ptr) { ++reports_; });
};

TEST_F(ReadingRightTest, CallersLoopsAndTheThreadContendAndEachGetsItsOwnReplies) {
    std::vector<std::future<int>> done;
    int key = firstKey;
    for (int caller = 0; caller < 5; ++caller, ++key) {
        done.push_back(std::async(std::launch::async, [this, key, caller] {
            const InterruptCheck check = caller == 0 ? InterruptCheck([] {}) : nullptr;
            return callInTurn(key, [&](int i) {
                if (i % 251 == 0) std::this_thread::sleep_for(std::chrono::milliseconds(2));  // the thread reads on
                return receiver_->await(*pools_.echo, key, patience(), check);
            });
        }));
    }
    for (int loop = 0; loop < 2; ++loop, ++key) {
        done.push_back(std::async(std::launch::async, [this, key] {
            Loop own(*receiver_);
            return callInTurn(key, [&](int i) {
                const auto busy = [&] {
                    if (i % 499 == 0) std::this_thread::sleep_for(std::chrono::milliseconds(20));
                };
                if (i % 3 == 0) receiver_->awaitBriefly(*pools_.echo, key);
                return own.await(*pools_.echo, key, busy);
            });
        }));
    }
    done.push_back(std::async(std::launch::async, [this, key] {  // reads nothing: the others bring its replies
        return callInTurn(key, [&](int) { return pools_.echo->await(key, patience()); });
    }));
    for (auto& each : done) EXPECT_EQ(each.get(), roundsOfEach());
    EXPECT_TRUE(unasked_.awaitCount(device_->unasked));
    EXPECT_FALSE(outOfOrder_);
    EXPECT_TRUE(pools_.echo->keys().empty());
}

// What is replaced, shut or dropped under a caller is the thread's to see to, and the caller waits on.
TEST_F(ReadingRightTest, GateSourceAndWaitersChangeUnderThoseWhoRead) {
    std::atomic<bool> over{false};
    std::jthread changes([&] {
        for (int i = 0; !over; ++i) {
            if (i % 3 == 0) receiver_->gate->acquire();
            if (i % 3 == 1) receiver_->setSource(nullptr);
            if (i % 3 == 2) receiver_->lookAgain();
            std::this_thread::sleep_for(std::chrono::microseconds(200));
            receiver_->setSource(client_);
            receiver_->gate->release();
        }
    });
    auto second = std::async(std::launch::async, [this] {
        return callInTurn(firstKey + 1, [&](int) { return receiver_->await(*pools_.echo, firstKey + 1, patience()); });
    });
    struct Stop {};
    EXPECT_EQ(callInTurn(firstKey,
                         [&](int i) {
                             if (i % 10 == 0) {
                                 lastChecked = {};
                                 EXPECT_THROW(receiver_->await(*pools_.echo, 99, patience(), [] { throw Stop(); }),
                                              Stop);
                             }
                             return receiver_->await(*pools_.echo, firstKey, patience());
                         }),
              roundsOfEach());
    EXPECT_EQ(second.get(), roundsOfEach());
    over = true;
    EXPECT_EQ(reports_, 0);
}

// A loop that has the right and does not come to read loses it; what was sent meanwhile is filed by the thread.
TEST_F(ReadingRightTest, ALoopThatIsBusyLosesTheRightAndGetsItBackWhenItComes) {
    Loop loop(*receiver_);
    const auto awaitUnasked = [&](int count) {
        Bytes number;
        appendBigEndian(number, count - 1);
        device_->write(buildFrame(unsolicited, number));
        return unasked_.awaitCount(count, patience());
    };
    int seen = 0;
    const auto busy = [&] {
        if (++seen > 3) return;
        ASSERT_TRUE(awaitUnasked(seen));
        if (seen < 3) return;
        ASSERT_TRUE(send(firstKey, {7}));
    };
    EXPECT_EQ(loop.await(*pools_.echo, firstKey, busy), Bytes{7});
    EXPECT_FALSE(outOfOrder_);
}

// A reply that another brings, a limit that strikes, and an end of the link, for a caller that reads.
TEST_F(ReadingRightTest, WhoReadsIsToldOfWhatOthersBringAndLeavesTheEndToTheThread) {
    auto waiting = std::async(std::launch::async, [&] { return receiver_->await(*pools_.echo, firstKey, patience()); });
    while (!receiver_->right().isWanted()) std::this_thread::yield();
    pools_.echo->put(firstKey, {3});
    ASSERT_TRUE(testing::endsSoon(waiting));
    EXPECT_EQ(waiting.get(), Bytes{3});

    const Deadline limit = Clock::now() + std::chrono::milliseconds(30);
    EXPECT_EQ(receiver_->await(*pools_.echo, firstKey, limit), std::nullopt);
    EXPECT_GE(Clock::now(), limit);

    // A frame that cannot be filed ends the thread, whoever has read it, and the caller waits out its time.
    device_->write(buildFrame(666, {}));
    EXPECT_EQ(receiver_->await(*pools_.echo, firstKey, Clock::now() + std::chrono::milliseconds(50)), std::nullopt);
    EXPECT_TRUE(receiver_->awaitEnd(patience()));
    EXPECT_EQ(reports_, 1);
}

}  // namespace
}  // namespace zvr
