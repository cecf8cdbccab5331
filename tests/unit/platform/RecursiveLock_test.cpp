#include "platform/RecursiveLock.h"

#include <gtest/gtest.h>

#include <mutex>
#include <thread>
#include <vector>

#include "platform/Event.h"

namespace mv {
namespace {

TEST(RecursiveLock, LetsItsOwnerThroughAgain) {
    RecursiveLock lock;
    const std::lock_guard outer(lock);
    const std::lock_guard inner(lock);
    SUCCEED();
}

TEST(RecursiveLock, IsHeldUntilTheOutermostUnlock) {
    RecursiveLock lock;
    Event entered;
    lock.lock();
    lock.lock();
    std::thread other([&] {
        const std::lock_guard guard(lock);
        entered.Set();
    });
    lock.unlock();
    EXPECT_FALSE(entered.WaitFor(20));
    lock.unlock();
    EXPECT_TRUE(entered.WaitFor(10000));
    other.join();
}

TEST(RecursiveLock, KeepsThreadsApart) {
    RecursiveLock lock;
    int counter = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int k = 0; k < 10000; ++k) {
                const std::lock_guard guard(lock);
                ++counter;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(counter, 40000);
}

}  // namespace
}  // namespace mv
