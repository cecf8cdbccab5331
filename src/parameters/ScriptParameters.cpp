#include "parameters/ScriptParameters.h"

#include <cstdlib>
#include <memory>
#include <new>

#include "diagnostics/Log.h"
#include "parameters/pfParameter.h"
#include "parameters/pfParameters.h"

namespace mv {

namespace {

// A descriptor holds each key once, so a host that yields more than this many never ends.
constexpr int kMostDescriptorKeys = 65536;

const hostapi::ReadDescriptorProcs* Readers(const hostapi::FilterRecord* record) {
    return record != nullptr && record->descriptorParameters != nullptr
               ? record->descriptorParameters->readDescriptorProcs
               : nullptr;
}

const hostapi::WriteDescriptorProcs* Writers(const hostapi::FilterRecord* record) {
    return record != nullptr && record->descriptorParameters != nullptr
               ? record->descriptorParameters->writeDescriptorProcs
               : nullptr;
}

bool AllReadersSet(const hostapi::ReadDescriptorProcs& procs) noexcept {
    return procs.openReadDescriptorProc != nullptr && procs.closeReadDescriptorProc != nullptr &&
           procs.getKeyProc != nullptr && procs.getIntegerProc != nullptr &&
           procs.getFloatProc != nullptr && procs.getUnitFloatProc != nullptr &&
           procs.getBooleanProc != nullptr && procs.getTextProc != nullptr &&
           procs.getAliasProc != nullptr && procs.getEnumeratedProc != nullptr &&
           procs.getClassProc != nullptr && procs.getSimpleReferenceProc != nullptr &&
           procs.getObjectProc != nullptr && procs.getCountProc != nullptr &&
           procs.getStringProc != nullptr && procs.getPinnedIntegerProc != nullptr &&
           procs.getPinnedFloatProc != nullptr && procs.getPinnedUnitFloatProc != nullptr;
}

bool HandleProcsAvailable(const hostapi::HandleProcs* procs) noexcept {
    return procs != nullptr && procs->handleProcsVersion == 1 && procs->numHandleProcs >= 8 &&
           procs->newProc != nullptr && procs->disposeProc != nullptr &&
           procs->getSizeProc != nullptr && procs->setSizeProc != nullptr;
}

// The descriptor that the host passed belongs to the filter once it has been opened.
void ReleaseDescriptor(const hostapi::FilterRecord& record) {
    hostapi::PIDescriptorHandle& descriptor = record.descriptorParameters->descriptor;
    if (descriptor != nullptr) {
        if (HandleProcsAvailable(record.handleProcs)) {
            record.handleProcs->disposeProc(descriptor);
        } else {
            std::free(descriptor);
        }
    }
    descriptor = nullptr;
}

void ReadDescriptor(const pfParameters& parameters, hostapi::FilterRecord* record,
                    hostapi::OSType* keys) {
    const hostapi::ReadDescriptorProcs& procs = *Readers(record);
    const hostapi::PIReadDescriptor token =
        procs.openReadDescriptorProc(record->descriptorParameters->descriptor, keys);
    if (token == nullptr) {
        return;
    }
    hostapi::OSType key = 0;
    hostapi::OSType type = 0;
    std::int32_t flags = 0;
    for (int i = 0; i < kMostDescriptorKeys && procs.getKeyProc(token, &key, &type, &flags) != 0;
         ++i) {
        for (int j = 0; j < parameters.GetCount(); ++j) {
            parameters.GetParameter(j)->ReadScriptParam(record, key, token);
        }
    }
    procs.closeReadDescriptorProc(token);
    ReleaseDescriptor(*record);
}

std::unique_ptr<hostapi::OSType[]> CollectKeys(const pfParameters& parameters) noexcept {
    std::size_t count = 0;
    for (int i = 0; i < parameters.GetCount(); ++i) {
        count += static_cast<std::size_t>(parameters.GetParameter(i)->GetScriptKeyCount());
    }
    std::unique_ptr<hostapi::OSType[]> keys(new (std::nothrow) hostapi::OSType[count + 1]);
    if (keys == nullptr) {
        return keys;
    }
    hostapi::OSType* next = keys.get();
    for (int i = 0; i < parameters.GetCount(); ++i) {
        const pfParameter& parameter = *parameters.GetParameter(i);
        parameter.GetScriptKeys(next);
        next += parameter.GetScriptKeyCount();
    }
    *next = 0;
    return keys;
}

bool ReadValues(const pfParameters& parameters, hostapi::FilterRecord* record) {
    const std::unique_ptr<hostapi::OSType[]> keys = CollectKeys(parameters);
    if (keys == nullptr || record == nullptr ||
        !DescriptorAvailable(record->descriptorParameters)) {
        // A host without scripting always shows the dialog.
        return true;
    }
    ReadDescriptor(parameters, record, keys.get());
    return record->descriptorParameters->playInfo == hostapi::plugInDialogDisplay;
}

hostapi::OSErr WriteValues(const pfParameters& parameters, hostapi::FilterRecord* record) {
    if (record == nullptr || !DescriptorAvailable(record->descriptorParameters)) {
        return hostapi::noErr;
    }
    const hostapi::WriteDescriptorProcs& procs = *Writers(record);
    if (procs.openWriteDescriptorProc == nullptr || procs.closeWriteDescriptorProc == nullptr) {
        return hostapi::noErr;
    }
    const hostapi::PIWriteDescriptor token = procs.openWriteDescriptorProc();
    if (token == nullptr) {
        return hostapi::noErr;
    }
    for (int i = 0; i < parameters.GetCount(); ++i) {
        parameters.GetParameter(i)->WriteScriptParam(record, token);
    }
    ReleaseDescriptor(*record);
    hostapi::PIDescriptorHandle handle = nullptr;
    const hostapi::OSErr result = procs.closeWriteDescriptorProc(token, &handle);
    record->descriptorParameters->recordInfo = hostapi::plugInDialogOptional;
    record->descriptorParameters->descriptor = handle;
    return result;
}

}  // namespace

bool DescriptorAvailable(const hostapi::PIDescriptorParameters* parameters) noexcept {
    if (parameters == nullptr || parameters->descriptorParametersVersion != 0) {
        return false;
    }
    const hostapi::ReadDescriptorProcs* const readers = parameters->readDescriptorProcs;
    const hostapi::WriteDescriptorProcs* const writers = parameters->writeDescriptorProcs;
    return readers != nullptr && writers != nullptr && readers->readDescriptorProcsVersion == 0 &&
           readers->numReadDescriptorProcs >= hostapi::kMinimumReadDescriptorProcs &&
           writers->writeDescriptorProcsVersion == 0 &&
           writers->numWriteDescriptorProcs >= hostapi::kMinimumWriteDescriptorProcs &&
           AllReadersSet(*readers);
}

bool GetScriptFloat(const hostapi::FilterRecord* record, hostapi::PIReadDescriptor token,
                    double& value) {
    const hostapi::ReadDescriptorProcs* const procs = Readers(record);
    double given = 0.0;
    if (procs == nullptr || procs->getFloatProc == nullptr ||
        procs->getFloatProc(token, &given) != hostapi::noErr) {
        return false;
    }
    value = given;
    return true;
}

bool GetScriptInteger(const hostapi::FilterRecord* record, hostapi::PIReadDescriptor token,
                      std::int32_t& value) {
    const hostapi::ReadDescriptorProcs* const procs = Readers(record);
    std::int32_t given = 0;
    if (procs == nullptr || procs->getIntegerProc == nullptr ||
        procs->getIntegerProc(token, &given) != hostapi::noErr) {
        return false;
    }
    value = given;
    return true;
}

bool GetScriptBoolean(const hostapi::FilterRecord* record, hostapi::PIReadDescriptor token,
                      bool& value) {
    const hostapi::ReadDescriptorProcs* const procs = Readers(record);
    hostapi::Boolean given = 0;
    if (procs == nullptr || procs->getBooleanProc == nullptr ||
        procs->getBooleanProc(token, &given) != hostapi::noErr) {
        return false;
    }
    value = given != 0;
    return true;
}

void PutScriptFloat(const hostapi::FilterRecord* record, hostapi::PIWriteDescriptor token,
                    hostapi::OSType key, double value) {
    const hostapi::WriteDescriptorProcs* const procs = Writers(record);
    if (procs != nullptr && procs->putFloatProc != nullptr) {
        procs->putFloatProc(token, key, &value);
    }
}

void PutScriptInteger(const hostapi::FilterRecord* record, hostapi::PIWriteDescriptor token,
                      hostapi::OSType key, std::int32_t value) {
    const hostapi::WriteDescriptorProcs* const procs = Writers(record);
    if (procs != nullptr && procs->putIntegerProc != nullptr) {
        procs->putIntegerProc(token, key, value);
    }
}

void PutScriptBoolean(const hostapi::FilterRecord* record, hostapi::PIWriteDescriptor token,
                      hostapi::OSType key, bool value) {
    const hostapi::WriteDescriptorProcs* const procs = Writers(record);
    if (procs != nullptr && procs->putBooleanProc != nullptr) {
        procs->putBooleanProc(token, key, value ? hostapi::Boolean{1} : hostapi::Boolean{0});
    }
}

bool pfParameters::ReadScriptParams(hostapi::FilterRecord* record) {
    WriteLog(kTrace, "pfParmeters::ReadScriptParams( pFilterRecord(0x", LogPointer{record}, ") )");
    const LogScope scope;
    const bool result = ReadValues(*this, record);
    WriteLog(kTrace, "pfParmeters::ReadScriptParams( return(", result, ") )");
    return result;
}

hostapi::OSErr pfParameters::WriteScriptParams(hostapi::FilterRecord* record) const {
    WriteLog(kTrace, "pfParmeters::WriteScriptParams( pFilterRecord(0x", LogPointer{record}, ") )");
    const LogScope scope;
    const hostapi::OSErr result = WriteValues(*this, record);
    // The apostrophe is meant as it is.
    WriteLog(kTrace, "pfParmeters::WriteScriptParams(' return(", result, ") )");
    return result;
}

}  // namespace mv
