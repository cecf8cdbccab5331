// A module with nothing but a pool, to be loaded, used and unloaded by the unit tests.
#include <atomic>

#include "image/ThreadPool.h"

#ifdef _WIN32
#define MV_EXPORT extern "C" __declspec(dllexport)
#else
#define MV_EXPORT extern "C" __attribute__((visibility("default")))
#endif

// Gives the sum of all indices. The pool lives until the module is unloaded.
MV_EXPORT int RunPool(int threads, int iterations) {
    static mv::ThreadPool pool;
    std::atomic<int> sum{0};
    pool.setThreadCount(threads);
    pool.iterate(iterations, [&sum](unsigned index, unsigned, unsigned) {
        sum += static_cast<int>(index);
        return 0u;
    });
    return sum;
}
