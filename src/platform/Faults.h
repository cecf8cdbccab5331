#pragma once

#include <atomic>

namespace mv {

// The calls of the platform that hardly ever fail on a healthy machine, and whose failure the
// callers must survive all the same. A test installs a hook that refuses some of them; in the
// shipped module the hook stays null.
enum class PlatformCall { EventCreation, EventSignal, ThreadStart };

// Gives true to make the call fail. Called on the thread that makes the call.
using PlatformFaultHook = bool (*)(PlatformCall) noexcept;

inline constexpr int kRefusedCallError = 8;  // the code that LastError gives for a refused call

inline std::atomic<PlatformFaultHook> platformFaultHook{nullptr};

inline bool IsRefused(PlatformCall call) noexcept {
    const PlatformFaultHook hook = platformFaultHook.load(std::memory_order_relaxed);
    return hook != nullptr && hook(call);
}

}  // namespace mv
