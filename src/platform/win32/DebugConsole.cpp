#include "platform/DebugConsole.h"

#include <windows.h>

namespace mv {

namespace {

constexpr COORD kBufferSize = {200, 5000};

}  // namespace

void DebugConsole::Open() noexcept {
    ::AllocConsole();
    ::SetConsoleTitleA("Debug Window");
    const HANDLE output = ::GetStdHandle(STD_OUTPUT_HANDLE);
    handle_ = output;
    ::SetConsoleScreenBufferSize(output, kBufferSize);
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (::GetConsoleScreenBufferInfo(output, &info) == 0) {
        return;
    }
    SMALL_RECT window = info.srWindow;
    window.Right = static_cast<SHORT>(info.dwMaximumWindowSize.X - 1 + window.Left);
    window.Bottom = static_cast<SHORT>(2 * window.Bottom - window.Top);
    ::SetConsoleWindowInfo(output, TRUE, &window);
}

void DebugConsole::Close() noexcept {
    if (handle_ != nullptr) {
        ::FreeConsole();
        handle_ = nullptr;
    }
}

void DebugConsole::Write(const char* text, std::size_t length) noexcept {
    DWORD written = 0;
    ::WriteConsoleA(handle_, text, static_cast<DWORD>(length), &written, nullptr);
}

}  // namespace mv
