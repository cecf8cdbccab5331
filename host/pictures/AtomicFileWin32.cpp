#include <windows.h>

#include <algorithm>

#include "pictures/AtomicFile.h"

namespace mv::host {
namespace {

constexpr unsigned kAttempts = 1000;
constexpr std::size_t kLargestWrite = std::size_t{1} << 26;

std::string ReasonOf(DWORD code) {
    switch (code) {
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
            return "the disk is full";
        case ERROR_ACCESS_DENIED:
            return "the system does not let this program write there";
        case ERROR_SHARING_VIOLATION:
            return "another program has it open";
        case ERROR_WRITE_PROTECT:
            return "the disk is read-only";
        case ERROR_FILENAME_EXCED_RANGE:
            return "the name is too long";
        default:
            return "system error " + std::to_string(code);
    }
}

}  // namespace

AtomicFile::~AtomicFile() {
    Discard();
}

void AtomicFile::Discard() {
    if (handle_ != nullptr) {
        CloseHandle(handle_);
        handle_ = nullptr;
    }
    if (!temporary_.empty()) {
        DeleteFileW(temporary_.c_str());
        temporary_.clear();
    }
}

bool AtomicFile::Open(const std::filesystem::path& target, std::string& why) {
    Discard();
    return ResolveTarget(target, target_, why) && CreateTemporary(why);
}

bool AtomicFile::CreateTemporary(std::string& why) {
    DWORD error = ERROR_FILE_EXISTS;
    for (unsigned attempt = 0; attempt < kAttempts; ++attempt) {
        std::filesystem::path name =
            target_.parent_path() / TemporaryName(GetCurrentProcessId(), attempt);
        const HANDLE handle = CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                          CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (handle != INVALID_HANDLE_VALUE) {
            handle_ = handle;
            temporary_ = std::move(name);
            return true;
        }
        error = GetLastError();
        if (error != ERROR_FILE_EXISTS && error != ERROR_ALREADY_EXISTS) {
            break;
        }
    }
    why = ReasonOf(error);
    return false;
}

bool AtomicFile::Write(const void* data, std::size_t size) {
    const char* next = static_cast<const char*>(data);
    while (size > 0) {
        const auto part = static_cast<DWORD>(std::min(size, kLargestWrite));
        DWORD written = 0;
        if (WriteFile(handle_, next, part, &written, nullptr) == 0 || written == 0) {
            failure_ = static_cast<int>(GetLastError());
            return false;
        }
        next += written;
        size -= written;
    }
    return true;
}

std::string AtomicFile::WriteFailure() const {
    return ReasonOf(static_cast<DWORD>(failure_));
}

bool AtomicFile::Commit(std::string& why) {
    if (FlushFileBuffers(handle_) == 0) {
        why = ReasonOf(GetLastError());
        return false;
    }
    CloseHandle(handle_);
    handle_ = nullptr;
    if (MoveFileExW(temporary_.c_str(), target_.c_str(),
                    MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == 0) {
        why = ReasonOf(GetLastError());
        Discard();
        return false;
    }
    temporary_.clear();
    return true;
}

}  // namespace mv::host
