#include "MemoryFiles.h"

#include <algorithm>
#include <new>

namespace fuzzing {

MemoryFiles& MemoryFiles::Get() {
    static MemoryFiles files;
    return files;
}

void MemoryFiles::Restart(const std::string& path, std::string_view content,
                          const DiskFaults& faults) {
    files_.clear();
    files_.push_back({path, std::string(content)});
    faults_ = faults;
}

const std::string* MemoryFiles::Find(std::string_view path) const {
    const auto file = std::find_if(files_.begin(), files_.end(),
                                   [path](const File& known) { return known.path == path; });
    return file == files_.end() ? nullptr : &file->content;
}

void MemoryFiles::Write(std::string_view path, std::string_view content) {
    Remove(path);
    files_.push_back({std::string(path), std::string(content)});
}

void MemoryFiles::Remove(std::string_view path) {
    std::erase_if(files_, [path](const File& known) { return known.path == path; });
}

}  // namespace fuzzing

// In place of the platform's, with the same promises.
namespace mv {

using fuzzing::MemoryFiles;

FileRead ReadWholeFile(const std::string& path, std::string& content) noexcept {
    content.clear();
    const std::string* const file = MemoryFiles::Get().Find(path);
    if (file == nullptr) {
        return FileRead::Missing;
    }
    if (MemoryFiles::Get().Faults().refusesReading) {
        return FileRead::NotOpened;
    }
    content = *file;
    return FileRead::Done;
}

FileReplacement ReplaceWholeFile(const std::string& path, const char*,
                                 std::string_view content) noexcept {
    const FileReplacement fault = MemoryFiles::Get().Faults().replacement;
    if (fault == FileReplacement::Done) {
        MemoryFiles::Get().Write(path, content);
    }
    return fault;
}

bool AppendToFile(const std::string& path, std::string_view addition) noexcept {
    if (MemoryFiles::Get().Faults().refusesAdding) {
        return false;
    }
    const std::string* const file = MemoryFiles::Get().Find(path);
    const std::string before = file == nullptr ? std::string() : *file;
    MemoryFiles::Get().Write(path, before + std::string(addition));
    return true;
}

void RemoveFile(const std::string& path) noexcept {
    MemoryFiles::Get().Remove(path);
}

}  // namespace mv
