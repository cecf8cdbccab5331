#include "effect/BlendPixels.h"

#include <gtest/gtest.h>

#include <array>

#include "frame/PixelShapes.h"

namespace mv {
namespace {

using Opaque = RGBPixel<unsigned char, 255>;
using WithAlpha = RGBAlphaPixel<unsigned char, 255>;
using GrayAlpha = GrayAlphaPixel<unsigned char, 255>;
using FloatGray = GrayPixel<float, 1>;

template <class Pixel, std::size_t size>
std::array<double, size> Blend(std::array<double, size> backdrop,
                               const std::array<double, size>& source, std::int32_t mode) {
    static_assert(size == static_cast<std::size_t>(Pixel::kChannels));
    BlendPixels<Pixel>(backdrop.data(), source.data(), mode);
    return backdrop;
}

struct OpaqueCase {
    std::int32_t mode;
    const char* name;
    double expected;  // of backdrop 102 (0.4), source 51 (0.2), the source's largest 153 (0.6)
};

// First channel of opaque pixels, worked out from the textbook formulas in units of white.
TEST(BlendPixels, GivesTheRowsOfOpaquePixels) {
    constexpr OpaqueCase kCases[] = {{1, "normal", 51.0},
                                     {2, "max weight", (0.4 - 0.2) * 0.4 * 255.0 + 51.0},
                                     {3, "screen", (0.4 + 0.2 - 0.08) * 255.0},
                                     {4, "overlay", 2.0 * 0.4 * 0.2 * 255.0},
                                     {5, "addition", 153.0},
                                     {6, "subtraction", 51.0},
                                     {7, "multiply", 0.08 * 255.0},
                                     {8, "divide", 102.0 / 0.2001},
                                     {9, "difference", 51.0},
                                     {10, "exclusion", (0.4 + 0.2 - 0.16) * 255.0},
                                     {11, "lighten", 102.0},
                                     {12, "darken", 51.0},
                                     {19, "alpha add", 102.0},
                                     {20, "alpha sub", 102.0},
                                     {21, "alpha mult", 102.0},
                                     {22, "alpha replace", 102.0},
                                     {23, "(none) replace", 51.0},
                                     {0, "unknown", 51.0},
                                     {99, "unknown", 51.0},
                                     {-5, "unknown", 51.0}};
    for (const OpaqueCase& row : kCases) {
        const auto result = Blend<Opaque, 3>({102, 20, 30}, {51, 153, 10}, row.mode);
        EXPECT_NEAR(result[0], row.expected, 1e-9) << row.name;
    }
}

TEST(BlendPixels, OverlayBranchesOnTheBackdrop) {
    // 0.6 over 0.2: 1 - 2 (1 - 0.2) (1 - 0.6) = 0.36.
    EXPECT_NEAR((Blend<Opaque, 3>({153, 0, 0}, {51, 0, 0}, 4))[0], 0.36 * 255.0, 1e-9);
}

TEST(BlendPixels, SubtractionStopsAtZero) {
    EXPECT_EQ((Blend<Opaque, 3>({10, 50, 0}, {51, 20, 0}, 6)), (std::array<double, 3>{0, 30, 0}));
}

TEST(BlendPixels, MaximumAndMinimumSwapWholePixelsByLuminance) {
    const std::array<double, 3> dark{200, 10, 0};
    const std::array<double, 3> bright{0, 200, 10};
    EXPECT_EQ((Blend<Opaque, 3>(dark, bright, 13)), bright);
    EXPECT_EQ((Blend<Opaque, 3>(bright, dark, 13)), bright);
    EXPECT_EQ((Blend<Opaque, 3>(dark, bright, 14)), dark);
    // Equal luminances keep the backdrop, in both modes; alpha tells the pixels apart.
    EXPECT_EQ((Blend<WithAlpha, 4>({80, 80, 80, 255}, {160, 160, 160, 127.5}, 13))[3], 255.0);
    EXPECT_EQ((Blend<WithAlpha, 4>({80, 80, 80, 255}, {160, 160, 160, 127.5}, 14))[3], 255.0);
}

TEST(BlendPixels, NormalWithOpaquePixelsGivesTheSource) {
    EXPECT_EQ((Blend<WithAlpha, 4>({10, 20, 30, 255}, {40, 50, 60, 255}, 1)),
              (std::array<double, 4>{40, 50, 60, 255}));
}

TEST(BlendPixels, NormalWithATransparentSourceKeepsTheBackdrop) {
    const auto result = Blend<WithAlpha, 4>({10, 20, 30, 102}, {40, 50, 60, 0}, 1);
    EXPECT_NEAR(result[0], 10.0, 1e-6);
    EXPECT_NEAR(result[2], 30.0, 1e-6);
    EXPECT_EQ(result[3], 102.0);
}

TEST(BlendPixels, NormalWithBothTransparentIsTransparentBlack) {
    EXPECT_EQ((Blend<WithAlpha, 4>({10, 20, 30, 0}, {40, 50, 60, 0}, 1)),
              (std::array<double, 4>{0, 0, 0, 0}));
}

TEST(BlendPixels, AdditionBeyondWhiteBecomesOpaqueAndStaysBright) {
    const auto result = Blend<WithAlpha, 4>({200, 100, 0, 255}, {150, 10, 0, 255}, 5);
    EXPECT_EQ(result[0], 350.0);
    EXPECT_EQ(result[3], 255.0);
}

TEST(BlendPixels, AdditionLiftsAlphaToTheLargestChannel) {
    // Weighted: (100 + 60) on alpha 127.5 against 160 > 127.5: alpha 160, that channel white.
    const auto result = Blend<WithAlpha, 4>({200, 20, 0, 127.5}, {120, 0, 0, 127.5}, 5);
    EXPECT_EQ(result[3], 160.0);
    EXPECT_DOUBLE_EQ(result[0], 255.0);
    EXPECT_NEAR(result[1], 10.0 * 255.0 / 160.0, 1e-9);
}

TEST(BlendPixels, GrayWithAlphaStaysWeightedInAddition) {
    const auto result = Blend<GrayAlpha, 2>({200, 127.5}, {100, 51}, 5);
    EXPECT_NEAR(result[0], 100.0 + 20.0, 1e-9);
    EXPECT_EQ(result[1], 127.5);
}

TEST(BlendPixels, AlphaModesTurnLuminanceIntoAlpha) {
    // White under full alpha has the luminance 255, to the weights' last digit.
    EXPECT_NEAR((Blend<WithAlpha, 4>({1, 2, 3, 100}, {51, 51, 51, 255}, 19))[3], 151.0, 1e-9);
    EXPECT_EQ((Blend<WithAlpha, 4>({1, 2, 3, 250}, {51, 51, 51, 255}, 19))[3], 255.0);
    EXPECT_EQ((Blend<WithAlpha, 4>({1, 2, 3, 20}, {51, 51, 51, 255}, 20))[3], 0.0);
    EXPECT_NEAR((Blend<WithAlpha, 4>({1, 2, 3, 127.5}, {51, 51, 51, 255}, 21))[3], 25.5, 1e-9);
    EXPECT_NEAR((Blend<WithAlpha, 4>({1, 2, 3, 127.5}, {51, 51, 51, 255}, 22))[3], 51.0, 1e-9);
    EXPECT_EQ((Blend<WithAlpha, 4>({1, 2, 3, 100}, {51, 51, 51, 255}, 19))[0], 1.0);
}

TEST(BlendPixels, HueOfAGraySourceTakesAllSaturationAway) {
    const auto result = Blend<Opaque, 3>({200, 100, 50}, {80, 80, 80}, 15);
    EXPECT_FLOAT_EQ(static_cast<float>(result[0]), 125.0f);
    EXPECT_EQ(result[0], result[1]);
    EXPECT_EQ(result[1], result[2]);
}

TEST(BlendPixels, ColorKeepsTheBackdropsLightness) {
    const auto result = Blend<Opaque, 3>({200, 100, 50}, {0, 0, 255}, 17);
    const double mx = std::max(std::max(result[0], result[1]), result[2]);
    const double mn = std::min(std::min(result[0], result[1]), result[2]);
    EXPECT_NEAR((mx + mn) / 2.0, 125.0, 1e-4);
    EXPECT_EQ(mx, result[2]);
}

// A gray pixel is the triple (v, 0, 0) in the HSL rows: a pure first colour, not a gray.
TEST(BlendPixels, SaturationTreatsGrayAsAPureFirstColor) {
    EXPECT_NEAR((Blend<FloatGray, 1>({0.5}, {0.25}, 16))[0], 0.5, 1e-7);
    EXPECT_NEAR((Blend<FloatGray, 1>({0.5}, {0.0}, 16))[0], 0.25, 1e-7);
}

}  // namespace
}  // namespace mv
