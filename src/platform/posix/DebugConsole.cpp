#include "platform/DebugConsole.h"

namespace mv {

void DebugConsole::Open() noexcept {}
void DebugConsole::Close() noexcept {}
void DebugConsole::Write(const char*, std::size_t) noexcept {}

}  // namespace mv
