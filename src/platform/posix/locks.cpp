#include "platform/posix/locks.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace veldt::platform::locks {

namespace {

constexpr int kSpins = 64;
/// Bounds what a missed wake-up costs.
constexpr long kSleepNanoseconds = 1'000'000;

std::uint32_t lastThreadNumber = 0;

bool TryEnter(CRITICAL_SECTION* section, std::uint32_t self) {
    std::uint32_t seen = 0;
    return locks::TryEnter(section, self, seen);
}

std::uint32_t Owner(CRITICAL_SECTION* section) {
    return std::atomic_ref(section->owner).load(std::memory_order_relaxed);
}

/// Sleeps until woken, the time limit, or at once if the lock isn't `owner`'s any more.
void SleepWhileHeldBy(CRITICAL_SECTION* section, std::uint32_t owner) {
    // As this call takes it, which is not always as the C library declares it.
    const struct {
        long seconds;
        long nanoseconds;
    } limit = {0, kSleepNanoseconds};
    syscall(SYS_futex, &section->owner, FUTEX_WAIT_PRIVATE, owner, &limit, nullptr, 0);
}

}  // namespace

constinit thread_local std::uint32_t threadNumber = 0;

std::uint32_t NumberThisThread() {
    do {
        threadNumber =
            std::atomic_ref(lastThreadNumber).fetch_add(1, std::memory_order_relaxed) + 1;
    } while (threadNumber == 0);
    return threadNumber;
}

void EnterContended(CRITICAL_SECTION* section, std::uint32_t self) {
    for (int spin = 0; spin < kSpins; ++spin) {
        if (Owner(section) == 0 && TryEnter(section, self)) {
            section->depth = 1;
            return;
        }
        __builtin_ia32_pause();
    }
    std::atomic_ref waiters(section->waiters);
    waiters.fetch_add(1, std::memory_order_seq_cst);
    while (!TryEnter(section, self)) {
        const std::uint32_t owner = Owner(section);
        if (owner != 0) SleepWhileHeldBy(section, owner);
    }
    waiters.fetch_sub(1, std::memory_order_relaxed);
    section->depth = 1;
}

void WakeOne(CRITICAL_SECTION* section) {
    syscall(SYS_futex, &section->owner, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

}  // namespace veldt::platform::locks
