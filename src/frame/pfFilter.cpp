#include "frame/pfFilter.h"

#include <cstdlib>
#include <mutex>
#include <utility>

#include "frame/HostSuites.h"
#include "interface/PreviewState.h"
#include "interface/UserInterface.h"
#include "interface/pfPreview.h"
#include "platform/Clock.h"

namespace mv {
namespace {

constexpr std::int32_t kStatusUserCancel = hostapi::userCanceledErr;
constexpr std::int32_t kStatusQuit = -1;

// A preview frame older than this, in milliseconds, dies as soon as a change is pending.
constexpr std::uint32_t kPreviewPatience = 200;

}  // namespace

pfFilter::pfFilter(std::string name, std::string maker, std::uint32_t versionMajor,
                   std::uint32_t versionMinor, std::uint32_t versionPatch, std::string description)
    : MorvenhaleHost(std::move(name), std::move(maker), versionMajor, versionMinor, versionPatch,
                     std::move(description)),
      dialog_(CreatePreview()) {}

pfFilter::~pfFilter() = default;

// A host may say "abort" once only, and to a worker whose status goes no further: what was said
// stands until the next render.
std::int32_t pfFilter::ReportProgress(std::int32_t done, std::int32_t total, std::int32_t quiet) {
    const std::lock_guard guard(progressLock_);
    const std::int32_t status =
        previewClock != 0 ? ReportToPreview() : ReportToHost(done, total, quiet);
    if (interruption_ == StatusOk()) {
        interruption_ = status;
    }
    return interruption_;
}

std::int32_t pfFilter::ReportToHost(std::int32_t done, std::int32_t total, std::int32_t quiet) {
    if (quiet != 0 || filterRecord_ == nullptr) {
        return StatusOk();
    }
    if (filterRecord_->progressProc != nullptr) {
        filterRecord_->progressProc(done, total);
    }
    const bool isAborted = filterRecord_->abortProc != nullptr && filterRecord_->abortProc() != 0;
    return isAborted ? kStatusUserCancel : StatusOk();
}

std::int32_t pfFilter::ReportToPreview() {
    if (DrainMessages() == DrainResult::Quit) {
        return kStatusQuit;
    }
    const std::uint32_t age = TickCount() - previewClock;
    if (previewDirty && interruptible && age > kPreviewPatience) {
        return kStatusUserCancel;
    }
    return StatusOk();
}

std::int32_t pfFilter::Iterate(std::int32_t iterations, IterateFunction function) {
    const std::int32_t status = MorvenhaleHost::Iterate(iterations, std::move(function));
    const std::lock_guard guard(progressLock_);
    return status == StatusOk() ? interruption_ : status;
}

// It is meant that the Handle suite's pointer decides and the Buffer suite's routine serves: the
// two are acquired together.
void* pfFilter::AllocateMemory(std::uint32_t size) {
    const std::lock_guard guard(progressLock_);
    if (handleSuite_ == nullptr) {
        return std::malloc(size);
    }
    if (bufferSuite_ == nullptr || bufferSuite_->New == nullptr) {
        return nullptr;
    }
    // Some hosts read the requested size as 64 bits: the upper half is zero.
    std::uint32_t requested[2] = {size, 0};
    return bufferSuite_->New(requested, size);
}

void pfFilter::FreeMemory(void* block) {
    const std::lock_guard guard(progressLock_);
    if (handleSuite_ == nullptr) {
        std::free(block);
    } else if (block != nullptr && bufferSuite_ != nullptr && bufferSuite_->Dispose != nullptr) {
        hostapi::Ptr buffer = static_cast<hostapi::Ptr>(block);
        bufferSuite_->Dispose(&buffer);
    }
}

void pfFilter::GetRange(double* start, double* end) {
    *start = 0.0;
    *end = 1.0;
}

// Gives 0 for a degenerate rectangle, which has no reduction.
static std::int32_t DivideExtent(std::int32_t full, std::int32_t reduced) {
    return reduced == 0 ? 0 : full / reduced;
}

std::int32_t pfFilter::GetHorizontalReduction() const {
    const hostapi::FilterRecord& record = *filterRecord_;
    return DivideExtent(record.imageSize.h, record.outRect.right - record.outRect.left);
}

std::int32_t pfFilter::GetVerticalReduction() const {
    const hostapi::FilterRecord& record = *filterRecord_;
    return DivideExtent(record.imageSize.v, record.outRect.bottom - record.outRect.top);
}

// The Handle suite's pointer is deliberately not cleared first: a stale value survives when the
// acquire does not write it.
void pfFilter::AcquireSuites() {
    bufferSuite_ = nullptr;
    hostapi::SPBasicSuite* basic = GetBasicSuite();
    if (basic == nullptr || basic->AcquireSuite == nullptr) {
        return;
    }
    const void* suite = nullptr;
    basic->AcquireSuite(hostapi::kPSBufferSuite, hostapi::kPSBufferSuiteVersion1, &suite);
    bufferSuite_ = static_cast<const hostapi::PSBufferSuite1*>(suite);
    suite = handleSuite_;
    basic->AcquireSuite(hostapi::kPSHandleSuite, hostapi::kPSHandleSuiteVersion2, &suite);
    handleSuite_ = static_cast<const hostapi::PSHandleSuite2*>(suite);
}

void pfFilter::ReleaseSuites() {
    hostapi::SPBasicSuite* basic = GetBasicSuite();
    if (basic == nullptr || basic->ReleaseSuite == nullptr) {
        return;
    }
    basic->ReleaseSuite(hostapi::kPSBufferSuite, hostapi::kPSBufferSuiteVersion1);
    basic->ReleaseSuite(hostapi::kPSHandleSuite, hostapi::kPSHandleSuiteVersion2);
}

}  // namespace mv
