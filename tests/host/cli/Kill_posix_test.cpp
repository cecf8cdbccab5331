// The program is killed at any moment, and disks are full or closed for writing: what was there
// stays, or the new picture is there whole.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <random>
#include <thread>

#include "pictures/PictureFile.h"
#include "support/ChildProcess.h"
#include "support/TestFiles.h"

namespace mv::host::test {
namespace {

using std::chrono::microseconds;
using std::chrono::steady_clock;
using ::testing::HasSubstr;

int Times(int usual, int thorough) {
    return std::getenv("RADIAL_BLUR_LONG") != nullptr ? thorough : usual;
}

class KillTest : public ::testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        WriteGradientPng(folder_ / "in.png", 500, 400, 3, 16);
        out_ = folder_ / (std::string("out") + GetParam());
        WriteText(out_, kOld);
    }

    pid_t StartProgram() const {
        const std::string program = PathToText(BuiltProgram());
        const std::string in = PathToText(folder_ / "in.png");
        const std::string out = PathToText(out_);
        const std::string module = PathToText(FakeModule());
        const pid_t child = fork();
        if (child == 0) {
            execl(program.c_str(), program.c_str(), in.c_str(), out.c_str(), "--quiet", "--module",
                  module.c_str(), static_cast<char*>(nullptr));
            _exit(127);
        }
        return child;
    }

    static constexpr const char* kOld = "what was there before";
    TempFolder folder_;
    std::filesystem::path out_;
};

TEST_P(KillTest, LeavesTheOldPictureOrTheNewOne) {
    SetFakeWords("");
    const Bytes old(kOld, kOld + std::strlen(kOld));
    const auto start = steady_clock::now();
    int status = 0;
    waitpid(StartProgram(), &status, 0);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    const auto whole = std::chrono::duration_cast<microseconds>(steady_clock::now() - start);
    const Bytes complete = ReadBytes(out_);
    ASSERT_GT(complete.size(), 1000U);
    std::mt19937 random(81);
    int killed = 0;
    int renewed = 0;
    const int times = Times(60, 2000);
    for (int i = 0; i < times; ++i) {
        WriteText(out_, kOld);
        const pid_t child = StartProgram();
        std::this_thread::sleep_for(whole * static_cast<int>(random() % 1100) / 1000);
        kill(child, SIGKILL);
        waitpid(child, &status, 0);
        killed += WIFSIGNALED(status) ? 1 : 0;
        const Bytes left = ReadBytes(out_);
        const bool isNew = left == complete;
        renewed += isNew ? 1 : 0;
        ASSERT_TRUE(isNew || left == old) << i << ": " << left.size() << " bytes";
    }
    EXPECT_GT(killed, times / 4);
    std::printf("%d of %d runs killed, %d pictures renewed\n", killed, times, renewed);
    // Whatever was left beside it, the next run does its work.
    waitpid(StartProgram(), &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_EQ(ReadBytes(out_), complete);
}

INSTANTIATE_TEST_SUITE_P(Formats, KillTest, ::testing::Values(".png", ".tif"));

// Runs the program with a file system of its own mounted over a folder, which needs no rights but
// those in a namespace of its own.
class MountTest : public ::testing::Test {
protected:
    void SetUp() override {
        WriteGradientPng(folder_ / "in.png", 900, 700, 3, 16);
        std::filesystem::create_directory(folder_ / "disk");
        if (Shell("mount -t tmpfs none " + Disk()).code != 0) {
            GTEST_SKIP() << "the system lets nobody mount here";
        }
    }

    std::string Disk() const { return "'" + PathToText(folder_ / "disk") + "'"; }

    ProgramRun Shell(const std::string& script) const {
        return RunChild({"/usr/bin/unshare", "-rm", "/bin/sh", "-c", script}, {});
    }

    std::string Program(const std::string& output) const {
        return "'" + PathToText(BuiltProgram()) + "' '" + PathToText(folder_ / "in.png") + "' " +
               output + " --module '" + PathToText(FakeModule()) + "'";
    }

    TempFolder folder_;
};

TEST_F(MountTest, AFullDiskLeavesTheOldPictureAndNothingElse) {
    SetFakeWords("");
    for (const char* const name : {"out.png", "out.tif"}) {
        const ProgramRun run = Shell("mount -t tmpfs -o size=8k none " + Disk() + " && cd " +
                                     Disk() + " && printf old >" + name + "; " + Program(name) +
                                     "; echo code $?; head -c 80 " + name + "; echo; ls");
        EXPECT_THAT(run.out, HasSubstr(std::string("code 6\nold\n") + name + "\n"));
        EXPECT_THAT(run.err, HasSubstr("the disk is full")) << run.err;
    }
}

TEST_F(MountTest, AFolderThatCannotBeWrittenLeavesTheOldPicture) {
    SetFakeWords("");
    const ProgramRun run =
        Shell("mount -t tmpfs -o size=4m none " + Disk() + " && printf old >" + Disk() +
              "/out.png && mount -o remount,ro " + Disk() + " && cd " + Disk() + "; " +
              Program("out.png") + "; echo code $?; cat out.png; echo; ls");
    EXPECT_THAT(run.out, HasSubstr("code 6\nold\nout.png\n")) << run.out;
    EXPECT_THAT(run.err, HasSubstr("the disk is read-only")) << run.err;
}

}  // namespace
}  // namespace mv::host::test
