#include "platform/FileReplace.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <new>

namespace mv {

namespace {

// What is larger than this is no file of ours.
constexpr std::size_t kLargestFile = std::size_t{1} << 30;
constexpr std::size_t kFirstReadStep = 4096;
constexpr std::size_t kReadStep = std::size_t{1} << 20;
constexpr int kLockTries = 1000;
constexpr mode_t kNewFileMode = 0666;

class Descriptor {
public:
    explicit Descriptor(int number) noexcept : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) {
            close(number_);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Get() const noexcept { return number_; }
    bool IsOpen() const noexcept { return number_ >= 0; }
    int Release() noexcept {
        const int number = number_;
        number_ = -1;
        return number;
    }

private:
    int number_;
};

// O_NONBLOCK keeps a pipe under the path from holding the process up; files do not care.
int OpenExisting(const char* path, int flags) noexcept {
    return open(path, flags | O_NONBLOCK | O_CLOEXEC);
}

bool IsFile(int number, struct stat& status) noexcept {
    return fstat(number, &status) == 0 && S_ISREG(status.st_mode);
}

bool WriteAll(int number, std::string_view content) noexcept {
    while (!content.empty()) {
        const ssize_t written = write(number, content.data(), content.size());
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        content.remove_prefix(static_cast<std::size_t>(written));
    }
    // Some file systems have no such call and say so.
    return fsync(number) == 0 || errno == EINVAL || errno == ENOSYS;
}

// Whether the path still names the open file: another process may have moved or removed it.
bool IsNamedBy(int number, const char* path) noexcept {
    struct stat opened;
    struct stat named;
    return IsFile(number, opened) && lstat(path, &named) == 0 && opened.st_ino == named.st_ino &&
           opened.st_dev == named.st_dev;
}

// Opens the temporary file, empty, and keeps other processes from writing to it until it is
// closed. A file that a killed process left behind is used again.
int OpenTemporary(const char* path) noexcept {
    for (int i = 0; i < kLockTries; ++i) {
        Descriptor file(
            open(path, O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, kNewFileMode));
        struct stat status;
        if (!file.IsOpen() || !IsFile(file.Get(), status)) {
            return -1;
        }
        const bool taken = flock(file.Get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
        if (!taken && IsNamedBy(file.Get(), path)) {
            return ftruncate(file.Get(), 0) == 0 ? file.Release() : -1;
        }
        const timespec pause = {0, 1000000};
        nanosleep(&pause, nullptr);
    }
    return -1;
}

// A file that could not be rewritten in place is not to be replaced either.
bool TakeTargetsPlaceAllowed(const char* target, int temporary) noexcept {
    const Descriptor file(OpenExisting(target, O_WRONLY));
    if (!file.IsOpen()) {
        return errno == ENOENT;
    }
    struct stat status;
    if (!IsFile(file.Get(), status)) {
        return false;
    }
    // Only a privileged user can give a file away; others keep the group at least, if they may.
    const bool ownerKept = fchown(temporary, status.st_uid, status.st_gid) == 0 ||
                           fchown(temporary, static_cast<uid_t>(-1), status.st_gid) == 0;
    static_cast<void>(ownerKept);
    return fchmod(temporary, status.st_mode & mode_t{0777}) == 0 || errno == EPERM ||
           errno == ENOTSUP;
}

// The path of the file itself; empty for a link to nothing.
std::string FollowLink(const std::string& path) {
    struct stat status;
    if (lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) {
        return path;
    }
    const std::unique_ptr<char, decltype(&std::free)> target(realpath(path.c_str(), nullptr),
                                                             &std::free);
    return target != nullptr ? std::string(target.get()) : std::string();
}

FileReplacement Replace(const std::string& target, const std::string& temporaryPath,
                        std::string_view content) noexcept {
    const Descriptor temporary(OpenTemporary(temporaryPath.c_str()));
    if (!temporary.IsOpen()) {
        return FileReplacement::TemporaryNotOpened;
    }
    FileReplacement result = FileReplacement::Done;
    if (!TakeTargetsPlaceAllowed(target.c_str(), temporary.Get())) {
        result = FileReplacement::TargetNotWritable;
    } else if (!WriteAll(temporary.Get(), content)) {
        result = FileReplacement::TemporaryNotWritten;
    } else if (rename(temporaryPath.c_str(), target.c_str()) != 0) {
        result = FileReplacement::TargetNotReplaced;
    }
    // Closed, and so unlocked, only after the file has got its name or lost it.
    if (result != FileReplacement::Done) {
        unlink(temporaryPath.c_str());
    }
    return result;
}

}  // namespace

FileRead ReadWholeFile(const std::string& path, std::string& content) noexcept {
    const Descriptor file(OpenExisting(path.c_str(), O_RDONLY));
    if (!file.IsOpen()) {
        return errno == ENOENT || errno == ENOTDIR ? FileRead::Missing : FileRead::NotOpened;
    }
    struct stat status;
    if (!IsFile(file.Get(), status)) {
        return FileRead::Failed;
    }
    try {
        content.clear();
        for (;;) {
            const std::size_t used = content.size();
            if (used > kLargestFile) {
                return FileRead::Failed;
            }
            // Small files are the usual ones; a large one is read in ever larger pieces.
            const std::size_t step = std::clamp(used, kFirstReadStep, kReadStep);
            content.resize(used + step);
            const ssize_t count = read(file.Get(), content.data() + used, step);
            content.resize(used + (count > 0 ? static_cast<std::size_t>(count) : 0));
            if (count == 0) {
                return FileRead::Done;
            }
            if (count < 0 && errno != EINTR) {
                return FileRead::Failed;
            }
        }
    } catch (const std::bad_alloc&) {
        return FileRead::Failed;
    }
}

FileReplacement ReplaceWholeFile(const std::string& path, const char* temporarySuffix,
                                 std::string_view content) noexcept {
    try {
        const std::string target = FollowLink(path);
        return target.empty() ? FileReplacement::TargetNotReplaced
                              : Replace(target, target + temporarySuffix, content);
    } catch (const std::bad_alloc&) {
        return FileReplacement::TemporaryNotOpened;
    }
}

bool AppendToFile(const std::string& path, std::string_view addition) noexcept {
    struct stat status;
    const bool isNew = lstat(path.c_str(), &status) != 0 && errno == ENOENT;
    const Descriptor file(
        open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_CLOEXEC, kNewFileMode));
    if (!file.IsOpen() || !IsFile(file.Get(), status)) {
        return false;
    }
    if (WriteAll(file.Get(), addition)) {
        return true;
    }
    if (ftruncate(file.Get(), status.st_size) == 0 && isNew) {
        unlink(path.c_str());
    }
    return false;
}

void RemoveFile(const std::string& path) noexcept {
    unlink(path.c_str());
}

}  // namespace mv
