#include "GuardedBytes.h"

#include <algorithm>
#include <new>

#include "HostMemory.h"

namespace endtoend {
namespace {

constexpr std::size_t kFront = 256;
constexpr std::uint8_t kFrontByte = 0xB9;

}  // namespace

GuardedBytes::GuardedBytes(std::size_t size) : size_(size) {
    const std::size_t page = mv::host::PageSize();
    wholeSize_ = (size + kFront + page - 1) / page * page;
    whole_ = static_cast<std::uint8_t*>(mv::host::ReserveGuardedPages(wholeSize_));
    if (whole_ == nullptr) {
        throw std::bad_alloc();
    }
    data_ = whole_ + wholeSize_ - size;
    std::fill(whole_, data_, kFrontByte);
}

GuardedBytes::~GuardedBytes() {
    mv::host::FreeGuardedPages(whole_, wholeSize_);
}

bool GuardedBytes::FrontIntact() const {
    return std::all_of(whole_, data_, [](std::uint8_t byte) { return byte == kFrontByte; });
}

}  // namespace endtoend
