// Script descriptors: how recorded values travel between the host and a filter.
#pragma once

#include "hostapi/Types.h"

namespace hostapi {

using PIReadDescriptor = void*;
using PIWriteDescriptor = void*;
using PIDescriptorHandle = Handle;

struct PIDescriptorSimpleReference {
    std::uint32_t desiredClass;
    std::uint32_t keyForm;
    Str255 name;
    std::int32_t index;
    std::uint32_t type;
    std::uint32_t value;
};

struct ReadDescriptorProcs {
    std::int16_t readDescriptorProcsVersion;
    std::int16_t numReadDescriptorProcs;
    PIReadDescriptor (*openReadDescriptorProc)(PIDescriptorHandle descriptor, OSType* keys);
    OSErr (*closeReadDescriptorProc)(PIReadDescriptor token);
    Boolean (*getKeyProc)(PIReadDescriptor token, OSType* key, OSType* type, std::int32_t* flags);
    OSErr (*getIntegerProc)(PIReadDescriptor token, std::int32_t* value);
    OSErr (*getFloatProc)(PIReadDescriptor token, double* value);
    OSErr (*getUnitFloatProc)(PIReadDescriptor token, OSType* unit, double* value);
    OSErr (*getBooleanProc)(PIReadDescriptor token, Boolean* value);
    OSErr (*getTextProc)(PIReadDescriptor token, Handle* value);
    OSErr (*getAliasProc)(PIReadDescriptor token, Handle* value);
    OSErr (*getEnumeratedProc)(PIReadDescriptor token, OSType* value);
    OSErr (*getClassProc)(PIReadDescriptor token, OSType* value);
    OSErr (*getSimpleReferenceProc)(PIReadDescriptor token, PIDescriptorSimpleReference* value);
    OSErr (*getObjectProc)(PIReadDescriptor token, OSType* type, PIDescriptorHandle* value);
    OSErr (*getCountProc)(PIReadDescriptor token, std::uint32_t* count);
    OSErr (*getStringProc)(PIReadDescriptor token, Str255* value);
    OSErr (*getPinnedIntegerProc)(PIReadDescriptor token, std::int32_t minimum,
                                  std::int32_t maximum, std::int32_t* value);
    OSErr (*getPinnedFloatProc)(PIReadDescriptor token, const double* minimum,
                                const double* maximum, double* value);
    OSErr (*getPinnedUnitFloatProc)(PIReadDescriptor token, const double* minimum,
                                    const double* maximum, OSType* unit, double* value);
};

struct WriteDescriptorProcs {
    std::int16_t writeDescriptorProcsVersion;
    std::int16_t numWriteDescriptorProcs;
    PIWriteDescriptor (*openWriteDescriptorProc)();
    OSErr (*closeWriteDescriptorProc)(PIWriteDescriptor token, PIDescriptorHandle* descriptor);
    OSErr (*putIntegerProc)(PIWriteDescriptor token, OSType key, std::int32_t value);
    OSErr (*putFloatProc)(PIWriteDescriptor token, OSType key, const double* value);
    OSErr (*putUnitFloatProc)(PIWriteDescriptor token, OSType key, OSType unit,
                              const double* value);
    OSErr (*putBooleanProc)(PIWriteDescriptor token, OSType key, Boolean value);
    OSErr (*putTextProc)(PIWriteDescriptor token, OSType key, Handle value);
    OSErr (*putAliasProc)(PIWriteDescriptor token, OSType key, Handle value);
    OSErr (*putEnumeratedProc)(PIWriteDescriptor token, OSType key, OSType type, OSType value);
    OSErr (*putClassProc)(PIWriteDescriptor token, OSType key, OSType value);
    OSErr (*putSimpleReferenceProc)(PIWriteDescriptor token, OSType key,
                                    const PIDescriptorSimpleReference* value);
    OSErr (*putObjectProc)(PIWriteDescriptor token, OSType key, OSType type,
                           PIDescriptorHandle value);
    OSErr (*putCountProc)(PIWriteDescriptor token, OSType key, std::uint32_t count);
    OSErr (*putStringProc)(PIWriteDescriptor token, OSType key, Str255* value);
    OSErr (*putScopedClassProc)(PIWriteDescriptor token, OSType key, OSType value);
    OSErr (*putScopedObjectProc)(PIWriteDescriptor token, OSType key, OSType type,
                                 PIDescriptorHandle value);
};

constexpr std::int16_t kMinimumReadDescriptorProcs = 18;
constexpr std::int16_t kMinimumWriteDescriptorProcs = 16;

struct PIDescriptorParameters {
    std::int16_t descriptorParametersVersion;
    std::int16_t playInfo;
    std::int16_t recordInfo;
    PIDescriptorHandle descriptor;
    WriteDescriptorProcs* writeDescriptorProcs;
    ReadDescriptorProcs* readDescriptorProcs;
};

static_assert(sizeof(PIDescriptorSimpleReference) == 276);
static_assert(sizeof(ReadDescriptorProcs) == 152);
static_assert(offsetof(ReadDescriptorProcs, openReadDescriptorProc) == 8);
static_assert(offsetof(ReadDescriptorProcs, getKeyProc) == 24);
static_assert(offsetof(ReadDescriptorProcs, getFloatProc) == 40);
static_assert(offsetof(ReadDescriptorProcs, getBooleanProc) == 56);
static_assert(offsetof(ReadDescriptorProcs, getPinnedUnitFloatProc) == 144);
static_assert(sizeof(WriteDescriptorProcs) == 136);
static_assert(offsetof(WriteDescriptorProcs, putIntegerProc) == 24);
static_assert(offsetof(WriteDescriptorProcs, putFloatProc) == 32);
static_assert(offsetof(WriteDescriptorProcs, putBooleanProc) == 48);
static_assert(offsetof(WriteDescriptorProcs, putScopedObjectProc) == 128);
static_assert(sizeof(PIDescriptorParameters) == 32);
static_assert(offsetof(PIDescriptorParameters, descriptor) == 8);
static_assert(offsetof(PIDescriptorParameters, readDescriptorProcs) == 24);

}  // namespace hostapi
