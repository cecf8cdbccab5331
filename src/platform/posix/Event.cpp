#include "platform/Event.h"

#include <chrono>

#include "platform/Faults.h"

namespace mv {

namespace {

thread_local unsigned lastError = 0;

// What Windows gives for a handle that is none.
constexpr unsigned kInvalidHandleError = 6;

bool CanSignal(const Event& event) noexcept {
    if (IsRefused(PlatformCall::EventSignal)) {
        lastError = kRefusedCallError;
        return false;
    }
    if (!event.IsUsable()) {
        lastError = kInvalidHandleError;
        return false;
    }
    return true;
}

}  // namespace

unsigned LastError() noexcept {
    return lastError;
}

Event::Event() noexcept {
    if (IsRefused(PlatformCall::EventCreation)) {
        creationError_ = kRefusedCallError;
    }
}

Event::~Event() = default;

bool Event::IsUsable() const noexcept {
    return creationError_ == 0;
}

bool Event::Set() noexcept {
    if (!CanSignal(*this)) {
        return false;
    }
    // Notified under the lock: a waiter may destroy the event as soon as it has the lock.
    const std::lock_guard guard(mutex_);
    signalled_ = true;
    condition_.notify_all();
    return true;
}

bool Event::Reset() noexcept {
    if (!CanSignal(*this)) {
        return false;
    }
    const std::lock_guard guard(mutex_);
    signalled_ = false;
    return true;
}

void Event::Wait() noexcept {
    std::unique_lock guard(mutex_);
    condition_.wait(guard, [this] { return signalled_; });
}

bool Event::WaitFor(unsigned milliseconds) noexcept {
    std::unique_lock guard(mutex_);
    return condition_.wait_for(guard, std::chrono::milliseconds(milliseconds),
                               [this] { return signalled_; });
}

}  // namespace mv
