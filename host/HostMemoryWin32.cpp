#include <windows.h>

#include "HostMemory.h"

namespace mv::host {

std::size_t PageSize() noexcept {
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    return info.dwPageSize;
}

void* ReserveGuardedPages(std::size_t size) noexcept {
    const std::size_t page = PageSize();
    void* const pages = VirtualAlloc(nullptr, size + page, MEM_RESERVE, PAGE_NOACCESS);
    if (pages == nullptr) {
        return nullptr;
    }
    if (VirtualAlloc(pages, size, MEM_COMMIT, PAGE_READWRITE) == nullptr) {
        VirtualFree(pages, 0, MEM_RELEASE);
        return nullptr;
    }
    return pages;
}

void FreeGuardedPages(void* pages, std::size_t) noexcept {
    VirtualFree(pages, 0, MEM_RELEASE);
}

void* PlatformAllocate(std::size_t size) noexcept {
    return GlobalAlloc(GMEM_FIXED, size);
}

}  // namespace mv::host
