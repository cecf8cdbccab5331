// Openings, closings, loadings and unloadings leave nothing behind.
#include <windows.h>

#include <cstdlib>
#include <thread>

#include "support/DialogTest.h"
#include "support/ObjectCounts.h"

namespace mv::windowstest {
namespace {

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
    for (int i = 0; i < 6; ++i) {
        open(i % 2 == 0);
    }
    const auto before = ObjectCounts::Now();
    before.Print("before");
    const int times = Times(25, 200);
    for (int i = 0; i < times; ++i) {
        open(i % 2 == 0);
    }
    const auto after = ObjectCounts::Now();
    after.Print("after");
    // The system keeps a few objects of its own for later; one of each opening would be 25.
    EXPECT_LE(after.gdi, before.gdi + 10);
    EXPECT_LE(after.menus, before.menus);
    EXPECT_LE(after.icons, before.icons);
    EXPECT_LE(after.handles, before.handles + 10);
    EXPECT_LE(after.threads, before.threads);
    EXPECT_EQ(after.windows, before.windows);
}

TEST_F(Lifetime, TheModuleIsLoadedRunAndUnloadedOverAndOver) {
    // A host has the system's file dialog in memory anyway. Where its library comes and goes with
    // the module, Wine's own printer library behind it leaves a handle behind each time.
    const HMODULE fileDialog = LoadLibraryA("comdlg32.dll");
    ObjectCounts before;
    const int times = Times(40, 1000);
    for (int i = 0; i < times; ++i) {
        if (i == 5) {
            before = ObjectCounts::Now();
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
    const auto after = ObjectCounts::Now();
    before.Print("before");
    after.Print("after");
    EXPECT_LE(after.threads, before.threads);
    EXPECT_LE(after.handles, before.handles + 10);
    EXPECT_LE(after.gdi, before.gdi + 10);
    EXPECT_EQ(after.windows, before.windows);
    EXPECT_LE(after.icons, before.icons);
    FreeLibrary(fileDialog);
}

TEST_F(Lifetime, EachKindOfObjectIsCounted) {
    const auto before = ObjectCounts::Now();
    const HPEN pen = CreatePen(PS_SOLID, 0, RGB(1, 2, 3));
    const HMENU menu = CreatePopupMenu();
    const BYTE bits[128] = {};
    const HICON icon = CreateIcon(nullptr, 32, 32, 1, 1, bits, bits);
    const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    std::thread thread([&] { WaitForSingleObject(event, INFINITE); });
    const HWND window =
        CreateWindowExA(0, "Static", "", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    const auto after = ObjectCounts::Now();
    EXPECT_GT(after.gdi, before.gdi);
    // The first window of a thread may bring one of the system's.
    EXPECT_GT(after.windows, before.windows);
    EXPECT_EQ(after.menus, before.menus + 1);
    EXPECT_GT(after.icons, before.icons);
    EXPECT_GT(after.handles, before.handles + 1);
    EXPECT_EQ(after.threads, before.threads + 1);
    DestroyWindow(window);
    SetEvent(event);
    thread.join();
    CloseHandle(event);
    DestroyIcon(icon);
    DestroyMenu(menu);
    DeleteObject(pen);
}

}  // namespace
}  // namespace mv::windowstest
