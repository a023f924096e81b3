// The end of a link, which one thread notes while others look whether it is alive.
#include "transport/link_end.h"

#include <gtest/gtest.h>

#include <thread>

namespace zvr {
namespace {

TEST(LinkEnd, IsAfterWhoFoundTheLinkAliveAndBeforeWhoFoundItEnded) {
    constexpr int rounds = 500;
    for (int round = 0; round < rounds; ++round) {
        LinkEnd end;
        std::atomic<bool> isLooking{false};
        Deadline lastAlive, firstEnded;
        std::jthread looking([&] {
            Deadline asked;
            do {
                lastAlive = asked;
                asked = Clock::now();
                isLooking = true;
                isLooking.notify_one();
            } while (end.reason() == 0);
            firstEnded = Clock::now();
        });
        isLooking.wait(false);
        const auto when = end.note(ECONNRESET);
        looking.join();
        ASSERT_TRUE(when);
        ASSERT_LE(lastAlive, *when);
        ASSERT_LE(*when, firstEnded);
        ASSERT_EQ(end.reason(), ECONNRESET);
        ASSERT_FALSE(end.note(EPIPE));
    }
}

}  // namespace
}  // namespace zvr
