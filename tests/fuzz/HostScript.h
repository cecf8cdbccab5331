// A host's script descriptor for one fuzz input: a good one that plays any values.
#pragma once

#include <vector>

#include "FuzzInput.h"
#include "hostapi/HostApi.h"

namespace fuzzing {

// One at a time: the procedures carry no pointer of ours. Owned by the input that runs.
class HostScript {
public:
    HostScript();
    ~HostScript();
    HostScript(const HostScript&) = delete;
    HostScript& operator=(const HostScript&) = delete;

    // Every parameter's default, and what the input adds to them.
    void Play(FuzzInput& input, int most);
    // A new descriptor for the module to open and dispose.
    void Renew();
    hostapi::PIDescriptorParameters& Block() { return block_; }
    // The recorded descriptor is the host's.
    void Drop();
    int OpenTokens() const { return openTokens_; }

private:
    struct Entry {
        hostapi::OSType key = 0;
        double value = 0.0;
    };

    static hostapi::PIReadDescriptor OpenRead(hostapi::Handle handle, hostapi::OSType* keys);
    static hostapi::OSErr CloseRead(hostapi::PIReadDescriptor token);
    static hostapi::Boolean GetKey(hostapi::PIReadDescriptor token, hostapi::OSType* key,
                                   hostapi::OSType* type, std::int32_t* flags);
    static hostapi::OSErr GetInteger(hostapi::PIReadDescriptor token, std::int32_t* value);
    static hostapi::OSErr GetFloat(hostapi::PIReadDescriptor token, double* value);
    static hostapi::OSErr GetBoolean(hostapi::PIReadDescriptor token, hostapi::Boolean* value);
    static hostapi::PIWriteDescriptor OpenWrite();
    static hostapi::OSErr CloseWrite(hostapi::PIWriteDescriptor token, hostapi::Handle* handle);
    static hostapi::OSErr PutInteger(hostapi::PIWriteDescriptor token, hostapi::OSType key,
                                     std::int32_t value);
    static hostapi::OSErr PutFloat(hostapi::PIWriteDescriptor token, hostapi::OSType key,
                                   const double* value);
    static hostapi::OSErr PutBoolean(hostapi::PIWriteDescriptor token, hostapi::OSType key,
                                     hostapi::Boolean value);

    std::vector<Entry> entries_;
    std::size_t next_ = 0;
    int openTokens_ = 0;
    hostapi::ReadDescriptorProcs reads_{};
    hostapi::WriteDescriptorProcs writes_{};
    hostapi::PIDescriptorParameters block_{};
};

}  // namespace fuzzing
