#include "HostScript.h"

#include <cmath>
#include <cstdlib>

#include "FuzzTarget.h"

namespace fuzzing {
namespace {

using hostapi::FourCharacterCode;
using hostapi::Handle;
using hostapi::OSErr;
using hostapi::OSType;

struct Default {
    OSType key;
    double value;
};

constexpr Default kDefaults[] = {
    {FourCharacterCode("ORIX"), 0.5}, {FourCharacterCode("ORIY"), 0.5},
    {FourCharacterCode("INTE"), 1.0}, {FourCharacterCode("STRE"), 0.25},
    {FourCharacterCode("ZOST"), 0.5}, {FourCharacterCode("HORA"), 0.0},
    {FourCharacterCode("MODE"), 1.0}, {FourCharacterCode("INGR"), 0.0},
    {FourCharacterCode("GAMA"), 1.0}, {FourCharacterCode("CONT"), 0.0},
    {FourCharacterCode("GAMC"), 1.0}, {FourCharacterCode("HSLH"), 0.0},
    {FourCharacterCode("HSLS"), 0.0}, {FourCharacterCode("HSLL"), 0.0},
    {FourCharacterCode("SELL"), 0.0}, {FourCharacterCode("SELH"), 255.0},
    {FourCharacterCode("SELS"), 0.0}, {FourCharacterCode("SELC"), 0.0},
    {FourCharacterCode("USES"), 1.0}, {FourCharacterCode("BLND"), 1.0},
    {FourCharacterCode("SHOW"), 1.0}};
constexpr int kKeys = static_cast<int>(sizeof kDefaults / sizeof kDefaults[0]);

HostScript* current = nullptr;

Handle MakeHandle() {
    const auto handle = static_cast<Handle>(std::malloc(sizeof(hostapi::Ptr)));
    *handle = nullptr;
    return handle;
}

OSErr Unused() {
    std::abort();
}

bool IsList(OSType key) {
    return key == FourCharacterCode("MODE") || key == FourCharacterCode("BLND") ||
           key == FourCharacterCode("SHOW");
}

}  // namespace

HostScript::HostScript() {
    current = this;
    auto* slot = reinterpret_cast<OSErr (**)()>(&reads_.openReadDescriptorProc);
    for (int i = 0; i < hostapi::kMinimumReadDescriptorProcs; ++i) {
        slot[i] = Unused;
    }
    reads_.numReadDescriptorProcs = hostapi::kMinimumReadDescriptorProcs;
    reads_.openReadDescriptorProc = OpenRead;
    reads_.closeReadDescriptorProc = CloseRead;
    reads_.getKeyProc = GetKey;
    reads_.getIntegerProc = GetInteger;
    reads_.getFloatProc = GetFloat;
    reads_.getBooleanProc = GetBoolean;
    writes_.numWriteDescriptorProcs = hostapi::kMinimumWriteDescriptorProcs;
    writes_.openWriteDescriptorProc = OpenWrite;
    writes_.closeWriteDescriptorProc = CloseWrite;
    writes_.putIntegerProc = PutInteger;
    writes_.putFloatProc = PutFloat;
    writes_.putBooleanProc = PutBoolean;
    block_.playInfo = hostapi::plugInDialogSilent;
    block_.readDescriptorProcs = &reads_;
    block_.writeDescriptorProcs = &writes_;
    entries_.reserve(64);
}

HostScript::~HostScript() {
    Drop();
    current = nullptr;
}

void HostScript::Drop() {
    std::free(block_.descriptor);
    block_.descriptor = nullptr;
}

void HostScript::Renew() {
    Drop();
    block_.descriptor = MakeHandle();
}

void HostScript::Play(FuzzInput& input, int most) {
    entries_.clear();
    for (const Default& entry : kDefaults) {
        entries_.push_back({entry.key, entry.value});
    }
    for (int i = 0; i < most && input.Left() > 0; ++i) {
        const int which = input.Below(kKeys + 1);
        if (which == kKeys) {
            entries_.push_back({input.Raw<OSType>(), input.Number()});
        } else if (IsList(kDefaults[which].key)) {
            const auto value = input.Below(8) == 7 ? input.Raw<std::int16_t>() : input.Below(26);
            entries_.push_back({kDefaults[which].key, static_cast<double>(value)});
        } else {
            entries_.push_back({kDefaults[which].key, input.Number()});
        }
    }
    Renew();
}

hostapi::PIReadDescriptor HostScript::OpenRead(Handle, OSType*) {
    current->next_ = 0;
    ++current->openTokens_;
    return &current->next_;
}

OSErr HostScript::CloseRead(hostapi::PIReadDescriptor) {
    --current->openTokens_;
    return hostapi::noErr;
}

hostapi::Boolean HostScript::GetKey(hostapi::PIReadDescriptor, OSType* key, OSType* type,
                                    std::int32_t* flags) {
    if (current->next_ == current->entries_.size()) {
        return 0;
    }
    *key = current->entries_[current->next_++].key;
    *type = hostapi::typeFloat;
    *flags = 0;
    return 1;
}

OSErr HostScript::GetInteger(hostapi::PIReadDescriptor, std::int32_t* value) {
    *value = static_cast<std::int32_t>(current->entries_[current->next_ - 1].value);
    return hostapi::noErr;
}

OSErr HostScript::GetFloat(hostapi::PIReadDescriptor, double* value) {
    *value = current->entries_[current->next_ - 1].value;
    return hostapi::noErr;
}

OSErr HostScript::GetBoolean(hostapi::PIReadDescriptor, hostapi::Boolean* value) {
    *value = std::fabs(current->entries_[current->next_ - 1].value) >= 1.0 ? 1 : 0;
    return hostapi::noErr;
}

hostapi::PIWriteDescriptor HostScript::OpenWrite() {
    ++current->openTokens_;
    return &current->openTokens_;
}

OSErr HostScript::CloseWrite(hostapi::PIWriteDescriptor, Handle* handle) {
    --current->openTokens_;
    *handle = MakeHandle();
    return hostapi::noErr;
}

OSErr HostScript::PutInteger(hostapi::PIWriteDescriptor, OSType key, std::int32_t value) {
    Require(!IsList(key) || (value >= 1 && value <= 23), "lists stand on one of their entries");
    return hostapi::noErr;
}

OSErr HostScript::PutFloat(hostapi::PIWriteDescriptor, OSType, const double* value) {
    Require(!std::isnan(*value), "no value is no number");
    return hostapi::noErr;
}

OSErr HostScript::PutBoolean(hostapi::PIWriteDescriptor, OSType, hostapi::Boolean value) {
    Require(value <= 1, "a truth value is 0 or 1");
    return hostapi::noErr;
}

}  // namespace fuzzing
