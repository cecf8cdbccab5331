// No level of the interface's 16 bits is lost on the way through a file.
#include <gtest/gtest.h>

#include <cmath>

#include "pictures/PictureConversion.h"
#include "pictures/PictureFile.h"
#include "pictures/SampleLevels.h"
#include "support/ChildProcess.h"
#include "support/TestFiles.h"

namespace mv::host::test {
namespace {

// 331 x 99 = 32769 pixels, one for each level.
constexpr int kWidth = 331;
constexpr int kHeight = 99;

Picture GrayPicture() {
    Picture picture;
    picture.width = kWidth;
    picture.height = kHeight;
    picture.colours = 1;
    picture.type = SampleType::UInt16;
    return picture;
}

HostImage EveryLevel() {
    HostImage image(kWidth, kHeight, 1, 16);
    for (int i = 0; i < kWidth * kHeight; ++i) {
        image.Set(i % kWidth, i / kWidth, 0, i);
    }
    return image;
}

TEST(LevelsTest, EachFileLevelBecomesTheNearestInterfaceLevel) {
    for (std::uint32_t level = 0; level <= 65535; ++level) {
        const double exact = level * 32768.0 / 65535.0;
        EXPECT_EQ(FileToInterface(static_cast<std::uint16_t>(level)), std::floor(exact + 0.5));
    }
}

TEST(LevelsTest, EachInterfaceLevelBecomesTheNearestFileLevel) {
    for (std::uint32_t level = 0; level <= 32768; ++level) {
        const double exact = level * 65535.0 / 32768.0;
        EXPECT_EQ(InterfaceToFile(static_cast<std::uint16_t>(level)), std::floor(exact + 0.5));
    }
}

TEST(LevelsTest, LevelsAboveWhiteAreWhite) {
    EXPECT_EQ(InterfaceToFile(32769), 65535);
    EXPECT_EQ(InterfaceToFile(65535), 65535);
}

class LevelFileTest : public ::testing::TestWithParam<const char*> {};

TEST_P(LevelFileTest, KeepsAll32769Levels) {
    const TempFolder folder;
    const auto path = folder / (std::string("levels") + GetParam());
    Picture written = GrayPicture();
    PutImage(EveryLevel(), written);
    const PictureResult failure = WritePicture(path, written);
    ASSERT_FALSE(failure.has_value()) << failure->text;
    Picture read;
    const PictureResult readFailure = ReadPicture(path, read);
    ASSERT_FALSE(readFailure.has_value()) << readFailure->text;
    ASSERT_EQ(read.type, SampleType::UInt16);
    const HostImage image = TakeDocument(read).image;
    ASSERT_EQ(image.bytes.size(), static_cast<std::size_t>(kWidth * kHeight * 2));
    EXPECT_EQ(image.bytes, EveryLevel().bytes);
}

INSTANTIATE_TEST_SUITE_P(Formats, LevelFileTest, ::testing::Values(".png", ".tif"));

TEST(LevelsTest, TheWholeProgramKeepsThemToo) {
    const TempFolder folder;
    PngFile png;
    png.width = kWidth;
    png.height = kHeight;
    png.bits = 16;
    png.colorType = 0;
    for (int y = 0; y < kHeight; ++y) {
        Bytes row;
        for (int x = 0; x < kWidth; ++x) {
            const auto level =
                static_cast<std::uint32_t>(std::lround((y * kWidth + x) * 65535.0 / 32768.0));
            row.push_back(static_cast<std::uint8_t>(level >> 8));
            row.push_back(static_cast<std::uint8_t>(level));
        }
        png.rows.push_back(row);
    }
    WritePngFile(folder / "in.png", png);
    const ProgramRun run = RunRadialBlur(
        {PathToText(folder / "in.png"), PathToText(folder / "out.png")}, {.fake = "copy"});
    ASSERT_EQ(run.code, 0) << run.err;
    Picture before;
    Picture after;
    ASSERT_FALSE(ReadPicture(folder / "in.png", before).has_value());
    ASSERT_FALSE(ReadPicture(folder / "out.png", after).has_value());
    EXPECT_EQ(before.samples, after.samples);
}

}  // namespace
}  // namespace mv::host::test
