// The program finds the files behind '*' and '?' by itself, as no shell does it there.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "pictures/PictureFile.h"
#include "support/ChildProcess.h"
#include "support/FolderTest.h"
#include "support/TestFiles.h"

namespace mv::host::test {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;

class WildcardsTest : public FolderTest {
protected:
    void SetUp() override {
        for (const char* name : {"c.png", "a.png", "b.png"}) {
            WriteGradientPng(folder_ / name, 8, 6, 3, 8);
        }
        WriteText(folder_ / "a.txt", "no picture");
        std::filesystem::create_directory(folder_ / "d.png");
    }
};

TEST_F(WildcardsTest, AStarStandsForTheFilesOfTheFolderInOrder) {
    const ProgramRun run = RunRadialBlur({Text("*.png"), "--out-dir", Text("out")});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_THAT(run.out, EndsWith("3 of 3 pictures done\n"));
    EXPECT_LT(run.out.find("a.png"), run.out.find("b.png"));
    EXPECT_LT(run.out.find("b.png"), run.out.find("c.png"));
}

TEST_F(WildcardsTest, AQuestionMarkStandsForOneLetter) {
    const ProgramRun run = RunRadialBlur({Text("?.txt"), "--out-dir", Text("out")});
    EXPECT_EQ(run.code, 4);
    EXPECT_THAT(run.err, HasSubstr("a.txt' is not a picture"));
}

TEST_F(WildcardsTest, WhatStandsForNothingIsNamedAsMissing) {
    const ProgramRun run = RunRadialBlur({Text("*.tif"), "--out-dir", Text("out")});
    EXPECT_EQ(run.code, 3);
    EXPECT_THAT(run.err, HasSubstr("*.tif'"));
}

}  // namespace
}  // namespace mv::host::test
