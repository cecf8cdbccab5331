#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>

#include "HostMemory.h"

namespace mv::host {

std::size_t PageSize() noexcept {
    return static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

void* ReserveGuardedPages(std::size_t size) noexcept {
    const std::size_t page = PageSize();
    void* const pages =
        mmap(nullptr, size + page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED) {
        return nullptr;
    }
    if (mprotect(static_cast<char*>(pages) + size, page, PROT_NONE) != 0) {
        munmap(pages, size + page);
        return nullptr;
    }
    return pages;
}

void FreeGuardedPages(void* pages, std::size_t size) noexcept {
    munmap(pages, size + PageSize());
}

void* PlatformAllocate(std::size_t size) noexcept {
    return std::malloc(size);
}

}  // namespace mv::host
