// Locks and thread numbers: the part that every allocation passes through, inline.
#pragma once

#include <atomic>
#include <cstdint>

namespace veldt::platform {

/// A lock that its holder may enter again. Nobody else's wanting it costs a few nanoseconds. All
/// zero is a lock that is free, so a static one needs no initialisation.
struct CRITICAL_SECTION {
    std::uint32_t owner;    ///< the holder's thread number, 0 when free; the word waited on
    std::uint32_t waiters;  ///< threads that sleep on `owner` or are about to
    std::uint32_t depth;    ///< entries of the holder; touched by the holder alone
    std::uint32_t reserved[3];
};
static_assert(sizeof(CRITICAL_SECTION) == 24);

namespace locks {

/// 0 until the thread asks for its number for the first time.
extern constinit thread_local std::uint32_t threadNumber;

std::uint32_t NumberThisThread();
void EnterContended(CRITICAL_SECTION* section, std::uint32_t self);
void WakeOne(CRITICAL_SECTION* section);

}  // namespace locks

/// Never 0, and not given to a second thread of the process.
inline std::uint32_t GetCurrentThreadId() {
    const std::uint32_t number = locks::threadNumber;
    return number != 0 ? number : locks::NumberThisThread();
}

inline void InitializeCriticalSection(CRITICAL_SECTION* section) {
    *section = CRITICAL_SECTION{};
}

inline void DeleteCriticalSection(CRITICAL_SECTION*) {}

inline void EnterCriticalSection(CRITICAL_SECTION* section) {
    const std::uint32_t self = GetCurrentThreadId();
    std::uint32_t seen = 0;
    if (std::atomic_ref(section->owner)
            .compare_exchange_strong(seen, self, std::memory_order_acquire,
                                     std::memory_order_relaxed)) [[likely]] {
        section->depth = 1;
    } else if (seen == self) {
        ++section->depth;
    } else {
        locks::EnterContended(section, self);
    }
}

inline void LeaveCriticalSection(CRITICAL_SECTION* section) {
    if (--section->depth != 0) return;
    std::atomic_ref(section->owner).store(0, std::memory_order_release);
    // The load may pass the store and miss a thread that is just lying down. That costs it the
    // time limit of one sleep, which is cheaper than a fence at every leave.
    if (std::atomic_ref(section->waiters).load(std::memory_order_relaxed) != 0) [[unlikely]] {
        locks::WakeOne(section);
    }
}

/// Holds a lock for a scope.
class LockGuard {
  public:
    explicit LockGuard(CRITICAL_SECTION& section) : section_(section) {
        EnterCriticalSection(&section_);
    }
    ~LockGuard() { LeaveCriticalSection(&section_); }
    LockGuard(const LockGuard&) = delete;
    LockGuard& operator=(const LockGuard&) = delete;

  private:
    CRITICAL_SECTION& section_;
};

}  // namespace veldt::platform
