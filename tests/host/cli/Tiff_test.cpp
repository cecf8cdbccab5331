// TIFF pictures in and out.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <ostream>

#include "pictures/PictureFile.h"
#include "support/ChildProcess.h"
#include "support/TestFiles.h"

namespace mv::host::test {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;

constexpr std::uint16_t kExtraSamples = 338;
constexpr std::uint16_t kOrientation = 274;
constexpr std::uint16_t kProfile = 34675;
constexpr std::uint16_t kXResolution = 282;
constexpr std::uint16_t kYResolution = 283;
constexpr std::uint16_t kResolutionUnit = 296;

Picture MustRead(const std::filesystem::path& path) {
    Picture picture;
    const PictureResult failure = ReadPicture(path, picture);
    EXPECT_FALSE(failure.has_value()) << (failure ? failure->text : "");
    return picture;
}

double SampleAt(const Picture& picture, int x, int y, int channel) {
    const std::uint8_t* const address = picture.Row(y) +
                                        static_cast<std::size_t>(x) * picture.PixelBytes() +
                                        static_cast<std::size_t>(channel) * picture.SampleBytes();
    switch (picture.type) {
        case SampleType::UInt8:
            return *address;
        case SampleType::UInt16:
            return address[0] | (address[1] << 8);
        case SampleType::Float32:
            break;
    }
    float value;
    std::memcpy(&value, address, sizeof value);
    return static_cast<double>(value);
}

struct Shape {
    int channels;
    int bits;
    bool bigEndian;
};

// The level of a test picture; floats run beyond 0 to 1 as they may.
double Level(int x, int y, int channel, int bits) {
    const std::uint32_t level = GradientLevel(x, y, channel, bits == 32 ? 16 : bits);
    return bits == 32 ? level / 32768.0 - 0.5 : level;
}

void AppendSample(Bytes& bytes, const TiffPicture& tiff, double level) {
    Bytes sample;
    if (tiff.bits == 8) {
        sample = {static_cast<std::uint8_t>(level)};
    } else if (tiff.bits == 16) {
        sample = Short(tiff, static_cast<std::uint16_t>(level));
    } else {
        const auto value = static_cast<float>(level);
        std::uint32_t pattern;
        std::memcpy(&pattern, &value, sizeof pattern);
        sample = Long(tiff, pattern);
    }
    bytes.insert(bytes.end(), sample.begin(), sample.end());
}

TiffPicture TestPicture(const Shape& shape, int width, int height) {
    TiffPicture tiff;
    tiff.bigEndian = shape.bigEndian;
    tiff.width = static_cast<std::uint32_t>(width);
    tiff.height = static_cast<std::uint32_t>(height);
    tiff.bits = static_cast<std::uint16_t>(shape.bits);
    tiff.samples = static_cast<std::uint16_t>(shape.channels);
    tiff.photometric = shape.channels >= 3 ? 2 : 1;
    tiff.sampleFormat = shape.bits == 32 ? 3 : 1;
    if (shape.channels == 2 || shape.channels == 4) {
        tiff.tags.push_back({kExtraSamples, 3, Short(tiff, 2)});
    }
    return tiff;
}

// The samples of a rectangle; what lies outside the picture is filled with a mark.
Bytes BlockOf(const TiffPicture& tiff, int left, int top, int width, int height, int plane) {
    Bytes bytes;
    for (int y = top; y < top + height; ++y) {
        for (int x = left; x < left + width; ++x) {
            for (int c = 0; c < tiff.samples; ++c) {
                if (plane >= 0 && c != plane) {
                    continue;
                }
                const bool inside =
                    x < static_cast<int>(tiff.width) && y < static_cast<int>(tiff.height);
                AppendSample(bytes, tiff, inside ? Level(x, y, c, tiff.bits) : 99.0);
            }
        }
    }
    return bytes;
}

void ExpectTestPicture(const Picture& picture, int bits) {
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            for (int c = 0; c < picture.Channels(); ++c) {
                ASSERT_EQ(SampleAt(picture, x, y, c), Level(x, y, c, bits))
                    << x << "," << y << "," << c;
            }
        }
    }
}

class TiffShapeTest : public ::testing::TestWithParam<Shape> {
protected:
    TempFolder folder_;
};

TEST_P(TiffShapeTest, IsReadAsItIs) {
    const Shape shape = GetParam();
    TiffPicture tiff = TestPicture(shape, 13, 7);
    tiff.blocks = {BlockOf(tiff, 0, 0, 13, 7, -1)};
    WriteTiffFile(folder_ / "in.tif", tiff);
    const Picture picture = MustRead(folder_ / "in.tif");
    EXPECT_EQ(picture.width, 13);
    EXPECT_EQ(picture.height, 7);
    EXPECT_EQ(picture.colours, shape.channels >= 3 ? 3 : 1);
    EXPECT_EQ(picture.alpha, shape.channels % 2 == 0);
    ExpectTestPicture(picture, shape.bits);
}

// Twice inverted is what it was, but for the 16-bit levels that the interface does not have.
TEST_P(TiffShapeTest, GoesThroughTheModule) {
    const Shape shape = GetParam();
    TiffPicture tiff = TestPicture(shape, 13, 7);
    tiff.blocks = {BlockOf(tiff, 0, 0, 13, 7, -1)};
    WriteTiffFile(folder_ / "in.tif", tiff);
    const ProgramRun run =
        RunRadialBlur({PathToText(folder_ / "in.tif"), PathToText(folder_ / "out.tiff")});
    ASSERT_EQ(run.code, 0) << run.err;
    const Picture picture = MustRead(folder_ / "out.tiff");
    const int colours = shape.channels >= 3 ? 3 : 1;
    for (int y = 0; y < 7; ++y) {
        for (int x = 0; x < 13; ++x) {
            for (int c = 0; c < shape.channels; ++c) {
                const double level = Level(x, y, c, shape.bits);
                double expected = level;
                if (shape.bits == 16) {
                    const auto inside = static_cast<std::uint32_t>(level * 32768.0 / 65535.0 + 0.5);
                    const std::uint32_t result = c < colours ? 32768 - inside : inside;
                    expected = static_cast<std::uint32_t>(result * 65535.0 / 32768.0 + 0.5);
                } else if (c < colours) {
                    expected = shape.bits == 8
                                   ? 255.0 - level
                                   : static_cast<double>(1.0F - static_cast<float>(level));
                }
                ASSERT_EQ(SampleAt(picture, x, y, c), expected) << x << "," << y << "," << c;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(LittleEndian, TiffShapeTest,
                         ::testing::Values(Shape{1, 8, false}, Shape{2, 8, false},
                                           Shape{3, 8, false}, Shape{4, 8, false},
                                           Shape{1, 16, false}, Shape{2, 16, false},
                                           Shape{3, 16, false}, Shape{4, 16, false},
                                           Shape{1, 32, false}, Shape{2, 32, false},
                                           Shape{3, 32, false}, Shape{4, 32, false}));
INSTANTIATE_TEST_SUITE_P(BigEndian, TiffShapeTest,
                         ::testing::Values(Shape{3, 8, true}, Shape{1, 16, true},
                                           Shape{4, 16, true}, Shape{1, 32, true},
                                           Shape{3, 32, true}));

struct Packed {
    Shape shape;
    std::uint16_t compression;
};

class PackedTiffTest : public ::testing::TestWithParam<Packed> {
protected:
    TempFolder folder_;
};

class PackedGrayWithAlphaTest : public ::testing::TestWithParam<int> {
protected:
    TempFolder folder_;
};

TEST_P(PackedTiffTest, IsReadAsItIs) {
    TiffPicture tiff = TestPicture(GetParam().shape, 13, 17);
    tiff.compression = GetParam().compression;
    tiff.rowsPerStrip = 8;
    for (int top = 0; top < 17; top += 8) {
        const Bytes strip = BlockOf(tiff, 0, top, 13, std::min(8, 17 - top), -1);
        tiff.blocks.push_back(tiff.compression == 5   ? SimpleLzw(strip)
                              : tiff.compression == 8 ? StoredZlib(strip)
                                                      : SimplePackBits(strip));
    }
    WriteTiffFile(folder_ / "in.tif", tiff);
    const Picture picture = MustRead(folder_ / "in.tif");
    EXPECT_EQ(picture.width, 13);
    EXPECT_EQ(picture.height, 17);
    EXPECT_EQ(picture.Channels(), GetParam().shape.channels);
    ExpectTestPicture(picture, GetParam().shape.bits);
}

INSTANTIATE_TEST_SUITE_P(Lzw, PackedTiffTest,
                         ::testing::Values(Packed{{1, 8, false}, 5}, Packed{{3, 8, false}, 5},
                                           Packed{{4, 8, false}, 5}, Packed{{1, 16, false}, 5},
                                           Packed{{3, 16, false}, 5}, Packed{{4, 16, false}, 5},
                                           Packed{{3, 8, true}, 5}, Packed{{1, 16, true}, 5},
                                           Packed{{3, 16, true}, 5}, Packed{{4, 16, true}, 5},
                                           Packed{{1, 32, false}, 5}, Packed{{3, 32, false}, 5},
                                           Packed{{4, 32, false}, 5}));
INSTANTIATE_TEST_SUITE_P(Others, PackedTiffTest,
                         ::testing::Values(Packed{{3, 8, false}, 8}, Packed{{3, 16, false}, 8},
                                           Packed{{3, 8, false}, 32773},
                                           Packed{{4, 16, true}, 32773}));

// The imaging component of Windows has no gray with alpha: it must be refused and not misread.
TEST_P(PackedGrayWithAlphaTest, IsReadOrRefused) {
    TiffPicture tiff = TestPicture({2, GetParam(), false}, 5, 3);
    tiff.compression = 5;
    tiff.blocks = {SimpleLzw(BlockOf(tiff, 0, 0, 5, 3, -1))};
    WriteTiffFile(folder_ / "in.tif", tiff);
#ifdef _WIN32
    Picture picture;
    const PictureResult failure = ReadPicture(folder_ / "in.tif", picture);
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->fault, PictureFault::Unsupported);
    EXPECT_THAT(failure->text, HasSubstr("save it without compression"));
#else
    const Picture picture = MustRead(folder_ / "in.tif");
    EXPECT_EQ(picture.colours, 1);
    EXPECT_TRUE(picture.alpha);
    ExpectTestPicture(picture, GetParam());
#endif
}

INSTANTIATE_TEST_SUITE_P(Depths, PackedGrayWithAlphaTest, ::testing::Values(8, 16, 32));

class TiffTest : public ::testing::Test {
protected:
    // A picture of one row of samples, in one strip.
    TiffPicture Row(std::uint16_t samples, std::uint16_t photometric, const Bytes& bytes) {
        TiffPicture tiff;
        tiff.samples = samples;
        tiff.photometric = photometric;
        tiff.width = static_cast<std::uint32_t>(bytes.size() / samples);
        tiff.height = 1;
        tiff.blocks = {bytes};
        return tiff;
    }
    Picture Read(const TiffPicture& tiff) {
        WriteTiffFile(folder_ / "in.tif", tiff);
        return MustRead(folder_ / "in.tif");
    }
    void ExpectRefused(const TiffPicture& tiff, const std::string& text) {
        WriteTiffFile(folder_ / "in.tif", tiff);
        const ProgramRun run =
            RunRadialBlur({PathToText(folder_ / "in.tif"), PathToText(folder_ / "out.tif")});
        EXPECT_EQ(run.code, 4);
        EXPECT_THAT(run.err, HasSubstr(text));
        EXPECT_FALSE(std::filesystem::exists(folder_ / "out.tif"));
    }

    TempFolder folder_;
};

TEST_F(TiffTest, StripsAreJoined) {
    TiffPicture tiff = TestPicture({3, 16, false}, 5, 7);
    tiff.rowsPerStrip = 3;
    for (int top = 0; top < 7; top += 3) {
        tiff.blocks.push_back(BlockOf(tiff, 0, top, 5, std::min(3, 7 - top), -1));
    }
    ExpectTestPicture(Read(tiff), 16);
}

TEST_F(TiffTest, TilesAreJoined) {
    TiffPicture tiff = TestPicture({3, 8, false}, 37, 21);
    tiff.tileWidth = 16;
    tiff.tileHeight = 16;
    for (int top = 0; top < 21; top += 16) {
        for (int left = 0; left < 37; left += 16) {
            tiff.blocks.push_back(BlockOf(tiff, left, top, 16, 16, -1));
        }
    }
    ExpectTestPicture(Read(tiff), 8);
}

TEST_F(TiffTest, GrayThatCountsFromWhiteIsTurnedAround) {
    const Picture picture = Read(Row(1, 0, {0, 1, 200, 255}));
    EXPECT_THAT(picture.samples, ElementsAre(255, 254, 55, 0));
}

TEST_F(TiffTest, CmykIsRefused) {
    ExpectRefused(Row(4, 5, Bytes(8, 9)),
                  "is a TIFF picture with CMYK colours; convert it to "
                  "gray or RGB first");
}

TEST_F(TiffTest, FloatKeepsValuesBeyondWhiteAndBlack) {
    TiffPicture tiff = TestPicture({1, 32, false}, 3, 1);
    Bytes block;
    for (const double value : {-2.5, 1000.0, 0.25}) {
        AppendSample(block, tiff, value);
    }
    tiff.blocks = {block};
    WriteTiffFile(folder_ / "in.tif", tiff);
    const ProgramRun run = RunRadialBlur(
        {PathToText(folder_ / "in.tif"), PathToText(folder_ / "out.tif")}, {.fake = "copy"});
    ASSERT_EQ(run.code, 0) << run.err;
    const Picture picture = MustRead(folder_ / "out.tif");
    EXPECT_EQ(SampleAt(picture, 0, 0, 0), -2.5);
    EXPECT_EQ(SampleAt(picture, 1, 0, 0), 1000.0);
    EXPECT_EQ(SampleAt(picture, 2, 0, 0), 0.25);
}

struct Unit {
    std::uint16_t code;
    ResolutionUnit unit;
};

void PrintTo(const Unit& unit, std::ostream* stream) {
    *stream << "unit " << unit.code;
}

class TiffUnitTest : public TiffTest, public ::testing::WithParamInterface<Unit> {};

TEST_P(TiffUnitTest, ResolutionStays) {
    TiffPicture tiff = Row(3, 2, Bytes(6, 1));
    Bytes x = Long(tiff, 600);
    Bytes y = Long(tiff, 2401);
    for (Bytes* const value : {&x, &y}) {
        const Bytes divisor = Long(tiff, 2);
        value->insert(value->end(), divisor.begin(), divisor.end());
    }
    tiff.tags = {{kXResolution, 5, x},
                 {kYResolution, 5, y},
                 {kResolutionUnit, 3, Short(tiff, GetParam().code)}};
    WriteTiffFile(folder_ / "in.tif", tiff);
    const ProgramRun run =
        RunRadialBlur({PathToText(folder_ / "in.tif"), PathToText(folder_ / "out.tif")});
    ASSERT_EQ(run.code, 0) << run.err;
    const Picture picture = MustRead(folder_ / "out.tif");
    ASSERT_TRUE(picture.resolution.has_value());
    EXPECT_EQ(picture.resolution->x, 300.0);
    EXPECT_EQ(picture.resolution->y, 1200.5);
    EXPECT_EQ(picture.resolution->unit, GetParam().unit);
}

INSTANTIATE_TEST_SUITE_P(Units, TiffUnitTest,
                         ::testing::Values(Unit{1, ResolutionUnit::None},
                                           Unit{2, ResolutionUnit::Inch},
                                           Unit{3, ResolutionUnit::Centimetre}));

TEST_F(TiffTest, TheColourProfileStaysAlsoAcrossFormats) {
    TiffPicture tiff = Row(3, 2, Bytes(6, 1));
    const Bytes profile = ColourProfile("RGB ");
    tiff.tags = {{kProfile, 7, profile}};
    WriteTiffFile(folder_ / "in.tif", tiff);
    for (const char* const name : {"out.tif", "out.png"}) {
        const ProgramRun run =
            RunRadialBlur({PathToText(folder_ / "in.tif"), PathToText(folder_ / name)});
        ASSERT_EQ(run.code, 0) << run.err;
        EXPECT_EQ(MustRead(folder_ / name).color.iccProfile, profile) << name;
    }
}

// 300 dots per inch are 11811 dots per metre.
TEST_F(TiffTest, TheResolutionCrossesToPng) {
    TiffPicture tiff = Row(3, 2, Bytes(6, 1));
    Bytes dots = Long(tiff, 300);
    const Bytes one = Long(tiff, 1);
    dots.insert(dots.end(), one.begin(), one.end());
    tiff.tags = {
        {kXResolution, 5, dots}, {kYResolution, 5, dots}, {kResolutionUnit, 3, Short(tiff, 2)}};
    WriteTiffFile(folder_ / "in.tif", tiff);
    const ProgramRun run =
        RunRadialBlur({PathToText(folder_ / "in.tif"), PathToText(folder_ / "out.png")});
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_THAT(FindPngChunk(folder_ / "out.png", "pHYs"),
                ElementsAre(0, 0, 0x2E, 0x23, 0, 0, 0x2E, 0x23, 1));
}

TEST_F(TiffTest, SeparatePlanesAreInterleaved) {
    TiffPicture tiff = TestPicture({4, 16, true}, 9, 5);
    tiff.planar = 2;
    tiff.rowsPerStrip = 2;
    for (int plane = 0; plane < 4; ++plane) {
        for (int top = 0; top < 5; top += 2) {
            tiff.blocks.push_back(BlockOf(tiff, 0, top, 9, std::min(2, 5 - top), plane));
        }
    }
    ExpectTestPicture(Read(tiff), 16);
}

TEST_F(TiffTest, SeparatePlanesInTilesAreInterleaved) {
    TiffPicture tiff = TestPicture({3, 32, false}, 20, 18);
    tiff.planar = 2;
    tiff.tileWidth = 16;
    tiff.tileHeight = 16;
    for (int plane = 0; plane < 3; ++plane) {
        for (int top = 0; top < 18; top += 16) {
            for (int left = 0; left < 20; left += 16) {
                tiff.blocks.push_back(BlockOf(tiff, left, top, 16, 16, plane));
            }
        }
    }
    ExpectTestPicture(Read(tiff), 32);
}

TEST_F(TiffTest, DeepGrayThatCountsFromWhiteIsTurnedAround) {
    TiffPicture tiff = Row(1, 0, {0x34, 0x12, 0xFF, 0xFF});
    tiff.bits = 16;
    tiff.width = 2;
    const Picture picture = Read(tiff);
    EXPECT_EQ(SampleAt(picture, 0, 0, 0), 0xFFFF - 0x1234);
    EXPECT_EQ(SampleAt(picture, 1, 0, 0), 0.0);
}

TEST_F(TiffTest, ColoursMultipliedByAlphaAreDivided) {
    TiffPicture tiff = Row(4, 2, {50, 100, 0, 100, 7, 8, 9, 0, 200, 255, 1, 255, 90, 9, 0, 10});
    tiff.tags = {{kExtraSamples, 3, Short(tiff, 1)}};
    // 50 * 255 / 100 = 127.5, rounded up; 90 of 10 is too much and becomes white.
    EXPECT_THAT(Read(tiff).samples,
                ElementsAre(128, 255, 0, 100, 0, 0, 0, 0, 200, 255, 1, 255, 255, 230, 0, 10));
}

TEST_F(TiffTest, AnExtraChannelOfNoStatedKindIsTransparency) {
    TiffPicture tiff = Row(4, 2, {1, 2, 3, 4});
    tiff.tags = {{kExtraSamples, 3, Short(tiff, 0)}};
    const Picture picture = Read(tiff);
    EXPECT_TRUE(picture.alpha);
    EXPECT_THAT(picture.samples, ElementsAre(1, 2, 3, 4));
}

struct Turned {
    std::uint16_t orientation;
    int width;
    std::vector<std::uint8_t> samples;
};

// Test programs are named by what they take, and an address would differ in every run.
void PrintTo(const Turned& turned, std::ostream* stream) {
    *stream << "orientation " << turned.orientation;
}

class TiffOrientationTest : public TiffTest, public ::testing::WithParamInterface<Turned> {};

// Stored are the rows 1 2 3 and 4 5 6.
TEST_P(TiffOrientationTest, IsAppliedToThePixels) {
    TiffPicture tiff = Row(1, 1, {1, 2, 3, 4, 5, 6});
    tiff.width = 3;
    tiff.height = 2;
    tiff.tags = {{kOrientation, 3, Short(tiff, GetParam().orientation)}};
    const Picture picture = Read(tiff);
    EXPECT_EQ(picture.width, GetParam().width);
    EXPECT_EQ(picture.height, 6 / GetParam().width);
    EXPECT_THAT(picture.samples, ElementsAreArray(GetParam().samples));
}

INSTANTIATE_TEST_SUITE_P(
    Orientations, TiffOrientationTest,
    ::testing::Values(Turned{1, 3, {1, 2, 3, 4, 5, 6}}, Turned{2, 3, {3, 2, 1, 6, 5, 4}},
                      Turned{3, 3, {6, 5, 4, 3, 2, 1}}, Turned{4, 3, {4, 5, 6, 1, 2, 3}},
                      Turned{5, 2, {1, 4, 2, 5, 3, 6}}, Turned{6, 2, {4, 1, 5, 2, 6, 3}},
                      Turned{7, 2, {6, 3, 5, 2, 4, 1}}, Turned{8, 2, {3, 6, 2, 5, 1, 4}}));

TEST_F(TiffTest, AQuarterTurnSwapsTheResolutions) {
    TiffPicture tiff = Row(1, 1, {1, 2});
    Bytes x = Long(tiff, 100);
    Bytes y = Long(tiff, 200);
    for (Bytes* const value : {&x, &y}) {
        const Bytes divisor = Long(tiff, 1);
        value->insert(value->end(), divisor.begin(), divisor.end());
    }
    tiff.tags = {{kOrientation, 3, Short(tiff, 6)},
                 {kXResolution, 5, x},
                 {kYResolution, 5, y},
                 {kResolutionUnit, 3, Short(tiff, 2)}};
    const Picture picture = Read(tiff);
    EXPECT_EQ(picture.resolution->x, 200.0);
    EXPECT_EQ(picture.resolution->y, 100.0);
}

TEST_F(TiffTest, OtherColoursAreRefused) {
    ExpectRefused(Row(3, 8, Bytes(6, 9)), "with Lab colours; convert it to gray or RGB first");
    ExpectRefused(Row(3, 6, Bytes(6, 9)), "with YCbCr colours");
    TiffPicture palette = Row(1, 3, {0, 1});
    palette.tags = {{320, 3, Bytes(3 * 256 * 2, 5)}};
    ExpectRefused(palette, "with palette colours");
}

TEST_F(TiffTest, OtherSampleTypesAreRefused) {
    TiffPicture bilevel = Row(1, 1, {0x55});
    bilevel.bits = 1;
    bilevel.width = 8;
    ExpectRefused(bilevel,
                  "with 1-bit integer samples; 8 and 16 bit without sign and 32 bit float");
    TiffPicture large = Row(1, 1, Bytes(16, 0));
    large.bits = 64;
    large.sampleFormat = 3;
    large.width = 2;
    ExpectRefused(large, "with 64-bit float samples");
    TiffPicture isSigned = Row(1, 1, {1, 2});
    isSigned.sampleFormat = 2;
    ExpectRefused(isSigned, "with 8-bit integer samples");
}

TEST_F(TiffTest, MoreChannelsThanOneForTransparencyAreRefused) {
    TiffPicture tiff = Row(5, 2, Bytes(10, 3));
    Bytes kinds = Short(tiff, 2);
    const Bytes other = Short(tiff, 0);
    kinds.insert(kinds.end(), other.begin(), other.end());
    tiff.tags = {{kExtraSamples, 3, kinds}};
    ExpectRefused(tiff, "with 5 channels; gray or RGB with at most one for transparency");
}

TEST_F(TiffTest, AStripThatClaimsGigabytesIsRefused) {
    TiffPicture tiff = Row(3, 2, Bytes(30, 3));
    tiff.width = 20000;
    tiff.height = 25000;
    ExpectRefused(tiff, "is a damaged TIFF picture");
}

}  // namespace
}  // namespace mv::host::test
