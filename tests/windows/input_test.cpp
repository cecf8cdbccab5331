// The dialog with a real mouse and a real keyboard: input that comes from the devices.
#include <windows.h>

#include <commctrl.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "support/DialogTest.h"
#include "support/Hands.h"

namespace mv::windowstest {
namespace {

constexpr int kStrength = 1028;
constexpr int kStrengthSlider = 1025;
constexpr int kUndo = 1004;

class Input : public DialogTest {
protected:
    void SetUp() override {
        DialogTest::SetUp();
        // The two windows beside each other.
        PutNumber("Interface Position X", 20);
        PutNumber("Interface Position Y", 30);
        PutNumber("Preview Position X", 500);
        PutNumber("Preview Position Y", 60);
        PutNumber("Preview Position Width", 400);
        PutNumber("Preview Position Height", 400);
    }

    void ClickOn(int id) { Hands::Click(user->Control(id)); }
    bool FocusComesTo(int id) {
        return Eventually([&] { return user->FocusedWindow() == user->Control(id); });
    }
    bool TextBecomes(int id, const char* text) {
        const bool became = Eventually([&] { return user->Text(id) == text; });
        EXPECT_EQ(user->Text(id), text) << id;
        return became;
    }
    // A drag goes on until the text is there: of movements that come close together, a busy window
    // system may swallow the last, and a hand never rests.
    bool DragArrives(POINT to, int id, const char* text) {
        const bool became = Eventually([&] {
            if (user->Text(id) == text) {
                return true;
            }
            Hands::Glide({to.x - 1, to.y - 1}, to, 2);
            return false;
        });
        EXPECT_EQ(user->Text(id), text) << id;
        return became;
    }
    // A key that the dialog itself serves, once no frame is being rendered.
    void DialogKey(WORD key) {
        user->Settle();
        Hands::Key(key);
    }
    // A pixel of the picture, on the screen.
    POINT Pixel(int x, int y, int width, int height) {
        const RECT frame = user->FrameRect();
        return Hands::OnScreen(run->Preview(),
                               {frame.left + (frame.right - frame.left - width) / 2 + x,
                                frame.top + (frame.bottom - frame.top - height) / 2 + y});
    }
};

TEST_F(Input, NumbersAreTypedIntoTheEditThatWasClickedAndEnterIsOk) {
    Open(120, 80);
    ClickOn(kStrength);
    ASSERT_TRUE(FocusComesTo(kStrength));
    Hands::Key(VK_END);
    for (int i = 0; i < 4; ++i) {
        Hands::Key(VK_BACK);
    }
    ASSERT_TRUE(TextBecomes(kStrength, ""));
    Hands::Type("0.7");
    ASSERT_TRUE(TextBecomes(kStrength, "0.7"));
    EXPECT_TRUE(Eventually([&] { return user->SliderPosition(kStrengthSlider) == 70; }));
    DialogKey(VK_TAB);
    EXPECT_TRUE(FocusComesTo(1033));
    user->Settle();
    Hands::KeyWith(VK_SHIFT, VK_TAB);
    EXPECT_TRUE(FocusComesTo(kStrength));
    DialogKey(VK_RETURN);
    ASSERT_TRUE(run->Finish());
    EXPECT_EQ(run->Outcome().status, 0);
    EXPECT_DOUBLE_EQ(Number("STRE"), 0.7);
}

TEST_F(Input, EscapeIsCancel) {
    Open(120, 80);
    ClickOn(1013);
    ASSERT_TRUE(FocusComesTo(1013));
    DialogKey(VK_ESCAPE);
    ASSERT_TRUE(run->Finish());
    EXPECT_EQ(run->Outcome().status, -128);
}

TEST_F(Input, TheButtonsAreClicked) {
    Open(120, 80);
    ClickOn(1078);
    EXPECT_TRUE(Eventually([&] { return !user->Checked(1078); }));
    EXPECT_TRUE(Eventually([&] { return user->Enabled(kUndo); }));
    ClickOn(kUndo);
    EXPECT_TRUE(Eventually([&] { return user->Checked(1078); }));
    ClickOn(1010);
    EXPECT_TRUE(Eventually([&] { return !user->Checked(1078); }));
    user->Settle();
    ClickOn(1006);
    EXPECT_TRUE(TextBecomes(1007, "50%"));
    user->Settle();
    ClickOn(1005);
    EXPECT_TRUE(TextBecomes(1007, "100%"));
    ClickOn(1082);
    EXPECT_TRUE(Eventually([&] { return user->Checked(1082); }));
    user->Settle();
    ClickOn(IDOK);
    ASSERT_TRUE(run->Finish());
    EXPECT_EQ(run->Outcome().status, 0);
    EXPECT_FALSE(Recorded<bool>("GAMA"));
}

TEST_F(Input, ASlidersThumbIsDraggedInOneStepAndMovedByKeys) {
    Open(120, 80);
    RECT thumb = {};
    SendMessageA(user->Control(kStrengthSlider), TBM_GETTHUMBRECT, 0,
                 reinterpret_cast<LPARAM>(&thumb));
    const POINT from =
        Hands::OnScreen(user->Control(kStrengthSlider),
                        {(thumb.left + thumb.right) / 2, (thumb.top + thumb.bottom) / 2});
    Hands::MoveTo(from);
    Hands::Press();
    Hands::Glide(from, {from.x + 60, from.y}, 20);
    Hands::Release();
    ASSERT_TRUE(Eventually([&] { return user->SliderPosition(kStrengthSlider) > 40; }));
    user->Settle();
    const int position = user->SliderPosition(kStrengthSlider);
    EXPECT_EQ(user->FocusedWindow(), user->Control(kStrengthSlider));
    EXPECT_NEAR(user->Number(kStrength), position * 0.01, 1e-9);
    DialogKey(VK_RIGHT);
    EXPECT_TRUE(Eventually([&] { return user->SliderPosition(kStrengthSlider) == position + 1; }));
    user->Settle();
    EXPECT_NEAR(user->Number(kStrength), (position + 1) * 0.01, 1e-9);
    ClickOn(kUndo);
    EXPECT_TRUE(
        Eventually([&] { return std::abs(user->Number(kStrength) - position * 0.01) < 1e-9; }));
    ClickOn(kUndo);
    EXPECT_TRUE(TextBecomes(kStrength, "0.25"));
    EXPECT_FALSE(user->Enabled(kUndo));
}

TEST_F(Input, AListIsChosenFromWithTheKeyboard) {
    Open(120, 80);
    user->Focus(1009);
    user->Settle();
    for (int entry = 1; entry <= 3; ++entry) {
        Hands::Key(VK_DOWN);
        ASSERT_TRUE(Eventually([&] { return user->Selected(1009) == entry; }));
        user->Settle();
    }
    ClickOn(IDOK);
    ASSERT_TRUE(run->Finish());
    EXPECT_EQ(Recorded<std::int32_t>("BLND"), 4);
}

TEST_F(Input, AListOpensUnderTheMouseAndTakesTheEntryThatIsClicked) {
    Open(120, 80);
    ClickOn(1037);
    ASSERT_TRUE(Eventually(
        [&] { return SendMessageA(user->Control(1037), CB_GETDROPPEDSTATE, 0, 0) != 0; }));
    RECT list = {};
    SendMessageA(user->Control(1037), CB_GETDROPPEDCONTROLRECT, 0, reinterpret_cast<LPARAM>(&list));
    const auto height =
        static_cast<LONG>(SendMessageA(user->Control(1037), CB_GETITEMHEIGHT, 0, 0));
    RECT box = {};
    GetWindowRect(user->Control(1037), &box);
    Hands::ClickAt({list.left + 20, box.bottom + 2 + height * 3 / 2});
    EXPECT_TRUE(Eventually([&] { return user->Selected(1037) == 1; }));
    EXPECT_TRUE(Eventually([&] { return user->Enabled(1077); }));
    user->Settle();
    ClickOn(IDCANCEL);
    ASSERT_TRUE(run->Finish());
    EXPECT_EQ(Recorded<std::int32_t>("MODE"), 2);
}

TEST_F(Input, TheHandleIsDraggedAlsoOutOfTheWindow) {
    Open(200, 100);
    const POINT from = Pixel(50, 20, 200, 100);
    const POINT to = Pixel(80, 50, 200, 100);
    Hands::MoveTo(from);
    Hands::Press();
    EXPECT_TRUE(TextBecomes(1031, "50"));
    EXPECT_TRUE(TextBecomes(1032, "20"));
    Hands::Glide(from, to, 10);
    EXPECT_TRUE(DragArrives(to, 1031, "80"));
    EXPECT_TRUE(DragArrives(to, 1032, "50"));
    // The capture goes on beside the window.
    const POINT outside = Pixel(500, 350, 200, 100);
    Hands::Glide(to, outside, 10);
    EXPECT_TRUE(DragArrives(outside, 1031, "500"));
    EXPECT_TRUE(DragArrives(outside, 1032, "350"));
    Hands::Release();
    Hands::Glide(outside, from, 5);
    EXPECT_TRUE(Eventually([&] {
        Hands::Glide(outside, from, 2);
        return user->PreviewTitle() == "Preview:  x: 50 y: 20";
    }));
    user->Settle();
    EXPECT_EQ(user->Text(1031), "500");
    ClickOn(kUndo);
    EXPECT_TRUE(TextBecomes(1031, "100"));
    EXPECT_FALSE(user->Enabled(kUndo));
    ClickOn(1010);
    EXPECT_TRUE(TextBecomes(1031, "500"));
    user->Settle();
    ClickOn(IDOK);
    ASSERT_TRUE(run->Finish());
    EXPECT_DOUBLE_EQ(Number("ORIX"), 2.5);
    EXPECT_DOUBLE_EQ(Number("ORIY"), 3.5);
}

TEST_F(Input, TheRightButtonPansAMagnifiedView) {
    Open(300, 300);
    for (const char* zoom : {"133.3%", "200%", "266.7%"}) {
        ClickOn(1005);
        ASSERT_TRUE(TextBecomes(1007, zoom));
        user->Settle();
    }
    const RECT frame = user->FrameRect();
    const POINT from = Hands::OnScreen(run->Preview(), {150, 150});
    Hands::MoveTo(from);
    Hands::Press(true);
    Hands::Glide(from, {from.x + 2000, from.y + 2000}, 4);
    Hands::Release(true);
    user->Settle();
    Hands::MoveTo(Hands::OnScreen(run->Preview(), {frame.left, frame.top}));
    // To the picture's first pixel, or the part of one by which it does not fit the frame.
    EXPECT_TRUE(Eventually([&] {
        double x = 9;
        double y = 9;
        std::sscanf(user->PreviewTitle().c_str(), "Preview:  x: %lf y: %lf", &x, &y);
        return std::abs(x) < 1.0 && std::abs(y) < 1.0;
    })) << user->PreviewTitle();
}

TEST_F(Input, APresetIsNamedOnTheKeyboard) {
    char folder[MAX_PATH] = {};
    GetTempPathA(MAX_PATH, folder);
    const std::string path = std::string(folder) + "radial_blur_typed.cfg";
    std::filesystem::remove(path);
    PutText("Preset Path", path);
    Open(120, 80);
    ClickOn(1002);
    const HWND box = AwaitThreadWindow(run->ThreadId(), "save as");
    ASSERT_NE(box, nullptr);
    ASSERT_TRUE(Eventually([&] { return user->FocusedWindow() == GetDlgItem(box, 1073); }));
    Hands::Type("my look");
    ASSERT_TRUE(Eventually([&] {
        char text[32] = {};
        SendMessageA(GetDlgItem(box, 1073), WM_GETTEXT, sizeof text,
                     reinterpret_cast<LPARAM>(text));
        return std::string(text) == "my look";
    }));
    Hands::Key(VK_RETURN);
    EXPECT_TRUE(Eventually([&] { return !IsWindow(box); }));
    EXPECT_TRUE(TextBecomes(1001, "my_look"));
    ClickOn(1003);
    const HWND question = AwaitThreadWindow(run->ThreadId(), "Delete Preset?");
    ASSERT_NE(question, nullptr);
    Hands::Key(VK_ESCAPE);  // a question with yes and no cannot be escaped from
    Hands::Type("n");
    EXPECT_TRUE(Eventually([&] { return !IsWindow(question); }));
    EXPECT_TRUE(TextBecomes(1001, "my_look"));
    std::filesystem::remove(path);
}

TEST_F(Input, AWindowIsMovedByItsCaptionAndThePreviewResizedByItsCorner) {
    if (HasWindowManager()) {
        GTEST_SKIP() << "a window manager has its own ways to move and resize";
    }
    Open(120, 80);
    RECT before = {};
    GetWindowRect(run->Preview(), &before);
    const POINT caption = {before.left + 150, before.top + GetSystemMetrics(SM_CYFRAME) +
                                                  GetSystemMetrics(SM_CYCAPTION) / 2};
    Hands::MoveTo(caption);
    Hands::Press();
    Hands::Glide(caption, {caption.x + 60, caption.y + 40}, 10);
    Hands::Release();
    RECT after = {};
    ASSERT_TRUE(Eventually([&] {
        GetWindowRect(run->Preview(), &after);
        return after.left == before.left + 60 && after.top == before.top + 40;
    }));
    const POINT corner = {after.right - 2, after.bottom - 2};
    Hands::MoveTo(corner);
    Hands::Press();
    Hands::Glide(corner, {corner.x - 300, corner.y - 300}, 15);
    Hands::Release();
    // It ends at a hundred pixels, or where its caption is at its narrowest.
    ASSERT_TRUE(Eventually([&] {
        GetWindowRect(run->Preview(), &after);
        return after.right - after.left < 200 && after.bottom - after.top < 200;
    }));
    user->Settle();
    GetWindowRect(run->Preview(), &after);
    EXPECT_GE(after.right - after.left, 100);
    EXPECT_GE(after.bottom - after.top, 100);
    const RECT frame = user->FrameRect();
    EXPECT_EQ(frame.right - frame.left,
              after.right - after.left - 2 * GetSystemMetrics(SM_CXFRAME));
}

}  // namespace
}  // namespace mv::windowstest
