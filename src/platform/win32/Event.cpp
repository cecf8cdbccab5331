#include "platform/Event.h"

#include <windows.h>

#include "platform/Faults.h"

namespace mv {

namespace {

bool RefuseSignal() noexcept {
    if (!IsRefused(PlatformCall::EventSignal)) {
        return false;
    }
    ::SetLastError(static_cast<DWORD>(kRefusedCallError));
    return true;
}

}  // namespace

unsigned LastError() noexcept {
    return static_cast<unsigned>(::GetLastError());
}

Event::Event() noexcept {
    if (IsRefused(PlatformCall::EventCreation)) {
        creationError_ = kRefusedCallError;
        return;
    }
    ::SetLastError(0);
    handle_ = ::CreateEventA(nullptr, TRUE, FALSE, nullptr);
    creationError_ = static_cast<int>(::GetLastError());
}

Event::~Event() {
    if (handle_ != nullptr) {
        ::CloseHandle(handle_);
    }
}

bool Event::IsUsable() const noexcept {
    return handle_ != nullptr;
}

bool Event::Set() noexcept {
    return !RefuseSignal() && ::SetEvent(handle_) != 0;
}

bool Event::Reset() noexcept {
    return !RefuseSignal() && ::ResetEvent(handle_) != 0;
}

void Event::Wait() noexcept {
    ::WaitForSingleObject(handle_, INFINITE);
}

bool Event::WaitFor(unsigned milliseconds) noexcept {
    return ::WaitForSingleObject(handle_, milliseconds) == WAIT_OBJECT_0;
}

}  // namespace mv
