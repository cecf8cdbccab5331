// Results of whole renders that can be worked out by hand, and corners of the effect that are to
// behave as they do.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "RandomJobs.h"
#include "RenderJob.h"

namespace endtoend {
namespace {

// The destination of a job in place of its source, to read samples from.
RenderJob ResultOf(const RenderJob& job) {
    RenderJob result = job;
    result.input = RenderedOutput(job);
    result.inputRowBytes = job.outputRowBytes;
    return result;
}

// A row of all 256 values, gray.
RenderJob RampJob() {
    RenderJob job = PlainJob(256, 1, 1, false, 8, 0.0);
    for (int x = 0; x < 256; ++x) {
        job.Set(x, 0, 0, x);
    }
    return job;
}

TEST(EffectView, SelectedImageShowsThePictureItselfAtEveryDepth) {
    Random random(21);
    for (const int depth : {8, 16, 32}) {
        for (const int colors : {1, 2, 3}) {
            RenderJob job = PlainJob(13, 9, colors, false, depth, 0.0);
            const double white = depth == 32 ? 1.0 : depth == 16 ? 32768.0 : 255.0;
            for (int i = 0; i < 13 * 9; ++i) {
                for (int plane = 0; plane < colors; ++plane) {
                    const double value = random.Unit() * white;
                    job.Set(i % 13, i / 13, plane, depth == 32 ? value : std::floor(value));
                }
            }
            job.settings.selectionShow = 2;
            EXPECT_EQ(RenderedOutput(job), job.input) << depth << " " << colors;
        }
    }
}

TEST(EffectView, SelectedImageWeighsByAlphaAndBecomesOpaque) {
    RenderJob job = PlainJob(4, 3, 3, true, 8, 0.0);
    job.Set(1, 1, 0, 200);
    job.Set(1, 1, 3, 128);
    job.settings.selectionShow = 2;
    const RenderJob result = ResultOf(job);
    EXPECT_EQ(result.Get(1, 1, 0), std::floor(200 * 128 / 255.0));
    EXPECT_EQ(result.Get(1, 1, 3), 255.0);
    EXPECT_EQ(result.Get(0, 0, 3), 255.0);
}

TEST(EffectView, SelectionOnlyIsWhiteWhereEverythingIsSelected) {
    for (const int depth : {8, 16, 32}) {
        RenderJob job = PlainJob(4, 3, 3, true, depth, 0.3);
        job.settings.selectionShow = 3;
        const RenderJob result = ResultOf(job);
        const double white = depth == 32 ? 1.0 : depth == 16 ? 32768.0 : 255.0;
        for (int plane = 0; plane < 4; ++plane) {
            EXPECT_EQ(result.Get(2, 1, plane), white);
        }
    }
}

TEST(EffectView, SelectionOnlyIsTheMaskWhereThereIsOne) {
    RenderJob job = PlainJob(4, 3, 3, false, 8, 0.3);
    job.mask = {0, 1, 2, 3, 50, 51, 52, 53, 128, 200, 254, 255};
    job.settings.selectionShow = 3;
    const RenderJob result = ResultOf(job);
    for (int i = 0; i < 12; ++i) {
        const double expected = std::floor(
            255.0 * (job.mask[static_cast<std::size_t>(i)] * 0.00392156862745098) + 1e-9);
        EXPECT_NEAR(result.Get(i % 4, i / 4, 1), expected, 1.0);
    }
    EXPECT_EQ(result.Get(0, 0, 0), 0.0);
    EXPECT_EQ(result.Get(3, 2, 0), 255.0);
}

TEST(EffectView, SizeSelectionShowsTheMasksNumbersUnscaled) {
    for (const int depth : {8, 16, 32}) {
        RenderJob job = PlainJob(3, 2, 3, true, depth, 0.3);
        job.mask = {0, 1, 77, 128, 254, 255};
        job.settings.selectionShow = 4;
        job.settings.useSizeSelection = true;
        const RenderJob result = ResultOf(job);
        const double white = depth == 32 ? 1.0 : depth == 16 ? 32768.0 : 255.0;
        for (int i = 0; i < 6; ++i) {
            for (int plane = 0; plane < 3; ++plane) {
                EXPECT_EQ(result.Get(i % 3, i / 3, plane), job.mask[static_cast<std::size_t>(i)]);
            }
            EXPECT_EQ(result.Get(i % 3, i / 3, 3), white);
        }
    }
}

TEST(EffectView, SizeSelectionIsWhiteWithoutASelectionOrWhenItIsNotUsedAsOne) {
    RenderJob job = PlainJob(3, 2, 3, false, 16, 0.3);
    job.settings.selectionShow = 4;
    job.settings.useSizeSelection = true;
    EXPECT_EQ(ResultOf(job).Get(1, 1, 0), 32768.0);
    job.mask.assign(6, 9);
    job.settings.useSizeSelection = false;
    EXPECT_EQ(ResultOf(job).Get(1, 1, 0), 32768.0);
}

TEST(EffectView, FloatsAreNotClamped) {
    RenderJob job = PlainJob(2, 2, 1, false, 32, 0.0);
    job.Set(0, 0, 0, 1.9);
    job.settings.selectionShow = 2;
    // The lightness of a gray is half its value: 0.95 is selected.
    EXPECT_EQ(ResultOf(job).Get(0, 0, 0), static_cast<double>(1.9f));
}

TEST(EffectStore, SixteenBitsAboveWhiteBecomeWhite) {
    RenderJob job = PlainJob(2, 2, 3, false, 16, 0.0);
    job.Set(0, 0, 0, 40000);
    job.Set(1, 1, 2, 65535);
    job.Set(1, 0, 1, 32768);
    // A mode that leaves the picture itself.
    job.settings.blendMode = 19;
    const RenderJob result = ResultOf(job);
    EXPECT_EQ(result.Get(0, 0, 0), 32768.0);
    EXPECT_EQ(result.Get(1, 1, 2), 32768.0);
    EXPECT_EQ(result.Get(1, 0, 1), 32768.0);
    EXPECT_EQ(result.Get(0, 1, 0), 0.0);
}

TEST(EffectView, FloatLightnessAboveOneIsNotSelected) {
    RenderJob job = PlainJob(2, 2, 3, false, 32, 1.25);
    job.settings.selectionShow = 3;
    EXPECT_EQ(ResultOf(job).Get(0, 0, 0), 0.0);
    job.settings.selectionShow = 2;
    EXPECT_EQ(ResultOf(job).Get(1, 1, 2), 0.0);
}

TEST(EffectTone, WithoutStrengthTheTableAloneActs) {
    RenderJob job = RampJob();
    job.settings.strength = 0.0;
    job.settings.gammaCorrection = false;
    const RenderJob result = ResultOf(job);
    for (int x = 0; x < 256; ++x) {
        // The entry of index i is i / 32767 of white; both steps cut.
        const double index = std::floor(x * 32767.0 / 255.0 + 1e-6);
        const double expected = index / 32767.0 * 255.0;
        EXPECT_NEAR(result.Get(x, 0, 0), expected, 1.0) << x;
        EXPECT_LE(result.Get(x, 0, 0), x) << x;
    }
    EXPECT_EQ(result.Get(255, 0, 0), 255.0);
    EXPECT_EQ(result.Get(0, 0, 0), 0.0);
}

TEST(EffectTone, LinearLightAndBackKeepsEveryValueWithinAStep) {
    RenderJob job = RampJob();
    job.settings.strength = 0.0;
    const RenderJob result = ResultOf(job);
    for (int x = 0; x < 256; ++x) {
        EXPECT_NEAR(result.Get(x, 0, 0), x, 2.0) << x;
    }
}

TEST(EffectTone, ACorrectiveGammaOfZeroLeavesWhiteOnly) {
    RenderJob job = RampJob();
    job.settings.strength = 0.0;
    job.settings.gammaCorrection = false;
    job.settings.gammaCorrective = 0.0;
    const RenderJob result = ResultOf(job);
    EXPECT_EQ(result.Get(255, 0, 0), 255.0);
    EXPECT_EQ(result.Get(250, 0, 0), 0.0);
    EXPECT_EQ(result.Get(128, 0, 0), 0.0);
    ExpectSameBytes(job);
}

TEST(EffectTone, IntensityIsAPlainGain) {
    RenderJob job = PlainJob(5, 5, 3, false, 32, 0.25);
    job.settings.strength = 0.0;
    job.settings.gammaCorrection = false;
    job.settings.intensity = 3.0;
    EXPECT_EQ(ResultOf(job).Get(2, 2, 1), 0.75);
    job.settings.intensity = 0.0;
    EXPECT_EQ(ResultOf(job).Get(2, 2, 1), 0.0);
}

TEST(EffectTone, ContrastOnFloatsMayExceedOneAndIsStoredSo) {
    RenderJob job = PlainJob(5, 5, 3, false, 32, 0.75);
    job.settings.strength = 0.0;
    job.settings.gammaCorrection = false;
    job.settings.contrast = 2.0;
    EXPECT_EQ(ResultOf(job).Get(0, 0, 0), (0.75 + 0.5) * 2.0 + 0.75);
}

TEST(EffectTone, LightnessAtItsEndsGivesWhiteAndBlack) {
    for (const int depth : {8, 16, 32}) {
        RenderJob job = PlainJob(5, 4, 3, false, depth, 0.4);
        job.settings.lightness = 1.0;
        const double white = depth == 32 ? 1.0 : depth == 16 ? 32768.0 : 255.0;
        EXPECT_EQ(ResultOf(job).Get(2, 2, 0), white);
        job.settings.lightness = -1.0;
        EXPECT_EQ(ResultOf(job).Get(2, 2, 0), 0.0);
    }
}

TEST(EffectTone, SaturationLeavesHueZeroAlone) {
    // Red, whose hue is exactly 0, keeps its colour; green with the same spread loses it.
    RenderJob job = PlainJob(2, 1, 3, false, 32, 0.0);
    const double red[3] = {0.75, 0.25, 0.25};
    const double green[3] = {0.25, 0.75, 0.25};
    for (int plane = 0; plane < 3; ++plane) {
        job.Set(0, 0, plane, red[plane]);
        job.Set(1, 0, plane, green[plane]);
    }
    job.settings.strength = 0.0;
    job.settings.gammaCorrection = false;
    job.settings.saturation = -1.0;
    const RenderJob result = ResultOf(job);
    for (int plane = 0; plane < 3; ++plane) {
        EXPECT_EQ(result.Get(0, 0, plane), red[plane]);
        EXPECT_EQ(result.Get(1, 0, plane), 0.5);
    }
}

TEST(EffectTone, AWholeTurnOfHueIsHalfTheWheel) {
    RenderJob job = PlainJob(2, 1, 3, false, 32, 0.0);
    job.Set(0, 0, 0, 1.0);
    job.settings.strength = 0.0;
    job.settings.gammaCorrection = false;
    for (const double hue : {1.0, -1.0}) {
        job.settings.hue = hue;
        const RenderJob result = ResultOf(job);
        EXPECT_EQ(result.Get(0, 0, 0), 0.0);
        EXPECT_EQ(result.Get(0, 0, 1), 1.0);
        EXPECT_EQ(result.Get(0, 0, 2), 1.0);
    }
}

TEST(EffectBlur, OnePixelHasNoRayAndBecomesBlack) {
    RenderJob job = PlainJob(1, 1, 3, false, 8, 1.0);
    EXPECT_EQ(RenderedOutput(job), std::vector<std::uint8_t>(3, 0));
    job.settings.strength = 0.0;
    EXPECT_EQ(RenderedOutput(job), std::vector<std::uint8_t>(3, 255));
}

TEST(EffectBlur, AUniformPictureStaysSoWhileWindowsPointInward) {
    for (const int mode : {1, 2}) {
        for (const double strength : {0.05, 0.5, 1.0}) {
            RenderJob job = PlainJob(33, 27, 3, false, 32, 0.5);
            job.settings.gammaCorrection = false;
            job.settings.mode = mode;
            job.settings.strength = strength;
            job.settings.originX = 0.31;
            job.settings.originY = 0.77;
            const RenderJob result = ResultOf(job);
            for (int i = 0; i < 33 * 27; ++i) {
                for (int plane = 0; plane < 3; ++plane) {
                    ASSERT_NEAR(result.Get(i % 33, i / 33, plane), 0.5, 2e-6)
                        << i % 33 << ", " << i / 33 << " mode " << mode;
                }
            }
        }
    }
}

TEST(EffectBlur, AWindowCutAtTheEndOfTheRayIsDarkerInNormalMode) {
    RenderJob job = PlainJob(41, 41, 1, false, 32, 0.5);
    job.settings.gammaCorrection = false;
    job.settings.zoomStart = -0.5;
    job.settings.strength = 0.5;
    // The centre is pixel 20; on the ray to the right border the last pixel has a window of 10
    // pixels outward, of which one is there.
    EXPECT_NEAR(ResultOf(job).Get(40, 20, 0), 0.5 / 10.0, 1e-6);
    EXPECT_NEAR(ResultOf(job).Get(20, 20, 0), 0.5, 1e-6);
    // The spectral means are over what is there.
    job.settings.mode = 2;
    EXPECT_NEAR(ResultOf(job).Get(40, 20, 0), 0.5, 1e-6);
}

TEST(EffectBlur, NothingInsideTheHoldoutRadiusIsBlurred) {
    Random random(77);
    RenderJob job = PlainJob(41, 31, 1, false, 32, 0.0);
    for (int i = 0; i < 41 * 31; ++i) {
        job.Set(i % 41, i / 41, 0, random.Unit());
    }
    job.settings.gammaCorrection = false;
    job.settings.strength = 1.0;
    job.settings.holdoutRadius = 2.0;
    // On the four straight rays the samples are the pixels themselves, and next to the centre no
    // other ray is a whole pixel away.
    const RenderJob result = ResultOf(job);
    RenderJob sharp = job;
    sharp.settings.strength = 1e-9;
    sharp.settings.holdoutRadius = 0.0;
    const RenderJob reference = ResultOf(sharp);
    for (int i = 0; i < 41 * 31; ++i) {
        EXPECT_NEAR(result.Get(i % 41, i / 41, 0), reference.Get(i % 41, i / 41, 0), 1e-5);
    }
}

TEST(EffectBlur, InvertGradientDoesNothingInNormalMode) {
    Random random(5);
    RenderJob job = RandomPicture(random, 2, 24, 18);
    job.settings.invertGradient = false;
    const std::vector<std::uint8_t> off = RenderedOutput(job);
    job.settings.invertGradient = true;
    EXPECT_EQ(RenderedOutput(job), off);
    job.settings.mode = 2;
    EXPECT_NE(RenderedOutput(job), off);
}

TEST(EffectBlur, TheSizeSelectionTakesTheMaskOutAndChangesNothingElse) {
    Random random(6);
    RenderJob job = RandomPicture(random, 2, 24, 18);
    job.mask.assign(static_cast<std::size_t>(18 * job.maskRowBytes), 40);
    job.settings.useSizeSelection = true;
    const std::vector<std::uint8_t> withSize = RenderedOutput(job);
    job.mask.clear();
    job.settings.useSizeSelection = false;
    EXPECT_EQ(RenderedOutput(job), withSize);
}

TEST(EffectBlur, CentresAtEveryKindOfPlaceGiveTheSameAsTheSecondComputation) {
    Random random(12);
    const double places[] = {-3.0, -1.0, -0.99, -0.5, -0.03, 0.0, 0.5, 0.96, 1.0, 1.04, 1.5, 9.0};
    for (const double x : places) {
        for (const double y : places) {
            RenderJob job =
                RandomPicture(random, random.Below(18), 1 + random.Below(20), 1 + random.Below(20));
            job.settings.originX = x;
            job.settings.originY = y;
            job.settings.mode = 1 + random.Below(2);
            job.settings.strength = 0.6;
            ExpectSameBytes(job);
        }
    }
}

TEST(EffectBlur, ANegativeOriginTruncatesTowardZeroAndTakesItsFractionFromBelow) {
    Random random(13);
    for (const double pixels : {-0.25, -0.5, -0.75, -1.0, -1.25, -7.5}) {
        RenderJob job = RandomPicture(random, 8, 17, 12);
        job.settings.originX = pixels / 17.0;
        job.settings.originY = 0.4;
        ExpectSameBytes(job);
    }
}

TEST(EffectBlend, NoneReplaceIsTheEffectItself) {
    Random random(14);
    RenderJob job = RandomPicture(random, 2, 12, 9);
    job.settings.blendMode = 1;
    const std::vector<std::uint8_t> normal = RenderedOutput(job);
    job.settings.blendMode = 23;
    // Without alpha, "normal" replaces too.
    EXPECT_EQ(RenderedOutput(job), normal);
}

TEST(EffectBlend, AlphaModesLeaveAPictureWithoutAlphaAsItIs) {
    Random random(15);
    for (const int shape : {0, 1, 2, 6, 8, 12, 14}) {
        RenderJob job = RandomPicture(random, shape, 12, 9);
        for (int mode = 19; mode <= 22; ++mode) {
            job.settings.blendMode = mode;
            const RenderJob result = ResultOf(job);
            const int colors = 1 + shape % 3;
            for (int i = 0; i < 12 * 9; ++i) {
                for (int plane = 0; plane < colors; ++plane) {
                    const double before = job.Get(i % 12, i / 12, plane);
                    ASSERT_EQ(result.Get(i % 12, i / 12, plane), before < 0.0 ? 0.0 : before);
                }
            }
        }
    }
}

TEST(EffectBlend, GrayWithAlphaInAdditionIsStoredWithoutDivision) {
    RenderJob job = PlainJob(3, 3, 1, true, 32, 0.0);
    for (int i = 0; i < 9; ++i) {
        job.Set(i % 3, i / 3, 0, 0.5);
        job.Set(i % 3, i / 3, 1, 0.5);
    }
    job.settings.strength = 0.0;
    job.settings.gammaCorrection = false;
    job.settings.blendMode = 5;
    // The effect pixel has the colour 0.25 and, after the square of alpha, an alpha of 0.25:
    // straight it is 1, weighted 0.25. The backdrop weighs 0.25 too.
    const RenderJob result = ResultOf(job);
    EXPECT_EQ(result.Get(1, 1, 0), 0.5);
    EXPECT_EQ(result.Get(1, 1, 1), 0.5);
}

TEST(EffectSelection, TheUpperEndAloneIsAWindowAroundBlack) {
    // Both ends at white wrap to 0: only a lightness of 0 is inside. Meant so.
    RenderJob job = RampJob();
    job.settings.selectionLow = 255.0;
    job.settings.selectionHigh = 255.0;
    job.settings.selectionShow = 3;
    const RenderJob result = ResultOf(job);
    for (int x = 0; x < 256; ++x) {
        EXPECT_EQ(result.Get(x, 0, 0), x == 0 ? 255.0 : 0.0) << x;
    }
}

TEST(EffectSelection, GrayCountsAsHalfItsValue) {
    RenderJob job = RampJob();
    job.settings.selectionLow = 60.0;
    job.settings.selectionHigh = 100.0;
    job.settings.selectionShow = 3;
    const RenderJob result = ResultOf(job);
    EXPECT_EQ(result.Get(119, 0, 0), 0.0);
    EXPECT_EQ(result.Get(121, 0, 0), 255.0);
    EXPECT_EQ(result.Get(199, 0, 0), 255.0);
    EXPECT_EQ(result.Get(201, 0, 0), 0.0);
}

TEST(EffectSelection, LowAndHighMayBeSwapped) {
    Random random(16);
    RenderJob job = RandomPicture(random, 2, 12, 9);
    job.settings.selectionLow = 40.0;
    job.settings.selectionHigh = 170.0;
    job.settings.selectionSoften = 1.5;
    job.settings.selectionClimax = 0.25;
    const std::vector<std::uint8_t> straight = RenderedOutput(job);
    std::swap(job.settings.selectionLow, job.settings.selectionHigh);
    EXPECT_EQ(RenderedOutput(job), straight);
}

TEST(EffectSizes, ThinPicturesOfEveryShape) {
    Random random(17);
    const int sizes[][2] = {{1, 1}, {1, 2}, {2, 1}, {1, 70}, {70, 1}, {2, 2}, {2, 70}, {70, 2}};
    for (int shape = 0; shape < kShapes; ++shape) {
        for (const auto& size : sizes) {
            RenderJob job = RandomPicture(random, shape, size[0], size[1]);
            job.settings.mode = 1 + random.Below(2);
            job.settings.originX = random.Between(-1.0, 2.0);
            job.settings.originY = random.Between(-1.0, 2.0);
            ExpectSameBytes(job);
        }
    }
}

TEST(EffectSizes, LongAndThinPictures) {
    Random random(18);
    const int sizes[][2] = {{1200, 1}, {1, 1200}, {500, 3}, {3, 500}};
    for (const int shape : {0, 5, 14}) {
        for (const auto& size : sizes) {
            RenderJob job = RandomPicture(random, shape, size[0], size[1]);
            job.settings.mode = 1 + shape % 2;
            job.settings.originX = random.Between(-0.2, 1.2);
            job.settings.originY = random.Between(-0.2, 1.2);
            ExpectSameBytes(job);
        }
    }
}

TEST(EffectSizes, APictureWithoutPixelsIsDoneAtOnce) {
    const int sizes[][2] = {{0, 0}, {0, 5}, {5, 0}};
    for (const auto& size : sizes) {
        RenderJob job = PlainJob(size[0], size[1], 3, false, 8, 0.5);
        JobSession session(job);
        EXPECT_EQ(session.Start(), hostapi::noErr);
        EXPECT_EQ(session.Reproach(), "");
    }
}

}  // namespace
}  // namespace endtoend
