#include "parameters/pfParameterInt.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

#include "platform/Random.h"
#include "support/AllocationFault.h"
#include "support/ParameterProbe.h"

namespace mv::test {

namespace {
constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kHighest = std::numeric_limits<std::int32_t>::max();
}  // namespace

TEST(pfParameterInt, StartsAtZeroWithASoftRangeOfZeroToOne) {
    const pfParameterInt number;
    EXPECT_EQ(number.Get(), 0);
    EXPECT_EQ(number.GetMinimum(), 0);
    EXPECT_EQ(number.GetMaximum(), 1);
    EXPECT_FALSE(number.GetMinimumHard());
    EXPECT_FALSE(number.GetMaximumHard());
}

TEST(pfParameterInt, SetRefreshesOnAChangeAndNeverRunsTheCallback) {
    pfParameterInt number;
    CountingControl control;
    CallCounter counter;
    control.Bind(&number);
    counter.WatchOver(number);
    EXPECT_TRUE(number.Set(5));
    EXPECT_FALSE(number.Set(5));
    EXPECT_EQ(control.refreshes, 1);
    EXPECT_EQ(counter.calls, 0);
    number.SetUndoable(false);
    EXPECT_FALSE(number.Set(6));
    EXPECT_EQ(number.Get(), 6);
}

TEST(pfParameterInt, SetDoesNotLookAtTheRange) {
    pfParameterInt number;
    number.SetMaximum(10, true);
    number.Set(11);
    EXPECT_EQ(number.Get(), 11);
}

TEST(pfParameterInt, ValidatePullsBackToHardBoundsOnly) {
    pfParameterInt number;
    CountingControl control;
    CallCounter counter;
    number.SetMinimum(-5, true);
    number.SetMaximum(10, false);
    number.Set(20);
    control.Bind(&number);
    counter.WatchOver(number);
    number.Validate();
    EXPECT_EQ(number.Get(), 20);
    EXPECT_EQ(control.refreshes, 0);
    number.SetMaximum(10, true);
    number.Validate();
    EXPECT_EQ(number.Get(), 10);
    EXPECT_EQ(control.refreshes, 1);
    number.Set(-6);
    number.Validate();
    EXPECT_EQ(number.Get(), -5);
    EXPECT_EQ(counter.calls, 0);
}

TEST(pfParameterInt, TheHardMaximumHasTheLastWord) {
    pfParameterInt number;
    number.SetMinimum(10, true);
    number.SetMaximum(5, true);
    number.Validate();
    EXPECT_EQ(number.Get(), 5);
}

TEST(pfParameterInt, RandomizeMovesWithinTheRangeAndRoundsTheHalfUp) {
    pfParameterInt number;
    CallCounter counter;
    number.SetMinimum(0, true);
    number.SetMaximum(100, true);
    number.Set(50);
    counter.WatchOver(number);
    SeedRandom(11);
    number.Randomize(0.5);
    // No fold: 50 can move by 25 at most.
    const double moved = 50.0 + 100.0 * (PlainRandom(11).NextScaled() - 0.5) * 0.5;
    EXPECT_EQ(number.Get(), std::floor(moved + 0.5));
    EXPECT_EQ(counter.calls, 0);
}

TEST(pfParameterInt, RandomizeByNothingFoldsAValueOutsideTheRange) {
    pfParameterInt number;
    number.SetMinimum(10, false);
    number.SetMaximum(20, false);
    number.Set(23);
    number.Randomize(0.0);
    // 13 above the minimum folds to 7 above it.
    EXPECT_EQ(number.Get(), 17);
    number.Set(20);
    number.Randomize(0.0);
    // 10 folds to 9.9999, and a half on top of 19.9999 truncates to the end again.
    EXPECT_EQ(number.Get(), 20);
}

TEST(pfParameterInt, RandomizeIsDefinedForTheWidestRange) {
    pfParameterInt number;
    number.SetMinimum(kLowest, true);
    number.SetMaximum(kHighest, true);
    SeedRandom(3);
    for (int i = 0; i < 100; ++i) {
        number.Randomize(1e300);
        number.Randomize(1.0);
        number.Randomize(std::numeric_limits<double>::quiet_NaN());
    }
    EXPECT_GE(number.Get(), kLowest);
}

TEST(pfParameterInt, RandomizeDoesNothingWhenItIsNotRandomizable) {
    pfParameterInt number;
    number.SetRandomizable(false);
    SeedRandom(7);
    number.Randomize(0.5);
    EXPECT_EQ(NextRandom(), PlainRandom(7).Next());
}

TEST(pfParameterInt, ScriptKeysAreNoneOrOne) {
    pfParameterInt number;
    hostapi::OSType key = 1;
    EXPECT_EQ(number.GetScriptKeyCount(), 0);
    number.GetScriptKeys(&key);
    EXPECT_EQ(key, 1u);
    number.SetScriptKey(9);
    EXPECT_EQ(number.GetScriptKeyCount(), 1);
    number.GetScriptKeys(&key);
    EXPECT_EQ(key, 9u);
}

TEST(pfParameterInt, CreateUndoIsNullWithoutMemory) {
    pfParameterInt number;
    const AllocationDrought drought;
    EXPECT_EQ(number.CreateUndo(), nullptr);
}

}  // namespace mv::test
