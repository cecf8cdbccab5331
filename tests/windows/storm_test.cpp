// A storm of random input. RADIAL_BLUR_STORM_SEED replays one, RADIAL_BLUR_STORM_STEPS makes it
// longer.
#include <windows.h>

#include <commctrl.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>

#include "support/DialogTest.h"

namespace mv::windowstest {
namespace {

unsigned FromEnvironment(const char* name, unsigned usual) {
    const char* text = std::getenv(name);
    return text == nullptr ? usual : static_cast<unsigned>(std::strtoul(text, nullptr, 10));
}

struct Boxes {
    HWND interfaceWindow;
    HWND preview;
    HWND found = nullptr;
};

BOOL CALLBACK LookForBox(HWND window, LPARAM parameter) {
    auto* boxes = reinterpret_cast<Boxes*>(parameter);
    char name[32] = {};
    GetClassNameA(window, name, sizeof name);
    if (IsWindowVisible(window) && window != boxes->interfaceWindow && window != boxes->preview &&
        std::string(name) == "#32770") {
        boxes->found = window;
        return FALSE;
    }
    return TRUE;
}

class Storm : public DialogTest {
protected:
    int Random(int from, int to) {
        return std::uniform_int_distribution<int>(from, to)(generator_);
    }

    // A box that came up is answered, mostly with no. The file dialog is the system's own, and is
    // only closed.
    void AnswerBoxes() {
        for (int i = 0; i < 50; ++i) {
            Boxes boxes = {run->Interface(), run->Preview()};
            EnumThreadWindows(run->ThreadId(), LookForBox, reinterpret_cast<LPARAM>(&boxes));
            if (boxes.found == nullptr) {
                return;
            }
            char title[64] = {};
            GetWindowTextA(boxes.found, title, sizeof title);
            if (std::string(title) != "Open Presets File") {
                PostMessageA(boxes.found, WM_COMMAND,
                             static_cast<WPARAM>(Random(0, 3) == 0 ? IDYES : IDNO), 0);
            }
            Sleep(20);
            PostMessageA(boxes.found, WM_COMMAND, IDCANCEL, 0);
            const HWND box = boxes.found;
            Eventually([&] { return !IsWindow(box) || !IsWindowVisible(box); }, 500);
        }
    }

    void Step() {
        static constexpr int kControls[] = {1031, 1032, 1011, 1013, 1025, 1028, 1033, 1034, 1035,
                                            1036, 1037, 1077, 1009, 1078, 1064, 1066, 1038, 1039,
                                            1012, 1014, 1016, 1017, 1018, 1019, 1029, 1080, 1065,
                                            1067, 1020, 1021, 1022, 1023, 1024, 1026, 1040, 1068,
                                            1069, 1008, 1004, 1010, 1081, 1006, 1005, 1001, 1082};
        const int id = kControls[Random(0, static_cast<int>(std::size(kControls)) - 1)];
        const HWND control = user->Control(id);
        const HWND dialog = run->Interface();
        const LPARAM point =
            MAKELPARAM(static_cast<WORD>(Random(-40, 500)), static_cast<WORD>(Random(-40, 500)));
        switch (Random(0, 11)) {
            case 0:
                PostMessageA(control, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(5, 5));
                PostMessageA(control, WM_LBUTTONUP, 0, MAKELPARAM(5, 5));
                break;
            case 1:
                PostMessageA(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(control), TRUE);
                PostMessageA(control, WM_CHAR,
                             static_cast<WPARAM>("0123456789.-e \b"[Random(0, 14)]), 1);
                break;
            case 2:
                PostMessageA(
                    control, WM_KEYDOWN,
                    static_cast<WPARAM>(Random(0, 1) == 0 ? Random(VK_LEFT, VK_DOWN) : VK_TAB), 1);
                break;
            case 3:
                PostMessageA(dialog, WM_HSCROLL,
                             MAKEWPARAM(static_cast<WORD>(Random(0, 8)),
                                        static_cast<WORD>(Random(-200, 300))),
                             reinterpret_cast<LPARAM>(control));
                break;
            case 4:
                PostMessageA(
                    dialog, WM_COMMAND,
                    MAKEWPARAM(static_cast<WORD>(id),
                               static_cast<WORD>(Random(0, 3) == 0 ? EN_KILLFOCUS : Random(0, 2))),
                    reinterpret_cast<LPARAM>(control));
                break;
            case 5:
                PostMessageA(run->Preview(), WM_LBUTTONDOWN, MK_LBUTTON, point);
                break;
            case 6:
                PostMessageA(run->Preview(), Random(0, 1) == 0 ? WM_LBUTTONUP : WM_RBUTTONUP, 0,
                             point);
                break;
            case 7:
                PostMessageA(run->Preview(), WM_MOUSEMOVE, 0, point);
                break;
            case 8:
                PostMessageA(run->Preview(), WM_RBUTTONDOWN, MK_RBUTTON, point);
                break;
            case 9:
                SetWindowPos(run->Preview(), nullptr, 0, 0, Random(20, 700), Random(20, 700),
                             SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE | SWP_ASYNCWINDOWPOS);
                break;
            case 10:
                PostMessageA(dialog, WM_COMMAND,
                             static_cast<WPARAM>(Random(0, 9) == 0 ? 1015 : Random(1001, 1003)), 0);
                break;
            default:
                PostMessageA(Random(0, 1) == 0 ? dialog : run->Preview(),
                             Random(0, 1) == 0 ? WM_LBUTTONUP : WM_RBUTTONUP, 0, point);
                break;
        }
    }

    std::mt19937 generator_;
};

TEST_F(Storm, EndsWithValidParametersAndADialogThatCloses) {
    std::random_device device;
    const unsigned seed = FromEnvironment("RADIAL_BLUR_STORM_SEED", device());
    const unsigned steps = FromEnvironment("RADIAL_BLUR_STORM_STEPS", 1500);
    std::printf("RADIAL_BLUR_STORM_SEED=%u RADIAL_BLUR_STORM_STEPS=%u\n", seed, steps);
    std::fflush(stdout);
    generator_.seed(seed);
    char folder[MAX_PATH] = {};
    GetTempPathA(MAX_PATH, folder);
    const std::string presets = std::string(folder) + "radial_blur_storm.cfg";
    std::ofstream(presets) << "FileOwner RadialBlur\n\nname a\nStrength 0.1\nMode 2\n"
                              "\nname b\nStrength 0.9\nOrigin 0.1 0.2\n\nname c\nHue 7\n";
    PutText("Preset Path", presets);
    PutNumber("Preview Position Width", 400);
    PutNumber("Preview Position Height", 400);
    Open(300, 200);
    for (unsigned i = 0; i < steps && run->Running(); ++i) {
        Step();
        if (i % 20 == 0) {
            AnswerBoxes();
            SendMessageTimeoutA(run->Interface(), WM_NULL, 0, 0, SMTO_NORMAL, 10000, nullptr);
        }
    }
    AnswerBoxes();
    user->Settle();
    AnswerBoxes();
    ASSERT_TRUE(run->Running());
    // Every step that can be undone can be redone.
    int undone = 0;
    while (user->Enabled(1004) && undone <= 500) {
        SendMessageA(user->Control(1004), BM_CLICK, 0, 0);
        ++undone;
    }
    EXPECT_FALSE(user->Enabled(1004));
    int redone = 0;
    while (user->Enabled(1010) && redone <= 500) {
        SendMessageA(user->Control(1010), BM_CLICK, 0, 0);
        ++redone;
    }
    EXPECT_FALSE(user->Enabled(1010));
    EXPECT_GE(redone, undone);
    const bool accept = seed % 2 == 0;
    PostMessageA(run->Interface(), WM_COMMAND, accept ? IDOK : IDCANCEL, 0);
    ASSERT_TRUE(run->Finish(60000));
    EXPECT_EQ(run->Outcome().status, accept ? 0 : -128);
    const std::int32_t mode = Recorded<std::int32_t>("MODE");
    EXPECT_TRUE(mode == 1 || mode == 2);
    const std::int32_t blend = Recorded<std::int32_t>("BLND");
    EXPECT_TRUE(blend >= 1 && blend <= 23);
    if (accept) {
        EXPECT_GE(Number("INTE"), 0.0);
        EXPECT_GE(Number("STRE"), 0.0);
        EXPECT_LE(std::fabs(Number("HSLH")), 1.0);
        EXPECT_TRUE(Number("SELH") >= 0.0 && Number("SELH") <= 255.0);
    }
    EXPECT_EQ(run->Session().Counts().buffersLive, 0);
    EXPECT_TRUE(run->Session().GetComplaints().empty());
    std::filesystem::remove(presets);
}

}  // namespace
}  // namespace mv::windowstest
