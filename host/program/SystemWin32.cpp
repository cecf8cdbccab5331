#include <windows.h>
// Behind windows.h, on which it depends.
#include <psapi.h>

#include <atomic>

#include "program/System.h"

namespace mv::host {
namespace {

std::atomic<bool> interrupted{false};

// Runs on a thread of its own. True keeps the system from ending the process at once; after a
// closed window it ends it some seconds later all the same.
BOOL WINAPI NoteEvent(DWORD) {
    interrupted.store(true);
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
