#include "platform/Processors.h"

#include <windows.h>

#include <algorithm>

namespace mv {

int LogicalProcessorCount() noexcept {
    SYSTEM_INFO info{};
    ::GetSystemInfo(&info);
    return std::max(1, static_cast<int>(info.dwNumberOfProcessors));
}

}  // namespace mv
