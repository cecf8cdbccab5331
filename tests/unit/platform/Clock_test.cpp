#include "platform/Clock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace mv {
namespace {

TEST(Clock, TicksAreMilliseconds) {
    const std::uint32_t before = TickCount();
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    const std::uint32_t passed = TickCount() - before;
    EXPECT_GE(passed, 80u);
    EXPECT_LT(passed, 20000u);
}

TEST(Clock, PerformanceCounterRunsAtItsFrequency) {
    ASSERT_GT(PerformanceFrequency(), 0);
    const std::int64_t before = PerformanceCounter();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    const double seconds = static_cast<double>(PerformanceCounter() - before) /
                           static_cast<double>(PerformanceFrequency());
    EXPECT_GE(seconds, 0.045);
    EXPECT_LT(seconds, 20.0);
}

TEST(Clock, PerformanceCounterNeverGoesBack) {
    std::int64_t last = PerformanceCounter();
    for (int i = 0; i < 10000; ++i) {
        const std::int64_t now = PerformanceCounter();
        ASSERT_GE(now, last);
        last = now;
    }
}

}  // namespace
}  // namespace mv
