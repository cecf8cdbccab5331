#include "interface/WindowPlacement.h"

#include <gtest/gtest.h>

namespace mv {
namespace {

struct Place {
    int x;
    int y;
};

Place Pulled(int x, int y, ScreenSize screen) {
    std::int32_t px = x;
    std::int32_t py = y;
    PullOntoScreen(px, py, screen);
    return {px, py};
}

TEST(WindowPlacement, NegativePlacesBecomeZero) {
    const Place place = Pulled(-1200, -1, {1920, 1080});
    EXPECT_EQ(place.x, 0);
    EXPECT_EQ(place.y, 0);
}

TEST(WindowPlacement, PlacesBeyondTheFarEdgeComeFiftyPixelsInside) {
    const Place place = Pulled(2500, 1081, {1920, 1080});
    EXPECT_EQ(place.x, 1870);
    EXPECT_EQ(place.y, 1030);
}

TEST(WindowPlacement, TheEdgeItselfStays) {
    const Place place = Pulled(1920, 1080, {1920, 1080});
    EXPECT_EQ(place.x, 1920);
    EXPECT_EQ(place.y, 1080);
}

TEST(WindowPlacement, WithoutAScreenSizeNothingIsPulled) {
    EXPECT_EQ(Pulled(-5, 9000, {0, 1080}).x, -5);
    EXPECT_EQ(Pulled(-5, 9000, {1920, 0}).y, 9000);
}

TEST(WindowPlacement, TheFirstPreviewIsASquareOfTwoThirdsOfTheWidth) {
    const WindowPlacement placement = FirstPreviewPlacement({1600, 1200});
    EXPECT_EQ(placement.width, 1066);
    EXPECT_EQ(placement.height, 1066);
    EXPECT_EQ(placement.x, 267);
    EXPECT_EQ(placement.y, 67);
    EXPECT_EQ(placement.state, 0u);
}

TEST(WindowPlacement, OnAWideScreenTheSquareStartsAboveIt) {
    const WindowPlacement placement = FirstPreviewPlacement({1920, 1080});
    EXPECT_EQ(placement.width, 1280);
    EXPECT_EQ(placement.x, 320);
    EXPECT_EQ(placement.y, -100);
}

TEST(WindowPlacement, BothLowBitsOfTheStateMeanMaximised) {
    EXPECT_TRUE(OpensMaximised(3));
    EXPECT_TRUE(OpensMaximised(7));
    EXPECT_FALSE(OpensMaximised(1));
    EXPECT_FALSE(OpensMaximised(2));
    EXPECT_FALSE(OpensMaximised(0));
}

}  // namespace
}  // namespace mv
