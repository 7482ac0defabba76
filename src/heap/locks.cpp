#include "heap/locks.h"

namespace veldt::heap {

constinit ProcessLock HandleLock;
std::uint32_t HandleLockDepth = 0;
constinit ProcessLock RegistryLock;

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
