#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace mv::test {

// A folder of its own for this process, removed at its end. It stands in for the user's home from
// before the first test on, so that no test reads or writes a log of the person who runs it.
const std::filesystem::path& TestFolder();

// What the module's log writes during a scope. The log keeps its file open once it has found it, so
// all of these look at one file, each from where it stood when the scope began.
class TraceFile {
public:
    TraceFile();

    // Everything written since the scope began, with plain line feeds.
    std::string Text() const;

private:
    std::size_t begin_ = 0;
};

// The whole file with plain line feeds; empty when there is none.
std::string ReadTextFile(const std::filesystem::path& path);

}  // namespace mv::test
