#include "parameters/pfUndo.h"

#include <gtest/gtest.h>

#include "parameters/pfParameterBool.h"
#include "parameters/pfParameterFloat.h"
#include "parameters/pfParameterInt.h"
#include "parameters/pfParameterList.h"
#include "parameters/pfParameterPosition.h"
#include "parameters/pfParameterRGB.h"
#include "support/AllocationFault.h"
#include "support/ParameterProbe.h"

namespace mv::test {

TEST(pfUndo, APositionIsSwapped) {
    pfParameterPosition position;
    position.Set(0.25, 0.75);
    pfUndo* const record = position.CreateUndo();
    ASSERT_NE(record, nullptr);
    position.Set(0.5, 1.0);
    record->Apply();
    EXPECT_EQ(position.GetX(), 0.25);
    EXPECT_EQ(position.GetY(), 0.75);
    record->Apply();
    EXPECT_EQ(position.GetX(), 0.5);
    EXPECT_EQ(position.GetY(), 1.0);
    pfUndo::Release(record);
}

TEST(pfUndo, ASwitchIsSwappedWithItsCallbackAndOneMoreRefresh) {
    pfParameterBool flag;
    CountingControl control;
    CallCounter counter;
    pfUndo* const record = flag.CreateUndo();
    ASSERT_NE(record, nullptr);
    flag.Set(true);
    control.Bind(&flag);
    counter.WatchOver(flag);
    record->Apply();
    EXPECT_FALSE(flag.Get());
    EXPECT_EQ(control.refreshes, 2);
    EXPECT_EQ(counter.calls, 1);
    record->Apply();
    EXPECT_TRUE(flag.Get());
    pfUndo::Release(record);
}

TEST(pfUndo, AWholeNumberIsSwappedWithOneMoreRefresh) {
    pfParameterInt number;
    CountingControl control;
    number.Set(3);
    pfUndo* const record = number.CreateUndo();
    ASSERT_NE(record, nullptr);
    number.Set(9);
    control.Bind(&number);
    record->Apply();
    EXPECT_EQ(number.Get(), 3);
    EXPECT_EQ(control.refreshes, 2);
    record->Apply();
    EXPECT_EQ(number.Get(), 9);
    pfUndo::Release(record);
}

TEST(pfUndo, ANumberIsSwappedWithOneRefresh) {
    pfParameterFloat number;
    CountingControl control;
    CallCounter counter;
    number.Set(0.25);
    pfUndo* const record = number.CreateUndo();
    ASSERT_NE(record, nullptr);
    number.Set(0.75);
    control.Bind(&number);
    counter.WatchOver(number);
    record->Apply();
    EXPECT_EQ(number.Get(), 0.25);
    EXPECT_EQ(control.refreshes, 1);
    EXPECT_EQ(counter.calls, 1);
    record->Apply();
    EXPECT_EQ(number.Get(), 0.75);
    pfUndo::Release(record);
}

TEST(pfUndo, ASelectionIsSwappedWithOneMoreRefresh) {
    pfParameterList list;
    CountingControl control;
    list.AddEntry("normal");
    list.AddEntry("abberative");
    pfUndo* const record = list.CreateUndo();
    ASSERT_NE(record, nullptr);
    list.Set(2);
    control.Bind(&list);
    record->Apply();
    EXPECT_EQ(list.Get(), 1);
    EXPECT_EQ(control.refreshes, 2);
    record->Apply();
    EXPECT_EQ(list.Get(), 2);
    pfUndo::Release(record);
}

TEST(pfUndo, AColourIsSwappedWithOneMoreRefresh) {
    pfParameterRGB colour;
    CountingControl control;
    colour.Set(0.1, 0.2, 0.3);
    pfUndo* const record = colour.CreateUndo();
    ASSERT_NE(record, nullptr);
    colour.Set(0.4, 0.5, 0.6);
    control.Bind(&colour);
    record->Apply();
    EXPECT_EQ(colour.GetRed(), 0.1);
    EXPECT_EQ(colour.GetGreen(), 0.2);
    EXPECT_EQ(colour.GetBlue(), 0.3);
    EXPECT_EQ(control.refreshes, 2);
    record->Apply();
    EXPECT_EQ(colour.GetRed(), 0.4);
    pfUndo::Release(record);
}

TEST(pfUndo, WithoutAParameterApplyDoesNothing) {
    pfUndoParameterPosition(nullptr).Apply();
    pfUndoParameterBool(nullptr).Apply();
    pfUndoParameterInt(nullptr).Apply();
    pfUndoParameterFloat(nullptr).Apply();
    pfUndoParameterList(nullptr).Apply();
    pfUndoParameterRGB(nullptr).Apply();
    pfUndo::Release(nullptr);
    SUCCEED();
}

TEST(pfUndo, ReleaseGivesTheBlockBack) {
    pfParameterFloat number;
    const long before = LiveAllocations();
    pfUndo* const record = number.CreateUndo();
    EXPECT_EQ(LiveAllocations(), before + 1);
    pfUndo::Release(record);
    EXPECT_EQ(LiveAllocations(), before);
}

}  // namespace mv::test
