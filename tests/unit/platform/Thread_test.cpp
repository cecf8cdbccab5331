#include "platform/Thread.h"

#include <gtest/gtest.h>

#include <set>

#include "platform/Event.h"
#include "platform/Faults.h"

namespace mv {
namespace {

struct Probe {
    Event mayEnd;
    Event exited;
    std::uint32_t seenId = 0;
};

void RunProbe(void* argument) noexcept {
    auto& probe = *static_cast<Probe*>(argument);
    probe.seenId = CurrentThreadId();
    probe.mayEnd.Wait();
}

TEST(Thread, RunsTheFunctionAndTellsWhenItIsOut) {
    Probe probe;
    Thread thread;
    EXPECT_EQ(thread.Id(), 0u);
    ASSERT_TRUE(thread.Start(&RunProbe, &probe, probe.exited));
    const std::uint32_t id = thread.Id();
    EXPECT_NE(id, 0u);
    EXPECT_NE(id, CurrentThreadId());
    EXPECT_FALSE(thread.WaitFor(1));
    EXPECT_FALSE(probe.exited.WaitFor(1));
    probe.mayEnd.Set();
    EXPECT_TRUE(probe.exited.WaitFor(10000));
    EXPECT_EQ(probe.seenId, id);
    EXPECT_TRUE(thread.WaitFor(10000));
    thread.Close();
    EXPECT_EQ(thread.Id(), 0u);
}

TEST(Thread, MayBeClosedWithoutWaitingForTheThreadItself) {
    for (int i = 0; i < 200; ++i) {
        Probe probe;
        Thread thread;
        ASSERT_TRUE(thread.Start(&RunProbe, &probe, probe.exited));
        probe.mayEnd.Set();
        probe.exited.Wait();
        thread.Close();
    }
}

TEST(Thread, CanBeStartedAgainAfterClose) {
    Thread thread;
    for (int i = 0; i < 3; ++i) {
        Probe probe;
        probe.mayEnd.Set();
        ASSERT_TRUE(thread.Start(&RunProbe, &probe, probe.exited));
        probe.exited.Wait();
        thread.Close();
        EXPECT_NE(probe.seenId, 0u);
    }
}

TEST(Thread, RefusedByTheSystemIsNotStarted) {
    Probe probe;
    Thread thread;
    platformFaultHook = [](PlatformCall call) noexcept {
        return call == PlatformCall::ThreadStart;
    };
    EXPECT_FALSE(thread.Start(&RunProbe, &probe, probe.exited));
    platformFaultHook = nullptr;
    EXPECT_EQ(thread.Id(), 0u);
    EXPECT_FALSE(probe.exited.WaitFor(0));
    thread.Close();
}

TEST(Thread, IdsOfLiveThreadsDiffer) {
    Probe probes[4];
    Thread threads[4];
    std::set<std::uint32_t> ids{CurrentThreadId()};
    for (int i = 0; i < 4; ++i) {
        ASSERT_TRUE(threads[i].Start(&RunProbe, &probes[i], probes[i].exited));
        ids.insert(threads[i].Id());
    }
    EXPECT_EQ(ids.size(), 5u);
    EXPECT_EQ(ids.count(0), 0u);
    for (int i = 0; i < 4; ++i) {
        probes[i].mayEnd.Set();
        probes[i].exited.Wait();
        threads[i].Close();
    }
}

}  // namespace
}  // namespace mv
