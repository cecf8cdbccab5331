#include "parameters/pfParameterUI.h"

#include <gtest/gtest.h>

#include "parameters/pfParameterFloat.h"
#include "support/ParameterProbe.h"

namespace mv::test {

TEST(pfParameterUI, StartsEnabledVisibleAndUnbound) {
    pfParameterUI control;
    EXPECT_TRUE(control.GetEnabled());
    EXPECT_TRUE(control.GetVisible());
    EXPECT_EQ(control.GetParameter(), nullptr);
}

TEST(pfParameterUI, ItsOwnOperationsDoNothing) {
    pfParameterUI control;
    control.Setup();
    control.Refresh();
    EXPECT_FALSE(control.ReadWindow());
}

TEST(pfParameterUI, BindTiesBothSides) {
    pfParameterFloat number;
    pfParameterUI control;
    control.Bind(&number);
    EXPECT_EQ(control.GetParameter(), &number);
    EXPECT_EQ(number.GetUI(), &control);
    control.Bind(nullptr);
    EXPECT_EQ(control.GetParameter(), &number);
    EXPECT_EQ(number.GetUI(), &control);
}

TEST(pfParameterUI, BindDoesNotFreeTheEarlierParameter) {
    pfParameterFloat first;
    pfParameterFloat second;
    pfParameterUI control;
    control.Bind(&first);
    control.Bind(&second);
    EXPECT_EQ(control.GetParameter(), &second);
    EXPECT_EQ(first.GetUI(), &control);
    EXPECT_EQ(second.GetUI(), &control);
}

TEST(pfParameterUI, UnbindClearsBothSidesAndHandsTheParameterBack) {
    pfParameterFloat number;
    pfParameterUI control;
    EXPECT_EQ(control.Unbind(), nullptr);
    control.Bind(&number);
    EXPECT_EQ(control.Unbind(), &number);
    EXPECT_EQ(control.GetParameter(), nullptr);
    EXPECT_EQ(number.GetUI(), nullptr);
}

TEST(pfParameterUI, SetEnabledRefreshesOnlyWhenTheStateDiffers) {
    CountingControl control;
    control.SetEnabled(true);
    EXPECT_EQ(control.refreshes, 0);
    control.SetEnabled(false);
    EXPECT_FALSE(control.GetEnabled());
    EXPECT_EQ(control.refreshes, 1);
    control.SetEnabled(false);
    EXPECT_EQ(control.refreshes, 1);
    control.SetEnabled(true);
    EXPECT_EQ(control.refreshes, 2);
}

}  // namespace mv::test
