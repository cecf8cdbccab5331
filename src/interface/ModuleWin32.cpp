#include "interface/ModuleWin32.h"

namespace {

HINSTANCE dllInstance = nullptr;

}  // namespace

namespace mv {

HINSTANCE GetDllInstance() noexcept {
    return dllInstance;
}

}  // namespace mv

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        dllInstance = instance;
    }
    return TRUE;
}
