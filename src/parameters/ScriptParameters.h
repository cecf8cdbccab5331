// The host's scripting as the parameters see it: whether it is there, and single values.
#pragma once

#include <cstdint>

#include "hostapi/HostApi.h"

namespace mv {

// The test that guards every use of the host's scripting. Of the procedures themselves it looks
// at the reading ones alone; the functions below do without what a host leaves out.
bool DescriptorAvailable(const hostapi::PIDescriptorParameters* parameters) noexcept;

// The value of the key that the token stands at. False, and the value untouched, when the host
// has none to give.
bool GetScriptFloat(const hostapi::FilterRecord* record, hostapi::PIReadDescriptor token,
                    double& value);
bool GetScriptInteger(const hostapi::FilterRecord* record, hostapi::PIReadDescriptor token,
                      std::int32_t& value);
bool GetScriptBoolean(const hostapi::FilterRecord* record, hostapi::PIReadDescriptor token,
                      bool& value);

void PutScriptFloat(const hostapi::FilterRecord* record, hostapi::PIWriteDescriptor token,
                    hostapi::OSType key, double value);
void PutScriptInteger(const hostapi::FilterRecord* record, hostapi::PIWriteDescriptor token,
                      hostapi::OSType key, std::int32_t value);
void PutScriptBoolean(const hostapi::FilterRecord* record, hostapi::PIWriteDescriptor token,
                      hostapi::OSType key, bool value);

}  // namespace mv
