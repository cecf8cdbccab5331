#pragma once

#ifndef _WIN32
#include <mutex>
#endif

namespace mv {

// A lock that its owner may take again: a critical section on Windows, a recursive mutex elsewhere.
// The names are those that std::lock_guard asks for. Usable from any thread.
class RecursiveLock {
public:
    RecursiveLock() noexcept;
    ~RecursiveLock();
    RecursiveLock(const RecursiveLock&) = delete;
    RecursiveLock& operator=(const RecursiveLock&) = delete;

    void lock() noexcept;
    void unlock() noexcept;

private:
#ifdef _WIN32
    // Room for a CRITICAL_SECTION; the body asserts that it fits.
    alignas(void*) unsigned char section_[40];
#else
    std::recursive_mutex mutex_;
#endif
};

}  // namespace mv
