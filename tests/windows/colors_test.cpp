// Swatches, dials and whole numbers in the dialog, which only a filter made for this test has.
#include <windows.h>

#include <commctrl.h>

#include <array>
#include <cmath>
#include <cstring>

#include "support/DialogTest.h"

namespace mv::windowstest {
namespace {

constexpr int kSwatch = 1201;
constexpr int kDial = 1202;
constexpr int kTurns = 1203;
constexpr int kDegrees = 1204;
constexpr int kCount = 1205;
constexpr int kCountSlider = 1206;
constexpr int kUndo = 1004;

class Colors : public DialogTest {
protected:
    void SetUp() override {
        DialogTest::SetUp();
        DialogRun::UseModule(host::DefaultModulePath().parent_path() / "tests/color_filter.8bf");
        PutNumber("Preview Position X", 400);
        PutNumber("Preview Position Y", 20);
        PutNumber("Preview Position Width", 300);
        PutNumber("Preview Position Height", 300);
    }
    void TearDown() override {
        DialogTest::TearDown();
        DialogRun::UseModule({});
    }

    RECT Place(int id) const {
        RECT rect = {};
        GetWindowRect(user->Control(id), &rect);
        MapWindowPoints(nullptr, run->Interface(), reinterpret_cast<POINT*>(&rect), 2);
        return rect;
    }
    POINT Middle(int id) const {
        const RECT rect = Place(id);
        return {(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
    }
    void Mouse(UINT message, POINT point) const {
        SendMessageA(run->Interface(), message, 0,
                     MAKELPARAM(static_cast<WORD>(point.x), static_cast<WORD>(point.y)));
    }
    // From the dial's centre: right and up.
    POINT OnDial(int right, int up) const {
        const POINT centre = Middle(kDial);
        return {centre.x + right, centre.y - up};
    }
    std::array<double, 3> Tint() { return {Number("TINR"), Number("TING"), Number("TINB")}; }

    COLORREF Pixel(HWND window, POINT point) const {
        const HDC context = GetDC(window);
        const COLORREF color = GetPixel(context, point.x, point.y);
        ReleaseDC(window, context);
        return color;
    }
};

TEST_F(Colors, ASwatchIsAFrameWithItsColor) {
    Open(40, 30);
    const RECT rect = Place(kSwatch);
    EXPECT_EQ(Pixel(run->Interface(), Middle(kSwatch)), RGB(255, 127, 63));
    for (const POINT corner : {POINT{rect.left, rect.top}, POINT{rect.right - 1, rect.bottom - 1},
                               POINT{rect.left + 5, rect.top}, POINT{rect.left, rect.top + 5}}) {
        EXPECT_EQ(Pixel(run->Interface(), corner), RGB(0, 0, 0));
    }
    EXPECT_EQ(Pixel(run->Interface(), {rect.left + 1, rect.top + 1}), RGB(255, 127, 63));
}

TEST_F(Colors, AGrayImageMakesTheSwatchGrayAndKeepsItSo) {
    Prepare(host::MakeDocument(DrawPicture(40, 30, 1), false));
    Open();
    const double gray = 0.292687786 + 0.5 * 0.552149646 + 0.25 * 0.155162568;
    const auto byte = static_cast<BYTE>(gray * 255);
    EXPECT_EQ(Pixel(run->Interface(), Middle(kSwatch)), RGB(byte, byte, byte));
    ASSERT_TRUE(user->PressOk());
    for (const double channel : Tint()) {
        // Weighed again at each painting: the weights add up to one.
        EXPECT_NEAR(channel, gray, 1e-6);
    }
}

TEST_F(Colors, AClickOnTheSwatchAsksTheHostForAColorInOneStep) {
    Prepare(ColorDocument(40, 30));
    std::array<int, 3> asked = {};
    bool disabled = false;
    bool answers = true;
    run->Session().Hooks().chooseColor = [&](hostapi::ColorServicesInfo* info) {
        disabled = !IsWindowEnabled(run->Interface()) && !IsWindowEnabled(run->Preview());
        for (std::size_t i = 0; i < 3; ++i) {
            asked[i] = info->colorComponents[i];
            info->colorComponents[i] = static_cast<std::int16_t>(10 + 100 * i);
        }
        return answers ? hostapi::noErr : hostapi::userCanceledErr;
    };
    Open();
    Mouse(WM_LBUTTONDOWN, Middle(kSwatch));
    Mouse(WM_LBUTTONUP, Middle(kSwatch));
    user->Settle();
    EXPECT_TRUE(disabled);
    EXPECT_EQ(asked, (std::array<int, 3>{255, 127, 63}));
    EXPECT_TRUE(IsWindowEnabled(run->Interface()));
    EXPECT_TRUE(IsWindowEnabled(run->Preview()));
    EXPECT_EQ(Pixel(run->Interface(), Middle(kSwatch)), RGB(10, 110, 210));
    const RECT frame = user->FrameRect();
    EXPECT_EQ(user->ShootPreview().At((frame.left + frame.right) / 2 - 15,
                                      (frame.top + frame.bottom) / 2),
              RGB(10, 110, 210));
    answers = false;
    Mouse(WM_LBUTTONDOWN, Middle(kSwatch));
    user->Settle();
    EXPECT_EQ(Pixel(run->Interface(), Middle(kSwatch)), RGB(10, 110, 210));
    user->Click(kUndo);
    EXPECT_FALSE(user->Enabled(kUndo));
    EXPECT_EQ(Pixel(run->Interface(), Middle(kSwatch)), RGB(255, 127, 63));
    user->Click(1010);
    ASSERT_TRUE(user->PressOk());
    EXPECT_DOUBLE_EQ(Tint()[2], 210 * 0.00392156862745098);
}

TEST_F(Colors, WithoutAColorServiceTheSystemsOwnDialogAsks) {
    Prepare(ColorDocument(40, 30));
    run->Session().Record().colorServices = nullptr;
    Open();
    for (const int answer : {IDCANCEL, IDOK}) {
        PostMessageA(run->Interface(), WM_LBUTTONDOWN, 0,
                     MAKELPARAM(Middle(kSwatch).x, Middle(kSwatch).y));
        const HWND box = AwaitThreadWindow(run->ThreadId(), "Color");
        ASSERT_NE(box, nullptr);
        // The red, green and blue of the full dialog.
        const int edits[] = {0x2C2, 0x2C3, 0x2C4};
        const char* const values[] = {"255", "127", "63"};
        for (int i = 0; i < 3; ++i) {
            char text[16] = {};
            SendDlgItemMessageA(box, edits[i], WM_GETTEXT, sizeof text,
                                reinterpret_cast<LPARAM>(text));
            EXPECT_STREQ(text, values[i]);
        }
        if (answer == IDOK) {
            for (const int edit : edits) {
                SendDlgItemMessageA(box, edit, WM_SETTEXT, 0, reinterpret_cast<LPARAM>("51"));
            }
        }
        PostMessageA(box, WM_COMMAND, static_cast<WPARAM>(answer), 0);
        ASSERT_TRUE(Eventually([&] { return !IsWindow(box); }));
        user->Settle();
        EXPECT_TRUE(IsWindowEnabled(run->Interface()));
        EXPECT_EQ(user->Enabled(kUndo), answer == IDOK);
    }
    ASSERT_TRUE(user->PressOk());
    for (const double channel : Tint()) {
        EXPECT_NEAR(channel, 0.2, 0.005);
    }
}

TEST_F(Colors, ARightClickOnTheSwatchPicksFromThePreviewUntilItsButtonGoesUp) {
    Open(100, 80);
    const RECT frame = user->FrameRect();
    const POINT middle = {(frame.left + frame.right) / 2, (frame.top + frame.bottom) / 2};
    Mouse(WM_RBUTTONUP, Middle(kSwatch));
    EXPECT_TRUE(user->Enabled(kUndo));
    EXPECT_NE(GetClassLongPtrA(run->Preview(), GCLP_HCURSOR), 0u);
    // Beside the picture is gray; the picture's right half is darker.
    user->PreviewMouse(WM_LBUTTONDOWN, {frame.left + 3, frame.top + 3}, MK_LBUTTON);
    user->PreviewMouse(WM_MOUSEMOVE, {frame.left + 3, frame.top + 3}, MK_LBUTTON);
    user->Settle();
    EXPECT_EQ(Pixel(run->Interface(), Middle(kSwatch)), RGB(187, 187, 187));
    user->PreviewMouse(WM_MOUSEMOVE, {middle.x + 20, middle.y}, MK_LBUTTON);
    user->Settle();
    EXPECT_EQ(Pixel(run->Interface(), Middle(kSwatch)), RGB(93, 93, 93));
    user->PreviewMouse(WM_LBUTTONUP, {middle.x + 20, middle.y});
    EXPECT_EQ(GetClassLongPtrA(run->Preview(), GCLP_HCURSOR), 0u);
    // The pick is over.
    user->PreviewMouse(WM_MOUSEMOVE, {frame.left + 3, frame.top + 3});
    user->Settle();
    EXPECT_EQ(Pixel(run->Interface(), Middle(kSwatch)), RGB(93, 93, 93));
    user->Click(kUndo);
    EXPECT_FALSE(user->Enabled(kUndo));
    EXPECT_EQ(Pixel(run->Interface(), Middle(kSwatch)), RGB(255, 127, 63));
}

TEST_F(Colors, APickEndsInTheInterfaceToo) {
    Open(100, 80);
    Mouse(WM_RBUTTONUP, Middle(kSwatch));
    Mouse(WM_LBUTTONUP, {2, 2});
    const RECT frame = user->FrameRect();
    user->PreviewMouse(WM_MOUSEMOVE, {frame.left + 3, frame.top + 3});
    user->Settle();
    EXPECT_EQ(Pixel(run->Interface(), Middle(kSwatch)), RGB(255, 127, 63));
    ASSERT_TRUE(user->PressOk());
    EXPECT_DOUBLE_EQ(Tint()[1], 0.5);
}

TEST_F(Colors, ADialIsADiscWithAHubAndAPointer) {
    Open(40, 30);
    EXPECT_EQ(Pixel(run->Interface(), OnDial(0, 0)), RGB(0, 0, 0));
    EXPECT_EQ(Pixel(run->Interface(), OnDial(-3, -2)), RGB(0, 0, 0));
    // Half the smaller side long, at 30 degrees; opposite of it all is white.
    const RECT rect = Place(kDial);
    const double radius = std::min(rect.right - rect.left, rect.bottom - rect.top) / 2 * 0.7;
    const int right = static_cast<int>(radius * std::cos(0.5235987755982988));
    const int up = static_cast<int>(radius * std::sin(0.5235987755982988));
    EXPECT_EQ(Pixel(run->Interface(), OnDial(right, up)), RGB(0, 0, 0));
    EXPECT_EQ(Pixel(run->Interface(), OnDial(-right, -up)), RGB(255, 255, 255));
    EXPECT_EQ(Pixel(run->Interface(), OnDial(right, -up)), RGB(255, 255, 255));
}

TEST_F(Colors, ADraggedDialCountsTurnsInOneStep) {
    Open(40, 30);
    // The edits are filled with the first change; it is meant.
    EXPECT_EQ(user->Text(kTurns), "");
    EXPECT_EQ(user->Text(kDegrees), "");
    Mouse(WM_LBUTTONDOWN, OnDial(15, 0));
    EXPECT_EQ(user->Text(kDegrees), "0");
    EXPECT_TRUE(user->Enabled(kUndo));
    EXPECT_EQ(user->FocusedWindow(), nullptr);
    const POINT way[] = {OnDial(0, 15), OnDial(-15, 0), OnDial(0, -15), OnDial(15, -1),
                         OnDial(0, 15)};
    for (const POINT point : way) {
        Mouse(WM_MOUSEMOVE, point);
    }
    EXPECT_EQ(user->Text(kTurns), "1");
    EXPECT_NEAR(user->Number(kDegrees), 90, 1e-4);
    // Backwards through zero, twice.
    for (const POINT point : {OnDial(15, 0), OnDial(0, -15), OnDial(-15, 0), OnDial(0, 15),
                              OnDial(15, 0), OnDial(0, -15)}) {
        Mouse(WM_MOUSEMOVE, point);
    }
    EXPECT_EQ(user->Text(kTurns), "-1");
    EXPECT_NEAR(user->Number(kDegrees), 270, 1e-4);
    // The centre has no direction.
    Mouse(WM_MOUSEMOVE, OnDial(0, 0));
    EXPECT_NEAR(user->Number(kDegrees), 270, 1e-4);
    Mouse(WM_LBUTTONUP, OnDial(0, -15));
    Mouse(WM_MOUSEMOVE, OnDial(0, 15));
    EXPECT_NEAR(user->Number(kDegrees), 270, 1e-4);
    user->Click(kUndo);
    EXPECT_EQ(user->Text(kDegrees), "30");
    EXPECT_FALSE(user->Enabled(kUndo));
    user->Click(1010);
    ASSERT_TRUE(user->PressOk());
    EXPECT_NEAR(Number("ANGL"), -90, 1e-4);
}

TEST_F(Colors, AnAngleIsTypedInTurnsAndDegrees) {
    Open(40, 30);
    // What stands nowhere counts as nothing.
    user->Type(kTurns, "2");
    EXPECT_EQ(user->Text(kTurns), "2");
    EXPECT_EQ(user->Text(kDegrees), "0");
    user->Type(kDegrees, "400");
    EXPECT_EQ(user->Text(kDegrees), "400");
    user->Focus(IDOK);
    user->Settle();
    EXPECT_EQ(user->Text(kTurns), "3");
    EXPECT_EQ(user->Text(kDegrees), "40");
    // And so does what cannot be read.
    user->Type(kTurns, "x");
    user->Focus(IDOK);
    user->Settle();
    ASSERT_TRUE(user->PressOk());
    EXPECT_DOUBLE_EQ(Number("ANGL"), 40);
}

TEST_F(Colors, AWholeNumberIsTypedSlidAndCut) {
    Open(40, 30);
    EXPECT_EQ(SendMessageA(user->Control(kCountSlider), TBM_GETRANGEMIN, 0, 0), -20);
    EXPECT_EQ(SendMessageA(user->Control(kCountSlider), TBM_GETRANGEMAX, 0, 0), 100);
    EXPECT_EQ(SendMessageA(user->Control(kCountSlider), TBM_GETPAGESIZE, 0, 0), 12);
    EXPECT_EQ(user->Text(kCount), "7");
    EXPECT_EQ(user->SliderPosition(kCountSlider), 7);
    user->Type(kCount, "-3.9");
    EXPECT_EQ(user->SliderPosition(kCountSlider), -3);
    user->Focus(kCountSlider);
    user->Settle();
    EXPECT_EQ(user->Text(kCount), "-3");
    user->SlideTo(kCountSlider, 55);
    user->EndSlide(kCountSlider);
    EXPECT_EQ(user->Text(kCount), "55");
    ASSERT_TRUE(user->PressOk());
    EXPECT_EQ(Recorded<std::int32_t>("CNTT"), 55);
}

TEST_F(Colors, ColorsAndWholeNumbersAreRememberedWhole) {
    const double red = 0.125;
    PutBinary("Tint_red", &red, sizeof red, true);
    PutBinary("Tint_green", &red, sizeof red, true);
    const std::int32_t count = 12;
    PutBinary("Count", &count, sizeof count, true);
    Open(40, 30);
    // Without the third channel the colour stays as it is.
    EXPECT_EQ(Pixel(run->Interface(), Middle(kSwatch)), RGB(255, 127, 63));
    EXPECT_EQ(user->Text(kCount), "12");
    ASSERT_TRUE(user->PressOk());
    for (const char* name : {"Tint_red", "Tint_green", "Tint_blue", "Angle"}) {
        const auto value = BinaryValue(name, true);
        ASSERT_TRUE(value.has_value()) << name;
        EXPECT_EQ(value->size(), 8u) << name;
    }
    EXPECT_EQ(BinaryValue("Count", true), (std::vector<std::uint8_t>{12, 0, 0, 0}));
    PutBinary("Tint_red", &red, sizeof red, true);
    PutBinary("Tint_green", &red, sizeof red, true);
    PutBinary("Tint_blue", &red, sizeof red, true);
    Open(40, 30);
    EXPECT_EQ(Pixel(run->Interface(), Middle(kSwatch)), RGB(31, 31, 31));
}

}  // namespace
}  // namespace mv::windowstest
