#include "platform/Clock.h"

#include <chrono>

namespace mv {

std::uint32_t TickCount() noexcept {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
    return static_cast<std::uint32_t>(milliseconds);
}

std::int64_t PerformanceCounter() noexcept {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

std::int64_t PerformanceFrequency() noexcept {
    return 1000000000;
}

}  // namespace mv
