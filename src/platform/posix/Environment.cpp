#include "platform/Environment.h"

#include <cstdlib>

namespace mv {

bool ReadEnvironment(const char* name, std::string& value) {
    const char* found = std::getenv(name);
    if (found == nullptr) {
        return false;
    }
    value = found;
    return true;
}

}  // namespace mv
