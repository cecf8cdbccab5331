#include "platform/Random.h"

#include <atomic>

namespace mv {

namespace {

// Atomic only so that no use can be a data race; the order of values is defined for one thread.
std::atomic<std::uint32_t> state{1};

}  // namespace

void SeedRandom(std::uint32_t seed) noexcept {
    state.store(seed, std::memory_order_relaxed);
}

int NextRandom() noexcept {
    const std::uint32_t next = state.load(std::memory_order_relaxed) * 214013u + 2531011u;
    state.store(next, std::memory_order_relaxed);
    return static_cast<int>((next >> 16) & 0x7fffu);
}

}  // namespace mv
