#include "platform/Thread.h"

#include <windows.h>

#include "platform/Event.h"
#include "platform/Faults.h"

namespace mv {

namespace {

// The address of a system function in the shape of another: both take one register argument, and
// what they give back is not looked at.
template <class Shape, class Function>
Shape SystemRoutine(Function function) noexcept {
    return reinterpret_cast<Shape>(reinterpret_cast<void*>(function));
}

}  // namespace

void YieldThread() noexcept {
    static_cast<void>(::SwitchToThread());
}

void __stdcall Thread::Run(unsigned long long self) {
    const Thread& thread = *reinterpret_cast<const Thread*>(self);
    const HANDLE exited = thread.exited_->handle_;
    thread.function_(thread.argument_);
    // Queued only now: a callback of the host may have waited in a way that lets queued calls in.
    if (::QueueUserAPC(SystemRoutine<PAPCFUNC>(&::SetEvent), ::GetCurrentThread(),
                       reinterpret_cast<ULONG_PTR>(exited)) == 0) {
        // The system is at its end; better a small risk than a pool that waits for ever.
        ::SetEvent(exited);
    }
}

// The thread begins as a system routine, ExitThread, and does not get that far before it has worked
// off the calls queued for it: a SetEvent and our own routine, which at its end queues another
// SetEvent. All of them are made by the system's dispatcher, one after the other.
// The first tells that the thread has begun. A thread takes the loader's lock to begin, so an
// unload could not wait for one that had not come so far yet.
// The last is made after our routine has returned: when `exited` is seen set, nothing of this
// module is left on the thread's stack, and the module may be unmapped under the thread's last
// steps. An event that our own routine set would leave the way back to the system uncovered.
bool Thread::Start(Function function, void* argument, Event& exited) noexcept {
    if (IsRefused(PlatformCall::ThreadStart)) {
        return false;
    }
    const Event begun;
    if (!begun.IsUsable() || !exited.IsUsable()) {
        return false;
    }
    DWORD id = 0;
    const HANDLE handle =
        ::CreateThread(nullptr, 0, SystemRoutine<LPTHREAD_START_ROUTINE>(&::ExitThread), nullptr,
                       CREATE_SUSPENDED, &id);
    if (handle == nullptr) {
        return false;
    }
    function_ = function;
    argument_ = argument;
    exited_ = &exited;
    handle_ = handle;
    id_.store(id, std::memory_order_relaxed);
    if (::QueueUserAPC(SystemRoutine<PAPCFUNC>(&::SetEvent), handle,
                       reinterpret_cast<ULONG_PTR>(begun.handle_)) == 0 ||
        ::QueueUserAPC(&Thread::Run, handle, reinterpret_cast<ULONG_PTR>(this)) == 0 ||
        ::ResumeThread(handle) == static_cast<DWORD>(-1)) {
        // It never ran and holds nothing.
        ::TerminateThread(handle, 0);
        Close();
        return false;
    }
    ::WaitForSingleObject(begun.handle_, INFINITE);
    return true;
}

bool Thread::WaitFor(unsigned milliseconds) noexcept {
    return ::WaitForSingleObject(handle_, milliseconds) != WAIT_TIMEOUT;
}

void Thread::Close() noexcept {
    if (handle_ != nullptr) {
        ::CloseHandle(handle_);
        handle_ = nullptr;
    }
    id_.store(0, std::memory_order_relaxed);
}

std::uint32_t CurrentThreadId() noexcept {
    return ::GetCurrentThreadId();
}

}  // namespace mv
