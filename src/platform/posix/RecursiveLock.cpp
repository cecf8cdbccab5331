#include "platform/RecursiveLock.h"

namespace mv {

RecursiveLock::RecursiveLock() noexcept = default;
RecursiveLock::~RecursiveLock() = default;

void RecursiveLock::lock() noexcept {
    mutex_.lock();
}
void RecursiveLock::unlock() noexcept {
    mutex_.unlock();
}

}  // namespace mv
