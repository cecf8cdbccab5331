#include "platform/Clock.h"

#include <windows.h>

namespace mv {

std::uint32_t TickCount() noexcept {
    return ::GetTickCount();
}

std::int64_t PerformanceCounter() noexcept {
    LARGE_INTEGER value{};
    ::QueryPerformanceCounter(&value);
    return value.QuadPart;
}

std::int64_t PerformanceFrequency() noexcept {
    LARGE_INTEGER value{};
    ::QueryPerformanceFrequency(&value);
    return value.QuadPart;
}

}  // namespace mv
