#pragma once

#include <cstdint>
#include <functional>

namespace mv {

// A job of the pool: (iteration, iterations, thread index) to a status.
using IterateFunction = std::function<unsigned(unsigned, unsigned, unsigned)>;

// The services that effect code has of its host. Progress and memory may be used from any
// thread; Iterate only from the thread that runs the render.
class MorvenhaleRenderContext {
public:
    // done of total steps are finished; quiet keeps the host's routines from being called in a
    // final render. Gives a status: any but StatusOk() ends the caller's work.
    virtual std::int32_t ReportProgress(std::int32_t done, std::int32_t total,
                                        std::int32_t quiet) = 0;

    // A block of size bytes, or null.
    virtual void* AllocateMemory(std::uint32_t size) = 0;

    // Accepts null.
    virtual void FreeMemory(void* block) = 0;

    // How many threads work for a caller that wants so many; below 1 wants all there are.
    virtual std::int32_t GetThreadCount(std::int32_t wanted) = 0;

    // Runs the function for each index below iterations on the pool and returns the status of
    // the calling thread's share.
    virtual std::int32_t Iterate(std::int32_t iterations, IterateFunction function) = 0;

    virtual double GetRangeStart() = 0;
    virtual double GetRangeEnd() = 0;
    virtual void GetRange(double* start, double* end) = 0;

protected:
    ~MorvenhaleRenderContext() = default;
};

// Blocks are requested with 32 bits of size: what does not fit cannot be had, and comes back as
// null.
inline void* AllocateBlock(MorvenhaleRenderContext& context, std::uint64_t bytes) {
    return bytes > UINT32_MAX ? nullptr : context.AllocateMemory(static_cast<std::uint32_t>(bytes));
}

}  // namespace mv
