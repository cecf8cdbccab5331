#pragma once

#include <cstdint>

namespace mv {

// Milliseconds since some moment before the process began, wrapping after 49.7 days: only
// differences in unsigned arithmetic mean anything.
std::uint32_t TickCount() noexcept;

// A fine monotonic clock for measurements, and its ticks per second.
std::int64_t PerformanceCounter() noexcept;
std::int64_t PerformanceFrequency() noexcept;

}  // namespace mv
