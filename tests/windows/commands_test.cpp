// The interface dialog by control id: which messages count as input, and which do not.
#include <windows.h>

#include <commctrl.h>

#include "support/DialogTest.h"

namespace mv::windowstest {
namespace {

constexpr int kStrength = 1028;
constexpr int kStrengthSlider = 1025;
constexpr int kUndo = 1004;
constexpr int kRedo = 1010;

class Commands : public DialogTest {
protected:
    void Command(int id, int notification) {
        SendMessageA(run->Interface(), WM_COMMAND,
                     MAKEWPARAM(static_cast<WORD>(id), static_cast<WORD>(notification)),
                     reinterpret_cast<LPARAM>(user->Control(id)));
    }
    void SetText(int id, const char* text) { SetDlgItemTextA(run->Interface(), id, text); }
    void Scroll(UINT message, int id, int code) {
        SendMessageA(run->Interface(), message, static_cast<WPARAM>(code),
                     reinterpret_cast<LPARAM>(user->Control(id)));
    }
};

TEST_F(Commands, ATextThatIsSetWhileTheFocusIsElsewhereIsNoInput) {
    Open(60, 40);
    user->Focus(IDOK);
    SetText(kStrength, "0.8");
    user->Settle();
    EXPECT_EQ(user->SliderPosition(kStrengthSlider), 25);
    EXPECT_FALSE(user->Enabled(kUndo));
    ASSERT_TRUE(user->PressOk());
    EXPECT_DOUBLE_EQ(Number("STRE"), 0.25);
}

TEST_F(Commands, ATextThatIsSetWhereTheFocusIsCountsAsTyped) {
    Open(60, 40);
    user->Focus(kStrength);
    const std::pair<const char*, int> texts[] = {
        {"0.8", 80}, {"5e-1", 50}, {" 0.3", 30}, {"+0.4", 40},   {"0.45 ", 40}, {"0,5", 40},
        {"-", 40},   {"", 40},     {"1e-2", 1},  {"0.75abc", 1}, {".5", 50},    {"6", 100}};
    for (const auto& [text, position] : texts) {
        SetText(kStrength, text);
        EXPECT_EQ(user->SliderPosition(kStrengthSlider), position) << '"' << text << '"';
    }
    // Fifty characters are read, and these are zeros; what follows does not count.
    SetText(kStrength, ("0." + std::string(60, '0') + "x").c_str());
    EXPECT_EQ(user->SliderPosition(kStrengthSlider), 0);
    // 0.8, 0.5, 0.3, 0.4, 0.01, 0.5, 6 and 0
    for (int i = 0; i < 8; ++i) {
        EXPECT_TRUE(user->Enabled(kUndo)) << i;
        Command(kUndo, 0);
    }
    EXPECT_FALSE(user->Enabled(kUndo));
}

TEST_F(Commands, ThreeCharactersMakeThreeSteps) {
    Open(60, 40);
    user->Type(1013, "123");
    for (const char* text : {"12", "1"}) {
        user->Click(kUndo);
        EXPECT_EQ(user->Text(1013), text);
    }
    // "1" was the value before, so the first of the three was no change.
    EXPECT_FALSE(user->Enabled(kUndo));
    user->Type(1013, "456");
    for (const char* text : {"45", "4", "1"}) {
        user->Click(kUndo);
        EXPECT_EQ(user->Text(1013), text);
    }
    EXPECT_FALSE(user->Enabled(kUndo));
}

TEST_F(Commands, AnEditThatLosesTheFocusIsReadAndRewritten) {
    Open(60, 40);
    user->Focus(IDOK);
    SetText(kStrength, "0.800");
    Command(kStrength, EN_KILLFOCUS);
    EXPECT_EQ(user->Text(kStrength), "0.8");
    EXPECT_EQ(user->SliderPosition(kStrengthSlider), 80);
    EXPECT_FALSE(user->Enabled(kUndo));
    SetText(kStrength, "0.9 or so");
    Command(kStrength, EN_KILLFOCUS);
    EXPECT_EQ(user->Text(kStrength), "0.8");
    ASSERT_TRUE(user->PressOk());
    EXPECT_DOUBLE_EQ(Number("STRE"), 0.8);
}

TEST_F(Commands, ACheckBoxCountsOnlyWithTheFocus) {
    Open(60, 40);
    user->Focus(IDOK);
    SendMessageA(user->Control(1078), BM_SETCHECK, BST_UNCHECKED, 0);
    Command(1078, BN_CLICKED);
    EXPECT_FALSE(user->Enabled(kUndo));
    SendMessageA(user->Control(1078), BM_SETCHECK, BST_CHECKED, 0);
    user->Focus(1078);
    SendMessageA(user->Control(1078), BM_SETCHECK, BST_UNCHECKED, 0);
    Command(1078, BN_CLICKED);
    EXPECT_TRUE(user->Enabled(kUndo));
    ASSERT_TRUE(user->PressOk());
    EXPECT_FALSE(Recorded<bool>("GAMA"));
}

TEST_F(Commands, AListCountsWhereverTheFocusIs) {
    Open(60, 40);
    user->Focus(IDOK);
    SendMessageA(user->Control(1009), CB_SETCURSEL, 4, 0);
    Command(1009, CBN_SELCHANGE);
    EXPECT_TRUE(user->Enabled(kUndo));
    // No entry at all is no value, and the parameter keeps its own.
    SendMessageA(user->Control(1009), CB_SETCURSEL, static_cast<WPARAM>(-1), 0);
    Command(1009, CBN_SELCHANGE);
    Command(kUndo, 0);
    EXPECT_FALSE(user->Enabled(kUndo));
    Command(kRedo, 0);
    EXPECT_EQ(user->Selected(1009), 4);
    ASSERT_TRUE(user->PressOk());
    EXPECT_EQ(Recorded<std::int32_t>("BLND"), 5);
}

TEST_F(Commands, ASliderCountsOnlyWithTheFocusAndInBothDirections) {
    Open(60, 40);
    user->Focus(IDOK);
    SendMessageA(user->Control(kStrengthSlider), TBM_SETPOS, TRUE, 70);
    Scroll(WM_HSCROLL, kStrengthSlider, TB_THUMBTRACK);
    EXPECT_EQ(user->Text(kStrength), "0.25");
    user->Focus(kStrengthSlider);
    Scroll(WM_VSCROLL, kStrengthSlider, TB_THUMBTRACK);
    EXPECT_EQ(user->Text(kStrength), "0.7");
    EXPECT_TRUE(user->Enabled(kUndo));
}

TEST_F(Commands, TheEndOfAScrollIsReadAndMakesNoStep) {
    Open(60, 40);
    user->Focus(kStrengthSlider);
    SendMessageA(user->Control(kStrengthSlider), TBM_SETPOS, TRUE, 60);
    Scroll(WM_HSCROLL, kStrengthSlider, TB_ENDTRACK);
    EXPECT_EQ(user->Text(kStrength), "0.6");
    EXPECT_FALSE(user->Enabled(kUndo));
    ASSERT_TRUE(user->PressOk());
    EXPECT_DOUBLE_EQ(Number("STRE"), 0.6);
}

TEST_F(Commands, ASliderWithoutTravelStaysAndItsValueIsTyped) {
    Open(60, 40);
    user->Focus(1033);
    SendMessageA(user->Control(1033), TBM_SETPOS, TRUE, 30);
    EXPECT_EQ(user->SliderPosition(1033), 0);
    user->Type(1034, "0.3");
    EXPECT_EQ(user->SliderPosition(1033), 0);
    user->Type(1014, "0.005");
    EXPECT_EQ(user->SliderPosition(1012), 0);
    user->Focus(IDOK);
    user->Settle();
    EXPECT_EQ(user->Text(1014), "0.005");
    ASSERT_TRUE(user->PressOk());
    EXPECT_DOUBLE_EQ(Number("ZOST"), 0.3);
    EXPECT_DOUBLE_EQ(Number("HSLH"), 0.005);
}

TEST_F(Commands, ButtonsLookAtTheirNotification) {
    Open(60, 40);
    for (const int notification : {BN_DBLCLK, BN_SETFOCUS, BN_KILLFOCUS}) {
        for (const int id : {IDOK, IDCANCEL, 1005, 1006}) {
            Command(id, notification);
        }
    }
    user->Settle();
    EXPECT_TRUE(run->Running());
    EXPECT_EQ(user->Text(1007), "100%");
    Command(1006, BN_CLICKED);
    user->Settle();
    EXPECT_EQ(user->Text(1007), "50%");
}

TEST_F(Commands, NothingToUndoOrRedoAndUnknownControlsDoNothing) {
    Open(60, 40);
    user->Type(kStrength, "0.7");
    Command(kUndo, 0);
    for (int i = 0; i < 3; ++i) {
        Command(kUndo, 0);
    }
    EXPECT_EQ(user->SliderPosition(kStrengthSlider), 25);
    for (int i = 0; i < 4; ++i) {
        Command(kRedo, 0);
    }
    EXPECT_EQ(user->SliderPosition(kStrengthSlider), 70);
    for (const int notification : {0, 1, EN_CHANGE, EN_KILLFOCUS}) {
        Command(4711, notification);
        Command(0xFFFF, notification);
    }
    SendMessageA(run->Interface(), WM_HSCROLL, TB_THUMBTRACK, 0);
    SendMessageA(run->Interface(), WM_HSCROLL, TB_THUMBTRACK,
                 reinterpret_cast<LPARAM>(user->Control(IDOK)));
    EXPECT_FALSE(user->Enabled(kRedo));
    ASSERT_TRUE(user->PressOk());
    EXPECT_DOUBLE_EQ(Number("STRE"), 0.7);
}

TEST_F(Commands, WhatARefreshWritesDoesNotComeBackAsInput) {
    Open(130, 70);
    // With the focus on the slider, an undo writes into the edit beside it.
    user->Focus(kStrengthSlider);
    user->SlideTo(kStrengthSlider, 60);
    user->EndSlide(kStrengthSlider);
    Command(kUndo, 0);
    EXPECT_EQ(user->Text(kStrength), "0.25");
    EXPECT_FALSE(user->Enabled(kUndo));
    EXPECT_TRUE(user->Enabled(kRedo));
    // With the focus in the edit, undo and redo write whole pixels into it.
    const double fraction = 43.9 / 130;
    user->Type(1031, "43.9");
    user->Type(1032, "35");
    Command(kUndo, 0);
    user->Focus(1031);
    Command(kUndo, 0);
    Command(kRedo, 0);
    Command(kRedo, 0);
    ASSERT_TRUE(user->PressOk());
    EXPECT_DOUBLE_EQ(Number("ORIX"), fraction);
}

TEST_F(Commands, SwitchesOfTheDialogAskTheHostForNothing) {
    Open(60, 40);
    const std::size_t before = run->Requests().size();
    for (const int id : {1081, 1082, 1081, 1082}) {
        user->Click(id);
    }
    EXPECT_EQ(run->Requests().size(), before);
    EXPECT_FALSE(user->Enabled(kUndo));
    ASSERT_TRUE(user->PressOk());
    EXPECT_EQ(run->Requests().size(), before + 1);
}

TEST_F(Commands, AGrayImageKeepsAndShowsTheValuesThatItDoesNotUse) {
    const double hue = 0.25;
    const std::int32_t mode = 2;
    PutBinary("Hue", &hue, sizeof hue, true);
    PutBinary("Mode", &mode, sizeof mode, true);
    Prepare(host::MakeDocument(DrawPicture(60, 40, 1), false));
    Open();
    EXPECT_FALSE(user->Enabled(1014));
    EXPECT_EQ(user->Text(1014), "0.25");
    // The mode goes back to normal, and the gradient with it.
    EXPECT_EQ(user->Selected(1037), 0);
    EXPECT_FALSE(user->Enabled(1077));
    ASSERT_TRUE(user->PressOk());
    EXPECT_DOUBLE_EQ(Number("HSLH"), 0.25);
}

}  // namespace
}  // namespace mv::windowstest
