#include "support/ObjectCounts.h"

#include <windows.h>

#include <tlhelp32.h>

#include <cstdio>

namespace mv::windowstest {

namespace {

template <class Handle>
Handle HandleOf(unsigned place) {
    return reinterpret_cast<Handle>(static_cast<ULONG_PTR>(place));
}

// Wine takes a handle without its upper half for whatever lives at that place of the table.
unsigned CountGdi() {
    const DWORD known = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS);
    if (known != 0) {
        return known;
    }
    unsigned count = 0;
    for (unsigned place = 1; place < 0x10000; ++place) {
        count += GetObjectType(HandleOf<HGDIOBJ>(place)) != 0 ? 1u : 0u;
    }
    return count;
}

// The handles of windows, menus and icons are even.
unsigned CountMenus() {
    unsigned count = 0;
    for (unsigned place = 2; place < 0x10000; place += 2) {
        count += IsMenu(HandleOf<HMENU>(place)) ? 1u : 0u;
    }
    return count;
}

unsigned CountIcons() {
    unsigned count = 0;
    for (unsigned place = 2; place < 0x10000; place += 2) {
        ICONINFO info = {};
        if (GetIconInfo(HandleOf<HICON>(place), &info)) {
            ++count;
            DeleteObject(info.hbmMask);
            if (info.hbmColor != nullptr) {
                DeleteObject(info.hbmColor);
            }
        }
    }
    return count;
}

BOOL CALLBACK CountChild(HWND, LPARAM parameter) {
    ++*reinterpret_cast<unsigned*>(parameter);
    return TRUE;
}

BOOL CALLBACK CountWindow(HWND window, LPARAM parameter) {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    if (process == GetCurrentProcessId()) {
        ++*reinterpret_cast<unsigned*>(parameter);
        EnumChildWindows(window, CountChild, parameter);
    }
    return TRUE;
}

// All windows with those that only take messages.
unsigned CountWindows() {
    unsigned count = 0;
    EnumWindows(CountWindow, reinterpret_cast<LPARAM>(&count));
    HWND window = nullptr;
    while ((window = FindWindowExA(HWND_MESSAGE, window, nullptr, nullptr)) != nullptr) {
        CountWindow(window, reinterpret_cast<LPARAM>(&count));
    }
    return count;
}

unsigned CountHandles() {
    DWORD known = 0;
    if (GetProcessHandleCount(GetCurrentProcess(), &known) && known != 0) {
        return known;
    }
    // Handles are given from the lowest free place on, so a long gap is the end.
    unsigned count = 0;
    for (unsigned place = 4, last = 4; place < last + 0x4000; place += 4) {
        DWORD flags = 0;
        if (GetHandleInformation(HandleOf<HANDLE>(place), &flags)) {
            ++count;
            last = place;
        }
    }
    return count;
}

unsigned CountThreads() {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    unsigned count = 0;
    for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry)) {
        count += entry.th32OwnerProcessID == GetCurrentProcessId() ? 1u : 0u;
    }
    CloseHandle(snapshot);
    return count;
}

}  // namespace

ObjectCounts ObjectCounts::Now() {
    ObjectCounts counts;
    counts.gdi = CountGdi();
    counts.windows = CountWindows();
    counts.menus = CountMenus();
    counts.icons = CountIcons();
    counts.handles = CountHandles();
    counts.threads = CountThreads();
    return counts;
}

unsigned ObjectCounts::Handles() {
    return CountHandles();
}

unsigned ObjectCounts::Threads() {
    return CountThreads();
}

void ObjectCounts::Print(const char* when) const {
    std::printf("%s: %u GDI objects, %u windows, %u menus, %u icons, %u handles, %u threads\n",
                when, gdi, windows, menus, icons, handles, threads);
    std::fflush(stdout);
}

}  // namespace mv::windowstest
