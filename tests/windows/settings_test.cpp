// What is remembered between runs, looked at in the registry itself.
#include <algorithm>
#include <cstring>

#include "support/DialogTest.h"

namespace mv::windowstest {
namespace {

class Settings : public DialogTest {
protected:
    static RECT Place(HWND window) {
        RECT rect = {};
        GetWindowRect(window, &rect);
        return rect;
    }
};

TEST_F(Settings, FirstRunHasTheInterfaceInTheCornerAndASquareInTheMiddle) {
    Open(60, 40);
    EXPECT_EQ(Place(run->Interface()).left, 0);
    EXPECT_EQ(Place(run->Interface()).top, 0);
    const int screenWidth = GetSystemMetrics(SM_CXFULLSCREEN);
    const int screenHeight = GetSystemMetrics(SM_CYFULLSCREEN);
    const int side = screenWidth * 2 / 3;
    const RECT preview = Place(run->Preview());
    EXPECT_EQ(preview.right - preview.left, side);
    EXPECT_EQ(preview.bottom - preview.top, side);
    EXPECT_EQ(preview.left, (screenWidth - side) / 2);
    EXPECT_EQ(preview.top, (screenHeight - side) / 2);
}

TEST_F(Settings, WithAKeyButNoPreviewValuesThePreviewIsFourHundredSquare) {
    PutNumber("Interface Position X", 30);
    PutNumber("Interface Position Y", 40);
    Open(60, 40);
    const RECT preview = Place(run->Preview());
    EXPECT_EQ(preview.left, 200);
    EXPECT_EQ(preview.top, 200);
    EXPECT_EQ(preview.right, 600);
    EXPECT_EQ(preview.bottom, 600);
    EXPECT_EQ(Place(run->Interface()).left, 30);
    EXPECT_EQ(Place(run->Interface()).top, 40);
}

TEST_F(Settings, PlacesBesideTheScreensArePulledOntoThem) {
    if (HasWindowManager()) {
        GTEST_SKIP() << "a window manager pulls windows onto the screen by its own rules";
    }
    PutNumber("Interface Position X", 900000);
    PutNumber("Interface Position Y", static_cast<std::uint32_t>(-77));
    PutNumber("Preview Position X", static_cast<std::uint32_t>(-500));
    PutNumber("Preview Position Y", 900000);
    PutNumber("Preview Position Width", 300);
    PutNumber("Preview Position Height", 250);
    Open(60, 40);
    EXPECT_EQ(Place(run->Interface()).left, GetSystemMetrics(SM_CXVIRTUALSCREEN) - 50);
    EXPECT_EQ(Place(run->Interface()).top, 0);
    const RECT preview = Place(run->Preview());
    EXPECT_EQ(preview.left, 0);
    EXPECT_EQ(preview.top, GetSystemMetrics(SM_CYVIRTUALSCREEN) - 50);
    EXPECT_EQ(preview.right - preview.left, 300);
    EXPECT_EQ(preview.bottom - preview.top, 250);
}

TEST_F(Settings, PlacesAreStoredAlsoAfterCancel) {
    Open(60, 40);
    SetWindowPos(run->Interface(), nullptr, 111, 122, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
    SetWindowPos(run->Preview(), nullptr, 433, 144, 455, 366, SWP_NOZORDER);
    user->Settle();
    ASSERT_TRUE(user->PressCancel());
    EXPECT_EQ(NumberValue("Interface Position X"), 111u);
    EXPECT_EQ(NumberValue("Interface Position Y"), 122u);
    EXPECT_EQ(NumberValue("Preview Position X"), 433u);
    EXPECT_EQ(NumberValue("Preview Position Y"), 144u);
    EXPECT_EQ(NumberValue("Preview Position Width"), 455u);
    EXPECT_EQ(NumberValue("Preview Position Height"), 366u);
    EXPECT_EQ(NumberValue("Preview State"), 1u);
    EXPECT_EQ(TextValue("Preset Path"), "");
    EXPECT_EQ(BinaryValue("Interface HideHandle", false), (std::vector<std::uint8_t>{1}));
    EXPECT_EQ(BinaryValue("Interface FixedPreview", false), (std::vector<std::uint8_t>{1}));
    EXPECT_EQ(ValueNames(false).size(), 10u);
    EXPECT_FALSE(KeyExists(true));
    Open(60, 40);
    EXPECT_EQ(Place(run->Preview()).left, 433);
    EXPECT_EQ(Place(run->Preview()).right, 433 + 455);
}

TEST_F(Settings, AMaximisedPreviewReopensMaximisedWithItsStoredSize) {
    PutNumber("Preview Position X", 100);
    PutNumber("Preview Position Y", 90);
    PutNumber("Preview Position Width", 320);
    PutNumber("Preview Position Height", 310);
    PutNumber("Preview State", 3);
    Open(60, 40);
    EXPECT_TRUE(IsZoomed(run->Preview()));
    ASSERT_TRUE(user->PressOk());
    EXPECT_EQ(NumberValue("Preview State"), 3u);
    EXPECT_EQ(NumberValue("Preview Position X"), 100u);
    EXPECT_EQ(NumberValue("Preview Position Width"), 320u);
}

TEST_F(Settings, SwitchesAreStoredAsTheInverseOfTheirNames) {
    Open(60, 40);
    user->Click(1081);
    user->Click(1082);
    ASSERT_TRUE(user->PressCancel());
    EXPECT_EQ(BinaryValue("Interface HideHandle", false), (std::vector<std::uint8_t>{0}));
    EXPECT_EQ(BinaryValue("Interface FixedPreview", false), (std::vector<std::uint8_t>{0}));
    DialogRun::UnloadModule();
    Open(60, 40);
    EXPECT_TRUE(user->Checked(1081));
    EXPECT_TRUE(user->Checked(1082));
}

TEST_F(Settings, OkStoresTheLastValuesOfEveryPersistentParameter) {
    Open(60, 40);
    user->Type(1028, "0.625");
    user->Select(1009, 6);
    user->Click(1078);
    ASSERT_TRUE(user->PressOk());
    std::vector<std::string> names = ValueNames(true);
    std::sort(names.begin(), names.end());
    std::vector<std::string> expected = {"Origin_X",
                                         "Origin_Y",
                                         "Intensity",
                                         "Strength",
                                         "ZoomStart",
                                         "HoldoutRadius",
                                         "Mode",
                                         "InvertGradient",
                                         "GammaCorrection",
                                         "Contrast",
                                         "GammaCorrectionCorrective",
                                         "Hue",
                                         "Saturation",
                                         "Lightness",
                                         "SelectionLow",
                                         "SelectionHigh",
                                         "SelectionSoften",
                                         "SelectionClimax",
                                         "UseSizeSelection",
                                         "BlendMode",
                                         "SelectionShow"};
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(names, expected);
    double strength = 0.0;
    const auto bytes = BinaryValue("Strength", true);
    ASSERT_TRUE(bytes && bytes->size() == 8);
    std::memcpy(&strength, bytes->data(), 8);
    EXPECT_EQ(strength, 0.625);
    EXPECT_EQ(BinaryValue("BlendMode", true), (std::vector<std::uint8_t>{7, 0, 0, 0}));
    EXPECT_EQ(BinaryValue("GammaCorrection", true), (std::vector<std::uint8_t>{0}));
    DialogRun::UnloadModule();
    Open(60, 40);
    EXPECT_EQ(user->Text(1028), "0.625");
    EXPECT_EQ(user->Selected(1009), 6);
    EXPECT_FALSE(user->Checked(1078));
    EXPECT_FALSE(user->Enabled(1004));
}

TEST_F(Settings, ValuesOfTheWrongSizeAreLeftAlone) {
    const double half = 0.5;
    const float single = 0.75f;
    const std::int32_t ninety = 90;
    PutBinary("Strength", &single, sizeof single, true);
    PutBinary("Intensity", &half, sizeof half, true);
    PutBinary("BlendMode", &ninety, sizeof ninety, true);
    PutBinary("Origin_X", &half, sizeof half, true);
    PutBinary("Contrast", "123456789", 9, true);
    Open(60, 40);
    EXPECT_EQ(user->Text(1028), "0.25");
    EXPECT_EQ(user->Text(1013), "0.5");
    EXPECT_EQ(user->Selected(1009), 0);
    EXPECT_EQ(user->Text(1031), "30");
    EXPECT_EQ(user->Text(1039), "0");
}

TEST_F(Settings, APresetPathThatIsTooLongStaysEmpty) {
    PutText("Preset Path", std::string(256, 'x'));
    Open(60, 40);
    EXPECT_FALSE(user->Enabled(1001));
    ASSERT_TRUE(user->PressCancel());
    EXPECT_EQ(TextValue("Preset Path"), "");
    PutText("Preset Path", std::string(255, 'x'));
    Open(60, 40);
    EXPECT_TRUE(user->Enabled(1001));
}

}  // namespace
}  // namespace mv::windowstest
