#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "pictures/AtomicFile.h"

namespace mv::host {
namespace {

constexpr unsigned kAttempts = 1000;

std::string ReasonOf(int code) {
    switch (code) {
        case ENOSPC:
            return "the disk is full";
        case EDQUOT:
            return "the disk quota is used up";
        case EFBIG:
            return "the file would become larger than the system allows";
        case EACCES:
        case EPERM:
            return "the system does not let this program write there";
        case EROFS:
            return "the disk is read-only";
        case ENAMETOOLONG:
            return "the name is too long";
        case EIO:
            return "the disk reports an error";
        default:
            return "system error " + std::to_string(code);
    }
}

// The folder's entry is made lasting too. File systems that cannot do that are left alone.
void SyncFolder(const std::filesystem::path& file) {
    const std::filesystem::path folder = file.parent_path();
    const int descriptor =
        open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        fsync(descriptor);
        close(descriptor);
    }
}

}  // namespace

AtomicFile::~AtomicFile() {
    Discard();
}

void AtomicFile::Discard() {
    if (descriptor_ >= 0) {
        close(descriptor_);
        descriptor_ = -1;
    }
    if (!temporary_.empty()) {
        unlink(temporary_.c_str());
        temporary_.clear();
    }
}

bool AtomicFile::Open(const std::filesystem::path& target, std::string& why) {
    Discard();
    if (!ResolveTarget(target, target_, why) || !CreateTemporary(why)) {
        return false;
    }
    // A file that is replaced keeps its access rights.
    struct stat existing {};
    if (stat(target_.c_str(), &existing) == 0 &&
        fchmod(descriptor_, existing.st_mode & 0777) != 0) {
        why = ReasonOf(errno);
        Discard();
        return false;
    }
    return true;
}

bool AtomicFile::CreateTemporary(std::string& why) {
    const auto process = static_cast<unsigned long>(getpid());
    for (unsigned attempt = 0; attempt < kAttempts; ++attempt) {
        std::filesystem::path name = target_.parent_path() / TemporaryName(process, attempt);
        descriptor_ = open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor_ >= 0) {
            temporary_ = std::move(name);
            return true;
        }
        if (errno != EEXIST) {
            break;
        }
    }
    why = ReasonOf(errno);
    return false;
}

bool AtomicFile::Write(const void* data, std::size_t size) {
    const char* next = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t written = write(descriptor_, next, size);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            failure_ = written < 0 ? errno : ENOSPC;
            return false;
        }
        next += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

std::string AtomicFile::WriteFailure() const {
    return ReasonOf(failure_);
}

bool AtomicFile::Commit(std::string& why) {
    if (fsync(descriptor_) != 0) {
        why = ReasonOf(errno);
        return false;
    }
    const int descriptor = descriptor_;
    descriptor_ = -1;
    if (close(descriptor) != 0 || rename(temporary_.c_str(), target_.c_str()) != 0) {
        why = ReasonOf(errno);
        Discard();
        return false;
    }
    temporary_.clear();
    SyncFolder(target_);
    return true;
}

}  // namespace mv::host
