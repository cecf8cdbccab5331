#include "diagnostics/Log.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <locale>
#include <memory>
#include <thread>
#include <vector>

#include "support/AllocationFault.h"
#include "support/ScopedEnvironment.h"
#include "support/TraceFile.h"

namespace mv {
namespace {

namespace fs = std::filesystem;
using test::ScopedEnvironment;

void Put(Log& log, const std::string& text, int level = kTrace) {
    std::stringstream stream;
    stream << text;
    log.Write(stream, level);
}

// A home of its own for each test, with or without the folder and the file that switch the log on.
class LogTest : public testing::Test {
protected:
    LogTest()
        : home_(test::TestFolder() / testing::UnitTest::GetInstance()->current_test_info()->name()),
          setHome_("HOME", home_.string()),
          unsetPath_("HOMEPATH", std::nullopt),
          unsetDrive_("HOMEDRIVE", std::nullopt) {
        fs::create_directories(home_);
    }

    void CreateFolder() { fs::create_directories(LogFile().parent_path()); }
    void CreateFile(const std::string& content = std::string()) {
        CreateFolder();
        std::ofstream(LogFile()) << content;
    }
    fs::path LogFile() const { return home_ / "morvenhale" / "radial_blur_ps.log"; }
    std::string Text() const { return test::ReadTextFile(LogFile()); }

    fs::path home_;
    ScopedEnvironment setHome_;
    ScopedEnvironment unsetPath_;
    ScopedEnvironment unsetDrive_;
};

TEST_F(LogTest, WithoutTheFileNothingIsWrittenAndNothingCreated) {
    CreateFolder();
    {
        Log log;
        Put(log, "line\n");
    }
    EXPECT_FALSE(fs::exists(LogFile()));
}

TEST_F(LogTest, WithoutTheFolderNothingIsCreated) {
    {
        Log log;
        Put(log, "line\n");
    }
    EXPECT_TRUE(fs::is_empty(home_));
}

TEST_F(LogTest, EveryMessageIsAppendedToTheFile) {
    CreateFile("kept\n");
    Log log;
    Put(log, "one\n");
    Put(log, "two\n", kError);
    EXPECT_EQ(Text(), "kept\none\ntwo\n");
}

TEST_F(LogTest, EachMessageIsInTheFileAtOnce) {
    CreateFile();
    Log log;
    Put(log, "no line feed");
    EXPECT_EQ(Text(), "no line feed");
}

TEST_F(LogTest, FileCreatedWhileRunningIsPickedUpAtTheNextMessage) {
    CreateFolder();
    Log log;
    Put(log, "lost\n");
    CreateFile();
    Put(log, "found\n");
    EXPECT_EQ(Text(), "found\n");
}

TEST_F(LogTest, PathIsRememberedFromTheFirstMessageOn) {
    CreateFile();
    Log log;
    const ScopedEnvironment elsewhere("HOME", (home_ / "elsewhere").string());
    Put(log, "line\n");
    EXPECT_EQ(Text(), "line\n");
}

#ifndef _WIN32
TEST_F(LogTest, DeletingTheOpenFileChangesNothing) {
    CreateFile();
    Log log;
    Put(log, "one\n");
    fs::remove(LogFile());
    Put(log, "two\n");
    EXPECT_FALSE(fs::exists(LogFile()));
}
#endif

TEST_F(LogTest, AFolderInPlaceOfTheFileIsNoLog) {
    fs::create_directories(LogFile());
    Log log;
    Put(log, "line\n");
    EXPECT_TRUE(fs::is_directory(LogFile()));
    EXPECT_TRUE(fs::is_empty(LogFile()));
}

TEST_F(LogTest, IndentationOfThreeIsTwelveBlanks) {
    CreateFile();
    Log log;
    log.Indent();
    log.Indent();
    log.Indent();
    Put(log, "line\n");
    log.Outdent();
    Put(log, "line\n");
    EXPECT_EQ(Text(), std::string(12, ' ') + "line\n" + std::string(8, ' ') + "line\n");
}

TEST_F(LogTest, OnlyTheFirstLineOfAMessageIsIndented) {
    CreateFile();
    Log log;
    log.Indent();
    Put(log, "first\nsecond\n");
    EXPECT_EQ(Text(), "    first\nsecond\n");
}

TEST_F(LogTest, IndentationBelowZeroGivesNoBlanks) {
    CreateFile();
    Log log;
    log.Outdent();
    Put(log, "line\n");
    EXPECT_EQ(Text(), "line\n");
}

TEST_F(LogTest, MessagesBelowTheLevelAreDropped) {
    CreateFile();
    Log log;
    log.SetLevel(kWarning);
    Put(log, "trace\n", kTrace);
    Put(log, "warning\n", kWarning);
    Put(log, "error\n", kError);
    EXPECT_EQ(Text(), "warning\nerror\n");
}

TEST_F(LogTest, PercentSignsAreText) {
    CreateFile();
    Log log;
    Put(log, "100%s %n\n");
    EXPECT_EQ(Text(), "100%s %n\n");
}

TEST_F(LogTest, ConsoleSwitchLeavesTheFileAlone) {
    CreateFile();
    Log log;
    log.DisableConsole();
    Put(log, "line\n");
    EXPECT_EQ(Text(), "line\n");
}

TEST_F(LogTest, PathIsHomeWithAForwardSlash) {
    EXPECT_EQ(Log::GetHomePath(), home_.string() + "/");
    EXPECT_EQ(Log::GetLogPath(), home_.string() + "/morvenhale/radial_blur_ps.log");
}

TEST_F(LogTest, DriveComesInFrontOfHome) {
    const ScopedEnvironment drive("HOMEDRIVE", "C:");
    const ScopedEnvironment home("HOME", "\\Users\\a");
    EXPECT_EQ(Log::GetHomePath(), "C:\\Users\\a/");
}

TEST_F(LogTest, WithoutHomeTheSecondVariableServes) {
    const ScopedEnvironment home("HOME", std::nullopt);
    const ScopedEnvironment path("HOMEPATH", "\\Users\\b");
    const ScopedEnvironment drive("HOMEDRIVE", "D:");
    EXPECT_EQ(Log::GetLogPath(), "D:\\Users\\b/morvenhale/radial_blur_ps.log");
}

TEST_F(LogTest, HomeGoesBeforeTheSecondVariable) {
    const ScopedEnvironment path("HOMEPATH", "\\Users\\b");
    EXPECT_EQ(Log::GetHomePath(), home_.string() + "/");
}

TEST_F(LogTest, WithNeitherVariableThereIsNoHomePath) {
    const ScopedEnvironment home("HOME", std::nullopt);
    const ScopedEnvironment drive("HOMEDRIVE", "C:");
    EXPECT_EQ(Log::GetHomePath(), "");
}

TEST_F(LogTest, MessagesOfManyThreadsStayWhole) {
    CreateFile();
    Log log;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&log, i] {
            for (int k = 0; k < 50; ++k) {
                log.Indent();
                Put(log, std::string(40, static_cast<char>('a' + i)) + "\n");
                log.Outdent();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::stringstream lines(Text());
    std::string line;
    int count = 0;
    while (std::getline(lines, line)) {
        const std::string text = line.substr(line.find_first_not_of(' '));
        EXPECT_EQ(text, std::string(40, text[0]));
        ++count;
    }
    EXPECT_EQ(count, 200);
}

TEST_F(LogTest, WhenAnyAllocationFailsAMessageIsWholeOrLost) {
    CreateFile();
    Log log;
    log.Indent();
    const std::string expected = std::string(4, ' ') + std::string(100, 'x') + "\n";
    std::stringstream stream;
    stream << std::string(100, 'x') << "\n";
    bool happened = true;
    for (long n = 1; happened && n < 100; ++n) {
        const std::size_t before = Text().size();
        {
            const test::AllocationFault fault(n);
            log.Write(stream, kTrace);
            happened = fault.Happened();
        }
        const std::string written = Text().substr(before);
        EXPECT_TRUE(written.empty() || written == expected) << written;
        EXPECT_TRUE(happened || written == expected);
    }
    EXPECT_FALSE(happened);
}

TEST_F(LogTest, NoMemoryForThePathIsTriedAgainAtTheNextMessage) {
    CreateFile();
    std::stringstream stream;
    stream << "line\n";
    auto drought = std::make_unique<test::AllocationDrought>();
    Log log;
    log.Write(stream, kTrace);
    drought.reset();
    EXPECT_EQ(Text(), "");
    log.Write(stream, kTrace);
    EXPECT_EQ(Text(), "line\n");
}

TEST(WriteLog, JoinsItsPartsAndEndsTheLine) {
    const test::TraceFile trace;
    WriteLog(kTrace, "size(", 3, ", ", 0.5, ") ", true);
    EXPECT_EQ(trace.Text(), "size(3, 0.5) 1\n");
}

// Groups digits and swaps the decimal point, as many a locale does.
class GroupingNumbers : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(WriteLog, NumbersLookTheSameInEveryLocale) {
    const test::TraceFile trace;
    const std::locale before =
        std::locale::global(std::locale(std::locale::classic(), new GroupingNumbers));
    WriteLog(kTrace, 1234567, " ", 1.5);
    std::locale::global(before);
    EXPECT_EQ(trace.Text(), "1234567 1.5\n");
}

TEST(WriteLog, WhenAnyAllocationFailsALineIsWholeOrLost) {
    const test::TraceFile trace;
    const std::string part(200, 'x');
    bool happened = true;
    for (long n = 1; happened && n < 200; ++n) {
        const std::size_t before = trace.Text().size();
        {
            const test::AllocationFault fault(n);
            WriteLog(kTrace, part, part, 12, part);
            happened = fault.Happened();
        }
        const std::string written = trace.Text().substr(before);
        EXPECT_TRUE(written.empty() || written == part + part + "12" + part + "\n") << written;
        EXPECT_TRUE(happened || !written.empty());
    }
    EXPECT_FALSE(happened);
}

TEST(LogScope, IndentsForItsLength) {
    const test::TraceFile trace;
    WriteLog(kTrace, "run( )");
    {
        const LogScope scope;
        WriteLog(kTrace, "inside");
    }
    WriteLog(kTrace, "run( return(1) )");
    EXPECT_EQ(trace.Text(), "run( )\n    inside\nrun( return(1) )\n");
}

TEST(LogPointer, IsSixteenUpperCaseDigits) {
    std::stringstream stream;
    stream << "0x" << LogPointer{reinterpret_cast<const void*>(std::uintptr_t{0x12ab34cdef})};
    EXPECT_EQ(stream.str(), "0x00000012AB34CDEF");
    stream.str("");
    stream << LogPointer{nullptr};
    EXPECT_EQ(stream.str(), "0000000000000000");
}

TEST(LogPrefixes, AreAsReadersOfLogsKnowThem) {
    EXPECT_STREQ(kWarningPrefix, "-**### WARNING ###**-: ");
    EXPECT_STREQ(kErrorPrefix, "-**###  ERROR  ###**-: ");
    EXPECT_EQ(kTrace, 1);
    EXPECT_EQ(kWarning, 2);
    EXPECT_EQ(kError, 3);
}

}  // namespace
}  // namespace mv
