// PNG pictures in and out.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "pictures/PictureFile.h"
#include "support/ChildProcess.h"
#include "support/TestFiles.h"

namespace mv::host::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

Picture MustRead(const std::filesystem::path& path) {
    Picture picture;
    const PictureResult failure = ReadPicture(path, picture);
    EXPECT_FALSE(failure.has_value()) << (failure ? failure->text : "");
    return picture;
}

std::uint32_t SampleAt(const Picture& picture, int x, int y, int channel) {
    const std::uint8_t* const address = picture.Row(y) +
                                        static_cast<std::size_t>(x) * picture.PixelBytes() +
                                        static_cast<std::size_t>(channel) * picture.SampleBytes();
    if (picture.type == SampleType::UInt8) {
        return *address;
    }
    return static_cast<std::uint32_t>(address[0] | (address[1] << 8));
}

#ifdef _WIN32
constexpr bool kIsWindows = true;
#else
constexpr bool kIsWindows = false;
#endif

struct Shape {
    int channels;
    int bits;
};

class PngShapeTest : public ::testing::TestWithParam<Shape> {};

// The module inverts colours in its own scale and leaves alpha alone.
TEST_P(PngShapeTest, GoesThroughTheModule) {
    const auto [channels, bits] = GetParam();
    const TempFolder folder;
    WriteGradientPng(folder / "in.png", 13, 7, channels, bits);
    const ProgramRun run =
        RunRadialBlur({PathToText(folder / "in.png"), PathToText(folder / "out.png")});
    ASSERT_EQ(run.code, 0) << run.err;
    const Picture picture = MustRead(folder / "out.png");
    EXPECT_EQ(picture.width, 13);
    EXPECT_EQ(picture.height, 7);
    const bool alpha = channels == 2 || channels == 4;
    EXPECT_EQ(picture.alpha, alpha);
    // The imaging component of Windows writes gray with alpha as three equal colours.
    const int spread = kIsWindows && channels == 2 ? 2 : 0;
    EXPECT_EQ(picture.colours, channels >= 3 || spread > 0 ? 3 : 1);
    EXPECT_EQ(picture.type, bits == 16 ? SampleType::UInt16 : SampleType::UInt8);
    for (int y = 0; y < 7; ++y) {
        for (int x = 0; x < 13; ++x) {
            for (int c = 0; c < channels; ++c) {
                const std::uint32_t level = GradientLevel(x, y, c, bits);
                std::uint32_t expected = alpha && c == channels - 1 ? level : 255 - level;
                if (bits == 16) {
                    auto inside = static_cast<std::uint32_t>(level * 32768.0 / 65535.0 + 0.5);
                    inside = alpha && c == channels - 1 ? inside : 32768 - inside;
                    expected = static_cast<std::uint32_t>(inside * 65535.0 / 32768.0 + 0.5);
                }
                ASSERT_EQ(SampleAt(picture, x, y, c > 0 ? c + spread : 0), expected)
                    << x << "," << y << "," << c;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Shapes, PngShapeTest,
                         ::testing::Values(Shape{1, 8}, Shape{2, 8}, Shape{3, 8}, Shape{4, 8},
                                           Shape{1, 16}, Shape{2, 16}, Shape{3, 16}, Shape{4, 16}));

TEST(PngTest, SmallGrayDepthsBecomeEightBits) {
    const TempFolder folder;
    PngFile png{.width = 8, .height = 1, .bits = 1, .colorType = 0};
    png.rows = {{0b10110001}};
    WritePngFile(folder / "one.png", png);
    EXPECT_THAT(MustRead(folder / "one.png").samples, ElementsAre(255, 0, 255, 255, 0, 0, 0, 255));
    png.width = 4;
    png.bits = 2;
    png.rows = {{0b00011011}};
    WritePngFile(folder / "two.png", png);
    EXPECT_THAT(MustRead(folder / "two.png").samples, ElementsAre(0, 85, 170, 255));
    png.width = 2;
    png.bits = 4;
    png.rows = {{0x3C}};
    WritePngFile(folder / "four.png", png);
    const Picture four = MustRead(folder / "four.png");
    EXPECT_THAT(four.samples, ElementsAre(51, 204));
    EXPECT_EQ(four.colours, 1);
}

TEST(PngTest, APaletteBecomesColours) {
    const TempFolder folder;
    PngFile png{.width = 3, .height = 1, .bits = 8, .colorType = 3};
    png.chunks = {{"PLTE", {10, 20, 30, 40, 50, 60, 70, 80, 90}}};
    png.rows = {{2, 0, 1}};
    WritePngFile(folder / "palette.png", png);
    const Picture picture = MustRead(folder / "palette.png");
    EXPECT_EQ(picture.colours, 3);
    EXPECT_FALSE(picture.alpha);
    EXPECT_THAT(picture.samples, ElementsAre(70, 80, 90, 10, 20, 30, 40, 50, 60));
}

TEST(PngTest, APaletteOfFourBitsBecomesColours) {
    const TempFolder folder;
    PngFile png{.width = 3, .height = 1, .bits = 4, .colorType = 3};
    png.chunks = {{"PLTE", {10, 20, 30, 40, 50, 60, 70, 80, 90}}};
    png.rows = {{0x20, 0x10}};
    WritePngFile(folder / "palette.png", png);
    EXPECT_THAT(MustRead(folder / "palette.png").samples,
                ElementsAre(70, 80, 90, 10, 20, 30, 40, 50, 60));
}

TEST(PngTest, TransparentPaletteEntriesBecomeAlpha) {
    const TempFolder folder;
    PngFile png{.width = 2, .height = 1, .bits = 8, .colorType = 3};
    png.chunks = {{"PLTE", {10, 20, 30, 40, 50, 60}}, {"tRNS", {99}}};
    png.rows = {{0, 1}};
    WritePngFile(folder / "palette.png", png);
    const Picture picture = MustRead(folder / "palette.png");
    EXPECT_TRUE(picture.alpha);
    EXPECT_THAT(picture.samples, ElementsAre(10, 20, 30, 99, 40, 50, 60, 255));
}

TEST(PngTest, ATransparentColourBecomesAlpha) {
    const TempFolder folder;
    PngFile png{.width = 2, .height = 1, .bits = 8, .colorType = 2};
    png.chunks = {{"tRNS", {0, 1, 0, 2, 0, 3}}};
    png.rows = {{1, 2, 3, 1, 2, 4}};
    WritePngFile(folder / "key.png", png);
    EXPECT_THAT(MustRead(folder / "key.png").samples, ElementsAre(1, 2, 3, 0, 1, 2, 4, 255));
}

TEST(PngTest, InterlacedRowsComeInOrder) {
    const TempFolder folder;
    constexpr int kFirstX[] = {0, 4, 0, 2, 0, 1, 0};
    constexpr int kFirstY[] = {0, 0, 4, 0, 2, 0, 1};
    constexpr int kStepX[] = {8, 8, 4, 4, 2, 2, 1};
    constexpr int kStepY[] = {8, 8, 8, 4, 4, 2, 2};
    PngFile png{.width = 11, .height = 9, .bits = 8, .colorType = 0, .interlaced = true};
    for (std::size_t pass = 0; pass < 7; ++pass) {
        for (int y = kFirstY[pass]; y < 9; y += kStepY[pass]) {
            Bytes row;
            for (int x = kFirstX[pass]; x < 11; x += kStepX[pass]) {
                row.push_back(static_cast<std::uint8_t>(y * 11 + x));
            }
            png.rows.push_back(row);
        }
    }
    WritePngFile(folder / "interlaced.png", png);
    const Picture picture = MustRead(folder / "interlaced.png");
    for (int i = 0; i < 99; ++i) {
        EXPECT_EQ(picture.samples[static_cast<std::size_t>(i)], i);
    }
}

PngChunk ProfileChunk(const Bytes& profile) {
    PngChunk chunk{"iCCP", {'p', 0, 0}};
    const Bytes packed = StoredZlib(profile);
    chunk.data.insert(chunk.data.end(), packed.begin(), packed.end());
    return chunk;
}

PngFile SmallPng(std::uint8_t colorType) {
    PngFile png{.width = 2, .height = 1, .bits = 8, .colorType = colorType};
    png.rows = {Bytes(colorType == 2 ? 6 : 2, 40)};
    return png;
}

TEST(PngTest, TheColourProfileStays) {
    for (const std::uint8_t colorType : {std::uint8_t{0}, std::uint8_t{2}}) {
        const TempFolder folder;
        const Bytes profile = ColourProfile(colorType == 0 ? "GRAY" : "RGB ");
        PngFile png = SmallPng(colorType);
        png.chunks = {ProfileChunk(profile)};
        WritePngFile(folder / "in.png", png);
        const ProgramRun run =
            RunRadialBlur({PathToText(folder / "in.png"), PathToText(folder / "out.png")});
        ASSERT_EQ(run.code, 0) << run.err;
        EXPECT_EQ(MustRead(folder / "out.png").color.iccProfile, profile);
    }
}

TEST(PngTest, TheResolutionStaysToTheBit) {
    const TempFolder folder;
    PngFile png = SmallPng(2);
    const Bytes resolution = {0, 0, 0x2E, 0x23, 0, 0, 0x17, 0x13, 1};  // 11811 x 5907 a metre
    png.chunks = {{"pHYs", resolution}};
    WritePngFile(folder / "in.png", png);
    const ProgramRun run =
        RunRadialBlur({PathToText(folder / "in.png"), PathToText(folder / "out.png")});
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(FindPngChunk(folder / "out.png", "pHYs"), resolution);
}

TEST(PngTest, WithoutResolutionAndProfileNoneIsAdded) {
    const TempFolder folder;
    WritePngFile(folder / "in.png", SmallPng(2));
    RunRadialBlur({PathToText(folder / "in.png"), PathToText(folder / "out.png")});
    const Picture picture = MustRead(folder / "out.png");
    EXPECT_THAT(picture.color.iccProfile, IsEmpty());
    EXPECT_THAT(FindPngChunk(folder / "out.png", "pHYs"), IsEmpty());
}

TEST(PngTest, AMaskReachesTheModule) {
    const TempFolder folder;
    WriteGradientPng(folder / "in.png", 9, 5, 3, 8);
    WriteGradientPng(folder / "gray.png", 9, 5, 1, 8);
    WriteGradientPng(folder / "deep.png", 9, 5, 1, 16);
    const auto result = [&](const char* mask) {
        const ProgramRun run =
            RunRadialBlur({PathToText(folder / "in.png"), PathToText(folder / "out.png"), "--mask",
                           PathToText(folder / mask)},
                          {.fake = "showmask"});
        EXPECT_EQ(run.code, 0) << run.err;
        return MustRead(folder / "out.png");
    };
    const Picture gray = result("gray.png");
    const Picture deep = result("deep.png");
    for (int y = 0; y < 5; ++y) {
        for (int x = 0; x < 9; ++x) {
            EXPECT_EQ(SampleAt(gray, x, y, 1), GradientLevel(x, y, 0, 8));
            const auto reduced =
                static_cast<std::uint32_t>(GradientLevel(x, y, 0, 16) / 257.0 + 0.5);
            EXPECT_EQ(SampleAt(deep, x, y, 1), reduced);
        }
    }
}

TEST(PngTest, AColouredMaskCountsByItsLuminance) {
    const TempFolder folder;
    WriteGradientPng(folder / "in.png", 4, 1, 3, 8);
    PngFile mask{.width = 4, .height = 1, .bits = 8, .colorType = 2};
    mask.rows = {{255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 255}};
    WritePngFile(folder / "mask.png", mask);
    const ProgramRun run =
        RunRadialBlur({PathToText(folder / "in.png"), PathToText(folder / "out.png"), "--mask",
                       PathToText(folder / "mask.png")},
                      {.fake = "showmask"});
    ASSERT_EQ(run.code, 0) << run.err;
    const Picture picture = MustRead(folder / "out.png");
    // 255 times 0.292687786, 0.552149646, 0.155162568 and 1, rounded.
    EXPECT_EQ(SampleAt(picture, 0, 0, 0), 75U);
    EXPECT_EQ(SampleAt(picture, 1, 0, 0), 141U);
    EXPECT_EQ(SampleAt(picture, 2, 0, 0), 40U);
    EXPECT_EQ(SampleAt(picture, 3, 0, 0), 255U);
}

TEST(PngTest, WhereTheModuleLeavesMaskingToTheHostTheHostMasks) {
    const TempFolder folder;
    PngFile png{.width = 3, .height = 1, .bits = 8, .colorType = 0};
    png.rows = {{100, 100, 100}};
    WritePngFile(folder / "in.png", png);
    png.rows = {{0, 128, 255}};
    WritePngFile(folder / "mask.png", png);
    const ProgramRun run =
        RunRadialBlur({PathToText(folder / "in.png"), PathToText(folder / "out.png"), "--mask",
                       PathToText(folder / "mask.png")},
                      {.fake = "automask"});
    ASSERT_EQ(run.code, 0) << run.err;
    // From 100 towards 155: nothing, 128/255 of the way, all of it.
    EXPECT_THAT(MustRead(folder / "out.png").samples, ElementsAre(100, 128, 155));
}

TEST(PngTest, AModuleThatWorksInRowsThroughContinueIsServed) {
    const TempFolder folder;
    WriteGradientPng(folder / "in.png", 6, 5, 1, 8);
    const ProgramRun run = RunRadialBlur(
        {PathToText(folder / "in.png"), PathToText(folder / "out.png")}, {.fake = "tiles"});
    ASSERT_EQ(run.code, 0) << run.err;
    const Picture picture = MustRead(folder / "out.png");
    for (int y = 0; y < 5; ++y) {
        EXPECT_EQ(SampleAt(picture, 3, y, 0), 255 - GradientLevel(3, y, 0, 8));
    }
}

TEST(PngTest, WhatTheModuleDoesNotRequestStays) {
    const TempFolder folder;
    WriteGradientPng(folder / "in.png", 6, 4, 1, 8);
    const ProgramRun run = RunRadialBlur(
        {PathToText(folder / "in.png"), PathToText(folder / "out.png")}, {.fake = "topleft"});
    ASSERT_EQ(run.code, 0) << run.err;
    const Picture picture = MustRead(folder / "out.png");
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 6; ++x) {
            const std::uint32_t level = GradientLevel(x, y, 0, 8);
            EXPECT_EQ(SampleAt(picture, x, y, 0), x < 3 && y < 2 ? 255 - level : level);
        }
    }
}

TEST(PngTest, NamesBeyondAsciiAreServed) {
    const TempFolder folder;
    const auto in = folder.Path() / PathFromText("gr\xC3\xBCn \xE2\x98\x80 in.png");
    const auto out = folder.Path() / PathFromText("gr\xC3\xBCn \xE2\x98\x80 out.png");
    WriteGradientPng(in, 4, 4, 3, 8);
    const ProgramRun run = RunRadialBlur({PathToText(in), PathToText(out), "--json"});
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_TRUE(std::filesystem::exists(out));
    EXPECT_THAT(run.out, ::testing::HasSubstr("gr\xC3\xBCn \xE2\x98\x80 out.png\""));
}

TEST(PngTest, LettersInNamesAreNotSpoiltInErrors) {
    const TempFolder folder;
    const auto in = folder.Path() / PathFromText("\xC3\xA4.png");
    const ProgramRun run = RunRadialBlur({PathToText(in), "out.png"});
    EXPECT_EQ(run.code, 3);
    EXPECT_THAT(run.err, ::testing::HasSubstr("\xC3\xA4.png': there is no such file"));
}

}  // namespace
}  // namespace mv::host::test
