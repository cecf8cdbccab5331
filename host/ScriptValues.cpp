#include "ScriptValues.h"

#include <algorithm>

namespace mv::host {

void SetValue(ScriptValues& values, hostapi::OSType key, const ScriptValue& value) {
    const auto found = std::find_if(values.begin(), values.end(),
                                    [key](const ScriptEntry& entry) { return entry.key == key; });
    if (found != values.end()) {
        found->value = value;
    } else {
        values.push_back({key, value});
    }
}

const ScriptValue* FindValue(const ScriptValues& values, hostapi::OSType key) {
    for (const ScriptEntry& entry : values) {
        if (entry.key == key) {
            return &entry.value;
        }
    }
    return nullptr;
}

hostapi::OSType TypeOf(const ScriptValue& value) {
    if (std::holds_alternative<std::int32_t>(value)) {
        return hostapi::typeInteger;
    }
    if (std::holds_alternative<double>(value)) {
        return hostapi::typeFloat;
    }
    return std::holds_alternative<bool>(value) ? hostapi::typeBoolean : hostapi::typeNull;
}

std::string KeyText(hostapi::OSType key) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const auto character = static_cast<char>((key >> shift) & 0xFF);
        text += character >= ' ' && character <= '~' ? character : '.';
    }
    return text;
}

}  // namespace mv::host
