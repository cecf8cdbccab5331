#include <windows.h>
// Behind windows.h, on which it depends.
#include <shellapi.h>

#include <algorithm>

#include "program/Run.h"

namespace {

std::string ToUtf8(const wchar_t* text) {
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(size > 0 ? size : 1), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, result.data(), size, nullptr, nullptr);
    result.pop_back();  // the zero at the end
    return result;
}

// The files behind '*' and '?' in a word's last part, sorted: here the shell does not put them in
// the word's place. A word that stands for nothing stays, so that it is named as missing.
std::vector<std::wstring> Expanded(const std::wstring& word) {
    const std::size_t name = word.find_last_of(L"\\/:") + 1;  // 0 where there is no folder
    std::vector<std::wstring> files;
    if (word.find_first_of(L"*?", name) != std::wstring::npos) {
        WIN32_FIND_DATAW found{};
        const HANDLE search = FindFirstFileW(word.c_str(), &found);
        for (BOOL more = search != INVALID_HANDLE_VALUE; more != 0;
             more = FindNextFileW(search, &found)) {
            if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
                files.push_back(word.substr(0, name) + found.cFileName);
            }
        }
        if (search != INVALID_HANDLE_VALUE) {
            FindClose(search);
        }
        std::sort(files.begin(), files.end());
    }
    return files.empty() ? std::vector<std::wstring>{word} : files;
}

}  // namespace

// The words come from the wide command line: main's own are in the console's code page.
int main() {
    int count = 0;
    wchar_t** const words = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 1; words != nullptr && i < count; ++i) {
        for (const std::wstring& word : Expanded(words[i])) {
            arguments.push_back(ToUtf8(word.c_str()));
        }
    }
    LocalFree(words);
    return mv::host::RunProgram(std::move(arguments));
}
