// Writing: full disks, links, rights, and the files as other readers see them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <png.h>
#include <sys/stat.h>
#include <tiffio.h>
#include <unistd.h>

#include <chrono>
#include <cstring>

#include "pictures/PictureFile.h"
#include "pictures/PlainTiff.h"
#include "pictures/PngChunks.h"
#include "support/ChildProcess.h"
#include "support/FolderTest.h"
#include "support/TestFiles.h"

namespace mv::host::test {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class DiskTest : public FolderTest {
protected:
};

// A limit on file sizes stops a write in the middle, just as a full disk does.
class FullDiskTest : public DiskTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(FullDiskTest, GivesSixAndLeavesTheOldOutput) {
    WriteGradientPng(folder_ / "in.png", 200, 200, 3, 16);
    const std::string name = std::string("out") + GetParam();
    const std::string before = "what was there before";
    WriteText(folder_ / name, before);
    for (const std::uint64_t limit : {1U, 100U, 5000U}) {
        const ProgramRun run = RunRadialBlur({Text("in.png"), Text(name)}, {.largestFile = limit});
        EXPECT_EQ(run.code, 6) << limit;
        EXPECT_THAT(run.err, HasSubstr("cannot write '" + Text(name) +
                                       "': the file would become larger than the system allows"));
        EXPECT_EQ(ReadBytes(folder_ / name), Bytes(before.begin(), before.end()));
        EXPECT_THAT(folder_.Names(), ElementsAre("in.png", name));
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, FullDiskTest, ::testing::Values(".png", ".tif"));

TEST_F(DiskTest, AnUnfinishedWriteLeavesNoNewFile) {
    WriteGradientPng(folder_ / "in.png", 200, 200, 3, 8);
    const ProgramRun run = RunRadialBlur({Text("in.png"), Text("out.png")}, {.largestFile = 1000});
    EXPECT_EQ(run.code, 6);
    EXPECT_THAT(folder_.Names(), ElementsAre("in.png"));
}

TEST_F(DiskTest, ADeviceIsNoOutput) {
    WriteGradientPng(folder_ / "in.png", 3, 3, 3, 8);
    fs::create_symlink("/dev/full", folder_ / "out.png");
    const ProgramRun run = RunRadialBlur({Text("in.png"), Text("out.png")});
    EXPECT_EQ(run.code, 6);
    EXPECT_THAT(run.err, HasSubstr("it is no ordinary file"));
    EXPECT_TRUE(fs::is_symlink(folder_ / "out.png"));
}

TEST_F(DiskTest, WhatALinkNamesIsReplacedAndTheLinkStays) {
    WriteGradientPng(folder_ / "in.png", 3, 3, 3, 8);
    fs::create_directory(folder_ / "far");
    WriteText(folder_ / "far" / "real.png", "old");
    fs::create_symlink(folder_ / "far" / "real.png", folder_ / "out.png");
    EXPECT_EQ(RunRadialBlur({Text("in.png"), Text("out.png")}).code, 0);
    EXPECT_TRUE(fs::is_symlink(folder_ / "out.png"));
    Picture picture;
    EXPECT_FALSE(ReadPicture(folder_ / "far" / "real.png", picture).has_value());
    EXPECT_EQ(picture.width, 3);
}

TEST_F(DiskTest, AReplacedFileKeepsItsRights) {
    WriteGradientPng(folder_ / "in.png", 3, 3, 3, 8);
    WriteText(folder_ / "out.png", "old");
    chmod((folder_ / "out.png").c_str(), 0640);
    EXPECT_EQ(RunRadialBlur({Text("in.png"), Text("out.png")}).code, 0);
    struct stat status {};
    ASSERT_EQ(stat((folder_ / "out.png").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0640U);
}

TEST_F(DiskTest, ANewFileGetsTheUsualRights) {
    WriteGradientPng(folder_ / "in.png", 3, 3, 3, 8);
    EXPECT_EQ(RunRadialBlur({Text("in.png"), Text("out.png")}).code, 0);
    const mode_t mask = umask(0);
    umask(mask);
    struct stat status {};
    ASSERT_EQ(stat((folder_ / "out.png").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0666U & ~mask);
}

TEST_F(DiskTest, RelativeNamesAreFoundInTheCurrentFolder) {
    WriteGradientPng(folder_ / "in.png", 3, 3, 3, 8);
    const ProgramRun run = RunRadialBlur({"in.png", "out.png"}, {.folder = folder_.Path()});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_THAT(folder_.Names(), ElementsAre("in.png", "out.png"));
}

TEST_F(DiskTest, NamesOfTheGreatestLengthAreServed) {
    WriteGradientPng(folder_ / "in.png", 3, 3, 3, 8);
    const std::string name = std::string(251, 'n') + ".png";
    EXPECT_EQ(RunRadialBlur({Text("in.png"), Text(name)}).code, 0);
    EXPECT_TRUE(fs::exists(folder_ / name));
}

TEST_F(DiskTest, ANameThatIsNoUtf8IsServed) {
    const std::string name = "\xE4\xF6.png";
    WriteGradientPng(folder_ / name, 3, 3, 3, 8);
    const ProgramRun run = RunRadialBlur({Text(name), Text("out\xFC.png"), "--json"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_TRUE(fs::exists(folder_ / "out\xFC.png"));
    EXPECT_THAT(run.out, HasSubstr("\xEF\xBF\xBD\xEF\xBF\xBD.png\""));
}

TEST_F(DiskTest, AReportThatCannotBeWrittenGivesSix) {
    WriteGradientPng(folder_ / "in.png", 3, 3, 3, 8);
    const ProgramRun run =
        RunRadialBlur({Text("in.png"), Text("out.png"), "--json"}, {.closedOutput = true});
    EXPECT_EQ(run.code, 6);
    EXPECT_THAT(run.err, HasSubstr("cannot write to the standard output"));
}

// The stop function answers yes when it is asked for the n-th time, for every n.
class StoppedWriteTest : public DiskTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(StoppedWriteTest, LeavesWhatWasThere) {
    Picture picture;
    picture.width = 300;
    picture.height = 300;
    picture.samples.resize(270000, 17);
    const fs::path path = folder_ / (std::string("out") + GetParam());
    WriteText(path, "old");
    int stops = 0;
    for (int limit = 1;; ++limit) {
        int asked = 0;
        const PictureResult result = WritePicture(path, picture, [&] { return ++asked == limit; });
        EXPECT_THAT(folder_.Names(), ElementsAre(path.filename().string()));
        if (!result) {
            break;
        }
        ++stops;
        EXPECT_EQ(result->fault, PictureFault::Stopped);
        EXPECT_EQ(ReadBytes(path), (Bytes{'o', 'l', 'd'}));
    }
    EXPECT_GE(stops, 3);
    EXPECT_GT(ReadBytes(path).size(), 100U);
}

INSTANTIATE_TEST_SUITE_P(Formats, StoppedWriteTest, ::testing::Values(".png", ".tif"));

// The files as the libraries' own readers see them.

struct Decoded {
    unsigned width = 0;
    unsigned height = 0;
    int bits = 0;
    int type = 0;
    Bytes rows;
};

Decoded DecodePng(const fs::path& path) {
    Decoded decoded;
    std::FILE* const file = std::fopen(path.c_str(), "rb");
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file);
    png_read_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
    decoded.width = png_get_image_width(png, info);
    decoded.height = png_get_image_height(png, info);
    decoded.bits = png_get_bit_depth(png, info);
    decoded.type = png_get_color_type(png, info);
    png_bytepp const rows = png_get_rows(png, info);
    for (unsigned y = 0; y < decoded.height; ++y) {
        decoded.rows.insert(decoded.rows.end(), rows[y], rows[y] + png_get_rowbytes(png, info));
    }
    png_destroy_read_struct(&png, &info, nullptr);
    std::fclose(file);
    return decoded;
}

TEST_F(DiskTest, ASixteenBitPngIsMostSignificantByteFirst) {
    PngFile png{.width = 2, .height = 1, .bits = 16, .colorType = 2};
    // Levels that the interface has: the nearest file levels to 1, 2, 3 and 32765, 32766, 32767.
    png.rows = {{0, 2, 0, 4, 0, 6, 0xFF, 0xF9, 0xFF, 0xFB, 0xFF, 0xFD}};
    WritePngFile(folder_ / "in.png", png);
    ASSERT_EQ(RunRadialBlur({Text("in.png"), Text("out.png")}, {.fake = "copy"}).code, 0);
    const Decoded decoded = DecodePng(folder_ / "out.png");
    EXPECT_EQ(decoded.width, 2U);
    EXPECT_EQ(decoded.height, 1U);
    EXPECT_EQ(decoded.bits, 16);
    EXPECT_EQ(decoded.type, PNG_COLOR_TYPE_RGB);
    EXPECT_EQ(decoded.rows, png.rows[0]);
}

TEST_F(DiskTest, GrayWithAlphaStaysGrayWithAlpha) {
    PngFile png{.width = 2, .height = 1, .bits = 8, .colorType = 4};
    png.rows = {{10, 20, 30, 40}};
    WritePngFile(folder_ / "in.png", png);
    ASSERT_EQ(RunRadialBlur({Text("in.png"), Text("out.png")}, {.fake = "copy"}).code, 0);
    const Decoded decoded = DecodePng(folder_ / "out.png");
    EXPECT_EQ(decoded.type, PNG_COLOR_TYPE_GRAY_ALPHA);
    EXPECT_EQ(decoded.rows, png.rows[0]);
}

TEST_F(DiskTest, TheSmallColourChunksStay) {
    PngFile png{.width = 2, .height = 1, .bits = 8, .colorType = 2};
    png.rows = {Bytes(6, 9)};
    Bytes points;
    for (const std::uint32_t value :
         {31270U, 32900U, 64000U, 33000U, 30000U, 60000U, 15000U, 6000U}) {
        const Bytes bytes = BigEndian32(value);
        points.insert(points.end(), bytes.begin(), bytes.end());
    }
    png.chunks = {{"gAMA", BigEndian32(45455)}, {"cHRM", points}, {"sRGB", {2}}};
    WritePngFile(folder_ / "in.png", png);
    ASSERT_EQ(RunRadialBlur({Text("in.png"), Text("out.png")}).code, 0);
    EXPECT_EQ(FindPngChunk(folder_ / "out.png", "gAMA"), BigEndian32(45455));
    EXPECT_EQ(FindPngChunk(folder_ / "out.png", "cHRM"), points);
    EXPECT_THAT(FindPngChunk(folder_ / "out.png", "sRGB"), ElementsAre(2));
    EXPECT_THAT(FindPngChunk(folder_ / "out.png", "iCCP"), IsEmpty());
}

TEST_F(DiskTest, AGammaOfItsOwnStays) {
    PngFile png{.width = 2, .height = 1, .bits = 8, .colorType = 2};
    png.rows = {Bytes(6, 9)};
    png.chunks = {{"gAMA", BigEndian32(100000)}};
    WritePngFile(folder_ / "in.png", png);
    ASSERT_EQ(RunRadialBlur({Text("in.png"), Text("out.png")}).code, 0);
    EXPECT_EQ(FindPngChunk(folder_ / "out.png", "gAMA"), BigEndian32(100000));
    EXPECT_THAT(FindPngChunk(folder_ / "out.png", "sRGB"), IsEmpty());
}

TEST_F(DiskTest, AFloatTiffWithAlphaIsDeclaredAsSuch) {
    TiffPicture tiff;
    tiff.width = 1;
    tiff.height = 1;
    tiff.bits = 32;
    tiff.samples = 4;
    tiff.sampleFormat = 3;
    tiff.tags = {{338, 3, Short(tiff, 2)}};
    const float pixel[4] = {0.25F, -1.5F, 3.0F, 0.5F};
    Bytes block(sizeof pixel);
    std::memcpy(block.data(), pixel, sizeof pixel);
    tiff.blocks = {block};
    WriteTiffFile(folder_ / "in.tif", tiff);
    ASSERT_EQ(RunRadialBlur({Text("in.tif"), Text("out.tif")}, {.fake = "copy"}).code, 0);
    TIFF* const out = TIFFOpen((folder_ / "out.tif").c_str(), "r");
    ASSERT_NE(out, nullptr);
    std::uint16_t bits = 0;
    std::uint16_t format = 0;
    std::uint16_t photometric = 0;
    std::uint16_t count = 0;
    std::uint16_t* kinds = nullptr;
    TIFFGetField(out, TIFFTAG_BITSPERSAMPLE, &bits);
    TIFFGetField(out, TIFFTAG_SAMPLEFORMAT, &format);
    TIFFGetField(out, TIFFTAG_PHOTOMETRIC, &photometric);
    ASSERT_EQ(TIFFGetField(out, TIFFTAG_EXTRASAMPLES, &count, &kinds), 1);
    EXPECT_EQ(bits, 32);
    EXPECT_EQ(format, SAMPLEFORMAT_IEEEFP);
    EXPECT_EQ(photometric, PHOTOMETRIC_RGB);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(kinds[0], EXTRASAMPLE_UNASSALPHA);
    float read[4] = {};
    EXPECT_EQ(TIFFReadScanline(out, read, 0, 0), 1);
    EXPECT_EQ(std::memcmp(read, pixel, sizeof pixel), 0);
    TIFFClose(out);
}

// Photographs are packed so: the unpacker turns the colours into RGB.
TEST_F(DiskTest, AJpegInsideOfATiffIsRead) {
    TIFF* const tiff = TIFFOpen((folder_ / "photo.tif").c_str(), "w");
    ASSERT_NE(tiff, nullptr);
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 16);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 16);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 3);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_JPEG);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_YCBCR);
    TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 16);
    Bytes pixels;
    for (int i = 0; i < 256; ++i) {
        pixels.insert(pixels.end(), {200, 100, 50});
    }
    EXPECT_GT(TIFFWriteEncodedStrip(tiff, 0, pixels.data(), 768), 0);
    TIFFClose(tiff);
    Picture picture;
    const PictureResult failure = ReadPicture(folder_ / "photo.tif", picture);
    ASSERT_FALSE(failure.has_value()) << failure->text;
    EXPECT_EQ(picture.colours, 3);
    ASSERT_EQ(picture.samples.size(), 768U);
    for (std::size_t i = 0; i < 768; ++i) {
        EXPECT_NEAR(picture.samples[i], pixels[i], 3);
    }
}

// What the Windows build does by itself is the same everywhere.
TEST_F(DiskTest, ThePlainTiffWriterIsUnderstoodByTheLibrary) {
    for (const SampleType type : {SampleType::UInt8, SampleType::UInt16, SampleType::Float32}) {
        for (const int channels : {1, 2, 3, 4}) {
            Picture picture;
            picture.width = 5;
            picture.height = 3;
            picture.colours = channels >= 3 ? 3 : 1;
            picture.alpha = channels % 2 == 0;
            picture.type = type;
            picture.resolution = Resolution{118.11, 300.0, ResolutionUnit::Centimetre};
            picture.color.iccProfile = ColourProfile("RGB ");
            picture.samples.resize(picture.RowBytes() * 3);
            for (std::size_t i = 0; i < picture.samples.size(); ++i) {
                picture.samples[i] = static_cast<std::uint8_t>(i * 7 % 64);
            }
            const fs::path path = folder_ / "plain.tif";
            AtomicFile file;
            std::string why;
            ASSERT_TRUE(file.Open(path, why)) << why;
            ASSERT_FALSE(WritePlainTiff(path, file, picture, {}).has_value());
            ASSERT_TRUE(file.Commit(why)) << why;
            Picture read;
            const PictureResult failure = ReadPicture(path, read);
            ASSERT_FALSE(failure.has_value()) << failure->text;
            EXPECT_EQ(read.colours, picture.colours);
            EXPECT_EQ(read.alpha, picture.alpha);
            EXPECT_EQ(read.type, picture.type);
            EXPECT_EQ(read.samples, picture.samples);
            EXPECT_EQ(read.color.iccProfile, picture.color.iccProfile);
            EXPECT_NEAR(read.resolution->x, 118.11, 1e-5);
            EXPECT_EQ(read.resolution->y, 300.0);
            EXPECT_EQ(read.resolution->unit, ResolutionUnit::Centimetre);
        }
    }
}

TEST_F(DiskTest, ThePlainTiffReaderUnderstandsWhatTheTagsSay) {
    TiffPicture tiff;
    tiff.bigEndian = true;
    tiff.width = 3;
    tiff.height = 2;
    tiff.bits = 16;
    tiff.samples = 1;
    tiff.photometric = 0;
    tiff.rowsPerStrip = 1;
    tiff.tags = {{274, 3, Short(tiff, 2)}};
    tiff.blocks = {{0, 1, 0, 2, 0, 3}, {1, 0, 2, 0, 3, 0}};
    WriteTiffFile(folder_ / "in.tif", tiff);
    TiffFacts facts;
    ASSERT_FALSE(ReadTiffFacts(folder_ / "in.tif", facts).has_value());
    EXPECT_TRUE(facts.bigEndian);
    EXPECT_EQ(facts.layout.width, 3U);
    EXPECT_EQ(facts.layout.height, 2U);
    EXPECT_EQ(facts.layout.bits, 16);
    EXPECT_EQ(facts.layout.orientation, 2);
    EXPECT_EQ(facts.blockOffsets.size(), 2U);
    Picture picture;
    ASSERT_FALSE(JudgeTiff(folder_ / "in.tif", facts.layout, picture).has_value());
    picture.width = 3;
    picture.height = 2;
    picture.samples.resize(12);
    ASSERT_FALSE(ReadPlainTiff(folder_ / "in.tif", facts, picture, {}).has_value());
    NormalizeTiff(facts.layout, picture);
    Picture expected;
    ASSERT_FALSE(ReadPicture(folder_ / "in.tif", expected).has_value());
    EXPECT_EQ(picture.samples, expected.samples);
    // The first sample is the third one from white: 65535 - 3.
    EXPECT_EQ(picture.samples[0], 0xFC);
    EXPECT_EQ(picture.samples[1], 0xFF);
}

// Each entry of the directory claims more than the file holds: none is made room for.
TEST_F(DiskTest, ThePlainTiffReaderMakesNoRoomForWhatIsNotThere) {
    constexpr unsigned kEntries = 20000;
    Bytes file = {'I', 'I', 42, 0, 8, 0, 0, 0, kEntries & 255U, kEntries >> 8};
    for (unsigned i = 0; i < kEntries; ++i) {
        // A profile of 2^26 bytes, which would begin at the beginning.
        file.insert(file.end(), {0x73, 0x87, 7, 0, 0, 0, 0, 4, 0, 0, 0, 0});
    }
    WriteBytes(folder_ / "in.tif", file);
    const auto start = std::chrono::steady_clock::now();
    TiffFacts facts;
    EXPECT_FALSE(ReadTiffFacts(folder_ / "in.tif", facts).has_value());
    EXPECT_TRUE(facts.iccProfile.empty());
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST_F(DiskTest, DescribingAPngReplacesWhatWasThere) {
    PngFile png{.width = 1, .height = 1, .bits = 8, .colorType = 2};
    png.rows = {{1, 2, 3}};
    png.chunks = {{"gAMA", BigEndian32(1)}, {"pHYs", Bytes(9, 1)}, {"tEXt", {'k', 0, 'v'}}};
    WritePngFile(folder_ / "in.png", png);
    Picture picture;
    picture.resolution = Resolution{300.0, 150.0, ResolutionUnit::Inch};
    picture.color.iccProfile = ColourProfile("RGB ");
    WriteBytes(folder_ / "out.png", DescribePng(ReadBytes(folder_ / "in.png"), picture));
    EXPECT_THAT(FindPngChunk(folder_ / "out.png", "gAMA"), IsEmpty());
    EXPECT_THAT(FindPngChunk(folder_ / "out.png", "pHYs"),
                ElementsAre(0, 0, 0x2E, 0x23, 0, 0, 0x17, 0x12, 1));
    EXPECT_THAT(FindPngChunk(folder_ / "out.png", "tEXt"), ElementsAre('k', 0, 'v'));
    Picture read;
    ASSERT_FALSE(ReadPicture(folder_ / "out.png", read).has_value());
    EXPECT_EQ(read.color.iccProfile, picture.color.iccProfile);
    EXPECT_THAT(read.samples, ElementsAre(1, 2, 3));
}

}  // namespace
}  // namespace mv::host::test
