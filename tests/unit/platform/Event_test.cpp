#include "platform/Event.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>

#include "platform/Faults.h"

namespace mv {
namespace {

TEST(Event, IsCreatedUnsignalled) {
    Event event;
    EXPECT_EQ(event.CreationError(), 0);
    EXPECT_TRUE(event.IsUsable());
    EXPECT_FALSE(event.WaitFor(0));
    EXPECT_FALSE(event.WaitFor(5));
}

TEST(Event, LetsEveryWaiterThroughUntilItIsReset) {
    Event event;
    EXPECT_TRUE(event.Set());
    EXPECT_TRUE(event.WaitFor(0));
    EXPECT_TRUE(event.WaitFor(0));
    event.Wait();
    EXPECT_TRUE(event.Reset());
    EXPECT_FALSE(event.WaitFor(0));
}

TEST(Event, WakesAThreadThatWaitsForIt) {
    Event go;
    Event done;
    std::thread waiter([&] {
        go.Wait();
        done.Set();
    });
    EXPECT_FALSE(done.WaitFor(20));
    go.Set();
    EXPECT_TRUE(done.WaitFor(10000));
    waiter.join();
}

TEST(Event, MayBeDestroyedAsSoonAsAWaiterSawIt) {
    for (int i = 0; i < 2000; ++i) {
        auto event = std::make_unique<Event>();
        std::thread setter([raw = event.get()] { raw->Set(); });
        event->Wait();
        event.reset();
        setter.join();
    }
}

TEST(Event, ARefusedCallLeavesItsCode) {
    Event event;
    platformFaultHook = [](PlatformCall) noexcept { return true; };
    EXPECT_FALSE(event.Set());
    EXPECT_EQ(LastError(), static_cast<unsigned>(kRefusedCallError));
    EXPECT_FALSE(event.Reset());
    Event refused;
    platformFaultHook = nullptr;
    EXPECT_EQ(refused.CreationError(), kRefusedCallError);
    EXPECT_FALSE(refused.IsUsable());
    EXPECT_FALSE(event.WaitFor(0));
}

}  // namespace
}  // namespace mv
