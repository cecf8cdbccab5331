#include "interface/ControlValues.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>

namespace mv {
namespace {

TEST(ControlValues, SlidersCountInHundredthsOfTruncatedLimits) {
    const SliderRange intensity = FloatSliderRange(0.0, 5.0);
    EXPECT_EQ(intensity.minimum, 0);
    EXPECT_EQ(intensity.maximum, 500);
    EXPECT_EQ(intensity.page, 50);
    const SliderRange hue = FloatSliderRange(-1.0, 1.0);
    EXPECT_EQ(hue.minimum, -100);
    EXPECT_EQ(hue.maximum, 100);
    EXPECT_EQ(hue.page, 20);
    EXPECT_EQ(FloatSliderRange(0.0, 255.0).maximum, 25500);
    EXPECT_EQ(FloatSliderRange(0.0, 255.0).page, 2550);
}

TEST(ControlValues, ZoomStartHasNoTravelAsItIsMeant) {
    const SliderRange range = FloatSliderRange(-0.5, 0.5);
    EXPECT_EQ(range.minimum, 0);
    EXPECT_EQ(range.maximum, 0);
    EXPECT_EQ(range.page, 10);
    EXPECT_EQ(FloatSliderRange(0.0, 0.05).page, 1);
}

TEST(ControlValues, WholeSlidersUseTheirLimits) {
    const SliderRange range = IntSliderRange(-3, 47);
    EXPECT_EQ(range.minimum, -3);
    EXPECT_EQ(range.maximum, 47);
    EXPECT_EQ(range.page, 5);
    EXPECT_EQ(IntSliderRange(0, 5).page, 1);
    EXPECT_EQ(IntSliderRange(INT_MIN, INT_MAX).page, 429496729);
    EXPECT_EQ(IntSliderRange(5, -100).page, 1);
}

TEST(ControlValues, ASliderTakesADetourToItsPosition) {
    const SliderDetour detour = FloatSliderDetour(1.255);
    EXPECT_EQ(detour.first, 200);
    EXPECT_EQ(detour.second, 125);
    EXPECT_EQ(detour.third, 0);
    EXPECT_EQ(detour.last, 125);
    EXPECT_EQ(FloatSliderDetour(0.005).last, 0);
    EXPECT_EQ(FloatSliderDetour(-0.5).third, -100);
    const SliderDetour whole = IntSliderDetour(7);
    EXPECT_EQ(whole.first, 6);
    EXPECT_EQ(whole.second, 7);
    EXPECT_EQ(whole.third, 8);
    EXPECT_EQ(whole.last, 7);
}

TEST(ControlValues, SlidersStayDefinedForAnyValue) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(FloatSliderDetour(nan).last, 0);
    EXPECT_EQ(FloatSliderDetour(infinity).last, INT_MAX);
    EXPECT_EQ(FloatSliderDetour(-infinity).first, INT_MIN);
    EXPECT_EQ(FloatSliderRange(nan, nan).page, 1);
    EXPECT_EQ(FloatSliderRange(-infinity, infinity).maximum, INT_MAX);
    EXPECT_EQ(IntSliderDetour(INT_MIN).first, INT_MIN);
    EXPECT_EQ(IntSliderDetour(INT_MAX).third, INT_MAX);
}

TEST(ControlValues, ASliderPositionIsHundredths) {
    EXPECT_DOUBLE_EQ(FloatFromSlider(125), 1.25);
    EXPECT_DOUBLE_EQ(FloatFromSlider(-100), -1.0);
    EXPECT_EQ(FloatFromSlider(0), 0.0);
}

TEST(ControlValues, OnlyHardLimitsHoldATypedValue) {
    const FloatLimits intensity = {0.0, 5.0, true, false};
    EXPECT_EQ(LimitTypedValue(7.5, intensity), 7.5);
    EXPECT_EQ(LimitTypedValue(-1.0, intensity), 0.0);
    EXPECT_EQ(LimitTypedValue(2.5, intensity), 2.5);
    const FloatLimits hue = {-1.0, 1.0, true, true};
    EXPECT_EQ(LimitTypedValue(2.0, hue), 1.0);
    EXPECT_EQ(LimitTypedValue(-2.0, hue), -1.0);
    const FloatLimits start = {-0.5, 0.5, false, false};
    EXPECT_EQ(LimitTypedValue(-0.7, start), -0.7);
    EXPECT_TRUE(std::isnan(LimitTypedValue(std::numeric_limits<double>::quiet_NaN(), hue)));
}

TEST(ControlValues, PixelTextStaysWhileItMeansTheFraction) {
    EXPECT_TRUE(PixelTextMeans("150", 300, 0.5));
    EXPECT_TRUE(PixelTextMeans("150.0", 300, 0.5));
    EXPECT_TRUE(PixelTextMeans("+1.5e2", 300, 0.5));
    EXPECT_FALSE(PixelTextMeans("150", 301, 0.5));
    EXPECT_FALSE(PixelTextMeans("", 300, 0.0));
    EXPECT_FALSE(PixelTextMeans("150 px", 300, 0.5));
    EXPECT_TRUE(PixelTextMeans("29", 100, 29.0 / 100));
}

TEST(ControlValues, PixelTextIsTruncated) {
    char text[kNumberCapacity];
    FormatPixel(0.5, 301, text);
    EXPECT_STREQ(text, "150");
    FormatPixel(-0.25, 30, text);
    EXPECT_STREQ(text, "-7");
    FormatPixel(std::numeric_limits<double>::infinity(), 30, text);
    EXPECT_STREQ(text, "2147483647");
    FormatPixel(std::numeric_limits<double>::quiet_NaN(), 30, text);
    EXPECT_STREQ(text, "0");
}

TEST(ControlValues, TypedPixelsBecomeAFraction) {
    double fraction = -9.0;
    EXPECT_TRUE(FractionFromPixelText("75", 300, fraction));
    EXPECT_DOUBLE_EQ(fraction, 0.25);
    EXPECT_TRUE(FractionFromPixelText("-30", 300, fraction));
    EXPECT_DOUBLE_EQ(fraction, -0.1);
    fraction = -9.0;
    EXPECT_FALSE(FractionFromPixelText("75a", 300, fraction));
    EXPECT_FALSE(FractionFromPixelText("75", 0, fraction));
    EXPECT_EQ(fraction, -9.0);
}

TEST(ControlValues, AnglesSplitIntoTurnsAndARestThatIsNotNegative) {
    EXPECT_EQ(SplitAngle(750.5).turns, 2);
    EXPECT_DOUBLE_EQ(SplitAngle(750.5).degrees, 30.5);
    EXPECT_EQ(SplitAngle(-30.0).turns, -1);
    EXPECT_DOUBLE_EQ(SplitAngle(-30.0).degrees, 330.0);
    EXPECT_EQ(SplitAngle(-750.0).turns, -3);
    EXPECT_DOUBLE_EQ(SplitAngle(-750.0).degrees, 330.0);
    EXPECT_EQ(SplitAngle(0.0).turns, 0);
    EXPECT_DOUBLE_EQ(SplitAngle(0.0).degrees, 0.0);
    EXPECT_DOUBLE_EQ(JoinAngle(-3, 330.0), -750.0);
}

TEST(ControlValues, TheDialPointsWhereTheMouseIs) {
    EXPECT_NEAR(AngleFromPointer(0.0, 10.0, 0.0), 0.0, 1e-6);
    EXPECT_NEAR(AngleFromPointer(0.0, 0.0, 10.0), 90.0, 1e-6);
    EXPECT_NEAR(AngleFromPointer(170.0, -3.0, 0.0), 180.0, 1e-6);
    EXPECT_NEAR(AngleFromPointer(200.0, 0.0, -5.0), 270.0, 1e-6);
    EXPECT_EQ(AngleFromPointer(123.0, 0.0, 0.0), 123.0);
}

TEST(ControlValues, ADraggedDialGoesOnCountingTurns) {
    EXPECT_NEAR(AngleFromPointer(350.0, 10.0, 1.0), 365.710593, 1e-5);  // over zero, forward
    EXPECT_NEAR(AngleFromPointer(10.0, 10.0, -1.0), -5.710593, 1e-5);   // and back
    EXPECT_NEAR(AngleFromPointer(725.0, 0.0, 1.0), 810.0, 1e-5);
    EXPECT_NEAR(AngleFromPointer(-80.0, 0.0, -1.0), -90.0, 1e-5);
    double angle = 0.0;
    for (int degree = 0; degree <= 720; degree += 15) {
        angle = AngleFromPointer(angle, std::cos(degree / 57.29577951308232),
                                 std::sin(degree / 57.29577951308232));
    }
    EXPECT_NEAR(angle, 720.0, 1e-3);
}

TEST(ControlValues, ChannelsBecomeBytesByTruncation) {
    EXPECT_EQ(ByteFromChannel(1.0), 255);
    EXPECT_EQ(ByteFromChannel(0.5), 127);
    EXPECT_EQ(ByteFromChannel(-3.0), 0);
    EXPECT_EQ(ByteFromChannel(9.0), 255);
    EXPECT_DOUBLE_EQ(ChannelFromByte(255), 1.0);
    EXPECT_DOUBLE_EQ(ChannelFromByte(51), 0.2);
}

}  // namespace
}  // namespace mv
