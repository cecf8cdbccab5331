#include <algorithm>
#include <limits>

#include "HostStores.h"

namespace mv::host {

BufferStore::BufferStore(const HostOffer& offer, const HostFaults& faults, Complaints& complaints)
    : offer_(offer), faults_(faults), complaints_(complaints) {}

// A request above the minimum is tried as it stands and then given the minimum; no sizes between
// are tried.
hostapi::Ptr BufferStore::New(std::uint32_t* requestedSize, std::uint32_t minimumSize) {
    ++asked_;
    const bool planned =
        faults_.failBufferAt > 0 && (asked_ == faults_.failBufferAt ||
                                     (faults_.failBuffersAfter && asked_ > faults_.failBufferAt));
    if (planned) {
        return nullptr;
    }
    const auto allocate = [this](std::uint32_t size) -> hostapi::Ptr {
        if (liveBytes_ + size > faults_.bufferBytesLimit) {
            return nullptr;
        }
        HostBlock block;
        if (!block.Allocate(size, offer_.placement, offer_.freshBytes)) {
            return nullptr;
        }
        const auto address = reinterpret_cast<hostapi::Ptr>(block.Data());
        blocks_.emplace(address, std::move(block));
        liveBytes_ += size;
        peakBytes_ = std::max(peakBytes_, liveBytes_);
        return address;
    };
    if (requestedSize != nullptr && *requestedSize > minimumSize) {
        if (const hostapi::Ptr address = allocate(*requestedSize); address != nullptr) {
            return address;
        }
        *requestedSize = minimumSize;
    }
    return allocate(minimumSize);
}

void BufferStore::Dispose(hostapi::Ptr* buffer) {
    if (buffer == nullptr || *buffer == nullptr) {
        return;
    }
    const auto found = blocks_.find(*buffer);
    if (found == blocks_.end()) {
        complaints_.emplace_back("a buffer was disposed that the host does not have");
    } else {
        if (!found->second.MarginsIntact()) {
            complaints_.emplace_back("memory around a buffer was written to");
        }
        liveBytes_ -= found->second.Size();
        blocks_.erase(found);
    }
    *buffer = nullptr;
}

std::uint32_t BufferStore::GetSize(hostapi::Ptr buffer) const {
    const auto found = blocks_.find(buffer);
    return found == blocks_.end() ? 0 : static_cast<std::uint32_t>(found->second.Size());
}

std::uint32_t BufferStore::GetSpace() const {
    const std::uint64_t left =
        faults_.bufferBytesLimit > liveBytes_ ? faults_.bufferBytesLimit - liveBytes_ : 0;
    return static_cast<std::uint32_t>(
        std::min<std::uint64_t>(left, std::numeric_limits<std::uint32_t>::max()));
}

}  // namespace mv::host
