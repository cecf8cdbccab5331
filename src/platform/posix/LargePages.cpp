#include "platform/LargePages.h"

#include <sys/mman.h>

#include <cstdint>

namespace mv {

void PreferLargePages(void* block, std::size_t bytes) noexcept {
#if defined(MADV_HUGEPAGE)
    constexpr std::uintptr_t kLargePage = std::uintptr_t{1} << 21;
    const auto first = reinterpret_cast<std::uintptr_t>(block);
    const std::uintptr_t begin = (first + kLargePage - 1) & ~(kLargePage - 1);
    const std::uintptr_t end = (first + bytes) & ~(kLargePage - 1);
    if (begin < end) {
        static_cast<void>(madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE));
    }
#else
    static_cast<void>(block);
    static_cast<void>(bytes);
#endif
}

}  // namespace mv
