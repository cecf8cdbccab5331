#include "platform/Processors.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <thread>

#ifdef __linux__
#include <sched.h>
#endif

namespace mv {
namespace {

TEST(Processors, CountIsPlausible) {
    EXPECT_GE(LogicalProcessorCount(), 1);
    const unsigned machine = std::thread::hardware_concurrency();
    if (machine > 0 && machine <= 64) {
        EXPECT_LE(LogicalProcessorCount(), static_cast<int>(machine));
    }
}

#ifdef __linux__
TEST(Processors, AProcessConfinedToOneProcessorHasOne) {
    int count = 0;
    // Confinement holds for the thread that asks; a thread of its own keeps it from the other
    // tests.
    std::thread confined([&count] {
        cpu_set_t all;
        CPU_ZERO(&all);
        ASSERT_EQ(sched_getaffinity(0, sizeof all, &all), 0);
        cpu_set_t one;
        CPU_ZERO(&one);
        for (std::size_t i = 0; i < CPU_SETSIZE && CPU_COUNT(&one) == 0; ++i) {
            if (CPU_ISSET(i, &all)) {
                CPU_SET(i, &one);
            }
        }
        ASSERT_EQ(sched_setaffinity(0, sizeof one, &one), 0);
        count = LogicalProcessorCount();
    });
    confined.join();
    EXPECT_EQ(count, 1);
}
#endif

}  // namespace
}  // namespace mv
