#include "effect/HslColor.h"

#include <gtest/gtest.h>

#include <cmath>

namespace mv {
namespace {

TEST(HslColor, GivesHueInSextants) {
    EXPECT_DOUBLE_EQ(RgbToHsl(1, 0, 0).hue, 0.0);
    EXPECT_DOUBLE_EQ(RgbToHsl(1, 1, 0).hue, 1.0);
    EXPECT_DOUBLE_EQ(RgbToHsl(0, 1, 0).hue, 2.0);
    EXPECT_DOUBLE_EQ(RgbToHsl(0, 1, 1).hue, 3.0);
    EXPECT_DOUBLE_EQ(RgbToHsl(0, 0, 1).hue, 4.0);
    EXPECT_DOUBLE_EQ(RgbToHsl(1, 0, 1).hue, 5.0);
    EXPECT_DOUBLE_EQ(RgbToHsl(1, 0, 0.5).hue, 5.5);
}

TEST(HslColor, GrayHasNeitherHueNorSaturation) {
    for (const double v : {0.0, 0.3, 1.0}) {
        const HslColor gray = RgbToHsl(v, v, v);
        EXPECT_EQ(gray.hue, 0.0);
        EXPECT_EQ(gray.saturation, 0.0);
        EXPECT_EQ(gray.lightness, v);
    }
}

TEST(HslColor, SaturationIsOfTheDoubleCone) {
    EXPECT_DOUBLE_EQ(RgbToHsl(0.75, 0.25, 0.25).saturation, 0.5);
    EXPECT_DOUBLE_EQ(RgbToHsl(1.0, 0.5, 0.5).saturation, 1.0);
    EXPECT_DOUBLE_EQ(RgbToHsl(0.5, 0.0, 0.0).saturation, 1.0);
}

TEST(HslColor, ComesBackRoundedToSinglePrecision) {
    for (const double r : {0.0, 0.1, 0.5, 0.9}) {
        for (const double g : {0.0, 0.2, 0.6, 1.0}) {
            for (const double b : {0.0, 0.35, 0.7}) {
                const RgbColor rgb = HslToRgb(RgbToHsl(r, g, b));
                EXPECT_NEAR(rgb.red, r, 1e-7);
                EXPECT_NEAR(rgb.green, g, 1e-7);
                EXPECT_NEAR(rgb.blue, b, 1e-7);
                EXPECT_EQ(rgb.red, static_cast<double>(static_cast<float>(rgb.red)));
            }
        }
    }
}

TEST(HslColor, LuminanceWeightsSumToOne) {
    EXPECT_EQ(kLuminanceRed + kLuminanceGreen + kLuminanceBlue, 1.0);
    const double white[3] = {1.0, 1.0, 1.0};
    EXPECT_EQ(PixelLuminance<1>(white), 1.0);
    EXPECT_DOUBLE_EQ(PixelLuminance<2>(white), 0.292687786 + 0.552149646);
    EXPECT_DOUBLE_EQ(PixelLuminance<3>(white), 1.0);
}

TEST(HslColor, FewerColorsCountTheAbsentOnesAsZero) {
    const double negative[3] = {-0.5, -0.25, -1.0};
    EXPECT_EQ(PixelMaximum<1>(negative), 0.0);
    EXPECT_EQ(PixelMaximum<2>(negative), 0.0);
    EXPECT_EQ(PixelMaximum<3>(negative), -0.25);
    const double gray[1] = {0.4};
    EXPECT_EQ(PixelToHsl<1>(gray).lightness, 0.2);
    EXPECT_EQ(PixelToHsl<1>(gray).saturation, 1.0);
}

}  // namespace
}  // namespace mv
