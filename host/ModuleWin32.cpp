#include <windows.h>

#include <vector>

#include "Module.h"

namespace mv::host {
namespace {

std::string ReasonOf(DWORD error) {
    switch (error) {
        case ERROR_BAD_EXE_FORMAT:
            return "it is not a 64-bit Windows module";
        case ERROR_MOD_NOT_FOUND:
            return "a library that it needs is missing";
        case ERROR_ACCESS_DENIED:
            return "access to it is denied";
        default:
            return "Windows cannot load it (error " + std::to_string(error) + ")";
    }
}

}  // namespace

bool Module::Open(const std::filesystem::path& absolute, std::string& reason) {
    // No dialog about a broken module: this is a command line.
    const UINT before = SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
    const HMODULE library =
        LoadLibraryExW(absolute.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    const DWORD code = GetLastError();
    SetErrorMode(before);
    if (library == nullptr) {
        reason = ReasonOf(code);
        return false;
    }
    library_ = library;
    entryPoint_ = reinterpret_cast<hostapi::EntryPoint>(
        reinterpret_cast<void*>(GetProcAddress(library, "ENTRYPOINT")));
    return true;
}

void Module::Close() {
    FreeLibrary(static_cast<HMODULE>(library_));
}

const char* ModuleFileName() {
    return "radial_blur.8bf";
}

std::filesystem::path ExecutablePath() {
    std::vector<wchar_t> buffer(MAX_PATH);
    for (;;) {
        const DWORD length =
            GetModuleFileNameW(nullptr, buffer.data(), static_cast<DWORD>(buffer.size()));
        if (length == 0) {
            return {};
        }
        if (length < buffer.size()) {
            return std::filesystem::path(std::wstring(buffer.data(), length));
        }
        buffer.resize(buffer.size() * 2);
    }
}

}  // namespace mv::host
