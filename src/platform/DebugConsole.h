#pragma once

#include <cstddef>

namespace mv {

// The window that shows the trace while it is written. Owned by the log and used under its lock.
// Only Windows has one; elsewhere it never opens and the log's file stands alone.
class DebugConsole {
public:
    DebugConsole() noexcept = default;
    ~DebugConsole() { Close(); }
    DebugConsole(const DebugConsole&) = delete;
    DebugConsole& operator=(const DebugConsole&) = delete;

    bool IsOpen() const noexcept { return handle_ != nullptr; }
    void Open() noexcept;
    void Close() noexcept;
    void Write(const char* text, std::size_t length) noexcept;

private:
    void* handle_ = nullptr;
};

}  // namespace mv
