#include <gtest/gtest.h>
#include <windows.h>

#include <cstdio>
#include <string>

namespace {

// Runs one of the made hosts and gives what it prints, without the line end.
std::string Describe(const std::string& host) {
    char path[4096] = {};
    ::GetModuleFileNameA(nullptr, path, sizeof path);
    const std::string folder = std::string(path).substr(0, std::string(path).find_last_of("\\/"));
    const std::string command = "\"" + folder + "\\hosts\\host_" + host + ".exe\"";
    std::string text;
    if (std::FILE* output = _popen(command.c_str(), "r")) {
        char line[256] = {};
        if (std::fgets(line, sizeof line, output) != nullptr) {
            text = line;
        }
        _pclose(output);
    }
    return text.substr(0, text.find_first_of("\r\n"));
}

// The signatures are the four characters as hexadecimal digits.
TEST(HostProgram, EachNameIsFoundInTheVersionResource) {
    EXPECT_EQ(Describe("coreldrw"), "0 43647277 8.0 stage 3 build 11");
    EXPECT_EQ(Describe("photopnt"), "0 4d70726e 8.0 stage 3 build 11");
    EXPECT_EQ(Describe("debabelizer"), "0 4241424c 4.5 stage 3 build 11");
    EXPECT_EQ(Describe("aftereffects"), "0 46585443 4.1 stage 3 build 11");
    EXPECT_EQ(Describe("illustrator"), "0 41525435 8.0 stage 3 build 11");
    EXPECT_EQ(Describe("pm5"), "0 414c4435 5.0 stage 3 build 11");
    EXPECT_EQ(Describe("pm6"), "0 414c4436 6.0 stage 3 build 11");
    EXPECT_EQ(Describe("photodeluxe"), "0 50485554 3.0 stage 3 build 11");
    EXPECT_EQ(Describe("photoshp"), "0 3842494d 5.0 stage 3 build 11");
    EXPECT_EQ(Describe("premiere"), "0 50724d72 5.1 stage 3 build 11");
}

// The shorter name stands first in the list. This is meant.
TEST(HostProgram, LongerNameIsTakenForTheShorterOne) {
    EXPECT_EQ(Describe("pm65"), "0 414c4436 6.5 stage 2 build 11");
}

TEST(HostProgram, UnknownNameLeavesTheRecordsSignature) {
    EXPECT_EQ(Describe("unknown"), "0 74657374 3.7 stage 3 build 11");
}

TEST(HostProgram, WithoutAVersionResourceIsDescribedAsNothing) {
    EXPECT_EQ(Describe("without_version"), "0 00000000 0.0 stage 0 build 0");
}

TEST(HostProgram, TwoDigitMinorIsMinorAndStage) {
    EXPECT_EQ(Describe("two_digit_minor"), "0 3842494d 6.5 stage 2 build 11");
    EXPECT_EQ(Describe("minor_ten"), "0 3842494d 6.10 stage 3 build 11");
}

TEST(HostProgram, FlagsAndTypeAreThoseOfTheFile) {
    EXPECT_EQ(Describe("debug"), "0 3842494d 6.0 stage 0 build 11");
    EXPECT_EQ(Describe("prerelease"), "0 3842494d 6.0 stage 2 build 11");
    EXPECT_EQ(Describe("library_type"), "0 3842494d 6.0 stage 3 build 12");
    EXPECT_EQ(Describe("other_type"), "0 3842494d 6.0 stage 3 build 10");
}

TEST(HostProgram, TextsAreReadInTheLanguageOfTheFile) {
    EXPECT_EQ(Describe("german"), "0 3842494d 6.0 stage 3 build 11");
    EXPECT_EQ(Describe("default_language"), "0 3842494d 6.0 stage 3 build 11");
}

}  // namespace
