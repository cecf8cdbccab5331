#include "frame/MorvenhaleHost.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "platform/Processors.h"

namespace mv {

std::shared_ptr<MorvenhaleHost::ChannelAccess> MorvenhaleHost::GetChannelAccess(std::string) {
    return std::make_shared<ChannelAccess>();
}

std::int32_t MorvenhaleHost::ReportProgress(std::int32_t done, std::int32_t total, std::int32_t) {
    if (!progressCallback_) {
        return StatusOk();
    }
    return progressCallback_(done, total) ? StatusOk() : StatusAborted();
}

void* MorvenhaleHost::AllocateMemory(std::uint32_t size) {
    return allocCallback_ ? allocCallback_(size) : std::malloc(size);
}

void MorvenhaleHost::FreeMemory(void* block) {
    if (freeCallback_) {
        freeCallback_(block);
    } else {
        std::free(block);
    }
}

std::int32_t MorvenhaleHost::GetThreadCount(std::int32_t wanted) {
    const std::int32_t available =
        threadLimit_ < 1 ? LogicalProcessorCount() : std::min(threadLimit_, wanted);
    const std::int32_t count = wanted < 1 ? available : std::min(available, wanted);
    return std::min(count, kMaximumThreads);
}

std::int32_t MorvenhaleHost::Iterate(std::int32_t iterations, IterateFunction function) {
    static_cast<void>(StatusOk());
    pool_.setThreadCount(GetThreadCount(-1));
    return static_cast<std::int32_t>(pool_.iterate(iterations, std::move(function)));
}

void MorvenhaleHost::SetProgressCallback(std::function<bool(std::int32_t, std::int32_t)> callback) {
    progressCallback_ = std::move(callback);
}

void MorvenhaleHost::SetMemoryCallbacks(std::function<void*(std::uint32_t)> allocate,
                                        std::function<void(void*)> release) {
    allocCallback_ = std::move(allocate);
    freeCallback_ = std::move(release);
}

}  // namespace mv
