#include <algorithm>
#include <cstring>
#include <utility>

#include "HostStores.h"

namespace mv::host {

HandleStore::HandleStore(const HostFaults& faults, Complaints& complaints)
    : faults_(faults), complaints_(complaints) {}

HandleStore::Cell* HandleStore::Find(hostapi::Handle handle) const {
    const auto found = cells_.find(handle);
    return found == cells_.end() ? nullptr : found->second.get();
}

hostapi::Handle HandleStore::New(std::int32_t size) {
    ++made_;
    if (size < 0 || made_ == faults_.failHandleAt) {
        return nullptr;
    }
    auto cell = std::make_unique<Cell>();
    if (!cell->block.Allocate(static_cast<std::size_t>(size), Placement::Heap)) {
        return nullptr;
    }
    std::fill_n(cell->block.Data(), cell->block.Size(), std::uint8_t{0});
    cell->data = reinterpret_cast<hostapi::Ptr>(cell->block.Data());
    const hostapi::Handle handle = &cell->data;
    cells_.emplace(handle, std::move(cell));
    return handle;
}

bool HandleStore::Dispose(hostapi::Handle handle) {
    if (handle == nullptr) {
        return true;
    }
    const Cell* const cell = Find(handle);
    if (cell == nullptr) {
        complaints_.emplace_back("a handle was disposed that the host does not have");
        return false;
    }
    if (!cell->block.MarginsIntact()) {
        complaints_.emplace_back("memory around a handle's block was written to");
    }
    cells_.erase(handle);
    return true;
}

std::int32_t HandleStore::GetSize(hostapi::Handle handle) const {
    const Cell* const cell = Find(handle);
    return cell == nullptr ? 0 : static_cast<std::int32_t>(cell->block.Size());
}

hostapi::OSErr HandleStore::SetSize(hostapi::Handle handle, std::int32_t newSize) {
    Cell* const cell = Find(handle);
    if (cell == nullptr || newSize < 0) {
        complaints_.emplace_back("a handle was resized that the host does not have");
        return hostapi::paramErr;
    }
    HostBlock larger;
    if (!larger.Allocate(static_cast<std::size_t>(newSize), Placement::Heap)) {
        return hostapi::memFullErr;
    }
    std::fill_n(larger.Data(), larger.Size(), std::uint8_t{0});
    std::memcpy(larger.Data(), cell->block.Data(), std::min(larger.Size(), cell->block.Size()));
    cell->block = std::move(larger);
    cell->data = reinterpret_cast<hostapi::Ptr>(cell->block.Data());
    return hostapi::noErr;
}

hostapi::Ptr HandleStore::SetLock(hostapi::Handle handle, bool lock, bool* oldLock) {
    Cell* const cell = Find(handle);
    if (cell == nullptr) {
        complaints_.emplace_back("a handle was locked that the host does not have");
        return nullptr;
    }
    if (oldLock != nullptr) {
        *oldLock = cell->locked;
    }
    cell->locked = lock;
    return cell->data;
}

}  // namespace mv::host
