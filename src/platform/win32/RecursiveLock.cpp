#include "platform/RecursiveLock.h"

#include <windows.h>

namespace mv {

namespace {

CRITICAL_SECTION* Section(unsigned char* room) noexcept {
    return reinterpret_cast<CRITICAL_SECTION*>(room);
}

}  // namespace

RecursiveLock::RecursiveLock() noexcept {
    static_assert(sizeof(section_) >= sizeof(CRITICAL_SECTION));
    static_assert(alignof(CRITICAL_SECTION) <= alignof(void*));
    ::InitializeCriticalSection(Section(section_));
}

RecursiveLock::~RecursiveLock() {
    ::DeleteCriticalSection(Section(section_));
}

void RecursiveLock::lock() noexcept {
    ::EnterCriticalSection(Section(section_));
}

void RecursiveLock::unlock() noexcept {
    ::LeaveCriticalSection(Section(section_));
}

}  // namespace mv
