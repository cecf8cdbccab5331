#include "platform/VersionResource.h"

#include <windows.h>

#include <cstring>
#include <new>

namespace mv {

namespace {

// Finds a value inside the block; null when it is missing or shorter than `least` units.
const void* Find(const unsigned char* block, const char* key, unsigned least,
                 unsigned& length) noexcept {
    void* value = nullptr;
    UINT found = 0;
    if (block == nullptr || ::VerQueryValueA(block, key, &value, &found) == 0 || found < least) {
        return nullptr;
    }
    length = found;
    return value;
}

}  // namespace

VersionResource::Result VersionResource::ReadMainFile() noexcept {
    block_.reset();
    char path[4096] = {};
    const DWORD length = ::GetModuleFileNameA(nullptr, path, sizeof path);
    if (length == 0 || length >= sizeof path) {
        return Result::Unreadable;
    }
    DWORD ignored = 0;
    const DWORD size = ::GetFileVersionInfoSizeA(path, &ignored);
    if (size == 0) {
        return Result::Unreadable;
    }
    block_.reset(new (std::nothrow) unsigned char[size]());
    if (block_ == nullptr) {
        return Result::NoMemory;
    }
    if (::GetFileVersionInfoA(path, 0, size, block_.get()) == 0) {
        block_.reset();
        return Result::Unreadable;
    }
    return Result::Ok;
}

bool VersionResource::GetFixedInformation(FixedInformation& information) const noexcept {
    unsigned length = 0;
    const void* value = Find(block_.get(), "\\", sizeof(VS_FIXEDFILEINFO), length);
    if (value == nullptr) {
        return false;
    }
    VS_FIXEDFILEINFO fixed{};
    std::memcpy(&fixed, value, sizeof fixed);
    information.flagsMask = fixed.dwFileFlagsMask;
    information.flags = fixed.dwFileFlags;
    information.fileType = fixed.dwFileType;
    return true;
}

bool VersionResource::GetTranslation(std::uint32_t& translation) const noexcept {
    unsigned length = 0;
    WORD pair[2] = {};
    const void* value = Find(block_.get(), "\\VarFileInfo\\Translation", sizeof pair, length);
    if (value == nullptr) {
        return false;
    }
    std::memcpy(pair, value, sizeof pair);
    translation = (static_cast<std::uint32_t>(pair[0]) << 16) | pair[1];
    return true;
}

bool VersionResource::GetText(const char* key, std::string_view& text) const noexcept {
    unsigned length = 0;
    const void* value = Find(block_.get(), key, 1, length);
    if (value == nullptr) {
        return false;
    }
    // The length may or may not count the end mark.
    const auto* characters = static_cast<const char*>(value);
    const void* end = std::memchr(characters, 0, length);
    text = std::string_view(
        characters, end == nullptr
                        ? length
                        : static_cast<std::size_t>(static_cast<const char*>(end) - characters));
    return true;
}

}  // namespace mv
