#include "frame/pfFilterRadialBlur.h"

#include <gtest/gtest.h>

#include <cmath>

#include "parameters/pfParameterUI.h"
#include "support/TestRender.h"

namespace mv {
namespace {

using test::TestFilter;

double FloatOf(pfFilter& filter, const std::string& name) {
    for (int i = 0; i < filter.GetParameters().GetCount(); ++i) {
        auto* parameter = filter.GetParameters().GetParameter(i);
        if (parameter->GetName() == name) {
            return dynamic_cast<pfParameterFloat&>(*parameter).Get();
        }
    }
    ADD_FAILURE() << name;
    return 0.0;
}

pfParameter* Parameter(pfFilter& filter, int index) {
    return filter.GetParameters().GetParameter(index);
}

TEST(pfFilterRadialBlur, HoldsItsParametersInTableOrder) {
    TestFilter filter;
    const char* const names[] = {"Origin",
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
                                 "SelectionShow",
                                 "Randomize",
                                 "Randomize Button"};
    ASSERT_EQ(filter.GetParameters().GetCount(), 22);
    ASSERT_EQ(filter.GetControls().size(), 22u);
    for (int i = 0; i < 22; ++i) {
        EXPECT_EQ(Parameter(filter, i)->GetName(), names[i]);
        EXPECT_EQ(Parameter(filter, i)->GetUI(), filter.GetControl(i));
        EXPECT_EQ(Parameter(filter, i)->GetPersistent(), i < 20);
        EXPECT_EQ(Parameter(filter, i)->GetUndoable(), i < 20);
    }
}

// The constructor also assigns other values, which never show.
TEST(pfFilterRadialBlur, StartsOnTheDefaults) {
    TestFilter filter;
    const std::pair<const char*, double> defaults[] = {{"Intensity", 1.0},
                                                       {"Strength", 0.25},
                                                       {"ZoomStart", 0.5},
                                                       {"HoldoutRadius", 0.0},
                                                       {"Contrast", 0.0},
                                                       {"GammaCorrectionCorrective", 1.0},
                                                       {"Hue", 0.0},
                                                       {"Saturation", 0.0},
                                                       {"Lightness", 0.0},
                                                       {"SelectionLow", 0.0},
                                                       {"SelectionHigh", 255},
                                                       {"SelectionSoften", 0.0},
                                                       {"SelectionClimax", 1.0},
                                                       {"Randomize", 0.05}};
    for (const auto& [name, value] : defaults) {
        EXPECT_EQ(FloatOf(filter, name), value) << name;
    }
    EXPECT_EQ(dynamic_cast<pfParameterList&>(*Parameter(filter, 5)).Get(), 1);
    EXPECT_FALSE(dynamic_cast<pfParameterBool&>(*Parameter(filter, 6)).Get());
    EXPECT_TRUE(dynamic_cast<pfParameterBool&>(*Parameter(filter, 7)).Get());
    EXPECT_FALSE(dynamic_cast<pfParameterBool&>(*Parameter(filter, 17)).Get());
    EXPECT_EQ(dynamic_cast<pfParameterList&>(*Parameter(filter, 18)).GetEntryCount(), 23);
    EXPECT_EQ(dynamic_cast<pfParameterPosition&>(*Parameter(filter, 0)).GetX(), 0.5);
}

TEST(pfFilterRadialBlur, KeepsSoftBoundsAndEnforcesHardOnes) {
    TestFilter filter;
    filter.SetValue("ZoomStart", 0.7);
    filter.SetValue("Hue", 2.0);
    filter.SetValue("Intensity", 7.5);
    filter.SetValue("Strength", -1.0);
    filter.GetParameters().ValidateAll();
    EXPECT_EQ(FloatOf(filter, "ZoomStart"), 0.7);
    EXPECT_EQ(FloatOf(filter, "Hue"), 1.0);
    EXPECT_EQ(FloatOf(filter, "Intensity"), 7.5);
    EXPECT_EQ(FloatOf(filter, "Strength"), 0.0);
}

TEST(pfFilterRadialBlur, SpellsItsListEntriesAsTheyAre) {
    TestFilter filter;
    EXPECT_EQ(dynamic_cast<pfParameterList&>(*Parameter(filter, 5)).GetEntry(1), "abberative");
    EXPECT_EQ(dynamic_cast<pfParameterList&>(*Parameter(filter, 19)).GetEntry(3), "size selection");
    EXPECT_EQ(dynamic_cast<pfParameterList&>(*Parameter(filter, 18)).GetEntry(22),
              "(none) replace");
}

TEST(pfFilterRadialBlur, ResetLeavesRandomizeAndMakesOneUndoStep) {
    TestFilter filter;
    filter.GetUndoBuffer().SetEnabled(true);
    filter.SetValue("Randomize", 0.7);
    filter.SetValue("Strength", 0.9);
    filter.SetOrigin(0.1, 0.2);
    filter.Reset(true);
    EXPECT_EQ(FloatOf(filter, "Randomize"), 0.7);
    EXPECT_EQ(FloatOf(filter, "Strength"), 0.25);
    EXPECT_TRUE(filter.GetUndoBuffer().Undo());
    EXPECT_EQ(FloatOf(filter, "Strength"), 0.9);
    EXPECT_FALSE(filter.GetUndoBuffer().CanUndo());
    // The second of the two records of the origin holds the same state as the first.
    EXPECT_EQ(dynamic_cast<pfParameterPosition&>(*Parameter(filter, 0)).GetX(), 0.1);
}

struct ModeCase {
    std::int16_t imageMode;
    bool color;
};

// 32-bit RGB counts as no colour here; that is meant.
TEST(pfFilterRadialBlur, EnablesColorControlsByImageMode) {
    constexpr ModeCase kCases[] = {{3, true},   {7, true},   {11, true},  {16, false}, {1, false},
                                   {10, false}, {17, false}, {15, false}, {14, false}, {4, false}};
    for (const ModeCase& row : kCases) {
        TestFilter filter;
        filter.SetValue("Mode", 2);
        hostapi::FilterRecord record{};
        record.imageMode = row.imageMode;
        record.inNonLayerPlanes = 3;
        filter.UpdateInterface(&record);
        for (const int index : {5, 10, 11, 12}) {
            EXPECT_EQ(filter.GetControl(index)->GetEnabled(), row.color)
                << "mode " << row.imageMode << ", control " << index;
        }
        EXPECT_EQ(dynamic_cast<pfParameterList&>(*Parameter(filter, 5)).Get(), row.color ? 2 : 1);
        EXPECT_EQ(filter.GetControl(6)->GetEnabled(), row.color);
        EXPECT_FALSE(filter.GetControl(17)->GetEnabled());
    }
}

TEST(pfFilterRadialBlur, EnablesTheSizeSelectionWithAMask) {
    TestFilter filter;
    std::uint8_t mask = 0;
    hostapi::FilterRecord record{};
    record.maskData = &mask;
    filter.UpdateInterface(&record);
    EXPECT_TRUE(filter.GetControl(17)->GetEnabled());
    filter.UpdateInterface(nullptr);
    EXPECT_TRUE(filter.GetControl(17)->GetEnabled());
}

TEST(pfFilterRadialBlur, RandomizeButtonMakesOneStepAndSparesViewsAndBlend) {
    TestFilter filter;
    filter.GetUndoBuffer().SetEnabled(true);
    filter.SetValue("Randomize", 1.0);
    filter.SetValue("BlendMode", 7);
    filter.SetValue("Randomize Button", 1);
    EXPECT_EQ(dynamic_cast<pfParameterList&>(*Parameter(filter, 18)).Get(), 7);
    EXPECT_EQ(FloatOf(filter, "Randomize"), 1.0);
    EXPECT_TRUE(filter.GetUndoBuffer().Undo());
    EXPECT_EQ(FloatOf(filter, "Strength"), 0.25);
    EXPECT_FALSE(filter.GetUndoBuffer().CanUndo());
}

TEST(pfFilterRadialBlur, HandsTheEffectItsValuesInPixels) {
    TestFilter filter;
    filter.SetOrigin(0.25, 2.0);
    filter.SetValue("HoldoutRadius", 0.5);
    filter.SetValue("SelectionLow", 51.0);
    filter.SetValue("GammaCorrectionCorrective", 0.0);
    const RenderSettings settings = filter.MakeRenderSettings(30, 40);
    EXPECT_EQ(settings.centerX, 7.5);
    EXPECT_EQ(settings.centerY, 80.0);
    EXPECT_EQ(settings.holdoutPixels, 12.5);
    EXPECT_DOUBLE_EQ(settings.selectionLow, 0.2);
    EXPECT_DOUBLE_EQ(settings.gammaExponent, 1000.0);
    EXPECT_FALSE(settings.adjustOn);
}

TEST(pfFilterRadialBlur, BoundsACenterThatIsNoPlace) {
    TestFilter filter;
    filter.SetOrigin(std::nan(""), -1e300);
    const RenderSettings settings = filter.MakeRenderSettings(30, 40);
    EXPECT_EQ(settings.centerX, 0.0);
    EXPECT_EQ(settings.centerY, -1073741824.0);
}

TEST(pfFilter, CountsItsOwnCodes) {
    TestFilter filter;
    EXPECT_EQ(filter.StatusOk(), 0);
    EXPECT_EQ(filter.StatusOutOfMemory(), -108);
    EXPECT_EQ(filter.StatusAborted(), 2);
    EXPECT_EQ(filter.GetSourceChannelName(), "Source");
    EXPECT_EQ(filter.GetOutputChannelName(), "Output");
    double start = -1.0;
    double end = -1.0;
    filter.GetRange(&start, &end);
    EXPECT_EQ(start, 0.0);
    EXPECT_EQ(end, 1.0);
    EXPECT_TRUE(filter.GetParameterList()->empty());
    EXPECT_EQ(filter.GetChannelAccess("any")->scale, 1.0);
}

}  // namespace
}  // namespace mv
