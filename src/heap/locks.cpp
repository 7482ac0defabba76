#include "heap/locks.h"

#include <exception>

namespace veldt::heap {

constinit ProcessLock HandleLock;
std::uint32_t HandleLockDepth = 0;
constinit ProcessLock RegistryLock;

void TakeHandleLock() {
    HandleLock.Take();
    ++HandleLockDepth;
}

void ReleaseHandleLock() {
    --HandleLockDepth;
    HandleLock.Release();
}

void PoolHold::Take() {
    exceptions_ = std::uncaught_exceptions();
    TakePoolLock(pool_);
}

void PoolHold::Release() {
    if (exceptions_ == std::uncaught_exceptions()) {
        ReleasePoolLock(pool_);
    }
}

void ProcessLock::Initialise() {
    std::uint32_t expected = kUntouched;
    if (state_.compare_exchange_strong(expected, kBusy)) {
        platform::InitializeCriticalSection(&section_);
        state_.store(kReady, std::memory_order_release);
        return;
    }
    while (state_.load(std::memory_order_acquire) != kReady) {
        // Another thread is between the two stores above.
    }
}

}  // namespace veldt::heap
