#pragma once

#ifndef _WIN32
#include <condition_variable>
#include <mutex>
#endif

namespace mv {

// A manual-reset event, created unsignalled: once set it lets every waiter through until it is
// reset. Owned by whoever declares it; all operations may be called from any thread. It logs
// nothing, because the caller knows which text belongs to the failure: a failed call returns false
// and leaves the reason in LastError().
class Event {
public:
    Event() noexcept;
    ~Event();
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;

    // The error code that creation left, 0 if there was none.
    int CreationError() const noexcept { return creationError_; }
    // False when there is no event behind this object, so that no wait on it would hold.
    bool IsUsable() const noexcept;
    bool Set() noexcept;
    bool Reset() noexcept;
    void Wait() noexcept;
    // True when the event was signalled within the time, false when the time ran out.
    bool WaitFor(unsigned milliseconds) noexcept;

private:
    friend class Thread;

    int creationError_ = 0;
#ifdef _WIN32
    void* handle_ = nullptr;
#else
    std::mutex mutex_;
    std::condition_variable condition_;
    bool signalled_ = false;
#endif
};

// The code of the calling thread's last failed platform call.
unsigned LastError() noexcept;

}  // namespace mv
