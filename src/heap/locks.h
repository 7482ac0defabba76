// The heap's three locks. They nest in this order: pool lock, HandleLock, RegistryLock; nothing is
// taken under RegistryLock. Depth counters stand beside the first two, so that the dispatcher of
// errors can drop every hold of its thread and take them back.
#pragma once

#include <atomic>
#include <exception>

#include "heap/records.h"

namespace veldt::heap {

/// A process-wide lock, usable before any initialisation and never deleted.
class ProcessLock {
  public:
    void Take() {
        if (state_.load(std::memory_order_acquire) != kReady) {
            Initialise();
        }
        platform::EnterCriticalSection(&section_);
    }
    void Release() { platform::LeaveCriticalSection(&section_); }

  private:
    enum : std::uint32_t { kUntouched, kBusy, kReady };
    void Initialise();

    CRITICAL_SECTION section_{};
    std::atomic<std::uint32_t> state_{kUntouched};
};

/// Guards a slot's block word and the header of the block it names, against the block moving.
extern constinit ProcessLock HandleLock;
/// Holds on HandleLock; touched by the holder only.
extern std::uint32_t HandleLockDepth;
/// Guards the handler, the chain of pools and the thread table.
extern constinit ProcessLock RegistryLock;

inline void TakeHandleLock() {
    HandleLock.Take();
    ++HandleLockDepth;
}

inline void ReleaseHandleLock() {
    --HandleLockDepth;
    HandleLock.Release();
}

inline void TakePoolLock(HeapPool* pool) {
    if ((pool->flags & PoolSerialised) != 0) {
        platform::EnterCriticalSection(&pool->lock);
        ++pool->lockDepth;
    }
}

inline void ReleasePoolLock(HeapPool* pool) {
    if ((pool->flags & PoolSerialised) != 0) {
        --pool->lockDepth;
        platform::LeaveCriticalSection(&pool->lock);
    }
}

/// A handler that throws takes its thread out of the heap with the pool lock dropped already.
class [[nodiscard]] PoolHold {
  public:
    explicit PoolHold(HeapPool* pool)
        : pool_((pool->flags & PoolSerialised) != 0 ? pool : nullptr) {
        if (pool_ != nullptr) [[unlikely]] {
            exceptions_ = std::uncaught_exceptions();
            TakePoolLock(pool_);
        }
    }
    ~PoolHold() {
        if (pool_ != nullptr && exceptions_ == std::uncaught_exceptions()) [[unlikely]] {
            ReleasePoolLock(pool_);
        }
    }
    PoolHold(const PoolHold&) = delete;
    PoolHold& operator=(const PoolHold&) = delete;

  private:
    HeapPool* pool_;  ///< null where there is no lock to hold
    int exceptions_ = 0;
};

class [[nodiscard]] HandleHold {
  public:
    HandleHold() { TakeHandleLock(); }
    ~HandleHold() { ReleaseHandleLock(); }
    HandleHold(const HandleHold&) = delete;
    HandleHold& operator=(const HandleHold&) = delete;
};

class [[nodiscard]] RegistryHold {
  public:
    RegistryHold() { RegistryLock.Take(); }
    ~RegistryHold() { RegistryLock.Release(); }
    RegistryHold(const RegistryHold&) = delete;
    RegistryHold& operator=(const RegistryHold&) = delete;
};

}  // namespace veldt::heap
