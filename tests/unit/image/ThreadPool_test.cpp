#include "image/ThreadPool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

#include "platform/Event.h"
#include "platform/Faults.h"
#include "support/AllocationFault.h"
#include "support/TraceFile.h"

#if defined(__x86_64__) || defined(_M_X64)
#include <xmmintrin.h>
#endif

namespace mv {
namespace {

std::atomic<int> signalCalls{0};
std::atomic<int> refuseFrom{0};  // calls of the refused kind, counted from 0, that still succeed
std::atomic<int> refusedKindCalls{0};

// Installs a hook for the length of a test; the counters above begin at 0.
class HookScope {
public:
    explicit HookScope(PlatformFaultHook hook) {
        signalCalls = 0;
        refusedKindCalls = 0;
        platformFaultHook = hook;
    }
    ~HookScope() { platformFaultHook = nullptr; }
    HookScope(const HookScope&) = delete;
    HookScope& operator=(const HookScope&) = delete;
};

bool CountSignals(PlatformCall call) noexcept {
    signalCalls += call == PlatformCall::EventSignal ? 1 : 0;
    return false;
}

template <PlatformCall kind>
bool RefuseLater(PlatformCall call) noexcept {
    return call == kind && refusedKindCalls++ >= refuseFrom;
}

// Holds threads back until so many of them have come; gives up after a while, so that a fault
// fails a test instead of stopping it.
class Meeting {
public:
    explicit Meeting(int expected) : missing_(expected) {}
    bool Arrive() {
        if (--missing_ == 0) {
            complete_.Set();
        }
        return complete_.WaitFor(20000);
    }

private:
    std::atomic<int> missing_;
    Event complete_;
};

TEST(ThreadPool, WithoutThreadsTheCallerDoesAll) {
    ThreadPool pool;
    std::vector<unsigned> seen;
    const auto caller = std::this_thread::get_id();
    const unsigned status = pool.iterate(3, [&](unsigned i, unsigned count, unsigned thread) {
        EXPECT_EQ(count, 3u);
        EXPECT_EQ(thread, 0u);
        EXPECT_EQ(std::this_thread::get_id(), caller);
        seen.push_back(i);
        return 0u;
    });
    EXPECT_EQ(status, 0u);
    EXPECT_EQ(seen, (std::vector<unsigned>{0, 1, 2}));
}

TEST(ThreadPool, EveryIndexRunsExactlyOnce) {
    for (const int threads : {1, 2, 3, 8, 64}) {
        ThreadPool pool;
        pool.setThreadCount(threads);
        for (const int count : {1, 2, 7, 64, 1000}) {
            std::vector<std::atomic<int>> runs(static_cast<std::size_t>(count));
            pool.iterate(count, [&](unsigned i, unsigned total, unsigned thread) {
                EXPECT_EQ(total, static_cast<unsigned>(count));
                EXPECT_LT(thread, static_cast<unsigned>(threads));
                ++runs[i];
                return 0u;
            });
            for (const auto& run : runs) {
                ASSERT_EQ(run, 1);
            }
        }
    }
}

TEST(ThreadPool, ZeroIterationsSetNoEventAndCallNothing) {
    ThreadPool pool;
    pool.setThreadCount(4);
    const HookScope hook(&CountSignals);
    unsigned calls = 0;
    EXPECT_EQ(pool.iterate(0,
                           [&](unsigned, unsigned, unsigned) {
                               ++calls;
                               return 9u;
                           }),
              0u);
    EXPECT_EQ(pool.iterate(-5,
                           [&](unsigned, unsigned, unsigned) {
                               ++calls;
                               return 9u;
                           }),
              0u);
    EXPECT_EQ(calls, 0u);
    EXPECT_EQ(signalCalls, 0);
}

TEST(ThreadPool, ZeroIterationsGiveSuccessAfterAJobThatFailed) {
    ThreadPool pool;
    pool.setThreadCount(1);
    EXPECT_EQ(pool.iterate(1, [](unsigned, unsigned, unsigned) { return 7u; }), 7u);
    EXPECT_EQ(pool.iterate(0, [](unsigned, unsigned, unsigned) { return 9u; }), 0u);
}

TEST(ThreadPool, TwoIterationsWakeExactlyOneWorker) {
    ThreadPool pool;
    pool.setThreadCount(8);
    const HookScope hook(&CountSignals);
    Meeting meeting(2);
    std::mutex mutex;
    std::set<unsigned> threads;
    pool.iterate(2, [&](unsigned, unsigned, unsigned thread) {
        const std::lock_guard guard(mutex);
        threads.insert(thread);
        return 0u;
    });
    // The caller resets and sets one pair of events, and one worker answers with its own pair.
    EXPECT_EQ(signalCalls, 4);
    pool.iterate(2, [&](unsigned, unsigned, unsigned thread) {
        EXPECT_TRUE(meeting.Arrive());
        const std::lock_guard guard(mutex);
        threads.insert(thread);
        return 0u;
    });
    EXPECT_EQ(threads, (std::set<unsigned>{0, 1}));
}

TEST(ThreadPool, AllThreadsWorkAtOnce) {
    ThreadPool pool;
    pool.setThreadCount(8);
    Meeting meeting(8);
    std::mutex mutex;
    std::set<unsigned> threads;
    pool.iterate(8, [&](unsigned, unsigned, unsigned thread) {
        EXPECT_TRUE(meeting.Arrive());
        const std::lock_guard guard(mutex);
        threads.insert(thread);
        return 0u;
    });
    EXPECT_EQ(threads, (std::set<unsigned>{0, 1, 2, 3, 4, 5, 6, 7}));
}

TEST(ThreadPool, ThreadsStayBetweenJobs) {
    ThreadPool pool;
    pool.setThreadCount(4);
    std::set<std::uint32_t> ids[2];
    for (auto& jobIds : ids) {
        Meeting meeting(4);
        std::mutex mutex;
        pool.setThreadCount(4);
        pool.iterate(4, [&](unsigned, unsigned, unsigned) {
            EXPECT_TRUE(meeting.Arrive());
            const std::lock_guard guard(mutex);
            jobIds.insert(CurrentThreadId());
            return 0u;
        });
    }
    EXPECT_EQ(ids[0].size(), 4u);
    EXPECT_EQ(ids[0], ids[1]);
}

// The result is that of the caller's own share alone, and that is meant.
TEST(ThreadPool, FailureOnAnotherThreadDoesNotChangeTheResult) {
    ThreadPool pool;
    pool.setThreadCount(3);
    Meeting meeting(3);
    std::atomic<int> failed{0};
    const unsigned status = pool.iterate(3, [&](unsigned, unsigned, unsigned thread) {
        EXPECT_TRUE(meeting.Arrive());
        failed += thread == 2 ? 1 : 0;
        return thread == 2 ? 7u : 0u;
    });
    EXPECT_EQ(failed, 1);
    EXPECT_EQ(status, 0u);
}

TEST(ThreadPool, FailureOnTheCallersShareIsTheResult) {
    ThreadPool pool;
    pool.setThreadCount(3);
    Meeting meeting(3);
    const unsigned status = pool.iterate(3, [&](unsigned, unsigned, unsigned thread) {
        EXPECT_TRUE(meeting.Arrive());
        return thread == 0 ? 5u : 7u;
    });
    EXPECT_EQ(status, 5u);
}

TEST(ThreadPool, AShareStopsAtItsFirstFailure) {
    ThreadPool pool;
    pool.setThreadCount(1);
    unsigned calls = 0;
    const unsigned status = pool.iterate(10, [&](unsigned i, unsigned, unsigned) {
        ++calls;
        return i == 2 ? 3u : 0u;
    });
    EXPECT_EQ(calls, 3u);
    EXPECT_EQ(status, 3u);
}

TEST(ThreadPool, AFailedThreadTakesOneMoreIndexAndSkipsIt) {
    ThreadPool pool;
    pool.setThreadCount(2);
    Meeting meeting(2);
    const HookScope hook(&CountSignals);
    std::atomic<unsigned> calls{0};
    pool.iterate(10, [&](unsigned, unsigned, unsigned thread) {
        ++calls;
        if (calls <= 2) {
            EXPECT_TRUE(meeting.Arrive());
        }
        // The caller goes on only when the worker has left its share and signals that: two calls
        // began the job, one ended the meeting, and the fourth is the worker's.
        for (int i = 0; thread == 0 && signalCalls < 4 && i < 20000; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return thread == 1 ? 7u : 0u;
    });
    EXPECT_EQ(calls, 9u);
}

TEST(ThreadPool, AStatusDoesNotOutliveItsJob) {
    ThreadPool pool;
    pool.setThreadCount(4);
    for (int round = 0; round < 3; ++round) {
        Meeting meeting(4);
        std::atomic<int> calls{0};
        pool.iterate(4, [&](unsigned, unsigned, unsigned) {
            EXPECT_TRUE(meeting.Arrive());
            ++calls;
            return 7u;
        });
        EXPECT_EQ(calls, 4);
    }
}

TEST(ThreadPool, AJobInsideAWorkersJobRunsSeriallyAsThreadZero) {
    ThreadPool pool;
    pool.setThreadCount(2);
    Meeting meeting(2);
    std::vector<unsigned> seen;
    unsigned innerStatus = 0;
    pool.iterate(2, [&](unsigned, unsigned, unsigned thread) {
        EXPECT_TRUE(meeting.Arrive());
        if (thread == 0) {
            EXPECT_FALSE(pool.isWorkerThread());
            return 0u;
        }
        EXPECT_TRUE(pool.isWorkerThread());
        const auto worker = std::this_thread::get_id();
        innerStatus = pool.iterate(5, [&](unsigned i, unsigned count, unsigned inner) {
            EXPECT_EQ(std::this_thread::get_id(), worker);
            EXPECT_EQ(count, 5u);
            EXPECT_EQ(inner, 0u);
            seen.push_back(i);
            return i == 3 ? 4u : 0u;
        });
        EXPECT_EQ(pool.iterate(0, [](unsigned, unsigned, unsigned) { return 9u; }), 0u);
        return 0u;
    });
    EXPECT_EQ(seen, (std::vector<unsigned>{0, 1, 2, 3}));
    EXPECT_EQ(innerStatus, 4u);
    EXPECT_FALSE(pool.isWorkerThread());
}

TEST(ThreadPool, AWorkerCannotChangeTheSizeOfItsPool) {
    ThreadPool pool;
    pool.setThreadCount(2);
    Meeting meeting(2);
    pool.iterate(2, [&](unsigned, unsigned, unsigned thread) {
        EXPECT_TRUE(meeting.Arrive());
        if (thread == 1) {
            pool.setThreadCount(5);
        }
        return 0u;
    });
    const test::TraceFile trace;
    pool.setThreadCount(2);
    EXPECT_EQ(trace.Text(), "");
}

TEST(ThreadPool, JobsOfTwoThreadsFollowEachOther) {
    ThreadPool pool;
    pool.setThreadCount(3);
    std::atomic<int> total{0};
    const auto job = [&](unsigned, unsigned, unsigned) {
        ++total;
        return 0u;
    };
    const auto caller = [&] {
        for (int i = 0; i < 200; ++i) {
            pool.iterate(6, job);
        }
    };
    std::thread other(caller);
    caller();
    other.join();
    EXPECT_EQ(total, 2400);

    Meeting meeting(2);
    std::thread second;
    Event secondDone;
    pool.iterate(2, [&](unsigned, unsigned, unsigned thread) {
        EXPECT_TRUE(meeting.Arrive());
        if (thread == 0) {
            second = std::thread([&] {
                pool.iterate(1, job);
                secondDone.Set();
            });
            EXPECT_FALSE(secondDone.WaitFor(30));
        }
        return 0u;
    });
    EXPECT_TRUE(secondDone.WaitFor(20000));
    second.join();
}

TEST(ThreadPool, ChangeOfSizeIsLoggedWithTheWantedNumber) {
    ThreadPool pool;
    const test::TraceFile trace;
    pool.setThreadCount(3);
    EXPECT_EQ(trace.Text(), "initializing threadpool with 3 threads\n");
}

TEST(ThreadPool, PresentSizeLogsNothing) {
    ThreadPool pool;
    pool.setThreadCount(3);
    const test::TraceFile trace;
    pool.setThreadCount(3);
    EXPECT_EQ(trace.Text(), "");
}

TEST(ThreadPool, CanBeResizedUpAndDown) {
    ThreadPool pool;
    for (const int count : {4, 1, 8, 2, 64, 3}) {
        pool.setThreadCount(count);
        std::atomic<int> calls{0};
        std::atomic<unsigned> highest{0};
        Meeting meeting(count);
        pool.iterate(count, [&](unsigned, unsigned, unsigned thread) {
            EXPECT_TRUE(meeting.Arrive());
            ++calls;
            unsigned seen = highest;
            while (seen < thread && !highest.compare_exchange_weak(seen, thread)) {
            }
            return 0u;
        });
        EXPECT_EQ(calls, count);
        EXPECT_EQ(highest, static_cast<unsigned>(count - 1));
    }
}

TEST(ThreadPool, CountsBelowOneLeaveTheCallerAlone) {
    for (const int count : {0, -1, -100}) {
        ThreadPool pool;
        pool.setThreadCount(2);
        pool.setThreadCount(count);
        int calls = 0;
        EXPECT_EQ(pool.iterate(3,
                               [&](unsigned, unsigned, unsigned thread) {
                                   EXPECT_EQ(thread, 0u);
                                   ++calls;
                                   return 0u;
                               }),
                  0u);
        EXPECT_EQ(calls, 3);
    }
}

TEST(ThreadPool, NeverHasMoreThanSixtyFourThreads) {
    ThreadPool pool;
    pool.setThreadCount(1000);
    std::atomic<unsigned> highest{0};
    Meeting meeting(64);
    pool.iterate(200, [&](unsigned i, unsigned, unsigned thread) {
        if (i < 64) {
            EXPECT_TRUE(meeting.Arrive());
        }
        unsigned seen = highest;
        while (seen < thread && !highest.compare_exchange_weak(seen, thread)) {
        }
        return 0u;
    });
    EXPECT_EQ(highest, 63u);
}

// The missing blank is meant.
TEST(ThreadPool, RefusedThreadIsReportedWithoutABlankBeforeOf) {
    ThreadPool pool;
    const test::TraceFile trace;
    refuseFrom = 1;
    {
        const HookScope hook(&RefuseLater<PlatformCall::ThreadStart>);
        pool.setThreadCount(4);
    }
    EXPECT_EQ(trace.Text(),
              "initializing threadpool with 4 threads\n"
              "-**### WARNING ###**-: failed to create thread nr 2of 4\n");
    // It goes on with the one thread that it got.
    Meeting meeting(2);
    std::atomic<unsigned> highest{0};
    pool.iterate(2, [&](unsigned, unsigned, unsigned thread) {
        EXPECT_TRUE(meeting.Arrive());
        highest = thread > highest ? thread : highest.load();
        return 0u;
    });
    EXPECT_EQ(highest, 1u);
}

TEST(ThreadPool, PoolThatGotFewerThreadsIsRebuiltTheNextTime) {
    ThreadPool pool;
    refuseFrom = 1;
    {
        const HookScope hook(&RefuseLater<PlatformCall::ThreadStart>);
        pool.setThreadCount(3);
    }
    const test::TraceFile trace;
    pool.setThreadCount(3);
    EXPECT_EQ(trace.Text(), "initializing threadpool with 3 threads\n");
    Meeting meeting(3);
    pool.iterate(3, [&](unsigned, unsigned, unsigned) {
        EXPECT_TRUE(meeting.Arrive());
        return 0u;
    });
}

TEST(ThreadPool, RefusedEventsAreReportedAndTheWorkGoesOn) {
    ThreadPool pool;
    const test::TraceFile trace;
    refuseFrom = 5;  // the caller's slot and two events of the next succeed
    {
        const HookScope hook(&RefuseLater<PlatformCall::EventCreation>);
        pool.setThreadCount(2);
    }
    EXPECT_EQ(trace.Text(),
              "initializing threadpool with 2 threads\n"
              "-**###  ERROR  ###**-: error creating event. Error code: 8\n"
              "-**###  ERROR  ###**-: error signaling event. Error code: 6\n"
              "-**### WARNING ###**-: failed to create thread nr 1of 2\n");
    int calls = 0;
    pool.iterate(5, [&](unsigned, unsigned, unsigned) {
        ++calls;
        return 0u;
    });
    EXPECT_EQ(calls, 5);
}

TEST(ThreadPool, RefusedSignalsAreReportedAndIgnored) {
    ThreadPool pool;
    const test::TraceFile trace;
    refuseFrom = 5;  // the last reset of the second slot, whose event is unsignalled anyway
    {
        const HookScope hook([](PlatformCall call) noexcept {
            return call == PlatformCall::EventSignal && refusedKindCalls++ == refuseFrom;
        });
        pool.setThreadCount(2);
    }
    EXPECT_EQ(trace.Text(),
              "initializing threadpool with 2 threads\n"
              "-**###  ERROR  ###**-: error signaling event. Error code: 8\n");
    Meeting meeting(2);
    pool.iterate(2, [&](unsigned, unsigned, unsigned) {
        EXPECT_TRUE(meeting.Arrive());
        return 0u;
    });
}

TEST(ThreadPool, AJobThatThrowsOnAWorkerDoesNotHang) {
    const test::TraceFile trace;
    ThreadPool pool;
    pool.setThreadCount(2);
    for (int round = 0; round < 3; ++round) {
        Meeting meeting(2);
        std::atomic<int> thrown{0};
        const unsigned status = pool.iterate(2, [&](unsigned, unsigned, unsigned thread) {
            EXPECT_TRUE(meeting.Arrive());
            if (thread == 1) {
                ++thrown;
                throw std::runtime_error("job");
            }
            return 0u;
        });
        EXPECT_EQ(thrown, 1);
        EXPECT_EQ(status, 0u);
    }
    EXPECT_EQ(trace.Text(), "initializing threadpool with 2 threads\n");
}

TEST(ThreadPool, AJobThatThrowsOnTheCallerIsOverBeforeItIsLeft) {
    ThreadPool pool;
    pool.setThreadCount(2);
    Meeting meeting(2);
    std::atomic<bool> workerDone{false};
    bool thrown = false;
    try {
        pool.iterate(2, [&](unsigned, unsigned, unsigned thread) -> unsigned {
            EXPECT_TRUE(meeting.Arrive());
            if (thread == 0) {
                throw std::runtime_error("job");
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(30));
            workerDone = true;
            return 0;
        });
    } catch (const std::runtime_error&) {
        thrown = true;
    }
    EXPECT_TRUE(thrown);
    EXPECT_TRUE(workerDone);
    int calls = 0;
    pool.iterate(1, [&](unsigned, unsigned, unsigned) {
        ++calls;
        return 0u;
    });
    EXPECT_EQ(calls, 1);
}

TEST(ThreadPool, WhatTheJobHoldsIsReleasedAtItsEnd) {
    ThreadPool pool;
    pool.setThreadCount(2);
    const auto held = std::make_shared<int>(0);
    pool.iterate(4, [held](unsigned, unsigned, unsigned) { return 0u; });
    EXPECT_EQ(held.use_count(), 1);
}

TEST(ThreadPool, WhenAnyAllocationFailsItGoesOnWithTheThreadsItHas) {
    bool happened = true;
    for (long n = 1; happened && n < 200; ++n) {
        ThreadPool pool;
        {
            const test::AllocationFault fault(n);
            pool.setThreadCount(4);
            happened = fault.Happened();
        }
        std::atomic<int> calls{0};
        pool.iterate(20, [&](unsigned, unsigned, unsigned) {
            ++calls;
            return 0u;
        });
        EXPECT_EQ(calls, 20);
    }
    EXPECT_FALSE(happened);
}

TEST(ThreadPool, WithoutAnyMemoryTheCallerDoesAll) {
    ThreadPool pool;
    int calls = 0;
    {
        const test::AllocationDrought drought;
        pool.setThreadCount(4);
        pool.iterate(3, [&calls](unsigned, unsigned, unsigned) {
            ++calls;
            return 0u;
        });
    }
    EXPECT_EQ(calls, 3);
}

TEST(ThreadPool, AJobWithASmallFunctionNeedsNoMemory) {
    ThreadPool pool;
    pool.setThreadCount(4);
    std::atomic<int> calls{0};
    {
        const test::AllocationDrought drought;
        pool.iterate(50, [&calls](unsigned, unsigned, unsigned) {
            ++calls;
            return 0u;
        });
    }
    EXPECT_EQ(calls, 50);
}

TEST(ThreadPool, BuildingAndEndingManyTimesLeavesNothingBehind) {
    { ThreadPool first; }
    const long before = test::LiveAllocations();
    for (int i = 0; i < 100; ++i) {
        ThreadPool pool;
        pool.setThreadCount(1 + i % 5);
        if (i % 2 == 0) {
            pool.iterate(10, [](unsigned, unsigned, unsigned) { return 0u; });
        }
    }
    EXPECT_EQ(test::LiveAllocations(), before);
}

#if defined(__x86_64__) || defined(_M_X64)
TEST(ThreadPool, WorkersComputeInTheDefaultFloatingPointEnvironment) {
    ThreadPool pool;
    pool.setThreadCount(2);
    unsigned seen[2] = {};
    for (unsigned& state : seen) {
        Meeting meeting(2);
        pool.iterate(2, [&](unsigned, unsigned, unsigned thread) {
            EXPECT_TRUE(meeting.Arrive());
            if (thread == 1) {
                state = _mm_getcsr() & ~0x3fu;
                _mm_setcsr(0x9fc0);  // what a careless callback may leave behind
            }
            return 0u;
        });
    }
    EXPECT_EQ(seen[0], 0x1f80u);
    EXPECT_EQ(seen[1], 0x1f80u);
}
#endif

}  // namespace
}  // namespace mv
