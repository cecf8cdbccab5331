// "doctor": what it says of sound modules, of broken ones, and of what is no module at all.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <span>

#include "Module.h"
#include "doctor/Examination.h"
#include "pictures/PictureFile.h"
#include "support/ChildProcess.h"
#include "support/FolderTest.h"
#include "support/ModuleFile.h"
#include "support/TestFiles.h"

namespace mv::host::test {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

Examination Look(const Bytes& bytes, const std::string& name = "test.8bf") {
    return Examine(bytes, name);
}

Examination Look(const ModuleFile& module, const std::string& name = "test.8bf") {
    return Look(module.Build(), name);
}

// All sentences of a level, one to a line.
std::string Said(const Examination& examination, FindingLevel level) {
    std::string text;
    for (const Finding& finding : examination.findings) {
        if (finding.level == level) {
            text += finding.text + "\n";
        }
    }
    return text;
}

std::string Faults(const Examination& examination) {
    return Said(examination, FindingLevel::Fault);
}

std::string Warnings(const Examination& examination) {
    return Said(examination, FindingLevel::Warning);
}

std::vector<std::string> FactOf(const Examination& examination, const std::string& key) {
    for (const Fact& fact : examination.facts) {
        if (fact.key == key) {
            return fact.values;
        }
    }
    return {};
}

// Nothing that a terminal would take for a command.
void ExpectPrintable(const Examination& examination) {
    const std::string text = ExaminationText(examination, "x") + ExaminationJson(examination, "x");
    for (const char character : text) {
        ASSERT_TRUE(character == '\n' || (character >= ' ' && character <= '~'));
    }
}

bool LongTests() {
    return std::getenv("RADIAL_BLUR_LONG") != nullptr;
}

TEST(DoctorTest, ASoundModuleHasNoFaultAndIsDescribed) {
    const Examination result = Look(ModuleFile());
    EXPECT_EQ(result.kind, "a filter module for 64-bit Windows");
    EXPECT_EQ(Faults(result), "");
    EXPECT_EQ(Warnings(result), "");
    EXPECT_THAT(FactOf(result, "menu"), ElementsAre("Filter > Makers > Test Blur..."));
    EXPECT_THAT(FactOf(result, "modes"), ElementsAre("gray scale", "RGB"));
    EXPECT_THAT(FactOf(result, "interface"), ElementsAre("2.3"));
    EXPECT_THAT(FactOf(result, "exports"), ElementsAre("ENTRYPOINT"));
    EXPECT_THAT(FactOf(result, "imports"), ElementsAre("KERNEL32.dll", "USER32.dll"));
    EXPECT_THAT(FactOf(result, "version"), ElementsAre("3.1.4.1"));
    EXPECT_THAT(FactOf(result, "maker"), ElementsAre("Makers"));
    EXPECT_THAT(FactOf(result, "description"), ElementsAre("A test"));
    EXPECT_THAT(FactOf(result, "event"), ElementsAre("Suite / Event"));
    EXPECT_THAT(FactOf(result, "parameters"),
                ElementsAre("length (LENG, number)", "kind (KIND, whole number)"));
    EXPECT_THAT(FactOf(result, "cases"), ElementsAre("flat image, no selection: taken as it is",
                                                     "flat image, with selection: refused"));
    EXPECT_THAT(Said(result, FindingLevel::Good),
                AllOf(HasSubstr("64-bit Windows (x86-64)"), HasSubstr("exports ENTRYPOINT"),
                      HasSubstr("check sum is right"), HasSubstr("ASLR, full range")));
    EXPECT_THAT(Said(result, FindingLevel::Note), HasSubstr("it is not signed"));
}

TEST(DoctorTest, AnotherProcessorIsAFault) {
    ModuleFile module;
    module.machine = 0x014C;
    module.wide = false;
    EXPECT_THAT(Faults(Look(module)), HasSubstr("it is a 32-bit file"));
    EXPECT_EQ(Look(module).kind, "a filter module for 32-bit Windows");
    module.wide = true;
    module.machine = 0xAA64;
    EXPECT_THAT(Faults(Look(module)), HasSubstr("ARM"));
    module.machine = 0x0200;
    EXPECT_THAT(Faults(Look(module)), HasSubstr("a processor that 64-bit Windows is not for"));
}

TEST(DoctorTest, AProgramIsNoModule) {
    ModuleFile module;
    module.flags = 0x0022;
    EXPECT_THAT(Faults(Look(module)), HasSubstr("it is a program to be started"));
    EXPECT_EQ(Look(module, "test.exe").kind, "a program for 64-bit Windows");
}

TEST(DoctorTest, AMissingEntryPointIsAFault) {
    ModuleFile module;
    module.exports = {"Another", "ENTRYPOINT2"};
    EXPECT_THAT(Faults(Look(module)), HasSubstr("it does not export ENTRYPOINT,"));
    module.exports = {};
    EXPECT_THAT(Faults(Look(module)), HasSubstr("it does not export ENTRYPOINT,"));
}

TEST(DoctorTest, TheEntryPointIsTheOneThatThePropertyListNames) {
    ModuleFile module;
    std::vector<Property> properties = SoundProperties();
    properties[4].value = {'R', 'u', 'n', 0};
    module.resources[0].data = PropertyListBytes(properties);
    EXPECT_THAT(Faults(Look(module)), HasSubstr("it does not export Run,"));
    module.exports = {"Run"};
    EXPECT_EQ(Faults(Look(module)), "");
}

TEST(DoctorTest, APropertyListForThirtyTwoBitsOnlyIsAFault) {
    ModuleFile module;
    std::vector<Property> properties = SoundProperties();
    properties[4].key = "wx86";
    module.resources[0].data = PropertyListBytes(properties);
    EXPECT_THAT(Faults(Look(module)), HasSubstr("names no function for 64-bit Windows"));
}

TEST(DoctorTest, WithoutAPropertyListHostsDoNotSeeIt) {
    ModuleFile module;
    module.resources.erase(module.resources.begin());
    EXPECT_THAT(Faults(Look(module)), HasSubstr("it has no property list (PIPL)"));
    module.resources.clear();
    EXPECT_THAT(Faults(Look(module)), HasSubstr("it has no property list (PIPL)"));
}

TEST(DoctorTest, AModuleOfAnotherKindIsNamed) {
    ModuleFile module;
    std::vector<Property> properties = SoundProperties();
    properties[0].value = Reversed("8BIF");
    module.resources[0].data = PropertyListBytes(properties);
    EXPECT_THAT(Faults(Look(module)), HasSubstr("says that it is a file format, not a filter"));
}

TEST(DoctorTest, APropertyListThatBreaksOffIsAFault) {
    ModuleFile module;
    Bytes& list = module.resources[0].data;
    list.resize(list.size() - 9);
    EXPECT_THAT(Faults(Look(module)), HasSubstr("breaks off after 7 of 8 properties"));
}

TEST(DoctorTest, ScriptingIsNotNeeded) {
    ModuleFile module;
    module.resources[1].data.resize(60);
    EXPECT_EQ(Faults(Look(module)), "");
    EXPECT_THAT(Warnings(Look(module)), HasSubstr("its scripting terms (AETE) break off"));
    module.resources.erase(module.resources.begin() + 1);
    EXPECT_EQ(Warnings(Look(module)), "");
    EXPECT_THAT(Said(Look(module), FindingLevel::Note), HasSubstr("it has no scripting terms"));
}

TEST(DoctorTest, ForeignLibrariesAreNamed) {
    ModuleFile module;
    module.imports = {"kernel32.DLL", "libstdc++-6.dll", "api-ms-win-crt-math-l1-1-0.dll"};
    EXPECT_THAT(Faults(Look(module)), HasSubstr("not part of Windows: libstdc++-6.dll\n"));
    module.imports = {"KERNEL32.dll", "VCRUNTIME140.dll", "MSVCP140.dll"};
    EXPECT_EQ(Faults(Look(module)), "");
    EXPECT_THAT(Warnings(Look(module)), HasSubstr("runtime: VCRUNTIME140.dll, MSVCP140.dll\n"));
}

TEST(DoctorTest, MissingProtectionsAreWarnings) {
    ModuleFile module;
    module.protections = 0x0100;
    EXPECT_THAT(Warnings(Look(module)), AllOf(HasSubstr("no ASLR"), Not(HasSubstr("no NX"))));
    module.protections = 0x0040;
    EXPECT_THAT(Warnings(Look(module)), AllOf(HasSubstr("no NX"), Not(HasSubstr("no ASLR"))));
    module.protections = 0x0160;
    module.flags = 0x2023;
    EXPECT_THAT(Warnings(Look(module)), HasSubstr("no ASLR"));
    EXPECT_EQ(Faults(Look(module)), "");
}

TEST(DoctorTest, ASignatureIsSeen) {
    ModuleFile module;
    module.signature = {16, 0, 0, 0, 0, 2, 2, 0, 1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_THAT(Said(Look(module), FindingLevel::Good), HasSubstr("a signature (16 bytes"));
    EXPECT_EQ(Faults(Look(module)), "");
    module.signature[6] = 9;
    EXPECT_THAT(Warnings(Look(module)), HasSubstr("of an unknown kind"));
}

TEST(DoctorTest, AWrongCheckSumIsAFaultAndNoneIsWorthANote) {
    ModuleFile module;
    Bytes bytes = module.Build();
    bytes.back() ^= 1;
    EXPECT_THAT(Faults(Look(bytes)), HasSubstr("its check sum is wrong"));
    module.summed = false;
    EXPECT_EQ(Faults(Look(module)), "");
    EXPECT_THAT(Said(Look(module), FindingLevel::Note), HasSubstr("states no check sum"));
}

TEST(DoctorTest, AnotherNameIsAWarning) {
    EXPECT_THAT(Warnings(Look(ModuleFile(), "test.dll")), HasSubstr("does not end in .8bf"));
    EXPECT_EQ(Warnings(Look(ModuleFile(), "TEST.8BF")), "");
}

TEST(DoctorTest, WhatIsNoModuleIsCalledByItsName) {
    const auto kindOf = [](const Bytes& bytes) {
        const Examination result = Look(bytes);
        EXPECT_NE(Faults(result), "");
        return result.kind;
    };
    const auto text = [](const std::string& letters) {
        return Bytes(letters.begin(), letters.end());
    };
    EXPECT_EQ(kindOf({}), "an empty file");
    EXPECT_EQ(kindOf(text("Hello, this was renamed.\r\n")), "a text");
    EXPECT_EQ(kindOf(text("<!DOCTYPE html><html>Not found</html>")), "a page of the web");
    EXPECT_EQ(kindOf(text("PK\x03\x04rest")), "a ZIP archive");
    EXPECT_EQ(kindOf(text("\x89PNG\r\n\x1A\n")), "a picture");
    EXPECT_EQ(kindOf(text("%PDF-1.4")), "a PDF document");
    EXPECT_EQ(kindOf(text("MZ")), "a broken or very old Windows file");
    EXPECT_EQ(kindOf({0, 1, 2, 3}), "a file of another kind");
}

#ifndef _WIN32  // Only there is such a module at hand.
TEST(DoctorTest, ALinuxModuleIsKnown) {
    const Bytes module = ReadBytes(BuiltProgram().parent_path() / ModuleFileName());
    EXPECT_EQ(Look(module, "radial_blur.so").kind, "a filter module for 64-bit Linux");
    EXPECT_EQ(Faults(Look(module, "radial_blur.so")), "");
    EXPECT_THAT(Faults(Look(module, "radial_blur.8bf")), HasSubstr("but it is for Linux"));
    const std::size_t step = LongTests() ? 1 : 997;
    for (std::size_t size = 0; size < module.size(); size += step) {
        // Without a copy: an instrumented module has many megabytes.
        const std::span<const std::uint8_t> cut(module.data(), size);
        ASSERT_NE(Faults(Examine(cut, "radial_blur.so")), "") << size;
    }
}
#endif

TEST(DoctorTest, AnotherLinuxFileIsNoModule) {
    Bytes file(64, 0);
    const Bytes start = {0x7F, 'E', 'L', 'F', 2, 1, 1};
    std::copy(start.begin(), start.end(), file.begin());
    file[16] = 2;
    file[18] = 62;
    EXPECT_THAT(Faults(Look(file)), HasSubstr("does not export ENTRYPOINT"));
    file[18] = 183;
    EXPECT_THAT(Faults(Look(file)), HasSubstr("another processor"));
}

TEST(DoctorTest, EveryCutOfAModuleIsSeen) {
    const Bytes whole = ModuleFile().Build();
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        ASSERT_NE(Faults(Look(cut)), "") << size;
    }
}

TEST(DoctorTest, NamesCannotUpsetTheTerminal) {
    ModuleFile module;
    module.imports = {"a\x1B[2J\xC3\xA4\a.dll"};
    std::vector<Property> properties = SoundProperties();
    properties[1].value = Pascal("x\x1B]0;title\a\xFF");
    properties[2].value = Pascal("\r\n\t");
    module.resources[0].data = PropertyListBytes(properties);
    const Examination result = Look(module);
    ExpectPrintable(result);
    EXPECT_THAT(FactOf(result, "menu"), ElementsAre("Filter > ??? > x?]0;title??"));
}

TEST(DoctorTest, AnEndlessTreeOfResourcesEnds) {
    // A table of 2 x 65535 entries, each of which is a table: that same one.
    ModuleFile module;
    Bytes bytes = module.Build();
    const auto address =
        static_cast<std::size_t>(bytes[0xD8]) | static_cast<std::size_t>(bytes[0xD9]) << 8;
    const std::size_t table = address - 0x1000 + 0x200;
    for (std::size_t i = 12; i < 16; ++i) {
        bytes[table + i] = 0xFF;
    }
    for (std::size_t i = table + 16; i + 8 <= bytes.size(); i += 8) {
        const Bytes entry = {1, 0, 0, 0, 0, 0, 0, 0x80};
        std::copy(entry.begin(), entry.end(), bytes.begin() + static_cast<std::ptrdiff_t>(i));
    }
    EXPECT_THAT(Faults(Look(bytes)), HasSubstr("it has no property list (PIPL)"));
}

TEST(DoctorTest, RandomDamageUpsetsNothing) {
    const Bytes whole = ModuleFile().Build();
    std::mt19937 random(1);
    const int rounds = LongTests() ? 2000000 : 20000;
    for (int round = 0; round < rounds; ++round) {
        Bytes bytes = whole;
        for (unsigned flips = 1 + random() % 8; flips > 0; --flips) {
            const std::size_t where = random();
            bytes[where % bytes.size()] = static_cast<std::uint8_t>(random() >> 8);
        }
        if (random() % 4 == 0) {
            bytes.resize(random() % bytes.size());
        }
        ExpectPrintable(Look(bytes));
    }
}

// The module that ships: beside the program on Windows, and in the other build's folder elsewhere.
class RealModuleTest : public ::testing::Test {
protected:
    void SetUp() override {
        fs::path path = BuiltProgram().parent_path() / "radial_blur.8bf";
#ifndef _WIN32
        path = WINDOWS_MODULE;
#endif
        if (!fs::exists(path)) {
            GTEST_SKIP() << "the Windows module was not built";
        }
        whole_ = ReadBytes(path);
    }

    Bytes whole_;
};

TEST_F(RealModuleTest, IsSound) {
    const Examination result = Look(whole_, "radial_blur.8bf");
    EXPECT_EQ(Faults(result), "");
    EXPECT_EQ(Warnings(result), "");
    EXPECT_THAT(FactOf(result, "menu"), ElementsAre("Filter > Morvenhale > MV Radial Blur..."));
    EXPECT_THAT(FactOf(result, "version"), ElementsAre("1.2.6.0"));
    EXPECT_THAT(FactOf(result, "modes"), ElementsAre("gray scale", "RGB"));
    EXPECT_EQ(FactOf(result, "parameters").size(), 21U);
    EXPECT_EQ(FactOf(result, "parameters").front(), "origin x (ORIX, number)");
    EXPECT_EQ(FactOf(result, "parameters").back(), "show mode (SHOW, whole number)");
    EXPECT_EQ(FactOf(result, "cases").size(), 7U);
}

TEST_F(RealModuleTest, EveryCutIsSeen) {
    const std::size_t step = LongTests() ? 1 : 97;
    for (std::size_t size = 0; size < whole_.size(); size += step) {
        const std::span<const std::uint8_t> cut(whole_.data(), size);
        ASSERT_GT(Examine(cut, "radial_blur.8bf").Count(FindingLevel::Fault), 0U) << size;
    }
}

TEST_F(RealModuleTest, EveryFlippedBitIsSeen) {
    std::mt19937 random(2);
    const int rounds = LongTests() ? 20000 : 300;
    for (int round = 0; round < rounds; ++round) {
        const std::size_t where = random() % whole_.size();
        const auto bit = static_cast<std::uint8_t>(1U << random() % 8);
        whole_[where] ^= bit;
        const Examination result = Look(whole_, "radial_blur.8bf");
        ASSERT_GT(result.Count(FindingLevel::Fault), 0U) << where;
        ExpectPrintable(result);
        whole_[where] ^= bit;
    }
}

// The program around it.
class DoctorProgramTest : public FolderTest {
protected:
    ProgramRun Run(std::vector<std::string> words) {
        words.insert(words.begin(), "doctor");
        return RunRadialBlur(words, {.module = fs::path()});
    }
};

TEST_F(DoctorProgramTest, ASoundModuleGivesZero) {
    WriteBytes(folder_ / "test.8bf", ModuleFile().Build());
    const ProgramRun run = Run({Text("test.8bf")});
    EXPECT_EQ(run.code, 0);
    EXPECT_THAT(run.err, IsEmpty());
    EXPECT_THAT(run.out, AllOf(HasSubstr(Text("test.8bf") + ": a filter module for 64-bit"),
                               HasSubstr("\n  In the menu       Filter > Makers > Test Blur...\n"),
                               HasSubstr("\n  ok       it exports ENTRYPOINT, which hosts call\n"),
                               HasSubstr("\nNo fault: hosts can use this file.\n")));
}

TEST_F(DoctorProgramTest, AFaultGivesNineWithWhatToDo) {
    WriteText(folder_ / "text.8bf", "renamed");
    const ProgramRun run = Run({Text("text.8bf")});
    EXPECT_EQ(run.code, 9);
    EXPECT_THAT(run.out, AllOf(HasSubstr("\n  FAULT    it is a text, not a filter module\n"
                                         "           -> give the file radial_blur.8bf itself\n"),
                               HasSubstr("\n1 fault: hosts cannot use this file.\n")));
}

TEST_F(DoctorProgramTest, JsonHoldsTheSame) {
    WriteBytes(folder_ / "test.8bf", ModuleFile().Build());
    const ProgramRun run = Run({"--json", Text("test.8bf")});
    EXPECT_EQ(run.code, 0);
    EXPECT_THAT(run.out, AllOf(HasSubstr("\"usable\": true"), HasSubstr("\"RGB\""),
                               HasSubstr("\"level\": \"ok\"")));
}

TEST_F(DoctorProgramTest, WhatCannotBeReadGivesThree) {
    const ProgramRun missing = Run({Text("no.8bf")});
    EXPECT_EQ(missing.code, 3);
    EXPECT_EQ(missing.err,
              "radial-blur: cannot look at '" + Text("no.8bf") + "': there is no such file\n");
    const ProgramRun folder = Run({PathToText(folder_.Path())});
    EXPECT_EQ(folder.code, 3);
    EXPECT_THAT(folder.err, HasSubstr("it is a folder; name the module in it"));
}

TEST_F(DoctorProgramTest, WrongUseGivesTwo) {
    EXPECT_EQ(Run({}).code, 2);
    EXPECT_EQ(Run({"a", "b"}).code, 2);
    EXPECT_EQ(Run({"--strength"}).code, 2);
    EXPECT_EQ(Run({"-x"}).code, 2);
    EXPECT_EQ(Run({"--help"}).code, 0);
}

}  // namespace
}  // namespace mv::host::test
