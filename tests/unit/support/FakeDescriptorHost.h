// A host with scripting, as the tests need it: it plays values, records values, and counts.
#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "hostapi/HostApi.h"

namespace mv::test {

struct DescriptorEntry {
    hostapi::OSType key = 0;
    hostapi::OSType type = hostapi::typeFloat;
    double number = 0.0;
    std::int32_t integer = 0;
    bool flag = false;
};

inline DescriptorEntry FloatEntry(hostapi::OSType key, double value) {
    return {key, hostapi::typeFloat, value, 0, false};
}
inline DescriptorEntry IntegerEntry(hostapi::OSType key, std::int32_t value) {
    return {key, hostapi::typeInteger, 0.0, value, false};
}
inline DescriptorEntry BooleanEntry(hostapi::OSType key, bool value) {
    return {key, hostapi::typeBoolean, 0.0, 0, value};
}

// One of these at a time: the procedures of the interface carry no context of their own.
class FakeDescriptorHost {
public:
    FakeDescriptorHost();
    ~FakeDescriptorHost();
    FakeDescriptorHost(const FakeDescriptorHost&) = delete;
    FakeDescriptorHost& operator=(const FakeDescriptorHost&) = delete;

    // A handle of the C library's allocator, as the descriptor that the host plays.
    void OfferDescriptor();

    // The host's side of the record; tests take parts of it away.
    hostapi::FilterRecord record{};
    hostapi::PIDescriptorParameters descriptorParameters{};
    hostapi::ReadDescriptorProcs readers{};
    hostapi::WriteDescriptorProcs writers{};
    hostapi::HandleProcs handles{};

    std::vector<DescriptorEntry> played;
    std::vector<DescriptorEntry> recorded;
    std::vector<hostapi::OSType> requestedKeys;
    std::vector<hostapi::Handle> disposed;
    bool endless = false;            // getKeyProc never says that it is done
    bool failingReaders = false;     // every get procedure fails, after writing rubbish
    bool refuseReading = false;      // openReadDescriptorProc gives no token
    bool refuseWriting = false;      // openWriteDescriptorProc gives no token
    hostapi::OSErr closeResult = 0;  // what closeWriteDescriptorProc gives back
    long keysYielded = 0;
    int opens = 0;
    int closes = 0;
    int writeOpens = 0;
    int writeCloses = 0;
    std::vector<char> order;  // 'd' for a disposed handle, 'c' for a closed write descriptor
    char* recordedData = nullptr;
    hostapi::Handle recordedHandle = &recordedData;
    std::size_t position = 0;
};

}  // namespace mv::test
