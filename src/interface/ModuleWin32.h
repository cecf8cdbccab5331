#pragma once

#include <windows.h>

namespace mv {

// The module that holds the dialogs, the icon and the cursor.
HINSTANCE GetDllInstance() noexcept;

}  // namespace mv
