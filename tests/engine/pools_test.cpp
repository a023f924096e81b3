// Where received frames are filed, and how callers wait for them.
#include "core/engine/pools.h"

#include <gtest/gtest.h>

#include <thread>

#include "support.h"

namespace zvr::testing {
namespace {

struct IdleSubscriber : ReplySubscriber {
    void onReply() noexcept override {}
};

TEST(Pools, EachStreamingCommandHasItsKeyAndLosesItsHeader) {
    struct Row {
        int command;
        Bytes data;
        StreamKey key;
        Bytes stored;
    };
    constexpr int absent = StreamKey::absent;
    const Row rows[] = {
        {START_AI_STREAMING, {3, 200, 7, 8}, {START_AI_STREAMING, 3, 200}, {7, 8}},
        {START_AI_STREAMING, {3, 1}, {START_AI_STREAMING, 3, 1}, {}},
        {AI_START_STREAMING_24BIT, {3, 4, 7, 8}, {AI_START_STREAMING_24BIT, 0, 0}, {7, 8}},
        {START_AI_STREAMING_VARIABLE, {3, 4, 7, 8}, {START_AI_STREAMING_VARIABLE, 0, 0}, {7, 8}},
        {START_AI_STREAMING_VARIABLE, {3}, {START_AI_STREAMING_VARIABLE, 0, 0}, {}},
        {START_CAN, {3, 4, 7, 8}, {START_CAN, absent, absent}, {7, 8}},
        {START_CAN, {}, {START_CAN, absent, absent}, {}},
        {AHRS_START, {3, 4, 7, 8}, {AHRS_START, absent, absent}, {4, 7, 8}},
        {START_UART_READING, {255, 4, 7, 8}, {START_UART_READING, 255, absent}, {7, 8}},
        {START_UART_READING, {2}, {START_UART_READING, 2, absent}, {}},
        {START_AO_STREAMING, {3, 4}, {START_AO_STREAMING, absent, absent}, {3, 4}},
        {START_MOTION_MONITORING, {3, 4}, {START_MOTION_MONITORING, absent, absent}, {3, 4}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE("command " + std::to_string(row.command) + ", " + std::to_string(row.data.size()) + " bytes");
        DataPools pools;
        const auto early = pools.stream->at(row.key);  // as a feature that is constructed before the first frame
        pools.file(row.command, row.data);
        EXPECT_EQ(pools.stream->keys(), std::vector{row.key});
        EXPECT_EQ(early->tryGet(), StreamItem(row.stored));
        EXPECT_EQ(early->tryGet(), std::nullopt);
        EXPECT_EQ(pools.stream->at(row.key), early);
    }
}

TEST(Pools, FrameTooShortForItsKeyIsAnErrorAndFilesNothing) {
    DataPools pools;
    EXPECT_THROW(pools.file(START_AI_STREAMING, Bytes{1}), std::out_of_range);
    EXPECT_THROW(pools.file(START_AI_STREAMING, {}), std::out_of_range);
    EXPECT_THROW(pools.file(START_UART_READING, {}), std::out_of_range);
    EXPECT_THROW(pools.file(MOTION, Bytes{1, 2}), std::out_of_range);
    EXPECT_THROW(pools.file(GET_DEVICE_INFO, {}), std::out_of_range);
    EXPECT_THROW(pools.file(GET_DEVICE_INFO, {}, CommandClass::broadcast), std::out_of_range);
    EXPECT_TRUE(pools.stream->keys().empty());
    EXPECT_TRUE(pools.echo->keys().empty());
    EXPECT_TRUE(pools.broadcast->keys().empty());
}

TEST(Pools, UnclaimedEchoIsOverwrittenAndTakenOnce) {
    DataPools pools;
    pools.file(GET_RSSI, Bytes{1});
    pools.file(GET_RSSI, Bytes{2});
    pools.file(GET_BATTERY, {});
    EXPECT_TRUE(pools.echo->contains(GET_RSSI));
    EXPECT_EQ(pools.echo->peek(GET_RSSI), Bytes{2});
    EXPECT_EQ(pools.echo->take(GET_RSSI), Bytes{2});
    EXPECT_EQ(pools.echo->take(GET_RSSI), std::nullopt);
    EXPECT_EQ(pools.echo->peek(GET_RSSI), std::nullopt);
    EXPECT_EQ(pools.echo->take(GET_BATTERY), Bytes{});
}

TEST(Pools, MotionRepliesOfOtherAxesConnectorsAndSubCommandsAreNotMixed) {
    DataPools pools;
    pools.file(MOTION, Bytes{0, 7, 1, 11});
    pools.file(MOTION, Bytes{0, 7, 2, 12});
    pools.file(MOTION, Bytes{1, 7, 1, 13});
    pools.file(MOTION, Bytes{0, 8, 0x81, 14});
    EXPECT_EQ(pools.echo->take(MOTION), std::nullopt);  // nothing is ever filed under the bare code
    EXPECT_EQ(pools.echo->take(motionKey(Bytes{0, 7, 3})), std::nullopt);
    EXPECT_EQ(pools.echo->take(motionKey(Bytes{0, 7, 2})), (Bytes{0, 7, 2, 12}));
    EXPECT_EQ(pools.echo->take(motionKey(Bytes{1, 7, 1})), (Bytes{1, 7, 1, 13}));
    EXPECT_EQ(pools.echo->take(motionKey(Bytes{0, 8, 0x81})), (Bytes{0, 8, 0x81, 14}));
    EXPECT_EQ(pools.echo->keys(), std::vector<EchoPool::Key>{0x010007D0});
}

TEST(Pools, EqualBroadcastRepliesCountOnceAndRequestsDoNotCount) {
    DataPools pools;
    const auto set = pools.broadcast->at(GET_DEVICE_INFO);
    for (int i = 0; i < 3; ++i) pools.file(GET_DEVICE_INFO, Bytes{1, 5, 6});
    pools.file(GET_DEVICE_INFO, Bytes{1, 5, 7});
    pools.file(GET_DEVICE_INFO, Bytes{1});
    pools.file(GET_DEVICE_INFO, Bytes{0, 9});
    pools.file(GET_DEVICE_INFO, Bytes{2, 9});
    pools.file(GET_DEVICE_INFO, Bytes{0, 9}, CommandClass::broadcast);  // a class that somebody else chose
    EXPECT_EQ(set->records(), (std::vector<Bytes>{{}, {5, 6}, {5, 7}}));
    EXPECT_EQ(pools.broadcast->at(GET_DEVICE_INFO), set);
    EXPECT_EQ(pools.broadcast->keys(), std::vector<int>{GET_DEVICE_INFO});
    EXPECT_TRUE(set->discard({5, 6}));
    EXPECT_FALSE(set->discard({5, 6}));
    set->clear();
    EXPECT_TRUE(pools.broadcast->at(GET_DEVICE_INFO)->records().empty());
    EXPECT_TRUE(pools.echo->keys().empty());
}

TEST(EchoPool, ReplyThatIsThereIsTakenAtOnceAndNeverTwice) {
    EchoPool pool;
    pool.put(1, {5});
    EXPECT_EQ(pool.await(1, patience()), Bytes{5});
    EXPECT_EQ(pool.await(1, Clock::now() + std::chrono::milliseconds(2)), std::nullopt);
}

TEST(EchoPool, ReplyWakesTheCallerThatIsParked) {
    EchoPool pool;
    Milestone waiting;
    for (const bool withoutLimit : {true, false}) {
        auto reply = std::async(std::launch::async, [&] {
            return pool.await(1, withoutLimit ? forever : patience(), [&] { waiting.reach(); });
        });
        ASSERT_TRUE(waiting.awaitCount(waiting.count() + 1));
        pool.put(2, {9});
        pool.put(1, {5});
        ASSERT_TRUE(endsSoon(reply));
        EXPECT_EQ(reply.get(), Bytes{5});
        EXPECT_EQ(pool.take(2), Bytes{9});
    }
}

TEST(EchoPool, ReplyAfterTheDeadlineStaysForTheNextRequest) {
    EchoPool pool;
    EXPECT_EQ(pool.await(1, Clock::now() - std::chrono::seconds(1)), std::nullopt);
    const Deadline deadline = Clock::now() + std::chrono::milliseconds(60);
    EXPECT_EQ(pool.await(1, deadline, [] {}), std::nullopt);
    EXPECT_GE(Clock::now(), deadline);
    pool.put(1, {5});
    EXPECT_EQ(pool.await(1, patience()), Bytes{5});
}

TEST(EchoPool, AttendThatThrowsEndsTheWaitAndLeavesThePoolUsable) {
    EchoPool pool;
    for (int i = 0; i < 3; ++i) {
        EXPECT_THROW(pool.await(1, forever, [] { throw Interrupted(); }), Interrupted);
    }
    pool.put(1, {5});  // would reach a listener that is gone
    EXPECT_EQ(pool.await(1, patience()), Bytes{5});
    // It is called without a lock of the pool: it may file a reply itself.
    EXPECT_EQ(pool.await(1, forever, [&] { pool.put(1, {6}); }), Bytes{6});
}

// Requests go through one pool and replies come back through another, from and to many threads at once.
TEST(EchoPool, ThousandsOfHandOversBetweenManyThreadsLoseNoWakeUp) {
    constexpr int pairs = 4, rounds = 1500;
    EchoPool requests, replies;
    std::vector<std::future<int>> clients;
    std::vector<std::jthread> servers;
    for (int key = 0; key < pairs; ++key) {
        servers.emplace_back([&, key] {
            for (int i = 0; i < rounds; ++i) {
                auto request = requests.await(key, key % 2 == 0 ? forever : patience());
                if (!request) return;
                replies.put(key, std::move(*request));
            }
        });
        clients.push_back(std::async(std::launch::async, [&, key] {
            for (int i = 0; i < rounds; ++i) {
                Bytes data;
                appendBigEndian(data, i);
                requests.put(key, data);
                if (replies.await(key, patience()) != data) return i;
            }
            return rounds;
        }));
    }
    for (auto& client : clients) {
        ASSERT_TRUE(endsSoon(client));
        EXPECT_EQ(client.get(), rounds);
    }
    for (int key = 0; key < pairs; ++key) requests.put(key, {});  // lets a server that was left alone go
}

// Replies at all moments of the caller's way from its first look to its parking. Many listeners make the filing of one
// long enough for the caller to come in between.
TEST(EchoPool, ReplyThatIsFiledWhileTheCallerGetsReadyToParkIsNotMissed) {
    constexpr int rounds = 1000;
    EchoPool pool;
    const auto idle = std::make_shared<IdleSubscriber>();
    for (int i = 0; i < 2000; ++i) pool.subscribe(1, idle);
    std::atomic<int> asked{0};
    std::atomic<Deadline> answerAt{Deadline()};
    std::jthread device([&](const std::stop_token& stop) {
        for (int i = 1; i <= rounds; ++i) {
            while (asked < i && !stop.stop_requested()) std::this_thread::yield();
            while (Clock::now() < answerAt.load()) {
            }
            pool.put(1, {5});
        }
    });
    for (int i = 1; i <= rounds; ++i) {
        answerAt = Clock::now() + std::chrono::nanoseconds(i * 7919 % 30'000);
        asked = i;
        ASSERT_EQ(pool.await(1, patience()), Bytes{5}) << "in round " << i;
    }
}

TEST(EchoPool, TwoCallersOfOneKeyGetOneReplyEach) {
    EchoPool pool;
    Milestone waiting;
    const auto call = [&] { return pool.await(1, patience(), [&] { waiting.reach(); }); };
    auto first = std::async(std::launch::async, call), second = std::async(std::launch::async, call);
    ASSERT_TRUE(waiting.awaitCount(4));
    pool.put(1, {5});
    while (first.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready &&
           second.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) {
    }
    pool.put(1, {6});
    ASSERT_TRUE(endsSoon(first));
    ASSERT_TRUE(endsSoon(second));
    const Bytes a = first.get().value(), b = second.get().value();
    EXPECT_NE(a, b);
}

TEST(EchoPool, ListenerThatLeavesTheReplyDoesNotKeepItFromTheCallerBehindIt) {
    const auto pool = std::make_shared<EchoPool>();
    const Subscription stay(*pool, 1, std::make_shared<IdleSubscriber>());
    Milestone waiting;
    auto reply = std::async(std::launch::async, [&] { return pool->await(1, patience(), [&] { waiting.reach(); }); });
    ASSERT_TRUE(waiting.awaitCount(1));
    pool->put(1, {5});
    ASSERT_TRUE(endsSoon(reply));
    EXPECT_EQ(reply.get(), Bytes{5});
}

TEST(EchoPool, ListenerHearsOfItsKeyAloneWithNoLockHeldUntilItIsForgotten) {
    struct Taker : ReplySubscriber {
        explicit Taker(EchoPool& from) : pool(from) {}
        void onReply() noexcept override {
            if (auto data = pool.take(1)) taken.push_back(std::move(*data));
        }
        EchoPool& pool;
        std::vector<Bytes> taken;
    };
    const auto pool = std::make_shared<EchoPool>();
    const auto taker = std::make_shared<Taker>(*pool);
    {
        const Subscription stay(*pool, 1, taker);
        pool->put(2, {1});
        pool->put(1, {2});
        pool->put(1, {3});
    }
    pool->put(1, {4});
    EXPECT_EQ(taker->taken, (std::vector<Bytes>{{2}, {3}}));
    EXPECT_EQ(taker.use_count(), 1);
    EXPECT_TRUE(pool->contains(1));
}

// Receive threads file while callers look and feature objects are constructed.
TEST(Pools, FilingAndLookingFromManyThreadsIsSafe) {
    DataPools pools;
    constexpr int each = 2000;
    {
        std::vector<std::jthread> threads;
        for (int t = 0; t < 2; ++t) {
            threads.emplace_back([&, t] {
                for (int i = 0; i < each; ++i) {
                    pools.file(START_AI_STREAMING, Bytes{static_cast<std::uint8_t>(i % 50), 0, 1});
                    pools.file(GET_DEVICE_INFO, Bytes{1, static_cast<std::uint8_t>(t), static_cast<std::uint8_t>(i)});
                    pools.file(GET_RSSI, Bytes{1});
                }
            });
        }
        threads.emplace_back([&] {
            for (int i = 0; i < each; ++i) {
                pools.stream->at({START_AI_STREAMING, i % 50, 0});
                pools.stream->contains({START_CAN});
                pools.broadcast->at(GET_DEVICE_INFO)->records();
                pools.echo->take(GET_RSSI);
                pools.echo->keys();
            }
        });
    }
    std::size_t frames = 0;
    for (const StreamKey& key : pools.stream->keys()) frames += pools.stream->at(key)->size();
    EXPECT_EQ(frames, 2u * each);
    EXPECT_EQ(pools.stream->keys().size(), 50u);
    EXPECT_EQ(pools.broadcast->at(GET_DEVICE_INFO)->records().size(), 512u);
}

}  // namespace
}  // namespace zvr::testing
