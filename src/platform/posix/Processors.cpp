#include "platform/Processors.h"

#include <sched.h>
#include <unistd.h>

#include <algorithm>

namespace mv {

int LogicalProcessorCount() noexcept {
    // The set that the process was confined to, which may be smaller than the machine.
    cpu_set_t set;
    CPU_ZERO(&set);
    if (sched_getaffinity(0, sizeof set, &set) == 0) {
        return std::max(1, CPU_COUNT(&set));
    }
    return static_cast<int>(std::clamp(sysconf(_SC_NPROCESSORS_ONLN), 1L, 65536L));
}

}  // namespace mv
