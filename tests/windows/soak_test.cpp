// Long runs: the module loaded and unloaded with a full pool, many renders and many dialogs in one
// process. RADIAL_BLUR_LONG takes the numbers that are promised.
#include <windows.h>

#include <psapi.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "support/DialogTest.h"
#include "support/ModuleImports.h"
#include "support/ObjectCounts.h"

namespace mv::windowstest {
namespace {

constexpr unsigned kSlots = 64;

int Times(int usual, int thorough) {
    return std::getenv("RADIAL_BLUR_LONG") != nullptr ? thorough : usual;
}

// Resident kilobytes.
std::size_t WorkingSet() {
    PROCESS_MEMORY_COUNTERS counters = {};
    if (!K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters)) {
        return 0;
    }
    return counters.WorkingSetSize / 1024;
}

// Threads that were told to end are gone from the system's list a moment later.
unsigned ThreadsWhenSettled(unsigned wanted) {
    unsigned threads = ObjectCounts::Threads();
    for (int i = 0; i < 200 && threads > wanted; ++i) {
        Sleep(5);
        threads = ObjectCounts::Threads();
    }
    return threads;
}

class Soak : public DialogTest {
protected:
    // A render without a dialog, on the test's own thread; the threads that were there meanwhile.
    unsigned RenderSilently(unsigned processors) {
        Prepare(ColorDocument(64, 48));
        EXPECT_TRUE(PretendProcessors(GetModuleHandleA("radial_blur.8bf"), processors));
        unsigned threads = 0;
        run->Session().Descriptor().playInfo = hostapi::plugInDialogSilent;
        // The pool starts its threads with the first stage that it works on.
        run->Session().Hooks().progress = [&](std::int32_t done, std::int32_t total) {
            if (threads == 0 && done > total / 4 * 3) {
                threads = ObjectCounts::Threads();
            }
        };
        EXPECT_EQ(run->Session().Run().status, 0);
        EXPECT_EQ(run->Session().Counts().buffersLive, 0);
        run.reset();
        return threads;
    }

    void ShowDialog(bool ok) {
        Prepare(ColorDocument(64, 48));
        ASSERT_TRUE(run->Start());
        PostMessageA(run->Interface(), WM_COMMAND, ok ? IDOK : IDCANCEL, 0);
        ASSERT_TRUE(run->Finish());
        EXPECT_EQ(run->Outcome().status, ok ? 0 : -128);
        run.reset();
    }
};

TEST_F(Soak, LoadRunUnloadWithSixtyFourSlots) {
    const HMODULE fileDialog = LoadLibraryA("comdlg32.dll");
    const int cycles = Times(8, 1000);
    constexpr int kWarmUp = 3;
    unsigned threads = ThreadsWhenSettled(1);
    unsigned handles = 0;
    std::size_t memory = 0;
    for (int cycle = 0; cycle < cycles; ++cycle) {
        ASSERT_EQ(RenderSilently(kSlots), threads + kSlots - 1) << cycle;
        DialogRun::UnloadModule();
        ASSERT_EQ(GetModuleHandleA("radial_blur.8bf"), nullptr) << cycle;
        const unsigned left = ThreadsWhenSettled(threads);
        if (cycle <= kWarmUp) {
            threads = left;
            handles = ObjectCounts::Handles();
            memory = WorkingSet();
        }
        ASSERT_EQ(left, threads) << cycle;
    }
    const unsigned after = ObjectCounts::Handles();
    const std::size_t memoryAfter = WorkingSet();
    std::printf("%d cycles: %u threads, %u handles before, %u after, %zu KB before, %zu KB after\n",
                cycles, threads, handles, after, memory, memoryAfter);
    EXPECT_EQ(after, handles);
    EXPECT_LT(memoryAfter, memory + static_cast<std::size_t>(Times(128, 1024)));
    FreeLibrary(fileDialog);
}

// Does it count times; behind the first quarter of them memory grows by less than so many KB.
template <class Action>
void ExpectFlatMemory(int count, std::size_t allowedKilobytes, Action action) {
    const int warmUp = count / 4;
    std::size_t before = 0;
    for (int number = 0; number < count; ++number) {
        if (number == warmUp) {
            before = WorkingSet();
        }
        action(number);
    }
    const std::size_t after = WorkingSet();
    std::printf("%d times: %zu KB after %d, %zu KB at the end\n", count, before, warmUp, after);
    EXPECT_GT(before, 0u);
    EXPECT_LT(after, before + allowedKilobytes);
}

TEST_F(Soak, ResidentMemoryIsFlatWhileRendering) {
    ExpectFlatMemory(Times(80, 10000), 1024, [this](int) { RenderSilently(4); });
}

TEST_F(Soak, ResidentMemoryIsFlatOverManyDialogs) {
    ExpectFlatMemory(Times(12, 200), 2048, [this](int number) { ShowDialog(number % 2 == 0); });
}

}  // namespace
}  // namespace mv::windowstest
