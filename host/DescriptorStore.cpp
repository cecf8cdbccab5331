#include <utility>

#include "HostStores.h"

namespace mv::host {

DescriptorStore::DescriptorStore(const HostFaults& faults, Complaints& complaints)
    : faults_(faults), complaints_(complaints) {}

void DescriptorStore::Keep(hostapi::Handle handle, ScriptValues values) {
    kept_.insert_or_assign(handle, std::move(values));
}

void DescriptorStore::Forget(hostapi::Handle handle) {
    kept_.erase(handle);
}

const ScriptValues* DescriptorStore::Find(hostapi::Handle handle) const {
    const auto found = kept_.find(handle);
    return found == kept_.end() ? nullptr : &found->second;
}

hostapi::PIReadDescriptor DescriptorStore::OpenRead(hostapi::Handle handle, hostapi::OSType* keys) {
    if (handle == nullptr || faults_.failOpenRead) {
        return nullptr;
    }
    const ScriptValues* const values = Find(handle);
    if (values == nullptr) {
        complaints_.emplace_back("a descriptor was opened that the host does not have");
        return nullptr;
    }
    auto reader = std::make_unique<Reader>();
    reader->values = *values;
    reader->keys = keys;
    void* const token = reader.get();
    readers_.emplace(token, std::move(reader));
    return token;
}

hostapi::OSErr DescriptorStore::CloseRead(hostapi::PIReadDescriptor token) {
    const auto found = readers_.find(token);
    if (found == readers_.end()) {
        complaints_.emplace_back("a read descriptor was closed that is not open");
        return hostapi::paramErr;
    }
    const hostapi::OSErr sticky = found->second->sticky;
    readers_.erase(found);
    return sticky;
}

bool DescriptorStore::GetKey(hostapi::PIReadDescriptor token, hostapi::OSType* key,
                             hostapi::OSType* type, std::int32_t* flags) {
    const auto found = readers_.find(token);
    if (found == readers_.end()) {
        complaints_.emplace_back("a key was read from a descriptor that is not open");
        return false;
    }
    Reader& reader = *found->second;
    if (reader.next >= reader.values.size()) {
        return false;
    }
    const ScriptEntry& entry = reader.values[reader.next++];
    // A key that stays in the plug-in's list is one that was missing.
    for (hostapi::OSType* wanted = reader.keys; wanted != nullptr && *wanted != 0; ++wanted) {
        if (*wanted == entry.key) {
            *wanted = hostapi::typeNull;
        }
    }
    *key = entry.key;
    *type = TypeOf(entry.value);
    *flags = 0;
    return true;
}

const ScriptValue* DescriptorStore::Current(hostapi::PIReadDescriptor token, hostapi::OSType type,
                                            hostapi::OSErr& error) {
    const auto found = readers_.find(token);
    if (found == readers_.end() || found->second->next == 0) {
        complaints_.emplace_back("a value was read from a descriptor before its key");
        error = hostapi::paramErr;
        return nullptr;
    }
    Reader& reader = *found->second;
    const ScriptEntry& entry = reader.values[reader.next - 1];
    if (faults_.failingGets.contains(entry.key)) {
        error = hostapi::errMissingParameter;
    } else if (TypeOf(entry.value) != type) {
        error = hostapi::paramErr;
    } else {
        error = hostapi::noErr;
        return &entry.value;
    }
    reader.sticky = error;
    return nullptr;
}

hostapi::PIWriteDescriptor DescriptorStore::OpenWrite() {
    if (faults_.failOpenWrite) {
        return nullptr;
    }
    auto writer = std::make_unique<Writer>();
    void* const token = writer.get();
    writers_.emplace(token, std::move(writer));
    return token;
}

hostapi::OSErr DescriptorStore::Put(hostapi::PIWriteDescriptor token, hostapi::OSType key,
                                    const ScriptValue& value) {
    const auto found = writers_.find(token);
    if (found == writers_.end()) {
        complaints_.emplace_back("a value was put into a descriptor that is not open");
        return hostapi::paramErr;
    }
    if (faults_.failingPuts.contains(key)) {
        return hostapi::memFullErr;
    }
    allPuts_.push_back({key, value});
    SetValue(found->second->values, key, value);
    return hostapi::noErr;
}

bool DescriptorStore::CloseWrite(hostapi::PIWriteDescriptor token, ScriptValues& values) {
    const auto found = writers_.find(token);
    if (found == writers_.end()) {
        complaints_.emplace_back("a write descriptor was closed that is not open");
        return false;
    }
    values = std::move(found->second->values);
    writers_.erase(found);
    return true;
}

}  // namespace mv::host
