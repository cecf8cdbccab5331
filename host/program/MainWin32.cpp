#include <windows.h>
// Behind windows.h, on which it depends.
#include <shellapi.h>

#include "program/Run.h"

namespace {

std::string ToUtf8(const wchar_t* text) {
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(size > 0 ? size : 1), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, result.data(), size, nullptr, nullptr);
    result.pop_back();  // the zero at the end
    return result;
}

}  // namespace

// The words come from the wide command line: main's own are in the console's code page.
int main() {
    int count = 0;
    wchar_t** const words = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 1; words != nullptr && i < count; ++i) {
        arguments.push_back(ToUtf8(words[i]));
    }
    LocalFree(words);
    return mv::host::RunProgram(std::move(arguments));
}
