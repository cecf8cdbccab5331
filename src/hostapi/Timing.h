// A suite of this project's own, which no other host has: the command line offers it when the user
// asks for timing, and the module looks for it under the command line's signature alone.
#pragma once

#include "hostapi/Types.h"

namespace hostapi {

constexpr OSType kCommandLineSignature = FourCharacterCode("mvRB");
constexpr const char* kTimingSuite = "Radial Blur Timing Suite";
constexpr std::int32_t kTimingSuiteVersion1 = 1;

struct TimingSuite1 {
    // The report of one run, zero-terminated, in the classic locale's spelling. The text is the
    // module's and gone after the call.
    void (*TakeReport)(const char* text);
};

static_assert(sizeof(TimingSuite1) == 8);

}  // namespace hostapi
