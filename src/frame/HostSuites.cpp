#include "frame/HostSuites.h"

namespace mv {
namespace {

hostapi::SPBasicSuite* basicSuite = nullptr;

}  // namespace

hostapi::SPBasicSuite* GetBasicSuite() noexcept {
    return basicSuite;
}

void SetBasicSuite(hostapi::SPBasicSuite* suite) noexcept {
    basicSuite = suite;
}

}  // namespace mv
