#include "parameters/pfParameterRGB.h"

#include <gtest/gtest.h>

#include <limits>

#include "platform/Random.h"
#include "support/AllocationFault.h"
#include "support/ParameterProbe.h"

namespace mv::test {

namespace {
constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
}

TEST(pfParameterRGB, StartsWhite) {
    const pfParameterRGB colour;
    EXPECT_EQ(colour.GetRed(), 1.0);
    EXPECT_EQ(colour.GetGreen(), 1.0);
    EXPECT_EQ(colour.GetBlue(), 1.0);
}

TEST(pfParameterRGB, SetRefreshesOnceOnAChangeAndNeverRunsTheCallback) {
    pfParameterRGB colour;
    CountingControl control;
    CallCounter counter;
    control.Bind(&colour);
    counter.WatchOver(colour);
    EXPECT_TRUE(colour.Set(0.0, 0.5, 1.0));
    EXPECT_FALSE(colour.Set(0.0, 0.5, 1.0));
    EXPECT_TRUE(colour.Set(0.0, 0.5, 0.75));
    EXPECT_FALSE(colour.Set(kNoNumber, 0.5, 0.75));
    EXPECT_EQ(control.refreshes, 2);
    EXPECT_EQ(counter.calls, 0);
    colour.SetUndoable(false);
    EXPECT_FALSE(colour.Set(0.1, 0.2, 0.3));
    EXPECT_EQ(colour.GetGreen(), 0.2);
}

TEST(pfParameterRGB, ValidatePullsEveryChannelIntoTheRangeAndRefreshesOnce) {
    pfParameterRGB colour;
    CountingControl control;
    CallCounter counter;
    colour.Set(-0.5, 0.5, 1.5);
    control.Bind(&colour);
    counter.WatchOver(colour);
    colour.Validate();
    EXPECT_EQ(colour.GetRed(), 0.0);
    EXPECT_EQ(colour.GetGreen(), 0.5);
    EXPECT_EQ(colour.GetBlue(), 1.0);
    colour.Validate();
    EXPECT_EQ(control.refreshes, 1);
    EXPECT_EQ(counter.calls, 0);
}

TEST(pfParameterRGB, RandomizeDrawsRedGreenBlue) {
    pfParameterRGB colour;
    CallCounter counter;
    counter.WatchOver(colour);
    colour.Set(0.5, 0.5, 0.5);
    SeedRandom(31);
    colour.Randomize(0.5);
    PlainRandom plain(31);
    // No fold: each can move by 0.25 at most.
    EXPECT_DOUBLE_EQ(colour.GetRed(), 0.5 + (plain.NextScaled() - 0.5) * 0.5);
    EXPECT_DOUBLE_EQ(colour.GetGreen(), 0.5 + (plain.NextScaled() - 0.5) * 0.5);
    EXPECT_DOUBLE_EQ(colour.GetBlue(), 0.5 + (plain.NextScaled() - 0.5) * 0.5);
    EXPECT_EQ(counter.calls, 0);
}

TEST(pfParameterRGB, AnAmountAboveTwoActsAsTwo) {
    pfParameterRGB two;
    pfParameterRGB three;
    two.Set(0.3, 0.5, 0.9);
    three.Set(0.3, 0.5, 0.9);
    SeedRandom(17);
    two.Randomize(2.0);
    SeedRandom(17);
    three.Randomize(3.0);
    EXPECT_EQ(two.GetRed(), three.GetRed());
    EXPECT_EQ(two.GetGreen(), three.GetGreen());
    EXPECT_EQ(two.GetBlue(), three.GetBlue());
}

TEST(pfParameterRGB, RandomizeByNothingMovesAFullChannelInwards) {
    pfParameterRGB colour;
    colour.Set(1.0, 1.25, -0.25);
    colour.Randomize(0.0);
    EXPECT_EQ(colour.GetRed(), 0.9999);
    EXPECT_EQ(colour.GetGreen(), 0.75);
    EXPECT_EQ(colour.GetBlue(), 0.25);
}

TEST(pfParameterRGB, RandomizeDoesNothingWhenItIsNotRandomizable) {
    pfParameterRGB colour;
    colour.SetRandomizable(false);
    SeedRandom(7);
    colour.Randomize(0.5);
    EXPECT_EQ(colour.GetRed(), 1.0);
    EXPECT_EQ(NextRandom(), PlainRandom(7).Next());
}

TEST(pfParameterRGB, ScriptKeysArePackedWithoutTheZeroOnes) {
    pfParameterRGB colour;
    hostapi::OSType keys[3] = {1, 1, 1};
    EXPECT_EQ(colour.GetScriptKeyCount(), 0);
    colour.SetScriptKeys(5, 0, 7);
    EXPECT_EQ(colour.GetScriptKeyCount(), 2);
    colour.GetScriptKeys(keys);
    EXPECT_EQ(keys[0], 5u);
    EXPECT_EQ(keys[1], 7u);
    EXPECT_EQ(keys[2], 1u);
}

TEST(pfParameterRGB, CreateUndoIsNullWithoutMemory) {
    pfParameterRGB colour;
    const AllocationDrought drought;
    EXPECT_EQ(colour.CreateUndo(), nullptr);
}

}  // namespace mv::test
