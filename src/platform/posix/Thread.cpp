#include "platform/Thread.h"

#include <sched.h>
#include <time.h>

#include <atomic>
#include <cerrno>

#include "platform/Event.h"
#include "platform/Faults.h"

namespace mv {

namespace {

// Small numbers of our own: the system's thread handle is a pointer and does not fit 32 bits.
std::atomic<std::uint32_t> lastId{0};
thread_local std::uint32_t currentId = 0;

std::uint32_t NextId() noexcept {
    return lastId.fetch_add(1, std::memory_order_relaxed) + 1;
}

}  // namespace

std::uint32_t CurrentThreadId() noexcept {
    if (currentId == 0) {
        currentId = NextId();
    }
    return currentId;
}

void YieldThread() noexcept {
    static_cast<void>(sched_yield());
}

void* Thread::Run(void* self) {
    const Thread& thread = *static_cast<const Thread*>(self);
    currentId = thread.Id();
    thread.function_(thread.argument_);
    // The thread still has a few steps to go here; Close waits for them.
    thread.exited_->Set();
    return nullptr;
}

bool Thread::Start(Function function, void* argument, Event& exited) noexcept {
    if (IsRefused(PlatformCall::ThreadStart)) {
        return false;
    }
    function_ = function;
    argument_ = argument;
    exited_ = &exited;
    joined_ = false;
    id_.store(NextId(), std::memory_order_relaxed);
    started_ = pthread_create(&handle_, nullptr, &Thread::Run, this) == 0;
    if (!started_) {
        id_.store(0, std::memory_order_relaxed);
    }
    return started_;
}

bool Thread::WaitFor(unsigned milliseconds) noexcept {
    if (!started_ || joined_) {
        return true;
    }
    timespec until{};
    clock_gettime(CLOCK_REALTIME, &until);
    until.tv_sec += static_cast<time_t>(milliseconds / 1000);
    until.tv_nsec += static_cast<long>(milliseconds % 1000) * 1000000L;
    if (until.tv_nsec >= 1000000000L) {
        until.tv_sec += 1;
        until.tv_nsec -= 1000000000L;
    }
    if (pthread_timedjoin_np(handle_, nullptr, &until) == ETIMEDOUT) {
        return false;
    }
    joined_ = true;
    return true;
}

void Thread::Close() noexcept {
    // Ending a thread takes no lock of the loader here, so it can be waited for even while the
    // library is being unloaded, and none of its code can be left running.
    if (started_ && !joined_) {
        pthread_join(handle_, nullptr);
    }
    started_ = false;
    joined_ = false;
    id_.store(0, std::memory_order_relaxed);
}

}  // namespace mv
