#include "tests/platform/processUsage.h"

#include <gtest/gtest.h>
#include <thread>

namespace {

TEST(ProcessUsage, ThreadsThatWereJoinedAreNotCounted) {
    const std::size_t threads = test::threads();
    for (int round = 0; round < 3000; ++round) {
        std::thread([] {}).join();
        ASSERT_EQ(test::threads(), threads) << round;
    }
}

} // namespace
