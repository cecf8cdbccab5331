// Runs over many pictures: what is skipped, and what the end of the run says.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "pictures/PictureFile.h"
#include "support/ChildProcess.h"
#include "support/FolderTest.h"
#include "support/TestFiles.h"

namespace mv::host::test {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

class BatchTest : public FolderTest {
protected:
    void SetUp() override {
        for (const char* name : {"a.png", "b.png", "c.png"}) {
            WriteGradientPng(folder_ / name, 8, 6, 3, 8);
        }
    }

    ProgramRun RunAll(std::vector<std::string> options, const std::vector<std::string>& names) {
        for (const std::string& name : names) {
            options.push_back(Text(name));
        }
        options.insert(options.end(), {"--out-dir", Text("out")});
        return RunRadialBlur(options);
    }
};

TEST_F(BatchTest, WhatIsThereIsSkippedAndStaysAsItIs) {
    fs::create_directory(folder_ / "out");
    WriteText(folder_ / "out/b.png", "whatever stands here");
    const ProgramRun run = RunAll({"--skip-existing"}, {"a.png", "b.png", "c.png"});
    EXPECT_EQ(run.code, 0);
    EXPECT_THAT(run.out, HasSubstr("b.png: there already\n"));
    EXPECT_THAT(run.out, EndsWith("2 of 3 pictures done, 1 skipped as they were there already\n"));
    EXPECT_EQ(ReadBytes(folder_ / "out/b.png").size(), 20U);
}

TEST_F(BatchTest, WithoutTheOptionItIsReplaced) {
    fs::create_directory(folder_ / "out");
    WriteText(folder_ / "out/b.png", "whatever stands here");
    EXPECT_THAT(RunAll({}, {"a.png", "b.png"}).out, EndsWith("2 of 2 pictures done\n"));
    EXPECT_NE(ReadBytes(folder_ / "out/b.png").size(), 20U);
}

TEST_F(BatchTest, ASecondRunHasNothingLeftToDo) {
    EXPECT_EQ(RunAll({"--skip-existing"}, {"a.png", "b.png"}).code, 0);
    // Inputs are not even read: these are gone.
    fs::remove(folder_ / "a.png");
    fs::remove(folder_ / "b.png");
    const ProgramRun run = RunAll({"--skip-existing"}, {"a.png", "b.png"});
    EXPECT_EQ(run.code, 0);
    EXPECT_THAT(run.err, IsEmpty());
    EXPECT_THAT(run.out, EndsWith("0 of 2 pictures done, 2 skipped as they were there already\n"));
}

TEST_F(BatchTest, AnEmptyFileIsNoResult) {
    fs::create_directory(folder_ / "out");
    WriteText(folder_ / "out/a.png", "");
    EXPECT_THAT(RunAll({"--skip-existing"}, {"a.png", "b.png"}).out,
                EndsWith("2 of 2 pictures done\n"));
    EXPECT_GT(ReadBytes(folder_ / "out/a.png").size(), 0U);
}

TEST_F(BatchTest, OneOutputCanBeSkippedToo) {
    WriteText(folder_ / "out.png", "mine");
    const ProgramRun run = RunRadialBlur({Text("a.png"), Text("out.png"), "--skip-existing"});
    EXPECT_EQ(run.code, 0);
    EXPECT_THAT(run.out, EndsWith("out.png: there already\n"));
    EXPECT_EQ(ReadBytes(folder_ / "out.png").size(), 4U);
}

TEST_F(BatchTest, TheSummaryNamesWhatFailed) {
    WriteText(folder_ / "bad.png", "text");
    fs::create_directory(folder_ / "out");
    WriteText(folder_ / "out/c.png", "there");
    const ProgramRun run = RunAll({"--skip-existing"}, {"a.png", "bad.png", "gone.png", "c.png"});
    EXPECT_EQ(run.code, 4);  // that of bad.png, which failed first
    EXPECT_THAT(run.out, EndsWith("1 of 4 pictures done, 1 skipped as they were there already, "
                                  "2 failed\nfailed: " +
                                  Text("bad.png") + "\nfailed: " + Text("gone.png") + "\n"));
    EXPECT_TRUE(fs::exists(folder_ / "out/a.png"));
}

TEST_F(BatchTest, AfterARepairOnlyTheRestIsDone) {
    WriteText(folder_ / "b.png", "text");
    EXPECT_EQ(RunAll({"--skip-existing"}, {"a.png", "b.png", "c.png"}).code, 4);
    WriteGradientPng(folder_ / "b.png", 8, 6, 3, 8);
    const ProgramRun run = RunAll({"--skip-existing"}, {"a.png", "b.png", "c.png"});
    EXPECT_EQ(run.code, 0);
    EXPECT_THAT(run.out, EndsWith("1 of 3 pictures done, 2 skipped as they were there already\n"));
}

TEST_F(BatchTest, JsonCountsTheSame) {
    WriteText(folder_ / "bad.png", "text");
    fs::create_directory(folder_ / "out");
    WriteText(folder_ / "out/c.png", "there");
    const ProgramRun run =
        RunAll({"--skip-existing", "--json"}, {"a.png", "b.png", "bad.png", "c.png"});
    EXPECT_THAT(run.out, AllOf(HasSubstr("\n  \"done\": 2,\n  \"skipped\": 1,\n  \"failed\": 1,\n"),
                               HasSubstr("\"skipped\": true"), Not(HasSubstr("there already"))));
}

TEST_F(BatchTest, QuietKeepsToErrors) {
    WriteText(folder_ / "bad.png", "text");
    const ProgramRun run = RunAll({"--skip-existing", "--quiet"}, {"a.png", "bad.png"});
    EXPECT_THAT(run.out, IsEmpty());
    EXPECT_THAT(run.err, HasSubstr("bad.png' is not a picture"));
}

}  // namespace
}  // namespace mv::host::test
