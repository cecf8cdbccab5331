// Pages between two that fault: a byte read or written outside ends the process.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

#include "FuzzTarget.h"

namespace fuzzing {

// Kept for the length of the process, as setting pages up takes longer than a small render.
class GuardedPages {
public:
    static constexpr std::size_t kSize = 65536;

    GuardedPages() {
        const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        void* const whole =
            mmap(nullptr, kSize + 2 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        Require(whole != MAP_FAILED, "pages can be reserved");
        begin_ = static_cast<std::uint8_t*>(whole) + page;
        Require(mprotect(begin_, kSize, PROT_READ | PROT_WRITE) == 0, "pages can be used");
    }
    GuardedPages(const GuardedPages&) = delete;
    GuardedPages& operator=(const GuardedPages&) = delete;

    // So many bytes that touch the fault behind them, or the one in front.
    std::uint8_t* Place(std::size_t size, bool atFront) {
        Require(size <= kSize, "a picture fits into its pages");
        return atFront ? begin_ : begin_ + kSize - size;
    }

private:
    std::uint8_t* begin_ = nullptr;
};

}  // namespace fuzzing
