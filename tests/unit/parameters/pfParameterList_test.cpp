#include "parameters/pfParameterList.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "platform/Random.h"
#include "support/AllocationFault.h"
#include "support/ParameterProbe.h"

namespace mv::test {

namespace {

void AddEntries(pfParameterList& list, int count) {
    for (int i = 1; i <= count; ++i) {
        list.AddEntry("entry " + std::to_string(i));
    }
}

}  // namespace

TEST(pfParameterList, StartsWithSelectionOneAndNoEntries) {
    const pfParameterList list;
    EXPECT_EQ(list.Get(), 1);
    EXPECT_EQ(list.GetEntryCount(), 0);
}

TEST(pfParameterList, EntriesAreCountedFromZeroAndEmptyOutside) {
    pfParameterList list;
    list.AddEntry("normal");
    list.AddEntry("abberative");
    EXPECT_EQ(list.GetEntryCount(), 2);
    EXPECT_EQ(list.GetEntry(0), "normal");
    EXPECT_EQ(list.GetEntry(1), "abberative");
    EXPECT_EQ(list.GetEntry(2), "");
    EXPECT_EQ(list.GetEntry(-1), "");
    list.ClearEntries();
    EXPECT_EQ(list.GetEntryCount(), 0);
    EXPECT_EQ(list.GetEntry(0), "");
}

TEST(pfParameterList, ASelectionOutsideTheListIsRefusedWithoutACallback) {
    pfParameterList list;
    CallCounter counter;
    CountingControl control;
    AddEntries(list, 3);
    list.Set(2);
    counter.WatchOver(list);
    control.Bind(&list);
    for (const int selection :
         {0, 4, -1, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        EXPECT_FALSE(list.Set(selection));
        EXPECT_EQ(list.Get(), 2);
    }
    EXPECT_EQ(counter.calls, 0);
    EXPECT_EQ(control.refreshes, 0);
}

TEST(pfParameterList, SetRunsTheCallbackAlsoWithoutAChange) {
    pfParameterList list;
    CallCounter counter;
    CountingControl control;
    AddEntries(list, 3);
    counter.WatchOver(list);
    control.Bind(&list);
    EXPECT_TRUE(list.Set(3));
    EXPECT_FALSE(list.Set(3));
    EXPECT_EQ(counter.calls, 2);
    EXPECT_EQ(control.refreshes, 1);
    list.SetUndoable(false);
    EXPECT_FALSE(list.Set(1));
    EXPECT_EQ(list.Get(), 1);
}

TEST(pfParameterList, AListWithoutEntriesSurvivesValidate) {
    pfParameterList list;
    CallCounter counter;
    AddEntries(list, 7);
    list.Set(7);
    list.ClearEntries();
    counter.WatchOver(list);
    list.Validate();
    EXPECT_EQ(list.Get(), 7);
    EXPECT_EQ(counter.calls, 0);
}

TEST(pfParameterList, ValidatePullsTheSelectionIntoTheListAndRunsTheCallbackAnyway) {
    pfParameterList list;
    CallCounter counter;
    CountingControl control;
    AddEntries(list, 7);
    list.Set(7);
    list.ClearEntries();
    AddEntries(list, 3);
    counter.WatchOver(list);
    control.Bind(&list);
    list.Validate();
    EXPECT_EQ(list.Get(), 3);
    EXPECT_EQ(control.refreshes, 1);
    list.Validate();
    EXPECT_EQ(control.refreshes, 1);
    EXPECT_EQ(counter.calls, 2);
}

TEST(pfParameterList, RandomizeMovesTheSelectionByTheCountTimesTheAmount) {
    pfParameterList list;
    AddEntries(list, 20);
    list.Set(10);
    SeedRandom(21);
    list.Randomize(0.5);
    // No fold: 9 above the first can move by 5 at most.
    const double moved = 9.0 + 20.0 * (PlainRandom(21).NextScaled() - 0.5) * 0.5;
    EXPECT_EQ(list.Get(), static_cast<int>(moved + 1.5));
}

TEST(pfParameterList, RandomizeStaysWithinTheList) {
    pfParameterList list;
    AddEntries(list, 4);
    SeedRandom(1);
    for (int i = 0; i < 2000; ++i) {
        list.Randomize(2.0);
        ASSERT_GE(list.Get(), 1);
        ASSERT_LE(list.Get(), 4);
    }
}

TEST(pfParameterList, AnAmountAboveTwoDrawsOnceAndKeepsTheSelection) {
    // Meant as it is: a large amount counts as none.
    pfParameterList list;
    CallCounter counter;
    AddEntries(list, 5);
    list.Set(4);
    counter.WatchOver(list);
    SeedRandom(13);
    list.Randomize(3.0);
    EXPECT_EQ(list.Get(), 4);
    // Once for the setting and once for the validation.
    EXPECT_EQ(counter.calls, 2);
    PlainRandom plain(13);
    plain.Next();
    EXPECT_EQ(NextRandom(), plain.Next());
}

TEST(pfParameterList, RandomizeOfAListWithoutEntriesChangesNothing) {
    pfParameterList list;
    CallCounter counter;
    counter.WatchOver(list);
    list.Randomize(1.0);
    EXPECT_EQ(list.Get(), 1);
    EXPECT_EQ(counter.calls, 0);
    list.Randomize(std::numeric_limits<double>::quiet_NaN());
    list.Randomize(-std::numeric_limits<double>::infinity());
    EXPECT_EQ(list.Get(), 1);
}

TEST(pfParameterList, RandomizeDoesNothingWhenItIsNotRandomizable) {
    pfParameterList list;
    CallCounter counter;
    AddEntries(list, 5);
    counter.WatchOver(list);
    list.SetRandomizable(false);
    SeedRandom(7);
    list.Randomize(0.5);
    EXPECT_EQ(counter.calls, 0);
    EXPECT_EQ(NextRandom(), PlainRandom(7).Next());
}

TEST(pfParameterList, ScriptKeysAreNoneOrOne) {
    pfParameterList list;
    hostapi::OSType key = 1;
    EXPECT_EQ(list.GetScriptKeyCount(), 0);
    list.GetScriptKeys(&key);
    EXPECT_EQ(key, 1u);
    list.SetScriptKey(9);
    EXPECT_EQ(list.GetScriptKeyCount(), 1);
    list.GetScriptKeys(&key);
    EXPECT_EQ(key, 9u);
}

TEST(pfParameterList, CreateUndoIsNullWithoutMemory) {
    pfParameterList list;
    const AllocationDrought drought;
    EXPECT_EQ(list.CreateUndo(), nullptr);
}

}  // namespace mv::test
