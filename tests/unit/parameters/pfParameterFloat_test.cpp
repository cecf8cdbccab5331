#include "parameters/pfParameterFloat.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "platform/Random.h"
#include "support/AllocationFault.h"
#include "support/ParameterProbe.h"

namespace mv::test {

namespace {
constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
}  // namespace

TEST(pfParameterFloat, StartsAtZeroWithASoftRangeOfZeroToOne) {
    const pfParameterFloat number;
    EXPECT_EQ(number.Get(), 0.0);
    EXPECT_EQ(number.GetMinimum(), 0.0);
    EXPECT_EQ(number.GetMaximum(), 1.0);
    EXPECT_FALSE(number.GetMinimumHard());
    EXPECT_FALSE(number.GetMaximumHard());
}

TEST(pfParameterFloat, ASoftMaximumLetsALargerValueStand) {
    pfParameterFloat number;
    CountingControl control;
    number.SetMinimum(0.0, true);
    number.SetMaximum(5.0, false);
    number.Set(7.5);
    control.Bind(&number);
    number.Validate();
    EXPECT_EQ(number.Get(), 7.5);
    EXPECT_EQ(control.refreshes, 0);
}

TEST(pfParameterFloat, AHardMaximumPullsTheValueBackAndRefreshesOnce) {
    pfParameterFloat number;
    CountingControl control;
    CallCounter counter;
    number.SetMaximum(5.0, true);
    number.Set(7.5);
    control.Bind(&number);
    counter.WatchOver(number);
    number.Validate();
    EXPECT_EQ(number.Get(), 5.0);
    EXPECT_EQ(control.refreshes, 1);
    EXPECT_EQ(counter.calls, 1);
}

TEST(pfParameterFloat, AHardMinimumPullsTheValueUp) {
    pfParameterFloat number;
    number.SetMinimum(0.0, true);
    number.Set(-1.0);
    number.Validate();
    EXPECT_EQ(number.Get(), 0.0);
}

TEST(pfParameterFloat, SetDoesNotLookAtTheRange) {
    pfParameterFloat number;
    number.SetMaximum(1.0, true);
    EXPECT_TRUE(number.Set(2.0));
    EXPECT_EQ(number.Get(), 2.0);
}

TEST(pfParameterFloat, SetWithThePresentValueRunsTheCallbackAndChangesNothing) {
    pfParameterFloat number;
    CountingControl control;
    CallCounter counter;
    number.Set(0.5);
    control.Bind(&number);
    counter.WatchOver(number);
    EXPECT_FALSE(number.Set(0.5));
    EXPECT_EQ(control.refreshes, 0);
    EXPECT_EQ(counter.calls, 1);
}

TEST(pfParameterFloat, SetGivesBackUndoable) {
    pfParameterFloat number;
    number.SetUndoable(false);
    EXPECT_FALSE(number.Set(0.5));
    EXPECT_EQ(number.Get(), 0.5);
}

TEST(pfParameterFloat, ValidateRunsTheCallbackAlsoWithoutAChange) {
    pfParameterFloat number;
    CallCounter counter;
    counter.WatchOver(number);
    number.Validate();
    EXPECT_EQ(counter.calls, 1);
}

TEST(pfParameterFloat, WhatIsNoNumberIsNoChange) {
    pfParameterFloat number;
    CallCounter counter;
    number.Set(0.5);
    counter.WatchOver(number);
    EXPECT_FALSE(number.Set(kNoNumber));
    EXPECT_EQ(number.Get(), 0.5);
    EXPECT_EQ(counter.calls, 1);
}

TEST(pfParameterFloat, InfinityIsStoredAndPulledBackByAHardBound) {
    pfParameterFloat number;
    number.SetMaximum(1.0, true);
    EXPECT_TRUE(number.Set(kInfinity));
    EXPECT_TRUE(std::isinf(number.Get()));
    number.Validate();
    EXPECT_EQ(number.Get(), 1.0);
}

TEST(pfParameterFloat, RandomizeMovesByTheRangeTimesTheAmount) {
    pfParameterFloat number;
    CountingControl control;
    CallCounter counter;
    number.SetMinimum(-1.0, true);
    number.SetMaximum(1.0, true);
    number.Set(0.25);
    control.Bind(&number);
    counter.WatchOver(number);
    SeedRandom(5);
    number.Randomize(0.5);
    // No fold: 0.25 can move by 0.5 at most.
    EXPECT_DOUBLE_EQ(number.Get(), 0.25 + 2.0 * (PlainRandom(5).NextScaled() - 0.5) * 0.5);
    EXPECT_EQ(control.refreshes, 1);
    // Once for the change and once for the validation.
    EXPECT_EQ(counter.calls, 2);
}

TEST(pfParameterFloat, TheFoldRangeIsAWholeNumber) {
    // Meant as it is: a range of 1.5 folds at 1.
    pfParameterFloat number;
    number.SetMaximum(1.5, false);
    number.Set(1.25);
    number.Randomize(0.0);
    EXPECT_EQ(number.Get(), 0.75);
}

TEST(pfParameterFloat, ARangeBelowOneFoldsAtZeroOnly) {
    pfParameterFloat number;
    number.SetMaximum(0.5, false);
    number.Set(-0.25);
    number.Randomize(0.0);
    EXPECT_EQ(number.Get(), 0.25);
    number.Set(3.0);
    number.Randomize(0.0);
    EXPECT_EQ(number.Get(), 3.0);
}

TEST(pfParameterFloat, AnAmountAboveTwoIsNotCapped) {
    pfParameterFloat number;
    number.SetMaximum(1000.0, false);
    number.Set(500.0);
    // A seed whose draw lies near the middle, so that three times the move still needs no fold.
    std::uint32_t seed = 1;
    while (std::fabs(PlainRandom(seed).NextScaled() - 0.6) > 0.01) {
        ++seed;
    }
    SeedRandom(seed);
    number.Randomize(3.0);
    const double move = 1000.0 * (PlainRandom(seed).NextScaled() - 0.5) * 3.0;
    EXPECT_GT(move, 250.0);
    EXPECT_DOUBLE_EQ(number.Get(), 500.0 + move);
}

TEST(pfParameterFloat, RandomizeIsDefinedForEveryNumber) {
    const double values[] = {0.0,        -1.0,      1e300,  -1e300,      kInfinity,
                             -kInfinity, kNoNumber, 1e-320, 4294967296.0};
    for (const double amount : values) {
        for (const double value : values) {
            for (const double end : values) {
                pfParameterFloat number;
                number.SetMinimum(-end, false);
                number.SetMaximum(end, false);
                number.Set(value);
                number.Randomize(amount);
            }
        }
    }
    pfParameterFloat number;
    number.Set(kInfinity);
    number.Randomize(1.0);
    EXPECT_EQ(number.Get(), kInfinity);
}

TEST(pfParameterFloat, RandomizeDoesNothingWhenItIsNotRandomizable) {
    pfParameterFloat number;
    CallCounter counter;
    counter.WatchOver(number);
    number.SetRandomizable(false);
    SeedRandom(7);
    number.Randomize(0.5);
    EXPECT_EQ(counter.calls, 0);
    EXPECT_EQ(NextRandom(), PlainRandom(7).Next());
}

TEST(pfParameterFloat, ScriptKeysAreNoneOrOne) {
    pfParameterFloat number;
    hostapi::OSType key = 1;
    EXPECT_EQ(number.GetScriptKeyCount(), 0);
    number.GetScriptKeys(&key);
    EXPECT_EQ(key, 1u);
    number.SetScriptKey(9);
    EXPECT_EQ(number.GetScriptKeyCount(), 1);
    number.GetScriptKeys(&key);
    EXPECT_EQ(key, 9u);
}

TEST(pfParameterFloat, CreateUndoIsNullWithoutMemory) {
    pfParameterFloat number;
    const AllocationDrought drought;
    EXPECT_EQ(number.CreateUndo(), nullptr);
}

}  // namespace mv::test
