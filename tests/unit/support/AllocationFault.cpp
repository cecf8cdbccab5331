#include "support/AllocationFault.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> countdown{0};  // 0: no fault is armed
std::atomic<bool> drought{false};
std::atomic<long> live{0};

bool Refuse() noexcept {
    if (drought.load(std::memory_order_relaxed)) {
        return true;
    }
    return countdown.load(std::memory_order_relaxed) > 0 &&
           countdown.fetch_sub(1, std::memory_order_relaxed) == 1;
}

void* Take(std::size_t size) noexcept {
    void* block = Refuse() ? nullptr : std::malloc(size > 0 ? size : 1);
    live.fetch_add(block != nullptr ? 1 : 0, std::memory_order_relaxed);
    return block;
}

void Give(void* block) noexcept {
    live.fetch_sub(block != nullptr ? 1 : 0, std::memory_order_relaxed);
    std::free(block);
}

}  // namespace

void* operator new(std::size_t size) {
    void* block = Take(size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void* operator new[](std::size_t size) {
    return operator new(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Take(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return Take(size);
}
void operator delete(void* block) noexcept {
    Give(block);
}
void operator delete[](void* block) noexcept {
    Give(block);
}
void operator delete(void* block, std::size_t) noexcept {
    Give(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    Give(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
    Give(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
    Give(block);
}

namespace mv::test {

AllocationFault::AllocationFault(long which) {
    countdown.store(which);
}
AllocationFault::~AllocationFault() {
    countdown.store(0);
}
bool AllocationFault::Happened() const {
    return countdown.load() <= 0;
}

AllocationDrought::AllocationDrought() {
    drought.store(true);
}
AllocationDrought::~AllocationDrought() {
    drought.store(false);
}

long LiveAllocations() {
    return live.load();
}

}  // namespace mv::test
