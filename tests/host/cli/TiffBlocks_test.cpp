// Tiles and strips of TIFF files that claim more than there is.
#include <gtest/gtest.h>

#include <fstream>

#include "pictures/TiffLayout.h"
#include "support/TestFiles.h"

namespace mv::host::test {
namespace {

TiffLayout TiledLayout(std::uint32_t blockWidth, std::uint32_t blockHeight) {
    TiffLayout layout;
    layout.width = 64;
    layout.height = 64;
    layout.bits = 32;
    layout.samples = 4;
    layout.sampleFormat = tiff::kFloat;
    layout.photometric = tiff::kRgb;
    layout.extraSample = 2;
    layout.tiled = true;
    layout.blockWidth = blockWidth;
    layout.blockHeight = blockHeight;
    return layout;
}

class TiffBlocks : public ::testing::Test {
protected:
    TiffBlocks() { std::ofstream(path_, std::ios::binary) << std::string(2000, 'x'); }
    bool IsRefused(const TiffLayout& layout) {
        Picture picture;
        return JudgeTiff(path_, layout, picture).has_value();
    }

    TempFolder folder_;
    std::filesystem::path path_ = folder_ / "in.tif";
};

TEST_F(TiffBlocks, ATileThatASmallFileCannotFillIsRefused) {
    EXPECT_FALSE(IsRefused(TiledLayout(64, 64)));
    // Sixteen bytes a pixel, packed 1,500 to one: 2,000 bytes hold 433 squared.
    EXPECT_FALSE(IsRefused(TiledLayout(432, 432)));
    EXPECT_TRUE(IsRefused(TiledLayout(448, 448)));
    EXPECT_TRUE(IsRefused(TiledLayout(16384, 16384)));
    // A packing without a known limit.
    TiffLayout layout = TiledLayout(2048, 2048);
    layout.compression = 50000;
    EXPECT_FALSE(IsRefused(layout));
    layout.blockHeight = 2064;
    EXPECT_TRUE(IsRefused(layout));
}

// (2^30 - 32767) times (2^30 + 32768) times 16 is 2^64 and 524,288 more.
TEST_F(TiffBlocks, SidesWhoseBytesCannotBeCountedAreRefused) {
    const TiffLayout layout = TiledLayout(1073709057, 1073774592);
    EXPECT_TRUE(IsRefused(layout));
    Picture picture;
    picture.width = 64;
    picture.height = 64;
    picture.colours = 3;
    picture.alpha = true;
    picture.type = SampleType::Float32;
    picture.samples.resize(picture.RowBytes() * 64);
    int asked = 0;
    const BlockReader reader = [&](std::uint32_t, std::span<std::uint8_t>) {
        ++asked;
        return true;
    };
    EXPECT_EQ(ReadBlocks(layout, picture, reader, {}), BlockOutcome::Failed);
    EXPECT_EQ(asked, 0);
}

}  // namespace
}  // namespace mv::host::test
