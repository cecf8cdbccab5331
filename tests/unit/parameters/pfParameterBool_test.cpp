#include "parameters/pfParameterBool.h"

#include <gtest/gtest.h>

#include "platform/Random.h"
#include "support/AllocationFault.h"
#include "support/ParameterProbe.h"

namespace mv::test {

TEST(pfParameterBool, StartsFalse) {
    EXPECT_FALSE(pfParameterBool().Get());
}

TEST(pfParameterBool, SetRunsTheCallbackAlsoWithoutAChange) {
    pfParameterBool flag;
    CountingControl control;
    CallCounter counter;
    control.Bind(&flag);
    counter.WatchOver(flag);
    EXPECT_TRUE(flag.Set(true));
    EXPECT_EQ(control.refreshes, 1);
    EXPECT_EQ(counter.calls, 1);
    EXPECT_FALSE(flag.Set(true));
    EXPECT_EQ(control.refreshes, 1);
    EXPECT_EQ(counter.calls, 2);
    EXPECT_EQ(counter.last, &flag);
}

TEST(pfParameterBool, SetGivesBackUndoable) {
    pfParameterBool flag;
    flag.SetUndoable(false);
    EXPECT_FALSE(flag.Set(true));
    EXPECT_TRUE(flag.Get());
}

TEST(pfParameterBool, TheControlShowsTheValueBeforeTheCallbackRuns) {
    pfParameterBool flag;
    CountingControl control;
    control.Bind(&flag);
    flag.SetChangeCallback(
        [](pfParameter*, void* data) {
            EXPECT_EQ(static_cast<CountingControl*>(data)->refreshes, 1);
        },
        &control);
    flag.Set(true);
}

TEST(pfParameterBool, ValidateDoesNothing) {
    pfParameterBool flag;
    CallCounter counter;
    counter.WatchOver(flag);
    flag.Validate();
    EXPECT_EQ(counter.calls, 0);
}

TEST(pfParameterBool, RandomizeIsTrueOnAnEvenDrawWhateverTheAmount) {
    pfParameterBool flag;
    CallCounter counter;
    counter.WatchOver(flag);
    SeedRandom(99);
    PlainRandom plain(99);
    int trues = 0;
    for (int i = 0; i < 100; ++i) {
        flag.Randomize(i * 0.1);
        EXPECT_EQ(flag.Get(), plain.Next() % 2 == 0);
        trues += flag.Get() ? 1 : 0;
    }
    EXPECT_GT(trues, 20);
    EXPECT_LT(trues, 80);
    EXPECT_EQ(counter.calls, 100);
}

TEST(pfParameterBool, RandomizeDoesNothingWhenItIsNotRandomizable) {
    pfParameterBool flag;
    CallCounter counter;
    counter.WatchOver(flag);
    flag.SetRandomizable(false);
    SeedRandom(7);
    flag.Randomize(0.5);
    EXPECT_EQ(counter.calls, 0);
    EXPECT_EQ(NextRandom(), PlainRandom(7).Next());
}

TEST(pfParameterBool, ScriptKeysAreNoneOrOne) {
    pfParameterBool flag;
    hostapi::OSType key = 1;
    EXPECT_EQ(flag.GetScriptKeyCount(), 0);
    flag.GetScriptKeys(&key);
    EXPECT_EQ(key, 1u);
    flag.SetScriptKey(0x47414D41);
    EXPECT_EQ(flag.GetScriptKeyCount(), 1);
    flag.GetScriptKeys(&key);
    EXPECT_EQ(key, 0x47414D41u);
}

TEST(pfParameterBool, CreateUndoIsNullWithoutMemory) {
    pfParameterBool flag;
    const AllocationDrought drought;
    EXPECT_EQ(flag.CreateUndo(), nullptr);
}

}  // namespace mv::test
