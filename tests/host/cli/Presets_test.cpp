// Presets on the command line: the files that it writes, reads and refuses.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "Module.h"
#include "pictures/PictureFile.h"
#include "program/presets/PresetFile.h"
#include "support/ChildProcess.h"
#include "support/FolderTest.h"
#include "support/PresetTexts.h"
#include "support/TestFiles.h"

namespace mv::host::test {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

class PresetsTest : public FolderTest {
protected:
    std::string File() const { return Text("looks.cfg"); }
    std::string Content() const { return ReadText(folder_ / "looks.cfg"); }
    void Put(const std::string& bytes) const { WriteText(folder_ / "looks.cfg", bytes); }

    static ProgramRun Presets(std::vector<std::string> words) {
        words.insert(words.begin(), "presets");
        return RunRadialBlur(words, {.module = ""});
    }
    // A run on a small picture with these options, which tells its values.
    ProgramRun Blur(std::vector<std::string> options) {
        WriteGradientPng(folder_ / "in.png", 8, 6, 3, 8);
        options.insert(options.begin(), {Text("in.png"), Text("out.png"), "--json"});
        return RunRadialBlur(options);
    }
    static std::string ValueOf(const ProgramRun& run, const std::string& name) {
        const std::string key = "\"" + name + "\": ";
        const std::size_t at = run.out.find(key);
        if (at == std::string::npos) {
            return "missing";
        }
        const std::size_t begin = at + key.size();
        return run.out.substr(begin, run.out.find_first_of(",\n", begin) - begin);
    }
};

// --- What is written ---

TEST_F(PresetsTest, TheFirstSaveMakesTheFile) {
    const ProgramRun run =
        Presets({"save", File(), "soft glow", "--strength", "0.4", "--mode", "abberative",
                 "--origin", "0.3,0.61234567", "--invert-gradient", "--no-gamma-correction"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(run.out, "saved 'soft_glow' in '" + File() + "'\n");
    EXPECT_EQ(Content(), FileText(kOwnerLine + Block("soft_glow", {{"Origin", "0.300000 0.612346"},
                                                                   {"Strength", "0.400000"},
                                                                   {"Mode", "2"},
                                                                   {"InvertGradient", "1"},
                                                                   {"GammaCorrection", "0"}})));
    EXPECT_THAT(folder_.Names(), ElementsAre("looks.cfg"));
}

TEST_F(PresetsTest, EveryParameterIsKept) {
    const ProgramRun run = Presets(
        {"save",    File(),          "all",    "--origin",      "-0.5,1.25", "--intensity",
         "7.5",     "--start",       "-3",     "--holdout",     "0.125",     "--contrast",
         "0.75",    "--gamma",       "2.5",    "--hue",         "-0.5",      "--saturation",
         "0.5",     "--lightness",   "0.0625", "--low",         "10",        "--high",
         "200",     "--soften",      "1.5",    "--climax",      "-0.25",     "--use-size-selection",
         "--blend", "alpha replace", "--show", "size-selection"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(Content(),
              FileText(kOwnerLine + Block("all", {{"Origin", "-0.500000 1.250000"},
                                                  {"Intensity", "7.500000"},
                                                  {"ZoomStart", "-3.000000"},
                                                  {"HoldoutRadius", "0.125000"},
                                                  {"Contrast", "0.750000"},
                                                  {"GammaCorrectionCorrective", "2.500000"},
                                                  {"Hue", "-0.500000"},
                                                  {"Saturation", "0.500000"},
                                                  {"Lightness", "0.062500"},
                                                  {"SelectionLow", "10.000000"},
                                                  {"SelectionHigh", "200.000000"},
                                                  {"SelectionSoften", "1.500000"},
                                                  {"SelectionClimax", "-0.250000"},
                                                  {"UseSizeSelection", "1"},
                                                  {"BlendMode", "22"},
                                                  {"SelectionShow", "4"}})));
}

// A number is narrowed to single precision, a position is not.
TEST_F(PresetsTest, ANumberIsNarrowedAndAPositionIsNot) {
    EXPECT_EQ(
        Presets({"save", File(), "a", "--intensity", "16777217", "--origin", "16777217,0"}).code,
        0);
    EXPECT_EQ(Content(), FileText(kOwnerLine + Block("a", {{"Origin", "16777217.000000 0.000000"},
                                                           {"Intensity", "16777216.000000"}})));
}

TEST_F(PresetsTest, ANewPresetGoesToTheEnd) {
    Put(FileText(kOwnerLine + Block("a")));
    EXPECT_EQ(Presets({"save", File(), "b", "--hue", "0.5"}).code, 0);
    EXPECT_EQ(Content(), FileText(kOwnerLine + Block("a") + Block("b", {{"Hue", "0.500000"}})));
}

TEST_F(PresetsTest, APresetIsNotReplacedUnasked) {
    const std::string before = FileText(kOwnerLine + Block("a") + Block("b") + Block("c"));
    Put(before);
    const ProgramRun run = Presets({"save", File(), "b", "--hue", "0.5"});
    EXPECT_EQ(run.code, 12);
    EXPECT_EQ(run.err, "radial-blur: there is a preset 'b' in '" + File() +
                           "' already; --force replaces it\n");
    EXPECT_EQ(Content(), before);
    EXPECT_EQ(Presets({"save", File(), "b", "--hue", "0.5", "--force"}).code, 0);
    // The block keeps its place, and the empty line in front of the next one is not restored.
    EXPECT_EQ(Content(), FileText(kOwnerLine + Block("a") + Block("b", {{"Hue", "0.500000"}}) +
                                  Block("c").substr(1)));
    EXPECT_EQ(Presets({"list", File()}).out, "a\nb\nc\n");
}

TEST_F(PresetsTest, ASaveCanStartFromAnotherPreset) {
    Put(FileText(kOwnerLine + Block("a", {{"Hue", "0.500000"}, {"Strength", "0.100000"}})));
    EXPECT_EQ(Presets({"save", File(), "b", "--strength", "0.75", "--preset", File() + ":a"}).code,
              0);
    EXPECT_EQ(Content(),
              FileText(kOwnerLine + Block("a", {{"Hue", "0.500000"}, {"Strength", "0.100000"}}) +
                       Block("b", {{"Hue", "0.500000"}, {"Strength", "0.750000"}})));
}

TEST_F(PresetsTest, DeletingTakesTheBlockOut) {
    Put(FileText(kOwnerLine + Block("a") + Block("b") + Block("c")));
    const ProgramRun run = Presets({"delete", File(), "b"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(run.out, "deleted 'b' from '" + File() + "'\n");
    // The copy ends behind a's last line; a newline of the copy, and one in front of "name".
    EXPECT_EQ(Content(), FileText(kOwnerLine + Block("a").substr(0, Block("a").size() - 1) + "\n" +
                                  "\nname c\n" + Lines()));
    EXPECT_EQ(Presets({"list", File()}).out, "a\nc\n");
}

TEST_F(PresetsTest, TheLastPresetCanBeDeleted) {
    Put(FileText(kOwnerLine + Block("a")));
    EXPECT_EQ(Presets({"delete", File(), "a"}).code, 0);
    EXPECT_EQ(Content(), FileText(kOwnerLine));
    const ProgramRun run = Presets({"list", File()});
    EXPECT_EQ(run.code, 0);
    EXPECT_THAT(run.out, IsEmpty());
}

// Of the file's bytes 0xFF ends the copy of a deletion, and only of that; it is said.
TEST_F(PresetsTest, AByte0xFFEndsTheCopyOfADeletionAndIsTold) {
    Put("FileOwner RadialBlur\n\nname a\nHue 0\n\nname b\xFF\nHue 0\n\nname c\nHue 0\n");
    const ProgramRun run = Presets({"delete", File(), "a"});
    EXPECT_EQ(run.code, 0);
    EXPECT_THAT(run.err, HasSubstr("a byte 0xFF in '" + File() + "' ended the file"));
    EXPECT_THAT(run.err, HasSubstr("what stood behind it is gone, 1 whole presets among it"));
    EXPECT_EQ(Content(), FileText("FileOwner RadialBlur\n\nname b"));
}

TEST_F(PresetsTest, AByte0xFFInWhatIsDeletedCostsNothing) {
    Put(FileText("FileOwner RadialBlur\n\nname a\nHue \xFF\n\nname b\nHue 0\n"));
    const ProgramRun run = Presets({"delete", File(), "a"});
    EXPECT_THAT(run.err, IsEmpty());
    EXPECT_EQ(Content(), FileText("FileOwner RadialBlur\n\nname b\nHue 0\n"));
}

TEST_F(PresetsTest, SavingLoadingAndSavingAgainWritesTheSameBytes) {
    EXPECT_EQ(
        Presets({"save", File(), "a", "--strength", "0.123456789", "--origin", "0.33333333333,1e-7",
                 "--hue", "-0.98765432", "--intensity", "1e30", "--start", "-1234567.891"})
            .code,
        0);
    const std::string first = Content();
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(Presets({"save", File(), "a", "--preset", File() + ":a", "--force"}).code, 0);
        EXPECT_EQ(Content(), first);
    }
    EXPECT_EQ(Presets({"save", Text("other.cfg"), "a", "--preset", File() + ":a"}).code, 0);
    EXPECT_EQ(ReadText(folder_ / "other.cfg"), first);
}

// --- Files by hand ---

struct Edge {
    const char* what;
    std::string before;
    std::string afterAdding;     // of the preset "new"
    std::string afterReplacing;  // of the preset "old"
    std::string afterDeleting;   // of the preset "old"
};

// Each file holds "old" with a strength of 0.75 alone. The texts are what a system without carriage
// returns writes.
std::vector<Edge> Edges() {
    const std::string fresh = Block("new");
    const std::string million(1000000, 'x');
    return {
        {"no newline at the end", "FileOwner RadialBlur\n\nname old\nStrength 0.75",
         "FileOwner RadialBlur\n\nname old\nStrength 0.75" + fresh,
         "FileOwner RadialBlur\n\nname old\n" + Lines(), "FileOwner RadialBlur\n"},
        {"CRLF", "FileOwner RadialBlur\r\n\r\nname old\r\nStrength 0.75\r\n",
         "FileOwner RadialBlur\r\n\r\nname old\r\nStrength 0.75\r\n" + fresh,
         "FileOwner RadialBlur\r\n\r\nname old\n" + Lines(), "FileOwner RadialBlur\n"},
        {"a BOM",
         "\xEF\xBB\xBF"
         "FileOwner RadialBlur\n\nname old\nStrength 0.75\n",
         "\xEF\xBB\xBF"
         "FileOwner RadialBlur\n\nname old\nStrength 0.75\n" +
             fresh,
         "\xEF\xBB\xBF"
         "FileOwner RadialBlur\n\nname old\n" +
             Lines(),
         "\xEF\xBB\xBF"
         "FileOwner RadialBlur\n"},
        {"all in one line", "FileOwner RadialBlur name old Strength 0.75 name next Hue 0",
         "FileOwner RadialBlur name old Strength 0.75 name next Hue 0" + fresh,
         "FileOwner RadialBlur name old\n" + Lines() + "name next Hue 0",
         "FileOwner RadialBlur\n\nname next Hue 0"},
        {"the owner behind it all", "name old\nStrength 0.75\nname x\nFileOwner RadialBlur\n",
         "name old\nStrength 0.75\nname x\nFileOwner RadialBlur\n" + fresh,
         "name old\n" + Lines() + "name x\nFileOwner RadialBlur\n",
         "\nname x\nFileOwner RadialBlur\n"},
        {"a token of a million characters",
         "FileOwner RadialBlur\n" + million + " 1\nname old\nStrength 0.75\n",
         "FileOwner RadialBlur\n" + million + " 1\nname old\nStrength 0.75\n" + fresh,
         "FileOwner RadialBlur\n" + million + " 1\nname old\n" + Lines(),
         "FileOwner RadialBlur\n" + million + " 1\n"},
        {"a NUL and a tab", std::string("FileOwner\tRadialBlur\v\f\0 name old Strength 0.75 ", 48),
         std::string("FileOwner\tRadialBlur\v\f\0 name old Strength 0.75 ", 48) + fresh,
         std::string("FileOwner\tRadialBlur\v\f\0 name old\n", 33) + Lines(),
         std::string("FileOwner\tRadialBlur\v\f\0\n", 24)},
    };
}

TEST_F(PresetsTest, FilesByHandAreListedShownAndTaken) {
    for (const Edge& edge : Edges()) {
        SCOPED_TRACE(edge.what);
        Put(edge.before);
        EXPECT_THAT(Presets({"list", File()}).out, ::testing::StartsWith("old\n"));
        EXPECT_THAT(Presets({"show", File(), "old"}).out,
                    HasSubstr("\n  strength            0.75\n"));
        const ProgramRun run = Blur({"--preset", File() + ":old"});
        EXPECT_EQ(run.code, 0) << run.err;
        EXPECT_EQ(ValueOf(run, "Strength"), "0.75");
        EXPECT_EQ(Content(), edge.before);
    }
}

#ifndef _WIN32
// Where text files have carriage returns, line ends are translated on the way through a rewrite;
// the tests of the format itself show that.
TEST_F(PresetsTest, FilesByHandAreRewrittenToTheByte) {
    for (const Edge& edge : Edges()) {
        SCOPED_TRACE(edge.what);
        Put(edge.before);
        EXPECT_EQ(Presets({"save", File(), "new"}).code, 0);
        EXPECT_EQ(Content(), edge.afterAdding);
        Put(edge.before);
        EXPECT_EQ(Presets({"save", File(), "old", "--force"}).code, 0);
        EXPECT_EQ(Content(), edge.afterReplacing);
        Put(edge.before);
        EXPECT_EQ(Presets({"delete", File(), "old"}).code, 0);
        EXPECT_EQ(Content(), edge.afterDeleting);
        EXPECT_THAT(folder_.Names(), ElementsAre("looks.cfg"));
    }
}
#endif

TEST_F(PresetsTest, AFileOfManyMegabytesIsServed) {
    const bool isLong = std::getenv("RADIAL_BLUR_LONG") != nullptr;
    const std::string filling(isLong ? 100000000 : 5000000, 'x');
    const std::string before = kOwnerLine + filling + "\n\nname old\nStrength 0.75\n";
    Put(FileText(before));
    EXPECT_EQ(Presets({"list", File()}).out, "old\n");
    EXPECT_EQ(Presets({"save", File(), "new"}).code, 0);
    EXPECT_TRUE(Content() == FileText(before + Block("new")));
    EXPECT_EQ(Presets({"delete", File(), "new"}).code, 0);
    EXPECT_EQ(Presets({"list", File()}).out, "old\n");
}

TEST_F(PresetsTest, GarbageIsNoPresetFileAndStays) {
    std::string garbage;
    std::uint32_t state = 7;
    for (int i = 0; i < 50000; ++i) {
        state = state * 1664525 + 1013904223;
        garbage += static_cast<char>(state >> 24);
    }
    Put(garbage);
    for (const std::vector<std::string>& words : {std::vector<std::string>{"list", File()},
                                                  {"show", File(), "a"},
                                                  {"save", File(), "a"},
                                                  {"save", File(), "a", "--force"},
                                                  {"delete", File(), "a"}}) {
        const ProgramRun run = Presets(words);
        EXPECT_EQ(run.code, 11) << words[0];
        EXPECT_THAT(run.err, HasSubstr("'" + File() + "' is no preset file"));
    }
    EXPECT_EQ(Content(), garbage);
}

// --- What is told ---

TEST_F(PresetsTest, ShowPrintsOptionsAndWhatIsDefault) {
    Put(FileText(kOwnerLine + Block("a", {{"Origin", "0.250000 0.750000"},
                                          {"BlendMode", "20"},
                                          {"GammaCorrection", "0"}})));
    const ProgramRun run = Presets({"show", File(), "a"});
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.out,
              "a\n"
              "  origin              0.25,0.75\n"
              "  intensity           1  (default)\n"
              "  strength            0.25  (default)\n"
              "  start               0.5  (default)\n"
              "  holdout             0  (default)\n"
              "  mode                normal  (default)\n"
              "  invert-gradient     off  (default)\n"
              "  gamma-correction    off\n"
              "  contrast            0  (default)\n"
              "  gamma               1  (default)\n"
              "  hue                 0  (default)\n"
              "  saturation          0  (default)\n"
              "  lightness           0  (default)\n"
              "  low                 0  (default)\n"
              "  high                255  (default)\n"
              "  soften              0  (default)\n"
              "  climax              1  (default)\n"
              "  use-size-selection  off  (default)\n"
              "  blend               alpha sub\n"
              "  show                normal  (default)\n");
}

TEST_F(PresetsTest, ShowWithoutANameShowsAll) {
    Put(FileText(kOwnerLine + Block("a") + Block("b", {{"Hue", "0.500000"}})));
    const ProgramRun run = Presets({"show", File(), "--json"});
    EXPECT_EQ(run.code, 0);
    EXPECT_THAT(run.out, HasSubstr("\"name\": \"a\""));
    EXPECT_THAT(run.out, HasSubstr("\"name\": \"b\""));
    EXPECT_THAT(run.out, HasSubstr("\"Hue\": 0.5,"));
    EXPECT_THAT(run.out, HasSubstr("\"BlendMode\": \"normal\","));
    EXPECT_THAT(Presets({"show", File()}).out, HasSubstr("  (default)\n\nb\n"));
}

TEST_F(PresetsTest, ListAsJson) {
    Put(FileText(kOwnerLine + Block("a") + Block("quo\"te")));
    const ProgramRun run = Presets({"list", File(), "--json"});
    EXPECT_EQ(run.code, 0);
    EXPECT_THAT(run.out, HasSubstr("\"filter\": \"RadialBlur\",\n  \"presets\": [\n    \"a\",\n"
                                   "    \"quo\\\"te\"\n  ]"));
}

TEST_F(PresetsTest, AMissingPresetIsToldWithThoseThatAreThere) {
    const std::string before = FileText(kOwnerLine + Block("one") + Block("two"));
    Put(before);
    const std::string sentence =
        "radial-blur: there is no preset 'three' in '" + File() + "'; it holds one, two\n";
    for (const ProgramRun& run :
         {Presets({"show", File(), "three"}), Presets({"delete", File(), "three"}),
          Presets({"save", File(), "x", "--preset", File() + ":three"}),
          Blur({"--preset", File() + ":three"})}) {
        EXPECT_EQ(run.code, 10);
        EXPECT_EQ(run.err, sentence);
    }
    EXPECT_EQ(Content(), before);
    EXPECT_THAT(folder_.Names(), ElementsAre("in.png", "looks.cfg"));
}

TEST_F(PresetsTest, OfManyPresetsTheFirstTwentyAreNamed) {
    std::string text = kOwnerLine;
    for (int i = 0; i < 25; ++i) {
        text += "\nname n" + std::to_string(i) + "\n";
    }
    Put(FileText(text));
    const ProgramRun run = Presets({"show", File(), "x"});
    EXPECT_EQ(run.code, 10);
    EXPECT_THAT(run.err, HasSubstr("n18, n19 and 5 more\n"));
}

TEST_F(PresetsTest, AFileOfAnotherFilterIsNamedAndLeftAlone) {
    const std::string before = "FileOwner Twirl\n\nname a\nStrength 1\n";
    Put(before);
    for (const ProgramRun& run :
         {Presets({"list", File()}), Presets({"show", File(), "a"}), Presets({"save", File(), "b"}),
          Presets({"save", File(), "a", "--force"}), Presets({"delete", File(), "a"}),
          Blur({"--preset", File() + ":a"}), Blur({"--save-preset", File() + ":b"})}) {
        EXPECT_EQ(run.code, 11);
        EXPECT_EQ(run.err, "radial-blur: '" + File() +
                               "' holds presets of the filter 'Twirl', not of 'RadialBlur'\n");
    }
    EXPECT_EQ(Content(), before);
    EXPECT_THAT(folder_.Names(), ElementsAre("in.png", "looks.cfg"));
}

TEST_F(PresetsTest, AnEmptyFileAndAFolderAreNoPresetFiles) {
    Put("");
    EXPECT_EQ(Presets({"save", File(), "a"}).err,
              "radial-blur: '" + File() + "' is empty, and so no preset file\n");
    fs::create_directory(folder_ / "folder.cfg");
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"list"}, {"show"}, {"save", "a"}, {"delete", "a"}}) {
        std::vector<std::string> all = {words[0], Text("folder.cfg")};
        all.insert(all.end(), words.begin() + 1, words.end());
        const ProgramRun run = Presets(all);
        EXPECT_EQ(run.code, 11) << words[0];
        EXPECT_EQ(run.err,
                  "radial-blur: '" + Text("folder.cfg") + "' is a folder, not a preset file\n");
    }
    EXPECT_EQ(Content(), "");
    EXPECT_TRUE(fs::is_directory(folder_ / "folder.cfg"));
}

TEST_F(PresetsTest, AMissingFileCanOnlyBeSavedTo) {
    for (const ProgramRun& run :
         {Presets({"list", File()}), Presets({"show", File(), "a"}),
          Presets({"delete", File(), "a"}), Blur({"--preset", File() + ":a"})}) {
        EXPECT_EQ(run.code, 3);
        EXPECT_EQ(run.err,
                  "radial-blur: there is no preset file '" + File() + "'; check its name\n");
    }
    const ProgramRun run = Presets({"save", Text("no/looks.cfg"), "a"});
    EXPECT_EQ(run.code, 6);
    EXPECT_THAT(run.err, HasSubstr("there is no folder '" + Text("no") + "' for the preset file"));
    EXPECT_THAT(folder_.Names(), ElementsAre("in.png"));
}

// --- Runs ---

TEST_F(PresetsTest, OptionsWinWhereverTheyStand) {
    Put(FileText(kOwnerLine + Block("a", {{"Strength", "0.125000"}, {"Hue", "0.500000"}})));
    for (const std::vector<std::string>& options :
         {std::vector<std::string>{"--preset", File() + ":a", "--hue", "-0.25"},
          {"--hue", "-0.25", "--preset", File() + ":a"}}) {
        const ProgramRun run = Blur(options);
        EXPECT_EQ(run.code, 0) << run.err;
        EXPECT_EQ(ValueOf(run, "Strength"), "0.125");
        EXPECT_EQ(ValueOf(run, "Hue"), "-0.25");
    }
}

// Doubles that no other double is nearer to than the text, as the C library reads it.
TEST_F(PresetsTest, NumbersReachTheModuleToTheBit) {
    Put("FileOwner RadialBlur name a Origin 0.1 0.30000000000000004 Strength .7071067811865476 "
        "Intensity 123456.7890123456789 ZoomStart -1e-3 Hue 0.1x Contrast +2.5e0 ");
    const ProgramRun run = Blur({"--preset", File() + ":a"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(std::stod(ValueOf(run, "Strength")), .7071067811865476);
    EXPECT_EQ(std::stod(ValueOf(run, "Intensity")), 123456.7890123456789);
    EXPECT_EQ(std::stod(ValueOf(run, "ZoomStart")), -1e-3);
    EXPECT_EQ(std::stod(ValueOf(run, "Hue")), 0.1);
    EXPECT_EQ(std::stod(ValueOf(run, "Contrast")), 2.5);
    EXPECT_THAT(run.out, HasSubstr("0.1,\n"));
    EXPECT_THAT(run.out, HasSubstr("0.30000000000000004\n"));
}

TEST_F(PresetsTest, WhatAPresetLeavesOutOrGetsWrongHasItsDefaultOrItsLimit) {
    Put(FileText(std::string(kOwnerLine) +
                 "\nname a\nHue 9.5\nIntensity -3\nBlendMode 99\nMode 0\nForeign 1\nZoomStart 0.7\n"
                 "SelectionLow word\nStrength nan\nUseSizeSelection 17\n"));
    const ProgramRun run = Blur({"--preset", File() + ":a"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(ValueOf(run, "Hue"), "1");
    EXPECT_EQ(ValueOf(run, "Intensity"), "0");
    EXPECT_EQ(ValueOf(run, "BlendMode"), "\"normal\"");
    EXPECT_EQ(ValueOf(run, "Mode"), "\"normal\"");
    EXPECT_EQ(ValueOf(run, "ZoomStart"), "0.7");
    EXPECT_EQ(ValueOf(run, "SelectionLow"), "0");
    EXPECT_EQ(ValueOf(run, "Strength"), "0.25");
    EXPECT_EQ(ValueOf(run, "UseSizeSelection"), "true");
    EXPECT_EQ(ValueOf(run, "SelectionHigh"), "255");
}

TEST_F(PresetsTest, TheValuesOfARunAreKept) {
    Put(FileText(kOwnerLine + Block("a", {{"Hue", "0.500000"}})));
    const ProgramRun run = Blur({"--preset", File() + ":a", "--strength", "0.75", "--save-preset",
                                 Text("new.cfg") + ":kept look"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(
        ReadText(folder_ / "new.cfg"),
        FileText(kOwnerLine + Block("kept_look", {{"Hue", "0.500000"}, {"Strength", "0.750000"}})));
}

TEST_F(PresetsTest, TheValuesOfARunThatFailedAreNotKept) {
    WriteGradientPng(folder_ / "in.png", 8, 6, 3, 8);
    const ProgramRun run = RunRadialBlur(
        {Text("in.png"), Text("out.png"), "--save-preset", File() + ":a"}, {.fake = "status=-108"});
    EXPECT_EQ(run.code, 8);
    EXPECT_EQ(RunRadialBlur({Text("in.png"), Text("gone.png"), "--out-dir", Text("out"),
                             "--save-preset", File() + ":a"})
                  .code,
              3);
    EXPECT_FALSE(fs::exists(folder_ / "looks.cfg"));
}

TEST_F(PresetsTest, AKeptPresetThatIsThereIsToldBeforeTheRun) {
    const std::string before = FileText(kOwnerLine + Block("a"));
    Put(before);
    const ProgramRun run = Blur({"--hue", "0.5", "--save-preset", File() + ":a"});
    EXPECT_EQ(run.code, 12);
    EXPECT_FALSE(fs::exists(folder_ / "out.png"));
    EXPECT_EQ(Content(), before);
    EXPECT_EQ(Blur({"--hue", "0.5", "--save-preset", File() + ":a", "--force"}).code, 0);
    EXPECT_EQ(Content(), FileText(kOwnerLine + Block("a", {{"Hue", "0.500000"}})));
}

// --- Names ---

class OddNameTest : public PresetsTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(OddNameTest, IsSavedListedUsedAndDeleted) {
    const std::string name = GetParam();
    EXPECT_EQ(Presets({"save", File(), "--hue", "0.5", "--", name}).code, 0);
    EXPECT_EQ(Content(), FileText(kOwnerLine + Block(name, {{"Hue", "0.500000"}})));
    EXPECT_EQ(Presets({"list", File()}).out, name + "\n");
    const ProgramRun run = Blur({"--preset", File() + ":" + name});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(ValueOf(run, "Hue"), "0.5");
    EXPECT_EQ(Presets({"delete", File(), "--", name}).code, 0);
    EXPECT_EQ(Content(), FileText(kOwnerLine));
}

INSTANTIATE_TEST_SUITE_P(Names, OddNameTest,
                         ::testing::Values("a:b", ":", "C:x", "-x", "--help", "%s%n"));

#ifndef _WIN32
TEST_F(PresetsTest, ANameIsBytesWhateverTheyMean) {
    for (const std::string name : {"gl\xC3\xBChend", "\xE4\xF6", "\xE2\x9C\xA8"}) {
        fs::remove(folder_ / "looks.cfg");
        EXPECT_EQ(Presets({"save", File(), name}).code, 0);
        EXPECT_EQ(Content(), kOwnerLine + Block(name));
        EXPECT_EQ(Presets({"list", File()}).out, name + "\n");
        EXPECT_EQ(Presets({"delete", File(), name}).code, 0);
    }
}
#else
// The dialog writes names in the system's character set; both it and the command line find them.
TEST_F(PresetsTest, ANameIsInTheSystemsCharacterSet) {
    EXPECT_EQ(Presets({"save", File(), "gl\xC3\xBChend"}).code, 0);
    EXPECT_EQ(Content(), FileText(kOwnerLine + Block("gl\xFChend")));
    EXPECT_EQ(Presets({"list", File()}).out, "gl\xC3\xBChend\n");
    EXPECT_EQ(Presets({"show", File(), "gl\xC3\xBChend"}).code, 0);
    EXPECT_EQ(Presets({"delete", File(), "gl\xC3\xBChend"}).code, 0);
    EXPECT_EQ(Content(), FileText(kOwnerLine));
}

TEST_F(PresetsTest, ANameThatTheCharacterSetLacksIsUtf8) {
    EXPECT_EQ(Presets({"save", File(), "\xE2\x9C\xA8\xE3\x81\x82"}).code, 0);
    EXPECT_EQ(Content(), FileText(kOwnerLine + Block("\xE2\x9C\xA8\xE3\x81\x82")));
    EXPECT_EQ(Presets({"list", File()}).out, "\xE2\x9C\xA8\xE3\x81\x82\n");
    EXPECT_EQ(Presets({"delete", File(), "\xE2\x9C\xA8\xE3\x81\x82"}).code, 0);
}
#endif

TEST_F(PresetsTest, AFileWithAnyNameIsServed) {
    for (const std::string name : {"l\xC3\xB6oks", "\xE3\x81\x82.cfg", "b l a n k"}) {
        const ProgramRun run = Presets({"save", Text(name), "a"});
#ifdef _WIN32
        if (name[0] == '\xE3') {
            EXPECT_EQ(run.code, 6);
            EXPECT_THAT(run.err, HasSubstr("character set; choose another"));
            continue;
        }
#endif
        EXPECT_EQ(run.code, 0) << run.err;
        EXPECT_EQ(Presets({"list", Text(name)}).out, "a\n");
        EXPECT_EQ(Blur({"--preset", Text(name) + ":a"}).code, 0);
    }
}

TEST_F(PresetsTest, WordsOfTheFormatAreNoNames) {
    for (const std::string name : {"name", "FileOwner"}) {
        const ProgramRun run = Presets({"save", File(), name});
        EXPECT_EQ(run.code, 2);
        EXPECT_THAT(run.err, HasSubstr("a preset cannot be called '" + name + "'"));
    }
    EXPECT_EQ(Presets({"save", File(), ""}).code, 2);
    EXPECT_THAT(folder_.Names(), IsEmpty());
}

TEST_F(PresetsTest, AnOrderForTheTerminalIsShownAsText) {
    Put("FileOwner RadialBlur name \x1B[31mred ");
    EXPECT_THAT(Presets({"show", File(), "x"}).err, HasSubstr("it holds \\x1B[31mred\n"));
    EXPECT_EQ(ShownPresetName("a\x7F\x01" + std::string(100, 'y')),
              "a\\x7F\\x01" + std::string(51, 'y') + "...");
}

TEST_F(PresetsTest, OfSeveralColonsTheFirstWithAFileInFrontCounts) {
    const std::string folder = PathToText(folder_.Path());
    PresetReference reference;
    Put("x");
    EXPECT_FALSE(ReadPresetReference("--preset", File() + ":a:b", reference));
    EXPECT_EQ(reference.file, File());
    EXPECT_EQ(reference.preset, "a:b");
    EXPECT_FALSE(ReadPresetReference("--preset", folder + "/new.cfg:a:b", reference));
    EXPECT_EQ(reference.file, folder + "/new.cfg");
    EXPECT_EQ(reference.preset, "a:b");
    EXPECT_FALSE(ReadPresetReference("--preset", folder + "/new:a:b", reference));
    EXPECT_EQ(reference.file, folder + "/new:a");
    EXPECT_EQ(reference.preset, "b");
    for (const std::string& text : std::vector<std::string>{"", ":", "a", ":a", "a:", File()}) {
        const auto failure = ReadPresetReference("--preset", text, reference);
#ifdef _WIN32
        ASSERT_TRUE(failure) << text;
#else
        ASSERT_TRUE(failure || text == File()) << text;
        if (text == File()) {
            continue;
        }
#endif
        EXPECT_THAT(failure->text, HasSubstr("--preset: '" + text + "' names no preset"));
    }
}

#ifdef _WIN32
TEST_F(PresetsTest, ADriveIsPartOfTheFile) {
    PresetReference reference;
    EXPECT_FALSE(ReadPresetReference("--preset", "C:\\x\\looks.cfg:name", reference));
    EXPECT_EQ(reference.file, "C:\\x\\looks.cfg");
    EXPECT_EQ(reference.preset, "name");
    EXPECT_FALSE(ReadPresetReference("--preset", "d:/looks:name", reference));
    EXPECT_EQ(reference.file, "d:/looks");
    EXPECT_TRUE(ReadPresetReference("--preset", "C:\\x\\looks.cfg", reference));
}
#else
TEST_F(PresetsTest, AFileMayHaveAColonInItsName) {
    EXPECT_EQ(Presets({"save", Text("a:b"), "c"}).code, 0);
    EXPECT_EQ(Blur({"--preset", Text("a:b") + ":c"}).code, 0);
}
#endif

// --- Use ---

TEST_F(PresetsTest, WrongUseIsExplained) {
    struct Use {
        std::vector<std::string> words;
        const char* text;
    };
    const Use uses[] = {
        {{}, "'presets' needs a word: list, show, save or delete"},
        {{"lost"}, "'presets' knows list, show, save and delete, but not 'lost'"},
        {{"list"}, "'presets list' needs a file"},
        {{"save", File()}, "'presets save' needs a file and a preset's name"},
        {{"delete", File()}, "'presets delete' needs a file and a preset's name"},
        {{"list", File(), "a"}, "'presets list' does not know what to do with 'a'"},
        {{"show", File(), "a", "b"}, "'presets show' does not know what to do with 'b'"},
        {{"show", File(), "a", "--hue", "1"}, "'presets show' takes no values of parameters"},
        {{"delete", File(), "a", "--force"}, "'presets delete' takes no values of parameters"},
        {{"save", File(), "a", "--out-dir", "x"},
         "'presets save' works on no picture and takes no --out-dir"},
        {{"list", File(), "--skip-existing"},
         "'presets list' works on no picture and takes no --skip-existing"},
        {{"show", File(), "--module", "x"},
         "'presets show' works on no picture and takes no --module"},
        {{"delete", File(), "a", "--timing"},
         "'presets delete' works on no picture and takes no --timing"},
        {{"save", File(), "a", "--preset", ""}, "--preset was given an empty name"},
        {{"save", File(), "a", "--hue", "9"}, "--hue: 9 is out of range"},
        {{"save", File(), "a", "--bogus"}, "there is no option '--bogus'"},
    };
    for (const Use& use : uses) {
        const ProgramRun run = Presets(use.words);
        EXPECT_EQ(run.code, 2) << use.text;
        EXPECT_THAT(run.err, HasSubstr(use.text));
        EXPECT_THAT(run.out, IsEmpty());
    }
    EXPECT_THAT(folder_.Names(), IsEmpty());
}

TEST_F(PresetsTest, ChangesAreToldAsJsonOrNotAtAll) {
    const ProgramRun saved = Presets({"save", File(), "a b", "--json"});
    EXPECT_THAT(saved.out, HasSubstr("\"saved\": \"a_b\""));
    const ProgramRun deleted = Presets({"delete", File(), "a b", "--json"});
    EXPECT_THAT(deleted.out, HasSubstr("\"deleted\": \"a_b\""));
    EXPECT_THAT(Presets({"save", File(), "a", "--quiet"}).out, IsEmpty());
}

TEST_F(PresetsTest, HelpTellsOfPresets) {
    const std::string help = RunRadialBlur({"presets", "--help"}, {.module = ""}).out;
    for (const char* const text :
         {"presets list FILE", "presets show FILE [NAME]", "presets save FILE NAME",
          "presets delete FILE NAME", "--preset FILE:NAME", "--save-preset FILE:NAME", "--force",
          "once all of it succeeded", "10  no preset of that name",
          "11  not a preset file of this filter", "12  there is such a preset already"}) {
        EXPECT_THAT(help, HasSubstr(text));
    }
}

// --- The presets that ship ---

TEST_F(PresetsTest, EveryShippedPresetRendersAndDiffersFromThePictureAndTheOthers) {
    const std::string file =
        PathToText(ExecutablePath().parent_path() / "shipped" / "radial_blur.cfg");
    const ProgramRun list = Presets({"list", file});
    ASSERT_EQ(list.code, 0) << list.err;
    WriteGradientPng(folder_ / "in.png", 64, 48, 3, 8);
    std::vector<Bytes> results = {ReadBytes(folder_ / "in.png")};
    std::size_t start = 0;
    while (start < list.out.size()) {
        const std::size_t end = list.out.find('\n', start);
        const std::string name = list.out.substr(start, end - start);
        start = end + 1;
        const ProgramRun run = RunRadialBlur(
            {Text("in.png"), Text("out.png"), "--preset", file + ":" + name, "--quiet"},
            {.module = BuiltProgram().parent_path() / ModuleFileName()});
        ASSERT_EQ(run.code, 0) << name << run.err;
        const Bytes result = ReadBytes(folder_ / "out.png");
        for (const Bytes& other : results) {
            EXPECT_NE(result, other) << name;
        }
        results.push_back(result);
    }
    EXPECT_GE(results.size(), 15U);
}

}  // namespace
}  // namespace mv::host::test
