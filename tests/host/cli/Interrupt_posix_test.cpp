// Ctrl-C, and what is drawn on a terminal.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>

#include "pictures/PictureFile.h"
#include "support/ChildProcess.h"
#include "support/FolderTest.h"
#include "support/TestFiles.h"

namespace mv::host::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

class InterruptTest : public FolderTest {
protected:
    void SetUp() override { WriteGradientPng(folder_ / "in.png", 8, 6, 3, 8); }

    // Sends a signal once, some time after the start, when the module is at work.
    static std::function<int()> After(int milliseconds, int signal) {
        const auto start = std::chrono::steady_clock::now();
        return [=, sent = false]() mutable {
            const auto due = start + std::chrono::milliseconds(milliseconds);
            if (sent || std::chrono::steady_clock::now() < due) {
                return 0;
            }
            sent = true;
            return signal;
        };
    }
};

class SignalTest : public InterruptTest, public ::testing::WithParamInterface<int> {};

TEST_P(SignalTest, StopsTheRunAndLeavesNothingBehind) {
    WriteText(folder_ / "out.png", "old");
    const auto start = std::chrono::steady_clock::now();
    const ProgramRun run = RunRadialBlur({Text("in.png"), Text("out.png")},
                                         {.fake = "slow", .signal = After(300, GetParam())});
    EXPECT_EQ(run.code, 130);
    EXPECT_EQ(run.err, "radial-blur: stopped; '" + Text("out.png") + "' was not written\n");
    EXPECT_EQ(ReadBytes(folder_ / "out.png"), (Bytes{'o', 'l', 'd'}));
    EXPECT_THAT(folder_.Names(), ElementsAre("in.png", "out.png"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(8));
}

INSTANTIATE_TEST_SUITE_P(Signals, SignalTest, ::testing::Values(SIGINT, SIGTERM, SIGHUP));

TEST_F(InterruptTest, AModuleThatHidesTheAbortGetsNothingWritten) {
    const ProgramRun run = RunRadialBlur({Text("in.png"), Text("out.png")},
                                         {.fake = "slow sleepless", .signal = After(300, SIGINT)});
    EXPECT_EQ(run.code, 130);
    EXPECT_THAT(folder_.Names(), ElementsAre("in.png"));
}

TEST_F(InterruptTest, TheOtherInputsAreNotStarted) {
    WriteGradientPng(folder_ / "b.png", 3, 3, 3, 8);
    const ProgramRun run =
        RunRadialBlur({Text("in.png"), Text("b.png"), "--out-dir", Text("out"), "--json"},
                      {.fake = "slow", .signal = After(300, SIGINT)});
    EXPECT_EQ(run.code, 130);
    EXPECT_THAT(run.out, HasSubstr("\"exitCode\": 130"));
    EXPECT_THAT(run.out, Not(HasSubstr("b.png")));
    EXPECT_TRUE(std::filesystem::is_empty(folder_ / "out"));
}

TEST_F(InterruptTest, ASignalThatTheCallerIgnoresStaysIgnored) {
    signal(SIGHUP, SIG_IGN);
    const auto hangUp = After(300, SIGHUP);
    const auto end = After(1000, SIGTERM);
    bool stillRunning = false;
    const ProgramRun run = RunRadialBlur({Text("in.png"), Text("out.png")},
                                         {.fake = "slow", .signal = [&] {
                                              const int signal = end();
                                              stillRunning = stillRunning || signal != 0;
                                              return signal != 0 ? signal : hangUp();
                                          }});
    signal(SIGHUP, SIG_DFL);
    EXPECT_TRUE(stillRunning);
    EXPECT_EQ(run.code, 130);
}

TEST_F(InterruptTest, ATerminalGetsAProgressBarThatVanishes) {
    const ProgramRun run = RunRadialBlur({Text("in.png"), Text("out.png")}, {.terminal = true});
    EXPECT_EQ(run.code, 0);
    EXPECT_THAT(run.err, HasSubstr("\rin.png [##############################] 100 %"));
    const std::size_t end = run.err.find_last_not_of(" \r");
    EXPECT_EQ(run.err.substr(end + 1).front(), '\r');
    EXPECT_EQ(run.err.back(), '\r');
    EXPECT_THAT(run.err, Not(HasSubstr("\n")));
}

TEST_F(InterruptTest, QuietDrawsNoBar) {
    const ProgramRun run =
        RunRadialBlur({Text("in.png"), Text("out.png"), "--quiet"}, {.terminal = true});
    EXPECT_EQ(run.code, 0);
    EXPECT_THAT(run.err, IsEmpty());
}

TEST_F(InterruptTest, WithoutATerminalThereIsNoBar) {
    const ProgramRun run = RunRadialBlur({Text("in.png"), Text("out.png")});
    EXPECT_EQ(run.code, 0);
    EXPECT_THAT(run.err, IsEmpty());
}

}  // namespace
}  // namespace mv::host::test
