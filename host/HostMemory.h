// Memory that the session hands to a module, plain or with a page behind it that faults.
#pragma once

#include <cstddef>
#include <cstdint>

namespace mv::host {

enum class Placement {
    Heap,       // from the C++ heap
    GuardPage,  // ends (within its alignment) at a page that faults when touched
};

// What fresh memory holds: a pattern, so that a module that reads what it never wrote does not
// find convenient zeros, or whatever the system gives, at no cost.
enum class FreshBytes { Pattern, Unset };

// One block of memory given to a module. It belongs to whoever holds the object; it has no lock.
// The bytes around the block carry a pattern: MarginsIntact() tells whether they were written to.
class HostBlock {
public:
    HostBlock() = default;
    HostBlock(const HostBlock&) = delete;
    HostBlock& operator=(const HostBlock&) = delete;
    HostBlock(HostBlock&& other) noexcept;
    HostBlock& operator=(HostBlock&& other) noexcept;
    ~HostBlock();

    // False when there is no memory; the block is empty then.
    bool Allocate(std::size_t size, Placement placement,
                  FreshBytes fresh = FreshBytes::Pattern) noexcept;
    void Free() noexcept;

    std::uint8_t* Data() const { return data_; }
    std::size_t Size() const { return size_; }
    bool MarginsIntact() const noexcept;

private:
    std::uint8_t* whole_ = nullptr;
    std::size_t wholeSize_ = 0;
    std::uint8_t* data_ = nullptr;
    std::size_t size_ = 0;
    Placement placement_ = Placement::Heap;
};

// Platform part: `size` writable bytes (a multiple of PageSize()) with a faulting page behind.
std::size_t PageSize() noexcept;
void* ReserveGuardedPages(std::size_t size) noexcept;
void FreeGuardedPages(void* pages, std::size_t size) noexcept;

// Blocks that a module frees by itself, with the platform's allocator, when a host offers it no
// handle procedures: GlobalAlloc on Windows, malloc elsewhere.
void* PlatformAllocate(std::size_t size) noexcept;

}  // namespace mv::host
