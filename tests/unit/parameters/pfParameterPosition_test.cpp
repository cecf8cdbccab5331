#include "parameters/pfParameterPosition.h"

#include <gtest/gtest.h>

#include <limits>

#include "parameters/pfUndo.h"
#include "platform/Random.h"
#include "support/AllocationFault.h"
#include "support/ParameterProbe.h"

namespace mv::test {

namespace {
constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
}  // namespace

TEST(pfParameterPosition, StartsAtTheOriginWithTheCommonDefaults) {
    const pfParameterPosition position;
    EXPECT_EQ(position.GetX(), 0.0);
    EXPECT_EQ(position.GetY(), 0.0);
    EXPECT_EQ(position.GetName(), "");
    EXPECT_EQ(position.GetUI(), nullptr);
    EXPECT_TRUE(position.GetPersistent());
    EXPECT_TRUE(position.GetUndoable());
    EXPECT_TRUE(position.GetRandomizable());
    EXPECT_EQ(position.GetScriptKeyCount(), 0);
}

TEST(pfParameterPosition, SetRefreshesOnceOnAChangeAndNeverRunsTheCallback) {
    pfParameterPosition position;
    CountingControl control;
    CallCounter counter;
    control.Bind(&position);
    counter.WatchOver(position);
    EXPECT_TRUE(position.Set(0.25, 0.75));
    EXPECT_EQ(control.refreshes, 1);
    EXPECT_FALSE(position.Set(0.25, 0.75));
    EXPECT_EQ(control.refreshes, 1);
    EXPECT_TRUE(position.Set(0.25, 0.5));
    EXPECT_EQ(position.GetY(), 0.5);
    EXPECT_EQ(counter.calls, 0);
}

TEST(pfParameterPosition, SetGivesBackUndoable) {
    pfParameterPosition position;
    position.SetUndoable(false);
    EXPECT_FALSE(position.Set(0.25, 0.75));
    EXPECT_EQ(position.GetX(), 0.25);
}

TEST(pfParameterPosition, WhatIsNoNumberIsNoChange) {
    pfParameterPosition position;
    EXPECT_FALSE(position.Set(kNoNumber, kNoNumber));
    EXPECT_EQ(position.GetX(), 0.0);
    // A change of the other coordinate stores both.
    EXPECT_TRUE(position.Set(0.5, kNoNumber));
    EXPECT_EQ(position.GetX(), 0.5);
}

TEST(pfParameterPosition, HasNoRangeToValidate) {
    pfParameterPosition position;
    position.Set(-3.0, 1e300);
    position.Validate();
    EXPECT_EQ(position.GetX(), -3.0);
    EXPECT_EQ(position.GetY(), 1e300);
}

TEST(pfParameterPosition, ScriptKeysArePackedWithoutTheZeroOnes) {
    pfParameterPosition position;
    position.SetScriptKeys(0, 0x4F524959);
    hostapi::OSType keys[2] = {1, 1};
    EXPECT_EQ(position.GetScriptKeyCount(), 1);
    position.GetScriptKeys(keys);
    EXPECT_EQ(keys[0], 0x4F524959u);
    EXPECT_EQ(keys[1], 1u);
    position.SetScriptKeys(5, 6);
    EXPECT_EQ(position.GetScriptKeyCount(), 2);
    position.GetScriptKeys(keys);
    EXPECT_EQ(keys[0], 5u);
    EXPECT_EQ(keys[1], 6u);
}

TEST(pfParameterPosition, RandomizeDrawsXThenYAndFoldsBoth) {
    pfParameterPosition position;
    CountingControl control;
    CallCounter counter;
    position.Set(0.5, 0.25);
    control.Bind(&position);
    counter.WatchOver(position);
    SeedRandom(7);
    position.Randomize(0.5);
    PlainRandom plain(7);
    const double x = 0.5 + (plain.NextScaled() - 0.5) * 0.5;
    const double y = 0.25 + (plain.NextScaled() - 0.5) * 0.5;
    EXPECT_DOUBLE_EQ(position.GetX(), x);
    EXPECT_DOUBLE_EQ(position.GetY(), y < 0.0 ? -y : y);
    EXPECT_EQ(control.refreshes, 1);
    EXPECT_EQ(counter.calls, 0);
}

TEST(pfParameterPosition, RandomizeByNothingFoldsAPositionOutsideTheImage) {
    pfParameterPosition position;
    position.Set(1.25, -0.25);
    position.Randomize(0.0);
    EXPECT_EQ(position.GetX(), 0.75);
    EXPECT_EQ(position.GetY(), 0.25);
}

TEST(pfParameterPosition, RandomizeLeavesWhatIsNotFinite) {
    pfParameterPosition position;
    position.Set(kInfinity, -kInfinity);
    position.Randomize(1.0);
    EXPECT_EQ(position.GetX(), kInfinity);
    EXPECT_EQ(position.GetY(), -kInfinity);
}

TEST(pfParameterPosition, RandomizeDoesNothingWhenItIsNotRandomizable) {
    pfParameterPosition position;
    position.SetRandomizable(false);
    SeedRandom(7);
    position.Randomize(0.5);
    EXPECT_EQ(position.GetX(), 0.0);
    // Not even a draw was made.
    EXPECT_EQ(NextRandom(), PlainRandom(7).Next());
}

TEST(pfParameterPosition, CreateUndoIsNullWithoutMemory) {
    pfParameterPosition position;
    const AllocationDrought drought;
    EXPECT_EQ(position.CreateUndo(), nullptr);
}

}  // namespace mv::test
