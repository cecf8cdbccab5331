// What stays behind: threads, open files and memory, after a thousand loadings and ten thousand
// renders.
#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

#include "Module.h"
#include "RandomJobs.h"
#include "RenderJob.h"
#include "TestLength.h"

#define EXPORTED __attribute__((visibility("default")))

namespace {

int processors = 64;

}  // namespace

// In place of the C library's, for the module too: the pool gets all of its slots.
extern "C" EXPORTED int sched_getaffinity(pid_t, std::size_t size, cpu_set_t* set) noexcept {
    CPU_ZERO_S(size, set);
    for (int i = 0; i < processors; ++i) {
        CPU_SET_S(static_cast<std::size_t>(i), size, set);
    }
    return 0;
}

namespace endtoend {
namespace {

namespace fs = std::filesystem;

int CountEntries(const char* folder) {
    return static_cast<int>(
        std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

int Threads() {
    return CountEntries("/proc/self/task");
}

int OpenFiles() {
    return CountEntries("/proc/self/fd");
}

RenderJob Job(int number) {
    Random random(static_cast<std::uint32_t>(number));
    RenderJob job = RandomPicture(random, number % kShapes, 80, 70);
    job.settings.mode = 1 + number / kShapes % 2;
    return job;
}

// A render; the most threads that the process has while it runs.
int Render(const RenderJob& job, hostapi::EntryPoint entry) {
    JobSession session(job, {}, {}, entry);
    int threads = 0;
    session.Host().Hooks().progress = [&](std::int32_t, std::int32_t) {
        threads = std::max(threads, Threads());
    };
    EXPECT_EQ(session.Start(), hostapi::noErr);
    EXPECT_EQ(session.Reproach(), "");
    return threads;
}

// A thread that was told to end is gone from the system's list a moment later.
int ThreadsWhenSettled(int wanted) {
    for (int i = 0; i < 200 && Threads() > wanted; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return Threads();
}

// The program holds the module itself; a copy of the file is loaded, and unloaded, on its own.
class Unload : public testing::Test {
protected:
    Unload() : copy_(fs::temp_directory_path() / ("unload_" + std::to_string(getpid()) + ".so")) {
        fs::copy_file(ModulePath(), copy_, fs::copy_options::overwrite_existing);
    }
    ~Unload() override {
        std::error_code error;
        fs::remove(copy_, error);
    }

    // Whether any of the module is still in the process.
    bool IsMapped() const {
        std::ifstream maps("/proc/self/maps");
        const std::string text{std::istreambuf_iterator<char>(maps),
                               std::istreambuf_iterator<char>()};
        return text.find(copy_.filename().string()) != std::string::npos;
    }

    fs::path copy_;
};

TEST_F(Unload, LoadRunUnloadWithSixtyFourSlots) {
    const RenderJob job = Job(5);
    int threads = 0;
    int files = 0;
    // A sanitizer starts a thread of its own beside the first that is started.
    std::thread([] {}).join();
    const int cycles = Times(60, 1000);
    for (int cycle = 0; cycle < cycles; ++cycle) {
        {
            mv::host::Module module;
            std::string reason;
            ASSERT_TRUE(module.Load(copy_, reason)) << reason;
            const int before = Threads();
            const int during = Render(job, module.GetEntryPoint());
            ASSERT_EQ(during, before + 63) << cycle;
        }
        ASSERT_FALSE(IsMapped()) << cycle;
        if (cycle == 0) {
            threads = ThreadsWhenSettled(1);
            files = OpenFiles();
        }
        ASSERT_EQ(ThreadsWhenSettled(threads), threads) << cycle;
        ASSERT_EQ(OpenFiles(), files) << cycle;
    }
    std::printf("%d cycles: %d threads, %d open files before and after\n", cycles, threads, files);
}

TEST_F(Unload, WithoutARenderInBetween) {
    const int threads = ThreadsWhenSettled(1);
    for (int cycle = 0; cycle < Times(60, 1000); ++cycle) {
        ASSERT_FALSE(IsMapped());
        mv::host::Module module;
        std::string reason;
        ASSERT_TRUE(module.Load(copy_, reason)) << reason;
        if (cycle % 2 == 0) {
            mv::host::HostSession session(module.GetEntryPoint(), DocumentOf(Job(1)));
            EXPECT_EQ(session.Call(hostapi::filterSelectorPrepare), hostapi::noErr);
        }
    }
    EXPECT_EQ(ThreadsWhenSettled(threads), threads);
}

#ifndef RADIAL_BLUR_SANITIZED  // which keep freed memory for a while
// Resident memory in kilobytes.
long Resident() {
    long total = 0;
    long resident = 0;
    std::FILE* const file = std::fopen("/proc/self/statm", "r");
    if (file != nullptr) {
        if (std::fscanf(file, "%ld %ld", &total, &resident) != 2) {
            resident = 0;
        }
        std::fclose(file);
    }
    return resident * sysconf(_SC_PAGESIZE) / 1024;
}

TEST(Soak, ResidentMemoryIsFlatAfterTheWarmUp) {
    processors = 4;
    mv::host::Module module;
    std::string reason;
    ASSERT_TRUE(module.Load(ModulePath(), reason)) << reason;
    std::vector<RenderJob> jobs;
    for (int number = 0; number < 2 * kShapes; ++number) {
        jobs.push_back(Job(number));
    }
    const int renders = Times(300, 10000);
    const int warmUp = 3 * static_cast<int>(jobs.size());
    long before = 0;
    for (int number = 0; number < renders; ++number) {
        if (number == warmUp) {
            before = Resident();
        }
        Render(jobs[static_cast<std::size_t>(number) % jobs.size()], module.GetEntryPoint());
    }
    const long after = Resident();
    std::printf("%d renders: %ld KB after the warm-up, %ld KB at the end\n", renders, before,
                after);
    EXPECT_GT(before, 0);
    EXPECT_LT(after, before + 1024);
}
#endif

}  // namespace
}  // namespace endtoend
