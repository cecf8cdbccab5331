// Whole files: read in one piece, and replaced in one step. Paths go to the system as they stand.
#pragma once

#include <string>
#include <string_view>

namespace mv {

// Whether the system's text files end their lines with a carriage return and a line feed.
#ifdef _WIN32
inline constexpr bool kTextHasCarriageReturns = true;
#else
inline constexpr bool kTextHasCarriageReturns = false;
#endif

enum class FileRead {
    Done,
    Missing,    // there is nothing under this path
    NotOpened,  // there is something, but it cannot be opened
    Failed,     // it was opened, but is no file that could be read to its end
};

// The bytes as they are.
FileRead ReadWholeFile(const std::string& path, std::string& content) noexcept;

enum class FileReplacement {
    Done,
    TemporaryNotOpened,
    TemporaryNotWritten,  // a full disk, for example
    TargetNotWritable,
    TargetNotReplaced,  // it could be written, but its name not be given to another file
};

// Gives the file new content, so that it holds the old or the new one at every moment, whatever
// becomes of this process: all of it goes to a temporary file, the path with the suffix, which
// then takes the file's place and permissions. A link is followed to what it names. After a
// failure the file is as it was and the temporary one is gone.
FileReplacement ReplaceWholeFile(const std::string& path, const char* temporarySuffix,
                                 std::string_view content) noexcept;

// For what cannot be replaced: adds to the end of a file, which is made when there is none. False
// when not all of it could be written, and then none of it was.
bool AppendToFile(const std::string& path, std::string_view addition) noexcept;

void RemoveFile(const std::string& path) noexcept;

}  // namespace mv
