// The text functions against a second, plain version of them that reads with the C library, as far
// as that goes: where a token has no limit in length, and no byte is a NUL.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "parameters/PresetText.h"

namespace mv::test {

namespace {

class MemoryFile {
public:
    explicit MemoryFile(std::string content)
        : content_(std::move(content)), file_(fmemopen(content_.data(), content_.size(), "r")) {}
    ~MemoryFile() { fclose(file_); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    bool Token(char (&token)[64]) const { return fscanf(file_, "%63s", token) == 1; }
    long Position() const { return ftell(file_); }
    void Seek(long position) const { fseek(file_, position, SEEK_SET); }
    int Byte() const { return fgetc(file_); }

private:
    std::string content_;
    FILE* file_;
};

// Behind the preset's name, or -1.
long PlainFind(const MemoryFile& file, const char* name, long& head) {
    char token[64];
    for (;;) {
        head = file.Position();
        if (!file.Token(token)) {
            return -1;
        }
        if (strcmp(token, "name") != 0) {
            continue;
        }
        if (!file.Token(token)) {
            return -1;
        }
        if (strcmp(token, name) == 0) {
            return file.Position();
        }
    }
}

bool PlainNextBlock(const MemoryFile& file) {
    char token[64];
    while (file.Token(token)) {
        if (strcmp(token, "name") == 0) {
            return true;
        }
    }
    return false;
}

std::string PlainReplace(const std::string& text, const char* name, const std::string& lines) {
    const MemoryFile file(text);
    long head = 0;
    const long position = PlainFind(file, name, head);
    if (position < 0) {
        return "not found";
    }
    std::string result;
    file.Seek(0);
    for (long i = 0; i < position; ++i) {
        result.push_back(static_cast<char>(file.Byte()));
    }
    if (position > 1) {
        result.push_back('\n');
    }
    result += lines;
    if (PlainNextBlock(file)) {
        result += "name";
        for (int byte = file.Byte(); byte != EOF; byte = file.Byte()) {
            result.push_back(static_cast<char>(byte));
        }
    }
    return result;
}

std::string PlainRemove(const std::string& text, const char* name) {
    const MemoryFile file(text);
    long position = 0;
    if (PlainFind(file, name, position) < 0) {
        return "not found";
    }
    std::string result;
    file.Seek(0);
    for (long i = 0; i < position; ++i) {
        const auto byte = static_cast<signed char>(file.Byte());
        if (byte == EOF) {
            break;
        }
        result.push_back(static_cast<char>(byte));
    }
    if (position + 1 > 1) {
        result.push_back('\n');
    }
    file.Seek(position);
    char token[64];
    file.Token(token);
    file.Token(token);
    if (PlainNextBlock(file)) {
        result += "\nname";
        for (;;) {
            const auto byte = static_cast<signed char>(file.Byte());
            if (byte == EOF) {
                break;
            }
            result.push_back(static_cast<char>(byte));
        }
    }
    return result;
}

std::string RandomText(std::mt19937& random) {
    static const std::vector<std::string> kPieces = {"name",
                                                     "name",
                                                     "name",
                                                     "a",
                                                     "a",
                                                     "b",
                                                     "c",
                                                     "FileOwner",
                                                     "RadialBlur",
                                                     "Mode",
                                                     "1",
                                                     "0.5",
                                                     "\n",
                                                     "\n\n",
                                                     " ",
                                                     "\t",
                                                     "\r\n",
                                                     "\v",
                                                     "\f ",
                                                     "name a\nMode 1\n",
                                                     "\nname b\nOrigin 0.5 0.5\n",
                                                     "\xFF",
                                                     "\x1A",
                                                     "\xE4"};
    std::string text;
    const std::size_t count = 1 + random() % 40;
    for (std::size_t i = 0; i < count; ++i) {
        text += kPieces[random() % kPieces.size()];
        if (random() % 3 != 0) {
            text += random() % 2 == 0 ? " " : "\n";
        }
    }
    return text;
}

}  // namespace

TEST(PresetText, AgreesWithAPlainReaderOfTheCLibrary) {
    std::mt19937 random(20);
    int found = 0;
    for (int i = 0; i < 20000; ++i) {
        const std::string text = RandomText(random);
        for (const char* name : {"a", "b", "name"}) {
            std::string replaced = "not found";
            std::string removed = "not found";
            found += ReplacePreset(text, name, "Mode 2\n", replaced) ? 1 : 0;
            RemovePreset(text, name, removed);
            ASSERT_EQ(replaced, PlainReplace(text, name, "Mode 2\n")) << text;
            ASSERT_EQ(removed, PlainRemove(text, name)) << text;
        }
    }
    EXPECT_GT(found, 10000);
}

}  // namespace mv::test
