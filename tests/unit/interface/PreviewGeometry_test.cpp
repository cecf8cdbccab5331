#include "interface/PreviewGeometry.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <string>

namespace mv {
namespace {

void ExpectRect(const PixelRect& rect, int left, int top, int right, int bottom) {
    EXPECT_EQ(rect.left, left);
    EXPECT_EQ(rect.top, top);
    EXPECT_EQ(rect.right, right);
    EXPECT_EQ(rect.bottom, bottom);
}

TEST(PreviewGeometry, ASmallPictureStandsInTheMiddle) {
    const PreviewLayout layout = LayOutPreview({10, 20, {400, 300}}, {101, 50}, 1.0, {9, -9});
    ExpectRect(layout.target, 159, 145, 260, 195);  // 10 + 299/2, 20 + 250/2
    EXPECT_EQ(layout.offset.x, 0);
    EXPECT_EQ(layout.offset.y, 0);
    EXPECT_EQ(layout.sourceSize.width, 101);
    EXPECT_EQ(layout.sourceSize.height, 50);
}

TEST(PreviewGeometry, ALargePictureFillsTheFrameAndItsOffsetIsPulledBack) {
    const PreviewLayout layout = LayOutPreview({0, 0, {200, 100}}, {500, 400}, 1.0, {350, 350});
    ExpectRect(layout.target, 0, 0, 200, 100);
    EXPECT_EQ(layout.offset.x, 300);
    EXPECT_EQ(layout.offset.y, 300);
    EXPECT_EQ(layout.sourceOrigin.x, 300);
    EXPECT_EQ(layout.sourceSize.width, 200);
    EXPECT_EQ(layout.sourceSize.height, 100);
}

TEST(PreviewGeometry, AMagnifiedViewTakesASmallerSource) {
    // Scale 0.75: 500 pixels are 666 on the screen, and a frame of 200 shows 150 of them.
    const PreviewLayout layout = LayOutPreview({0, 0, {200, 1000}}, {500, 400}, 0.75, {7, 7});
    EXPECT_EQ(layout.screenSize.width, 666);
    EXPECT_EQ(layout.screenSize.height, 533);
    ExpectRect(layout.target, 0, 233, 200, 766);
    EXPECT_EQ(layout.offset.x, 7);
    EXPECT_EQ(layout.offset.y, 0);
    EXPECT_EQ(layout.sourceSize.width, 150);
    EXPECT_EQ(layout.sourceSize.height, 399);  // 533 * 0.75 = 399.75
}

TEST(PreviewGeometry, StripsCoverAllAroundThePictureAndAWindowJustEnlarged) {
    const PreviewLayout layout = LayOutPreview({0, 0, {400, 300}}, {100, 50}, 1.0, {});
    ExpectRect(layout.strips[0], 0, 0, 400, 125);
    ExpectRect(layout.strips[1], 0, 175, 400, 500);
    ExpectRect(layout.strips[2], 0, 0, 150, 500);
    ExpectRect(layout.strips[3], 250, 0, 400, 500);
}

TEST(PreviewGeometry, HandleStandsOnThePosition) {
    const PreviewLayout small = LayOutPreview({0, 0, {400, 300}}, {100, 50}, 1.0, {});
    const PixelPoint middle = HandleCentre(small, 1.0, 0.5, 0.5);
    EXPECT_EQ(middle.x, 200);
    EXPECT_EQ(middle.y, 150);
    const PixelPoint corner = HandleCentre(small, 1.0, 0.0, 1.0);
    EXPECT_EQ(corner.x, 150);
    EXPECT_EQ(corner.y, 175);
}

TEST(PreviewGeometry, HandleFollowsThePan) {
    // The vertical offset counts from the bottom: at 0 the picture's last rows are in view.
    const PreviewLayout bottom = LayOutPreview({0, 0, {200, 100}}, {500, 400}, 1.0, {0, 0});
    EXPECT_EQ(HandleCentre(bottom, 1.0, 0.2, 1.0).x, 100);
    EXPECT_EQ(HandleCentre(bottom, 1.0, 0.2, 1.0).y, 100);
    const PreviewLayout top = LayOutPreview({0, 0, {200, 100}}, {500, 400}, 1.0, {50, 300});
    EXPECT_EQ(HandleCentre(top, 1.0, 0.2, 0.0).x, 50);
    EXPECT_EQ(HandleCentre(top, 1.0, 0.2, 0.0).y, 0);
}

TEST(PreviewGeometry, ClientPointInASmallPicture) {
    const PreviewFrame frame = {0, 0, {400, 300}};
    const NormalisedPoint middle = ClientToPosition({200, 150}, frame, {100, 50}, 1.0, {});
    EXPECT_DOUBLE_EQ(middle.x, 0.5);
    EXPECT_DOUBLE_EQ(middle.y, 0.5);
    const NormalisedPoint beside = ClientToPosition({100, 225}, frame, {100, 50}, 1.0, {});
    EXPECT_DOUBLE_EQ(beside.x, -0.5);
    EXPECT_DOUBLE_EQ(beside.y, 2.0);
}

TEST(PreviewGeometry, ClientPointInALargePicture) {
    const PreviewFrame frame = {0, 0, {200, 100}};
    const NormalisedPoint point = ClientToPosition({50, 0}, frame, {500, 400}, 1.0, {50, 300});
    EXPECT_DOUBLE_EQ(point.x, 0.2);
    EXPECT_DOUBLE_EQ(point.y, 0.0);
    const NormalisedPoint last = ClientToPosition({0, 100}, frame, {500, 400}, 1.0, {0, 0});
    EXPECT_DOUBLE_EQ(last.x, 0.0);
    EXPECT_DOUBLE_EQ(last.y, 1.0);
}

TEST(PreviewGeometry, ClientPointAtTwiceTheSize) {
    // 101 pixels at scale 0.75 are 134.67, rounded to 135 on the screen.
    const PreviewFrame frame = {5, 7, {400, 300}};
    const NormalisedPoint point = ClientToPosition({5 + 132, 7}, frame, {101, 50}, 0.75, {});
    EXPECT_DOUBLE_EQ(point.x, 0.0);
    const NormalisedPoint next = ClientToPosition({5 + 132 + 27, 7}, frame, {101, 50}, 0.75, {});
    EXPECT_DOUBLE_EQ(next.x, 0.2);
}

// The inverse, within one screen pixel, over frames, pictures, scales and offsets.
TEST(PreviewGeometry, HandleAndClientPointAreInverse) {
    for (const double scale : {1.0, 0.75, 0.5, 0.375}) {
        for (const PixelSize picture : {PixelSize{120, 90}, PixelSize{700, 500}}) {
            for (const PixelPoint offset : {PixelPoint{0, 0}, PixelPoint{60, 40}}) {
                const PreviewFrame frame = {3, 2, {310, 240}};
                const PreviewLayout layout = LayOutPreview(frame, picture, scale, offset);
                for (const double x : {0.1, 0.5, 0.85}) {
                    const PixelPoint handle = HandleCentre(layout, scale, x, 1.0 - x);
                    const NormalisedPoint back =
                        ClientToPosition(handle, frame, picture, scale, layout.offset);
                    EXPECT_NEAR(back.x, x, 2.5 * scale / picture.width);
                    EXPECT_NEAR(back.y, 1.0 - x, 2.5 * scale / picture.height);
                }
            }
        }
    }
}

TEST(PreviewGeometry, PanFollowsTheMouseAndRowsRunUp) {
    const PixelPoint offset = PannedOffset({100, 100}, {10, 10}, {30, 25}, 0.5);
    EXPECT_EQ(offset.x, 90);   // 20 screen pixels to the right are 10 of the buffer
    EXPECT_EQ(offset.y, 107);  // 15 down: -7.5, truncated to -7
}

TEST(PreviewGeometry, TitleCountsImagePixelsWithOneDecimal) {
    EXPECT_DOUBLE_EQ(TitleCoordinate(250, 4, 0, 0.5), 500.0);
    EXPECT_DOUBLE_EQ(TitleCoordinate(1000, 1, 0, 0.12345), 123.4);
    EXPECT_DOUBLE_EQ(TitleCoordinate(1000, 0, 0, 0.5), 500.0);
    EXPECT_DOUBLE_EQ(TitleCoordinate(1000, -2, 0, 0.5), 500.0);
    EXPECT_DOUBLE_EQ(TitleCoordinate(200, 3, 2, 0.5), 500.0);
    EXPECT_DOUBLE_EQ(TitleCoordinate(1000, 1, 0, -0.01), -10.0);
    char text[kTitleCapacity];
    TitleText(123.4, -10.0, text);
    EXPECT_STREQ(text, "Preview:  x: 123.4 y: -10");
}

TEST(PreviewGeometry, TitleOfAMagnifiedCoarseFrameIsTooSmallAsItIsMeant) {
    EXPECT_DOUBLE_EQ(TitleCoordinate(500, -1, 1, 0.5), 0.0);
}

TEST(PreviewGeometry, FrameContainsItsFirstPixelsAndNotItsEnds) {
    const PreviewFrame frame = {3, 4, {10, 20}};
    EXPECT_TRUE(frame.Contains({3, 4}));
    EXPECT_TRUE(frame.Contains({12, 23}));
    EXPECT_FALSE(frame.Contains({13, 4}));
    EXPECT_FALSE(frame.Contains({3, 24}));
    EXPECT_FALSE(frame.Contains({2, 4}));
    EXPECT_FALSE((PreviewFrame{0, 0, {0, 0}}).Contains({0, 0}));
}

TEST(PreviewGeometry, HostileSizesStayDefined) {
    const double infinity = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const double scale : {1e-9, 1.0, 1e9}) {
        for (const PixelSize picture : {PixelSize{0, 0}, PixelSize{32767, 32767}}) {
            for (const PixelSize size : {PixelSize{0, 0}, PixelSize{32767, 1}}) {
                const PreviewFrame frame = {0, 0, size};
                const PreviewLayout layout =
                    LayOutPreview(frame, picture, scale, {INT_MAX, INT_MIN});
                EXPECT_GE(layout.offset.x, 0);
                EXPECT_GE(layout.offset.y, 0);
                for (const double position : {0.5, infinity, -infinity, nan, 1e300}) {
                    const PixelPoint handle = HandleCentre(layout, scale, position, position);
                    EXPECT_LE(std::abs(handle.x), 1000000);
                    EXPECT_LE(std::abs(handle.y), 1000000);
                    TitleCoordinate(picture.width, INT_MAX, INT_MAX, position);
                }
                const NormalisedPoint point =
                    ClientToPosition({32767, -32768}, frame, picture, scale, layout.offset);
                EXPECT_FALSE(std::isnan(point.x) || std::isinf(point.x));
                EXPECT_FALSE(std::isnan(point.y) || std::isinf(point.y));
            }
        }
    }
}

}  // namespace
}  // namespace mv
