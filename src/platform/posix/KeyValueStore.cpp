#include "platform/KeyValueStore.h"

namespace mv {

// Without windows there is nothing to remember between runs: every opening fails, and the
// callers go on with their defaults.
std::unique_ptr<KeyValueStore> OpenKeyValueStore(const char*) noexcept {
    return nullptr;
}

std::unique_ptr<KeyValueStore> CreateKeyValueStore(const char*) noexcept {
    return nullptr;
}

}  // namespace mv
