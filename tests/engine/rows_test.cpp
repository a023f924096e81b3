// Scales, row queues, and the thread that decodes an analog input.
#include <gtest/gtest.h>

#include <cmath>
#include <deque>
#include <random>
#include <set>
#include <thread>

#include "core/engine/sample_memory.h"
#include "core/engine/stream_reader.h"
#include "support.h"

namespace zvr::testing {
namespace {

constexpr double ratio = 10.0 / 32768;

// Rows of consecutive 16-bit numbers.
Bytes counting(int first, std::size_t samples) {
    Bytes bytes;
    for (std::size_t i = 0; i < samples; ++i)
        appendBigEndian(bytes, static_cast<std::int16_t>(first + static_cast<int>(i)));
    return bytes;
}

std::vector<double> valuesOf(const std::vector<RowRun>& runs) {
    std::vector<double> values;
    for (const RowRun& run : runs) {
        const std::size_t before = values.size(), columns = static_cast<std::size_t>(run.layout.columns);
        values.resize(before + run.rows * columns);
        convertRows(run.layout, run.bytes, run.rows, values.data() + before, columns);
    }
    return values;
}

// The ratio of the 16-bit models makes exact products, so that the exact decimal fraction can be told with integers.
TEST(Scale, RoundsEveryCodeToFourDecimalsTiesToEven) {
    const auto scale = Scale16::of(ratio);
    EXPECT_EQ(scale, Scale16::of(ratio));
    for (int code = -32768; code < 32768; ++code) {
        const std::int64_t scaled = std::int64_t{code} * 100000;  // times 1 / 32768 is ten thousandths of a volt
        std::int64_t whole = scaled >> 15;
        const std::int64_t rest = scaled - (whole << 15);
        if (rest > 16384 || (rest == 16384 && whole % 2 != 0)) ++whole;
        ASSERT_EQ((*scale)(static_cast<std::int16_t>(code)), static_cast<double>(whole) / 10000) << code;
    }
    EXPECT_TRUE(std::isnan(roundDecimals(std::nan(""), 4)));
    EXPECT_EQ(roundDecimals(1e300, 4), 1e300);
}

TEST(Scale, LivesWhileItIsUsedAndALittleLonger) {
    const auto used = Scale16::of(0.125);
    const std::weak_ptr<const Scale16> unused = Scale16::of(0.25);
    EXPECT_EQ(unused.lock(), Scale16::of(0.25));
    for (int i = 1; i <= 10; ++i) EXPECT_EQ((*Scale16::of(i))(1), i);
    EXPECT_TRUE(unused.expired());
    EXPECT_EQ(used, Scale16::of(0.125));
    const double nothing = std::nan("");
    EXPECT_EQ(Scale16::of(nothing), Scale16::of(nothing));
    EXPECT_TRUE(std::isnan((*Scale16::of(nothing))(1)));
    EXPECT_EQ((*Scale16::of(0.25))(2), 0.5);
}

TEST(Scale, ConvertsRowsOfEveryKindIntoStridedMemory) {
    const Bytes bytes = {0xFF, 0xFF, 0xFF, 0x7F, 0xFF, 0xFF, 0x80, 0, 0, 0, 0, 1};
    std::vector<double> out(6, -99);
    convertRows(RowLayout::scaled24(2, 0.5), bytes.data(), 2, out.data(), 3);
    EXPECT_EQ(out, (std::vector<double>{-0.5, 4194303.5, -99, -4194304, 0.5, -99}));
    convertRows(RowLayout::scaled16(1, 1), bytes.data(), 2, out.data(), 2);
    EXPECT_EQ(out[0], -1);
    EXPECT_EQ(out[2], -129);
}

TEST(RowQueue, KeepsOrderOverSmallAndLargeFramesAndLayoutsHoweverItIsRead) {
    std::mt19937 random(7);
    const auto queue = std::make_shared<RowQueue>(1000000);
    std::vector<double> expected, got;
    for (int frame = 0, next = 0; frame < 400; ++frame) {
        const int columns = frame < 200 ? 4 : 3;
        const std::size_t rows = random() % (frame % 50 == 0 ? 3000 : 20);
        const std::size_t samples = rows * static_cast<std::size_t>(columns);
        EXPECT_EQ(queue->put(RowLayout::scaled16(columns, 1), counting(next % 30000, samples)), 0U);
        for (std::size_t i = 0; i < samples; ++i) {
            expected.push_back(static_cast<std::int16_t>(next % 30000 + static_cast<int>(i)));
        }
        next += static_cast<int>(samples);
        if (random() % 3 == 0) {
            const auto values = valuesOf(queue->take(random() % 200));
            got.insert(got.end(), values.begin(), values.end());
        }
    }
    const std::size_t left = queue->size();
    std::size_t uniform = 0;
    while (queue->size() != 0) {
        const auto [runs, rows, columns, place] = RowQueue::takeUniform(std::array{queue}, {.rows = RowQueue::noLimit});
        EXPECT_EQ(place.run, 0U);
        EXPECT_TRUE(columns == 4 || columns == 3);
        uniform += rows;
        const auto values = valuesOf(runs[0]);
        EXPECT_EQ(values.size(), rows * columns);
        got.insert(got.end(), values.begin(), values.end());
    }
    EXPECT_EQ(uniform, left);
    EXPECT_EQ(got, expected);
}

TEST(RowQueue, TakesRowsOfOneWidthAtATimeHoweverFewAreWanted) {
    const std::array queues{std::make_shared<RowQueue>(100), std::make_shared<RowQueue>(100)};
    for (const int columns : {2, 2, 3}) queues[0]->put(RowLayout::octets(columns), Bytes(12, 1));
    for (int i = 0; i < 4; ++i) queues[1]->put(RowLayout::octets(4), Bytes(20, 2));
    EXPECT_EQ(RowQueue::takeUniform(queues, {.rows = 0}).columns, 6U);
    std::vector<std::pair<std::size_t, std::size_t>> taken;
    for (const std::size_t count : {1, 7, 100, 1, 100, 100}) {
        const RowsTaken rows = RowQueue::takeUniform(queues, {.rows = count});
        taken.emplace_back(rows.rows, rows.columns);
    }
    using Pairs = std::vector<std::pair<std::size_t, std::size_t>>;
    EXPECT_EQ(taken, (Pairs{{1, 6}, {7, 6}, {4, 6}, {1, 7}, {3, 7}, {0, 4}}));
    EXPECT_EQ(queues[1]->size(), 4U);
}

TEST(RowQueue, KnowsWhereConsecutiveRowsStandInTheirRun) {
    const auto queue = std::make_shared<RowQueue>(10);
    std::uint64_t number = 0;
    const auto put = [&](std::size_t rows) { return queue->put(RowLayout::octets(2), Bytes(2 * rows, 1), ++number); };
    using Taken = std::array<std::uint64_t, 4>;  // rows, run, number of the first, dropped before it
    const auto take = [&](std::size_t count) -> Taken {
        const RowsTaken taken = RowQueue::takeUniform(std::array{queue}, {.rows = count, .consecutive = true});
        return {taken.rows, taken.place.run, taken.place.first, taken.place.droppedBefore};
    };
    put(2);
    queue->setRate(1000);
    EXPECT_EQ(queue->beginRun(number + 1), 1U);
    EXPECT_EQ(queue->run().rows, 0U);
    put(1);                 // was under way when the run began
    EXPECT_EQ(put(9), 2U);  // there is room for seven
    EXPECT_EQ(put(5), 5U);
    EXPECT_EQ(queue->run().rows, 14U);
    EXPECT_EQ(take(100), (Taken{3, 0, 0, 0}));
    EXPECT_EQ(take(3), (Taken{3, 1, 0, 0}));
    EXPECT_EQ(put(4), 0U);
    EXPECT_EQ(take(100), (Taken{4, 1, 3, 0}));
    EXPECT_EQ(take(1), (Taken{1, 1, 14, 7}));
    EXPECT_EQ(take(100), (Taken{3, 1, 15, 0}));
    queue->beginRun(number);
    put(1);
    EXPECT_EQ(take(100), (Taken{1, 2, 0, 0}));
}

TEST(RowQueue, TimeOfARunIsThatOfItsFirstRow) {
    const auto now = [] {
        return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
    };
    const std::array queue{std::make_shared<RowQueue>(1000)};
    queue[0]->setRate(4);
    const double before = now();
    queue[0]->put(RowLayout::octets(1), Bytes(9, 1));
    RowPlace place = RowQueue::takeUniform(queue, {.rows = 9}).place;
    EXPECT_GE(place.start, before - 2);
    EXPECT_LE(place.start, now() - 2);
    EXPECT_EQ(place.rate, 4);
    const double begun = now();
    queue[0]->beginRun(0);
    queue[0]->put(RowLayout::octets(1), Bytes(9, 1));  // sooner than such rows can be taken
    place = RowQueue::takeUniform(queue, {.rows = 9}).place;
    EXPECT_GE(place.start, begun);
}

TEST(RowQueue, DropsTheNewestRowsWhenFullAndRefusesBrokenFrames) {
    RowQueue queue(5);
    const RowLayout layout = RowLayout::scaled16(2, 1);
    EXPECT_EQ(queue.put(layout, counting(0, 6)), 0U);
    EXPECT_EQ(queue.put(layout, counting(6, 8)), 2U);
    EXPECT_EQ(queue.put(layout, counting(90, 2)), 1U);
    EXPECT_EQ(queue.dropped(), 3U);
    EXPECT_THROW(queue.put(layout, Bytes(5)), std::invalid_argument);
    EXPECT_EQ(valuesOf(queue.take(100)), (std::vector<double>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(queue.put(layout, counting(10, 2)), 0U);
    EXPECT_EQ(queue.waitForSize(2, Clock::now()), 1U);
}

// What a run shows must not change while the queue goes on growing behind it.
TEST(RowQueue, WakesEveryWaiterAtTheNumberThatItWaitsFor) {
    RowQueue queue(1000);
    const std::vector<std::size_t> wanted{700, 3, 40, 3, 1000};
    std::vector<std::future<std::size_t>> waiting;
    for (const std::size_t count : wanted) {
        waiting.push_back(
            std::async(std::launch::async, [&queue, count] { return queue.waitForSize(count, patience()); }));
    }
    EXPECT_EQ(queue.waitForSize(1, Clock::now() + std::chrono::milliseconds(1)), 0U);  // gives up, and holds up nobody
    for (int row = 0; row < 1000; ++row) ASSERT_EQ(queue.put(RowLayout::octets(1), Bytes(1)), 0U);
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        ASSERT_TRUE(endsSoon(waiting[i])) << wanted[i];
        EXPECT_GE(waiting[i].get(), wanted[i]);
    }
}

TEST(RowQueue, KeepsBytesAndRecordsWhole) {
    RowQueue bytes(300), records(3);
    EXPECT_EQ(bytes.put(RowLayout::octets(1), Bytes(250, 7)), 0U);
    EXPECT_EQ(bytes.put(RowLayout::octets(1), Bytes(60, 8)), 10U);
    EXPECT_EQ(valuesOf(bytes.take(251)).back(), 8);
    EXPECT_EQ(bytes.size(), 49U);
    EXPECT_THROW(records.put(RowLayout::records(12), Bytes(13)), std::invalid_argument);
    EXPECT_EQ(records.put(RowLayout::records(12), Bytes(48, 1)), 1U);
    EXPECT_EQ(records.take(9)[0].rows, 3U);
    EXPECT_EQ(bytes.dropped() + records.dropped(), 11U);
}

TEST(RowQueue, RunsStayAsTheyAreWhileOthersWriteAndRead) {
    RowQueue queue(1000000);
    const RowLayout layout = RowLayout::scaled16(1, 1);
    constexpr int frames = 20000;
    std::thread writer([&] {
        for (int i = 0; i < frames; ++i) queue.put(layout, counting(i, 1));
    });
    int next = 0;
    while (next < frames) {
        queue.waitForSize(1, patience());
        for (const double value : valuesOf(queue.take(77))) ASSERT_EQ(value, static_cast<std::int16_t>(next++));
    }
    writer.join();
    EXPECT_EQ(queue.size(), 0U);
}

TEST(SampleMemory, IsNobodyElsesAsLongAsItIsHeld) {
    const auto work = [](unsigned seed) {
        std::mt19937 random(seed);
        std::deque<std::pair<std::shared_ptr<double>, std::size_t>> held;
        for (int i = 0; i < 400; ++i) {
            const std::size_t count = random() % (i % 50 == 0 ? 600'000 : 40'000);
            held.emplace_back(sampleMemory(count), count);
            std::fill_n(held.back().first.get(), count, seed + count);
            for (std::size_t drop = random() % 3; drop != 0 && held.size() > 4; --drop) {
                const auto [memory, size] = held.front();
                held.pop_front();
                ASSERT_EQ(std::count(memory.get(), memory.get() + size, static_cast<double>(seed + size)),
                          static_cast<std::ptrdiff_t>(size));
            }
        }
    };
    std::thread one(work, 1), other(work, 2);
    work(3);
    one.join();
    other.join();
}

TEST(SampleMemory, IsUsedAgain) {
    std::set<double*> places;
    for (int i = 0; i < 1000; ++i) {
        const auto first = sampleMemory(10'000), second = sampleMemory(20'000);
        places.insert({first.get(), second.get()});
    }
    EXPECT_EQ(places.size(), 2U);
}

class StreamReaderTest : public ::testing::Test {
protected:
    StreamReaderTest() {
        for (int i = 0; i < 3; ++i) {
            pairs_.push_back({std::make_shared<StreamFifo>(), std::make_shared<RowQueue>(i == 2 ? 10 : 100000)});
        }
        reader_ = std::make_shared<StreamReader>(
            "_AIStreamThread", pairs_, RowLayout::scaled16(2, 1),
            [this](const std::string& name, std::exception_ptr error) {
                EXPECT_EQ(name, "_AIStreamThread");
                EXPECT_THROW(std::rethrow_exception(error), std::invalid_argument);
                reports_.reach();
            },
            [this](std::size_t rows) {
                for (; rows != 0; --rows) overflows_.reach();
            });
        reader_->start();
    }
    ~StreamReaderTest() override {
        reader_->end();
        EXPECT_TRUE(reader_->awaitEnd(patience()));
    }

    Milestone reports_, overflows_;
    std::vector<StreamReader::Pair> pairs_;
    std::shared_ptr<StreamReader> reader_;
};

TEST_F(StreamReaderTest, WaitsAtItsGateAndThenFilesEveryQueueInOrder) {
    for (int frame = 0; frame < 100; ++frame) {
        for (int i = 0; i < 2; ++i)
            pairs_[static_cast<std::size_t>(i)].frames->tryPut(counting(100 * i + 4 * frame, 4));
    }
    pairs_[0].frames->tryPut(StreamItem());
    EXPECT_EQ(pairs_[0].rows->waitForSize(1, Clock::now() + std::chrono::milliseconds(20)), 0U);
    reader_->gate->release();
    ASSERT_EQ(pairs_[0].rows->waitForSize(200, patience()), 200U);
    ASSERT_EQ(pairs_[1].rows->waitForSize(200, patience()), 200U);
    const auto values = valuesOf(pairs_[1].rows->take(200));
    for (std::size_t i = 0; i < values.size(); ++i) ASSERT_EQ(values[i], 100 + static_cast<double>(i));
    reader_->setLayout(RowLayout::scaled16(4, 1));
    pairs_[1].frames->tryPut(counting(0, 4));
    ASSERT_EQ(pairs_[1].rows->waitForSize(1, patience()), 1U);
    EXPECT_EQ(pairs_[1].rows->take(1).at(0).layout.columns, 4);
}

// The one who brings a frame files it itself where it can, and the thread the rest: none overtakes another.
TEST_F(StreamReaderTest, KeepsTheOrderWhoeverFiles) {
    constexpr int frames = 20000;
    std::atomic<bool> over = false;
    std::thread turner([&] {
        while (!over) {
            reader_->gate->release();
            std::this_thread::yield();
            reader_->gate->acquireOpen(Clock::now());
            reader_->lookAgain();
        }
        reader_->gate->release();
    });
    std::thread bringer([&] {
        for (int frame = 0; frame < frames; ++frame) {
            pairs_[0].frames->tryPut(counting(frame % 15000 * 2, 2));
            if (frame % 7 == 0) std::this_thread::yield();
        }
    });
    for (int taken = 0; taken < 2 * frames;) {
        ASSERT_NE(pairs_[0].rows->waitForSize(1, patience()), 0U);
        for (const double value : valuesOf(pairs_[0].rows->take(1000))) ASSERT_EQ(value, taken++ % 30000);
    }
    bringer.join();
    over = true;
    turner.join();
    EXPECT_EQ(pairs_[0].frames->size(), 0U);
    EXPECT_EQ(pairs_[0].frames->tasks.count(), static_cast<std::size_t>(frames));
}

TEST_F(StreamReaderTest, TellsOfEachDroppedRowAndGoesOn) {
    reader_->gate->release();
    for (int i = 0; i < 50; ++i) pairs_[2].frames->tryPut(counting(0, 2));
    ASSERT_TRUE(overflows_.awaitCount(40));
    pairs_[0].frames->tryPut(counting(5, 2));
    ASSERT_EQ(pairs_[0].rows->waitForSize(1, patience()), 1U);
    EXPECT_EQ(overflows_.count(), 40);
}

TEST_F(StreamReaderTest, EndsWithAReportAtABrokenFrame) {
    reader_->gate->release();
    pairs_[0].frames->tryPut(counting(0, 3));
    ASSERT_TRUE(reports_.awaitCount(1));
    EXPECT_TRUE(reader_->awaitEnd(patience()));
    pairs_[0].frames->tryPut(counting(0, 2));
    EXPECT_EQ(pairs_[0].rows->size(), 0U);
    EXPECT_EQ(pairs_[0].frames->size(), 1U);
}

}  // namespace
}  // namespace zvr::testing
