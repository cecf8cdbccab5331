#include "HostMemory.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace mv::host {
namespace {

constexpr std::size_t kAlignment = 16;
constexpr std::size_t kMargin = 64;
constexpr std::uint8_t kMarginByte = 0xC7;
constexpr std::uint8_t kFreshByte = 0xD3;

bool AllBytesAre(const std::uint8_t* first, const std::uint8_t* last, std::uint8_t value) {
    return std::all_of(first, last, [value](std::uint8_t byte) { return byte == value; });
}

}  // namespace

HostBlock::HostBlock(HostBlock&& other) noexcept {
    *this = std::move(other);
}

HostBlock& HostBlock::operator=(HostBlock&& other) noexcept {
    if (this != &other) {
        Free();
        whole_ = std::exchange(other.whole_, nullptr);
        wholeSize_ = std::exchange(other.wholeSize_, 0);
        data_ = std::exchange(other.data_, nullptr);
        size_ = std::exchange(other.size_, 0);
        placement_ = other.placement_;
    }
    return *this;
}

HostBlock::~HostBlock() {
    Free();
}

bool HostBlock::Allocate(std::size_t size, Placement placement, FreshBytes fresh) noexcept {
    Free();
    const std::size_t rounded = (size + kAlignment - 1) / kAlignment * kAlignment;
    if (rounded < size || rounded > SIZE_MAX / 2) {
        return false;
    }
    if (placement == Placement::GuardPage) {
        const std::size_t page = PageSize();
        const std::size_t wholeSize = (rounded + kMargin + page - 1) / page * page;
        void* const pages = ReserveGuardedPages(wholeSize);
        if (pages == nullptr) {
            return false;
        }
        whole_ = static_cast<std::uint8_t*>(pages);
        wholeSize_ = wholeSize;
        data_ = whole_ + wholeSize - rounded;
    } else {
        const std::size_t wholeSize = rounded + 2 * kMargin;
        void* const memory = ::operator new (wholeSize, std::align_val_t{kMargin}, std::nothrow);
        if (memory == nullptr) {
            return false;
        }
        whole_ = static_cast<std::uint8_t*>(memory);
        wholeSize_ = wholeSize;
        data_ = whole_ + kMargin;
    }
    size_ = size;
    placement_ = placement;
    std::fill(whole_, data_, kMarginByte);
    if (fresh == FreshBytes::Pattern) {
        std::fill(data_, data_ + size_, kFreshByte);
    }
    std::fill(data_ + size_, whole_ + wholeSize_, kMarginByte);
    return true;
}

void HostBlock::Free() noexcept {
    if (whole_ != nullptr) {
        if (placement_ == Placement::GuardPage) {
            FreeGuardedPages(whole_, wholeSize_);
        } else {
            ::operator delete (whole_, std::align_val_t{kMargin});
        }
    }
    whole_ = nullptr;
    data_ = nullptr;
    wholeSize_ = 0;
    size_ = 0;
}

bool HostBlock::MarginsIntact() const noexcept {
    return whole_ == nullptr || (AllBytesAre(whole_, data_, kMarginByte) &&
                                 AllBytesAre(data_ + size_, whole_ + wholeSize_, kMarginByte));
}

}  // namespace mv::host
