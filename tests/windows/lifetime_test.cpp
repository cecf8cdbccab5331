// Openings, closings, loadings and unloadings leave nothing behind.
#include <windows.h>

#include <tlhelp32.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "support/DialogTest.h"

namespace mv::windowstest {
namespace {

int CountThreads() {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    int count = 0;
    for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry)) {
        count += entry.th32OwnerProcessID == GetCurrentProcessId() ? 1 : 0;
    }
    CloseHandle(snapshot);
    return count;
}

BOOL CALLBACK CountWindow(HWND window, LPARAM parameter) {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    *reinterpret_cast<int*>(parameter) += process == GetCurrentProcessId() ? 1 : 0;
    return TRUE;
}

// The highest place in the process's table that some new objects get: it rises with every object
// that is left behind. Unlike the system's own counters this works under Wine, too.
unsigned ReachOfGdi() {
    HPEN pens[32];
    unsigned reach = 0;
    for (HPEN& pen : pens) {
        pen = CreatePen(PS_SOLID, 0, RGB(1, 2, 3));
        reach = std::max(reach, static_cast<unsigned>(LOWORD(reinterpret_cast<ULONG_PTR>(pen))));
    }
    for (const HPEN pen : pens) {
        DeleteObject(pen);
    }
    return reach;
}

unsigned ReachOfUser() {
    HWND windows[16];
    unsigned reach = 0;
    for (HWND& window : windows) {
        window = CreateWindowExA(0, "Static", "", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr,
                                 nullptr);
        reach = std::max(reach, static_cast<unsigned>(LOWORD(reinterpret_cast<ULONG_PTR>(window))));
    }
    for (const HWND window : windows) {
        DestroyWindow(window);
    }
    return reach;
}

unsigned ReachOfHandles() {
    HANDLE events[16];
    ULONG_PTR reach = 0;
    for (HANDLE& event : events) {
        event = CreateEventA(nullptr, TRUE, FALSE, nullptr);
        reach = std::max(reach, reinterpret_cast<ULONG_PTR>(event) / 4);
    }
    for (const HANDLE event : events) {
        CloseHandle(event);
    }
    return static_cast<unsigned>(reach);
}

struct Counts {
    unsigned gdi = ReachOfGdi();
    unsigned user = ReachOfUser();
    unsigned handles = ReachOfHandles();
    int threads = CountThreads();
    int windows = 0;

    Counts() { EnumWindows(CountWindow, reinterpret_cast<LPARAM>(&windows)); }
    void Print(const char* when) const {
        std::printf("%s: up to GDI object %u, USER object %u, handle %u; %d threads, %d windows\n",
                    when, gdi, user, handles, threads, windows);
    }
};

int Times(int usual, int thorough) {
    return std::getenv("RADIAL_BLUR_LONG") != nullptr ? thorough : usual;
}

class Lifetime : public DialogTest {};

TEST_F(Lifetime, OpeningsAndClosingsLeaveNothingBehind) {
    const auto open = [&](bool ok) {
        Prepare(ColorDocument(64, 48));
        ASSERT_TRUE(run->Start());
        PostMessageA(run->Interface(), WM_COMMAND, ok ? IDOK : IDCANCEL, 0);
        ASSERT_TRUE(run->Finish());
        EXPECT_EQ(run->Outcome().status, ok ? 0 : -128);
        EXPECT_EQ(run->Session().Counts().buffersLive, 0);
        EXPECT_TRUE(run->Session().GetComplaints().empty());
        run.reset();
    };
    for (int i = 0; i < 10; ++i) {
        open(i % 2 == 0);
    }
    const Counts before;
    before.Print("before");
    const int times = Times(60, 200);
    for (int i = 0; i < times; ++i) {
        open(i % 2 == 0);
    }
    const Counts after;
    after.Print("after");
    // One object of each opening left behind would be sixty.
    EXPECT_LE(after.gdi, before.gdi + 20);
    EXPECT_LE(after.user, before.user + 20);
    EXPECT_LE(after.handles, before.handles + 20);
    EXPECT_EQ(after.threads, before.threads);
    EXPECT_EQ(after.windows, before.windows);
}

TEST_F(Lifetime, TheModuleIsLoadedRunAndUnloadedOverAndOver) {
    Counts before;
    const int times = Times(40, 1000);
    for (int i = 0; i < times; ++i) {
        if (i == 5) {
            before = Counts();
        }
        Prepare(ColorDocument(32, 24));
        if (i % 4 == 0) {
            ASSERT_TRUE(run->Start());
            PostMessageA(run->Interface(), WM_COMMAND, IDOK, 0);
            ASSERT_TRUE(run->Finish());
            EXPECT_EQ(run->Outcome().status, 0);
        } else {
            run->Session().Descriptor().playInfo = hostapi::plugInDialogSilent;
            EXPECT_EQ(run->Session().Run().status, 0);
        }
        run.reset();
        DialogRun::UnloadModule();
        EXPECT_EQ(GetModuleHandleA("radial_blur.8bf"), nullptr);
    }
    const Counts after;
    before.Print("before");
    after.Print("after");
    EXPECT_LE(after.threads, before.threads);
    // The compiler's thread runtime, which is linked into the module, keeps up to three handles
    // for a thread that called in and outlives the module. They come back with the process.
    EXPECT_LE(after.handles, before.handles + 3u * static_cast<unsigned>(times) + 20);
    EXPECT_LE(after.gdi, before.gdi + 20);
}

}  // namespace
}  // namespace mv::windowstest
