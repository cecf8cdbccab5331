#pragma once

namespace mv {

// Logical processors that this process may run on, at least 1.
int LogicalProcessorCount() noexcept;

}  // namespace mv
