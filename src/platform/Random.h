#pragma once

#include <cstdint>

namespace mv {

// The generator of the Windows runtime library, written out so that a seed gives the same values
// on every system. One state for the whole module, 1 until it is seeded.
void SeedRandom(std::uint32_t seed) noexcept;

// 0 to 32767.
int NextRandom() noexcept;

}  // namespace mv
