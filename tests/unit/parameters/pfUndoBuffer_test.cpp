#include "parameters/pfUndoBuffer.h"

#include <gtest/gtest.h>

#include "parameters/pfParameterInt.h"
#include "parameters/pfUndo.h"
#include "support/AllocationFault.h"

namespace mv::test {

namespace {

class pfUndoBufferTest : public ::testing::Test {
protected:
    pfUndoBufferTest() { buffer.SetEnabled(true); }

    // One record, and the change that it undoes.
    void Change(pfParameterInt& parameter, int value) {
        buffer.Push(parameter.CreateUndo());
        parameter.Set(value);
    }
    void ChangeAsStep(pfParameterInt& parameter, int value) {
        Change(parameter, value);
        buffer.NextStep();
    }

    pfParameterInt number;
    pfParameterInt other;
    pfUndoBuffer buffer;
};

}  // namespace

TEST(pfUndoBuffer, ANewOneHasNothingToUndoOrRedo) {
    pfUndoBuffer fresh;
    EXPECT_FALSE(fresh.CanUndo());
    EXPECT_FALSE(fresh.CanRedo());
    EXPECT_FALSE(fresh.Undo());
    EXPECT_FALSE(fresh.Redo());
}

TEST(pfUndoBuffer, RecordsPushedWhileItIsOffAreReleased) {
    pfParameterInt number;
    const long before = LiveAllocations();
    pfUndoBuffer fresh;
    fresh.Push(number.CreateUndo());
    EXPECT_EQ(LiveAllocations(), before);
    fresh.SetEnabled(true);
    EXPECT_FALSE(fresh.CanUndo());
    EXPECT_FALSE(fresh.Undo());
}

TEST_F(pfUndoBufferTest, NullIsIgnored) {
    buffer.Push(nullptr);
    EXPECT_FALSE(buffer.CanUndo());
}

TEST_F(pfUndoBufferTest, UndoAndRedoRestoreTheValuesBothWays) {
    ChangeAsStep(number, 1);
    ChangeAsStep(number, 2);
    EXPECT_TRUE(buffer.CanUndo());
    EXPECT_FALSE(buffer.CanRedo());
    EXPECT_TRUE(buffer.Undo());
    EXPECT_EQ(number.Get(), 1);
    EXPECT_TRUE(buffer.CanRedo());
    EXPECT_TRUE(buffer.Undo());
    EXPECT_EQ(number.Get(), 0);
    EXPECT_FALSE(buffer.CanUndo());
    EXPECT_FALSE(buffer.Undo());
    EXPECT_TRUE(buffer.Redo());
    EXPECT_EQ(number.Get(), 1);
    // The record holds the earlier value again.
    EXPECT_TRUE(buffer.Undo());
    EXPECT_EQ(number.Get(), 0);
    EXPECT_TRUE(buffer.Redo());
    EXPECT_TRUE(buffer.Redo());
    EXPECT_EQ(number.Get(), 2);
    EXPECT_FALSE(buffer.CanRedo());
    EXPECT_FALSE(buffer.Redo());
}

TEST_F(pfUndoBufferTest, AStepOfSeveralRecordsGoesInOneCall) {
    ChangeAsStep(other, 5);
    Change(number, 1);
    Change(other, 6);
    Change(number, 2);
    buffer.NextStep();
    EXPECT_TRUE(buffer.Undo());
    EXPECT_EQ(number.Get(), 0);
    EXPECT_EQ(other.Get(), 5);
    // The step before is next.
    EXPECT_TRUE(buffer.CanUndo());
    EXPECT_TRUE(buffer.Redo());
    EXPECT_EQ(number.Get(), 2);
    EXPECT_EQ(other.Get(), 6);
    EXPECT_TRUE(buffer.Undo());
    EXPECT_TRUE(buffer.Undo());
    EXPECT_EQ(other.Get(), 0);
    EXPECT_FALSE(buffer.CanUndo());
}

TEST_F(pfUndoBufferTest, AStepIsUndoneBackwardsAndRedoneForwards) {
    // Two records of one parameter: in the wrong order the value would come out as 1.
    Change(number, 1);
    Change(number, 2);
    buffer.NextStep();
    buffer.Undo();
    EXPECT_EQ(number.Get(), 0);
    buffer.Redo();
    EXPECT_EQ(number.Get(), 2);
}

TEST_F(pfUndoBufferTest, APushAfterUndosDropsWhatWasUndone) {
    for (int i = 1; i <= 4; ++i) {
        ChangeAsStep(number, i);
    }
    buffer.Undo();
    buffer.Undo();
    buffer.Undo();
    EXPECT_EQ(number.Get(), 1);
    ChangeAsStep(number, 10);
    EXPECT_FALSE(buffer.CanRedo());
    EXPECT_FALSE(buffer.Redo());
    buffer.Undo();
    EXPECT_EQ(number.Get(), 1);
    buffer.Undo();
    EXPECT_EQ(number.Get(), 0);
    EXPECT_FALSE(buffer.CanUndo());
}

TEST_F(pfUndoBufferTest, HoldsFiveHundredSteps) {
    for (int i = 1; i <= 501; ++i) {
        ChangeAsStep(number, i);
    }
    EXPECT_TRUE(buffer.CanUndo());
    int undone = 0;
    while (buffer.Undo()) {
        ++undone;
    }
    EXPECT_EQ(undone, 500);
    // The oldest step, from 0 to 1, is the one that went.
    EXPECT_EQ(number.Get(), 1);
    EXPECT_FALSE(buffer.CanUndo());
}

TEST_F(pfUndoBufferTest, TheOldestStepGoesWhole) {
    Change(number, 1);
    Change(number, 2);
    Change(number, 3);
    buffer.NextStep();
    for (int i = 4; i <= 500; ++i) {
        ChangeAsStep(number, i);
    }
    // 500 records in 498 steps; one more takes three records out of reach.
    ChangeAsStep(number, 501);
    int undone = 0;
    while (buffer.Undo()) {
        ++undone;
    }
    EXPECT_EQ(undone, 498);
    EXPECT_EQ(number.Get(), 3);
}

TEST_F(pfUndoBufferTest, AStepLargerThanTheRingLosesWhatCameFirst) {
    for (int i = 1; i <= 501; ++i) {
        Change(number, i);
    }
    buffer.NextStep();
    // Meant as it is: at the 501st record all before it, being of one step, go out of reach.
    EXPECT_TRUE(buffer.Undo());
    EXPECT_EQ(number.Get(), 500);
    EXPECT_FALSE(buffer.CanUndo());
}

TEST_F(pfUndoBufferTest, EmptyStepsLeaveNothingBehind) {
    ChangeAsStep(number, 1);
    buffer.NextStep();
    buffer.NextStep();
    EXPECT_TRUE(buffer.Undo());
    EXPECT_EQ(number.Get(), 0);
    EXPECT_FALSE(buffer.CanUndo());
}

TEST(pfUndoBuffer, ReleasesEveryRecordThatItHolds) {
    pfParameterInt number;
    const long before = LiveAllocations();
    {
        pfUndoBuffer buffer;
        buffer.SetEnabled(true);
        for (int i = 0; i < 1234; ++i) {
            buffer.Push(number.CreateUndo());
            buffer.NextStep();
        }
        EXPECT_EQ(LiveAllocations(), before + 500);
        for (int i = 0; i < 100; ++i) {
            buffer.Undo();
        }
    }
    EXPECT_EQ(LiveAllocations(), before);
}

}  // namespace mv::test
