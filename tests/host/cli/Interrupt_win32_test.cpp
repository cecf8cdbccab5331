// Ctrl-C on Windows.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "pictures/PictureFile.h"
#include "support/ChildProcess.h"
#include "support/TestFiles.h"

namespace mv::host::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

TEST(ControlEventTest, StopsTheRunAndLeavesNothingBehind) {
    const TempFolder folder;
    WriteGradientPng(folder / "in.png", 8, 6, 3, 8);
    WriteText(folder / "out.png", "old");
    const auto start = std::chrono::steady_clock::now();
    const auto due = start + std::chrono::seconds(2);
    bool sent = false;
    const ProgramRun run =
        RunRadialBlur({PathToText(folder / "in.png"), PathToText(folder / "out.png")},
                      {.fake = "slow", .signal = [&] {
                           const bool send = !sent && std::chrono::steady_clock::now() >= due;
                           sent = sent || send;
                           return send ? 1 : 0;
                       }});
    EXPECT_TRUE(sent);
    EXPECT_EQ(run.code, 130);
    EXPECT_THAT(run.err, HasSubstr("radial-blur: stopped;"));
    EXPECT_EQ(ReadBytes(folder / "out.png"), (Bytes{'o', 'l', 'd'}));
    EXPECT_THAT(folder.Names(), ElementsAre("in.png", "out.png"));
}

}  // namespace
}  // namespace mv::host::test
