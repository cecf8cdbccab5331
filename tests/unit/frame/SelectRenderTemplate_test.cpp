// Which records are rendered, and which are left alone with success.
#include <gtest/gtest.h>

#include "support/TestRender.h"

namespace mv {
namespace {

using test::TestFilter;
using test::TestPicture;

// True when the output was written.
bool IsRendered(void (*change)(hostapi::FilterRecord&)) {
    TestFilter filter;
    TestPicture picture = test::MakeNoise({3, true, 8, 4}, 8, 6, 1, false);
    std::vector<std::uint8_t> out(picture.bytes.size(), 0xA5);
    const std::vector<std::uint8_t> before = out;
    hostapi::FilterRecord record = test::MakeRecord(picture, out);
    change(record);
    EXPECT_EQ(filter.SelectRenderTemplate(&record), 0);
    return out != before;
}

TEST(SelectRenderTemplate, RendersWhatItServes) {
    EXPECT_TRUE(IsRendered([](hostapi::FilterRecord&) {}));
}

TEST(SelectRenderTemplate, TakesDepthZeroAsEightBit) {
    EXPECT_TRUE(IsRendered([](hostapi::FilterRecord& record) { record.depth = 0; }));
}

TEST(SelectRenderTemplate, LeavesOtherModesAlone) {
    EXPECT_FALSE(IsRendered([](hostapi::FilterRecord& record) { record.imageMode = 4; }));
    EXPECT_FALSE(IsRendered([](hostapi::FilterRecord& record) { record.imageMode = 9; }));
    EXPECT_FALSE(IsRendered([](hostapi::FilterRecord& record) { record.imageMode = -1; }));
}

TEST(SelectRenderTemplate, LeavesOtherDepthsAlone) {
    EXPECT_FALSE(IsRendered([](hostapi::FilterRecord& record) { record.depth = 24; }));
    EXPECT_FALSE(IsRendered([](hostapi::FilterRecord& record) { record.depth = -8; }));
}

TEST(SelectRenderTemplate, LeavesPixelsTooSmallForTheShapeAlone) {
    EXPECT_FALSE(IsRendered([](hostapi::FilterRecord& record) { record.planes = 2; }));
    EXPECT_FALSE(IsRendered([](hostapi::FilterRecord& record) { record.planes = 0; }));
    EXPECT_FALSE(IsRendered([](hostapi::FilterRecord& record) {
        record.inTransparencyMask = 0;
        record.planes = 2;
    }));
}

TEST(SelectRenderTemplate, LeavesAnEmptyRectangleAlone) {
    EXPECT_FALSE(IsRendered([](hostapi::FilterRecord& record) { record.outRect.right = 0; }));
    EXPECT_FALSE(IsRendered([](hostapi::FilterRecord& record) { record.outRect.bottom = -3; }));
}

TEST(SelectRenderTemplate, LeavesARecordWithoutPixelsAlone) {
    EXPECT_FALSE(IsRendered([](hostapi::FilterRecord& record) { record.inData = nullptr; }));
    EXPECT_FALSE(IsRendered([](hostapi::FilterRecord& record) { record.outData = nullptr; }));
}

// The plane count says that there is no transparency in the buffer after all.
TEST(SelectRenderTemplate, TakesThreePlanesAsOpaqueWhateverTheHostClaims) {
    TestFilter filter;
    TestPicture picture = test::MakeNoise({3, false, 8, 3}, 9, 7, 1, false);
    std::vector<std::uint8_t> claimed(picture.bytes.size());
    hostapi::FilterRecord record = test::MakeRecord(picture, claimed);
    record.inTransparencyMask = 1;
    EXPECT_EQ(filter.SelectRenderTemplate(&record), 0);
    EXPECT_EQ(claimed, test::RenderPicture(filter, picture));
}

TEST(SelectRenderTemplate, ServesTwoPlanesOfAMultichannelImage) {
    TestFilter filter;
    TestPicture picture = test::MakeNoise({2, false, 8, 2}, 9, 7, 1, false);
    std::vector<std::uint8_t> multichannel(picture.bytes.size());
    hostapi::FilterRecord record = test::MakeRecord(picture, multichannel);
    record.imageMode = 7;
    record.inLayerPlanes = 0;
    record.inNonLayerPlanes = 2;
    EXPECT_EQ(filter.SelectRenderTemplate(&record), 0);
    EXPECT_EQ(multichannel, test::RenderPicture(filter, picture));
}

}  // namespace
}  // namespace mv
