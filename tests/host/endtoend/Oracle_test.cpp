// The second computation checked by itself: against numbers worked out by hand, and its running
// sums against plain sums over every sample of every window.
#include <gtest/gtest.h>

#include <cmath>

#include "RandomJobs.h"
#include "RenderJob.h"
#include "oracle/Blend.h"
#include "oracle/Color.h"
#include "oracle/HslSelection.h"
#include "oracle/Line.h"
#include "oracle/Rays.h"
#include "oracle/Window.h"

namespace endtoend {
namespace {

using oracle::Sample;
using oracle::Shape;
using oracle::Summation;

oracle::Sums LineOf(std::initializer_list<double> samples) {
    oracle::Sums sums(static_cast<int>(samples.size()), 1);
    int k = 0;
    for (const double sample : samples) {
        sums.s.At(k++, 0) = sample;
    }
    sums.Build();
    return sums;
}

double Plain(const oracle::Sums& sums, double zoomStart, int i, double L) {
    double tables = 0.0;
    double direct = 0.0;
    oracle::PlainWindow(sums, zoomStart, i, L, Summation::Tables, &tables);
    oracle::PlainWindow(sums, zoomStart, i, L, Summation::Direct, &direct);
    EXPECT_NEAR(tables, direct, 1e-12);
    return tables;
}

TEST(OraclePlainWindow, WithoutLengthIsTheSampleItself) {
    const oracle::Sums line = LineOf({1, 2, 4, 8});
    for (int i = 0; i < 4; ++i) {
        EXPECT_DOUBLE_EQ(Plain(line, 0.5, i, 0.0), line.s.At(i, 0));
    }
}

TEST(OraclePlainWindow, ReachesTowardTheCentreAroundThePixelOrOutward) {
    const oracle::Sums line = LineOf({1, 2, 4, 8});
    EXPECT_DOUBLE_EQ(Plain(line, 0.5, 2, 2.0), (2.0 + 4.0) / 2.0);
    EXPECT_DOUBLE_EQ(Plain(line, 0.0, 2, 2.0), (4.0 + 8.0) / 2.0);
    EXPECT_DOUBLE_EQ(Plain(line, -0.5, 1, 2.0), (4.0 + 8.0) / 2.0);
    EXPECT_DOUBLE_EQ(Plain(line, 0.0, 3, 1.5), 8.0);
}

TEST(OraclePlainWindow, CutAtTheEndOfTheLineComesOutDarker) {
    const oracle::Sums line = LineOf({8, 8, 8, 8});
    EXPECT_DOUBLE_EQ(Plain(line, -0.5, 3, 4.0), 8.0 / 4.0);
    EXPECT_DOUBLE_EQ(Plain(line, 0.5, 1, 4.0), (8.0 + 0.0) / 4.0);
}

TEST(OracleSpectralWindow, WeighsEveryFifthByHandWorkedSums) {
    oracle::Sums line(11, 4);
    for (int k = 0; k < 11; ++k) {
        for (int c = 0; c < 4; ++c) {
            line.s.At(k, c) = k;
        }
    }
    line.Build();
    const Shape shape{Sample::Byte, 3, true};
    for (const Summation summation : {Summation::Tables, Summation::Direct}) {
        double v[4] = {};
        // Fifths [0,2], [2,4], [4,6], [6,8], [8,10] of a line whose sample k is k.
        oracle::SpectralWindow(line, shape, 0.5, 10, 10.0, false, summation, v);
        const double fallA = (2 * 1 + 1 * 2) / 3.0;
        const double riseD = (1 * 6 + 2 * 7) / 3.0;
        EXPECT_NEAR(v[0], ((fallA + riseD) / 2 + 9.5) / 2, 1e-12);
        const double riseB = (1 * 2 + 2 * 3) / 3.0;
        const double fallE = (2 * 9 + 1 * 10) / 3.0;
        EXPECT_NEAR(v[1], ((riseB + fallE) / 2 + 7.5 + 5.5) / 3, 1e-12);
        const double fallC = (2 * 5 + 1 * 6) / 3.0;
        EXPECT_NEAR(v[2], (fallC / 2 + 3.5 + 1.5) * 0.4, 1e-12);
        EXPECT_NEAR(v[3], 5.5, 1e-12);
        oracle::SpectralWindow(line, shape, 0.5, 10, 10.0, true, summation, v);
        const double riseE = (1 * 8 + 2 * 9) / 3.0;
        const double fallB = (2 * 3 + 1 * 4) / 3.0;
        EXPECT_NEAR(v[0], ((riseE + fallB) / 2 + 1.5) / 2, 1e-12);
        const double fallD = (2 * 7 + 1 * 8) / 3.0;
        const double riseA = (1 * 0 + 2 * 1) / 3.0;
        EXPECT_NEAR(v[1], ((fallD + riseA) / 2 + 3.5 + 5.5) / 3, 1e-12);
        const double riseC = (1 * 4 + 2 * 5) / 3.0;
        EXPECT_NEAR(v[2], (riseC / 2 + 7.5 + 9.5) * 0.4, 1e-12);
        EXPECT_NEAR(v[3], 5.5, 1e-12);
    }
}

TEST(OracleSpectralWindow, LeavesAConstantLineConstant) {
    oracle::Sums line(9, 3);
    for (int k = 0; k < 9; ++k) {
        for (int c = 0; c < 3; ++c) {
            line.s.At(k, c) = 7.25;
        }
    }
    line.Build();
    const Shape shape{Sample::Float, 3, false};
    for (const double length : {0.0, 0.3, 1.0, 2.7, 6.5, 40.0}) {
        for (int i = 0; i < 9; ++i) {
            for (const bool invert : {false, true}) {
                double v[3] = {};
                oracle::SpectralWindow(line, shape, 0.1, i, length, invert, Summation::Tables, v);
                for (const double value : v) {
                    EXPECT_NEAR(value, 7.25, 1e-9) << length << " " << i;
                }
            }
        }
    }
}

// The blurred working image of a job, by running sums and by plain sums.
void ExpectDirectSumsToAgree(const RenderJob& job) {
    oracle::Job work;
    work.width = job.width;
    work.height = job.height;
    work.shape = oracle::ChooseShape(job.facts).value();
    work.planes = job.facts.planes;
    work.input = job.input.data();
    work.inputRowBytes = job.inputRowBytes;
    std::vector<std::uint8_t> output = job.output;
    work.output = output.data();
    work.outputRowBytes = job.outputRowBytes;
    work.mask = job.mask.empty() ? nullptr : job.mask.data();
    work.maskRowBytes = job.maskRowBytes;
    work.settings = oracle::Validated(job.settings);
    oracle::Stages tables;
    oracle::Stages direct;
    oracle::Render(work, Summation::Tables, &tables);
    oracle::Render(work, Summation::Direct, &direct);
    ASSERT_EQ(tables.blurred.values.size(), direct.blurred.values.size());
    double largest = 0.0;
    for (const float value : direct.prepared.values) {
        largest = std::max(largest, std::fabs(static_cast<double>(value)));
    }
    for (std::size_t k = 0; k < tables.blurred.values.size(); ++k) {
        const double expected = static_cast<double>(direct.blurred.values[k]);
        const double actual = static_cast<double>(tables.blurred.values[k]);
        ASSERT_NEAR(actual, expected, 1e-6 * std::fabs(expected) + 1e-8 * largest)
            << k << Describe(job);
    }
}

TEST(OracleBlur, RunningSumsAgreeWithPlainSums) {
    int blurred = 0;
    for (int number = 0; blurred < 400; ++number) {
        RenderJob job = RandomJob(number);
        job.settings.selectionShow = 1;
        if (job.settings.strength == 0.0) {
            continue;
        }
        ++blurred;
        ExpectDirectSumsToAgree(job);
    }
}

TEST(OracleHsl, PureColoursAndGray) {
    const oracle::Hsl red = oracle::RgbToHsl({1.0, 0.0, 0.0});
    EXPECT_EQ(red.hue, 0.0);
    EXPECT_EQ(red.saturation, 1.0);
    EXPECT_EQ(red.lightness, 0.5);
    EXPECT_EQ(oracle::RgbToHsl({0.0, 1.0, 0.0}).hue, 2.0);
    EXPECT_EQ(oracle::RgbToHsl({0.0, 0.0, 1.0}).hue, 4.0);
    EXPECT_EQ(oracle::RgbToHsl({1.0, 0.0, 0.5}).hue, 5.5);
    EXPECT_EQ(oracle::RgbToHsl({0.25, 0.25, 0.25}).saturation, 0.0);
    EXPECT_EQ(oracle::RgbToHsl({0.5, 1.0, 1.0}).saturation, 1.0);
    const oracle::Triple back = oracle::HslToRgb({5.5, 1.0, 0.5});
    EXPECT_EQ(back[0], 1.0);
    EXPECT_EQ(back[1], 0.0);
    EXPECT_EQ(back[2], 0.5);
}

// A half-covered backdrop of 100 under a quarter-covered source of 200, in units where white is 1.
TEST(OracleBlend, RowsWorkedOutByHand) {
    const Shape shape{Sample::Float, 3, true};
    const oracle::Pixel D{{0.4, 0.2, 0.1}, 0.5};
    const oracle::Pixel S{{0.8, 0.4, 0.6}, 0.25};
    oracle::Pixel result = D;
    oracle::BlendPixels(shape, result, S, 1);
    EXPECT_NEAR(result.alpha, 0.75 * 0.5 + 0.25, 1e-12);
    EXPECT_NEAR(result.color[0], (0.75 * 0.5 * 0.4 + 0.25 * 0.8) / 0.625, 1e-12);

    result = D;
    oracle::BlendPixels(shape, result, S, 5);
    // P + Q = 0.2 + 0.2, below the alpha of 0.5: divided by it.
    EXPECT_NEAR(result.color[0], 0.4 / 0.5, 1e-12);
    EXPECT_EQ(result.alpha, 0.5);

    result = D;
    oracle::BlendPixels(shape, result, S, 19);
    const double luminance = 0.292687786 * 0.8 + 0.552149646 * 0.4 + 0.155162568 * 0.6;
    EXPECT_NEAR(result.alpha, 0.5 + luminance * 0.25, 1e-12);
    EXPECT_EQ(result.color[0], 0.4);

    for (const int mode : {23, 0, 99, -3}) {
        result = D;
        oracle::BlendPixels(shape, result, S, mode);
        EXPECT_EQ(result.color, S.color);
        EXPECT_EQ(result.alpha, S.alpha);
    }
}

TEST(OracleBlend, AGrayOfZeroHalvesTheBackdropInSaturation) {
    const Shape shape{Sample::Float, 1, false};
    oracle::Pixel result{{0.6, 0.0, 0.0}, 0.0};
    oracle::BlendPixels(shape, result, {{0.0, 0.0, 0.0}, 0.0}, 16);
    EXPECT_NEAR(result.color[0], 0.3, 1e-7);
    result = {{0.6, 0.0, 0.0}, 0.0};
    oracle::BlendPixels(shape, result, {{0.2, 0.0, 0.0}, 0.0}, 16);
    EXPECT_NEAR(result.color[0], 0.6, 1e-7);
}

TEST(OracleSelection, WindowTentAndSwap) {
    const Shape shape{Sample::Byte, 3, false};
    oracle::Settings s;
    const auto weight = [&](double v) {
        return oracle::EvaluateRanges(shape, oracle::BuildRanges(shape, s), {v, v, v});
    };
    EXPECT_EQ(weight(0.0), 1.0);
    EXPECT_EQ(weight(255.0), 1.0);
    s.selectionLow = 200.0;
    s.selectionHigh = 100.0;
    EXPECT_EQ(weight(150.0), 1.0);
    EXPECT_EQ(weight(99.0), 0.0);
    EXPECT_EQ(weight(201.0), 0.0);
    s.selectionSoften = 1.0;
    s.selectionClimax = 0.0;
    EXPECT_NEAR(weight(150.0), 1.0, 1e-12);
    EXPECT_NEAR(weight(125.0), 0.5, 1e-12);
    EXPECT_NEAR(weight(175.0), 0.5, 1e-12);
    s.selectionSoften = 2.0;
    EXPECT_NEAR(weight(125.0), 0.25, 1e-12);
}

// Each corner is the end of one side's rays. Where that side faces away from a centre outside the
// picture, the corner may stay without a ray: meant so. Everything else is reached.
TEST(OracleRays, EveryPixelIsReachedButForTheCornerOfASideThatFacesAway) {
    const Shape shape{Sample::Float, 1, false};
    for (const int cx : {-40, -1, 0, 3, 8, 9, 60}) {
        for (const int cy : {-25, -1, 0, 2, 6, 7, 33}) {
            oracle::FloatImage image(9, 7, 1);
            for (float& value : image.values) {
                value = 0.5f;
            }
            oracle::RaySettings rays;
            rays.centreX = cx;
            rays.centreY = cy;
            rays.strength = 0.0;
            const oracle::FloatImage blurred = oracle::BlurAlongRays(image, shape, rays);
            for (int y = 0; y < 7; ++y) {
                for (int x = 0; x < 9; ++x) {
                    const bool mayBeMissed =
                        (x == 8 && y == 0 && cy < 0) || (x == 8 && y == 6 && cx >= 9) ||
                        (x == 0 && y == 6 && cy >= 7) || (x == 0 && y == 0 && cx < 0);
                    const double value = static_cast<double>(blurred.At(x, y, 0));
                    if (!mayBeMissed || value != 0.0) {
                        EXPECT_NEAR(value, 0.5, 1e-6) << cx << ", " << cy;
                    }
                }
            }
        }
    }
}

}  // namespace
}  // namespace endtoend
