#pragma once

#include <atomic>
#include <cstdint>

#ifndef _WIN32
#include <pthread.h>
#endif

namespace mv {

class Event;

// One thread of the system with a default stack. Owned by the thread that starts it, which also
// waits for it and closes it.
//
// A module may be unloaded while its thread is still on the way out, and an unload runs under the
// loader's lock, which a Windows thread needs in order to end: waiting for the thread itself would
// never return. So `exited` is set as soon as no code of this module is left on the thread's stack,
// which may be before the thread has ended, and from then on the module's memory may go.
class Thread {
public:
    using Function = void (*)(void* argument) noexcept;

    Thread() noexcept = default;
    ~Thread() { Close(); }
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    // Runs function(argument), then sets `exited`. False when the system has no thread to give.
    bool Start(Function function, void* argument, Event& exited) noexcept;
    // The started thread's id, 0 while there is none. May be asked from any thread at any time.
    std::uint32_t Id() const noexcept { return id_.load(std::memory_order_relaxed); }
    // True when the thread is over, or cannot be asked; false when the time ran out.
    bool WaitFor(unsigned milliseconds) noexcept;
    // Gives the handle back. To be called only after `exited` was seen set.
    void Close() noexcept;

private:
    Function function_ = nullptr;
    void* argument_ = nullptr;
    Event* exited_ = nullptr;
    std::atomic<std::uint32_t> id_{0};
#ifdef _WIN32
    static void __stdcall Run(unsigned long long self);

    void* handle_ = nullptr;
#else
    static void* Run(void* self);

    pthread_t handle_{};
    bool started_ = false;
    bool joined_ = false;
#endif
};

// Never 0.
std::uint32_t CurrentThreadId() noexcept;

// Lets another thread go on that is ready to.
void YieldThread() noexcept;

}  // namespace mv
