// Each thing that can go wrong has its exit code and its sentence, and leaves the output alone.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "Module.h"
#include "pictures/PictureFile.h"
#include "support/ChildProcess.h"
#include "support/FolderTest.h"
#include "support/TestFiles.h"

namespace mv::host::test {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class FailuresTest : public FolderTest {
protected:
    void SetUp() override { WriteGradientPng(folder_ / "in.png", 8, 6, 3, 8); }

    ProgramRun RunFiles(const std::string& input, const std::string& output,
                        const RunOptions& options = {}) {
        return RunRadialBlur({Text(input), Text(output)}, options);
    }
    // Nothing new in the folder but what the test put there.
    void ExpectNames(std::vector<std::string> names) { EXPECT_EQ(folder_.Names(), names); }
    // One sentence on stderr, nothing on stdout.
    static void ExpectSentence(const ProgramRun& run, int code, const std::string& text) {
        EXPECT_EQ(run.code, code);
        EXPECT_THAT(run.out, IsEmpty());
        EXPECT_THAT(run.err, HasSubstr(text));
        EXPECT_EQ(run.err.rfind("radial-blur: ", 0), 0U) << run.err;
        EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << run.err;
    }
};

TEST_F(FailuresTest, AMissingInputGivesThree) {
    ExpectSentence(RunFiles("no.png", "out.png"), 3,
                   "cannot read '" + Text("no.png") + "': there is no such file");
    ExpectNames({"in.png"});
}

TEST_F(FailuresTest, AFolderAsInputGivesThree) {
    fs::create_directory(folder_ / "folder.png");
    ExpectSentence(RunFiles("folder.png", "out.png"), 3, "it is a folder");
}

TEST_F(FailuresTest, AnEmptyFileGivesFour) {
    WriteText(folder_ / "empty.png", "");
    ExpectSentence(RunFiles("empty.png", "out.png"), 4, "is an empty file, not a picture");
}

TEST_F(FailuresTest, ATextGivesFour) {
    WriteText(folder_ / "text.png", "This is not a picture.");
    ExpectSentence(RunFiles("text.png", "out.png"), 4,
                   "is not a picture; PNG and TIFF files can be read");
    ExpectNames({"in.png", "text.png"});
}

TEST_F(FailuresTest, AFileOfTwoBytesGivesFour) {
    WriteText(folder_ / "short.png", "II");
    ExpectSentence(RunFiles("short.png", "out.png"), 4, "is not a picture");
}

TEST_F(FailuresTest, AJpegIsCalledByItsName) {
    WriteBytes(folder_ / "photo.png", {0xFF, 0xD8, 0xFF, 0xE0, 0, 16, 'J', 'F', 'I', 'F', 0, 1});
    ExpectSentence(RunFiles("photo.png", "out.png"), 4,
                   "is a JPEG picture; convert it to PNG or TIFF first");
}

TEST_F(FailuresTest, TheSignatureCountsAndNotTheName) {
    fs::copy_file(folder_ / "in.png", folder_ / "in.tif");
    EXPECT_EQ(RunFiles("in.tif", "out.png").code, 0);
}

TEST_F(FailuresTest, APngThatEndsEarlyGivesFour) {
    WriteGradientPng(folder_ / "big.png", 100, 100, 3, 8);
    const Bytes whole = ReadBytes(folder_ / "big.png");
    for (const std::size_t length : {std::size_t{20}, std::size_t{60}, whole.size() / 2}) {
        WriteBytes(folder_ / "cut.png",
                   Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
        ExpectSentence(RunFiles("cut.png", "out.png"), 4, "is a damaged PNG picture");
    }
    ExpectNames({"big.png", "cut.png", "in.png"});
}

TEST_F(FailuresTest, APngWithAFlippedHeaderBitGivesFour) {
    Bytes bytes = ReadBytes(folder_ / "in.png");
    bytes[19] ^= 1;  // the width, so that the check sum of the header is wrong
    WriteBytes(folder_ / "flipped.png", bytes);
    ExpectSentence(RunFiles("flipped.png", "out.png"), 4, "is a damaged PNG picture");
}

TEST_F(FailuresTest, ATiffThatEndsEarlyGivesFour) {
    TiffPicture tiff;
    tiff.width = 16;
    tiff.height = 16;
    tiff.blocks = {Bytes(768, 7)};
    WriteTiffFile(folder_ / "whole.tif", tiff);
    const Bytes whole = ReadBytes(folder_ / "whole.tif");
    WriteBytes(folder_ / "cut.tif", Bytes(whole.begin(), whole.begin() + 400));
    ExpectSentence(RunFiles("cut.tif", "out.tif"), 4, "is a damaged TIFF picture");
}

TEST_F(FailuresTest, ATiffWhoseStripIsMissingGivesFour) {
    TiffPicture tiff;
    tiff.width = 16;
    tiff.height = 16;
    tiff.rowsPerStrip = 8;
    tiff.blocks = {Bytes(384, 7), Bytes(3, 7)};
    WriteTiffFile(folder_ / "short.tif", tiff);
    ExpectSentence(RunFiles("short.tif", "out.tif"), 4, "is a damaged TIFF picture");
}

PngFile EmptyPng(std::uint32_t width, std::uint32_t height) {
    PngFile png;
    png.width = width;
    png.height = height;
    png.rows = {Bytes(10, 0)};
    return png;
}

TEST_F(FailuresTest, ASideBeyondTheInterfaceGivesFour) {
    WritePngFile(folder_ / "wide.png", EmptyPng(30001, 1));
    ExpectSentence(RunFiles("wide.png", "out.png"), 4,
                   "has 30001 x 1 pixels; the filter takes at most 30000 a side");
    WritePngFile(folder_ / "tall.png", EmptyPng(1, 2000000000));
    ExpectSentence(RunFiles("tall.png", "out.png"), 4, "has 1 x 2000000000 pixels");
}

TEST_F(FailuresTest, TooManyPixelsGiveFour) {
    WritePngFile(folder_ / "vast.png", EmptyPng(30000, 30000));
    ExpectSentence(RunFiles("vast.png", "out.png"), 4, "at most 536870912 in all");
}

TEST_F(FailuresTest, AFewBytesThatClaimToBeHugeAreRefusedAtOnce) {
    WritePngFile(folder_ / "bomb.png", EmptyPng(30000, 17000));
    const auto start = std::chrono::steady_clock::now();
    ExpectSentence(RunFiles("bomb.png", "out.png"), 4, "is a damaged PNG picture");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

TEST_F(FailuresTest, APictureWithoutPixelsGivesFour) {
    WritePngFile(folder_ / "none.png", EmptyPng(0, 5));
    ExpectSentence(RunFiles("none.png", "out.png"), 4, "damaged");
}

TEST_F(FailuresTest, AMaskOfAnotherSizeGivesFive) {
    WriteGradientPng(folder_ / "mask.png", 8, 7, 1, 8);
    const ProgramRun run =
        RunRadialBlur({Text("in.png"), Text("out.png"), "--mask", Text("mask.png")});
    ExpectSentence(run, 5,
                   "the mask '" + Text("mask.png") + "' has 8 x 7 pixels but '" + Text("in.png") +
                       "' has 8 x 6; give a mask of the same size");
    ExpectNames({"in.png", "mask.png"});
}

TEST_F(FailuresTest, AMissingMaskGivesThree) {
    ExpectSentence(RunRadialBlur({Text("in.png"), Text("out.png"), "--mask", Text("no.png")}), 3,
                   "no.png': there is no such file");
}

TEST_F(FailuresTest, AMaskThatIsNoPictureGivesFour) {
    WriteText(folder_ / "mask.png", "text");
    ExpectSentence(RunRadialBlur({Text("in.png"), Text("out.png"), "--mask", Text("mask.png")}), 4,
                   "is not a picture");
}

TEST_F(FailuresTest, AMissingOutputFolderGivesSix) {
    ExpectSentence(RunFiles("in.png", "no/out.png"), 6, "does not exist; create it first");
    ExpectNames({"in.png"});
}

TEST_F(FailuresTest, AnOutputBelowAFileGivesSix) {
    ExpectSentence(RunFiles("in.png", "in.png/out.png"), 6, "is not a folder");
    ExpectNames({"in.png"});
}

TEST_F(FailuresTest, AFolderAsOutputGivesSix) {
    fs::create_directory(folder_ / "out.png");
    ExpectSentence(RunFiles("in.png", "out.png"), 6, "it is a folder");
    EXPECT_TRUE(fs::is_directory(folder_ / "out.png"));
}

TEST_F(FailuresTest, AnOutputFolderThatIsAFileGivesSix) {
    ExpectSentence(RunRadialBlur({Text("in.png"), "--out-dir", Text("in.png")}), 6,
                   "'" + Text("in.png") + "' is a file; --out-dir needs a folder");
}

TEST_F(FailuresTest, AMissingModuleGivesSeven) {
    ExpectSentence(RunFiles("in.png", "out.png", {.module = folder_ / "no.so"}), 7,
                   "cannot load the filter module '" + Text("no.so") + "': there is no such file");
}

TEST_F(FailuresTest, WithoutAModuleBesideTheProgramItSaysWhereToPutOne) {
    const fs::path program = folder_ / BuiltProgram().filename().string();
    fs::copy_file(BuiltProgram(), program);
    ExpectSentence(
        RunFiles("in.png", "out.png", {.module = "", .program = program}), 7,
        std::string("put ") + ModuleFileName() + " beside the program, or name it with --module");
}

TEST_F(FailuresTest, ATextAsModuleGivesSeven) {
    WriteText(folder_ / "text.so", "This is not a module.");
    ExpectSentence(RunFiles("in.png", "out.png", {.module = folder_ / "text.so"}), 7,
                   "cannot load the filter module");
}

TEST_F(FailuresTest, ALibraryThatIsNoFilterGivesSeven) {
    ExpectSentence(
        RunFiles("in.png", "out.png", {.module = FakeModule().parent_path() / "no_filter.module"}),
        7, "it is a library that does not export ENTRYPOINT");
}

TEST_F(FailuresTest, TooLittleMemoryGivesEight) {
    ExpectSentence(RunFiles("in.png", "out.png", {.fake = "status=-108"}), 8,
                   "not enough memory to blur '" + Text("in.png") + "' with its 8 x 6 pixels");
    ExpectNames({"in.png"});
}

TEST_F(FailuresTest, AnErrorOfTheModuleGivesEight) {
    ExpectSentence(RunFiles("in.png", "out.png", {.fake = "status=-50"}), 8,
                   "failed on '" + Text("in.png") + "' with status -50");
    ExpectSentence(RunFiles("in.png", "out.png", {.fake = "status=1"}), 8, "with status 1");
    ExpectSentence(RunFiles("in.png", "out.png", {.fake = "prepare=-30100"}), 8, "-30100");
    ExpectSentence(RunFiles("in.png", "out.png", {.fake = "finish=-1"}), 8, "with status -1");
    ExpectNames({"in.png"});
}

TEST_F(FailuresTest, TheModulesOwnWordsAreShown) {
    ExpectSentence(RunFiles("in.png", "out.png", {.fake = "status=-30904 text=too_blue"}), 8,
                   "the filter refuses '" + Text("in.png") + "': too_blue");
}

TEST_F(FailuresTest, ACancelWithoutAnInterruptIsAFailure) {
    ExpectSentence(RunFiles("in.png", "out.png", {.fake = "status=-128"}), 8, "with status -128");
}

TEST_F(FailuresTest, FloatDoesNotGoIntoPng) {
    TiffPicture tiff;
    tiff.width = 2;
    tiff.height = 2;
    tiff.bits = 32;
    tiff.samples = 1;
    tiff.photometric = 1;
    tiff.sampleFormat = 3;
    tiff.blocks = {Bytes(16, 0)};
    WriteTiffFile(folder_ / "float.tif", tiff);
    ExpectSentence(RunFiles("float.tif", "out.png"), 4,
                   "PNG holds no float samples; give the output a name in .tif");
    ExpectNames({"float.tif", "in.png"});
}

TEST_F(FailuresTest, AnExistingOutputStaysAsItWas) {
    const std::string before = "what was there before";
    WriteText(folder_ / "out.png", before);
    const Bytes bytes(before.begin(), before.end());
    WriteText(folder_ / "text.png", "text");
    WriteGradientPng(folder_ / "mask.png", 3, 3, 1, 8);
    RunFiles("no.png", "out.png");
    EXPECT_EQ(ReadBytes(folder_ / "out.png"), bytes);
    RunFiles("text.png", "out.png");
    EXPECT_EQ(ReadBytes(folder_ / "out.png"), bytes);
    RunRadialBlur({Text("in.png"), Text("out.png"), "--mask", Text("mask.png")});
    EXPECT_EQ(ReadBytes(folder_ / "out.png"), bytes);
    RunRadialBlur({Text("in.png"), Text("out.png"), "--strength", "x"});
    EXPECT_EQ(ReadBytes(folder_ / "out.png"), bytes);
    RunFiles("in.png", "out.png", {.module = folder_ / "no.so"});
    EXPECT_EQ(ReadBytes(folder_ / "out.png"), bytes);
    RunFiles("in.png", "out.png", {.fake = "status=-108"});
    EXPECT_EQ(ReadBytes(folder_ / "out.png"), bytes);
    EXPECT_EQ(RunFiles("in.png", "out.png").code, 0);
    EXPECT_NE(ReadBytes(folder_ / "out.png"), bytes);
    ExpectNames({"in.png", "mask.png", "out.png", "text.png"});
}

TEST_F(FailuresTest, TheOutputMayBeTheInput) {
    EXPECT_EQ(RunFiles("in.png", "in.png").code, 0);
    Picture picture;
    EXPECT_FALSE(ReadPicture(folder_ / "in.png", picture).has_value());
    EXPECT_EQ(picture.samples[0], 255 - GradientLevel(0, 0, 0, 8));
    ExpectNames({"in.png"});
}

TEST_F(FailuresTest, ABadPictureAmongSeveralIsNamedAndTheRestIsDone) {
    WriteGradientPng(folder_ / "a.png", 5, 5, 1, 8);
    WriteText(folder_ / "b.png", "text");
    WriteGradientPng(folder_ / "c.png", 4, 4, 3, 16);
    const ProgramRun run = RunRadialBlur({Text("a.png"), Text("b.png"), Text("no.png"),
                                          Text("c.png"), "--out-dir", Text("new/results")});
    EXPECT_EQ(run.code, 4);  // that of b.png, the first failure
    EXPECT_THAT(run.err, HasSubstr("'" + Text("b.png") + "' is not a picture"));
    EXPECT_THAT(run.err, HasSubstr("cannot read '" + Text("no.png") + "'"));
    EXPECT_THAT(run.out, HasSubstr("2 of 4 pictures done, 2 failed\n"));
    EXPECT_TRUE(fs::exists(folder_ / "new" / "results" / "a.png"));
    EXPECT_TRUE(fs::exists(folder_ / "new" / "results" / "c.png"));
    EXPECT_FALSE(fs::exists(folder_ / "new" / "results" / "b.png"));
}

TEST_F(FailuresTest, TwoInputsOfOneNameAreRefusedBeforeAnythingIsDone) {
    fs::create_directory(folder_ / "sub");
    fs::copy_file(folder_ / "in.png", folder_ / "sub" / "in.png");
    ExpectSentence(RunRadialBlur({Text("in.png"), Text("sub/in.png"), "--out-dir", Text("out")}), 2,
                   "two inputs are called 'in.png'");
    ExpectNames({"in.png", "sub"});
}

}  // namespace
}  // namespace mv::host::test
