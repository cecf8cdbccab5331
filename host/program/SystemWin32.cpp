#include <windows.h>
// Behind windows.h, on which it depends.
#include <psapi.h>

#include <atomic>

#include "program/System.h"

namespace mv::host {
namespace {

std::atomic<bool> interrupted{false};

constexpr DWORD kPatience = 30000;  // ms; the system itself loses patience before

// Runs on a thread of its own; true keeps the system from ending the process. Behind a closed
// window it does that as soon as this function returns, and so that waits for the run to stop.
BOOL WINAPI NoteEvent(DWORD event) {
    interrupted.store(true);
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
        Sleep(kPatience);
    }
    return TRUE;
}

}  // namespace

void CatchInterrupts() {
    SetConsoleCtrlHandler(NoteEvent, TRUE);
}

bool Interrupted() {
    return interrupted.load();
}

// Only a console has a mode.
bool StandardErrorIsTerminal() {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

std::uint64_t PeakMemoryBytes() {
    PROCESS_MEMORY_COUNTERS counters{};
    counters.cb = sizeof counters;
    if (K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters) == 0) {
        return 0;
    }
    return counters.PeakWorkingSetSize;
}

Utf8Console::Utf8Console() : before_(GetConsoleOutputCP()) {
    SetConsoleOutputCP(CP_UTF8);
}

Utf8Console::~Utf8Console() {
    if (before_ != 0) {
        SetConsoleOutputCP(before_);
    }
}

}  // namespace mv::host
