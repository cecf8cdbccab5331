// The built program as a child process.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace mv::host::test {

struct ProgramRun {
    int code = -1;  // 1000 + the signal's number when a signal ended it
    std::string out;
    std::string err;
};

struct RunOptions {
    std::string fake = {};                             // words for the fake module
    std::optional<std::filesystem::path> module = {};  // instead of the fake one; "" for none named
    std::optional<std::filesystem::path> program = {};
    std::filesystem::path folder = {};  // to run in; empty: that of the test
    std::uint64_t largestFile = 0;      // limit on file sizes, 0 for none (not on Windows)
    bool terminal = false;              // stderr is a terminal (not on Windows)
    bool closedOutput = false;          // stdout is a full disk (not on Windows)
    // Called again and again while the program runs; gives the number of a signal to send, or 0.
    // On Windows any number stands for Ctrl-C.
    std::function<int()> signal = {};
};

// Runs radial-blur with the arguments and, unless told otherwise, with the fake module.
ProgramRun RunRadialBlur(std::vector<std::string> arguments, const RunOptions& options = {});

std::filesystem::path BuiltProgram();
std::filesystem::path FakeModule();

// Platform part: `words` are the program and its arguments.
ProgramRun RunChild(const std::vector<std::string>& words, const RunOptions& options);
void SetFakeWords(const std::string& words);
// Whether a byte of this process can be read, found out without reading it here.
bool IsReadable(const void* address);

}  // namespace mv::host::test
