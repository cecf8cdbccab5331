#include "support/ModuleImports.h"

#include <cstring>

namespace mv::windowstest {

namespace {

unsigned processors = 0;

void WINAPI TellProcessors(SYSTEM_INFO* info) {
    GetSystemInfo(info);
    info->dwNumberOfProcessors = processors;
}

template <class Type>
Type* At(HMODULE module, std::size_t offset) {
    return reinterpret_cast<Type*>(reinterpret_cast<unsigned char*>(module) + offset);
}

// The place of an imported function's address; null when it is not imported by name.
ULONGLONG* FindImport(HMODULE module, const char* name) {
    const auto* const dos = At<IMAGE_DOS_HEADER>(module, 0);
    const auto* const headers =
        At<IMAGE_NT_HEADERS64>(module, static_cast<std::size_t>(dos->e_lfanew));
    const DWORD table =
        headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (auto* library = At<IMAGE_IMPORT_DESCRIPTOR>(module, table); library->Name != 0;
         ++library) {
        const auto* names = At<ULONGLONG>(module, library->OriginalFirstThunk);
        auto* addresses = At<ULONGLONG>(module, library->FirstThunk);
        for (; *names != 0; ++names, ++addresses) {
            const bool isByNumber = (*names & IMAGE_ORDINAL_FLAG64) != 0;
            if (!isByNumber &&
                std::strcmp(At<char>(module, static_cast<std::size_t>(*names) + sizeof(WORD)),
                            name) == 0) {
                return addresses;
            }
        }
    }
    return nullptr;
}

}  // namespace

bool PretendProcessors(HMODULE module, unsigned count) {
    ULONGLONG* const place = FindImport(module, "GetSystemInfo");
    DWORD protection = 0;
    if (place == nullptr || !VirtualProtect(place, sizeof *place, PAGE_READWRITE, &protection)) {
        return false;
    }
    processors = count;
    *place = reinterpret_cast<ULONGLONG>(&TellProcessors);
    return VirtualProtect(place, sizeof *place, protection, &protection) != FALSE;
}

}  // namespace mv::windowstest
