#include "platform/FileReplace.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "support/AllocationFault.h"
#include "support/TraceFile.h"

namespace mv::test {

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

class FileReplace : public ::testing::Test {
protected:
    FileReplace() : folder(TestFolder() / "replace"), path((folder / "a.txt").string()) {
        fs::remove_all(folder);
        fs::create_directory(folder);
    }
    ~FileReplace() override {
        std::error_code error;
        fs::remove_all(folder, error);
    }

    void Write(const std::string& content) const {
        std::ofstream(path, std::ios::binary) << content;
    }
    std::string Read() const {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }
    std::size_t FilesInFolder() const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
    }

    fs::path folder;
    std::string path;
};

}  // namespace

TEST_F(FileReplace, ReadsEveryByte) {
    const std::string content = "a\r\nb\0\xFF\x1A"s + std::string(3000000, 'x') + "\n";
    Write(content);
    std::string read = "before";
    EXPECT_EQ(ReadWholeFile(path, read), FileRead::Done);
    EXPECT_TRUE(read == content);
}

TEST_F(FileReplace, TellsAMissingFileFromOneThatCannotBeRead) {
    std::string read;
    EXPECT_EQ(ReadWholeFile(path, read), FileRead::Missing);
    EXPECT_EQ(ReadWholeFile((folder / "no" / "a.txt").string(), read), FileRead::Missing);
    EXPECT_NE(ReadWholeFile(folder.string(), read), FileRead::Done);
    EXPECT_NE(ReadWholeFile(folder.string(), read), FileRead::Missing);
}

TEST_F(FileReplace, AnEmptyFileIsRead) {
    Write("");
    std::string read = "before";
    EXPECT_EQ(ReadWholeFile(path, read), FileRead::Done);
    EXPECT_EQ(read, "");
}

TEST_F(FileReplace, ReadingFailsWithoutMemory) {
    Write("content");
    std::string read;
    const AllocationDrought drought;
    EXPECT_EQ(ReadWholeFile(path, read), FileRead::Failed);
}

TEST_F(FileReplace, CreatesAndReplaces) {
    EXPECT_EQ(ReplaceWholeFile(path, "tmp", "one\n"), FileReplacement::Done);
    EXPECT_EQ(Read(), "one\n");
    EXPECT_EQ(ReplaceWholeFile(path, "tmp", "2\0\r\n"s), FileReplacement::Done);
    EXPECT_EQ(Read(), "2\0\r\n"s);
    EXPECT_EQ(ReplaceWholeFile(path, "tmp", ""), FileReplacement::Done);
    EXPECT_EQ(Read(), "");
    EXPECT_EQ(FilesInFolder(), 1u);
}

TEST_F(FileReplace, UsesALeftoverTemporaryFileAgain) {
    Write("old");
    std::ofstream(path + "tmp") << std::string(10000, 'x');
    EXPECT_EQ(ReplaceWholeFile(path, "tmp", "new"), FileReplacement::Done);
    EXPECT_EQ(Read(), "new");
    EXPECT_EQ(FilesInFolder(), 1u);
}

TEST_F(FileReplace, SaysThatTheTemporaryFileCannotBeOpened) {
    Write("old");
    fs::create_directory(path + "tmp");
    EXPECT_EQ(ReplaceWholeFile(path, "tmp", "new"), FileReplacement::TemporaryNotOpened);
    EXPECT_EQ(ReplaceWholeFile((folder / "no" / "a.txt").string(), "tmp", "new"),
              FileReplacement::TemporaryNotOpened);
    EXPECT_EQ(Read(), "old");
    EXPECT_TRUE(fs::is_directory(path + "tmp"));
}

TEST_F(FileReplace, DoesNotReplaceAFolder) {
    fs::create_directory(path);
    EXPECT_EQ(ReplaceWholeFile(path, "tmp", "new"), FileReplacement::TargetNotWritable);
    EXPECT_TRUE(fs::is_directory(path));
    EXPECT_EQ(FilesInFolder(), 1u);
}

TEST_F(FileReplace, AppendsAndCreates) {
    EXPECT_TRUE(AppendToFile(path, "one\n"));
    EXPECT_TRUE(AppendToFile(path, "two\n"));
    EXPECT_EQ(Read(), "one\ntwo\n");
    EXPECT_FALSE(AppendToFile(folder.string(), "x"));
    EXPECT_FALSE(AppendToFile((folder / "no" / "a.txt").string(), "x"));
    RemoveFile(path);
    EXPECT_FALSE(fs::exists(path));
    RemoveFile(path);
}

}  // namespace mv::test
