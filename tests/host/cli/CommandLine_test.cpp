// Options, help and reports of the command line.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "pictures/PictureFile.h"
#include "program/CommandLine.h"
#include "program/Json.h"
#include "program/ParameterTable.h"
#include "support/ChildProcess.h"
#include "support/TestFiles.h"

namespace mv::host::test {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

class CommandLineTest : public ::testing::Test {
protected:
    void SetUp() override { WriteGradientPng(folder_ / "in.png", 8, 6, 3, 8); }

    std::string In() const { return PathToText(folder_ / "in.png"); }
    std::string Out() const { return PathToText(folder_ / "out.png"); }

    ProgramRun RunWith(std::vector<std::string> options) {
        options.insert(options.begin(), {In(), Out()});
        return RunRadialBlur(options);
    }
    // The line of the JSON report that holds a value.
    std::string ValueLine(const ProgramRun& run, const std::string& name) {
        const std::size_t at = run.out.find("\"" + name + "\": ");
        return at == std::string::npos ? "" : run.out.substr(at, run.out.find('\n', at) - at);
    }

    TempFolder folder_;
};

struct Expected {
    const char* option;
    const char* key;
    const char* range;
    const char* standard;
};

// Written out by hand: the table of the program is what is tested here.
constexpr Expected kExpected[] = {
    {"--origin", "ORIX, ORIY", "two numbers, 0,0 is the top left corner", "0.5,0.5"},
    {"--intensity", "INTE", "0 or more, usually up to 5", "1"},
    {"--strength", "STRE", "0 or more, usually up to 1", "0.25"},
    {"--start", "ZOST", "any number, usually -0.5 to 0.5", "0.5"},
    {"--holdout", "HORA", "0 or more, usually up to 1", "0"},
    {"--mode", "MODE", "1 normal, 2 abberative", "normal"},
    {"--invert-gradient", "INGR", "on or off", "off"},
    {"--gamma-correction", "GAMA", "on or off", "on"},
    {"--contrast", "CONT", "0 or more, usually up to 2", "0"},
    {"--gamma", "GAMC", "0 or more, usually up to 3", "1"},
    {"--hue", "HSLH", "-1 to 1", "0"},
    {"--saturation", "HSLS", "-1 to 1", "0"},
    {"--lightness", "HSLL", "-1 to 1", "0"},
    {"--low", "SELL", "0 to 255", "0"},
    {"--high", "SELH", "0 to 255", "255"},
    {"--soften", "SELS", "0 to 3", "0"},
    {"--climax", "SELC", "-1 to 1", "1"},
    {"--use-size-selection", "USES", "on or off", "off"},
    {"--blend", "BLND", "1 normal, 2 max weight, 3 screen, 4 overlay", "normal"},
    {"--show", "SHOW", "1 normal, 2 selected image, 3 selection only, 4 size selection", "normal"},
};

// The part of a text from one option's line to the next one's.
std::string Section(const std::string& text, const std::string& start, const std::string& next) {
    std::size_t from = text.find(start);
    // "--gamma" also starts "--gamma-correction".
    while (from != std::string::npos && text[from + start.size()] == '-') {
        from = text.find(start, from + 1);
    }
    if (from == std::string::npos) {
        return "";
    }
    return text.substr(from, text.find(next, from + start.size()) - from);
}

std::string OneLine(std::string text) {
    std::string line;
    for (const char character : text) {
        if (character == '\n' || character == ' ') {
            if (!line.empty() && line.back() != ' ') {
                line += ' ';
            }
        } else {
            line += character;
        }
    }
    return line;
}

TEST_F(CommandLineTest, HelpGivesRangeAndDefaultOfEveryParameter) {
    const ProgramRun run = RunRadialBlur({"--help"});
    EXPECT_EQ(run.code, 0);
    EXPECT_THAT(run.err, IsEmpty());
    for (const Expected& expected : kExpected) {
        const std::string section =
            OneLine(Section(run.out, "\n  " + std::string(expected.option), "\n  --"));
        EXPECT_THAT(section, HasSubstr(expected.range)) << expected.option;
        EXPECT_THAT(section, HasSubstr("; default " + std::string(expected.standard)))
            << expected.option;
    }
}

TEST_F(CommandLineTest, HelpNamesTheExitCodes) {
    const std::string help = OneLine(RunRadialBlur({"-h"}).out);
    for (const char* const text :
         {"2 wrong use of the command line", "3 an input cannot be read",
          "4 not a picture that is served", "5 the mask has another size than the picture",
          "6 cannot write", "7 the filter module is missing", "8 the filter failed",
          "130 stopped by Ctrl-C"}) {
        EXPECT_THAT(help, HasSubstr(text));
    }
}

TEST_F(CommandLineTest, HelpFitsIntoOneHundredColumns) {
    const std::string help = HelpText();
    std::size_t start = 0;
    while (start < help.size()) {
        const std::size_t end = help.find('\n', start);
        EXPECT_LE(end - start, 100U) << help.substr(start, end - start);
        start = end + 1;
    }
}

TEST_F(CommandLineTest, ListParametersNamesOptionKeyRangeAndDefault) {
    const ProgramRun run = RunRadialBlur({"--list-parameters"});
    EXPECT_EQ(run.code, 0);
    for (const Expected& expected : kExpected) {
        const std::string option = expected.option;
        const std::size_t at = run.out.find("option   " + option);
        ASSERT_NE(at, std::string::npos) << option;
        const std::string section = Section(run.out, "option   " + option + "\n", "\n  meaning");
        const std::string aliased = Section(run.out, "option   " + option + ",", "\n  meaning");
        const std::string& found = section.empty() ? aliased : section;
        EXPECT_THAT(found, HasSubstr("key      " + std::string(expected.key) + "\n"));
        EXPECT_THAT(found, HasSubstr("range    " + std::string(expected.range)));
        EXPECT_THAT(found, HasSubstr("default  " + std::string(expected.standard)));
    }
}

TEST_F(CommandLineTest, ListParametersAsJsonHoldsTheTable) {
    const ProgramRun run = RunRadialBlur({"--list-parameters", "--json"});
    EXPECT_EQ(run.code, 0);
    EXPECT_THAT(run.out, StartsWith("[\n"));
    EXPECT_THAT(
        OneLine(run.out),
        HasSubstr("\"name\": \"Hue\", \"kind\": \"number\", \"option\": \"--hue\", \"keys\": "
                  "[ \"HSLH\" ], \"minimum\": { \"value\": -1, \"hard\": true }, "
                  "\"maximum\": { \"value\": 1, \"hard\": true }, \"default\": 0"));
    EXPECT_THAT(OneLine(run.out), HasSubstr("\"keys\": [ \"ORIX\", \"ORIY\" ], "
                                            "\"default\": [ 0.5, 0.5 ]"));
    EXPECT_THAT(run.out, HasSubstr("\"alpha replace\",\n"));
}

TEST_F(CommandLineTest, AllTwentyParametersWithAKeyAreThere) {
    EXPECT_EQ(Parameters().size(), std::size(kExpected));
}

TEST_F(CommandLineTest, VersionIsPrinted) {
    const ProgramRun run = RunRadialBlur({"--version"});
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.out, "radial-blur 1.2.6\n");
}

TEST_F(CommandLineTest, WithoutArgumentsItSaysWhatIsMissing) {
    const ProgramRun run = RunRadialBlur({}, {.module = ""});
    EXPECT_EQ(run.code, 2);
    EXPECT_THAT(run.err, HasSubstr("no picture was named"));
    EXPECT_THAT(run.out, IsEmpty());
}

TEST_F(CommandLineTest, AnUnknownOptionIsNamed) {
    const ProgramRun run = RunWith({"--bogus", "3"});
    EXPECT_EQ(run.code, 2);
    EXPECT_EQ(run.err,
              "radial-blur: there is no option '--bogus'; 'radial-blur --help' shows how it is "
              "used\n");
}

TEST_F(CommandLineTest, AnOptionWithoutItsValueIsNamed) {
    const ProgramRun run = RunRadialBlur({In(), Out(), "--strength"}, {.module = ""});
    EXPECT_EQ(run.code, 2);
    EXPECT_THAT(run.err, HasSubstr("--strength needs a value"));
}

TEST_F(CommandLineTest, OneFileAloneHasNoOutput) {
    const ProgramRun run = RunRadialBlur({In()});
    EXPECT_EQ(run.code, 2);
    EXPECT_THAT(run.err, HasSubstr("has no output"));
}

TEST_F(CommandLineTest, SeveralInputsNeedAFolder) {
    const ProgramRun run = RunRadialBlur({In(), In(), Out()});
    EXPECT_EQ(run.code, 2);
    EXPECT_THAT(run.err, HasSubstr("--out-dir"));
}

TEST_F(CommandLineTest, AnOutputOfAnUnknownFormatIsRefused) {
    const ProgramRun run = RunRadialBlur({In(), PathToText(folder_ / "out.jpg")});
    EXPECT_EQ(run.code, 2);
    EXPECT_THAT(run.err, HasSubstr(".png, .tif or .tiff"));
}

class NoNumberTest : public CommandLineTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(NoNumberTest, IsRefusedWithTheRange) {
    const ProgramRun run = RunWith({"--strength", GetParam()});
    EXPECT_EQ(run.code, 2);
    EXPECT_THAT(run.err, HasSubstr("--strength: '" + std::string(GetParam()) +
                                   "' is not a number; give 0 or more, usually up to 1"));
    EXPECT_FALSE(std::filesystem::exists(folder_ / "out.png"));
}

INSTANTIATE_TEST_SUITE_P(Values, NoNumberTest,
                         ::testing::Values("abc", "0.4x", "nan", "-nan", "inf", "-inf", "1e999",
                                           "0x10", "0,4", "1 2", "--", "+-1", " 1", "."));

class NoPositionTest : public CommandLineTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(NoPositionTest, IsRefused) {
    const ProgramRun run = RunWith({"--origin", GetParam()});
    EXPECT_EQ(run.code, 2);
    EXPECT_THAT(run.err, HasSubstr("--origin: '" + std::string(GetParam()) +
                                   "' is not a position; give two numbers like 0.3,0.6"));
}

INSTANTIATE_TEST_SUITE_P(Values, NoPositionTest,
                         ::testing::Values("0.5", "0.5,", ",0.5", "0.5,0.5,0.5", "nan,0", "a,b"));

struct OutOfRange {
    const char* option;
    const char* value;
    const char* range;
};

class HardBoundTest : public CommandLineTest, public ::testing::WithParamInterface<OutOfRange> {};

TEST_P(HardBoundTest, IsNotCrossed) {
    const ProgramRun run = RunWith({GetParam().option, GetParam().value});
    EXPECT_EQ(run.code, 2);
    EXPECT_THAT(run.err, HasSubstr(std::string(GetParam().value) + " is out of range; give " +
                                   GetParam().range));
}

INSTANTIATE_TEST_SUITE_P(
    Values, HardBoundTest,
    ::testing::Values(
        OutOfRange{"--intensity", "-0.1", "0 or more, usually up to 5"},
        OutOfRange{"--hue", "1.01", "-1 to 1"}, OutOfRange{"--hue", "-1.01", "-1 to 1"},
        OutOfRange{"--low", "-1", "0 to 255"}, OutOfRange{"--high", "255.5", "0 to 255"},
        OutOfRange{"--soften", "3.1", "0 to 3"}, OutOfRange{"--climax", "-1.5", "-1 to 1"},
        OutOfRange{"--gamma", "-1", "0 or more, usually up to 3"}));

TEST_F(CommandLineTest, SoftBoundsMayBeCrossed) {
    const ProgramRun run = RunWith(
        {"--json", "--intensity", "7.5", "--start", "-3", "--strength", "2", "--origin", "-1,4"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_THAT(ValueLine(run, "Intensity"), HasSubstr(": 7.5"));
    EXPECT_THAT(ValueLine(run, "ZoomStart"), HasSubstr(": -3"));
    EXPECT_THAT(ValueLine(run, "Strength"), HasSubstr(": 2"));
    EXPECT_THAT(OneLine(run.out), HasSubstr("\"Origin\": [ -1, 4 ]"));
}

TEST_F(CommandLineTest, EveryParameterReachesTheModule) {
    const ProgramRun run = RunWith({"--json",
                                    "--origin",
                                    "0.3,0.6",
                                    "--intensity",
                                    "1.5",
                                    "--strength",
                                    "0.4",
                                    "--start",
                                    "-0.25",
                                    "--holdout",
                                    "0.125",
                                    "--mode",
                                    "abberative",
                                    "--invert-gradient",
                                    "--no-gamma-correction",
                                    "--contrast",
                                    "0.75",
                                    "--gamma",
                                    "2.5",
                                    "--hue",
                                    "-0.5",
                                    "--saturation",
                                    "0.5",
                                    "--lightness",
                                    "0.0625",
                                    "--low",
                                    "10",
                                    "--high",
                                    "200.5",
                                    "--soften",
                                    "1.25",
                                    "--climax",
                                    "-1",
                                    "--use-size-selection",
                                    "--blend",
                                    "screen",
                                    "--show",
                                    "selection only"});
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_THAT(
        OneLine(run.out),
        HasSubstr("\"values\": { \"Origin\": [ 0.3, 0.6 ], \"Intensity\": 1.5, \"Strength\": 0.4, "
                  "\"ZoomStart\": -0.25, \"HoldoutRadius\": 0.125, \"Mode\": \"abberative\", "
                  "\"InvertGradient\": true, \"GammaCorrection\": false, \"Contrast\": 0.75, "
                  "\"GammaCorrectionCorrective\": 2.5, \"Hue\": -0.5, \"Saturation\": 0.5, "
                  "\"Lightness\": 0.0625, \"SelectionLow\": 10, \"SelectionHigh\": 200.5, "
                  "\"SelectionSoften\": 1.25, \"SelectionClimax\": -1, \"UseSizeSelection\": true, "
                  "\"BlendMode\": \"screen\", \"SelectionShow\": \"selection only\" }"));
}

TEST_F(CommandLineTest, OnlyGivenParametersArePassed) {
    const ProgramRun run = RunWith({"--json", "--strength", "0.5"});
    EXPECT_THAT(OneLine(run.out), HasSubstr("\"values\": { \"Strength\": 0.5 }"));
}

TEST_F(CommandLineTest, SecondSpellingsAreTheSameOptions) {
    const ProgramRun run =
        RunWith({"--json", "--zoom-start", "0.1", "--holdout-radius", "0.2", "--selection-low", "3",
                 "--blend-mode", "3", "--selection-show", "2", "--gamma-correction-corrective=2"});
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_THAT(
        OneLine(run.out),
        HasSubstr("{ \"ZoomStart\": 0.1, \"HoldoutRadius\": 0.2, \"GammaCorrectionCorrective\": 2, "
                  "\"SelectionLow\": 3, \"BlendMode\": \"screen\", "
                  "\"SelectionShow\": \"selected image\" }"));
}

struct Spelling {
    const char* text;
    const char* entry;
};

class BlendNameTest : public CommandLineTest, public ::testing::WithParamInterface<Spelling> {};

TEST_P(BlendNameTest, IsUnderstood) {
    const ProgramRun run = RunWith({"--json", "--blend", GetParam().text});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(ValueLine(run, "BlendMode"),
              "\"BlendMode\": \"" + std::string(GetParam().entry) + "\"");
}

INSTANTIATE_TEST_SUITE_P(Spellings, BlendNameTest,
                         ::testing::Values(Spelling{"max weight", "max weight"},
                                           Spelling{"max-weight", "max weight"},
                                           Spelling{"Max_Weight", "max weight"},
                                           Spelling{"2", "max weight"}, Spelling{"1", "normal"},
                                           Spelling{"23", "(none) replace"},
                                           Spelling{"(none) replace", "(none) replace"},
                                           Spelling{"none-replace", "(none) replace"},
                                           Spelling{"ALPHA-ADD", "alpha add"}));

class NoBlendNameTest : public CommandLineTest,
                        public ::testing::WithParamInterface<const char*> {};

TEST_P(NoBlendNameTest, IsRefusedWithTheList) {
    const ProgramRun run = RunWith({"--blend", GetParam()});
    EXPECT_EQ(run.code, 2);
    EXPECT_THAT(run.err, HasSubstr("there is no '" + std::string(GetParam()) +
                                   "'; choose from 1 normal, 2 max weight, 3 screen"));
}

INSTANTIATE_TEST_SUITE_P(Names, NoBlendNameTest,
                         ::testing::Values("foo", "0", "24", "-1", "1.0", "02", "scr",
                                           "maxweight"));

TEST_F(CommandLineTest, TheLastOfSeveralWins) {
    const ProgramRun run = RunWith({"--json", "--strength", "0.1", "--strength", "0.9",
                                    "--gamma-correction", "--no-gamma-correction"});
    EXPECT_EQ(ValueLine(run, "Strength"), "\"Strength\": 0.9,");
    EXPECT_EQ(ValueLine(run, "GammaCorrection"), "\"GammaCorrection\": false");
}

TEST_F(CommandLineTest, AnEmptyNameIsNotTakenForNoName) {
    for (const char* const option :
         {"--mask", "--out-dir", "--module", "--preset", "--save-preset"}) {
        const ProgramRun run = RunRadialBlur({In(), Out(), option, ""}, {.module = ""});
        EXPECT_EQ(run.code, 2) << option;
        EXPECT_THAT(run.err, HasSubstr(std::string(option) + " was given an empty name"));
    }
    EXPECT_FALSE(std::filesystem::exists(folder_ / "out.png"));
}

TEST_F(CommandLineTest, ASlipOfTheFingerIsAnsweredWithTheOptionThatWasMeant) {
    const std::pair<const char*, const char*> slips[] = {
        {"--strenght", "--strength"},
        {"--hu", "--hue"},
        {"--skip-exisiting", "--skip-existing"},
        {"--blednd=screen", "--blend"},
        {"--no-gamma-corection", "--no-gamma-correction"}};
    for (const auto& [slip, meant] : slips) {
        const ProgramRun run = RunWith({slip});
        EXPECT_EQ(run.code, 2) << slip;
        EXPECT_THAT(run.err, HasSubstr("there is no option '" + std::string(slip) +
                                       "'; did you mean '" + meant + "'?\n"));
    }
    EXPECT_THAT(RunWith({"--something-else"}).err,
                HasSubstr("there is no option '--something-else'; 'radial-blur --help'"));
}

TEST_F(CommandLineTest, ASwitchIsGivenAlone) {
    const ProgramRun run = RunWith({"--invert-gradient=maybe"});
    EXPECT_EQ(run.code, 2);
    EXPECT_THAT(run.err, HasSubstr("'--invert-gradient = maybe' makes no sense"));
}

TEST_F(CommandLineTest, ForceIsForPresetsOnly) {
    const ProgramRun run = RunWith({"--force"});
    EXPECT_EQ(run.code, 2);
    EXPECT_THAT(run.err, HasSubstr("--force lets --save-preset replace a preset"));
    EXPECT_FALSE(std::filesystem::exists(folder_ / "out.png"));
}

TEST_F(CommandLineTest, ALineTellsWhatWasDone) {
    const ProgramRun run = RunWith({});
    EXPECT_EQ(run.code, 0);
    EXPECT_THAT(run.out, StartsWith(In() + " -> " + Out() + ": 8 x 6, RGB, 8 bit, "));
    EXPECT_THAT(run.err, IsEmpty());
}

TEST_F(CommandLineTest, QuietWritesNothing) {
    const ProgramRun run = RunWith({"--quiet"});
    EXPECT_EQ(run.code, 0);
    EXPECT_THAT(run.out, IsEmpty());
    EXPECT_THAT(run.err, IsEmpty());
    EXPECT_TRUE(std::filesystem::exists(folder_ / "out.png"));
}

TEST_F(CommandLineTest, QuietStillTellsOfErrors) {
    const ProgramRun run = RunRadialBlur({"--quiet", PathToText(folder_ / "no.png"), Out()});
    EXPECT_EQ(run.code, 3);
    EXPECT_THAT(run.err, HasSubstr("no.png"));
}

TEST_F(CommandLineTest, JsonTellsSizesTimesAndMemory) {
    const ProgramRun run = RunWith({"--json"});
    EXPECT_EQ(run.code, 0);
    const std::string report = OneLine(run.out);
    EXPECT_THAT(report, StartsWith("{ \"program\": \"radial-blur\", \"version\": \"1.2.6\", "
                                   "\"module\": \""));
    EXPECT_THAT(report, HasSubstr("\"done\": true, \"width\": 8, \"height\": 6, \"colours\": "
                                  "\"RGB\", \"alpha\": false, \"bits\": 8, \"seconds\": { "
                                  "\"read\": "));
    EXPECT_THAT(report, HasSubstr("\"filterMemory\": { \"peakBytes\": 0, \"blocks\": 0, "
                                  "\"blocksLeft\": 0 }"));
    EXPECT_THAT(report, Not(HasSubstr("\"peakMemoryBytes\": 0,")));
    EXPECT_THAT(report, Not(HasSubstr("remarks")));
}

TEST_F(CommandLineTest, JsonTellsOfBlocksThatTheModuleKeeps) {
    const ProgramRun run = RunRadialBlur({In(), Out(), "--json"}, {.fake = "leak"});
    EXPECT_THAT(OneLine(run.out), HasSubstr("\"filterMemory\": { \"peakBytes\": 1000, "
                                            "\"blocks\": 1, \"blocksLeft\": 1 }"));
}

TEST_F(CommandLineTest, JsonTellsOfMisconduct) {
    const ProgramRun run = RunRadialBlur({In(), Out(), "--json"}, {.fake = "overrun"});
    EXPECT_EQ(run.code, 0);
    EXPECT_THAT(
        OneLine(run.out),
        HasSubstr("\"remarks\": [ \"memory outside the pixels of outData was written to\" ]"));
}

TEST_F(CommandLineTest, JsonTellsOfFailures) {
    const ProgramRun run = RunRadialBlur({PathToText(folder_ / "no.png"), Out(), "--json"});
    EXPECT_EQ(run.code, 3);
    EXPECT_THAT(OneLine(run.out), HasSubstr("\"done\": false, \"exitCode\": 3, \"error\": \"cannot "
                                            "read '"));
    EXPECT_THAT(run.err, HasSubstr("there is no such file"));
}

TEST_F(CommandLineTest, TheModuleBesideTheProgramIsTheDefault) {
    const std::filesystem::path program = folder_ / BuiltProgram().filename().string();
    std::filesystem::copy_file(BuiltProgram(), program);
    const char* const moduleName =
        FakeModule().extension() == ".so" ? "radial_blur.so" : "radial_blur.8bf";
    std::filesystem::copy_file(FakeModule(), folder_ / moduleName);
    const ProgramRun run = RunRadialBlur({In(), Out()}, {.module = "", .program = program});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_TRUE(std::filesystem::exists(folder_ / "out.png"));
}

TEST(JsonWriterTest, EscapesWhatTextCannotHold) {
    JsonWriter json;
    json.BeginArray();
    json.Text("a\"b\\c\n\x01 \xC3\xBC \xFF\xC3 \xE2\x82\xAC \xED\xA0\x80 \xF0\x9F\x8C\x9E");
    json.EndArray();
    EXPECT_EQ(json.Take(),
              "[\n  \"a\\\"b\\\\c\\u000a\\u0001 \xC3\xBC \xEF\xBF\xBD\xEF\xBF\xBD \xE2\x82\xAC "
              "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD \xF0\x9F\x8C\x9E\"\n]\n");
}

TEST(JsonWriterTest, NestsAndSeparates) {
    JsonWriter json;
    json.BeginObject();
    json.Key("empty").BeginArray().EndArray();
    json.Key("list").BeginArray().Integer(1).Number(0.25).Boolean(false).EndArray();
    json.Key("nothing").Number(1.0 / 0.0 * 0.0);
    json.EndObject();
    EXPECT_EQ(json.Take(),
              "{\n  \"empty\": [],\n  \"list\": [\n    1,\n    0.25,\n    false\n  ],\n"
              "  \"nothing\": null\n}\n");
}

}  // namespace
}  // namespace mv::host::test
