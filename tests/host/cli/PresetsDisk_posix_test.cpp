// Presets where the system does not go along: killed processes, full disks, missing rights.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <set>

#include "pictures/PictureFile.h"
#include "support/ChildProcess.h"
#include "support/PresetTexts.h"
#include "support/TestFiles.h"

extern char** environ;

namespace mv::host::test {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class PresetsDiskTest : public ::testing::Test {
protected:
    std::string File() const { return PathToText(folder_ / "looks.cfg"); }
    std::string Content() const { return ReadText(folder_ / "looks.cfg"); }
    void Put(const std::string& bytes) const { WriteText(folder_ / "looks.cfg", bytes); }

    static ProgramRun Presets(std::vector<std::string> words, std::uint64_t largestFile = 0) {
        words.insert(words.begin(), "presets");
        return RunRadialBlur(words, {.module = "", .largestFile = largestFile});
    }

    TempFolder folder_;
};

// Starts the program and kills it after so many microseconds. True when it was killed in time.
bool RunAndKill(std::vector<std::string> words, unsigned microseconds) {
    words.insert(words.begin(), PathToText(BuiltProgram()));
    std::vector<char*> arguments;
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    EXPECT_EQ(posix_spawn(&child, arguments[0], &actions, nullptr, arguments.data(), environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    usleep(microseconds);
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    return WIFSIGNALED(status);
}

// The file is large enough for the writing to take a part of the time that is worth hitting.
TEST_F(PresetsDiskTest, AKilledSaveLeavesTheOldFileOrTheNewOne) {
    const int rounds = std::getenv("RADIAL_BLUR_LONG") != nullptr ? 5000 : 200;
    const std::string filling = "\nname filling\n" + std::string(300000, 'x') + " 1\n";
    const std::string old = kOwnerLine + Block("a") + filling;
    const std::string replaced = kOwnerLine + Block("a", {{"Hue", "0.500000"}}) + filling.substr(1);
    const std::string added = old + Block("b");
    const std::string deleted = kOwnerLine + filling;
    // How long a whole save takes here and now, so that the moments to kill lie all over it.
    Put(old);
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(Presets({"save", File(), "a", "--hue", "0.5", "--force"}).code, 0);
    }
    const auto whole = std::chrono::duration_cast<std::chrono::microseconds>(
        (std::chrono::steady_clock::now() - begin) / 5);
    int killed = 0;
    int changed = 0;
    for (int i = 0; i < rounds; ++i) {
        Put(old);
        const auto delay = static_cast<unsigned>(i * whole.count() * 3 / 2 / rounds);
        const std::vector<std::string> words[] = {
            {"presets", "save", File(), "a", "--hue", "0.5", "--force"},
            {"presets", "save", File(), "b"},
            {"presets", "delete", File(), "a"}};
        killed += RunAndKill(words[i % 3], delay) ? 1 : 0;
        const std::string now = Content();
        const std::string& done = i % 3 == 0 ? replaced : (i % 3 == 1 ? added : deleted);
        ASSERT_TRUE(now == old || now == done) << "after " << delay << " us: " << now.size();
        changed += now == done ? 1 : 0;
    }
    // Both ends were seen, so that the middle was passed.
    EXPECT_GT(killed, 0);
    EXPECT_GT(changed, 0);
    EXPECT_LT(changed, rounds);
    // What a killed process left beside the file is no hindrance and goes away.
    Put(old);
    EXPECT_EQ(Presets({"save", File(), "a", "--hue", "0.5", "--force"}).code, 0);
    EXPECT_EQ(Content(), replaced);
    EXPECT_THAT(folder_.Names(), ElementsAre("looks.cfg"));
}

// A limit on file sizes stops a write at every place, just as a full disk does.
TEST_F(PresetsDiskTest, AFullDiskLosesNothing) {
    const std::string old = kOwnerLine + Block("a") + Block("b") + Block("c");
    for (const std::size_t limit : {std::size_t{1}, std::size_t{100}, Block("a").size(),
                                    old.size() - Block("c").size() / 2}) {
        for (const std::vector<std::string>& words :
             {std::vector<std::string>{"save", File(), "b", "--hue", "0.5", "--force"},
              {"save", File(), "new"},
              {"delete", File(), "a"}}) {
            Put(old);
            const ProgramRun run = Presets(words, limit);
            const bool fits = words[0] == "delete" && limit >= old.size() - Block("a").size();
            if (!fits) {
                EXPECT_EQ(run.code, 6) << words[0] << " " << limit;
                EXPECT_THAT(run.err, HasSubstr("cannot write the preset file '" + File() +
                                               "', which stays as it was"));
                EXPECT_EQ(Content(), old) << words[0] << " " << limit;
            }
            EXPECT_THAT(folder_.Names(), ElementsAre("looks.cfg"));
        }
    }
}

TEST_F(PresetsDiskTest, AFullDiskLeavesNoNewFile) {
    EXPECT_EQ(Presets({"save", File(), "a"}, 100).code, 6);
    EXPECT_TRUE(folder_.Names().empty());
}

TEST_F(PresetsDiskTest, AReadErrorIsNoEmptyFile) {
    // The file can be opened by its owner, and its first byte cannot be read.
    const std::string file = "/proc/self/mem";
    for (const std::vector<std::string>& words : {std::vector<std::string>{"list", file},
                                                  {"show", file, "a"},
                                                  {"save", file, "a"},
                                                  {"delete", file, "a"}}) {
        const ProgramRun run = Presets(words);
        EXPECT_EQ(run.code, 3) << words[0];
        EXPECT_THAT(run.err, HasSubstr("cannot read the preset file '/proc/self/mem' to its end"));
    }
}

TEST_F(PresetsDiskTest, WithoutRightsNothingHappens) {
    const std::string before = kOwnerLine + Block("a");
    if (geteuid() != 0) {
        Put(before);
        fs::permissions(folder_ / "looks.cfg", fs::perms::none);
        EXPECT_EQ(Presets({"list", File()}).code, 3);
        EXPECT_THAT(Presets({"save", File(), "b"}).err, HasSubstr("; see who may read it"));
        fs::permissions(folder_ / "looks.cfg", fs::perms::owner_read);
        EXPECT_EQ(Presets({"save", File(), "b"}).code, 6);
        EXPECT_EQ(Presets({"delete", File(), "a"}).code, 6);
        EXPECT_EQ(Content(), before);
    }
    // Nobody makes files there, the system's owner neither.
    const ProgramRun run = Presets({"save", "/proc/looks.cfg", "a"});
    EXPECT_EQ(run.code, 6);
    EXPECT_THAT(run.err, HasSubstr("cannot write the preset file '/proc/looks.cfg'"));
}

TEST_F(PresetsDiskTest, WhatIsNoOrdinaryFileIsRefusedAtOnce) {
    ASSERT_EQ(mkfifo((folder_ / "pipe").c_str(), 0600), 0);
    for (const std::string& file : {PathToText(folder_ / "pipe"), std::string("/dev/zero")}) {
        for (const std::string command : {"list", "show"}) {
            const ProgramRun run = Presets({command, file});
            EXPECT_EQ(run.code, 11);
            EXPECT_THAT(run.err, HasSubstr("'" + file + "' is no ordinary file"));
        }
        EXPECT_EQ(Presets({"save", file, "a"}).code, 11);
    }
}

TEST_F(PresetsDiskTest, ALinkIsFollowedAndStays) {
    WriteText(folder_ / "real.cfg", kOwnerLine + Block("a"));
    fs::create_symlink("real.cfg", folder_ / "looks.cfg");
    EXPECT_EQ(Presets({"save", File(), "a", "--hue", "0.5", "--force"}).code, 0);
    EXPECT_TRUE(fs::is_symlink(folder_ / "looks.cfg"));
    EXPECT_EQ(ReadText(folder_ / "real.cfg"), kOwnerLine + Block("a", {{"Hue", "0.500000"}}));
}

// Two that save at once leave both presets or one of them, and never a torn file.
TEST_F(PresetsDiskTest, SavesAtTheSameTimeTearNothing) {
    for (int i = 0; i < 10; ++i) {
        Put(kOwnerLine + Block("a"));
        std::vector<pid_t> children;
        for (const char* const name : {"b", "c", "d"}) {
            const std::string program = PathToText(BuiltProgram());
            const std::string file = File();
            const pid_t child = fork();
            if (child == 0) {
                execl(program.c_str(), "radial-blur", "presets", "save", file.c_str(), name, "-q",
                      nullptr);
                _exit(127);
            }
            children.push_back(child);
        }
        for (const pid_t child : children) {
            waitpid(child, nullptr, 0);
        }
        std::string rest = Content();
        ASSERT_EQ(rest.substr(0, (kOwnerLine + Block("a")).size()), kOwnerLine + Block("a"));
        rest.erase(0, (kOwnerLine + Block("a")).size());
        std::set<std::string> blocks;
        while (!rest.empty()) {
            const std::string block = rest.substr(0, Block("b").size());
            blocks.insert(block);
            rest.erase(0, block.size());
        }
        for (const std::string& block : blocks) {
            EXPECT_TRUE(block == Block("b") || block == Block("c") || block == Block("d")) << block;
        }
        EXPECT_GE(blocks.size(), 1U);
    }
}

}  // namespace
}  // namespace mv::host::test
