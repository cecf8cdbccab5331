// A file that appears whole or not at all.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

namespace mv::host {

// Writes to a temporary file in the target's folder; Commit puts it in the target's place in one
// step, and without Commit it vanishes with the object. Owned by the one writer of the file.
class AtomicFile {
public:
    AtomicFile() = default;
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;
    ~AtomicFile();

    // False with the reason when the target's folder is missing or cannot be written to, or when
    // the target is there but no ordinary file. A link is followed: what it names is replaced.
    bool Open(const std::filesystem::path& target, std::string& why);
    bool Write(const void* data, std::size_t size);
    // Whether a Write failed, and why.
    bool HasFailed() const { return failure_ != 0; }
    std::string WriteFailure() const;
    // Everything is on the disk before the target changes.
    bool Commit(std::string& why);

#ifndef _WIN32
    int Descriptor() const {
        return descriptor_;
    }
#endif

private:
    void Discard();
    bool CreateTemporary(std::string& why);

    std::filesystem::path target_;
    std::filesystem::path temporary_;
    int failure_ = 0;
#ifdef _WIN32
    void* handle_ = nullptr;
#else
    int descriptor_ = -1;
#endif
};

// Checks the target as Open does, and gives the path behind links. Shared by the platforms.
bool ResolveTarget(const std::filesystem::path& target, std::filesystem::path& resolved,
                   std::string& why);
// A name for a temporary file that is short whatever the target's name is.
std::string TemporaryName(unsigned long process, unsigned attempt);

}  // namespace mv::host
