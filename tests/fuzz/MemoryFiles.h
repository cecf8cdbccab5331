// Files that lie in memory, in place of the platform's: a target that reads and writes thousands of
// them a second waits for the system otherwise. How files are replaced on a disk has tests of its
// own.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/FileReplace.h"

namespace fuzzing {

// What a disk refuses.
struct DiskFaults {
    mv::FileReplacement replacement = mv::FileReplacement::Done;
    bool refusesReading = false;
    bool refusesAdding = false;
};

// All files of the process; one thread.
class MemoryFiles {
public:
    static MemoryFiles& Get();

    // Forgets every file but this one.
    void Restart(const std::string& path, std::string_view content, const DiskFaults& faults);
    const std::string* Find(std::string_view path) const;
    const DiskFaults& Faults() const { return faults_; }
    int Count() const { return static_cast<int>(files_.size()); }
    void Write(std::string_view path, std::string_view content);
    void Remove(std::string_view path);

private:
    struct File {
        std::string path;
        std::string content;
    };

    std::vector<File> files_;
    DiskFaults faults_;
};

}  // namespace fuzzing
