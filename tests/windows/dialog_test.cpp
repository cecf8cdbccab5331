// The interface dialog as a person uses it.
#include <windows.h>

#include <commctrl.h>

#include <cmath>
#include <map>

#include "support/DialogTest.h"

namespace mv::windowstest {
namespace {

class Dialog : public DialogTest {};

TEST_F(Dialog, OpensOnTheDefaults) {
    Open(200, 100);
    const std::map<int, std::string> texts = {
        {1031, "100"}, {1032, "50"}, {1013, "1"}, {1028, "0.25"}, {1034, "0.5"}, {1036, "0"},
        {1066, "1"},   {1039, "0"},  {1014, "0"}, {1017, "0"},    {1019, "0"},   {1067, "0"},
        {1021, "255"}, {1023, "0"},  {1026, "1"}, {1069, "0.05"}, {1007, "100%"}};
    for (const auto& [id, text] : texts) {
        EXPECT_EQ(user->Text(id), text) << id;
    }
    const std::map<int, int> sliders = {
        {1011, 100}, {1025, 25}, {1033, 0}, {1035, 0},     {1064, 100}, {1038, 0},   {1012, 0},
        {1016, 0},   {1018, 0},  {1065, 0}, {1020, 25500}, {1022, 0},   {1024, 100}, {1068, 5}};
    for (const auto& [id, position] : sliders) {
        EXPECT_EQ(user->SliderPosition(id), position) << id;
    }
    for (const int id : {1037, 1009, 1029}) {
        EXPECT_EQ(user->Selected(id), 0) << id;
    }
    EXPECT_FALSE(user->Checked(1077));
    EXPECT_TRUE(user->Checked(1078));
    EXPECT_FALSE(user->Checked(1080));
    EXPECT_FALSE(user->Checked(1081));
    EXPECT_FALSE(user->Checked(1082));
    for (const int id : {1004, 1010, 1001, 1002, 1003, 1077, 1080}) {
        EXPECT_FALSE(user->Enabled(id)) << id;
    }
    for (const int id : {1, 2, 1005, 1006, 1008, 1015, 1037, 1009, 1029, 1040, 1012}) {
        EXPECT_TRUE(user->Enabled(id)) << id;
    }
    EXPECT_TRUE(user->PressCancel());
    EXPECT_EQ(run->Outcome().status, -128);
}

TEST_F(Dialog, ListsHoldTheirEntriesInOrder) {
    Open(60, 40);
    const auto entries = [&](int id) {
        std::vector<std::string> names;
        const auto count = static_cast<int>(SendMessageA(user->Control(id), CB_GETCOUNT, 0, 0));
        for (int i = 0; i < count; ++i) {
            char text[64] = {};
            SendMessageA(user->Control(id), CB_GETLBTEXT, static_cast<WPARAM>(i),
                         reinterpret_cast<LPARAM>(text));
            names.emplace_back(text);
        }
        return names;
    };
    EXPECT_EQ(entries(1037), (std::vector<std::string>{"normal", "abberative"}));
    EXPECT_EQ(entries(1029), (std::vector<std::string>{"normal", "selected image", "selection only",
                                                       "size selection"}));
    const auto blend = entries(1009);
    ASSERT_EQ(blend.size(), 23u);
    EXPECT_EQ(blend[1], "max weight");
    EXPECT_EQ(blend[22], "(none) replace");
}

TEST_F(Dialog, SlidersHaveTheirRanges) {
    Open(60, 40);
    struct Row {
        int id;
        int minimum;
        int maximum;
        int page;
    };
    for (const Row& row : {Row{1011, 0, 500, 50}, Row{1025, 0, 100, 10}, Row{1033, 0, 0, 10},
                           Row{1012, -100, 100, 20}, Row{1064, 0, 300, 30},
                           Row{1020, 0, 25500, 2550}, Row{1024, -100, 100, 20}}) {
        const HWND slider = user->Control(row.id);
        EXPECT_EQ(SendMessageA(slider, TBM_GETRANGEMIN, 0, 0), row.minimum) << row.id;
        EXPECT_EQ(SendMessageA(slider, TBM_GETRANGEMAX, 0, 0), row.maximum) << row.id;
        EXPECT_EQ(SendMessageA(slider, TBM_GETPAGESIZE, 0, 0), row.page) << row.id;
    }
}

TEST_F(Dialog, TypedNumberMovesTheSliderAndIsRecorded) {
    Open(60, 40);
    user->Type(1028, "0.75");
    EXPECT_EQ(user->Text(1028), "0.75");
    EXPECT_EQ(user->SliderPosition(1025), 75);
    ASSERT_TRUE(user->PressOk());
    EXPECT_EQ(run->Outcome().status, 0);
    EXPECT_DOUBLE_EQ(Number("STRE"), 0.75);
}

TEST_F(Dialog, EveryAcceptedKeystrokeIsAStepOfItsOwn) {
    Open(60, 40);
    user->Type(1013, "2.5");  // 2, then no change at "2.", then 2.5
    EXPECT_TRUE(user->Enabled(1004));
    user->Click(1004);
    EXPECT_EQ(user->Text(1013), "2");
    EXPECT_TRUE(user->Enabled(1010));
    user->Click(1004);
    EXPECT_EQ(user->Text(1013), "1");
    EXPECT_FALSE(user->Enabled(1004));
    user->Click(1010);
    user->Click(1010);
    EXPECT_EQ(user->Text(1013), "2.5");
    EXPECT_FALSE(user->Enabled(1010));
}

TEST_F(Dialog, TextThatIsNoNumberIsIgnoredAndRewrittenWhenTheFocusGoes) {
    Open(60, 40);
    user->Type(1028, "0.5x");
    EXPECT_EQ(user->Text(1028), "0.5x");
    EXPECT_EQ(user->SliderPosition(1025), 50);
    user->Focus(1013);
    user->Settle();
    EXPECT_EQ(user->Text(1028), "0.5");
    user->Type(1028, "");
    PostMessageA(user->Control(1028), WM_CHAR, VK_BACK, 1);
    user->Settle();
    EXPECT_EQ(user->Text(1028), "");
    user->Focus(1013);
    user->Settle();
    EXPECT_EQ(user->Text(1028), "0.5");
}

TEST_F(Dialog, SoftLimitsLetATypedValuePassAndHardOnesHoldIt) {
    Open(60, 40);
    user->Type(1013, "7.5");
    EXPECT_EQ(user->SliderPosition(1011), 500);
    user->Type(1014, "2");
    EXPECT_EQ(user->SliderPosition(1012), 100);
    EXPECT_EQ(user->Text(1014), "2");
    user->Type(1034, "-0.7");
    user->Focus(1028);
    user->Settle();
    EXPECT_EQ(user->Text(1013), "7.5");
    EXPECT_EQ(user->Text(1014), "1");
    ASSERT_TRUE(user->PressOk());
    EXPECT_DOUBLE_EQ(Number("INTE"), 7.5);
    EXPECT_DOUBLE_EQ(Number("HSLH"), 1.0);
    EXPECT_DOUBLE_EQ(Number("ZOST"), -0.7);
}

TEST_F(Dialog, ASliderDragIsOneStepAndTheNextASecond) {
    Open(60, 40);
    for (int position = 26; position <= 65; ++position) {
        user->SlideTo(1025, position);
    }
    user->EndSlide(1025);
    EXPECT_EQ(user->Text(1028), "0.65");
    for (int position = 64; position >= 30; --position) {
        user->SlideTo(1025, position);
    }
    user->EndSlide(1025);
    EXPECT_EQ(user->Text(1028), "0.3");
    user->Click(1004);
    EXPECT_EQ(user->Text(1028), "0.65");
    user->Click(1004);
    EXPECT_EQ(user->Text(1028), "0.25");
    EXPECT_FALSE(user->Enabled(1004));
}

TEST_F(Dialog, AScrollMessageWithoutChangeMakesNoStepAndTheNextMakesOne) {
    Open(60, 40);
    user->SlideTo(1025, 25);
    EXPECT_FALSE(user->Enabled(1004));
    user->SlideTo(1025, 40);
    EXPECT_TRUE(user->Enabled(1004));
    user->EndSlide(1025);
    user->Click(1004);
    EXPECT_EQ(user->Text(1028), "0.25");
}

TEST_F(Dialog, FortyThingsAreUndoneAndRedone) {
    Open(60, 40);
    for (int i = 0; i < 20; ++i) {
        user->SlideTo(1025, 30 + i);
        user->EndSlide(1025);
        user->SlideTo(1012, -20 - i);
        user->EndSlide(1012);
    }
    user->Settle();
    for (int i = 0; i < 40; ++i) {
        ASSERT_TRUE(user->Enabled(1004)) << i;
        SendMessageA(user->Control(1004), BM_CLICK, 0, 0);
    }
    EXPECT_FALSE(user->Enabled(1004));
    EXPECT_EQ(user->Text(1028), "0.25");
    EXPECT_EQ(user->Text(1014), "0");
    for (int i = 0; i < 40; ++i) {
        ASSERT_TRUE(user->Enabled(1010)) << i;
        SendMessageA(user->Control(1010), BM_CLICK, 0, 0);
    }
    EXPECT_FALSE(user->Enabled(1010));
    EXPECT_EQ(user->Text(1028), "0.49");
    EXPECT_EQ(user->Text(1014), "-0.39");
}

TEST_F(Dialog, OriginIsTypedInPixelsAndTheTextStaysAsItWasTyped) {
    Open(200, 80);
    user->Type(1031, "33.30");
    EXPECT_EQ(user->Text(1031), "33.30");
    EXPECT_EQ(user->Text(1032), "40");
    user->Focus(1028);
    user->Settle();
    EXPECT_EQ(user->Text(1031), "33.30");
    user->Type(1032, "-8");
    ASSERT_TRUE(user->PressOk());
    EXPECT_DOUBLE_EQ(Number("ORIX"), 33.3 / 200);
    EXPECT_DOUBLE_EQ(Number("ORIY"), -0.1);
}

TEST_F(Dialog, ModeEnablesTheGradientAndUndoTakesItBack) {
    Open(60, 40);
    user->Select(1037, 1);
    EXPECT_TRUE(user->Enabled(1077));
    user->Click(1077);
    EXPECT_TRUE(user->Checked(1077));
    user->Click(1004);
    EXPECT_FALSE(user->Checked(1077));
    user->Click(1004);
    EXPECT_EQ(user->Selected(1037), 0);
    EXPECT_FALSE(user->Enabled(1077));
    user->Click(1010);
    ASSERT_TRUE(user->PressOk());
    EXPECT_EQ(Recorded<std::int32_t>("MODE"), 2);
    EXPECT_FALSE(Recorded<bool>("INGR"));
}

TEST_F(Dialog, ListsAndChecksAreRecorded) {
    Open(60, 40);
    user->Select(1009, 22);
    user->Select(1029, 2);
    user->Click(1078);
    EXPECT_EQ(user->Selected(1009), 22);
    ASSERT_TRUE(user->PressOk());
    EXPECT_EQ(Recorded<std::int32_t>("BLND"), 23);
    EXPECT_EQ(Recorded<std::int32_t>("SHOW"), 3);
    EXPECT_FALSE(Recorded<bool>("GAMA"));
}

TEST_F(Dialog, RandomizeIsOneStepAndLeavesWhatItMust) {
    Open(60, 40);
    user->Type(1069, "1");
    EXPECT_FALSE(user->Enabled(1004));  // its own value is not undoable
    user->Select(1009, 4);
    user->Click(1040);
    EXPECT_EQ(user->Selected(1009), 4);
    EXPECT_EQ(user->Text(1069), "1");
    EXPECT_TRUE(Eventually([&] { return user->Text(1021) != "255"; }, 500));
    user->Click(1004);
    EXPECT_EQ(user->Text(1021), "255");
    EXPECT_EQ(user->Text(1028), "0.25");
    EXPECT_EQ(user->Text(1031), "30");
    user->Click(1004);
    EXPECT_EQ(user->Selected(1009), 0);
    EXPECT_FALSE(user->Enabled(1004));
}

TEST_F(Dialog, ResetIsOneStepAndKeepsTheAmountOfRandomness) {
    Open(60, 40);
    user->Type(1069, "0.5");
    user->Type(1028, "0.9");
    user->Select(1037, 1);
    user->Click(1008);
    EXPECT_EQ(user->Text(1028), "0.25");
    EXPECT_EQ(user->Selected(1037), 0);
    EXPECT_EQ(user->Text(1069), "0.5");
    user->Click(1004);
    EXPECT_EQ(user->Text(1028), "0.9");
    EXPECT_EQ(user->Selected(1037), 1);
}

TEST_F(Dialog, CancelKeepsTheValuesForTheNextRunButStoresNone) {
    Open(60, 40);
    user->Type(1028, "0.6");
    ASSERT_TRUE(user->PressCancel());
    EXPECT_EQ(run->Outcome().status, -128);
    EXPECT_DOUBLE_EQ(Number("STRE"), 0.6);
    EXPECT_FALSE(KeyExists(true));
    EXPECT_TRUE(KeyExists(false));
    Open(60, 40);
    EXPECT_EQ(user->Text(1028), "0.6");
}

// Keys that come during a frame go to the control and not to the dialog, so a person presses again.
bool PressUntilClosed(DialogRun& run, HWND control, unsigned key) {
    return Eventually([&] {
        if (run.Running()) {
            PostMessageA(control, WM_KEYDOWN, key, 1);
            Sleep(100);
        }
        return !run.Running();
    });
}

TEST_F(Dialog, EnterIsOkAndEscapeIsCancel) {
    Open(60, 40);
    user->Focus(1028);
    ASSERT_TRUE(PressUntilClosed(*run, user->Control(1028), VK_RETURN));
    ASSERT_TRUE(run->Finish());
    EXPECT_EQ(run->Outcome().status, 0);
    Open(60, 40);
    user->Focus(1028);
    ASSERT_TRUE(PressUntilClosed(*run, user->Control(1028), VK_ESCAPE));
    ASSERT_TRUE(run->Finish());
    EXPECT_EQ(run->Outcome().status, -128);
}

TEST_F(Dialog, TabGoesThroughTheControlsInTheResourcesOrder) {
    Open(60, 40);
    user->Focus(IDOK);
    user->Settle();
    // Without those that are disabled: gradient, size selection, undo, redo, presets.
    const int order[] = {1,    2,    1031, 1032, 1011, 1013, 1025, 1028, 1033, 1034, 1035,
                         1036, 1037, 1009, 1078, 1064, 1066, 1038, 1039, 1012, 1014, 1016,
                         1017, 1018, 1019, 1029, 1065, 1067, 1020, 1021, 1022, 1023, 1024,
                         1026, 1040, 1068, 1069, 1008, 1081, 1006, 1005, 1015, 1082, 1};
    for (std::size_t i = 0; i + 1 < std::size(order); ++i) {
        EXPECT_EQ(GetDlgCtrlID(user->FocusedWindow()), order[i]);
        PostMessageA(user->FocusedWindow(), WM_KEYDOWN, VK_TAB, 1);
        ASSERT_TRUE(Eventually([&] { return GetDlgCtrlID(user->FocusedWindow()) == order[i + 1]; }))
            << "after " << order[i] << " stands " << GetDlgCtrlID(user->FocusedWindow());
    }
}

TEST_F(Dialog, ArrowsMoveASlider) {
    Open(60, 40);
    user->Focus(1025);
    user->TypeKey(1025, VK_RIGHT);
    user->TypeKey(1025, VK_RIGHT);
    EXPECT_EQ(user->SliderPosition(1025), 27);
    EXPECT_EQ(user->Text(1028), "0.27");
    user->TypeKey(1025, VK_NEXT);
    EXPECT_EQ(user->Text(1028), "0.37");
    user->Click(1004);
    EXPECT_EQ(user->Text(1028), "0.27");  // each key stroke is a drag of its own
}

TEST_F(Dialog, ThePreviewsCloseBoxHasNoEffect) {
    Open(60, 40);
    PostMessageA(run->Preview(), WM_SYSCOMMAND, SC_CLOSE, 0);
    PostMessageA(run->Preview(), WM_CLOSE, 0, 0);
    user->Settle();
    EXPECT_TRUE(run->Running());
    EXPECT_TRUE(IsWindow(run->Preview()));
}

TEST_F(Dialog, NumbersAreRedOnWhite) {
    Open(60, 40);
    for (const UINT message : {UINT{WM_CTLCOLOREDIT}, UINT{WM_CTLCOLORLISTBOX}}) {
        const HDC context = GetDC(user->Control(1028));
        const LRESULT brush =
            SendMessageA(run->Interface(), message, reinterpret_cast<WPARAM>(context),
                         reinterpret_cast<LPARAM>(user->Control(1028)));
        EXPECT_EQ(GetTextColor(context), RGB(255, 0, 0));
        EXPECT_EQ(GetBkColor(context), RGB(255, 255, 255));
        EXPECT_EQ(brush, reinterpret_cast<LRESULT>(GetStockObject(WHITE_BRUSH)));
        ReleaseDC(user->Control(1028), context);
    }
}

TEST_F(Dialog, AGrayImageHasNoColorControls) {
    Prepare(host::MakeDocument(DrawPicture(60, 40, 1), false));
    Open();
    for (const int id : {1012, 1014, 1016, 1017, 1018, 1019, 1037, 1077}) {
        EXPECT_FALSE(user->Enabled(id)) << id;
    }
    EXPECT_TRUE(user->Enabled(1025));
}

TEST_F(Dialog, ASelectionEnablesItsUseAsStrength) {
    Prepare(
        host::MakeDocument(DrawPicture(60, 40, 3), false, std::vector<std::uint8_t>(60 * 40, 200)));
    Open();
    EXPECT_TRUE(user->Enabled(1080));
    user->Click(1080);
    ASSERT_TRUE(user->PressOk());
    EXPECT_TRUE(Recorded<bool>("USES"));
}

TEST_F(Dialog, TheHostsWindowIsOutOfReachWhileTheDialogIsOpenAndAsItWasAfterwards) {
    Prepare(ColorDocument(60, 40));
    run->withHostWindow = true;
    Open();
    EXPECT_EQ(GetWindow(run->Preview(), GW_OWNER), run->hostWindow);
    EXPECT_FALSE(IsWindowEnabled(run->hostWindow));
    bool enabledAtTheEnd = false;
    run->Session().Hooks().progress = [&](std::int32_t, std::int32_t) {
        enabledAtTheEnd = IsWindowEnabled(run->hostWindow) != FALSE;
    };
    ASSERT_TRUE(user->PressOk());
    EXPECT_TRUE(enabledAtTheEnd);
}

TEST_F(Dialog, TheClassOfDialogsIsAsItWasAfterwards) {
    Open(60, 40);
    const HWND window = CreateWindowExA(0, "#32770", "", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr,
                                        nullptr, nullptr);
    ASSERT_NE(window, nullptr);
    EXPECT_NE(GetClassLongPtrA(window, GCLP_HICON), 0u);
    const ULONG_PTR cursor = GetClassLongPtrA(window, GCLP_HCURSOR);
    PostMessageA(run->Interface(), WM_RBUTTONUP, 0, MAKELPARAM(2, 2));
    user->Settle();
    EXPECT_EQ(GetClassLongPtrA(window, GCLP_HCURSOR), 0u);
    ASSERT_TRUE(user->PressCancel());
    EXPECT_EQ(GetClassLongPtrA(window, GCLP_HICON), 0u);
    EXPECT_EQ(GetClassLongPtrA(window, GCLP_HCURSOR), cursor);
    DestroyWindow(window);
}

TEST_F(Dialog, AboutShowsNameVersionAndDescription) {
    host::HostSession session(DialogRun::LoadedModule().GetEntryPoint(), ColorDocument(8, 8));
    std::atomic<DWORD> threadId{0};
    std::atomic<bool> ended{false};
    std::thread thread([&] {
        threadId = GetCurrentThreadId();
        session.CallAbout();
        ended = true;
    });
    ASSERT_TRUE(Eventually([&] { return threadId != 0; }));
    const HWND about = AwaitThreadWindow(threadId, "About");
    ASSERT_NE(about, nullptr);
    char text[1024] = {};
    SendDlgItemMessageA(about, 1083, WM_GETTEXT, sizeof text, reinterpret_cast<LPARAM>(text));
    const std::string shown = text;
    EXPECT_EQ(shown.find("Vandrel \xBBRadialBlur\xAB v1.2.6\r"), 0u) << shown;
    EXPECT_NE(shown.find("Gererates a Radial Blur using selected footage.\n"), std::string::npos);
    EXPECT_EQ(shown.back(), '\n');
    PostMessageA(about, WM_CLOSE, 0, 0);
    EXPECT_TRUE(Eventually([&] { return ended.load(); }));
    thread.join();
}

TEST_F(Dialog, ABogusOwnerEndsTheRunAsIfCancelled) {
    Prepare(ColorDocument(60, 40));
    run->hostWindow = reinterpret_cast<HWND>(static_cast<std::uintptr_t>(0x7FFF1234));
    EXPECT_FALSE(run->Start());
    ASSERT_TRUE(run->Finish());
    EXPECT_EQ(run->Outcome().status, -128);
}

}  // namespace
}  // namespace mv::windowstest
