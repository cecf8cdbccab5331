// What only a system with users, links and resource limits can show.
#include "platform/FileReplace.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "diagnostics/Log.h"
#include "parameters/pfParameterFloat.h"
#include "parameters/pfParameterPosition.h"
#include "parameters/pfParameters.h"
#include "support/TraceFile.h"

namespace mv::test {

namespace {

namespace fs = std::filesystem;

constexpr uid_t kNobody = 65534;

// The superuser may write everything, so as one the tests turn into somebody else for a while.
class Unprivileged {
public:
    Unprivileged() : user_(geteuid()) {
        if (user_ == 0 && seteuid(kNobody) != 0) {
            ADD_FAILURE() << "cannot become an ordinary user";
        }
    }
    ~Unprivileged() {
        if (user_ == 0 && seteuid(0) != 0) {
            ADD_FAILURE() << "cannot become the superuser again";
        }
    }
    Unprivileged(const Unprivileged&) = delete;
    Unprivileged& operator=(const Unprivileged&) = delete;

private:
    uid_t user_;
};

// A disk without room: no file grows beyond the limit.
class FullDisk {
public:
    explicit FullDisk(rlim_t limit) : handler_(signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit full = {limit, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &full);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &before_);
        signal(SIGXFSZ, handler_);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    void (*handler_)(int);
    rlimit before_{};
};

class FileReplacePosix : public ::testing::Test {
protected:
    FileReplacePosix() : folder(TestFolder() / "replace_posix"), path(folder / "looks.cfg") {
        fs::remove_all(folder);
        fs::create_directory(folder);
        fs::permissions(folder, fs::perms::all);
        strength.SetName("Strength");
        strength.Set(0.25);
        set.Add(&strength);
    }
    ~FileReplacePosix() override {
        std::error_code error;
        fs::permissions(folder, fs::perms::all, error);
        fs::remove_all(folder, error);
    }

    void Write(const std::string& content, mode_t mode = 0666) const {
        const Unprivileged user;
        std::ofstream(path, std::ios::binary) << content;
        chmod(path.c_str(), mode);
    }
    std::string Read() const {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }
    mode_t Mode() const {
        struct stat status {};
        stat(path.c_str(), &status);
        return status.st_mode & mode_t{07777};
    }
    std::size_t FilesInFolder() const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
    }
    bool Save(const std::string& name) const {
        return set.SaveSettings(name, path.string(), "RadialBlur");
    }

    fs::path folder;
    fs::path path;
    pfParameterFloat strength;
    pfParameters set;
};

constexpr const char* kOnePreset = "FileOwner RadialBlur\n\nname one\nStrength 0.100000\n";
constexpr const char* kOneSaved = "FileOwner RadialBlur\n\nname one\nStrength 0.250000\n";
constexpr const char* kTwoSaved =
    "FileOwner RadialBlur\n\nname one\nStrength 0.100000\n\nname two\nStrength 0.250000\n";

}  // namespace

TEST_F(FileReplacePosix, KeepsThePermissions) {
    for (const mode_t mode : {0600u, 0644u, 0664u, 0666u, 0755u}) {
        Write("old", mode);
        const Unprivileged user;
        EXPECT_EQ(ReplaceWholeFile(path.string(), "tmp", "new"), FileReplacement::Done);
        EXPECT_EQ(Read(), "new");
        EXPECT_EQ(Mode(), mode);
    }
}

TEST_F(FileReplacePosix, ASuperuserKeepsTheOwner) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only the superuser can give a file to somebody";
    }
    Write("old");
    EXPECT_EQ(ReplaceWholeFile(path.string(), "tmp", "new"), FileReplacement::Done);
    struct stat status {};
    stat(path.c_str(), &status);
    EXPECT_EQ(status.st_uid, kNobody);
}

TEST_F(FileReplacePosix, FollowsALink) {
    fs::create_directory(folder / "real");
    fs::permissions(folder / "real", fs::perms::all);
    const fs::path target = folder / "real" / "target.cfg";
    std::ofstream(target) << "old";
    fs::create_symlink("real/target.cfg", path);
    EXPECT_EQ(ReplaceWholeFile(path.string(), "tmp", "new"), FileReplacement::Done);
    EXPECT_TRUE(fs::is_symlink(path));
    EXPECT_EQ(ReadTextFile(target), "new");
    EXPECT_EQ(FilesInFolder(), 2u);
}

TEST_F(FileReplacePosix, ALinkToNothingMakesWhatItNames) {
    fs::create_symlink("target.cfg", path);
    EXPECT_TRUE(Save("one"));
    EXPECT_TRUE(fs::is_symlink(path));
    EXPECT_EQ(ReadTextFile(folder / "target.cfg"), kOneSaved);
}

TEST_F(FileReplacePosix, AFileThatMayNotBeWrittenStays) {
    Write(kOnePreset, 0444);
    const TraceFile trace;
    // The log opens its file while it still may.
    WriteLog(kTrace, "before the rights change");
    const Unprivileged user;
    EXPECT_EQ(ReplaceWholeFile(path.string(), "tmp", "new"), FileReplacement::TargetNotWritable);
    // Meant as it is: the saves say that they did, and the deletion tells the log alone.
    EXPECT_TRUE(Save("one"));
    EXPECT_TRUE(Save("two"));
    EXPECT_TRUE(pfParameters::DeleteSettings("one", path.string()));
    EXPECT_NE(trace.Text().find("-**### WARNING ###**-: Could not open file for writing: '" +
                                path.string() + "'\n"),
              std::string::npos);
    EXPECT_EQ(Read(), kOnePreset);
    EXPECT_EQ(Mode(), mode_t{0444});
    EXPECT_EQ(FilesInFolder(), 1u);
}

TEST_F(FileReplacePosix, AFileThatMayNotBeReadCountsAsNewAndKeepsItsContent) {
    Write(kOnePreset, 0222);
    {
        const Unprivileged user;
        std::string owner = "RadialBlur";
        EXPECT_TRUE(pfParameters::IsSettingFileValid(path.string(), owner));
        EXPECT_FALSE(pfParameters::DeleteSettings("one", path.string()));
        EXPECT_TRUE(Save("two"));
    }
    chmod(path.c_str(), 0666);
    EXPECT_EQ(Read(),
              std::string(kOnePreset) + "FileOwner RadialBlur\n\nname two\nStrength 0.250000\n");
}

TEST_F(FileReplacePosix, AFolderThatTakesNoNewFilesStillTakesNewPresets) {
    Write(kOnePreset);
    chmod(folder.c_str(), 0555);
    const Unprivileged user;
    // An overwrite needs the temporary file, an addition does not.
    EXPECT_TRUE(Save("one"));
    EXPECT_EQ(Read(), kOnePreset);
    EXPECT_TRUE(Save("two"));
    EXPECT_EQ(Read(), kTwoSaved);
    EXPECT_FALSE(pfParameters::DeleteSettings("one", path.string()));
    EXPECT_EQ(Read(), kTwoSaved);
}

TEST_F(FileReplacePosix, AFullDiskLosesNothing) {
    Write(kOnePreset);
    const FullDisk disk(10);
    EXPECT_EQ(ReplaceWholeFile(path.string(), "tmp", "longer than ten bytes"),
              FileReplacement::TemporaryNotWritten);
    EXPECT_TRUE(Save("one"));
    EXPECT_EQ(Read(), kOnePreset);
    EXPECT_TRUE(Save("two"));
    EXPECT_EQ(Read(), kOnePreset);
    EXPECT_FALSE(pfParameters::DeleteSettings("one", path.string()));
    EXPECT_EQ(Read(), kOnePreset);
    EXPECT_FALSE(AppendToFile(path.string(), "more"));
    EXPECT_EQ(Read(), kOnePreset);
    EXPECT_EQ(FilesInFolder(), 1u);
}

TEST_F(FileReplacePosix, AFullDiskLeavesNoNewFileBehind) {
    const FullDisk disk(10);
    EXPECT_TRUE(Save("one"));
    EXPECT_FALSE(AppendToFile(path.string(), "longer than ten bytes"));
    EXPECT_EQ(FilesInFolder(), 0u);
}

TEST_F(FileReplacePosix, APipeInPlaceOfTheFileHoldsNobodyUp) {
    ASSERT_EQ(mkfifo(path.c_str(), 0666), 0);
    std::string read;
    EXPECT_EQ(ReadWholeFile(path.string(), read), FileRead::Failed);
    EXPECT_EQ(ReplaceWholeFile(path.string(), "tmp", "new"), FileReplacement::TargetNotWritable);
    EXPECT_FALSE(AppendToFile(path.string(), "new"));
    EXPECT_FALSE(Save("one"));
    EXPECT_EQ(FilesInFolder(), 1u);
}

TEST_F(FileReplacePosix, ALinkInPlaceOfTheTemporaryFileIsNotFollowed) {
    Write("old");
    std::ofstream(folder / "victim") << "precious";
    fs::create_symlink("victim", path.string() + "tmp");
    EXPECT_EQ(ReplaceWholeFile(path.string(), "tmp", "new"), FileReplacement::TemporaryNotOpened);
    EXPECT_EQ(ReadTextFile(folder / "victim"), "precious");
    EXPECT_EQ(Read(), "old");
}

TEST_F(FileReplacePosix, WaitsForAProcessThatIsWritingTheTemporaryFile) {
    Write("old");
    const std::string temporary = path.string() + "tmp";
    const pid_t child = fork();
    if (child == 0) {
        const int file = open(temporary.c_str(), O_WRONLY | O_CREAT, 0666);
        flock(file, LOCK_EX);
        const timespec pause = {0, 100000000};
        nanosleep(&pause, nullptr);
        rename(temporary.c_str(), path.c_str());
        _exit(0);
    }
    while (!fs::exists(temporary)) {
        usleep(1000);
    }
    EXPECT_EQ(ReplaceWholeFile(path.string(), "tmp", "new"), FileReplacement::Done);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(Read(), "new");
    EXPECT_EQ(FilesInFolder(), 1u);
}

TEST_F(FileReplacePosix, AProcessKilledWhileSavingLeavesTheOldFileOrTheNewOne) {
    // A block of some size, so that there is something to be cut in half.
    std::string filler = "\nname filler\n";
    for (int i = 0; i < 20000; ++i) {
        filler += "Unknown 1.000000\n";
    }
    const std::string present = kOnePreset + filler;
    const std::string saved =
        "FileOwner RadialBlur\n\nname one\nStrength 0.250000\n" + filler.substr(1);
    const std::string added = present + "\nname two\nStrength 0.250000\n";
    std::string deleted = "FileOwner RadialBlur\n" + filler;
    int unchanged = 0;
    const int rounds = std::getenv("RADIAL_BLUR_LONG") != nullptr ? 6000 : 60;
    for (int i = 0; i < rounds; ++i) {
        Write(present);
        const std::string& done = i % 3 == 0 ? saved : i % 3 == 1 ? added : deleted;
        const pid_t child = fork();
        if (child == 0) {
            if (i % 3 == 0) {
                Save("one");
            } else if (i % 3 == 1) {
                Save("two");
            } else {
                pfParameters::DeleteSettings("one", path.string());
            }
            _exit(0);
        }
        usleep(static_cast<useconds_t>(i % 60 * 100 + i / 60));
        kill(child, SIGKILL);
        int status = 0;
        waitpid(child, &status, 0);
        const std::string after = Read();
        ASSERT_TRUE(after == present || after == done) << i;
        unchanged += after == present ? 1 : 0;
    }
    // Some were killed too early; and what they left behind hinders nothing.
    EXPECT_GT(unchanged, 0);
    Write(present);
    EXPECT_TRUE(Save("one"));
    EXPECT_EQ(Read(), saved);
    EXPECT_EQ(FilesInFolder(), 1u);
}

TEST_F(FileReplacePosix, TwoProcessesThatSaveAtOnceLeaveAWholeFile) {
    Write(kOnePreset);
    pid_t children[2];
    for (pid_t& child : children) {
        child = fork();
        if (child == 0) {
            for (int i = 0; i < 100; ++i) {
                Save("one");
            }
            _exit(0);
        }
    }
    int looked = 0;
    for (int running = 2; running > 0; ++looked) {
        const std::string now = Read();
        EXPECT_TRUE(now == kOnePreset || now == kOneSaved) << now;
        int status = 0;
        while (running > 0 && waitpid(-1, &status, WNOHANG) > 0) {
            --running;
        }
    }
    EXPECT_GT(looked, 0);
    EXPECT_EQ(Read(), kOneSaved);
    EXPECT_EQ(FilesInFolder(), 1u);
}

}  // namespace mv::test
