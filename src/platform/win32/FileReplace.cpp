#include "platform/FileReplace.h"

#include <windows.h>

#include <algorithm>
#include <memory>
#include <new>

namespace mv {

namespace {

// What is larger than this is no file of ours.
constexpr std::size_t kLargestFile = std::size_t{1} << 30;
constexpr DWORD kStep = DWORD{1} << 20;
constexpr DWORD kFirstReadStep = 4096;
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr int kMoveTries = 50;
constexpr DWORD kMovePause = 10;

class FileHandle {
public:
    FileHandle(const std::string& path, DWORD access, DWORD share, DWORD disposition,
               DWORD flags = FILE_ATTRIBUTE_NORMAL) noexcept
        : handle_(CreateFileA(path.c_str(), access, share, nullptr, disposition, flags, nullptr)) {}
    ~FileHandle() { Close(); }
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;

    HANDLE Get() const noexcept { return handle_; }
    bool IsOpen() const noexcept { return handle_ != INVALID_HANDLE_VALUE; }
    bool Close() noexcept {
        const bool done = IsOpen() && CloseHandle(handle_) != 0;
        handle_ = INVALID_HANDLE_VALUE;
        return done;
    }

private:
    HANDLE handle_;
};

bool IsMissing(DWORD error) noexcept {
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

bool WriteAll(HANDLE handle, std::string_view content) noexcept {
    while (!content.empty()) {
        const auto count = static_cast<DWORD>(std::min<std::size_t>(content.size(), kStep));
        DWORD written = 0;
        if (!WriteFile(handle, content.data(), count, &written, nullptr) || written == 0) {
            return false;
        }
        content.remove_prefix(written);
    }
    return FlushFileBuffers(handle) != 0;
}

std::string FollowLink(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_REPARSE_POINT)) {
        return path;
    }
    const FileHandle file(path, 0, kShareAll, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
    char target[1024];
    const DWORD length = file.IsOpen() ? GetFinalPathNameByHandleA(file.Get(), target,
                                                                   sizeof target, VOLUME_NAME_DOS)
                                       : 0;
    return length > 0 && length < sizeof target ? std::string(target, length) : path;
}

// Access rights and attributes go along as far as they can; the rights that the folder hands down
// stay marked as such.
void KeepPermissions(const std::string& target, const std::string& temporaryPath) noexcept {
    const DWORD attributes = GetFileAttributesA(target.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        return;
    }
    DWORD size = 0;
    GetFileSecurityA(target.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &size);
    const std::unique_ptr<char[]> block(new (std::nothrow) char[size + 1]);
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    if (size != 0 && block != nullptr &&
        GetFileSecurityA(target.c_str(), DACL_SECURITY_INFORMATION, block.get(), size, &size) &&
        GetSecurityDescriptorControl(block.get(), &control, &revision)) {
        if (control & SE_DACL_AUTO_INHERITED) {
            SetSecurityDescriptorControl(block.get(), SE_DACL_AUTO_INHERIT_REQ,
                                         SE_DACL_AUTO_INHERIT_REQ);
        }
        SetFileSecurityA(temporaryPath.c_str(), DACL_SECURITY_INFORMATION, block.get());
    }
    constexpr DWORD kKept =
        FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;
    SetFileAttributesA(temporaryPath.c_str(), FILE_ATTRIBUTE_ARCHIVE | (attributes & kKept));
}

// A virus scanner or another reader may hold the file for a moment.
bool MoveOver(const std::string& temporaryPath, const std::string& target) noexcept {
    for (int i = 0; i < kMoveTries; ++i) {
        if (MoveFileExA(temporaryPath.c_str(), target.c_str(),
                        MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
            return true;
        }
        const DWORD error = GetLastError();
        if (error != ERROR_SHARING_VIOLATION && error != ERROR_ACCESS_DENIED) {
            return false;
        }
        Sleep(kMovePause);
    }
    return false;
}

// A file that could not be rewritten in place is not to be replaced either.
bool IsWritableOrMissing(const std::string& target) noexcept {
    const FileHandle file(target, GENERIC_WRITE, kShareAll, OPEN_EXISTING);
    return file.IsOpen() ? GetFileType(file.Get()) == FILE_TYPE_DISK : IsMissing(GetLastError());
}

FileReplacement WriteAndMove(const std::string& target, const std::string& temporaryPath,
                             FileHandle& temporary, std::string_view content) noexcept {
    if (!IsWritableOrMissing(target)) {
        return FileReplacement::TargetNotWritable;
    }
    const bool written = WriteAll(temporary.Get(), content);
    if (!temporary.Close() || !written) {
        return FileReplacement::TemporaryNotWritten;
    }
    KeepPermissions(target, temporaryPath);
    return MoveOver(temporaryPath, target) ? FileReplacement::Done
                                           : FileReplacement::TargetNotReplaced;
}

FileReplacement Replace(const std::string& target, const std::string& temporaryPath,
                        std::string_view content) noexcept {
    // Not shared, so that a second process cannot write between; what a killed process left
    // behind is used again.
    FileHandle temporary(temporaryPath, GENERIC_WRITE, 0, CREATE_ALWAYS);
    if (!temporary.IsOpen()) {
        return FileReplacement::TemporaryNotOpened;
    }
    const FileReplacement result = WriteAndMove(target, temporaryPath, temporary, content);
    temporary.Close();
    if (result != FileReplacement::Done) {
        DeleteFileA(temporaryPath.c_str());
    }
    return result;
}

}  // namespace

FileRead ReadWholeFile(const std::string& path, std::string& content) noexcept {
    const FileHandle file(path, GENERIC_READ, kShareAll, OPEN_EXISTING);
    if (!file.IsOpen()) {
        return IsMissing(GetLastError()) ? FileRead::Missing : FileRead::NotOpened;
    }
    if (GetFileType(file.Get()) != FILE_TYPE_DISK) {
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
            const auto step =
                static_cast<DWORD>(std::clamp<std::size_t>(used, kFirstReadStep, kStep));
            content.resize(used + step);
            DWORD count = 0;
            const bool done = ReadFile(file.Get(), content.data() + used, step, &count, nullptr);
            content.resize(used + (done ? count : 0));
            if (!done) {
                return FileRead::Failed;
            }
            if (count == 0) {
                return FileRead::Done;
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
        return Replace(target, target + temporarySuffix, content);
    } catch (const std::bad_alloc&) {
        return FileReplacement::TemporaryNotOpened;
    }
}

bool AppendToFile(const std::string& path, std::string_view addition) noexcept {
    const bool isNew = GetFileAttributesA(path.c_str()) == INVALID_FILE_ATTRIBUTES;
    FileHandle file(path, GENERIC_WRITE, FILE_SHARE_READ, OPEN_ALWAYS);
    LARGE_INTEGER end;
    if (!file.IsOpen() || GetFileType(file.Get()) != FILE_TYPE_DISK ||
        !SetFilePointerEx(file.Get(), LARGE_INTEGER{}, &end, FILE_END)) {
        return false;
    }
    if (WriteAll(file.Get(), addition)) {
        return true;
    }
    if (SetFilePointerEx(file.Get(), end, nullptr, FILE_BEGIN)) {
        SetEndOfFile(file.Get());
    }
    file.Close();
    if (isNew) {
        DeleteFileA(path.c_str());
    }
    return false;
}

void RemoveFile(const std::string& path) noexcept {
    DeleteFileA(path.c_str());
}

}  // namespace mv
