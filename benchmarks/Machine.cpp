#include "Machine.h"

#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace {

int pretendedProcessors = 0;

}  // namespace

// The module asks the C library for the set of its processors; in this program it asks here.
extern "C" __attribute__((visibility("default"))) int sched_getaffinity(pid_t, std::size_t size,
                                                                        cpu_set_t* set) noexcept {
    const int count = pretendedProcessors > 0 ? pretendedProcessors
                                              : static_cast<int>(sysconf(_SC_NPROCESSORS_ONLN));
    std::memset(set, 0, size);
    for (int i = 0; i < count; ++i) {
        CPU_SET(static_cast<unsigned>(i), set);
    }
    return 0;
}

namespace mv::benchmarks {

int RealProcessors() {
    return static_cast<int>(sysconf(_SC_NPROCESSORS_ONLN));
}

void PretendProcessors(int count) {
    pretendedProcessors = count;
}

void ResetPeakMemory() {
    std::ofstream("/proc/self/clear_refs") << "5";
}

std::uint64_t PeakMemory() {
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word) {
        if (word == "VmHWM:") {
            std::uint64_t kibibytes = 0;
            status >> kibibytes;
            return kibibytes * 1024;
        }
    }
    return 0;
}

double MeasureBandwidth() {
    constexpr std::size_t kDoubles = std::size_t{1} << 25;
    std::vector<double> a(kDoubles, 1.0);
    std::vector<double> b(kDoubles, 2.0);
    std::vector<double> c(kDoubles, 3.0);
    const auto threads = static_cast<std::size_t>(std::max(RealProcessors(), 1));
    const std::size_t part = kDoubles / threads;
    double best = 0.0;
    for (int run = 0; run < 5; ++run) {
        const auto start = std::chrono::steady_clock::now();
        std::vector<std::thread> workers;
        for (std::size_t t = 0; t < threads; ++t) {
            workers.emplace_back([&, t] {
                for (std::size_t i = t * part; i < (t + 1) * part; ++i) {
                    a[i] = b[i] + 3.0 * c[i];
                }
            });
        }
        for (std::thread& worker : workers) {
            worker.join();
        }
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
        best = std::max(best, 3.0 * sizeof(double) * kDoubles / time.count());
    }
    return best;
}

}  // namespace mv::benchmarks
