// The host's basic suite of the current selector call.
#pragma once

#include "hostapi/HostApi.h"

namespace mv {

// Null outside a call, and when the host offers none.
hostapi::SPBasicSuite* GetBasicSuite() noexcept;
void SetBasicSuite(hostapi::SPBasicSuite* suite) noexcept;

}  // namespace mv
