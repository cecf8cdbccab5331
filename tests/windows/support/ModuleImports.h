#pragma once

#include <windows.h>

namespace mv::windowstest {

// From now on the module on disk that was loaded as `module` is told of so many processors, by an
// entry in its own table of imported functions. It ends with the module. False when the module
// does not ask the system for them by that function.
bool PretendProcessors(HMODULE module, unsigned count);

}  // namespace mv::windowstest
