// The preset files of pfParameters, on real files.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <list>
#include <random>
#include <string>

#include "parameters/pfParameterBool.h"
#include "parameters/pfParameterFloat.h"
#include "parameters/pfParameterInt.h"
#include "parameters/pfParameterList.h"
#include "parameters/pfParameterPosition.h"
#include "parameters/pfParameterRGB.h"
#include "parameters/pfParameters.h"
#include "parameters/pfUndoBuffer.h"
#include "support/AllocationFault.h"
#include "support/ParameterProbe.h"
#include "support/TraceFile.h"

namespace mv::test {

namespace {

namespace fs = std::filesystem;
using Names = std::list<std::string>;
using namespace std::string_literals;

// What a text file of this system holds for lines that end in a line feed.
std::string FileText(const std::string& text) {
#ifdef _WIN32
    std::string result;
    for (const char character : text) {
        result += character == '\n' ? "\r\n"s : std::string(1, character);
    }
    return result;
#else
    return text;
#endif
}

constexpr const char* kValuesAtFirst =
    "Origin 0.500000 0.500000\n"
    "Flag 1\n"
    "Count -7\n"
    "Strength 0.250000\n"
    "Colour 1.000000 0.500000 0.000000\n"
    "Mode 2\n";

class PresetFile : public ::testing::Test {
protected:
    PresetFile() : folder(TestFolder() / "presets"), path((folder / "looks.cfg").string()) {
        fs::remove_all(folder);
        fs::create_directory(folder);
        origin.SetName("Origin");
        flag.SetName("Flag");
        count.SetName("Count");
        strength.SetName("Strength");
        colour.SetName("Colour");
        mode.SetName("Mode");
        hidden.SetName("Hidden");
        hidden.SetPersistent(false);
        for (const char* entry : {"normal", "abberative", "third"}) {
            mode.AddEntry(entry);
        }
        for (pfParameter* parameter : std::initializer_list<pfParameter*>{
                 &origin, &flag, &count, &strength, &colour, &mode, &hidden}) {
            set.Add(parameter);
        }
        undo.SetEnabled(true);
        SetFirstValues();
    }
    ~PresetFile() override {
        std::error_code error;
        fs::permissions(folder, fs::perms::owner_all, fs::perm_options::add, error);
        fs::remove_all(folder, error);
    }

    void SetFirstValues() {
        origin.Set(0.5, 0.5);
        flag.Set(true);
        count.Set(-7);
        strength.Set(0.25);
        colour.Set(1.0, 0.5, 0.0);
        mode.Set(2);
    }
    void Write(const std::string& content) const {
        std::ofstream(path, std::ios::binary) << content;
    }
    std::string Read() const {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }
    Names ListedNames() const {
        Names names;
        EXPECT_TRUE(pfParameters::GetSettingNames(path, names, "RadialBlur"));
        return names;
    }
    bool Save(const std::string& name) const { return set.SaveSettings(name, path, "RadialBlur"); }
    bool Load(const std::string& name) { return set.LoadSettings(name, path, &undo); }
    std::size_t FilesInFolder() const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
    }

    fs::path folder;
    std::string path;
    pfParameterPosition origin;
    pfParameterBool flag;
    pfParameterInt count;
    pfParameterFloat strength;
    pfParameterRGB colour;
    pfParameterList mode;
    pfParameterFloat hidden;
    pfParameters set;
    pfUndoBuffer undo;
};

constexpr const char* kThreePresets =
    "FileOwner RadialBlur\n"
    "\nname one\nStrength 0.100000\nMode 1\n"
    "\nname two\nStrength 0.200000\nMode 2\n"
    "\nname three\nStrength 0.300000\nMode 3\n";

}  // namespace

TEST_F(PresetFile, TheFirstSaveCreatesTheFileWithItsOwner) {
    EXPECT_TRUE(Save("soft_glow"));
    EXPECT_EQ(Read(), FileText("FileOwner RadialBlur\n\nname soft_glow\n"s + kValuesAtFirst));
    EXPECT_EQ(FilesInFolder(), 1u);
}

TEST_F(PresetFile, ANewPresetGoesToTheEnd) {
    Save("soft_glow");
    mode.Set(1);
    origin.Set(0.25, -0.75);
    EXPECT_TRUE(Save("strong"));
    EXPECT_EQ(Read(), FileText("FileOwner RadialBlur\n\nname soft_glow\n"s + kValuesAtFirst +
                               "\nname strong\n"
                               "Origin 0.250000 -0.750000\n"
                               "Flag 1\n"
                               "Count -7\n"
                               "Strength 0.250000\n"
                               "Colour 1.000000 0.500000 0.000000\n"
                               "Mode 1\n"));
    EXPECT_EQ(ListedNames(), (Names{"soft_glow", "strong"}));
    EXPECT_EQ(FilesInFolder(), 1u);
}

TEST_F(PresetFile, SavingUnderAPresentNameReplacesTheBlockWhereItStands) {
    Write(FileText(kThreePresets));
    EXPECT_TRUE(Save("two"));
    EXPECT_EQ(Read(), FileText("FileOwner RadialBlur\n"
                               "\nname one\nStrength 0.100000\nMode 1\n"
                               "\nname two\n"s +
                               kValuesAtFirst + "name three\nStrength 0.300000\nMode 3\n"));
    EXPECT_EQ(ListedNames(), (Names{"one", "two", "three"}));
    EXPECT_EQ(FilesInFolder(), 1u);
}

TEST_F(PresetFile, SavingAgainAfterALoadWritesTheSameBytes) {
    origin.Set(1.0 / 3.0, 1e15);
    strength.Set(2.0 / 3.0);
    Save("a");
    Save("b");
    const std::string first = Read();
    strength.Set(0.0);
    origin.Set(0.0, 0.0);
    ASSERT_TRUE(Load("b"));
    EXPECT_TRUE(Save("b"));
    EXPECT_EQ(Read(), first);
    ASSERT_TRUE(Load("a"));
    Save("a");
    const std::string second = Read();
    ASSERT_TRUE(Load("a"));
    Save("a");
    EXPECT_EQ(Read(), second);
}

TEST_F(PresetFile, EveryNumberIsAFixedPointOfSavingAndLoading) {
    std::mt19937 random(1);
    for (int i = 0; i < 80; ++i) {
        const double size = std::pow(10.0, static_cast<double>(i % 40) - 8.0);
        const double draw = std::ldexp(static_cast<double>(random()), -31) - 1.0;
        strength.Set(draw * size);
        origin.Set(-draw * size, draw);
        Save("a");
        ASSERT_TRUE(Load("a"));
        Save("a");
        const std::string first = Read();
        ASSERT_TRUE(Load("a"));
        Save("a");
        ASSERT_EQ(Read(), first);
    }
}

TEST_F(PresetFile, AFloatIsNarrowedAndAPositionIsNot) {
    strength.Set(16777217.0);
    origin.Set(16777217.0, 0.1);
    Save("a");
    EXPECT_NE(Read().find("Strength 16777216.000000"), std::string::npos);
    EXPECT_NE(Read().find("Origin 16777217.000000 0.100000"), std::string::npos);
}

TEST_F(PresetFile, ValuesThatAreNotFiniteAreWrittenAsWordsAndReadBack) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    strength.Set(1e300);
    origin.Set(-kInfinity, std::numeric_limits<double>::quiet_NaN());
    Save("a");
    EXPECT_NE(Read().find("Strength inf"), std::string::npos);
    EXPECT_NE(Read().find("Origin -inf nan"), std::string::npos);
    SetFirstValues();
    ASSERT_TRUE(Load("a"));
    EXPECT_EQ(strength.Get(), kInfinity);
    EXPECT_EQ(origin.GetX(), -kInfinity);
}

TEST_F(PresetFile, BlanksOfANameBecomeUnderscores) {
    EXPECT_TRUE(Save("my preset\there"));
    EXPECT_EQ(ListedNames(), Names{"my_preset_here"});
    // So it is the same preset that is saved a second time.
    Save("my preset here");
    EXPECT_EQ(ListedNames(), Names{"my_preset_here"});
    EXPECT_FALSE(Load("my preset here"));
    EXPECT_TRUE(Load("my_preset_here"));
}

TEST_F(PresetFile, AnEmptyNameOrPathIsRefused) {
    Names names;
    std::string owner = "RadialBlur";
    EXPECT_FALSE(Save(""));
    EXPECT_FALSE(set.SaveSettings("a", "", "RadialBlur"));
    EXPECT_FALSE(Load(""));
    EXPECT_FALSE(set.LoadSettings("a", "", nullptr));
    EXPECT_FALSE(pfParameters::DeleteSettings("", path));
    EXPECT_FALSE(pfParameters::DeleteSettings("a", ""));
    EXPECT_FALSE(pfParameters::GetSettingNames("", names, "RadialBlur"));
    EXPECT_FALSE(pfParameters::IsSettingFileValid("", owner));
    EXPECT_EQ(FilesInFolder(), 0u);
}

TEST_F(PresetFile, AMissingFileIsValidAndEmpty) {
    std::string owner = "RadialBlur";
    EXPECT_TRUE(pfParameters::IsSettingFileValid(path, owner));
    EXPECT_EQ(owner, "RadialBlur");
    EXPECT_EQ(ListedNames(), Names{});
    EXPECT_FALSE(Load("a"));
    EXPECT_FALSE(pfParameters::DeleteSettings("a", path));
}

TEST_F(PresetFile, AFileOfAnotherFilterIsLeftAloneAndNamed) {
    const std::string content = FileText("FileOwner LensFlare\n\nname a\nMode 3\n");
    Write(content);
    std::string owner = "RadialBlur";
    EXPECT_FALSE(pfParameters::IsSettingFileValid(path, owner));
    EXPECT_EQ(owner, "LensFlare");
    Names names = {"before"};
    EXPECT_FALSE(pfParameters::GetSettingNames(path, names, "RadialBlur"));
    EXPECT_EQ(names, Names{"before"});
    EXPECT_FALSE(Save("a"));
    EXPECT_EQ(Read(), content);
    // Loading and deleting do not look at the owner.
    EXPECT_TRUE(Load("a"));
    EXPECT_EQ(mode.Get(), 3);
    EXPECT_TRUE(pfParameters::DeleteSettings("a", path));
    EXPECT_EQ(Read(), FileText("FileOwner LensFlare\n"));
}

TEST_F(PresetFile, AFileWithoutAnOwnerIsNoPresetFile) {
    for (const char* content : {"", "\n", "name a\nMode 2\n", "fileowner RadialBlur\n",
                                "FileOwnerRadialBlur\n", "FileOwner", "FileOwner \n"}) {
        Write(content);
        std::string owner = "RadialBlur";
        EXPECT_FALSE(pfParameters::IsSettingFileValid(path, owner)) << content;
        EXPECT_EQ(owner, "RadialBlur") << content;
        EXPECT_FALSE(Save("a")) << content;
        EXPECT_EQ(Read(), content);
    }
}

TEST_F(PresetFile, TheOwnerMayStandAnywhere) {
    Write("some words\nname a\nMode 3\nFileOwner RadialBlur");
    std::string owner = "RadialBlur";
    EXPECT_TRUE(pfParameters::IsSettingFileValid(path, owner));
    EXPECT_EQ(ListedNames(), Names{"a"});
}

// Meant as it is: what stands in a block is the block's, an owner's line in the wrong place too.
// The presets stay loadable, but the file is no longer one of a filter's.
TEST_F(PresetFile, AnOwnerWithinTheBlockThatIsReplacedGoesWithIt) {
    Write("name two\nMode 3\nFileOwner RadialBlur\n\nname one\nMode 2\n");
    EXPECT_TRUE(Save("two"));
    EXPECT_EQ(Read(), FileText("name two\n"s + kValuesAtFirst + "name one\nMode 2\n"));
    std::string owner = "RadialBlur";
    EXPECT_FALSE(pfParameters::IsSettingFileValid(path, owner));
    EXPECT_TRUE(Load("one"));
    EXPECT_FALSE(Save("two"));
}

TEST_F(PresetFile, TheFirstOwnerCounts) {
    Write("FileOwner LensFlare\nFileOwner RadialBlur\n");
    std::string owner = "RadialBlur";
    EXPECT_FALSE(pfParameters::IsSettingFileValid(path, owner));
    EXPECT_EQ(owner, "LensFlare");
}

TEST_F(PresetFile, AByteOrderMarkInFrontOfTheOwnerIsPassedOverAndKept) {
    Write("\xEF\xBB\xBF" + FileText("FileOwner RadialBlur\n\nname a\nMode 3\n"));
    EXPECT_EQ(ListedNames(), Names{"a"});
    EXPECT_TRUE(Load("a"));
    EXPECT_EQ(mode.Get(), 3);
    SetFirstValues();
    EXPECT_TRUE(Save("a"));
    EXPECT_EQ(Read(),
              "\xEF\xBB\xBF" + FileText("FileOwner RadialBlur\n\nname a\n"s + kValuesAtFirst));
}

TEST_F(PresetFile, NamesAreAddedInTheOrderOfTheFile) {
    Write(FileText(kThreePresets));
    Names names = {"before"};
    EXPECT_TRUE(pfParameters::GetSettingNames(path, names, "RadialBlur"));
    EXPECT_EQ(names, (Names{"before", "one", "two", "three"}));
}

TEST_F(PresetFile, AWordNameThatEndsTheFileListsNothing) {
    Write("FileOwner RadialBlur\n\nname a\nMode 1\nname");
    EXPECT_EQ(ListedNames(), Names{"a"});
    Write("FileOwner RadialBlur\n\nname a\nMode 1\nname \n\n");
    EXPECT_EQ(ListedNames(), Names{"a"});
    Write("FileOwner RadialBlur\n\nname a");
    EXPECT_EQ(ListedNames(), Names{"a"});
}

TEST_F(PresetFile, LoadingFromTheMiddleTakesNothingFromTheNextBlock) {
    Write(
        FileText("FileOwner RadialBlur\n"
                 "\nname one\nCount 1\n"
                 "\nname two\nStrength 0.750000\nMode 3\n"
                 "\nname three\nCount 3\nOrigin 0.1 0.1\n"));
    EXPECT_TRUE(Load("two"));
    EXPECT_EQ(strength.Get(), 0.75);
    EXPECT_EQ(mode.Get(), 3);
    // A parameter that the block does not name stays.
    EXPECT_EQ(count.Get(), -7);
    EXPECT_EQ(origin.GetX(), 0.5);
}

TEST_F(PresetFile, LoadingTakesEveryClass) {
    Write(
        "FileOwner RadialBlur\nname a\nOrigin 0.125 -2\nFlag 0\nCount 12\nStrength 0.5\n"
        "Colour 0.25 0.5 0.75\nMode 1\n");
    EXPECT_TRUE(Load("a"));
    EXPECT_EQ(origin.GetX(), 0.125);
    EXPECT_EQ(origin.GetY(), -2.0);
    EXPECT_FALSE(flag.Get());
    EXPECT_EQ(count.Get(), 12);
    EXPECT_EQ(strength.Get(), 0.5);
    EXPECT_EQ(colour.GetRed(), 0.25);
    EXPECT_EQ(colour.GetGreen(), 0.5);
    EXPECT_EQ(colour.GetBlue(), 0.75);
    EXPECT_EQ(mode.Get(), 1);
}

TEST_F(PresetFile, LoadingTakesAParameterThatIsNeverWritten) {
    Write("FileOwner RadialBlur\nname a\nHidden 0.5\n");
    EXPECT_TRUE(Load("a"));
    EXPECT_EQ(hidden.Get(), 0.5);
}

TEST_F(PresetFile, AnyNumberOtherThanZeroIsOn) {
    Write("FileOwner RadialBlur\nname a\nFlag 2\nname b\nFlag yes\nname c\nFlag -1\n");
    flag.Set(false);
    EXPECT_TRUE(Load("a"));
    EXPECT_TRUE(flag.Get());
    EXPECT_TRUE(Load("b"));
    EXPECT_FALSE(flag.Get());
    EXPECT_TRUE(Load("c"));
    EXPECT_TRUE(flag.Get());
}

TEST_F(PresetFile, AnUnknownLineWithOneValueIsPassedOver) {
    Write("FileOwner RadialBlur\nname a\nCount 1\nFutureThing 9\nMode 3\nStrength 0.75\n");
    EXPECT_TRUE(Load("a"));
    EXPECT_EQ(count.Get(), 1);
    EXPECT_EQ(mode.Get(), 3);
    EXPECT_EQ(strength.Get(), 0.75);
}

TEST_F(PresetFile, AnUnknownLineWithTwoValuesPutsTheScanOutOfStep) {
    // Meant as it is: the pairs are (FutureThing 1), (2 Mode), (3 Strength), (0.75 Count), (5 ...
    Write("FileOwner RadialBlur\nname a\nFutureThing 1 2\nMode 3\nStrength 0.75\nCount 5\n");
    EXPECT_TRUE(Load("a"));
    EXPECT_EQ(mode.Get(), 2);
    EXPECT_EQ(strength.Get(), 0.25);
    EXPECT_EQ(count.Get(), -7);
}

TEST_F(PresetFile, AListValueOutsideTheListIsIgnored) {
    Write("FileOwner RadialBlur\nname a\nMode 99\nname b\nMode 0\nname c\nMode 4294967298\n");
    CallCounter counter;
    counter.WatchOver(mode);
    for (const char* name : {"a", "b", "c"}) {
        const int before = counter.calls;
        EXPECT_TRUE(Load(name));
        EXPECT_EQ(mode.Get(), 2);
        // The validation alone runs it.
        EXPECT_EQ(counter.calls, before + 1);
    }
}

TEST_F(PresetFile, ChangeCallbacksRunForSwitchesNumbersAndListsChangedOrNot) {
    CallCounter flags;
    CallCounter numbers;
    CallCounter lists;
    CallCounter others;
    flags.WatchOver(flag);
    numbers.WatchOver(strength);
    lists.WatchOver(mode);
    others.WatchOver(count);
    others.WatchOver(origin);
    others.WatchOver(colour);
    Save("a");
    EXPECT_TRUE(Load("a"));
    EXPECT_EQ(flags.calls, 1);
    // Once for the value and once for the validation.
    EXPECT_EQ(numbers.calls, 2);
    EXPECT_EQ(lists.calls, 2);
    EXPECT_EQ(others.calls, 0);
}

TEST_F(PresetFile, ValuesAreStoredFirstAndPulledIntoTheirRangesLast) {
    strength.SetMaximum(1.0, true);
    Write("FileOwner RadialBlur\nname a\nStrength 9.5\n");
    double seen = 0.0;
    strength.SetChangeCallback(
        [](pfParameter* parameter, void* data) {
            auto& highest = *static_cast<double*>(data);
            highest = std::max(highest, static_cast<pfParameterFloat*>(parameter)->Get());
        },
        &seen);
    EXPECT_TRUE(Load("a"));
    EXPECT_EQ(seen, 9.5);
    EXPECT_EQ(strength.Get(), 1.0);
}

TEST_F(PresetFile, ASoftBoundLetsALoadedValueStand) {
    strength.SetMaximum(1.0, false);
    Write("FileOwner RadialBlur\nname a\nStrength 9.5\n");
    EXPECT_TRUE(Load("a"));
    EXPECT_EQ(strength.Get(), 9.5);
}

TEST_F(PresetFile, ATokenThatIsNoNumberIsZero) {
    Write("FileOwner RadialBlur\nname a\nStrength much\nCount x9\nOrigin here there\n");
    EXPECT_TRUE(Load("a"));
    EXPECT_EQ(strength.Get(), 0.0);
    EXPECT_EQ(count.Get(), 0);
    EXPECT_EQ(origin.GetX(), 0.0);
    EXPECT_EQ(origin.GetY(), 0.0);
}

TEST_F(PresetFile, AFileThatBreaksOffGivesNoWrongValues) {
    for (const char* end : {"Strength", "Origin 0.1", "Origin", "Colour 0.1 0.2", "Colour 0.1",
                            "Colour", "Mode", "name", "name b"}) {
        Write("FileOwner RadialBlur\nname a\nCount 5\n"s + end);
        EXPECT_TRUE(Load("a")) << end;
        EXPECT_EQ(count.Get(), 5) << end;
        EXPECT_EQ(strength.Get(), 0.25) << end;
        EXPECT_EQ(origin.GetX(), 0.5) << end;
        EXPECT_EQ(colour.GetRed(), 1.0) << end;
        EXPECT_EQ(mode.Get(), 2) << end;
        count.Set(-7);
    }
}

TEST_F(PresetFile, ANameThatEndsTheFileIsFoundWithNothingToRead) {
    Write("FileOwner RadialBlur\n\nname a");
    EXPECT_TRUE(Load("a"));
    EXPECT_EQ(count.Get(), -7);
}

TEST_F(PresetFile, APresetThatIsNotThereChangesNothing) {
    Write(FileText(kThreePresets));
    CallCounter counter;
    counter.WatchOver(strength);
    EXPECT_FALSE(Load("four"));
    EXPECT_EQ(counter.calls, 0);
    EXPECT_FALSE(pfParameters::DeleteSettings("four", path));
    EXPECT_EQ(Read(), FileText(kThreePresets));
    EXPECT_EQ(FilesInFolder(), 1u);
}

TEST_F(PresetFile, LinesMayEndInEitherWayOrNone) {
    Write("FileOwner RadialBlur\r\n\r\nname a\r\nCount 1\r\nMode 3\r\n\r\nname b\nCount 2\nMode 1");
    EXPECT_EQ(ListedNames(), (Names{"a", "b"}));
    EXPECT_TRUE(Load("a"));
    EXPECT_EQ(count.Get(), 1);
    EXPECT_EQ(mode.Get(), 3);
    EXPECT_TRUE(Load("b"));
    EXPECT_EQ(count.Get(), 2);
    EXPECT_EQ(mode.Get(), 1);
}

TEST_F(PresetFile, AFileWithoutANewlineAtItsEndTakesANewPreset) {
    Write("FileOwner RadialBlur");
    EXPECT_TRUE(Save("a"));
    EXPECT_EQ(Read(), "FileOwner RadialBlur" + FileText("\nname a\n"s + kValuesAtFirst));
    EXPECT_EQ(ListedNames(), Names{"a"});
}

TEST_F(PresetFile, AddingAPresetLeavesTheBytesThatAreThereAlone) {
    const std::string present =
        "FileOwner RadialBlur\r\n\nname \xFF\r\nMode 1\n\0\x80 garbage \x1A here\r\r\n"s;
    Write(present);
    EXPECT_TRUE(Save("a"));
    EXPECT_EQ(Read(), present + FileText("\nname a\n"s + kValuesAtFirst));
}

#ifdef _WIN32
TEST_F(PresetFile, ARewriteEndsEveryLineAsTheSystemDoes) {
    Write("FileOwner RadialBlur\n\nname a\nMode 1\n\r\nname b\nMode 2\n");
    EXPECT_TRUE(Save("a"));
    EXPECT_EQ(Read(),
              FileText("FileOwner RadialBlur\n\nname a\n"s + kValuesAtFirst + "name b\nMode 2\n"));
    EXPECT_TRUE(pfParameters::DeleteSettings("b", path));
    EXPECT_EQ(Read(), FileText("FileOwner RadialBlur\n\nname a\n"s + kValuesAtFirst));
}

TEST_F(PresetFile, AnEndMarkDoesNotHideWhatComesBehindIt) {
    Write("FileOwner RadialBlur\r\n\r\nname a\r\nMode 1\r\n\x1A");
    EXPECT_TRUE(Save("b"));
    EXPECT_EQ(Read(),
              FileText("FileOwner RadialBlur\n\nname a\nMode 1\n\nname b\n"s + kValuesAtFirst));
    Write("FileOwner RadialBlur\r\n\x1A\r\nname a\r\nMode 1\r\n");
    EXPECT_EQ(ListedNames(), Names{"a"});
    EXPECT_TRUE(Save("a"));
    EXPECT_EQ(Read(), FileText("FileOwner RadialBlur\n\x1A\nname a\n"s + kValuesAtFirst));
}
#else
TEST_F(PresetFile, ARewriteCopiesTheLineEndsThatAreThere) {
    Write("FileOwner RadialBlur\r\n\r\nname a\r\nMode 1\r\n\r\nname b\r\nMode 2\r\n");
    EXPECT_TRUE(Save("a"));
    EXPECT_EQ(Read(),
              "FileOwner RadialBlur\r\n\r\nname a\n"s + kValuesAtFirst + "name b\r\nMode 2\r\n");
    EXPECT_TRUE(pfParameters::DeleteSettings("b", path));
    EXPECT_EQ(Read(), "FileOwner RadialBlur\r\n\r\nname a\n"s + kValuesAtFirst);
}
#endif

TEST_F(PresetFile, DeletingTakesTheBlockOut) {
    Write(FileText(kThreePresets));
    EXPECT_TRUE(pfParameters::DeleteSettings("two", path));
    EXPECT_EQ(Read(), FileText("FileOwner RadialBlur\n"
                               "\nname one\nStrength 0.100000\nMode 1\n"
                               "\nname three\nStrength 0.300000\nMode 3\n"));
    EXPECT_TRUE(pfParameters::DeleteSettings("three", path));
    EXPECT_EQ(Read(), FileText("FileOwner RadialBlur\n\nname one\nStrength 0.100000\nMode 1\n"));
    EXPECT_EQ(FilesInFolder(), 1u);
}

TEST_F(PresetFile, DeletingTheOnlyPresetLeavesAValidFileWithoutNames) {
    Save("a");
    EXPECT_TRUE(pfParameters::DeleteSettings("a", path));
    EXPECT_EQ(Read(), FileText("FileOwner RadialBlur\n"));
    EXPECT_EQ(ListedNames(), Names{});
    EXPECT_TRUE(Save("b"));
    EXPECT_EQ(Read(), FileText("FileOwner RadialBlur\n\nname b\n"s + kValuesAtFirst));
}

TEST_F(PresetFile, DeletingFromAnEmptyFileFails) {
    Write("");
    EXPECT_FALSE(pfParameters::DeleteSettings("a", path));
    EXPECT_EQ(FilesInFolder(), 1u);
}

TEST_F(PresetFile, DeletingStopsCopyingAtAByte0xFFOnPurposeAndSavingDoesNot) {
    // Meant as it is: a deletion takes the byte for the end of the file.
    const std::string content =
        FileText("FileOwner RadialBlur\n\nname a\nMode 1\n\nname b\nMode 2\nnote \xFF\nCount 3\n");
    Write(content);
    EXPECT_TRUE(pfParameters::DeleteSettings("a", path));
    EXPECT_EQ(Read(), FileText("FileOwner RadialBlur\n\nname b\nMode 2\nnote "));
    Write(content);
    EXPECT_TRUE(Save("a"));
    EXPECT_EQ(Read(), FileText("FileOwner RadialBlur\n\nname a\n"s + kValuesAtFirst +
                               "name b\nMode 2\nnote \xFF\nCount 3\n"));
}

TEST_F(PresetFile, ALoadIsOneUndoStep) {
    Write("FileOwner RadialBlur\nname a\nOrigin 0.1 0.2\nCount 12\nStrength 0.75\nMode 3\n");
    ASSERT_TRUE(Load("a"));
    EXPECT_TRUE(undo.Undo());
    EXPECT_FALSE(undo.CanUndo());
    EXPECT_EQ(origin.GetX(), 0.5);
    EXPECT_EQ(count.Get(), -7);
    EXPECT_EQ(strength.Get(), 0.25);
    EXPECT_EQ(mode.Get(), 2);
    EXPECT_TRUE(undo.Redo());
    EXPECT_EQ(strength.Get(), 0.75);
}

TEST_F(PresetFile, ALoadThatChangesNothingLeavesNothingToUndo) {
    Save("a");
    const long before = LiveAllocations();
    ASSERT_TRUE(Load("a"));
    EXPECT_FALSE(undo.CanUndo());
    EXPECT_EQ(LiveAllocations(), before);
    // But it closes the step: the records around it do not go together.
    undo.Push(count.CreateUndo());
    count.Set(1);
    Save("b");
    ASSERT_TRUE(Load("b"));
    undo.Push(count.CreateUndo());
    count.Set(2);
    undo.Undo();
    EXPECT_EQ(count.Get(), 1);
}

TEST_F(PresetFile, AParameterThatIsNotUndoableMakesNoRecord) {
    count.SetUndoable(false);
    Write("FileOwner RadialBlur\nname a\nCount 12\n");
    ASSERT_TRUE(Load("a"));
    EXPECT_EQ(count.Get(), 12);
    EXPECT_FALSE(undo.CanUndo());
}

TEST_F(PresetFile, WithoutAnUndoBufferTheValuesAreTakenAllTheSame) {
    Write("FileOwner RadialBlur\nname a\nCount 12\n");
    EXPECT_TRUE(set.LoadSettings("a", path, nullptr));
    EXPECT_EQ(count.Get(), 12);
}

TEST_F(PresetFile, EveryControlShowsWhatWasLoaded) {
    CountingControl control;
    control.Bind(&origin);
    Write("FileOwner RadialBlur\nname a\nOrigin 0.1 0.2\n");
    Load("a");
    EXPECT_EQ(control.refreshes, 1);
    Load("a");
    EXPECT_EQ(control.refreshes, 1);
}

TEST_F(PresetFile, AFolderInPlaceOfTheFileIsNeitherReadNorHarmed) {
    fs::create_directory(path);
    std::ofstream(fs::path(path) / "inside") << "kept";
    Names names;
    EXPECT_FALSE(Load("a"));
    EXPECT_FALSE(pfParameters::DeleteSettings("a", path));
    pfParameters::GetSettingNames(path, names, "RadialBlur");
    EXPECT_EQ(names, Names{});
    Save("a");
    EXPECT_TRUE(fs::is_directory(path));
    EXPECT_TRUE(fs::exists(fs::path(path) / "inside"));
    EXPECT_EQ(FilesInFolder(), 1u);
}

TEST_F(PresetFile, AFolderInPlaceOfTheTemporaryFileStopsRewritesButNoNewPresets) {
    Write(FileText(kThreePresets));
    fs::create_directory(path + "tmp");
    const TraceFile trace;
    EXPECT_FALSE(pfParameters::DeleteSettings("two", path));
    EXPECT_NE(trace.Text().find("-**### WARNING ###**-: Could not open file for writing: '" + path +
                                "tmp'\n"),
              std::string::npos);
    // Meant as it is: a save that could not write says that it did.
    EXPECT_TRUE(Save("two"));
    EXPECT_EQ(Read(), FileText(kThreePresets));
    EXPECT_TRUE(Save("four"));
    EXPECT_EQ(Read(), FileText(kThreePresets + "\nname four\n"s + kValuesAtFirst));
}

TEST_F(PresetFile, ALeftoverTemporaryFileHindersNothing) {
    Write(FileText(kThreePresets));
    std::ofstream(path + "tmp") << "half a file of a process that was killed, and longer than "
                                << std::string(5000, 'x');
    EXPECT_TRUE(pfParameters::DeleteSettings("two", path));
    EXPECT_EQ(FilesInFolder(), 1u);
    std::ofstream(path + "tmp") << std::string(5000, 'x');
    EXPECT_TRUE(Save("three"));
    EXPECT_EQ(Read(), FileText("FileOwner RadialBlur\n"
                               "\nname one\nStrength 0.100000\nMode 1\n"
                               "\nname three\n"s +
                               kValuesAtFirst));
    std::ofstream(path + "tmp") << std::string(5000, 'x');
    EXPECT_TRUE(Save("new"));
    EXPECT_EQ(ListedNames(), (Names{"one", "three", "new"}));
    EXPECT_EQ(FilesInFolder(), 1u);
}

TEST_F(PresetFile, AFolderThatDoesNotExistIsSilent) {
    const std::string nowhere = (folder / "missing" / "looks.cfg").string();
    // Meant as it is: a save that could not write says that it did.
    EXPECT_TRUE(set.SaveSettings("a", nowhere, "RadialBlur"));
    EXPECT_FALSE(fs::exists(nowhere));
    EXPECT_EQ(FilesInFolder(), 0u);
}

TEST_F(PresetFile, BinaryGarbageIsReadAsTokensAndNothingElse) {
    std::mt19937 random(7);
    for (int i = 0; i < 50; ++i) {
        std::string garbage(20000, '\0');
        for (char& character : garbage) {
            character = static_cast<char>(random() & 0xFF);
        }
        Write("FileOwner RadialBlur\nname a\nCount 3\n" + garbage + "\nname b\nCount 4\n");
        EXPECT_TRUE(Load("a"));
        const Names names = ListedNames();
        EXPECT_EQ(names.front(), "a");
        EXPECT_TRUE(Save("a"));
        EXPECT_EQ(ListedNames(), names);
        EXPECT_TRUE(pfParameters::DeleteSettings("a", path));
    }
}

TEST_F(PresetFile, TokensOfAMillionCharactersAreTaken) {
    const std::string longName(1000000, 'n');
    Write("FileOwner RadialBlur\nname " + longName + "\nStrength 0." + std::string(1000000, '5') +
          "\n" + longName + " 1\nCount 3\n");
    EXPECT_EQ(ListedNames(), Names{longName});
    EXPECT_TRUE(Load(longName));
    EXPECT_DOUBLE_EQ(strength.Get(), 5.0 / 9.0);
    EXPECT_EQ(count.Get(), 3);
    EXPECT_TRUE(Save(longName));
    EXPECT_EQ(ListedNames(), Names{longName});
    EXPECT_TRUE(pfParameters::DeleteSettings(longName, path));
    EXPECT_EQ(Read(), FileText("FileOwner RadialBlur\n"));
}

TEST_F(PresetFile, AFileOfAHundredMegabytesIsServed) {
    {
        std::ofstream file(path, std::ios::binary);
        file << FileText("FileOwner RadialBlur\n\nname first\nCount 1\n");
        const std::string block =
            FileText("\nname filler\n") + std::string(1000, 'x') + FileText(" 1\nCount 2\n");
        for (std::size_t written = 0; written < 100000000; written += block.size()) {
            file << block;
        }
        file << FileText("\nname last\nCount 3\n");
    }
    const auto size = fs::file_size(path);
    EXPECT_TRUE(Load("last"));
    EXPECT_EQ(count.Get(), 3);
    EXPECT_TRUE(pfParameters::DeleteSettings("last", path));
    EXPECT_EQ(fs::file_size(path), size - FileText("\nname last\nCount 3\n").size());
    EXPECT_TRUE(Save("first"));
    EXPECT_TRUE(Load("first"));
    EXPECT_EQ(count.Get(), 3);
    EXPECT_EQ(FilesInFolder(), 1u);
}

TEST_F(PresetFile, EveryFailedAllocationLeavesTheOldFileOrTheNewOne) {
    const std::string before = FileText(kThreePresets);
    Write(before);
    ASSERT_TRUE(Save("two"));
    const std::string saved = Read();
    Write(before);
    ASSERT_TRUE(pfParameters::DeleteSettings("two", path));
    const std::string deleted = Read();
    Write(before);
    ASSERT_TRUE(Save("new"));
    const std::string added = Read();
    for (int operation = 0; operation < 5; ++operation) {
        for (long n = 1;; ++n) {
            Write(before);
            bool happened = false;
            {
                Names names;
                const std::string two = "two";
                const std::string fresh = "new";
                const std::string filter = "RadialBlur";
                const AllocationFault fault(n);
                switch (operation) {
                    case 0:
                        set.SaveSettings(two, path, filter);
                        break;
                    case 1:
                        pfParameters::DeleteSettings(two, path);
                        break;
                    case 2:
                        set.SaveSettings(fresh, path, filter);
                        break;
                    case 3:
                        set.LoadSettings(two, path, &undo);
                        break;
                    default:
                        pfParameters::GetSettingNames(path, names, filter);
                        break;
                }
                happened = fault.Happened();
            }
            SetFirstValues();
            const std::string after = Read();
            const std::string& done = operation == 0   ? saved
                                      : operation == 1 ? deleted
                                      : operation == 2 ? added
                                                       : before;
            ASSERT_TRUE(after == before || after == done) << operation << " " << n << after;
            ASSERT_EQ(FilesInFolder(), 1u);
            if (!happened) {
                ASSERT_EQ(after, done);
                break;
            }
        }
    }
}

TEST_F(PresetFile, TheTraceHasTheseLines) {
    Write("FileOwner RadialBlur\n");
    const TraceFile trace;
    Names names;
    Load("a");
    pfParameters::DeleteSettings("a", path);
    pfParameters::GetSettingNames(path, names, "RadialBlur");
    EXPECT_EQ(trace.Text(), "pfParmeters::LoadSettings( strName(a), strPath(" + path +
                                ") )\n"
                                "    pfParmeters::LoadSettings( return(0) )\n"
                                "pfParmeters::DeleteSettings( strName(a), strPath(" +
                                path +
                                ") )\n"
                                "    pfParmeters::DeleteSettings( return(0) )\n"
                                "pfParmeters::GetSettingNames( strPath(" +
                                path +
                                ") )\n"
                                "    pfParmeters::IsSettingFileValid( strPath(" +
                                path +
                                ") )\n"
                                "        pfParmeters::IsSettingFileValid( return(1) )\n"
                                "    pfParmeters::GetSettingNames( return(1) )\n");
}

TEST_F(PresetFile, ASaveIsTraced) {
    const TraceFile trace;
    Save("a");
    const std::string text = trace.Text();
    EXPECT_EQ(text.find("pfParmeters::SaveSettings( strName(a), strPath(" + path), 0u);
    EXPECT_NE(text.find("\n    pfParmeters::SaveSettings( return(1) )\n"), std::string::npos);
}

TEST_F(PresetFile, AMissingFileIsWarnedAbout) {
    const TraceFile trace;
    Load("a");
    pfParameters::DeleteSettings("a", path);
    const std::string warning =
        "    -**### WARNING ###**-: Could not open file for reading: '" + path + "'\n";
    const std::string text = trace.Text();
    const std::size_t first = text.find(warning);
    ASSERT_NE(first, std::string::npos);
    EXPECT_NE(text.find(warning, first + 1), std::string::npos);
}

}  // namespace mv::test
