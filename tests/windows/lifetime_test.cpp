// Openings, closings, loadings and unloadings leave nothing behind.
#include <windows.h>

#include <tlhelp32.h>

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

struct Counts {
    DWORD gdi = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS);
    DWORD user = GetGuiResources(GetCurrentProcess(), GR_USEROBJECTS);
    DWORD handles = 0;
    int threads = CountThreads();
    int windows = 0;

    Counts() {
        GetProcessHandleCount(GetCurrentProcess(), &handles);
        EnumWindows(CountWindow, reinterpret_cast<LPARAM>(&windows));
    }
    void Print(const char* when) const {
        std::printf("%s: %lu GDI, %lu USER, %lu handles, %d threads, %d windows\n", when, gdi, user,
                    handles, threads, windows);
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
    EXPECT_LE(after.gdi, before.gdi + 2);
    EXPECT_LE(after.user, before.user + 2);
    EXPECT_LE(after.handles, before.handles + 4);
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
    EXPECT_LE(after.handles, before.handles + 8);
}

}  // namespace
}  // namespace mv::windowstest
