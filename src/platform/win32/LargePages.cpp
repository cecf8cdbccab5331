#include "platform/LargePages.h"

namespace mv {

// Large pages need a privilege there that a host's user does not have.
void PreferLargePages(void*, std::size_t) noexcept {}

}  // namespace mv
