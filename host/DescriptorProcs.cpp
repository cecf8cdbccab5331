// The procedures of the read and write descriptor blocks.
#include <algorithm>
#include <cmath>

#include "ProcSupport.h"

namespace mv::host {
namespace {

using hostapi::Boolean;
using hostapi::Handle;
using hostapi::OSErr;
using hostapi::OSType;
using hostapi::PIDescriptorHandle;
using hostapi::PIDescriptorSimpleReference;
using hostapi::PIReadDescriptor;
using hostapi::PIWriteDescriptor;
using hostapi::Str255;

// --- Reading ---

PIReadDescriptor OpenRead(PIDescriptorHandle descriptor, OSType* keys) {
    return InSession<PIReadDescriptor>(
        nullptr, [=](SessionState& state) { return state.descriptors.OpenRead(descriptor, keys); });
}

OSErr CloseRead(PIReadDescriptor token) {
    return InSession<OSErr>(hostapi::memFullErr, [token](SessionState& state) {
        return state.descriptors.CloseRead(token);
    });
}

Boolean GetKey(PIReadDescriptor token, OSType* key, OSType* type, std::int32_t* flags) {
    return InSession<Boolean>(0, [=](SessionState& state) -> Boolean {
        return state.descriptors.GetKey(token, key, type, flags) ? 1 : 0;
    });
}

// Hands the current value to `take` when it has the type, else gives the error.
template <class Value, class Take>
OSErr WithCurrent(PIReadDescriptor token, OSType type, Take take) {
    return InSession<OSErr>(hostapi::memFullErr, [=](SessionState& state) -> OSErr {
        OSErr error = hostapi::noErr;
        const ScriptValue* const value = state.descriptors.Current(token, type, error);
        return value == nullptr ? error : take(std::get<Value>(*value));
    });
}

OSErr GetInteger(PIReadDescriptor token, std::int32_t* value) {
    return WithCurrent<std::int32_t>(token, hostapi::typeInteger, [value](std::int32_t stored) {
        *value = stored;
        return hostapi::noErr;
    });
}

OSErr GetFloat(PIReadDescriptor token, double* value) {
    return WithCurrent<double>(token, hostapi::typeFloat, [value](double stored) {
        *value = stored;
        return hostapi::noErr;
    });
}

OSErr GetBoolean(PIReadDescriptor token, Boolean* value) {
    return WithCurrent<bool>(token, hostapi::typeBoolean, [value](bool stored) {
        *value = stored ? 1 : 0;
        return hostapi::noErr;
    });
}

OSErr GetPinnedInteger(PIReadDescriptor token, std::int32_t minimum, std::int32_t maximum,
                       std::int32_t* value) {
    return WithCurrent<std::int32_t>(token, hostapi::typeInteger, [=](std::int32_t stored) {
        *value = std::max(minimum, std::min(stored, maximum));
        return *value == stored ? hostapi::noErr : hostapi::coercedParamErr;
    });
}

OSErr GetPinnedFloat(PIReadDescriptor token, const double* minimum, const double* maximum,
                     double* value) {
    return WithCurrent<double>(token, hostapi::typeFloat, [=](double stored) {
        *value = std::fmax(*minimum, std::fmin(stored, *maximum));
        return *value == stored ? hostapi::noErr : hostapi::coercedParamErr;
    });
}

OSErr GetCount(PIReadDescriptor, std::uint32_t* count) {
    *count = 0;
    return hostapi::noErr;
}

// The types that no value of ours has: every such getter answers that the value is missing.
OSErr GetUnitFloat(PIReadDescriptor, OSType*, double*) {
    return hostapi::errMissingParameter;
}
OSErr GetHandleValue(PIReadDescriptor, Handle*) {
    return hostapi::errMissingParameter;
}
OSErr GetTypeValue(PIReadDescriptor, OSType*) {
    return hostapi::errMissingParameter;
}
OSErr GetSimpleReference(PIReadDescriptor, PIDescriptorSimpleReference*) {
    return hostapi::errMissingParameter;
}
OSErr GetObject(PIReadDescriptor, OSType*, PIDescriptorHandle*) {
    return hostapi::errMissingParameter;
}
OSErr GetString(PIReadDescriptor, Str255*) {
    return hostapi::errMissingParameter;
}
OSErr GetPinnedUnitFloat(PIReadDescriptor, const double*, const double*, OSType*, double*) {
    return hostapi::errMissingParameter;
}

// --- Writing ---

PIWriteDescriptor OpenWrite() {
    return InSession<PIWriteDescriptor>(
        nullptr, [](SessionState& state) { return state.descriptors.OpenWrite(); });
}

OSErr CloseWrite(PIWriteDescriptor token, PIDescriptorHandle* descriptor) {
    return InSession<OSErr>(hostapi::memFullErr, [=](SessionState& state) {
        ScriptValues values;
        if (!state.descriptors.CloseWrite(token, values)) {
            return hostapi::paramErr;
        }
        *descriptor = state.handles.New(0);
        if (*descriptor == nullptr) {
            return hostapi::memFullErr;
        }
        state.recorded = values;
        state.descriptors.Keep(*descriptor, std::move(values));
        return hostapi::noErr;
    });
}

OSErr Put(PIWriteDescriptor token, OSType key, const ScriptValue& value) {
    return InSession<OSErr>(hostapi::memFullErr, [=](SessionState& state) {
        return state.descriptors.Put(token, key, value);
    });
}

OSErr PutInteger(PIWriteDescriptor token, OSType key, std::int32_t value) {
    return Put(token, key, value);
}
OSErr PutFloat(PIWriteDescriptor token, OSType key, const double* value) {
    return Put(token, key, *value);
}
OSErr PutBoolean(PIWriteDescriptor token, OSType key, Boolean value) {
    return Put(token, key, value != 0);
}

// Kinds of values that this host does not keep.
OSErr PutUnitFloat(PIWriteDescriptor, OSType, OSType, const double*) {
    return hostapi::paramErr;
}
OSErr PutHandleValue(PIWriteDescriptor, OSType, Handle) {
    return hostapi::paramErr;
}
OSErr PutEnumerated(PIWriteDescriptor, OSType, OSType, OSType) {
    return hostapi::paramErr;
}
OSErr PutTypeValue(PIWriteDescriptor, OSType, OSType) {
    return hostapi::paramErr;
}
OSErr PutSimpleReference(PIWriteDescriptor, OSType, const PIDescriptorSimpleReference*) {
    return hostapi::paramErr;
}
OSErr PutObject(PIWriteDescriptor, OSType, OSType, PIDescriptorHandle) {
    return hostapi::paramErr;
}
OSErr PutCount(PIWriteDescriptor, OSType, std::uint32_t) {
    return hostapi::paramErr;
}
OSErr PutString(PIWriteDescriptor, OSType, Str255*) {
    return hostapi::paramErr;
}

}  // namespace

void InstallDescriptorProcs(SessionState& state) {
    state.readProcs = {0,
                       hostapi::kMinimumReadDescriptorProcs,
                       OpenRead,
                       CloseRead,
                       GetKey,
                       GetInteger,
                       GetFloat,
                       GetUnitFloat,
                       GetBoolean,
                       GetHandleValue,  // text
                       GetHandleValue,  // alias
                       GetTypeValue,    // enumerated
                       GetTypeValue,    // class
                       GetSimpleReference,
                       GetObject,
                       GetCount,
                       GetString,
                       GetPinnedInteger,
                       GetPinnedFloat,
                       GetPinnedUnitFloat};
    state.writeProcs = {0,
                        hostapi::kMinimumWriteDescriptorProcs,
                        OpenWrite,
                        CloseWrite,
                        PutInteger,
                        PutFloat,
                        PutUnitFloat,
                        PutBoolean,
                        PutHandleValue,  // text
                        PutHandleValue,  // alias
                        PutEnumerated,
                        PutTypeValue,  // class
                        PutSimpleReference,
                        PutObject,
                        PutCount,
                        PutString,
                        PutTypeValue,  // scoped class
                        PutObject};    // scoped object
}

}  // namespace mv::host
