// Locks and thread numbers: the part that every allocation passes through, inline.
#pragma once

#include <atomic>
#include <cstdint>

#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#endif

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

/// Whether the process has one thread only: then nobody can come between a load and a store, and
/// the first thread that it starts will see what was stored.
inline bool OnlyThread() {
#if __has_include(<sys/single_threaded.h>)
    return __libc_single_threaded != 0;
#else
    return false;
#endif
}

namespace locks {

/// 0 until the thread asks for its number for the first time.
extern constinit thread_local std::uint32_t threadNumber;

/// Takes the lock if it is free; otherwise gives its holder in `seen`, which comes in as 0.
inline bool TryEnter(CRITICAL_SECTION* section, std::uint32_t self, std::uint32_t& seen) {
    std::atomic_ref owner(section->owner);
    if (OnlyThread()) {
        seen = owner.load(std::memory_order_relaxed);
        if (seen != 0) return false;
        owner.store(self, std::memory_order_relaxed);
        return true;
    }
    return owner.compare_exchange_strong(seen, self, std::memory_order_acquire,
                                         std::memory_order_relaxed);
}

std::uint32_t NumberThisThread();
void EnterContended(CRITICAL_SECTION* section, std::uint32_t self);
void WakeOne(CRITICAL_SECTION* section);

inline void Unlock(CRITICAL_SECTION* section) {
    std::atomic_ref(section->owner).store(0, std::memory_order_release);
    // The load may pass the store and miss a thread that is just lying down. That costs it the
    // time limit of one sleep, which is cheaper than a fence at every leave.
    if (std::atomic_ref(section->waiters).load(std::memory_order_relaxed) != 0) [[unlikely]] {
        WakeOne(section);
    }
}

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
    if (locks::TryEnter(section, self, seen)) [[likely]] {
        section->depth = 1;
    } else if (seen == self) {
        ++section->depth;
    } else {
        locks::EnterContended(section, self);
    }
}

/// 0 if another thread holds the lock.
inline int TryEnterCriticalSection(CRITICAL_SECTION* section) {
    const std::uint32_t self = GetCurrentThreadId();
    std::uint32_t seen = 0;
    if (locks::TryEnter(section, self, seen)) {
        section->depth = 1;
    } else if (seen == self) {
        ++section->depth;
    } else {
        return 0;
    }
    return 1;
}

inline void LeaveCriticalSection(CRITICAL_SECTION* section) {
    if (--section->depth != 0) return;
    locks::Unlock(section);
}

/// Holds a lock of this layer's own for a scope. Nothing in this layer enters such a lock twice, so
/// that neither the thread's number nor the depth need be looked at.
class LockGuard {
  public:
    explicit LockGuard(CRITICAL_SECTION& section) : section_(section) {
        std::uint32_t seen = 0;
        if (!locks::TryEnter(&section_, kSomebody, seen)) [[unlikely]] {
            locks::EnterContended(&section_, kSomebody);
        }
    }
    ~LockGuard() { locks::Unlock(&section_); }
    LockGuard(const LockGuard&) = delete;
    LockGuard& operator=(const LockGuard&) = delete;

  private:
    static constexpr std::uint32_t kSomebody = ~std::uint32_t{0};

    CRITICAL_SECTION& section_;
};

}  // namespace veldt::platform
