#include "platform/Environment.h"

#include <windows.h>

namespace mv {

// The process's own block is asked: the runtime library keeps a copy, which the changes of another
// library do not reach.
bool ReadEnvironment(const char* name, std::string& value) {
    std::string text(128, '\0');
    for (;;) {
        ::SetLastError(ERROR_SUCCESS);
        const DWORD room = static_cast<DWORD>(text.size());
        const DWORD length = ::GetEnvironmentVariableA(name, text.data(), room);
        if (length == 0 && ::GetLastError() != ERROR_SUCCESS) {
            return false;
        }
        // Without enough room the length is that of the room to be had, end mark included.
        text.resize(length);
        if (length < room) {
            break;
        }
    }
    value.swap(text);
    return true;
}

}  // namespace mv
