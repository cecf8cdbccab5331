#pragma once

#include <cstddef>

namespace mv {

// Asks the system to back the whole large pages inside a block with such; a wish, which no system
// need grant. Blocks walked column by column gain from it.
void PreferLargePages(void* block, std::size_t bytes) noexcept;

}  // namespace mv
