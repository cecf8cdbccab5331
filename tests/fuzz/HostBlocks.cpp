#include "HostBlocks.h"

#include <algorithm>
#include <cstring>

#include "FuzzTarget.h"

#if defined(__SANITIZE_ADDRESS__)
#define FUZZ_ADDRESS_SANITIZER
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define FUZZ_ADDRESS_SANITIZER
#endif
#endif

#ifdef FUZZ_ADDRESS_SANITIZER
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(address, size) ((void)(address), (void)(size))
#define ASAN_UNPOISON_MEMORY_REGION(address, size) ((void)(address), (void)(size))
#endif

namespace fuzzing {
namespace {

constexpr std::size_t kArenaSize = std::size_t{4} << 20;
constexpr std::size_t kGap = 64;
constexpr std::size_t kAlignment = 16;
constexpr std::size_t kSpoilt = 8192;

}  // namespace

HostBlocks::HostBlocks() : arena_(static_cast<char*>(std::malloc(kArenaSize))), next_(arena_) {
    Require(arena_ != nullptr, "there is memory for the arena");
    ASAN_POISON_MEMORY_REGION(arena_, kArenaSize);
}

char* HostBlocks::New(std::uint32_t size) {
    const std::size_t taken = (size + kAlignment - 1) / kAlignment * kAlignment + kGap;
    const auto used = static_cast<std::size_t>(next_ - arena_);
    if (count_ == kMostBlocks || used + kGap + taken > kArenaSize) {
        return nullptr;
    }
    char* const begin = next_ + kGap;
    next_ += taken;
    ASAN_UNPOISON_MEMORY_REGION(begin, size);
    std::memset(begin, 0xFF, std::min<std::size_t>(size, kSpoilt));
    blocks_[count_++] = {begin, size, true};
    ++live_;
    return begin;
}

void HostBlocks::Dispose(char* block) {
    Block* const found = std::find_if(blocks_, blocks_ + count_, [block](const Block& known) {
        return known.begin == block && known.isLive;
    });
    Require(found != blocks_ + count_, "only live blocks are given back");
    found->isLive = false;
    ASAN_POISON_MEMORY_REGION(found->begin, found->size);
    --live_;
}

void HostBlocks::Restart() {
    Require(live_ == 0, "every block is given back");
    next_ = arena_;
    count_ = 0;
}

}  // namespace fuzzing
