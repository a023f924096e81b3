// The queue and the gate, with real threads on both sides.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <thread>

#include "core/engine/fifo.h"
#include "core/engine/gate.h"
#include "core/wire/bytes.h"
#include "support.h"

namespace zvr::testing {
namespace {

TEST(Fifo, FullQueueRefusesAtOnceAndAtTheDeadlineAndKeepsItsItems) {
    Fifo<int> fifo(2);
    EXPECT_TRUE(fifo.tryPut(1));
    EXPECT_TRUE(fifo.put(2, forever));
    EXPECT_FALSE(fifo.tryPut(3));
    EXPECT_FALSE(fifo.put(4, Clock::now()));
    EXPECT_FALSE(fifo.put(5, Clock::now() + std::chrono::milliseconds(5)));
    EXPECT_EQ(fifo.size(), 2u);
    EXPECT_EQ(fifo.tryGet(), 1);
    EXPECT_EQ(fifo.get(Clock::now()), 2);
    EXPECT_EQ(fifo.tryGet(), std::nullopt);
    EXPECT_EQ(fifo.get(Clock::now() + std::chrono::milliseconds(5)), std::nullopt);
}

TEST(Fifo, QueueWithoutLimitTakesAll) {
    Fifo<int> fifo;
    for (int i = 0; i < 10'000; ++i) ASSERT_TRUE(fifo.tryPut(i));
    EXPECT_EQ(fifo.size(), 10'000u);
    EXPECT_EQ(fifo.tryGet(), 0);
}

TEST(Fifo, WaitingPutGoesOnWhenAnItemLeaves) {
    Fifo<int> fifo(1);
    ASSERT_TRUE(fifo.tryPut(1));
    auto put = std::async(std::launch::async, [&] { return fifo.put(2, forever); });
    EXPECT_EQ(fifo.get(patience()), 1);
    ASSERT_TRUE(endsSoon(put));
    EXPECT_TRUE(put.get());
    EXPECT_EQ(fifo.tryGet(), 2);
}

// A reader that waits for a number of items must not eat the wake-up of one that waits for any item.
TEST(Fifo, ReaderIsWokenThoughAnotherOneWaitsForMoreItems) {
    for (int round = 0; round < 200; ++round) {
        Fifo<int> fifo;
        Milestone started;
        auto many = std::async(std::launch::async, [&] {
            started.reach();
            return fifo.waitForSize(2, forever);
        });
        ASSERT_TRUE(started.awaitCount(1));
        auto one = std::async(std::launch::async, [&] {
            started.reach();
            return fifo.get(forever);
        });
        ASSERT_TRUE(started.awaitCount(2));
        std::this_thread::yield();
        fifo.tryPut(1);
        const bool woken = one.wait_for(std::chrono::seconds(5)) == std::future_status::ready;
        for (int i = 0; i < 3; ++i) fifo.tryPut(2);  // lets both go in any case
        EXPECT_EQ(one.get(), 1);
        EXPECT_GE(many.get(), 2u);
        ASSERT_TRUE(woken) << "in round " << round;
    }
}

TEST(Fifo, WaitForSizeTellsWhatIsThereAtTheDeadline) {
    Fifo<int> fifo;
    fifo.tryPut(1);
    EXPECT_EQ(fifo.waitForSize(1, Clock::now()), 1u);
    EXPECT_EQ(fifo.waitForSize(3, Clock::now() + std::chrono::milliseconds(5)), 1u);
    EXPECT_EQ(fifo.waitForSize(0, forever), 1u);
}

TEST(Fifo, AttendEndsTheWaitsAndMayUseTheQueue) {
    Fifo<int> fifo(1);
    const InterruptCheck interrupt = [] { throw Interrupted(); };
    EXPECT_THROW(fifo.get(forever, interrupt), Interrupted);
    EXPECT_THROW(fifo.waitForSize(1, forever, interrupt), Interrupted);
    EXPECT_EQ(fifo.get(forever, [&] { fifo.tryPut(7); }), 7);
    fifo.tryPut(1);
    EXPECT_THROW(fifo.put(2, forever, interrupt), Interrupted);
    EXPECT_TRUE(fifo.put(3, forever, [&] { fifo.tryGet(); }));
    EXPECT_EQ(fifo.tryGet(), 3);
}

TEST(Fifo, ManyProducersAndConsumersLoseAndReorderNothing) {
    struct Item {
        int producer, number;
    };
    constexpr int producers = 3, consumers = 3, each = 4000;
    Fifo<std::optional<Item>> fifo(8);
    std::vector<std::future<std::vector<Item>>> results;
    for (int c = 0; c < consumers; ++c) {
        results.push_back(std::async(std::launch::async, [&] {
            std::vector<Item> items;
            for (;;) {
                const auto item = fifo.get(patience());
                if (!item || !*item) return items;  // late, or the marker that ends a consumer
                items.push_back(**item);
            }
        }));
    }
    {
        std::vector<std::jthread> threads;
        for (int p = 0; p < producers; ++p) {
            threads.emplace_back([&, p] {
                for (int i = 0; i < each; ++i) EXPECT_TRUE(fifo.put(Item{p, i}, i % 2 == 0 ? patience() : forever));
            });
        }
    }
    for (int c = 0; c < consumers; ++c) EXPECT_TRUE(fifo.put(std::nullopt, patience()));
    std::vector<std::vector<int>> seen(producers);
    for (auto& result : results) {
        std::vector<int> last(producers, -1);
        for (const Item& item : result.get()) {
            EXPECT_GT(item.number, last[static_cast<std::size_t>(item.producer)]);
            last[static_cast<std::size_t>(item.producer)] = item.number;
            seen[static_cast<std::size_t>(item.producer)].push_back(item.number);
        }
    }
    std::vector<int> all(each);
    std::iota(all.begin(), all.end(), 0);
    for (auto& numbers : seen) {
        std::ranges::sort(numbers);
        EXPECT_EQ(numbers, all);
    }
}

TEST(Gate, IsShutFromTheStartAndBothTurnsMayBeRepeated) {
    Gate gate;
    Gate::Passed passing = 0;
    EXPECT_TRUE(gate.locked());
    gate.acquire();
    gate.acquire();
    EXPECT_TRUE(gate.locked());
    gate.release();
    gate.release();
    EXPECT_FALSE(gate.locked());
    const std::uint64_t open = gate.pass(passing);
    EXPECT_EQ(gate.pass(passing), open);  // passing turns nothing
    gate.acquire();
    EXPECT_TRUE(gate.locked());
    gate.release();
    EXPECT_GT(gate.pass(passing), open);
}

TEST(Gate, PassWaitsForTheReleaseThroughManyCycles) {
    Gate gate;
    constexpr int cycles = 500;
    Milestone passed, shut;
    std::jthread thread([&] {
        Gate::Passed passing = 0;
        for (int i = 1; i <= cycles; ++i) {
            gate.pass(passing);
            passed.reach();
            if (!shut.awaitCount(i)) return;
        }
    });
    for (int i = 1; i <= cycles; ++i) {
        EXPECT_EQ(passed.count(), i - 1) << "passed a shut gate";
        gate.release();
        ASSERT_TRUE(passed.awaitCount(i));
        gate.acquire();
        shut.reach();
    }
}

TEST(Gate, NoOpeningIsMissedHoweverShort) {
    Gate gate;
    Gate::Passed passing = 0;
    for (int round = 0; round < 3; ++round) {
        gate.release();
        gate.acquire();
        gate.pass(passing);
        EXPECT_FALSE(gate.awaitOpen(Clock::now()));
        bool looked = false;
        gate.pass(
            passing, [&] { return std::exchange(looked, true); }, Clock::now() + std::chrono::milliseconds(1));
        EXPECT_TRUE(looked) << "one opening lets the thread pass once";
    }
}

TEST(Gate, AwaitTurnHearsOfEveryTurnEvenOfOneBeforeTheCall) {
    Gate gate;
    Gate::Passed passing = 0;
    gate.release();
    const std::uint64_t turn = gate.pass(passing);
    gate.awaitTurn(turn, Clock::now() + std::chrono::milliseconds(5));  // nobody turns it
    EXPECT_EQ(gate.pass(passing), turn);
    gate.acquire();
    gate.awaitTurn(turn);
    gate.release();
    for (int round = 0; round < 300; ++round) {
        const std::uint64_t now = gate.pass(passing);
        auto waiting = std::async(std::launch::async, [&] { gate.awaitTurn(now); });
        gate.acquire();
        ASSERT_TRUE(endsSoon(waiting));
        gate.release();
    }
}

// Short waits in a row are one long wait to whoever wants to end it.
TEST(Waiting, ManyShortWaitsAreAttendedLikeOneLongOne) {
    Fifo<int> fifo;
    for (const auto each :
         {std::chrono::microseconds(10'000), std::chrono::microseconds(1'000), std::chrono::microseconds(50)}) {
        int looks = 0;
        const Deadline begin = Clock::now();
        for (Deadline now = begin, looked = begin; now - begin < 10 * checkEvery; now = Clock::now()) {
            fifo.get(now + each, [&] {
                looked = Clock::now();
                ++looks;
            });
            ASSERT_GE(looked, now - checkEvery) << each.count();
        }
        EXPECT_LE(looks, (Clock::now() - begin) / checkEvery + 1) << each.count();
    }
    // Waits that bring something are no exception, and what they bring is not dropped for a look.
    const Deadline begin = Clock::now();
    int interrupted = 0;
    for (int next = 0; Clock::now() - begin < 4 * checkEvery; ++next) {
        fifo.tryPut(next);
        const auto get = [&] { return fifo.get(forever, [] { throw Interrupted(); }); };
        try {
            ASSERT_EQ(get(), next);
        } catch (const Interrupted&) {
            ++interrupted;
            ASSERT_EQ(fifo.tryGet(), next);
        }
    }
    EXPECT_GE(interrupted, 2);
}

TEST(Waiting, TimesTooFarAwayAreForeverAndPastOnesArePast) {
    EXPECT_EQ(deadlineIn(std::numeric_limits<double>::infinity()), forever);
    EXPECT_EQ(deadlineIn(1e300), forever);
    const Deadline now = Clock::now(), none = deadlineIn(0), past = deadlineIn(-5);
    EXPECT_GE(none, now);
    EXPECT_LE(none, Clock::now());
    EXPECT_LT(past, now);
    EXPECT_GT(deadlineIn(999'999), now + std::chrono::seconds(999'000));
}

}  // namespace
}  // namespace zvr::testing
