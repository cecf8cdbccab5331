#include "DialogCloser.h"

#ifdef _WIN32
#include <windows.h>

#include <atomic>
#include <cstring>
#include <thread>
#endif

namespace endtoend {

#ifdef _WIN32

namespace {

BOOL CALLBACK PressOk(HWND window, LPARAM) {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    char name[32] = {};
    GetClassNameA(window, name, sizeof name);
    if (process == GetCurrentProcessId() && std::strcmp(name, "#32770") == 0) {
        PostMessageA(window, WM_COMMAND, IDOK, 0);
        PostMessageA(window, WM_CLOSE, 0, 0);
    }
    return TRUE;
}

}  // namespace

struct DialogCloser::Watch {
    std::atomic<bool> stop{false};
    std::thread thread{[this] {
        while (!stop) {
            EnumWindows(PressOk, 0);
            Sleep(20);
        }
    }};
};

DialogCloser::DialogCloser() : watch_(std::make_unique<Watch>()) {}

DialogCloser::~DialogCloser() {
    watch_->stop = true;
    watch_->thread.join();
}

#else

struct DialogCloser::Watch {};

DialogCloser::DialogCloser() = default;
DialogCloser::~DialogCloser() = default;

#endif

}  // namespace endtoend
