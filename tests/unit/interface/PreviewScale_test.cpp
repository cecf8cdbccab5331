#include "interface/PreviewScale.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

namespace mv {
namespace {

std::string Percentage(std::int32_t step) {
    char text[kPercentageCapacity];
    PercentageOfStep(step, text);
    return text;
}

struct Row {
    std::int32_t step;
    const char* text;
    double displayScale;
    std::int32_t renderFactor;
};

class ZoomStep : public testing::TestWithParam<Row> {};

TEST_P(ZoomStep, HasItsPercentageScaleAndFactor) {
    const Row& row = GetParam();
    EXPECT_EQ(Percentage(row.step), row.text);
    const PreviewScale scale = ScaleOfStep(row.step, 0);
    EXPECT_DOUBLE_EQ(scale.displayScale, row.displayScale);
    EXPECT_EQ(scale.renderFactor, row.renderFactor);
}

INSTANTIATE_TEST_SUITE_P(Table, ZoomStep,
                         testing::Values(Row{3, "33.33%", 1.0, 3}, Row{2, "50%", 1.0, 2},
                                         Row{1, "100%", 1.0, 1}, Row{0, "133.3%", 0.75, 1},
                                         Row{-1, "200%", 0.5, 1}, Row{-2, "266.7%", 0.375, 1},
                                         Row{4, "25%", 1.0, 4}, Row{7, "14.29%", 1.0, 7},
                                         Row{-4, "400%", 0.25, 1}));

TEST(PreviewScale, DetailLevelAddsToTheFactorAndKeepsTheSizeOnTheScreen) {
    EXPECT_EQ(ScaleOfStep(1, 1).renderFactor, 2);
    EXPECT_DOUBLE_EQ(ScaleOfStep(1, 1).displayScale, 0.5);
    EXPECT_EQ(ScaleOfStep(2, 1).renderFactor, 3);
    EXPECT_DOUBLE_EQ(ScaleOfStep(2, 1).displayScale, 2.0 / 3.0);
    EXPECT_EQ(ScaleOfStep(3, 2).renderFactor, 5);
    EXPECT_DOUBLE_EQ(ScaleOfStep(3, 2).displayScale, 0.6);
    EXPECT_EQ(ScaleOfStep(0, 1).renderFactor, 2);
    EXPECT_DOUBLE_EQ(ScaleOfStep(0, 1).displayScale, 0.375);
    EXPECT_EQ(ScaleOfStep(-1, 3).renderFactor, 4);
    EXPECT_DOUBLE_EQ(ScaleOfStep(-1, 3).displayScale, 0.125);
}

TEST(PreviewScale, StepsFarOutStayDefined) {
    for (const std::int32_t step : {INT_MIN, INT_MIN + 1, -100000, 100000, INT_MAX - 1, INT_MAX}) {
        for (const std::int32_t level : {0, 1, 100000, INT_MAX}) {
            const PreviewScale scale = ScaleOfStep(step, level);
            EXPECT_GT(scale.displayScale, 0.0);
            EXPECT_GE(scale.renderFactor, 1);
        }
        EXPECT_EQ(Percentage(step).back(), '%');
    }
    EXPECT_EQ(StepCoarserThan(INT_MAX), INT_MAX);
    EXPECT_EQ(StepFinerThan(INT_MIN), INT_MIN);
    EXPECT_EQ(StepCoarserThan(1), 2);
    EXPECT_EQ(StepFinerThan(1), 0);
    EXPECT_EQ(Percentage(-200), "1.347e+04%");
}

TEST(PreviewScale, TheWholeImageFitsAtTheStepOfItsLongerSide) {
    EXPECT_EQ(StepThatFits({300, 200}, {400, 400}), 1);   // 0 + 1
    EXPECT_EQ(StepThatFits({400, 200}, {400, 400}), 2);   // exactly the frame is one too many
    EXPECT_EQ(StepThatFits({1000, 900}, {400, 300}), 4);  // 2 across, 3 down
    EXPECT_EQ(StepThatFits({6000, 4000}, {700, 700}), 9);
}

TEST(PreviewScale, AFrameWithoutSizeDividesNothingByZero) {
    EXPECT_EQ(StepThatFits({300, 200}, {0, 0}), 301);
    EXPECT_EQ(StepThatFits({0, 0}, {0, 0}), 1);
    EXPECT_EQ(StepThatFits({-5, -5}, {-1, 0}), 1);
}

TEST(PreviewScale, CentreIsThePicturesOwnWhenItFits) {
    const PixelPoint centre = CentreOfView({400, 400}, {301, 200}, 1.0, {17, 19});
    EXPECT_EQ(centre.x, 150);
    EXPECT_EQ(centre.y, 100);
}

TEST(PreviewScale, CentreIsTheViewsWhenThePictureIsLarger) {
    // Across: 400 < 2 * 301, so 400 * 0.5 * 0.5 + 17. Down: 400 = 2 * 200 still fits.
    const PixelPoint centre = CentreOfView({400, 400}, {301, 200}, 0.5, {17, 19});
    EXPECT_EQ(centre.x, 117);
    EXPECT_EQ(centre.y, 100);
}

TEST(PreviewScale, OffsetPutsThePointIntoTheMiddle) {
    const PixelPoint offset = OffsetForCentre({200, 100}, {300, 100}, 0.75);
    EXPECT_EQ(offset.x, 87);  // 200 - 112.5, truncated
    EXPECT_EQ(offset.y, 62);  // 100 - 37.5
}

TEST(PreviewScale, ZoomingKeepsThePointInTheMiddle) {
    // From 100 x 80 to 300 x 241 pixels, the point (40, 20) goes to (120, 60.25).
    const PixelPoint offset =
        OffsetForCentre({40, 20}, PixelSize{100, 80}, PixelSize{300, 241}, {101, 51}, 1.0);
    EXPECT_EQ(offset.x, 69);  // 120 - 50.5
    EXPECT_EQ(offset.y, 34);  // 60.25 - 25.5 = 34.75
}

TEST(PreviewScale, FromAnEmptyPictureTheViewStartsInTheMiddle) {
    const PixelPoint offset =
        OffsetForCentre({0, 0}, PixelSize{0, 0}, PixelSize{300, 200}, {100, 100}, 1.0);
    EXPECT_EQ(offset.x, 100);
    EXPECT_EQ(offset.y, 50);
}

TEST(PreviewScale, BufferRowsAreLongerThanThePicture) {
    EXPECT_EQ(BufferWidthFor(0), 32);
    EXPECT_EQ(BufferWidthFor(31), 32);
    EXPECT_EQ(BufferWidthFor(32), 64);
    EXPECT_EQ(BufferWidthFor(64), 96);
    EXPECT_EQ(BufferWidthFor(65), 96);
    EXPECT_EQ(BufferWidthFor(-7), 32);
    EXPECT_GT(BufferWidthFor(INT_MAX), 0);
}

TEST(PreviewScale, BufferBytesThatThirtyTwoBitsCannotHoldAreNone) {
    EXPECT_EQ(BufferBytesFor(96, 10), 2880u);
    EXPECT_EQ(BufferBytesFor(32768, 32767), 3221127168u);
    EXPECT_EQ(BufferBytesFor(65536, 65536), 0u);
    EXPECT_EQ(BufferBytesFor(INT_MAX, INT_MAX), 0u);
    EXPECT_EQ(BufferBytesFor(32, 0), 0u);
    EXPECT_EQ(BufferBytesFor(-32, 5), 0u);
}

}  // namespace
}  // namespace mv
