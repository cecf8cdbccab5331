#include <windows.h>

#include <cctype>

#include "pictures/PictureFile.h"
#include "program/presets/SystemText.h"

namespace mv::host {
namespace {

std::optional<std::wstring> Widen(const std::string& text, UINT codePage) {
    const DWORD flags = codePage == CP_UTF8 ? MB_ERR_INVALID_CHARS : 0;
    const auto length = static_cast<int>(text.size());
    const int size = MultiByteToWideChar(codePage, flags, text.data(), length, nullptr, 0);
    if (size <= 0 && length > 0) {
        return {};
    }
    std::wstring result(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(codePage, flags, text.data(), length, result.data(), size);
    return result;
}

// Empty when a character would be lost or become another one.
std::optional<std::string> Narrow(const std::wstring& text, UINT codePage) {
    const auto length = static_cast<int>(text.size());
    const int size =
        WideCharToMultiByte(codePage, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(size > 0 ? size : 0), '\0');
    WideCharToMultiByte(codePage, 0, text.data(), length, result.data(), size, nullptr, nullptr);
    const std::optional<std::wstring> back = Widen(result, codePage);
    return back && *back == text ? std::optional(result) : std::nullopt;
}

std::wstring ShortName(const std::wstring& path) {
    wchar_t buffer[1024];
    const DWORD length = GetShortPathNameW(path.c_str(), buffer, 1024);
    return length > 0 && length < 1024 ? std::wstring(buffer, length) : path;
}

}  // namespace

// Where the name itself does not go, the short names of the folders, or of the file, may.
std::optional<std::string> ToSystemPath(const std::string& path, bool toWrite) {
    const std::filesystem::path wide = PathFromText(path);
    std::optional<std::string> result = Narrow(wide.native(), CP_ACP);
    if (!result && wide.has_parent_path()) {
        const std::filesystem::path folder = ShortName(wide.parent_path().native());
        result = Narrow((folder / wide.filename()).native(), CP_ACP);
    }
    if (!result && !toWrite) {
        result = Narrow(ShortName(wide.native()), CP_ACP);
    }
    return result;
}

std::string ToSystemText(const std::string& text) {
    const std::optional<std::wstring> wide = Widen(text, CP_UTF8);
    return wide ? Narrow(*wide, CP_ACP).value_or(text) : text;
}

std::string FromSystemText(const std::string& text) {
    if (Widen(text, CP_UTF8)) {
        return text;
    }
    const std::optional<std::wstring> wide = Widen(text, CP_ACP);
    return wide ? Narrow(*wide, CP_UTF8).value_or(text) : text;
}

bool BeginsWithDrive(const std::string& path) {
    return path.size() >= 2 && path[1] == ':' &&
           std::isalpha(static_cast<unsigned char>(path[0])) != 0;
}

}  // namespace mv::host
