// What a session keeps on a module's behalf: handles, Buffer suite blocks, script descriptors.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "HostMemory.h"
#include "HostOffer.h"
#include "ScriptValues.h"
#include "hostapi/HostApi.h"

namespace mv::host {

// Breaches of the interface's contract by the module, one sentence each. Owned by the session.
using Complaints = std::vector<std::string>;

// The handles of one session. Owned by it and reached only under its lock.
class HandleStore {
public:
    HandleStore(const HostFaults& faults, Complaints& complaints);

    hostapi::Handle New(std::int32_t size);
    bool Owns(hostapi::Handle handle) const { return cells_.contains(handle); }
    // False for a handle that is not ours; a null handle is accepted and ignored.
    bool Dispose(hostapi::Handle handle);
    std::int32_t GetSize(hostapi::Handle handle) const;
    hostapi::OSErr SetSize(hostapi::Handle handle, std::int32_t newSize);
    hostapi::Ptr SetLock(hostapi::Handle handle, bool lock, bool* oldLock);

    int Made() const { return made_; }
    int Live() const { return static_cast<int>(cells_.size()); }

private:
    struct Cell {
        hostapi::Ptr data = nullptr;  // first: a handle is the address of this pointer
        HostBlock block;
        bool locked = false;
    };

    Cell* Find(hostapi::Handle handle) const;

    const HostFaults& faults_;
    Complaints& complaints_;
    std::map<hostapi::Handle, std::unique_ptr<Cell>> cells_;
    int made_ = 0;
};

// The blocks of one session's Buffer suite. Owned by it and reached only under its lock.
class BufferStore {
public:
    BufferStore(const HostOffer& offer, const HostFaults& faults, Complaints& complaints);

    hostapi::Ptr New(std::uint32_t* requestedSize, std::uint32_t minimumSize);
    void Dispose(hostapi::Ptr* buffer);
    std::uint32_t GetSize(hostapi::Ptr buffer) const;
    std::uint32_t GetSpace() const;

    int Asked() const { return asked_; }
    int Live() const { return static_cast<int>(blocks_.size()); }
    std::uint64_t LiveBytes() const { return liveBytes_; }
    std::uint64_t PeakBytes() const { return peakBytes_; }

private:
    const HostOffer& offer_;
    const HostFaults& faults_;
    Complaints& complaints_;
    std::map<hostapi::Ptr, HostBlock> blocks_;
    int asked_ = 0;
    std::uint64_t liveBytes_ = 0;
    std::uint64_t peakBytes_ = 0;
};

// The script descriptors of one session, kept under their handles' addresses; the handles
// themselves are empty. Owned by the session and reached only under its lock.
class DescriptorStore {
public:
    DescriptorStore(const HostFaults& faults, Complaints& complaints);

    void Keep(hostapi::Handle handle, ScriptValues values);
    void Forget(hostapi::Handle handle);
    const ScriptValues* Find(hostapi::Handle handle) const;

    hostapi::PIReadDescriptor OpenRead(hostapi::Handle handle, hostapi::OSType* keys);
    hostapi::OSErr CloseRead(hostapi::PIReadDescriptor token);
    bool GetKey(hostapi::PIReadDescriptor token, hostapi::OSType* key, hostapi::OSType* type,
                std::int32_t* flags);
    // The value that GetKey came to last, or null with the error to answer with.
    const ScriptValue* Current(hostapi::PIReadDescriptor token, hostapi::OSType type,
                               hostapi::OSErr& error);

    hostapi::PIWriteDescriptor OpenWrite();
    hostapi::OSErr Put(hostapi::PIWriteDescriptor token, hostapi::OSType key,
                       const ScriptValue& value);
    // The values put, and the token is gone; false for an unknown token.
    bool CloseWrite(hostapi::PIWriteDescriptor token, ScriptValues& values);

    int OpenTokens() const { return static_cast<int>(readers_.size() + writers_.size()); }
    // Every put of the session in order, repeated keys too.
    const ScriptValues& AllPuts() const { return allPuts_; }

private:
    struct Reader {
        ScriptValues values;
        std::size_t next = 0;
        hostapi::OSType* keys = nullptr;
        hostapi::OSErr sticky = hostapi::noErr;
    };
    struct Writer {
        ScriptValues values;
    };

    const HostFaults& faults_;
    Complaints& complaints_;
    std::map<hostapi::Handle, ScriptValues> kept_;
    std::map<void*, std::unique_ptr<Reader>> readers_;
    std::map<void*, std::unique_ptr<Writer>> writers_;
    ScriptValues allPuts_;
};

}  // namespace mv::host
