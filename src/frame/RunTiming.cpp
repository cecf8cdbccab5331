#include "frame/RunTiming.h"

#include "frame/HostSuites.h"
#include "frame/MorvenhaleHost.h"

namespace mv {
namespace {

const hostapi::TimingSuite1* AcquireTimingSuite() noexcept {
    const hostapi::SPBasicSuite* const basic = GetBasicSuite();
    const void* suite = nullptr;
    if (basic == nullptr || basic->AcquireSuite == nullptr ||
        basic->AcquireSuite(hostapi::kTimingSuite, hostapi::kTimingSuiteVersion1, &suite) !=
            hostapi::kSPNoError) {
        return nullptr;
    }
    return static_cast<const hostapi::TimingSuite1*>(suite);
}

void ReleaseTimingSuite() noexcept {
    const hostapi::SPBasicSuite* const basic = GetBasicSuite();
    if (basic != nullptr && basic->ReleaseSuite != nullptr) {
        basic->ReleaseSuite(hostapi::kTimingSuite, hostapi::kTimingSuiteVersion1);
    }
}

}  // namespace

RunTiming::RunTiming(MorvenhaleHost& filter, const hostapi::FilterRecord& record) noexcept
    : filter_(filter) {
    if (record.hostSig != hostapi::kCommandLineSignature) {
        return;
    }
    suite_ = AcquireTimingSuite();
    if (suite_ != nullptr) {
        filter_.SetMeasuring(true);
    }
}

RunTiming::~RunTiming() {
    if (suite_ == nullptr) {
        return;
    }
    filter_.SetMeasuring(false);
    if (suite_->TakeReport != nullptr) {
        suite_->TakeReport(filter_.GetMeasurements().Report().c_str());
    }
    filter_.GetMeasurements().Clear();
    ReleaseTimingSuite();
}

}  // namespace mv
