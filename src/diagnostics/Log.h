#pragma once

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <locale>
#include <ostream>
#include <sstream>
#include <string>

#include "platform/DebugConsole.h"
#include "platform/RecursiveLock.h"

namespace mv {

inline constexpr int kTrace = 1;
inline constexpr int kWarning = 2;
inline constexpr int kError = 3;

// What the caller of a warning or an error writes in front of its text.
inline constexpr const char* kWarningPrefix = "-**### WARNING ###**-: ";
inline constexpr const char* kErrorPrefix = "-**###  ERROR  ###**-: ";

// The trace. It goes to a text file, and on Windows to a console window beside it, if that file
// exists already: the file is looked for at every message until it is found, and never created.
// One object for the module, given by GetLog(); any thread may write. Nothing here throws: a
// message for which there is no memory is lost.
class Log {
public:
    Log() noexcept;
    ~Log();
    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;

    // Only the first line of the text gets the indentation.
    void Write(const std::stringstream& stream, int messageLevel) noexcept;
    // Messages below the threshold are dropped.
    void SetLevel(int threshold) noexcept;
    void EnableConsole() noexcept;
    void DisableConsole() noexcept;

    // The depth of the call trace. Changed without the lock.
    void Indent() noexcept { indentation.fetch_add(1, std::memory_order_relaxed); }
    void Outdent() noexcept { indentation.fetch_sub(1, std::memory_order_relaxed); }

    static std::string GetLogPath();
    static std::string GetHomePath();

private:
    void Refresh() noexcept;
    void OpenFile();

    std::string path;
    std::FILE* file = nullptr;
    bool consoleWanted = false;
    int level = kTrace;
    std::atomic<int> indentation{0};
    RecursiveLock lock_;
    DebugConsole console;
};

// The module's log. An object with static storage whose destructor may log calls this in its
// constructor, so that the log outlives it.
Log& GetLog() noexcept;

// Adds one level of indentation for the length of a scope.
class LogScope {
public:
    LogScope() noexcept { GetLog().Indent(); }
    ~LogScope() { GetLog().Outdent(); }
    LogScope(const LogScope&) = delete;
    LogScope& operator=(const LogScope&) = delete;
};

// A pointer as 16 upper-case hexadecimal digits; the caller writes the "0x" in front.
struct LogPointer {
    const void* pointer;
};

inline std::ostream& operator<<(std::ostream& stream, LogPointer value) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    char text[17] = {};
    auto rest = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(value.pointer));
    for (int i = 15; i >= 0; --i, rest >>= 4) {
        text[i] = kDigits[rest & 15u];
    }
    return stream << text;
}

// Writes the parts and a line feed as one message. Numbers look as in the classic locale, whatever
// the process has set.
template <class... Parts>
void WriteLog(int messageLevel, const Parts&... parts) noexcept {
    try {
        std::stringstream stream;
        stream.imbue(std::locale::classic());
        (stream << ... << parts) << '\n';
        // A stream that ran out of memory holds a torn line.
        if (stream) {
            GetLog().Write(stream, messageLevel);
        }
    } catch (...) {
    }
}

}  // namespace mv
