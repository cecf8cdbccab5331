#include "support/FakeDescriptorHost.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace mv::test {

namespace {

using hostapi::OSType;

FakeDescriptorHost* host = nullptr;

hostapi::PIReadDescriptor OpenRead(hostapi::PIDescriptorHandle descriptor, OSType* keys) {
    ++host->opens;
    host->position = 0;
    host->requestedKeys.clear();
    for (const OSType* key = keys; *key != 0; ++key) {
        host->requestedKeys.push_back(*key);
    }
    return descriptor == nullptr || host->refuseReading ? nullptr : host;
}

hostapi::OSErr CloseRead(hostapi::PIReadDescriptor token) {
    ++host->closes;
    EXPECT_EQ(token, host);
    return 0;
}

hostapi::Boolean GetKey(hostapi::PIReadDescriptor token, OSType* key, OSType* type,
                        std::int32_t* flags) {
    EXPECT_EQ(token, host);
    if (host->played.empty() || (host->position == host->played.size() && !host->endless)) {
        return 0;
    }
    const DescriptorEntry& entry = host->played[host->position++ % host->played.size()];
    ++host->keysYielded;
    *key = entry.key;
    *type = entry.type;
    *flags = 0;
    return 1;
}

const DescriptorEntry& Current() {
    return host->played[(host->position - 1) % host->played.size()];
}

hostapi::OSErr Result() {
    return host->failingReaders ? hostapi::errMissingParameter : hostapi::noErr;
}

hostapi::OSErr GetInteger(hostapi::PIReadDescriptor, std::int32_t* value) {
    *value = Current().integer;
    return Result();
}

hostapi::OSErr GetFloat(hostapi::PIReadDescriptor, double* value) {
    *value = Current().number;
    return Result();
}

hostapi::OSErr GetBoolean(hostapi::PIReadDescriptor, hostapi::Boolean* value) {
    *value = Current().flag ? 1 : 0;
    return Result();
}

hostapi::PIWriteDescriptor OpenWrite() {
    ++host->writeOpens;
    return host->refuseWriting ? nullptr : host;
}

hostapi::OSErr CloseWrite(hostapi::PIWriteDescriptor token, hostapi::PIDescriptorHandle* result) {
    EXPECT_EQ(token, host);
    ++host->writeCloses;
    host->order.push_back('c');
    *result = host->recordedHandle;
    return host->closeResult;
}

hostapi::OSErr PutInteger(hostapi::PIWriteDescriptor, OSType key, std::int32_t value) {
    host->recorded.push_back(IntegerEntry(key, value));
    return 0;
}

hostapi::OSErr PutFloat(hostapi::PIWriteDescriptor, OSType key, const double* value) {
    host->recorded.push_back(FloatEntry(key, *value));
    return 0;
}

hostapi::OSErr PutBoolean(hostapi::PIWriteDescriptor, OSType key, hostapi::Boolean value) {
    host->recorded.push_back(BooleanEntry(key, value != 0));
    return 0;
}

hostapi::Handle NewHandle(std::int32_t) {
    return nullptr;
}
void DisposeHandle(hostapi::Handle handle) {
    host->disposed.push_back(handle);
    host->order.push_back('d');
    if (handle != host->recordedHandle) {
        std::free(handle);
    }
}
std::int32_t GetHandleSize(hostapi::Handle) {
    return 0;
}
hostapi::OSErr SetHandleSize(hostapi::Handle, std::int32_t) {
    return 0;
}

}  // namespace

FakeDescriptorHost::FakeDescriptorHost() {
    host = this;
    readers.numReadDescriptorProcs = 18;
    readers.openReadDescriptorProc = &OpenRead;
    readers.closeReadDescriptorProc = &CloseRead;
    readers.getKeyProc = &GetKey;
    readers.getIntegerProc = &GetInteger;
    readers.getFloatProc = &GetFloat;
    readers.getUnitFloatProc = [](auto...) { return hostapi::paramErr; };
    readers.getBooleanProc = &GetBoolean;
    readers.getTextProc = [](auto...) { return hostapi::paramErr; };
    readers.getAliasProc = [](auto...) { return hostapi::paramErr; };
    readers.getEnumeratedProc = [](auto...) { return hostapi::paramErr; };
    readers.getClassProc = [](auto...) { return hostapi::paramErr; };
    readers.getSimpleReferenceProc = [](auto...) { return hostapi::paramErr; };
    readers.getObjectProc = [](auto...) { return hostapi::paramErr; };
    readers.getCountProc = [](auto...) { return hostapi::paramErr; };
    readers.getStringProc = [](auto...) { return hostapi::paramErr; };
    readers.getPinnedIntegerProc = [](auto...) { return hostapi::paramErr; };
    readers.getPinnedFloatProc = [](auto...) { return hostapi::paramErr; };
    readers.getPinnedUnitFloatProc = [](auto...) { return hostapi::paramErr; };
    writers.numWriteDescriptorProcs = 16;
    writers.openWriteDescriptorProc = &OpenWrite;
    writers.closeWriteDescriptorProc = &CloseWrite;
    writers.putIntegerProc = &PutInteger;
    writers.putFloatProc = &PutFloat;
    writers.putBooleanProc = &PutBoolean;
    handles.handleProcsVersion = 1;
    handles.numHandleProcs = 8;
    handles.newProc = &NewHandle;
    handles.disposeProc = &DisposeHandle;
    handles.getSizeProc = &GetHandleSize;
    handles.setSizeProc = &SetHandleSize;
    descriptorParameters.recordInfo = hostapi::plugInDialogNone;
    descriptorParameters.readDescriptorProcs = &readers;
    descriptorParameters.writeDescriptorProcs = &writers;
    record.descriptorParameters = &descriptorParameters;
    record.handleProcs = &handles;
}

FakeDescriptorHost::~FakeDescriptorHost() {
    host = nullptr;
}

void FakeDescriptorHost::OfferDescriptor() {
    descriptorParameters.descriptor =
        static_cast<hostapi::Handle>(std::calloc(1, sizeof(hostapi::Ptr)));
}

}  // namespace mv::test
