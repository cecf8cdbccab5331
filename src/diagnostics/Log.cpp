#include "diagnostics/Log.h"

#include <mutex>

#include "platform/Environment.h"

namespace mv {

namespace {

constexpr const char* kLogFileName = "morvenhale/radial_blur_ps.log";
constexpr int kIndentationWidth = 4;

}  // namespace

Log& GetLog() noexcept {
    static Log log;
    return log;
}

Log::Log() noexcept {
    Refresh();
}

Log::~Log() {
    console.Close();
    if (file != nullptr) {
        std::fclose(file);
    }
}

std::string Log::GetHomePath() {
    std::string home;
    if (!ReadEnvironment("HOME", home) && !ReadEnvironment("HOMEPATH", home)) {
        return std::string();
    }
    std::string drive;
    ReadEnvironment("HOMEDRIVE", drive);
    return drive + home + "/";
}

std::string Log::GetLogPath() {
    return GetHomePath() + kLogFileName;
}

void Log::OpenFile() {
    if (path.empty()) {
        path = GetLogPath();
    }
    // Opening for appending would create the file, and its existence is the user's switch.
    std::FILE* probe = std::fopen(path.c_str(), "r");
    if (probe == nullptr) {
        return;
    }
    std::fclose(probe);
    file = std::fopen(path.c_str(), "a+");
}

void Log::Refresh() noexcept {
    try {
        if (file == nullptr) {
            OpenFile();
        }
    } catch (...) {
        // No memory for the path: tried again at the next message.
    }
    if (file != nullptr) {
        consoleWanted = true;
    }
    if (!consoleWanted) {
        console.Close();
    } else if (!console.IsOpen()) {
        console.Open();
    }
}

void Log::Write(const std::stringstream& stream, int messageLevel) noexcept {
    const std::lock_guard guard(lock_);
    Refresh();
    if (messageLevel < level) {
        return;
    }
    try {
        const int depth = indentation.load(std::memory_order_relaxed);
        const std::size_t width = depth > 0 ? static_cast<std::size_t>(depth) : 0;
        const std::string blanks(width * kIndentationWidth, ' ');
        const std::string text = stream.str();
        if (file != nullptr) {
            std::fprintf(file, "%s", blanks.c_str());
            std::fprintf(file, "%s", text.c_str());
            std::fflush(file);
        }
        if (console.IsOpen()) {
            console.Write(blanks.data(), blanks.size());
            console.Write(text.data(), text.size());
        }
    } catch (...) {
        // No memory for the message: it is lost, and the work goes on.
    }
}

void Log::SetLevel(int threshold) noexcept {
    const std::lock_guard guard(lock_);
    level = threshold;
}

void Log::EnableConsole() noexcept {
    const std::lock_guard guard(lock_);
    consoleWanted = true;
}

void Log::DisableConsole() noexcept {
    const std::lock_guard guard(lock_);
    consoleWanted = false;
}

}  // namespace mv
