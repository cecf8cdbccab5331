// Values that travel through the script descriptor.
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "hostapi/HostApi.h"

namespace mv::host {

// long, doub, bool; the empty alternative is a key of type `null`, which no getter serves.
using ScriptValue = std::variant<std::monostate, std::int32_t, double, bool>;

struct ScriptEntry {
    hostapi::OSType key = 0;
    ScriptValue value;
};

// In the order in which they are delivered or were put.
using ScriptValues = std::vector<ScriptEntry>;

// Replaces the value of a key, or appends it.
void SetValue(ScriptValues& values, hostapi::OSType key, const ScriptValue& value);
// The value of a key, or null.
const ScriptValue* FindValue(const ScriptValues& values, hostapi::OSType key);

hostapi::OSType TypeOf(const ScriptValue& value);
// The four characters of a key; those that cannot be printed are shown as '.'.
std::string KeyText(hostapi::OSType key);

}  // namespace mv::host
